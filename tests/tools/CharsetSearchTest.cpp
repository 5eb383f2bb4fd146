#include "tools/kestra-html/input/CharsetSearch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "html/framework/ParserObserver.h"
#include "html/framework/ResultCodes.h"
#include "platform/Characters.h"
#include "tests/tools/TextSource.h"
#include "tools/kestra-html/input/ParsePass.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using StringNS::CharSet;
using Tool::ParseOptions;

using Answer = std::optional<CharSet::Code>;

void IgnoreProgress(std::uint64_t) {}

/// What the parse itself says, with an observer that gets every token.
template <typename C, typename S>
Answer ParseForIt(std::string_view content, const ParseOptions& options) {
    TextSource source(content);
    HTML::ParserObserver<C, S> observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    const Tool::ParsePassResult result =
        Tool::RunParsePass(&parser, &source, Tool::ParseStart(options), options, IgnoreProgress);
    return result.parse == HTML::PARSER_PARSE_AGAIN ? Answer(result.charset) : std::nullopt;
}

std::string Repeat(std::string_view text, std::size_t size) {
    std::string all;
    while (all.size() < size)
        all += text;
    return all;
}

const std::string UTF8_TEXT =
    Repeat("\xD0\x94\xD0\xBE\xD0\xB1\xD1\x80\xD1\x8B\xD0\xB9 \xD0\xB4\xD0\xB5\xD0\xBD\xD1\x8C <p>", 1000);
const std::string LONG_ASCII = Repeat("<p class=x>plain text</p>\n", 300000);
const std::string DECLARED = "<meta charset=koi8-r>";

TEST(CharsetSearch, AnswersWhatTheParseAnswers) {
    const std::string CONTENTS[] = {
        "",
        "plain",
        DECLARED,
        "a" + DECLARED,
        "a<META content='text/html; Charset = koi8-r'>b",
        "a<meta charset=koi8-r/>b<meta charset=utf-8>",
        "a<meta charset=unknown>b<meta charset=utf-8>",
        "a<!--" + DECLARED + "-->b",
        "a<script>var s = '" + DECLARED + "';</script>b",
        "<metadata charset=koi8-r><a charset=koi8-r>",
        "\xEF\xBB\xBF"
        "a" +
            DECLARED,
        std::string("\xFF\xFE<\0m\0e\0t\0a\0", 12),
        UTF8_TEXT,
        UTF8_TEXT + DECLARED,
        LONG_ASCII,
        LONG_ASCII + DECLARED + "b" + LONG_ASCII,
        LONG_ASCII + "<a charset=x>" + LONG_ASCII + DECLARED,
        LONG_ASCII + DECLARED + LONG_ASCII + "<meta charset=utf-8>",
        LONG_ASCII + "<!--" + DECLARED + "-->" + LONG_ASCII,
        UTF8_TEXT + LONG_ASCII,
        UTF8_TEXT + LONG_ASCII + "<script charset=x></script><meta name=x>",
        UTF8_TEXT + LONG_ASCII + DECLARED,
        LONG_ASCII + UTF8_TEXT,
        Repeat("text of one token ", 200000) + DECLARED,
    };
    const auto check = [&CONTENTS](const ParseOptions& options) {
        for (const std::string& content : CONTENTS) {
            TextSource wide(content);
            EXPECT_EQ(Tool::FindLateCharset(&wide, options, true, IgnoreProgress),
                      (ParseForIt<WideChar, WideString>(content, options)))
                << content.substr(0, 100) << " of " << content.size();
            TextSource narrow(content);
            EXPECT_EQ(Tool::FindLateCharset(&narrow, options, false, IgnoreProgress),
                      (ParseForIt<char, std::string>(content, options)))
                << content.substr(0, 100) << " of " << content.size();
        }
    };
    for (const auto feed : {ParseOptions::Feed::STREAM, ParseOptions::Feed::BUFFER}) {
        for (const std::uint64_t maxTokenSize : {0, 10, 1000}) {
            for (const std::uint64_t pieceSize : {0, 5000}) {
                ParseOptions options;
                options.feed = feed;
                options.maxTokenSize = maxTokenSize;
                options.pieceSize = pieceSize;
                check(options);
            }
        }
    }
    ParseOptions ofBytes;
    ofBytes.input = GenericParser::DATA_STREAM_8BIT;
    check(ofBytes);
}

TEST(CharsetSearch, AKnownCharsetIsNotLookedFor) {
    ParseOptions options;
    options.charset = 1252;
    TextSource known("a" + DECLARED);
    EXPECT_EQ(Tool::FindLateCharset(&known, options, true, IgnoreProgress), std::nullopt);
    EXPECT_EQ(known.GetFurthest(), 0U);
    options.charset = 0;
    options.input = GenericParser::DATA_STREAM_UTF16;
    EXPECT_EQ(Tool::FindLateCharset(&known, options, true, IgnoreProgress), std::nullopt);
    EXPECT_EQ(known.GetFurthest(), 0U);
}

TEST(CharsetSearch, ReadsNoFurtherThanItMust) {
    const struct {
        const char* note;
        std::string content;
        bool isWide;
        std::uint64_t furthest;
    } CASES[] = {
        {"up to a declaration", "a" + DECLARED + LONG_ASCII, true, 16384},
        {"up to a mark", "\xEF\xBB\xBF" + LONG_ASCII, true, 16384},
        {"what the detector looks at, when nothing else can come too late", LONG_ASCII, false, 16384},
        {"everything for a declaration", LONG_ASCII, true, LONG_ASCII.size()},
    };
    for (const auto& row : CASES) {
        TextSource source(row.content);
        Tool::FindLateCharset(&source, ParseOptions(), row.isWide, IgnoreProgress);
        EXPECT_EQ(source.GetFurthest(), row.furthest) << row.note;
    }
}

}  // namespace
}  // namespace Kestra::Test
