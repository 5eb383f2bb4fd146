#include "tools/kestra-html/input/EventPieces.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "html/stateless/StatelessHTMLObserver.h"
#include "platform/Characters.h"
#include "platform/Results.h"
#include "tests/tools/ObserverTest.h"
#include "tests/tools/TextSource.h"
#include "tools/kestra-html/input/EventsPass.h"
#include "tools/kestra-html/output/JsonEventObserver.h"

namespace Kestra::Test {
namespace {

using Tool::EventsPassOptions;
using Tool::EventsPassResult;

void IgnoreProgress(std::uint64_t) {}

/// The events with their places, and the result.
/// @param portionSize  bytes that come at a time; 0 for all
std::vector<std::string> GetEvents(const std::string& page, std::uint64_t portionSize,
                                   const EventsPassOptions& options) {
    HTML::StatelessHTMLParser parser;
    KeptLines lines;
    Tool::JsonEventObserver observer(&lines, &parser);
    parser.Attach(&observer);
    TextSource source(page, portionSize);
    const EventsPassResult result = Tool::RunEventsPass(&parser, &source, options, IgnoreProgress);
    observer.WriteResult(result, "page");
    return lines.Take();
}

/// What a cut inside changes, and what must be found in time.
const char* const PAGES[] = {
    "",
    "text only",
    "<p>tea</p> and cups<br/>",
    "<!-- low tide and high tide --><p>",
    "<!-- a - b -- c --- d ---> e --><p>x<!----><!-->--><i>",
    "<!--open",
    "<p class='a' title='b'>text<b c=\"d\" e='f'/>",
    "<br/>tea<p><?xml a='b'?>x<?xml?>",
    "<p %a=b c=d>x</p>",
    "<!DOCTYPE html >x<!doctype 'a' \"b\" c/><![if x]>",
    "a<script type=x>'<p>' /* <!-- */ // </p>\n</script>b<style media=y>p{} <b> </style>c",
    "<title>Tea <b>& more</b></title ><textarea></textarea><script><!-- <script></script> --></script>x<i>",
    "one\r\n\r\ntwo\n<p>\n\n</p>x < /p><b\n>",
    "<p>x</p><1>not reached<p>",
    "<p>x</p ><q / x><p>",
    "<p>x</p><b class=abcdefghij / x><p>",
    "<b> a long text that exceeds the limit </b>",
    "<?xml encoding='koi8-r'?>\xC1<meta http-equiv=content-type content='text/html; charset=utf-8'>\xC3\xA9<",
};

TEST(EventPieces, EventsAreThoseOfWholePiecesHoweverTheBytesCome) {
    for (const char* const page : PAGES) {
        for (const auto mode :
             {HTML::StatelessHTMLParser::SCRIPT_AS_TOKENS, HTML::StatelessHTMLParser::SCRIPT_AS_TEXT}) {
            for (const std::uint64_t limit : {0U, 8U}) {
                for (const std::uint64_t pieceSize : {0U, 1U, 2U, 4U, 5U, 7U, 8U, 12U, 14U, 15U, 31U}) {
                    EventsPassOptions options;
                    options.scriptMode = mode;
                    options.maxTokenSize = limit;
                    options.pieceSize = pieceSize;
                    const std::vector<std::string> whole = GetEvents(page, 0, options);
                    options.takesWhatIsThere = true;
                    for (std::uint64_t portion = 0; portion < 20; ++portion)
                        EXPECT_EQ(GetEvents(page, portion, options), whole)
                            << page << " mode " << mode << " limit " << limit << " pieces " << pieceSize << " portion "
                            << portion;
                }
            }
        }
    }
}

TEST(EventPieces, APageOfSeveralWholePieces) {
    const std::string comment = "<p>x</p><!-- " + std::string(30000, 'c') + " -->text";
    std::string page;
    for (int i = 0; i < 7; ++i)
        page += comment;
    EventsPassOptions options;
    const std::vector<std::string> whole = GetEvents(page, 0, options);
    options.takesWhatIsThere = true;
    for (const std::uint64_t portion : {0U, 1000U, 4096U, 65536U, 70000U})
        EXPECT_TRUE(GetEvents(page, portion, options) == whole) << portion;
}

/// How many bytes had come when each event came.
class Arrivals final : public HTML::StatelessHTMLObserver {
public:
    explicit Arrivals(const TextSource* readSource) : source(readSource) {}

    void OnStartTag(const WideChar*, const Attributes*) override {
        Note("start");
    }
    void OnEndTag(const WideChar*) override {
        Note("end");
    }
    void OnScript(const Attributes*, const WideChar*) override {
        Note("script");
    }
    void OnEntityTag(const WideChar*, const Tokens*) override {
        Note("entity");
    }
    void OnComment(const WideChar*) override {
        Note("comment");
    }
    void OnText(const WideChar*) override {
        Note("text");
    }

    std::string text;

private:
    void Note(const char* what) {
        text += what;
        text += " ";
        text += std::to_string(source->GetFurthest());
        text += "; ";
    }

    const TextSource* source;
};

std::string GetArrivals(const std::string& page, std::uint64_t portionSize) {
    EventsPassOptions options;
    options.takesWhatIsThere = true;
    HTML::StatelessHTMLParser parser;
    TextSource source(page, portionSize);
    Arrivals arrivals(&source);
    parser.Attach(&arrivals);
    const EventsPassResult result = Tool::RunEventsPass(&parser, &source, options, IgnoreProgress);
    return arrivals.text + std::to_string(result.parse) + " after " + std::to_string(source.GetFurthest());
}

TEST(EventPieces, AnEventComesWithItsLastByte) {
    const std::string page = "<!doctype x><p>tea<!--c--><script>1;</script></p>rest";
    EXPECT_EQ(GetArrivals(page, 1), "entity 12; start 15; text 19; comment 26; script 45; end 49; 0 after 53");
    EXPECT_EQ(GetArrivals(page, 10), "entity 20; start 20; text 20; comment 30; script 50; end 50; 0 after 53");
    EXPECT_EQ(GetArrivals("<p>x<1><p>and on and on", 1), "start 3; text 5; 703 after 6")
        << "a malformed document ends with the byte that is not good";
}

TEST(EventPieces, AStreamOfOneDirection) {
    TextSource source("<p>x");
    HTML::StatelessHTMLParser started;
    started.StartParse(0);
    Tool::EventPieces pieces(started, &source, {});
    char buffer[8];
    std::uint64_t count = 0;
    std::uint64_t position = 9;
    EXPECT_EQ(pieces.Read(nullptr, 1, &count), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(pieces.Read(buffer, 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(pieces.Read(buffer, 0, &count), RESULT_OK);
    EXPECT_EQ(pieces.Read(buffer, sizeof(buffer), &count), RESULT_OK);
    EXPECT_EQ(std::string(buffer, count), "<p>");
    EXPECT_EQ(pieces.GetPosition(&position), RESULT_OK);
    EXPECT_EQ(position, 3U);
    EXPECT_EQ(pieces.GetPosition(nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(pieces.Seek(0), RESULT_STREAM_FAILED);
    EXPECT_FALSE(pieces.IsEnd());
    EXPECT_EQ(pieces.Read(buffer, sizeof(buffer), &count), RESULT_OK);
    EXPECT_EQ(std::string(buffer, count), "x");
    EXPECT_EQ(pieces.Read(buffer, sizeof(buffer), &count), RESULT_END_OF_DATA);
}

}  // namespace
}  // namespace Kestra::Test
