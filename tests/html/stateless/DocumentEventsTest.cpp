#include "tests/html/stateless/EventRows.h"

// Whole documents, what may follow "<", lines and columns of text.

namespace Kestra::Test {
namespace {

const std::vector<EventRow> IN_ONE_PIECE_AND_CUT = {
    {"text and tags", "a<b>c</b>", {"text(a)\nstart(b|)\ntext(c)\nend(b)\n", {1, 12}}},
    {"text after the last tag is not reported", "a<b>c</b>d", {"text(a)\nstart(b|)\ntext(c)\nend(b)\n", {1, 14}}},
    {"text and no tag is not reported", "abc", {"", {1, 7}}},
    {"text is reported at the next \"<\"", "abc<", {"text(abc)\n", {1, 8}}},
    {"between tags no text", "<a><b>", {"start(a|)\nstart(b|)\n", {1, 7}}},
    {"a blank is text", "<a> <b>", {"start(a|)\ntext( )\nstart(b|)\n", {1, 9}}},
    {"\">\" is text", "a>b<c>", {"text(a>b)\nstart(c|)\n", {1, 10}}},
    {"character references are text", "&lt;&#65;<p>", {"text(&lt;&#65;)\nstart(p|)\n", {1, 22}}},
    {"a comment's end is text", "--><p>", {"text(-->)\nstart(p|)\n", {1, 10}}},
    {"quotes are text", "'<p>\"</p>'", {"text(')\nstart(p|)\ntext(\")\nend(p)\n", {1, 14}}},
    {"a text is a string that ends at its first NUL", std::string("a\0b<p>", 6), {"text(a)\nstart(p|)\n", {1, 10}}},
    {"a text that begins with NUL is an event", std::string("\0b<p>", 5), {"text()\nstart(p|)\n", {1, 8}}},
    {"a tag that is closed at once", "<br/", ">", {"start(br|)\nend(br)\n", {1, 6}}, {"start(br|)\nend(br)\n", {1, 7}}},
};

TEST(DocumentEventsTest, Lines) {
    const std::string p = "start(p|)\n";
    CheckRows({
        {"one line break", "a\nb<p>", {"text(a\\nb)\n" + p, {2, 2 + 2 * 1 + 3}}},
        {"two are one line", "a\n\nb<p>", {"text(a\\n\\nb)\n" + p, {2, 3 + 2 * 1 + 3}}},
        {"CR and LF are one", "a\r\nb<p>", {"text(a\\r\\nb)\n" + p, {2, 3 + 2 * 1 + 3}}},
        {"two CR are one", "a\r\rb<p>", {"text(a\\r\\rb)\n" + p, {2, 3 + 2 * 1 + 3}}},
        {"LF and CR are one", "a\n\rb<p>", {"text(a\\n\\rb)\n" + p, {2, 3 + 2 * 1 + 3}}},
        {"three are two", "\n\n\n<p>", {"text(\\n\\n\\n)\n" + p, {3, 5}}},
        {"four are two", "\r\n\r\n<p>", {"text(\\r\\n\\r\\n)\n" + p, {3, 6}}},
        {"a byte in between parts them", "\na\n<p>", {"text(\\na\\n)\n" + p, {3, 5}}},
        {"a blank in between parts them", "\n \n<p>", {"text(\\n \\n)\n" + p, {3, 5}}},
        {"a tag in between does not", "\n<p>\n", {"text(\\n)\n" + p, {2, 2 + 3 + 1}}},
        {"a tag with a blank does", "\n<p >\n", {"text(\\n)\n" + p, {3, 2}}},
        {"one of the text and one of the tag", "\n<p\n>", {"text(\\n)\n" + p, {2, 2 + 2 + 1}}},
        {"one of the tag and one of the text", "<p\n>\n", {p, {2, 1 + 1 + 1}}},
        EventRow("a comment in between does not", "\n<!---", "->\n", {"text(\\n)\ncomment()\n", {2, 2 + 7 + 1}},
                 {"text(\\n)\ncomment()\n", {3, 2}})
            .After("\n<!----", {"text(\\n)\ncomment()\n", {3, 2}}),
        {"a vertical tab and a form feed are no line breaks",
         "\v\f<p>",
         {"text(\\x0B\\x0C)\n" + p, {1, 1 + 2 * 2 + 3}}},
        {"a tab is one byte of text", "\t<p>", {"text(\\t)\n" + p, {1, 1 + 2 * 1 + 3}}},
    });
}

/// The bytes that `known` does not contain begin no construct after `before`.
void AddUnknown(const std::string& before, const std::string& known, std::vector<EventRow>* rows) {
    for (unsigned code = 0; code < 256; ++code) {
        const char byte = static_cast<char>(code);
        if (known.find(byte) == std::string::npos)
            rows->emplace_back("no construct", before + byte + "a>", Outcome{"", Place().Bytes(before.size()), 703});
    }
}

TEST(DocumentEventsTest, WhatFollowsALessThanSign) {
    const std::string names = "_abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const std::string blanks = " \t\n\v\f\r";
    std::vector<EventRow> rows;
    AddUnknown("<", names + blanks + "?/!", &rows);
    AddUnknown("<!", names + blanks + "-", &rows);
    AddUnknown("<!-", "-", &rows);
    for (const char byte : names) {
        const std::string name(1, byte);
        rows.emplace_back("a start tag", "<" + name + ">", Outcome{"start(" + name + "|)\n", {1, 4}});
        rows.emplace_back("a declaration", "<!" + name + ">", Outcome{"entity(" + name + "|{})\n", {1, 5}});
    }
    for (const char byte : blanks) {  // line breaks are columns here
        rows.emplace_back("a start tag after white space", "<" + std::string(1, byte) + "a>",
                          Outcome{"start(a|)\n", {1, 5}});
        rows.emplace_back("a declaration after white space", "<!" + std::string(1, byte) + "a>",
                          Outcome{"entity(a|{})\n", {1, 6}});
    }
    CheckRows(rows, 256);
}

const std::vector<EventRow> FAILURES = {
    {"the text in front is reported", "a <= b", {"text(a )\n", {1, 6}, 703}},
    {"on another line", "a\n <1", {"text(a\\n )\n", {2, 5}, 703}},
    {"two \"<\"", "<<a>", {"", {1, 2}, 703}},
    {"an empty tag", "<>", {"", {1, 2}, 703}},
    {"an empty declaration", "<!>", {"", {1, 3}, 703}},
    {"one hyphen and a letter", "<!-x", {"", {1, 4}, 703}},
    {"a blank between hyphens", "<!- -", {"", {1, 4}, 703}},
    {"what follows is not parsed", "<a><1><b>", {"start(a|)\n", {1, 5}, 703}},
};

/// A piece ends between two constructs, or right after the bytes that begin one, with 0, and inside
/// of one with 16.
const std::vector<EventRow> RESULTS_OF_A_PIECE = {
    {"a text", "ab", {"", {1, 5}, 0}},
    {"a tag", "<a>", {"start(a|)\n", {1, 4}, 0}},
    {"\"<\"", "<", {"", {1, 2}, 0}},
    {"\"</\"", "</", {"", {1, 3}, 0}},
    {"\"<?\"", "<?", {"", {1, 3}, 0}},
    {"\"<!\"", "<!", {"", {1, 3}, 0}},
    {"\"<!-\"", "<!-", {"", {1, 4}, 0}},
    {"\"<!--\"", "<!--", {"", {1, 5}, 0}},
    {"\"<\" and white space", "<\t", {"", {1, 3}, 0}},
    {"the start tag of a script", "<script>", {"", {1, 9}, 0}},
    {"a comment", "<!--a", {"comment(a)\n", {1, 6}, 0}},
    {"a start tag", "<a b", {"", {1, 5}, 16}},
    {"an end tag", "</a", {"", {1, 4}, 16}},
    {"an instruction", "<?a b", {"", {1, 6}, 16}},
    {"a declaration", "<!a b", {"", {1, 6}, 16}},
    {"a script", "<script>a", {"", {1, 11}, 16}},
    {"a style sheet", "<style>a", {"", {1, 10}, 16}},
};

const EventTables TABLES("DocumentEventsTest", {{"InOnePieceAndCut", IN_ONE_PIECE_AND_CUT},
                                                {"Failures", FAILURES},
                                                {"ResultsOfAPiece", RESULTS_OF_A_PIECE}});

}  // namespace
}  // namespace Kestra::Test
