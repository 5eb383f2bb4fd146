#include "platform/CharsetDetector.h"
#include "tests/platform/ConverterCheck.h"

// The library built without ICU and uchardet: what needs them is a result code.

namespace Kestra::Test {
namespace {

TEST(PlainConversionTest, OnlyTheLibrarysOwnCodePagesAreConverted) {
    const std::set<CharSet::Code> own = {1200, 1252, 20127, 28591, 65001};
    std::size_t refused = 0;
    for (const CharSetRow& row : StringNS::GetCharSetRows()) {
        CharSetConverter converter;
        WideString wide = KESTRA_WIDE("old content");
        std::string bytes = "old content";
        const std::uint32_t expected = own.count(row.code) != 0 ? RESULT_OK : RESULT_UNSUPPORTED_CHARSET;
        EXPECT_EQ(converter.ToWide(row.code, "a", 1, &wide), expected) << row.code;
        EXPECT_EQ(converter.FromWide(row.code, KESTRA_WIDE("a"), 1, &bytes), expected) << row.code;
        if (expected != RESULT_OK) {
            ++refused;
            EXPECT_TRUE(wide.empty()) << row.code;
            EXPECT_TRUE(bytes.empty()) << row.code;
        }
    }
    EXPECT_GT(refused, 100U);
}

TEST(PlainConversionTest, DetectionKnowsAsciiAndUtf8) {
    const struct {
        const char* note;
        std::string_view bytes;
        std::uint32_t result;
        std::uint32_t count;
        CharSet::Code code;
    } rows[] = {
        {"nothing", ""sv, RESULT_OK, 0, 0},
        {"7-bit bytes", "<p>abc</p>"sv, RESULT_OK, 1, 20127},
        {"UTF-8", "<p>\xC3\xA9</p>"sv, RESULT_OK, 1, 65001},
        {"four bytes", "\xF0\x9F\x98\x80"sv, RESULT_OK, 1, 65001},
        {"the end may cut a character after its first byte", "a\xE3"sv, RESULT_OK, 1, 65001},
        {"and after its third", "a\xF0\x9F\x98"sv, RESULT_OK, 1, 65001},
        {"a byte that starts nothing", "a\xFF"sv, RESULT_UNAVAILABLE, 0, 0},
        {"a trailing byte alone", "a\x80"sv, RESULT_UNAVAILABLE, 0, 0},
        {"an overlong form at the end", "a\xE0\x80"sv, RESULT_UNAVAILABLE, 0, 0},
        {"a character cut inside the text", "\xE3\x81z"sv, RESULT_UNAVAILABLE, 0, 0},
        {"windows-1252", "caf\xE9 au lait"sv, RESULT_UNAVAILABLE, 0, 0},
        {"a shift of ISO-2022", "\x1B$B$\"\x1B(B"sv, RESULT_UNAVAILABLE, 0, 0},
        {"UTF-16 without a mark", "a\0b\0"sv, RESULT_UNAVAILABLE, 0, 0},
    };
    for (const auto& row : rows) {
        Base::DetectedCharset detected;
        std::uint32_t count = 77;
        EXPECT_EQ(Base::CharsetDetector::Detect(row.bytes.data(), row.bytes.size(), &detected, &count), row.result)
            << row.note;
        EXPECT_EQ(count, row.count) << row.note;
        EXPECT_EQ(detected.code, row.code) << row.note;
        EXPECT_EQ(detected.confidence, row.count * 100) << row.note;
    }
}

}  // namespace
}  // namespace Kestra::Test
