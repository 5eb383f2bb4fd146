#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "html/framework/SimpleParserContext.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerRun.h"
#include "tests/support/RecordDump.h"
#include "tests/support/Splits.h"
#include "tools/trace/TokenTrace.h"

/// @file
/// Rows of the recognizers' tests: an input and what becomes of it, in one line.
///
///     19 text(a) rest(bc)     Parse answered 19; the record; the characters left, if any
///     end 16 text(a)          the input was used up, and EndParse answered 16
///     11 rest(x)              without a record: only the result and the place count

namespace Kestra::Test {

template <typename Parser>
std::string DescribeOutcome(const RecognizerOutcome<Parser>& outcome,
                            std::basic_string_view<typename RecognizerFlavour<Parser>::C> input, bool withRecord) {
    if (!outcome.progressing)
        return "no progress";
    std::string line = (outcome.atEnd ? "end " : "") + std::to_string(outcome.result);
    if (withRecord)
        line += " " + Dump(outcome.data);
    if (outcome.consumed < input.size())
        line += " rest(" + Trace::Escape(input.substr(static_cast<std::size_t>(outcome.consumed))) + ")";
    return line;
}

/// True when the expected line tells what the record holds.
inline bool HasRecord(std::string_view expected) {
    const std::size_t bracket = expected.find_first_of("({");
    return bracket != expected.npos && !expected.substr(0, bracket).ends_with("rest");
}

/// The line of the other flavour: the escapes of the bytes from 128 up become those of wide units.
inline std::string ToWideEscapes(std::string_view expected) {
    std::string wide;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        wide.push_back(expected[i]);
        if (expected[i] != '\\' || i + 1 == expected.size())
            continue;
        ++i;
        if (expected[i] == 'x' && i + 1 < expected.size() && expected[i + 1] >= '8')
            wide += "u00";
        else
            wide.push_back(expected[i]);
    }
    return wide;
}

/// Checks one row at every split, with the recognizer and its record going on as they are, copied,
/// assigned, and after empty pieces; then again on objects that were used before. Line and column
/// are checked each time.
/// @param prepare  sets options in the record after each `BeginParse`
template <typename Parser>
void CheckRecognizer(std::basic_string_view<typename RecognizerFlavour<Parser>::C> input, const std::string& expected,
                     const std::function<void(typename Parser::Data*)>& prepare = {}) {
    const bool withRecord = HasRecord(expected);
    const auto check = [&](const RecognizerOutcome<Parser>& outcome) {
        EXPECT_EQ(DescribeOutcome(outcome, input, withRecord), expected);
        EXPECT_EQ(outcome.emptyPieceResult, 0U);
        const Place place = PlaceAfter(input, outcome.consumed);
        EXPECT_EQ(outcome.line, place.line);
        EXPECT_EQ(outcome.column, place.column);
    };
    ForEverySplit(input, [&](const Cuts& cuts) {
        for (const Handing handing : {Handing::SAME, Handing::COPIED, Handing::ASSIGNED, Handing::EMPTY_PIECE}) {
            SCOPED_TRACE("handing " + std::to_string(static_cast<int>(handing)));
            RecognizerOptions<Parser> options;
            options.prepare = prepare;
            options.handing = handing;
            check(RunRecognizer<Parser>(input, cuts, options));
        }
    });

    // What an abandoned construct left, at whatever place, is gone with `BeginParse`.
    RecognizerOptions<Parser> options;
    options.prepare = prepare;
    RecognizerRunner<Parser> runner(options);
    ForEachUntilFailure(input.size() + 1, [&](std::size_t abandoned) {
        SCOPED_TRACE("used before for the first " + std::to_string(abandoned) + " characters");
        runner.Run(input.substr(0, abandoned), {});
        check(runner.Run(input, {}));
    });

    // Line and column go on from the place of the context.
    options.line = 5;
    options.column = 9;
    const RecognizerOutcome<Parser> outcome = RunRecognizer<Parser>(input, {}, options);
    const Place place = PlaceAfter(input, outcome.consumed);
    EXPECT_EQ(outcome.line, place.line + 4);
    EXPECT_EQ(outcome.column, place.line == 1 ? place.column + 8 : place.column);
}

/// One row for a flavour, its input given in Latin-1.
template <template <typename, typename> class Parser, typename Flavour>
void CheckRow(
    std::string_view note, std::string_view latin1, std::string_view expected,
    const std::function<void(typename Parser<typename Flavour::C, typename Flavour::S>::Data*)>& prepare = {}) {
    SCOPED_TRACE(note);
    using C = typename Flavour::C;
    const auto input = To<typename Flavour::S>(latin1);
    CheckRecognizer<Parser<C, typename Flavour::S>>(
        std::basic_string_view<C>(input), Flavour::WIDE ? ToWideEscapes(expected) : std::string(expected), prepare);
}

/// The answer of a single `Parse`, and where it left the context.
struct CallOutcome {
    std::uint32_t result = 0;
    std::uint64_t position = 0;

    bool operator==(const CallOutcome&) const = default;
};

/// Calls `Parse` once over the whole input.
template <typename Parser>
CallOutcome ParseOnce(Parser* parser, typename Parser::Data* data, std::string_view latin1) {
    using C = typename RecognizerFlavour<Parser>::C;
    using S = typename RecognizerFlavour<Parser>::S;
    const S input = To<S>(latin1);
    const HeapPiece<C> piece{std::basic_string_view<C>(input)};
    HTML::SimpleParserContext<C, S> context;
    context.buffer = piece.Data();
    context.length = piece.Size();
    CallOutcome outcome;
    outcome.result = parser->Parse(&context, data);
    outcome.position = context.position;
    return outcome;
}

inline std::ostream& operator<<(std::ostream& stream, const CallOutcome& outcome) {
    return stream << "result " << outcome.result << " at " << outcome.position;
}

/// The state that the record is in after the input, `EndParse` not called.
template <typename Parser>
std::uint32_t StateAfter(std::string_view latin1, const std::function<void(typename Parser::Data*)>& prepare = {}) {
    Parser parser;
    typename Parser::Data data;
    parser.BeginParse(&data);
    if (prepare)
        prepare(&data);
    std::size_t given = 0;
    while (given < latin1.size()) {
        const CallOutcome outcome = ParseOnce(&parser, &data, latin1.substr(given));
        given += static_cast<std::size_t>(outcome.position);
        if (outcome.result != HTML::SP_NEED_MORE_DATA || outcome.position == 0)
            break;
    }
    return data.state;
}

/// A record in a state that its machine does not have: 11 as soon as a character is there, 0
/// before, and nothing consumed or gathered.
/// @param states  how many states there are, from 0 on
template <typename Parser>
void CheckUnknownStates(std::uint32_t states) {
    for (const std::uint32_t state : {states, states + 1, 255U, 0x80000000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE("state " + std::to_string(state));
        Parser parser;
        typename Parser::Data data;
        parser.BeginParse(&data);
        const std::string before = Dump(data);
        data.state = state;
        EXPECT_EQ(ParseOnce(&parser, &data, ""), (CallOutcome{HTML::SP_NEED_MORE_DATA, 0}));
        EXPECT_EQ(ParseOnce(&parser, &data, "x"), (CallOutcome{HTML::SP_MALFORMED, 0}));
        EXPECT_EQ(ParseOnce(&parser, &data, ">"), (CallOutcome{HTML::SP_MALFORMED, 0}));
        EXPECT_EQ(data.state, state);
        EXPECT_EQ(Dump(data), before);
        EXPECT_EQ(parser.BeginParse(&data), HTML::SP_NEED_MORE_DATA);
        EXPECT_EQ(data.state, 0U);
    }
}

}  // namespace Kestra::Test
