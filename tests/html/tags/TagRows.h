#pragma once

#include <array>
#include <span>

#include "tests/support/RecognizerSuite.h"

/// @file
/// The rows of tags, for the tests of their recognizers and of the fast path: what follows the "<"
/// or the "</", and what becomes of it.

namespace Kestra::Test {

/// Start tags: names and the white space around them.
inline constexpr RecognizerRow START_TAG_NAMES[] = {
    {"a tag is its name", "p>", "19 start(|p||)"},
    {"the rest of the piece is left", "p>x<", "19 start(|p||) rest(x<)"},
    {"case is kept", "DiV>", "19 start(|DiV||)"},
    {"white space before the name is the prefix", " p>", "19 start( |p||)"},
    {"any white space", "\n\t p>", "19 start(\\n\\t |p||)"},
    {"white space after the name is the suffix when nothing follows", "p \n>", "19 start(|p|| \\n)"},
    {"white space on both sides", " p >", "19 start( |p|| )"},
    {"a \"/\" does not end a name: it belongs to it", "br/>", "19 start(|br/||)"},
    {"slashes anywhere in the name", "/a//b/>", "19 start(|/a//b/||)"},
    {"white space after such a name", "br/ >", "19 start(|br/|| )"},
    {"a name may be empty", ">", "19 start(|||)"},
    {"an empty name after a prefix", " >", "19 start( |||)"},
    {"\"=\" ends the name and begins an attribute without one", "a=b>", "19 start(|a|{||=|b}|)"},
    {"\"[\" ends the name and begins an attribute", "a[b]>", "19 start(|a|{|[b]}|)"},
    {"\"]\" ends the name and begins an attribute", "a]>", "19 start(|a|{|]}|)"},
    {"\"<\" ends the name and begins an attribute", "div<p>", "19 start(|div|{|<p}|)"},
    {"a tag that begins with \"<\" has no name, but an attribute", "<a>", "19 start(||{|<a}|)"},
    {"two tags that were meant", "<a b=c>", "19 start(||{|<a}{ |b|=|c}|)"},
    {"nothing but \"<\" is an attribute too", "<>", "19 start(||{|<}|)"},
    {"quotes belong to the name", "'a\">", "19 start(|'a\"||)"},
    {"a NUL belongs to the name", "a\0b>"sv, "19 start(|a\\x00b||)"},
    {"characters from 128 up belong to the name", "\x80\xBC>", "19 start(|\\x80\\xBC||)"},
};

/// Attributes in every notation.
inline constexpr RecognizerRow START_TAG_ATTRIBUTES[] = {
    {"a bare value and a quoted one", "div class=a id='b'>", "19 start(|div|{ |class|=|a}{ |id|=|'b'}|)"},
    {"a value in quotation marks", "a b=\"c\">", "19 start(|a|{ |b|=|\"c\"}|)"},
    {"attributes without values", "input disabled checked>", "19 start(|input|{ |disabled}{ |checked}|)"},
    {"one attribute without a value", "a b>", "19 start(|a|{ |b}|)"},
    {"white space after an attribute without a value is the prefix of the next", "a b \n\tc>",
     "19 start(|a|{ |b}{ \\n\\t|c}|)"},
    {"white space after the last attribute without a value is the suffix", "a b  >", "19 start(|a|{ |b}|  )"},
    {"white space after a bare value is the prefix of the next", "a b=c\nd=e>", "19 start(|a|{ |b|=|c}{\\n|d|=|e}|)"},
    {"white space after the last value is the suffix", "a b=c >", "19 start(|a|{ |b|=|c}| )"},
    {"white space after the last quoted value is the suffix", "a b='c' \n>", "19 start(|a|{ |b|=|'c'}| \\n)"},
    {"white space around \"=\" is kept", "a b = 'c'\td\n=\re>", "19 start(|a|{ |b| = |'c'}{\\t|d|\\n=\\r|e}|)"},
    {"an attribute without a value before one with a value", "a b c=d>", "19 start(|a|{ |b}{ |c|=|d}|)"},
    {"attributes may follow a quoted value without white space", "a b='c'd=\"e\"f=g>",
     "19 start(|a|{ |b|=|'c'}{|d|=|\"e\"}{|f|=|g}|)"},
    {"an attribute may come directly after the name's end", "a=b c>", "19 start(|a|{||=|b c}|)"},
    {"an attribute without a name", "a =b>", "19 start(|a|{ ||=|b}|)"},
    {"an attribute of nothing but \"=\"", "a =>", "19 start(|a|{ ||=|}|)"},
    {"an attribute whose value is \"=\"", "a==>", "19 start(|a|{||=|=}|)"},
    {"an empty value before \">\"", "a b=>", "19 start(|a|{ |b|=|}|)"},
    {"an empty value after white space", "a b= \n>", "19 start(|a|{ |b|= \\n|}|)"},
    {"an empty value before \"<\"", "a b=<c=d>", "19 start(|a|{ |b|=|}{|<c|=|d}|)"},
    {"empty quoted values", "a b=''c=\"\">", "19 start(|a|{ |b|=|''}{|c|=|\"\"}|)"},
    {"the value may be the next attribute by mistake", "a b= c=d>", "19 start(|a|{ |b|= |c=d}|)"},
    {"a quoted value may hold anything but its quote", "a b='<\"/>\n=' c=\"'>\">",
     "19 start(|a|{ |b|=|'<\"/>\\n='}{ |c|=|\"'>\"}|)"},
    {"a backslash escapes nothing", "a b='\\'c='d'>", "19 start(|a|{ |b|=|'\\\\'}{|c|=|'d'}|)"},
    {"a name may hold quotes, brackets and \"<\"", "a 'b\"=c [d]=e f<g=h>",
     "19 start(|a|{ |'b\"|=|c}{ |[d]|=|e}{ |f<g|=|h}|)"},
    {"a name may begin with a \"/\"", "a /b>", "19 start(|a|{ |/b}|)"},
    {"a name may end with a \"/\" before \"=\"", "a b/=c>", "19 start(|a|{ |b/|=|c}|)"},
    {"NUL and ESC are ordinary", "a \0=\033$B>"sv, "19 start(|a|{ |\\x00|=|\\x1B$B}|)"},
    {"many attributes", "a b=1 c=2 d=3 e=4 f=5 g=6>",
     "19 start(|a|{ |b|=|1}{ |c|=|2}{ |d|=|3}{ |e|=|4}{ |f|=|5}{ |g|=|6}|)"},
};

/// A "/" before the end.
inline constexpr RecognizerRow START_TAG_SHORT_TAGS[] = {
    {"\"/\" after white space closes the tag", "br />", "19 start(|br|| , short)"},
    {"the white space is the suffix", "br \n />x", "19 start(|br|| \\n , short) rest(x)"},
    {"a \"/\" at the end of an attribute without a value", "a b/>", "19 start(|a|{ |b}|, short)"},
    {"a \"/\" after an attribute without a value", "a b />", "19 start(|a|{ |b}| , short)"},
    {"a \"/\" at the end of a bare value", "a href=x/>", "19 start(|a|{ |href|=|x}|, short)"},
    {"a \"/\" after a bare value", "a href=x />", "19 start(|a|{ |href|=|x}| , short)"},
    {"a \"/\" directly after a quoted value", "a b='x'/>", "19 start(|a|{ |b|=|'x'}|, short)"},
    {"a \"/\" directly after an empty quoted value", "a b=\"\"/>", "19 start(|a|{ |b|=|\"\"}|, short)"},
    {"a \"/\" after a quoted value", "a b='x' />", "19 start(|a|{ |b|=|'x'}| , short)"},
    {"a \"/\" inside a quoted value is content", "a b='x/'>", "19 start(|a|{ |b|=|'x/'}|)"},
    {"the last of two slashes closes, the other is an attribute", "br //>", "19 start(|br|{ |/}|, short)"},
    {"the last of two slashes after a value", "a b=c//>", "19 start(|a|{ |b|=|c/}|, short)"},
    {"a \"/\" in the middle of a value", "a b=c/d>", "19 start(|a|{ |b|=|c/d}|)"},
    {"a \"/\" before white space belongs to the value", "a b=c/ d=e>", "19 start(|a|{ |b|=|c/}{ |d|=|e}|)"},
    {"a \"/\" before \"<\" belongs to the value", "a b=c/<d=e>", "19 start(|a|{ |b|=|c/}{|<d|=|e}|)"},
    {"a name of nothing but slashes that closes a tag without a name", " />", "19 start( |/||)"},
    {"\"=\" before it closes too", "a=b/>", "19 start(|a|{||=|b}|, short)"},
};

/// Malformed and unfinished tags.
inline constexpr RecognizerRow START_TAG_FAILURES[] = {
    {"a lone \"/\" as a bare value before \">\"", "a href=/>", "11 rest(>)"},
    {"a lone \"/\" after white space", "a href= />x", "11 rest(>x)"},
    {"a lone \"/\" after other attributes", "a b=c d=/>", "11 rest(>)"},
    {"a \"/\" after the name with white space before \">\"", "a / >", "11 rest(>)"},
    {"a \"/\" with white space before another attribute", "a / b>", "11 rest(b>)"},
    {"a \"/\" at the end of an attribute with white space before \">\"", "a b/ >", "11 rest(>)"},
    {"a \"/\" after an attribute with white space before \">\"", "a b / >", "11 rest(>)"},
    {"a \"/\" with a line end before \">\"", "a b /\n>", "11 rest(>)"},
    {"a \"/\" after a quoted value with white space before \">\"", "a b='c'/ >", "11 rest(>)"},
    {"the input ends after \"=\"", "div class=", "end 16"},
    {"the input ends at once", "", "end 16 start(|||)"},
    {"the input ends in the prefix", " ", "end 16"},
    {"the input ends in the name", "div", "end 16"},
    {"the input ends after the name", "div ", "end 16"},
    {"the input ends in an attribute's name", "div a", "end 16"},
    {"the input ends after an attribute's name", "div a ", "end 16"},
    {"the input ends in a bare value", "div a=b", "end 16"},
    {"the input ends in a quoted value", "div a='b>", "end 16"},
    {"the input ends in a value in quotation marks", "div a=\"b>", "end 16"},
    {"the input ends after a quoted value", "div a='b'", "end 16 start(|div|{ |a|=|'b'}|)"},
    {"the input ends after the closing \"/\"", "br /", "end 16"},
};

/// Bare words that become a part of the value before them.
inline constexpr RecognizerRow START_TAG_FOLDED_WORDS[] = {
    {"bare words after a bare value", "a title=hello big  world>", "19 start(|a|{ |title|=|hello big  world}|)"},
    {"bare words after a quoted value", "a title='x y' z>", "19 start(|a|{ |title|=|'x y' z}|)"},
    {"bare words after a value and before another", "a b=c d e='f' g h=i>",
     "19 start(|a|{ |b|=|c d}{ |e|=|'f' g}{ |h|=|i}|)"},
    {"bare words before the first value stay", "a b c d=e>", "19 start(|a|{ |b}{ |c}{ |d|=|e}|)"},
    {"a short tag", "a b=c d/>", "19 start(|a|{ |b|=|c d}|, short)"},
    {"a short tag with white space", "a b=c d />", "19 start(|a|{ |b|=|c d}| , short)"},
    {"a \"/\" of its own", "a b=c //>", "19 start(|a|{ |b|=|c /}|, short)"},
    {"a \"<\" after a value", "a b=c<d>", "19 start(|a|{ |b|=|c<d}|)"},
    {"a \"/\" at the end of a value, then a word", "a b=c/ d>", "19 start(|a|{ |b|=|c/ d}|)"},
    {"an empty value", "a b=''c>", "19 start(|a|{ |b|=|''c}|)"},
};

/// Escape runs in values, where the charset has them.
inline constexpr RecognizerRow START_TAG_ESCAPE_RUNS[] = {
    {"the first attribute", "p b=\"\033$B\" c=\"\033(B\">", "19 start(|p|{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after a bare value the next attribute has no runs", "p a=x b=\"\033$B\" c=\"\033(B\">",
     "19 start(|p|{ |a|=|x}{ |b|=|\"\\x1B$B\"}{ |c|=|\"\\x1B(B\"}|)"},
    {"after a quoted value it has", "p a='x' b=\"\033$B\" c=\"\033(B\">",
     "19 start(|p|{ |a|=|'x'}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after a value in quotation marks it has", "p a=\"x\" b=\"\033$B\" c=\"\033(B\">",
     "19 start(|p|{ |a|=|\"x\"}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after an empty quoted value it has", "p a=''b=\"\033$B\" c=\"\033(B\">",
     "19 start(|p|{ |a|=|''}{|b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after an empty bare value it has", "p a=<b=\"\033$B\" c=\"\033(B\">",
     "19 start(|p|{ |a|=|}{|<b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after an attribute without a value it has", "p a b=\"\033$B\" c=\"\033(B\">",
     "19 start(|p|{ |a}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"only the very next attribute is concerned: a quoted one follows", "p a=x b='y' c=\"\033$B\" d=\"\033(B\">",
     "19 start(|p|{ |a|=|x}{ |b|=|'y'}{ |c|=|\"\\x1B$B\" d=\"\\x1B(B\"}|)"},
    {"a bare word in between restores them", "p a=x y c=\"\033$B\" d=\"\033(B\">",
     "19 start(|p|{ |a|=|x y}{ |c|=|\"\\x1B$B\" d=\"\\x1B(B\"}|)"},
    {"two bare values in a row", "p a=x b=y c=\"\033$B\" d=\"\033(B\">",
     "19 start(|p|{ |a|=|x}{ |b|=|y}{ |c|=|\"\\x1B$B\"}{ |d|=|\"\\x1B(B\"}|)"},
    {"values in apostrophes never have runs", "p b='\033$B' c='\033(B'>",
     "19 start(|p|{ |b|=|'\\x1B$B'}{ |c|=|'\\x1B(B'}|)"},
    {"bare values never have runs", "p b=\033$B>", "19 start(|p|{ |b|=|\\x1B$B}|)"},
    {"the input ends inside a run", "p b=\"\033$B\">", "end 16"},
};

inline constexpr std::array START_TAG_TABLES = {
    std::span<const RecognizerRow>(START_TAG_NAMES),        std::span<const RecognizerRow>(START_TAG_ATTRIBUTES),
    std::span<const RecognizerRow>(START_TAG_SHORT_TAGS),   std::span<const RecognizerRow>(START_TAG_FAILURES),
    std::span<const RecognizerRow>(START_TAG_FOLDED_WORDS), std::span<const RecognizerRow>(START_TAG_ESCAPE_RUNS),
};

/// End tags: names and the white space around them.
inline constexpr RecognizerRow END_TAG_NAMES[] = {
    {"an end tag is its name", "div>", "19 end(|div|||)"},
    {"the rest of the piece is left", "div>x<", "19 end(|div|||) rest(x<)"},
    {"white space on both sides of the name", " div >", "19 end( |div| ||)"},
    {"any white space", "\n\tdiv\r\n>", "19 end(\\n\\t|div|\\r\\n||)"},
    {"case is kept", "DiV>", "19 end(|DiV|||)"},
    {"a \"<\" ends the tag and is left", "div<", "19 end(|div|||, open) rest(<)"},
    {"a \"<\" after white space ends the tag and is left", "div \n<b>", "19 end(|div| \\n||, open) rest(<b>)"},
    {"a \"<\" at once ends the tag and is left", "<", "19 end(||||, open) rest(<)"},
    {"a \"<\" after the prefix ends the tag and is left", " <", "19 end( ||||, open) rest(<)"},
    {"a name may be empty", ">", "19 end(||||)"},
    {"an empty name after a prefix", " >", "19 end( ||||)"},
    {"a \"/\" belongs to the name", "div/>", "19 end(|div/|||)"},
    {"the name is not checked", "/!'\"&;>", "19 end(|/!'\"&;|||)"},
    {"a NUL belongs to the name", "a\0b>"sv, "19 end(|a\\x00b|||)"},
    {"characters from 128 up belong to the name", "\x80\xBC>", "19 end(|\\x80\\xBC|||)"},
};

/// Attributes in every notation.
inline constexpr RecognizerRow END_TAG_ATTRIBUTES[] = {
    {"one attribute; the white space before it is that after the name", "div class=x>", "19 end(|div| |{|class|=|x}|)"},
    {"attributes of every kind", "div a b='c' d = \"e\" >", "19 end(|div| |{|a}{ |b|=|'c'}{ |d| = |\"e\"}| )"},
    {"an attribute without a value", "div a>", "19 end(|div| |{|a}|)"},
    {"white space after an attribute without a value is the suffix", "div a \n>", "19 end(|div| |{|a}| \\n)"},
    {"white space after a value is the suffix", "div a=b >", "19 end(|div| |{|a|=|b}| )"},
    {"\"=\" ends the name and begins an attribute", "div=x>", "19 end(|div||{||=|x}|)"},
    {"\"[\" ends the name and begins an attribute", "div[x]>", "19 end(|div||{|[x]}|)"},
    {"a \"<\" after an attribute's name belongs to it", "div a<b>", "19 end(|div| |{|a<b}|)"},
    {"an empty value", "div a=>", "19 end(|div| |{|a|=|}|)"},
    {"an empty value before \"<\"", "div a=<b=c>", "19 end(|div| |{|a|=|}{|<b|=|c}|)"},
    {"an attribute without a name", "div =x>", "19 end(|div| |{||=|x}|)"},
    {"bare words are folded into the value before them", "div a=b c 'd'>", "19 end(|div| |{|a|=|b c 'd'}|)"},
    {"bare words after a quoted value", "div a='b' c>", "19 end(|div| |{|a|=|'b' c}|)"},
    {"a \"<\" after a value", "div a=b<c>", "19 end(|div| |{|a|=|b<c}|)"},
};

/// A "/" before the end.
inline constexpr RecognizerRow END_TAG_SLASHES[] = {
    {"a \"/\" after white space stands before the close", "div />", "19 end(|div| ||, slash)"},
    {"a \"/\" after an attribute", "div a />", "19 end(|div| |{|a}| , slash)"},
    {"a \"/\" at the end of an attribute", "div a/>", "19 end(|div| |{|a}|, slash)"},
    {"a \"/\" at the end of a bare value", "div a=x/>", "19 end(|div| |{|a|=|x}|, slash)"},
    {"a \"/\" after a bare value", "div a=x />", "19 end(|div| |{|a|=|x}| , slash)"},
    {"a \"/\" directly after a quoted value", "div a='x'/>", "19 end(|div| |{|a|=|'x'}|, slash)"},
    {"the last of two slashes stands before the close", "div //>", "19 end(|div| |{|/}|, slash)"},
    {"the last of two slashes of a value", "div a=x//>", "19 end(|div| |{|a|=|x/}|, slash)"},
    {"a \"/\" before white space belongs to the value", "div a=x/ b=y>", "19 end(|div| |{|a|=|x/}{ |b|=|y}|)"},
    {"a \"/\" before \"<\" belongs to the value", "div a=x/<b=y>", "19 end(|div| |{|a|=|x/}{|<b|=|y}|)"},
    {"bare words before the \"/\" are folded", "div a=b c/>", "19 end(|div| |{|a|=|b c}|, slash)"},
    {"after the \"=\" of a name", "div=x/>", "19 end(|div||{||=|x}|, slash)"},
};

/// Malformed and unfinished tags.
inline constexpr RecognizerRow END_TAG_FAILURES[] = {
    {"a \"/\" with white space before \">\"", "div / >", "11 rest(>)"},
    {"a \"/\" with white space before an attribute", "div / a>", "11 rest(a>)"},
    {"a \"/\" with white space before \"/\"", "div / />", "11 rest(/>)"},
    {"a \"/\" at the end of an attribute with white space before \">\"", "div a/ >", "11 rest(>)"},
    {"a \"/\" after an attribute with white space before \">\"", "div a / >", "11 rest(>)"},
    {"a \"/\" after a quoted value with white space before \">\"", "div a='b'/\n>", "11 rest(>)"},
    {"a lone \"/\" as a bare value before \">\"", "div a=/>", "11 rest(>)"},
    {"a lone \"/\" after white space", "div a= />", "11 rest(>)"},
    {"the input ends in the name", "div", "end 16"},
    {"the input ends at once", "", "end 16 end(||||)"},
    {"the input ends in the prefix", " ", "end 16"},
    {"the input ends after the name", "div ", "end 16"},
    {"the input ends in an attribute's name", "div a", "end 16"},
    {"the input ends in a bare value", "div a=b", "end 16"},
    {"the input ends in a quoted value", "div a='b>", "end 16"},
    {"the input ends after a quoted value", "div a='b'", "end 16 end(|div| |{|a|=|'b'}|)"},
    {"the input ends after the \"/\"", "div /", "end 16"},
};

/// Escape runs in values, where the charset has them.
inline constexpr RecognizerRow END_TAG_ESCAPE_RUNS[] = {
    {"the first attribute", "p b=\"\033$B\" c=\"\033(B\">", "19 end(|p| |{|b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after a bare value too, unlike in a start tag", "p a=x b=\"\033$B\" c=\"\033(B\">",
     "19 end(|p| |{|a|=|x}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after a quoted value", "p a='x' b=\"\033$B\" c=\"\033(B\">",
     "19 end(|p| |{|a|=|'x'}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after an empty bare value", "p a=<b=\"\033$B\" c=\"\033(B\">",
     "19 end(|p| |{|a|=|}{|<b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after an attribute without a value", "p a b=\"\033$B\" c=\"\033(B\">",
     "19 end(|p| |{|a}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"values in apostrophes never have runs", "p b='\033$B' c='\033(B'>",
     "19 end(|p| |{|b|=|'\\x1B$B'}{ |c|=|'\\x1B(B'}|)"},
    {"the input ends inside a run", "p b=\"\033$B\">", "end 16"},
};

inline constexpr std::array END_TAG_TABLES = {
    std::span<const RecognizerRow>(END_TAG_NAMES),       std::span<const RecognizerRow>(END_TAG_ATTRIBUTES),
    std::span<const RecognizerRow>(END_TAG_SLASHES),     std::span<const RecognizerRow>(END_TAG_FAILURES),
    std::span<const RecognizerRow>(END_TAG_ESCAPE_RUNS),
};

}  // namespace Kestra::Test
