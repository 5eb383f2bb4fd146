#include "tests/platform/ConverterCheck.h"

// What holds on every platform: the library's own converters, and those answers of the system's
// ones that all systems give.

namespace Kestra::Test {
namespace {

TEST(CharSetConverterTest, Utf16IsACopyOfItsBytes) {
    const std::string alphabet("\x00\x01\x7F\x80\xA0\xD7\xD8\xDB\xDC\xDF\xE0\xFD\xFE\xFF", 14);
    CharSetConverter converter;
    WideString output;
    std::string back;
    const std::size_t count = ForEverySequence<std::string>(alphabet, [&](const std::string& bytes) {
        WideString expected;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const auto low = static_cast<unsigned char>(bytes[i]);
            const auto high = static_cast<unsigned char>(bytes[i + 1]);
            expected += static_cast<WideChar>(low + high * 256);
        }
        if (bytes.size() % 2 != 0)
            expected += static_cast<WideChar>(0xFFFD);
        EXPECT_EQ(converter.ToWide(1200, bytes.data(), bytes.size(), &output), RESULT_OK);
        EXPECT_EQ(Dump(output), Dump(expected)) << Dump(bytes);
        if (bytes.size() % 2 == 0) {
            EXPECT_EQ(converter.FromWide(1200, output.data(), output.size(), &back), RESULT_OK);
            EXPECT_EQ(Dump(back), Dump(bytes));
        }
    });
    EXPECT_EQ(count, 14U + 14U * 14U + 14U * 14U * 14U + 14U * 14U * 14U * 14U);
}

TEST(CharSetConverterTest, OwnConvertersToWide) {
    const ToWideRow rows[] = {
        {"an empty string", 65001, "", KESTRA_WIDE("")},
        {"one to four bytes", 65001, "a\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80", KESTRA_WIDE("a\u00E9\u3042\U0001F600")},
        {"a NUL is a character", 65001, "a\0b\0"sv, WideStringView(KESTRA_WIDE("a\0b\0"), 4)},
        {"a byte-order mark is a character", 65001, "\xEF\xBB\xBFz", KESTRA_WIDE("\uFEFFz")},
        {"one U+FFFD per maximal subpart", 65001, "\xF0\x9F\x98z", KESTRA_WIDE("\uFFFDz")},
        {"a subpart ends at the byte that cannot follow", 65001, "\xF0\x9F\x98\xC3\xA9", KESTRA_WIDE("\uFFFD\u00E9")},
        {"cut at the end", 65001, "\xE3\x81", KESTRA_WIDE("\uFFFD")},
        {"a lone trailing byte", 65001, "\x80", KESTRA_WIDE("\uFFFD")},
        {"an overlong form is two bytes that start nothing", 65001, "\xC0\x80", KESTRA_WIDE("\uFFFD\uFFFD")},
        {"an overlong form of three bytes", 65001, "\xE0\x80\x80", KESTRA_WIDE("\uFFFD\uFFFD\uFFFD")},
        {"a surrogate", 65001, "\xED\xA0\x80", KESTRA_WIDE("\uFFFD\uFFFD\uFFFD")},
        {"beyond U+10FFFF", 65001, "\xF4\x90\x80\x80", KESTRA_WIDE("\uFFFD\uFFFD\uFFFD\uFFFD")},
        {"the last code point", 65001, "\xF4\x8F\xBF\xBF", WideStringView(KESTRA_WIDE("\U0010FFFF"), 2)},
        {"bytes that never occur", 65001, "\xF5\xFE\xFF", KESTRA_WIDE("\uFFFD\uFFFD\uFFFD")},
        {"ASCII runs around the width of a register", 65001,
         "0123456789abcde\xC3\xA9"
         "0123456789abcdef\xC3\xA9"
         "0123456789abcdefg\xFFx",
         KESTRA_WIDE("0123456789abcde\u00E9"
                     "0123456789abcdef\u00E9"
                     "0123456789abcdefg\uFFFDx")},
        {"1252", 1252, "\x80\x8C\x9F\xA0\xFF", KESTRA_WIDE("\u20AC\u0152\u0178\u00A0\u00FF")},
        {"the five undefined bytes of 1252", 1252, "\x81\x8D\x8F\x90\x9D",
         KESTRA_WIDE("\u0081\u008D\u008F\u0090\u009D")},
        {"28591 has C1 controls", 28591, "\x80\x9F\xE9", KESTRA_WIDE("\u0080\u009F\u00E9")},
        {"20127 ends at 127", 20127, "a\x7F\x80\xFFz", KESTRA_WIDE("a\u007F\uFFFD\uFFFDz")},
        {"1200", 1200, "a\0\x42\x30"sv, KESTRA_WIDE("a\u3042")},
        {"1200 keeps lone surrogates", 1200, "\x00\xDC\x00\xD8"sv, WideStringView(KESTRA_WIDE("\xDC00\xD800"), 2)},
        {"1200, an odd last byte", 1200, "a\0b"sv, KESTRA_WIDE("a\uFFFD")},
        {"1200, one byte", 1200, "a", KESTRA_WIDE("\uFFFD")},
    };
    CheckToWide(rows);
}

TEST(CharSetConverterTest, OwnConvertersFromWide) {
    const FromWideRow rows[] = {
        {"an empty string", 65001, KESTRA_WIDE(""), ""},
        {"one to four bytes", 65001, KESTRA_WIDE("a\u00E9\u3042\U0001F600"), "a\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80"},
        {"a NUL is a character", 65001, WideStringView(KESTRA_WIDE("a\0b\0"), 4), "a\0b\0"sv},
        {"a lone surrogate is U+FFFD in UTF-8", 65001, WideStringView(KESTRA_WIDE("\xD800z\xDC00"), 3),
         "\xEF\xBF\xBDz\xEF\xBF\xBD"},
        {"surrogates the wrong way round", 65001, WideStringView(KESTRA_WIDE("\xDC00\xD800"), 2),
         "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"a high surrogate before a pair", 65001, WideStringView(KESTRA_WIDE("\xD83D\xD83D\xDE00"), 3),
         "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        {"a low surrogate after a pair", 65001, WideStringView(KESTRA_WIDE("\xD83D\xDE00\xDE00"), 3),
         "\xF0\x9F\x98\x80\xEF\xBF\xBD"},
        {"1252", 1252, KESTRA_WIDE("\u20AC\u0152\u0178\u00A0\u00FF"), "\x80\x8C\x9F\xA0\xFF"},
        {"the five undefined bytes of 1252", 1252, KESTRA_WIDE("\u0081\u008D\u008F\u0090\u009D"),
         "\x81\x8D\x8F\x90\x9D"},
        {"the other C1 controls are not in 1252", 1252, KESTRA_WIDE("\u0080\u0082\u009F"), "???"},
        {"one \"?\" for a pair and for a lone surrogate", 1252, WideStringView(KESTRA_WIDE("a\xD83D\xDE00z\xD800"), 5),
         "a?z?"},
        {"no look-alikes", 1252, KESTRA_WIDE("\uFF21\u0101"), "??"},
        {"28591", 28591, KESTRA_WIDE("\u0080\u00FF\u0100\u20AC"), "\x80\xFF??"},
        {"20127", 20127, KESTRA_WIDE("a\u007F\u0080\u00E9z"), "a\x7F??z"},
        {"1200", 1200, KESTRA_WIDE("a\u3042"), "a\0\x42\x30"sv},
        {"1200 keeps lone surrogates", 1200, WideStringView(KESTRA_WIDE("\xDC00\xD800"), 2), "\x00\xDC\x00\xD8"sv},
    };
    CheckFromWide(rows);
}

TEST(CharSetConverterTest, OneCharacterBeyondAsciiIsSeenAtEveryPlaceOfALongRun) {
    for (const CharSet::Code code : {65001U, 1252U, 28591U, 20127U}) {
        for (std::size_t place = 0; place < 70; ++place) {
            WideString units(70, static_cast<WideChar>('x'));
            units[place] = static_cast<WideChar>(0xE9);
            std::string bytes(70, 'x');
            bytes.replace(place, 1, code == 65001 ? "\xC3\xA9" : code == 20127 ? "?" : "\xE9");
            EXPECT_EQ(Dump(FromWide(code, units)), Dump(bytes)) << code;
            if (code == 20127) {
                bytes[place] = '\xE9';
                units[place] = static_cast<WideChar>(0xFFFD);
            }
            EXPECT_EQ(Dump(ToWide(code, bytes)), Dump(units)) << code;
        }
    }
}

TEST(CharSetConverterTest, TextSurvivesThereAndBackAtEveryLengthAndAlignment) {
    for (const CharSet::Code code : {65001U, 1252U, 1200U})
        CheckThereAndBack(code);
#ifndef KESTRA_WITHOUT_ICU
    for (const CharSet::Code code : {1250U, 65000U})
        CheckThereAndBack(code);
#endif
}

TEST(CharSetConverterTest, AStringThatHasTheRoomIsNotReallocated) {
    CharSetConverter converter;
    for (const CharSet::Code code : {0U, 65001U, 1252U, 20127U, 28591U, 1200U}) {
        WideString wide;
        wide.reserve(100);
        const WideChar* const wideMemory = wide.data();
        std::string narrow;
        narrow.reserve(300);
        const char* const narrowMemory = narrow.data();
        for (int i = 0; i < 3; ++i) {
            const std::string bytes(static_cast<std::size_t>(100 - 40 * i), 'x');
            EXPECT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &wide), RESULT_OK);
            EXPECT_EQ(wide.data(), wideMemory) << code;
            EXPECT_EQ(converter.FromWide(code, wide.data(), wide.size(), &narrow), RESULT_OK);
            EXPECT_EQ(narrow, bytes) << code;
            EXPECT_EQ(narrow.data(), narrowMemory) << code;
        }
    }
}

TEST(CharSetConverterTest, UnsupportedCodesAreAResult) {
    for (const CharSet::Code code : {1U, 2U, 3U, 42U, 1259U, 65002U, 0xFFFFFFFFU})
        CheckUnsupported(code);
}

// What the system's converters know, and the bytes they must agree with; a build without ICU has
// none.
#ifndef KESTRA_WITHOUT_ICU
TEST(CharSetConverterTest, SystemConvertersBothWays) {
    const ConversionRow rows[] = {
        {437, "\x81\xE1", KESTRA_WIDE("\u00FC\u00DF")},
        {850, "\x81\xE1", KESTRA_WIDE("\u00FC\u00DF")},
        {866, "\x80\xA0", KESTRA_WIDE("\u0410\u0430")},
        {874, "\xA1\x80", KESTRA_WIDE("\u0E01\u20AC")},
        {932, "\x83\x5C\x93\xFA\x96\x7B\xB1\\~", KESTRA_WIDE("\u30BD\u65E5\u672C\uFF71\\~")},
        {932, "\x81\x60\x81\x7C\x87\x40",
         KESTRA_WIDE("\uFF5E\uFF0D\u2460")},  // Microsoft's mappings, not those of JIS X 0208
        {932, "a\x80\xA0\xFD\xFE\xFFz", KESTRA_WIDE("a\u0080\uF8F0\uF8F1\uF8F2\uF8F3z")},
        {936, "\xD6\xD0\x81\x40\x80", KESTRA_WIDE("\u4E2D\u4E02\u20AC")},
        {949, "\xB0\xA1\x81\x41", KESTRA_WIDE("\uAC00\uAC02")},
        {950, "\xA4\xA4\xF9\xD6", KESTRA_WIDE("\u4E2D\u7881")},
        {1250, "\xBC\xA5\x81", KESTRA_WIDE("\u013D\u0104\u0081")},
        {1251, "\xCF\xF0\x98", KESTRA_WIDE("\u041F\u0440\u0098")},
        {1253, "\xE1", KESTRA_WIDE("\u03B1")},
        {1254, "\xF0\xFD", KESTRA_WIDE("\u011F\u0131")},
        {1255, "\xE0", KESTRA_WIDE("\u05D0")},
        {1256, "\xC7", KESTRA_WIDE("\u0627")},
        {1257, "\xE0", KESTRA_WIDE("\u0105")},
        {1258, "\xF0\xFE", KESTRA_WIDE("\u0111\u20AB")},
        {20866, "\xC1\xD2", KESTRA_WIDE("\u0430\u0440")},
        {20932, "\xA4\xA2\xB0\xEC\x8E\xB1", KESTRA_WIDE("\u3042\u4E00\uFF71")},
        {21866, "\xA4\xA6", KESTRA_WIDE("\u0454\u0456")},
        {28592, "\xA1", KESTRA_WIDE("\u0104")},
        {28595, "\xD0", KESTRA_WIDE("\u0430")},
        {28597, "\xE1", KESTRA_WIDE("\u03B1")},
        {28598, "\xE0", KESTRA_WIDE("\u05D0")},
        {28599, "\xFD", KESTRA_WIDE("\u0131")},
        {28605, "\xA4", KESTRA_WIDE("\u20AC")},
        {50220, "a\x1B$B$\"\x1B(Bz", KESTRA_WIDE("a\u3042z")},
        {50221, "a\x1B$B$\"\x1B(Bz", KESTRA_WIDE("a\u3042z")},
        {50222, "a\x1B$B$\"\x1B(Bz", KESTRA_WIDE("a\u3042z")},
        {65000, "a+MEIBew-<", KESTRA_WIDE("a\u3042\u017B<")},
        {37, "\xC1\x6F", KESTRA_WIDE("A?")},
        {10007, "\x80", KESTRA_WIDE("\u0410")},
        {51932, "\xC6\xFC\xCB\xDC", KESTRA_WIDE("\u65E5\u672C")},
    };
    CheckConversions(rows);
}

TEST(CharSetConverterTest, SystemConvertersToWideOnly) {
    const ToWideRow rows[] = {
        {"NULs are characters", 932, "\0\x83\x5C\0"sv, WideStringView(KESTRA_WIDE("\0\u30BD\0"), 3)},
        {"an empty string", 932, "", KESTRA_WIDE("")},
        {"a change to ASCII is no character", 50221, "\x1B(B", KESTRA_WIDE("")},
        {"nor is one to two bytes", 50221, "\x1B$B", KESTRA_WIDE("")},
        {"after a character neither", 50221, "a\x1B$B", KESTRA_WIDE("a")},
        {"UTF-7 that starts a sequence of nothing", 65000, "+", KESTRA_WIDE("")},
    };
    CheckToWide(rows);
}

TEST(CharSetConverterTest, SystemConvertersFromWideOnly) {
    const FromWideRow rows[] = {
        {"a character that the code page lacks", 1250, KESTRA_WIDE("a\u3042z"), "a?z"},
        {"U+FFFD is such a character", 1250, KESTRA_WIDE("\uFFFD"), "?"},
        {"look-alikes are too", 1250, KESTRA_WIDE("\uFF21\u00E3"), "??"},
        {"in a double-byte code page", 932, KESTRA_WIDE("\u00E9\uFFFD"), "??"},
        {"in EUC", 51932, KESTRA_WIDE("\u0E01"), "?"},
        {"in a shifted state", 50221, KESTRA_WIDE("\u3042\u0E01\u3042"), "\x1B$B$\"\x1B(B?\x1B$B$\"\x1B(B"},
        {"half-width katakana in 50220", 50220, KESTRA_WIDE("\uFF71"), "\x1B$B%\"\x1B(B"},
        {"half-width katakana in 50221", 50221, KESTRA_WIDE("\uFF71"), "\x1B$B%\"\x1B(B"},
        {"in EBCDIC", 37, KESTRA_WIDE("\u3042"), "\x6F"},
        {"NULs are characters", 932, WideStringView(KESTRA_WIDE("\0\u30BD\0"), 3), "\0\x83\x5C\0"sv},
        {"an empty string", 932, KESTRA_WIDE(""), ""},
        {"an empty stateful string", 50221, KESTRA_WIDE(""), ""},
    };
    CheckFromWide(rows);
}

TEST(CharSetConverterTest, AsciiIsAsciiInEveryCodePageThatHoldsIt) {
    const std::set<CharSet::Code> otherwise = {
        37,    500,   870,   875,   1026,  1047,  1140,  1141,
        1142,  1143,  1144,  1145,  1146,  1147,  1148,  1149,  // EBCDIC
        20273, 20277, 20278, 20280, 20284, 20285, 20290, 20297,
        20420, 20423, 20424, 20838, 20871, 20880, 20905, 20924,  // EBCDIC
        21025,                                                   // EBCDIC
        20105, 20106, 20107, 20108, 20261,                       // national
        1200,  1201,  12000, 12001,                              // wider units
        864,                                                     // "%" is U+066A
        50220, 50221, 50222, 50225, 50227, 52936, 65000,         // shifts and escapes
    };
    std::size_t compared = 0;
    for (const CharSet::Code code : GetNamedCodes()) {
        CharSetConverter converter;
        std::string bytes;
        WideString units;
        if (otherwise.count(code) != 0 || converter.ToWide(code, "", 0, &units) == RESULT_UNSUPPORTED_CHARSET)
            continue;
        ++compared;
        for (int byte = 0; byte < 128; ++byte) {
            bytes += static_cast<char>(byte);
            units += static_cast<WideChar>(byte);
        }
        EXPECT_EQ(Dump(ToWide(code, bytes)), Dump(units)) << code;
        if (code < 57002 || code > 57011) {  // ISCII repeats its script after each line feed
            EXPECT_EQ(Dump(FromWide(code, units)), Dump(bytes)) << code;
        }
    }
    EXPECT_GT(compared, 50U);
}

TEST(CharSetConverterTest, DataWithoutASizeIsAnEmptyString) {
    CharSetConverter converter;
    for (const CharSet::Code code : {0U, 65001U, 1252U, 20127U, 28591U, 1200U, 932U, 1251U, 50221U, 51932U, 65000U}) {
        for (const bool isNull : {false, true}) {
            WideString units = KESTRA_WIDE("old content");
            EXPECT_EQ(converter.ToWide(code, isNull ? nullptr : "", 0, &units), RESULT_OK) << code;
            EXPECT_TRUE(units.empty()) << code;
            std::string bytes = "old content";
            EXPECT_EQ(converter.FromWide(code, isNull ? nullptr : KESTRA_WIDE(""), 0, &bytes), RESULT_OK) << code;
            EXPECT_TRUE(bytes.empty()) << code;
        }
    }
}

TEST(CharSetConverterTest, EachStringStartsFresh) {
    const FollowingRow rows[] = {
        {50221, "\x1B$B$\"", "3042 "}, {50221, "$\"", "0024 0022 "}, {50222, "\x1B$B$\"", "3042 "},
        {50222, "$\"", "0024 0022 "},  {65000, "+MEI", "3042 "},     {65000, "MEI", "004D 0045 0049 "},
    };
    CheckEachStartsFresh(rows);
    CharSetConverter converter;
    WideString units;
    EXPECT_EQ(converter.ToWide(932, "\x83", 1, &units), RESULT_OK);
    EXPECT_EQ(units.size(), 1U) << "one mark of replacement, U+FFFD or what the code page has for it";
    EXPECT_EQ(converter.ToWide(932, "\\", 1, &units), RESULT_OK);
    EXPECT_EQ(Dump(units), "005C ");

    std::string bytes;
    const auto fromWide = [&](CharSet::Code code, WideStringView text) {
        EXPECT_EQ(converter.FromWide(code, text.data(), text.size(), &bytes), RESULT_OK);
        return bytes;
    };
    EXPECT_EQ(fromWide(50221, KESTRA_WIDE("\u3042")), "\x1B$B$\"\x1B(B");
    EXPECT_EQ(fromWide(50221, KESTRA_WIDE("\u3042")), "\x1B$B$\"\x1B(B");
    EXPECT_EQ(fromWide(932, WideStringView(KESTRA_WIDE("\xD83D"), 1)), "?");
    EXPECT_EQ(fromWide(932, WideStringView(KESTRA_WIDE("\xDE00"), 1)), "?");
}

TEST(CharSetConverterTest, LongStringsAreConvertedWhole) {
    const ConversionRow rows[] = {
        {932, "\x93\xFA", KESTRA_WIDE("\u65E5")},
        {932, "\x1A\x1C\x7F\x93\xFA", KESTRA_WIDE("\x1A\x1C\x7F\u65E5")},
        {51932, "\xC6\xFC", KESTRA_WIDE("\u65E5")},
        {50221, "\x1B$BF|\x1B(B.", KESTRA_WIDE("\u65E5.")},  // eight times as many bytes
    };
    for (const ConversionRow& row : rows)
        CheckLongStrings(row, 30000);
}

TEST(CharSetConverterTest, CopiesStartClosed) {
    CharSetConverter converter;
    WideString units;
    EXPECT_EQ(converter.ToWide(50221, "\x1B$B$\"", 5, &units), RESULT_OK);
    CharSetConverter copy(converter);
    CharSetConverter assigned;
    EXPECT_EQ(assigned.ToWide(50221, "a", 1, &units), RESULT_OK);
    assigned = converter;
    for (CharSetConverter* one : {&copy, &assigned, &converter}) {
        EXPECT_EQ(one->ToWide(50221, "$\"", 2, &units), RESULT_OK);
        EXPECT_EQ(Dump(units), "0024 0022 ");
    }
}

#endif

}  // namespace
}  // namespace Kestra::Test
