#include "tools/kestra-html/output/JsonText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

template <typename View>
std::string Json(View text) {
    Tool::JsonText json;
    json.String(text);
    return std::string(json.Get());
}

TEST(JsonText, Bytes) {
    const struct {
        const char* note;
        std::string_view bytes;
        std::string_view expected;
    } CASES[] = {
        {"an empty string", "", R"("")"},
        {"printable ASCII stands for itself", " az~</>'", R"(" az~</>'")"},
        {"quotation marks and backslashes are escaped", "a\"\\", R"("a\"\\")"},
        {"control characters with short escapes", "\b\f\n\r\t", R"("\b\f\n\r\t")"},
        {"other control characters", "\0\x01\x1B\x1F"sv, R"("\u0000\u0001\u001b\u001f")"},
        {"DEL and bytes from 128 up are one code point each", "\x7F\x80\xE9\xFF", R"("\u007f\u0080\u00e9\u00ff")"},
        {"UTF-8 is not decoded", "\xC3\xA9", R"("\u00c3\u00a9")"},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(Json(row.bytes), row.expected) << row.note;
}

TEST(JsonText, Utf16) {
    const WideChar loneHigh[] = {'a', 0xD83D, 'b'};
    const WideChar loneLow[] = {0xDE00};
    const WideChar pair[] = {0xD83D, 0xDE00};
    const WideChar highest[] = {0xFFFF, 0xFEFF};
    const struct {
        const char* note;
        WideStringView text;
        std::string_view expected;
    } CASES[] = {
        {"an empty string", KESTRA_WIDE(""), R"("")"},
        {"the escapes are those of bytes", WideStringView(KESTRA_WIDE("a\"\\\n\0\x7F"), 6), R"("a\"\\\n\u0000\u007f")"},
        {"letters outside ASCII", KESTRA_WIDE("\u00E9\u0434\u65E5"), R"("\u00e9\u0434\u65e5")"},
        {"a pair of surrogates is two escapes", WideStringView(pair, 2), R"("\ud83d\ude00")"},
        {"a lone high surrogate is its escape", WideStringView(loneHigh, 3), R"("a\ud83db")"},
        {"a lone low surrogate is its escape", WideStringView(loneLow, 1), R"("\ude00")"},
        {"noncharacters", WideStringView(highest, 2), R"("\uffff\ufeff")"},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(Json(row.text), row.expected) << row.note;
}

TEST(JsonText, CommasBetweenMembersAndItems) {
    Tool::JsonText json;
    json.OpenObject();
    json.Name("a");
    json.OpenArray();
    json.CloseArray();
    json.Name("b");
    json.OpenArray();
    json.String("{"sv);
    json.String(WideStringView(KESTRA_WIDE("[")));
    json.PlainString(":");
    json.OpenObject();
    json.CloseObject();
    json.OpenArray();
    json.Number(0);
    json.Number(9);
    json.Number(10);
    json.Number(UINT64_MAX);
    json.CloseArray();
    json.CloseArray();
    json.Name("c");
    json.Null();
    json.Name("d");
    json.PlainString("");
    json.Name("e");
    json.Bool(false);
    json.Name("f");
    json.OpenArray();
    json.String(",,"sv);
    json.CloseArray();
    json.Name("g");
    json.String(""sv);
    json.CloseObject();
    EXPECT_EQ(json.Get(), R"({"a":[],"b":["{","[",":",{},[0,9,10,18446744073709551615]],"c":null,"d":"","e":false,)"
                          R"("f":[",,"],"g":""})");
    json.Clear();
    EXPECT_EQ(json.Get(), "");
    json.Bool(true);
    EXPECT_EQ(json.Get(), "true");
}

TEST(JsonText, LongStringsOfTheLongestEscapes) {
    for (const std::size_t size : {1023U, 1024U, 1025U, 5000U}) {
        std::string expected;
        for (std::size_t i = 0; i < size; ++i)
            expected += i % 100 == 99 ? "z" : "\\u00ff";
        std::string bytes(size, '\xFF');
        for (std::size_t i = 99; i < size; i += 100)
            bytes[i] = 'z';
        EXPECT_EQ(Json(std::string_view(bytes)), "\"" + expected + "\"");
        WideString wide;
        for (const char byte : bytes)
            wide += static_cast<WideChar>(static_cast<unsigned char>(byte));
        EXPECT_EQ(Json(WideStringView(wide)), "\"" + expected + "\"");
    }
}

}  // namespace
}  // namespace Kestra::Test
