#include "html/output/Crc32.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "platform/Processor.h"

// The ways to compute the checksum against one bit after the other.

namespace Kestra::Test {
namespace {

using Bytes = std::vector<unsigned char>;

/// The checksum of the first `n` bytes for every `n`, begun with `crc`.
std::vector<std::uint32_t> ChecksumsBitByBit(std::uint32_t crc, const Bytes& bytes) {
    std::vector<std::uint32_t> checksums = {crc};
    for (const unsigned char byte : bytes) {
        std::uint32_t remainder = ~checksums.back() ^ byte;
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? 0xEDB88320U : 0U);
        checksums.push_back(~remainder);
    }
    return checksums;
}

using Update = std::uint32_t (*)(std::uint32_t, const void*, std::uint64_t);

struct Way {
    const char* name;
    Update update;
};

/// Those that the processor has.
std::vector<Way> Ways() {
    std::vector<Way> ways = {{"the fastest", HTML::UpdateCrc32}, {"tables", HTML::UpdateCrc32ByTables}};
#if defined(KESTRA_HAS_CARRYLESS_BLOCKS)
    if (Base::HasCarrylessMultiplication())
        ways.push_back({"folding", HTML::UpdateCrc32ByFolding});
#endif
    return ways;
}

Bytes RandomBytes(std::size_t size, unsigned seed) {
    std::mt19937 engine(seed);
    Bytes bytes(size);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(engine() & 0xFF);
    return bytes;
}

Bytes BytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST(Crc32Test, KnownValuesInEveryWay) {
    // Twelve times the digits: long enough for all steps.
    std::string digits;
    for (int i = 0; i < 12; ++i)
        digits += "123456789";
    struct Row {
        std::string bytes;
        std::uint32_t crc;
    };
    const Row rows[] = {
        {"", 0},
        {"123456789", 0xCBF43926},
        {"a", 0xE8B7BE43},
        {std::string(1, '\0'), 0xD202EF8D},
        {std::string(4, '\0'), 0x2144DF1C},
        {"\xFF\xFF\xFF\xFF", 0xFFFFFFFF},
        {"The quick brown fox jumps over the lazy dog", 0x414FA339},
        {digits, 0x1DDDAB58},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ChecksumsBitByBit(0, BytesOf(row.bytes)).back(), row.crc) << row.bytes;
        for (const Way& way : Ways())
            EXPECT_EQ(way.update(0, row.bytes.data(), row.bytes.size()), row.crc) << way.name << ", " << row.bytes;
    }
    for (const Way& way : Ways()) {
        for (const std::uint32_t crc : {0x12345678U, 0xCBF43926U})
            EXPECT_EQ(way.update(crc, nullptr, 0), crc) << way.name;
    }
}

TEST(Crc32Test, PiecesGiveWhatTheWholeGives) {
    const std::string bytes = "any bytes, in one piece or in three";
    const std::uint32_t whole = ChecksumsBitByBit(0, BytesOf(bytes)).back();
    for (const Way& way : Ways()) {
        for (std::size_t first = 0; first <= bytes.size(); ++first) {
            for (std::size_t second = first; second <= bytes.size(); ++second) {
                std::uint32_t crc = way.update(0, bytes.data(), first);
                crc = way.update(crc, bytes.data() + first, second - first);
                crc = way.update(crc, bytes.data() + second, bytes.size() - second);
                ASSERT_EQ(crc, whole) << way.name << ", " << first << ", " << second;
            }
        }
    }
}

TEST(Crc32Test, EveryLengthInItsOwnBlock) {
    // A block of its exact size, so that a byte too many shows.
    const Bytes bytes = RandomBytes(300, 2);
    for (const std::uint32_t begin : {0U, 0x9ABCDEF0U, 0x12345678U}) {
        const std::vector<std::uint32_t> expected = ChecksumsBitByBit(begin, bytes);
        for (std::size_t length = 0; length <= bytes.size(); ++length) {
            const Bytes block(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
            for (const Way& way : Ways())
                ASSERT_EQ(way.update(begin, block.data(), length), expected[length])
                    << way.name << ", " << length << " bytes";
        }
    }
}

TEST(Crc32Test, EveryLengthAtEveryPlace) {
    const Bytes bytes = RandomBytes(364, 3);
    for (std::size_t offset = 0; offset < 64; ++offset) {
        const std::vector<std::uint32_t> expected =
            ChecksumsBitByBit(0xFFFFFFFF, Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(offset), bytes.end()));
        for (std::size_t length = 0; length <= 300; ++length) {
            for (const Way& way : Ways()) {
                ASSERT_EQ(way.update(0xFFFFFFFF, bytes.data() + offset, length), expected[length])
                    << way.name << ", " << length << " bytes from " << offset << " on";
            }
        }
    }
}

TEST(Crc32Test, LongInput) {
    const Bytes bytes = RandomBytes((std::size_t{1} << 20) + 77, 4);
    const std::vector<std::uint32_t> expected = ChecksumsBitByBit(0, bytes);
    std::mt19937 engine(5);
    for (const Way& way : Ways()) {
        EXPECT_EQ(way.update(0, bytes.data(), bytes.size()), expected.back()) << way.name;
        // And in pieces of any size.
        std::uint32_t crc = 0;
        for (std::size_t place = 0; place < bytes.size();) {
            const std::size_t piece = std::min<std::size_t>(engine() % 20000, bytes.size() - place);
            crc = way.update(crc, bytes.data() + place, piece);
            place += piece;
            ASSERT_EQ(crc, expected[place]) << way.name << ", " << piece << " bytes up to " << place;
        }
    }
}

TEST(Crc32Test, LongRunsOfOneByte) {
    for (const char* const byte : {"\x00", "\x01", "\x80", "\xFF"}) {
        const Bytes bytes(1000, static_cast<unsigned char>(*byte));
        const std::vector<std::uint32_t> expected = ChecksumsBitByBit(0, bytes);
        for (const Way& way : Ways())
            EXPECT_EQ(way.update(0, bytes.data(), bytes.size()), expected.back())
                << way.name << ", " << static_cast<unsigned>(bytes[0]);
    }
}

}  // namespace
}  // namespace Kestra::Test
