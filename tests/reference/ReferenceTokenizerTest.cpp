#include "tests/reference/ReferenceTokenizer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using Kind = ReferenceStretch::Kind;
using Lines = std::vector<std::string>;

/// A document and its tokens, without the notices at its start and its end.
struct Case {
    const char* note;
    std::string_view input;
    Lines tokens;
};

/// The trace of a run that ends well, without its first two lines and its last one.
Lines TokensOf(const ReferenceRun& run, std::uint32_t charset) {
    Lines tokens = run.trace;
    const std::string charsetLine = "charset(" + std::to_string(charset) + ")";
    if (tokens.size() < 3 || tokens[0] != "start-parsing" || tokens[1] != charsetLine || tokens.back() != "end-parsing")
        return {"the trace lacks its frame"};
    tokens.pop_back();
    tokens.erase(tokens.begin(), tokens.begin() + 2);
    return tokens;
}

/// Where the stretches of a run end, when they touch from the start of the document on and none is
/// empty; else npos.
std::size_t Covered(const ReferenceRun& run) {
    std::size_t end = 0;
    for (const ReferenceStretch& stretch : run.stretches) {
        if (stretch.begin != end || stretch.end <= stretch.begin || stretch.tailBegin > stretch.end)
            return std::string::npos;
        end = stretch.end;
    }
    return end;
}

void CheckTokens(const Case& row, std::uint32_t charset, std::string_view copy) {
    SCOPED_TRACE(row.note);
    const ReferenceRun run = ParseByReference(row.input, {.charset = charset});
    EXPECT_EQ(TokensOf(run, charset), row.tokens);
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, 0U);
    EXPECT_EQ(Covered(run), row.input.size());
    EXPECT_EQ(run.copy, copy);
    EXPECT_EQ(CopyByReference(run, row.input, {}), copy);
}

template <std::size_t COUNT>
void CheckAll(const Case (&rows)[COUNT], std::uint32_t charset = 1252) {
    for (const Case& row : rows)
        CheckTokens(row, charset, row.input);
}

const Case TAGS[] = {
    {"nothing", "", {}},
    {"text, a tag, text", "a<b>c", {"text(a)", "start(|b||)", "text(c)"}},
    {"values of all kinds", "<div class=a id='b' x=\"c\">", {"start(|div|{ |class|=|a}{ |id|=|'b'}{ |x|=|\"c\"}|)"}},
    {"white space around everything", "< p a = 'x' >", {"start( |p|{ |a| = |'x'}| )"}},
    {"a slash after white space makes a short tag", "<br />", {"short(|br|| )"}},
    {"a slash at the name makes a short tag too", "<br/>", {"short(|br||)"}},
    {"only one slash is taken from the name", "<br//>", {"short(|br/||)"}},
    {"after the name's slash, white space leaves a start tag", "<br/ >", {"start(|br/|| )"}},
    {"a name that is a slash stays", "< />", {"start( |/||)"}},
    {"a name with a slash and attributes stays", "<br/ a>", {"start(|br/|{ |a}|)"}},
    {"a name with a slash and another slash", "<br/ />", {"short(|br/|| )"}},
    {"the slash of an unquoted value", "<a href=x/>", {"short(|a|{ |href|=|x}|)"}},
    {"the slash after a quoted value", "<a href='x'/>", {"short(|a|{ |href|=|'x'}|)"}},
    {"the slash of a bare name", "<a b/>", {"short(|a|{ |b}|)"}},
    {"a slash inside a value", "<a href=x/y>", {"start(|a|{ |href|=|x/y}|)"}},
    {"a slash that white space follows stays in the value", "<a b=x/ >", {"start(|a|{ |b|=|x/}| )"}},
    {"a value that is only a slash is malformed", "<a href=/>x", {"junk(<a href=/)", "junk(>x)"}},
    {"a bare slash before white space is malformed", "<a b / >", {"junk(<a b / )", "junk(>)"}},
    {"bare words", "<input disabled checked>", {"start(|input|{ |disabled}{ |checked}|)"}},
    {"an empty value", "<a b=>", {"start(|a|{ |b|=|}|)"}},
    {"an empty name with a value", "<a =b>", {"start(|a|{ ||=|b}|)"}},
    {"a value of equals signs", "<a b===>", {"start(|a|{ |b|=|==}|)"}},
    {"no name", "<>", {"start(|||)"}},
    {"a second opener is part of an attribute's name", "<a<b>", {"start(|a|{|<b}|)"}},
    {"two openers", "<<a>", {"start(||{|<a}|)"}},
    {"an opener ends an unquoted value", "<a b=c<d=e>", {"start(|a|{ |b|=|c}{|<d|=|e}|)"}},
    {"brackets end a tag's name, not an attribute's", "<a[b]c=d>", {"start(|a|{|[b]c|=|d}|)"}},
    {"bytes from 128 up belong to names", "<\xE9 \xA0=\x85>", {"start(|\\xE9|{ |\\xA0|=|\\x85}|)"}},
    {"white space is 9 to 13 and 32", "<a\t\n\v\f\r b>", {"start(|a|{\\t\\n\\x0B\\x0C\\r |b}|)"}},
    {"a NUL is an ordinary character", "<a\0b c=\0>\0"sv, {"start(|a\\x00b|{ |c|=|\\x00}|)", "text(\\x00)"}},
    {"no escapes in values", "<a b='\\'>", {"start(|a|{ |b|=|'\\\\'}|)"}},
};

const Case NORMALIZATION[] = {
    {"bare words fold into an unquoted value", "<p title=hello world>", {"start(|p|{ |title|=|hello world}|)"}},
    {"folding writes the quotes into the value", "<p title=\"a b\" c d>", {"start(|p|{ |title|=|\"a b\" c d}|)"}},
    {"folding into single quotes", "<p title='a' b>", {"start(|p|{ |title|=|'a' b}|)"}},
    {"bare words in front stay", "<p checked title=x>", {"start(|p|{ |checked}{ |title|=|x}|)"}},
    {"values stay", "<p a=1 b=2>", {"start(|p|{ |a|=|1}{ |b|=|2}|)"}},
    {"folding into an empty value", "<p a=''b>", {"start(|p|{ |a|=|''b}|)"}},
    {"the last value takes the words", "<p a=1 b=2 c\t/>", {"short(|p|{ |a|=|1}{ |b|=|2 c}|\\t)"}},
    {"a bare word with the slash", "<p a=1 b/>", {"short(|p|{ |a|=|1 b}|)"}},
    {"end tags too", "</p a='1' b>", {"end(|p| |{|a|=|'1' b}|)"}},
};

const Case END_TAGS[] = {
    {"an end tag", "</div>", {"end(|div|||)"}},
    {"white space around the name", "</ div >", {"end( |div| ||)"}},
    {"an opener ends it open", "</div<b>", {"end(|div|||, open)", "start(|b||)"}},
    {"attributes", "</div class=x>", {"end(|div| |{|class|=|x}|)"}},
    {"attributes and white space", "</div a >", {"end(|div| |{|a}| )"}},
    {"attributes and a slash", "</div a />", {"end(|div| |{|a}| , slash)"}},
    {"a slash alone", "</div />", {"end(|div| ||, slash)"}},
    {"a slash from a value", "</div a=b/>", {"end(|div| |{|a|=|b}|, slash)"}},
    {"a slash at the name", "</div/>", {"end(|div/|||)"}},
    {"a slash before white space is malformed", "</div / >", {"junk(</div / )", "junk(>)"}},
    {"a value that is only a slash is malformed", "</a b=/>", {"junk(</a b=/)", "junk(>)"}},
    {"no name", "</>", {"end(||||)"}},
};

const Case DECLARATIONS[] = {
    {"a document type", "<!DOCTYPE html>", {"entity(|DOCTYPE|{ |html}|)"}},
    {"strings", "<!DOCTYPE a PUBLIC \"b\" 'c'>", {"entity(|DOCTYPE|{ |a}{ |PUBLIC}{ |\"b\"}{ |'c'}|)"}},
    {"white space at the end", "<!DOCTYPE html >", {"entity(|DOCTYPE|{ |html}| )"}},
    {"white space in front", "<! DOCTYPE html>", {"entity( |DOCTYPE|{ |html}|)"}},
    {"an empty string is an item", "<!A \"\"''>", {"entity(|A|{ |\"\"}{|''}|)"}},
    {"no items", "<!DOCTYPE>", {"entity(|DOCTYPE||)"}},
    {"nothing at all", "<!>", {"entity(|||)"}},
    {"words keep equals signs, slashes and quotes", "<!A b='c/>", {"entity(|A|{ |b='c/}|)"}},
    {"a bracket ends the keyword", "<!A[b>", {"entity(|A|{|[b}|)"}},
    {"an opener is malformed", "<!DOCTYPE x<y>", {"junk(<!DOCTYPE x)", "start(|y||)"}},
};

const Case INSTRUCTIONS[] = {
    {"an XML declaration",
     "<?xml version=\"1.0\" encoding='a'?>",
     {"extern(|xml|{ |version|=|\"1.0\"}{ |encoding|=|'a'}|)"}},
    {"its white space at the end", "<?xml version='1.0' ?>", {"extern(|xml|{ |version|=|'1.0'}| )"}},
    {"ignoring case", "<?XML-stylesheet href=a?>", {"extern(|XML-stylesheet|{ |href|=|a}|)"}},
    {"a name after a colon", "<?xml:a b?>", {"extern(|xml:a|{ |b}|)"}},
    {"no attributes", "<?xml ?>", {"extern(|xml|| )"}},
    {"white space in front", "<? xml a?>", {"extern( |xml|{ |a}|)"}},
    {"a slash in place of the question mark", "<?xml a/>", {"extern(|xml|{ |a}|, slash)"}},
    {"a slash alone", "<?xml a='b' />", {"extern(|xml|{ |a|=|'b'}| , slash)"}},
    {"a value keeps its slash", "<?xml a=b/?>", {"extern(|xml|{ |a|=|b/}|)"}},
    {"its attributes are not folded", "<?xml a=b c?>", {"extern(|xml|{ |a|=|b}{ |c}|)"}},
    {"a slash before the question mark", "<?xml /?>", {"extern(|xml|{ |/}|)"}},
    {"no question mark", "<?xml a='b'>", {"junk(<?xml a='b')", "junk(>)"}},
    {"a question mark before white space", "<?xml a ? >", {"junk(<?xml a ? )", "junk(>)"}},
    {"a value that is only a question mark", "<?xml a=?>", {"junk(<?xml a=?)", "junk(>)"}},
    {"a slash before white space and a word", "<?xml a/ b?>", {"junk(<?xml a/ )", "junk(b?>)"}},
    {"a question mark at the target makes it free style", "<?xml?>", {"extern-text(<?xml?>)"}},
    {"a quoted end is none", "<?php echo '?>'; ?>", {"extern-text(<?php echo '?>'; ?>)"}},
    {"a backslash protects a quote", "<?php '\\'>' \"\\\">\" ?>", {"extern-text(<?php '\\\\'>' \"\\\\\">\" ?>)"}},
    {"an end in a block comment is none", "<?php /* > */ ?>", {"extern-text(<?php /* > */ ?>)"}},
    {"any star ends a block comment", "<?php /* * > */", {"extern-text(<?php /* * >)", "text( */)"}},
    {"a quote in a block comment is none", "<?php /*'*/?>", {"extern-text(<?php /*'*/?>)"}},
    {"an end in a line comment is none", "<?php // >'\n?>", {"extern-text(<?php // >'\\n?>)"}},
    {"slashes and question marks are text", "<?php a/b??c/?>", {"extern-text(<?php a/b??c/?>)"}},
    {"a target with its question mark", "<?php?>", {"extern-text(<?php?>)"}},
    {"a bare end", "<?pi a > b", {"extern-text(<?pi a >)", "text( b)"}},
    {"no target", "<?>", {"extern-text(<?>)"}},
};

const Case SECTIONS[] = {
    {"an empty comment", "<!---->", {"comment()"}},
    {"dashes in a comment", "<!-- a -- b -->", {"comment( a -- b )"}},
    {"a dash run keeps all but its last two", "<!-- a --->", {"comment( a -)"}},
    {"a dash run before more", "<!----a--->", {"comment(--a-)"}},
    {"the opener's dashes do not close", "<!-->-->", {"comment(>)"}},
    {"the opener's dashes and one more do not close", "<!--->-->", {"comment(->)"}},
    {"an open comment", "<!-- a", {"comment( a, open)"}},
    {"an open comment keeps a dash", "<!-- a -", {"comment( a -, open)"}},
    {"an open comment keeps two dashes", "<!-- a --", {"comment( a --, open)"}},
    {"an open comment with nothing", "<!--", {"comment(, open)"}},
    {"half a comment opener is malformed", "<!-x>y", {"junk(<!-)", "junk(x>y)"}},
    {"a section", "<![CDATA[x]]>", {"cdata(CDATA|[x)"}},
    {"a section ignoring case", "<![cdata[x]]>", {"cdata(cdata|[x)"}},
    {"brackets in a section", "<![CDATA[a]b]]>", {"cdata(CDATA|[a]b)"}},
    {"whatever follows two brackets ends a section", "<![CDATA[x]]y", {"cdata(CDATA|[x]], open)", "text(y)"}},
    {"a third bracket ends it as well", "<![CDATA[x]]]>", {"cdata(CDATA|[x]], open)", "text(]>)"}},
    {"the opener's bracket may be missing", "<![CDATA>]]>", {"cdata(CDATA|>)"}},
    {"an open section", "<![CDATA[x", {"cdata(CDATA|[x, open)"}},
    {"an open section keeps a bracket", "<![CDATA[x]", {"cdata(CDATA|[x], open)"}},
    {"an open section keeps two brackets", "<![CDATA[x]]", {"cdata(CDATA|[x]], open)"}},
    {"a condition", "<![if !IE]>", {"conditional(if| !IE|)"}},
    {"a condition's tail", "<![endif]-->", {"conditional(endif||--)"}},
    {"case as written", "<![EndIf]>", {"conditional(EndIf||)"}},
    {"a condition without its bracket", "<![if a>", {"conditional(if| a>|, no-bracket, open)"}},
    {"a condition without its end", "<![if a]", {"conditional(if| a|, open)"}},
    {"another word is malformed", "<![endifx]>a<b>", {"junk(<![endifx)", "junk(]>a)", "start(|b||)"}},
    {"no word is malformed", "<![[", {"junk(<![)", "junk([)"}},
};

const Case JUNK[] = {
    {"an open start tag", "<b", {"junk(<b)"}},
    {"an opener alone", "a<", {"text(a)", "junk(<)"}},
    {"an open end tag", "</div", {"junk(</div)"}},
    {"an open value", "<div class=", {"junk(<div class=)"}},
    {"an open quoted value", "<a b='c>d<e>", {"junk(<a b='c>d<e>)"}},
    {"an open declaration", "<!", {"junk(<!)"}},
    {"an open declaration's word", "<!DOCTYPE html", {"junk(<!DOCTYPE html)"}},
    {"half a comment opener", "<!-", {"junk(<!-)"}},
    {"a section's word at the end", "<![CDATA", {"junk(<![CDATA)"}},
    {"an open instruction", "<?php a", {"junk(<?php a)"}},
    {"an open declaration of XML", "<?xml a", {"junk(<?xml a)"}},
    {"a failure that is a lone token", "<!-<b>", {"junk(<!-)", "start(|b||)"}},
    {"failures in a row", "<!-<!-x<!-y", {"junk(<!-)", "junk(<!-)", "junk(x)", "junk(<!-)", "junk(y)"}},
    {"a failure and an open tag", "<!-x<b", {"junk(<!-)", "junk(x)", "junk(<b)"}},
    {"junk is bytes", "<!-\xE9\n", {"junk(<!-)", "junk(\\xE9\\n)"}},
};

const Case CODE[] = {
    {"strings hide markup",
     "<script>if(a<b)x='</b>';</script>",
     {"start(|script||)", "js-start", "text(if(a)", "text(<b)x=)", "s-string(</b>)", "text(;)", "end(|script|||)",
      "js-end"}},
    {"another end tag is text",
     "<script>x</p></script>",
     {"start(|script||)", "js-start", "text(x)", "text(</p>)", "end(|script|||)", "js-end"}},
    {"end tags that are text, each as written",
     "<script></ p a='b' c / </p </p/></SCRIPT >",
     {"start(|script||)", "js-start", "junk(</ p a='b' c / )", "text(</p )", "text(</p/>)", "end(|SCRIPT| ||)",
      "js-end"}},
    {"an end tag with attributes is text",
     "<style></p a=\"b\" c ></style x>",
     {"start(|style||)", "css-start", "text(</p a=\"b\" c >)", "end(|style| |{|x}|)", "css-end"}},
    {"a stray script end", "</script>", {"end(|script|||)", "js-end"}},
    {"a stray style end", "</STYLE>", {"end(|STYLE|||)", "css-end"}},
    {"a script end in a style is text", "<style></script>", {"start(|style||)", "css-start", "text(</script>)"}},
    {"short tags open nothing", "<script/><style />'", {"short(|script||)", "short(|style|| )", "text(')"}},
    {"openers that are text",
     "<script>a<?b<!c<d<",
     {"start(|script||)", "js-start", "text(a)", "text(<?b)", "text(<!c)", "text(<d)", "junk(<)"}},
    {"an instruction's opener at the end is text", "<script><?", {"start(|script||)", "js-start", "text(<?)"}},
    {"a declaration's opener at the end is junk", "<script><!", {"start(|script||)", "js-start", "junk(<!)"}},
    {"sections stay sections",
     "<script><!--a--><![CDATA[b]]><![if c]>",
     {"start(|script||)", "js-start", "comment(a)", "cdata(CDATA|[b)", "conditional(if| c|)"}},
    {"an expression is text, and its closing slash opens another",
     "<script>x=/ab+/g;\n",
     {"start(|script||)", "js-start", "text(x=)", "text(/ab+)", "text(/g;)", "text(\\n)"}},
    {"a backslash protects a slash",
     "<script>/\\/\\\\/",
     {"start(|script||)", "js-start", "text(/\\\\/\\\\\\\\)", "text(/)"}},
    {"an opener ends an expression", "<script>/a<b/", {"start(|script||)", "js-start", "text(/a)", "text(<b/)"}},
    {"an escaped opener ends an expression too",
     "<script>/\\<",
     {"start(|script||)", "js-start", "text(/\\\\)", "junk(<)"}},
    {"a line end ends an expression",
     "<script>/a\n/b\rc",
     {"start(|script||)", "js-start", "text(/a)", "text(\\n)", "text(/b)", "text(\\rc)"}},
    {"a bracket does not protect a slash", "<script>/[/]", {"start(|script||)", "js-start", "text(/[)", "text(/])"}},
    {"a slash at the end is text", "<script>a/", {"start(|script||)", "js-start", "text(a/)"}},
    {"no expressions in a style", "<style>a/b<", {"start(|style||)", "css-start", "text(a/b)", "junk(<)"}},
    {"no line comments in a style", "<style>//'a'", {"start(|style||)", "css-start", "text(//)", "s-string(a)"}},
    {"block comments in a style", "<style>a/*b*/", {"start(|style||)", "css-start", "text(a)", "c-comment(b)"}},
    {"strings with escapes",
     "<script>'it\\'s' \"\\\\\"\"\\\"\"",
     {"start(|script||)", "js-start", "s-string(it\\\\'s)", "text( )", "d-string(\\\\\\\\)", "d-string(\\\\\")"}},
    {"strings in a style",
     "<style>'<' \"</style>\"",
     {"start(|style||)", "css-start", "s-string(<)", "text( )", "d-string(</style>)"}},
    {"quotes outside are text", "'a' \"b\" /*c*/ //d", {"text('a' \"b\" /*c*/ //d)"}},
    {"an open string is junk",
     "<script>a'b</script>",
     {"start(|script||)", "js-start", "text(a)", "junk('b</script>)"}},
    {"a block comment", "<script>/* a */b", {"start(|script||)", "js-start", "c-comment( a )", "text(b)"}},
    {"a star run keeps all but its last", "<script>/* a **/", {"start(|script||)", "js-start", "c-comment( a *)"}},
    {"the opener's star does not close", "<script>/*/*/", {"start(|script||)", "js-start", "c-comment(/)"}},
    {"nothing interrupts a block comment",
     "<script>/* a\n<!-- b */",
     {"start(|script||)", "js-start", "c-comment( a\\n<!-- b )"}},
    {"an open block comment is junk", "<script>x/* a *", {"start(|script||)", "js-start", "text(x)", "junk(/* a *)"}},
    {"a line comment is not delivered", "<script>x// a\ny", {"start(|script||)", "js-start", "text(x)", "text(\\ny)"}},
    {"a line comment keeps a carriage return", "<script>// a\r\n", {"start(|script||)", "js-start", "text(\\n)"}},
    {"tags do not end a line comment",
     "<script>// a </script> <b <!c <?d\n",
     {"start(|script||)", "js-start", "text(\\n)"}},
    {"an open line comment is junk", "<script>// a", {"start(|script||)", "js-start", "junk(// a)"}},
    {"a line comment that ends in an opener is junk", "<script>//<", {"start(|script||)", "js-start", "junk(//<)"}},
    {"a comment takes over from a line comment",
     "<script>// a <!-- b\n-->c",
     {"start(|script||)", "js-start", "comment( b\\n)", "text(c)"}},
    {"a section takes over",
     "<script>// a <![CDATA[b]]>c",
     {"start(|script||)", "js-start", "cdata(CDATA|[b)", "text(c)"}},
    {"a condition takes over",
     "<script>//<![if b]>c",
     {"start(|script||)", "js-start", "conditional(if| b|)", "text(c)"}},
    {"an open comment takes over", "<script>//<!--", {"start(|script||)", "js-start", "comment(, open)"}},
    {"a malformed comment opener fails the line comment",
     "<script>a// b <!-x\n<b",
     {"start(|script||)", "js-start", "text(a)", "junk(// b <!-)", "junk(x\\n)", "text(<b)"}},
    {"a malformed section opener fails the line comment",
     "<script>//<![a[</script>",
     {"start(|script||)", "js-start", "junk(//<![a)", "junk([)", "end(|script|||)", "js-end"}},
    {"code after junk is junk up to the next opener",
     "<script><!-'</p>'</script>'",
     {"start(|script||)", "js-start", "junk(<!-)", "junk(')", "text(</p>)", "s-string(</script>)"}},
};

TEST(ReferenceTokenizerTest, Tags) {
    CheckAll(TAGS);
}

TEST(ReferenceTokenizerTest, FoldedAttributes) {
    CheckAll(NORMALIZATION);
}

TEST(ReferenceTokenizerTest, EndTags) {
    CheckAll(END_TAGS);
}

TEST(ReferenceTokenizerTest, Declarations) {
    CheckAll(DECLARATIONS);
}

TEST(ReferenceTokenizerTest, Instructions) {
    CheckAll(INSTRUCTIONS);
}

TEST(ReferenceTokenizerTest, Junk) {
    CheckAll(JUNK);
}

TEST(ReferenceTokenizerTest, Code) {
    CheckAll(CODE);
}

TEST(ReferenceTokenizerTest, CommentsAndSections) {
    CheckAll(SECTIONS);
    CheckTokens({"the tail of an open condition is lost", "<![if a]b", {"conditional(if| a|, open)"}}, 1252,
                "<![if a]");
}

TEST(ReferenceTokenizerTest, WhiteSpaceAfterASlashIsWrittenBeforeIt) {
    CheckTokens({"after a name", "<?xml a/ >", {"extern(|xml|{ |a}| , slash)"}}, 1252, "<?xml a />");
    CheckTokens({"after a slash alone", "<?xml a\t/ >", {"extern(|xml|{ |a}|\\t , slash)"}}, 1252, "<?xml a\t />");
}

const Case ESCAPES[] = {
    {"a run hides markup", "a\x1B$B<b>\x1B(Bc<d>", {"text(a\\x1B$B<b>\\x1B(Bc)", "start(|d||)"}},
    {"the shorter opener wins", "\x1B$(C<\x1B(J<d>", {"text(\\x1B$(C<\\x1B(J)", "start(|d||)"}},
    {"a later opener belongs to the run", "\x1B$A<\x1B$B<\x1B.A<d>", {"text(\\x1B$A<\\x1B$B<\\x1B.A)", "start(|d||)"}},
    {"what opens no run is text", "\x1Bx<d>", {"text(\\x1Bx)", "start(|d||)"}},
    {"the character after is swallowed", "\x1B<d>", {"text(\\x1B<d>)"}},
    {"an escape cut off", "\x1B$", {"text(\\x1B$)"}},
    {"a closer cut off", "\x1B$B<\x1B(", {"text(\\x1B$B<\\x1B()"}},
    {"an escape alone", "\x1B", {"text(\\x1B)"}},
    {"an escape after an escape opens nothing", "\x1B\x1B$B<d>", {"text(\\x1B\\x1B$B)", "start(|d||)"}},
    {"a run in a double-quoted value", "<p a=\"\x1B$B\">\x1B(B\">", {"start(|p|{ |a|=|\"\\x1B$B\">\\x1B(B\"}|)"}},
    {"none in a single-quoted value", "<p a='\x1B$B'>", {"start(|p|{ |a|=|'\\x1B$B'}|)"}},
    {"none in the value after an unquoted one", "<p a=x b=\"\x1B$B\">", {"start(|p|{ |a|=|x}{ |b|=|\"\\x1B$B\"}|)"}},
    {"one in the value after a quoted one",
     "<p a='x' b=\"\x1B$B\">\x1B(B\">",
     {"start(|p|{ |a|=|'x'}{ |b|=|\"\\x1B$B\">\\x1B(B\"}|)"}},
    {"one after an empty unquoted value",
     "<p a=<b=\"\x1B$B\">\x1B(B\">",
     {"start(|p|{ |a|=|}{|<b|=|\"\\x1B$B\">\\x1B(B\"}|)"}},
    {"one after an unquoted value and a bare word",
     "<p a=x c b=\"\x1B$B\">\x1B(B\">",
     {"start(|p|{ |a|=|x c}{ |b|=|\"\\x1B$B\">\\x1B(B\"}|)"}},
    {"end tags read it after unquoted values",
     "</p a=x b=\"\x1B$B\">\x1B(B\">",
     {"end(|p| |{|a|=|x}{ |b|=|\"\\x1B$B\">\\x1B(B\"}|)"}},
    {"one in a declaration", "<!A \"\x1B$B\">\x1B(B\">", {"entity(|A|{ |\"\\x1B$B\">\\x1B(B\"}|)"}},
    {"one in an XML declaration", "<?xml a=\"\x1B$B\">\x1B(B\"?>", {"extern(|xml|{ |a|=|\"\\x1B$B\">\\x1B(B\"}|)"}},
    {"none after an unquoted value of one", "<?xml a=x b=\"\x1B$B\"?>", {"extern(|xml|{ |a|=|x}{ |b|=|\"\\x1B$B\"}|)"}},
    {"one in a free-style string", "<?a \"\x1B$B\">\x1B(B\"?>", {"extern-text(<?a \"\\x1B$B\">\\x1B(B\"?>)"}},
    {"one in a script string",
     "<script>\"\x1B$B\"\x1B(B\"'\x1B$B'",
     {"start(|script||)", "js-start", "d-string(\\x1B$B\"\\x1B(B)", "s-string(\\x1B$B)"}},
    {"a backslash makes it ordinary",
     "<script>\"\\\x1B$B\"",
     {"start(|script||)", "js-start", "d-string(\\\\\\x1B$B)"}},
    {"an open run in a string is junk", "<p a=\"\x1B$B\">", {"junk(<p a=\"\\x1B$B\">)"}},
};

TEST(ReferenceTokenizerTest, EscapeRunsInTheirThreeCharsets) {
    CheckAll(ESCAPES, 50221);
    CheckAll(ESCAPES, 50222);
    CheckAll(ESCAPES, 50225);
    const Case elsewhere[] = {{"no run elsewhere", "\x1B$B<b>", {"text(\\x1B$B)", "start(|b||)"}}};
    CheckAll(elsewhere, 1252);
    CheckAll(elsewhere, 50220);
}

TEST(ReferenceTokenizerTest, CharsetsOfMetaTags) {
    const struct {
        const char* note;
        std::string_view input;
        Lines charsets;
    } rows[] = {
        {"a charset attribute", "<meta charset=utf-8>", {"charset(65001)"}},
        {"a content attribute",
         "<meta http-equiv='Content-Type' content='text/html; charset=koi8-r'>",
         {"charset(20866)"}},
        {"content without http-equiv, any case", "<META CONTENT='CHARSET = UTF-8 '/>", {"charset(65001)"}},
        {"a short tag", "<meta charset='utf-8'/>", {"charset(65001)"}},
        {"an unknown name", "<meta content='charset = x-unknown'>", {}},
        {"16-bit text", "<meta charset=utf-16>", {}},
        {"7-bit Unicode is taken as it is", "<meta charset=utf-7>", {"charset(65000)"}},
        {"the first known one counts",
         "<meta charset=x-none><meta charset=utf-8><meta charset=koi8-r>",
         {"charset(65001)"}},
        {"the charset attribute wins", "<meta content='charset=koi8-r' charset=utf-8>", {"charset(65001)"}},
        {"an unknown charset attribute wins as well", "<meta content='charset=koi8-r' charset=x-none>", {}},
        {"an empty one does not", "<meta content='charset=koi8-r' charset=''>", {"charset(20866)"}},
        {"the last attribute of a name counts", "<meta charset=koi8-r charset=utf-8>", {"charset(65001)"}},
        {"one without a value is empty", "<meta charset content='charset=utf-8'>", {"charset(65001)"}},
        {"the attribute is not stripped", "<meta charset=' utf-8'>", {}},
        {"bare words have been folded into the value", "<meta charset=utf-8 x>", {}},
        {"three parts are ignored", "<meta content='charset==utf-8'>", {}},
        {"and the next piece counts", "<meta content='charset=a=b;charset=utf-8'>", {"charset(65001)"}},
        {"an empty name is ignored", "<meta content='charset='>", {}},
        {"and no later piece counts", "<meta content='charset=;charset=utf-8'>", {}},
        {"only blanks are stripped", "<meta content='charset=\tutf-8'>", {}},
        {"other tags are not examined", "<metal charset=utf-8><p charset=utf-8></meta charset=utf-8>", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        const ReferenceRun run = ParseByReference(row.input, {.charset = 0});
        Lines charsets;
        for (std::size_t index = 1; index < run.trace.size(); index++) {
            if (run.trace[index].substr(0, 8) == "charset(")
                charsets.push_back(run.trace[index]);
        }
        Lines expected = row.charsets;
        expected.insert(expected.begin(), "charset(0)");
        EXPECT_EQ(charsets, expected);
        EXPECT_EQ(run.copy, row.input);

        const ReferenceRun known = ParseByReference(row.input, {.charset = 1252});
        EXPECT_EQ(known.trace[1], "charset(1252)");
        for (std::size_t index = 2; index < known.trace.size(); index++)
            EXPECT_NE(known.trace[index].substr(0, 8), "charset(");
    }
}

TEST(ReferenceTokenizerTest, TheNoticeComesAfterItsTagAndAppliesFromThereOn) {
    const Lines expected = {
        "start-parsing",  "charset(0)",       "text(\\x1B$B)", "start(|meta|{ |charset|=|iso-2022-jp}|)",
        "charset(50221)", "text(\\x1B$B<b>)", "end-parsing"};
    EXPECT_EQ(ParseByReference("\x1B$B<meta charset=iso-2022-jp>\x1B$B<b>", {.charset = 0}).trace, expected);
}

TEST(ReferenceTokenizerTest, SevenBitUnicodeActsAsWindowsLatin) {
    EXPECT_EQ(ParseByReference("", {.charset = 65000}).trace, (Lines{"start-parsing", "charset(1252)", "end-parsing"}));
}

TEST(ReferenceTokenizerTest, LinesAndColumns) {
    const struct {
        const char* note;
        std::string_view input;
        std::uint64_t line;
        std::uint64_t column;
    } rows[] = {
        {"nothing", "", 1, 1},
        {"columns count from 1", "ab", 1, 3},
        {"only a line feed is a line end", "\r\na", 2, 2},
        {"a carriage return and a tab are one column each", "\r\t", 1, 3},
        {"line ends inside tokens", "<a\nb='\n'>\n", 4, 1},
        {"junk counts like anything else", "<!-\nx\n", 3, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        const ReferenceRun run = ParseByReference(row.input);
        EXPECT_EQ(run.line, row.line);
        EXPECT_EQ(run.column, row.column);
    }
}

TEST(ReferenceTokenizerTest, NothingCanBeReadBack) {
    const struct {
        const char* note;
        std::string_view input;
        Lines tokens;  ///< up to where the parse stops
        std::uint32_t parseResult;
        std::uint32_t endResult;
        std::uint64_t column;
        std::size_t covered;
    } rows[] = {
        {"an open tag", "a<b", {"text(a)"}, 0, 16, 4, 1},
        {"a malformed opener stops before the character", "a<!-x<b>", {"text(a)"}, 11, 16, 5, 1},
        {"a malformed declaration", "<!A b<c>", {}, 11, 16, 6, 0},
        {"a malformed attribute", "<a b / >", {}, 11, 16, 8, 0},
        {"a malformed line comment", "<script>//<!-a", {"start(|script||)", "js-start"}, 11, 16, 14, 8},
        {"an open line comment", "<script>//a", {"start(|script||)", "js-start"}, 0, 16, 12, 8},
        {"an open string", "<script>'a", {"start(|script||)", "js-start"}, 0, 16, 11, 8},
        {"an open section is a token", "<![CDATA[a", {"cdata(CDATA|[a, open)", "end-parsing"}, 0, 0, 11, 10},
        {"text is delivered at the end", "a", {"text(a)", "end-parsing"}, 0, 0, 2, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        const ReferenceRun run = ParseByReference(row.input, {.canReadBack = false});
        Lines expected = row.tokens;
        expected.insert(expected.begin(), {"start-parsing", "charset(1252)"});
        EXPECT_EQ(run.trace, expected);
        EXPECT_EQ(run.parseResult, row.parseResult);
        EXPECT_EQ(run.endResult, row.endResult);
        EXPECT_EQ(run.line, 1U);
        EXPECT_EQ(run.column, row.column);
        EXPECT_EQ(Covered(run), row.covered);
    }
}

TEST(ReferenceTokenizerTest, Stretches) {
    const std::string_view input =
        "a<b></b><!--c--><![CDATA[d]]><![if e]f><!G><?h?><script>'i'/*j*//k//l\nm</n>"
        "<!-o";
    const struct {
        Kind kind;
        std::string_view text;
    } expected[] = {
        {Kind::TEXT, "a"},
        {Kind::TAG, "<b>"},
        {Kind::TAG, "</b>"},
        {Kind::COMMENT, "<!--c-->"},
        {Kind::CDATA, "<![CDATA[d]]>"},
        {Kind::CONDITIONAL, "<![if e]f>"},
        {Kind::DECLARATION, "<!G>"},
        {Kind::INSTRUCTION, "<?h?>"},
        {Kind::TAG, "<script>"},
        {Kind::STRING, "'i'"},
        {Kind::SCRIPT_COMMENT, "/*j*/"},
        {Kind::REGULAR_EXPRESSION, "/k"},
        {Kind::SCRIPT_COMMENT, "//l"},
        {Kind::TEXT, "\nm"},
        {Kind::TEXT, "</n>"},
        {Kind::JUNK, "<!-"},
        {Kind::JUNK, "o"},
    };
    const ReferenceRun run = ParseByReference(input);
    ASSERT_EQ(run.stretches.size(), std::size(expected));
    for (std::size_t index = 0; index < std::size(expected); index++) {
        SCOPED_TRACE(expected[index].text);
        const ReferenceStretch& stretch = run.stretches[index];
        EXPECT_EQ(stretch.kind, expected[index].kind);
        EXPECT_EQ(input.substr(stretch.begin, stretch.end - stretch.begin), expected[index].text);
        EXPECT_EQ(stretch.copy, expected[index].text);
        EXPECT_TRUE(stretch.closed);
        EXPECT_FALSE(stretch.swapsSlashAndSpace);
        EXPECT_FALSE(stretch.failedScriptComment);
        if (stretch.kind != Kind::CONDITIONAL)
            EXPECT_EQ(stretch.tailBegin, stretch.end);
        else
            EXPECT_EQ(input.substr(stretch.tailBegin, stretch.end - stretch.tailBegin), "f>");
    }
}

TEST(ReferenceTokenizerTest, MarksOfStretches) {
    const ReferenceRun open = ParseByReference("<![if a>");
    ASSERT_EQ(open.stretches.size(), 1U);
    EXPECT_EQ(open.stretches[0].kind, Kind::CONDITIONAL);
    EXPECT_EQ(open.stretches[0].tailBegin, 8U);
    EXPECT_FALSE(open.stretches[0].closed);
    const ReferenceRun openTail = ParseByReference("<![if a]b");
    ASSERT_EQ(openTail.stretches.size(), 1U);
    EXPECT_EQ(openTail.stretches[0].tailBegin, 8U);
    EXPECT_FALSE(openTail.stretches[0].closed);
    EXPECT_TRUE(ParseByReference("<?xml a/ >").stretches.at(0).swapsSlashAndSpace);
    EXPECT_FALSE(ParseByReference("<?xml a />").stretches.at(0).swapsSlashAndSpace);
    EXPECT_TRUE(ParseByReference("<style>/*").stretches.at(1).failedScriptComment);
    EXPECT_TRUE(ParseByReference("<script>//<!-a").stretches.at(1).failedScriptComment);
    EXPECT_FALSE(ParseByReference("<script>//<!-a").stretches.at(2).failedScriptComment);
    EXPECT_FALSE(ParseByReference("<script>'").stretches.at(1).failedScriptComment);
}

TEST(ReferenceTokenizerTest, WhatCutsLose) {
    const struct {
        const char* note;
        std::string_view input;
        std::vector<std::size_t> cuts;
        std::string_view copy;
    } rows[] = {
        {"no cut", "<![if a]bcd>e", {}, "<![if a]bcd>e"},
        {"the part of a tail before the cut", "<![if a]bcd>e", {10}, "<![if a]d>e"},
        {"the last cut before the end counts", "<![if a]bcd>e", {9, 10, 12}, "<![if a]d>e"},
        {"all of it when the end begins its piece", "<![if a]bcd>e", {11}, "<![if a]>e"},
        {"nothing when the cut is before the tail", "<![if a]bcd>e", {3, 8}, "<![if a]bcd>e"},
        {"an open tail is lost with and without cuts", "<![if a]bcd", {9}, "<![if a]"},
        {"a comment keeps a cut opener", "<style>/*a*/", {8}, "<style>/*a*/"},
        {"an open one loses the first character", "<style>/*a", {8}, "<style>*a"},
        {"a failed one as well", "<script>//<!-a", {9}, "<script>/<!-a"},
        {"an open one with other cuts does not", "<style>/*a", {7, 9}, "<style>/*a"},
        {"other junk does not", "<style>'a", {8}, "<style>'a"},
        {"what is lost in one piece is lost in more", "<?xml a/ >", {3}, "<?xml a />"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        EXPECT_EQ(CopyByReference(ParseByReference(row.input), row.input, row.cuts), row.copy);
    }
}

}  // namespace
}  // namespace Kestra::Test
