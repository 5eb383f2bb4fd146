#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "html/parser/GenericParser.h"
#include "platform/MemoryInputStream.h"
#include "tools/kestra-html/JsonObserver.h"
#include "tools/kestra-html/LineSink.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

/// A block of code of the page: what stands behind its opening fence, and its lines.
struct Block {
    std::size_t line = 0;  ///< of the opening fence
    std::string language;
    std::map<std::string, std::string> options;  ///< "name=value", or only a name
    std::string text;                            ///< without the last line feed
};

Block ReadFence(std::string_view fence, std::size_t line) {
    Block block;
    block.line = line;
    std::size_t begin = 0;
    while (begin < fence.size()) {
        const std::size_t end = std::min(fence.find(' ', begin), fence.size());
        const std::string_view word = fence.substr(begin, end - begin);
        const std::size_t equals = word.find('=');
        if (begin == 0)
            block.language = word;
        else
            block.options[std::string(word.substr(0, equals))] = equals == std::string_view::npos ? "" : word.substr(equals + 1);
        begin = end + 1;
    }
    return block;
}

std::vector<Block> ReadBlocks() {
    std::ifstream page(KESTRA_DOCS "/tokens.md");
    std::vector<Block> blocks;
    bool inBlock = false;
    std::size_t number = 0;
    for (std::string line; std::getline(page, line);) {
        ++number;
        if (!inBlock && line.starts_with("```")) {
            blocks.push_back(ReadFence(std::string_view(line).substr(3), number));
            inBlock = true;
        } else if (inBlock && line == "```") {
            if (!blocks.back().text.empty())
                blocks.back().text.pop_back();
            inBlock = false;
        } else if (inBlock) {
            blocks.back().text += line + "\n";
        }
    }
    return blocks;
}

/// An input of the page, the callbacks that stand below it, and what is written back.
struct Example {
    Block input;
    std::string callbacks;
    std::string writtenBack;
};

std::vector<Example> ReadExamples() {
    std::vector<Example> examples;
    for (const Block& block : ReadBlocks()) {
        if (block.language == "html")
            examples.push_back({block, "", block.text});
        else if (block.language == "json")
            examples.back().callbacks = block.text;
        else
            examples.back().writtenBack = block.text;
    }
    return examples;
}

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
    const bool hasMark = input.options.contains("mark");
    const std::string bytes = (hasMark ? "\xEF\xBB\xBF" : "") + input.text;
    CallbackLines sink;
    Tool::JsonObserver<WideChar, WideString> observer(&sink);
    VFS::MemoryInputStream stream(bytes);
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
    parser.StartParse(StringNS::CharSet::UTF8, hasMark ? GenericParser::DATA_STREAM_AUTO : GenericParser::DATA_STREAM_8BIT);
    Outcome outcome;
    if (!input.options.contains("pieces")) {
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

std::uint32_t ResultOf(const Block& input, const char* option) {
    return input.options.contains(option) ? static_cast<std::uint32_t>(std::stoul(input.options.at(option))) : 0;
}

TEST(TokensPageTest, EveryExampleIsTrue) {
    const std::vector<Example> examples = ReadExamples();
    ASSERT_GE(examples.size(), 20U);
    for (const Example& example : examples) {
        SCOPED_TRACE("docs/tokens.md, line " + std::to_string(example.input.line));
        const Outcome outcome = RunExample(example.input);
        EXPECT_EQ(outcome.callbacks, example.callbacks);
        EXPECT_EQ(outcome.parseResult, ResultOf(example.input, "parse"));
        EXPECT_EQ(outcome.endResult, ResultOf(example.input, "end"));
        if (outcome.parseResult == 0) {
            EXPECT_EQ(outcome.writtenBack, example.writtenBack);
        }
    }
}

TEST(TokensPageTest, NoKindIsMissing) {
    std::set<std::string> shown;
    for (const Example& example : ReadExamples()) {
        constexpr std::string_view OPENING = R"({"event":")";
        for (std::size_t at = example.callbacks.find(OPENING); at != std::string::npos; at = example.callbacks.find(OPENING, at + 1)) {
            const std::size_t name = at + OPENING.size();
            shown.insert(example.callbacks.substr(name, example.callbacks.find('"', name) - name));
        }
    }
    const std::set<std::string> kinds = {
        "BOM",          "CComment", "CDATATag",  "CPPComment", "CSSTagEnd", "CSSTagStart", "CommentTag", "ConditionalTag",
        "DQuoteString", "EndTag",   "EntityTag", "ExternTag",  "JSTagEnd",  "JSTagStart",  "JunkData",   "SQuoteString",
        "ShortTag",     "StartTag", "Text",
    };
    EXPECT_EQ(shown, kinds);
}

TEST(TokensPageTest, TheExamplesShowMoreThanOnePieceAndEveryResult) {
    std::set<std::uint32_t> results;
    bool cut = false;
    for (const Example& example : ReadExamples()) {
        results.insert({ResultOf(example.input, "parse"), ResultOf(example.input, "end")});
        cut = cut || (example.input.options.contains("pieces") && example.input.options.at("pieces") != "all");
    }
    EXPECT_EQ(results, (std::set<std::uint32_t>{0, 11, 16, 704}));
    EXPECT_TRUE(cut);
}

}  // namespace
}  // namespace Kestra::Test
