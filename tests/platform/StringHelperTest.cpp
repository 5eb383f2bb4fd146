#include "platform/Vector.h"
#include "tests/platform/ConverterCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_literals;

template <typename T>
std::vector<T> ToStandard(const Vector<T>& parts) {
    return std::vector<T>(parts.begin(), parts.end());
}

TEST(StringHelperTest, ByteOrderMarks) {
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(StringNS::BOM_UTF8), sizeof StringNS::BOM_UTF8),
              "\xEF\xBB\xBF");
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(StringNS::BOM_UTF16_LE), sizeof StringNS::BOM_UTF16_LE),
              "\xFF\xFE");
}

TEST(StringHelperTest, ConversionsToWideLeaveOutTheTerminatorCountedLast) {
    const ToWideRow rows[] = {
        {"nothing", 65001, "", KESTRA_WIDE("")},
        {"no terminator", 65001, "a\xC3\xA9", KESTRA_WIDE("a\u00E9")},
        {"with the terminator", 65001, "a\xC3\xA9\0"sv, KESTRA_WIDE("a\u00E9")},
        {"the terminator alone", 65001, "\0"sv, KESTRA_WIDE("")},
        {"one NUL before the terminator stays", 65001, "a\0\0"sv, WideStringView(KESTRA_WIDE("a\0"), 2)},
        {"embedded NULs stay", 65001, "\0a\0b"sv, WideStringView(KESTRA_WIDE("\0a\0b"), 4)},
        {"the ANSI rule", 0, "\x80\xE9\0"sv, KESTRA_WIDE("\u20AC\u00E9")},
        {"1252", 1252, "\x80\0"sv, KESTRA_WIDE("\u20AC")},
#ifndef KESTRA_WITHOUT_ICU
        {"a system converter", 20866, "\xC1\0\xC2\0"sv, WideStringView(KESTRA_WIDE("\u0430\0\u0431"), 3)},
        {"ISO-2022-JP that ends shifted", 50221, "\x1B$B$\"\0"sv, KESTRA_WIDE("\u3042")},
#endif
        {"UTF-16 with the terminating byte of a char string", 1200, "a\0b\0\0"sv, KESTRA_WIDE("ab")},
        {"UTF-16 with a terminator of its own", 1200, "a\0\0\0"sv, KESTRA_WIDE("a")},
        {"UTF-16 without a terminator", 1200, "a\0b\0"sv, KESTRA_WIDE("ab")},
        {"UTF-16 keeps embedded NULs", 1200, "\0\0a\0\0\0\0\0"sv, WideStringView(KESTRA_WIDE("\0a\0"), 3)},
        {"UTF-16 with an odd last byte", 1200, "a\0b"sv, KESTRA_WIDE("a\uFFFD")},
    };
    CheckWithoutTerminator(rows);
}

TEST(StringHelperTest, ConversionsFromWideLeaveOutTheTerminatorCountedLast) {
    const FromWideRow rows[] = {
        {"nothing", 65001, KESTRA_WIDE(""), ""},
        {"no terminator", 65001, KESTRA_WIDE("a\u00E9"), "a\xC3\xA9"},
        {"with the terminator", 65001, WideStringView(KESTRA_WIDE("a\u00E9\0"), 3), "a\xC3\xA9"},
        {"one NUL before the terminator stays", 65001, WideStringView(KESTRA_WIDE("a\0\0"), 3), "a\0"sv},
        {"embedded NULs stay", 65001, WideStringView(KESTRA_WIDE("\0a\0b"), 4), "\0a\0b"sv},
        {"the ANSI rule", 0, WideStringView(KESTRA_WIDE("\u20AC\u0430\0"), 3), "\x80?"},
        {"UTF-16", 1200, WideStringView(KESTRA_WIDE("a\u3042\0"), 3), "a\0\x42\x30"sv},
#ifndef KESTRA_WITHOUT_ICU
        {"a system converter", 20866, WideStringView(KESTRA_WIDE("\u0430\u3042\0"), 3), "\xC1?"},
#endif
    };
    CheckWithoutTerminator(rows);
}

TEST(StringHelperTest, FailuresLeaveAnEmptyOutput) {
    using Helper = StringHelper;
    const char* const noBytes = nullptr;
    const WideChar* const noUnits = nullptr;
    const struct {
        std::uint32_t expected;
        std::function<std::uint32_t(WideString* output)> convert;
    } toWide[] = {
        {RESULT_UNSUPPORTED_CHARSET, [](auto* output) { return Helper::GetWideFromGeneric(4711, "a", 1, output); }},
        {RESULT_UNSUPPORTED_CHARSET, [](auto* output) { return Helper::GetWideFromGeneric(4711, "", 0, output); }},
        {RESULT_INVALID_ARGUMENT, [&](auto* output) { return Helper::GetWideFromGeneric(65001, noBytes, 1, output); }},
        {RESULT_INVALID_ARGUMENT, [](auto* output) { return Helper::GetWideFromGeneric(65001, "a", 1, output, 1); }},
        {RESULT_INVALID_ARGUMENT, [&](auto* output) { return Helper::GetStringFromAnsi(noBytes, 1, output); }},
        {RESULT_OK, [&](auto* output) { return Helper::GetStringFromAnsi(noBytes, 0, output); }},
    };
    for (const auto& row : toWide) {
        WideString output = KESTRA_WIDE("old content");
        EXPECT_EQ(row.convert(&output), row.expected);
        EXPECT_TRUE(output.empty());
    }
    EXPECT_EQ(Helper::GetWideFromGeneric(65001, "a", 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(Helper::GetStringFromAnsi("a", 1, nullptr), RESULT_INVALID_ARGUMENT);

    const WideChar* const units = KESTRA_WIDE("a");
    const struct {
        std::uint32_t expected;
        std::function<std::uint32_t(std::string* output)> convert;
    } fromWide[] = {
        {RESULT_UNSUPPORTED_CHARSET, [&](auto* output) { return Helper::GetStringFromWide(4711, units, 1, output); }},
        {RESULT_INVALID_ARGUMENT, [&](auto* output) { return Helper::GetStringFromWide(65001, noUnits, 1, output); }},
        {RESULT_INVALID_ARGUMENT, [&](auto* output) { return Helper::GetAnsiFromWide(noUnits, 1, output); }},
        {RESULT_OK, [&](auto* output) { return Helper::GetAnsiFromWide(noUnits, 0, output); }},
    };
    for (const auto& row : fromWide) {
        std::string output = "old content";
        EXPECT_EQ(row.convert(&output), row.expected);
        EXPECT_TRUE(output.empty());
    }
    EXPECT_EQ(Helper::GetStringFromWide(65001, units, 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(Helper::GetAnsiFromWide(units, 1, nullptr), RESULT_INVALID_ARGUMENT);
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
            expected.push_back(To<WideString>(part));
        StringHelper::SplitWideString(To<WideString>(c.text), static_cast<WideChar>(';'), &wideParts);
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
        WideString wide = To<WideString>(c.text);
        StringHelper::StripWideChars(&wide, c.mode, To<WideString>(c.set));
        EXPECT_TRUE(wide == To<WideString>(c.expected)) << c.note;
    }
}

}  // namespace
}  // namespace Kestra::Test
