#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "html/stateless/StatelessHTMLParser.h"
#include "tests/docs/PageExamples.h"
#include "tests/tools/TextSource.h"
#include "tools/kestra-html/input/EventsPass.h"
#include "tools/kestra-html/output/JsonEventObserver.h"
#include "tools/kestra-html/output/LineSink.h"

namespace Kestra::Test {
namespace {

using HTML::StatelessHTMLParser;

constexpr char PAGE[] = "events.md";

/// Replaces each `\xE9` by the byte E9.
std::string ReadEscapes(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text.substr(at, 2) == "\\x") {
            bytes += static_cast<char>(std::stoul(std::string(text.substr(at + 2, 2)), nullptr, 16));
            at += 3;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

/// Keeps the lines of all callbacks, or of all but the first and the last one of every document.
class CallbackLines final : public Tool::LineSink {
public:
    explicit CallbackLines(bool keepsAll) : all(keepsAll) {}

    void Line(std::string_view line) override {
        if (!all && (line == R"({"event":"StartParsing"})" || line == R"({"event":"StopParsing"})"))
            return;
        lines += lines.empty() ? "" : "\n";
        lines += line;
    }

    std::string lines;

private:
    bool all;
};

struct Outcome {
    std::string callbacks;
    Tool::EventsPassResult results;
};

Outcome RunExample(const Block& input) {
    Tool::EventsPassOptions options;
    options.feed = Tool::FeedOptions::Feed::BUFFER;
    options.charset = input.GetNumber("charset");
    options.flags = input.GetNumber("flags", 1);
    if (input.Has("as-text"))
        options.scriptMode = StatelessHTMLParser::SCRIPT_AS_TEXT;
    options.pieceSize = input.GetNumber("pieces");
    CallbackLines sink(input.Has("all"));
    Tool::JsonEventObserver observer(&sink);
    StatelessHTMLParser parser;
    parser.Attach(&observer);
    Outcome outcome;
    TextSource source(ReadEscapes(input.text));
    outcome.results = Tool::RunEventsPass(&parser, &source, options, [](std::uint64_t) {});
    outcome.callbacks = sink.lines;
    return outcome;
}

TEST(EventsPageTest, EveryExampleIsTrue) {
    const std::vector<Example> examples = ReadExamples(PAGE);
    ASSERT_GE(examples.size(), 30U);
    for (const Example& example : examples) {
        SCOPED_TRACE("docs/events.md, line " + std::to_string(example.input.line));
        const Outcome outcome = RunExample(example.input);
        EXPECT_EQ(outcome.callbacks, example.callbacks);
        EXPECT_EQ(outcome.results.parse, example.input.GetNumber("parse"));
        if (example.input.Has("line")) {
            EXPECT_EQ(outcome.results.line, example.input.GetNumber("line"));
            EXPECT_EQ(outcome.results.column, example.input.GetNumber("column"));
        }
    }
}

TEST(EventsPageTest, NoEventIsMissing) {
    std::set<std::string> shown;
    for (const Example& example : ReadExamples(PAGE))
        AddCallbackNames(example.callbacks, &shown);
    const std::set<std::string> events = {"StartParsing", "StopParsing", "StartTag", "EndTag", "Script",
                                          "ExternTag",    "EntityTag",   "Comment",  "Text",   "Style"};
    EXPECT_EQ(shown, events);
}

TEST(EventsPageTest, TheExamplesShowEveryResultOfTheMarkup) {
    std::set<std::uint32_t> results;
    for (const Example& example : ReadExamples(PAGE))
        results.insert(example.input.GetNumber("parse"));
    EXPECT_EQ(results, (std::set<std::uint32_t>{0, 16, 701, 702, 703}));
}

TEST(EventsPageTest, AnOptionOfAnExampleIsOneThatCounts) {
    const std::set<std::string> known = {"all", "as-text", "charset", "column", "flags", "line", "parse", "pieces"};
    std::set<std::string> used;
    for (const Example& example : ReadExamples(PAGE)) {
        for (const auto& [option, value] : example.input.options)
            used.insert(option);
        EXPECT_EQ(example.input.Has("line"), example.input.Has("column")) << "line " << example.input.line;
    }
    EXPECT_EQ(used, known);
}

TEST(EventsPageTest, TheCodeIsThatOfTheExampleProgram) {
    std::ifstream file(KESTRA_EXAMPLES "/links/StatelessLinks.cpp");
    const std::string program{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::size_t blocks = 0;
    for (const Block& block : ReadBlocks(PAGE)) {
        if (block.language != "cpp")
            continue;
        ++blocks;
        EXPECT_NE(program.find("\n" + block.text + "\n"), std::string::npos) << "docs/events.md, line " << block.line;
    }
    EXPECT_EQ(blocks, 2U);
}

}  // namespace
}  // namespace Kestra::Test
