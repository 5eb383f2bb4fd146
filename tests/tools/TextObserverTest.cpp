#include "tools/kestra-html/output/TextObserver.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/NotedRecord.h"
#include "tests/tools/ObserverTest.h"
#include "tests/tools/TextSource.h"
#include "tools/kestra-html/output/CharsetText.h"
#include "tools/kestra-html/output/TextReport.h"

namespace Kestra::Test {
namespace {

using Lines = std::vector<std::string>;

template <typename Flavour>
class TextObserverTest : public ObserverTest<Flavour> {
protected:
    /// Calls every callback that has a token, in the order of the summary.
    template <typename C, typename S>
    void ObserveEverything(Tool::TextObserver<C, S>* observer) {
        const auto observe = [observer](std::string_view line) { CallNoted<C, S>(observer, line); };
        observer->OnStartParsing();
        observer->OnBOM("\xEF", 1);
        observer->OnCharset(1252);
        for (const std::string_view line :
             {"text(n)", "start(|n||)", "short(|n||)", "end(|n|||)", "comment(n)", "cdata(n|)", "conditional(n||)",
              "entity(|n||)", "extern(|n||)", "extern-text(n)"})
            observe(line);
        observer->OnJSTagStart();
        for (const std::string_view line : {"c-comment(n)", "cpp-comment(n)", "s-string(n)", "d-string(n)"})
            observe(line);
        observer->OnJSTagEnd();
        observer->OnCSSTagStart();
        observer->OnCSSTagEnd();
        observe("junk(<)");
        observer->OnEndParsing();
    }

    HTML::GenericParser parser;
};

TYPED_TEST_SUITE(TextObserverTest, ObserverFlavours);

TYPED_TEST(TextObserverTest, EveryCallbackIsALine) {
    Tool::TextObserver<typename TypeParam::C, typename TypeParam::S> observer(&this->lines, &this->parser, false);
    this->ObserveEverything(&observer);
    EXPECT_EQ(this->lines.Take(),
              (Lines{
                  "     1:1     start-parsing",    "     1:1     bom(EF)",      "     1:1     charset(1252)",
                  "     1:1     text(n)",          "     1:1     start(|n||)",  "     1:1     short(|n||)",
                  "     1:1     end(|n|||)",       "     1:1     comment(n)",   "     1:1     cdata(n|)",
                  "     1:1     conditional(n||)", "     1:1     entity(|n||)", "     1:1     extern(|n||)",
                  "     1:1     extern-text(n)",   "     1:1     js-start",     "     1:1     c-comment(n)",
                  "     1:1     cpp-comment(n)",   "     1:1     s-string(n)",  "     1:1     d-string(n)",
                  "     1:1     js-end",           "     1:1     css-start",    "     1:1     css-end",
                  "     1:1     junk(<)",          "     1:1     end-parsing",
              }));
}

TYPED_TEST(TextObserverTest, TheKindIsColoured) {
    Tool::TextObserver<typename TypeParam::C, typename TypeParam::S> observer(&this->lines, &this->parser, true);
    this->ObserveEverything(&observer);
    const Lines all = this->lines.Take();
    ASSERT_EQ(all.size(), 23U);
    EXPECT_EQ(all[0], "     1:1     \x1B[2mstart-parsing\x1B[0m");
    EXPECT_EQ(all[3], "     1:1     \x1B[1mtext\x1B[0m(n)");
    EXPECT_EQ(all[4], "     1:1     \x1B[36mstart\x1B[0m(|n||)");
    EXPECT_EQ(all[7], "     1:1     \x1B[32mcomment\x1B[0m(n)");
    EXPECT_EQ(all[10], "     1:1     \x1B[35mentity\x1B[0m(|n||)");
    EXPECT_EQ(all[16], "     1:1     \x1B[33ms-string\x1B[0m(n)");
    EXPECT_EQ(all[21], "     1:1     \x1B[31mjunk\x1B[0m(<)");
}

TYPED_TEST(TextObserverTest, PlacesAreThoseOfTheParser) {
    const std::string page = "\xEF\xBB\xBF\xC3\xA9\n<meta charset=utf-8><script>\n// c\n</script>\n<b / >";
    for (const bool withOffsets : {false, true}) {
        Tool::TextObserver<typename TypeParam::C, typename TypeParam::S> observer(&this->lines, &this->parser, false,
                                                                                  withOffsets);
        this->parser.SetObserver(&observer, false);
        Tool::ParseOptions options;
        TextSource source(page);
        Tool::RunParsePass(&this->parser, &source, Tool::ParseStart(options), options, [](std::uint64_t) {});
        Lines expected = {
            "     1:1     [0,0)             start-parsing",
            "     1:1     [0,3)             bom(EF BB BF)",
            "     1:1     [3,6)             text(",
            "     2:1     [6,26)            start(|meta|{ |charset|=|utf-8}|)",
            "     2:21    [26,34)           start(|script||)",
            "     2:29    [34,34)           js-start",
            "     2:29    [34,35)           text(\\n)",
            "     3:1     [35,39)           cpp-comment( c)",
            "     3:5     [39,40)           text(\\n)",
            "     4:1     [40,49)           end(|script|||)",
            "     4:10    [49,49)           js-end",
            "     4:10    [49,50)           text(\\n)",
            "     5:1     [50,55)           junk(<b / )",
            "     5:6     [55,56)           junk(>)",
            "     5:7     [56,56)           end-parsing",
        };
        if constexpr (sizeof(typename TypeParam::C) == 1)  // gets no line comments
            expected.erase(expected.begin() + 7);
        expected[2] += sizeof(typename TypeParam::C) == 1 ? "\\xC3\\xA9\\n)" : "\xC3\xA9\\n)";
        if (!withOffsets) {
            for (std::string& line : expected)
                line.erase(13, 18);
        }
        EXPECT_EQ(this->lines.Take(), expected);
    }
}

TYPED_TEST(TextObserverTest, LongTextsAreCutWithTheirLength) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Tool::TextObserver<C, S> observer(&this->lines, &this->parser, false);
    CallNoted<C, S>(&observer, "text(" + std::string(60, 'a') + ")");
    CallNoted<C, S>(&observer, "text(" + std::string(61, 'b') + ")");
    CallNoted<C, S>(&observer, "junk(" + std::string(1000, 'c') + ")");
    EXPECT_EQ(this->lines.Take(), (Lines{
                                      "     1:1     text(" + std::string(60, 'a') + ")",
                                      "     1:1     text(" + std::string(60, 'b') + "...[61])",
                                      "     1:1     junk(" + std::string(60, 'c') + "...[1000])",
                                  }));
}

TYPED_TEST(TextObserverTest, LongListsAreCutWithTheirLength) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Tool::TextObserver<C, S> observer(&this->lines, &this->parser, false);
    const auto makeTag = [](std::size_t attributes, const std::string& end) {
        std::string text = "start(|a|";
        for (std::size_t i = 0; i < attributes; ++i)
            text += "{ |b}";
        return text + end + "|)";
    };
    CallNoted<C, S>(&observer, makeTag(20, ""));
    CallNoted<C, S>(&observer, makeTag(21, ""));
    EXPECT_EQ(this->lines.Take(), (Lines{"     1:1     " + makeTag(20, ""), "     1:1     " + makeTag(20, "...[21]")}));
}

TYPED_TEST(TextObserverTest, TheSummary) {
    Tool::TextObserver<typename TypeParam::C, typename TypeParam::S> observer(&this->lines, &this->parser, false);
    // Text of an unknown charset is decoded all the same, but for those who want bytes.
    const std::string unknown =
        sizeof(typename TypeParam::C) > 1 ? "charset  " + Tool::DescribeAssumedCharset() : "charset  unknown";
    Tool::ParsePassResult result;
    observer.WriteSummary(result, "0", false);
    EXPECT_EQ(this->lines.Take(), (Lines{"bytes    0", "tokens   0", unknown, "result   0, success"}));

    this->ObserveEverything(&observer);
    this->lines.Take();
    result.charset = 65001;
    result.parse = 11;
    result.line = 2;
    result.column = 3;
    result.hasCharsetErrors = true;
    observer.WriteSummary(result, "1234", true);
    EXPECT_EQ(this->lines.Take(), (Lines{
                                      "bytes    1234",
                                      "tokens   15: text 1, start 1, short 1, end 1, comment 1, cdata 1, conditional "
                                      "1, entity 1, extern 2, c-comment 1, "
                                      "cpp-comment 1, s-string 1, d-string 1, junk 1",
                                      "charset  65001 (UTF-8), found in a first pass, with decoding errors",
                                      "result   parsing returned 11: malformed markup, a required part is missing or "
                                      "cannot be recognized (line 2, column 3)",
                                  }));

    result = {};
    result.charset = 4711;
    result.conversionError = 50;
    observer.WriteSummary(result, "2", false);
    EXPECT_EQ(this->lines.Take()[3],
              "result   tokens are missing, a conversion from the charset 4711 returned 50: there is no converter for "
              "the charset");

    result = {};
    result.charset = 1200;
    result.isWParser = true;
    observer.WriteSummary(result, "2", false);
    EXPECT_EQ(this->lines.Take()[2], "charset  1200 (UTF-16), 16-bit parser");
    result.charset = 4711;
    result.isWParser = false;
    observer.WriteSummary(result, "2", false);
    EXPECT_EQ(this->lines.Take()[2], "charset  4711");
}

TEST(TextObserverFlavours, AKindWithoutARowIsCountedAsAnother) {
    EXPECT_EQ(Tool::FindTokenKind("junk"), Tool::TokenKind::JUNK);
    EXPECT_EQ(Tool::FindTokenKind("imaginary"), Tool::TokenKind::OTHER);
    KeptLines lines;
    Tool::TextReport report(&lines, true, false);
    report.Write(Tool::TokenKind::OTHER, {}, "imaginary(a)");
    EXPECT_EQ(lines.Take(), Lines{"     1:1     \x1B[1mimaginary\x1B[0m(a)"});
    EXPECT_EQ(report.DescribeCounts(), "1: other 1");
}

TEST(TextObserverFlavours, LettersOutsideAscii) {
    KeptLines lines;
    const HTML::GenericParser parser;
    Tool::TextObserver<WideChar, WideString> wide(&lines, &parser, false);
    const WideString word = KESTRA_WIDE("\u00E9\u65E5\u0085");
    HTML::TextData<WideChar, WideString> wideText{&word};
    wide.OnText(&wideText);
    Tool::TextObserver<char, std::string> narrow(&lines, &parser, false);
    const std::string bytes = "\xE9\x1B";
    HTML::TextData<char, std::string> narrowText{&bytes};
    narrow.OnText(&narrowText);
    EXPECT_EQ(lines.Take(), (Lines{"     1:1     text(\xC3\xA9\xE6\x97\xA5\\u0085)", "     1:1     text(\\xE9\\x1B)"}));
}

}  // namespace
}  // namespace Kestra::Test
