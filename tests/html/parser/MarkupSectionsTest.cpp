#include "tests/html/parser/DocumentRows.h"

// Comments, CDATA and conditional sections, declarations and processing instructions in documents.

namespace Kestra::Test {
namespace {

TEST(MarkupSectionsTest, Comments) {
    const DocumentRow rows[] = {
        {"a comment between text", "a<!--b-->c", "text(a)\ncomment(b)\ntext(c)"},
        {"an empty comment", "<!---->", "comment()"},
        {"pairs of dashes inside", "<!-- a -- b -->", "comment( a -- b )"},
        {"a dash before the end", "<!-- a --->", "comment( a -)"},
        {"a dash run keeps all but its last two", "<!------>x", "comment(--)\ntext(x)"},
        {"a blank between the dashes and \">\" is no end", "<!-- a -- >-->b", "comment( a -- >)\ntext(b)"},
        {"nor is an exclamation mark", "<!--a--!>b-->c", "comment(a--!>b)\ntext(c)"},
        {"a \"->\" alone is content", "<!--a->b-->", "comment(a->b)"},
        {"tags and quotes inside", "<!--<a b='-->'>x", "comment(<a b=')\ntext('>x)"},
        {"an opener inside", "<!--a<!--b-->c-->", "comment(a<!--b)\ntext(c-->)"},
        {"two in a row", "<!--a--><!--b-->", "comment(a)\ncomment(b)"},
        {"after and before tags", "<a><!--b--></a>", "start(|a||)\ncomment(b)\nend(|a|||)"},
        {"line feeds are counted", "<!--\n\r\n--\n-->\nx", "comment(\\n\\r\\n--\\n)\ntext(\\nx)"},
        {"bytes from 128 up", "<!--\xE9-\xFF-->\xE9", "comment(\\xE9-\\xFF)\ntext(\\xE9)"},
        {"a conditional comment hides its content", "<!--[if IE]>x<![endif]-->y",
         "comment([if IE]>x<![endif])\ntext(y)"},
        {"a revealed one does not", "<!--[if !IE]><!-->y<!--<![endif]-->",
         "comment([if !IE]><!)\ntext(y)\ncomment(<![endif])"},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, CommentsThatTheInputLeavesOpen) {
    const DocumentRow rows[] = {
        {"after the opener", "x<!--", "text(x)\ncomment(, open)"},
        {"in the body", "<!-- a", "comment( a, open)"},
        {"after a dash", "<!-- a -", "comment( a -, open)"},
        {"after two dashes", "<!-- a --", "comment( a --, open)"},
        {"after three dashes", "<!-- a ---", "comment( a ---, open)"},
        {"the dashes of the opener end nothing", "<!-->a", "comment(>a, open)"},
        {"nor does one dash more", "<!--->a", "comment(->a, open)"},
        {"tags inside", "<!--<a><b", "comment(<a><b, open)"},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, CDATASections) {
    const DocumentRow rows[] = {
        {"the body begins with the bracket", "a<![CDATA[x]]>b", "text(a)\ncdata(CDATA|[x)\ntext(b)"},
        {"an empty one", "<![CDATA[]]>", "cdata(CDATA|[)"},
        {"a bracket inside", "<![CDATA[a]b]]>", "cdata(CDATA|[a]b)"},
        {"a \"]>\" inside", "<![CDATA[a]>b]]>", "cdata(CDATA|[a]>b)"},
        {"the keyword as written", "<![cData[x]]>", "cdata(cData|[x)"},
        {"without the bracket", "<![CDATA]]>", "cdata(CDATA|)"},
        {"with a blank in its place", "<![CDATA x]]>", "cdata(CDATA| x)"},
        {"with \">\" in its place", "<![CDATA>x]]>", "cdata(CDATA|>x)"},
        {"tags and comments inside", "<![CDATA[<a b=']]>'>", "cdata(CDATA|[<a b=')\ntext('>)"},
        {"line feeds are counted", "<![CDATA[\n]\n]]>\nx", "cdata(CDATA|[\\n]\\n)\ntext(\\nx)"},
        {"bytes from 128 up", "<![CDATA[\xE9]]>", "cdata(CDATA|[\\xE9)"},
        {"two brackets end it, whatever follows", "<![CDATA[x]]y", "cdata(CDATA|[x]], open)\ntext(y)"},
        {"a third bracket too", "<![CDATA[x]]]>", "cdata(CDATA|[x]], open)\ntext(]>)"},
        {"a blank", "<![CDATA[x]] >", "cdata(CDATA|[x]], open)\ntext( >)"},
        {"a tag", "<![CDATA[x]]<b>", "cdata(CDATA|[x]], open)\nstart(|b||)"},
        {"a line feed", "<![CDATA[x]]\n<b>", "cdata(CDATA|[x]], open)\ntext(\\n)\nstart(|b||)"},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, CDATASectionsThatTheInputLeavesOpen) {
    const DocumentRow rows[] = {
        {"after the bracket", "<![CDATA[", "cdata(CDATA|[, open)"},
        {"in the body", "<![CDATA[x<a>", "cdata(CDATA|[x<a>, open)"},
        {"after one bracket", "<![CDATA[x]", "cdata(CDATA|[x], open)"},
        {"after two", "<![CDATA[x]]", "cdata(CDATA|[x]], open)"},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, ConditionalSections) {
    const DocumentRow rows[] = {
        {"with a condition", "<![if !IE]>a<![endif]>b",
         "conditional(if| !IE|)\ntext(a)\nconditional(endif||)\ntext(b)"},
        {"the keyword as written", "<![IF x]><![EndIf]>", "conditional(IF| x|)\nconditional(EndIf||)"},
        {"an empty condition", "<![if]>", "conditional(if||)"},
        {"a \">\" in the condition does not end it", "<![if gt IE 5>6]>x", "conditional(if| gt IE 5>6|)\ntext(x)"},
        {"a bracket before it", "<![if[x]>", "conditional(if|[x|)"},
        {"quotes and tags in the condition", "<![if '<a>]>'x", "conditional(if| '<a>|)\ntext('x)"},
        {"line feeds are counted", "<![if\nx\n]>\ny", "conditional(if|\\nx\\n|)\ntext(\\ny)"},
        {"bytes from 128 up", "<![if \xE9]>", "conditional(if| \\xE9|)"},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, ConditionalSectionsThatTheInputLeavesOpen) {
    const DocumentRow rows[] = {
        {"in the condition", "<![if x", "conditional(if| x|, no-bracket, open)"},
        {"a \">\" does not close the condition", "<![if x>y", "conditional(if| x>y|, no-bracket, open)"},
        {"after the bracket", "<![if x]", "conditional(if| x|, open)"},
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
        Tokens tokensAfter;
    };
    const Row rows[] = {
        {"the end of a conditional comment", "<![endif]", "--", ">", "endif|", {}},
        {"a blank", "<![if x]", " ", ">y", "if| x", "text(y)"},
        {"a condition that holds a bracket", "<![if (a[b]", " c])", ">", "if| (a[b", {}},
        {"tags and line feeds", "<![endif]", "<a\n\n'", ">\n", "endif|", "text(\\n)"},
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
                    settings.selfCheck = SELF_CHECK_CRC;
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
                settings.selfCheck = SELF_CHECK_CRC;
                const DocumentRun checked = ParseBy(route, input, cuts, settings);
                EXPECT_EQ(checked.endResult, 704U);
                EXPECT_EQ(Join(Comparable(checked.trace, route)), Join(OpenTrace(tokens, route)));
            });
        }
    }
}

TEST(MarkupSectionsTest, Declarations) {
    const DocumentRow rows[] = {
        {"a document type", "<!DOCTYPE html><p>", "entity(|DOCTYPE|{ |html}|)\nstart(|p||)"},
        {"any case", "<!doctype HTML>", "entity(|doctype|{ |HTML}|)"},
        {"public and system identifiers", "<!DOCTYPE a PUBLIC \"-//b>//\"  'c'>",
         "entity(|DOCTYPE|{ |a}{ |PUBLIC}{ |\"-//b>//\"}{  |'c'}|)"},
        {"nothing after the keyword", "<!DOCTYPE>", "entity(|DOCTYPE||)"},
        {"a blank before \">\"", "<!DOCTYPE html >", "entity(|DOCTYPE|{ |html}| )"},
        {"only a blank after the keyword", "<!DOCTYPE\n>", "entity(|DOCTYPE||\\n)"},
        {"a blank before the keyword", "<! \tDOCTYPE html>", "entity( \\t|DOCTYPE|{ |html}|)"},
        {"no keyword", "<!>x", "entity(|||)\ntext(x)"},
        {"only a blank", "<! >", "entity( |||)"},
        {"empty strings are items", "<!a '' \"\">", "entity(|a|{ |''}{ |\"\"}|)"},
        {"\"=\" ends the keyword and belongs to a word", "<!a=b =c d= e>", "entity(|a|{|=b}{ |=c}{ |d=}{ |e}|)"},
        {"brackets end the keyword too", "<!a[b]>", "entity(|a|{|[b]}|)"},
        {"quotes and slashes inside a word", "<!a b'c/d\" />", "entity(|a|{ |b'c/d\"}{ |/}|)"},
        {"no blank is needed around strings", "<!a 'b'\"c\"d'e>", "entity(|a|{ |'b'}{|\"c\"}{|d'e}|)"},
        {"strings know no escapes", "<!a 'b\\' \"c\\\">", "entity(|a|{ |'b\\\\'}{ |\"c\\\\\"}|)"},
        {"an element with a group", "<!ELEMENT a (b|c)*>", "entity(|ELEMENT|{ |a}{ |(b|c)*}|)"},
        {"a \"?\" is a letter", "<!?>", "entity(|?||)"},
        {"a dash inside the keyword", "<!a-->", "entity(|a--||)"},
        {"line feeds are counted", "<!\na\n'\n'\n>\nx", "entity(\\n|a|{\\n|'\\n'}|\\n)\ntext(\\nx)"},
        {"bytes from 160 up", "<!\xE9 \xE8 '\xE7'>", "entity(|\\xE9|{ |\\xE8}{ |'\\xE7'}|)"},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, DeclarationsThatFail) {
    const BrokenRow rows[] = {
        {"a \"<\" after a word", "a<!DOCTYPE x<y>z", "text(a)\njunk(<!DOCTYPE x)\nstart(|y||)\ntext(z)"},
        {"after the keyword", "<!a<b>", "junk(<!a)\nstart(|b||)"},
        {"after a blank", "<!a b <c>", "junk(<!a b )\nstart(|c||)"},
        {"in the place of the keyword", "<!<b>", "junk(<!)\nstart(|b||)"},
        {"an internal subset", "<!a b [<!c 'd'>]>e", "junk(<!a b [)\nentity(|c|{ |'d'}|)\ntext(]>e)"},
        {"an end tag after it", "<!a</b>", "junk(<!a)\nend(|b|||)"},
        {"a comment after it", "<!a<!--b-->", "junk(<!a)\ncomment(b)"},
    };
    CheckFailing(rows);
}

TEST(MarkupSectionsTest, DeclarationsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"in the keyword", "x<!DOC", "text(x)\njunk(<!DOC)"},
        {"after the keyword", "<!a ", "junk(<!a )"},
        {"in a word", "<!a b", "junk(<!a b)"},
        {"in a string", "<!a 'b><c>", "junk(<!a 'b><c>)"},
        {"after a string", "<!a \"b\"", "junk(<!a \"b\")"},
    };
    CheckOpen(rows);
}

TEST(MarkupSectionsTest, ProcessingInstructions) {
    const DocumentRow rows[] = {
        {"between text", "a<?b c?>d", "text(a)\nextern-text(<?b c?>)\ntext(d)"},
        {"a string hides the end", "<?php echo '?>'; ?>", "extern-text(<?php echo '?>'; ?>)"},
        {"either kind of string", "<?php \"?>'\"'\"?>'?>x", "extern-text(<?php \"?>'\"'\"?>'?>)\ntext(x)"},
        {"a backslash escapes a quote", "<?php 'it\\'s ?>' \"\\\"?>\" ?>",
         "extern-text(<?php 'it\\\\'s ?>' \"\\\\\"?>\" ?>)"},
        {"and another backslash", "<?php '\\\\'?>'x", "extern-text(<?php '\\\\\\\\'?>)\ntext('x)"},
        {"a backslash outside of strings escapes nothing", "<?a \\'?>' ?>", "extern-text(<?a \\\\'?>' ?>)"},
        {"a block comment hides the end", "<?php /* ?> ' */ ?>", "extern-text(<?php /* ?> ' */ ?>)"},
        {"an asterisk inside ends a block comment", "<?a /* * > */ ?>", "extern-text(<?a /* * >)\ntext( */ ?>)"},
        {"so does the first of two at its end", "<?a /* ' **/ ?>", "extern-text(<?a /* ' **/ ?>)"},
        {"an empty block comment", "<?a /**/>x", "extern-text(<?a /**/>)\ntext(x)"},
        {"a line comment hides the end up to the line feed", "<?a // ?> '\n?>x",
         "extern-text(<?a // ?> '\\n?>)\ntext(x)"},
        {"a slash", "<?a / ?>", "extern-text(<?a / ?>)"},
        {"a slash before the end", "<?a />x", "extern-text(<?a />)\ntext(x)"},
        {"a slash before a string", "<?a /'>' ?>", "extern-text(<?a /'>' ?>)"},
        {"\">\" alone ends it", "<?pi a > b", "extern-text(<?pi a >)\ntext( b)"},
        {"right after the target", "<?a>b", "extern-text(<?a>)\ntext(b)"},
        {"the end right after the target", "<?php?>x", "extern-text(<?php?>)\ntext(x)"},
        {"a target that holds question marks", "<?a?b?>x", "extern-text(<?a?b?>)\ntext(x)"},
        {"a target that ends with one", "<?a? b>x", "extern-text(<?a? b>)\ntext(x)"},
        {"a target that ends with one, before a string", "<?a? '>' b>x", "extern-text(<?a? '>' b>)\ntext(x)"},
        {"question marks inside", "<?a ? ?? b?\?>x", "extern-text(<?a ? ?? b?\?>)\ntext(x)"},
        {"no target", "<?>x", "extern-text(<?>)\ntext(x)"},
        {"no target but a question mark", "<?\?>x", "extern-text(<?\?>)\ntext(x)"},
        {"a blank in its place", "<? ?>x", "extern-text(<? ?>)\ntext(x)"},
        {"a blank before the target", "<? a b?>", "extern-text(<? a b?>)"},
        {"an \"=\" in its place", "<?=a?>", "extern-text(<?=a?>)"},
        {"brackets and \"<\" end the target", "<?a<b?><?c[d]?>", "extern-text(<?a<b?>)\nextern-text(<?c[d]?>)"},
        {"a target that begins with \"xml\"", "<?xmlx a='b'?>", "extern-text(<?xmlx a='b'?>)"},
        {"the end after \"xml\" makes it another target", "<?xml?>x", "extern-text(<?xml?>)\ntext(x)"},
        {"so does a slash", "<?xml/>x", "extern-text(<?xml/>)\ntext(x)"},
        {"tags inside", "<?a <b>c", "extern-text(<?a <b>)\ntext(c)"},
        {"line feeds are counted", "<?a\n'\n'/*\n*///\n?>\nx", "extern-text(<?a\\n'\\n'/*\\n*///\\n?>)\ntext(\\nx)"},
        {"bytes from 160 up", "<?\xE9 '\xE8' \xE7?>\xE6", "extern-text(<?\\xE9 '\\xE8' \\xE7?>)\ntext(\\xE6)"},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, ProcessingInstructionsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"after the opener", "x<?", "text(x)\njunk(<?)"},
        {"in the target", "<?ph", "junk(<?ph)"},
        {"in the text", "<?a b", "junk(<?a b)"},
        {"after a question mark", "<?a b?", "junk(<?a b?)"},
        {"after a slash", "<?a /", "junk(<?a /)"},
        {"in a string", "<?a 'b ?><c>", "junk(<?a 'b ?><c>)"},
        {"in a double-quoted string", "<?a \"b\\\" ?>", "junk(<?a \"b\\\\\" ?>)"},
        {"in a block comment", "<?a /* ?>", "junk(<?a /* ?>)"},
        {"after an asterisk", "<?a /* *", "junk(<?a /* *)"},
        {"in a line comment", "<?a // ?>", "junk(<?a // ?>)"},
    };
    CheckOpen(rows);
}

TEST(MarkupSectionsTest, XmlDeclarations) {
    const DocumentRow rows[] = {
        {"the usual one", "<?xml version=\"1.0\" encoding='utf-8'?>x",
         "extern(|xml|{ |version|=|\"1.0\"}{ |encoding|=|'utf-8'}|)\ntext(x)"},
        {"a blank before the end", "<?xml version='1.0' ?>x", "extern(|xml|{ |version|=|'1.0'}| )\ntext(x)"},
        {"no attribute", "<?xml ?>", "extern(|xml|| )"},
        {"any case, and blanks", "<? XML\ta = 'b'\n?>", "extern( |XML|{\\t|a| = |'b'}|\\n)"},
        {"\"xml-\" counts", "<?XML-stylesheet href=a?>", "extern(|XML-stylesheet|{ |href|=|a}|)"},
        {"\"xml:\" counts", "<?xMl:a b?>", "extern(|xMl:a|{ |b}|)"},
        {"a value without quotes", "<?xml a=b?>", "extern(|xml|{ |a|=|b}|)"},
        {"a value with a question mark inside", "<?xml a=b?c d=?\?>", "extern(|xml|{ |a|=|b?c}{ |d|=|?}|)"},
        {"quotes hide the end", "<?xml a='?>' b=\"?>\"?>", "extern(|xml|{ |a|=|'?>'}{ |b|=|\"?>\"}|)"},
        {"attributes without values", "<?xml a  b?>", "extern(|xml|{ |a}{  |b}|)"},
        {"a blank after one", "<?xml a ?>", "extern(|xml|{ |a}| )"},
        {"bare words after a value stay attributes", "<?xml a='b' c d=e f?>",
         "extern(|xml|{ |a|=|'b'}{ |c}{ |d|=|e}{ |f}|)"},
        {"no blank between two attributes", "<?xml a='b'c='d'?>", "extern(|xml|{ |a|=|'b'}{|c|=|'d'}|)"},
        {"a name that holds question marks", "<?xml a?b?>", "extern(|xml|{ |a?b}|)"},
        {"a slash in place of the question mark", "<?xml a='b'/>x", "extern(|xml|{ |a|=|'b'}|, slash)\ntext(x)"},
        {"after a blank", "<?xml a='b' />x", "extern(|xml|{ |a|=|'b'}| , slash)\ntext(x)"},
        {"after a name", "<?xml a/>", "extern(|xml|{ |a}|, slash)"},
        {"and no attribute", "<?xml />", "extern(|xml|| , slash)"},
        {"of two slashes one belongs to the name", "<?xml a//>", "extern(|xml|{ |a/}|, slash)"},
        {"a slash before the question mark", "<?xml a/?>", "extern(|xml|{ |a/}|)"},
        {"a value that ends with a slash", "<?xml a=b/?>", "extern(|xml|{ |a|=|b/}|)"},
        {"a value without a name", "<?xml =b?>", "extern(|xml|{ ||=|b}|)"},
        {"an attribute right after the name", "<?xml=a?><?xml[a]?>", "extern(|xml|{||=|a}|)\nextern(|xml|{|[a]}|)"},
        {"a \"<\" belongs to a name", "<?xml <a?>", "extern(|xml|{ |<a}|)"},
        {"line feeds are counted", "<?xml\na\n=\n'\n'\n?>\nx", "extern(|xml|{\\n|a|\\n=\\n|'\\n'}|\\n)\ntext(\\nx)"},
        {"bytes from 160 up", "<?xml \xE9='\xE8'?>", "extern(|xml|{ |\\xE9|=|'\\xE8'}|)"},
        {"twice, the second one without the first one's attributes", "<?xml a='b' ?><?xml c?>",
         "extern(|xml|{ |a|=|'b'}| )\nextern(|xml|{ |c}|)"},
        {"an instruction after one", "<?xml a?><?b c?>", "extern(|xml|{ |a}|)\nextern-text(<?b c?>)"},
        {"and the other way round", "<?b c/*d*/?><?xml a?>", "extern-text(<?b c/*d*/?>)\nextern(|xml|{ |a}|)"},
    };
    CheckRows(rows);
}

// A table of its own: the blank after such a slash is written back before it, which the self-check
// does not pass.
TEST(MarkupSectionsTest, ABlankAfterTheSlashOfAnXmlDeclaration) {
    struct Row {
        const char* note;
        const char* input;
        Tokens tokens;
        const char* output;
    };
    const Row rows[] = {
        {"after a name", "<?xml a/ >x", "extern(|xml|{ |a}| , slash)\ntext(x)", "<?xml a />x"},
        {"after a value", "<?xml a='b'/\n>x", "extern(|xml|{ |a|=|'b'}|\\n, slash)\ntext(x)", "<?xml a='b'\n/>x"},
        {"a slash alone", "<?xml / >x", "extern(|xml||  , slash)\ntext(x)", "<?xml  />x"},
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
                    settings.selfCheck = SELF_CHECK_CRC;
                    EXPECT_EQ(ParseBy(route, input, cuts, settings).endResult, 704U);
                });
            }
        }
    }
}

TEST(MarkupSectionsTest, XmlDeclarationsThatFail) {
    const BrokenRow rows[] = {
        {"no question mark", "a<?xml>b", "text(a)\njunk(<?xml)\njunk(>b)"},
        {"none after a blank", "<?xml >b", "junk(<?xml )\njunk(>b)"},
        {"none after a name", "<?xml a>b", "junk(<?xml a)\njunk(>b)"},
        {"none after a value", "<?xml a=b>c", "junk(<?xml a=b)\njunk(>c)"},
        {"none after a quoted value", "<?xml a='b' >c", "junk(<?xml a='b' )\njunk(>c)"},
        {"a value that is a question mark", "<?xml a=?>b", "junk(<?xml a=?)\njunk(>b)"},
        {"a value that ends with a slash", "<?xml a=b/>c", "junk(<?xml a=b/)\njunk(>c)"},
        {"a blank after the question mark", "<?xml a? >b", "junk(<?xml a? )\njunk(>b)"},
        {"after one that stands alone", "<?xml ? ?>b", "junk(<?xml ? )\njunk(?>b)"},
        {"after a value", "<?xml a='b'?\n>c", "junk(<?xml a='b'?\\n)\njunk(>c)"},
        {"a slash that something follows", "<?xml a/ b?>c", "junk(<?xml a/ )\njunk(b?>c)"},
        {"an empty value before \">\"", "<?xml a=>b", "junk(<?xml a=)\njunk(>b)"},
        {"an \"=\" after the question mark", "<?xml a='b'?=>c", "junk(<?xml a='b'?=)\njunk(>c)"},
        {"a tag after it", "<?xml ><a>", "junk(<?xml )\njunk(>)\nstart(|a||)"},
    };
    CheckFailing(rows);
}

TEST(MarkupSectionsTest, XmlDeclarationsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"after the target", "<?xml", "junk(<?xml)"},
        {"after a blank", "x<?xml ", "text(x)\njunk(<?xml )"},
        {"in a quoted value", "<?xml a='b?><c>", "junk(<?xml a='b?><c>)"},
        {"after a value", "<?xml a='b'", "junk(<?xml a='b')"},
        {"after the question mark", "<?xml a='b'?", "junk(<?xml a='b'?)"},
        {"after the slash", "<?xml a/ ", "junk(<?xml a/ )"},
    };
    CheckOpen(rows);
}

// The tables for documents with a NUL stand alone: the zero bytes of UTF-16 are left out of the
// comparison for an 8-bit observer.
TEST(MarkupSectionsTest, NulsAreKept) {
    const DocumentRow rows[] = {
        {"a comment", std::string("<!--a\0-\0-->\0", 12), "comment(a\\x00-\\x00)\ntext(\\x00)"},
        {"a CDATA section", std::string("<![CDATA[\0]\0]]>", 15), "cdata(CDATA|[\\x00]\\x00)"},
        {"a conditional section", std::string("<![if \0]>", 9), "conditional(if| \\x00|)"},
        {"a declaration", std::string("<!a\0 \0 '\0'>", 11), "entity(|a\\x00|{ |\\x00}{ |'\\x00'}|)"},
        {"a processing instruction", std::string("<?a\0 \0'\0'?\0?>", 13),
         "extern-text(<?a\\x00 \\x00'\\x00'?\\x00?>)"},
        {"an XML declaration", std::string("<?xml \0='\0'?>", 13), "extern(|xml|{ |\\x00|=|'\\x00'}|)"},
        {"a NUL after \"xml\" makes it another target", std::string("<?xml\0 a?>", 10), "extern-text(<?xml\\x00 a?>)"},
        {"but after \"xml-\" the name goes on", std::string("<?xml-\0 a?>", 11), "extern(|xml-\\x00|{ |a}|)"},
    };
    for (const DocumentRow& row : rows) {
        for (const Route& route : ROUTES_WITH_NULS)
            CheckRow(row, route);
    }
}

TEST(MarkupSectionsTest, ANulAfterAKeywordMakesItAnother) {
    struct Row {
        std::string input;
        Tokens tokens;
    };
    const Row rows[] = {
        {std::string("<![CDATA\0[x]]>", 14), "junk(<![CDATA\\x00)\njunk([x]]>)"},
        {std::string("<![if\0]>", 8), "junk(<![if\\x00)\njunk(]>)"},
    };
    for (const Row& row : rows) {
        for (const Route& route : ROUTES_WITH_NULS) {
            ForEverySplit(row.input, [&](const Cuts& cuts) {
                EXPECT_EQ(ParseBy(route, row.input, cuts, SettingsFor(route)).parseResult, 11U);
                const DocumentRun run = ParseBy(route, row.input, cuts, SettingsFor(route, Feed::STREAM));
                EXPECT_EQ(run.Lines(), Join(WholeTrace(row.tokens, route)));
                EXPECT_EQ(run.parseResult, 0U);
            });
        }
    }
}

TEST(MarkupSectionsTest, InScriptAndStyle) {
    const ContentRow rows[] = {
        {"a comment", "a<!--'b-->c", "text(a)\ncomment('b)\ntext(c)"},
        {"a comment hides the end tag", "<!--</script></style>-->", "comment(</script></style>)"},
        {"after a comment strings are strings again", "<!--a-->'<b>'", "comment(a)\ns-string(<b>)"},
        {"a CDATA section", "a<![CDATA[</script>]]>\"b\"", "text(a)\ncdata(CDATA|[</script>)\nd-string(b)"},
        {"two brackets end it", "<![cdata[a]]b", "cdata(cdata|[a]], open)\ntext(b)"},
        {"a conditional section", "a<![if !x</style>]>b", "text(a)\nconditional(if| !x</style>|)\ntext(b)"},
        {"a section after a section", "<!--a--><![endif]><![CDATA[]]>",
         "comment(a)\nconditional(endif||)\ncdata(CDATA|[)"},
        {"an opener in a string is none", "'<!--'\"<![CDATA[\"", "s-string(<!--)\nd-string(<![CDATA[)"},
        {"a declaration is text", "a<!DOCTYPE html>b", "text(a)\ntext(<!DOCTYPE html>b)"},
        {"whatever it is", "<!a'b'>", "text(<!a)\ns-string(b)\ntext(>)"},
        {"a processing instruction is text", "a<?xml b?>c", "text(a)\ntext(<?xml b?>c)"},
        {"a string in it is a string", "<?a'?>'b", "text(<?a)\ns-string(?>)\ntext(b)"},
    };
    CheckInside("script", rows);
    CheckInside("style", rows);
}

TEST(MarkupSectionsTest, InAScriptThatIsHiddenInTheClassicalWay) {
    const DocumentRow row{"a script inside a comment", "<script><!--\nx='a';\n//--></script><p>",
                          "start(|script||)\njs-start\ncomment(\\nx='a';\\n//)\nend(|script|||)\njs-end\nstart(|p||)"};
    CheckRow(row);
}

TEST(MarkupSectionsTest, SectionsThatTheInputLeavesOpenInAScript) {
    const DocumentRow rows[] = {
        {"a comment", "<script><!--a</script>", "start(|script||)\njs-start\ncomment(a</script>, open)"},
        {"a CDATA section", "<script><![CDATA[a]", "start(|script||)\njs-start\ncdata(CDATA|[a], open)"},
        {"a conditional section", "<style><![if a",
         "start(|style||)\ncss-start\nconditional(if| a|, no-bracket, open)"},
    };
    CheckRows(rows);
}

TEST(MarkupSectionsTest, SectionsThatFailInAScript) {
    const BrokenRow rows[] = {
        {"a \"<!-\" without a second dash", "<script>a<!-b'c'</script>d",
         "start(|script||)\njs-start\ntext(a)\njunk(<!-)\njunk(b'c')\nend(|script|||)\njs-end\ntext(d)"},
        {"an unknown word", "<style><![x[a]]></style>",
         "start(|style||)\ncss-start\njunk(<![x)\njunk([a]]>)\nend(|style|||)\ncss-end"},
    };
    CheckFailing(rows);
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
    for (const Row& row : rows)
        CheckWide(row.note, row.input, row.token);
}

}  // namespace
}  // namespace Kestra::Test
