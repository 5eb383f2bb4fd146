#include "tests/html/parser/DocumentRows.h"

namespace Kestra::Test {
namespace {

TEST(TextAndTagsTest, Text) {
    const DocumentRow rows[] = {
        {"text alone is one token", "hello", "text(hello)"},
        {"text before, between and after tags", "a<b>c", "text(a)\nstart(|b||)\ntext(c)"},
        {"a whole element", "a<b>c</b>", "text(a)\nstart(|b||)\ntext(c)\nend(|b|||)"},
        {"no empty text between two tags", "<a><b>", "start(|a||)\nstart(|b||)"},
        {"white space is text", "<a>\r\n\t <b>\v\f", "start(|a||)\ntext(\\r\\n\\t )\nstart(|b||)\ntext(\\x0B\\x0C)"},
        {"quotes, slashes and \">\" are text outside of scripts", "it's \"a/b\" // /* x > y",
         "text(it's \"a/b\" // /* x > y)"},
        {"a slash at the end of the input is text", "ab/", "text(ab/)"},
        {"an ESC is text without an ISO-2022 charset", "a\x1B$B<b>", "text(a\\x1B$B)\nstart(|b||)"},
        {"a carriage return is a column, a line feed a line", "a\rb\r\nc\n\nd", "text(a\\rb\\r\\nc\\n\\nd)"},
        {"a NUL is a character like any other", std::string("a\0b<c\0 d='\0'>\0", 14),
         "text(a\\x00b)\nstart(|c\\x00|{ |d|=|'\\x00'}|)\ntext(\\x00)"},
        {"characters from 160 up", "\xE9<\xE4 \xF6=\xFC>\xDF</\xE4>",
         "text(\\xE9)\nstart(|\\xE4|{ |\\xF6|=|\\xFC}|)\ntext(\\xDF)\nend(|\\xE4|||)"},
    };
    for (const DocumentRow& row : rows) {
        for (const Route& route : ROUTES) {
            // The zero bytes of UTF-16 are left out of the comparison there.
            const bool comparable = !(route.wideInput && route.observed == Observed::NARROW);
            if (comparable || row.input.find('\0') == std::string::npos)
                CheckRow(row, route);
        }
    }
}

TEST(TextAndTagsTest, AnEmptyDocumentHasOnlyItsEvents) {
    const DocumentRow row{"nothing", "", {}};
    CheckRow(row);
}

TEST(TextAndTagsTest, StartTags) {
    const DocumentRow rows[] = {
        {"a quoted value", "<a href='x'>", "start(|a|{ |href|=|'x'}|)"},
        {"both quotes and none", "<div class=a id='b' x=\"c\">", "start(|div|{ |class|=|a}{ |id|=|'b'}{ |x|=|\"c\"}|)"},
        {"blanks around \"=\" are kept", "<a b = 'c'\td>", "start(|a|{ |b| = |'c'\\td}|)"},
        {"blanks before the name and after the last attribute", "< a b='c'\r\n>", "start( |a|{ |b|=|'c'}|\\r\\n)"},
        {"a blank after the name is the suffix", "<p >", "start(|p|| )"},
        {"attributes without values", "<input disabled  checked>", "start(|input|{ |disabled}{  |checked}|)"},
        {"a blank after an attribute without a value is the suffix", "<a b >", "start(|a|{ |b}| )"},
        {"a blank before an unquoted value", "<a b= c=''>", "start(|a|{ |b|= |c=''}|)"},
        {"an empty value before the end", "<a b= >", "start(|a|{ |b|= |}|)"},
        {"an empty quoted value", "<a b='' c=\"\">", "start(|a|{ |b|=|''}{ |c|=|\"\"}|)"},
        {"a value without a name", "<a =b>", "start(|a|{ ||=|b}|)"},
        {"an attribute right after the name", "<a=b>", "start(|a|{||=|b}|)"},
        {"brackets end a name", "<a[b]>", "start(|a|{|[b]}|)"},
        {"a \"<\" in a tag belongs to an attribute", "<a<b>", "start(|a|{|<b}|)"},
        {"two \"<\"", "<<a>", "start(||{|<a}|)"},
        {"a tag without a name", "<>", "start(|||)"},
        {"a tag of white space", "< \n>", "start( \\n|||)"},
        {"quoted values hide \"<\" and \">\"", "<a b='<c>' d=\"</a>\">", "start(|a|{ |b|=|'<c>'}{ |d|=|\"</a>\"}|)"},
        {"quoted values know no escapes", "<a b='\\' c=\"\\\">", "start(|a|{ |b|=|'\\\\'}{ |c|=|\"\\\\\"}|)"},
        {"quoted values may hold line feeds", "<a b='\n\n'>\n", "start(|a|{ |b|=|'\\n\\n'}|)\ntext(\\n)"},
        {"no blank is needed after a quoted value", "<a b='c'd='e'>", "start(|a|{ |b|=|'c'}{|d|=|'e'}|)"},
        {"an unquoted value holds quotes, slashes and \"=\"", "<a b=c'd/e=f\"g>", "start(|a|{ |b|=|c'd/e=f\"g}|)"},
        {"a \"<\" ends an unquoted value and begins a name", "<a b=c<d e=f>", "start(|a|{ |b|=|c<d}{ |e|=|f}|)"},
        {"bare words after a value belong to it", "<a title=hello world>", "start(|a|{ |title|=|hello world}|)"},
        {"a quoted value takes words up with its quotes", "<a title=\"a b\" c d>",
         "start(|a|{ |title|=|\"a b\" c d}|)"},
        {"bare words before the first value stay", "<a b c=1 d=2>", "start(|a|{ |b}{ |c|=|1}{ |d|=|2}|)"},
        {"names keep their case", "<DiV ClAsS=A>", "start(|DiV|{ |ClAsS|=|A}|)"},
        {"a form feed is white space", "<a\fb>", "start(|a|{\\x0C|b}|)"},
    };
    CheckRows(rows);
}

TEST(TextAndTagsTest, ShortTags) {
    const DocumentRow rows[] = {
        {"a slash right after the name", "<br/>", "short(|br||)"},
        {"a slash after a blank", "<br />", "short(|br|| )"},
        {"a blank after the slash: the name ends with it", "<br/ >", "start(|br/|| )"},
        {"of two slashes one belongs to the name", "<br//>", "short(|br/||)"},
        {"a blank before the name", "< br/>", "short( |br||)"},
        {"a name that is a slash", "< />", "start( |/||)"},
        {"a name of two slashes", "< //>", "short( |/||)"},
        {"attributes after the slash", "<br/ a>", "start(|br/|{ |a}|)"},
        {"a slash of its own after the slash of the name", "<br/ />", "short(|br/|| )"},
        {"a slash inside the name", "<br/x>", "start(|br/x||)"},
        {"a value without quotes", "<a href=x/>", "short(|a|{ |href|=|x}|)"},
        {"a value that ends with two slashes", "<a href=x//>", "short(|a|{ |href|=|x/}|)"},
        {"a value with quotes", "<a href='x'/>", "short(|a|{ |href|=|'x'}|)"},
        {"a blank after a value", "<a href=x />", "short(|a|{ |href|=|x}| )"},
        {"an attribute without a value", "<a b/>", "short(|a|{ |b}|)"},
        {"a blank after an attribute without a value", "<a b />", "short(|a|{ |b}| )"},
        {"an empty value and a blank", "<a b='' \n/>", "short(|a|{ |b|=|''}| \\n)"},
        {"bare words after a value", "<a b=c d/>", "short(|a|{ |b|=|c d}|)"},
        {"a slash between attributes belongs to the next name", "<a b='c'/d>", "start(|a|{ |b|=|'c'/d}|)"},
    };
    CheckRows(rows);
}

TEST(TextAndTagsTest, EndTags) {
    const DocumentRow rows[] = {
        {"a plain end tag", "</div>", "end(|div|||)"},
        {"blanks before and after the name", "</ div\t>", "end( |div|\\t||)"},
        {"no name", "</>", "end(||||)"},
        {"only a blank", "</ >", "end( ||||)"},
        {"an attribute", "</div class=x>", "end(|div| |{|class|=|x}|)"},
        {"an attribute and a blank", "</a x='y' >", "end(|a| |{|x|=|'y'}| )"},
        {"an attribute without a value", "</a x>", "end(|a| |{|x}|)"},
        {"bare words after a value", "</a x=1 y z='2'>", "end(|a| |{|x|=|1 y}{ |z|=|'2'}|)"},
        {"a slash after an attribute", "</div a />", "end(|div| |{|a}| , slash)"},
        {"a slash after a value", "</a x=y/>", "end(|a| |{|x|=|y}|, slash)"},
        {"a slash after a quoted value", "</a x='y'/>", "end(|a| |{|x|=|'y'}|, slash)"},
        {"a slash after the name belongs to it", "</div/>", "end(|div/|||)"},
        {"a slash after a blank", "</div />", "end(|div| ||, slash)"},
        {"a \"<\" ends it and begins the next tag", "</div<p>", "end(|div|||, open)\nstart(|p||)"},
        {"a \"<\" after a blank", "</div <p>", "end(|div| ||, open)\nstart(|p||)"},
        {"a \"<\" that begins another end tag", "</a</b>", "end(|a|||, open)\nend(|b|||)"},
        {"a \"<\" after an attribute belongs to it", "</a b<c>", "end(|a| |{|b<c}|)"},
        {"an end tag that nothing opened", "x</p>y", "text(x)\nend(|p|||)\ntext(y)"},
    };
    CheckRows(rows);
}

// A table of its own for the wide parser: these characters are white space there and letters for
// the 8-bit parser.
TEST(TextAndTagsTest, WideWhiteSpaceInTags) {
    struct Row {
        const char* note;
        const WideChar* input;
        const char* token;
    };
    const Row rows[] = {
        {"an ideographic space separates attributes", KESTRA_WIDE("<p\u3000a\u3000b>"),
         "start(|p|{\\u3000|a}{\\u3000|b}|)"},
        {"so does a next-line character", KESTRA_WIDE("<p\u0085a>"), "start(|p|{\\u0085|a}|)"},
        {"and a no-break space", KESTRA_WIDE("<p\u00A0a=b\u00A0>"), "start(|p|{\\u00A0|a|=|b}|\\u00A0)"},
        {"line and paragraph separator", KESTRA_WIDE("</p\u2028a\u2029>"), "end(|p|\\u2028|{|a}|\\u2029)"},
        {"a zero-width space is a letter", KESTRA_WIDE("<p\u200Ba>"), "start(|p\\u200Ba||)"},
        {"so is a byte-order mark inside the text", KESTRA_WIDE("<p\uFEFFa>"), "start(|p\\uFEFFa||)"},
        {"and the control 28", KESTRA_WIDE("<p\u001Ca>"), "start(|p\\x1Ca||)"},
    };
    for (const Row& row : rows)
        CheckWide(row.note, row.input, row.token);
}

TEST(TextAndTagsTest, BytesFrom128UpAreNeverWhiteSpaceFor8BitText) {
    const DocumentRow rows[] = {
        {"the byte of the next-line character", "<p\x85z>", "start(|p\\x85z||)"},
        {"the byte of the no-break space", "<p\xA0z>", "start(|p\\xA0z||)"},
        {"between value and attribute", "<p z='q'\xA0z>", "start(|p|{ |z|=|'q'\\xA0z}|)"},
    };
    for (const DocumentRow& row : rows)
        CheckRow(row, NARROW_TO_NARROW);
}

TEST(TextAndTagsTest, LoneSurrogatesArePassedOn) {
    const WideString input = {0xD800, '<', 'a', ' ', 0xDC00, '>', 0xDFFF, 0xFFFF, 0xFFFE};
    CheckWide("lone surrogates", input, "text(\\uD800)\nstart(|a|{ |\\uDC00}|)\ntext(\\uDFFF\\uFFFF\\uFFFE)");
}

TEST(TextAndTagsTest, CallbacksComeWhileTheInputIsFed) {
    // A token is delivered as soon as its last character, or the one that stops it, has been read.
    FedParser parser;
    parser.Start();
    struct Step {
        const char* piece;
        const char* lines;
        const char* parserName;
    };
    const Step steps[] = {
        {"a", "", "TextSimpleParser"},
        {"<", "text(a)\n", "GenericTagSimpleParser"},
        {"b", "", "StartTagSimpleParser"},
        {" c='", "", "StartTagSimpleParser"},
        {"'>", "start(|b|{ |c|=|''}|)\n", "TextSimpleParser"},
        {"</", "", "EndTagSimpleParser"},
        {"b>", "end(|b|||)\n", "TextSimpleParser"},
        {"<!", "", "GenericTagSimpleParser"},
        {"-", "", "GenericTagSimpleParser"},
        {"-", "", "CommentTagSimpleParser"},
        {"c--", "", "CommentTagSimpleParser"},
        {">", "comment(c)\n", "TextSimpleParser"},
        {"<![CDATA", "", "GenericTagSimpleParser"},
        {"[", "", "CDATATagSimpleParser"},
        {"d]]", "", "CDATATagSimpleParser"},
        {">", "cdata(CDATA|[d)\n", "TextSimpleParser"},
        {"<![CDATA[e]]", "", "CDATATagSimpleParser"},
        {"f", "cdata(CDATA|[e]], open)\n", "TextSimpleParser"},
        {"<![if", "text(f)\n", "GenericTagSimpleParser"},
        {" ", "", "ConditionalTagSimpleParser"},
        {"]", "", "ConditionalTagSimpleParser"},
        {">", "conditional(if| |)\n", "TextSimpleParser"},
        {"<!", "", "GenericTagSimpleParser"},
        {"D", "", "EntityTagSimpleParser"},
        {" e", "", "EntityTagSimpleParser"},
        {">", "entity(|D|{ |e}|)\n", "TextSimpleParser"},
        {"<?", "", "ExternTagSimpleParser"},
        {"xml a", "", "ExternTagSimpleParser"},
        {"?", "", "ExternTagSimpleParser"},
        {">", "extern(|xml|{ |a}|)\n", "TextSimpleParser"},
        {"<?p '", "", "ExternTagSimpleParser"},
        {"'>", "extern-text(<?p ''>)\n", "TextSimpleParser"},
        {"<script>", "start(|script||)\njs-start\n", "TextSimpleParser"},
        {"x'", "text(x)\n", "SQuoteStringSimpleParser"},
        {"y'\"", "s-string(y)\n", "DQuoteStringSimpleParser"},
        {"z\"=/", "d-string(z)\n", "TextSimpleParser"},
        {"r", "text(=)\n", "JSRegExSimpleParser"},
        {"\n", "text(/r)\n", "TextSimpleParser"},
        {"/", "", "TextSimpleParser"},
        {"*", "text(\\n)\n", "CCommentSimpleParser"},
        {"s*", "", "CCommentSimpleParser"},
        {"/", "c-comment(s)\n", "TextSimpleParser"},
        {"//t", "", "CPPCommentSimpleParser"},
        {"<!-", "", "CPPCommentSimpleParser"},
        {"-", "", "CommentTagSimpleParser"},
        {"-->", "comment()\n", "TextSimpleParser"},
        {"//<![if", "", "CPPCommentSimpleParser"},
        {"]", "", "ConditionalTagSimpleParser"},
        {">", "conditional(if||)\n", "TextSimpleParser"},
        {"//u", "", "CPPCommentSimpleParser"},
        {"\n", "", "TextSimpleParser"},
        {"</script", "text(\\n)\n", "EndTagSimpleParser"},
        {">", "end(|script|||)\njs-end\n", "TextSimpleParser"},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.piece);
        parser.lines.clear();
        EXPECT_EQ(parser.Feed(step.piece), 0U);
        EXPECT_EQ(parser.TakeLines(), step.lines);
        EXPECT_EQ(parser.GetParserName(), step.parserName);
    }
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.TakeLines(), "end-parsing\n");
}

}  // namespace
}  // namespace Kestra::Test
