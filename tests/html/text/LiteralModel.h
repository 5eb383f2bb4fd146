#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// Slow second opinions: what the recognizers of text must make of a whole narrow input, written as
/// plain searches over it. A function takes the place to begin at and moves it after what it has
/// read.

namespace Kestra::Test {

inline bool IsModelSpace(char character) {
    return std::string_view("\t\n\v\f\r ").find(character) != std::string_view::npos;
}

/// The characters up to the first one of `stops`, or to the end.
inline std::string_view ModelRun(std::string_view input, std::size_t* place, std::string_view stops) {
    const std::size_t begin = *place;
    const std::size_t found = input.find_first_of(stops, begin);
    *place = found == input.npos ? input.size() : found;
    return input.substr(begin, *place - begin);
}

inline std::string_view ModelSpaces(std::string_view input, std::size_t* place) {
    const std::size_t begin = *place;
    while (*place < input.size() && IsModelSpace(input[*place]))
        ++*place;
    return input.substr(begin, *place - begin);
}

/// Appends an escape run, from after its opening ESC on. False when the input ends first.
inline bool ModelEscapeRun(std::string_view input, std::size_t* place, std::string* text) {
    // Of the designations that begin with "$(" none but that itself can ever complete.
    constexpr std::array<std::string_view, 14> DESIGNATIONS = {"$@",  "$B",  "$(",  "$A",  "$)C", "$)A", "$)G",
                                                               "$*H", "$)E", "$+I", "$+J", "$+K", "$+L", "$+M"};
    constexpr std::array<std::string_view, 5> RETURNS = {"(B", "(J", ".F", ".A", "(I"};
    // Reads one character at a time while the sequence is the beginning of an entry; true for a
    // complete one.
    const auto matches = [&](const auto& table, bool* ended) {
        std::string sequence;
        for (;;) {
            if (*place == input.size()) {
                *ended = true;
                *text += "\033" + sequence;
                return false;
            }
            sequence += input[(*place)++];
            bool candidate = false;
            for (const std::string_view entry : table) {
                if (entry == sequence) {
                    *text += "\033" + sequence;
                    return true;
                }
                candidate = candidate || entry.starts_with(sequence);
            }
            if (!candidate) {
                *text += "\033" + sequence;
                return false;
            }
        }
    };
    bool ended = false;
    if (!matches(DESIGNATIONS, &ended))
        return !ended;
    for (;;) {
        *text += ModelRun(input, place, "\033");
        if (*place == input.size())
            return false;
        ++*place;
        if (matches(RETURNS, &ended))
            return true;
        if (ended)
            return false;
    }
}

}  // namespace Kestra::Test
