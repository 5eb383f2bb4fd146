#include "html/tags/ExternTagSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the "<?".

constexpr RecognizerRow TARGETS[] = {
    {"\"xml\" makes a declaration", "xml a='b'?>", "19 extern(|xml|{ |a|=|'b'}|)"},
    {"case does not matter and is kept", "XmL a='b'?>", "19 extern(|XmL|{ |a|=|'b'}|)"},
    {"\"xml-\" and more", "XML-stylesheet href=a?>", "19 extern(|XML-stylesheet|{ |href|=|a}|)"},
    {"\"xml:\" and more", "Xml:x href=a?>", "19 extern(|Xml:x|{ |href|=|a}|)"},
    {"\"xml-\" alone", "xml- a='b'?>", "19 extern(|xml-|{ |a|=|'b'}|)"},
    {"\"xml:\" alone", "xml: a='b'?>", "19 extern(|xml:|{ |a|=|'b'}|)"},
    {"the target of a declaration may end with \"?\"", "xml:? a='b'?>", "19 extern(|xml:?|{ |a|=|'b'}|)"},
    {"\"=\" ends the target of a declaration", "xml=b?>", "19 extern(|xml|{||=|b}|)"},
    {"\"[\" ends the target of a declaration", "xml[a]?>", "19 extern(|xml|{|[a]}|)"},
    {"\"<\" ends the target of a declaration", "xml<a?>", "19 extern(|xml|{|<a}|)"},
    {"any white space", "\n\txml\fa='b'\r?>", "19 extern(\\n\\t|xml|{\\x0C|a|=|'b'}|\\r)"},
    {"\"xmlx\" is no declaration", "xmlx a='b'?>", "19 extern(|xmlx||) free(<?xmlx a='b'?>)"},
    {"\"xm\" is no declaration", "xm ?>", "19 extern(|xm||) free(<?xm ?>)"},
    {"\"xml_\" is no declaration", "xml_a ?>", "19 extern(|xml_a||) free(<?xml_a ?>)"},
    {"\"axml\" is no declaration", "axml ?>", "19 extern(|axml||) free(<?axml ?>)"},
    {"a NUL does not end the target", "xml\0 a='b'?>"sv, "19 extern(|xml\\x00||) free(<?xml\\x00 a='b'?>)"},
    {"only letters are folded", "xml\032 a='b'?>", "19 extern(|xml\\x1A||) free(<?xml\\x1A a='b'?>)"},
    {"\"xml?\" is no declaration", "xml?>", "19 extern(|xml?||) free(<?xml?>)"},
    {"\"xml/\" is no declaration", "xml/>", "19 extern(|xml/||) free(<?xml/>)"},
    {"a target of nothing but \"?\" is no declaration", " ?>", "19 extern( |?||) free(<? ?>)"},
};

constexpr RecognizerRow FREE_STYLE[] = {
    {"everything from \"<?\" to \">\" is the text", "php a ?>", "19 extern(|php||) free(<?php a ?>)"},
    {"the rest of the piece is left", "php a ?>b?>", "19 extern(|php||) free(<?php a ?>) rest(b?>)"},
    {"\"?>\" in quotes does not end it", "php echo '?>'; ?>", "19 extern(|php||) free(<?php echo '?>'; ?>)"},
    {"\"?>\" in quotation marks does not end it", "php \"?>\"; ?>", "19 extern(|php||) free(<?php \"?>\"; ?>)"},
    {"escapes in quotes", "php 'a\\'?>' ?>", "19 extern(|php||) free(<?php 'a\\\\'?>' ?>)"},
    {"comments hide \">\"", "php /* > */ ?>", "19 extern(|php||) free(<?php /* > */ ?>)"},
    {"line comments hide \">\"", "php //?>\n?>", "19 extern(|php||) free(<?php //?>\\n?>)"},
    {"a bare \">\" ends it", "pi a > b", "19 extern(|pi||) free(<?pi a >) rest( b)"},
    {"white space before the target", " \nphp ?>", "19 extern( \\n|php||) free(<? \\nphp ?>)"},
    {"\">\" directly after the target", "php>", "19 extern(|php||) free(<?php>)"},
    {"\"?>\" directly after the target: \"?\" belongs to it", "php?>", "19 extern(|php?||) free(<?php?>)"},
    {"such a \"?\" is not written twice", "php? x ?>", "19 extern(|php?||) free(<?php? x ?>)"},
    {"\"?\" in the middle of the target", "p?p ?>", "19 extern(|p?p||) free(<?p?p ?>)"},
    {"a target of nothing but \"?\"", "?>", "19 extern(|?||) free(<?\?>)"},
    {"a target of two", "?\?>", "19 extern(|??||) free(<??\?>)"},
    {"\"?\" at the end of the target and another one", "a? ?>", "19 extern(|a?||) free(<?a? ?>)"},
    {"\"?\" at the end of the target before \"=\"", "a?=>", "19 extern(|a?||) free(<?a?=>)"},
    {"a target may be empty", ">", "19 extern(|||) free(<?>)"},
    {"an empty target before white space and \">\"", " >", "19 extern( |||) free(<? >)"},
    {"an empty target before \"=\"", "= a ?>", "19 extern(|||) free(<?= a ?>)"},
    {"an empty target before \"<\"", "<a?>", "19 extern(|||) free(<?<a?>)"},
    {"\"[\" and \"]\" end the target", "a]b[?>", "19 extern(|a||) free(<?a]b[?>)"},
    {"quotes in the target mean nothing", "'a>'", "19 extern(|'a||) free(<?'a>) rest(')"},
    {"a comment does not begin in the target", "a/*>*/", "19 extern(|a/*||) free(<?a/*>) rest(*/)"},
    {"line ends count", "a\n'\n'\r\n?>\n", "19 extern(|a||) free(<?a\\n'\\n'\\r\\n?>) rest(\\n)"},
    {"NUL and characters from 128 up", "\0\xE9 \0\xBE?>"sv, "19 extern(|\\x00\\xE9||) free(<?\\x00\\xE9 \\x00\\xBE?>)"},
};

constexpr RecognizerRow DECLARATIONS[] = {
    {"two quoted values", "xml version=\"1.0\" encoding='x'?>",
     "19 extern(|xml|{ |version|=|\"1.0\"}{ |encoding|=|'x'}|)"},
    {"the rest of the piece is left", "xml a='b'?>?>", "19 extern(|xml|{ |a|=|'b'}|) rest(?>)"},
    {"white space after the last value is the suffix", "xml a='1.0' ?>", "19 extern(|xml|{ |a|=|'1.0'}| )"},
    {"white space alone is the suffix", "xml \n?>", "19 extern(|xml|| \\n)"},
    {"white space around \"=\"", "xml a = 'b'\td\n=\r\"e\"?>", "19 extern(|xml|{ |a| = |'b'}{\\t|d|\\n=\\r|\"e\"}|)"},
    {"a bare value loses the closing \"?\"", "xml a=b?>", "19 extern(|xml|{ |a|=|b}|)"},
    {"only the last \"?\" closes", "xml a=b??\?>", "19 extern(|xml|{ |a|=|b??}|)"},
    {"white space after \"=\" and a bare value", "xml a= \nb?>", "19 extern(|xml|{ |a|= \\n|b}|)"},
    {"a \"?\" in the middle of a bare value", "xml a=b?c?>", "19 extern(|xml|{ |a|=|b?c}|)"},
    {"a \"?\" at the end of a bare value and white space", "xml a=b? ?>", "19 extern(|xml|{ |a|=|b?}| )"},
    {"a \"?\" at the end of a bare value and \"<\"", "xml a=b?<c?>", "19 extern(|xml|{ |a|=|b?}{|<c}|)"},
    {"a bare value may end with \"/\"", "xml a=b/ ?>", "19 extern(|xml|{ |a|=|b/}| )"},
    {"\"?>\" in quotes is content", "xml a='?>' b=\"?>\"?>", "19 extern(|xml|{ |a|=|'?>'}{ |b|=|\"?>\"}|)"},
    {"a backslash escapes nothing", "xml a='\\'b?>", "19 extern(|xml|{ |a|=|'\\\\'}{|b}|)"},
    {"comments mean nothing", "xml /* a='b'?>", "19 extern(|xml|{ |/*}{ |a|=|'b'}|)"},
    {"an empty value", "xml a='' b=\"\"?>", "19 extern(|xml|{ |a|=|''}{ |b|=|\"\"}|)"},
    {"an empty bare value", "xml a=<b?>", "19 extern(|xml|{ |a|=|}{|<b}|)"},
    {"attributes without values", "xml a b c='d'?>", "19 extern(|xml|{ |a}{ |b}{ |c|=|'d'}|)"},
    {"a name without a value loses the closing \"?\"", "xml a b?>", "19 extern(|xml|{ |a}{ |b}|)"},
    {"white space after it is the suffix", "xml a ?>", "19 extern(|xml|{ |a}| )"},
    {"only the last \"?\" of a name closes", "xml a?\?>", "19 extern(|xml|{ |a?}|)"},
    {"a name of two", "xml ?\?>", "19 extern(|xml|{ |?}|)"},
    {"a name may end with \"?\" before \"=\"", "xml a?=b?>", "19 extern(|xml|{ |a?|=|b}|)"},
    {"a name may have \"?\" in the middle", "xml a?b?>", "19 extern(|xml|{ |a?b}|)"},
    {"an attribute without a name", "xml ='b'?>", "19 extern(|xml|{ ||=|'b'}|)"},
    {"attributes are not normalized", "xml a=b c d='e' f?>", "19 extern(|xml|{ |a|=|b}{ |c}{ |d|=|'e'}{ |f}|)"},
    {"many attributes", "xml a=1 b=2 c=3 d=4 e=5?>", "19 extern(|xml|{ |a|=|1}{ |b|=|2}{ |c|=|3}{ |d|=|4}{ |e|=|5}|)"},
    {"NUL and ESC are ordinary", "xml \0=\033$B?>"sv, "19 extern(|xml|{ |\\x00|=|\\x1B$B}|)"},
};

constexpr RecognizerRow DECLARATIONS_WITH_SLASHES[] = {
    {"\"/\" after white space", "xml />x", "19 extern(|xml|| , slash) rest(x)"},
    {"\"/\" after a quoted value", "xml a='b'/>", "19 extern(|xml|{ |a|=|'b'}|, slash)"},
    {"\"/\" after a quoted value and white space", "xml a='b' />", "19 extern(|xml|{ |a|=|'b'}| , slash)"},
    {"\"/\" after a bare value and white space", "xml a=b />", "19 extern(|xml|{ |a|=|b}| , slash)"},
    {"\"/\" at the end of a name without a value", "xml a/>", "19 extern(|xml|{ |a}|, slash)"},
    {"\"/\" after a name without a value", "xml a />", "19 extern(|xml|{ |a}| , slash)"},
    {"only the last \"/\" closes", "xml a//>", "19 extern(|xml|{ |a/}|, slash)"},
    {"a name of two", "xml //>", "19 extern(|xml|{ |/}|, slash)"},
    {"\"?/\" closes with \"/\"", "xml a?/>", "19 extern(|xml|{ |a?}|, slash)"},
    {"a name of \"?/\"", "xml ?/>", "19 extern(|xml|{ |?}|, slash)"},
    {"\"/?\" closes with \"?\"", "xml a/?>", "19 extern(|xml|{ |a/}|)"},
    {"a name of \"/?\"", "xml /?>", "19 extern(|xml|{ |/}|)"},
    {"white space after the \"/\" is added to the suffix", "xml a/ >", "19 extern(|xml|{ |a}| , slash)"},
    {"line ends, too", "xml a/\r\n>x", "19 extern(|xml|{ |a}|\\r\\n, slash) rest(x)"},
    {"white space on both sides of the \"/\"", "xml \t/\n>", "19 extern(|xml|| \\t\\n, slash)"},
    {"on both sides after a value", "xml a='b' /\n>", "19 extern(|xml|{ |a|=|'b'}| \\n, slash)"},
    {"on both sides after a name", "xml a / >", "19 extern(|xml|{ |a}|  , slash)"},
    {"after a value, without white space before it", "xml a='b'/\t>", "19 extern(|xml|{ |a|=|'b'}|\\t, slash)"},
    {"attributes are not normalized here either", "xml a=b c/>", "19 extern(|xml|{ |a|=|b}{ |c}|, slash)"},
    {"a name may end with \"/\" before \"=\"", "xml a/=b?>", "19 extern(|xml|{ |a/|=|b}|)"},
};

constexpr RecognizerRow FAILURES[] = {
    {"\">\" directly after the target", "xml>", "11 rest(>)"},
    {"\">\" after the target and white space", "xml >x", "11 rest(>x)"},
    {"\">\" after a target that ends with \"?\"", "xml-?>", "11 rest(>)"},
    {"\">\" after a quoted value", "xml a='b'>", "11 rest(>)"},
    {"\">\" after a quoted value and white space", "xml a='b' >", "11 rest(>)"},
    {"\">\" after a bare value", "xml a=b>", "11 rest(>)"},
    {"\">\" after an empty bare value", "xml a=>", "11 rest(>)"},
    {"\">\" after a bare value that ends with \"/\"", "xml a=b/>", "11 rest(>)"},
    {"\">\" after a bare value that is \"/\"", "xml a=/>", "11 rest(>)"},
    {"\">\" after a bare value that ends with \"?\" and white space", "xml a=b? >", "11 rest(>)"},
    {"\">\" after a name", "xml a>", "11 rest(>)"},
    {"\">\" after a name and white space", "xml a >", "11 rest(>)"},
    {"a lone \"?\" as a bare value", "xml a=?>", "11 rest(>)"},
    {"a lone \"?\" as a bare value after white space", "xml a= ?>", "11 rest(>)"},
    {"a lone \"?\" as a bare value after other attributes", "xml a=b c=?>x", "11 rest(>x)"},
    {"a name that ends with \"?\", and white space", "xml a? >", "11 rest(>)"},
    {"a name that ends with \"?\", and another attribute", "xml a? b?>", "11 rest(b?>)"},
    {"a name that is \"?\", and white space", "xml ? >", "11 rest(>)"},
    {"a name that is \"?\", and a line end", "xml a='b' ?\n>", "11 rest(>)"},
    {"\"/\", white space and an attribute", "xml a/ b='c'?>", "11 rest(b='c'?>)"},
    {"\"/\", white space and \"?\"", "xml a='b' / ?>", "11 rest(?>)"},
    {"\"/\", white space and \"/\"", "xml / />", "11 rest(/>)"},
    {"\"/\", white space and \"<\"", "xml a/ <", "11 rest(<)"},
    {"the input ends at once", "", "end 16 extern(|||)"},
    {"the input ends in the prefix", " ", "end 16 extern(|||)"},
    {"the input ends in the target", "php?", "end 16 extern(|||)"},
    {"the input ends in free text", "php a", "end 16 extern(|php||)"},
    {"the input ends in free text after \"?\"", " php ?", "end 16 extern( |php||)"},
    {"the input ends in a string of free text", "php 'a?>", "end 16 extern(|php||)"},
    {"the input ends in a comment of free text", "php /*?>", "end 16 extern(|php||)"},
    {"the input ends after the target of a declaration", "xml ", "end 16 extern(|xml||)"},
    {"the input ends in a name", "xml a", "end 16 extern(|xml||)"},
    {"the input ends in a value", "xml a=b", "end 16 extern(|xml||)"},
    {"the input ends in a quoted value", "xml a='b?>", "end 16 extern(|xml||)"},
    {"the input ends after a quoted value", "xml a='b'", "end 16 extern(|xml|{ |a|=|'b'}|)"},
    {"the input ends after \"?\"", "xml a='b'?", "end 16 extern(|xml|{ |a|=|'b'}|)"},
    {"the input ends after \"/\"", "xml a='b' /", "end 16 extern(|xml|{ |a|=|'b'}|)"},
};

constexpr RecognizerRow ESCAPE_RUNS[] = {
    {"the first attribute", "xml b=\"\033$B\" c=\"\033(B\"?>", "19 extern(|xml|{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after a bare value the next attribute has no runs", "xml a=x b=\"\033$B\" c=\"\033(B\"?>",
     "19 extern(|xml|{ |a|=|x}{ |b|=|\"\\x1B$B\"}{ |c|=|\"\\x1B(B\"}|)"},
    {"after a quoted value it has", "xml a='x' b=\"\033$B\" c=\"\033(B\"?>",
     "19 extern(|xml|{ |a|=|'x'}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after a value in quotation marks it has", "xml a=\"x\" b=\"\033$B\" c=\"\033(B\"?>",
     "19 extern(|xml|{ |a|=|\"x\"}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after an empty quoted value it has", "xml a=''b=\"\033$B\" c=\"\033(B\"?>",
     "19 extern(|xml|{ |a|=|''}{|b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after an empty bare value it has", "xml a=<b=\"\033$B\" c=\"\033(B\"?>",
     "19 extern(|xml|{ |a|=|}{|<b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"after an attribute without a value it has", "xml a b=\"\033$B\" c=\"\033(B\"?>",
     "19 extern(|xml|{ |a}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
    {"only the very next attribute is concerned: a quoted one follows", "xml a=x b='y' c=\"\033$B\" d=\"\033(B\"?>",
     "19 extern(|xml|{ |a|=|x}{ |b|=|'y'}{ |c|=|\"\\x1B$B\" d=\"\\x1B(B\"}|)"},
    {"a bare word in between restores them", "xml a=x y c=\"\033$B\" d=\"\033(B\"?>",
     "19 extern(|xml|{ |a|=|x}{ |y}{ |c|=|\"\\x1B$B\" d=\"\\x1B(B\"}|)"},
    {"values in apostrophes never have runs", "xml b='\033$B' c='\033(B'?>",
     "19 extern(|xml|{ |b|=|'\\x1B$B'}{ |c|=|'\\x1B(B'}|)"},
    {"the input ends inside a run", "xml b=\"\033$B\"?>", "end 16 extern(|xml||)"},
    {"free text hands the option on", "php \"\033$B\"?>\033(B\" ?>x",
     "19 extern(|php||) free(<?php \"\\x1B$B\"?>\\x1B(B\" ?>) rest(x)"},
    {"to every string of it", "php \"a\" \"\033$B\"?>\033(B\"?>",
     "19 extern(|php||) free(<?php \"a\" \"\\x1B$B\"?>\\x1B(B\"?>)"},
    {"without the option no attribute has them", "xml b=\"\033$B\" c=\"\033(B\"?>",
     "19 extern(|xml|{ |b|=|\"\\x1B$B\"}{ |c|=|\"\\x1B(B\"}|)", "iso2022=false"},
    {"without the option free text has none", "php \"\033$B\"?>\033(B\" ?>x",
     "19 extern(|php||) free(<?php \"\\x1B$B\"?>) rest(\\x1B(B\" ?>x)", "iso2022=false"},
};

constexpr RecognizerRow CLOSING_MARKS[] = {
    {"the closing mark in two pieces", "?>x", "19 extern(|||) rest(x)", "state=3"},
};

constexpr RecognizerRow REPLACED_FIELDS[] = {
    {"prefix, name and suffix", " xml\t?>", "19 extern( |xml||\\t)", "suffix=before"},
    {"by nothing, too", "xml a='b'?>", "19 extern(|xml|{ |a|=|'b'}|)", "suffix=before"},
    {"the text", "php?>", "19 extern(|php?||) free(<?php?>)", "text=before"},
};

constexpr StateRow STATES[] = {{"", 0},        {" ", 0},    {" xml", 1},   {"php?", 1}, {"xml ", 2}, {"xml a='b' ?", 2},
                               {"xml a/ ", 2}, {"php ", 4}, {"php '?>", 4}};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", "xml ?>x", {19, 6}, "extern(|xml|| )"},
    {NEW_RECORD, "state=1", "php>x", {19, 4}, "extern(|php||) free(<?php>)"},
    {NEW_RECORD, "state=2", " b=c?>x", {19, 6}, "extern(||{ |b|=|c}|)"},
    {NEW_RECORD, "state=2", ">", {11, 0}, "extern(|||)"},
    {NEW_RECORD, "state=3", "?>x", {19, 2}, "extern(|||)"},
    {NEW_RECORD, "state=3", "?", {0, 1}, "extern(|||)"},
    {NEW_RECORD, "state=3", "?x", {11, 1}, "extern(|||)"},
    {NEW_RECORD, "state=3", "?\?>", {11, 1}, "extern(|||)"},
    {NEW_RECORD, "state=3", ">", {11, 0}, "extern(|||)"},
    {NEW_RECORD, "state=3", "/>", {11, 0}, "extern(|||)"},
    {NEW_RECORD, "state=3", " ?>", {11, 0}, "extern(|||)"},
    {NEW_RECORD, "state=3", "x", {11, 0}, "extern(|||)"},
    {NEW_RECORD, "state=4", "a?>x", {19, 3}, "extern(|||) free(a?>)"},
    {NEW_RECORD, "state=5", ">x", {19, 1}, "extern(|||)"},
    {NEW_RECORD, "state=5", "?>", {11, 0}, "extern(|||)"},
    {NEW_RECORD, "state=5", " >", {11, 0}, "extern(|||)"},
    {NEW_RECORD, "state=5", "<", {11, 0}, "extern(|||)"},
    {NEW_RECORD, "state=5", "/>", {11, 0}, "extern(|||)"},
};

constexpr RecognizerCall MALFORMED[] = {
    {NEW_RECORD, "", "xml a=b c? >", {11, 11}, "extern(|xml|{ |a|=|b}|)", "state=2"},
    {NEW_RECORD, "", "xml a=b ? >", {11, 10}, "extern(|xml|{ |a|=|b}|)", "state=2"},
    {NEW_RECORD, "", " xml a=b c=?>", {11, 12}, "extern( |xml|{ |a|=|b}|)", "state=5"},
    {NEW_RECORD, "", "xml a=b>", {11, 7}, "extern(|xml|{ |a|=|b}|)", "state=3"},
    {NEW_RECORD, "", "xml a='b' >", {11, 10}, "extern(|xml|{ |a|=|'b'}| )", "state=3"},
    {NEW_RECORD, "", "xml c >", {11, 6}, "extern(|xml|{ |c}| )", "state=3"},
    {NEW_RECORD, "", "xml a/ b", {11, 7}, "extern(|xml|{ |a}| , slash)", "state=5"},
};

/// The text reaches the record together with the end.
constexpr RecognizerCall TEXT_AT_THE_END[] = {
    {NEW_RECORD, "", "php a?", {0, 6}, "extern(|php||)", "freeStyle=false"},
    {CONTINUED, "", ">", {19, 1}, "extern(|php||) free(<?php a?>)"},
};

/// Members begin with `BeginParse`, and where their states are entered.
constexpr RecognizerCall MEMBERS[] = {
    {NEW_RECORD, "", "  ", {0, 2}, "extern(|||)"},
    {BEGUN_AGAIN, "state=0", " xml ?>", {19, 7}, "extern( |xml|| )"},
    {NEW_RECORD, "", "xm", {0, 2}, "extern(|||)"},
    {BEGUN_AGAIN, "state=1", "xml ?>", {19, 6}, "extern(|xml|| )"},
    {NEW_RECORD, "", "xml a='b", {0, 8}, "extern(|xml||)"},
    {BEGUN_AGAIN, "state=2", " c='d'?>", {19, 8}, "extern(||{ |c|=|'d'}|)"},
    {NEW_RECORD, "", "xml a  ", {0, 7}, "extern(|xml||)"},
    {BEGUN_AGAIN, "state=2", " c?>", {19, 4}, "extern(||{ |c}|)"},
    {NEW_RECORD, "", "php 'x", {0, 6}, "extern(|php||)"},
    {BEGUN_AGAIN, "state=4", "a?>", {19, 3}, "extern(|||) free(a?>)"},
    {NEW_RECORD, "", "php x", {0, 5}, "extern(|php||)"},
    {BEGUN_AGAIN, "state=4", "a?>", {19, 3}, "extern(|||) free(a?>)"},
    {NEW_RECORD, "", "abc", {0, 3}, "extern(|||)"},
    {CONTINUED, "state=0", "xml ?>", {19, 6}, "extern(|xml|| )"},
    {NEW_RECORD, "", "xml a='b", {0, 8}, "extern(|xml||)"},
    {CONTINUED, "state=0", "xml c='d'?>", {19, 11}, "extern(|xml|{ |c|=|'d'}|)"},
    {NEW_RECORD, "", "='abc", {0, 5}, "extern(|||)"},
    {CONTINUED, "state=1", "php?>", {19, 5}, "extern(|php?||) free(<?php?>)"},
};

constexpr RecognizerRow NARROW_SPACES[] = {
    {"bytes from 128 up are no white space", "xml\xA0?>", "19 extern(|xml\\xA0?||) free(<?xml\\xA0?>)"},
};

constexpr RecognizerRow WIDE_SPACES_TOO[] = {
    {"U+00A0 and U+0085", "\\u0085xml\\u00A0?>", "19 extern(\\u0085|xml||\\u00A0)"},
    {"all around", "\\u3000xml\\u2028b\\u2003=\\u3000\"\\u3042\"\\u202F?>",
     "19 extern(\\u3000|xml|{\\u2028|b|\\u2003=\\u3000|\"\\u3042\"}|\\u202F)"},
};

constexpr RecognizerRow NARROW_TARGETS[] = {
    {"the high bit set", "\xF8ml ?>", "19 extern(|\\xF8ml||) free(<?\\xF8ml ?>)"},
};

constexpr RecognizerRow WIDE_TARGETS[] = {
    {"fullwidth letters", "\\uFF38\\uFF2D\\uFF2C?>",
     "19 extern(|\\uFF38\\uFF2D\\uFF2C?||) free(<?\\uFF38\\uFF2D\\uFF2C?>)"},
    {"the low byte is that of \"x\"", "\\u0178ml >", "19 extern(|\\u0178ml||) free(<?\\u0178ml >)"},
    {"the low byte is that of \"-\"", "xml\\u012D>", "19 extern(|xml\\u012D||) free(<?xml\\u012D>)"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low bytes are those of \"?\" and \">\"", "xml a\\u013F b=\\u013F\\u013E?>",
     "19 extern(|xml|{ |a\\u013F}{ |b|=|\\u013F\\u013E}|)"},
    {"the low byte is that of \"/\"", "xml \\u012F>", "11 rest(>)"},
};

const auto SUITE = RecognizerSuite<HTML::ExternTagSimpleParser>("ExternTagTest")
                       .Rows("Targets", TARGETS)
                       .Rows("FreeStyle", FREE_STYLE)
                       .Rows("Declarations", DECLARATIONS)
                       .Rows("DeclarationsThatEndWithASlash", DECLARATIONS_WITH_SLASHES)
                       .Rows("Failures", FAILURES)
                       .Rows("EscapeRunsInQuotedValues", ESCAPE_RUNS, "iso2022")
                       .Rows("ClosingMarks", CLOSING_MARKS)
                       .Rows("WhatTheRecordHeldBeforeIsReplaced", REPLACED_FIELDS, "prefix=before name=before")
                       .States(STATES)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("AFailureLeavesTheRecordAsItWas", MALFORMED)
                       .Calls("TheTextIsInTheRecordOnlyAtTheEnd", TEXT_AT_THE_END)
                       .Calls("MembersBeginWithTheirStates", MEMBERS)
                       .AttributesWithoutValues("xml b\t=\n'c' d\t=\n\"e\"?>", {"xml f  g?>", "xml f  g/>"})
                       .NarrowRows("NoWhiteSpaceIsBeyondAscii", NARROW_SPACES)
                       .WideRows("WhiteSpaceReachesBeyondAscii", WIDE_SPACES_TOO)
                       .NarrowRows("OnlyAsciiLettersFoldInTargets", NARROW_TARGETS)
                       .WideRows("OnlyAsciiLettersFoldInTargets", WIDE_TARGETS)
                       .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
