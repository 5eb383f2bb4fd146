#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/RecordFields.h"
#include "tests/support/FieldText.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"
#include "tests/support/Recognizers.h"

// What is true of the record of every recognizer, field by field.

namespace Kestra::Test {
namespace {

constexpr std::string_view LONG = "left over, and longer than any string keeps inside";

/// A field by its name, and what it is.
struct FieldValue {
    std::string name;
    std::string value;

    bool operator==(const FieldValue&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const FieldValue& field) {
    return stream << field.name << "(" << field.value << ")";
}

using FieldValues = std::vector<FieldValue>;

template <typename Data>
FieldValues GetFields(const Data& data) {
    FieldValues values;
    HTML::ForEachField(data, [&values](const char* name, const auto& value) {
        values.push_back({name, ShowField(value)});
    });
    return values;
}

// Values that no recognizer begins with.

void Spoil(std::uint32_t* number) {
    *number = 3;
}

void Spoil(bool* flag) {
    *flag = !*flag;
}

template <typename C>
void Spoil(C* character) {
    *character = '\\';
}

template <typename C>
void Spoil(std::basic_string<C>* text) {
    *text = To<std::basic_string<C>>(LONG);
}

template <typename Part>
void Spoil(Vector<Part>* parts) {
    Part& part = parts->emplace_back();
    HTML::ForEachField(&part, [](const char*, auto* value) { Spoil(value); });
}

/// Changes every field; flags only from what they are at first.
template <typename Data>
Data MakeSpoiled() {
    Data data;
    HTML::ForEachField(&data, [](const char*, auto* value) { Spoil(value); });
    return data;
}

/// What a field is in a new record.
std::string GetFirstValue(std::string_view name, const std::string& spoiled) {
    if (name == "lastChar")
        return "*";
    if (name == "closed" || name == "bracketClosed" || name == "tagClosed")
        return "true";
    if (spoiled == "true")
        return "false";
    return spoiled == "3" ? "0" : "";
}

template <typename Flavour>
class StateRecordTest : public testing::Test {};

TYPED_TEST_SUITE(StateRecordTest, Flavours);

template <typename Parser>
void CheckFirstValues() {
    const FieldValues spoiled = GetFields(MakeSpoiled<typename Parser::Data>());
    FieldValues expected;
    for (const FieldValue& field : spoiled)
        expected.push_back({field.name, GetFirstValue(field.name, field.value)});
    EXPECT_EQ(GetFields(typename Parser::Data()), expected);
    ASSERT_FALSE(spoiled.empty());
    for (std::size_t i = 0; i < spoiled.size(); ++i)
        EXPECT_NE(spoiled[i], expected[i]) << "not spoiled";
}

TYPED_TEST(StateRecordTest, EveryFieldBeginsClear) {
    ForEachRecognizer<TypeParam>([]<typename Parser>(std::string_view) { CheckFirstValues<Parser>(); });
}

/// What `BeginParse` does not make as new.
struct Exception {
    const char* note;
    std::string_view recognizer;
    std::string_view field;
    std::string fromNew;
    std::string fromSpoiled;
};

const Exception EXCEPTIONS[] = {
    {"a regular expression begins with its opening slash", "JSRegEx", "text", "/", "/"},
    {"the option for charsets stays with a start tag", "StartTag", "iso2022", "false", "true"},
};

template <typename Parser>
void CheckBeginParse(std::string_view recognizer) {
    FieldValues fromNew = GetFields(typename Parser::Data());
    FieldValues fromSpoiled = fromNew;
    for (const Exception& exception : EXCEPTIONS) {
        for (std::size_t i = 0; i < fromNew.size(); ++i) {
            if (recognizer == exception.recognizer && fromNew[i].name == exception.field) {
                fromNew[i].value = exception.fromNew;
                fromSpoiled[i].value = exception.fromSpoiled;
            }
        }
    }
    Parser parser;
    typename Parser::Data data;
    EXPECT_EQ(parser.BeginParse(&data), 0U);
    EXPECT_EQ(GetFields(data), fromNew);
    data = MakeSpoiled<typename Parser::Data>();
    EXPECT_EQ(parser.BeginParse(&data), 0U);
    EXPECT_EQ(GetFields(data), fromSpoiled);
}

TYPED_TEST(StateRecordTest, BeginParseClearsEveryField) {
    ForEachRecognizer<TypeParam>([]<typename Parser>(std::string_view name) { CheckBeginParse<Parser>(name); });
}

template <typename Parser>
void CheckCopies() {
    using Data = typename Parser::Data;
    Data data = MakeSpoiled<Data>();
    const FieldValues expected = GetFields(data);
    const Data copy(data);
    Data assigned;
    assigned = data;
    // What a copy shared with the original would change with it.
    HTML::ForEachField(&data, [](const char*, auto* value) {
        if constexpr (requires { value->front().value; })
            value->front().value.front() = '!';
        else if constexpr (requires { value->front(); })
            value->front() = '!';
        else
            *value = {};
    });
    EXPECT_NE(GetFields(data), expected);
    EXPECT_EQ(GetFields(copy), expected);
    EXPECT_EQ(GetFields(assigned), expected);
}

TYPED_TEST(StateRecordTest, ACopyHasEveryField) {
    ForEachRecognizer<TypeParam>([]<typename Parser>(std::string_view) { CheckCopies<Parser>(); });
}

/// How many states a recognizer has, from 0 on.
struct StateCount {
    std::string_view recognizer;
    std::uint32_t states;
};

constexpr StateCount STATE_COUNTS[] = {
    {"Text", 3},       {"DQuoteString", 2}, {"Escape2022", 3},     {"Token", 5},
    {"Attribute", 5},  {"GenericTag", 4},   {"StartTag", 5},       {"EndTag", 6},
    {"CommentTag", 3}, {"CDATATag", 3},     {"ConditionalTag", 2}, {"CComment", 3},
    {"CPPComment", 2}, {"EntityTag", 3},    {"ExternTag", 6},      {"ExternTagFreeStyle", 8},
};

TYPED_TEST(StateRecordTest, UnknownStatesAreMalformed) {
    std::size_t recognizers = 0;
    ForEachRecognizer<TypeParam>([&recognizers]<typename Parser>(std::string_view name) {
        if constexpr (requires(typename Parser::Data data) { data.state; }) {
            const auto isOfName = [name](const StateCount& count) { return count.recognizer == name; };
            const auto* const count = std::find_if(std::begin(STATE_COUNTS), std::end(STATE_COUNTS), isOfName);
            ASSERT_NE(count, std::end(STATE_COUNTS));
            CheckUnknownStates<Parser>(count->states);
            ++recognizers;
        }
    });
    EXPECT_EQ(recognizers, std::size(STATE_COUNTS));
}

}  // namespace
}  // namespace Kestra::Test
