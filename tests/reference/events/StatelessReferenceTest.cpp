#include "tests/reference/events/StatelessReference.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Kestra::Test {
namespace {

using namespace std::string_literals;

using Pieces = std::vector<std::string>;
using Lines = std::vector<std::string>;
using Results = std::vector<std::uint32_t>;

/// The trace without its first line and its last one.
Lines EventsOf(const StatelessReferenceRun& run) {
    if (run.trace.size() < 2 || run.trace.front() != "start-parsing" || run.trace.back() != "stop-parsing")
        return {"the trace lacks its frame"};
    return {run.trace.begin() + 1, run.trace.end() - 1};
}

/// Pieces, their events and the result of each piece fed.
struct Case {
    const char* note;
    Pieces pieces;
    Lines events;
    Results results = {0};
};

template <std::size_t COUNT>
void CheckAll(const Case (&rows)[COUNT]) {
    for (const Case& row : rows) {
        SCOPED_TRACE(row.note);
        const StatelessReferenceRun run = ParseStatelessByReference(row.pieces);
        EXPECT_EQ(EventsOf(run), row.events);
        EXPECT_EQ(run.parseResults, row.results);
        EXPECT_EQ(run.endResult, 0U);
    }
}

const Case TAGS[] = {
    {"no piece at all", {}, {}, {}},
    {"an empty piece", {""}, {}},
    {"text and tags; text after the last tag is not reported",
     {"a<b>c</b>d"},
     {"text(a)", "start(b|)", "text(c)", "end(b)"}},
    {"text alone", {"abc"}, {}},
    {"a slash after the name closes the tag", {"<br/>"}, {"start(br|)", "end(br)"}},
    {"white space before the slash", {"<br />"}, {"start(br|)", "end(br)"}},
    {"the next tag is not self-closing", {"<br/><b>"}, {"start(br|)", "end(br)", "start(b|)"}},
    {"a slash that something other than \">\" follows", {"<br/x"}, {}, {702}},
    {"a question mark does not end a start tag", {"<a ?>"}, {}, {702}},
    {"values of all kinds", {"<p a=1 b='2\"' c=\"3'\">"}, {"start(p|{a=1}{b=2\"}{c=3'})"}},
    {"duplicates are kept, in order", {"<p b=1 a=2 b=3>"}, {"start(p|{b=1}{a=2}{b=3})"}},
    {"an attribute without a value", {"<input checked>"}, {"start(input|{checked=})"}},
    {"white space before a value is skipped", {"<input a= b=''>"}, {"start(input|{a=b=''})"}},
    {"an empty unquoted value", {"<input a= >"}, {"start(input|{a=})"}},
    {"white space around the equals sign", {"<p a\n=\t1\rb>"}, {"start(p|{a=1}{b=})"}},
    {"an unquoted value takes slashes, question marks and quotes", {"<p a=b/c?'\"/>"}, {"start(p|{a=b/c?'\"/})"}},
    {"values may touch the next name", {"<p a='1'b=\"2\"c>"}, {"start(p|{a=1}{b=2}{c=})"}},
    {"an attribute that begins badly takes the rest of the tag", {"<a %x>"}, {"start(a|)"}},
    {"what stood before it stays", {"<a b=1 =c d=2 />e<f>"}, {"start(a|{b=1})", "text(e)", "start(f|)"}},
    {"letters of a name", {"<_a:b-c9 D_e:f-g1=x>"}, {"start(_a:b-c9|{D_e:f-g1=x})"}},
    {"bytes from 128 up are no letters", {"<\xE9>"}, {}, {703}},
    {"such a byte ends a name and spoils the attribute", {"<a\xE9 b>"}, {"start(a|)"}},
    {"white space before the name", {"< \n a>"}, {"start(a|)"}},
    {"white space and no name", {"< 1>"}, {}, {701}},
    {"a comparison in text", {"a <= b"}, {"text(a )"}, {703}},
    {"two openers", {"<<a>"}, {}, {703}},
    {"an end tag", {"</a>"}, {"end(a)"}},
    {"an end tag with white space before the name", {"</ a>"}, {"end(a)"}},
    {"an end tag without a name", {"</>"}, {}, {701}},
    {"white space after the name of an end tag", {"</a >"}, {}, {702}},
    {"attributes of an end tag", {"</a/>"}, {}, {702}},
    {"an error ends the feeding", {"a<b", "/c", "<d>"}, {"text(a)"}, {16, 702}},
    {"a NUL ends text for its reader", {"a\0b<c>"s}, {"text(a)", "start(c|)"}},
    {"text that begins with a NUL", {"\0<c>"s}, {"text()", "start(c|)"}},
    {"a value keeps its NULs", {"<a b=c\0d\0>"s}, {"start(a|{b=c\\x00d\\x00})"}},
};

TEST(StatelessReference, Tags) {
    CheckAll(TAGS);
}

const Case DECLARATIONS[] = {
    {"a declaration without tokens has an empty one", {"<!DOCTYPE>"}, {"entity(DOCTYPE|{})"}},
    {"tokens with and without quotes", {"<!DOCTYPE html PUBLIC \"x\">"}, {"entity(DOCTYPE|{html}{PUBLIC}{x})"}},
    {"tokens may touch", {"<!a 'b''c'd>"}, {"entity(a|{b}{c}{d})"}},
    {"white space after the last token", {"<!a b >"}, {"entity(a|{b})"}},
    {"white space before the name", {"<! a>"}, {"entity(a|{})"}},
    {"only the first token may begin with a slash", {"<!a /b '/'/>"}, {"entity(a|{/b}{/})"}},
    {"a slash that something other than \">\" follows", {"<!a 'b'/c"}, {}, {702}},
    {"tokens keep their NULs", {"<!a b\0c '\0'>"s}, {"entity(a|{b\\x00c}{\\x00})"}},
    {"a declaration without a name", {"<!>"}, {}, {703}},
    {"white space and no name", {"<! >"}, {}, {701}},
    {"a section", {"<![CDATA[x]]>"}, {}, {703}},
    {"an instruction", {"<?xml a='1' b?>"}, {"extern(xml|{a=1}{b=})"}},
    {"an instruction without attributes", {"<?xml?>"}, {"extern(xml|)"}},
    {"an unquoted value takes the question mark with it", {"<?xml version=1.0?>"}, {"extern(xml|{version=1.0?})"}},
    {"white space then parts it from the mark's place", {"<?xml a=1? >"}, {}, {702}},
    {"a bad attribute takes the question mark with it", {"<?xml %?>"}, {"extern(xml|)"}},
    {"an instruction ended like a tag", {"<?xml a='?'>"}, {}, {702}},
    {"an instruction ended by a slash", {"<?xml/>"}, {}, {702}},
    {"a question mark that something other than \">\" follows", {"<?xml ?a"}, {}, {702}},
    {"an instruction without a name", {"<?>"}, {}, {701}},
    {"white space before the name", {"<? xml?>"}, {"extern(xml|)"}},
};

TEST(StatelessReference, DeclarationsAndInstructions) {
    CheckAll(DECLARATIONS);
}

const Case COMMENTS[] = {
    {"a single dash is lost", {"<!-- x-y -->"}, {"comment( xy )"}},
    {"three dashes do not close", {"<!--a--->b-->"}, {"comment(a--->b)"}},
    {"two dashes inside", {"<!--a--b-->"}, {"comment(a--b)"}},
    {"an empty comment", {"<!---->"}, {"comment()"}},
    {"a brace after the opener is body", {"<!-->-->"}, {"comment(>)"}},
    {"a NUL ends the body for its reader", {"<!--a\0b-->"s}, {"comment(a)"}},
    {"comments do not share a body", {"<!--a--><!--b-->"}, {"comment(a)", "comment(b)"}},
    {"one dash only", {"<!-x"}, {}, {703}},
};

TEST(StatelessReference, Comments) {
    CheckAll(COMMENTS);
}

const Case BODIES[] = {
    {"a script without its comments, with its strings",
     {"<script>if(a<b)//c\nx='</script>'</script>"},
     {"script(|if(a<b)x='</script>')"}},
    {"block comments", {"<script>a/*b*/c/***/d/*/e*/f</script>"}, {"script(|acdf)"}},
    {"a line comment ends at a carriage return too", {"<script>a//b\rc//d\n\ne</script>"}, {"script(|ac\\ne)"}},
    {"the end tag in a comment does not count", {"<script>/*</script>*/a//</script>\n</script>"}, {"script(|a)"}},
    {"a backslash escapes a quote",
     {"<script>'\\'</script>'\"\\\"\"</script>"},
     {"script(|'\\\\'</script>'\"\\\\\"\")"}},
    {"two backslashes do so as well", {"<script>'\\\\'</script>'</script>"}, {"script(|'\\\\\\\\'</script>')"}},
    {"quotes of the other kind", {"<script>'\"'\"'\"</script>"}, {"script(|'\"'\"'\")"}},
    {"a second opener is a mismatch", {"<script><</script>a</script>"}, {"script(|<</script>a)"}},
    {"a mismatch late in the end tag", {"<script></scripx></script >a</SCRIPT>"}, {"script(|</scripx></script >a)"}},
    {"two slashes of a mismatch open no comment", {"<script><//a\nb</script>"}, {"script(|<//a\\nb)"}},
    {"a slash before the end tag opens none", {"<script>a<b/</script>"}, {"script(|a<b/)"}},
    {"the slash that a mismatch left opens a comment", {"<script></a<///b\nc</script>"}, {"script(|</a</c)"}},
    {"one slash is code", {"<script>a/b</script>"}, {"script(|a/b)"}},
    {"the attributes of a script", {"<SCRIPT a=1 b='2'>x</script>"}, {"script({a=1}{b=2}|x)"}},
    {"a self-closing script has a body, and no end tag of its own",
     {"<script/>x</script>y<b>"},
     {"script(|x)", "text(y)", "start(b|)"}},
    {"an empty script", {"<script></script>"}, {"script(|)"}},
    {"a body ends at its first NUL for its reader", {"<script>a\0b</script>"s}, {"script(|a)"}},
    {"a script that does not end", {"<script>a</scrip"}, {}, {16}},
    {"an end tag of a script outside", {"</script>"}, {"end(script)"}},
    {"openers in a style are lost", {"<style>a<b</style>"}, {"style(|ab)"}},
    {"of two openers one is lost", {"<style>a<<b</style>"}, {"style(|a<b)"}},
    {"what follows two openers does not end the style", {"<style><</style>a</style>"}, {"style(|</style>a)"}},
    {"a style keeps its comments and strings", {"<Style a=1>/*b*/'//c'</STYLE>"}, {"style({a=1}|/*b*/'//c')"}},
    {"a mismatch late in the end tag", {"<style></stylx></style>"}, {"style(|/stylx>)"}},
    {"a self-closing style has a body", {"<style/>x</style>"}, {"style(|x)"}},
    {"a style that does not end", {"<style>a</style"}, {}, {16}},
    {"bodies do not leak",
     {"<script>a</script><style>b</style>c<d>"},
     {"script(|a)", "style(|b)", "text(c)", "start(d|)"}},
};

TEST(StatelessReference, ScriptsAndStyles) {
    CheckAll(BODIES);
}

const Case PIECES[] = {
    {"a name runs on", {"<p cla", "ss=x>"}, {"start(p|{class=x})"}, {16, 0}},
    {"empty pieces change nothing", {"<p cla", "", "ss=x>", ""}, {"start(p|{class=x})"}, {16, 0, 0, 0}},
    {"text runs on", {"a", "b", "<c>"}, {"text(ab)", "start(c|)"}, {0, 0, 0}},
    {"after the opener nothing is missing yet", {"<", "a>"}, {"start(a|)"}, {0, 0}},
    {"nor after the other openers",
     {"</", "a><?", "b?><!", "c>< ", "d><! ", "e>"},
     {"end(a)", "extern(b|)", "entity(c|{})", "start(d|)", "entity(e|{})"},
     {0, 0, 0, 0, 0, 0}},
    {"a second white space belongs to the name", {"<  ", "a>"}, {"start(a|)"}, {16, 0}},
    {"white space belongs to the name of an end tag", {"</ ", "a>"}, {"end(a)"}, {16, 0}},
    {"the first letter does", {"<a", ">"}, {"start(a|)"}, {16, 0}},
    {"the end of a name waits for the next piece", {"</a", ">"}, {"end(a)"}, {16, 0}},
    {"the beginning of a script is no demand", {"<script>", "a</script>"}, {"script(|a)"}, {0, 0}},
    {"its body is one", {"<script>a", "</script", ">"}, {"script(|a)"}, {16, 16, 0}},
    {"a style likewise", {"<style>", "a<", "/style", ">"}, {"style(|a)"}, {0, 16, 16, 0}},
    {"script comments and strings run on",
     {"<script>a/", "/b", "\nc/", "*d*", "/e'", "'</scri", "pt>"},
     {"script(|ace'')"},
     {16, 16, 16, 16, 16, 16, 0}},
    {"a value without quotes runs on", {"<a b=c", "d>"}, {"start(a|{b=cd})"}, {16, 0}},
    {"it ends at white space in the next piece", {"<a b=c", " d>"}, {"start(a|{b=c}{d=})"}, {16, 0}},
    {"a closing quote at the end of a piece closes nothing", {"<a b='1'", " c='2'>"}, {"start(a|{b=1 c=})"}, {16, 0}},
    {"a comment is cut", {"<!-- ab", "cd --><x>"}, {"comment( ab)", "text(cd -->)", "start(x|)"}, {0, 0}},
    {"a comment cut after its opener is not", {"<!--", "ab--><x>"}, {"comment(ab)", "start(x|)"}, {0, 0}},
    {"the openers of a comment", {"<!", "-", "-", "ab-->"}, {"comment(ab)"}, {0, 0, 0, 0}},
    {"a comment cut after a dash loses it", {"<!--a-", "-><x>"}, {"comment(a)", "text(->)", "start(x|)"}, {0, 0}},
    {"after two dashes it loses both", {"<!--a--", "><x>"}, {"comment(a)", "text(>)", "start(x|)"}, {0, 0}},
    {"a comment that ends with the piece", {"<!--a-->", "b<x>"}, {"comment(a)", "text(b)", "start(x|)"}, {0, 0}},
    {"a slash that ends a piece ends the tag",
     {"<br/", "><x>"},
     {"start(br|)", "end(br)", "text(>)", "start(x|)"},
     {0, 0}},
    {"a script too, and the brace is body", {"<script/", ">a</script>"}, {"script(|>a)"}, {0, 0}},
    {"a declaration too", {"<!a 'b'/", "><x>"}, {"entity(a|{b})", "text(>)", "start(x|)"}, {0, 0}},
    {"a question mark ends the instruction",
     {"<?a b='c'?", "><x>"},
     {"extern(a|{b=c})", "text(>)", "start(x|)"},
     {0, 0}},
    {"the question mark of a value is remembered", {"<?a b=c?", "><x>"}, {"extern(a|{b=c?})", "start(x|)"}, {16, 0}},
    {"that of a bad attribute too", {"<?a %?", "><x>"}, {"extern(a|)", "start(x|)"}, {16, 0}},
    {"across an empty piece", {"<?a b=c?", "", ">"}, {"extern(a|{b=c?})"}, {16, 0, 0}},
    {"but it is the last byte that counts", {"<?a b=c?", " ", ">"}, {}, {16, 16, 702}},
    {"a skip of a bad attribute ends with the piece", {"<a %b", "c=d>"}, {"start(a|{c=d})"}, {16, 0}},
    {"white space after a token begins a new one", {"<!a b ", "><x>"}, {"entity(a|{b}{})", "start(x|)"}, {16, 0}},
    {"and the new one may begin with a slash", {"<!a b ", "/>"}, {"entity(a|{b}{/})"}, {16, 0}},
    {"white space before the first token does not", {"<!a ", "><x>"}, {"entity(a|{})", "start(x|)"}, {16, 0}},
};

TEST(StatelessReference, Pieces) {
    CheckAll(PIECES);
}

/// An input, and line and column after it or at the byte that failed.
struct PlaceCase {
    const char* note;
    std::string input;
    std::uint64_t line;
    std::uint64_t column;
    std::uint32_t result = 0;
};

const PlaceCase PLACES[] = {
    {"nothing", "", 1, 1},
    {"text counts two columns a byte", "ab", 1, 5},
    {"marks count one", "<b>", 1, 4},
    {"two line feeds are one line", "a\n\nb", 2, 5},
    {"a carriage return and a line feed", "a\r\nb", 2, 5},
    {"two carriage returns", "a\r\rb", 2, 5},
    {"three line feeds are two lines", "a\n\n\nb", 3, 4},
    {"white space in a tag", "<a\nb>", 2, 3},
    {"a pair of line breaks in a tag", "<a\r\nb>", 2, 3},
    {"other white space parts a pair", "<a\n \nb>", 3, 3},
    {"marks do not part a pair", "a\n<b>\nc", 2, 8},
    {"line breaks in values count as marks", "<a b = 'x\ny'>", 1, 14},
    {"a line break after the opener", "<\na>", 1, 5},
    {"a line break after the declaration's opener", "<!\na>", 1, 6},
    {"line breaks in a bad attribute", "<a %\n>", 1, 7},
    {"in a comment only the byte after dashes counts lines", "<!--a\nb-\n-->", 2, 5},
    {"the byte after two dashes is content", "<!----x-->", 1, 12},
    {"a script", "<script>a\n//b\nc/*\n*/'\n'</script>", 2, 35},
    {"a style", "<style>a<b</style>", 1, 28},
    {"a failure in text", "a <= b", 1, 6, 703},
    {"a failure in an end tag", "</a >", 1, 4, 702},
    {"white space before a failure is taken", "< \n1", 2, 1, 701},
};

TEST(StatelessReference, LinesAndColumns) {
    for (const PlaceCase& row : PLACES) {
        SCOPED_TRACE(row.note);
        const StatelessReferenceRun run = ParseStatelessByReference({row.input});
        EXPECT_EQ(run.line, row.line);
        EXPECT_EQ(run.column, row.column);
        EXPECT_EQ(run.parseResults, Results{row.result});
    }
    EXPECT_EQ(ParseStatelessByReference({"a\r", "\nb"}).line, 2U) << "a pair may be cut";
}

/// An input, charset and flags, the events and the charset that is in force at the end.
struct CharsetCase {
    const char* note;
    std::string input;
    std::uint32_t charset;
    std::uint32_t flags;
    Lines events;
    std::uint32_t after;
};

const CharsetCase CONVERSIONS[] = {
    {"no charset is the ANSI one", "\x80\xE9<a>", 0, 1, {"text(\\u20AC\\u00E9)", "start(a|)"}, 0},
    {"text, comments, values and tokens have the charset",
     "\xC3\xA9<!--\xC3\xA9--><a b='\xC3\xA9'><!c \xC3\xA9><?d e='\xC3\xA9'?>",
     65001,
     1,
     {"text(\\u00E9)", "comment(\\u00E9)", "start(a|{b=\\u00E9})", "entity(c|{\\u00E9})", "extern(d|{e=\\u00E9})"},
     65001},
    {"bodies have the ANSI one",
     "<script a='\xC3\xA9'>\xC3\xA9</script><style a='\xC3\xA9'>\xC3\xA9</style>",
     65001,
     1,
     {"script({a=\\u00E9}|\\u00C3\\u00A9)", "style({a=\\u00E9}|\\u00C3\\u00A9)"},
     65001},
    {"another code page", "\xC1<a>", 20866, 1, {"text(\\u0430)", "start(a|)"}, 20866},
    {"a charset without a converter acts as the ANSI one",
     "\xE9<a b=\xE9>",
     99999,
     1,
     {"text(\\u00E9)", "start(a|{b=\\u00E9})"},
     99999},
    {"pairs of bytes", "abcd<a b=''>", 1200, 1, {"text(\\u6261\\u6463)", "start(a|{b=})"}, 1200},
    {"an odd last byte", "abc<a>", 1200, 1, {"text(\\u6261\\uFFFD)", "start(a|)"}, 1200},
    {"an odd last byte of 0", "a\0\0<a>"s, 1200, 1, {"text(a\\uFFFD)", "start(a|)"}, 1200},
    {"a pair of zeros ends the text, a single one does not", "a\0\0\0b\0<a>"s, 1200, 1, {"text(a)", "start(a|)"}, 1200},
    {"a value keeps it", "<a b='a\0\0\0b\0\0\0'>"s, 1200, 1, {"start(a|{b=a\\x00b\\x00})"}, 1200},
};

const CharsetCase DISCOVERY[] = {
    {"a meta tag sets the charset for its own values and all that follows",
     "\xC1<meta http-equiv=Content-Type content='text/html; charset=koi8-r' a=\xC1>\xC1<b>",
     0,
     1,
     {"text(\\u00C1)", "start(meta|{http-equiv=Content-Type}{content=text/html; charset=koi8-r}{a=\\u0430})",
      "text(\\u0430)", "start(b|)"},
     20866},
    {"content before http-equiv",
     "<META a=\xC1 CONTENT='CHARSET=KOI8-R' HTTP-EQUIV=CONTENT-TYPE>",
     0,
     1,
     {"start(META|{a=\\u0430}{CONTENT=CHARSET=KOI8-R}{HTTP-EQUIV=CONTENT-TYPE})"},
     20866},
    {"a self-closing meta tag",
     "<meta http-equiv=Content-Type content='charset=utf-8'/>",
     0,
     1,
     {"start(meta|{http-equiv=Content-Type}{content=charset=utf-8})", "end(meta)"},
     65001},
    {"a bare charset attribute is not consulted", "<meta charset=utf-8>", 0, 1, {"start(meta|{charset=utf-8})"}, 0},
    {"nor is content alone", "<meta content='charset=utf-8'>", 0, 1, {"start(meta|{content=charset=utf-8})"}, 0},
    {"nor that of another kind",
     "<meta http-equiv=Refresh content='charset=utf-8'>",
     0,
     1,
     {"start(meta|{http-equiv=Refresh}{content=charset=utf-8})"},
     0},
    {"nor that of another tag",
     "<a http-equiv=Content-Type content='charset=utf-8'>",
     0,
     1,
     {"start(a|{http-equiv=Content-Type}{content=charset=utf-8})"},
     0},
    {"a later http-equiv replaces an earlier one",
     "<meta http-equiv=Content-Type http-equiv=x content='charset=utf-8'>",
     0,
     1,
     {"start(meta|{http-equiv=Content-Type}{http-equiv=x}{content=charset=utf-8})"},
     0},
    {"white space spoils the kind",
     "<meta http-equiv='Content-Type ' content='charset=utf-8'>",
     0,
     1,
     {"start(meta|{http-equiv=Content-Type }{content=charset=utf-8})"},
     0},
    {"a later name replaces an earlier one",
     "<meta http-equiv=Content-Type content='charset=koi8-r' content='x; charset = utf-8 ;y'>",
     0,
     1,
     {"start(meta|{http-equiv=Content-Type}{content=charset=koi8-r}{content=x; charset = utf-8 ;y})"},
     65001},
    {"even if it is empty",
     "<meta http-equiv=Content-Type content='charset=utf-8;charset='>",
     0,
     1,
     {"start(meta|{http-equiv=Content-Type}{content=charset=utf-8;charset=})"},
     0},
    {"two equals signs make no name",
     "<meta http-equiv=Content-Type content='charset=utf-8=;charset==koi8-r'>",
     0,
     1,
     {"start(meta|{http-equiv=Content-Type}{content=charset=utf-8=;charset==koi8-r})"},
     0},
    {"only spaces are stripped",
     "<meta http-equiv=Content-Type content='charset=\tutf-8'>",
     1252,
     1,
     {"start(meta|{http-equiv=Content-Type}{content=charset=\\tutf-8})"},
     0},
    {"an unknown name takes the charset away",
     "<meta http-equiv=Content-Type content='charset=no-such'>\xC3\xA9<b>",
     65001,
     1,
     {"start(meta|{http-equiv=Content-Type}{content=charset=no-such})", "text(\\u00C3\\u00A9)", "start(b|)"},
     0},
    {"a name is compared whole, NULs included",
     "<meta http-equiv=Content-Type content='charset=utf-8\0'>"s,
     1252,
     1,
     {"start(meta|{http-equiv=Content-Type}{content=charset=utf-8\\x00})"},
     0},
    {"an instruction sets the charset",
     "<?xml version='1.0' encoding='utf-8'?>\xC3\xA9<b>",
     0,
     1,
     {"extern(xml|{version=1.0}{encoding=utf-8})", "text(\\u00E9)", "start(b|)"},
     65001},
    {"case does not matter", "<?XML ENCODING='UTF-8'?>", 0, 1, {"extern(XML|{ENCODING=UTF-8})"}, 65001},
    {"an unquoted encoding ends in a question mark and is unknown",
     "<?xml encoding=utf-8?>",
     1252,
     1,
     {"extern(xml|{encoding=utf-8?})"},
     0},
    {"an instruction of another name", "<?php encoding='utf-8'?>", 0, 1, {"extern(php|{encoding=utf-8})"}, 0},
    {"only its first encoding counts",
     "<?xml encoding='koi8-r' encoding='utf-8'?>",
     0,
     1,
     {"extern(xml|{encoding=koi8-r}{encoding=utf-8})"},
     20866},
    {"even if it is empty",
     "<?xml encoding='' encoding='utf-8'?>",
     1252,
     1,
     {"extern(xml|{encoding=}{encoding=utf-8})"},
     1252},
    {"pairs from there on",
     "<?xml encoding='utf-16'?>ab<a>",
     0,
     1,
     {"extern(xml|{encoding=\\u7475\\u2D66\\u3631})", "text(\\u6261)", "start(a|)"},
     1200},
    {"the first flag lets markup replace a charset that is set",
     "<?xml encoding='utf-8'?>",
     1252,
     3,
     {"extern(xml|{encoding=utf-8})"},
     65001},
    {"without it an instruction leaves it alone",
     "<?xml encoding='utf-8'?>",
     1252,
     0,
     {"extern(xml|{encoding=utf-8})"},
     1252},
    {"and so does a meta tag, other flags or not",
     "<meta http-equiv=Content-Type content='charset=utf-8'>",
     1252,
     0xFFFFFFFE,
     {"start(meta|{http-equiv=Content-Type}{content=charset=utf-8})"},
     1252},
    {"without it markup sets the first charset, and that stays",
     "<?xml encoding='koi8-r'?><meta http-equiv=Content-Type content='charset=utf-8'>",
     0,
     0,
     {"extern(xml|{encoding=koi8-r})", "start(meta|{http-equiv=Content-Type}{content=charset=utf-8})"},
     20866},
};

template <std::size_t COUNT>
void CheckAll(const CharsetCase (&rows)[COUNT]) {
    for (const CharsetCase& row : rows) {
        SCOPED_TRACE(row.note);
        const StatelessReferenceRun run = ParseStatelessByReference({row.input}, row.charset, row.flags);
        EXPECT_EQ(EventsOf(run), row.events);
        EXPECT_EQ(run.parseResults, Results{0});
        EXPECT_EQ(run.charset, row.after);
    }
}

TEST(StatelessReference, Conversions) {
    CheckAll(CONVERSIONS);
}

TEST(StatelessReference, CharsetDiscovery) {
    CheckAll(DISCOVERY);
}

/// Inputs of which no cut changes events, line or column.
const std::string UNCUT[] = {
    "a<b>c</b>d\r\n\r\ne<f>",
    "< a b=c d = e f>",
    "<a b= >",
    "<!a b>",
    "<?xml version=1.0?>",
    "<script a=1>b//c\n'</script>'\"\\\"\"/*d*/<</script></script>e<f>",
    "<style>a<b<<c</style>d<e>",
    "a\n\n\nb</c>",
    "<meta http-equiv=Content-Type content=charset=koi8-r >\xC1<b>",
};

/// The pieces of an input that is cut before the bytes at `first` and `second`.
Pieces CutAt(const std::string& input, std::size_t first, std::size_t second) {
    return {input.substr(0, first), input.substr(first, second - first), input.substr(second)};
}

void ExpectSame(const StatelessReferenceRun& run, const StatelessReferenceRun& whole) {
    EXPECT_EQ(run.trace, whole.trace);
    EXPECT_EQ(run.line, whole.line);
    EXPECT_EQ(run.column, whole.column);
    EXPECT_EQ(run.charset, whole.charset);
}

TEST(StatelessReference, MostCutsChangeNothing) {
    for (const std::string& input : UNCUT) {
        SCOPED_TRACE(input);
        const StatelessReferenceRun whole = ParseStatelessByReference({input});
        for (std::size_t first = 0; first <= input.size(); ++first) {
            for (std::size_t second = first; second <= input.size(); ++second) {
                SCOPED_TRACE(testing::Message() << "cut at " << first << " and " << second);
                ExpectSame(ParseStatelessByReference(CutAt(input, first, second)), whole);
            }
        }
    }
}

TEST(StatelessReference, AStreamOfWholePieces) {
    const std::string text(65536, 'a');
    const StatelessReferenceRun run = ParseStatelessByReference({text, text.substr(3) + "<b>"});
    EXPECT_EQ(EventsOf(run), (Lines{"text(" + text + text.substr(3) + ")", "start(b|)"}));
    EXPECT_EQ(run.parseResults, (Results{0, 0}));
}

}  // namespace
}  // namespace Kestra::Test
