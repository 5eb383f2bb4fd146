#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/StateTables.h"

/// @file
/// Compares a state table with the machine below it. A table is carried out as it is written, one
/// input after the other, and the machine has to end with the same result, place, state, texts and
/// words. Every state is entered with every character, alone, before the end of the input, and
/// before and after characters of every column; so each cell is used, and what it says shows.

namespace Kestra::Test {

/// What a machine has in each field before it begins. A field that is set has it no longer, one
/// that grows begins with it.
inline constexpr char16_t UNTOUCHED[] = u"\u00FE";

/// What a machine, or a table, makes of an input.
struct TableOutcome {
    std::uint32_t result = 0;  // 0 when it needs more
    std::size_t consumed = 0;
    std::uint32_t state = 0;
    std::map<std::string, Codes> fields;
    std::set<std::string> words;
    std::string trouble;  // why there is no outcome

    bool operator==(const TableOutcome&) const = default;
};

/// The input for a machine: a state that it is put into, and pieces.
struct TableInput {
    std::uint32_t state = 0;
    std::vector<std::vector<Codes>> pieces;  // of symbols: mostly characters
    bool endOfInput = false;

    bool operator<(const TableInput& other) const;
};

/// What is known of the input so far when a symbol is given a column.
struct TablePlace {
    std::uint32_t state;
    const Codes& held;
    const Codes& gathered;
};

/// Where the text goes that a state gathers.
struct TableField {
    std::string name;
    bool isSetOnLeaving = false;  // it is another recognizer's up to there, and replaces the field
};

/// A machine in one flavour, with one set of options.
struct TableMachine {
    std::string note;
    std::function<TableOutcome(const TableInput&)> run;

    /// By the states that gather text.
    std::map<std::uint32_t, TableField> fields;

    /// These fields, and others of the outcome.
    std::set<std::string> fieldNames;

    /// What is held already in a state that is entered with nothing read.
    std::map<std::uint32_t, Codes> held;

    /// What every state is given, and sequences of symbols besides.
    std::vector<Codes> symbols;
    std::vector<std::vector<Codes>> sequences;

    std::function<bool(char16_t)> isSpace;

    /// Columns of characters that are not allowed, in all states or in one.
    std::set<std::string> ignoredHeads;
    std::map<std::uint32_t, std::set<std::string>> ignoredIn;

    /// Of states with more than one row.
    std::map<std::uint32_t, std::string> rowNames;

    /// The states that it can be put into; all when there are none here.
    std::set<std::uint32_t> states;

    /// A state without a row is answered with `failResult`.
    bool statesEndAtTable = true;

    /// The head for a symbol, for classes that only the machine knows.
    std::function<std::string(const TablePlace&, const Codes&)> classify;

    /// Of "as 1 or 2", by the text gathered.
    std::function<bool(const Codes&)> choosesFirst;

    /// Words that complete, and others that the machine knows.
    std::set<std::string> recognizers;
    std::set<std::string> words;

    std::uint32_t failResult = 11;
    std::uint32_t completeResult = 19;
    std::uint32_t unterminatedResult = 16;
};

/// A cell of a row, or an example of one that reads on.
struct CellPlace {
    std::size_t row = 0;
    std::size_t index = 0;

    bool operator<(const CellPlace& other) const {
        return row != other.row ? row < other.row : index < other.index;
    }
};

struct TableDifference {
    std::string where;
    std::string text;
};

/// A table and one machine, whose outcomes are kept.
class TableChecker {
public:
    TableChecker(StateTable table, TableMachine machine);

    /// The first few differences.
    /// @param used  receives the cells that were used
    std::vector<TableDifference> Compare(std::set<CellPlace>* used, std::size_t most);

    /// After `Compare`: whether a difference shows when the cell is another one.
    bool FindsWrong(const CellPlace& place, const std::string& cell) const;

private:
    class Walk;

    struct Run {
        TableInput input;
        TableOutcome outcome;
        bool isSample;  // of the characters that each column is known by
    };

    static std::string Describe(const TableInput& input);

    void AddRuns();
    void AddRun(TableInput input, bool isSample);
    const TableOutcome& RunFrom(const TableInput& input) const;
    TableOutcome RunExample(const TableRow& row, const TableExample& example) const;

    /// Only the fields that a state of the table gathers: examples do not say what the other
    /// recognizer leaves in the rest.
    TableOutcome WithoutDetails(TableOutcome outcome) const;

    StateTable table;
    TableMachine machine;
    std::vector<Run> runs;
    std::map<CellPlace, std::vector<std::size_t>> users;  // runs of samples, by the cells they use
    mutable std::map<TableInput, TableOutcome> known;
};

/// The table with one cell or example replaced.
StateTable ReplaceCell(const StateTable& table, const CellPlace& place, const std::string& cell);

/// The cell, or the example's.
std::string GetCell(const StateTable& table, const CellPlace& place);

/// What a slip could put into that cell: all that the table has elsewhere, and more. Not the same
/// in other words.
std::set<std::string> OtherCells(const StateTable& table, const CellPlace& place);

std::string ToLine(const TableOutcome& outcome);
std::string ToLine(const Codes& codes);

}  // namespace Kestra::Test
