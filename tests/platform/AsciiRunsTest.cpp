#include "platform/AsciiRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "platform/Characters.h"

// The copies in blocks against the one by one, which is the rule.

namespace Kestra::StringNS {
namespace {

/// Copies out of and into blocks of memory of their exact sizes, the latter after `offset`
/// characters and before one that stays.
template <typename To, typename From>
void Check(const std::vector<From>& from, std::size_t offset) {
    std::vector<To> expected(from.size());
    const std::size_t run = CopyAsciiOneByOne(from.data(), from.size(), expected.data());
    std::vector<To> to(offset + from.size() + 1, To{'#'});
    ASSERT_EQ(CopyAscii(from.data(), from.size(), to.data() + offset), run) << "of " << from.size();
    const auto begin = to.begin() + static_cast<std::ptrdiff_t>(offset);
    ASSERT_TRUE(std::equal(begin, begin + static_cast<std::ptrdiff_t>(run), expected.begin()))
        << run << " of " << from.size();
    ASSERT_TRUE(std::all_of(to.begin(), begin, [](To character) { return character == '#'; })) << from.size();
    ASSERT_EQ(to.back(), To{'#'}) << from.size();
}

template <typename To, typename From>
void CheckEveryPlace(const std::vector<From>& others) {
    for (std::size_t size = 0; size < 70; ++size) {
        std::vector<From> text(size);
        for (std::size_t i = 0; i < size; ++i)
            text[i] = static_cast<From>((i * 7 + size) % 128);
        for (std::size_t offset = 0; offset < 4; ++offset)
            Check<To>(text, offset);
        for (std::size_t place = 0; place < size; ++place) {
            for (const From other : others) {
                std::vector<From> mixed = text;
                mixed[place] = other;
                Check<To>(mixed, place % 4);
                mixed.back() = other;
                Check<To>(mixed, 0);
            }
        }
    }
}

TEST(AsciiRunsTest, EveryLengthWithOneOtherCharacterAtEveryPlace) {
    CheckEveryPlace<WideChar>(std::vector<char>{'\x80', '\xC3', '\xFF'});
    CheckEveryPlace<char>(
        std::vector<WideChar>{0x80, 0xFF, 0x100, 0x141, 0x7F00, 0x7FFF, 0x8000, 0x8041, 0xD83D, 0xFF41, 0xFFFF});
}

TEST(AsciiRunsTest, EveryCharacterIsAsciiOrNot) {
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const std::vector<WideChar> wide(4 + unit % 17, static_cast<WideChar>(unit));
        Check<char>(wide, 0);
        if (unit < 0x100)
            Check<WideChar>(std::vector<char>(wide.size(), static_cast<char>(static_cast<unsigned char>(unit))), 0);
    }
}

TEST(AsciiRunsTest, TheRuleItself) {
    WideString units(5, WideChar{'#'});
    EXPECT_EQ(CopyAsciiOneByOne("a\0\x7F\x80z", 5, units.data()), 3U);
    EXPECT_EQ(units, WideString(KESTRA_WIDE("a\0\x7F##"), 5));
    std::string bytes(5, '#');
    EXPECT_EQ(CopyAsciiOneByOne(KESTRA_WIDE("a\0\x7F\x80z"), 5, bytes.data()), 3U);
    EXPECT_EQ(bytes, std::string("a\0\x7F##", 5));
    EXPECT_EQ(CopyAsciiOneByOne(KESTRA_WIDE("z\xFF41"), 2, bytes.data()), 1U);
}

TEST(AsciiRunsTest, LongRunsAtRandom) {
    std::mt19937 random(31);
    for (int round = 0; round < 2000; ++round) {
        std::vector<char> narrow(random() % 400);
        for (char& byte : narrow)
            byte = static_cast<char>(random() % 128);
        std::vector<WideChar> wide(narrow.begin(), narrow.end());
        if (!narrow.empty() && random() % 4 != 0) {
            const std::size_t place = random() % narrow.size();
            narrow[place] = static_cast<char>(0x80 | (random() & 0x7F));
            wide[place] = static_cast<WideChar>(0x80 + random() % 0xFF80);
        }
        Check<WideChar>(narrow, random() % 16);
        Check<char>(wide, random() % 16);
    }
}

}  // namespace
}  // namespace Kestra::StringNS
