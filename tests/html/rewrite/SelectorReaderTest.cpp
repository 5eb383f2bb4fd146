#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "html/rewrite/SelectorReader.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::ReadSelector;
using HTML::SelectorCompound;
using HTML::SelectorCondition;

/// Selectors as they were read: "/" before a child, " " before a descendant; conditions with their
/// operators and values in "{}", with an "i" where the case is ignored; "!" for what is never true.
std::string Describe(const std::vector<SelectorCompound>& compounds) {
    std::string described;
    for (const SelectorCompound& compound : compounds) {
        if (&compound != &compounds.front())
            described += compound.isChild ? '/' : ' ';
        described += compound.hasType ? compound.type : "*";
        for (const SelectorCondition& condition : compound.conditions) {
            constexpr const char* OPERATORS[] = {"!", ".", "", "=", "~=", "|=", "^=", "$=", "*="};
            described += '{' + condition.name + OPERATORS[condition.kind] + condition.value +
                         (condition.ignoresCase ? "}i" : "}");
        }
    }
    return described;
}

struct Row {
    const char* note;
    std::string_view selector;
    std::string_view read;
};

constexpr Row ROWS[] = {
    {"a type", "a", "a"},
    {"a type in lower case", "ABC-Z_9", "abc-z_9"},
    {"names may begin with a dash", "-a", "-a"},
    {"two dashes are a name", "--", "--"},
    {"names may begin with a low line", "_", "_"},
    {"dashes before the end of a comment of markup", "a-->b", "a--/b"},
    {"the same in an id", "#-->b", "*{id=--}/b"},
    {"beyond ASCII", "\u00E9\u4E00\U0001F600", "\u00E9\u4E00\U0001F600"},
    {"no-break space is a letter here", "a\u00A0b", "a\u00A0b"},
    {"any type", "*", "*"},
    {"white space around", " \t\r\n\fa \t\r\n\f", "a"},
    {"ids and classes keep their case", "A#Bc.De", "a{id=Bc}{.De}"},
    {"a descendant", "a \n b", "a b"},
    {"a child", "a>b", "a/b"},
    {"a child between white space", "a\t>\nb", "a/b"},
    {"many of them", "a b>c  >  d e", "a b/c/d e"},
    {"a compound without a type", "a > .b", "a/*{.b}"},
    {"any type and more", "* > *.b", "*/*{.b}"},

    {"an attribute", "[a]", "*{a}"},
    {"an attribute between white space", "[ \tA\n]", "*{a}"},
    {"every operator", "[a=b][a~=b][a|=b][a^=b][a$=b][a*=b]", "*{a=b}{a~=b}{a|=b}{a^=b}{a$=b}{a*=b}"},
    {"white space around an operator", "[ a \t~=\n b ]", "*{a~=b}"},
    {"a string", "[a=\"b c'\"]", "*{a=b c'}"},
    {"the other string", "[a='b c\"']", "*{a=b c\"}"},
    {"an empty string", "[a='']", "*{a=}"},
    {"markup in a string", "[a=']>, :x/*']", "*{a=]>, :x/*}"},
    {"values keep their case", "[A=B]", "*{a=B}"},
    {"the flag i", "[a=B i]", "*{a=b}i"},
    {"the flag I", "[a=B I ]", "*{a=b}i"},
    {"the flag s", "[a=B s]", "*{a=B}"},
    {"the flag S", "[a=B S]", "*{a=B}"},
    {"a flag right after a string", "[a='B'i]", "*{a=b}i"},
    {"a flag with an escape", "[a=B \\69]", "*{a=b}i"},
    {"a value that looks like a flag", "[a=i]", "*{a=i}"},
    {"a value and a flag that look alike", "[a=i i]", "*{a=i}i"},
    {"only A to Z are put into lower case", "\u00C9[\u00C9='\u00C9' i]", "\u00C9{\u00C9=\u00C9}i"},
    {"an empty value of =", "[a='']", "*{a=}"},
    {"an empty value of |=", "[a|='']", "*{a|=}"},
    {"an empty value of the others", "[a~=''][a^=''][a$=''][a*='']", "*{a!}{a!}{a!}{a!}"},
    {"white space in a word", "[a~='b c'][a~='\tb'][a~=' ']", "*{a!b c}{a!\tb}{a! }"},

    {"an escape", "\\61", "a"},
    {"an escaped letter is put into lower case too", "\\41 \\B", "a\v"},
    {"up to six digits", "\\0000411\\0000411", "a1a1"},
    {"a white space after digits", "\\61 b\\61\tb\\61\nb\\61\fb\\61\rb\\61\r\nb", "abababababab"},
    {"one white space alone", "\\61  b", "a b"},
    {"six digits and a white space", "\\000061 b", "ab"},
    {"digits in any case", ".\\e9\\E9", "*{.\u00E9\u00E9}"},
    {"other characters", "\\g\\:\\.\\#\\ \\,\\\\\\\"\\-", "g:.# ,\\\"-"},
    {"a character beyond ASCII", "\\\u00E9\\\U0001F600", "\u00E9\U0001F600"},
    {"an escaped dash may begin a name", "\\-\\-", "--"},
    {"a digit at the begin", "#\\31 23", "*{id=123}"},
    {"a dash and an escape", "-\\31", "-1"},
    {"the greatest character", "\\10FFFF", "\U0010FFFF"},
    {"what is no character", "\\110000\\D800\\dfff\\0", "\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"the characters beside the surrogates", "\\D7FF\\E000", "\uD7FF\uE000"},
    {"the lengths of UTF-8", "\\7F\\80\\7FF\\800\\FFFF\\10000", "\x7F\u0080\u07FF\u0800\uFFFF\U00010000"},
    {"escapes everywhere", "\\61#\\62.\\63[\\64=\\65]", "a{id=b}{.c}{d=e}"},
    {"escapes in a string", "[a='\\62\\'\\63 c\\\\']", "*{a=b'cc\\}"},
    {"an escaped end of a line in a string", "[a='b\\\nc\\\rd\\\r\ne\\\ff']", "*{a=bcdef}"},
    {"a class with white space in it", ".a\\ b", "*{!a b}"},
    {"other controls in a string", "[a='\x01\t\x7F']", "*{a=\x01\t\x7F}"},
};

TEST(SelectorReaderTest, ReadsSelectors) {
    for (const Row& row : ROWS) {
        std::vector<SelectorCompound> compounds;
        std::string message = "untouched";
        ASSERT_TRUE(ReadSelector(row.selector, &compounds, &message)) << row.note << ": " << message;
        EXPECT_EQ(Describe(compounds), row.read) << row.note;
        EXPECT_EQ(message, "untouched") << row.note;
    }
}

constexpr Row REFUSED[] = {
    {"nothing", "", "character 1: the selector is empty"},
    {"white space", " \n", "character 1: the selector is empty"},
    {"a list", "a, b", "character 2: lists of selectors, with \",\", are not supported"},
    {"a list after white space", "a ,b", "character 3: lists of selectors, with \",\", are not supported"},
    {"the empty begin of a list", ",a", "character 1: lists of selectors, with \",\", are not supported"},
    {"the next sibling", "a + b", "character 3: the combinator \"+\" is not supported"},
    {"the next sibling without white space", "a+b", "character 2: the combinator \"+\" is not supported"},
    {"later siblings", "a ~ b", "character 3: the combinator \"~\" is not supported"},
    {"a combinator at the begin", "> a", "character 1: nothing precedes the combinator \">\""},
    {"a combinator after white space", "\n> a", "character 2: nothing precedes the combinator \">\""},
    {"a combinator at the end", "a >", "character 3: nothing follows the combinator \">\""},
    {"white space after it", "a> \t", "character 2: nothing follows the combinator \">\""},
    {"two combinators", "a > > b", "character 5: nothing precedes the combinator \">\""},
    {"another combinator after one", "a > + b", "character 5: the combinator \"+\" is not supported"},
    {"a pseudo-class", "a:hover", "character 2: pseudo-classes such as \":hover\" are not supported"},
    {"a pseudo-class after more", "a .b:not(c)", "character 5: pseudo-classes such as \":hover\" are not supported"},
    {"a pseudo-class alone", ":root", "character 1: pseudo-classes such as \":hover\" are not supported"},
    {"a pseudo-element", "a::before", "character 2: pseudo-elements such as \"::before\" are not supported"},
    {"a namespace", "svg|a", "character 4: namespaces, with \"|\", are not supported"},
    {"any namespace", "*|a", "character 2: namespaces, with \"|\", are not supported"},
    {"no namespace", "|a", "character 1: namespaces, with \"|\", are not supported"},
    {"a column", "a || b", "character 3: namespaces, with \"|\", are not supported"},
    {"a namespace of an attribute", "[a|b]", "character 3: namespaces, with \"|\", are not supported"},
    {"any namespace of an attribute", "[*|b]", "character 3: namespaces, with \"|\", are not supported"},
    {"no namespace of an attribute", "[|b]", "character 2: namespaces, with \"|\", are not supported"},
    {"a comment", "a/* */", "character 2: comments are not supported"},
    {"a comment alone", "/**/a", "character 1: comments are not supported"},
    {"a slash", "a /b", "character 3: \"/\" is not expected here"},
    {"a number", "1", "character 1: \"1\" is not expected here"},
    {"a dash", "-", "character 1: \"-\" is not expected here"},
    {"a dash and a digit", "a -1", "character 3: \"-\" is not expected here"},
    {"the end of a comment of markup", "a -->b", "character 3: \"-\" is not expected here"},
    {"an ampersand", "& a", "character 1: \"&\" is not expected here"},
    {"a function", "a(b)", "character 2: \"(\" is not expected here"},
    {"an end alone", "a]", "character 2: \"]\" is not expected here"},
    {"a string alone", "'a'", "character 1: \"'\" is not expected here"},
    {"a control", "a\x01", "character 2: this character is not expected here"},
    {"vertical tab is no white space", "a\vb", "character 2: this character is not expected here"},
    {"DEL", "\x7F", "character 1: this character is not expected here"},
    {"a type after any type", "*a", "character 2: a type must be the first part of its compound"},
    {"any type twice", "**", "character 2: a type must be the first part of its compound"},
    {"any type after a type", "a*", "character 2: a type must be the first part of its compound"},
    {"a type after an attribute", "[a]b", "character 4: a type must be the first part of its compound"},
    {"any type after a class", ".a*", "character 3: a type must be the first part of its compound"},

    {"an id without a name", "a#", "character 3: a name is expected after \"#\""},
    {"an id that begins with a digit", "#1a", "character 2: a name is expected after \"#\""},
    {"an id that begins with a dash and a digit", "#-1", "character 2: a name is expected after \"#\""},
    {"two marks of ids", "##a", "character 2: a name is expected after \"#\""},
    {"a class without a name", ". a", "character 2: a name is expected after \".\""},
    {"a class that begins with a digit", "a.5", "character 3: a name is expected after \".\""},
    {"a class that ends a comment of markup", ".-->a", "character 2: a name is expected after \".\""},
    {"any class", ".*", "character 2: a name is expected after \".\""},

    {"an attribute without a name", "[]", "character 2: the name of an attribute is expected here"},
    {"a value without a name", "[=a]", "character 2: the name of an attribute is expected here"},
    {"a string for a name", "['a']", "character 2: the name of an attribute is expected here"},
    {"any attribute", "[*]", "character 2: the name of an attribute is expected here"},
    {"an attribute that is not closed", "a[b", "character 2: this \"[\" is not closed"},
    {"nothing but its begin", "a[ ", "character 2: this \"[\" is not closed"},
    {"no value at the end", "[a=", "character 1: this \"[\" is not closed"},
    {"a value at the end", "[a=b ", "character 1: this \"[\" is not closed"},
    {"a flag at the end", "[a=b i", "character 1: this \"[\" is not closed"},
    {"two names", "[a b]", "character 4: \"]\", \"=\", \"~=\", \"|=\", \"^=\", \"$=\" or \"*=\" is expected here"},
    {"an unknown operator", "[a!=b]",
     "character 3: \"]\", \"=\", \"~=\", \"|=\", \"^=\", \"$=\" or \"*=\" is expected here"},
    {"a comment in it", "[a/**/]",
     "character 3: \"]\", \"=\", \"~=\", \"|=\", \"^=\", \"$=\" or \"*=\" is expected here"},
    {"half of an operator", "[a~b]", "character 4: \"=\" is expected after \"~\""},
    {"white space in an operator", "[a^ =b]", "character 4: \"=\" is expected after \"^\""},
    {"half of an operator at the end", "[a$", "character 4: \"=\" is expected after \"$\""},
    {"two equals signs", "[a==b]", "character 4: a name or a string is expected here"},
    {"no value", "[a=]", "character 4: a name or a string is expected here"},
    {"a number for a value", "[a=1]", "character 4: a name or a string is expected here"},
    {"a path for a value", "[a=/b]", "character 4: a name or a string is expected here"},
    {"a path in a value", "[a=b/c]", "character 5: \"]\" is expected here"},
    {"two values", "[a='b''c']", "character 7: \"]\" is expected here"},
    {"an unknown flag", "[a=b x]", "character 6: the only flags are \"i\" and \"s\""},
    {"a longer flag", "[a=b is]", "character 6: the only flags are \"i\" and \"s\""},
    {"two flags", "[a=b i s]", "character 8: \"]\" is expected here"},
    {"a flag without a value", "[a i]",
     "character 4: \"]\", \"=\", \"~=\", \"|=\", \"^=\", \"$=\" or \"*=\" is expected here"},

    {"a string that is not closed", "[a='b]", "character 4: this string is not closed"},
    {"a string that is closed by the other quote", "[a=\"b']", "character 4: this string is not closed"},
    {"a string after an escaped quote", "[a='b\\']", "character 4: this string is not closed"},
    {"a string that ends with a backslash", "[a='b\\", "character 4: this string is not closed"},
    {"the end of a line in a string", "[a='b\nc']", "character 6: a line ends within a string"},
    {"another end of a line in a string", "[a='\rc']", "character 5: a line ends within a string"},
    {"a form feed in a string", "[a=\"\f\"]", "character 5: a line ends within a string"},

    {"a backslash at the end", "a\\", "character 2: nothing follows the \"\\\""},
    {"a backslash alone", "\\", "character 1: nothing follows the \"\\\""},
    {"a backslash after the mark of a class", ".\\", "character 2: nothing follows the \"\\\""},
    {"an escaped end of a line", "a\\\nb", "character 2: a \"\\\" cannot escape the end of a line here"},
    {"an escaped end of a line in an id", "#\\\r", "character 2: a \"\\\" cannot escape the end of a line here"},
    {"an escaped end of a line in an attribute", "[\\\fa]",
     "character 2: a \"\\\" cannot escape the end of a line here"},
    {"an escaped end of a line after a name", "[a\\\n]", "character 3: a \"\\\" cannot escape the end of a line here"},
    {"an escaped end of a line in a value", "[a=\\\n]", "character 4: a \"\\\" cannot escape the end of a line here"},

    {"characters are counted, not bytes", "\u00E9\u4E00\U0001F600,",
     "character 4: lists of selectors, with \",\", are not supported"},
    {"NUL", "a\0b"sv, "character 2: a NUL character is not supported"},
    {"NUL in a string", "[a='\0']"sv, "character 5: a NUL character is not supported"},
    {"an escaped NUL", "\\\0"sv, "character 2: a NUL character is not supported"},
    {"NUL at the end", "a\0"sv, "character 2: a NUL character is not supported"},
    {"a continuation alone", "\u00E9\x80", "character 2: this is not well-formed UTF-8"},
    {"a byte that begins nothing", "a\xFF", "character 2: this is not well-formed UTF-8"},
    {"a character cut by the end", "a\xE4\xB8", "character 2: this is not well-formed UTF-8"},
    {"a character cut by another one", "a\xE4\xB8.b", "character 2: this is not well-formed UTF-8"},
    {"longer than it need be", "\xC1\xBF", "character 1: this is not well-formed UTF-8"},
    {"longer than it need be, three bytes", "\xE0\x9F\xBF", "character 1: this is not well-formed UTF-8"},
    {"longer than it need be, four bytes", "\xF0\x8F\xBF\xBF", "character 1: this is not well-formed UTF-8"},
    {"a surrogate", "\xED\xA0\x80", "character 1: this is not well-formed UTF-8"},
    {"beyond the last character", "\xF4\x90\x80\x80", "character 1: this is not well-formed UTF-8"},
    {"not well-formed in a string", "[a='\xE9']", "character 5: this is not well-formed UTF-8"},
};

TEST(SelectorReaderTest, SaysWhatIsWrong) {
    for (const Row& row : REFUSED) {
        std::vector<SelectorCompound> compounds(3);
        std::string message;
        EXPECT_FALSE(ReadSelector(row.selector, &compounds, &message)) << row.note;
        EXPECT_EQ(message, row.read) << row.note;
        EXPECT_EQ(compounds.size(), 3U) << row.note;
        EXPECT_FALSE(ReadSelector(row.selector, &compounds, nullptr)) << row.note;
    }
}

TEST(SelectorReaderTest, ReadsEveryShortTextToItsEnd) {
    // Whatever the text, it is read or refused at one of its characters, or right after the last
    // one. In heap blocks of its exact size.
    constexpr std::string_view CHARACTERS = "a1-*#.[]='\\ \n>i~|";
    constexpr std::size_t TEXTS = CHARACTERS.size() * CHARACTERS.size() * CHARACTERS.size() * CHARACTERS.size();
    std::size_t read = 0;
    for (std::size_t number = 0; number < TEXTS; ++number) {
        std::vector<char> text;
        for (std::size_t rest = number; rest > 0; rest /= CHARACTERS.size())
            text.push_back(CHARACTERS[rest % CHARACTERS.size()]);
        text.shrink_to_fit();
        const std::string_view selector(text.data(), text.size());
        std::vector<SelectorCompound> compounds;
        std::string message;
        if (ReadSelector(selector, &compounds, &message)) {
            ++read;
            ASSERT_FALSE(compounds.empty()) << Trace::Escape(std::string(selector));
            continue;
        }
        ASSERT_EQ(message.compare(0, 10, "character "), 0) << message;
        const std::size_t place = std::stoul(message.substr(10));
        ASSERT_GE(place, 1U) << Trace::Escape(std::string(selector));
        ASSERT_LE(place, selector.size() + 1) << Trace::Escape(std::string(selector));
    }
    EXPECT_GT(read, 1000U);
}

TEST(SelectorReaderTest, ReadsLongSelectorsInLinearTime) {
    // Neither a stack nor a square of these lengths would do.
    constexpr std::size_t COUNT = 50000;
    for (const std::string_view part :
         {"a ", "a>", "[a]", ".a", "#a", "[a=b i]", "\\61", "[a='b']", "-", "[a~='\\\n']"}) {
        std::string selector = "a";
        for (std::size_t i = 0; i < COUNT; ++i)
            selector += part;
        selector += "a";
        std::vector<SelectorCompound> compounds;
        std::string message;
        if (ReadSelector(selector, &compounds, &message))
            EXPECT_EQ(compounds.size(), part == "a " || part == "a>" ? COUNT + 1 : 1) << part;
        else
            EXPECT_EQ(message.substr(message.find(':')), ": a type must be the first part of its compound") << part;
        EXPECT_FALSE(ReadSelector(selector + ',', &compounds, &message)) << part;
    }
}

}  // namespace
}  // namespace Kestra::Test
