#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "tests/html/text/LiteralModel.h"
#include "tests/support/Flavours.h"
#include "tests/support/RandomInput.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

constexpr int ROUNDS = 5000;
constexpr std::size_t NPOS = std::string_view::npos;

/// " rest(...)" of what stands from `place` on, if anything.
std::string ModelRest(std::string_view input, std::size_t place) {
    return place < input.size() ? " rest(" + Trace::Escape(input.substr(place)) + ")" : "";
}

std::string ModelComment(std::string_view input) {
    const std::size_t end = input.find("-->");
    if (end == NPOS)
        return "end 19 comment(" + Trace::Escape(input) + ", open)";
    return "19 comment(" + Trace::Escape(input.substr(0, end)) + ")" + ModelRest(input, end + 3);
}

std::string ModelCData(std::string_view input) {
    const std::size_t end = input.find("]]");
    if (end == NPOS || end + 2 == input.size())
        return "end 19 cdata(|" + Trace::Escape(input) + ", open)";
    if (input[end + 2] == '>')
        return "19 cdata(|" + Trace::Escape(input.substr(0, end)) + ")" + ModelRest(input, end + 3);
    return "19 cdata(|" + Trace::Escape(input.substr(0, end + 2)) + ", open)" + ModelRest(input, end + 2);
}

std::string ModelConditional(std::string_view input, const Cuts& cuts) {
    const std::size_t bracket = input.find(']');
    if (bracket == NPOS)
        return "end 19 conditional(|" + Trace::Escape(input) + "|, no-bracket, open)";
    const std::string begin = "conditional(|" + Trace::Escape(input.substr(0, bracket)) + "|";
    const std::size_t end = input.find('>', bracket);
    if (end == NPOS)
        return "end 19 " + begin + ", open)";
    std::size_t tail = bracket + 1;
    for (const std::size_t cut : cuts) {
        if (cut > tail && cut <= end)
            tail = cut;
    }
    return "19 " + begin + Trace::Escape(input.substr(tail, end - tail)) + ")" + ModelRest(input, end + 1);
}

std::string ModelBlockComment(std::string_view input) {
    const std::size_t end = input.find("*/");
    if (end != NPOS)
        return "19 text(" + Trace::Escape(input.substr(0, end)) + ")" + ModelRest(input, end + 2);
    if (input.ends_with('*'))
        input.remove_suffix(1);
    return "end 16 text(" + Trace::Escape(input) + ")";
}

std::string ModelLineComment(std::string_view input) {
    std::string text;
    std::size_t place = 0;
    const auto line = [&](const std::string& begin, const std::string& end = "") {
        return begin + " text(" + Trace::Escape(text) + ")" + end + ModelRest(input, place);
    };
    for (;;) {
        text += ModelRun(input, &place, "\n<");
        if (place == input.size())
            return line("end 16");
        if (input[place] == '\n')
            return line("19");
        const std::string_view construct = input.substr(place);
        if (construct == "<" || construct == "<!" || construct == "<!-") {
            place = input.size();
            return line("end 16");
        }
        if (construct.starts_with("<!--")) {
            place += 4;
            return line("19", " next(CommentTagSimpleParser)");
        }
        if (construct.starts_with("<!-")) {
            place += 3;
            return line("11");
        }
        if (construct.starts_with("<![")) {
            place += 3;
            const std::string word(ModelRun(input, &place, "\t\n\v\f\r =[]<>"));
            if (place == input.size())
                return line("end 16");
            if (word == "cdata" || word == "CDATA")
                return line("19", " next(CDATATagSimpleParser) keyword(" + word + ")");
            if (word == "if" || word == "endif")
                return line("19", " next(ConditionalTagSimpleParser) keyword(" + word + ")");
            return line("11");
        }
        const std::size_t length = construct[1] == '/' || construct[1] == '?' || construct[1] == '!' ? 2 : 1;
        text += construct.substr(0, length);
        place += length;
    }
}

/// Calls `check` for each string of up to `maxLength` characters of the alphabet.
void ForEveryString(std::string_view alphabet, std::size_t maxLength,
                    const std::function<void(const std::string&)>& check) {
    std::size_t count = 1;
    for (std::size_t length = 0; length <= maxLength; ++length, count *= alphabet.size()) {
        for (std::size_t number = 0; number < count; ++number) {
            std::string input(length, ' ');
            std::size_t digits = number;
            for (char& character : input) {
                character = alphabet[digits % alphabet.size()];
                digits /= alphabet.size();
            }
            ASSERT_NO_FATAL_FAILURE(check(input));
        }
    }
}

template <typename Flavour>
class SectionModelTest : public testing::Test {
protected:
    template <template <typename, typename> class Parser>
    static void Check(const std::string& input, const std::string& expected, RandomInput* random) {
        CheckRandomly<Parser<typename Flavour::C, typename Flavour::S>>(input, expected, random);
    }

    static void CheckConditional(const std::string& ascii, const Cuts& cuts) {
        using Parser = HTML::ConditionalTagSimpleParser<typename Flavour::C, typename Flavour::S>;
        const auto text = To<typename Flavour::S>(ascii);
        const std::basic_string_view<typename Flavour::C> input(text);
        const auto outcome = RunRecognizer<Parser>(input, cuts);
        ASSERT_EQ(DescribeOutcome(outcome, input, true), ModelConditional(ascii, cuts))
            << "for " << Trace::Escape(ascii) << " cut at " << Describe(cuts);
        ASSERT_EQ((Place{outcome.line, outcome.column}), PlaceAfter(input, outcome.consumed))
            << "for " << Trace::Escape(ascii);
    }
};

TYPED_TEST_SUITE(SectionModelTest, Flavours);

TYPED_TEST(SectionModelTest, Comments) {
    RandomInput random(21, {"-", "-", "--", ">", "-->", "a", "\n", "<!--", " ", "!"});
    for (int round = 0; round < ROUNDS; ++round) {
        const std::string input = random.Next(10);
        ASSERT_NO_FATAL_FAILURE(
            this->template Check<HTML::CommentTagSimpleParser>(input, ModelComment(input), &random));
    }
    ForEveryString("->a", 6, [&](const std::string& input) {
        this->template Check<HTML::CommentTagSimpleParser>(input, ModelComment(input), &random);
    });
}

TYPED_TEST(SectionModelTest, CDataSections) {
    RandomInput random(22, {"]", "]", "]]", ">", "]]>", "[", "a", "\n", " ", "<![CDATA["});
    for (int round = 0; round < ROUNDS; ++round) {
        const std::string input = random.Next(8);
        ASSERT_NO_FATAL_FAILURE(this->template Check<HTML::CDATATagSimpleParser>(input, ModelCData(input), &random));
    }
    ForEveryString("]>a", 6, [&](const std::string& input) {
        this->template Check<HTML::CDATATagSimpleParser>(input, ModelCData(input), &random);
    });
}

TYPED_TEST(SectionModelTest, ConditionalSections) {
    RandomInput random(23, {"]", ">", "]>", " IE", "a", "\n", "--", "[", "<"});
    for (int round = 0; round < 2 * ROUNDS; ++round) {
        const std::string input = random.Next(10);
        ASSERT_NO_FATAL_FAILURE(this->CheckConditional(input, {}));
        ASSERT_NO_FATAL_FAILURE(this->CheckConditional(input, random.NextCuts(input.size())));
    }
}

TYPED_TEST(SectionModelTest, BlockComments) {
    RandomInput random(24, {"*", "*", "/", "*/", "/*", "a", "\n", "<!--", "'", "//"});
    for (int round = 0; round < ROUNDS; ++round) {
        const std::string input = random.Next(8);
        ASSERT_NO_FATAL_FAILURE(
            this->template Check<HTML::CCommentSimpleParser>(input, ModelBlockComment(input), &random));
    }
    ForEveryString("*/a", 6, [&](const std::string& input) {
        this->template Check<HTML::CCommentSimpleParser>(input, ModelBlockComment(input), &random);
    });
}

TYPED_TEST(SectionModelTest, LineComments) {
    RandomInput random(25, {"<",  "<",     "</", "<?", "<!", "!", "-",  "--", "<![", "[", "CDATA", "cdata",
                            "if", "endif", " ",  "]",  "a",  ">", "\r", "\n", "/",   "=", "*/"});
    for (int round = 0; round < 2 * ROUNDS; ++round) {
        const std::string input = random.Next(10);
        ASSERT_NO_FATAL_FAILURE(
            this->template Check<HTML::CPPCommentSimpleParser>(input, ModelLineComment(input), &random));
    }
    ForEveryString("<!-[/\n", 5, [&](const std::string& input) {
        this->template Check<HTML::CPPCommentSimpleParser>(input, ModelLineComment(input), &random);
    });
}

}  // namespace
}  // namespace Kestra::Test
