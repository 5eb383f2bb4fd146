#include "tools/kestra-html/rewriting/Utf8Check.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

TEST(Utf8Check, Table) {
    const struct {
        const char* note;
        std::string_view bytes;
        bool expected;
    } CASES[] = {
        {"nothing", "", true},
        {"ASCII", "a\0\x7F"sv, true},
        {"two, three and four bytes", "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", true},
        {"around the surrogates", "\xED\x9F\xBF\xEE\x80\x80", true},
        {"a second byte alone", "\x80", false},
        {"overlong in two bytes", "\xC1\xBF", false},
        {"overlong in three bytes", "\xE0\x9F\xBF", false},
        {"overlong in four bytes", "\xF0\x8F\xBF\xBF", false},
        {"a surrogate", "\xED\xA0\x80", false},
        {"beyond the last character", "\xF4\x90\x80\x80", false},
        {"no first byte", "\xF5\x80\x80\x80", false},
        {"cut at the end", "a\xE2\x82", false},
        {"cut in the middle", "\xE2\x82z", false},
        {"windows-1252", "caf\xE9 ", false},
    };
    for (const auto& row : CASES) {
        for (std::size_t cut = 0; cut <= row.bytes.size(); ++cut) {
            Tool::Utf8Check check;
            check.Check(row.bytes.substr(0, cut));
            check.Check(row.bytes.substr(cut));
            EXPECT_EQ(check.IsUtf8(), row.expected) << row.note << ", cut at " << cut;
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
