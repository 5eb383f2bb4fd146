#include <iconv.h>

#include <cerrno>

#include "tests/platform/ConverterCheck.h"

// The code pages that ICU has no tables for, held against those of the C library, which somebody
// else wrote.

namespace Kestra::Test {
namespace {

std::string MakeBytes(unsigned bytes) {
    std::string text;
    if (bytes > 0xFF)
        text += static_cast<char>(static_cast<unsigned char>(bytes >> 8));
    text += static_cast<char>(static_cast<unsigned char>(bytes & 0xFF));
    return text;
}

/// A character set of the C library.
class Oracle {
public:
    explicit Oracle(const char* name) : conversion(iconv_open("UTF-16LE", name)) {
        EXPECT_NE(conversion, reinterpret_cast<iconv_t>(-1)) << name;
    }
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;
    ~Oracle() {
        iconv_close(conversion);
    }

    /// @return the one unit that the bytes are, 0xFFFD when they are no character
    WideChar Read(std::string bytes) {
        WideChar units[4] = {};
        char* from = bytes.data();
        std::size_t fromLeft = bytes.size();
        char* to = reinterpret_cast<char*>(units);
        std::size_t toLeft = sizeof(units);
        iconv(conversion, nullptr, nullptr, nullptr, nullptr);
        const bool isRead = iconv(conversion, &from, &fromLeft, &to, &toLeft) != static_cast<std::size_t>(-1) &&
                            iconv(conversion, nullptr, nullptr, &to, &toLeft) != static_cast<std::size_t>(-1);
        return isRead && toLeft == sizeof(units) - sizeof(WideChar) ? units[0] : WideChar{0xFFFD};
    }

private:
    iconv_t conversion;
};

/// What the code page has, one character a row: the bytes and the unit.
using Expected = std::map<unsigned, WideChar>;

Expected SingleBytesOf(const char* name) {
    Oracle oracle(name);
    Expected expected;
    for (unsigned byte = 0; byte < 0x100; ++byte)
        expected[byte] = oracle.Read(MakeBytes(byte));
    return expected;
}

/// Compares every single byte, and every character up to U+FFFF.
void CheckSingleBytes(CharSet::Code code, const Expected& expected) {
    SCOPED_TRACE(code);
    CharSetConverter converter;
    std::map<WideChar, std::string> bytesOf;
    for (const auto& [byte, unit] : expected) {
        EXPECT_EQ(Dump(ToWide(code, MakeBytes(byte))), Dump(WideString(1, unit))) << byte;
        if (unit != 0xFFFD)
            bytesOf[unit] = MakeBytes(byte);
    }
    ASSERT_EQ(expected.size(), 256U);
    const std::string unmappable = bytesOf.at('?');
    std::string bytes;
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const WideChar character = static_cast<WideChar>(unit);
        ASSERT_EQ(converter.FromWide(code, &character, 1, &bytes), RESULT_OK);
        const auto found = bytesOf.find(character);
        ASSERT_EQ(Dump(bytes), Dump(found == bytesOf.end() ? unmappable : found->second)) << unit;
    }
}

TEST(OwnCodePagesTest, SevenBitSets) {
    Expected international;
    for (unsigned byte = 0; byte < 0x100; ++byte)
        international[byte] = static_cast<WideChar>(byte < 0x80 ? byte : 0xFFFD);
    international['$'] = 0x00A4;
    international['~'] = 0x203E;
    CheckSingleBytes(20105, international);
    CheckSingleBytes(20106, SingleBytesOf("DIN_66003"));
    CheckSingleBytes(20107, SingleBytesOf("SEN_850200_B"));
    CheckSingleBytes(20108, SingleBytesOf("NS_4551-1"));
}

/// A table of the C library with other characters in places where it is incomplete, or of another
/// age.
Expected Replace(Expected expected, const Expected& others) {
    for (const auto& [byte, unit] : others) {
        EXPECT_NE(expected[byte], unit) << byte;
        expected[byte] = unit;
    }
    return expected;
}

TEST(OwnCodePagesTest, EbcdicSets) {
    const Expected greek = {{0x6A, '|'}, {0x74, 0xA0}, {0xAF, 0x3C3}, {0xBA, 0x3C2}, {0xCA, 0xAD}, {0xCC, 0xE2}};
    const Expected cyrillic = {{0x41, 0xA0},  {0x45, 0x454}, {0x55, 0x45E}, {0x64, 0x404}, {0x6A, '|'}, {0x73, 0xAD},
                               {0x74, 0x40E}, {0x79, '`'},   {0xA1, '~'},   {0xC0, '{'},   {0xD0, '}'}};
    const Expected turkish = {{0x41, 0xA0}, {0x9D, 0xB8}, {0xB0, 0x2D9}, {0xB7, 0xB7}};
    CheckSingleBytes(20423, Replace(SingleBytesOf("IBM423"), greek));
    CheckSingleBytes(20880, Replace(SingleBytesOf("IBM880"), cyrillic));
    CheckSingleBytes(20905, Replace(SingleBytesOf("IBM905"), turkish));
    // 924 is 1047 with the eight letters and the sign that Latin-9 has in place of eight others of
    // Latin-1, three of which move.
    const Expected latin9 = {{0x4A, 0xDD},  {0x6A, 0x160}, {0x9D, 0x17E}, {0x9F, 0x20AC}, {0xB0, 0xA2}, {0xB7, 0x152},
                             {0xB8, 0x153}, {0xB9, 0x178}, {0xBA, 0xAC},  {0xBB, 0x161},  {0xBE, 0x17D}};
    CheckSingleBytes(20924, Replace(SingleBytesOf("IBM1047"), latin9));
}

TEST(OwnCodePagesTest, EbcdicLatinSetsHoldTheCharactersOfTheirIsoSets) {
    const struct {
        CharSet::Code code;
        CharSet::Code isoCode;
    } rows[] = {{20905, 28593}, {20924, 28605}};
    for (const auto& row : rows) {
        std::set<WideChar> units;
        std::set<WideChar> isoUnits;
        for (unsigned byte = 0; byte < 0x100; ++byte) {
            units.insert(ToWide(row.code, MakeBytes(byte))[0]);
            isoUnits.insert(ToWide(row.isoCode, MakeBytes(byte))[0]);
        }
        EXPECT_EQ(units, isoUnits) << row.code;
    }
}

/// Compares every pair.
/// @param isOurs  of the pair and the C library's unit: whether it is left to another test
template <typename IsOurs>
std::size_t CheckPairs(CharSet::Code code, const char* name, unsigned firstLead, unsigned lastLead, IsOurs isOurs) {
    Oracle oracle(name);
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    std::size_t compared = 0;
    for (unsigned pair = firstLead << 8; pair < (lastLead + 1) << 8; ++pair) {
        const std::string text = MakeBytes(pair);
        EXPECT_EQ(converter.ToWide(code, text.data(), text.size(), &units), RESULT_OK);
        const WideChar expected = oracle.Read(text);
        if (isOurs(pair, expected))
            continue;
        if (expected == 0xFFFD) {
            EXPECT_EQ(units[0], 0xFFFD) << code << ": " << Dump(text) << "is " << Dump(units);
            continue;
        }
        ++compared;
        EXPECT_EQ(Dump(units), Dump(WideString(1, expected))) << code << ": " << Dump(text);
        EXPECT_EQ(converter.FromWide(code, units.data(), units.size(), &bytes), RESULT_OK);
        EXPECT_EQ(Dump(bytes), Dump(text));
    }
    return compared;
}

/// Letters of Hangul that are no syllable: Windows has the conjoining ones of Unicode, the C
/// library the others.
bool IsLetterAlone(WideChar unit) {
    return unit >= 0x3131 && unit <= 0x318E;
}

TEST(OwnCodePagesTest, JohabSyllablesSymbolsAndHanja) {
    CharSetConverter converter;
    WideString units;
    std::size_t letters = 0;
    const auto isOurs = [&](unsigned pair, WideChar expected) {
        const std::string text = MakeBytes(pair);
        EXPECT_EQ(converter.ToWide(1361, text.data(), text.size(), &units), RESULT_OK);
        const bool isConjoining = units[0] >= 0x1100 && units[0] <= 0x11FF;
        letters += isConjoining ? 1 : 0;
        EXPECT_TRUE(isConjoining || !IsLetterAlone(expected)) << pair;
        return isConjoining || pair >> 8 == 0xD8 || pair == 0xD9E8;  // private use; the postal code mark of 2002
    };
    // Syllables, symbols with the two of 1998 and without the letters, hanja.
    EXPECT_EQ(CheckPairs(1361, "JOHAB", 0x80, 0xFF, isOurs), 11172U + 986U + 2U - 94U + 4888U);
    EXPECT_EQ(letters, 19U + 21U + 27U + 43U);
}

TEST(OwnCodePagesTest, JohabAsWindowsHasIt) {
    const ConversionRow rows[] = {
        {1361, "\\~", KESTRA_WIDE("\\~")},
        {1361, "\x88\x61\xD3\xBD", KESTRA_WIDE("\uAC00\uD7A3")},
        {1361, "\xDA\x31", KESTRA_WIDE("\uFF01")},
        {1361, "\xE0\x31\xF9\xFE", KESTRA_WIDE("\u4F3D\u8A70")},
        {1361, "\x88\x41\xD0\x41", KESTRA_WIDE("\u1100\u1112")},                // the first and last initial,
        {1361, "\x84\x61\x87\xA1", KESTRA_WIDE("\u1161\u1175")},                // medial
        {1361, "\x84\x42\x84\x5D", KESTRA_WIDE("\u11A8\u11C2")},                // and final letter
        {1361, "\xDA\xD4\xDA\xD5\xDA\xFE", KESTRA_WIDE("\u115F\u1114\u11A1")},  // old ones
        {1361, "\xD8\x31\xD8\xFE", KESTRA_WIDE("\uE000\uE0BB")},
    };
    CheckConversions(rows);
    CheckLongStrings({1361, "\x88\x61\xE0\x31", KESTRA_WIDE("\uAC00\u4F3D")}, 30000);
}

TEST(OwnCodePagesTest, JohabThatIsNone) {
    const ToWideRow rows[] = {
        {"no syllable", 1361, "\x84\x41z",
         KESTRA_WIDE("\uFFFD"
                     "Az")},
        {"an initial and a final letter", 1361, "\x88\x42",
         KESTRA_WIDE("\uFFFD"
                     "B")},
        {"a pair without a character goes as one", 1361, "\xD3\xFF\xDA\xA1\xB4\xFEz",
         KESTRA_WIDE("\uFFFD\uFFFD\uFFFD\uFFFDz")},
        {"a lead byte takes no markup with it", 1361, "\x88<\xE0\"", KESTRA_WIDE("\uFFFD<\uFFFD\"")},
        {"half a character", 1361, "a\xE0", KESTRA_WIDE("a\uFFFD")},
        {"half a character and a NUL", 1361, "\xE0\0"sv, WideStringView(KESTRA_WIDE("\uFFFD\0"), 2)},
        {"bytes that begin none", 1361, "\x80\xD4\xDF\xFA\xFF", KESTRA_WIDE("\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD")},
    };
    CheckToWide(rows);
    const FromWideRow back[] = {
        {"letters that only other sets have", 1361, KESTRA_WIDE("\u3131\u00E9"), "??"},
        {"U+FFFD", 1361, KESTRA_WIDE("\uFFFD"), "?"},
        {"a pair of surrogates, and lone ones", 1361, WideStringView(KESTRA_WIDE("\xD83D\xDE00z\xD800"), 4), "?z?"},
    };
    CheckFromWide(back);
}

TEST(OwnCodePagesTest, T61) {
    Oracle oracle("T.61-8BIT");
    for (unsigned byte = 0; byte < 0x100; ++byte)
        EXPECT_EQ(Dump(ToWide(20261, MakeBytes(byte))), Dump(WideString(1, oracle.Read(MakeBytes(byte))))) << byte;
    // The C library lacks some pairs; what else there is are an accent and a character.
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    std::size_t others = 0;
    const auto isOurs = [&](unsigned pair, WideChar expected) {
        const std::string text = MakeBytes(pair);
        EXPECT_EQ(converter.ToWide(20261, text.data(), text.size(), &units), RESULT_OK);
        if (expected != 0xFFFD || units.size() != 1)
            return false;
        ++others;
        EXPECT_EQ(converter.FromWide(20261, units.data(), units.size(), &bytes), RESULT_OK);
        EXPECT_EQ(Dump(bytes), Dump(text));
        return true;
    };
    EXPECT_EQ(CheckPairs(20261, "T.61-8BIT", 0xC0, 0xCF, isOurs), 165U);
    EXPECT_EQ(others, 89U + 16U);  // those of Windows; letters that Unicode composed later

    const ConversionRow rows[] = {
        {20261,
         "\xC2"
         "e\xC8u\xCF"
         "c",
         KESTRA_WIDE("\u00E9\u00FC\u010D")},
        {20261, "\xC1W\xC5\xE1\xC7h", KESTRA_WIDE("\u1E80\u01E2\u1E23")},  // as Windows has them
        {20261, "\xC1 \xC3 \xC4 \xCF ", KESTRA_WIDE("`^~\u02C7")},
        {20261, "\xA4\xA6\xA8", KESTRA_WIDE("$#\u00A4")},
    };
    CheckConversions(rows);
    const ToWideRow toWide[] = {
        {"an accent that no letter takes", 20261, "\xC1z\xC1<", KESTRA_WIDE("\uFFFDz\uFFFD<")},
        {"at the end", 20261, "a\xC2", KESTRA_WIDE("a\uFFFD")},
        {"before another", 20261,
         "\xC1\xC2"
         "e",
         KESTRA_WIDE("\uFFFD\u00E9")},
        {"accents without a meaning", 20261,
         "\xC0"
         "a\xC9"
         "a\xCC"
         "a",
         KESTRA_WIDE("\uFFFDa\uFFFDa\uFFFDa")},
    };
    CheckToWide(toWide);
    const FromWideRow fromWide[] = {
        {"what it lacks", 20261, KESTRA_WIDE("{\\}\u3042\u01D6"), "?????"},
        {"a NUL", 20261, WideStringView(KESTRA_WIDE("a\0"), 2), "a\0"sv},
    };
    CheckFromWide(fromWide);
}

TEST(OwnCodePagesTest, EveryCharacterComesBack) {
    for (const CharSet::Code code : {1361U, 20105U, 20106U, 20107U, 20108U, 20261U, 20423U, 20880U, 20905U, 20924U}) {
        CharSetConverter converter;
        WideString units;
        std::string bytes;
        WideChar unmappable = '?';
        EXPECT_EQ(converter.FromWide(code, &unmappable, 1, &bytes), RESULT_OK);
        const std::string mark = bytes;
        std::size_t held = 0;
        for (unsigned unit = 0; unit < 0x10000; ++unit) {
            const WideChar character = static_cast<WideChar>(unit);
            ASSERT_EQ(converter.FromWide(code, &character, 1, &bytes), RESULT_OK);
            if (bytes == mark)
                continue;
            ++held;
            ASSERT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &units), RESULT_OK);
            ASSERT_EQ(Dump(units), Dump(WideString(1, character))) << code;
        }
        EXPECT_GT(held, 100U) << code;
    }
}

}  // namespace
}  // namespace Kestra::Test
