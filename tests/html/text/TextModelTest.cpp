#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/html/text/LiteralModel.h"

namespace Kestra::Test {
namespace {

constexpr int ROUNDS = 5000;

std::string ModelText(std::string_view input, const ModelOptions& options) {
    const bool hasRuns = options.Has("allowEscape2022") && !options.isWide;
    std::string stops = "<";
    if (options.Has("allowCComment") || options.Has("allowCPPComment"))
        stops += '/';
    if (options.Has("allowSQuoteString"))
        stops += '\'';
    if (options.Has("allowDQuoteString"))
        stops += '"';
    if (hasRuns)
        stops += '\033';
    std::string text;
    std::size_t place = 0;
    const auto handOver = [&](std::string_view next) {
        return "19 text(" + Trace::Escape(text) + ") next(" + std::string(next) + ")" + ModelRest(input, place);
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
        if (place < input.size() && input[place] == '*' && options.Has("allowCComment")) {
            ++place;
            return handOver("CCommentSimpleParser");
        }
        if (place < input.size() && input[place] == '/' && options.Has("allowCPPComment")) {
            ++place;
            return handOver("CPPCommentSimpleParser");
        }
        if (place < input.size() && options.Has("allowJSRegEx"))
            return handOver("JSRegExSimpleParser");
        text += '/';
    }
    return "end 19 text(" + Trace::Escape(text) + ")";
}

std::string ModelWholeRun(std::string_view input, const ModelOptions&) {
    std::string text;
    std::size_t place = 0;
    const bool complete = ModelEscapeRun(input, &place, &text);
    return (complete ? "19 text(" : "end 19 text(") + Trace::Escape(text) + ")" + ModelRest(input, place);
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

std::string ModelDoubleQuotedString(std::string_view input, const ModelOptions& options) {
    const std::string_view stops = options.Has("allowEscape2022") ? "\"\033" : "\"";
    std::string text;
    std::size_t place = 0;
    bool escaped = false;
    bool complete = false;
    bool inRun = false;
    while (!complete && place < input.size()) {
        const std::size_t end = ModelLiteralEnd(input, place, "", stops, options.Has("allowEscapes"), &escaped);
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
    std::string line = complete ? "19 text(" + Trace::Escape(text) + ")" : "end 16";
    if (!complete && !inRun)
        line += " text(" + Trace::Escape(text) + ")";
    return line + ModelRest(input, place);
}

std::string ModelRegularExpression(std::string_view input, const ModelOptions& options) {
    bool escaped = false;
    const std::size_t end = ModelLiteralEnd(input, 0, "<\n\r", "/", options.Has("allowEscapes"), &escaped);
    return (end < input.size() ? "19 text(/" : "end 19 text(/") + Trace::Escape(input.substr(0, end)) + ")" +
           ModelRest(input, end);
}

const RandomRow TEXTS = {.rounds = ROUNDS,
                         .seed = 1,
                         .maxParts = 12,
                         .parts = {"a", "b ", "\n", "<", "/", "*", "//", "/*", "'", "\"", "\\", "\033", "$B", "$(",
                                   "$)C", "(B", ".A", "\033(B"},
                         .options = {"allowCComment", "allowCPPComment", "allowSQuoteString", "allowDQuoteString",
                                     "allowJSRegEx", "allowEscape2022"}};

const RandomRow ESCAPE_RUNS = {
    .rounds = ROUNDS,
    .seed = 2,
    .maxParts = 12,
    .parts = {"a", "\n", "<", "$", "B", "(", "C", ")", "J", ".", "F", "A", "+", "M", "*", "H", "\033", "$B", "\033(B"}};

const RandomRow STRINGS = {.rounds = ROUNDS,
                           .seed = 3,
                           .maxParts = 12,
                           .parts = {"a", "\n", "<", "'", "\"", "\\", "\\\\", "\033", "$B", "(B", "\033$B", "\033(J"},
                           .options = {"allowEscapes", "allowEscape2022"}};

const RandomRow EXPRESSIONS = {.rounds = ROUNDS,
                               .seed = 4,
                               .maxParts = 8,
                               .parts = {"a", "[", "]", "<", "/", "\\", "\\\\", "\\/", "\n", "\r"},
                               .options = {"allowEscapes"}};

const auto TEXT_SUITE = MakeModelSuite<HTML::TextSimpleParser>("TextModelTest", "RandomText", TEXTS, ModelText);
const auto RUN_SUITE =
    MakeModelSuite<HTML::Escape2022SimpleParser>("TextModelTest", "RandomEscapeRuns", ESCAPE_RUNS, ModelWholeRun);
const auto STRING_SUITE = MakeModelSuite<HTML::DQuoteStringSimpleParser>("TextModelTest", "RandomDoubleQuotedStrings",
                                                                         STRINGS, ModelDoubleQuotedString);
const auto EXPRESSION_SUITE = MakeModelSuite<HTML::JSRegExSimpleParser>("TextModelTest", "RandomRegularExpressions",
                                                                        EXPRESSIONS, ModelRegularExpression);

}  // namespace
}  // namespace Kestra::Test
