#include "tests/support/TableMachine.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

namespace Kestra::Test {

namespace {

using Kind = TableAction::Kind;

constexpr std::size_t MOST_STEPS = 20;  // without a symbol consumed: the table goes round

const std::vector<TableAction>& ReadKnownCell(const std::string& cell) {
    static std::map<std::string, std::vector<TableAction>> known;
    const auto place = known.find(cell);
    return place != known.end() ? place->second : known.emplace(cell, ReadCell(cell)).first->second;
}

const TableRow* FindRow(const StateTable& table, const TableMachine& machine, std::uint32_t state) {
    const auto name = machine.rowNames.find(state);
    for (const TableRow& row : table.rows) {
        if (row.state == state && (name == machine.rowNames.end() || row.name == name->second))
            return &row;
    }
    return nullptr;
}

std::optional<std::size_t> FindHead(const StateTable& table, std::string_view head) {
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        if (table.columns[i].head == head)
            return i;
    }
    return std::nullopt;
}

std::optional<std::size_t> FindClass(const StateTable& table, const TableMachine& machine, std::string_view name) {
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const std::vector<std::string>& classes = table.columns[i].classes;
        if (machine.ignoredHeads.count(table.columns[i].head) == 0 &&
            std::find(classes.begin(), classes.end(), name) != classes.end())
            return i;
    }
    return std::nullopt;
}

/// The column of a symbol.
std::optional<std::size_t> FindColumn(const StateTable& table, const TableMachine& machine, const TablePlace& place,
                                      const Codes& symbol) {
    if (machine.classify) {
        const std::string head = machine.classify(place, symbol);
        if (!head.empty())
            return FindHead(table, head);
    }
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const TableColumn& column = table.columns[i];
        const auto ignored = machine.ignoredIn.find(place.state);
        if (machine.ignoredHeads.count(column.head) == 0 &&
            (ignored == machine.ignoredIn.end() || ignored->second.count(column.head) == 0) &&
            std::find(column.texts.begin(), column.texts.end(), symbol) != column.texts.end())
            return i;
    }
    std::optional<std::size_t> column;
    if (symbol == u"\n")
        column = FindClass(table, machine, "line feed");
    if (!column && symbol == u"\x1B")
        column = FindClass(table, machine, "ESC");
    if (!column && symbol.size() == 1 && machine.isSpace(symbol[0]))
        column = FindClass(table, machine, "white space");
    return column ? column : FindClass(table, machine, "other");
}

}  // namespace

bool TableInput::operator<(const TableInput& other) const {
    return std::tie(state, endOfInput, pieces) < std::tie(other.state, other.endOfInput, other.pieces);
}

/// One input, as the table says.
class TableChecker::Walk {
public:
    Walk(const TableChecker& checker, const StateTable& asWritten, std::set<CellPlace>* usedCells)
        : machine(checker.machine), owner(checker), table(asWritten), used(usedCells) {}

    TableOutcome Carry(const TableInput& input) {
        Begin(input.state);
        pieces = input.pieces;
        endOfInput = input.endOfInput;
        for (piece = 0; piece < pieces.size() && !over; ++piece) {
            if (!ReadPiece())
                return outcome;
        }
        if (endOfInput && !over)
            ReadEnd();
        return outcome;
    }

    /// An example of a row that reads on.
    TableOutcome CarryExample(const TableRow& row, std::size_t index) {
        const TableExample& example = row.examples[index];
        Begin(row.state);
        Use(row, index);
        pieces = {{}};
        for (const char16_t code : example.before)
            pieces[0].emplace_back(1, code);
        Step(example.cell, example.text, true);
        if (outcome.trouble.empty() && !over)
            ReadPiece();
        return outcome;
    }

private:
    void Begin(std::uint32_t state) {
        outcome.state = state;
        for (const std::string& name : machine.fieldNames)
            outcome.fields.emplace(name, UNTOUCHED);
        const auto begin = machine.held.find(state);
        if (begin != machine.held.end())
            held = begin->second;
    }

    bool Fail(const std::string& why) {
        outcome.trouble = why;
        over = true;
        return false;
    }

    void Use(const TableRow& row, std::size_t index) {
        if (used != nullptr)
            used->insert({static_cast<std::size_t>(&row - table.rows.data()), index});
    }

    /// @return false when the outcome is settled
    bool ReadPiece() {
        std::size_t steps = 0;
        std::vector<Codes>& symbols = pieces[piece];
        hasGrown = false;
        for (next = 0; next < symbols.size();) {
            if (++steps > MOST_STEPS)
                return Fail("the table goes round in a circle");
            const TableRow* row = FindRow(table, machine, outcome.state);
            if (row == nullptr)
                return Fail("no row");
            if (!row->examples.empty())
                return HandOver();
            const std::optional<std::size_t> column =
                FindColumn(table, machine, {outcome.state, held, Gathered()}, symbols[next]);
            if (!column)
                return Fail("no column for " + ToLine(symbols[next]));
            std::string cell = row->cells[*column];
            Use(*row, *column);
            if (cell == "other") {
                const std::optional<std::size_t> other = FindClass(table, machine, "other");
                if (!other || row->cells[*other] == "other")
                    return Fail("no cell \"other\"");
                cell = row->cells[*other];
            }
            const std::size_t before = next;
            Step(cell, symbols[next], false);
            if (over)
                return outcome.trouble.empty();
            if (next != before)
                steps = 0;
        }
        return ReadEndOfPiece();
    }

    bool ReadEndOfPiece() {
        const TableRow* row = FindRow(table, machine, outcome.state);
        const std::optional<std::size_t> column = FindHead(table, "end of piece");
        if (!column || row == nullptr || row->cells.empty())
            return true;
        Use(*row, *column);
        const std::vector<TableAction> actions = ReadCell(row->cells[*column]);
        if (actions.size() != 1 || (actions[0].kind != Kind::DROP && actions[0].kind != Kind::KEEP))
            return Fail("the end of a piece keeps or drops");
        // Only when the state has read something of the piece.
        if (actions[0].kind == Kind::DROP && hasGrown)
            outcome.fields[machine.fields.at(outcome.state).name].clear();
        return true;
    }

    void ReadEnd() {
        const TableRow* row = FindRow(table, machine, outcome.state);
        const std::optional<std::size_t> column = FindHead(table, "end of input");
        if (row == nullptr) {
            Fail("no row");
            return;
        }
        if (!row->examples.empty()) {
            HandOver();
            return;
        }
        if (!column)
            return;
        Use(*row, *column);
        Step(row->cells[*column], {}, false);
        if (!over)
            Fail("the input has ended, and the cell goes on");
    }

    /// The rest of the input is another recognizer's: the machine itself says what becomes of it.
    bool HandOver() {
        TableInput rest;
        rest.state = outcome.state;
        rest.endOfInput = endOfInput;
        for (std::size_t i = piece; i < pieces.size(); ++i) {
            rest.pieces.emplace_back(
                i == piece ? std::vector<Codes>(pieces[i].begin() + static_cast<std::ptrdiff_t>(next), pieces[i].end())
                           : pieces[i]);
        }
        const TableOutcome& other = owner.RunFrom(rest);
        outcome.result = other.result;
        outcome.consumed += other.consumed;
        outcome.state = other.state;
        outcome.words.insert(other.words.begin(), other.words.end());
        for (const auto& [name, text] : other.fields) {
            if (text.starts_with(UNTOUCHED))
                outcome.fields[name] += text.substr(1);
            else
                outcome.fields[name] = text;
        }
        over = true;
        return false;
    }

    const Codes& Gathered() {
        const auto field = machine.fields.find(outcome.state);
        return field == machine.fields.end() || field->second.isSetOnLeaving ? gathered
                                                                             : outcome.fields[field->second.name];
    }

    void Add(const Codes& text) {
        const auto field = machine.fields.find(outcome.state);
        if (field == machine.fields.end())
            return;
        (field->second.isSetOnLeaving ? gathered : outcome.fields[field->second.name]) += text;
        hasGrown = true;
    }

    void Leave() {
        const auto field = machine.fields.find(outcome.state);
        if (field != machine.fields.end() && field->second.isSetOnLeaving)
            outcome.fields[field->second.name] = gathered;
    }

    void GoTo(std::uint32_t state) {
        Leave();
        gathered.clear();
        hasGrown = false;
        outcome.state = state;
    }

    void Complete(bool left) {
        Leave();
        outcome.result = machine.completeResult;
        over = true;
        isLeft = isLeft || left;
    }

    /// What a cell says of a symbol.
    void Step(const std::string& cell, const Codes& symbol, bool isExample) {
        isLeft = false;
        bool isSettled = false;
        const std::vector<TableAction>& actions = ReadKnownCell(cell);
        const bool leaves =
            std::any_of(actions.begin(), actions.end(), [](const TableAction& a) { return a.kind == Kind::UNREAD; });
        for (const TableAction& action : actions) {
            switch (action.kind) {
                case Kind::ADD:
                    Add(action.text);
                    continue;
                case Kind::RELEASE:
                    Add(held);
                    held.clear();
                    continue;
                case Kind::KEEP:
                    Add(symbol);
                    isSettled = true;
                    continue;
                case Kind::HOLD:
                    held += symbol;
                    isSettled = true;
                    continue;
                case Kind::DROP:
                    isSettled = true;
                    continue;
                case Kind::TO:
                    GoTo(action.number);
                    isSettled = true;
                    continue;
                case Kind::AS:
                    isLeft = true;
                    isSettled = true;
                    if (action.isChoice && !machine.choosesFirst) {
                        Fail("the machine does not choose");
                        return;
                    }
                    GoTo(action.isChoice && !machine.choosesFirst(gathered) ? action.second : action.number);
                    continue;
                case Kind::COMPLETE:
                    Complete(leaves);
                    isSettled = true;
                    continue;
                case Kind::FAIL:
                    outcome.result = action.number != 0 ? action.number : machine.failResult;
                    isLeft = true;
                    over = true;
                    isSettled = true;
                    continue;
                case Kind::UNTERMINATED:
                    outcome.result = machine.unterminatedResult;
                    isLeft = true;
                    over = true;
                    isSettled = true;
                    continue;
                case Kind::UNREAD:
                    continue;
                case Kind::WORD:
                    outcome.words.insert(action.word);
                    if (machine.recognizers.count(action.word) != 0) {
                        Complete(leaves);
                        isSettled = true;
                    } else if (machine.words.count(action.word) == 0) {
                        Fail("the machine does not know \"" + action.word + "\"");
                        return;
                    }
                    continue;
                case Kind::NEVER:
                    Fail("\"never\" comes there");
                    return;
            }
        }
        if (!isSettled) {
            Fail("the cell does not say what becomes of the character");
            return;
        }
        if (isExample) {
            // The text is consumed whatever happens then; what comes next is left.
            outcome.consumed += symbol.size();
        } else if (!isLeft) {
            outcome.consumed += symbol.size();
            ++next;
        }
    }

    const TableMachine& machine;
    const TableChecker& owner;
    const StateTable& table;
    std::set<CellPlace>* used;
    TableOutcome outcome;
    Codes held;
    Codes gathered;  // by a state whose field is set when it is left
    std::vector<std::vector<Codes>> pieces;
    std::size_t piece = 0;
    std::size_t next = 0;
    bool endOfInput = false;
    bool hasGrown = false;  // what the state gathers, in this piece
    bool isLeft = false;
    bool over = false;
};

TableChecker::TableChecker(StateTable checkedTable, TableMachine tableMachine)
    : table(std::move(checkedTable)), machine(std::move(tableMachine)) {
    AddRuns();
}

void TableChecker::AddRun(TableInput input, bool isSample) {
    TableOutcome outcome = machine.run(input);
    runs.push_back({std::move(input), std::move(outcome), isSample});
}

void TableChecker::AddRuns() {
    const bool hasEnd = table.HasClass("end of input");
    std::set<std::uint32_t> states;
    for (const TableRow& row : table.rows) {
        if (row.examples.empty() && FindRow(table, machine, row.state) == &row &&
            (machine.states.empty() || machine.states.count(row.state) != 0))
            states.insert(row.state);
    }
    for (const std::uint32_t state : states) {
        // The first two symbols of each column, in this state.
        std::vector<Codes> samples;
        std::map<std::size_t, int> ofColumn;
        for (const Codes& symbol : machine.symbols) {
            const Codes none;
            const auto begin = machine.held.find(state);
            const TablePlace place{state, begin == machine.held.end() ? none : begin->second, none};
            const std::optional<std::size_t> column = FindColumn(table, machine, place, symbol);
            if (column && ++ofColumn[*column] <= 2)
                samples.push_back(symbol);
        }
        if (hasEnd)
            AddRun({state, {}, true}, true);
        for (const Codes& symbol : machine.symbols) {
            const bool isSample = std::find(samples.begin(), samples.end(), symbol) != samples.end();
            AddRun({state, {{symbol}}, false}, isSample);
            if (hasEnd)
                AddRun({state, {{symbol}}, true}, isSample);
            for (std::size_t i = 0; i < samples.size(); i += 2)
                AddRun({state, {{symbol, samples[i]}}, false}, false);
        }
        for (const Codes& first : samples) {
            for (const Codes& second : samples) {
                AddRun({state, {{first, second}}, false}, true);
                AddRun({state, {{first}, {second}}, false}, true);
                if (hasEnd)
                    AddRun({state, {{first, second}}, true}, true);
                for (std::size_t i = 0; i < samples.size(); i += 2)
                    AddRun({state, {{first, second, samples[i]}}, false}, true);
            }
        }
        for (const std::vector<Codes>& symbols : machine.sequences)
            AddRun({state, {symbols}, false}, true);
    }
}

const TableOutcome& TableChecker::RunFrom(const TableInput& input) const {
    auto place = known.find(input);
    if (place == known.end())
        place = known.emplace(input, machine.run(input)).first;
    return place->second;
}

std::string TableChecker::Describe(const TableInput& input) {
    std::string line = "state " + std::to_string(input.state) + ",";
    for (const std::vector<Codes>& piece : input.pieces) {
        for (const Codes& symbol : piece)
            line.append(" ").append(ToLine(symbol));
        line += ";";
    }
    return line + (input.endOfInput ? " end of input" : "");
}

TableOutcome TableChecker::RunExample(const TableRow& row, const TableExample& example) const {
    TableInput input;
    input.state = row.state;
    input.endOfInput = example.atEndOfInput;
    input.pieces = {{}};
    for (const char16_t code : example.text + example.before)
        input.pieces[0].emplace_back(1, code);
    return RunFrom(input);
}

TableOutcome TableChecker::WithoutDetails(TableOutcome outcome) const {
    std::erase_if(outcome.fields, [&](const auto& outcomeField) {
        return std::none_of(machine.fields.begin(), machine.fields.end(),
                            [&](const auto& field) { return field.second.name == outcomeField.first; });
    });
    return outcome;
}

std::vector<TableDifference> TableChecker::Compare(std::set<CellPlace>* used, std::size_t most) {
    std::vector<TableDifference> differences;
    const auto compare = [&](const std::string& where, const TableOutcome& expected, const TableOutcome& actual) {
        if (!(expected == actual) && differences.size() < most)
            differences.push_back({where, "the table says " + ToLine(expected) + ", the machine " + ToLine(actual)});
    };
    users.clear();
    for (std::size_t i = 0; i < runs.size(); ++i) {
        std::set<CellPlace> cells;
        compare(Describe(runs[i].input), Walk(*this, table, &cells).Carry(runs[i].input), runs[i].outcome);
        used->insert(cells.begin(), cells.end());
        for (const CellPlace& place : cells) {
            if (runs[i].isSample)
                users[place].push_back(i);
        }
    }
    for (const TableRow& row : table.rows) {
        if (FindRow(table, machine, row.state) != &row)
            continue;
        for (std::size_t i = 0; i < row.examples.size(); ++i) {
            const TableExample& example = row.examples[i];
            compare("state " + std::to_string(row.state) + ", " + ToLine(example.text) + " before " +
                        ToLine(example.before),
                    WithoutDetails(Walk(*this, table, used).CarryExample(row, i)),
                    WithoutDetails(RunExample(row, example)));
        }
    }
    return differences;
}

bool TableChecker::FindsWrong(const CellPlace& place, const std::string& cell) const {
    const StateTable changed = ReplaceCell(table, place, cell);
    const TableRow& row = changed.rows[place.row];
    if (FindRow(changed, machine, row.state) != &row)
        return false;
    if (!row.examples.empty())
        return !(WithoutDetails(Walk(*this, changed, nullptr).CarryExample(row, place.index)) ==
                 WithoutDetails(RunExample(row, row.examples[place.index])));
    const auto found = users.find(place);
    return found != users.end() && std::any_of(found->second.begin(), found->second.end(), [&](std::size_t i) {
               return !(Walk(*this, changed, nullptr).Carry(runs[i].input) == runs[i].outcome);
           });
}

StateTable ReplaceCell(const StateTable& table, const CellPlace& place, const std::string& cell) {
    StateTable other = table;
    TableRow& row = other.rows[place.row];
    (row.examples.empty() ? row.cells[place.index] : row.examples[place.index].cell) = cell;
    return other;
}

std::string GetCell(const StateTable& table, const CellPlace& place) {
    const TableRow& row = table.rows[place.row];
    return row.examples.empty() ? row.cells[place.index] : row.examples[place.index].cell;
}

std::set<std::string> OtherCells(const StateTable& table, const CellPlace& place) {
    const TableRow& row = table.rows[place.row];
    const bool isExample = !row.examples.empty();
    const bool isEnd = !isExample && table.columns[place.index].head.starts_with("end of ");
    const std::size_t other = FindHead(table, "other").value_or(0);
    const std::string own = " " + std::to_string(row.state);
    // The cell in one of the ways to write it.
    const auto plain = [&](std::string cell) {
        if (cell == "other")
            cell = row.cells[other];
        if (cell.ends_with(" (kept)"))
            cell.resize(cell.size() - 7);
        if (cell.ends_with(", to" + own))
            cell.resize(cell.size() - own.size() - 4);
        return cell == "to" + own + ", fail" ? "fail" : cell;
    };
    std::set<std::string> written = {"keep", "drop", "hold", "fail", "complete", "complete, unread"};
    for (const TableRow& any : table.rows) {
        written.insert(any.cells.begin(), any.cells.end());
        for (const TableExample& example : any.examples)
            written.insert(example.cell);
        written.insert("to " + std::to_string(any.state));
        written.insert("as " + std::to_string(any.state));
    }
    std::set<std::string> cells;
    for (const std::string& cell : written) {
        const std::string changed = cell == "other" && isExample ? "fail" : plain(cell);
        const std::vector<TableAction>& actions = ReadKnownCell(changed);
        const auto has = [&](Kind kind) {
            return std::any_of(actions.begin(), actions.end(),
                               [&](const TableAction& action) { return action.kind == kind; });
        };
        if (isExample && !IsExampleCell(actions, row.state, !row.examples[place.index].before.empty()))
            continue;
        if ((isEnd && (has(Kind::UNREAD) || has(Kind::KEEP) || has(Kind::HOLD))) || changed == "drop" ||
            changed == "to" + own)
            continue;
        cells.insert(changed);
    }
    if (!isExample)
        cells.insert("drop");
    cells.erase(plain(GetCell(table, place)));
    return cells;
}

std::string ToLine(const Codes& codes) {
    std::string line;
    for (const char16_t code : codes) {
        if (code > ' ' && code < 127)
            line += static_cast<char>(code);
        else
            line.append("<").append(std::to_string(static_cast<unsigned>(code))).append(">");
    }
    return line.empty() ? "nothing" : line;
}

std::string ToLine(const TableOutcome& outcome) {
    if (!outcome.trouble.empty())
        return outcome.trouble;
    std::string line = std::to_string(outcome.result) + " after " + std::to_string(outcome.consumed) + " in state " +
                       std::to_string(outcome.state);
    for (const auto& [name, text] : outcome.fields)
        line.append(" ").append(name).append("(").append(text == UNTOUCHED ? "untouched" : ToLine(text)).append(")");
    for (const std::string& word : outcome.words)
        line.append(" ").append(word);
    return line;
}

}  // namespace Kestra::Test
