#include "tools/kestra-html/view/ScriptJson.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/Characters.h"

namespace Kestra::Test {
namespace {

std::string ToJson(WideStringView text) {
    std::string json = "x";
    Tool::AppendScriptJson(&json, text);
    EXPECT_EQ(json.substr(0, 1), "x");
    return json.substr(1);
}

TEST(ScriptJson, Texts) {
    const struct {
        const char* note;
        WideStringView text;
        const char* json;
    } CASES[] = {
        {"nothing", {}, R"("")"},
        {"plain characters", KESTRA_WIDE("a Z~/'`${}"), R"("a Z~/'`${}")"},
        {"quotes and backslashes", KESTRA_WIDE("\"\\\\u003c"), R"("\u0022\u005c\u005cu003c")"},
        {"the end of a script", KESTRA_WIDE("</script>"), R"("\u003c/script\u003e")"},
        {"a comment and a reference", KESTRA_WIDE("<!--&lt;]]>"), R"("\u003c!--\u0026lt;]]\u003e")"},
        {"controls", KESTRA_WIDE("\n\r\t\x01\x1F\x7F"), R"("\u000a\u000d\u0009\u0001\u001f\u007f")"},
        {"NUL", WideStringView(KESTRA_WIDE("\0a\0"), 3), R"("\u0000a\u0000")"},
        {"C1 controls", KESTRA_WIDE("\u0080\u0085\u009F"), R"("\u0080\u0085\u009f")"},
        {"line separators", KESTRA_WIDE("\u2028\u2029"), R"("\u2028\u2029")"},
        {"marks of direction", KESTRA_WIDE("\u200E\u200F\u202A\u202E\u2066\u2069"),
         R"("\u200e\u200f\u202a\u202e\u2066\u2069")"},
        {"the mark and what is no character", KESTRA_WIDE("\uFEFF\uFFFE\uFFFF"), R"("\ufeff\ufffe\uffff")"},
        {"two bytes of UTF-8", KESTRA_WIDE("\u00A0\u00E9\u07FF"), "\"\u00A0\u00E9\u07FF\""},
        {"three bytes", KESTRA_WIDE("\u0800\u65E5\uFFEF"), "\"\u0800\u65E5\uFFEF\""},
        {"four bytes", KESTRA_WIDE("\U00010000\U0001F600\U0010FFFD"), "\"\U00010000\U0001F600\U0010FFFD\""},
    };
    for (const auto& c : CASES)
        EXPECT_EQ(ToJson(c.text), c.json) << c.note;
}

TEST(ScriptJson, SurrogatesWithoutTheirOtherHalf) {
    const auto high = static_cast<WideChar>(0xD83D);
    const auto low = static_cast<WideChar>(0xDE00);
    EXPECT_EQ(ToJson(WideString{high}), R"("\ud83d")");
    EXPECT_EQ(ToJson(WideString{low}), R"("\ude00")");
    EXPECT_EQ(ToJson(WideString{low, high}), R"("\ude00\ud83d")");
    EXPECT_EQ(ToJson(WideString{high, 'a', low}), R"("\ud83da\ude00")");
    EXPECT_EQ(ToJson(WideString{high, high, low, low}), "\"\\ud83d\U0001F600\\ude00\"");
    EXPECT_EQ(ToJson(WideString{static_cast<WideChar>(0xD7FF), static_cast<WideChar>(0xE000)}), "\"\uD7FF\uE000\"");
}

}  // namespace
}  // namespace Kestra::Test
