#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/RandomInput.h"
#include "tests/support/RecognizerSuite.h"

/// @file
/// Slow second opinions: what recognizers must make of a whole narrow input, written as plain
/// searches over it. A function takes the place to begin at and moves it after what it has read.
/// Random inputs, and all short ones, are then read by the model and by the recognizer.

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

/// " rest(...)" of what is left from `place` on, if anything.
inline std::string ModelRest(std::string_view input, std::size_t place) {
    return place < input.size() ? " rest(" + Trace::Escape(input.substr(place)) + ")" : "";
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

/// The options that an input is read with.
struct ModelOptions {
    bool isWide;
    std::string fields;  ///< names of flags, a space after each

    bool Has(std::string_view name) const {
        return (" " + fields).find(" " + std::string(name) + " ") != std::string::npos;
    }
};

/// Where the inputs of a model come from.
struct RandomRow {
    int rounds;
    std::uint32_t seed;
    std::size_t maxParts;
    std::vector<std::string> parts;
    std::vector<std::string_view> options = {};  ///< flags that are set at random
    std::vector<std::string> begins = {""};      ///< one of them, before the parts
    std::vector<std::string> ends = {""};        ///< one of them, after the parts
    std::string_view alphabet = {};  ///< each string of these characters too, after `shortBegin`, without options
    std::size_t maxLength = 0;
    std::string shortBegin = {};
};

/// Compares a recognizer and its model: the line of the outcome for an input.
template <template <typename, typename> class Parser, typename Flavour, typename Model>
void CheckModel(const RandomRow& row, Model model) {
    ASSERT_GT(row.rounds, 0);
    RandomInput random(row.seed, row.parts);
    const auto check = [&](const std::string& input, const ModelOptions& options) {
        CheckRandomly<Parser<typename Flavour::C, typename Flavour::S>>(
            input, model(input, options), &random, [&options](auto* data) { SetFields(data, options.fields); });
    };
    for (int round = 0; round < row.rounds; ++round) {
        ModelOptions options{Flavour::WIDE, {}};
        for (const std::string_view option : row.options)
            options.fields += random.Flip() ? std::string(option) + " " : "";
        const std::string input = row.begins[random.Below(row.begins.size())] + random.Next(row.maxParts) +
                                  row.ends[random.Below(row.ends.size())];
        ASSERT_NO_FATAL_FAILURE(check(input, options));
    }
    if (!row.alphabet.empty()) {
        ForEveryString(row.alphabet, row.maxLength, [&](const std::string& input) {
            check(row.shortBegin + input, {Flavour::WIDE, {}});
        });
    }
}

/// Registers that comparison for both flavours.
template <template <typename, typename> class Parser, typename Model>
RecognizerSuite<Parser> MakeModelSuite(const char* suite, const char* test, const RandomRow& row, Model model) {
    RecognizerSuite<Parser> made(suite);
    made.Test(test, [row, model]<typename Flavour>() { CheckModel<Parser, Flavour>(row, model); });
    return made;
}

}  // namespace Kestra::Test
