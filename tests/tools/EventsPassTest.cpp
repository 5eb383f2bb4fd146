#include "tools/kestra-html/input/EventsPass.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

#include "html/stateless/StatelessHTMLParser.h"
#include "platform/Characters.h"
#include "tests/tools/TextSource.h"

namespace Kestra::Test {
namespace {

using Tool::EventsPassOptions;
using Tool::EventsPassResult;
using Tool::FeedOptions;

void IgnoreProgress(std::uint64_t) {}

TEST(EventsPass, AResultIsGoodWhenEveryCallIsWith16ForTheParse) {
    const struct {
        std::uint32_t startParse, parse, endParse;
        bool good;
    } CASES[] = {
        {0, 0, 0, true},    {0, 16, 0, true}, {0, 10, 0, false},  {0, 701, 0, false}, {0, 702, 0, false},
        {0, 703, 0, false}, {2, 0, 0, false}, {2, 16, 0, false},  {16, 0, 0, false},  {0, 0, 2, false},
        {0, 0, 16, false},  {0, 2, 0, false}, {0, 512, 0, false}, {0, 16, 16, false}, {16, 16, 0, false},
    };
    for (const auto& row : CASES) {
        EventsPassResult result;
        result.startParse = row.startParse;
        result.parse = row.parse;
        result.endParse = row.endParse;
        EXPECT_EQ(result.IsGood(), row.good) << row.startParse << " " << row.parse << " " << row.endParse;
    }
}

EventsPassResult ParseOnce(std::string_view content, const EventsPassOptions& options) {
    HTML::StatelessHTMLParser parser;
    TextSource source(content);
    return Tool::RunEventsPass(&parser, &source, options, IgnoreProgress);
}

TEST(EventsPass, ThePlaceIsAskedBeforeTheEnd) {
    const EventsPassResult result = ParseOnce("a\n<b></b >", EventsPassOptions());
    EXPECT_EQ(result.startParse, 0U);
    EXPECT_EQ(result.parse, 702U);
    EXPECT_EQ(result.endParse, 0U);
    EXPECT_EQ(result.line, 2U);
    EXPECT_EQ(result.column, 8U);
}

TEST(EventsPass, AStreamEndsWith0AndABufferWithTheLastAnswer) {
    EventsPassOptions options;
    EXPECT_EQ(ParseOnce("<a", options).parse, 0U);
    options.feed = FeedOptions::Feed::BUFFER;
    EXPECT_EQ(ParseOnce("<a", options).parse, 16U);
    EXPECT_EQ(ParseOnce("", options).parse, 0U);
    options.pieceSize = 1;
    EXPECT_EQ(ParseOnce("<a>b", options).parse, 0U);
}

TEST(EventsPass, ProgressOfBothFeeds) {
    for (const auto feed : {FeedOptions::Feed::STREAM, FeedOptions::Feed::BUFFER}) {
        EventsPassOptions options;
        options.feed = feed;
        options.pieceSize = 2;
        std::vector<std::uint64_t> done;
        HTML::StatelessHTMLParser parser;
        TextSource source("abcde");
        Tool::RunEventsPass(&parser, &source, options, [&](std::uint64_t bytes) { done.push_back(bytes); });
        EXPECT_EQ(done, (std::vector<std::uint64_t>{2, 4, 5}));
    }
}

/// Keeps the last text.
class LastText final : public HTML::StatelessHTMLObserver {
public:
    void OnText(const WideChar* newText) override {
        text = newText;
    }

    WideString text;
};

TEST(EventsPass, CharsetAndFlags) {
    const struct {
        StringNS::CharSet::Code charset;
        std::uint32_t flags;
        const WideChar* text;
    } CASES[] = {
        {0, 1, KESTRA_WIDE("\u0430")},     // the markup's KOI8-R
        {1251, 1, KESTRA_WIDE("\u0430")},  // it may replace the one given
        {1251, 0, KESTRA_WIDE("\u0411")},  // it may not
        {1251, 4294967294U, KESTRA_WIDE("\u0411")},
        {1251, 3, KESTRA_WIDE("\u0430")},
    };
    for (const auto& row : CASES) {
        EventsPassOptions options;
        options.charset = row.charset;
        options.flags = row.flags;
        HTML::StatelessHTMLParser parser;
        LastText observer;
        parser.Attach(&observer);
        TextSource source("<?xml encoding='koi8-r'?>\xC1<");
        const EventsPassResult result = Tool::RunEventsPass(&parser, &source, options, IgnoreProgress);
        EXPECT_TRUE(result.IsGood());
        EXPECT_EQ(parser.GetFlags(), row.flags);
        EXPECT_EQ(observer.text, row.text) << row.charset << " " << row.flags;
    }
}

}  // namespace
}  // namespace Kestra::Test
