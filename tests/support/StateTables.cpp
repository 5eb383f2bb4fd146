#include "tests/support/StateTables.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>

namespace Kestra::Test {

namespace {

constexpr char16_t ESC = 27;

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

std::string_view Trim(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == text.npos)
        return {};
    return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// An apostrophe in a word opens nothing.
bool OpensQuote(std::string_view text, std::size_t at) {
    return (text[at] == '"' || text[at] == '\'') && (at == 0 || text[at - 1] == ' ');
}

/// The end of the quoted text that begins at `begin`, after its closing quote.
std::size_t EndOfQuoted(std::string_view text, std::size_t begin) {
    const std::size_t close = text.find(text[begin], begin + 1);
    if (close == text.npos)
        throw std::runtime_error("a quote is not closed: " + std::string(text));
    return close + 1;
}

/// Splits at a character outside of quotes.
std::vector<std::string_view> SplitOutsideQuotes(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < text.size();) {
        if (OpensQuote(text, at)) {
            at = EndOfQuoted(text, at);
            continue;
        }
        if (text[at] == separator) {
            parts.push_back(Trim(text.substr(begin, at - begin)));
            begin = at + 1;
        }
        ++at;
    }
    parts.push_back(Trim(text.substr(begin)));
    return parts;
}

Codes ToCodes(std::string_view text) {
    Codes codes;
    for (const char character : text)
        codes.push_back(static_cast<unsigned char>(character));
    return codes;
}

/// Quoted texts, ESC and "line feed", one after the other. Nothing when it is something else.
std::optional<Codes> ReadText(std::string_view text) {
    constexpr std::string_view LINE_FEED = "line feed";
    Codes codes;
    for (text = Trim(text); !text.empty(); text = Trim(text)) {
        if (text[0] == '"' || text[0] == '\'') {
            const std::size_t end = EndOfQuoted(text, 0);
            codes += ToCodes(text.substr(1, end - 2));
            text.remove_prefix(end);
        } else if (text.starts_with("ESC")) {
            codes += ESC;
            text.remove_prefix(3);
        } else if (text.starts_with(LINE_FEED)) {
            codes += u'\n';
            text.remove_prefix(LINE_FEED.size());
        } else {
            return std::nullopt;
        }
    }
    return codes;
}

std::optional<std::uint32_t> ReadNumber(std::string_view text) {
    if (text.empty() || text.size() > 6 || !std::all_of(text.begin(), text.end(), IsDigit))
        return std::nullopt;
    return static_cast<std::uint32_t>(std::stoul(std::string(text)));
}

/// Where the parts of a line begin that two spaces or more separate. Spaces in quotes separate
/// nothing.
std::vector<std::size_t> FindCells(std::string_view line) {
    std::vector<std::size_t> cells;
    bool separated = true;
    for (std::size_t at = 0; at < line.size();) {
        if (line.substr(at, 2) == "  ") {
            separated = true;
            at += 2;
        } else if (line[at] == ' ') {
            ++at;
        } else {
            if (separated)
                cells.push_back(at);
            separated = false;
            at = OpensQuote(line, at) ? EndOfQuoted(line, at) : at + 1;
        }
    }
    return cells;
}

/// What follows the slashes, or nothing when the line is no comment.
std::optional<std::string_view> ReadComment(std::string_view line) {
    const std::size_t begin = line.find_first_not_of(' ');
    if (begin == line.npos || line.substr(begin, 2) != "//")
        return std::nullopt;
    const std::size_t text = line.find_first_not_of('/', begin);
    return text == line.npos ? std::string_view() : line.substr(text);
}

bool IsHead(std::string_view comment) {
    const std::string_view text = Trim(comment);
    return text.starts_with("state  ");
}

/// A state's number and its name, and cells after it.
bool IsRow(std::string_view comment) {
    const std::string_view text = Trim(comment);
    const std::size_t end = text.find_first_not_of("0123456789, ");
    if (text.empty() || !IsDigit(text[0]) || end == text.npos || text[end - 1] != ' ')
        return false;
    return text.find("  ") != text.npos;
}

/// Lines without their ends.
std::vector<std::string_view> SplitLines(std::string_view source) {
    std::vector<std::string_view> lines;
    while (!source.empty()) {
        const std::size_t end = std::min(source.find('\n'), source.size());
        std::string_view line = source.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        lines.push_back(line);
        source.remove_prefix(std::min(end + 1, source.size()));
    }
    return lines;
}

std::string_view DropKept(std::string_view cell) {
    constexpr std::string_view KEPT = " (kept)";
    return cell.ends_with(KEPT) ? cell.substr(0, cell.size() - KEPT.size()) : cell;
}

class TableReader {
public:
    TableReader(std::string file, std::size_t line) {
        table.file = std::move(file);
        table.line = line;
    }

    void ReadHead(std::string_view comment) {
        begins = FindCells(comment);
        for (std::size_t i = 1; i < begins.size(); ++i) {
            const std::string_view head = CellAt(comment, begins, i);
            TableColumn column;
            column.head = head;
            for (const std::string_view item : SplitOutsideQuotes(head, ',')) {
                const std::optional<Codes> text =
                    item.starts_with('"') || item.starts_with('\'') ? ReadText(item) : std::nullopt;
                if (text)
                    column.texts.push_back(*text);
                else
                    column.classes.emplace_back(item);
            }
            table.columns.push_back(column);
        }
    }

    void ReadRow(std::string_view comment, std::size_t line) {
        const std::vector<std::size_t> cells = FindCells(comment);
        const std::string_view title = CellAt(comment, cells, 0);
        const std::size_t space = std::min(title.find(' '), title.size());
        TableRow row;
        row.line = line;
        const std::optional<std::uint32_t> state = ReadNumber(title.substr(0, space));
        if (!state)
            throw std::runtime_error("a row begins with no state");
        row.state = *state;
        row.name = Trim(title.substr(space));
        if (cells.size() < 2 || cells[0] != begins[0] || cells[1] != begins[1])
            throw std::runtime_error("a row does not begin in the columns of the head");
        readsOn =
            comment.substr(cells[1]).starts_with("the ") && comment.find(" recognizer reads on: ") != comment.npos;
        if (readsOn) {
            examples = comment.substr(comment.find(" reads on: ") + 11);
        } else {
            if (cells != begins)
                throw std::runtime_error("the cells of a row are not in the columns of the head");
            for (std::size_t i = 1; i < cells.size(); ++i)
                row.cells.emplace_back(CellAt(comment, cells, i));
        }
        table.rows.push_back(row);
    }

    /// A further line of a row that reads on.
    void GoOn(std::string_view comment) {
        if (!readsOn || comment.find_first_not_of(' ') != begins[1])
            throw std::runtime_error("a line is neither a row nor goes on with one");
        examples += " ";
        examples += Trim(comment);
    }

    void EndRow() {
        if (!readsOn)
            return;
        readsOn = false;
        for (const std::string_view part : SplitOutsideQuotes(examples, ';')) {
            const std::vector<std::string_view> sides = SplitOutsideQuotes(part, ':');
            if (sides.size() != 2)
                throw std::runtime_error("an example is not a text, a colon and a cell: " + std::string(part));
            TableExample example;
            example.cell = sides[1];
            example.atEndOfInput = sides[0] == "end of input";
            if (!example.atEndOfInput) {
                const std::size_t before = FindBefore(sides[0]);
                const std::optional<Codes> text = ReadText(sides[0].substr(0, before));
                const std::optional<Codes> next =
                    before == sides[0].npos ? Codes() : ReadText(sides[0].substr(before + 6));
                if (!text || !next || (text->empty() && next->empty()))
                    throw std::runtime_error("no text in quotes: " + std::string(sides[0]));
                example.text = *text;
                example.before = *next;
            }
            table.rows.back().examples.push_back(example);
        }
    }

    StateTable table;

private:
    static std::string_view CellAt(std::string_view comment, const std::vector<std::size_t>& cells, std::size_t i) {
        const std::size_t end = i + 1 < cells.size() ? cells[i + 1] : comment.size();
        return Trim(comment.substr(cells[i], end - cells[i]));
    }

    static std::size_t FindBefore(std::string_view text) {
        for (std::size_t at = 0; at < text.size();) {
            if (text.substr(at).starts_with("before "))
                return at;
            at = OpensQuote(text, at) ? EndOfQuoted(text, at) : at + 1;
        }
        return text.npos;
    }

    std::vector<std::size_t> begins;
    bool readsOn = false;
    std::string examples;
};

}  // namespace

std::vector<TableAction> ReadCell(std::string_view cell) {
    using Kind = TableAction::Kind;
    const auto wrong = [&](const char* why) {
        return std::runtime_error("the cell [" + std::string(cell) + "]: " + why);
    };
    std::vector<TableAction> actions;
    int ends = 0;
    bool left = false;
    bool consumes = false;
    for (const std::string_view item : SplitOutsideQuotes(DropKept(cell), ',')) {
        TableAction action;
        const std::optional<Codes> text = ReadText(item);
        if (item.empty())
            throw wrong("empty");
        if (text) {
            action.kind = Kind::ADD;
            action.text = *text;
        } else if (item == "release") {
            action.kind = Kind::RELEASE;
        } else if (item == "keep" || item == "drop" || item == "hold") {
            action.kind = item == "keep" ? Kind::KEEP : item == "drop" ? Kind::DROP : Kind::HOLD;
            consumes = true;
        } else if (item.starts_with("to ") && ReadNumber(item.substr(3))) {
            action.kind = Kind::TO;
            action.number = *ReadNumber(item.substr(3));
            ++ends;
            consumes = true;
        } else if (item.starts_with("as ")) {
            action.kind = Kind::AS;
            const std::size_t space = std::min(item.find(' ', 3), item.size());
            const std::optional<std::uint32_t> first = ReadNumber(item.substr(3, space - 3));
            std::optional<std::uint32_t> second;
            if (item.substr(space).starts_with(" or ")) {
                second = ReadNumber(item.substr(space + 4));
                action.isChoice = true;
            }
            if (!first || (space < item.size() && !second))
                throw wrong("\"as\" without a state");
            action.number = *first;
            action.second = second.value_or(0);
            ++ends;
            left = true;
        } else if (item == "complete") {
            action.kind = Kind::COMPLETE;
            ++ends;
        } else if (item == "fail" || ReadNumber(item)) {
            action.kind = Kind::FAIL;
            action.number = ReadNumber(item).value_or(0);
            // A machine may fail in another state than it began in.
            ends += !actions.empty() && actions.back().kind == Kind::TO ? 0 : 1;
            left = !consumes;
        } else if (item == "unterminated") {
            action.kind = Kind::UNTERMINATED;
            ++ends;
        } else if (item == "unread") {
            action.kind = Kind::UNREAD;
            left = true;
        } else if (item == "never") {
            action.kind = Kind::NEVER;
        } else {
            action.kind = Kind::WORD;
            action.word = item;
        }
        actions.push_back(action);
    }
    if (ends > 1)
        throw wrong("two ends");
    if (left && consumes)
        throw wrong("the character is both consumed and left");
    if (actions.size() > 1 &&
        std::any_of(actions.begin(), actions.end(), [](const TableAction& a) { return a.kind == Kind::NEVER; }))
        throw wrong("never, and more");
    return actions;
}

bool IsExampleCell(const std::vector<TableAction>& actions, std::uint32_t state, bool hasBefore) {
    using Kind = TableAction::Kind;
    bool isLeft = false;
    for (const TableAction& action : actions) {
        switch (action.kind) {
            case Kind::RELEASE:
            case Kind::KEEP:
            case Kind::DROP:
            case Kind::AS:
            case Kind::UNREAD:
            case Kind::NEVER:
                return false;
            case Kind::ADD:
                continue;
            case Kind::HOLD:
                if (actions.size() > 1 || hasBefore)
                    return false;
                isLeft = true;
                continue;
            case Kind::TO:
                if (action.number == state)
                    return false;
                isLeft = true;
                continue;
            case Kind::COMPLETE:
            case Kind::FAIL:
            case Kind::UNTERMINATED:
            case Kind::WORD:
                isLeft = true;
                continue;
        }
    }
    return isLeft;
}

std::string StateTable::Name() const {
    return file + ", line " + std::to_string(line);
}

bool StateTable::HasClass(std::string_view name) const {
    return std::any_of(columns.begin(), columns.end(), [&](const TableColumn& column) {
        return std::find(column.classes.begin(), column.classes.end(), name) != column.classes.end();
    });
}

std::vector<StateTable> ReadStateTables(const std::string& file, std::string_view source) {
    std::vector<StateTable> tables;
    std::unique_ptr<TableReader> reader;
    std::size_t number = 0;
    const auto finish = [&] {
        if (reader) {
            reader->EndRow();
            tables.push_back(reader->table);
        }
        reader.reset();
    };
    try {
        for (const std::string_view line : SplitLines(source)) {
            ++number;
            const std::optional<std::string_view> comment = ReadComment(line);
            if (!comment || Trim(*comment).empty()) {
                finish();
            } else if (IsHead(*comment)) {
                finish();
                reader = std::make_unique<TableReader>(file, number);
                reader->ReadHead(*comment);
            } else if (reader && IsDigit(Trim(*comment)[0])) {
                reader->EndRow();
                reader->ReadRow(*comment, number);
            } else if (reader) {
                reader->GoOn(*comment);
            }
        }
        finish();
        for (const StateTable& table : tables) {
            number = table.line;
            if (table.columns.empty() || table.rows.empty())
                throw std::runtime_error("a table without columns or rows");
            for (const TableRow& row : table.rows) {
                number = row.line;
                for (const std::string& cell : row.cells) {
                    if (cell != "other")
                        ReadCell(cell);
                }
                for (const TableExample& example : row.examples) {
                    if (!IsExampleCell(ReadCell(example.cell), row.state, !example.before.empty()))
                        throw std::runtime_error("an example that cannot be: " + example.cell);
                }
            }
        }
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(file + ":" + std::to_string(number) + ": " + error.what());
    }
    return tables;
}

std::vector<std::size_t> FindTableLines(std::string_view source) {
    std::vector<std::size_t> found;
    std::size_t number = 0;
    for (const std::string_view line : SplitLines(source)) {
        ++number;
        const std::optional<std::string_view> comment = ReadComment(line);
        if (comment && (IsHead(*comment) || IsRow(*comment)))
            found.push_back(number);
    }
    return found;
}

std::vector<std::size_t> ListTableLines(const std::vector<StateTable>& tables) {
    std::vector<std::size_t> lines;
    for (const StateTable& table : tables) {
        lines.push_back(table.line);
        for (const TableRow& row : table.rows)
            lines.push_back(row.line);
    }
    return lines;
}

std::vector<std::string> ListSources(const std::filesystem::path& root, const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension == ".h" || extension == ".cpp")
            files.push_back(entry.path().lexically_relative(root).generic_string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string ReadSource(const std::filesystem::path& root, const std::string& file) {
    std::ifstream stream(root / file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace Kestra::Test
