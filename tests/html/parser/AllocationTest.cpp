#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "html/parser/GenericParser.h"
#include "tests/html/parser/CountedAllocations.h"
#include "tests/support/Flavours.h"

// Once every buffer has seen its longest string, tokens cost none.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

/// Every kind of token but junk, with strings too long for the small-string buffer in every place.
constexpr char BLOCK[] =
    "A stretch of text that is longer than a short string.\n"
    "<a-name-longer-than-a-short-string first-attribute-name  =  \"a double quoted value\"   a-bare-word-behind-a-value  "
    "second-attribute-name='a single quoted value' third-attribute-name=an-unquoted-value-of-some-length                       >"
    "<input                    first-bare-attribute-name                    second-bare-attribute-name                    />"
    "<br/>"
    "<script type=\"text/javascript\">var a = 'a single quoted string', b = \"a double quoted string\"; "
    "if (a < b) c = /a-regular-expression/\n; x = '</p>'; </p-is-foreign-here-and-long ></script>"
    "<style>p { content: 'a single quoted string' } /* a comment of a style that is longer than a short string */</style>"
    "<!-- a markup comment that is longer than a short string -- with dashes inside --->"
    "<![CDATA[ a section ] that is longer than a short string ]]><![CDATA[ a section that two brackets end, which is long too ]]"
    "<![if a condition that is longer than a short string]><![endif]>"
    "<!                      DOCTYPE-with-a-long-name a-bare-item-of-some-length  'an item in single quotes'  \"an item in double quotes\""
    "                      >"
    "<?                      xml-with-a-long-name first-attribute-of-a-declaration=\"a double quoted value\" second-attribute='another one'"
    "                      ?>"
    "<?a-long-target-of-an-instruction 'a single quoted ?> string' /* a comment > inside */ \"a double quoted ?> string\" // a line >\n?>"
    "<script>/* a block comment that is longer than a short string **/ // a line comment < that is </long too>\n"
    "// a line comment that a markup comment ends <!-- which is longer than a short string -->"
    "// and one that a section ends <![CDATA[ which is longer than a short string ]]>"
    "// and another one <![if a condition that is longer than a short string]></script>"
    "</a-name-longer-than-a-short-string                    with-an-attribute=its-value                    >";

template <typename C, typename S>
std::size_t CountAllocationsOfSecondHalf(const std::string& document, GenericParser::DataStreamType type, std::uint64_t pieceSize,
                                         StringNS::CharSet::Code charset = 1252) {
    HTML::ParserObserver<C, S> observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.StartParse(charset, type);
    std::size_t before = 0;
    for (int half = 0; half < 2; ++half) {
        before = CountAllocations();
        for (std::uint64_t offset = 0; offset < document.size(); offset += pieceSize)
            EXPECT_EQ(parser.ParseBuffer(document.data() + offset, std::min<std::uint64_t>(pieceSize, document.size() - offset)), 0U);
    }
    const std::size_t count = CountAllocations() - before;
    EXPECT_EQ(parser.EndParse(), 0U);
    return count;
}

TEST(AllocationTest, TokensCostNoneOnceWarm) {
    std::string narrow;
    for (int i = 0; i < 500; ++i)
        narrow += BLOCK;
    const std::string wide = ToUtf16LE(To<WideString>(narrow));
    for (const std::uint64_t pieceSize : {64U, 4096U, 1U << 20}) {
        SCOPED_TRACE(pieceSize);
        EXPECT_EQ((CountAllocationsOfSecondHalf<char, std::string>(narrow, GenericParser::DATA_STREAM_8BIT, pieceSize)), 0U);
        EXPECT_EQ((CountAllocationsOfSecondHalf<WideChar, WideString>(narrow, GenericParser::DATA_STREAM_8BIT, pieceSize)), 0U);
        EXPECT_EQ((CountAllocationsOfSecondHalf<WideChar, WideString>(wide, GenericParser::DATA_STREAM_UTF16, pieceSize)), 0U);
    }
}

TEST(AllocationTest, LookingForACharsetCostsNoneOnceWarm) {
    std::string document;
    for (int i = 0; i < 500; ++i)
        document += "<meta charset='a name longer than a short string'><meta content='text/html; charset=another name that is long'>";
    for (const std::uint64_t pieceSize : {64U, 4096U}) {
        EXPECT_EQ((CountAllocationsOfSecondHalf<char, std::string>(document, GenericParser::DATA_STREAM_8BIT, pieceSize, 0)), 0U);
        EXPECT_EQ((CountAllocationsOfSecondHalf<WideChar, WideString>(document, GenericParser::DATA_STREAM_8BIT, pieceSize, 0)), 0U);
    }
}

}  // namespace
}  // namespace Kestra::Test
