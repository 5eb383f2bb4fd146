#include "tests/html/stateless/EventRows.h"

#include <memory>
#include <set>
#include <tuple>
#include <utility>

#include "tests/support/EventRun.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {

namespace {

std::string Show(const std::string& trace, std::uint32_t result, std::uint64_t line, std::uint64_t column) {
    return trace + "result " + std::to_string(result) + ", line " + std::to_string(line) + ", column " +
           std::to_string(column) + "\n";
}

std::string Show(const Outcome& outcome) {
    return Show("start-parsing\n" + outcome.events + "stop-parsing\n", outcome.result, outcome.place.line,
                outcome.place.column);
}

std::string Feed(const EventRow& row, const std::vector<std::string>& pieces) {
    HTML::StatelessHTMLParser parser;
    parser.SetScriptMode(row.scriptMode);
    const EventRun run = ParseEvents(&parser, pieces, row.charset, row.flags);
    EXPECT_EQ(run.endResult, 0U);
    std::string trace;
    for (const std::string& event : run.trace) {
        trace += event;
        trace += '\n';
    }
    return Show(trace, run.parseResults.back(), run.line, run.column);
}

const Outcome& AtCut(const EventRow& row, std::size_t cut) {
    for (const EventRow::CutOutcome& stated : row.cuts) {
        if (stated.before.size() == cut)
            return stated.outcome;
    }
    return row.whole;
}

void CheckStatements(const EventRow& row) {
    std::set<std::size_t> cuts;
    for (const EventRow::CutOutcome& stated : row.cuts) {
        EXPECT_TRUE(row.input.starts_with(stated.before)) << Trace::Escape(stated.before);
        EXPECT_LT(stated.before.size(), row.input.size());
        EXPECT_TRUE(cuts.insert(stated.before.size()).second) << "twice: " << Trace::Escape(stated.before);
        EXPECT_NE(Show(stated.outcome), Show(row.whole)) << "no difference: " << Trace::Escape(stated.before);
    }
    EXPECT_TRUE(row.cuts.empty() || row.bytewise) << "nothing stated for single bytes";
}

void CheckRow(const EventRow& row) {
    EXPECT_EQ(Feed(row, {row.input}), Show(row.whole)) << "whole";
    for (std::size_t cut = 1; cut < row.input.size(); ++cut) {
        const std::string before = row.input.substr(0, cut);
        const std::string after = row.input.substr(cut);
        const std::string expected = Show(AtCut(row, cut));
        EXPECT_EQ(Feed(row, {before, after}), expected) << "cut at " << cut;
        EXPECT_EQ(Feed(row, {"", before, "", after}), expected) << "cut at " << cut << ", with empty pieces";
    }
    std::vector<std::string> bytes;
    for (const char byte : row.input)
        bytes.emplace_back(1, byte);
    EXPECT_EQ(Feed(row, bytes), Show(row.bytewise.value_or(row.whole))) << "byte by byte";
}

}  // namespace

const std::vector<White> WHITES = {
    {" ", 0, 1},     {"\t", 0, 1},     {"\v\f", 0, 2},  {"  ", 0, 2},       {"\n", 1, 1},
    {"\r", 1, 1},    {"\r\n", 1, 1},   {"\n\r", 1, 1},  {"\n\n", 1, 1},     {"\r\r", 1, 1},
    {" \n\t", 1, 2}, {"\n\n\n", 2, 1}, {"\n \n", 2, 1}, {"\r\n\r\n", 2, 1}, {"\n\n ", 1, 2},
};

Place Place::Bytes(std::uint64_t count) const {
    return {line, column + count};
}

Place Place::Content(std::uint64_t count) const {
    return {line, column + 2 * count};
}

Place Place::Lines(std::uint64_t lines, std::uint64_t newColumn) const {
    return {line + lines, newColumn};
}

Place Place::Skip(const White& white) const {
    return white.lines == 0 ? Bytes(white.columns) : Lines(white.lines, white.columns);
}

EventRow::EventRow(std::string rowNote, std::string rowInput, Outcome outcome)
    : note(std::move(rowNote)), input(std::move(rowInput)), whole(std::move(outcome)) {}

EventRow::EventRow(std::string rowNote, const std::string& before, const std::string& after, Outcome outcome,
                   const Outcome& cut)
    : EventRow(std::move(rowNote), before + after, std::move(outcome)) {
    AfterAndBytewise(before, cut);
}

EventRow& EventRow::After(std::string before, Outcome outcome) {
    cuts.push_back({std::move(before), std::move(outcome)});
    return *this;
}

EventRow& EventRow::Bytewise(Outcome outcome) {
    bytewise = std::move(outcome);
    return *this;
}

EventRow& EventRow::AfterAndBytewise(std::string before, const Outcome& outcome) {
    return After(std::move(before), outcome).Bytewise(outcome);
}

EventRow& EventRow::In(StringNS::CharSet::Code rowCharset, unsigned long rowFlags) {
    charset = rowCharset;
    flags = rowFlags;
    return *this;
}

EventRow& EventRow::ScriptsAsText() {
    scriptMode = HTML::StatelessHTMLParser::SCRIPT_AS_TEXT;
    return *this;
}

void CheckRows(const std::vector<EventRow>& rows, std::size_t leastRows) {
    std::set<std::tuple<std::string, StringNS::CharSet::Code, unsigned long>> inputs;
    for (const EventRow& row : rows) {
        SCOPED_TRACE(row.note + ": " + Trace::Escape(row.input));
        EXPECT_TRUE(inputs.emplace(row.input, row.charset, row.flags).second) << "a second row for this input";
        CheckStatements(row);
        CheckRow(row);
    }
    EXPECT_GE(inputs.size(), leastRows);
}

std::vector<EventRow> AsText(std::vector<EventRow> rows) {
    for (EventRow& row : rows)
        row.ScriptsAsText();
    return rows;
}

EventTables::EventTables(const char* suite, std::initializer_list<Table> tables, const char* file, int line) {
    class TableTest final : public testing::Test {
    public:
        explicit TableTest(const Table* testedTable) : table(testedTable) {}

        void TestBody() override {
            CheckRows(table->rows, table->leastRows);
        }

    private:
        const Table* table;
    };
    for (const Table& table : tables) {
        const auto kept = std::make_shared<const Table>(table);
        testing::RegisterTest(suite, table.test, nullptr, nullptr, file, line,
                              [kept]() -> testing::Test* { return new TableTest(kept.get()); });
    }
}

}  // namespace Kestra::Test
