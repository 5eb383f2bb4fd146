#include <gtest/gtest.h>
#include <kestra/html.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CharSet.h"
#include "platform/Services.h"
#include "tests/c/TokenLister.h"
#include "tests/support/DocumentMaker.h"
#include "tests/support/DocumentRun.h"
#include "tests/support/Flavours.h"

namespace Kestra::Test {
namespace {

using StringNS::CharSet;

constexpr std::uint64_t DOCUMENTS = 1500;
constexpr std::uint64_t SUMMARIZED_DOCUMENTS = 300;
constexpr std::uint32_t WINDOWS_1252 = 1252;
constexpr std::uint32_t UTF8 = 65001;

std::string_view View(const kestra_html_string& string) {
    return {static_cast<const char*>(string.data), string.size};
}

kestra_html_options MakeOptions(std::uint32_t encoding, kestra_html_token_callback onToken, void* user) {
    kestra_html_options options{};
    options.size = sizeof options;
    options.encoding = encoding;
    options.on_token = onToken;
    options.user = user;
    return options;
}

/// A parser of the C interface.
class CParser {
public:
    explicit CParser(const kestra_html_options& options) {
        createResult = kestra_html_parser_create(&options, &parser);
    }
    CParser(const CParser&) = delete;
    CParser& operator=(const CParser&) = delete;
    ~CParser() {
        kestra_html_parser_destroy(parser);
    }

    kestra_html_parser* Get() {
        return parser;
    }

    void Start(std::uint32_t charset = WINDOWS_1252) {
        EXPECT_EQ(kestra_html_parser_start(parser, charset, KESTRA_HTML_DATA_8BIT), 0U);
    }

    std::uint32_t Feed(std::string_view data) {
        return kestra_html_parser_feed(parser, data.data(), data.size());
    }

    std::uint32_t FeedDocument(std::string_view data) {
        return kestra_html_parser_feed_document(parser, data.data(), data.size());
    }

    std::uint32_t End() {
        return kestra_html_parser_end(parser);
    }

    std::uint32_t createResult = 0;

private:
    kestra_html_parser* parser = nullptr;
};

/// A callback of C++, called for each token.
using Callback = std::function<std::uint32_t(const kestra_html_token* token)>;

std::uint32_t CallBack(void* user, const kestra_html_token* token) {
    return (*static_cast<const Callback*>(user))(token);
}

/// Parses a whole document. @return what the feeding call answered
std::uint32_t ForEachToken(std::string_view document, std::uint32_t encoding, Callback callback,
                           std::uint32_t charset = WINDOWS_1252, std::uint32_t flags = 0) {
    kestra_html_options options = MakeOptions(encoding, &CallBack, &callback);
    options.flags = flags;
    CParser parser(options);
    EXPECT_EQ(parser.createResult, 0U);
    parser.Start(charset);
    const std::uint32_t result = parser.FeedDocument(document);
    parser.End();
    return result;
}

std::string GetString(const kestra_html_token* token, std::uint32_t part) {
    kestra_html_string string{};
    EXPECT_EQ(kestra_html_token_string(token, part, &string), 0U);
    return std::string(View(string));
}

/// What a document is by the C interface.
struct Listing {
    std::string lines;
    std::uint32_t parseResult = 0;
    std::uint32_t endResult = 0;
};

Listing List(std::string_view document, std::uint32_t charset, kestra_html_data_type type, std::uint32_t encoding,
             kestra_html_token_callback lister) {
    token_list list{};
    list.is_wide = encoding == KESTRA_HTML_UTF16 ? 1 : 0;
    kestra_html_options options = MakeOptions(encoding, lister, &list);
    options.flags = KESTRA_HTML_WORDS_IN_VALUES;
    CParser parser(options);
    Listing listing;
    EXPECT_EQ(kestra_html_parser_start(parser.Get(), charset, type), 0U);
    listing.parseResult = parser.FeedDocument(document);
    listing.endResult = parser.End();
    EXPECT_EQ(list.result, 0U);
    listing.lines.assign(list.text == nullptr ? "" : list.text, list.size);
    std::free(list.text);
    return listing;
}

/// What it is by the C++ interface: the lines of tokens.
Listing Refer(std::string_view document, std::uint32_t charset, HTML::GenericParser::DataStreamType type,
              Observed observed) {
    DocumentSettings settings;
    settings.charset = charset;
    settings.type = type;
    settings.observed = observed;
    settings.feed = Feed::OWNED_STREAM;
    const DocumentRun run = ParseDocument(document, {}, settings);
    Listing listing{{}, run.parseResult, run.endResult};
    for (const std::string& line : run.trace) {
        if (line.find('(') != std::string::npos && !line.starts_with("charset(") && !line.starts_with("bom("))
            listing.lines.append(line).append("\n");
    }
    return listing;
}

void ExpectSame(const Listing& actual, const Listing& expected, std::uint64_t seed) {
    ASSERT_EQ(actual.lines, expected.lines) << "seed " << seed;
    ASSERT_EQ(actual.parseResult, expected.parseResult) << "seed " << seed;
    ASSERT_EQ(actual.endResult, expected.endResult) << "seed " << seed;
}

TEST(CParserTest, BytesOfRandomDocuments) {
    const std::vector<std::string> pages = ReadPages(KESTRA_EXAMPLE_PAGES);
    DocumentMaker maker(&pages);
    for (std::uint64_t seed = 0; seed < DOCUMENTS; ++seed) {
        const MadeDocument made = maker.Make(seed);
        const Listing expected =
            Refer(made.bytes, made.charset, HTML::GenericParser::DATA_STREAM_AUTO, Observed::NARROW);
        ASSERT_NO_FATAL_FAILURE(ExpectSame(
            List(made.bytes, made.charset, KESTRA_HTML_DATA_AUTO, KESTRA_HTML_BYTES, &list_token), expected, seed));
        ASSERT_NO_FATAL_FAILURE(
            ExpectSame(List(made.bytes, made.charset, KESTRA_HTML_DATA_AUTO, KESTRA_HTML_BYTES, &list_token_in_cpp),
                       expected, seed));
    }
}

// Junk is decoded for a host of UTF-16, and not for an observer: only ASCII is the same.
TEST(CParserTest, Utf16OfRandomDocuments) {
    const std::vector<std::string> pages = ReadPages(KESTRA_EXAMPLE_PAGES);
    DocumentMaker maker(&pages);
    for (std::uint64_t seed = 0; seed < DOCUMENTS; ++seed) {
        std::string document = maker.Make(seed).bytes;
        std::replace_if(
            document.begin(), document.end(), [](char c) { return c <= 0; }, 'x');
        ASSERT_NO_FATAL_FAILURE(
            ExpectSame(List(document, WINDOWS_1252, KESTRA_HTML_DATA_8BIT, KESTRA_HTML_UTF16, &list_token),
                       Refer(document, WINDOWS_1252, HTML::GenericParser::DATA_STREAM_8BIT, Observed::WIDE), seed));
    }
}

struct TextRow {
    const char* note;
    std::string document;
    std::uint32_t charset;
    const char* text;     ///< of the first token, as UTF-8
    const char* decoded;  ///< the same with references decoded
};

TEST(CParserTest, TextsInUtf8) {
    const TextRow rows[] = {
        {"ASCII", "a&amp;b", UTF8, "a&amp;b", "a&b"},
        {"one byte each", "\xE9&#233;", WINDOWS_1252, "\xC3\xA9&#233;", "\xC3\xA9\xC3\xA9"},
        {"two units of UTF-16", "\xF0\x9F\x8D\xB5&#x1F375;", UTF8, "\xF0\x9F\x8D\xB5&#x1F375;",
         "\xF0\x9F\x8D\xB5\xF0\x9F\x8D\xB5"},
        {"a byte that is none", "a\xFFz", UTF8, "a\xEF\xBF\xBDz", "a\xEF\xBF\xBDz"},
        {"a reference that is none", "&nowhere;", UTF8, "&nowhere;", "&nowhere;"},
        {"junk", "<a \xE9/ ", WINDOWS_1252, "<a \xC3\xA9/ ", "<a \xC3\xA9/ "},
    };
    for (const TextRow& row : rows) {
        std::size_t count = 0;
        const auto check = [&](const kestra_html_token* token) {
            ++count;
            kestra_html_string decoded{};
            EXPECT_EQ(GetString(token, KESTRA_HTML_PART_TEXT), row.text) << row.note;
            EXPECT_EQ(kestra_html_token_decoded_text(token, &decoded), 0U) << row.note;
            EXPECT_EQ(View(decoded), row.decoded) << row.note;
            return 0U;
        };
        EXPECT_EQ(ForEachToken(row.document, KESTRA_HTML_UTF8, check, row.charset), 0U) << row.note;
        EXPECT_EQ(count, 1U) << row.note;
    }
}

TEST(CParserTest, JunkOfUtf16) {
    std::vector<std::string> junk;
    const std::string document = ToUtf16LE(WideStringView(KESTRA_WIDE("<a \u00E9/ ")));
    for (const std::uint32_t encoding : {KESTRA_HTML_BYTES, KESTRA_HTML_UTF8, KESTRA_HTML_UTF16}) {
        Callback callback = [&](const kestra_html_token* token) {
            junk.push_back(GetString(token, KESTRA_HTML_PART_TEXT));
            return 0U;
        };
        CParser parser(MakeOptions(encoding, &CallBack, &callback));
        EXPECT_EQ(kestra_html_parser_start(parser.Get(), 0, KESTRA_HTML_DATA_UTF16), 0U);
        EXPECT_EQ(parser.FeedDocument(document), 0U);
        EXPECT_EQ(kestra_html_parser_is_utf16(parser.Get()), 1U);
        EXPECT_EQ(parser.End(), 0U);
    }
    EXPECT_EQ(junk, (std::vector<std::string>{document, "<a \xC3\xA9/ ", document}));
}

/// Compares the summary that comes with a token with the one asked for, and counts tokens.
std::uint32_t CompareSummaries(void* user, const kestra_html_token* token, const kestra_html_summary* summary) {
    ++*static_cast<std::uint64_t*>(user);
    kestra_html_summary asked{};
    asked.size = sizeof asked;
    EXPECT_EQ(kestra_html_token_summary(token, &asked), 0U);
    EXPECT_EQ(summary->size, sizeof asked);
    EXPECT_EQ(summary->kind, asked.kind);
    EXPECT_EQ(summary->reserved, 0U);
    EXPECT_EQ(View(summary->name), View(asked.name));
    EXPECT_EQ(View(summary->text), View(asked.text));
    EXPECT_EQ(summary->attribute_count, asked.attribute_count);
    return 0;
}

/// An attribute as "name=value@begin-end", its value decoded.
std::string Show(const kestra_html_token* token, std::size_t index) {
    kestra_html_attribute attribute{};
    attribute.size = sizeof attribute;
    kestra_html_string decoded{};
    kestra_html_attribute_place place{};
    EXPECT_EQ(kestra_html_token_attribute(token, index, &attribute), 0U);
    EXPECT_EQ(kestra_html_token_decoded_value(token, index, &decoded), 0U);
    EXPECT_EQ(kestra_html_token_attribute_place(token, index, &place), 0U);
    std::string text(View(attribute.name));
    if (attribute.has_value != 0)
        text.append("=").append(View(decoded));
    return text.append("@").append(std::to_string(place.begin)).append("-").append(std::to_string(place.end));
}

struct AttributesRow {
    const char* note;
    const char* document;
    std::uint32_t flags;
    std::vector<std::string> attributes;
};

TEST(CParserTest, Attributes) {
    const AttributesRow rows[] = {
        {"none", "<a>", 0, {}},
        {"with quotes", "<a b='c' d=\"e\">", 0, {"b=c@2-8", "d=e@8-14"}},
        {"references are decoded", "<a b='&lt;&amp'>", 0, {"b=<&@2-15"}},
        {"bare words are attributes", "<a b=/c d e=f>", 0, {"b=/c@2-7", "d@7-9", "e=f@9-13"}},
        {"after a value in quotes too", "<a b='c' d>", 0, {"b=c@2-8", "d@8-10"}},
        {"as the record has them", "<a b='c' d>", KESTRA_HTML_WORDS_IN_VALUES, {"b='c' d@2-10"}},
        {"of a short tag", "<a b=c />", 0, {"b=c@2-6"}},
        {"of an end tag", "</a b=c>", 0, {"b=c@4-7"}},
        {"of an instruction", "<?xml a='b'?>", 0, {"a=b@5-11"}},
    };
    for (const AttributesRow& row : rows) {
        for (const std::uint32_t encoding : {KESTRA_HTML_BYTES, KESTRA_HTML_UTF8}) {
            std::vector<std::string> attributes;
            const auto list = [&](const kestra_html_token* token) {
                std::size_t count = 0;
                EXPECT_EQ(kestra_html_token_attribute_count(token, &count), 0U);
                for (std::size_t i = 0; i < count; ++i)
                    attributes.push_back(Show(token, i));
                return 0U;
            };
            EXPECT_EQ(ForEachToken(row.document, encoding, list, WINDOWS_1252, row.flags), 0U);
            EXPECT_EQ(attributes, row.attributes) << row.note << ", encoding " << encoding;
        }
    }
}

TEST(CParserTest, FindsAttributesWhateverTheirCase) {
    const auto find = [](const kestra_html_token* token) {
        std::size_t index = 99;
        EXPECT_EQ(kestra_html_token_find_attribute(token, "HRef", 4, &index), 0U);
        EXPECT_EQ(index, 1U);
        EXPECT_EQ(kestra_html_token_find_attribute(token, "hre", 3, &index), std::uint32_t{KESTRA_HTML_NO_ATTRIBUTE});
        EXPECT_EQ(index, 1U);
        return 0U;
    };
    for (const std::uint32_t encoding : {KESTRA_HTML_BYTES, KESTRA_HTML_UTF8, KESTRA_HTML_UTF16})
        EXPECT_EQ(ForEachToken("<a id=b hREF=c href=d>", encoding, find), 0U);
}

TEST(CParserTest, ItemsOfADeclaration) {
    const auto check = [](const kestra_html_token* token) {
        kestra_html_attribute item{};
        item.size = sizeof item;
        std::size_t count = 0;
        EXPECT_EQ(GetString(token, KESTRA_HTML_PART_NAME), "DOCTYPE");
        EXPECT_EQ(kestra_html_token_attribute_count(token, &count), 0U);
        EXPECT_EQ(count, 2U);
        EXPECT_EQ(kestra_html_token_attribute(token, 1, &item), 0U);
        EXPECT_EQ(View(item.name), "");
        EXPECT_EQ(View(item.value), "a&lt;");
        EXPECT_EQ(item.quote, std::uint32_t{KESTRA_HTML_QUOTE_DOUBLE});
        EXPECT_EQ(item.has_value, 1U);
        kestra_html_string decoded{};
        EXPECT_EQ(kestra_html_token_decoded_value(token, 1, &decoded), 0U);
        EXPECT_EQ(View(decoded), "a&lt;");  // there are no references in declarations
        kestra_html_attribute_place place{};
        EXPECT_EQ(kestra_html_token_attribute_place(token, 1, &place), std::uint32_t{KESTRA_HTML_WRONG_KIND});
        return 0U;
    };
    EXPECT_EQ(ForEachToken("<!DOCTYPE html \"a&lt;\">", KESTRA_HTML_UTF8, check), 0U);
}

TEST(CParserTest, PlacesOfTokens) {
    std::string places;
    const auto list = [&](const kestra_html_token* token) {
        kestra_html_place place{};
        EXPECT_EQ(kestra_html_token_place(token, &place), 0U);
        for (const std::uint64_t number : {place.begin, place.end, place.line, place.column})
            places.append(std::to_string(number)).append(" ");
        places.append("\n");
        return 0U;
    };
    EXPECT_EQ(ForEachToken("a\n<b>c", KESTRA_HTML_BYTES, list), 0U);
    EXPECT_EQ(places, "0 2 1 1 \n2 5 2 1 \n5 6 2 4 \n");
}

TEST(CParserTest, Events) {
    std::vector<std::uint32_t> kinds;
    std::string mark;
    Callback callback = [&](const kestra_html_token* token) {
        kinds.push_back(kestra_html_token_kind(token));
        if (kinds.back() == KESTRA_HTML_MARK)
            mark = GetString(token, KESTRA_HTML_PART_TEXT);
        return 0U;
    };
    kestra_html_options options = MakeOptions(KESTRA_HTML_UTF8, &CallBack, &callback);
    options.flags = KESTRA_HTML_EVENTS;
    CParser parser(options);
    EXPECT_EQ(kestra_html_parser_start(parser.Get(), 0, KESTRA_HTML_DATA_AUTO), 0U);
    EXPECT_EQ(parser.FeedDocument("\xEF\xBB\xBF<script></script><style></style>"), 0U);
    EXPECT_EQ(parser.End(), 0U);
    EXPECT_EQ(mark, "\xEF\xBB\xBF");
    EXPECT_EQ(kinds, (std::vector<std::uint32_t>{KESTRA_HTML_DOCUMENT_START, KESTRA_HTML_MARK, KESTRA_HTML_START_TAG,
                                                 KESTRA_HTML_SCRIPT_START, KESTRA_HTML_END_TAG, KESTRA_HTML_SCRIPT_END,
                                                 KESTRA_HTML_START_TAG, KESTRA_HTML_STYLE_START, KESTRA_HTML_END_TAG,
                                                 KESTRA_HTML_STYLE_END, KESTRA_HTML_DOCUMENT_END}));
}

// Ways of feeding

/// A stream over bytes, for the C interface.
struct CountedStream {
    std::string bytes;
    std::size_t most = 5;  ///< bytes of a read
    std::uint32_t failure = 0;
    std::size_t next = 0;

    static std::uint32_t Read(void* user, void* buffer, std::size_t size, std::size_t* bytesRead) {
        auto* const stream = static_cast<CountedStream*>(user);
        *bytesRead = std::min({size, stream->most, stream->bytes.size() - stream->next});
        std::copy_n(stream->bytes.data() + stream->next, *bytesRead, static_cast<char*>(buffer));
        stream->next += *bytesRead;
        return *bytesRead == 0 ? stream->failure : 0;
    }

    static std::uint32_t Seek(void* user, std::uint64_t position) {
        static_cast<CountedStream*>(user)->next = static_cast<std::size_t>(position);
        return 0;
    }

    kestra_html_stream Get(bool canSeek) {
        return {sizeof(kestra_html_stream), this, &Read, canSeek ? &Seek : nullptr};
    }
};

std::uint32_t FeedStream(CountedStream stream, bool canSeek, std::string* texts) {
    Callback callback = [texts](const kestra_html_token* token) {
        texts->append(GetString(token, KESTRA_HTML_PART_TEXT)).append(";");
        return 0U;
    };
    CParser parser(MakeOptions(KESTRA_HTML_UTF8, &CallBack, &callback));
    parser.Start();
    const kestra_html_stream functions = stream.Get(canSeek);
    const std::uint32_t result = kestra_html_parser_feed_stream(parser.Get(), &functions);
    parser.End();
    return result;
}

TEST(CParserTest, Streams) {
    std::string texts;
    EXPECT_EQ(FeedStream({"<!--a--><!--b--><!--c-->"}, true, &texts), 0U);
    EXPECT_EQ(texts, "a;b;c;");
    texts.clear();
    EXPECT_EQ(FeedStream({"<!--a--><p / ><!--b-->"}, true, &texts), 0U);
    EXPECT_EQ(texts, "a;<p / ;>;b;");
    texts.clear();
    // What cannot go back cannot read junk again.
    EXPECT_EQ(FeedStream({"<!--a--><p / ><!--b-->"}, false, &texts), std::uint32_t{KESTRA_HTML_MALFORMED});
    EXPECT_EQ(texts, "a;");
    texts.clear();
    CountedStream failing{"<!--a-->"};
    failing.failure = 4711;
    EXPECT_EQ(FeedStream(failing, true, &texts), 4711U);
    EXPECT_EQ(texts, "a;");
}

TEST(CParserTest, ReadsOfMoreThanTheRoomAreAFailure) {
    CParser parser(MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr));
    parser.Start();
    kestra_html_stream stream{sizeof stream, nullptr, nullptr, nullptr};
    stream.read = [](void*, void*, std::size_t size, std::size_t* bytesRead) -> std::uint32_t {
        *bytesRead = size + 1;
        return 0;
    };
    EXPECT_EQ(kestra_html_parser_feed_stream(parser.Get(), &stream), std::uint32_t{KESTRA_HTML_STREAM_FAILED});
}

TEST(CParserTest, PiecesEndAtABrokenConstruct) {
    CParser parser(MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr));
    parser.Start();
    EXPECT_EQ(parser.Feed("text<p"), 0U);
    EXPECT_EQ(parser.Feed(" / >"), std::uint32_t{KESTRA_HTML_MALFORMED});
    parser.Start();
    EXPECT_EQ(parser.Feed("<p"), 0U);
    EXPECT_EQ(parser.End(), std::uint32_t{KESTRA_HTML_UNTERMINATED});
}

// The bytes of a document are the host's again after the call, also with a construct open.
TEST(CParserTest, ADocumentIsBorrowedForTheCall) {
    std::string texts;
    Callback callback = [&](const kestra_html_token* token) {
        texts.append(GetString(token, KESTRA_HTML_PART_TEXT)).append(";");
        return 0U;
    };
    CParser parser(MakeOptions(KESTRA_HTML_BYTES, &CallBack, &callback));
    parser.Start();
    {
        const std::string document = "<!--a--><p ";
        EXPECT_EQ(parser.FeedDocument(document), 0U);
    }
    EXPECT_EQ(parser.End(), 0U);
    EXPECT_EQ(texts, "a;<p ;");
}

TEST(CParserTest, Files) {
    std::size_t count = 0;
    Callback callback = [&](const kestra_html_token*) {
        ++count;
        return 0U;
    };
    CParser parser(MakeOptions(KESTRA_HTML_UTF8, &CallBack, &callback));
    parser.Start(UTF8);
    EXPECT_EQ(kestra_html_parser_feed_file(parser.Get(), KESTRA_EXAMPLE_PAGES "/saltmarsh-point.html"), 0U);
    EXPECT_EQ(parser.End(), 0U);
    EXPECT_GT(count, 100U);
    const std::uint32_t missing = KESTRA_HTML_INVALID_ARGUMENT;
    parser.Start(UTF8);
    EXPECT_EQ(kestra_html_parser_feed_file(parser.Get(), KESTRA_EXAMPLE_PAGES "/no-such-page.html"), missing);
    EXPECT_EQ(kestra_html_parser_feed_file(parser.Get(), "\xFF"), missing);
    EXPECT_EQ(kestra_html_parser_feed_file(parser.Get(), nullptr), missing);
}

// Ends before the end

TEST(CParserTest, ACallbackStopsTheDocument) {
    std::size_t count = 0;
    const std::uint32_t stopped = KESTRA_HTML_STOPPED;
    EXPECT_EQ(
        ForEachToken("<a><b><c>", KESTRA_HTML_BYTES, [&](const kestra_html_token*) { return ++count == 2 ? 1U : 0U; }),
        stopped);
    EXPECT_EQ(count, 2U);
}

TEST(CParserTest, StopEndsTheDocumentToo) {
    kestra_html_parser* running = nullptr;
    std::size_t count = 0;
    Callback callback = [&](const kestra_html_token*) {
        ++count;
        EXPECT_EQ(kestra_html_parser_stop(running), 0U);
        return 0U;
    };
    CParser parser(MakeOptions(KESTRA_HTML_BYTES, &CallBack, &callback));
    running = parser.Get();
    EXPECT_EQ(kestra_html_parser_stop(running), std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT});
    parser.Start();
    EXPECT_EQ(parser.Feed("<a><b>"), std::uint32_t{KESTRA_HTML_STOPPED});
    EXPECT_EQ(parser.End(), 0U);
    EXPECT_EQ(count, 1U);
}

TEST(CParserTest, NoExceptionLeavesACall) {
    for (const std::uint32_t encoding : {KESTRA_HTML_BYTES, KESTRA_HTML_UTF8}) {
        std::size_t count = 0;
        Callback callback = [&](const kestra_html_token*) -> std::uint32_t {
            if (++count == 2)
                throw 1;
            return 0;
        };
        CParser parser(MakeOptions(encoding, &CallBack, &callback));
        parser.Start();
        EXPECT_EQ(parser.FeedDocument("<a><b><c>"), std::uint32_t{KESTRA_HTML_CALLBACK_FAILED});
        EXPECT_EQ(parser.End(), 0U);
        EXPECT_EQ(count, 2U);
        parser.Start();
        EXPECT_EQ(parser.FeedDocument("<a><b><c>"), 0U);
        EXPECT_EQ(parser.End(), 0U);
        EXPECT_EQ(count, 5U);
    }
}

TEST(CParserTest, CallsOutOfACallbackAreRefused) {
    kestra_html_parser* running = nullptr;
    const std::uint32_t refused = KESTRA_HTML_INVALID_ARGUMENT;
    Callback callback = [&](const kestra_html_token*) {
        CountedStream stream{"<i>"};
        const kestra_html_stream functions = stream.Get(true);
        EXPECT_EQ(kestra_html_parser_start(running, 0, 0), refused);
        EXPECT_EQ(kestra_html_parser_feed(running, "<i>", 3), refused);
        EXPECT_EQ(kestra_html_parser_feed_document(running, "<i>", 3), refused);
        EXPECT_EQ(kestra_html_parser_feed_stream(running, &functions), refused);
        EXPECT_EQ(kestra_html_parser_feed_file(running, KESTRA_EXAMPLE_PAGES "/saltmarsh-point.html"), refused);
        EXPECT_EQ(kestra_html_parser_end(running), refused);
        return 0U;
    };
    CParser parser(MakeOptions(KESTRA_HTML_BYTES, &CallBack, &callback));
    running = parser.Get();
    parser.Start();
    EXPECT_EQ(parser.FeedDocument("<a>"), 0U);
    EXPECT_EQ(parser.End(), 0U);
}

TEST(CParserTest, Limits) {
    kestra_html_options options = MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr);
    options.max_token_size = 8;
    CParser parser(options);
    const std::uint32_t exceeded = KESTRA_HTML_LIMIT_EXCEEDED;
    parser.Start();
    EXPECT_EQ(parser.FeedDocument("<a><bcdefghi><c>"), exceeded);
    kestra_html_place place{};
    EXPECT_EQ(kestra_html_parser_place(parser.Get(), &place), 0U);
    EXPECT_EQ(place.end, 3U);
    EXPECT_EQ(kestra_html_parser_set_limits(parser.Get(), 0, 1), 0U);
    parser.Start();
    EXPECT_EQ(parser.FeedDocument("<bcdefghi a>"), 0U);
    EXPECT_EQ(parser.End(), 0U);
    parser.Start();
    EXPECT_EQ(parser.FeedDocument("<b a c>"), exceeded);
}

TEST(CParserTest, TheSelfCheckKeepsACopy) {
    kestra_html_options options = MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr);
    options.self_check = KESTRA_HTML_CHECK_COPY;
    CParser parser(options);
    parser.Start();
    EXPECT_EQ(parser.FeedDocument("<a b = 'c'>d"), 0U);
    EXPECT_EQ(parser.End(), 0U);
    std::string copy;
    const kestra_html_write_callback write = [](void* user, const void* data, std::size_t size) -> std::uint32_t {
        static_cast<std::string*>(user)->append(static_cast<const char*>(data), size);
        return 0;
    };
    EXPECT_EQ(kestra_html_parser_write_copy(parser.Get(), write, &copy), 0U);
    EXPECT_EQ(copy, "<a b = 'c'>d");
    const kestra_html_write_callback refuse = [](void*, const void*, std::size_t) -> std::uint32_t { return 77; };
    EXPECT_EQ(kestra_html_parser_write_copy(parser.Get(), refuse, nullptr), 77U);
    CParser without(MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr));
    without.Start();
    EXPECT_EQ(kestra_html_parser_write_copy(without.Get(), write, &copy), std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT});
}

TEST(CParserTest, Check) {
    EXPECT_EQ(kestra_html_check("<p>a</p>", 8, UTF8), 0U);
    EXPECT_EQ(kestra_html_check("", 0, UTF8), 0U);
    EXPECT_EQ(kestra_html_check("<?xml a/ >", 10, UTF8), std::uint32_t{KESTRA_HTML_SELF_CHECK_FAILED});
    EXPECT_EQ(kestra_html_check(nullptr, 1, UTF8), std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT});
}

// Arguments

struct OptionsRow {
    const char* note;
    std::function<void(kestra_html_options*)> change;
    std::uint32_t result;
};

TEST(CParserTest, Options) {
    const std::uint32_t bad = KESTRA_HTML_INVALID_ARGUMENT;
    const OptionsRow rows[] = {
        {"the defaults", [](kestra_html_options*) {}, 0},
        {"a host that knows the encoding alone",
         [](kestra_html_options* options) { options->size = offsetof(kestra_html_options, flags); }, 0},
        {"no size", [](kestra_html_options* options) { options->size = 0; }, bad},
        {"an unknown encoding", [](kestra_html_options* options) { options->encoding = 3; }, bad},
        {"an unknown flag", [](kestra_html_options* options) { options->flags = 8; }, bad},
        {"an unknown mode", [](kestra_html_options* options) { options->script_mode = 2; }, bad},
        {"an unknown self-check", [](kestra_html_options* options) { options->self_check = 3; }, bad},
        {"more confidence than there is", [](kestra_html_options* options) { options->min_confidence = 101; }, bad},
        {"what is reserved", [](kestra_html_options* options) { options->reserved = 1; }, bad},
        {"both callbacks",
         [](kestra_html_options* options) {
             options->on_token = [](void*, const kestra_html_token*) -> std::uint32_t { return 0; };
             options->on_summary = &CompareSummaries;
         },
         bad},
        {"a host that does not know the second one, whatever comes after its options",
         [](kestra_html_options* options) {
             options->size = offsetof(kestra_html_options, on_summary);
             options->on_token = [](void*, const kestra_html_token*) -> std::uint32_t { return 0; };
             options->on_summary = &CompareSummaries;
         },
         0},
    };
    for (const OptionsRow& row : rows) {
        kestra_html_options options = MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr);
        row.change(&options);
        CParser parser(options);
        EXPECT_EQ(parser.createResult, row.result) << row.note;
        EXPECT_EQ(parser.Get() != nullptr, row.result == 0) << row.note;
    }
}

TEST(CParserTest, StructsOfALaterVersion) {
    struct LaterOptions {
        kestra_html_options known;
        std::uint64_t unknown;
    };
    LaterOptions later{MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr), 0};
    later.known.size = sizeof later;
    kestra_html_parser* parser = nullptr;
    EXPECT_EQ(kestra_html_parser_create(&later.known, &parser), 0U);
    kestra_html_parser_destroy(parser);
    later.unknown = 1;
    EXPECT_EQ(kestra_html_parser_create(&later.known, &parser), std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT});
    EXPECT_EQ(parser, nullptr);
}

TEST(CParserTest, NullIsAnswered) {
    const std::uint32_t bad = KESTRA_HTML_INVALID_ARGUMENT;
    kestra_html_place place{};
    kestra_html_string string{};
    kestra_html_attribute attribute{};
    kestra_html_summary summary{};
    kestra_html_attribute_place attributePlace{};
    std::size_t number = 0;
    kestra_html_stream stream{};
    EXPECT_EQ(kestra_html_parser_create(nullptr, nullptr), bad);
    kestra_html_parser_destroy(nullptr);
    EXPECT_EQ(kestra_html_parser_start(nullptr, 0, 0), bad);
    EXPECT_EQ(kestra_html_parser_feed(nullptr, "", 0), bad);
    EXPECT_EQ(kestra_html_parser_feed_document(nullptr, "", 0), bad);
    EXPECT_EQ(kestra_html_parser_feed_stream(nullptr, &stream), bad);
    EXPECT_EQ(kestra_html_parser_feed_file(nullptr, "a"), bad);
    EXPECT_EQ(kestra_html_parser_end(nullptr), bad);
    EXPECT_EQ(kestra_html_parser_stop(nullptr), bad);
    EXPECT_EQ(kestra_html_parser_place(nullptr, &place), bad);
    EXPECT_EQ(kestra_html_parser_set_limits(nullptr, 0, 0), bad);
    EXPECT_EQ(kestra_html_parser_write_copy(nullptr, nullptr, nullptr), bad);
    EXPECT_EQ(kestra_html_parser_charset(nullptr), 0U);
    EXPECT_EQ(kestra_html_parser_is_utf16(nullptr), 0U);
    EXPECT_EQ(kestra_html_parser_used_detector(nullptr), 0U);
    EXPECT_EQ(kestra_html_parser_detected_confidence(nullptr), 0U);
    EXPECT_EQ(kestra_html_parser_has_charset_errors(nullptr), 0U);
    EXPECT_EQ(kestra_html_parser_conversion_error(nullptr), 0U);
    EXPECT_EQ(kestra_html_parser_line(nullptr), 0U);
    EXPECT_EQ(kestra_html_parser_column(nullptr), 0U);
    EXPECT_EQ(kestra_html_token_kind(nullptr), 0U);
    EXPECT_EQ(kestra_html_token_flags(nullptr), 0U);
    EXPECT_EQ(kestra_html_token_place(nullptr, &place), bad);
    EXPECT_EQ(kestra_html_token_string(nullptr, 0, &string), bad);
    EXPECT_EQ(kestra_html_token_decoded_text(nullptr, &string), bad);
    EXPECT_EQ(kestra_html_token_attribute_count(nullptr, &number), bad);
    EXPECT_EQ(kestra_html_token_summary(nullptr, &summary), bad);
    EXPECT_EQ(kestra_html_token_attribute(nullptr, 0, &attribute), bad);
    EXPECT_EQ(kestra_html_token_decoded_value(nullptr, 0, &string), bad);
    EXPECT_EQ(kestra_html_token_attribute_place(nullptr, 0, &attributePlace), bad);
    EXPECT_EQ(kestra_html_token_find_attribute(nullptr, "a", 1, &number), bad);
    const auto check = [&](const kestra_html_token* token) {
        EXPECT_EQ(kestra_html_token_place(token, nullptr), bad);
        EXPECT_EQ(kestra_html_token_string(token, 0, nullptr), bad);
        EXPECT_EQ(kestra_html_token_string(token, 6, &string), bad);
        EXPECT_EQ(kestra_html_token_decoded_text(token, nullptr), bad);
        EXPECT_EQ(kestra_html_token_attribute_count(token, nullptr), bad);
        EXPECT_EQ(kestra_html_token_summary(token, nullptr), bad);
        EXPECT_EQ(kestra_html_token_summary(token, &summary), bad);  // no size
        EXPECT_EQ(kestra_html_token_attribute(token, 0, nullptr), bad);
        EXPECT_EQ(kestra_html_token_attribute(token, 0, &attribute), bad);  // no size
        attribute.size = sizeof attribute;
        EXPECT_EQ(kestra_html_token_attribute(token, 1, &attribute), bad);
        EXPECT_EQ(kestra_html_token_decoded_value(token, 0, nullptr), bad);
        EXPECT_EQ(kestra_html_token_decoded_value(token, 1, &string), bad);
        EXPECT_EQ(kestra_html_token_attribute_place(token, 0, nullptr), bad);
        EXPECT_EQ(kestra_html_token_attribute_place(token, 1, &attributePlace), bad);
        EXPECT_EQ(kestra_html_token_find_attribute(token, nullptr, 0, &number), bad);
        EXPECT_EQ(kestra_html_token_find_attribute(token, "b", 1, nullptr), bad);
        return 0U;
    };
    EXPECT_EQ(ForEachToken("<a b=c>", KESTRA_HTML_UTF8, check), 0U);
}

TEST(CParserTest, TheSummaryThatComesWithATokenIsTheOneAskedFor) {
    const std::vector<std::string> pages = ReadPages(KESTRA_EXAMPLE_PAGES);
    DocumentMaker maker(&pages);
    for (const std::uint32_t encoding : {KESTRA_HTML_BYTES, KESTRA_HTML_UTF8, KESTRA_HTML_UTF16}) {
        for (const std::uint32_t flags : {0U, std::uint32_t{KESTRA_HTML_WORDS_IN_VALUES}}) {
            std::uint64_t tokens = 0;
            kestra_html_options options = MakeOptions(encoding, nullptr, &tokens);
            options.flags = flags | KESTRA_HTML_EVENTS;
            options.on_summary = &CompareSummaries;
            CParser parser(options);
            ASSERT_EQ(parser.createResult, 0U);
            for (std::uint64_t seed = 0; seed < SUMMARIZED_DOCUMENTS; ++seed) {
                const std::string document = maker.Make(seed).bytes;
                EXPECT_EQ(kestra_html_parser_start(parser.Get(), seed % 2 == 0 ? UTF8 : WINDOWS_1252, 0), 0U);
                parser.FeedDocument(document);
                parser.End();
                if (HasFailure())
                    FAIL() << "document " << seed;
            }
            EXPECT_GT(tokens, 10 * SUMMARIZED_DOCUMENTS);
        }
    }
}

TEST(CParserTest, ACallbackWithASummaryStopsTheDocument) {
    std::uint32_t left = 2;
    kestra_html_options options = MakeOptions(KESTRA_HTML_BYTES, nullptr, &left);
    options.on_summary = [](void* user, const kestra_html_token*, const kestra_html_summary*) {
        return --*static_cast<std::uint32_t*>(user) == 0 ? 1U : 0U;
    };
    CParser parser(options);
    parser.Start();
    EXPECT_EQ(parser.FeedDocument("<a><b><c>"), std::uint32_t{KESTRA_HTML_STOPPED});
    EXPECT_EQ(left, 0U);
}

TEST(CParserTest, ASmallerSummaryIsFilledAsFarAsItGoes) {
    const auto check = [](const kestra_html_token* token) {
        kestra_html_summary summary{};
        summary.size = offsetof(kestra_html_summary, text);
        summary.attribute_count = 99;
        EXPECT_EQ(kestra_html_token_summary(token, &summary), 0U);
        EXPECT_EQ(summary.kind, KESTRA_HTML_START_TAG);
        EXPECT_EQ(std::string(static_cast<const char*>(summary.name.data), summary.name.size), "a");
        EXPECT_EQ(summary.text.data, nullptr);
        EXPECT_EQ(summary.attribute_count, 99U);
        return 0U;
    };
    EXPECT_EQ(ForEachToken("<a b=c>", KESTRA_HTML_BYTES, check), 0U);
}

TEST(CParserTest, ASmallerAttributeIsFilledAsFarAsItGoes) {
    const auto check = [](const kestra_html_token* token) {
        kestra_html_attribute attribute{};
        attribute.size = offsetof(kestra_html_attribute, prefix);
        attribute.quote = 99;
        EXPECT_EQ(kestra_html_token_attribute(token, 0, &attribute), 0U);
        EXPECT_EQ(View(attribute.value), "c");
        EXPECT_EQ(attribute.size, offsetof(kestra_html_attribute, prefix));
        EXPECT_EQ(attribute.quote, 99U);
        return 0U;
    };
    EXPECT_EQ(ForEachToken("<a b=c>", KESTRA_HTML_UTF8, check), 0U);
}

TEST(CParserTest, EveryResultHasAText) {
    constexpr std::uint32_t RESULTS[] = {0,   2,   8,   11,  12,  16,  50,  507, 512, 704, 705, 706, 707,
                                         708, 709, 710, 711, 720, 721, 722, 723, 724, 725, 726, 727, 730};
    for (const std::uint32_t result : RESULTS) {
        EXPECT_STRNE(kestra_html_result_text(result), "unknown result") << result;
    }
    EXPECT_STREQ(kestra_html_result_text(1), "unknown result");
    EXPECT_STREQ(kestra_html_version(), KESTRA_PROJECT_VERSION);
}

// Charsets

struct DetectionRow {
    const char* note;
    std::string document;
    std::uint32_t result;
    std::uint32_t charset;
    std::uint32_t source;
    const char* name;
};

/// A detector in place of the system's: sure of UTF-8 where there is a byte beyond ASCII, else of
/// ASCII.
std::uint32_t DetectUtf8(const void* data, std::uint64_t size, Base::DetectedCharset* detected, std::uint32_t* count) {
    const std::string_view bytes(static_cast<const char*>(data), static_cast<std::size_t>(size));
    const bool isAscii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= 0; });
    *detected = {isAscii ? CharSet::US_ASCII : CharSet::UTF8, 77};
    *count = 1;
    return 0;
}

std::string Repeat(std::string_view text, std::size_t count) {
    std::string repeated;
    for (; count > 0; --count)
        repeated += text;
    return repeated;
}

std::uint64_t bytesLookedAt = 0;

std::uint32_t CountBytes(const void* data, std::uint64_t size, Base::DetectedCharset* detected, std::uint32_t* count) {
    bytesLookedAt = size;
    return DetectUtf8(data, size, detected, count);
}

TEST(CParserTest, TheDetectorLooksAtAsMuchAsTheHostSays) {
    const std::string document = Repeat("<p>nothing to see here</p>\n", 3000) + "gr\xC3\xBC\xC3\x9F";
    const struct {
        const char* note;
        std::uint64_t most;
        std::uint64_t looked;
        std::uint32_t result;
    } rows[] = {
        {"the default", 0, 16384, 0},
        {"less", 300, 300, 0},
        {"too little for the detector", 255, 0, 0},
        {"more", 50000, 50000, 0},
        {"all of it", UINT64_MAX, document.size(), KESTRA_HTML_PARSE_AGAIN},
    };
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = &CountBytes;
    const Base::ServicesOverride replacement(services);
    for (const auto& row : rows) {
        kestra_html_options options = MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr);
        options.max_detect_size = row.most;
        CParser parser(options);
        parser.Start(0);
        EXPECT_EQ(kestra_html_parser_detected_confidence(parser.Get()), 0U) << row.note;
        bytesLookedAt = 0;
        EXPECT_EQ(parser.FeedDocument(document), row.result) << row.note;
        EXPECT_EQ(bytesLookedAt, row.looked) << row.note;
        // Of ASCII the detector is as sure as of UTF-8, though that is no answer of use.
        EXPECT_EQ(kestra_html_parser_detected_confidence(parser.Get()), row.looked > 0 ? 77U : 0U) << row.note;
    }
    // What a host does not know is at its default.
    kestra_html_options older = MakeOptions(KESTRA_HTML_BYTES, nullptr, nullptr);
    older.size = offsetof(kestra_html_options, max_detect_size);
    older.max_detect_size = 300;
    CParser parser(older);
    parser.Start(0);
    EXPECT_EQ(parser.FeedDocument(document), 0U);
    EXPECT_EQ(bytesLookedAt, 16384U);
}

TEST(CParserTest, TheDetectorIsAskedOnceForADetection) {
    const std::string document = Repeat("nothing to see here. ", 30);
    static int calls = 0;
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = [](const void* data, std::uint64_t size, Base::DetectedCharset* detected,
                                std::uint32_t* count) {
        ++calls;
        return DetectUtf8(data, size, detected, count);
    };
    const Base::ServicesOverride replacement(services);
    kestra_html_detection detection{};
    detection.size = sizeof detection;
    EXPECT_EQ(kestra_html_detect(document.data(), document.size(), &detection),
              std::uint32_t{KESTRA_HTML_NOT_DETECTED});
    EXPECT_EQ(detection.confidence, 77U);
    EXPECT_EQ(calls, 1);
}

TEST(CParserTest, Detection) {
    const DetectionRow rows[] = {
        {"a mark of UTF-8", "\xEF\xBB\xBFx", 0, UTF8, KESTRA_HTML_SOURCE_MARK, "UTF-8"},
        {"a mark of UTF-16", std::string("\xFF\xFEx\0", 4), 0, 1200, KESTRA_HTML_SOURCE_MARK, "UTF-16"},
        {"a meta tag", "<meta charset=koi8-r>", 0, 20866, KESTRA_HTML_SOURCE_META, "KOI8-R"},
        {"a meta tag after a broken one", "<a / ><meta charset=koi8-r>", 0, 20866, KESTRA_HTML_SOURCE_META, "KOI8-R"},
        {"the bytes", Repeat("gr\xC3\xBC\xC3\x9F dich, sch\xC3\xB6ne Welt. ", 20), 0, UTF8, KESTRA_HTML_SOURCE_DETECTOR,
         "UTF-8"},
        {"too little", "gr\xC3\xBC\xC3\x9F", KESTRA_HTML_TOO_LITTLE_DATA, 0, KESTRA_HTML_SOURCE_NONE, ""},
        {"ASCII", Repeat("nothing to see here. ", 30), KESTRA_HTML_NOT_DETECTED, 0, KESTRA_HTML_SOURCE_NONE, ""},
        {"nothing", "", KESTRA_HTML_TOO_LITTLE_DATA, 0, KESTRA_HTML_SOURCE_NONE, ""},
    };
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = &DetectUtf8;
    const Base::ServicesOverride overridden(services);
    for (const DetectionRow& row : rows) {
        kestra_html_detection detection{};
        detection.size = sizeof detection;
        EXPECT_EQ(kestra_html_detect(row.document.data(), row.document.size(), &detection), row.result) << row.note;
        EXPECT_EQ(detection.charset, row.charset) << row.note;
        EXPECT_EQ(detection.source, row.source) << row.note;
        EXPECT_EQ(View(detection.name), row.name) << row.note;
        const bool isAsked = row.source == KESTRA_HTML_SOURCE_DETECTOR || row.result == KESTRA_HTML_NOT_DETECTED;
        EXPECT_EQ(detection.confidence, isAsked ? 77U : row.result == 0 ? 100U : 0U) << row.note;
    }
    EXPECT_EQ(kestra_html_detect("", 0, nullptr), std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT});
}

TEST(CParserTest, DetectionLooksAtAsMuchAsTheOptionsSay) {
    const std::string declared = Repeat("<p>text", 3000) + "<meta charset=koi8-r>";
    const std::string text = Repeat("gr\xC3\xBC\xC3\x9F dich, sch\xC3\xB6ne Welt. ", 1000);
    const struct {
        const char* note;
        const std::string& document;
        std::uint64_t most;
        std::uint32_t minConfidence;
        std::uint32_t result;
        std::uint64_t looked;  ///< at by the detector, in bytes
    } rows[] = {
        {"the default", text, 0, 0, KESTRA_HTML_OK, 16384},
        {"less", text, 300, 0, KESTRA_HTML_OK, 300},
        {"too little", text, 255, 0, KESTRA_HTML_TOO_LITTLE_DATA, 0},
        {"more", text, 20000, 0, KESTRA_HTML_OK, 20000},
        {"all", text, UINT64_MAX, 0, KESTRA_HTML_OK, text.size()},
        {"a confidence that is reached", text, 0, 77, KESTRA_HTML_OK, 16384},
        {"a confidence that is not reached", text, 0, 78, KESTRA_HTML_NOT_CONFIDENT, 16384},
        {"a declaration after the limit", declared, 0, 0, KESTRA_HTML_NOT_DETECTED, 16384},
        {"a declaration before the limit", declared, UINT64_MAX, 0, KESTRA_HTML_OK, 0},
    };
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = &CountBytes;
    const Base::ServicesOverride replacement(services);
    for (const auto& row : rows) {
        bytesLookedAt = 0;
        kestra_html_options options{};
        options.size = sizeof options;
        options.max_detect_size = row.most;
        options.min_confidence = row.minConfidence;
        kestra_html_detection detection{};
        detection.size = sizeof detection;
        EXPECT_EQ(kestra_html_detect_with_options(row.document.data(), row.document.size(), &options, &detection),
                  row.result)
            << row.note;
        EXPECT_EQ(bytesLookedAt, row.looked) << row.note;
    }
    kestra_html_detection detection{};
    detection.size = sizeof detection;
    kestra_html_options bad{};
    EXPECT_EQ(kestra_html_detect_with_options("", 0, &bad, &detection), std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT});
    bad.size = sizeof bad;
    bad.min_confidence = 101;
    EXPECT_EQ(kestra_html_detect_with_options("", 0, &bad, &detection), std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT});
    EXPECT_EQ(kestra_html_detect_with_options("", 0, nullptr, &detection), std::uint32_t{KESTRA_HTML_TOO_LITTLE_DATA});
}

TEST(CParserTest, NamesOfCharsets) {
    kestra_html_string name{};
    EXPECT_EQ(kestra_html_charset_name(UTF8, &name), 0U);
    EXPECT_EQ(View(name), "UTF-8");
    EXPECT_EQ(kestra_html_charset_name(1, &name), 0U);
    EXPECT_EQ(View(name), "");
    EXPECT_EQ(kestra_html_charset_name(UTF8, nullptr), std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT});
    EXPECT_EQ(kestra_html_charset_code("latin1", 6), 28591U);
    EXPECT_EQ(kestra_html_charset_code("UTF-8 and more", 5), UTF8);
    EXPECT_EQ(kestra_html_charset_code("\xC3\xA9", 2), 0U);
    EXPECT_EQ(kestra_html_charset_code(nullptr, 0), 0U);
}

}  // namespace
}  // namespace Kestra::Test
