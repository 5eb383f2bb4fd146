#include "platform/posix/DetectorCodePages.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/CharSet.h"
#include "tests/platform/posix/CharsetSamples.h"

namespace Kestra::Base {
namespace {

using StringNS::CharSet;
using Test::DecodeText;

TEST(DetectorCodePagesTest, FindsNamesInAnyCase) {
    EXPECT_EQ(FindDetectorCodePage("windows-1251"), 1251U);
    EXPECT_EQ(FindDetectorCodePage("WINDOWS-1251"), 1251U);
    EXPECT_EQ(FindDetectorCodePage("Shift_JIS"), 932U);
    EXPECT_EQ(FindDetectorCodePage("EUC-JP"), 51932U);
    EXPECT_EQ(FindDetectorCodePage("GB18030"), 54936U);
    EXPECT_EQ(FindDetectorCodePage("KOI8-R"), 20866U);
    EXPECT_EQ(FindDetectorCodePage("ISO-2022-JP"), 50221U);
    EXPECT_EQ(FindDetectorCodePage("ISO-2022-KR"), 50225U);
    EXPECT_EQ(FindDetectorCodePage("UTF-8"), 65001U);
    EXPECT_EQ(FindDetectorCodePage("windows-874"), 0U) << "no engine spells it so";
    EXPECT_EQ(FindDetectorCodePage(""), 0U);
    EXPECT_EQ(FindDetectorCodePage("WINDOWS-125"), 0U);
    EXPECT_EQ(FindDetectorCodePage("WINDOWS-12511"), 0U);
}

TEST(DetectorCodePagesTest, CharsetsWithoutACodePageHaveNone) {
    for (const char* name :
         {"ISO-8859-10", "ISO-8859-16", "VISCII", "EUC-TW", "ISO-2022-CN", "IBM420_rtl", "IBM420_ltr", "IBM424_rtl",
          "IBM424_ltr", "X-ISO-10646-UCS-4-3412", "X-ISO-10646-UCS-4-2143"})
        EXPECT_EQ(FindDetectorCodePage(name), 0U) << name;
}

TEST(DetectorCodePagesTest, TheTableIsSortedWithoutDuplicates) {
    std::string_view previous;
    for (const DetectorCodePage& row : DetectorCodePages()) {
        EXPECT_LT(previous, row.name);
        EXPECT_NE(row.code, 0U) << row.name;
        previous = row.name;
    }
}

/// The front end turns down a code that has no registered name, so each must have one.
TEST(DetectorCodePagesTest, EveryAnswerHasARegisteredName) {
    for (const DetectorCodePage& row : DetectorCodePages())
        EXPECT_FALSE(CharSet::GetCharSetName(row.code).empty()) << row.name << ", " << row.code;
    EXPECT_FALSE(CharSet::GetCharSetName(CharSet::EUC_JP_0208_1990).empty()) << "what the front end makes of 51932";
}

struct Superset {
    const char* subset;      ///< an engine's name
    const char* converter;   ///< ICU's converter for the subset
    const char* superset;    ///< ICU's converter for what the table answers
    std::string_view other;  ///< the bytes that mean something else in the superset
};

// What ISO-8859-1 and ISO-8859-9 have from 80 to 9F are control characters, which no text holds.
const Superset SUPERSETS[] = {
    {"ISO-8859-1", "ISO-8859-1", "windows-1252", ""},
    {"ISO-8859-9", "ISO-8859-9", "windows-1254", ""},
    {"TIS-620", "TIS-620", "windows-874", ""},
    {"ISO-8859-11", "ISO-8859-11", "windows-874", ""},
    {"ISO-8859-8-I", "ISO-8859-8", "windows-1255", "\xA4\xDF"},
};

TEST(DetectorCodePagesTest, ASupersetReadsTheSubset) {
    for (const Superset& row : SUPERSETS) {
        const auto code = FindDetectorCodePage(row.subset);
        EXPECT_EQ("windows-" + std::to_string(code), row.superset) << row.subset;
        for (int byte = 0; byte < 256; ++byte) {
            if (byte >= 0x80 && byte < 0xA0)
                continue;
            const std::string text(1, static_cast<char>(byte));
            const std::u16string expected = DecodeText(text, row.converter);
            if (expected == u"\uFFFD")
                continue;  // the subset has no such character
            const bool same = DecodeText(text, row.superset) == expected;
            EXPECT_EQ(same, row.other.find(text[0]) == std::string_view::npos) << row.subset << ", byte " << byte;
        }
    }
}

TEST(DetectorCodePagesTest, ADoubleByteSupersetReadsTheSubset) {
    EXPECT_EQ(FindDetectorCodePage("GB2312"), FindDetectorCodePage("GB18030"));
    EXPECT_EQ(FindDetectorCodePage("EUC-KR"), FindDetectorCodePage("UHC"));
    for (int lead = 0xB0; lead <= 0xC8;
         ++lead) {  // the rows of syllables in both national standards, and of the common ideographs
        for (int trail = 0xA1; trail <= 0xFE; ++trail) {
            const std::string text{static_cast<char>(lead), static_cast<char>(trail)};
            EXPECT_EQ(DecodeText(text, "EUC-CN"), DecodeText(text, "GB18030")) << lead << ' ' << trail;
            EXPECT_EQ(DecodeText(text, "EUC-KR"), DecodeText(text, "windows-949")) << lead << ' ' << trail;
        }
    }
}

}  // namespace
}  // namespace Kestra::Base
