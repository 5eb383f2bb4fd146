#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/html/parser/DocumentRows.h"
#include "tests/support/Flavours.h"

// Comments, CDATA and conditional sections, declarations and processing instructions in documents.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

TEST(MarkupSectionsTest, Comments) {
    const DocumentRow rows[] = {
        {"a comment between text", "a<!--b-->c", {"text(a)", "comment(b)", "text(c)"}},
        {"an empty comment", "<!---->", {"comment()"}},
        {"pairs of dashes inside", "<!-- a -- b -->", {"comment( a -- b )"}},
        {"a dash before the end", "<!-- a --->", {"comment( a -)"}},
        {"a dash run keeps all but its last two", "<!------>x", {"comment(--)", "text(x)"}},
        {"a blank between the dashes and \">\" is no end", "<!-- a -- >-->b", {"comment( a -- >)", "text(b)"}},
        {"nor is an exclamation mark", "<!--a--!>b-->c", {"comment(a--!>b)", "text(c)"}},
        {"a \"->\" alone is content", "<!--a->b-->", {"comment(a->b)"}},
        {"tags and quotes inside", "<!--<a b='-->'>x", {"comment(<a b=')", "text('>x)"}},
        {"an opener inside", "<!--a<!--b-->c-->", {"comment(a<!--b)", "text(c-->)"}},
        {"two in a row", "<!--a--><!--b-->", {"comment(a)", "comment(b)"}},
        {"after and before tags", "<a><!--b--></a>", {"start(|a||)", "comment(b)", "end(|a|||)"}},
        {"line feeds are counted", "<!--\n\r\n--\n-->\nx", {"comment(\\n\\r\\n--\\n)", "text(\\nx)"}},
        {"bytes from 128 up", "<!--\xE9-\xFF-->\xE9", {"comment(\\xE9-\\xFF)", "text(\\xE9)"}},
        {"a conditional comment hides its content",
         "<!--[if IE]>x<![endif]-->y",
         {"comment([if IE]>x<![endif])", "text(y)"}},
        {"a revealed one does not",
         "<!--[if !IE]><!-->y<!--<![endif]-->",
         {"comment([if !IE]><!)", "text(y)", "comment(<![endif])"}},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, CommentsThatTheInputLeavesOpen) {
    const DocumentRow rows[] = {
        {"after the opener", "x<!--", {"text(x)", "comment(, open)"}},
        {"in the body", "<!-- a", {"comment( a, open)"}},
        {"after a dash", "<!-- a -", {"comment( a -, open)"}},
        {"after two dashes", "<!-- a --", {"comment( a --, open)"}},
        {"after three dashes", "<!-- a ---", {"comment( a ---, open)"}},
        {"the dashes of the opener end nothing", "<!-->a", {"comment(>a, open)"}},
        {"nor does one dash more", "<!--->a", {"comment(->a, open)"}},
        {"tags inside", "<!--<a><b", {"comment(<a><b, open)"}},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, CDATASections) {
    const DocumentRow rows[] = {
        {"the body begins with the bracket", "a<![CDATA[x]]>b", {"text(a)", "cdata(CDATA|[x)", "text(b)"}},
        {"an empty one", "<![CDATA[]]>", {"cdata(CDATA|[)"}},
        {"a bracket inside", "<![CDATA[a]b]]>", {"cdata(CDATA|[a]b)"}},
        {"a \"]>\" inside", "<![CDATA[a]>b]]>", {"cdata(CDATA|[a]>b)"}},
        {"the keyword as written", "<![cData[x]]>", {"cdata(cData|[x)"}},
        {"without the bracket", "<![CDATA]]>", {"cdata(CDATA|)"}},
        {"with a blank in its place", "<![CDATA x]]>", {"cdata(CDATA| x)"}},
        {"with \">\" in its place", "<![CDATA>x]]>", {"cdata(CDATA|>x)"}},
        {"tags and comments inside", "<![CDATA[<a b=']]>'>", {"cdata(CDATA|[<a b=')", "text('>)"}},
        {"line feeds are counted", "<![CDATA[\n]\n]]>\nx", {"cdata(CDATA|[\\n]\\n)", "text(\\nx)"}},
        {"bytes from 128 up", "<![CDATA[\xE9]]>", {"cdata(CDATA|[\\xE9)"}},
        {"two brackets end it, whatever follows", "<![CDATA[x]]y", {"cdata(CDATA|[x]], open)", "text(y)"}},
        {"a third bracket too", "<![CDATA[x]]]>", {"cdata(CDATA|[x]], open)", "text(]>)"}},
        {"a blank", "<![CDATA[x]] >", {"cdata(CDATA|[x]], open)", "text( >)"}},
        {"a tag", "<![CDATA[x]]<b>", {"cdata(CDATA|[x]], open)", "start(|b||)"}},
        {"a line feed", "<![CDATA[x]]\n<b>", {"cdata(CDATA|[x]], open)", "text(\\n)", "start(|b||)"}},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, CDATASectionsThatTheInputLeavesOpen) {
    const DocumentRow rows[] = {
        {"after the bracket", "<![CDATA[", {"cdata(CDATA|[, open)"}},
        {"in the body", "<![CDATA[x<a>", {"cdata(CDATA|[x<a>, open)"}},
        {"after one bracket", "<![CDATA[x]", {"cdata(CDATA|[x], open)"}},
        {"after two", "<![CDATA[x]]", {"cdata(CDATA|[x]], open)"}},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, ConditionalSections) {
    const DocumentRow rows[] = {
        {"with a condition",
         "<![if !IE]>a<![endif]>b",
         {"conditional(if| !IE|)", "text(a)", "conditional(endif||)", "text(b)"}},
        {"the keyword as written", "<![IF x]><![EndIf]>", {"conditional(IF| x|)", "conditional(EndIf||)"}},
        {"an empty condition", "<![if]>", {"conditional(if||)"}},
        {"a \">\" in the condition does not end it", "<![if gt IE 5>6]>x", {"conditional(if| gt IE 5>6|)", "text(x)"}},
        {"a bracket before it", "<![if[x]>", {"conditional(if|[x|)"}},
        {"quotes and tags in the condition", "<![if '<a>]>'x", {"conditional(if| '<a>|)", "text('x)"}},
        {"line feeds are counted", "<![if\nx\n]>\ny", {"conditional(if|\\nx\\n|)", "text(\\ny)"}},
        {"bytes from 128 up", "<![if \xE9]>", {"conditional(if| \\xE9|)"}},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, ConditionalSectionsThatTheInputLeavesOpen) {
    const DocumentRow rows[] = {
        {"in the condition", "<![if x", {"conditional(if| x|, no-bracket, open)"}},
        {"a \">\" does not close the condition", "<![if x>y", {"conditional(if| x>y|, no-bracket, open)"}},
        {"after the bracket", "<![if x]", {"conditional(if| x|, open)"}},
    };
    CheckRows(rows);
}

// A table of its own: only the part of a tail that lies in the piece with the ">" is kept.
TEST(MarkupSectionsTest, TailsOfConditionalSectionsDependOnTheCuts) {
    struct Row {
        const char* note;
        std::string front;  ///< up to the "]"
        std::string tail;
        std::string back;  ///< from the ">" on
        const char* keywordAndCondition;
        Lines tokensAfter;
    };
    const Row rows[] = {
        {"the end of a conditional comment", "<![endif]", "--", ">", "endif|", {}},
        {"a blank", "<![if x]", " ", ">y", "if| x", {"text(y)"}},
        {"a condition that holds a bracket", "<![if (a[b]", " c])", ">", "if| (a[b", {}},
        {"tags and line feeds", "<![endif]", "<a\n\n'", ">\n", "endif|", {"text(\\n)"}},
    };
    for (const Row& row : rows) {
        const std::string input = row.front + row.tail + row.back;
        const std::size_t end = row.front.size() + row.tail.size();
        for (const Route& route : ROUTES) {
            for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
                SCOPED_TRACE(std::string(row.note) + ", " + route.name);
                ForEverySplit(input, [&](const Cuts& cuts) {
                    std::size_t begin = row.front.size();
                    for (const std::size_t cut : cuts) {
                        if (cut > begin && cut <= end)
                            begin = cut;
                    }
                    const std::string kept = input.substr(begin, end - begin);
                    Lines tokens{"conditional(" + std::string(row.keywordAndCondition) + "|" + Trace::Escape(kept) +
                                 ")"};
                    tokens.insert(tokens.end(), row.tokensAfter.begin(), row.tokensAfter.end());
                    DocumentSettings settings = SettingsFor(route, feed);
                    settings.selfCheck = GenericParser::SELF_CHECK_CRC;
                    const DocumentRun run = ParseBy(route, input, cuts, settings);
                    const bool passes = kept == row.tail && !route.wideInput;
                    EXPECT_EQ(Join(Comparable(run.trace, route)),
                              Join(passes ? WholeTrace(tokens, route) : OpenTrace(tokens, route)));
                    EXPECT_EQ(run.parseResult, 0U);
                    EXPECT_EQ(run.endResult, passes ? 0U : 704U);
                    if (route.name == NARROW_TO_NARROW.name) {
                        EXPECT_EQ(run.output, row.front + kept + row.back);
                    }
                });
            }
        }
    }
}

// A table of its own: the tail of a section that is never closed is lost.
TEST(MarkupSectionsTest, AConditionalSectionThatIsNotClosedLosesItsTail) {
    const std::string input = "a<![if x]b<c";
    for (const Route& route : ROUTES) {
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
            SCOPED_TRACE(route.name);
            ForEverySplit(input, [&](const Cuts& cuts) {
                DocumentSettings settings = SettingsFor(route, feed);
                const DocumentRun run = ParseBy(route, input, cuts, settings);
                const Lines tokens{"text(a)", "conditional(if| x|, open)"};
                EXPECT_EQ(Join(Comparable(run.trace, route)), Join(WholeTrace(tokens, route)));
                EXPECT_EQ(run.endResult, 0U);
                EXPECT_EQ(run.column, input.size() + 1);
                if (route.name == NARROW_TO_NARROW.name) {
                    EXPECT_EQ(run.output, "a<![if x]");
                }
                settings.selfCheck = GenericParser::SELF_CHECK_CRC;
                const DocumentRun checked = ParseBy(route, input, cuts, settings);
                EXPECT_EQ(checked.endResult, 704U);
                EXPECT_EQ(Join(Comparable(checked.trace, route)), Join(OpenTrace(tokens, route)));
            });
        }
    }
}

TEST(MarkupSectionsTest, Declarations) {
    const DocumentRow rows[] = {
        {"a document type", "<!DOCTYPE html><p>", {"entity(|DOCTYPE|{ |html}|)", "start(|p||)"}},
        {"any case", "<!doctype HTML>", {"entity(|doctype|{ |HTML}|)"}},
        {"public and system identifiers",
         "<!DOCTYPE a PUBLIC \"-//b>//\"  'c'>",
         {"entity(|DOCTYPE|{ |a}{ |PUBLIC}{ |\"-//b>//\"}{  |'c'}|)"}},
        {"nothing after the keyword", "<!DOCTYPE>", {"entity(|DOCTYPE||)"}},
        {"a blank before \">\"", "<!DOCTYPE html >", {"entity(|DOCTYPE|{ |html}| )"}},
        {"only a blank after the keyword", "<!DOCTYPE\n>", {"entity(|DOCTYPE||\\n)"}},
        {"a blank before the keyword", "<! \tDOCTYPE html>", {"entity( \\t|DOCTYPE|{ |html}|)"}},
        {"no keyword", "<!>x", {"entity(|||)", "text(x)"}},
        {"only a blank", "<! >", {"entity( |||)"}},
        {"empty strings are items", "<!a '' \"\">", {"entity(|a|{ |''}{ |\"\"}|)"}},
        {"\"=\" ends the keyword and belongs to a word", "<!a=b =c d= e>", {"entity(|a|{|=b}{ |=c}{ |d=}{ |e}|)"}},
        {"brackets end the keyword too", "<!a[b]>", {"entity(|a|{|[b]}|)"}},
        {"quotes and slashes inside a word", "<!a b'c/d\" />", {"entity(|a|{ |b'c/d\"}{ |/}|)"}},
        {"no blank is needed around strings", "<!a 'b'\"c\"d'e>", {"entity(|a|{ |'b'}{|\"c\"}{|d'e}|)"}},
        {"strings know no escapes", "<!a 'b\\' \"c\\\">", {"entity(|a|{ |'b\\\\'}{ |\"c\\\\\"}|)"}},
        {"an element with a group", "<!ELEMENT a (b|c)*>", {"entity(|ELEMENT|{ |a}{ |(b|c)*}|)"}},
        {"a \"?\" is a letter", "<!?>", {"entity(|?||)"}},
        {"a dash inside the keyword", "<!a-->", {"entity(|a--||)"}},
        {"line feeds are counted", "<!\na\n'\n'\n>\nx", {"entity(\\n|a|{\\n|'\\n'}|\\n)", "text(\\nx)"}},
        {"bytes from 160 up", "<!\xE9 \xE8 '\xE7'>", {"entity(|\\xE9|{ |\\xE8}{ |'\\xE7'}|)"}},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, DeclarationsThatFail) {
    const BrokenRow rows[] = {
        {"a \"<\" after a word",
         "a<!DOCTYPE x<y>z",
         {"text(a)", "junk(<!DOCTYPE x)", "start(|y||)", "text(z)"},
         {"text(a)"},
         11,
         16},
        {"after the keyword", "<!a<b>", {"junk(<!a)", "start(|b||)"}, {}, 11, 16},
        {"after a blank", "<!a b <c>", {"junk(<!a b )", "start(|c||)"}, {}, 11, 16},
        {"in the place of the keyword", "<!<b>", {"junk(<!)", "start(|b||)"}, {}, 11, 16},
        {"an internal subset", "<!a b [<!c 'd'>]>e", {"junk(<!a b [)", "entity(|c|{ |'d'}|)", "text(]>e)"}, {}, 11, 16},
        {"an end tag after it", "<!a</b>", {"junk(<!a)", "end(|b|||)"}, {}, 11, 16},
        {"a comment after it", "<!a<!--b-->", {"junk(<!a)", "comment(b)"}, {}, 11, 16},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, DeclarationsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"in the keyword", "x<!DOC", {"text(x)", "junk(<!DOC)"}, {"text(x)"}, 0, 16},
        {"after the keyword", "<!a ", {"junk(<!a )"}, {}, 0, 16},
        {"in a word", "<!a b", {"junk(<!a b)"}, {}, 0, 16},
        {"in a string", "<!a 'b><c>", {"junk(<!a 'b><c>)"}, {}, 0, 16},
        {"after a string", "<!a \"b\"", {"junk(<!a \"b\")"}, {}, 0, 16},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, ProcessingInstructions) {
    const DocumentRow rows[] = {
        {"between text", "a<?b c?>d", {"text(a)", "extern-text(<?b c?>)", "text(d)"}},
        {"a string hides the end", "<?php echo '?>'; ?>", {"extern-text(<?php echo '?>'; ?>)"}},
        {"either kind of string", "<?php \"?>'\"'\"?>'?>x", {"extern-text(<?php \"?>'\"'\"?>'?>)", "text(x)"}},
        {"a backslash escapes a quote",
         "<?php 'it\\'s ?>' \"\\\"?>\" ?>",
         {"extern-text(<?php 'it\\\\'s ?>' \"\\\\\"?>\" ?>)"}},
        {"and another backslash", "<?php '\\\\'?>'x", {"extern-text(<?php '\\\\\\\\'?>)", "text('x)"}},
        {"a backslash outside of strings escapes nothing", "<?a \\'?>' ?>", {"extern-text(<?a \\\\'?>' ?>)"}},
        {"a block comment hides the end", "<?php /* ?> ' */ ?>", {"extern-text(<?php /* ?> ' */ ?>)"}},
        {"an asterisk inside ends a block comment", "<?a /* * > */ ?>", {"extern-text(<?a /* * >)", "text( */ ?>)"}},
        {"so does the first of two at its end", "<?a /* ' **/ ?>", {"extern-text(<?a /* ' **/ ?>)"}},
        {"an empty block comment", "<?a /**/>x", {"extern-text(<?a /**/>)", "text(x)"}},
        {"a line comment hides the end up to the line feed",
         "<?a // ?> '\n?>x",
         {"extern-text(<?a // ?> '\\n?>)", "text(x)"}},
        {"a slash", "<?a / ?>", {"extern-text(<?a / ?>)"}},
        {"a slash before the end", "<?a />x", {"extern-text(<?a />)", "text(x)"}},
        {"a slash before a string", "<?a /'>' ?>", {"extern-text(<?a /'>' ?>)"}},
        {"\">\" alone ends it", "<?pi a > b", {"extern-text(<?pi a >)", "text( b)"}},
        {"right after the target", "<?a>b", {"extern-text(<?a>)", "text(b)"}},
        {"the end right after the target", "<?php?>x", {"extern-text(<?php?>)", "text(x)"}},
        {"a target that holds question marks", "<?a?b?>x", {"extern-text(<?a?b?>)", "text(x)"}},
        {"a target that ends with one", "<?a? b>x", {"extern-text(<?a? b>)", "text(x)"}},
        {"a target that ends with one, before a string", "<?a? '>' b>x", {"extern-text(<?a? '>' b>)", "text(x)"}},
        {"question marks inside", "<?a ? ?? b?\?>x", {"extern-text(<?a ? ?? b?\?>)", "text(x)"}},
        {"no target", "<?>x", {"extern-text(<?>)", "text(x)"}},
        {"no target but a question mark", "<?\?>x", {"extern-text(<?\?>)", "text(x)"}},
        {"a blank in its place", "<? ?>x", {"extern-text(<? ?>)", "text(x)"}},
        {"a blank before the target", "<? a b?>", {"extern-text(<? a b?>)"}},
        {"an \"=\" in its place", "<?=a?>", {"extern-text(<?=a?>)"}},
        {"brackets and \"<\" end the target", "<?a<b?><?c[d]?>", {"extern-text(<?a<b?>)", "extern-text(<?c[d]?>)"}},
        {"a target that begins with \"xml\"", "<?xmlx a='b'?>", {"extern-text(<?xmlx a='b'?>)"}},
        {"the end after \"xml\" makes it another target", "<?xml?>x", {"extern-text(<?xml?>)", "text(x)"}},
        {"so does a slash", "<?xml/>x", {"extern-text(<?xml/>)", "text(x)"}},
        {"tags inside", "<?a <b>c", {"extern-text(<?a <b>)", "text(c)"}},
        {"line feeds are counted",
         "<?a\n'\n'/*\n*///\n?>\nx",
         {"extern-text(<?a\\n'\\n'/*\\n*///\\n?>)", "text(\\nx)"}},
        {"bytes from 160 up", "<?\xE9 '\xE8' \xE7?>\xE6", {"extern-text(<?\\xE9 '\\xE8' \\xE7?>)", "text(\\xE6)"}},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, ProcessingInstructionsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"after the opener", "x<?", {"text(x)", "junk(<?)"}, {"text(x)"}, 0, 16},
        {"in the target", "<?ph", {"junk(<?ph)"}, {}, 0, 16},
        {"in the text", "<?a b", {"junk(<?a b)"}, {}, 0, 16},
        {"after a question mark", "<?a b?", {"junk(<?a b?)"}, {}, 0, 16},
        {"after a slash", "<?a /", {"junk(<?a /)"}, {}, 0, 16},
        {"in a string", "<?a 'b ?><c>", {"junk(<?a 'b ?><c>)"}, {}, 0, 16},
        {"in a double-quoted string", "<?a \"b\\\" ?>", {"junk(<?a \"b\\\\\" ?>)"}, {}, 0, 16},
        {"in a block comment", "<?a /* ?>", {"junk(<?a /* ?>)"}, {}, 0, 16},
        {"after an asterisk", "<?a /* *", {"junk(<?a /* *)"}, {}, 0, 16},
        {"in a line comment", "<?a // ?>", {"junk(<?a // ?>)"}, {}, 0, 16},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, XmlDeclarations) {
    const DocumentRow rows[] = {
        {"the usual one",
         "<?xml version=\"1.0\" encoding='utf-8'?>x",
         {"extern(|xml|{ |version|=|\"1.0\"}{ |encoding|=|'utf-8'}|)", "text(x)"}},
        {"a blank before the end", "<?xml version='1.0' ?>x", {"extern(|xml|{ |version|=|'1.0'}| )", "text(x)"}},
        {"no attribute", "<?xml ?>", {"extern(|xml|| )"}},
        {"any case, and blanks", "<? XML\ta = 'b'\n?>", {"extern( |XML|{\\t|a| = |'b'}|\\n)"}},
        {"\"xml-\" counts", "<?XML-stylesheet href=a?>", {"extern(|XML-stylesheet|{ |href|=|a}|)"}},
        {"\"xml:\" counts", "<?xMl:a b?>", {"extern(|xMl:a|{ |b}|)"}},
        {"a value without quotes", "<?xml a=b?>", {"extern(|xml|{ |a|=|b}|)"}},
        {"a value with a question mark inside", "<?xml a=b?c d=?\?>", {"extern(|xml|{ |a|=|b?c}{ |d|=|?}|)"}},
        {"quotes hide the end", "<?xml a='?>' b=\"?>\"?>", {"extern(|xml|{ |a|=|'?>'}{ |b|=|\"?>\"}|)"}},
        {"attributes without values", "<?xml a  b?>", {"extern(|xml|{ |a}{  |b}|)"}},
        {"a blank after one", "<?xml a ?>", {"extern(|xml|{ |a}| )"}},
        {"bare words after a value stay attributes",
         "<?xml a='b' c d=e f?>",
         {"extern(|xml|{ |a|=|'b'}{ |c}{ |d|=|e}{ |f}|)"}},
        {"no blank between two attributes", "<?xml a='b'c='d'?>", {"extern(|xml|{ |a|=|'b'}{|c|=|'d'}|)"}},
        {"a name that holds question marks", "<?xml a?b?>", {"extern(|xml|{ |a?b}|)"}},
        {"a slash in place of the question mark", "<?xml a='b'/>x", {"extern(|xml|{ |a|=|'b'}|, slash)", "text(x)"}},
        {"after a blank", "<?xml a='b' />x", {"extern(|xml|{ |a|=|'b'}| , slash)", "text(x)"}},
        {"after a name", "<?xml a/>", {"extern(|xml|{ |a}|, slash)"}},
        {"and no attribute", "<?xml />", {"extern(|xml|| , slash)"}},
        {"of two slashes one belongs to the name", "<?xml a//>", {"extern(|xml|{ |a/}|, slash)"}},
        {"a slash before the question mark", "<?xml a/?>", {"extern(|xml|{ |a/}|)"}},
        {"a value that ends with a slash", "<?xml a=b/?>", {"extern(|xml|{ |a|=|b/}|)"}},
        {"a value without a name", "<?xml =b?>", {"extern(|xml|{ ||=|b}|)"}},
        {"an attribute right after the name", "<?xml=a?><?xml[a]?>", {"extern(|xml|{||=|a}|)", "extern(|xml|{|[a]}|)"}},
        {"a \"<\" belongs to a name", "<?xml <a?>", {"extern(|xml|{ |<a}|)"}},
        {"line feeds are counted",
         "<?xml\na\n=\n'\n'\n?>\nx",
         {"extern(|xml|{\\n|a|\\n=\\n|'\\n'}|\\n)", "text(\\nx)"}},
        {"bytes from 160 up", "<?xml \xE9='\xE8'?>", {"extern(|xml|{ |\\xE9|=|'\\xE8'}|)"}},
        {"twice, the second one without the first one's attributes",
         "<?xml a='b' ?><?xml c?>",
         {"extern(|xml|{ |a|=|'b'}| )", "extern(|xml|{ |c}|)"}},
        {"an instruction after one", "<?xml a?><?b c?>", {"extern(|xml|{ |a}|)", "extern-text(<?b c?>)"}},
        {"and the other way round", "<?b c/*d*/?><?xml a?>", {"extern-text(<?b c/*d*/?>)", "extern(|xml|{ |a}|)"}},
    };
    CheckRows(rows);
}

// A table of its own: the blank after such a slash is written back before it, which the self-check
// does not pass.
TEST(MarkupSectionsTest, ABlankAfterTheSlashOfAnXmlDeclaration) {
    struct Row {
        const char* note;
        const char* input;
        Lines tokens;
        const char* output;
    };
    const Row rows[] = {
        {"after a name", "<?xml a/ >x", {"extern(|xml|{ |a}| , slash)", "text(x)"}, "<?xml a />x"},
        {"after a value", "<?xml a='b'/\n>x", {"extern(|xml|{ |a|=|'b'}|\\n, slash)", "text(x)"}, "<?xml a='b'\n/>x"},
        {"a slash alone", "<?xml / >x", {"extern(|xml||  , slash)", "text(x)"}, "<?xml  />x"},
    };
    for (const Row& row : rows) {
        for (const Route& route : ROUTES) {
            for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
                SCOPED_TRACE(std::string(row.note) + ", " + route.name);
                const std::string input = row.input;
                ForEverySplit(input, [&](const Cuts& cuts) {
                    DocumentSettings settings = SettingsFor(route, feed);
                    const DocumentRun run = ParseBy(route, input, cuts, settings);
                    EXPECT_EQ(Join(Comparable(run.trace, route)), Join(WholeTrace(row.tokens, route)));
                    EXPECT_EQ(run.endResult, 0U);
                    if (route.wideInput == (route.observed == Observed::WIDE)) {
                        EXPECT_EQ(run.output, route.wideInput ? ToUtf16LE(std::string_view(row.output)) : row.output);
                    }
                    settings.selfCheck = GenericParser::SELF_CHECK_CRC;
                    EXPECT_EQ(ParseBy(route, input, cuts, settings).endResult, 704U);
                });
            }
        }
    }
}

TEST(MarkupSectionsTest, XmlDeclarationsThatFail) {
    const BrokenRow rows[] = {
        {"no question mark", "a<?xml>b", {"text(a)", "junk(<?xml)", "junk(>b)"}, {"text(a)"}, 11, 16},
        {"none after a blank", "<?xml >b", {"junk(<?xml )", "junk(>b)"}, {}, 11, 16},
        {"none after a name", "<?xml a>b", {"junk(<?xml a)", "junk(>b)"}, {}, 11, 16},
        {"none after a value", "<?xml a=b>c", {"junk(<?xml a=b)", "junk(>c)"}, {}, 11, 16},
        {"none after a quoted value", "<?xml a='b' >c", {"junk(<?xml a='b' )", "junk(>c)"}, {}, 11, 16},
        {"a value that is a question mark", "<?xml a=?>b", {"junk(<?xml a=?)", "junk(>b)"}, {}, 11, 16},
        {"a value that ends with a slash", "<?xml a=b/>c", {"junk(<?xml a=b/)", "junk(>c)"}, {}, 11, 16},
        {"a blank after the question mark", "<?xml a? >b", {"junk(<?xml a? )", "junk(>b)"}, {}, 11, 16},
        {"after one that stands alone", "<?xml ? ?>b", {"junk(<?xml ? )", "junk(?>b)"}, {}, 11, 16},
        {"after a value", "<?xml a='b'?\n>c", {"junk(<?xml a='b'?\\n)", "junk(>c)"}, {}, 11, 16},
        {"a slash that something follows", "<?xml a/ b?>c", {"junk(<?xml a/ )", "junk(b?>c)"}, {}, 11, 16},
        {"an empty value before \">\"", "<?xml a=>b", {"junk(<?xml a=)", "junk(>b)"}, {}, 11, 16},
        {"an \"=\" after the question mark", "<?xml a='b'?=>c", {"junk(<?xml a='b'?=)", "junk(>c)"}, {}, 11, 16},
        {"a tag after it", "<?xml ><a>", {"junk(<?xml )", "junk(>)", "start(|a||)"}, {}, 11, 16},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, XmlDeclarationsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"after the target", "<?xml", {"junk(<?xml)"}, {}, 0, 16},
        {"after a blank", "x<?xml ", {"text(x)", "junk(<?xml )"}, {"text(x)"}, 0, 16},
        {"in a quoted value", "<?xml a='b?><c>", {"junk(<?xml a='b?><c>)"}, {}, 0, 16},
        {"after a value", "<?xml a='b'", {"junk(<?xml a='b')"}, {}, 0, 16},
        {"after the question mark", "<?xml a='b'?", {"junk(<?xml a='b'?)"}, {}, 0, 16},
        {"after the slash", "<?xml a/ ", {"junk(<?xml a/ )"}, {}, 0, 16},
    };
    CheckRows(rows);
}

// The tables for documents with a NUL stand alone: the zero bytes of UTF-16 are left out of the
// comparison for an 8-bit observer.
TEST(MarkupSectionsTest, NulsAreKept) {
    const DocumentRow rows[] = {
        {"a comment", std::string("<!--a\0-\0-->\0", 12), {"comment(a\\x00-\\x00)", "text(\\x00)"}},
        {"a CDATA section", std::string("<![CDATA[\0]\0]]>", 15), {"cdata(CDATA|[\\x00]\\x00)"}},
        {"a conditional section", std::string("<![if \0]>", 9), {"conditional(if| \\x00|)"}},
        {"a declaration", std::string("<!a\0 \0 '\0'>", 11), {"entity(|a\\x00|{ |\\x00}{ |'\\x00'}|)"}},
        {"a processing instruction",
         std::string("<?a\0 \0'\0'?\0?>", 13),
         {"extern-text(<?a\\x00 \\x00'\\x00'?\\x00?>)"}},
        {"an XML declaration", std::string("<?xml \0='\0'?>", 13), {"extern(|xml|{ |\\x00|=|'\\x00'}|)"}},
        {"a NUL after \"xml\" makes it another target",
         std::string("<?xml\0 a?>", 10),
         {"extern-text(<?xml\\x00 a?>)"}},
        {"but after \"xml-\" the name goes on", std::string("<?xml-\0 a?>", 11), {"extern(|xml-\\x00|{ |a}|)"}},
    };
    for (const DocumentRow& row : rows) {
        for (const Route& route : {NARROW_TO_NARROW, NARROW_TO_WIDE, WIDE_TO_WIDE})
            CheckRow(row, route);
    }
}

TEST(MarkupSectionsTest, ANulAfterAKeywordMakesItAnother) {
    struct Row {
        std::string input;
        Lines tokens;
    };
    const Row rows[] = {
        {std::string("<![CDATA\0[x]]>", 14), {"junk(<![CDATA\\x00)", "junk([x]]>)"}},
        {std::string("<![if\0]>", 8), {"junk(<![if\\x00)", "junk(]>)"}},
    };
    for (const Row& row : rows) {
        for (const Route& route : {NARROW_TO_NARROW, NARROW_TO_WIDE, WIDE_TO_WIDE}) {
            ForEverySplit(row.input, [&](const Cuts& cuts) {
                EXPECT_EQ(ParseBy(route, row.input, cuts, SettingsFor(route)).parseResult, 11U);
                const DocumentRun run = ParseBy(route, row.input, cuts, SettingsFor(route, Feed::STREAM));
                EXPECT_EQ(run.Lines(), Join(WholeTrace(row.tokens, route)));
                EXPECT_EQ(run.parseResult, 0U);
            });
        }
    }
}

/// The tokens inside an element that hides markup.
Lines Inside(const char* element, const Lines& tokens) {
    const bool script = std::string_view(element) == "script";
    Lines lines{"start(|" + std::string(element) + "||)", script ? "js-start" : "css-start"};
    lines.insert(lines.end(), tokens.begin(), tokens.end());
    lines.push_back("end(|" + std::string(element) + "|||)");
    lines.push_back(script ? "js-end" : "css-end");
    return lines;
}

TEST(MarkupSectionsTest, InScriptAndStyle) {
    struct Row {
        const char* note;
        const char* content;
        Lines tokens;
    };
    const Row rows[] = {
        {"a comment", "a<!--'b-->c", {"text(a)", "comment('b)", "text(c)"}},
        {"a comment hides the end tag", "<!--</script></style>-->", {"comment(</script></style>)"}},
        {"after a comment strings are strings again", "<!--a-->'<b>'", {"comment(a)", "s-string(<b>)"}},
        {"a CDATA section", "a<![CDATA[</script>]]>\"b\"", {"text(a)", "cdata(CDATA|[</script>)", "d-string(b)"}},
        {"two brackets end it", "<![cdata[a]]b", {"cdata(cdata|[a]], open)", "text(b)"}},
        {"a conditional section", "a<![if !x</style>]>b", {"text(a)", "conditional(if| !x</style>|)", "text(b)"}},
        {"a section after a section",
         "<!--a--><![endif]><![CDATA[]]>",
         {"comment(a)", "conditional(endif||)", "cdata(CDATA|[)"}},
        {"an opener in a string is none", "'<!--'\"<![CDATA[\"", {"s-string(<!--)", "d-string(<![CDATA[)"}},
        {"a declaration is text", "a<!DOCTYPE html>b", {"text(a)", "text(<!DOCTYPE html>b)"}},
        {"whatever it is", "<!a'b'>", {"text(<!a)", "s-string(b)", "text(>)"}},
        {"a processing instruction is text", "a<?xml b?>c", {"text(a)", "text(<?xml b?>c)"}},
        {"a string in it is a string", "<?a'?>'b", {"text(<?a)", "s-string(?>)", "text(b)"}},
    };
    for (const Row& row : rows) {
        for (const char* const element : {"script", "style"}) {
            const std::string tag(element);
            CheckRow(
                DocumentRow{row.note, "<" + tag + ">" + row.content + "</" + tag + ">", Inside(element, row.tokens)});
        }
    }
}

TEST(MarkupSectionsTest, InAScriptThatIsHiddenInTheClassicalWay) {
    const DocumentRow row{
        "a script inside a comment",
        "<script><!--\nx='a';\n//--></script><p>",
        {"start(|script||)", "js-start", "comment(\\nx='a';\\n//)", "end(|script|||)", "js-end", "start(|p||)"}};
    CheckRow(row);
}

TEST(MarkupSectionsTest, SectionsThatTheInputLeavesOpenInAScript) {
    const DocumentRow rows[] = {
        {"a comment", "<script><!--a</script>", {"start(|script||)", "js-start", "comment(a</script>, open)"}},
        {"a CDATA section", "<script><![CDATA[a]", {"start(|script||)", "js-start", "cdata(CDATA|[a], open)"}},
        {"a conditional section",
         "<style><![if a",
         {"start(|style||)", "css-start", "conditional(if| a|, no-bracket, open)"}},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, SectionsThatFailInAScript) {
    const BrokenRow rows[] = {
        {"a \"<!-\" without a second dash",
         "<script>a<!-b'c'</script>d",
         {"start(|script||)", "js-start", "text(a)", "junk(<!-)", "junk(b'c')", "end(|script|||)", "js-end", "text(d)"},
         {"start(|script||)", "js-start", "text(a)"},
         11,
         16},
        {"an unknown word",
         "<style><![x[a]]></style>",
         {"start(|style||)", "css-start", "junk(<![x)", "junk([a]]>)", "end(|style|||)", "css-end"},
         {"start(|style||)", "css-start"},
         11,
         16},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, WideWhiteSpace) {
    struct Row {
        const char* note;
        const WideChar* input;
        const char* token;
    };
    const Row rows[] = {
        {"separates the items of a declaration", KESTRA_WIDE("<!\u3000a\u00A0b\u2028>"),
         "entity(\\u3000|a|{\\u00A0|b}|\\u2028)"},
        {"and the attributes of an XML declaration", KESTRA_WIDE("<?\u3000xml\u0085a\u3000=\u3000'b'\u3000?>"),
         "extern(\\u3000|xml|{\\u0085|a|\\u3000=\\u3000|'b'}|\\u3000)"},
        {"ends the target of an instruction", KESTRA_WIDE("<?a\u3000?>"), "extern-text(<?a\\u3000?>)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const WideStringView input = row.input;
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
            ForEverySplit(input, [&](const Cuts& cuts) {
                DocumentSettings settings = SettingsFor(WIDE_TO_WIDE, feed);
                settings.selfCheck = GenericParser::SELF_CHECK_CRC;
                const DocumentRun run = ParseDocument(input, cuts, settings);
                EXPECT_EQ(run.Lines(), Join({"start-parsing", "charset(1200)", row.token, "end-parsing"}));
                EXPECT_EQ(run.endResult, 0U);
                EXPECT_EQ(run.output, ToUtf16LE(input));
            });
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
