#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/html/text/LiteralModel.h"

/// @file
/// The second opinion on attributes, of tags and of declarations.

namespace Kestra::Test {

struct ModelAttribute {
    std::string prefix;
    std::string name;
    std::string beforeEquals;
    std::string afterEquals;
    std::string value;
    std::string mark;  ///< the quote around the value, if any
    bool hasValue = false;

    std::string Describe() const {
        std::string line = "{" + Trace::Escape(prefix) + "|" + Trace::Escape(name);
        if (hasValue) {
            line += "|" + Trace::Escape(beforeEquals) + "=" + Trace::Escape(afterEquals) + "|" + mark +
                    Trace::Escape(value) + mark;
        }
        return line + "}";
    }
};

/// From the opening quote to after the closing one. False when the input ends first.
inline bool ModelQuoted(std::string_view input, std::size_t* place, bool runs, bool escapes, std::string* content) {
    const char quote = input[(*place)++];
    for (bool escaped = false; *place < input.size();) {
        const char character = input[(*place)++];
        if (!escaped && character == quote)
            return true;
        if (!escaped && runs && quote == '"' && character == '\033') {
            if (!ModelEscapeRun(input, place, content))
                return false;
            continue;
        }
        *content += character;
        escaped = escapes && !escaped && character == '\\';
    }
    return false;
}

/// Reads what follows the prefix of an attribute, and the white space after its name even where no
/// value follows. False when the input ends first; a quoted value may be the end of it.
inline bool ModelAfterPrefix(std::string_view input, std::size_t* place, bool runs, ModelAttribute* attribute) {
    attribute->name = ModelRun(input, place, "\t\n\v\f\r =>");
    attribute->beforeEquals = ModelSpaces(input, place);
    if (*place == input.size())
        return false;
    if (input[*place] != '=')
        return true;
    ++*place;
    attribute->hasValue = true;
    attribute->afterEquals = ModelSpaces(input, place);
    if (*place == input.size())
        return false;
    if (input[*place] == '\'' || input[*place] == '"') {
        attribute->mark = input[*place];
        return ModelQuoted(input, place, runs, false, &attribute->value);
    }
    attribute->value = ModelRun(input, place, "\t\n\v\f\r <>");
    return *place < input.size();
}

}  // namespace Kestra::Test
