#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "html/parser/GenericParser.h"
#include "platform/MemoryInputStream.h"
#include "tests/docs/PageExamples.h"
#include "tools/kestra-html/output/JsonObserver.h"
#include "tools/kestra-html/output/LineSink.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

constexpr char PAGE[] = "tokens.md";

/// Keeps the lines of all callbacks but those that every document has.
class CallbackLines final : public Tool::LineSink {
public:
    void Line(std::string_view line) override {
        for (const char* const event : {"StartParsing", "EndParsing", "Charset"}) {
            if (line.starts_with(std::string(R"({"event":")") + event + '"'))
                return;
        }
        lines += lines.empty() ? "" : "\n";
        lines += line;
    }

    std::string lines;
};

struct Outcome {
    std::string callbacks;
    std::string writtenBack;
    std::uint32_t parseResult = 0;
    std::uint32_t endResult = 0;
};

std::uint32_t ParsePieces(GenericParser* parser, const std::string& bytes, std::size_t size) {
    std::uint32_t result = 0;
    for (std::size_t begin = 0; begin < bytes.size() && result == 0; begin += size) {
        const std::string piece = bytes.substr(begin, size);
        result = parser->ParseBuffer(piece.data(), piece.size());
    }
    return result;
}

Outcome RunExample(const Block& input) {
    const bool hasMark = input.Has("mark");
    const std::string bytes = (hasMark ? "\xEF\xBB\xBF" : "") + input.text;
    CallbackLines sink;
    Tool::JsonObserver<WideChar, WideString> observer(&sink);
    VFS::MemoryInputStream stream(bytes);
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
    if (input.Has("scripts"))
        parser.SetScriptMode(GenericParser::SCRIPT_AS_TEXT);
    parser.StartParse(StringNS::CharSet::UTF8,
                      hasMark ? GenericParser::DATA_STREAM_AUTO : GenericParser::DATA_STREAM_8BIT);
    Outcome outcome;
    if (!input.Has("pieces")) {
        outcome.parseResult = parser.ParseStream(&stream, false);
    } else {
        const std::string& pieces = input.options.at("pieces");
        outcome.parseResult = ParsePieces(&parser, bytes, pieces == "all" ? bytes.size() : std::stoul(pieces));
    }
    outcome.endResult = parser.EndParse();
    outcome.callbacks = sink.lines;
    char byte = 0;
    std::uint64_t count = 0;
    while (parser.GetSelfCheckStream()->Read(&byte, 1, &count) == 0)
        outcome.writtenBack += byte;
    if (hasMark)
        outcome.writtenBack.erase(0, 3);
    return outcome;
}

TEST(TokensPageTest, EveryExampleIsTrue) {
    const std::vector<Example> examples = ReadExamples(PAGE);
    ASSERT_GE(examples.size(), 20U);
    for (const Example& example : examples) {
        SCOPED_TRACE("docs/tokens.md, line " + std::to_string(example.input.line));
        const Outcome outcome = RunExample(example.input);
        EXPECT_EQ(outcome.callbacks, example.callbacks);
        EXPECT_EQ(outcome.parseResult, example.input.GetNumber("parse"));
        EXPECT_EQ(outcome.endResult, example.input.GetNumber("end"));
        if (outcome.parseResult == 0) {
            EXPECT_EQ(outcome.writtenBack, example.writtenBack);
        }
    }
}

TEST(TokensPageTest, NoKindIsMissing) {
    std::set<std::string> shown;
    for (const Example& example : ReadExamples(PAGE))
        AddCallbackNames(example.callbacks, &shown);
    const std::set<std::string> kinds = {
        "BOM",          "CComment",   "CDATATag",       "CPPComment",   "CSSTagEnd",
        "CSSTagStart",  "CommentTag", "ConditionalTag", "DQuoteString", "EndTag",
        "EntityTag",    "ExternTag",  "JSTagEnd",       "JSTagStart",   "JunkData",
        "SQuoteString", "ShortTag",   "StartTag",       "Text",
    };
    EXPECT_EQ(shown, kinds);
}

TEST(TokensPageTest, TheExamplesShowMoreThanOnePieceAndEveryResult) {
    std::set<std::uint32_t> results;
    bool cut = false;
    for (const Example& example : ReadExamples(PAGE)) {
        results.insert({example.input.GetNumber("parse"), example.input.GetNumber("end")});
        cut = cut || (example.input.Has("pieces") && example.input.options.at("pieces") != "all");
    }
    EXPECT_EQ(results, (std::set<std::uint32_t>{0, 11, 16, 704}));
    EXPECT_TRUE(cut);
}

}  // namespace
}  // namespace Kestra::Test
