#pragma once

#include <array>
#include <span>
#include <string_view>

#include "tests/html/tags/TagRow.h"

/// @file
/// The rows of end tags, for the tests of its recognizer and of the fast path: what follows the
/// "</", and what becomes of it.

namespace Kestra::Test {

using namespace std::string_view_literals;

/// Names and the white space around them.
inline constexpr TagRow END_TAG_NAMES[] = {
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
inline constexpr TagRow END_TAG_ATTRIBUTES[] = {
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
inline constexpr TagRow END_TAG_SLASHES[] = {
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
inline constexpr TagRow END_TAG_FAILURES[] = {
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
inline constexpr TagRow END_TAG_ESCAPE_RUNS[] = {
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
    std::span<const TagRow>(END_TAG_NAMES),       std::span<const TagRow>(END_TAG_ATTRIBUTES),
    std::span<const TagRow>(END_TAG_SLASHES),     std::span<const TagRow>(END_TAG_FAILURES),
    std::span<const TagRow>(END_TAG_ESCAPE_RUNS),
};

}  // namespace Kestra::Test
