#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/FieldText.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

/// @file
/// The frame of the tests of one recognizer: a file has tables of rows, and a `RecognizerSuite`
/// that names its tests. Each test runs in both flavours unless its name says otherwise.

namespace Kestra::Test {

using namespace std::string_view_literals;

/// An input, and what becomes of it in the notation of `RecognizerCheck.h`.
struct RecognizerRow {
    const char* note;
    std::string_view input;
    std::string_view expected;
    std::string_view fields = {};  ///< what the owner sets after `BeginParse`, as in `FieldText.h`
};

/// The state after an input, `EndParse` not called.
struct StateRow {
    std::string_view input;
    std::uint32_t state;
    std::string_view fields = {};  ///< what the owner sets after `BeginParse`
};

/// What a call is made with.
enum CallKind {
    NEW_RECORD,   ///< a new recognizer and a new record
    BEGUN_AGAIN,  ///< the objects of the call before, after `BeginParse`
    CONTINUED,    ///< the objects of the call before
    AT_END,       ///< `EndParse` instead of `Parse`, with new objects
};

/// A single call, and all that it changes. The rows of a table are calls one after the other.
struct RecognizerCall {
    CallKind kind;
    std::string_view fields;  ///< what is set before the call
    std::string_view input;
    CallOutcome outcome;
    std::string_view record;            ///< afterwards
    std::string_view fieldsAfter = {};  ///< further fields of the record
};

/// A long input that a single call reads.
struct LongRow {
    std::string_view input;     ///< each "@" is a run of 200,000 characters
    std::string_view filling;   ///< the characters of the runs, in turn
    std::string_view expected;  ///< a line as in `RecognizerCheck.h`, with "@" for the runs
    bool inOneCall = true;      ///< false: as many calls as it takes
};

template <typename Parser>
void CheckCalls(std::span<const RecognizerCall> calls) {
    using Data = typename Parser::Data;
    std::unique_ptr<Parser> parser;
    std::unique_ptr<Data> data;
    for (const RecognizerCall& call : calls) {
        SCOPED_TRACE("row " + std::to_string(&call - calls.data()) + ": " + std::string(call.fields) + " \"" +
                     Trace::Escape(call.input) + "\"");
        if (call.kind == NEW_RECORD || call.kind == AT_END) {
            parser = std::make_unique<Parser>();
            data = std::make_unique<Data>();
        }
        if (call.kind != CONTINUED) {
            EXPECT_EQ(parser->BeginParse(data.get()), HTML::SP_NEED_MORE_DATA);
        }
        SetFields(data.get(), call.fields);
        const CallOutcome outcome = call.kind == AT_END ? CallOutcome{parser->EndParse(data.get()), 0}
                                                        : ParseOnce(parser.get(), data.get(), call.input);
        EXPECT_EQ(outcome, call.outcome);
        EXPECT_EQ(Dump(*data), call.record);
        ExpectFields(data.get(), call.fieldsAfter);
    }
}

/// The line with each "@" as a run of characters; escaped where it is a line of an outcome.
inline std::string ExpandRuns(const LongRow& row, std::string_view line, bool escaped) {
    constexpr std::size_t LENGTH = 200000;
    std::string text;
    std::size_t runs = 0;
    for (const char character : line) {
        if (character != '@') {
            text.push_back(character);
            continue;
        }
        const std::string run(LENGTH, row.filling[runs++ % row.filling.size()]);
        text += escaped ? Trace::Escape(run) : run;
    }
    return text;
}

template <typename Parser>
void CheckLongRow(const LongRow& row) {
    SCOPED_TRACE(Trace::Escape(row.filling) + " in " + Trace::Escape(row.input));
    const std::string input = ExpandRuns(row, row.input, false);
    RecognizerOutcome<Parser> outcome;
    Parser parser;
    parser.BeginParse(&outcome.data);
    int calls = 0;
    while (outcome.result == HTML::SP_NEED_MORE_DATA && outcome.consumed < input.size() && calls < 100) {
        const std::string_view rest = std::string_view(input).substr(static_cast<std::size_t>(outcome.consumed));
        const CallOutcome call = ParseOnce(&parser, &outcome.data, rest);
        outcome.result = call.result;
        outcome.consumed += call.position;
        ++calls;
    }
    EXPECT_TRUE(calls == 1 || !row.inOneCall) << calls << " calls";
    // A difference is too long to be shown.
    const auto text = To<typename RecognizerFlavour<Parser>::S>(input);
    const std::basic_string_view<typename RecognizerFlavour<Parser>::C> view(text);
    EXPECT_TRUE(DescribeOutcome(outcome, view, true) == ExpandRuns(row, row.expected, true));
}

/// A test that is a function.
class FunctionTest : public testing::Test {
public:
    explicit FunctionTest(std::function<void()> testBody) : body(std::move(testBody)) {}

    void TestBody() override {
        body();
    }

private:
    std::function<void()> body;
};

/// The characters of the flavour that a recognizer consumes, or does not, as the first of two. The
/// second is ">".
/// @param fields  what the owner sets after `BeginParse`
template <typename Parser>
auto FindCharacters(bool areConsumed, std::string_view fields = {}) {
    using C = typename RecognizerFlavour<Parser>::C;
    using S = typename RecognizerFlavour<Parser>::S;
    Parser parser;
    typename Parser::Data data;
    S found;
    for (unsigned code = 0; code < (sizeof(C) == 1 ? 0x100U : 0x10000U); ++code) {
        const C text[] = {static_cast<C>(code), '>'};
        HTML::SimpleParserContext<C, S> context;
        context.buffer = text;
        context.length = 2;
        parser.BeginParse(&data);
        SetFields(&data, fields);
        EXPECT_EQ(parser.Parse(&context, &data), HTML::SP_TOKEN_COMPLETE);
        if ((context.position > 0) == areConsumed)
            found.push_back(text[0]);
    }
    return found;
}

/// White space of the wide flavour that is not ASCII.
inline constexpr WideChar WIDE_SPACES[] = {0x0085, 0x00A0, 0x1680, 0x2000, 0x2001, 0x2002, 0x2003,
                                           0x2004, 0x2005, 0x2006, 0x2007, 0x2008, 0x2009, 0x200A,
                                           0x2028, 0x2029, 0x202F, 0x205F, 0x3000};

/// The characters as a string of the flavour, and in the wide flavour its further white space.
template <typename Flavour>
typename Flavour::S WithWideSpaces(std::string_view ascii) {
    auto text = To<typename Flavour::S>(ascii);
    if constexpr (Flavour::WIDE)
        text.append(std::begin(WIDE_SPACES), std::end(WIDE_SPACES));
    return text;
}

/// Registers the tests of a recognizer as it is made: `NAME/Narrow.TEST` and `NAME/Wide.TEST`.
/// Tables must live as long as the program.
template <template <typename, typename> class Parser>
class RecognizerSuite {
public:
    template <typename Flavour>
    using ParserOf = Parser<typename Flavour::C, typename Flavour::S>;
    template <typename Flavour>
    using DataOf = typename ParserOf<Flavour>::Data;

    explicit RecognizerSuite(std::string suiteName, const char* sourceFile = __builtin_FILE(),
                             int sourceLine = __builtin_LINE())
        : name(std::move(suiteName)), file(sourceFile), line(sourceLine) {}

    /// @param fields  set for every row, before the fields of the row
    RecognizerSuite& Rows(const char* test, std::span<const RecognizerRow> rows, std::string_view fields = {}) {
        return NarrowRows(test, rows, fields).template Latin1Rows<Wide>(test, rows, fields);
    }

    RecognizerSuite& NarrowRows(const char* test, std::span<const RecognizerRow> rows, std::string_view fields = {}) {
        return Latin1Rows<Narrow>(test, rows, fields);
    }

    /// Rows for the wide flavour, whose inputs are in the escapes of the trace language.
    RecognizerSuite& WideRows(const char* test, std::span<const RecognizerRow> rows) {
        return Register<Wide>(test, [rows]<typename Flavour>() {
            for (const RecognizerRow& row : rows) {
                SCOPED_TRACE(row.note);
                const auto input = NotationReader(row.input).Unescape<WideString>(row.input);
                CheckRecognizer<ParserOf<Flavour>>(input, std::string(row.expected),
                                                   MakePreparation<DataOf<Flavour>>(row.fields));
            }
        });
    }

    RecognizerSuite& States(std::span<const StateRow> rows) {
        return Test("States", [rows]<typename Flavour>() { CheckStates<Flavour>(rows); });
    }

    RecognizerSuite& NarrowStates(const char* test, std::span<const StateRow> rows) {
        return Register<Narrow>(test, [rows]<typename Flavour>() { CheckStates<Flavour>(rows); });
    }

    RecognizerSuite& WideStates(const char* test, std::span<const StateRow> rows) {
        return Register<Wide>(test, [rows]<typename Flavour>() { CheckStates<Flavour>(rows); });
    }

    RecognizerSuite& Calls(const char* test, std::span<const RecognizerCall> calls) {
        return Test(test, [calls]<typename Flavour>() { CheckCalls<ParserOf<Flavour>>(calls); });
    }

    RecognizerSuite& NarrowCalls(const char* test, std::span<const RecognizerCall> calls) {
        return Register<Narrow>(test, [calls]<typename Flavour>() { CheckCalls<ParserOf<Flavour>>(calls); });
    }

    RecognizerSuite& LongInputs(std::span<const LongRow> rows) {
        return Test("LongInputs", [rows]<typename Flavour>() {
            for (const LongRow& row : rows)
                CheckLongRow<ParserOf<Flavour>>(row);
        });
    }

    /// The list keeps the elements that it dropped: nothing of an earlier tag may show in them.
    /// @param earlier  a tag with two attributes that have everything
    /// @param tags     tags with two attributes without values
    RecognizerSuite& AttributesWithoutValues(std::string_view earlier, std::vector<std::string_view> tags) {
        return Test("AnAttributeWithoutAValueHasNothingButPrefixAndName", [earlier, tags]<typename Flavour>() {
            using S = typename Flavour::S;
            ParserOf<Flavour> parser;
            DataOf<Flavour> data;
            for (const std::string_view tag : tags) {
                parser.BeginParse(&data);
                EXPECT_EQ(ParseOnce(&parser, &data, earlier), (CallOutcome{HTML::SP_TOKEN_COMPLETE, earlier.size()}));
                ASSERT_EQ(data.attributes.size(), 2U);
                parser.BeginParse(&data);
                EXPECT_EQ(ParseOnce(&parser, &data, tag), (CallOutcome{HTML::SP_TOKEN_COMPLETE, tag.size()}));
                ASSERT_EQ(data.attributes.size(), 2U);
                for (const auto& attribute : data.attributes) {
                    EXPECT_FALSE(attribute.hasValue);
                    EXPECT_EQ(attribute.beforeEquals, S());
                    EXPECT_EQ(attribute.afterEquals, S());
                    EXPECT_EQ(attribute.value, S());
                    EXPECT_EQ(attribute.quote, 0U);
                }
            }
        });
    }

    /// A test of another kind: calls `check.template operator()<Flavour>()`.
    template <typename Check>
    RecognizerSuite& Test(const char* test, Check check) {
        return Register<Narrow>(test, check).template Register<Wide>(test, check);
    }

private:
    template <typename Flavour>
    RecognizerSuite& Latin1Rows(const char* test, std::span<const RecognizerRow> rows, std::string_view fields) {
        return Register<Flavour>(test, [rows, fields]<typename F>() {
            for (const RecognizerRow& row : rows) {
                CheckRow<Parser, F>(row.note, row.input, row.expected, [&](DataOf<F>* data) {
                    SetFields(data, fields);
                    SetFields(data, row.fields);
                });
            }
        });
    }

    template <typename Flavour>
    static void CheckStates(std::span<const StateRow> rows) {
        for (const StateRow& row : rows)
            EXPECT_EQ(StateAfter<ParserOf<Flavour>>(row.input, MakePreparation<DataOf<Flavour>>(row.fields)), row.state)
                << Trace::Escape(row.input) << " " << row.fields;
    }

    template <typename Flavour, typename Check>
    RecognizerSuite& Register(const char* test, Check check) {
        const std::string suite = name + (Flavour::WIDE ? "/Wide" : "/Narrow");
        const auto body = [check] { check.template operator()<Flavour>(); };
        testing::RegisterTest(suite.c_str(), test, nullptr, nullptr, file, line,
                              [body]() -> FunctionTest* { return new FunctionTest(body); });
        return *this;
    }

    std::string name;
    const char* file;
    int line;
};

}  // namespace Kestra::Test
