#include "tools/kestra-html/commands/InputChecker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "tests/tools/TextSource.h"

namespace Kestra::Test {
namespace {

using namespace std::string_literals;

using HTML::GenericParser;
using Tool::CheckOptions;
using Tool::CheckOutcome;
using Tool::InputChecker;

CheckOptions Options() {
    CheckOptions options;
    options.selfCheck = GenericParser::SELF_CHECK_COPY;
    return options;
}

CheckOutcome Check(const std::string& input, const CheckOptions& options = Options()) {
    TextSource source(input);
    return InputChecker(options).Check(&source, [](std::uint64_t) {});
}

TEST(InputChecker, AReproducedInput) {
    const CheckOutcome outcome = Check("<p>a</p><!--b--><script>// c\n</script>");
    EXPECT_TRUE(outcome.IsGood());
    EXPECT_TRUE(outcome.IsReproduced());
    EXPECT_TRUE(outcome.hasCopy);
    EXPECT_EQ(outcome.firstDifference, std::nullopt);
    EXPECT_EQ(outcome.tokens, 8U) << "line comments are tokens, and so are the texts after them";
    EXPECT_EQ(outcome.token, "");
    EXPECT_GT(outcome.seconds, 0);
}

TEST(InputChecker, TheFirstDifferenceAndItsToken) {
    const struct {
        const char* note;
        std::string input;
        GenericParser::DataStreamType type;
        std::uint64_t pieceSize;
        std::uint32_t endParse;
        std::uint64_t difference;
        std::string token;
        std::uint64_t start;
    } CASES[] = {
        {"the slash of the name is written back at the end", "ab<?xml a/ >c", GenericParser::DATA_STREAM_AUTO, 0, 704,
         9, "extern(|xml|{ |a}| , slash)", 2},
        {"the second half of a UTF-16 body is missing", "x\0<\0!\0-\0-\0a\0b\0-\0-\0>\0y\0"s,
         GenericParser::DATA_STREAM_UTF16, 0, 704, 12, "comment(ab)", 2},
        {"a condition is cut in two", "<![if x] tail>y", GenericParser::DATA_STREAM_8BIT, 10, 704, 8,
         "conditional(if| x|ail)", 0},
        {"bytes of a possible mark end a piece", "\xEFxy", GenericParser::DATA_STREAM_AUTO, 1, 0, 0, "", 0},
    };
    for (const auto& row : CASES) {
        CheckOptions options = Options();
        options.charset = 1252;
        options.input = row.type;
        options.pieceSize = row.pieceSize;
        const CheckOutcome outcome = Check(row.input, options);
        EXPECT_EQ(outcome.result.endParse, row.endParse) << row.note;
        EXPECT_FALSE(outcome.IsReproduced()) << row.note;
        EXPECT_FALSE(outcome.IsGood()) << row.note;
        EXPECT_TRUE(outcome.hasCopy) << row.note;
        EXPECT_EQ(outcome.firstDifference, row.difference) << row.note;
        EXPECT_EQ(outcome.token, row.token) << row.note;
        EXPECT_EQ(outcome.tokenStart, row.start) << row.note;
    }
}

TEST(InputChecker, ACopyThatIsTooShortOrTooLong) {
    CheckOptions options = Options();
    options.charset = 1252;
    options.feed = CheckOptions::Feed::BUFFER;
    const CheckOutcome open = Check("a<b", options);  // nothing to read the open tag from again
    EXPECT_EQ(open.result.endParse, 16U);
    EXPECT_EQ(open.firstDifference, 1U);
    EXPECT_EQ(open.token, "text(a)");
    const CheckOutcome longer = Check("<script>x</script><style>/* a", options);
    EXPECT_EQ(longer.result.endParse, 16U);
    EXPECT_EQ(longer.firstDifference, 25U);
}

TEST(InputChecker, WithoutACopyAnEmptyOneIsCompared) {
    const CheckOutcome empty = Check("");
    EXPECT_TRUE(empty.IsGood());
    EXPECT_FALSE(empty.hasCopy);
    EXPECT_EQ(empty.tokens, 0U);
    const CheckOutcome lost = Check("\xEF");
    EXPECT_TRUE(lost.result.IsGood());
    EXPECT_FALSE(lost.IsGood());
    EXPECT_FALSE(lost.hasCopy);
    EXPECT_EQ(lost.firstDifference, 0U);
    EXPECT_EQ(lost.token, "");
    EXPECT_TRUE(lost.HasLostMark());
}

TEST(InputChecker, NoTokenIsLookedForWhereNoneIsShown) {
    CheckOptions options = Options();
    options.format = Tool::OutputFormat::JSON;
    const CheckOutcome outcome = Check("ab<?xml a/ >c", options);
    EXPECT_EQ(outcome.firstDifference, 9U);
    EXPECT_EQ(outcome.token, "");
}

TEST(InputChecker, ALateCharsetStartsAgain) {
    const std::string page = "<p>\xC1\xC2</p><meta charset=koi8-r><b>";
    const CheckOutcome followed = Check(page);
    EXPECT_TRUE(followed.IsGood());
    EXPECT_EQ(followed.result.charset, 20866U);
    EXPECT_EQ(followed.tokens, 5U) << "those of the abandoned pass do not count";
    CheckOptions options = Options();
    options.reparse = false;
    const CheckOutcome stopped = Check(page, options);
    EXPECT_EQ(stopped.result.parse, 705U);
    EXPECT_FALSE(stopped.IsReproduced());
}

TEST(InputChecker, EveryCharsetKeepsItsTokens) {
    for (const StringNS::CharSet::Code code : {0U, 1200U, 1252U, 20866U, 50221U, 65000U, 65001U, 12345U, 4294967295U}) {
        CheckOptions options = Options();
        options.charset = code;
        const CheckOutcome outcome = Check("caf\xE9<b>", options);
        EXPECT_TRUE(outcome.IsGood()) << code;
        EXPECT_EQ(outcome.tokens, 2U) << code;
    }
    // After ESC $ B a "<" is half a character, where the charset knows that.
    CheckOptions options = Options();
    options.charset = 50221;
    EXPECT_EQ(Check("\x1B$B<b>a\x1B(B", options).tokens, 1U);
    options.charset = 12345;
    EXPECT_EQ(Check("\x1B$B<b>a\x1B(B", options).tokens, 3U);
}

TEST(InputChecker, ACharsetWithoutAConverterIsReplacedByOneOfItsKind) {
    const struct {
        const char* note;
        StringNS::CharSet::Code code;
        std::vector<StringNS::CharSet::Code> converters;
        StringNS::CharSet::Code expected;
    } CASES[] = {
        {"unknown stays unknown", 0, {1252}, 0},
        {"what converts stays", 50225, {1252, 50221, 50225}, 50225},
        {"an ISO-2022 page by another one", 50225, {1252, 50222, 50221}, 50221},
        {"by the next one", 50221, {1252, 50225, 50222}, 50222},
        {"by the last one", 50221, {1252, 50225}, 50225},
        {"by none where there is none", 50222, {1252, 50220}, 1252},
        {"50220 has no escapes that are known", 50220, {1252, 50221}, 1252},
        {"every other one by 1252", 54936, {1252, 50221}, 1252},
    };
    for (const auto& row : CASES) {
        const auto hasConverter = [&row](StringNS::CharSet::Code code) {
            return std::find(row.converters.begin(), row.converters.end(), code) != row.converters.end();
        };
        EXPECT_EQ(Tool::FindConvertible(row.code, hasConverter), row.expected) << row.note;
    }
    CheckOptions options = Options();
    for (const StringNS::CharSet::Code code : {50221U, 50222U, 50225U}) {
        options.charset = code;
        const CheckOutcome outcome = Check("\x1B</*\x1B(B", options);
        EXPECT_TRUE(outcome.IsGood()) << code;
        EXPECT_EQ(outcome.tokens, 1U) << code << ": the escape run hides the tag";
    }
}

TEST(InputChecker, OneParserServesManyInputs) {
    const CheckOptions options = Options();
    InputChecker checker(options);
    const auto check = [&checker](const std::string& input) {
        TextSource source(input);
        return checker.Check(&source, [](std::uint64_t) {});
    };
    EXPECT_TRUE(check("<script>'open").IsGood());
    EXPECT_TRUE(check("\xFF\xFE<\0p\0>\0"s).IsGood());
    EXPECT_FALSE(check("<?xml a/ >").IsGood());
    const CheckOutcome last = check("<p>");
    EXPECT_TRUE(last.IsGood());
    EXPECT_EQ(last.tokens, 1U);
    EXPECT_EQ(last.token, "");
    EXPECT_FALSE(check("\xEF").hasCopy) << "not the one of the input before";
}

TEST(InputChecker, ACopyOfManyBlocks) {
    std::string page;
    while (page.size() < 5000000)
        page += "<p class=x>text of a paragraph</p>\n";
    CheckOptions options = Options();
    options.charset = 1252;
    EXPECT_TRUE(Check(page, options).IsGood());
    const CheckOutcome outcome = Check(page + "<?xml a/ >", options);
    EXPECT_EQ(outcome.firstDifference, page.size() + 7);
    EXPECT_EQ(outcome.tokenStart, page.size());
}

}  // namespace
}  // namespace Kestra::Test
