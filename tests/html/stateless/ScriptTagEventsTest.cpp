#include "tests/html/stateless/EventRows.h"

// Scripts: comments are removed, strings kept verbatim, and "</script>" outside of both is the end.
// A cut changes nothing about a body.

namespace Kestra::Test {
namespace {

/// A part of a script that leaves the parser in plain code, whatever precedes it.
struct Part {
    std::string bytes;
    std::string shown;
    White place;  ///< a line break in code counts, with a column for itself
};

const Part PARTS[] = {
    {"a=1;", "a=1;", {"", 0, 8}}, {"n\nm", "n\\nm", {"", 1, 4}}, {"b/c", "b/c", {"", 0, 6}},
    {"d*e", "d*e", {"", 0, 6}},   {"'s'", "'s'", {"", 0, 3}},    {"\"t\n\"", "\"t\\n\"", {"", 0, 4}},
    {"//u\n", "", {"", 0, 5}},    {"/*v\n*/", "", {"", 0, 7}},   {"<w", "<w", {"", 0, 3}},
    {"</sx", "</sx", {"", 0, 7}}, {"<<", "<<", {"", 0, 3}},
};

std::string Script(const std::string& body) {
    return "<script>" + body + "</script>";
}

/// The start tag, a body on one line, and the end tag.
/// @param columns  of the body
Place After(std::uint64_t columns) {
    return Place().Bytes(8 + columns).Bytes(1).Content(8);
}

Outcome Reports(const std::string& shown, std::uint64_t columns) {
    return {"script(|" + shown + ")\n", After(columns)};
}

TEST(ScriptTagEventsTest, Pairs) {
    std::vector<EventRow> rows;
    for (const Part& first : PARTS) {
        rows.emplace_back(
            "one part", Script(first.bytes),
            Outcome{"script(|" + first.shown + ")\n", Place().Bytes(8).Skip(first.place).Bytes(1).Content(8)});
        for (const Part& second : PARTS) {
            rows.emplace_back("two parts", Script(first.bytes + second.bytes),
                              Outcome{"script(|" + first.shown + second.shown + ")\n",
                                      Place().Bytes(8).Skip(first.place).Skip(second.place).Bytes(1).Content(8)});
        }
    }
    CheckRows(rows, ROWS_PER_CONSTRUCT);
}

const std::vector<EventRow> CODE = {
    {"nothing", Script(""), Reports("", 0)},
    {"white space", Script(" \t\v"), Reports(" \\t\\x0B", 6)},
    {"bytes from 128 up", Script("\x80\xE9"), Reports("\\u20AC\\u00E9", 4)},
    {"a backslash", Script("\\"), Reports("\\\\", 2)},
    {"the body is a string that ends at its first NUL", Script(std::string("a\0b", 3)), Reports("a", 6)},
    {"a hyphen and \">\"", Script("-->"), Reports("-->", 6)},
    {"a division at the end", Script("a/"), Reports("a/", 4)},
    {"a star and a slash", Script("a*/b"), Reports("a*/b", 8)},
    {"two line breaks are one line", Script("\n\n"), {"script(|\\n\\n)\n", {2, 3 + 1 + 2 * 8}}},
    {"CR and LF are one", Script("\r\n"), {"script(|\\r\\n)\n", {2, 3 + 1 + 2 * 8}}},
    {"three are two", Script("\n\n\n"), {"script(|\\n\\n\\n)\n", {3, 2 + 1 + 2 * 8}}},
    {"a string in between leaves them a pair", Script("\n'a'\n"), {"script(|\\n'a'\\n)\n", {2, 2 + 4 + 1 + 2 * 8}}},
};

const std::vector<EventRow> COMMENTS = {
    {"of a line, up to its line break", Script("a//b\nc"), Reports("ac", 2 + 3 + 1 + 1 + 2)},
    {"up to CR, and LF is code", Script("a//b\r\nc"), {"script(|a\\nc)\n", {2, 2 + 2 * 1 + 1 + 2 * 8}}},
    {"with an end tag inside", Script("//</script>\na"), Reports("a", 3 + 9 + 1 + 2)},
    {"with a quote inside", Script("//'\na"), Reports("a", 3 + 1 + 1 + 2)},
    {"with another comment inside", Script("///*b\na"), Reports("a", 3 + 3 + 1 + 2)},
    {"two of them", Script("//b\n//c\nd"), Reports("d", 5 + 5 + 2)},
    {"a block", Script("a/*b*/c"), Reports("ac", 2 + 3 + 3 + 2)},
    {"an empty block", Script("/**/a"), Reports("a", 3 + 2 + 2)},
    {"a block of stars", Script("/****/a"), Reports("a", 3 + 4 + 2)},
    {"the star that opens it does not close it", Script("/*/b*/a"), Reports("a", 3 + 4 + 2)},
    {"a block with an end tag inside", Script("/*</script>*/a"), Reports("a", 3 + 11 + 2)},
    {"a block with quotes inside", Script("/*'\"*/a"), Reports("a", 3 + 4 + 2)},
    {"a block with a line break inside", Script("/*\n*/a"), Reports("a", 3 + 3 + 2)},
    {"a block with \"//\" inside", Script("/*//*/a"), Reports("a", 3 + 4 + 2)},
    {"the star that closed one does not close the next", Script("/*b*//*/c*/a"), Reports("a", 6 + 3 + 4 + 2)},
    {"nor does a star at the end of a string", Script("'*'/*/c*/a"), Reports("'*'a", 3 + 3 + 4 + 2)},
    {"a star and a slash that are apart", Script("/** /*/a"), Reports("a", 3 + 5 + 2)},
    {"a star after a block", Script("/*b*/*c"), Reports("*c", 3 + 3 + 4)},
    {"a slash after a block is a new one", Script("/*b*//c"), Reports("/c", 3 + 3 + 4)},
    {"a slash after a comment of a line", Script("//b\n/c"), Reports("/c", 5 + 4)},
    {"a blank between slashes", Script("/ /a"), Reports("/ /a", 8)},
    {"a slash in a string begins none", Script("'/'/a"), Reports("'/'/a", 3 + 4)},
    {"a string after a slash", Script("/'/'"), Reports("/'/'", 2 + 3)},
    // "<//" is no end tag. Its last slash and the next one open a comment, and the slash in
    // front stays to open another one.
    {"a slash of an end tag that was none", Script("<///b\nc"), Reports("</c", 5 + 1 + 1 + 1 + 2)},
    {"and again with the slash before it", Script("<///b\n/d\ne"), Reports("<e", 5 + 1 + 1 + 1 + 1 + 1 + 1 + 2)},
    {"a star after an end tag that was none", Script("<//*b*/c"), Reports("</c", 5 + 1 + 3 + 2)},
};

const std::vector<EventRow> STRINGS = {
    {"empty", Script("''\"\""), Reports("''\"\"", 4)},
    {"an end tag inside", Script("'</script>'"), Reports("'</script>'", 11)},
    {"comments inside", Script("'//'\"/*\""), Reports("'//'\"/*\"", 8)},
    {"quotes of the other kind", Script("'\"'\"'\""), Reports("'\"'\"'\"", 6)},
    {"a line break inside", Script("'\n'"), Reports("'\\n'", 3)},
    {"an escaped quote", Script("'\\''"), Reports("'\\\\''", 4)},
    {"an escaped quotation mark", Script("\"\\\"\""), Reports("\"\\\\\"\"", 4)},
    {"an escaped backslash keeps the quote escaped", Script("'\\\\''"), Reports("'\\\\\\\\''", 5)},
    {"the backslash before a string escapes nothing in it", Script("\\''"), Reports("\\\\''", 2 + 2)},
    {"an escaped quote and another string", Script("'\\'b'''"), Reports("'\\\\'b'''", 7)},
    {"after a comment", Script("/*b*\\*/''"), Reports("''", 3 + 5 + 2)},
    {"bytes from 128 up", Script("'\xE9'"), Reports("'\\u00E9'", 3)},
};

TEST(ScriptTagEventsTest, EndTags) {
    const Place place = Place().Bytes(8).Bytes(1).Content(8);
    CheckRows({
        {"in capitals", "<script></SCRIPT>", {"script(|)\n", place}},
        {"in both cases", "<ScRiPt></sCrIpT>", {"script(|)\n", place}},
        {"with a blank, which is code", Script("</script >"), Reports("</script >", 1 + 2 * 8 + 2)},
        {"with a letter more", Script("</scripts>"), Reports("</scripts>", 1 + 2 * 9)},
        {"with a letter less", Script("</scrip>"), Reports("</scrip>", 1 + 2 * 7)},
        {"with a blank before the slash", Script("< /script>"), Reports("< /script>", 1 + 2 * 9)},
        {"with a blank after the slash", Script("</ script>"), Reports("</ script>", 1 + 2 * 9)},
        {"of a style sheet", Script("</style>"), Reports("</style>", 1 + 2 * 7)},
        {"of something else", Script("</b>"), Reports("</b>", 1 + 2 * 3)},
        {"a start tag inside", Script("<script>"), Reports("<script>", 1 + 2 * 7)},
        {"a markup comment", Script("<!--a-->"), Reports("<!--a-->", 1 + 2 * 7)},
        {"a \"<\" before the \"<\" hides it", Script("<</script>"), Reports("<</script>", 1 + 2 * 9)},
        {"but not two", Script("<<"), Reports("<<", 3)},
        {"a line break after \"<\" counts", Script("<\n"), {"script(|<\\n)\n", {2, 2 + 1 + 2 * 8}}},
        {"a quote after \"<\" opens nothing", Script("<'a"), Reports("<'a", 1 + 4)},
        {"one that breaks off at another one", Script("</scr</script>a"),
         Reports("</scr</script>a", 1 + 2 * 5 + 2 * 8 + 2)},
    });
}

const std::vector<EventRow> START_TAGS = {
    {"attributes", "<script a b=c>d</script>", {"script({a=}{b=c}|d)\n", {1, 1 + 14 + 2 * 1 + 1 + 2 * 8}}},
    {"after a blank", "< script>d</script>", {"script(|d)\n", {1, 1 + 9 + 2 * 1 + 1 + 2 * 8}}},
    EventRow("a quoted attribute", "<script a='b'>c</script>'>",
             {"script({a=b}|c)\n", {1, 1 + 14 + 2 * 1 + 1 + 2 * 8 + 2 * 2}})
        .After("<script a='b'", {"", {1, 27}, 0})
        .Bytewise({"", {1, 27}, 16}),
    {"a slash at its end changes nothing",
     "<script/",
     ">d</script>",
     {"script(|d)\n", {1, 1 + 9 + 2 * 1 + 1 + 2 * 8}},
     {"script(|>d)\n", {1, 1 + 8 + 2 * 2 + 1 + 2 * 8}}},
    {"a name that only begins like it",
     "<scripts>d</script>",
     {"start(scripts|)\ntext(d)\nend(script)\n", {1, 1 + 9 + 2 * 1 + 9}}},
    {"a name with a prefix", "<x:script>d<b>", {"start(x:script|)\ntext(d)\nstart(b|)\n", {1, 1 + 10 + 2 * 1 + 3}}},
    {"a script after a script",
     "<script>a</script><script>b</script>",
     {"script(|a)\nscript(|b)\n", After(2).Bytes(8).Content(1).Bytes(1).Content(8)}},
    {"its attributes are its own",
     "<script a>b</script><script>c</script>",
     {"script({a=}|b)\nscript(|c)\n", After(4).Bytes(8).Content(1).Bytes(1).Content(8)}},
    {"a text after it begins anew",
     "<script>a</script>b<c>",
     {"script(|a)\ntext(b)\nstart(c|)\n", After(2).Content(1).Bytes(3)}},
    {"a text before it is not part of it",
     "b<script>a</script>",
     {"text(b)\nscript(|a)\n", {1, 1 + 2 * 1 + 8 + 2 * 1 + 1 + 2 * 8}}},
    {"comparisons, a comment and a string",
     "<script>if(a<b)//c\nx='</script>'</script>",
     {"script(|if(a<b)x='</script>')\n", After(8 + 3 + 2 + 3 + 1 + 1 + 4 + 11)}},
};

const std::vector<EventRow> NOT_OVER = {
    {"the start tag", "<script>", {"", {1, 9}}},
    {"code", "<script>a", {"", {1, 1 + 8 + 2 * 1}, 16}},
    {"\"<\"", "<script><", {"", {1, 10}, 16}},
    {"an end tag", "<script></script", {"", {1, 1 + 9 + 2 * 7}, 16}},
    {"a string", "<script>'</script>", {"", {1, 19}, 16}},
    {"a comment of a line", "<script>//</script>", {"", {1, 1 + 8 + 2 * 1 + 10}, 16}},
    {"a block", "<script>/*</script>", {"", {1, 1 + 8 + 2 * 1 + 10}, 16}},
    {"an escaped backslash before the quote", "<script>'\\\\'</script>", {"", {1, 22}, 16}},
    {"a \"<\" before the end tag", "<script><</script>", {"", {1, 1 + 9 + 2 * 9}, 16}},
    {"a slash that completes the start tag", "<script/", {"", {1, 9}}},
};

const EventTables TABLES(
    "ScriptTagEventsTest",
    {{"Code", CODE}, {"Comments", COMMENTS}, {"Strings", STRINGS}, {"StartTags", START_TAGS}, {"NotOver", NOT_OVER}});

}  // namespace
}  // namespace Kestra::Test
