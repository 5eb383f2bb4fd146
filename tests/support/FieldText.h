#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "html/framework/RecordFields.h"
#include "tests/support/NotedRecord.h"
#include "tools/trace/TokenTrace.h"

/// @file
/// Fields of a state record by their names, as text: `"state=2 text=a\\n iso2022"`. Words are
/// separated by a space each, values are in the escapes of the trace language, and a name alone is
/// a flag that is set. Letters after a hyphen are options of recognizers, as in "-cp".

namespace Kestra::Test {

inline std::string ShowField(std::uint32_t number) {
    return std::to_string(number);
}

inline std::string ShowField(bool flag) {
    return flag ? "true" : "false";
}

inline std::string ShowField(char character) {
    return Trace::Escape(std::string_view(&character, 1));
}

inline std::string ShowField(WideChar character) {
    return Trace::Escape(WideStringView(&character, 1));
}

template <typename C>
std::string ShowField(const std::basic_string<C>& text) {
    return Trace::Escape(text);
}

template <typename Part>
std::string ShowField(const Vector<Part>& parts) {
    std::string line;
    for (const Part& part : parts)
        line += Trace::Format(part);
    return line;
}

inline void ReadField(std::string_view value, std::uint32_t* number) {
    *number = static_cast<std::uint32_t>(std::stoul(std::string(value)));
}

inline void ReadField(std::string_view value, bool* flag) {
    if (value != "true" && value != "false")
        NotationReader(value).Fail("neither true nor false");
    *flag = value == "true";
}

template <typename C>
void ReadField(std::string_view value, std::basic_string<C>* text) {
    *text = NotationReader(value).Unescape<std::basic_string<C>>(value);
}

template <typename C>
void ReadField(std::string_view value, C* character) {
    *character = NotationReader(value).Unescape<std::basic_string<C>>(value).at(0);
}

template <typename Part>
void ReadField(std::string_view value, Vector<Part>*) {
    NotationReader(value).Fail("lists are not read");
}

/// The name of the option that a letter stands for.
inline std::string_view GetOptionName(char letter) {
    switch (letter) {
        case 'a':
            return "allowEscapes";
        case 'c':
            return "allowCComment";
        case 'd':
            return "allowDQuoteString";
        case 'e':
            return "allowEscape2022";
        case 'p':
            return "allowCPPComment";
        case 'r':
            return "allowJSRegEx";
        case 's':
            return "allowSQuoteString";
    }
    return "";
}

/// Calls `use(name, value)` for each word.
template <typename Use>
void ForEachWord(std::string_view fields, Use use) {
    while (!fields.empty()) {
        const std::string_view word = fields.substr(0, fields.find(' '));
        fields.remove_prefix(word.size() < fields.size() ? word.size() + 1 : word.size());
        const std::size_t equals = word.find('=');
        if (word.empty()) {
            NotationReader(fields).Fail("two blanks");
        } else if (word.front() == '-') {
            for (const char letter : word.substr(1))
                use(GetOptionName(letter), std::string_view("true"));
        } else if (equals == word.npos) {
            use(word, std::string_view("true"));
        } else {
            use(word.substr(0, equals), word.substr(equals + 1));
        }
    }
}

/// Calls `use(value)` with a pointer to the field of a name. A record without it is a failure.
template <typename Data, typename Use>
void UseField(Data* data, std::string_view name, Use use) {
    bool isKnown = false;
    HTML::ForEachField(data, [&](std::string_view field, auto* value) {
        if (field != name)
            return;
        isKnown = true;
        use(value);
    });
    EXPECT_TRUE(isKnown) << "no field has the name \"" << name << "\"";
}

template <typename Data>
void SetFields(Data* data, std::string_view fields) {
    ForEachWord(fields, [data](std::string_view name, std::string_view value) {
        UseField(data, name, [value](auto* field) { ReadField(value, field); });
    });
}

template <typename Data>
void ExpectFields(Data* data, std::string_view fields) {
    ForEachWord(fields, [data](std::string_view name, std::string_view value) {
        UseField(data, name, [&](const auto* field) { EXPECT_EQ(ShowField(*field), value) << name; });
    });
}

/// `SetFields`, for after each `BeginParse`.
template <typename Data>
std::function<void(Data*)> MakePreparation(std::string_view fields) {
    return [fields](Data* data) { SetFields(data, fields); };
}

}  // namespace Kestra::Test
