#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// Reads the state tables in the comments of sources. A table looks like this:
///
///     //  state      "-"       white space   "=", "["   other     end of input
///     //  0 body     to 1      keep          keep       keep      complete, open
///     //  1 "-"      "-", as 0 (kept)        ...
///     //  2 value    the value recognizer reads on: "a": hold; "a" before " ": complete; end of input: fail
///
/// Cells begin in the column of their heads and at least two spaces after the cell before. A head
/// lists characters or texts in quotes, or names a class: "white space", "line feed", "ESC",
/// "other" (every character that no other column has), "end of piece", "end of input", or one that
/// only the machine knows. A cell says what happens, in this order, separated by commas:
///
///     "text"             is added to what the state gathers; so is ESC
///     release            what is held is added
///     keep, drop, hold   the character is consumed: added, not added, or held until `release`
///     to 1               the character is consumed, the next state is 1
///     as 1               the next state is 1, which reads the same character; "as 1 or 2" when
///                        the machine decides between the two
///     complete           the construct is complete, the character is consumed
///     fail, 703          it fails, with the result that a machine has for "fail" or with that one;
///                        the character is left
///     unterminated       the answer to the end of the input
///     unread             after "complete": the character is left
///     open               any other word: what the machine knows by that name; the name of a
///                        recognizer completes as well
///
/// "never" says that a character of that class does not come there, "other" that it is treated as
/// the last column of characters says, and "(kept)" at the end that this is odd and stays. A row of
/// "reads on" belongs to another recognizer and gives examples: a text, or "end of input", and what
/// happens after it: hold, or how the state is left ("to 1, fail" too). "before" says which text
/// comes next, which only a state that is left can leave. The row may go on in further lines.

namespace Kestra::Test {

/// The codes of characters.
using Codes = std::u16string;

struct TableAction {
    enum class Kind { ADD, RELEASE, KEEP, DROP, HOLD, TO, AS, COMPLETE, FAIL, UNTERMINATED, UNREAD, WORD, NEVER };

    Kind kind = Kind::KEEP;
    Codes text;                // of ADD
    std::string word;          // of WORD
    std::uint32_t number = 0;  // the state of TO and AS, the result of FAIL, or 0 for the machine's
    std::uint32_t second = 0;  // the other state of AS
    bool isChoice = false;     // AS has two states
};

/// The cell's actions. @throw std::runtime_error for a cell that is not in the form above
std::vector<TableAction> ReadCell(std::string_view cell);

/// Whether the actions can be those of an example of a state.
bool IsExampleCell(const std::vector<TableAction>& actions, std::uint32_t state, bool hasBefore);

struct TableColumn {
    std::string head;
    std::vector<Codes> texts;          // in quotes
    std::vector<std::string> classes;  // by name
};

/// What happens after a text in a row of "reads on".
struct TableExample {
    Codes text;
    bool atEndOfInput = false;
    Codes before;
    std::string cell;
};

struct TableRow {
    std::size_t line = 0;
    std::uint32_t state = 0;
    std::string name;
    std::vector<std::string> cells;  // empty in a row of "reads on"
    std::vector<TableExample> examples;
};

struct StateTable {
    std::string file;  // from the root, with "/"
    std::size_t line = 0;
    std::vector<TableColumn> columns;
    std::vector<TableRow> rows;

    std::string Name() const;
    bool HasClass(std::string_view name) const;
};

/// The tables of a source. @throw std::runtime_error for one that is not in the form above
std::vector<StateTable> ReadStateTables(const std::string& file, std::string_view source);

/// The lines that look like those of a table: its head, or a state's number and name and then
/// cells.
std::vector<std::size_t> FindTableLines(std::string_view source);

/// The lines of tables that have been read: the same lines, unless one was left out.
std::vector<std::size_t> ListTableLines(const std::vector<StateTable>& tables);

/// The sources below a folder, from the root.
std::vector<std::string> ListSources(const std::filesystem::path& root, const std::string& folder);

std::string ReadSource(const std::filesystem::path& root, const std::string& file);

}  // namespace Kestra::Test
