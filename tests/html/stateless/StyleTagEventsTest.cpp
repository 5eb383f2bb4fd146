#include "tests/html/stateless/EventRows.h"

// Style sheets, up to "</style>" wherever it stands. Every other "<" is lost. A cut changes nothing
// about a body.

namespace Kestra::Test {
namespace {

struct Part {
    std::string bytes;
    std::string shown;
    White place;  ///< a line break counts, with a column for itself
};

const Part PARTS[] = {
    {"a{b:c}", "a{b:c}", {"", 0, 12}}, {"d\ne", "d\\ne", {"", 1, 4}}, {"'f'", "'f'", {"", 0, 6}},
    {"/*g*/", "/*g*/", {"", 0, 10}},   {"<h", "h", {"", 0, 3}},       {"<<", "<", {"", 0, 3}},
    {"</sti", "/sti", {"", 0, 9}},     {"<\nj", "\\nj", {"", 1, 4}},  {"</STYLEk", "/STYLEk", {"", 0, 15}},
    {"<!--", "!--", {"", 0, 7}},
};

std::string Style(const std::string& body) {
    return "<style>" + body + "</style>";
}

/// The start tag, a body on one line, and the end tag.
/// @param columns  of the body
Place After(std::uint64_t columns) {
    return Place().Bytes(7 + columns).Bytes(1).Content(7);
}

Outcome Reports(const std::string& shown, std::uint64_t columns) {
    return {"style(|" + shown + ")\n", After(columns)};
}

TEST(StyleTagEventsTest, Pairs) {
    std::vector<EventRow> rows;
    for (const Part& first : PARTS) {
        rows.emplace_back(
            "one part", Style(first.bytes),
            Outcome{"style(|" + first.shown + ")\n", Place().Bytes(7).Skip(first.place).Bytes(1).Content(7)});
        for (const Part& second : PARTS) {
            rows.emplace_back("two parts", Style(first.bytes + second.bytes),
                              Outcome{"style(|" + first.shown + second.shown + ")\n",
                                      Place().Bytes(7).Skip(first.place).Skip(second.place).Bytes(1).Content(7)});
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

const std::vector<EventRow> BODIES = {
    {"nothing", Style(""), Reports("", 0)},
    {"\"<\" is lost", Style("a<b"), Reports("ab", 5)},
    {"of two one is kept", Style("a<<b"), Reports("a<b", 7)},
    {"of three one as well", Style("<<<b"), Reports("<b", 3 + 3)},
    {"of four two", Style("<<<<"), Reports("<<", 6)},
    {"line comments stay", Style("//a"), Reports("//a", 6)},
    {"bytes from 128 up", Style("\xE9"), Reports("\\u00E9", 2)},
    {"the body is a string that ends at its first NUL", Style(std::string("a\0b", 3)), Reports("a", 6)},
    {"two line breaks are one line", Style("\n\n"), {"style(|\\n\\n)\n", {2, 3 + 1 + 2 * 7}}},
    {"a \"<\" in between leaves them a pair", Style("\n<\n"), {"style(|\\n\\n)\n", {2, 2 + 1 + 1 + 1 + 2 * 7}}},
    {"CR and LF are one", Style("a\r\nb"), {"style(|a\\r\\nb)\n", {2, 3 + 2 * 1 + 1 + 2 * 7}}},
};

TEST(StyleTagEventsTest, EndTags) {
    const Place place = Place().Bytes(7).Bytes(1).Content(7);
    CheckRows({
        {"in capitals", "<style></STYLE>", {"style(|)\n", place}},
        {"in both cases", "<StYlE></sTyLe>", {"style(|)\n", place}},
        {"in a string", "<style>'</style>", {"style(|')\n", After(2)}},
        {"in a comment", "<style>/*</style>", {"style(|/*)\n", After(4)}},
        {"with a blank", Style("</style >"), Reports("/style >", 1 + 2 * 8)},
        {"with a blank before the slash", Style("< /style>"), Reports(" /style>", 1 + 2 * 8)},
        {"with a letter more", Style("</styles>"), Reports("/styles>", 1 + 2 * 8)},
        {"with a letter less", Style("</styl>"), Reports("/styl>", 1 + 2 * 6)},
        {"of a script", Style("</script>"), Reports("/script>", 1 + 2 * 8)},
        {"a \"<\" before the \"<\" hides it", Style("<</style>"), Reports("</style>", 1 + 2 * 8)},
        {"one that breaks off at another one", Style("</st</style>a"), Reports("/st</style>a", 1 + 2 * 4 + 2 * 7 + 2)},
        {"a start tag inside", Style("<style>"), Reports("style>", 1 + 2 * 6)},
    });
}

const std::vector<EventRow> START_TAGS = {
    {"attributes", "<style a b=c>d</style>", {"style({a=}{b=c}|d)\n", {1, 1 + 13 + 2 * 1 + 1 + 2 * 7}}},
    {"after a blank", "< style>d</style>", {"style(|d)\n", {1, 1 + 8 + 2 * 1 + 1 + 2 * 7}}},
    EventRow("a quoted attribute", "<style a='b'>c</style>'>",
             {"style({a=b}|c)\n", {1, 1 + 13 + 2 * 1 + 1 + 2 * 7 + 2 * 2}})
        .After("<style a='b'", {"", {1, 25}, 0})
        .Bytewise({"", {1, 25}, 16}),
    {"a slash at its end changes nothing",
     "<style/",
     ">d</style>",
     {"style(|d)\n", {1, 1 + 8 + 2 * 1 + 1 + 2 * 7}},
     {"style(|>d)\n", {1, 1 + 7 + 2 * 2 + 1 + 2 * 7}}},
    {"a name that only begins like it",
     "<styles>d<b>",
     {"start(styles|)\ntext(d)\nstart(b|)\n", {1, 1 + 8 + 2 * 1 + 3}}},
    {"a style sheet after a script",
     "<script>a</script><style>b</style>",
     {"script(|a)\nstyle(|b)\n",
      Place().Bytes(8).Content(1).Bytes(1).Content(8).Bytes(7).Content(1).Bytes(1).Content(7)}},
    {"a script after a style sheet",
     "<style>a</style><script>b</script>",
     {"style(|a)\nscript(|b)\n", After(2).Bytes(8).Content(1).Bytes(1).Content(8)}},
    {"its attributes are its own",
     "<style a>b</style><style>c</style>",
     {"style({a=}|b)\nstyle(|c)\n", After(4).Bytes(7).Content(1).Bytes(1).Content(7)}},
    {"a text after it begins anew",
     "<style>a</style>b<c>",
     {"style(|a)\ntext(b)\nstart(c|)\n", After(2).Content(1).Bytes(3)}},
    {"a text before it is not part of it",
     "b<style>a</style>",
     {"text(b)\nstyle(|a)\n", {1, 1 + 2 * 1 + 7 + 2 * 1 + 1 + 2 * 7}}},
};

const std::vector<EventRow> NOT_OVER = {
    {"the start tag", "<style>", {"", {1, 8}}},
    {"a rule", "<style>a", {"", {1, 1 + 7 + 2 * 1}, 16}},
    {"\"<\"", "<style><", {"", {1, 9}, 16}},
    {"an end tag", "<style></style", {"", {1, 1 + 8 + 2 * 6}, 16}},
    {"a \"<\" before the end tag", "<style><</style>", {"", {1, 1 + 8 + 2 * 8}, 16}},
    {"a slash that completes the start tag", "<style/", {"", {1, 8}}},
};

const EventTables TABLES("StyleTagEventsTest", {{"Bodies", BODIES}, {"StartTags", START_TAGS}, {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
