#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {

/// Strings put together at random from given parts; the same ones in each run.
class RandomInput {
public:
    RandomInput(std::uint32_t seed, std::vector<std::string> parts) : engine(seed), words(std::move(parts)) {}

    /// A string of up to `maxParts` parts.
    std::string Next(std::size_t maxParts) {
        std::string input;
        for (std::size_t count = Below(maxParts + 1); count > 0; --count)
            input += words[Below(words.size())];
        return input;
    }

    bool Flip() {
        return Below(2) == 1;
    }

    /// A number from 0 to `limit` - 1.
    std::size_t Below(std::size_t limit) {
        return static_cast<std::size_t>(engine() % limit);
    }

    /// Up to three cuts of an input of `length` characters, anywhere, equal ones too.
    Cuts NextCuts(std::size_t length) {
        Cuts cuts;
        for (std::size_t count = Below(4); count > 0; --count)
            cuts.push_back(Below(length + 1));
        std::sort(cuts.begin(), cuts.end());
        return cuts;
    }

private:
    std::mt19937 engine;
    std::vector<std::string> words;
};

/// Calls `check` for each string of up to `maxLength` characters of the alphabet.
inline void ForEveryString(std::string_view alphabet, std::size_t maxLength,
                           const std::function<void(const std::string&)>& check) {
    std::size_t count = 1;
    for (std::size_t length = 0; length <= maxLength; ++length, count *= alphabet.size()) {
        for (std::size_t number = 0; number < count; ++number) {
            std::string input(length, ' ');
            std::size_t digits = number;
            for (char& character : input) {
                character = alphabet[digits % alphabet.size()];
                digits /= alphabet.size();
            }
            ASSERT_NO_FATAL_FAILURE(check(input));
        }
    }
}

/// Checks the outcome of an input uncut and at random cuts. The input is ASCII.
template <typename Parser>
void CheckRandomly(std::string_view ascii, const std::string& expected, RandomInput* random,
                   const std::function<void(typename Parser::Data*)>& prepare = {}) {
    using C = typename RecognizerFlavour<Parser>::C;
    const auto input = To<typename RecognizerFlavour<Parser>::S>(ascii);
    for (const Cuts& cuts : {Cuts(), random->NextCuts(input.size())}) {
        RecognizerOptions<Parser> options;
        options.prepare = prepare;
        const auto outcome = RunRecognizer<Parser>(std::basic_string_view<C>(input), cuts, options);
        ASSERT_EQ(DescribeOutcome(outcome, std::basic_string_view<C>(input), HasRecord(expected)), expected)
            << "for " << Trace::Escape(ascii) << " cut at " << Describe(cuts);
        const Place place = PlaceAfter(std::basic_string_view<C>(input), outcome.consumed);
        ASSERT_EQ(outcome.line, place.line) << "for " << Trace::Escape(ascii);
        ASSERT_EQ(outcome.column, place.column) << "for " << Trace::Escape(ascii);
    }
}

}  // namespace Kestra::Test
