#include <cstdio>

#include "html/parser/GenericParser.h"
#include "tests/platform/ConverterCheck.h"
#include "tests/platform/windows/SystemCalls.h"

// What the charset conversions owe to Windows: which of its two converters is asked, how often, and
// for what.

namespace Kestra::Test {
namespace {

/// Notes what the system's converters are asked, and lets them fail.
class WatchedConverters {
public:
    WatchedConverters() {
        system->multiByteToWideChar = [this](UINT code, DWORD flags, const char* data, int size, wchar_t* output,
                                             int room) {
            Note(code, flags, size);
            return Answer(RealSystem::ToWide(code, flags, data, size, output, room), output != nullptr);
        };
        system->wideCharToMultiByte = [this](UINT code, DWORD flags, const wchar_t* data, int size, char* output,
                                             int room) {
            Note(code, flags, size);
            if (size > 0) {
                splitPairs += data[0] >= 0xDC00 && data[0] <= 0xDFFF ? 1 : 0;
                splitPairs += data[size - 1] >= 0xD800 && data[size - 1] <= 0xDBFF ? 1 : 0;
            }
            if (refusesToWrite)
                return 0;
            return Answer(RealSystem::FromWide(code, flags, data, size, output, room), output != nullptr);
        };
        system->loadLibrary = [this](const wchar_t* name, DWORD flags) {
            ++libraries;
            return RealSystem::Load(name, flags);
        };
    }

    int calls = 0;
    int libraries = 0;
    std::set<UINT> codes;
    int longest = 0;
    bool refusesToWrite = false;
    int splitPairs = 0;                     ///< calls that begin or end inside a surrogate pair
    int failFrom = 0;                       ///< this call and every later one fails; 0 for none
    bool failsConversions = false;          ///< those that ask for a size alone are answered
    DWORD error = ERROR_NOT_ENOUGH_MEMORY;  ///< of calls that fail
    int miscountFrom = 0;                   ///< this one and every later one that converts states one unit less

private:
    void Note(UINT code, DWORD, int size) {
        ++calls;
        codes.insert(code);
        longest = std::max(longest, size);
    }

    int Answer(int count, bool converts) const {
        if ((failFrom > 0 && calls >= failFrom) || (failsConversions && converts)) {
            SetLastError(error);
            return 0;
        }
        return miscountFrom > 0 && calls >= miscountFrom && converts ? count - 1 : count;
    }

    HookedSystem system;
};

std::string AllBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(static_cast<unsigned char>(byte));
    return bytes;
}

/// What the system makes of a string.
WideString AskSystem(CharSet::Code code, const std::string& bytes) {
    const int size = static_cast<int>(bytes.size());
    WideString units(bytes.size(), 0);
    const int count = RealSystem::ToWide(code, 0, bytes.data(), size, units.data(), size);
    EXPECT_GT(count, 0) << code;
    units.resize(static_cast<std::size_t>(std::max(count, 0)));
    return units;
}

TEST(WindowsConverterTest, ZeroIsTheAnsiCodePageOfTheProcess) {
    const std::string bytes = AllBytes();
    const CharSet::Code ansi = GetACP();
    EXPECT_EQ(Dump(ToWide(0, bytes)), Dump(ToWide(ansi, bytes)));
    EXPECT_EQ(Dump(ToWide(0, bytes)), Dump(AskSystem(ansi, bytes)));
    for (const CharSet::Code code : {1250U, 1251U, 1252U, 932U, 65001U}) {
        HookedSystem system;
        system->getAnsiCodePage = [code] { return code; };
        EXPECT_EQ(Dump(ToWide(0, bytes)), Dump(ToWide(code, bytes))) << code;
        EXPECT_EQ(Dump(FromWide(0, KESTRA_WIDE("a\u0436\u20AC"))), Dump(FromWide(code, KESTRA_WIDE("a\u0436\u20AC"))))
            << code;
        WideString units;
        EXPECT_EQ(StringHelper::GetStringFromAnsi(bytes.data(), bytes.size(), &units), RESULT_OK);
        EXPECT_EQ(Dump(units), Dump(ToWide(code, bytes))) << code;
        std::string back;
        EXPECT_EQ(StringHelper::GetAnsiFromWide(units.data(), units.size(), &back), RESULT_OK);
        EXPECT_EQ(Dump(back), Dump(FromWide(code, units))) << code;
    }
}

TEST(WindowsConverterTest, TheSystemsPagesAreTheSystems) {
    const std::string bytes = AllBytes();
    for (const CharSet::Code code :
         {37U,   437U,  850U,  866U,   874U,   932U,   936U,   949U,   950U,   1250U,  1251U,  1253U,  1254U, 1255U,
          1256U, 1257U, 1258U, 10000U, 20866U, 20932U, 21866U, 28592U, 28595U, 28597U, 28598U, 28599U, 28605U})
        EXPECT_EQ(Dump(ToWide(code, bytes)), Dump(AskSystem(code, bytes))) << code;
}

TEST(WindowsConverterTest, TheLanguageLibraryConvertsWhatTheSystemRefuses) {
    const ConversionRow rows[] = {
        {50220, "a\x1B$B$\"F|\x1B(Bz", KESTRA_WIDE("a\u3042\u65E5z")},
        {50221, "a\x1B$B$\"F|\x1B(Bz", KESTRA_WIDE("a\u3042\u65E5z")},
        {50222, "a\x1B$B$\"F|\x1B(Bz", KESTRA_WIDE("a\u3042\u65E5z")},
        {51932, "a\xA4\xA2\xC6\xFC\x8E\xB1z", KESTRA_WIDE("a\u3042\u65E5\uFF71z")},
    };
    CheckConversions(rows);
    for (const ConversionRow& row : rows) {
        if (IsWine()) {
            wchar_t unit = 0;
            EXPECT_EQ(RealSystem::ToWide(row.code, 0, "a", 1, &unit, 1), 0) << row.code;
        }
        // Neither conversion goes to the system, but for the question whether it knows the code
        // page.
        CharSetConverter converter;
        WideString units;
        std::string bytes;
        WatchedConverters watched;
        EXPECT_EQ(converter.ToWide(row.code, row.bytes.data(), row.bytes.size(), &units), RESULT_OK);
        const int opening = watched.calls;
        if (IsWine()) {
            EXPECT_EQ(opening, 1);
            for (int i = 0; i < 10; ++i) {
                EXPECT_EQ(converter.ToWide(row.code, row.bytes.data(), row.bytes.size(), &units), RESULT_OK);
                EXPECT_EQ(converter.FromWide(row.code, row.units.data(), row.units.size(), &bytes), RESULT_OK);
            }
            EXPECT_EQ(watched.calls, opening);
        }
    }
}

TEST(WindowsConverterTest, StringsOfTheLanguageLibraryThatEndInsideAnEscape) {
    const ToWideRow rows[] = {
        {"a change to ASCII alone", 50221, "\x1B(B", KESTRA_WIDE("")},
        {"a change to two bytes alone", 50221, "\x1B$B", KESTRA_WIDE("")},
        {"and after characters", 50221, "ab\x1B$B", KESTRA_WIDE("ab")},
        {"several changes", 50222, "\x1B$B\x1B(B\x1B$B\x1B(B", KESTRA_WIDE("")},
        {"an escape character after characters", 50220, "ab\x1B", KESTRA_WIDE("ab\uFFFD")},
        {"and after a change", 50221, "ab\x1B$B\x1B", KESTRA_WIDE("ab\uFFFD")},
        {"half a character", 50221, "ab\x1B$B$\"D", KESTRA_WIDE("ab\u3042\uFFFD")},
        {"half a character alone", 50221, "\x1B$BD", KESTRA_WIDE("\uFFFD")},
        {"an unknown change after characters", 50221, "ab\x1B$(D", KESTRA_WIDE("ab\uFFFD")},
        {"nothing but the start of an escape", 50221, "\x1B$", KESTRA_WIDE("\uFFFD")},
        {"nothing but an escape character", 50220, "\x1B", KESTRA_WIDE("\uFFFD")},
        {"nothing but an escape character", 50221, "\x1B", KESTRA_WIDE("\uFFFD")},
        {"nothing but an escape character", 50222, "\x1B", KESTRA_WIDE("\uFFFD")},
        {"an escape character after a change to ASCII", 50221, "\x1B(B\x1B", KESTRA_WIDE("\uFFFD")},
        {"an escape character after a change to two bytes", 50221, "\x1B$B\x1B", KESTRA_WIDE("\uFFFD")},
        {"the start of a change to ASCII", 50221, "\x1B(", KESTRA_WIDE("\uFFFD")},
        {"a change that the library does not know", 50221, "\x1B$(D", KESTRA_WIDE("\uFFFD")},
        {"a NUL at the end is a character", 50221, "a\0"sv, WideStringView(KESTRA_WIDE("a\0"), 2)},
        {"a NUL alone", 50221, "\0"sv, WideStringView(KESTRA_WIDE("\0"), 1)},
    };
    if (IsWine())  // what the library makes of a cut escape is its own affair
        CheckToWide(rows);
    const FromWideRow katakana[] = {
        // It waits for the sound mark that may follow.
        {"half-width katakana at the end", 50220, KESTRA_WIDE("\uFF76"), "\x1B$B%+\x1B(B"},
        {"after others", 50220, KESTRA_WIDE("\u3042\uFF76"), "\x1B$B$\"%+\x1B(B"},
        {"with its mark", 50220, KESTRA_WIDE("\uFF76\uFF9E"), "\x1B$B%,\x1B(B"},
    };
    CheckFromWide(katakana);
}

/// Notes the texts and comments that it hears.
class HeardTexts final : public HTML::ParserObserver<WideChar, WideString> {
public:
    void OnText(HTML::TextData<WideChar, WideString>* text) override {
        heard += *text->text + KESTRA_WIDE("|");
    }
    void OnCommentTag(HTML::CommentTagData<WideChar, WideString>* comment) override {
        heard += *comment->text + KESTRA_WIDE("|");
    }

    WideString heard;
};

TEST(WindowsConverterTest, HalfAnEscapeInADocumentIsACharsetError) {
    if (!IsWine())
        GTEST_SKIP() << "what the library makes of a cut escape is its own affair";
    for (const std::string_view document : {"<!--\x1B-->"sv, "\x1B"sv, "<!--\x1B(-->"sv}) {
        HeardTexts observer;
        HTML::GenericParser parser;
        parser.SetObserver(&observer, false);
        parser.SetDetectCharsetErrors(true);
        EXPECT_EQ(parser.StartParse(50221, HTML::GenericParser::DATA_STREAM_8BIT), 0U);
        EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(Dump(observer.heard), Dump(WideString(KESTRA_WIDE("\uFFFD|"))));
        EXPECT_TRUE(parser.HasCharsetErrors());
    }
}

TEST(WindowsConverterTest, WhatTheCodePagesHaveForABadCharacter) {
    const ToWideRow toWide[] = {
        {"a cut double byte", 932, "a\x83", KESTRA_WIDE("a\u30FB")},
        {"an unassigned double byte", 932, "\xEF\x40z", KESTRA_WIDE("\u30FBz")},
        {"an unassigned byte goes to the private area", 1253, "a\xD2z", KESTRA_WIDE("a\uF8FAz")},
    };
    CheckToWide(toWide);
    const FromWideRow fromWide[] = {
        {"one for each half of a pair", 932, WideStringView(KESTRA_WIDE("\xD83D\xDE00z\xD800"), 4), "??z?"},
        {"no look-alikes", 1250, KESTRA_WIDE("\uFF21\u00E3"), "??"},
    };
    CheckFromWide(fromWide);
}

TEST(WindowsConverterTest, WhatBothRefuseIsAResultAndIsRemembered) {
    for (const CharSet::Code code : {1201U, 4711U, 12000U, 12001U, 65002U})
        CheckUnsupported(code);
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    WatchedConverters watched;
    EXPECT_EQ(converter.ToWide(4711, "a", 1, &units), RESULT_UNSUPPORTED_CHARSET);
    const int opening = watched.calls;
    EXPECT_EQ(opening, 1);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(converter.ToWide(4711, "abc", 3, &units), RESULT_UNSUPPORTED_CHARSET);
        EXPECT_EQ(converter.FromWide(4711, KESTRA_WIDE("abc"), 3, &bytes), RESULT_UNSUPPORTED_CHARSET);
        EXPECT_TRUE(units.empty());
        EXPECT_TRUE(bytes.empty());
    }
    EXPECT_EQ(watched.calls, opening);
    EXPECT_EQ(converter.ToWide(932, "a", 1, &units), RESULT_OK);
    EXPECT_GT(watched.calls, opening);
}

TEST(WindowsConverterTest, ACodePageThatIsOnlyReadIsRefusedTheOtherWay) {
    CharSetConverter converter;
    WideString units;
    if (converter.ToWide(50932, "abc", 3, &units) != RESULT_OK) {
        EXPECT_FALSE(IsWine());
        GTEST_SKIP() << "Japanese of any kind is not read here";
    }
    EXPECT_EQ(Dump(units), "0061 0062 0063 ");
    for (const std::size_t size : {3U, 0U}) {
        std::string bytes = "old content";
        EXPECT_EQ(converter.FromWide(50932, KESTRA_WIDE("abc"), size, &bytes), RESULT_UNSUPPORTED_CHARSET);
        EXPECT_TRUE(bytes.empty());
        EXPECT_EQ(StringHelper::GetStringFromWide(50932, KESTRA_WIDE("abc"), size, &bytes), RESULT_UNSUPPORTED_CHARSET);
    }
    EXPECT_EQ(converter.ToWide(50932, "abc", 3, &units), RESULT_OK);
}

TEST(WindowsConverterTest, ASystemPageThatIsOnlyReadIsRefusedTheOtherWay) {
    WatchedConverters watched;
    watched.refusesToWrite = true;
    CharSetConverter converter;
    WideString units;
    std::string bytes = "old content";
    EXPECT_EQ(converter.ToWide(20866, "abc", 3, &units), RESULT_OK);
    EXPECT_EQ(Dump(units), "0061 0062 0063 ");
    const int opened = watched.calls;
    EXPECT_EQ(converter.FromWide(20866, KESTRA_WIDE("abc"), 3, &bytes), RESULT_UNSUPPORTED_CHARSET);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(watched.calls, opened) << "it is remembered";
}

TEST(WindowsConverterTest, ACodePageIsOpenedOnce) {
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    EXPECT_EQ(converter.ToWide(20866, "\xC1", 1, &units), RESULT_OK);
    WatchedConverters watched;
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(converter.ToWide(20866, "\xC1", 1, &units), RESULT_OK);
        EXPECT_EQ(converter.ToWide(1252, "\xC1", 1, &units), RESULT_OK);
        EXPECT_EQ(converter.FromWide(20866, KESTRA_WIDE("\u0430"), 1, &bytes), RESULT_OK);
    }
    EXPECT_EQ(watched.calls, 400) << "a size and a conversion each";
    EXPECT_EQ(watched.codes, std::set<UINT>{20866});
    EXPECT_EQ(watched.libraries, 0);
}

TEST(WindowsConverterTest, AliasesOfOtherCodePagesNeverReachTheSystem) {
    for (const CharSet::Code code : {1U, 2U, 3U, 42U}) {
        WatchedConverters watched;
        CheckUnsupported(code);
        EXPECT_EQ(watched.calls, 0) << code;
        EXPECT_EQ(watched.libraries, 0) << code;
    }
    HookedSystem system;
    system->getAnsiCodePage = [] { return 0U; };  // a process whose code page is an alias again
    CheckUnsupported(0);
}

TEST(WindowsConverterTest, TheLibrarysOwnNeverReachTheSystem) {
    WatchedConverters watched;
    const std::string bytes = AllBytes();
    for (const CharSet::Code code : {65001U, 1252U, 20127U, 28591U, 1200U}) {
        const WideString units = ToWide(code, bytes);
        FromWide(code, units);
        FromWide(code, WideStringView(KESTRA_WIDE("a\xDC00\xD800z\xD83D\xDE00\xD83D"), 7));
    }
    EXPECT_EQ(Dump(ToWide(1200, "a\0\x3D\xD8z"sv)), "0061 D83D FFFD ");
    EXPECT_EQ(Dump(FromWide(1200, WideStringView(KESTRA_WIDE("\xDE00\xD83D"), 2))), "00 DE 3D D8 ");
    EXPECT_EQ(watched.calls, 0);
    EXPECT_EQ(watched.libraries, 0);
}

TEST(WindowsConverterTest, AConversionThatFailsOnTheWayIsAFailure) {
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    EXPECT_EQ(converter.ToWide(20866, "a", 1, &units), RESULT_OK);
    const auto expectFailures = [&](const std::string& text, std::uint32_t expected) {
        const WideString wide(text.begin(), text.end());
        units = KESTRA_WIDE("old content");
        EXPECT_EQ(converter.ToWide(20866, text.data(), text.size(), &units), expected);
        EXPECT_TRUE(units.empty());
        bytes = "old content";
        EXPECT_EQ(converter.FromWide(20866, wide.data(), wide.size(), &bytes), expected);
        EXPECT_TRUE(bytes.empty());
    };
    const auto getExpected = [](DWORD error) {
        return error == ERROR_NOT_ENOUGH_MEMORY || error == ERROR_OUTOFMEMORY ? RESULT_OUT_OF_MEMORY
                                                                              : RESULT_UNSUPPORTED_CHARSET;
    };
    for (const DWORD error : {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY, ERROR_INVALID_PARAMETER, ERROR_SUCCESS}) {
        WatchedConverters watched;
        watched.failFrom = 1;
        watched.error = error;
        expectFailures("abc", getExpected(error));
    }
    for (const DWORD error : {ERROR_NOT_ENOUGH_MEMORY, ERROR_SUCCESS}) {
        WatchedConverters watched;
        watched.failsConversions = true;
        watched.error = error;
        expectFailures("abc", getExpected(error));
    }
    {
        WatchedConverters watched;
        watched.miscountFrom = 1;
        expectFailures("abc", RESULT_UNSUPPORTED_CHARSET);
    }
    for (const int call : {3, 4}) {  // the second step of a long string
        const std::string text(3 * 1024 * 1024, ' ');
        WatchedConverters watched;
        watched.failFrom = call;
        EXPECT_EQ(converter.ToWide(20866, text.data(), text.size(), &units), RESULT_OUT_OF_MEMORY);
        EXPECT_TRUE(units.empty());
    }
    EXPECT_EQ(converter.ToWide(20866, "abc", 3, &units), RESULT_OK);
    EXPECT_EQ(Dump(units), "0061 0062 0063 ");
}

TEST(WindowsConverterTest, WantOfMemoryWhileACodePageOpensIsNotRemembered) {
    CharSetConverter converter;
    WideString units = KESTRA_WIDE("old content");
    {
        WatchedConverters watched;
        watched.failFrom = 1;
        EXPECT_EQ(converter.ToWide(20866, "a", 1, &units), RESULT_OUT_OF_MEMORY);
        EXPECT_TRUE(units.empty());
    }
    EXPECT_EQ(converter.ToWide(20866, "a", 1, &units), RESULT_OK);
    EXPECT_EQ(Dump(units), "0061 ");
}

TEST(WindowsConverterTest, AStringWithoutCharactersLeavesOneMark) {
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    EXPECT_EQ(converter.ToWide(20866, "a", 1, &units), RESULT_OK);
    for (const DWORD error : {ERROR_SUCCESS, ERROR_NO_UNICODE_TRANSLATION}) {
        HookedSystem system;
        system->multiByteToWideChar = [error](UINT code, DWORD flags, const char* data, int size, wchar_t* output,
                                              int room) {
            SetLastError(error);
            return *data == 'x' ? 0 : RealSystem::ToWide(code, flags, data, size, output, room);
        };
        system->wideCharToMultiByte = [error](UINT code, DWORD flags, const wchar_t* data, int size, char* output,
                                              int room) {
            SetLastError(error);
            return *data == 'x' ? 0 : RealSystem::FromWide(code, flags, data, size, output, room);
        };
        EXPECT_EQ(converter.ToWide(20866, "xyz", 3, &units), RESULT_OK);
        EXPECT_EQ(Dump(units), "FFFD ");
        EXPECT_EQ(converter.FromWide(20866, KESTRA_WIDE("xyz"), 3, &bytes), RESULT_OK);
        EXPECT_EQ(bytes, "?");
        EXPECT_EQ(converter.ToWide(20866, "abc", 3, &units), RESULT_OK);
        EXPECT_EQ(Dump(units), "0061 0062 0063 ");
    }
}

TEST(WindowsConverterTest, LongStringsAreCutBetweenCharacters) {
    const ConversionRow rows[] = {
        // The second bytes of the first two are letters and signs to whoever reads them alone.
        {932, "\x83\x5C\x83\x7C", KESTRA_WIDE("\u30BD\u30DD")},
        {936, "\x81\x40", KESTRA_WIDE("\u4E02")},
        {932, "\x93\xFA ", KESTRA_WIDE("\u65E5 ")},
        {949, "\xB0\xA1\x81\x41.", KESTRA_WIDE("\uAC00\uAC02.")},
        {950, "\xA4\xA4", KESTRA_WIDE("\u4E2D")},
        {20932, "\xA4\xA2\xB0\xEC", KESTRA_WIDE("\u3042\u4E00")},
        {51932, "\xA4\xA2\x8E\xB1\n", KESTRA_WIDE("\u3042\uFF71\n")},
        {50221, "\x1B$BF|$\"\x1B(B.", KESTRA_WIDE("\u65E5\u3042.")},
        {1251, "\xCF", KESTRA_WIDE("\u041F")},
    };
    for (const ConversionRow& row : rows)
        CheckLongStrings(row, (5 << 18) / row.bytes.size());
}

TEST(WindowsConverterTest, ACutIsWhereACharacterEndsInTextThatIsNoneToo) {
    const std::size_t step = std::size_t{1} << 20;
    const ToWideRow rows[] = {
        // What stands around the end of the first step, and what it comes to.
        {"a first byte without its second one", 932, "\x83 bcd",
         KESTRA_WIDE("\u30FB"
                     "bcd")},
        {"a first byte before a digit", 932,
         "\x83"
         "1 bcd",
         KESTRA_WIDE("\u30FB bcd")},
        {"two first bytes", 936, "\x81\x20 bcd", KESTRA_WIDE("? bcd")},
        {"a character", 932, "\x83\x5C bcd", KESTRA_WIDE("\u30BD bcd")},
    };
    CharSetConverter converter;
    for (const ToWideRow& row : rows) {
        const WideString whole = ToWide(row.code, row.bytes);
        for (std::size_t offset = 0; offset <= row.bytes.size(); ++offset) {
            std::string text(step - offset, 'a');
            text += row.bytes;
            WideString units;
            EXPECT_EQ(converter.ToWide(row.code, text.data(), text.size(), &units), RESULT_OK);
            ASSERT_GE(units.size(), step - offset);
            EXPECT_EQ(Dump(units.substr(step - offset)), Dump(whole)) << row.note << ", cut at " << offset;
        }
    }
}

/// What a small part of GB18030 comes to: ASCII, the first characters of four bytes from U+0080 on,
/// and a mark of replacement for any byte else.
std::wstring ReadFourBytes(std::string_view bytes) {
    const auto byte = [&bytes](std::size_t i) { return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U; };
    std::wstring units;
    for (std::size_t i = 0; i < bytes.size();) {
        const bool isFour =
            byte(i) == 0x81 && byte(i + 1) == 0x30 && byte(i + 2) >= 0x81 && byte(i + 3) >= '0' && byte(i + 3) <= '9';
        const unsigned number = (byte(i + 2) - 0x81) * 10 + byte(i + 3) - '0';
        units += static_cast<wchar_t>(isFour ? 0x80 + number : byte(i) < 0x80 ? byte(i) : 0xFFFD);
        i += isFour ? 4 : 1;
    }
    return units;
}

TEST(WindowsConverterTest, ADigitInsideACharacterOfFourBytesIsNoPlaceToCut) {
    const std::size_t step = std::size_t{1} << 20;
    HookedSystem system;  // Wine has no such converter
    system->multiByteToWideChar = [](UINT, DWORD, const char* data, int size, wchar_t* output, int room) {
        const std::wstring units = ReadFourBytes(std::string_view(data, static_cast<std::size_t>(size)));
        std::copy_n(units.begin(), std::min(units.size(), static_cast<std::size_t>(room)), output);
        return static_cast<int>(units.size());
    };
    const std::string_view bytes = "\x81\x30\x81\x31\x81\x30\x82\x30 bcd";
    const std::string expected = Dump(WideString(KESTRA_WIDE("\u0081\u008A bcd")));
    CharSetConverter converter;
    for (std::size_t offset = 0; offset <= bytes.size(); ++offset) {
        std::string text(step - offset, 'a');
        text += bytes;
        WideString units;
        EXPECT_EQ(converter.ToWide(54936, text.data(), text.size(), &units), RESULT_OK);
        ASSERT_GE(units.size(), step - offset);
        EXPECT_EQ(Dump(units.substr(step - offset)), expected) << "cut at " << offset;
    }
}

TEST(WindowsConverterTest, TextWithoutBlanksIsCutToo) {
    CharSetConverter converter;
    WideString units;
    struct Row {
        CharSet::Code code;
        char byte;
        std::size_t size;
    };
    const Row rows[] = {
        {1251, 'x', 3 << 20},  {1251, '0', 3 << 20}, {1251, '\xCF', 3 << 20},
        {37, '\x81', 3 << 20}, {932, 'x', 3 << 20},  {949, '~', 3 << 20},
    };
    for (const Row& row : rows) {
        const std::string text(row.size, row.byte);
        EXPECT_EQ(converter.ToWide(row.code, "a", 1, &units), RESULT_OK);
        const WideString expected(row.size, ToWide(row.code, std::string(1, row.byte))[0]);
        WatchedConverters watched;
        EXPECT_EQ(converter.ToWide(row.code, text.data(), text.size(), &units), RESULT_OK);
        EXPECT_TRUE(units == expected) << row.code;
        EXPECT_EQ(watched.longest, 1 << 20) << row.code;
    }
}

TEST(WindowsConverterTest, WhatCannotBeCutIsRefusedAboveTheLimitOfTheCalls) {
    const std::size_t most = std::size_t{1} << 28;
    for (const CharSet::Code code : {50221U, 932U}) {
        const std::string text(most + 1, code == 932 ? '\x81' : 'x');
        CharSetConverter converter;
        WideString units;
        EXPECT_EQ(converter.ToWide(code, "a", 1, &units), RESULT_OK);
        WatchedConverters watched;
        EXPECT_EQ(converter.ToWide(code, text.data(), text.size(), &units), RESULT_UNSUPPORTED_CHARSET);
        EXPECT_TRUE(units.empty());
        EXPECT_EQ(watched.calls, 0);
    }
}

TEST(WindowsConverterTest, LongStringsAreConvertedInSteps) {
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    EXPECT_EQ(converter.ToWide(1251, "a", 1, &units), RESULT_OK);
    {
        WatchedConverters watched;
        const std::string text(5 << 20, ' ');
        EXPECT_EQ(converter.ToWide(1251, text.data(), text.size(), &units), RESULT_OK);
        EXPECT_EQ(watched.calls, 10);
        EXPECT_EQ(watched.longest, 1 << 20);
    }
    for (std::size_t offset = 0; offset < 3; ++offset) {
        WatchedConverters watched;
        WideString text(offset, KESTRA_WIDE('x'));
        while (text.size() < (3 << 20))
            text.append({0xD83D, 0xDE00});
        EXPECT_EQ(converter.FromWide(1251, text.data(), text.size(), &bytes), RESULT_OK);
        EXPECT_TRUE(bytes == std::string(offset, 'x') + std::string(text.size() - offset, '?'));
        EXPECT_EQ(watched.splitPairs, 0) << offset;
        EXPECT_GE(watched.calls, 6);
        EXPECT_LE(watched.longest, 1 << 20);
    }
}

/// Code pages with a name that Wine 8 does not convert. Windows has converters for most of them.
const std::set<CharSet::Code> WITHOUT_CONVERTER = {
    858,   870,   1047,  1140,  1141,  1142,  1143,  1144,  1145,  1146,  1147,  1148,  1149,  1201,  12000,
    12001, 20105, 20106, 20107, 20108, 20261, 20273, 20277, 20278, 20280, 20284, 20285, 20290, 20297, 20420,
    20423, 20424, 20838, 20871, 20880, 20905, 20924, 20936, 21025, 38598, 50225, 50227, 51936, 51949, 51950,
    52936, 54936, 57002, 57003, 57004, 57005, 57006, 57007, 57008, 57009, 57010, 57011,
};

TEST(WindowsConverterTest, EveryNamedCodePageConvertsBothWaysOrNeither) {
    for (const CharSet::Code code : GetNamedCodes()) {
        CharSetConverter converter;
        WideString units = KESTRA_WIDE("old content");
        const std::uint32_t result = converter.ToWide(code, "", 0, &units);
        if (IsWine()) {
            EXPECT_EQ(result, WITHOUT_CONVERTER.count(code) == 0 ? std::uint32_t{RESULT_OK}
                                                                 : std::uint32_t{RESULT_UNSUPPORTED_CHARSET})
                << code;
        }
        if (result == RESULT_UNSUPPORTED_CHARSET) {
            CheckUnsupported(code);
            continue;
        }
        EXPECT_EQ(result, RESULT_OK) << code;
        EXPECT_TRUE(units.empty()) << code;
        EXPECT_EQ(Dump(ToWide(code, FromWide(code, KESTRA_WIDE("Az09")))), "0041 007A 0030 0039 ") << code;
    }
}

/// In a process of its own: the language library is looked for once.
[[noreturn]] void ExitWithoutLanguageLibrary(const wchar_t* foundInstead) {
    HookedSystem system;
    bool isAskedRightly = true;
    int loads = 0;
    system->loadLibrary = [&](const wchar_t* name, DWORD flags) {
        ++loads;
        isAskedRightly = name == L"mlang.dll"sv && flags == LOAD_LIBRARY_SEARCH_SYSTEM32;
        return foundInstead == nullptr ? nullptr : RealSystem::Load(foundInstead, 0);
    };
    CharSetConverter converter;
    WideString units = KESTRA_WIDE("old content");
    std::string bytes = "old content";
    int failures = 0;
    failures += converter.ToWide(4711, "a", 1, &units) == RESULT_UNSUPPORTED_CHARSET && units.empty() ? 0 : 1;
    failures +=
        converter.FromWide(4711, KESTRA_WIDE("a"), 1, &bytes) == RESULT_UNSUPPORTED_CHARSET && bytes.empty() ? 0 : 1;
    failures += converter.ToWide(4712, "a", 1, &units) == RESULT_UNSUPPORTED_CHARSET ? 0 : 1;
    failures += converter.ToWide(932, "\x93\xFA", 2, &units) == RESULT_OK && units == KESTRA_WIDE("\u65E5") ? 0 : 1;
    if (IsWine())
        failures += converter.ToWide(51932, "a", 1, &units) == RESULT_UNSUPPORTED_CHARSET && units.empty() ? 0 : 1;
    failures += isAskedRightly && loads == 1 ? 0 : 1;
    ExitProcess(static_cast<UINT>(failures));
}

TEST(WindowsConverterDeathTest, WithoutTheLanguageLibraryItsCodePagesAreUnsupported) {
    EXPECT_EXIT(ExitWithoutLanguageLibrary(nullptr), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(ExitWithoutLanguageLibrary(L"kernel32.dll"), testing::ExitedWithCode(0), "")
        << "a library without the functions";
}

/// The two calls of the language library, with the answers of a test.
struct ScriptedLibrary {
    std::function<HRESULT(std::string_view text, INT* room)> toWide;
    std::function<HRESULT(WideStringView text, INT* room)> fromWide;
};

ScriptedLibrary* script = nullptr;

HRESULT WINAPI ScriptedToWide(DWORD*, DWORD, const char* data, INT* size, WideChar* output, INT* room) {
    const INT before = *room;
    const HRESULT result = script->toWide(std::string_view(data, static_cast<std::size_t>(*size)), room);
    std::fill(output, output + (output == nullptr ? 0 : std::min(before, *room)), L'\0');
    return result;
}

HRESULT WINAPI ScriptedFromWide(DWORD*, DWORD, const WideChar* data, INT* size, char* output, INT* room) {
    const INT before = *room;
    const HRESULT result = script->fromWide(WideStringView(data, static_cast<std::size_t>(*size)), room);
    std::fill(output, output + (output == nullptr ? 0 : std::min(before, *room)), '\0');
    return result;
}

/// In a process of its own: the calls are looked for once.
[[noreturn]] void ExitWithScriptedLibrary() {
    HookedSystem system;
    system->multiByteToWideChar = [](UINT, DWORD, const char*, int, wchar_t*, int) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    };
    system->getProcAddress = [](HMODULE library, const char* name) -> FARPROC {
        if (name == "ConvertINetMultiByteToUnicode"sv)
            return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&ScriptedToWide));
        if (name == "ConvertINetUnicodeToMultiByte"sv)
            return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&ScriptedFromWide));
        return RealSystem::FindCall(library, name);
    };
    /// What the library answers to a string of one character "x", after the opening; and to that
    /// with a terminator.
    struct Answer {
        HRESULT result;
        INT room;
    };
    struct Row {
        const char* note;
        Answer opening;     // to "a"
        Answer size;        // to "x", when it is asked for the size
        Answer conversion;  // and when it converts
        Answer ended;       // to "x" with an ending
        std::uint32_t expected;
        std::size_t units;
    };
    const Row rows[] = {
        {"one unit", {S_OK, 1}, {S_OK, 1}, {S_OK, 1}, {S_OK, 2}, RESULT_OK, 1},
        {"the code page is refused",
         {S_FALSE, 1},
         {S_FALSE, 1},
         {S_FALSE, 1},
         {S_FALSE, 1},
         RESULT_UNSUPPORTED_CHARSET,
         0},
        {"the string is refused", {S_OK, 1}, {S_FALSE, 1}, {S_FALSE, 1}, {S_FALSE, 1}, RESULT_UNSUPPORTED_CHARSET, 0},
        {"no memory for the opening", {E_OUTOFMEMORY, 1}, {S_OK, 1}, {S_OK, 1}, {S_OK, 1}, RESULT_OUT_OF_MEMORY, 0},
        {"no memory for the size", {S_OK, 1}, {E_OUTOFMEMORY, 1}, {S_OK, 1}, {S_OK, 1}, RESULT_OUT_OF_MEMORY, 0},
        {"no memory for the conversion", {S_OK, 1}, {S_OK, 1}, {E_OUTOFMEMORY, 1}, {S_OK, 1}, RESULT_OUT_OF_MEMORY, 0},
        {"the conversion fails", {S_OK, 1}, {S_OK, 1}, {E_FAIL, 0}, {S_OK, 1}, RESULT_UNSUPPORTED_CHARSET, 0},
        {"no characters", {S_OK, 1}, {S_OK, 0}, {S_OK, 0}, {S_OK, 1}, RESULT_OK, 0},
        {"no characters, which counts as failed", {S_OK, 1}, {E_FAIL, 0}, {S_OK, 0}, {S_OK, 1}, RESULT_OK, 0},
        {"nothing with any ending", {S_OK, 1}, {E_FAIL, 0}, {S_OK, 0}, {E_FAIL, 0}, RESULT_OK, 1},
        {"more than a terminator with any ending", {S_OK, 1}, {E_FAIL, 0}, {S_OK, 0}, {S_OK, 2}, RESULT_OK, 1},
        {"no memory for the ending", {S_OK, 1}, {E_FAIL, 0}, {S_OK, 0}, {E_OUTOFMEMORY, 0}, RESULT_OUT_OF_MEMORY, 0},
    };
    int failures = 0;
    for (const Row& row : rows) {
        const auto answer = [&row](auto text, INT* room) {
            const bool isSize = *room == 0;
            const Answer& given = text[0] == 'a'    ? row.opening
                                  : text.size() > 1 ? row.ended
                                  : isSize          ? row.size
                                                    : row.conversion;
            *room = given.room;
            return given.result;
        };
        ScriptedLibrary library = {answer, answer};
        script = &library;
        CharSetConverter converter;
        WideString units = KESTRA_WIDE("old content");
        std::string bytes = "old content";
        const std::uint32_t toWide = converter.ToWide(50221, "x", 1, &units);
        const std::uint32_t fromWide = converter.FromWide(50221, KESTRA_WIDE("x"), 1, &bytes);
        const bool isGood = toWide == row.expected && fromWide == row.expected && units.size() == row.units &&
                            bytes.size() == row.units;
        if (!isGood)
            std::fprintf(stderr, "%s: %u with %zu, %u with %zu\n", row.note, toWide, units.size(), fromWide,
                         bytes.size());
        failures += isGood ? 0 : 1;
    }
    // A library that opens the code page and then converts nothing, not even what opened it.
    int calls = 0;
    const auto answer = [&calls](auto, INT* room) -> HRESULT {
        *room = 1;
        return ++calls <= 2 ? S_OK : E_FAIL;
    };
    ScriptedLibrary library = {answer, answer};
    script = &library;
    CharSetConverter converter;
    WideString units;
    std::string bytes;
    failures += converter.ToWide(50221, "x", 1, &units) == RESULT_UNSUPPORTED_CHARSET && units.empty() ? 0 : 1;
    failures +=
        converter.FromWide(50221, KESTRA_WIDE("x"), 1, &bytes) == RESULT_UNSUPPORTED_CHARSET && bytes.empty() ? 0 : 1;
    ExitProcess(static_cast<UINT>(failures));
}

TEST(WindowsConverterDeathTest, EveryAnswerOfTheLanguageLibrary) {
    EXPECT_EXIT(ExitWithScriptedLibrary(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Kestra::Test
