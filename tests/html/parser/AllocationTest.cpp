#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "tests/html/parser/CountedAllocations.h"
#include "tests/html/parser/RandomTokens.h"
#include "tests/html/parser/SpyStreams.h"
#include "tests/support/Flavours.h"

// Once every buffer has seen its longest string, tokens cost none.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

/// What a document of every kind of token but junk must contain, in each of its halves.
enum Kind : std::size_t {
    TEXT,
    TEXT_OF_WHITE_SPACE,
    REGULAR_EXPRESSION,
    C_COMMENT,
    CPP_COMMENT,
    S_QUOTE_STRING,
    D_QUOTE_STRING,
    START_TAG,
    START_TAG_WITH_PREFIX,
    START_TAG_WITH_SUFFIX,
    BARE_ATTRIBUTE,
    UNQUOTED_VALUE,
    S_QUOTED_VALUE,
    D_QUOTED_VALUE,
    EMPTY_UNQUOTED_VALUE,
    EMPTY_QUOTED_VALUE,
    SPACE_AROUND_EQUALS,
    VALUE_WITH_BARE_WORDS,
    SHORT_TAG,
    SHORT_TAG_BY_NAME,
    END_TAG,
    OPEN_END_TAG,
    END_TAG_WITH_ATTRIBUTES,
    END_TAG_WITH_SLASH,
    CDATA_TAG,
    OPEN_CDATA_TAG,
    CONDITIONAL_IF,
    CONDITIONAL_ENDIF,
    CONDITIONAL_WITH_TAIL,
    COMMENT_TAG,
    CONDITIONAL_COMMENT,
    ENTITY_TAG,
    DOCTYPE_WITH_SUBSET,
    UNQUOTED_ITEM,
    S_QUOTED_ITEM,
    D_QUOTED_ITEM,
    XML_DECLARATION,
    XML_DECLARATION_WITH_SLASH,
    INSTRUCTION,
    SERVER_TAG,
    JS_START,
    JS_END,
    CSS_START,
    CSS_END,
    JUNK,
    KINDS,
};

constexpr const char* KIND_NAMES[KINDS] = {"text",
                                           "text of white space",
                                           "regular expression",
                                           "block comment",
                                           "line comment",
                                           "string in single quotes",
                                           "string in double quotes",
                                           "start tag",
                                           "start tag with space before its name",
                                           "start tag with space at its end",
                                           "attribute without a value",
                                           "unquoted value",
                                           "value in single quotes",
                                           "value in double quotes",
                                           "empty unquoted value",
                                           "empty quoted value",
                                           "space on both sides of the equals sign",
                                           "value that took bare words in",
                                           "short tag",
                                           "short tag without a space",
                                           "end tag",
                                           "end tag without its end",
                                           "end tag with attributes",
                                           "end tag with a slash",
                                           "CDATA section",
                                           "CDATA section without its end",
                                           "if section",
                                           "endif section",
                                           "section with a tail",
                                           "comment",
                                           "conditional comment",
                                           "declaration",
                                           "DOCTYPE with a subset",
                                           "bare item",
                                           "item in single quotes",
                                           "item in double quotes",
                                           "XML declaration",
                                           "XML declaration with a slash",
                                           "instruction",
                                           "server tag",
                                           "start of a script",
                                           "end of a script",
                                           "start of a style sheet",
                                           "end of a style sheet",
                                           "junk"};

/// Counts what it is told of, and allocates nothing.
template <typename C, typename S>
class KindCounter final : public HTML::ParserObserver<C, S> {
public:
    void OnText(HTML::TextData<C, S>* data) override {
        Count(data->text->front() == '/' ? REGULAR_EXPRESSION : TEXT);
        const auto isBlank = [](C character) { return character == ' ' || (character >= '\t' && character <= '\r'); };
        Count(TEXT_OF_WHITE_SPACE, std::all_of(data->text->begin(), data->text->end(), isBlank));
    }
    void OnCComment(HTML::CCommentData<C, S>*) override {
        Count(C_COMMENT);
    }
    void OnCPPComment(HTML::CPPCommentData<C, S>*) override {
        Count(CPP_COMMENT);
    }
    void OnSQuoteString(HTML::SQuoteStringData<C, S>*) override {
        Count(S_QUOTE_STRING);
    }
    void OnDQuoteString(HTML::DQuoteStringData<C, S>*) override {
        Count(D_QUOTE_STRING);
    }
    void OnStartTag(HTML::StartTagData<C, S>* data) override {
        Count(START_TAG);
        Count(START_TAG_WITH_PREFIX, !data->prefix->empty());
        Count(START_TAG_WITH_SUFFIX, !data->suffix->empty());
        Count(SERVER_TAG, data->name->front() == '%');
        CountAttributes(*data->attributes);
    }
    void OnShortTag(HTML::ShortTagData<C, S>* data) override {
        Count(SHORT_TAG);
        Count(SHORT_TAG_BY_NAME, data->attributes->empty() && data->suffix->empty());
        CountAttributes(*data->attributes);
    }
    void OnEndTag(HTML::EndTagData<C, S>* data) override {
        Count(data->closed ? END_TAG : OPEN_END_TAG);
        Count(END_TAG_WITH_ATTRIBUTES, !data->attributes->empty());
        Count(END_TAG_WITH_SLASH, data->slashBeforeClose);
        CountAttributes(*data->attributes);
    }
    void OnCDATATag(HTML::CDATATagData<C, S>* data) override {
        Count(data->closed ? CDATA_TAG : OPEN_CDATA_TAG);
    }
    void OnConditionalTag(HTML::ConditionalTagData<C, S>* data) override {
        Count(data->keyword->size() == 2 ? CONDITIONAL_IF : CONDITIONAL_ENDIF);
        Count(CONDITIONAL_WITH_TAIL, !data->tail->empty());
    }
    void OnCommentTag(HTML::CommentTagData<C, S>* data) override {
        Count(!data->text->empty() && data->text->front() == '[' ? CONDITIONAL_COMMENT : COMMENT_TAG);
    }
    void OnEntityTag(HTML::EntityTagData<C, S>* data) override {
        Count(ENTITY_TAG);
        for (const auto& token : *data->tokens) {
            Count(token.quote == HTML::QUOTE_NONE     ? UNQUOTED_ITEM
                  : token.quote == HTML::QUOTE_SINGLE ? S_QUOTED_ITEM
                                                      : D_QUOTED_ITEM);
            Count(DOCTYPE_WITH_SUBSET,
                  data->name->front() == 'D' && token.value.size() == 1 && token.value.front() == '[');
        }
    }
    void OnExternTag(HTML::ExternTagData<C, S>* data) override {
        Count(data->freeStyle ? INSTRUCTION : data->slashBeforeClose ? XML_DECLARATION_WITH_SLASH : XML_DECLARATION);
    }
    void OnJSTagStart() override {
        Count(JS_START);
    }
    void OnJSTagEnd() override {
        Count(JS_END);
    }
    void OnCSSTagStart() override {
        Count(CSS_START);
    }
    void OnCSSTagEnd() override {
        Count(CSS_END);
    }
    void OnJunkData(HTML::JunkData<C, S>*) override {
        Count(JUNK);
    }

    void Restart() {
        counts = {};
    }

    /// The kinds of the second half that are missing, and those that may not be there.
    void Check() const {
        for (std::size_t kind = 0; kind < KINDS; ++kind) {
            // An 8-bit observer gets no line comments.
            const bool isExpected = kind != JUNK && (kind != CPP_COMMENT || sizeof(C) > 1);
            EXPECT_EQ(counts[kind] != 0, isExpected) << KIND_NAMES[kind] << ": " << counts[kind];
        }
    }

private:
    void Count(Kind kind, bool holds = true) {
        counts[kind] += holds ? 1 : 0;
    }

    void CountAttributes(const Vector<HTML::Attribute<C, S>>& attributes) {
        for (const HTML::Attribute<C, S>& attribute : attributes) {
            Count(SPACE_AROUND_EQUALS, !attribute.beforeEquals.empty() && !attribute.afterEquals.empty());
            Count(BARE_ATTRIBUTE, !attribute.hasValue);
            if (!attribute.hasValue)
                continue;
            const bool isQuoted = attribute.quote != HTML::QUOTE_NONE;
            if (attribute.value.empty())
                Count(isQuoted ? EMPTY_QUOTED_VALUE : EMPTY_UNQUOTED_VALUE);
            else if (isQuoted)
                Count(attribute.quote == HTML::QUOTE_SINGLE ? S_QUOTED_VALUE : D_QUOTED_VALUE);
            else
                Count(attribute.value.find(' ') == S::npos ? UNQUOTED_VALUE : VALUE_WITH_BARE_WORDS);
        }
    }

    std::array<std::size_t, KINDS> counts{};
};

/// Every kind of token but junk, with strings too long for the small-string buffer in every place.
constexpr char BLOCK[] =
    "A stretch of text that is longer than a short string.\n"
    "<a-name-longer-than-a-short-string first-attribute-name  =  \"a double quoted value\"   a-bare-word-after-a-value "
    " "
    "second-attribute-name='a single quoted value' third-attribute-name=an-unquoted-value-of-some-length               "
    "        >"
    "<input                    first-bare-attribute-name                    second-bare-attribute-name                 "
    "   />"
    "<br/>                                        <                    b empty-value='' another-one=>"
    "<script type=\"text/javascript\">var a = 'a single quoted string', b = \"a double quoted string\"; "
    "if (a < b) c = /a-regular-expression/\n; x = '</p>'; </p-is-foreign-here-and-long ></script>"
    "<style>p { content: 'a single quoted string' } /* a comment of a style that is longer than a short string "
    "*/</style>"
    "<!-- a markup comment that is longer than a short string -- with dashes inside --->"
    "<!--[if a condition in a comment]> something that is longer than a short string <![endif]-->"
    "<![CDATA[ a section ] that is longer than a short string ]]><![CDATA[ a section that two brackets end, which is "
    "long too ]]"
    "<![if a condition that is longer than a short string]><![endif] and a tail that is longer than a short string>"
    "<!                      DOCTYPE-with-a-long-name a-bare-item-of-some-length  'an item in single quotes'  \"an "
    "item in double quotes\""
    "                      ><!DOCTYPE with-a-subset-that-is-long [ %a-parameter-entity-that-is-long; ]>"
    "<?                      xml-with-a-long-name first-attribute-of-a-declaration=\"a double quoted value\" "
    "second-attribute='another one'"
    "                      ?><?xml first-attribute-of-a-declaration=\"a double quoted value\" "
    "a-bare-word-of-a-declaration/>"
    "<?a-long-target-of-an-instruction 'a single quoted ?> string' /* a comment > inside */ \"a double quoted ?> "
    "string\" // a line >\n?>"
    "<%@ a-directive-of-a-server=\"a double quoted value\" %><% a-statement-of-a-server and-what-belongs-to-it %>"
    "<script>/* a block comment that is longer than a short string **/ // a line comment < that is </long too>\n"
    "// a line comment that a markup comment ends <!-- which is longer than a short string -->"
    "// and one that a section ends <![CDATA[ which is longer than a short string ]]>"
    "// and another one <![if a condition that is longer than a short string]></script>"
    "</a-name-longer-than-a-short-string                    with-an-attribute=its-value                    >"
    "</an-end-tag-with-a-slash with-an-attribute=and-its-value/></an-end-tag-without-an-end                    <i>";

/// At least `size` bytes.
std::string RepeatBlock(std::size_t size) {
    std::string half;
    while (half.size() < size)
        half += BLOCK;
    return half;
}

/// At least `size` bytes of tokens with strings of every length up to 4,000 characters. They
/// repeat, and so do the cuts between the pieces, after so many bytes that every string has its
/// longest text and all of them together are kept.
std::string MakeRandomly(std::uint32_t seed, std::size_t size) {
    constexpr std::size_t PERIOD = 16 * GenericParser::BUFFER_SIZE;
    constexpr std::string_view FILLER = "<p>.";
    RandomTokens tokens(seed, 4000);
    std::string block;
    while (block.size() < PERIOD)
        block += tokens.Next();
    while (block.size() % GenericParser::BUFFER_SIZE != 0)
        block += FILLER[block.size() % FILLER.size()];
    std::string half;
    while (half.size() < size)
        half += block;
    return half;
}

/// The document is `half`, twice.
template <typename C, typename S>
class Feeding {
public:
    Feeding(const std::string& halfOfDocument, GenericParser::DataStreamType dataStreamType,
            StringNS::CharSet::Code documentCharset)
        : half(halfOfDocument), type(dataStreamType), charset(documentCharset) {}

    /// @return the allocations of the second half
    std::size_t ByBuffers(std::uint64_t pieceSize) {
        Start();
        for (int part = 0; part < 2; ++part) {
            if (part == 1)
                BeginSecondHalf();
            for (std::uint64_t offset = 0; offset < half.size(); offset += pieceSize)
                EXPECT_EQ(
                    parser.ParseBuffer(half.data() + offset, std::min<std::uint64_t>(pieceSize, half.size() - offset)),
                    0U);
        }
        const std::size_t count = CountAllocations() - before;
        EXPECT_EQ(parser.EndParse(), 0U);
        return count;
    }

    std::size_t ByStream() {
        Start();
        bool wasAtMiddle = false;
        SpyStream stream(half + half, [this, &wasAtMiddle](std::uint64_t offset, std::uint64_t) {
            if (offset < half.size() || wasAtMiddle)
                return;
            wasAtMiddle = true;
            BeginSecondHalf();
        });
        EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
        const std::size_t count = CountAllocations() - before;
        EXPECT_EQ(parser.EndParse(), 0U);
        return count;
    }

    const KindCounter<C, S>& GetCounter() const {
        return counter;
    }

private:
    void Start() {
        parser.SetObserver(&counter, false);
        EXPECT_EQ(parser.StartParse(charset, type), 0U);
        before = CountAllocations();
    }

    void BeginSecondHalf() {
        EXPECT_NE(CountAllocations(), before);  // those of the first half are counted
        counter.Restart();
        before = CountAllocations();
    }

    const std::string& half;
    GenericParser::DataStreamType type;
    StringNS::CharSet::Code charset;
    KindCounter<C, S> counter;
    GenericParser parser;
    std::size_t before = 0;
};

template <typename C, typename S>
void ExpectNone(const std::string& half, GenericParser::DataStreamType type, std::uint64_t pieceSize) {
    Feeding<C, S> feeding(half, type, 1252);
    EXPECT_EQ(feeding.ByBuffers(pieceSize), 0U) << "in pieces of " << pieceSize;
    feeding.GetCounter().Check();
}

template <typename C, typename S>
void ExpectNoneOfStream(const std::string& half, GenericParser::DataStreamType type) {
    Feeding<C, S> feeding(half, type, 1252);
    EXPECT_EQ(feeding.ByStream(), 0U);
    feeding.GetCounter().Check();
}

constexpr std::size_t HALF_SIZE = 5U << 20;

/// The document of 10 MB, fed in every way, to every observer.
void ExpectNoneOfAnyFlavour(const std::string& narrow) {
    const std::string wide = ToUtf16LE(To<WideString>(narrow));
    {
        SCOPED_TRACE("8-bit, 8-bit observer");
        ExpectNoneOfStream<char, std::string>(narrow, GenericParser::DATA_STREAM_8BIT);
        for (const std::uint64_t pieceSize : {64U, 4096U, 16384U, 1U << 24})
            ExpectNone<char, std::string>(narrow, GenericParser::DATA_STREAM_8BIT, pieceSize);
    }
    {
        SCOPED_TRACE("8-bit, 16-bit observer");
        ExpectNoneOfStream<WideChar, WideString>(narrow, GenericParser::DATA_STREAM_8BIT);
        for (const std::uint64_t pieceSize : {4096U, 1U << 24})
            ExpectNone<WideChar, WideString>(narrow, GenericParser::DATA_STREAM_8BIT, pieceSize);
    }
    {
        SCOPED_TRACE("16-bit, 16-bit observer");
        ExpectNoneOfStream<WideChar, WideString>(wide, GenericParser::DATA_STREAM_UTF16);
        for (const std::uint64_t pieceSize : {4096U, 1U << 24})
            ExpectNone<WideChar, WideString>(wide, GenericParser::DATA_STREAM_UTF16, pieceSize);
    }
}

TEST(AllocationTest, TokensCostNoneOnceWarm) {
    ExpectNoneOfAnyFlavour(RepeatBlock(HALF_SIZE));
}

TEST(AllocationTest, TokensOfEveryLengthCostNoneOnceWarm) {
    for (std::uint32_t seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(seed);
        ExpectNoneOfAnyFlavour(MakeRandomly(seed, HALF_SIZE));
    }
}

TEST(AllocationTest, LookingForACharsetCostsNoneOnceWarm) {
    std::string half;
    for (int i = 0; i < 500; ++i)
        half +=
            "<meta charset='a name longer than a short string'><meta content='text/html; charset=another name that is "
            "long'>";
    for (const std::uint64_t pieceSize : {64U, 4096U}) {
        EXPECT_EQ((Feeding<char, std::string>(half, GenericParser::DATA_STREAM_8BIT, 0).ByBuffers(pieceSize)), 0U);
        EXPECT_EQ((Feeding<WideChar, WideString>(half, GenericParser::DATA_STREAM_8BIT, 0).ByBuffers(pieceSize)), 0U);
    }
}

}  // namespace
}  // namespace Kestra::Test
