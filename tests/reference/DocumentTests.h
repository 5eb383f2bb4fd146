#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "html/parser/GenericParser.h"
#include "tests/reference/DocumentFeeding.h"
#include "tests/support/DocumentMaker.h"
#include "tests/support/Flavours.h"
#include "tests/support/Splits.h"
#include "tools/trace/TokenTrace.h"

/// @file
/// What the tests over random and enumerated documents share. Their suites are instantiated by
/// `ALL_SHARDS` and `ALL_FIRST_CHARACTERS`.

namespace Kestra::Test {

inline constexpr std::uint64_t SHARDS = 16;

/// Characters of the longest enumerated strings, and of the longest that are cut in every way.
inline constexpr std::size_t ENUMERATED_LENGTH = KESTRA_ENUMERATED_LENGTH;
inline constexpr std::size_t CUT_LENGTH = 3;

/// The pages, read once.
inline const std::vector<std::string>& Pages() {
    static const std::vector<std::string> PAGES = ReadPages(KESTRA_EXAMPLE_PAGES);
    return PAGES;
}

/// Takes every sixteenth seed.
class ShardTest : public testing::TestWithParam<std::uint64_t> {
protected:
    /// Calls `run` with the seeds of this shard below `end`, up to the first fatal failure.
    void ForEachSeed(std::uint64_t end, const std::function<void(std::uint64_t seed)>& run) const {
        for (std::uint64_t seed = GetParam(); seed < end && !HasFatalFailure(); seed += SHARDS) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            run(seed);
        }
    }

    DocumentMaker maker{&Pages()};
};

/// Takes the enumerated strings with one first character.
class FirstCharacterTest : public testing::TestWithParam<std::size_t> {
protected:
    /// Calls `run` with each string after each context. Fails, and ends, at the first false answer.
    template <std::size_t COUNT>
    void ForEachDocument(const std::string_view (&contexts)[COUNT], std::size_t maxLength,
                         const std::function<bool(std::string_view document, std::string_view context)>& run) const {
        bool isGood = true;
        for (std::size_t i = 0; i < COUNT && isGood; ++i) {
            ForEachString(contexts[i], ENUMERATED_CHARACTERS[GetParam()], maxLength,
                          [&](std::string_view document) { return isGood = run(document, contexts[i]); });
        }
        EXPECT_TRUE(isGood);
    }
};

inline const auto ALL_SHARDS = testing::Range<std::uint64_t>(0, SHARDS);
inline const auto ALL_FIRST_CHARACTERS = testing::Range<std::size_t>(0, ENUMERATED_CHARACTERS.size());

}  // namespace Kestra::Test
