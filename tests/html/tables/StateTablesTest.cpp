#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/html/tables/RecognizerMachines.h"
#include "tests/support/StateTables.h"
#include "tests/support/TableMachine.h"

namespace Kestra::Test {
namespace {

const std::filesystem::path ROOT = KESTRA_SOURCES;

/// Where each table is checked here.
constexpr const char* CHECKED_FOLDERS[] = {"html/text/", "html/tags/"};

/// Tables of machines that are not checked here, by the begin of the path.
constexpr const char* OTHER_TABLES[] = {
    "html/parser/GenericParserEngine.cpp",  // the marks at the begin of a document
    "html/stateless/",                      // in StatelessTablesTest.cpp
};

bool StartsWithAny(const std::string& file, const auto& prefixes) {
    return std::any_of(std::begin(prefixes), std::end(prefixes),
                       [&](const char* prefix) { return file.starts_with(prefix); });
}

/// One table and the machines that it belongs to.
struct CheckedTable {
    StateTable table;
    std::vector<TableMachine> machines;
};

const std::vector<CheckedTable>& CheckedTables() {
    static const std::vector<CheckedTable> all = [] {
        std::map<std::string, std::vector<TableMachine>> machines = MakeRecognizerMachines();
        std::vector<CheckedTable> tables;
        for (const char* folder : CHECKED_FOLDERS) {
            for (const std::string& file : ListSources(ROOT, folder)) {
                for (const StateTable& table : ReadStateTables(file, ReadSource(ROOT, file)))
                    tables.push_back({table, machines[file]});
            }
        }
        return tables;
    }();
    return all;
}

TEST(StateTablesTest, EveryTableHasAMachineAndEveryMachineATable) {
    std::multiset<std::string> withTables;
    for (const CheckedTable& checked : CheckedTables())
        withTables.insert(checked.table.file);
    std::multiset<std::string> withMachines;
    for (const auto& [file, machines] : MakeRecognizerMachines())
        withMachines.insert(file);
    EXPECT_EQ(withTables, withMachines);
}

TEST(StateTablesTest, EveryLineThatLooksLikeATableIsOfOneThatIsRead) {
    std::set<std::string> others;
    for (const char* folder : {"html", "platform", "tools"}) {
        for (const std::string& file : ListSources(ROOT, folder)) {
            const std::string source = ReadSource(ROOT, file);
            const std::vector<std::size_t> lines = FindTableLines(source);
            if (!StartsWithAny(file, CHECKED_FOLDERS)) {
                EXPECT_TRUE(lines.empty() || StartsWithAny(file, OTHER_TABLES))
                    << file << ":" << lines.front() << ": a table that no test reads";
                continue;
            }
            EXPECT_EQ(lines, ListTableLines(ReadStateTables(file, source))) << file;
        }
    }
}

TEST(StateTablesTest, EveryTableIsTrue) {
    for (const CheckedTable& checked : CheckedTables()) {
        const StateTable& table = checked.table;
        SCOPED_TRACE(table.Name());
        std::set<CellPlace> used;
        for (const TableMachine& machine : checked.machines) {
            SCOPED_TRACE(machine.note);
            for (const TableDifference& difference : TableChecker(table, machine).Compare(&used, 3))
                ADD_FAILURE() << difference.where << ": " << difference.text;
        }
        for (std::size_t row = 0; row < table.rows.size(); ++row) {
            for (std::size_t i = 0; i < table.rows[row].cells.size(); ++i) {
                const std::size_t expected = table.rows[row].cells[i] == "never" ? 0 : 1;
                EXPECT_EQ(used.count({row, i}), expected)
                    << "line " << table.rows[row].line << ": " << table.columns[i].head;
            }
            for (std::size_t i = 0; i < table.rows[row].examples.size(); ++i)
                EXPECT_EQ(used.count({row, i}), 1U)
                    << "line " << table.rows[row].line << ": an example that is not used";
        }
    }
}

TEST(StateTablesTest, NoStateIsMissing) {
    for (const CheckedTable& checked : CheckedTables()) {
        SCOPED_TRACE(checked.table.Name());
        std::set<std::uint32_t> states;
        for (const TableRow& row : checked.table.rows)
            states.insert(row.state);
        for (const TableMachine& machine : checked.machines) {
            for (std::uint32_t state = 0; machine.statesEndAtTable && state < 16; ++state) {
                const TableOutcome outcome = machine.run({state, {{u"\x0C"}}, false});
                const bool isKnown = outcome.result != machine.failResult || outcome.consumed != 0;
                EXPECT_TRUE(states.count(state) != 0 || !isKnown)
                    << "state " << state << " has no row, and the machine knows it";
            }
        }
    }
}

/// A cell that would say the same: another state does with the character what this one does.
struct SameCell {
    const char* source;
    std::uint32_t state;
    const char* column;
    const char* cell;
};

const SameCell SAME[] = {
    {"html/text/CCommentSimpleParser.cpp", 2, "\"*\"", "keep"},
    {"html/text/Escape2022SimpleParser.cpp", 0, "sequence complete", "as 2"},
    {"html/text/Escape2022SimpleParser.cpp", 1, "other", "release, keep"},
    {"html/text/Escape2022SimpleParser.cpp", 1, "end of input", "release, complete"},
    {"html/text/RawText.cpp", 0, "\"<!--\"", "as 1"},
    {"html/text/RawText.cpp", 0, "\">\" after \"--\"", "as 1"},
    {"html/text/RawText.cpp", 0, "\">\" after \"--\"", "as 2"},
    {"html/text/RawText.cpp", 1, "\"<!--\"", "as 0"},
    {"html/text/RawText.cpp", 1, "\"<script\"", "as 2"},
    {"html/text/RawText.cpp", 1, "\">\" after \"--\"", "as 0"},
    {"html/text/RawText.cpp", 1, "\">\" after \"--\"", "as 2"},
    {"html/text/RawText.cpp", 2, "\"<script\"", "as 1"},
    {"html/text/RawText.cpp", 2, "\">\" after \"--\"", "as 0"},
    {"html/text/RawText.cpp", 2, "\">\" after \"--\"", "as 1"},
    {"html/tags/AttributeSimpleParser.cpp", 2, "\"=\"", "to 4"},
    {"html/tags/EndTagSimpleParser.cpp", 2, "\"/\"", "as 3"},
    {"html/tags/EndTagSimpleParser.cpp", 2, "\"=\", \"[\", \"]\"", "as 3"},
    {"html/tags/EndTagSimpleParser.cpp", 2, "other", "as 3"},
    {"html/tags/ExternTagFreeStyleSimpleParser.cpp", 0, "line feed", "as 4"},
    {"html/tags/ExternTagFreeStyleSimpleParser.cpp", 4, "line feed", "as 0"},
    {"html/tags/ExternTagFreeStyleSimpleParser.cpp", 4, "line feed", "as 7"},
    {"html/tags/ExternTagFreeStyleSimpleParser.cpp", 4, "line feed", "release, as 0"},
    {"html/tags/TokenSimpleParser.cpp", 0, "\"'\"", "to 3"},
    {"html/tags/TokenSimpleParser.cpp", 0, "'\"'", "to 4"},
    {"html/tags/TokenSimpleParser.cpp", 0, "\"<\"", "as 2"},
    {"html/tags/TokenSimpleParser.cpp", 0, "other", "as 2"},
};

TEST(StateTablesTest, EveryWrongCellIsFound) {
    std::size_t wrong = 0;
    std::set<const SameCell*> met;
    for (const CheckedTable& checked : CheckedTables()) {
        const StateTable& table = checked.table;
        SCOPED_TRACE(table.Name());
        std::vector<TableChecker> checkers;
        std::set<CellPlace> used;
        for (const TableMachine& machine : checked.machines) {
            checkers.emplace_back(table, machine);
            checkers.back().Compare(&used, 1);
        }
        for (const CellPlace& place : used) {
            const TableRow& row = table.rows[place.row];
            const std::string column =
                row.examples.empty() ? table.columns[place.index].head : ToLine(row.examples[place.index].text);
            for (const std::string& cell : OtherCells(table, place)) {
                ++wrong;
                const bool found = std::any_of(checkers.begin(), checkers.end(),
                                               [&](const TableChecker& c) { return c.FindsWrong(place, cell); });
                const auto* const same = std::find_if(std::begin(SAME), std::end(SAME), [&](const SameCell& entry) {
                    return table.file == entry.source && row.state == entry.state && column == entry.column &&
                           cell == entry.cell;
                });
                const bool isSame = same != std::end(SAME);
                if (isSame)
                    met.insert(same);
                EXPECT_NE(found, isSame) << "state " << row.state << ", " << column << ": [" << GetCell(table, place)
                                         << "] became [" << cell << "]";
            }
        }
    }
    EXPECT_EQ(met.size(), std::size(SAME));
    EXPECT_GT(wrong, 3000U);
}

struct Slip {
    const char* note;
    const char* source;
    const char* message;
};

TEST(StateTablesTest, ATableInAnotherFormIsNotRead) {
    const Slip SLIPS[] = {
        {"a cell beside its column", "//  state   \"a\"    other\n//  0 x     keep    keep\n",
         "x.cpp:2: the cells of a row are not in the columns of the head"},
        {"a cell too few", "//  state   \"a\"    other\n//  0 x     keep\n",
         "x.cpp:2: the cells of a row are not in the columns of the head"},
        {"a row without a state", "//  state   \"a\"    other\n//  x       keep   keep\n",
         "x.cpp:2: a line is neither a row nor goes on with one"},
        {"two states in a row", "//  state   \"a\"\n//  0, 1    keep\n", "x.cpp:2: a row begins with no state"},
        {"a head alone", "//  state   \"a\"\n", "x.cpp:1: a table without columns or rows"},
        {"two ends", "//  state   \"a\"\n//  0 x     to 1, complete\n", "x.cpp:2: the cell [to 1, complete]: two ends"},
        {"consumed and left", "//  state   \"a\"\n//  0 x     keep, as 1\n",
         "x.cpp:2: the cell [keep, as 1]: the character is both consumed and left"},
        {"a state that is no number", "//  state   \"a\"\n//  0 x     as one\n",
         "x.cpp:2: the cell [as one]: \"as\" without a state"},
        {"never and more", "//  state   \"a\"\n//  0 x     never, keep\n",
         "x.cpp:2: the cell [never, keep]: never, and more"},
        {"a quote that is not closed", "//  state   \"a\"\n//  0 x     \"b, to 1\n",
         "x.cpp:2: a quote is not closed:   0 x     \"b, to 1"},
        {"an example without a colon", "//  state   \"a\"\n//  0 x     the y recognizer reads on: \"b\" to 1\n",
         "x.cpp:2: an example is not a text, a colon and a cell: \"b\" to 1"},
        {"an example without a text", "//  state   \"a\"\n//  0 x     the y recognizer reads on: b: to 1\n",
         "x.cpp:2: no text in quotes: b"},
        {"an example that goes on and leaves something",
         "//  state   \"a\"\n//  0 x     the y recognizer reads on: \"b\" before \"c\": hold\n",
         "x.cpp:2: an example that cannot be: hold"},
        {"an example that keeps", "//  state   \"a\"\n//  0 x     the y recognizer reads on: \"b\": keep\n",
         "x.cpp:2: an example that cannot be: keep"},
    };
    for (const Slip& slip : SLIPS) {
        SCOPED_TRACE(slip.note);
        try {
            ReadStateTables("x.cpp", slip.source);
            ADD_FAILURE() << "the table is read";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), slip.message);
        }
    }
}

TEST(StateTablesTest, WhatLooksLikeATable) {
    struct Row {
        const char* line;
        bool isFound;
    };
    const Row ROWS[] = {
        {"//  state   \"a\"", true},      {"    ///  state  b", true},        {"//  0 body   keep", true},
        {"//  0, 1 body  keep", true},    {"// 12 in \"'\"  complete", true}, {"//  mode   EF   BB", false},
        {"// 32 bytes: one load", false}, {"/// state of one record", false}, {"0 body   keep", false},
        {"int x = 0;  // 0 body", false}, {"//  in state 0  the end", false}, {"", false},
    };
    for (const Row& row : ROWS)
        EXPECT_EQ(FindTableLines(row.line).size(), row.isFound ? 1U : 0U) << row.line;
}

}  // namespace
}  // namespace Kestra::Test
