#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/Escape2022SimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/TextSimpleParser.h"
#include "tests/html/text/LiteralModel.h"
#include "tests/support/Flavours.h"
#include "tests/support/RandomInput.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

constexpr int ROUNDS = 5000;

struct TextOptions {
    bool cComment = false;
    bool cppComment = false;
    bool sQuoteString = false;
    bool dQuoteString = false;
    bool jsRegEx = false;
    bool escape2022 = false;
};

/// The line of the outcome; `options.escape2022` counts as off for wide text.
std::string ModelText(std::string_view input, const TextOptions& options) {
    std::string stops = "<";
    if (options.cComment || options.cppComment)
        stops += '/';
    if (options.sQuoteString)
        stops += '\'';
    if (options.dQuoteString)
        stops += '"';
    if (options.escape2022)
        stops += '\033';
    std::string text;
    std::size_t place = 0;
    const auto handOver = [&](std::string_view next) {
        std::string line = "19 text(" + Trace::Escape(text) + ") next(" + std::string(next) + ")";
        return place < input.size() ? line + " rest(" + Trace::Escape(input.substr(place)) + ")" : line;
    };
    for (;;) {
        text += ModelRun(input, &place, stops);
        if (place == input.size())
            break;
        const char stop = input[place++];
        if (stop == '<')
            return handOver("GenericTagSimpleParser");
        if (stop == '\'')
            return handOver("SQuoteStringSimpleParser");
        if (stop == '"')
            return handOver("DQuoteStringSimpleParser");
        if (stop == '\033') {
            ModelEscapeRun(input, &place, &text);
            continue;
        }
        if (place < input.size() && input[place] == '*' && options.cComment) {
            ++place;
            return handOver("CCommentSimpleParser");
        }
        if (place < input.size() && input[place] == '/' && options.cppComment) {
            ++place;
            return handOver("CPPCommentSimpleParser");
        }
        if (place < input.size() && options.jsRegEx)
            return handOver("JSRegExSimpleParser");
        text += '/';
    }
    return "end 19 text(" + Trace::Escape(text) + ")";
}

template <typename Flavour>
class TextModelTest : public testing::Test {};

TYPED_TEST_SUITE(TextModelTest, Flavours);

TYPED_TEST(TextModelTest, RandomText) {
    using Parser = HTML::TextSimpleParser<typename TypeParam::C, typename TypeParam::S>;
    RandomInput random(1, {"a", "b ", "\n", "<", "/", "*", "//", "/*", "'", "\"", "\\", "\033", "$B", "$(", "$)C", "(B",
                           ".A", "\033(B"});
    for (int round = 0; round < ROUNDS; ++round) {
        TextOptions options;
        options.cComment = random.Flip();
        options.cppComment = random.Flip();
        options.sQuoteString = random.Flip();
        options.dQuoteString = random.Flip();
        options.jsRegEx = random.Flip();
        options.escape2022 = random.Flip();
        const std::string input = random.Next(12);
        TextOptions effective = options;
        effective.escape2022 = options.escape2022 && !TypeParam::WIDE;
        const std::string expected = ModelText(input, effective);
        ASSERT_NO_FATAL_FAILURE(CheckRandomly<Parser>(input, expected, &random, [&](auto* data) {
            data->allowCComment = options.cComment;
            data->allowCPPComment = options.cppComment;
            data->allowSQuoteString = options.sQuoteString;
            data->allowDQuoteString = options.dQuoteString;
            data->allowJSRegEx = options.jsRegEx;
            data->allowEscape2022 = options.escape2022;
        }));
    }
}

TYPED_TEST(TextModelTest, RandomEscapeRuns) {
    using Parser = HTML::Escape2022SimpleParser<typename TypeParam::C, typename TypeParam::S>;
    RandomInput random(
        2, {"a", "\n", "<", "$", "B", "(", "C", ")", "J", ".", "F", "A", "+", "M", "*", "H", "\033", "$B", "\033(B"});
    for (int round = 0; round < ROUNDS; ++round) {
        const std::string input = random.Next(12);
        std::string text;
        std::size_t place = 0;
        const bool complete = ModelEscapeRun(input, &place, &text);
        std::string expected = (complete ? "19 text(" : "end 19 text(") + Trace::Escape(text) + ")";
        if (place < input.size())
            expected += " rest(" + Trace::Escape(std::string_view(input).substr(place)) + ")";
        ASSERT_NO_FATAL_FAILURE(CheckRandomly<Parser>(input, expected, &random));
    }
}

/// The end of a literal: the first of `ends` that no backslash precedes, or the first of `always`.
std::size_t ModelLiteralEnd(std::string_view input, std::size_t begin, std::string_view always, std::string_view ends,
                            bool allowEscapes, bool* escaped) {
    std::size_t place = begin;
    for (; place < input.size(); ++place) {
        const char character = input[place];
        if (always.find(character) != always.npos || (!*escaped && ends.find(character) != ends.npos))
            break;
        *escaped = allowEscapes && !*escaped && character == '\\';
    }
    return place;
}

TYPED_TEST(TextModelTest, RandomDoubleQuotedStrings) {
    using Parser = HTML::DQuoteStringSimpleParser<typename TypeParam::C, typename TypeParam::S>;
    RandomInput random(3, {"a", "\n", "<", "'", "\"", "\\", "\\\\", "\033", "$B", "(B", "\033$B", "\033(J"});
    for (int round = 0; round < ROUNDS; ++round) {
        const bool allowEscapes = random.Flip();
        const bool allowEscape2022 = random.Flip();
        const std::string input = random.Next(12);
        std::string text;
        std::size_t place = 0;
        bool escaped = false;
        bool complete = false;
        bool inRun = false;
        while (!complete && place < input.size()) {
            const std::size_t end = ModelLiteralEnd(
                input, place, "", allowEscape2022 ? std::string_view("\"\033") : "\"", allowEscapes, &escaped);
            text += input.substr(place, end - place);
            place = end;
            if (place == input.size())
                break;
            const char stop = input[place++];
            if (stop == '"')
                complete = true;
            else
                inRun = !ModelEscapeRun(input, &place, &text);
        }
        std::string expected = complete ? "19 text(" + Trace::Escape(text) + ")" : "end 16";
        if (!complete && !inRun)
            expected += " text(" + Trace::Escape(text) + ")";
        if (place < input.size())
            expected += " rest(" + Trace::Escape(std::string_view(input).substr(place)) + ")";
        ASSERT_NO_FATAL_FAILURE(CheckRandomly<Parser>(input, expected, &random, [&](auto* data) {
            data->allowEscapes = allowEscapes;
            data->allowEscape2022 = allowEscape2022;
        }));
    }
}

TYPED_TEST(TextModelTest, RandomRegularExpressions) {
    using Parser = HTML::JSRegExSimpleParser<typename TypeParam::C, typename TypeParam::S>;
    RandomInput random(4, {"a", "[", "]", "<", "/", "\\", "\\\\", "\\/", "\n", "\r"});
    for (int round = 0; round < ROUNDS; ++round) {
        const bool allowEscapes = random.Flip();
        const std::string input = random.Next(8);
        bool escaped = false;
        const std::size_t end = ModelLiteralEnd(input, 0, "<\n\r", "/", allowEscapes, &escaped);
        const bool complete = end < input.size();
        std::string expected =
            (complete ? "19 text(/" : "end 19 text(/") + Trace::Escape(std::string_view(input).substr(0, end)) + ")";
        if (complete)
            expected += " rest(" + Trace::Escape(std::string_view(input).substr(end)) + ")";
        ASSERT_NO_FATAL_FAILURE(
            CheckRandomly<Parser>(input, expected, &random, [&](auto* data) { data->allowEscapes = allowEscapes; }));
    }
}

}  // namespace
}  // namespace Kestra::Test
