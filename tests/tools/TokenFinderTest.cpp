#include "tools/kestra-html/commands/TokenFinder.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/tools/TextSource.h"
#include "tools/kestra-html/input/ParsePass.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using Tool::ParseOptions;

/// The source of a token, and the token.
using Piece = std::pair<std::string, std::string>;

/// Every kind of token, every kind after text and after others, and all that returns to text.
const std::vector<Piece> PIECES = {
    {"\xC3\xA9\xC3\xA9\n", "text(\xC3\xA9\xC3\xA9\\n)"},
    {"<p a='\xC3\xA9'\n>", "start(|p|{ |a|=|'\xC3\xA9'}|\\n)"},
    {"x", "text(x)"},
    {"<br/>", "short(|br||)"},
    {"</p>", "end(|p|||)"},
    {"<!-- \xC3\xA9\n -->", "comment( \xC3\xA9\\n )"},
    {"y\n", "text(y\\n)"},
    {"<!--z-->", "comment(z)"},
    {"<![CDATA[\xE2\x82\xAC]]>", "cdata(CDATA|[\xE2\x82\xAC)"},
    {"t", "text(t)"},
    {"<![if IE]>", "conditional(if| IE|)"},
    {"<!DOCTYPE html>", "entity(|DOCTYPE|{ |html}|)"},
    {"u", "text(u)"},
    {"<?php echo 1 ?>", "extern-text(<?php echo 1 ?>)"},
    {"v", "text(v)"},
    {"<a / ", "junk(<a / )"},
    {">\xC3\xA9", "junk(>\\xC3\\xA9)"},
    {"<b>", "start(|b||)"},
    {"<script>", "start(|script||)"},
    {"a = ", "text(a = )"},
    {"/x\\/\"'", "text(/x\\\\/\"')"},
    {"\n; ", "text(\\n; )"},
    {"'\xC3\xA9'", "s-string(\xC3\xA9)"},
    {"\"d\"", "d-string(d)"},
    {"\n", "text(\\n)"},
    {"// \xC3\xA9 </b> line", "cpp-comment( \xC3\xA9 </b> line)"},
    {"\nif (a", "text(\\nif (a)"},
    {"<b) ", "text(<b) )"},
    {"/* c\n \xC3\xA9 */", "c-comment( c\\n \xC3\xA9 )"},
    {"// e", "cpp-comment( e)"},
    {"<!-- f -->", "comment( f )"},
    {" ", "text( )"},
    {"// g", "cpp-comment( g)"},
    {"<![CDATA[h]]>", "cdata(CDATA|[h)"},
    {"// i", "cpp-comment( i)"},
    {"<![endif]>", "conditional(endif||)"},
    {"j", "text(j)"},
    {"</script>", "end(|script|||)"},
    {"it's \"k\" // l", "text(it's \"k\" // l)"},
};

std::string Narrow() {
    std::string page;
    for (const Piece& piece : PIECES)
        page += piece.first;
    return page;
}

/// UTF-8 up to U+FFFF as UTF-16.
std::string ToWide(std::string_view utf8) {
    std::string wide;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned>(static_cast<unsigned char>(utf8[at])); };
        unsigned unit = byte(i);
        std::size_t length = 1;
        if (unit >= 0xE0) {
            unit = (unit & 0xFU) << 12U | (byte(i + 1) & 0x3FU) << 6U | (byte(i + 2) & 0x3FU);
            length = 3;
        } else if (unit >= 0xC0) {
            unit = (unit & 0x1FU) << 6U | (byte(i + 1) & 0x3FU);
            length = 2;
        }
        wide.push_back(static_cast<char>(unit & 0xFFU));
        wide.push_back(static_cast<char>(unit >> 8U));
        i += length;
    }
    return wide;
}

std::string Find(std::string_view page, const ParseOptions& options, std::uint64_t byte) {
    GenericParser parser;
    Tool::TokenFinder finder(&parser, byte);
    parser.SetObserver(&finder, false);
    TextSource source(page);
    Tool::RunParsePass(&parser, &source, Tool::ParseStart(options), options, [](std::uint64_t) {});
    return finder.GetToken().empty() ? "none" : std::to_string(finder.GetTokenStart()) + " " + finder.GetToken();
}

TEST(TokenFinder, EveryByteOfAnEightBitDocument) {
    for (const std::string& mark : {std::string(), std::string("\xEF\xBB\xBF")}) {
        const std::string page = mark + Narrow();
        for (const std::uint64_t pieceSize : {0U, 1U, 5U}) {
            ParseOptions options;
            options.charset = 65001;
            options.pieceSize = pieceSize;
            std::uint64_t start = mark.size();
            for (const Piece& piece : PIECES) {
                for (std::uint64_t byte = start; byte < start + piece.first.size(); ++byte)
                    EXPECT_EQ(Find(page, options, byte), std::to_string(start) + " " + piece.second)
                        << byte << " in pieces of " << pieceSize;
                start += piece.first.size();
            }
            EXPECT_EQ(Find(page, options, page.size()),
                      std::to_string(page.size() - PIECES.back().first.size()) + " " + PIECES.back().second);
        }
    }
}

TEST(TokenFinder, EveryCharacterOfASixteenBitDocument) {
    for (const std::string& mark : {std::string(), std::string("\xFF\xFE")}) {
        const std::string page = mark + ToWide(Narrow());
        ParseOptions options;
        options.input = mark.empty() ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_AUTO;
        std::uint64_t start = mark.size();
        for (const Piece& piece : PIECES) {
            const std::uint64_t size = ToWide(piece.first).size();
            std::string token = piece.second;
            if (token == "junk(<a / )")
                token = "junk(<\\x00a\\x00 \\x00/\\x00 \\x00)";
            else if (token.starts_with("junk"))
                token = "junk(>\\x00\\xE9\\x00)";
            for (std::uint64_t byte = start; byte < start + size; ++byte)
                EXPECT_EQ(Find(page, options, byte), std::to_string(start) + " " + token) << byte;
            start += size;
        }
    }
}

TEST(TokenFinder, WhatNoTokenHolds) {
    ParseOptions options;
    options.charset = 1252;
    EXPECT_EQ(Find("\xEF\xBB\xBFx", options, 0), "none");
    EXPECT_EQ(Find("\xEF\xBB\xBFx", options, 3), "3 text(x)");
    EXPECT_EQ(Find("", options, 0), "none");
    options.pieceSize = 1;
    EXPECT_EQ(Find("\xEFxy\n<b>", options, 0), "none");
    EXPECT_EQ(Find("\xEFxy\n<b>", options, 1), "1 text(xy\\n)");
    EXPECT_EQ(Find("\xEFxy\n<b>", options, 4), "4 start(|b||)");
}

TEST(TokenFinder, ALongTokenIsCut) {
    ParseOptions options;
    options.charset = 1252;
    EXPECT_EQ(Find("<!--" + std::string(41, 'x') + "-->", options, 7),
              "0 comment(" + std::string(40, 'x') + "...[41])");
}

}  // namespace
}  // namespace Kestra::Test
