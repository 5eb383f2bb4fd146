#include "platform/StringHelper.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Characters.h"
#include "platform/Results.h"
#include "platform/Vector.h"

namespace Kestra::StringNS {
namespace {

using namespace std::string_view_literals;
using namespace std::string_literals;

WideString Widen(std::string_view text) {
    return WideString(text.begin(), text.end());
}

template <typename T>
std::vector<T> ToStandard(const Vector<T>& parts) {
    return std::vector<T>(parts.begin(), parts.end());
}

TEST(StringHelperTest, ByteOrderMarks) {
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(BOM_UTF8), sizeof BOM_UTF8), "\xEF\xBB\xBF");
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(BOM_UTF16_LE), sizeof BOM_UTF16_LE), "\xFF\xFE");
}

TEST(StringHelperTest, ConversionsToWideLeaveOutTheTerminatorCountedLast) {
    struct Case {
        const char* note;
        CharSet::Code code;
        std::string_view bytes;
        WideStringView expected;
    };
    const Case cases[] = {
        {"nothing", 65001, "", KESTRA_WIDE("")},
        {"no terminator", 65001, "a\xC3\xA9", KESTRA_WIDE("a\u00E9")},
        {"with the terminator", 65001, "a\xC3\xA9\0"sv, KESTRA_WIDE("a\u00E9")},
        {"the terminator alone", 65001, "\0"sv, KESTRA_WIDE("")},
        {"one NUL before the terminator stays", 65001, "a\0\0"sv, WideStringView(KESTRA_WIDE("a\0"), 2)},
        {"embedded NULs stay", 65001, "\0a\0b"sv, WideStringView(KESTRA_WIDE("\0a\0b"), 4)},
        {"the ANSI rule", 0, "\x80\xE9\0"sv, KESTRA_WIDE("\u20AC\u00E9")},
        {"1252", 1252, "\x80\0"sv, KESTRA_WIDE("\u20AC")},
        {"a system converter", 20866, "\xC1\0\xC2\0"sv, WideStringView(KESTRA_WIDE("\u0430\0\u0431"), 3)},
        {"ISO-2022-JP that ends shifted", 50221, "\x1B$B$\"\0"sv, KESTRA_WIDE("\u3042")},
        {"UTF-16 with the terminating byte of a char string", 1200, "a\0b\0\0"sv, KESTRA_WIDE("ab")},
        {"UTF-16 with a terminator of its own", 1200, "a\0\0\0"sv, KESTRA_WIDE("a")},
        {"UTF-16 without a terminator", 1200, "a\0b\0"sv, KESTRA_WIDE("ab")},
        {"UTF-16 keeps embedded NULs", 1200, "\0\0a\0\0\0\0\0"sv, WideStringView(KESTRA_WIDE("\0a\0"), 3)},
        {"UTF-16 with an odd last byte", 1200, "a\0b"sv, KESTRA_WIDE("a\uFFFD")},
    };
    for (const Case& c : cases) {
        WideString output = KESTRA_WIDE("old content");
        EXPECT_EQ(StringHelper::GetWideFromGeneric(c.code, c.bytes.data(), c.bytes.size(), &output), RESULT_OK)
            << c.note;
        EXPECT_TRUE(output == c.expected) << c.note << ": " << output.size() << " units";
        if (c.code == 0) {
            EXPECT_EQ(StringHelper::GetStringFromAnsi(c.bytes.data(), c.bytes.size(), &output), RESULT_OK) << c.note;
            EXPECT_TRUE(output == c.expected) << c.note;
        }
    }
}

TEST(StringHelperTest, ConversionsFromWideLeaveOutTheTerminatorCountedLast) {
    struct Case {
        const char* note;
        CharSet::Code code;
        WideStringView units;
        std::string_view expected;
    };
    const Case cases[] = {
        {"nothing", 65001, KESTRA_WIDE(""), ""},
        {"no terminator", 65001, KESTRA_WIDE("a\u00E9"), "a\xC3\xA9"},
        {"with the terminator", 65001, WideStringView(KESTRA_WIDE("a\u00E9\0"), 3), "a\xC3\xA9"},
        {"one NUL before the terminator stays", 65001, WideStringView(KESTRA_WIDE("a\0\0"), 3), "a\0"sv},
        {"embedded NULs stay", 65001, WideStringView(KESTRA_WIDE("\0a\0b"), 4), "\0a\0b"sv},
        {"the ANSI rule", 0, WideStringView(KESTRA_WIDE("\u20AC\u0430\0"), 3), "\x80?"},
        {"UTF-16", 1200, WideStringView(KESTRA_WIDE("a\u3042\0"), 3), "a\0\x42\x30"sv},
        {"a system converter", 20866, WideStringView(KESTRA_WIDE("\u0430\u3042\0"), 3), "\xC1?"},
    };
    for (const Case& c : cases) {
        std::string output = "old content";
        EXPECT_EQ(StringHelper::GetStringFromWide(c.code, c.units.data(), c.units.size(), &output), RESULT_OK)
            << c.note;
        EXPECT_EQ(output, c.expected) << c.note;
        if (c.code == 0) {
            EXPECT_EQ(StringHelper::GetAnsiFromWide(c.units.data(), c.units.size(), &output), RESULT_OK) << c.note;
            EXPECT_EQ(output, c.expected) << c.note;
        }
    }
}

TEST(StringHelperTest, FailuresLeaveAnEmptyOutput) {
    const WideString wideContent = KESTRA_WIDE("old content");
    const std::string narrowContent = "old content";
    const WideChar* const noUnits = nullptr;
    const char* const noBytes = nullptr;

    WideString wide = wideContent;
    EXPECT_EQ(StringHelper::GetWideFromGeneric(4711, "a", 1, &wide), RESULT_UNSUPPORTED_CHARSET);
    EXPECT_TRUE(wide.empty());
    wide = wideContent;
    EXPECT_EQ(StringHelper::GetWideFromGeneric(4711, "", 0, &wide), RESULT_UNSUPPORTED_CHARSET);
    EXPECT_TRUE(wide.empty());
    wide = wideContent;
    EXPECT_EQ(StringHelper::GetWideFromGeneric(65001, noBytes, 1, &wide), RESULT_INVALID_ARGUMENT);
    EXPECT_TRUE(wide.empty());
    wide = wideContent;
    EXPECT_EQ(StringHelper::GetWideFromGeneric(65001, "a", 1, &wide, 1), RESULT_INVALID_ARGUMENT);
    EXPECT_TRUE(wide.empty());
    wide = wideContent;
    EXPECT_EQ(StringHelper::GetStringFromAnsi(noBytes, 1, &wide), RESULT_INVALID_ARGUMENT);
    EXPECT_TRUE(wide.empty());
    wide = wideContent;
    EXPECT_EQ(StringHelper::GetStringFromAnsi(noBytes, 0, &wide), RESULT_OK);
    EXPECT_TRUE(wide.empty());
    EXPECT_EQ(StringHelper::GetWideFromGeneric(65001, "a", 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(StringHelper::GetStringFromAnsi("a", 1, nullptr), RESULT_INVALID_ARGUMENT);

    std::string narrow = narrowContent;
    EXPECT_EQ(StringHelper::GetStringFromWide(4711, KESTRA_WIDE("a"), 1, &narrow), RESULT_UNSUPPORTED_CHARSET);
    EXPECT_TRUE(narrow.empty());
    narrow = narrowContent;
    EXPECT_EQ(StringHelper::GetStringFromWide(65001, noUnits, 1, &narrow), RESULT_INVALID_ARGUMENT);
    EXPECT_TRUE(narrow.empty());
    narrow = narrowContent;
    EXPECT_EQ(StringHelper::GetAnsiFromWide(noUnits, 1, &narrow), RESULT_INVALID_ARGUMENT);
    EXPECT_TRUE(narrow.empty());
    narrow = narrowContent;
    EXPECT_EQ(StringHelper::GetAnsiFromWide(noUnits, 0, &narrow), RESULT_OK);
    EXPECT_TRUE(narrow.empty());
    EXPECT_EQ(StringHelper::GetStringFromWide(65001, KESTRA_WIDE("a"), 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(StringHelper::GetAnsiFromWide(KESTRA_WIDE("a"), 1, nullptr), RESULT_INVALID_ARGUMENT);
}

TEST(StringHelperTest, SplittingKeepsEmptyParts) {
    struct Case {
        const char* note;
        std::string text;
        std::vector<std::string> parts;
    };
    const Case cases[] = {
        {"an empty text is one empty part", "", {""}},
        {"no separator", "abc", {"abc"}},
        {"one separator", "a;b", {"a", "b"}},
        {"at the front", ";a", {"", "a"}},
        {"at the back", "a;", {"a", ""}},
        {"alone", ";", {"", ""}},
        {"a run", "a;;;b", {"a", "", "", "b"}},
        {"white space stays", "text/html; charset=utf-8", {"text/html", " charset=utf-8"}},
        {"a NUL is a character", "a\0b;c\0"s, {"a\0b"s, "c\0"s}},
    };
    Vector<std::string> parts;
    parts.push_back("left over from another call");
    Vector<WideString> wideParts;
    wideParts.push_back(KESTRA_WIDE("left over from another call"));
    for (const Case& c : cases) {
        StringHelper::SplitAnsiString(c.text, ';', &parts);
        EXPECT_EQ(ToStandard(parts), c.parts) << c.note;
        std::vector<WideString> expected;
        for (const std::string& part : c.parts)
            expected.push_back(Widen(part));
        StringHelper::SplitWideString(Widen(c.text), static_cast<WideChar>(';'), &wideParts);
        EXPECT_TRUE(ToStandard(wideParts) == expected) << c.note;
    }
}

TEST(StringHelperTest, SeparatorsMayBeAnyCharacter) {
    Vector<std::string> parts;
    StringHelper::SplitAnsiString("a\0b"s, '\0', &parts);
    EXPECT_EQ(ToStandard(parts), (std::vector<std::string>{"a", "b"}));
    StringHelper::SplitAnsiString("a\xFF\x62", '\xFF', &parts);
    EXPECT_EQ(ToStandard(parts), (std::vector<std::string>{"a", "b"}));
    Vector<WideString> wideParts;
    StringHelper::SplitWideString(KESTRA_WIDE("a\u3000b"), static_cast<WideChar>(0x3000), &wideParts);
    EXPECT_TRUE(ToStandard(wideParts) == (std::vector<WideString>{KESTRA_WIDE("a"), KESTRA_WIDE("b")}));
}

TEST(StringHelperTest, StrippingRemovesTheCharactersOfASet) {
    struct Case {
        const char* note;
        std::string text;
        std::uint32_t mode;
        std::string set;
        std::string expected;
    };
    const Case cases[] = {
        {"the front", "  a b  ", StringHelper::STRIP_FRONT, " ", "a b  "},
        {"the back", "  a b  ", StringHelper::STRIP_BACK, " ", "  a b"},
        {"both ends", "  a b  ", StringHelper::STRIP_BOTH, " ", "a b"},
        {"mode 3 is both ends", " a ", 3, " ", "a"},
        {"mode 0 strips nothing", " a ", 0, " ", " a "},
        {"several characters", "\t -a- \t", StringHelper::STRIP_BOTH, "\t -", "a"},
        {"only characters of the set, from the front", "   ", StringHelper::STRIP_FRONT, " ", ""},
        {"only characters of the set, from the back", "   ", StringHelper::STRIP_BACK, " ", ""},
        {"only characters of the set, from both ends", "   ", StringHelper::STRIP_BOTH, " ", ""},
        {"an empty text", "", StringHelper::STRIP_BOTH, " ", ""},
        {"an empty set", " a ", StringHelper::STRIP_BOTH, "", " a "},
        {"nothing to strip", "a b", StringHelper::STRIP_BOTH, " ", "a b"},
        {"a tab is no space", "\ta ", StringHelper::STRIP_BOTH, " ", "\ta"},
        {"a NUL in the set", "\0a\0"s, StringHelper::STRIP_BOTH, "\0"s, "a"},
        {"a NUL in the text ends nothing", " \0 "s, StringHelper::STRIP_BOTH, " ", "\0"s},
    };
    for (const Case& c : cases) {
        std::string text = c.text;
        StringHelper::StripAnsiChars(&text, c.mode, c.set);
        EXPECT_EQ(text, c.expected) << c.note;
        WideString wide = Widen(c.text);
        StringHelper::StripWideChars(&wide, c.mode, Widen(c.set));
        EXPECT_TRUE(wide == Widen(c.expected)) << c.note;
    }
}

}  // namespace
}  // namespace Kestra::StringNS
