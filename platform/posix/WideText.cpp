#include "platform/posix/WideText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

constexpr CharSet::Code UTF16_BE = 1201;

// Costs in bits. Bytes without any pattern cost sixteen a unit.
constexpr double MOST_BITS = 12.5;    ///< of a unit of text, on average
constexpr double LEAST_GAP = 1;       ///< to the other order, on average
constexpr double BAD_UNIT = 40;       ///< a control, a lone surrogate, no character
constexpr double WITHIN_BLOCK = 5.5;  ///< which character of its 128
constexpr double LARGEST_SHARE_OF_BAD = 0.01;
constexpr double MOST_CONFIDENCE = 98;
constexpr double UNSPACED_LIMIT = 49;  ///< units without any space may as well be numbers
constexpr double PER_UNIT = 8;         ///< a few units are no evidence

struct Block {
    char16_t first;
    char16_t last;
    double bits;  ///< which of its characters
};

/// Scripts of more than 128 characters; the others are in order.
constexpr Block LARGE_BLOCKS[] = {
    {0x3000, 0x30FF, 6},  {0x3400, 0x4DBF, 16}, {0x4E00, 0x9FFF, 10.5},
    {0xA000, 0xABFF, 16}, {0xAC00, 0xD7A3, 9},  {0xFF00, 0xFFEF, 6},
};

struct Count {
    double bits = 0;
    double bad = 0;
    double spaces = 0;  ///< and what ends a part of a sentence in Chinese and Japanese
};

bool IsBad(char16_t unit) {
    return (unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r' && unit != '\f') ||
           (unit >= 0x7F && unit < 0xA0) || (unit >= 0xE000 && unit < 0xF900) || (unit >= 0xFDD0 && unit <= 0xFDEF) ||
           unit >= 0xFFFE;
}

bool IsSpaceOrComma(char16_t unit) {
    return unit == ' ' || (unit >= '\t' && unit <= '\r') || (unit >= 0x3000 && unit <= 0x3002) || unit == 0xFF0C;
}

bool IsSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xE000;
}

/// What the units cost when each script that occurs is as likely as it is frequent.
Count CountBits(std::string_view bytes, std::size_t low) {
    constexpr std::size_t SMALL_BLOCKS = 512;
    std::array<double, SMALL_BLOCKS + std::size(LARGE_BLOCKS)> counts{};
    Count count;
    double good = 0;
    bool highSurrogate = false;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit = static_cast<char16_t>(static_cast<unsigned char>(bytes[i + low]) |
                                                static_cast<unsigned char>(bytes[i + 1 - low]) << 8);
        const bool isPair = highSurrogate && unit >= 0xDC00 && unit < 0xE000;
        if (highSurrogate && !isPair)
            ++count.bad;
        highSurrogate = unit >= 0xD800 && unit < 0xDC00;
        if (isPair)
            count.bits += 16;
        else if (IsBad(unit) || (IsSurrogate(unit) && !highSurrogate))
            ++count.bad;
        if (IsBad(unit) || IsSurrogate(unit))
            continue;
        count.spaces += IsSpaceOrComma(unit) ? 1 : 0;
        const auto* const large = std::ranges::find_if(
            LARGE_BLOCKS, [unit](const Block& block) { return unit >= block.first && unit <= block.last; });
        if (large != std::end(LARGE_BLOCKS)) {
            ++counts[SMALL_BLOCKS + static_cast<std::size_t>(large - LARGE_BLOCKS)];
            count.bits += large->bits;
        } else {
            ++counts[unit >> 7];
            count.bits += WITHIN_BLOCK;
        }
        ++good;
    }
    for (const double frequency : counts) {
        // A block that has not been seen yet costs some bits to name.
        if (frequency > 0)
            count.bits += 6 - frequency * std::log2(frequency / good);
    }
    count.bits += count.bad * BAD_UNIT;
    return count;
}

}  // namespace

DetectedCharset FindWideText(std::string_view bytes) {
    const auto units = static_cast<double>(bytes.size() / 2);
    if (units < 4)
        return {};
    const Count little = CountBits(bytes, 0);
    const Count big = CountBits(bytes, 1);
    const bool isLittle = little.bits <= big.bits;
    const Count& best = isLittle ? little : big;
    const double gap = std::abs(little.bits - big.bits) / units;
    if (best.bits / units > MOST_BITS || gap < LEAST_GAP || best.bad > units * LARGEST_SHARE_OF_BAD)
        return {};
    return {isLittle ? CharSet::UTF16_LE : UTF16_BE,
            static_cast<std::uint32_t>(std::min(best.spaces > 0 ? MOST_CONFIDENCE : UNSPACED_LIMIT, units * PER_UNIT))};
}

}  // namespace Kestra::Base
