#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/html/stateless/EventRows.h"

// Comments: from "<!--" to the first "--" with a ">" after it. A hyphen by itself is dropped, three
// of them in a row are kept. A comment is over with its piece, and the rest of it is text.

namespace Kestra::Test {
namespace {

/// What a comment would be reported as after one of its bytes.
struct Reported {
    std::string body;
    /// Bytes so far that count two columns: those after one or two hyphens that are not the end.
    std::uint64_t contentBytes;
};

/// A comment before a tag, on one line.
/// @param reported  one for each byte of `body`. The hyphens of the "-->" after it add nothing.
EventRow MakeRow(const std::string& note, const std::string& body, std::vector<Reported> reported) {
    EXPECT_EQ(reported.size(), body.size()) << body;
    const std::string input = "<!--" + body + "--><p>";
    const Reported all = reported.empty() ? Reported{"", 0} : reported.back();
    reported.push_back(all);
    reported.push_back(all);
    EventRow row(note, input,
                 {"comment(" + all.body + ")\nstart(p|)\n", Place().Bytes(input.size() + all.contentBytes)});
    for (std::size_t length = reported.size(); length > 0; --length) {
        const Reported& cut = reported[length - 1];
        const std::string rest = (body + "-->").substr(length);
        // From the first byte of the comment on, single bytes leave only text.
        row.AfterAndBytewise(input.substr(0, 4 + length),
                             {"comment(" + cut.body + ")\ntext(" + rest + ")\nstart(p|)\n",
                              Place().Bytes(4 + length + cut.contentBytes).Content(rest.size()).Bytes(3)});
    }
    return row;
}

/// Without hyphens, what is reported is what was read.
EventRow MakeRow(const std::string& note, const std::string& body) {
    std::vector<Reported> reported;
    for (std::size_t length = 1; length <= body.size(); ++length)
        reported.push_back({body.substr(0, length), 0});
    return MakeRow(note, body, reported);
}

TEST(CommentTagEventsTest, WithoutHyphens) {
    std::vector<EventRow> rows = {MakeRow("nothing", "")};
    for (const char byte : std::string(" !\"#$%&'()*+,./0123456789:;=>?@AMZ[]^_`amz{|}~"))
        rows.push_back(MakeRow("one byte", std::string(1, byte)));
    for (const std::string body : {" a ", " abcd ", "ab", "[if IE]", "]]>", ">>", "\"q\"", "'q'", "DOCTYPE", "a b c",
                                   "/p>", "?>", "!>", "x > y"})
        rows.push_back(MakeRow("bytes", body));
    rows.push_back(MakeRow("many bytes", std::string(100, 'x')));
    CheckRows(rows);
}

/// Runs of hyphens: each third one is kept with the two before it. What is left of a run is dropped
/// when it is one and kept when it is two, and the byte after it counts two columns.
TEST(CommentTagEventsTest, RunsOfHyphens) {
    std::vector<EventRow> rows;
    for (const std::string lead : {"", "a", "b "}) {
        for (const std::string tail : {"b", " c", "!d", ">e"}) {
            for (std::size_t hyphens = 1; hyphens <= 9; ++hyphens) {
                if (hyphens % 3 == 2 && tail.front() == '>')
                    continue;  // the end
                std::vector<Reported> reported;
                for (std::size_t length = 1; length <= lead.size(); ++length)
                    reported.push_back({lead.substr(0, length), 0});
                for (std::size_t length = 1; length <= hyphens; ++length)
                    reported.push_back({lead + std::string(length / 3 * 3, '-'), length / 3});
                const std::string kept = lead + std::string(hyphens % 3 == 1 ? hyphens - 1 : hyphens, '-');
                const std::size_t contentBytes = hyphens / 3 + (hyphens % 3 == 0 ? 0 : 1);
                for (std::size_t length = 1; length <= tail.size(); ++length)
                    reported.push_back({kept + tail.substr(0, length), contentBytes});
                rows.push_back(MakeRow("a run", lead + std::string(hyphens, '-') + tail, reported));
            }
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

const std::vector<EventRow> HYPHENS = {
    MakeRow("one in a word", " x-y ", {{" ", 0}, {" x", 0}, {" x", 0}, {" xy", 1}, {" xy ", 1}}),
    MakeRow("three and \">\" are no end", "a--->b",
            {{"a", 0}, {"a", 0}, {"a", 0}, {"a---", 1}, {"a--->", 1}, {"a--->b", 1}}),
    MakeRow("two words", "x-y-z", {{"x", 0}, {"x", 0}, {"xy", 1}, {"xy", 1}, {"xyz", 2}}),
    MakeRow("one and \">\"", "->", {{"", 0}, {">", 1}}),
    MakeRow("apart", "- -a", {{"", 0}, {" ", 1}, {" ", 1}, {" a", 2}}),
    MakeRow("one, two", "a-b--c", {{"a", 0}, {"a", 0}, {"ab", 1}, {"ab", 1}, {"ab", 1}, {"ab--c", 2}}),
    MakeRow("two, one", "--a-b", {{"", 0}, {"", 0}, {"--a", 1}, {"--a", 1}, {"--ab", 2}}),
    MakeRow("an exclamation mark is no end", "a--!>", {{"a", 0}, {"a", 0}, {"a", 0}, {"a--!", 1}, {"a--!>", 1}}),
    MakeRow("a blank before \">\" is none either", "a-- >", {{"a", 0}, {"a", 0}, {"a", 0}, {"a-- ", 1}, {"a-- >", 1}}),
};

TEST(CommentTagEventsTest, Lines) {
    const std::string p = "start(p|)\n";
    CheckRows({
        EventRow("a line break is a column", "<!--a", "\nb--><p>", {"comment(a\\nb)\n" + p, {1, 14}},
                 {"comment(a)\ntext(\\nb-->)\n" + p, {2, 2 + 2 * 4 + 3}})
            .After("<!--a\n", {"comment(a\\n)\ntext(b-->)\n" + p, {1, 1 + 6 + 2 * 4 + 3}})
            .After("<!--a\nb", {"comment(a\\nb)\ntext(-->)\n" + p, {1, 1 + 7 + 2 * 3 + 3}})
            .After("<!--a\nb-", {"comment(a\\nb)\ntext(->)\n" + p, {1, 1 + 8 + 2 * 2 + 3}})
            .After("<!--a\nb--", {"comment(a\\nb)\ntext(>)\n" + p, {1, 1 + 9 + 2 * 1 + 3}}),
        EventRow("but after a hyphen it is counted", "<!--a", "-\nb--><p>", {"comment(a\\nb)\n" + p, {2, 9}},
                 {"comment(a)\ntext(-\\nb-->)\n" + p, {2, 2 + 2 * 4 + 3}})
            .After("<!--a-", {"comment(a)\ntext(\\nb-->)\n" + p, {2, 2 + 2 * 4 + 3}})
            .After("<!--a-\n", {"comment(a\\n)\ntext(b-->)\n" + p, {2, 2 + 2 * 4 + 3}})
            .After("<!--a-\nb", {"comment(a\\nb)\ntext(-->)\n" + p, {2, 2 + 1 + 2 * 3 + 3}})
            .After("<!--a-\nb-", {"comment(a\\nb)\ntext(->)\n" + p, {2, 2 + 2 + 2 * 2 + 3}})
            .After("<!--a-\nb--", {"comment(a\\nb)\ntext(>)\n" + p, {2, 2 + 3 + 2 * 1 + 3}}),
        EventRow("and after two hyphens", "<!---", "-\nb--><p>", {"comment(--\\nb)\n" + p, {2, 9}},
                 {"comment()\ntext(-\\nb-->)\n" + p, {2, 2 + 2 * 4 + 3}})
            .After("<!----", {"comment()\ntext(\\nb-->)\n" + p, {2, 2 + 2 * 4 + 3}})
            .After("<!----\n", {"comment(--\\n)\ntext(b-->)\n" + p, {2, 2 + 2 * 4 + 3}})
            .After("<!----\nb", {"comment(--\\nb)\ntext(-->)\n" + p, {2, 2 + 1 + 2 * 3 + 3}})
            .After("<!----\nb-", {"comment(--\\nb)\ntext(->)\n" + p, {2, 2 + 2 + 2 * 2 + 3}})
            .After("<!----\nb--", {"comment(--\\nb)\ntext(>)\n" + p, {2, 2 + 3 + 2 * 1 + 3}}),
    });
}

const std::vector<EventRow> IN_A_DOCUMENT = {
    EventRow("a tag inside", "<!--a", "<b>-->", {"comment(a<b>)\n", {1, 12}},
             {"comment(a)\nstart(b|)\n", {1, 1 + 8 + 2 * 3}})
        .After("<!--a<", {"comment(a<)\n", {1, 1 + 6 + 2 * 5}})
        .After("<!--a<b", {"comment(a<b)\n", {1, 1 + 7 + 2 * 4}})
        .After("<!--a<b>", {"comment(a<b>)\n", {1, 1 + 8 + 2 * 3}})
        .After("<!--a<b>-", {"comment(a<b>)\n", {1, 1 + 9 + 2 * 2}})
        .After("<!--a<b>--", {"comment(a<b>)\n", {1, 1 + 10 + 2 * 1}}),
    EventRow("two of them", "<!--a--><!--b-->", {"comment(a)\ncomment(b)\n", {1, 17}})
        .After("<!--a", {"comment(a)\ntext(-->)\ncomment(b)\n", {1, 1 + 5 + 2 * 3 + 8}})
        .After("<!--a-", {"comment(a)\ntext(->)\ncomment(b)\n", {1, 1 + 6 + 2 * 2 + 8}})
        .After("<!--a--", {"comment(a)\ntext(>)\ncomment(b)\n", {1, 1 + 7 + 2 * 1 + 8}})
        .After("<!--a--><!--b", {"comment(a)\ncomment(b)\n", {1, 1 + 13 + 2 * 3}})
        .After("<!--a--><!--b-", {"comment(a)\ncomment(b)\n", {1, 1 + 14 + 2 * 2}})
        .After("<!--a--><!--b--", {"comment(a)\ncomment(b)\n", {1, 1 + 15 + 2 * 1}})
        .Bytewise({"comment(a)\ntext(-->)\ncomment(b)\n", {1, 1 + 5 + 2 * 3 + 5 + 2 * 3}}),
    EventRow("a text in front", "a<!--b", "-->", {"text(a)\ncomment(b)\n", {1, 1 + 2 * 1 + 8}},
             {"text(a)\ncomment(b)\n", {1, 1 + 2 * 1 + 5 + 2 * 3}})
        .After("a<!--b-", {"text(a)\ncomment(b)\n", {1, 1 + 2 * 1 + 6 + 2 * 2}})
        .After("a<!--b--", {"text(a)\ncomment(b)\n", {1, 1 + 2 * 1 + 7 + 2 * 1}}),
    {"it opens with two hyphens", "<!-a-->", {"", {1, 4}, 703}},
};

const std::vector<EventRow> NOT_OVER = {
    {"\"<!-\"", "<!-", {"", {1, 4}}},
    {"\"<!--\"", "<!--", {"", {1, 5}}},  // no byte of it yet
    {"one byte", "<!--a", {"comment(a)\n", {1, 6}}},
    {"one hyphen", "<!---", {"comment()\n", {1, 6}}},
    {"two bytes", "<!--a", "b", {"comment(ab)\n", {1, 7}}, {"comment(a)\n", {1, 1 + 5 + 2 * 1}}},
    {"a hyphen at the end", "<!--a", "-", {"comment(a)\n", {1, 7}}, {"comment(a)\n", {1, 1 + 5 + 2 * 1}}},
    EventRow("two hyphens at the end", "<!--a", "--", {"comment(a)\n", {1, 8}}, {"comment(a)\n", {1, 1 + 5 + 2 * 2}})
        .After("<!--a-", {"comment(a)\n", {1, 1 + 6 + 2 * 1}}),
    EventRow("three hyphens at the end", "<!---", "--", {"comment(---)\n", {1, 9}}, {"comment()\n", {1, 1 + 5 + 2 * 2}})
        .After("<!----", {"comment()\n", {1, 1 + 6 + 2 * 1}}),
};

const EventTables TABLES("CommentTagEventsTest",
                         {{"Hyphens", HYPHENS}, {"InADocument", IN_A_DOCUMENT}, {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
