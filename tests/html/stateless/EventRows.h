#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "html/stateless/StatelessHTMLParser.h"
#include "platform/CharSet.h"

/// @file
/// The tables of the stateless parser: an input, what it means as one piece, and what it means
/// where a cut decides. Includes what every file of tables needs.

namespace Kestra::Test {

/// White space inside a tag, and what it does to the place.
struct White {
    std::string_view bytes;
    std::uint64_t lines;    ///< line breaks that count
    std::uint64_t columns;  ///< after a line break the new column, otherwise the columns added
};

/// A line and a column. A row states its place step by step, or as a sum of the same: the column
/// "1 + 5 + 2 * 3" is five bytes of a tag and three of a text.
struct Place {
    std::uint64_t line = 1;
    std::uint64_t column = 1;

    /// Bytes of tags, of comments, and of strings and comments in scripts: one column each.
    Place Bytes(std::uint64_t count) const;

    /// Bytes of text, scripts and style sheets, except line breaks: two columns each.
    Place Content(std::uint64_t count) const;

    /// @param lines      line breaks that count
    /// @param newColumn  the column after the last one
    Place Lines(std::uint64_t lines, std::uint64_t newColumn) const;

    Place Skip(const White& white) const;
};

/// White space in many forms: of two line breaks in a row, the second one never counts.
extern const std::vector<White> WHITES;

/// What becomes of an input that is fed in one particular way.
struct Outcome {
    std::string events;        ///< between the first and the last one, each ended by a line feed
    Place place;               ///< after the input, or at the byte that does not fit
    std::uint32_t result = 0;  ///< of the last piece
};

/// An input with all its outcomes. A cut that is not mentioned makes no difference.
struct EventRow {
    EventRow(std::string rowNote, std::string rowInput, Outcome outcome);

    /// The input is `before` and `after`; `cut` is the outcome of the cut between them, and byte by
    /// byte.
    EventRow(std::string rowNote, const std::string& before, const std::string& after, Outcome outcome,
             const Outcome& cut);

    /// The outcome of the cut after `before`, with which the input begins.
    EventRow& After(std::string before, Outcome outcome);

    /// The outcome when each byte is a piece. Every row with an `After` has one; without, it is
    /// that of the whole input.
    EventRow& Bytewise(Outcome outcome);

    EventRow& AfterAndBytewise(std::string before, const Outcome& outcome);

    EventRow& In(StringNS::CharSet::Code rowCharset, unsigned long rowFlags = 1);

    /// The contents of scripts and the like are text.
    EventRow& ScriptsAsText();

    struct CutOutcome {
        std::string before;
        Outcome outcome;
    };

    std::string note;
    std::string input;
    Outcome whole;
    std::vector<CutOutcome> cuts;
    std::optional<Outcome> bytewise;
    StringNS::CharSet::Code charset = 0;
    unsigned long flags = 1;
    HTML::StatelessHTMLParser::ScriptMode scriptMode = HTML::StatelessHTMLParser::SCRIPT_AS_TOKENS;
};

/// Feeds each row whole, cut at each place, so with empty pieces in between, and byte by byte.
///
/// A table with less than `leastRows` different inputs fails, and so does a cut that is mentioned
/// and changes nothing.
void CheckRows(const std::vector<EventRow>& rows, std::size_t leastRows = 1);

/// A table for one construct or one part of it.
inline constexpr std::size_t ROWS_PER_CONSTRUCT = 80;

/// The same rows with the contents of scripts and the like as text.
std::vector<EventRow> AsText(std::vector<EventRow> rows);

/// Makes a test of each table, which calls `CheckRows`.
class EventTables {
public:
    struct Table {
        const char* test;
        std::vector<EventRow> rows;
        std::size_t leastRows = 1;
    };

    EventTables(const char* suite, std::initializer_list<Table> tables, const char* file = __builtin_FILE(),
                int line = __builtin_LINE());
};

}  // namespace Kestra::Test
