#pragma once

#include <array>
#include <string_view>

/// @file
/// What the trace language says of a record beside its list of fields.

namespace Kestra::Trace {

/// How a flag is written after the parameters: as its word, if it has this value. A flag without a
/// row is written as its own name, if it is set.
struct FlagNotation {
    std::string_view field;
    std::string_view word;
    bool value;
};

/// In the order in which the words of a record follow each other.
inline constexpr std::array<FlagNotation, 4> FLAG_NOTATIONS = {{
    {"slashBeforeClose", "slash", true},
    {"bracketClosed", "no-bracket", false},
    {"closed", "open", false},
    {"tagClosed", "open", false},
}};

constexpr bool HasFlagNotation(std::string_view field) {
    for (const FlagNotation& notation : FLAG_NOTATIONS) {
        if (notation.field == field)
            return true;
    }
    return false;
}

/// An instruction that was read as raw text is its text alone, under this word. Any other has no
/// text.
inline constexpr std::string_view RAW_INSTRUCTION = "extern-text";

constexpr bool IsFieldOfRawInstruction(std::string_view field) {
    return field == "freeStyle" || field == "text";
}

inline constexpr std::string_view NULL_WORD = "null";

/// Around a value, by its QuoteKind.
inline constexpr std::array<std::string_view, 3> QUOTE_MARKS = {"", "'", "\""};
inline constexpr std::string_view UNKNOWN_QUOTE_MARK = "?";

}  // namespace Kestra::Trace
