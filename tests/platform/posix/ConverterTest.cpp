#include <dlfcn.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include "tests/platform/ConverterCheck.h"

// What the charset conversions owe to ICU: the library's own converters are held against it, all
// others are ICU's.

namespace {

int openings = 0;              // calls of ucnv_open so far
bool isOpeningBroken = false;  // whether they fail

}  // namespace

#define KESTRA_TEST_TEXT(name) #name
#define KESTRA_TEST_TEXT_OF(macro) KESTRA_TEST_TEXT(macro)

// Stands before ICU's own function in the whole test program: it counts, and fails when a test says
// so.
extern "C" UConverter* ucnv_open(const char* name, UErrorCode* error) {
    ++openings;
    if (isOpeningBroken) {
        *error = U_FILE_ACCESS_ERROR;
        return nullptr;
    }
    static const auto original =
        reinterpret_cast<UConverter* (*)(const char*, UErrorCode*)>(dlsym(RTLD_NEXT, KESTRA_TEST_TEXT_OF(ucnv_open)));
    return original(name, error);
}

namespace Kestra::Test {
namespace {

/// ICU as the oracle.
class Oracle {
public:
    explicit Oracle(const char* name, bool hasReplacement) {
        UErrorCode error = U_ZERO_ERROR;
        converter = ucnv_open(name, &error);
        ucnv_setToUCallBack(converter, WriteReplacement, nullptr, nullptr, nullptr, &error);
        ucnv_setFromUCallBack(converter, WriteSubstitution, nullptr, nullptr, nullptr, &error);
        const UChar substitution = hasReplacement ? 0xFFFD : '?';
        ucnv_setSubstString(converter, &substitution, 1, &error);
        ucnv_setFallback(converter, 0);
        EXPECT_TRUE(U_SUCCESS(error)) << name << ": " << u_errorName(error);
    }
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;
    ~Oracle() {
        ucnv_close(converter);
    }

    WideString ToWide(const std::string& bytes) {
        UErrorCode error = U_ZERO_ERROR;
        WideString units(bytes.size() * 4 + 4, 0);
        const std::int32_t size = ucnv_toUChars(converter, units.data(), static_cast<std::int32_t>(units.size()),
                                                bytes.data(), static_cast<std::int32_t>(bytes.size()), &error);
        EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
        units.resize(static_cast<std::size_t>(size));
        return units;
    }

    std::string FromWide(const WideString& units) {
        UErrorCode error = U_ZERO_ERROR;
        std::string bytes(units.size() * 8 + 8, 0);
        const std::int32_t size = ucnv_fromUChars(converter, bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                                  units.data(), static_cast<std::int32_t>(units.size()), &error);
        EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
        bytes.resize(static_cast<std::size_t>(size));
        return bytes;
    }

private:
    static void WriteReplacement(const void*, UConverterToUnicodeArgs* arguments, const char*, std::int32_t,
                                 UConverterCallbackReason reason, UErrorCode* error) {
        const UChar replacement = 0xFFFD;
        if (reason <= UCNV_IRREGULAR) {
            *error = U_ZERO_ERROR;
            ucnv_cbToUWriteUChars(arguments, &replacement, 1, 0, error);
        }
    }

    /// ICU's own callback leaves out characters that are ignorable by default.
    static void WriteSubstitution(const void*, UConverterFromUnicodeArgs* arguments, const UChar*, std::int32_t,
                                  UChar32, UConverterCallbackReason reason, UErrorCode* error) {
        if (reason <= UCNV_IRREGULAR) {
            *error = U_ZERO_ERROR;
            ucnv_cbFromUWriteSub(arguments, 0, error);
        }
    }

    UConverter* converter;
};

struct OwnConverter {
    const char* icuName;
    CharSet::Code code;
    bool hasReplacement;
};

const OwnConverter OWN_CONVERTERS[] = {
    {"UTF-8", 65001, true},
    {"ibm-5348_P100-1997", 1252, false},
    {"US-ASCII", 20127, false},
    {"ISO-8859-1", 28591, false},
};

TEST(PosixConverterTest, OwnConvertersToWideAgreeWithIcuOnEverySequenceOfEdges) {
    // The first and last byte of every range of UTF-8 and of 1252, and their neighbours.
    const std::string alphabet(
        "\x00\x01\x7F\x80\x81\x8D\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF1\xF3\xF4\xF5\xFF",
        27);
    for (const OwnConverter& own : OWN_CONVERTERS) {
        Oracle oracle(own.icuName, own.hasReplacement);
        CharSetConverter converter;
        WideString output;
        std::size_t failures = 0;
        const std::size_t count = ForEverySequence<std::string>(alphabet, [&](const std::string& bytes) {
            if (converter.ToWide(own.code, bytes.data(), bytes.size(), &output) == RESULT_OK &&
                output == oracle.ToWide(bytes))
                return;
            if (++failures <= 20)
                ADD_FAILURE() << own.code << ": " << Dump(bytes) << "gives " << Dump(output);
        });
        EXPECT_EQ(failures, 0U) << own.code;
        EXPECT_EQ(count, 27U + 27U * 27U + 27U * 27U * 27U + 27U * 27U * 27U * 27U);
    }
}

TEST(PosixConverterTest, OwnConvertersFromWideAgreeWithIcuOnEverySequenceOfEdges) {
    const WideString alphabet = {0x0000, 0x0001, 0x007F, 0x0080, 0x0081, 0x009D, 0x00A0, 0x00FF, 0x0100, 0x07FF,
                                 0x0800, 0x20AC, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF};
    for (const OwnConverter& own : OWN_CONVERTERS) {
        Oracle oracle(own.icuName, own.hasReplacement);
        CharSetConverter converter;
        std::string output;
        std::size_t failures = 0;
        ForEverySequence<WideString>(alphabet, [&](const WideString& units) {
            if (converter.FromWide(own.code, units.data(), units.size(), &output) == RESULT_OK &&
                output == oracle.FromWide(units))
                return;
            if (++failures <= 20)
                ADD_FAILURE() << own.code << ": " << Dump(units) << "gives " << Dump(output);
        });
        EXPECT_EQ(failures, 0U) << own.code;
    }
}

TEST(PosixConverterTest, EveryByteAndEveryCodePointAgreesWithIcu) {
    for (const OwnConverter& own : OWN_CONVERTERS) {
        Oracle oracle(own.icuName, own.hasReplacement);
        for (int byte = 0; byte < 256; ++byte) {
            const std::string bytes(1, static_cast<char>(static_cast<unsigned char>(byte)));
            EXPECT_EQ(Dump(ToWide(own.code, bytes)), Dump(oracle.ToWide(bytes))) << own.code << ": " << byte;
        }
        CharSetConverter converter;
        std::string output;
        for (char32_t codePoint = 0; codePoint < 0x110000; codePoint += codePoint < 0x20000 ? 1 : 0x3FF) {
            WideString units(1, static_cast<WideChar>(codePoint));
            if (codePoint >= 0x10000) {
                units[0] = static_cast<WideChar>(0xD7C0 + (codePoint >> 10));
                units += static_cast<WideChar>(0xDC00 + (codePoint & 0x3FF));
            }
            EXPECT_EQ(converter.FromWide(own.code, units.data(), units.size(), &output), RESULT_OK);
            if (output != oracle.FromWide(units))
                ADD_FAILURE() << own.code << ": " << Dump(units) << "gives " << Dump(output);
        }
    }
}

TEST(PosixConverterTest, Utf16AgreesWithIcuWithoutSurrogates) {
    const std::string alphabet("\x00\x01\x7F\x80\xA0\xD7\xD8\xDB\xDC\xDF\xE0\xFD\xFE\xFF", 14);
    CharSetConverter converter;
    WideString output;
    Oracle oracle("UTF-16LE", true);
    std::size_t compared = 0;
    ForEverySequence<std::string>(alphabet, [&](const std::string& bytes) {
        bool hasSurrogate = false;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const auto high = static_cast<unsigned char>(bytes[i + 1]);
            hasSurrogate = hasSurrogate || (high >= 0xD8 && high <= 0xDF);
        }
        EXPECT_EQ(converter.ToWide(1200, bytes.data(), bytes.size(), &output), RESULT_OK);
        if (!hasSurrogate) {  // ICU replaces lone ones
            EXPECT_EQ(Dump(output), Dump(oracle.ToWide(bytes))) << Dump(bytes);
            ++compared;
        }
    });
    EXPECT_GT(compared, 10000U);
}

TEST(PosixConverterTest, ZeroMeans1252) {
    EXPECT_EQ(Dump(ToWide(0, "\x80\x81")), "20AC 0081 ");
    EXPECT_EQ(FromWide(0, KESTRA_WIDE("\u20AC\u0430")), "\x80?");
}

TEST(PosixConverterTest, TextSurvivesThereAndBackAtEveryLengthAndAlignment) {
    for (const CharSet::Code code : {54936U, 1201U, 12000U})
        CheckThereAndBack(code);
}

// What ICU's converters know, and the bytes they must agree with.
TEST(PosixConverterTest, BothWays) {
    const ConversionRow rows[] = {
        {1201, "\0a\x30\x42\xD8\x3D\xDE\x00"sv, KESTRA_WIDE("a\u3042\U0001F600")},
        {10007, "\x80\xFF", KESTRA_WIDE("\u0410\u20AC")},
        {12000, "a\0\0\0\x00\xF6\x01\x00"sv, KESTRA_WIDE("a\U0001F600")},
        {12001, "\0\0\0a\x00\x01\xF6\x00"sv, KESTRA_WIDE("a\U0001F600")},
        {51932, "\xC6\xFC\xCB\xDC\xA1\xC1", KESTRA_WIDE("\u65E5\u672C\uFF5E")},
        {51949, "\xB0\xA1", KESTRA_WIDE("\uAC00")},
        {38598, "\xE0", KESTRA_WIDE("\u05D0")},
        {50222,
         "\x0E"
         "1\x0F"
         "1",
         KESTRA_WIDE("\uFF71"
                     "1")},
        {50225,
         "\x1B$)Ca\x0E"
         "0!\x0F"
         "b",
         KESTRA_WIDE("a\uAC00"
                     "b")},
        {52936, "~{VPND~}a",
         KESTRA_WIDE("\u4E2D\u6587"
                     "a")},
        {54936, "\xD6\xD0\x81\x30\x81\x30\x84\x31\xA4\x37\x94\x39\xFC\x36",
         KESTRA_WIDE("\u4E2D\u0080\uFFFD\U0001F600")},
    };
    CheckConversions(rows);
}

TEST(PosixConverterTest, ToWideOnly) {
    const ToWideRow rows[] = {
        {"ISO-2022-JP with half-width katakana", 50221, "\x1B(I1\x1B(B1",
         KESTRA_WIDE("\uFF71"
                     "1")},
        {"and so in 50220", 50220, "\x1B(I1\x1B(B1",
         KESTRA_WIDE("\uFF71"
                     "1")},
        {"ISO-2022-JP with JIS X 0212", 50221, "\x1B$(D0!\x1B(B", KESTRA_WIDE("\u4E02")},
        {"ISO-2022-JP with JIS X 0201", 50221, "\x1B(J\\~\x1B(B\\~", KESTRA_WIDE("\u00A5\u203E\\~")},
        {"an ESC that starts no escape", 50221, "\x1B<a>", KESTRA_WIDE("\uFFFD<a>")},
        {"ISO-2022-KR without its header", 50225,
         "a\x0E"
         "0!\x0F"
         "b",
         KESTRA_WIDE("a\uAC00"
                     "b")},
        {"a cut double byte", 932, "a\x83", KESTRA_WIDE("a\uFFFD")},
        {"a lead byte takes no ASCII character with it", 932, "\x83\x22", KESTRA_WIDE("\uFFFD\"")},
        {"a single byte without a character", 1253, "a\xD2z", KESTRA_WIDE("a\uFFFDz")},
        {"an unassigned double byte", 932, "\xEF\x40z", KESTRA_WIDE("\uFFFDz")},
        {"Traditional Chinese EUC", 51950, "\xC4\xE3\xC1z", KESTRA_WIDE("\u4E2D\uFFFDz")},
        {"undefined bytes of an 8-bit set", 28597, "\xAE\xD2\xE1", KESTRA_WIDE("\uFFFD\uFFFD\u03B1")},
        {"a lone surrogate", 1201, "\xD8\x00\0z"sv, KESTRA_WIDE("\uFFFDz")},
        {"an odd last byte", 1201, "\0a\0"sv, KESTRA_WIDE("a\uFFFD")},
        {"UTF-7 writes a tilde as a sequence only", 65000, "+AH4-~", KESTRA_WIDE("~\uFFFD")},
        {"beyond U+10FFFF", 12000, "\x00\x00\x11\x00z\0\0\0"sv, KESTRA_WIDE("\uFFFDz")},
        {"a cut sequence of four", 54936, "\x81\x30\x81", KESTRA_WIDE("\uFFFD")},
    };
    CheckToWide(rows);
}

TEST(PosixConverterTest, FromWideOnly) {
    const FromWideRow rows[] = {
        {"one for a pair, one for a lone surrogate", 932, WideStringView(KESTRA_WIDE("\xD83D\xDE00z\xD800"), 4), "?z?"},
        {"a lone surrogate where there is U+FFFD", 1201, WideStringView(KESTRA_WIDE("\xD800z"), 2), "\xFF\xFD\0z"sv},
        {"and in UTF-32", 12000, WideStringView(KESTRA_WIDE("\xDC00"), 1), "\xFD\xFF\0\0"sv},
        {"and in GB18030", 54936, WideStringView(KESTRA_WIDE("\xDC00"), 1), "\x84\x31\xA4\x37"},
    };
    CheckFromWide(rows);
}

TEST(PosixConverterTest, EveryNamedCodePageConverts) {
    for (const CharSet::Code code : GetNamedCodes()) {
        CharSetConverter converter;
        WideString units = KESTRA_WIDE("old content");
        EXPECT_EQ(converter.ToWide(code, "", 0, &units), RESULT_OK) << code;
        EXPECT_TRUE(units.empty()) << code;
        std::string bytes = "old content";
        EXPECT_EQ(converter.FromWide(code, KESTRA_WIDE(""), 0, &bytes), RESULT_OK) << code;
        EXPECT_TRUE(bytes.empty()) << code;

        EXPECT_EQ(converter.FromWide(code, KESTRA_WIDE("Az09"), 4, &bytes), RESULT_OK) << code;
        EXPECT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &units), RESULT_OK) << code;
        EXPECT_TRUE(units == KESTRA_WIDE("Az09")) << code;
    }
}

TEST(PosixConverterTest, EveryNameLeadsToACodePageThatConverts) {
    std::size_t names = 0;
    for (const CharSetRow& row : StringNS::GetCharSetRows()) {
        for (const std::string& name : SplitNames(row.names)) {
            const CharSet::Code code = CharSet::GetCharSetCode(To<WideString>(name));
            WideString units;
            EXPECT_EQ(StringHelper::GetWideFromGeneric(code, "", 0, &units), RESULT_OK) << name;
            EXPECT_NE(code, CharSet::UNKNOWN) << name;
            ++names;
        }
    }
    EXPECT_GT(names, 500U);
}

TEST(PosixConverterTest, UnsupportedCodesAreAResult) {
    CheckUnsupported(50229);
}

TEST(PosixConverterTest, EachStringStartsFresh) {
    const FollowingRow rows[] = {
        {50222,
         "\x0E"
         "1",
         "FF71 "},
        {50222, "1", "0031 "},
        {50225,
         "\x1B$)C\x0E"
         "0!",
         "AC00 "},
        {50225, "0!", "0030 0021 "},
        {932, "\x83", "FFFD "},
        {932, "\\", "005C "},
    };
    CheckEachStartsFresh(rows);
}

TEST(PosixConverterTest, LongStringsAreConvertedWhole) {
    const ConversionRow rows[] = {
        {54936, "\x94\x39\xFC\x36", KESTRA_WIDE("\U0001F600")},  // sequences of four for a pair
        {1201, "\xD8\x3D\xDE\x00"sv, KESTRA_WIDE("\U0001F600")},
        {51932, "\x8F\xB0\xA1", KESTRA_WIDE("\u4E02")},  // more than two bytes for a unit
        {12000, "a\0\0\0"sv, KESTRA_WIDE("a")},
    };
    for (const ConversionRow& row : rows)
        CheckLongStrings(row, 30000);
}

TEST(PosixConverterTest, ACodePageIsOpenedOnce) {
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    const int before = openings;
    for (const CharSet::Code code : {65001U, 0U, 1252U, 20127U, 28591U, 1200U, 4711U})
        converter.ToWide(code, "a", 1, &units);
    EXPECT_EQ(openings - before, 0) << "the library's own";
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(converter.ToWide(20866, "\xC1", 1, &units), RESULT_OK);
        EXPECT_EQ(converter.ToWide(1252, "\xC1", 1, &units), RESULT_OK);
        EXPECT_EQ(converter.FromWide(20866, KESTRA_WIDE("\u0430"), 1, &bytes), RESULT_OK);
    }
    EXPECT_EQ(openings - before, 1);
    EXPECT_EQ(converter.ToWide(932, "a", 1, &units), RESULT_OK);
    EXPECT_EQ(openings - before, 2);
}

TEST(PosixConverterTest, AFailureToOpenIsRemembered) {
    CharSetConverter converter;
    WideString units;
    std::string bytes = "old content";
    const int before = openings;
    isOpeningBroken = true;
    EXPECT_EQ(converter.ToWide(20866, "", 0, &units), RESULT_UNSUPPORTED_CHARSET);
    isOpeningBroken = false;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(converter.ToWide(20866, "a", 1, &units), RESULT_UNSUPPORTED_CHARSET);
        EXPECT_EQ(converter.FromWide(20866, KESTRA_WIDE("a"), 1, &bytes), RESULT_UNSUPPORTED_CHARSET);
    }
    EXPECT_TRUE(units.empty());
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(openings - before, 1);
    EXPECT_EQ(converter.ToWide(932, "a", 1, &units), RESULT_OK);
    EXPECT_EQ(converter.ToWide(20866, "a", 1, &units), RESULT_OK) << "asked for anew after another code page";
}

TEST(PosixConverterTest, CopiesStartClosed) {
    CharSetConverter converter;
    WideString units;
    EXPECT_EQ(converter.ToWide(50221, "\x1B$B$\"", 5, &units), RESULT_OK);

    CharSetConverter copy(converter);
    CharSetConverter assigned;
    EXPECT_EQ(assigned.ToWide(50221, "a", 1, &units), RESULT_OK);
    int before = openings;
    assigned = converter;
    EXPECT_EQ(openings, before);
    for (CharSetConverter* one : {&copy, &assigned}) {
        before = openings;
        EXPECT_EQ(one->ToWide(50221, "$\"", 2, &units), RESULT_OK);
        EXPECT_EQ(Dump(units), "0024 0022 ");
        EXPECT_EQ(openings - before, 1);
    }
    before = openings;
    EXPECT_EQ(converter.ToWide(50221, "$\"", 2, &units), RESULT_OK);
    EXPECT_EQ(openings, before) << "the original stays open";
}

TEST(PosixStringHelperTest, ConversionsToWideLeaveOutTheTerminatorCountedLast) {
    const ToWideRow rows[] = {
        {"big-endian UTF-16 that ends in a zero byte", 1201, "\0a\x30\0"sv, KESTRA_WIDE("a\u3000")},
        {"big-endian UTF-16 with a terminator of its own", 1201, "\0a\0\0"sv, KESTRA_WIDE("a")},
        {"UTF-32 with the terminating byte of a char string", 12000, "a\0\0\0\0"sv, KESTRA_WIDE("a")},
        {"UTF-32 with a terminator of its own", 12000, "a\0\0\0\0\0\0\0"sv, KESTRA_WIDE("a")},
        {"UTF-32 without a terminator", 12000, "a\0\0\0"sv, KESTRA_WIDE("a")},
    };
    CheckWithoutTerminator(rows);
}

}  // namespace
}  // namespace Kestra::Test
