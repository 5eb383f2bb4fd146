#include "platform/CharSetConverter.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CharSetNames.h"
#include "platform/Characters.h"
#include "platform/Results.h"

namespace {

int openings = 0;              // calls of ucnv_open so far
bool isOpeningBroken = false;  // whether they fail

}  // namespace

#define KESTRA_TEST_TEXT(name) #name
#define KESTRA_TEST_TEXT_OF(macro) KESTRA_TEST_TEXT(macro)

// Stands in front of ICU's own function in the whole test program: it counts, and fails when a test says so.
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

namespace Kestra::StringNS {
namespace {

using namespace std::string_view_literals;

template <typename C>
std::string Dump(const std::basic_string<C>& text) {
    static const char digits[] = "0123456789ABCDEF";
    std::string dump;
    for (const C character : text) {
        for (int shift = sizeof(C) == 1 ? 4 : 12; shift >= 0; shift -= 4)
            dump += digits[(static_cast<unsigned>(character) >> shift) & 15U];
        dump += ' ';
    }
    return dump;
}

WideString ToWide(CharSet::Code code, std::string_view bytes) {
    CharSetConverter converter;
    WideString output = KESTRA_WIDE("old content");
    EXPECT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &output), RESULT_OK) << code;
    return output;
}

std::string FromWide(CharSet::Code code, WideStringView units) {
    CharSetConverter converter;
    std::string output = "old content";
    EXPECT_EQ(converter.FromWide(code, units.data(), units.size(), &output), RESULT_OK) << code;
    return output;
}

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
        const std::int32_t size = ucnv_toUChars(converter, units.data(), static_cast<std::int32_t>(units.size()), bytes.data(),
                                                static_cast<std::int32_t>(bytes.size()), &error);
        EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
        units.resize(static_cast<std::size_t>(size));
        return units;
    }

    std::string FromWide(const WideString& units) {
        UErrorCode error = U_ZERO_ERROR;
        std::string bytes(units.size() * 8 + 8, 0);
        const std::int32_t size = ucnv_fromUChars(converter, bytes.data(), static_cast<std::int32_t>(bytes.size()), units.data(),
                                                  static_cast<std::int32_t>(units.size()), &error);
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
    static void WriteSubstitution(const void*, UConverterFromUnicodeArgs* arguments, const UChar*, std::int32_t, UChar32,
                                  UConverterCallbackReason reason, UErrorCode* error) {
        if (reason <= UCNV_IRREGULAR) {
            *error = U_ZERO_ERROR;
            ucnv_cbFromUWriteSub(arguments, 0, error);
        }
    }

    UConverter* converter;
};

/// Calls back with every sequence of one to four members of `alphabet`. @return their number.
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

TEST(CharSetConverterTest, OwnConvertersToWideAgreeWithIcuOnEverySequenceOfEdges) {
    // The first and last byte of every range of UTF-8 and of 1252, and their neighbours.
    const std::string alphabet(
        "\x00\x01\x7F\x80\x81\x8D\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF1\xF3\xF4\xF5\xFF", 27);
    for (const OwnConverter& own : OWN_CONVERTERS) {
        Oracle oracle(own.icuName, own.hasReplacement);
        CharSetConverter converter;
        WideString output;
        std::size_t failures = 0;
        const std::size_t count = ForEverySequence<std::string>(alphabet, [&](const std::string& bytes) {
            if (converter.ToWide(own.code, bytes.data(), bytes.size(), &output) == RESULT_OK && output == oracle.ToWide(bytes))
                return;
            if (++failures <= 20)
                ADD_FAILURE() << own.code << ": " << Dump(bytes) << "gives " << Dump(output);
        });
        EXPECT_EQ(failures, 0U) << own.code;
        EXPECT_EQ(count, 27U + 27U * 27U + 27U * 27U * 27U + 27U * 27U * 27U * 27U);
    }
}

TEST(CharSetConverterTest, OwnConvertersFromWideAgreeWithIcuOnEverySequenceOfEdges) {
    const WideString alphabet = {0x0000, 0x0001, 0x007F, 0x0080, 0x0081, 0x009D, 0x00A0, 0x00FF, 0x0100, 0x07FF,
                                 0x0800, 0x20AC, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF};
    for (const OwnConverter& own : OWN_CONVERTERS) {
        Oracle oracle(own.icuName, own.hasReplacement);
        CharSetConverter converter;
        std::string output;
        std::size_t failures = 0;
        ForEverySequence<WideString>(alphabet, [&](const WideString& units) {
            if (converter.FromWide(own.code, units.data(), units.size(), &output) == RESULT_OK && output == oracle.FromWide(units))
                return;
            if (++failures <= 20)
                ADD_FAILURE() << own.code << ": " << Dump(units) << "gives " << Dump(output);
        });
        EXPECT_EQ(failures, 0U) << own.code;
    }
}

TEST(CharSetConverterTest, EveryByteAndEveryCodePointAgreesWithIcu) {
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

TEST(CharSetConverterTest, Utf16IsACopyOfItsBytes) {
    const std::string alphabet("\x00\x01\x7F\x80\xA0\xD7\xD8\xDB\xDC\xDF\xE0\xFD\xFE\xFF", 14);
    CharSetConverter converter;
    WideString output;
    std::string back;
    Oracle oracle("UTF-16LE", true);
    std::size_t compared = 0;
    ForEverySequence<std::string>(alphabet, [&](const std::string& bytes) {
        WideString expected;
        bool hasSurrogate = false;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const auto low = static_cast<unsigned char>(bytes[i]);
            const auto high = static_cast<unsigned char>(bytes[i + 1]);
            expected += static_cast<WideChar>(low + high * 256);
            hasSurrogate = hasSurrogate || (high >= 0xD8 && high <= 0xDF);
        }
        if (bytes.size() % 2 != 0)
            expected += static_cast<WideChar>(0xFFFD);
        EXPECT_EQ(converter.ToWide(1200, bytes.data(), bytes.size(), &output), RESULT_OK);
        EXPECT_EQ(Dump(output), Dump(expected)) << Dump(bytes);
        if (!hasSurrogate) {  // ICU replaces lone ones
            EXPECT_EQ(Dump(output), Dump(oracle.ToWide(bytes))) << Dump(bytes);
            ++compared;
        }
        if (bytes.size() % 2 == 0) {
            EXPECT_EQ(converter.FromWide(1200, output.data(), output.size(), &back), RESULT_OK);
            EXPECT_EQ(Dump(back), Dump(bytes));
        }
    });
    EXPECT_GT(compared, 10000U);
}

TEST(CharSetConverterTest, OwnConvertersToWide) {
    struct Case {
        const char* note;
        CharSet::Code code;
        std::string_view bytes;
        WideStringView expected;
    };
    const Case cases[] = {
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
        {"the five undefined bytes of 1252", 1252, "\x81\x8D\x8F\x90\x9D", KESTRA_WIDE("\u0081\u008D\u008F\u0090\u009D")},
        {"0 means 1252", 0, "\x80\x81", KESTRA_WIDE("\u20AC\u0081")},
        {"28591 has C1 controls", 28591, "\x80\x9F\xE9", KESTRA_WIDE("\u0080\u009F\u00E9")},
        {"20127 ends at 127", 20127, "a\x7F\x80\xFFz", KESTRA_WIDE("a\u007F\uFFFD\uFFFDz")},
        {"1200", 1200, "a\0\x42\x30"sv, KESTRA_WIDE("a\u3042")},
        {"1200 keeps lone surrogates", 1200, "\x00\xDC\x00\xD8"sv, WideStringView(u"\xDC00\xD800", 2)},
        {"1200, an odd last byte", 1200, "a\0b"sv, KESTRA_WIDE("a\uFFFD")},
        {"1200, one byte", 1200, "a", KESTRA_WIDE("\uFFFD")},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Dump(ToWide(c.code, c.bytes)), Dump(WideString(c.expected))) << c.note;
}

TEST(CharSetConverterTest, OwnConvertersFromWide) {
    struct Case {
        const char* note;
        CharSet::Code code;
        WideStringView units;
        std::string_view expected;
    };
    const Case cases[] = {
        {"an empty string", 65001, KESTRA_WIDE(""), ""},
        {"one to four bytes", 65001, KESTRA_WIDE("a\u00E9\u3042\U0001F600"), "a\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80"},
        {"a NUL is a character", 65001, WideStringView(KESTRA_WIDE("a\0b\0"), 4), "a\0b\0"sv},
        {"a lone surrogate is U+FFFD in UTF-8", 65001, WideStringView(u"\xD800z\xDC00", 3), "\xEF\xBF\xBDz\xEF\xBF\xBD"},
        {"surrogates the wrong way round", 65001, WideStringView(u"\xDC00\xD800", 2), "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"a high surrogate before a pair", 65001, WideStringView(u"\xD83D\xD83D\xDE00", 3), "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        {"a low surrogate behind a pair", 65001, WideStringView(u"\xD83D\xDE00\xDE00", 3), "\xF0\x9F\x98\x80\xEF\xBF\xBD"},
        {"1252", 1252, KESTRA_WIDE("\u20AC\u0152\u0178\u00A0\u00FF"), "\x80\x8C\x9F\xA0\xFF"},
        {"the five undefined bytes of 1252", 1252, KESTRA_WIDE("\u0081\u008D\u008F\u0090\u009D"), "\x81\x8D\x8F\x90\x9D"},
        {"the other C1 controls are not in 1252", 1252, KESTRA_WIDE("\u0080\u0082\u009F"), "???"},
        {"0 means 1252", 0, KESTRA_WIDE("\u20AC\u0430"), "\x80?"},
        {"one \"?\" for a pair and for a lone surrogate", 1252, WideStringView(u"a\xD83D\xDE00z\xD800", 5), "a?z?"},
        {"no look-alikes", 1252, KESTRA_WIDE("\uFF21\u0101"), "??"},
        {"28591", 28591, KESTRA_WIDE("\u0080\u00FF\u0100\u20AC"), "\x80\xFF??"},
        {"20127", 20127, KESTRA_WIDE("a\u007F\u0080\u00E9z"), "a\x7F??z"},
        {"1200", 1200, KESTRA_WIDE("a\u3042"), "a\0\x42\x30"sv},
        {"1200 keeps lone surrogates", 1200, WideStringView(u"\xDC00\xD800", 2), "\x00\xDC\x00\xD8"sv},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Dump(FromWide(c.code, c.units)), Dump(std::string(c.expected))) << c.note;
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
    const WideString sample =
        KESTRA_WIDE("The quick brown fox, \u00FCber \u20AC 5 \u2014 jumps over the lazy dog. 0123456789 0123456789 \u00E9");
    CharSetConverter converter;
    std::string bytes;
    WideString units;
    for (const CharSet::Code code : {65001U, 1252U, 1200U, 1250U, 54936U, 65000U, 1201U, 12000U}) {
        for (std::size_t begin = 0; begin < 20; ++begin) {
            for (std::size_t end = begin; end <= sample.size(); ++end) {
                const std::size_t size = end - begin;
                ASSERT_EQ(converter.FromWide(code, sample.data() + begin, size, &bytes), RESULT_OK);
                ASSERT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &units), RESULT_OK);
                ASSERT_EQ(Dump(units), Dump(sample.substr(begin, size))) << code;
            }
        }
    }
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

// What the system converters know, and the bytes they must agree with.
TEST(CharSetConverterTest, SystemConvertersBothWays) {
    struct Case {
        CharSet::Code code;
        std::string_view bytes;
        WideStringView units;
    };
    const Case cases[] = {
        {437, "\x81\xE1", KESTRA_WIDE("\u00FC\u00DF")},
        {850, "\x81\xE1", KESTRA_WIDE("\u00FC\u00DF")},
        {866, "\x80\xA0", KESTRA_WIDE("\u0410\u0430")},
        {874, "\xA1\x80", KESTRA_WIDE("\u0E01\u20AC")},
        {932, "\x83\x5C\x93\xFA\x96\x7B\xB1\\~", KESTRA_WIDE("\u30BD\u65E5\u672C\uFF71\\~")},
        {932, "\x81\x60\x81\x7C\x87\x40", KESTRA_WIDE("\uFF5E\uFF0D\u2460")},  // Microsoft's mappings, not those of JIS X 0208
        {932, "a\x80\xA0\xFD\xFE\xFFz", KESTRA_WIDE("a\u0080\uF8F0\uF8F1\uF8F2\uF8F3z")},
        {936, "\xD6\xD0\x81\x40\x80", KESTRA_WIDE("\u4E2D\u4E02\u20AC")},
        {949, "\xB0\xA1\x81\x41", KESTRA_WIDE("\uAC00\uAC02")},
        {950, "\xA4\xA4\xF9\xD6", KESTRA_WIDE("\u4E2D\u7881")},
        {1201, "\0a\x30\x42\xD8\x3D\xDE\x00"sv, KESTRA_WIDE("a\u3042\U0001F600")},
        {1250, "\xBC\xA5\x81", KESTRA_WIDE("\u013D\u0104\u0081")},
        {1251, "\xCF\xF0\x98", KESTRA_WIDE("\u041F\u0440\u0098")},
        {1253, "\xE1", KESTRA_WIDE("\u03B1")},
        {1254, "\xF0\xFD", KESTRA_WIDE("\u011F\u0131")},
        {1255, "\xE0", KESTRA_WIDE("\u05D0")},
        {1256, "\xC7", KESTRA_WIDE("\u0627")},
        {1257, "\xE0", KESTRA_WIDE("\u0105")},
        {1258, "\xF0\xFE", KESTRA_WIDE("\u0111\u20AB")},
        {10007, "\x80\xFF", KESTRA_WIDE("\u0410\u20AC")},
        {12000, "a\0\0\0\x00\xF6\x01\x00"sv, KESTRA_WIDE("a\U0001F600")},
        {12001, "\0\0\0a\x00\x01\xF6\x00"sv, KESTRA_WIDE("a\U0001F600")},
        {20866, "\xC1\xD2", KESTRA_WIDE("\u0430\u0440")},
        {20932, "\xA4\xA2\xB0\xEC\x8E\xB1", KESTRA_WIDE("\u3042\u4E00\uFF71")},
        {51932, "\xC6\xFC\xCB\xDC\xA1\xC1", KESTRA_WIDE("\u65E5\u672C\uFF5E")},
        {51949, "\xB0\xA1", KESTRA_WIDE("\uAC00")},
        {21866, "\xA4\xA6", KESTRA_WIDE("\u0454\u0456")},
        {28592, "\xA1", KESTRA_WIDE("\u0104")},
        {28595, "\xD0", KESTRA_WIDE("\u0430")},
        {28597, "\xE1", KESTRA_WIDE("\u03B1")},
        {28598, "\xE0", KESTRA_WIDE("\u05D0")},
        {28599, "\xFD", KESTRA_WIDE("\u0131")},
        {28605, "\xA4", KESTRA_WIDE("\u20AC")},
        {38598, "\xE0", KESTRA_WIDE("\u05D0")},
        {50220, "a\x1B$B$\"\x1B(Bz", KESTRA_WIDE("a\u3042z")},
        {50221, "a\x1B$B$\"\x1B(Bz", KESTRA_WIDE("a\u3042z")},
        {50222, "a\x1B$B$\"\x1B(Bz", KESTRA_WIDE("a\u3042z")},
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
        {54936, "\xD6\xD0\x81\x30\x81\x30\x84\x31\xA4\x37\x94\x39\xFC\x36", KESTRA_WIDE("\u4E2D\u0080\uFFFD\U0001F600")},
        {65000, "a+MEIBew-<", KESTRA_WIDE("a\u3042\u017B<")},
        {37, "\xC1\x6F", KESTRA_WIDE("A?")},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Dump(ToWide(c.code, c.bytes)), Dump(WideString(c.units))) << c.code;
        if (c.code != 65000) {  // may be written in several ways
            EXPECT_EQ(Dump(FromWide(c.code, c.units)), Dump(std::string(c.bytes))) << c.code;
        }
    }
}

TEST(CharSetConverterTest, SystemConvertersToWideOnly) {
    struct Case {
        const char* note;
        CharSet::Code code;
        std::string_view bytes;
        WideStringView expected;
    };
    const Case cases[] = {
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
        {"NULs are characters", 932, "\0\x83\x5C\0"sv, WideStringView(KESTRA_WIDE("\0\u30BD\0"), 3)},
        {"an empty string", 932, "", KESTRA_WIDE("")},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Dump(ToWide(c.code, c.bytes)), Dump(WideString(c.expected))) << c.note;
}

TEST(CharSetConverterTest, SystemConvertersFromWideOnly) {
    struct Case {
        const char* note;
        CharSet::Code code;
        WideStringView units;
        std::string_view expected;
    };
    const Case cases[] = {
        {"a character that the code page lacks", 1250, KESTRA_WIDE("a\u3042z"), "a?z"},
        {"U+FFFD is such a character", 1250, KESTRA_WIDE("\uFFFD"), "?"},
        {"look-alikes are too", 1250, KESTRA_WIDE("\uFF21\u00E3"), "??"},
        {"in a double-byte code page", 932, KESTRA_WIDE("\u00E9\uFFFD"), "??"},
        {"in EUC", 51932, KESTRA_WIDE("\u0E01"), "?"},
        {"one for a pair, one for a lone surrogate", 932, WideStringView(u"\xD83D\xDE00z\xD800", 4), "?z?"},
        {"in a shifted state", 50221, KESTRA_WIDE("\u3042\u0E01\u3042"), "\x1B$B$\"\x1B(B?\x1B$B$\"\x1B(B"},
        {"half-width katakana in 50220", 50220, KESTRA_WIDE("\uFF71"), "\x1B$B%\"\x1B(B"},
        {"half-width katakana in 50221", 50221, KESTRA_WIDE("\uFF71"), "\x1B$B%\"\x1B(B"},
        {"in EBCDIC", 37, KESTRA_WIDE("\u3042"), "\x6F"},
        {"a lone surrogate where there is U+FFFD", 1201, WideStringView(u"\xD800z", 2), "\xFF\xFD\0z"sv},
        {"and in UTF-32", 12000, WideStringView(u"\xDC00", 1), "\xFD\xFF\0\0"sv},
        {"and in GB18030", 54936, WideStringView(u"\xDC00", 1), "\x84\x31\xA4\x37"},
        {"NULs are characters", 932, WideStringView(KESTRA_WIDE("\0\u30BD\0"), 3), "\0\x83\x5C\0"sv},
        {"an empty string", 932, KESTRA_WIDE(""), ""},
        {"an empty stateful string", 50221, KESTRA_WIDE(""), ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Dump(FromWide(c.code, c.units)), Dump(std::string(c.expected))) << c.note;
}

/// Code pages with a name but without a converter in ICU 72.
const std::set<CharSet::Code> WITHOUT_CONVERTER = {1361, 20105, 20106, 20107, 20108, 20261, 20423, 20880, 20905, 20924};

std::set<CharSet::Code> GetNamedCodes() {
    std::set<CharSet::Code> codes;
    for (const CharSetRow& row : GetCharSetRows())
        codes.insert(row.code);
    for (const CharSetRow& row : GetSharedCharSetNames())
        codes.insert(row.code);
    return codes;
}

TEST(CharSetConverterTest, EveryNamedCodePageConvertsOrIsListed) {
    for (const CharSet::Code code : GetNamedCodes()) {
        CharSetConverter converter;
        const bool isSupported = WITHOUT_CONVERTER.count(code) == 0;
        const std::uint32_t expected = isSupported ? RESULT_OK : RESULT_UNSUPPORTED_CHARSET;
        WideString units = KESTRA_WIDE("old content");
        EXPECT_EQ(converter.ToWide(code, "", 0, &units), expected) << code;
        EXPECT_TRUE(units.empty()) << code;
        std::string bytes = "old content";
        EXPECT_EQ(converter.FromWide(code, KESTRA_WIDE(""), 0, &bytes), expected) << code;
        EXPECT_TRUE(bytes.empty()) << code;

        EXPECT_EQ(converter.FromWide(code, KESTRA_WIDE("Az09"), 4, &bytes), expected) << code;
        EXPECT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &units), expected) << code;
        EXPECT_TRUE(units == (isSupported ? KESTRA_WIDE("Az09") : KESTRA_WIDE(""))) << code;
    }
}

TEST(CharSetConverterTest, AsciiIsAsciiInEveryCodePageThatHoldsIt) {
    const std::set<CharSet::Code> otherwise = {
        37,    500,   870,   875,   1026,  1047,  1140,  1141,  1142,  1143,  1144,  1145,  1146,  1147, 1148, 1149,  // EBCDIC
        20273, 20277, 20278, 20280, 20284, 20285, 20290, 20297, 20420, 20424, 20838, 20871, 21025,                    // EBCDIC
        1200,  1201,  12000, 12001,                                                                                   // wider units
        864,                                                                                                          // "%" is U+066A
        50220, 50221, 50222, 50225, 50227, 52936, 65000,                                                              // shifts and escapes
    };
    for (const CharSet::Code code : GetNamedCodes()) {
        if (WITHOUT_CONVERTER.count(code) != 0 || otherwise.count(code) != 0)
            continue;
        std::string bytes;
        WideString units;
        for (int byte = 0; byte < 128; ++byte) {
            bytes += static_cast<char>(byte);
            units += static_cast<WideChar>(byte);
        }
        EXPECT_EQ(Dump(ToWide(code, bytes)), Dump(units)) << code;
        if (code < 57002 || code > 57011) {  // ISCII repeats its script behind each line feed
            EXPECT_EQ(Dump(FromWide(code, units)), Dump(bytes)) << code;
        }
    }
}

TEST(CharSetConverterTest, UnsupportedCodesAreAResult) {
    CharSetConverter converter;
    for (const CharSet::Code code : {1U, 3U, 42U, 1259U, 50229U, 65002U, 0xFFFFFFFFU}) {
        WideString units = KESTRA_WIDE("old content");
        EXPECT_EQ(converter.ToWide(code, "abc", 3, &units), RESULT_UNSUPPORTED_CHARSET) << code;
        EXPECT_TRUE(units.empty()) << code;
        units = KESTRA_WIDE("old content");
        EXPECT_EQ(converter.ToWide(code, nullptr, 0, &units), RESULT_UNSUPPORTED_CHARSET) << code;
        EXPECT_TRUE(units.empty()) << code;
        std::string bytes = "old content";
        EXPECT_EQ(converter.FromWide(code, KESTRA_WIDE("abc"), 3, &bytes), RESULT_UNSUPPORTED_CHARSET) << code;
        EXPECT_TRUE(bytes.empty()) << code;
        bytes = "old content";
        EXPECT_EQ(converter.FromWide(code, nullptr, 0, &bytes), RESULT_UNSUPPORTED_CHARSET) << code;
        EXPECT_TRUE(bytes.empty()) << code;
    }
}

TEST(CharSetConverterTest, NullDataWithoutASizeIsAnEmptyString) {
    CharSetConverter converter;
    for (const CharSet::Code code : {0U, 65001U, 1252U, 20127U, 28591U, 1200U, 932U, 50221U}) {
        WideString units = KESTRA_WIDE("old content");
        EXPECT_EQ(converter.ToWide(code, nullptr, 0, &units), RESULT_OK) << code;
        EXPECT_TRUE(units.empty()) << code;
        std::string bytes = "old content";
        EXPECT_EQ(converter.FromWide(code, nullptr, 0, &bytes), RESULT_OK) << code;
        EXPECT_TRUE(bytes.empty()) << code;
    }
}

TEST(CharSetConverterTest, EachStringStartsFresh) {
    CharSetConverter converter;
    WideString units;
    const auto toWide = [&](CharSet::Code code, std::string_view bytes) {
        EXPECT_EQ(converter.ToWide(code, bytes.data(), bytes.size(), &units), RESULT_OK);
        return Dump(units);
    };
    EXPECT_EQ(toWide(50221, "\x1B$B$\""), "3042 ");
    EXPECT_EQ(toWide(50221, "$\""), "0024 0022 ");
    EXPECT_EQ(toWide(50222,
                     "\x0E"
                     "1"),
              "FF71 ");
    EXPECT_EQ(toWide(50222, "1"), "0031 ");
    EXPECT_EQ(toWide(50225,
                     "\x1B$)C\x0E"
                     "0!"),
              "AC00 ");
    EXPECT_EQ(toWide(50225, "0!"), "0030 0021 ");
    EXPECT_EQ(toWide(932, "\x83"), "FFFD ");
    EXPECT_EQ(toWide(932, "\\"), "005C ");
    EXPECT_EQ(toWide(65000, "+MEI"), "3042 ");
    EXPECT_EQ(toWide(65000, "MEI"), "004D 0045 0049 ");

    std::string bytes;
    const auto fromWide = [&](CharSet::Code code, WideStringView text) {
        EXPECT_EQ(converter.FromWide(code, text.data(), text.size(), &bytes), RESULT_OK);
        return bytes;
    };
    EXPECT_EQ(fromWide(50221, KESTRA_WIDE("\u3042")), "\x1B$B$\"\x1B(B");
    EXPECT_EQ(fromWide(50221, KESTRA_WIDE("\u3042")), "\x1B$B$\"\x1B(B");
    EXPECT_EQ(fromWide(932, WideStringView(u"\xD83D", 1)), "?");
    EXPECT_EQ(fromWide(932, WideStringView(u"\xDE00", 1)), "?");
}

TEST(CharSetConverterTest, LongStringsAreConvertedWhole) {
    struct Case {
        const char* note;
        CharSet::Code code;
        std::string_view bytes;
        WideStringView units;
    };
    const Case cases[] = {
        {"double bytes", 932, "\x93\xFA", KESTRA_WIDE("\u65E5")},
        {"controls that ICU's table rotates", 932, "\x1A\x1C\x7F\x93\xFA", KESTRA_WIDE("\x1A\x1C\x7F\u65E5")},
        {"sequences of four for a pair", 54936, "\x94\x39\xFC\x36", KESTRA_WIDE("\U0001F600")},
        {"pairs in big-endian UTF-16", 1201, "\xD8\x3D\xDE\x00"sv, KESTRA_WIDE("\U0001F600")},
        {"more than two bytes for a unit", 51932, "\x8F\xB0\xA1", KESTRA_WIDE("\u4E02")},
        {"four times as many bytes", 12000, "a\0\0\0"sv, KESTRA_WIDE("a")},
        {"eight times as many bytes", 50221, "\x1B$BF|\x1B(B.", KESTRA_WIDE("\u65E5.")},
    };
    CharSetConverter converter;
    for (const Case& c : cases) {
        for (std::size_t offset = 0; offset < 5; ++offset) {  // so that steps of any even size cut characters
            std::string bytes;
            WideString units;
            for (std::size_t i = 0; i < offset; ++i) {
                bytes += FromWide(c.code, KESTRA_WIDE("x"));
                units += static_cast<WideChar>('x');
            }
            for (std::size_t i = 0; i < 30000; ++i) {
                bytes += c.bytes;
                units += c.units;
            }
            WideString wide;
            EXPECT_EQ(converter.ToWide(c.code, bytes.data(), bytes.size(), &wide), RESULT_OK);
            EXPECT_TRUE(wide == units) << c.note;
            std::string narrow;
            EXPECT_EQ(converter.FromWide(c.code, units.data(), units.size(), &narrow), RESULT_OK);
            EXPECT_TRUE(narrow == bytes) << c.note;
        }
    }
}

TEST(CharSetConverterTest, ACodePageIsOpenedOnce) {
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

TEST(CharSetConverterTest, AFailureToOpenIsRemembered) {
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

TEST(CharSetConverterTest, CopiesStartClosed) {
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

}  // namespace
}  // namespace Kestra::StringNS
