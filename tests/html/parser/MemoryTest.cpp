#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "html/output/ParserSelfCheck.h"
#include "html/parser/GenericParser.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "platform/Results.h"
#include "platform/Services.h"
#include "tests/html/parser/CountedAllocations.h"
#include "tests/html/parser/RandomTokens.h"
#include "tests/support/Flavours.h"

// What a parser takes from the heap depends on the longest token and on the tag with the most
// attributes, not on the length of the document.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using HTML::StatelessHTMLParser;

constexpr std::size_t KIB = 1024;
constexpr std::uint64_t MIB = 1024 * KIB;
constexpr std::size_t LONG = MIB;            // characters of a long string
constexpr std::size_t MANY = 10000;          // attributes
constexpr std::size_t PAGE_UNIT = 64 * KIB;  // the longest read of a stream that a parser makes

constexpr std::uint64_t STREAM_SIZE = KESTRA_MEMORY_TEST_SIZE * MIB;
constexpr std::uint64_t SHORT_STREAM_SIZE = STREAM_SIZE / 4;
constexpr std::uint64_t LONG_STREAM_SIZE = 1024 * MIB;
constexpr std::uint64_t LONG_STREAM_OF_LONG_TOKENS_SIZE = 256 * MIB;

// Where the build is slow, a short stream does not have all pages, so that there is nothing to
// compare.
constexpr bool COMPARES_PEAKS = SHORT_STREAM_SIZE >= 16 * MIB;

constexpr std::uint64_t PIECE_SIZE = COMPARES_PEAKS ? 256 * MIB : STREAM_SIZE;

// What the peak of a longer stream may have more: buffers that grow by other steps.
constexpr std::size_t SLACK = 64 * KIB;

/// One part of a document, and what its tokens are bounded by.
class Page {
public:
    /// @param attributes  how many the token has as written, before bare words become a part of a
    ///                    value
    Page& Add(std::string token, std::size_t attributes = 0) {
        longest = std::max(longest, token.size());
        most = std::max(most, attributes);
        text += token;
        return *this;
    }

    /// Several tokens, of which none matters for the bounds.
    Page& AddAll(const std::string& tokens) {
        text += tokens;
        return *this;
    }

    /// Makes it as long as others, with short tokens. It ends in text that is not empty.
    Page& FillUpTo(std::size_t size) {
        constexpr char FILLER[] = "A short text.<p>";
        while (text.size() + sizeof(FILLER) <= size)
            text += FILLER;
        text.append(size - text.size(), '.');
        return *this;
    }

    Page& FillUp() {
        return FillUpTo(((text.size() + PAGE_UNIT) / PAGE_UNIT) * PAGE_UNIT);
    }

    std::string text;
    std::size_t longest = 0;
    std::size_t most = 0;
};

/// A stream of a given length that makes its bytes as they are read.
class MadeStream : public VFS::InputStream {
public:
    explicit MadeStream(std::uint64_t sizeOfStream) : size(sizeOfStream) {}

    std::uint32_t Read(void* buffer, std::uint64_t wanted, std::uint64_t* bytesRead) override {
        *bytesRead = 0;
        if (position == size)
            return RESULT_END_OF_DATA;
        while (*bytesRead < wanted && position < size) {
            const std::string_view bytes = BytesAt(position);
            const std::uint64_t count = std::min<std::uint64_t>({wanted - *bytesRead, bytes.size(), size - position});
            std::memcpy(static_cast<char*>(buffer) + *bytesRead, bytes.data(), static_cast<std::size_t>(count));
            *bytesRead += count;
            position += count;
        }
        return RESULT_OK;
    }
    std::uint32_t GetPosition(std::uint64_t* out) override {
        *out = position;
        return RESULT_OK;
    }
    std::uint32_t Seek(std::uint64_t target) override {
        position = target;
        return RESULT_OK;
    }
    bool IsEnd() override {
        return position == size;
    }

private:
    /// Some of those from a place on, at least one.
    virtual std::string_view BytesAt(std::uint64_t place) const = 0;

    std::uint64_t size;
    std::uint64_t position = 0;
};

/// Pages of one size: each once, then in an order that does not repeat. It keeps nothing but the
/// pages.
class PagedStream final : public MadeStream {
public:
    /// Ends with the page that makes it at least `sizeOfStream` bytes long.
    PagedStream(const std::vector<std::string>& pagesOfOneSize, std::uint64_t sizeOfStream)
        : MadeStream((sizeOfStream / pagesOfOneSize.front().size() + 1) * pagesOfOneSize.front().size()),
          pages(pagesOfOneSize) {}

private:
    std::string_view BytesAt(std::uint64_t place) const override {
        const std::uint64_t pageSize = pages.front().size();
        std::uint64_t index = place / pageSize;
        if (index >= pages.size())
            index = ((index * 0x9E3779B97F4A7C15U) >> 32) % pages.size();  // 2^64 divided by the golden ratio
        return std::string_view(pages[static_cast<std::size_t>(index)])
            .substr(static_cast<std::size_t>(place % pageSize));
    }

    std::vector<std::string> pages;
};

/// Some bytes, and then others, again and again.
class OpenStream final : public MadeStream {
public:
    OpenStream(std::string beginning, const std::string& repeatedPart, std::uint64_t sizeOfStream)
        : MadeStream(sizeOfStream), begin(std::move(beginning)) {
        while (part.size() < PAGE_UNIT)
            part += repeatedPart;
    }

private:
    std::string_view BytesAt(std::uint64_t place) const override {
        if (place < begin.size())
            return std::string_view(begin).substr(static_cast<std::size_t>(place));
        return std::string_view(part).substr(static_cast<std::size_t>((place - begin.size()) % part.size()));
    }

    std::string begin;
    std::string part;
};

/// A kind of document. No document has a token that is longer, or a tag with more attributes, than
/// its pages say.
struct Document {
    std::vector<std::string> pages;
    std::size_t longest = 0;
    std::size_t most = 0;
    bool hasJunk = false;
};

Document OfPages(std::vector<Page> pages, bool hasJunk = false) {
    Document document;
    document.hasJunk = hasJunk;
    std::size_t size = 0;
    for (Page& page : pages)
        size = std::max(size, page.FillUp().text.size());
    for (Page& page : pages) {
        document.pages.push_back(page.FillUpTo(size).text);
        document.longest = std::max(document.longest, page.longest);
        document.most = std::max(document.most, page.most);
    }
    return document;
}

Document ToUtf16(const Document& narrow) {
    Document wide = narrow;
    for (std::string& page : wide.pages)
        page = ToUtf16LE(page);
    wide.longest *= 2;
    return wide;
}

std::size_t BoundOf(const Document& document) {
    return 512 * KIB + 16 * document.longest + KIB * document.most;
}

/// The most that `parse` has on the heap, above what is there when it is called.
std::size_t MeasurePeak(const std::function<void()>& parse) {
    RestartHeapPeak();
    const std::size_t before = GetHeapSize();
    parse();
    return GetHeapPeak() - before;
}

/// Counts junk, and keeps nothing.
template <typename C, typename S>
class JunkCounter final : public HTML::ParserObserver<C, S> {
public:
    void OnJunkData(HTML::JunkData<C, S>*) override {
        ++count;
    }

    std::size_t count = 0;
};

class TagCounter final : public HTML::StatelessHTMLObserver {
public:
    void OnStartTag(const WideChar*, const Attributes*) override {
        ++count;
    }
    void OnEndTag(const WideChar*) override {}
    void OnScript(const Attributes*, const WideChar*) override {}
    void OnExternTag(const WideChar*, const Attributes*) override {}
    void OnEntityTag(const WideChar*, const Tokens*) override {}
    void OnComment(const WideChar*) override {}
    void OnText(const WideChar*) override {}
    void OnStyle(const Attributes*, const WideChar*) override {}

    std::size_t count = 0;
};

/// The parser that reads a document, and the observer that it is read for.
struct Way {
    const char* name;
    bool fromWide;
    bool toWide;
    bool isStateless = false;
};

constexpr Way NARROW_WAY = {"8-to-8", false, false};
constexpr Way NARROW_TO_WIDE = {"8-to-16", false, true};
constexpr Way WIDE_WAY = {"16-to-16", true, true};
constexpr Way WIDE_TO_NARROW = {"16-to-8", true, false};
constexpr Way STATELESS = {"stateless", false, false, true};
constexpr Way DRIVER_WAYS[] = {NARROW_WAY, NARROW_TO_WIDE, WIDE_WAY, WIDE_TO_NARROW};

struct ParserOptions {
    GenericParser::SelfCheck selfCheck = GenericParser::SELF_CHECK_OFF;
    std::uint64_t maxTokenSize = 0;
    bool isAutomatic = false;  // the kind of the document is found out
    bool ends = true;          // the document ends
};

/// What became of a document.
struct Measured {
    std::size_t peak = 0;
    std::size_t counted = 0;  // junk, or start tags for the stateless parser
    std::uint32_t parseResult = 0;
    std::uint32_t endResult = 0;
};

GenericParser::DataStreamType TypeOf(bool wide) {
    return wide ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT;
}

/// @param feed  called with the parser
template <typename C, typename S, typename Feed>
Measured MeasureDriver(const Way& way, const ParserOptions& options, Feed feed) {
    Measured measured;
    JunkCounter<C, S> counter;
    measured.peak = MeasurePeak([&] {
        const auto parser = std::make_unique<GenericParser>();
        parser->SetObserver(&counter, false);
        parser->SetSelfCheck(options.selfCheck);
        parser->SetMaxTokenSize(options.maxTokenSize);
        const auto type = options.isAutomatic ? GenericParser::DATA_STREAM_AUTO : TypeOf(way.fromWide);
        EXPECT_EQ(parser->StartParse(1252, type), 0U);
        measured.parseResult = feed(parser.get());
        measured.endResult = options.ends ? parser->EndParse() : 0;
    });
    measured.counted = counter.count;
    return measured;
}

template <typename Feed>
Measured MeasureStateless(const ParserOptions& options, Feed feed) {
    Measured measured;
    TagCounter counter;
    measured.peak = MeasurePeak([&] {
        const auto parser = std::make_unique<StatelessHTMLParser>();
        parser->Attach(&counter);
        parser->SetMaxTokenSize(options.maxTokenSize);
        EXPECT_EQ(parser->StartParse(1252), 0U);
        measured.parseResult = feed(parser.get());
        measured.endResult = options.ends ? parser->EndParse() : 0;
    });
    measured.counted = counter.count;
    return measured;
}

template <typename Feed>
Measured Measure(const Way& way, const ParserOptions& options, Feed feed) {
    SCOPED_TRACE(way.name);
    if (way.isStateless)
        return MeasureStateless(options, feed);
    if (way.toWide)
        return MeasureDriver<WideChar, WideString>(way, options, feed);
    return MeasureDriver<char, std::string>(way, options, feed);
}

Measured MeasureStream(const Way& way, const ParserOptions& options, VFS::InputStream* stream) {
    return Measure(way, options, [stream](auto* parser) { return parser->ParseStream(stream, false); });
}

Measured MeasureBuffer(const Way& way, const ParserOptions& options, const std::string& piece) {
    return Measure(way, options, [&piece](auto* parser) { return parser->ParseBuffer(piece.data(), piece.size()); });
}

/// Expects a peak within a bound, and no lower than the buffer that is read into.
void ExpectPeak(const Way& way, std::size_t peak, std::size_t bound, const std::string& suffix = "") {
    const std::size_t least =
        way.isStateless ? static_cast<std::size_t>(StatelessHTMLParser::BUFFER_SIZE) : GenericParser::BUFFER_SIZE;
    EXPECT_GE(peak, least) << way.name;
    EXPECT_LE(peak, bound) << way.name;
    testing::Test::RecordProperty("peak-" + (way.name + suffix), std::to_string(peak));
    testing::Test::RecordProperty("bound-" + (way.name + suffix), std::to_string(bound));
}

/// What the copy of the self-check has in memory, twice while it grows. It is read back by pieces.
std::size_t BoundOfCopy(GenericParser::SelfCheck selfCheck) {
    constexpr std::size_t READ_BACK_SIZE = 64 * KIB;
    if (selfCheck != GenericParser::SELF_CHECK_COPY)
        return 0;
    return static_cast<std::size_t>(HTML::ParserSelfCheck<char, std::string>::COPY_IN_MEMORY) * 2 + READ_BACK_SIZE;
}

/// @return the peak
std::size_t CheckPeak(const Way& way, const Document& document, std::uint64_t size,
                      GenericParser::SelfCheck selfCheck = GenericParser::SELF_CHECK_OFF) {
    SCOPED_TRACE(testing::Message() << "longest token " << document.longest << ", attributes " << document.most);
    PagedStream stream(document.pages, size);
    const Measured measured = MeasureStream(way, {selfCheck}, &stream);
    EXPECT_EQ(measured.parseResult, 0U);
    // Not every random document comes back as it was: a section loses the part of its tail that
    // lies in an earlier piece.
    EXPECT_TRUE(measured.endResult == 0 ||
                (measured.endResult == HTML::PARSER_SELF_CHECK_FAILED && selfCheck != GenericParser::SELF_CHECK_OFF))
        << measured.endResult;
    EXPECT_EQ(measured.counted != 0, document.hasJunk || way.isStateless) << measured.counted;
    ExpectPeak(way, measured.peak, BoundOf(document) + BoundOfCopy(selfCheck));
    return measured.peak;
}

/// A document and the parsers that read it.
struct Case {
    const char* name;
    Document (*make)();
    bool forStateless = false;
};

std::ostream& operator<<(std::ostream& stream, const Case& row) {
    return stream << row.name;
}

std::string Letters(std::size_t count = LONG) {
    return std::string(count, 'a');
}

std::string Blanks(std::size_t count = LONG) {
    return std::string(count, ' ');
}

Document OfToken(std::string token) {
    Page page;
    page.Add(std::move(token), 2);
    return OfPages({page});
}

/// A long token between two short ones, which belong to it.
Document OfEnclosedToken(const std::string& before, std::string token, const std::string& after) {
    Page page;
    page.AddAll(before).Add(std::move(token), 2).AddAll(after);
    return OfPages({page});
}

std::string ManyAttributes(const std::string& start, const std::string& attribute, const std::string& end) {
    std::string tag = start;
    for (std::size_t i = 0; i < MANY; ++i)
        tag += attribute;
    return tag + end;
}

Document OfManyAttributes(const std::string& start, const std::string& attribute, const std::string& end) {
    Page page;
    page.Add(ManyAttributes(start, attribute, end), MANY);
    return OfPages({page});
}

Document OfJunk(std::string token, std::size_t attributes = 2) {
    Page page;
    page.Add(std::move(token), attributes);
    return OfPages({page}, true);
}

/// Adds random tokens up to a size.
/// @param next  makes one of them
void AddRandomTokens(Page* page, RandomTokens* tokens, std::string (RandomTokens::*next)(), std::size_t size,
                     bool withJunk = false) {
    constexpr std::size_t MOST_ATTRIBUTES = 40;
    while (page->text.size() < size) {
        const std::string token = (tokens->*next)();
        const bool isElement =
            token.starts_with("<script") || token.starts_with("<style");  // several tokens, all short
        page->Add(token.substr(0, isElement ? 0 : token.size()), MOST_ATTRIBUTES).AddAll(isElement ? token : "");
        if (withJunk)
            page->AddAll(tokens->NextJunk());
    }
}

/// @param longestRun  of one string of a token
Document OfTokens(std::size_t longestRun, bool withJunk) {
    RandomTokens tokens(1, longestRun);
    std::vector<Page> pages(16);
    for (Page& page : pages)
        AddRandomTokens(&page, &tokens, &RandomTokens::Next, 7 * PAGE_UNIT, withJunk);
    return OfPages(std::move(pages), withJunk);
}

/// For the stateless parser no token may be cut: a quote that ends a piece does not end its value.
Document OfPlainTokens(std::size_t longestRun) {
    RandomTokens tokens(1, longestRun);
    std::vector<Page> pages(64);
    for (Page& page : pages)
        AddRandomTokens(&page, &tokens, &RandomTokens::NextPlain, PAGE_UNIT / 2);
    return OfPages(std::move(pages));
}

/// A long string in each place of a document in turn.
Document OfEachPlaceInTurn(std::size_t size) {
    const std::string letters = Letters(size);
    const std::string blanks = Blanks(size);
    Page page;
    page.Add(letters)
        .Add("<" + letters + ">")
        .Add("<a " + letters + ">")
        .Add("<a a=" + letters + ">")
        .Add("<a a='" + letters + "'>")
        .Add("<a a=\"" + letters + "\">")
        .Add("</" + letters + ">")
        .Add("<!--" + letters + "-->")
        .Add("<![CDATA[" + letters + "]]>")
        .Add("<![if " + letters + "]>")
        .Add("<!" + letters + ">")
        .Add("<!a '" + letters + "'>")
        .Add("<?a " + letters + "?>")
        .Add("<?xml a='" + letters + "'?>")
        .AddAll("<script>")
        .Add(letters)
        .Add("'" + letters + "'")
        .Add("\"" + letters + "\"")
        .Add("/*" + letters + "*/")
        .Add("//" + letters + "\n")
        .Add("/" + letters + "\n")
        .AddAll("</script>");
    for (const std::string start : {"<", "</", "<?"}) {
        const std::string end = start == "<?" ? "?>" : ">";
        page.Add(start + blanks + "xml a=b" + end)
            .Add(start + "xml" + blanks + "a=b" + end)
            .Add(start + "xml a" + blanks + "=b" + end)
            .Add(start + "xml a=" + blanks + "b" + end)
            .Add(start + "xml a='b'" + blanks + end);
    }
    page.Add("<!" + blanks + "a>").Add("<!a" + blanks + "b>").Add("<!a b" + blanks + ">");
    return OfPages({page});
}

/// Tags with a hundred attributes, of which another one has a long value each time.
Document OfEachAttributeInTurn() {
    constexpr std::size_t COUNT = 100;
    Page page;
    for (std::size_t i = 0; i < COUNT; ++i) {
        std::string tag = "<a";
        for (std::size_t j = 0; j < COUNT; ++j)
            tag += " a=\"" + Letters(i == j ? PAGE_UNIT : 1) + "\"";
        page.Add(tag + ">", COUNT);
    }
    return OfPages({page});
}

// clang-format off
const Case MIXED[] = {
    {"ShortTokens", [] { return OfTokens(40, false); }},
    {"ShortTokensAndJunk", [] { return OfTokens(40, true); }},
    {"Tokens", [] { return OfTokens(400, false); }},
    {"TokensAndJunk", [] { return OfTokens(400, true); }},
    {"LongTokens", [] { return OfTokens(8000, false); }},
    {"LongTokensAndJunk", [] { return OfTokens(8000, true); }},
    {"PlainTokens", [] { return OfPlainTokens(400); }, true},
    {"LongPlainTokens", [] { return OfPlainTokens(4000); }, true},
};

const Case LONG_TOKENS[] = {
    {"Text", [] { return OfToken(Letters()); }, true},
    {"TagName", [] { return OfToken("<" + Letters() + ">"); }, true},
    {"SpaceBeforeTagName", [] { return OfToken("<" + Blanks() + "a>"); }, true},
    {"SpaceAtTheEndOfATag", [] { return OfToken("<a a=b" + Blanks() + ">"); }, true},
    {"AttributeName", [] { return OfToken("<a " + Letters() + "=b>"); }, true},
    {"BareAttribute", [] { return OfToken("<a " + Letters() + ">"); }, true},
    {"BareWordAfterAValue", [] { return OfToken("<a a=b " + Letters() + ">"); }, true},
    {"SpaceBeforeAnAttribute", [] { return OfToken("<a" + Blanks() + "a=b>"); }, true},
    {"SpaceBeforeEquals", [] { return OfToken("<a a" + Blanks() + "=b>"); }, true},
    {"SpaceAfterEquals", [] { return OfToken("<a a=" + Blanks() + "b>"); }, true},
    {"SpaceAfterABareAttribute", [] { return OfToken("<a a" + Blanks() + "b>"); }, true},
    {"UnquotedValue", [] { return OfToken("<a a=" + Letters() + ">"); }, true},
    {"ValueInSingleQuotes", [] { return OfToken("<a a='" + Letters() + "'>"); }, true},
    {"ValueInDoubleQuotes", [] { return OfToken("<a a=\"" + Letters() + "\">"); }, true},
    {"ValueOfAShortTag", [] { return OfToken("<a a=\"" + Letters() + "\"/>"); }, true},
    {"EndTagName", [] { return OfToken("</" + Letters() + ">"); }, true},
    {"SpaceAfterEndTagName", [] { return OfToken("</a" + Blanks() + ">"); }},
    {"ValueOfAnEndTag", [] { return OfToken("</a a=\"" + Letters() + "\">"); }},
    {"Comment", [] { return OfToken("<!--" + Letters() + "-->"); }, true},
    {"CdataSection", [] { return OfToken("<![CDATA[" + Letters() + "]]>"); }},
    {"Condition", [] { return OfToken("<![if " + Letters() + "]>"); }},
    {"DeclarationKeyword", [] { return OfToken("<!" + Letters() + " a>"); }, true},
    {"DeclarationItem", [] { return OfToken("<!a " + Letters() + ">"); }, true},
    {"DeclarationString", [] { return OfToken("<!a \"" + Letters() + "\">"); }, true},
    {"Instruction", [] { return OfToken("<?a " + Letters() + "?>"); }},
    {"InstructionTarget", [] { return OfToken("<?" + Letters() + " ?>"); }, true},
    {"InstructionString", [] { return OfToken("<?a '" + Letters() + "'?>"); }},
    {"ValueOfAnXmlDeclaration", [] { return OfToken("<?xml a='" + Letters() + "'?>"); }, true},
    {"Script", [] { return OfEnclosedToken("<i><script>", Letters(), "</script>"); }, true},
    {"StringInSingleQuotes", [] { return OfEnclosedToken("<i><script>", "'" + Letters() + "'", "</script>"); }, true},
    {"StringInDoubleQuotes", [] { return OfEnclosedToken("<i><script>", "\"" + Letters() + "\"", "</script>"); }, true},
    {"BlockComment", [] { return OfEnclosedToken("<i><script>", "/*" + Letters() + "*/", "</script>"); }, true},
    {"LineComment", [] { return OfEnclosedToken("<i><script>", "//" + Letters() + "\n", "</script>"); }, true},
    {"RegularExpression", [] { return OfEnclosedToken("<i><script>", "/" + Letters() + "\n", "</script>"); }},
    {"ForeignEndTag", [] { return OfEnclosedToken("<i><script>", "</" + Letters() + ">", "</script>"); }},
    {"Style", [] { return OfEnclosedToken("<i><style>", Letters(), "</style>"); }, true},

    {"ManyBareAttributes", [] { return OfManyAttributes("<a", " a", ">"); }, true},
    {"ManyAttributesWithValues", [] { return OfManyAttributes("<a", " a=\"b\"", ">"); }, true},
    {"ManyLongAttributes", [] {
         const std::string attribute = Blanks(64) + Letters(64) + Blanks(64) + "=" + Blanks(64) + Letters(64);
         return OfManyAttributes("<a", attribute, ">");
     },
        true},
    {"ManyBareWordsAfterAValue", [] { return OfManyAttributes("<a a=b", " a", ">"); }, true},
    {"ManyAttributesOfAnEndTag", [] { return OfManyAttributes("</a", " a='b'", ">"); }},
    {"ManyAttributesOfAnXmlDeclaration", [] { return OfManyAttributes("<?xml", " a='b'", "?>"); }, true},
    {"ManyItemsOfADeclaration", [] { return OfManyAttributes("<!a", " 'b'", ">"); }, true},
    {"ManyAttributesOfEveryTag", [] {
        Page page;
        page.Add(ManyAttributes("<a", " a='b'", ">"), MANY).Add(ManyAttributes("</a", " a='b'", ">"), MANY);
        page.Add(ManyAttributes("<?xml", " a='b'", "?>"), MANY).Add(ManyAttributes("<!a", " 'b'", ">"), MANY);
        return OfPages({page});
    }},

    {"FailedTagWithALongValue", [] { return OfJunk("<a a=\"" + Letters() + "\" / a>"); }},
    {"FailedTagWithManyAttributes", [] { return OfJunk(ManyAttributes("<a", " a='b'", " / a>"), MANY); }},
    {"FailedDeclaration", [] { return OfJunk("<!a '" + Letters() + "' <a>"); }},
    {"FailedSection", [] { return OfJunk("<![" + Letters() + "["); }},
    {"FailedComment", [] { return OfJunk("<!-" + Letters()); }},

    {"OneAfterAnother", [] { return OfEachPlaceInTurn(LONG); }},
    {"EachAttributeInTurn", OfEachAttributeInTurn, true},
};
// clang-format on

/// The peaks of the parsers that read a case, in order.
std::vector<std::size_t> CheckPeaksOf(const Case& row, std::uint64_t size) {
    SCOPED_TRACE(size);
    const Document document = row.make();
    // Every page is there, in UTF-16 too.
    EXPECT_TRUE(!COMPARES_PEAKS || 2 * (document.pages.size() - 1) * document.pages.front().size() <= size);
    std::vector<std::size_t> peaks = {
        CheckPeak(NARROW_WAY, document, size),
        CheckPeak(NARROW_TO_WIDE, document, size),
        CheckPeak(WIDE_WAY, ToUtf16(document), size),
    };
    if (row.forStateless)
        peaks.push_back(CheckPeak(STATELESS, document, size));
    return peaks;
}

/// Reads a stream of a size, and a shorter one: the longer one takes no more.
void CheckPeaks(const Case& row, std::uint64_t shortSize, std::uint64_t size) {
    const std::vector<std::size_t> peaks = CheckPeaksOf(row, size);
    if (!COMPARES_PEAKS)
        return;
    const std::vector<std::size_t> shortPeaks = CheckPeaksOf(row, shortSize);
    ASSERT_EQ(peaks.size(), shortPeaks.size());
    for (std::size_t i = 0; i < peaks.size(); ++i)
        EXPECT_LE(peaks[i], shortPeaks[i] + SLACK) << "8-to-8, 8-to-16, 16-to-16, stateless: " << i;
}

template <typename Row>
std::string NameOf(const testing::TestParamInfo<Row>& row) {
    return row.param.name;
}

class MemoryTest : public testing::TestWithParam<Case> {};

TEST_P(MemoryTest, OfMixedTokens) {
    CheckPeaks(GetParam(), SHORT_STREAM_SIZE, STREAM_SIZE);
}

INSTANTIATE_TEST_SUITE_P(Stream, MemoryTest, testing::ValuesIn(MIXED), NameOf<Case>);

class LongTokenMemoryTest : public testing::TestWithParam<Case> {};

TEST_P(LongTokenMemoryTest, OfLongTokens) {
    CheckPeaks(GetParam(), SHORT_STREAM_SIZE, COMPARES_PEAKS ? STREAM_SIZE : SHORT_STREAM_SIZE);
}

INSTANTIATE_TEST_SUITE_P(Stream, LongTokenMemoryTest, testing::ValuesIn(LONG_TOKENS), NameOf<Case>);

class SelfCheckMemoryTest : public testing::TestWithParam<Case> {};

void CheckPeaksWithSelfCheck(GenericParser::SelfCheck selfCheck, const Document& document) {
    CheckPeak(NARROW_WAY, document, SHORT_STREAM_SIZE, selfCheck);
    CheckPeak(WIDE_WAY, ToUtf16(document), SHORT_STREAM_SIZE, selfCheck);
}

TEST_P(SelfCheckMemoryTest, Crc) {
    CheckPeaksWithSelfCheck(GenericParser::SELF_CHECK_CRC, GetParam().make());
}

TEST_P(SelfCheckMemoryTest, Copy) {
    CheckPeaksWithSelfCheck(GenericParser::SELF_CHECK_COPY, GetParam().make());
}

INSTANTIATE_TEST_SUITE_P(Stream, SelfCheckMemoryTest, testing::ValuesIn(MIXED), NameOf<Case>);

/// Long escape runs of ISO-2022, in each place that may have one.
Document OfEscapeRuns(std::size_t size) {
    const std::string run = "\x1B$B" + Letters(size) + "\x1B(B";
    const std::string string = "\"" + run + "\"";
    Page page;
    page.Add(run)
        .Add("<a a=" + string + ">")
        .Add("</a a=" + string + ">")
        .Add("<!a " + string + ">")
        .Add("<?a " + string + "?>");
    page.Add("<?xml a=" + string + "?>").AddAll("<script>").Add(string).AddAll("</script>");
    return OfPages({page});
}

/// What a parser has on the heap when a document is over and a short one has been read, above what
/// it has from the start.
template <typename C, typename S>
std::size_t MeasureRest(const Document& document, GenericParser::DataStreamType type, StringNS::CharSet::Code charset,
                        GenericParser::DataStreamType next) {
    JunkCounter<C, S> counter;
    PagedStream stream(document.pages, MIB);
    GenericParser parser;
    parser.SetObserver(&counter, false);
    const std::size_t before = GetHeapSize();
    EXPECT_EQ(parser.StartParse(charset, type), 0U);
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.StartParse(1252, next), 0U);
    EXPECT_EQ(parser.ParseBuffer("..", 2), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    return GetHeapSize() - before;
}

/// @param size  of the strings, in characters
void CheckRests(std::size_t size, GenericParser::DataStreamType next) {
    constexpr std::uint32_t ISO_2022_JP = 50220;
    constexpr auto NARROW = GenericParser::DATA_STREAM_8BIT;
    constexpr auto WIDE = GenericParser::DATA_STREAM_UTF16;
    const Document document = OfEachPlaceInTurn(size);
    const Document wideDocument = ToUtf16(document);
    const Document escapes = OfEscapeRuns(size);
    // One flavour keeps what is not too much for the next document, the other one a few names of
    // recognizers.
    const auto most = [next](GenericParser::DataStreamType type) { return (type == next ? 448 : 1) * KIB; };
    EXPECT_LE((MeasureRest<char, std::string>(document, NARROW, 1252, next)), most(NARROW));
    EXPECT_LE((MeasureRest<char, std::string>(escapes, NARROW, ISO_2022_JP, next)), most(NARROW));
    EXPECT_LE((MeasureRest<WideChar, WideString>(document, NARROW, 1252, next)), most(NARROW));
    EXPECT_LE((MeasureRest<WideChar, WideString>(wideDocument, WIDE, 1252, next)), most(WIDE));
    EXPECT_LE((MeasureRest<char, std::string>(wideDocument, WIDE, 1252, next)), most(WIDE));
}

/// A block again and again, in one piece of memory that is aligned for both flavours.
std::string LongPiece(const std::string& block) {
    std::string piece;
    piece.reserve(static_cast<std::size_t>(PIECE_SIZE) + block.size());
    while (piece.size() < PIECE_SIZE)
        piece += block;
    return piece;
}

void CheckPieceIsNotCopied(const Way& way, const std::string& piece, const ParserOptions& options) {
    const Measured measured = MeasureBuffer(way, options, piece);
    EXPECT_EQ(measured.parseResult, 0U);
    EXPECT_GT(measured.peak, 0U);
    EXPECT_LE(measured.peak, 64 * KIB) << "of a piece of " << piece.size();
}

// However long a piece is, only its tokens are copied.
TEST(KeptMemoryTest, APieceIsNeverCopied) {
    const std::string plain =
        "A short text.<p a=b c='d'>Some <b>more</b> of it.<br/><!-- a comment --><script>f('s', \"d\"); /* c */ // "
        "l\n</script><!D e><?xml "
        "f?>";
    const std::string block = plain + "<?g h?><![CDATA[i]]><![if j]></p >";
    {
        const std::string narrow = LongPiece(block);
        CheckPieceIsNotCopied(NARROW_WAY, narrow, {});
        CheckPieceIsNotCopied(NARROW_TO_WIDE, narrow, {});
        CheckPieceIsNotCopied(NARROW_WAY, narrow, {.selfCheck = GenericParser::SELF_CHECK_CRC, .isAutomatic = true});
    }
    {
        const std::string wide = LongPiece(ToUtf16LE(block));
        CheckPieceIsNotCopied(WIDE_WAY, wide, {.selfCheck = GenericParser::SELF_CHECK_CRC});
        CheckPieceIsNotCopied(WIDE_TO_NARROW, wide, {});
    }
    const std::string narrow = LongPiece(plain);
    const Measured measured = MeasureBuffer(STATELESS, {.ends = false}, narrow);
    EXPECT_EQ(measured.parseResult, 0U);
    EXPECT_EQ(measured.counted, narrow.size() / plain.size() * 3);
    EXPECT_LE(measured.peak, 64 * KIB) << "stateless";
}

TEST(KeptMemoryTest, TheNextDocumentDoesNotHaveTheLongBuffersOfTheLastOne) {
    CheckRests(LONG, GenericParser::DATA_STREAM_8BIT);
    CheckRests(LONG, GenericParser::DATA_STREAM_UTF16);
}

TEST(KeptMemoryTest, NoBufferIsLeftWhenTheOtherParserRuns) {
    for (const std::size_t size : {5000, 12000, 30000}) {
        SCOPED_TRACE(size);
        CheckRests(size, GenericParser::DATA_STREAM_8BIT);
        CheckRests(size, GenericParser::DATA_STREAM_UTF16);
    }
}

TEST(KeptMemoryTest, TheNextDocumentOfTheStatelessParserDoesNotHaveThemEither) {
    TagCounter counter;
    const Document document = OfEachAttributeInTurn();
    PagedStream stream(document.pages, MIB);
    StatelessHTMLParser parser;
    parser.Attach(&counter);
    const std::size_t before = GetHeapSize();
    EXPECT_EQ(parser.StartParse(1252), 0U);
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_GE(GetHeapSize() - before, PAGE_UNIT);
    EXPECT_EQ(parser.StartParse(1252), 0U);
    EXPECT_LE(GetHeapSize() - before, 448 * KIB);
}

/// A construct that is opened and never closed.
struct OpenConstruct {
    const char* name;
    const char* opener;
    const char* content;       // again and again
    bool goesOver = true;      // false: it is many short tokens
    bool forStateless = true;  // false: it fails there
};

std::ostream& operator<<(std::ostream& stream, const OpenConstruct& row) {
    return stream << row.name;
}

const OpenConstruct OPEN_CONSTRUCTS[] = {
    {"Text", "<a>", "a"},
    {"TagName", "<", "a"},
    {"SpaceBeforeATagName", "< ", " "},
    {"SpaceAfterATagName", "<a ", " "},
    {"AttributeName", "<a ", "a"},
    {"ManyAttributes", "<a", " a"},
    {"ManyAttributesWithValues", "<a", " a=b"},
    {"ManyAttributesOfEightLetters", "<a", " abcdefgh=abcdefgh"},
    {"ManyLongAttributes", "<a", "         abcdefghijklmnopqrstuvwxyz         =         'abcdefghijklmnopqrstuvwxyz'"},
    {"SpaceBeforeEquals", "<a b ", " "},
    {"SpaceAfterEquals", "<a b= ", " "},
    {"UnquotedValue", "<a b=", "a"},
    {"ValueInSingleQuotes", "<a b='", "a"},
    {"ValueInDoubleQuotes", "<a b=\"", "a"},
    {"EndTagName", "</", "a"},
    {"EndTagAttributes", "</a", " a", true, false},
    {"EndTagValue", "</a b='", "a", true, false},
    {"Comment", "<!--", "a"},
    {"CommentOfDashes", "<!--", "-a"},
    {"CdataSection", "<![CDATA[", "a", true, false},
    {"CdataSectionOfBrackets", "<![CDATA[", "]a", true, false},
    {"Condition", "<![if ", "a", true, false},
    {"TailOfACondition", "<![if]", "a", true, false},
    {"SectionKeyword", "<![", "a", true, false},
    {"DeclarationKeyword", "<!", "a"},
    {"DeclarationItem", "<!a ", "a"},
    {"ManyItemsOfADeclaration", "<!a", " a"},
    {"DeclarationString", "<!a '", "a"},
    {"InstructionTarget", "<?", "a"},
    {"Instruction", "<?a ", "a"},
    {"InstructionString", "<?a '", "a"},
    {"AttributesOfAnXmlDeclaration", "<?xml", " a='b'"},
    {"ValueOfAnXmlDeclaration", "<?xml a='", "a"},
    {"Script", "<script>", "a"},
    {"ScriptOfTags", "<script>", "<a", false},
    {"StringInSingleQuotes", "<script>'", "a"},
    {"StringInDoubleQuotes", "<script>\"", "a"},
    {"BlockComment", "<script>/*", "a"},
    {"LineComment", "<script>//", "a"},
    {"LineCommentOfOpeners", "<script>//", "<a"},
    {"RegularExpression", "<script>/", "a"},
    {"ForeignEndTag", "<script></", "a"},
    {"AttributesOfAForeignEndTag", "<script></a", " a"},
    {"Style", "<style>", "a"},
    {"Junk", "<a b=c / ", "a", true, false},
    {"ManyTags", "", "<a b=c d='e'>f</a>", false},
    {"EachKindInTurn", "",
     "text<a bcdefghij='klmnopqrstuvw'></a ><!--abcdefghijklmnopqrstuv--><![CDATA[abcdefghijklmnopqrs]]><![if "
     "abcdefghijkl]><!a bcdefghijk "
     "'l'><?xml a='bcdefghijklmn'?><?abcdefghijkl "
     "m?><script>a'abcdefghijklm'\"abcdefghijklmn\"/*abcdefghijkl*///abcdefghij\n</script>",
     false, false},
};

// The second one is about what a long token takes, the first one about all the rest.
constexpr std::uint64_t TOKEN_LIMITS[] = {4096, 65536};

std::size_t BoundOfLimit(std::uint64_t limit) {
    return 64 * KIB + 16 * static_cast<std::size_t>(limit);
}

void CheckLimitedPeak(const Way& way, const OpenConstruct& construct, std::uint64_t size, std::uint64_t limit) {
    SCOPED_TRACE(std::string(way.name) + ", at most " + std::to_string(limit));
    const auto bytes = [&way](const char* text) {
        return way.fromWide ? ToUtf16LE(std::string_view(text)) : std::string(text);
    };
    OpenStream stream(bytes(construct.opener), bytes(construct.content), size);
    const Measured measured = MeasureStream(way, {.maxTokenSize = limit}, &stream);
    if (way.isStateless) {
        EXPECT_TRUE(measured.parseResult == HTML::STATELESS_LIMIT_EXCEEDED || !construct.goesOver ||
                    std::string_view(construct.name) == "Script")
            << measured.parseResult;
    } else {
        EXPECT_EQ(measured.parseResult, construct.goesOver ? HTML::PARSER_LIMIT_EXCEEDED : HTML::PARSER_OK);
    }
    ExpectPeak(way, measured.peak, BoundOfLimit(limit), "-" + std::to_string(limit));
}

/// What goes over ends the parse, so that a stream of any size is read in no time; the others are
/// read to their end, and are shorter.
void CheckLimitedPeaks(const OpenConstruct& construct, std::uint64_t streamSize) {
    const std::uint64_t size = construct.goesOver ? streamSize : std::min(streamSize, 32 * MIB);
    for (const std::uint64_t limit : TOKEN_LIMITS) {
        for (const Way& way : DRIVER_WAYS)
            CheckLimitedPeak(way, construct, size, limit);
        if (construct.forStateless)
            CheckLimitedPeak(STATELESS, construct, size, limit);
    }
}

class LimitedMemoryTest : public testing::TestWithParam<OpenConstruct> {};

TEST_P(LimitedMemoryTest, OfAnOpenConstruct) {
    CheckLimitedPeaks(GetParam(), MIB);
}

INSTANTIATE_TEST_SUITE_P(Stream, LimitedMemoryTest, testing::ValuesIn(OPEN_CONSTRUCTS), NameOf<OpenConstruct>);

class LongLimitedMemoryTest : public testing::TestWithParam<OpenConstruct> {};

TEST_P(LongLimitedMemoryTest, OfAnOpenConstruct) {
    CheckLimitedPeaks(GetParam(), LONG_STREAM_SIZE);
}

INSTANTIATE_TEST_SUITE_P(LongStream, LongLimitedMemoryTest, testing::ValuesIn(OPEN_CONSTRUCTS), NameOf<OpenConstruct>);

// Tokens of all kinds, each as long as the limit allows, one after another in an order that does
// not repeat: what is kept of one kind is still there while the next one is read.

constexpr std::uint64_t LIMITS_OF_LONG_TOKENS[] = {200, 512, 1100, 1500, 4 * KIB, 32 * KIB, 64 * KIB, MIB};

/// The attributes of a tag, or the items of a declaration, that a limit allows.
std::size_t GetMostParts(std::uint64_t limit) {
    return 24 + static_cast<std::size_t>(limit) / 128;
}

/// @param length  characters of each token at most
/// @param most    attributes of a tag at most
std::vector<std::string> MakeLongestTokens(std::size_t length, std::size_t most) {
    const auto around = [length](const std::string& start, char content, const std::string& end) {
        return start + std::string(length - start.size() - end.size(), content) + end;
    };
    const auto repeated = [length, most](const std::string& start, const std::string& part, const std::string& end) {
        std::string token = start;
        for (std::size_t i = 0; i < most && token.size() + part.size() + end.size() <= length; ++i)
            token += part;
        return token + end;
    };
    const std::string shortPart = " a";
    const std::string name(std::max<std::size_t>(16, length / most / 2) - 2, 'n');
    const std::string value(std::max<std::size_t>(16, length / most / 2) - 2, 'v');
    const std::string part = " " + name + "='" + value + "'";
    const std::string longPart = " " + std::string(length / 8, 'n') + " = '" + std::string(length / 8, 'v') + "'";
    std::vector<std::string> tokens;
    for (const std::string start : {"<a", "</a", "<!a", "<?xml"}) {
        const std::string end = start == "<?xml" ? "?>" : ">";
        for (const std::string& attribute :
             {shortPart, part, longPart, std::string(" a=b"), std::string(" a=bbbbbbbbbbbbbbbb")})
            tokens.push_back(repeated(start, attribute, end));
    }
    tokens.push_back(repeated("<!a", " '" + value + "'", ">"));
    for (const std::string start : {"<", "</", "<!", "<?"}) {
        const std::string end = start == "<?" ? "?>" : ">";
        tokens.push_back(around(start, 'n', end));
        tokens.push_back(around(start, ' ', "a" + end));
        tokens.push_back(around(start + "a", ' ', end));
    }
    for (const std::string start : {"<a ", "</a ", "<?xml "}) {
        const std::string end = start == "<?xml " ? "?>" : ">";
        tokens.push_back(around(start, 'n', end));
        tokens.push_back(around(start + "a", ' ', "=b" + end));
        tokens.push_back(around(start + "a=", ' ', "b" + end));
        tokens.push_back(around(start + "a=", 'v', end));
        tokens.push_back(around(start + "a='", 'v', "'" + end));
        tokens.push_back(around(start + "a=\"", 'v', "\"" + end));
    }
    tokens.push_back(around("", 't', ""));
    tokens.push_back(around("<!--", 'c', "-->"));
    tokens.push_back(around("<![CDATA[", 'c', "]]>"));
    tokens.push_back(around("<![if ", 'c', "]>"));
    tokens.push_back(around("<![if]", 'c', ">"));
    tokens.push_back(around("<!a '", 'v', "'>"));
    tokens.push_back(around("<!a \"", 'v', "\">"));
    tokens.push_back(around("<?a ", 'i', "?>"));
    tokens.push_back(around("<?a '", 'i', "'?>"));
    tokens.push_back("<script>" + around("", 't', "") + "</script>");
    tokens.push_back("<script>" + around("'", 's', "'") + "</script>");
    tokens.push_back("<script>" + around("\"", 's', "\"") + "</script>");
    tokens.push_back("<script>" + around("/*", 'c', "*/") + "</script>");
    tokens.push_back("<script>" + around("//", 'c', "\n") + "</script>");
    tokens.push_back("<script>" + around("/", 'r', "\n") + "</script>");
    tokens.push_back("<style>" + around("", 't', "") + "</style>");
    tokens.push_back("<style>" + around("'", 's', "'") + "</style>");
    return tokens;
}

/// A tag, a declaration or an instruction with parts of random lengths.
std::string MakeRandomTag(std::size_t length, std::size_t most, std::mt19937* engine) {
    const auto below = [engine](std::size_t number) { return (*engine)() % (number + 1); };
    const auto anyLength = [&] { return below(below(2) == 0 ? length / most : below(2) == 0 ? length / 4 : 40); };
    const char* const STARTS[] = {"<a", "</a", "<!a", "<?xml", "<?a", "<"};
    const char* const start = STARTS[below(5)];
    const std::string end = std::string_view(start).starts_with("<?") ? "?>" : ">";
    std::string token = start;
    if (below(3) == 0)
        token.insert(1, anyLength(), ' ');
    token.append(below(3) == 0 ? anyLength() : 1, 'n');
    for (std::size_t i = below(most - 1); i > 0; --i) {
        std::string part = std::string(below(4) == 0 ? anyLength() : 1, ' ') + "n" + std::string(anyLength(), 'n');
        if (start[1] != '!' && below(3) > 0)  // one item each
            part += std::string(below(4) == 0 ? anyLength() : 0, ' ') + "=" +
                    std::string(below(4) == 0 ? anyLength() : 0, ' ') + "'" + std::string(anyLength(), 'v') + "'";
        if (token.size() + part.size() + end.size() <= length)
            token += part;
    }
    return token + end;
}

/// Some in an order that does not repeat, with a little markup between them, so that they are not
/// one text.
/// @param isUsed  whether a token is one that the parser takes
Document OfLongestTokens(std::size_t length, std::size_t most, bool (*isUsed)(const std::string&)) {
    const std::size_t longest = 500 * length;
    std::mt19937 engine(static_cast<std::uint32_t>(length));
    const std::vector<std::string> tokens = MakeLongestTokens(length, most);
    std::string page;
    while (page.size() < std::min<std::size_t>(longest, STREAM_SIZE)) {
        const std::string token =
            engine() % 2 == 0 ? tokens[engine() % tokens.size()] : MakeRandomTag(length, most, &engine);
        if (isUsed(token))
            page += token + "<i>";
    }
    Document document;
    document.pages.push_back(page);
    return document;
}

bool IsReadByStateless(const std::string& token) {
    TagCounter counter;
    StatelessHTMLParser parser;
    parser.Attach(&counter);
    return parser.StartParse(1252) == 0 && parser.ParseBuffer(token.data(), token.size()) == 0 &&
           parser.EndParse() == 0;
}

void CheckLimitedPeakOfLongTokens(const Way& way, std::uint64_t limit) {
    SCOPED_TRACE(way.name);
    // Characters that may belong to the next token count too; a script counts with its tags.
    const std::size_t length = way.isStateless ? static_cast<std::size_t>(limit) - 32
                                               : static_cast<std::size_t>(limit) / (way.fromWide ? 2 : 1) - 16;
    const auto isUsed = way.isStateless ? IsReadByStateless : [](const std::string&) { return true; };
    Document document = OfLongestTokens(length, GetMostParts(limit), isUsed);
    if (way.fromWide)
        document = ToUtf16(document);
    PagedStream stream(document.pages, document.pages.front().size() - 1);
    const Measured measured = MeasureStream(way, {.maxTokenSize = limit}, &stream);
    EXPECT_EQ(measured.parseResult,
              way.isStateless ? std::uint32_t{HTML::STATELESS_OK} : std::uint32_t{HTML::PARSER_OK});
    EXPECT_EQ(measured.endResult, 0U);
    if (way.isStateless)
        EXPECT_GE(measured.counted, 8U);
    else
        EXPECT_EQ(measured.counted, 0U);
    ExpectPeak(way, measured.peak, BoundOfLimit(limit));
}

class LongestTokensMemoryTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(LongestTokensMemoryTest, OfAllKinds) {
    for (const Way& way : DRIVER_WAYS)
        CheckLimitedPeakOfLongTokens(way, GetParam());
    if (GetParam() >= 4 * KIB)  // its buffer takes 64 KiB
        CheckLimitedPeakOfLongTokens(STATELESS, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Stream, LongestTokensMemoryTest, testing::ValuesIn(LIMITS_OF_LONG_TOKENS));

// However long a piece is, no more of it is gathered than of a stream.
TEST(KeptMemoryTest, APieceThatIsAllOneTokenIsNotGathered) {
    const std::string piece = "<!--" + std::string(static_cast<std::size_t>(16 * MIB), 'a');
    const ParserOptions options = {.maxTokenSize = 4096, .ends = false};
    const Measured measured = MeasureBuffer(NARROW_WAY, options, piece);
    EXPECT_EQ(measured.parseResult, std::uint32_t{HTML::PARSER_LIMIT_EXCEEDED});
    EXPECT_LE(measured.peak, 128 * KIB);
    const Measured stateless = MeasureBuffer(STATELESS, options, piece);
    EXPECT_EQ(stateless.parseResult, std::uint32_t{HTML::STATELESS_LIMIT_EXCEEDED});
    EXPECT_LE(stateless.peak, 64 * KIB);
}

/// In place of the detector of the system, which needs memory for itself.
std::uint32_t FindNothing(const void*, std::uint64_t, Base::DetectedCharset*, std::uint32_t* count) {
    *count = 0;
    return RESULT_OK;
}

// What the detector looks at is in memory once, after its buffer has grown by doubling, up to the
// most that is looked at.
TEST(KeptMemoryTest, TheBufferForTheDetectorGrowsByDoublingAndIsFreed) {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = FindNothing;
    const Base::ServicesOverride replacement(services);
    const struct {
        const char* note;
        std::uint64_t most;
        std::uint64_t streamSize;
        std::uint64_t peak;
    } rows[] = {
        {"the default", GenericParser::BUFFER_SIZE, 8 * MIB, GenericParser::BUFFER_SIZE},
        {"a part of the stream", MIB, 8 * MIB, MIB + MIB / 2},
        {"a part that is not twice as long as another", MIB + KIB, 8 * MIB, MIB + MIB + KIB},
        {"all of it", 0, 4 * MIB, 4 * MIB + 2 * MIB},
        {"more than there is", UINT64_MAX, MIB, MIB + MIB / 2},
        {"the last buffer is half empty", 0, MIB + KIB, 2 * MIB + MIB},
    };
    for (const auto& row : rows) {
        PagedStream stream({std::string(KIB, 'a')}, row.streamSize - 1);
        GenericParser parser;
        parser.SetChrDetMaxSize(row.most);
        StringNS::CharSet::Code code = 0;
        const std::size_t before = GetHeapSize();
        RestartHeapPeak();
        EXPECT_EQ(parser.DetectCharset(&stream, &code), std::uint32_t{HTML::PARSER_DETECTOR_NOT_CONFIDENT});
        EXPECT_GE(GetHeapPeak() - before, row.peak) << row.note;
        EXPECT_LE(GetHeapPeak() - before, row.peak + 16 * KIB) << row.note;
        EXPECT_LE(GetHeapSize() - before, KIB) << row.note;
    }
}

/// The peak for many junk constructs, each of which is read again from the stream.
std::size_t MeasurePeakOfJunk(std::uint64_t limit) {
    std::string text;
    for (std::size_t i = 0; i < 100; ++i)
        text += "<a b=c / d>text<i>";
    PagedStream stream({text}, text.size() - 1);
    const Measured measured = MeasureStream(NARROW_WAY, {.maxTokenSize = limit}, &stream);
    EXPECT_EQ(measured.parseResult, 0U);
    EXPECT_EQ(measured.endResult, 0U);
    EXPECT_GE(measured.counted, 100U);
    return measured.peak;
}

// A construct that fails is as long as the limit at most, so nothing longer is needed to read it
// again.
TEST(KeptMemoryTest, WhatIsReadAgainTakesLessWithALimit) {
    EXPECT_LE(MeasurePeakOfJunk(200) + 12 * KIB, MeasurePeakOfJunk(0));
    EXPECT_LE(MeasurePeakOfJunk(8 * KIB) + 4 * KIB, MeasurePeakOfJunk(0));
}

class LongStreamMemoryTest : public testing::TestWithParam<Case> {};

TEST_P(LongStreamMemoryTest, OfMixedTokens) {
    CheckPeaks(GetParam(), STREAM_SIZE, LONG_STREAM_SIZE);
}

INSTANTIATE_TEST_SUITE_P(LongStream, LongStreamMemoryTest, testing::ValuesIn(MIXED), NameOf<Case>);

class LongStreamOfLongTokensMemoryTest : public testing::TestWithParam<Case> {};

TEST_P(LongStreamOfLongTokensMemoryTest, OfLongTokens) {
    CheckPeaks(GetParam(), STREAM_SIZE, LONG_STREAM_OF_LONG_TOKENS_SIZE);
}

INSTANTIATE_TEST_SUITE_P(LongStream, LongStreamOfLongTokensMemoryTest, testing::ValuesIn(LONG_TOKENS), NameOf<Case>);

}  // namespace
}  // namespace Kestra::Test
