#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CharSetConverter.h"
#include "platform/CharSetNames.h"
#include "platform/Characters.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"
#include "tests/support/Flavours.h"

/// @file
/// What the tests of the charset conversions share: on every platform, and of the system's own
/// ones.

namespace Kestra::Test {

using namespace std::string_view_literals;

using StringNS::CharSet;
using StringNS::CharSetConverter;
using StringNS::CharSetRow;
using StringNS::StringHelper;

/// The units of a string in hexadecimal, so that a failure shows them.
template <typename C>
std::string Dump(std::basic_string_view<C> text) {
    static const char digits[] = "0123456789ABCDEF";
    std::string dump;
    for (const C character : text) {
        for (int shift = sizeof(C) == 1 ? 4 : 12; shift >= 0; shift -= 4)
            dump += digits[(static_cast<unsigned>(character) >> shift) & 15U];
        dump += ' ';
    }
    return dump;
}

template <typename C>
std::string Dump(const std::basic_string<C>& text) {
    return Dump(std::basic_string_view<C>(text));
}

inline WideString ToWide(CharSet::Code code, std::string_view bytes) {
    CharSetConverter converter;
    WideString output = KESTRA_WIDE("old content");
    EXPECT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &output), RESULT_OK) << code;
    return output;
}

inline std::string FromWide(CharSet::Code code, WideStringView units) {
    CharSetConverter converter;
    std::string output = "old content";
    EXPECT_EQ(converter.FromWide(code, units.data(), units.size(), &output), RESULT_OK) << code;
    return output;
}

/// Bytes and the units that they stand for, both ways.
struct ConversionRow {
    CharSet::Code code;
    std::string_view bytes;
    WideStringView units;
};

struct ToWideRow {
    const char* note;
    CharSet::Code code;
    std::string_view bytes;
    WideStringView expected;
};

struct FromWideRow {
    const char* note;
    CharSet::Code code;
    WideStringView units;
    std::string_view expected;
};

inline void CheckConversions(std::span<const ConversionRow> rows) {
    for (const ConversionRow& row : rows) {
        EXPECT_EQ(Dump(ToWide(row.code, row.bytes)), Dump(row.units)) << row.code;
        if (row.code != CharSet::UTF7) {  // may be written in several ways
            EXPECT_EQ(Dump(FromWide(row.code, row.units)), Dump(row.bytes)) << row.code;
        }
    }
}

inline void CheckToWide(std::span<const ToWideRow> rows) {
    for (const ToWideRow& row : rows)
        EXPECT_EQ(Dump(ToWide(row.code, row.bytes)), Dump(row.expected)) << row.code << ", " << row.note;
}

inline void CheckFromWide(std::span<const FromWideRow> rows) {
    for (const FromWideRow& row : rows)
        EXPECT_EQ(Dump(FromWide(row.code, row.units)), Dump(row.expected)) << row.code << ", " << row.note;
}

/// The helper leaves the output without what these strings end with.
inline void CheckWithoutTerminator(std::span<const ToWideRow> rows) {
    for (const ToWideRow& row : rows) {
        WideString output = KESTRA_WIDE("old content");
        EXPECT_EQ(StringHelper::GetWideFromGeneric(row.code, row.bytes.data(), row.bytes.size(), &output), RESULT_OK)
            << row.note;
        EXPECT_TRUE(output == row.expected) << row.note << ": " << output.size() << " units";
        if (row.code == 0) {
            EXPECT_EQ(StringHelper::GetStringFromAnsi(row.bytes.data(), row.bytes.size(), &output), RESULT_OK)
                << row.note;
            EXPECT_TRUE(output == row.expected) << row.note;
        }
    }
}

inline void CheckWithoutTerminator(std::span<const FromWideRow> rows) {
    for (const FromWideRow& row : rows) {
        std::string output = "old content";
        EXPECT_EQ(StringHelper::GetStringFromWide(row.code, row.units.data(), row.units.size(), &output), RESULT_OK)
            << row.note;
        EXPECT_EQ(output, row.expected) << row.note;
        if (row.code == 0) {
            EXPECT_EQ(StringHelper::GetAnsiFromWide(row.units.data(), row.units.size(), &output), RESULT_OK)
                << row.note;
            EXPECT_EQ(output, row.expected) << row.note;
        }
    }
}

/// Bytes, converted after others by the same converter, and the units in hexadecimal.
struct FollowingRow {
    CharSet::Code code;
    std::string_view bytes;
    std::string_view expected;
};

inline void CheckEachStartsFresh(std::span<const FollowingRow> rows) {
    CharSetConverter converter;
    WideString units;
    for (const FollowingRow& row : rows) {
        EXPECT_EQ(converter.ToWide(row.code, row.bytes.data(), row.bytes.size(), &units), RESULT_OK);
        EXPECT_EQ(Dump(units), row.expected) << row.code;
    }
}

/// Parts of a text of many lengths and alignments come back as they were.
inline void CheckThereAndBack(CharSet::Code code) {
    const WideString sample = KESTRA_WIDE(
        "The quick brown fox, \u00FCber \u20AC 5 \u2014 jumps over the lazy dog. 0123456789 0123456789 \u00E9");
    CharSetConverter converter;
    std::string bytes;
    WideString units;
    for (std::size_t begin = 0; begin < 20; ++begin) {
        for (std::size_t end = begin; end <= sample.size(); ++end) {
            const std::size_t size = end - begin;
            ASSERT_EQ(converter.FromWide(code, sample.data() + begin, size, &bytes), RESULT_OK) << code;
            ASSERT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &units), RESULT_OK) << code;
            ASSERT_EQ(Dump(units), Dump(sample.substr(begin, size))) << code;
        }
    }
}

/// A result code and an empty output both ways, for an empty string as well.
inline void CheckUnsupported(CharSet::Code code) {
    CharSetConverter converter;
    for (const std::size_t size : {3U, 0U}) {
        WideString units = KESTRA_WIDE("old content");
        EXPECT_EQ(converter.ToWide(code, size == 0 ? nullptr : "abc", size, &units), RESULT_UNSUPPORTED_CHARSET)
            << code;
        EXPECT_TRUE(units.empty()) << code;
        std::string bytes = "old content";
        EXPECT_EQ(converter.FromWide(code, size == 0 ? nullptr : KESTRA_WIDE("abc"), size, &bytes),
                  RESULT_UNSUPPORTED_CHARSET)
            << code;
        EXPECT_TRUE(bytes.empty()) << code;
    }
}

/// Converts the text of a row `times` times in one string, after up to four characters, so that
/// steps of any even size cut characters.
inline void CheckLongStrings(const ConversionRow& row, std::size_t times) {
    CharSetConverter converter;
    for (std::size_t offset = 0; offset < 5; ++offset) {
        std::string bytes;
        WideString units;
        for (std::size_t i = 0; i < offset; ++i) {
            bytes += FromWide(row.code, KESTRA_WIDE("x"));
            units += static_cast<WideChar>('x');
        }
        for (std::size_t i = 0; i < times; ++i) {
            bytes += row.bytes;
            units += row.units;
        }
        WideString wide;
        EXPECT_EQ(converter.ToWide(row.code, bytes.data(), bytes.size(), &wide), RESULT_OK);
        EXPECT_TRUE(wide == units) << row.code << ", after " << offset;
        std::string narrow;
        EXPECT_EQ(converter.FromWide(row.code, units.data(), units.size(), &narrow), RESULT_OK);
        EXPECT_TRUE(narrow == bytes) << row.code << ", after " << offset;
    }
}

/// Calls back with every sequence of one to four members of `alphabet`.
/// @return their number.
template <typename S>
std::size_t ForEverySequence(const S& alphabet, const std::function<void(const S&)>& call) {
    std::size_t count = 0;
    for (std::size_t length = 1; length <= 4; ++length) {
        std::vector<std::size_t> digits(length, 0);
        S sequence(length, alphabet[0]);
        for (bool isDone = false; !isDone;) {
            call(sequence);
            ++count;
            std::size_t place = 0;
            for (; place < length; ++place) {
                digits[place] = (digits[place] + 1) % alphabet.size();
                sequence[place] = alphabet[digits[place]];
                if (digits[place] != 0)
                    break;
            }
            isDone = place == length;
        }
    }
    return count;
}

/// The names of a row of the table.
inline std::vector<std::string> SplitNames(std::string_view names) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end = names.find(' '); end != std::string_view::npos; end = names.find(' ', begin)) {
        parts.emplace_back(names.substr(begin, end - begin));
        begin = end + 1;
    }
    parts.emplace_back(names.substr(begin));
    return parts;
}

/// The code pages that have a name.
inline std::set<CharSet::Code> GetNamedCodes() {
    std::set<CharSet::Code> codes;
    for (const CharSetRow& row : StringNS::GetCharSetRows())
        codes.insert(row.code);
    for (const CharSetRow& row : StringNS::GetSharedCharSetNames())
        codes.insert(row.code);
    return codes;
}

}  // namespace Kestra::Test
