#include <type_traits>

#include "html/framework/ResultCodes.h"
#include "tests/html/rewrite/RewriteRun.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"
#include "tests/support/TestStreams.h"

/// Whatever a document is answered with, it is copied.

namespace Kestra::Test {
namespace {

using namespace HTML;

/// What is asked for beside the document.
enum class Setting { NONE, SELF_CHECK, WIDE_OBSERVER, STOP, TOKEN_SIZE, ATTRIBUTES, DEPTH, OPEN_ATTRIBUTES };

struct Codes {
    std::uint32_t feeding = 0;
    std::uint32_t ending = 0;

    bool operator==(const Codes&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Codes& codes) {
    return stream << codes.feeding << " and " << codes.ending;
}

struct Row {
    const char* note;
    std::string_view document;  // Latin-1
    bool isWide;                // in UTF-16
    Setting setting;
    Codes ofParser;  // fed as one buffer
    Codes ofRewriter;
};

const Row ROWS[] = {
    {"11, a lone slash", "a<b c / >d<e>", false, Setting::NONE, {11, 16}, {0, 0}},
    {"11 in UTF-16", "a<b c / >d<e>", true, Setting::NONE, {11, 16}, {0, 0}},
    {"11, no mark of a comment", "a<!-b>c<d>", false, Setting::NONE, {11, 16}, {0, 0}},
    {"11, that in UTF-16", "a<!-b>c<d>", true, Setting::NONE, {11, 16}, {0, 0}},
    {"16, a tag at the end", "a<b>c<d e='f", false, Setting::NONE, {0, 16}, {0, 0}},
    {"16 in UTF-16", "a<b>c<d e='f", true, Setting::NONE, {0, 16}, {0, 0}},
    {"16, a string at the end", "<script>a('b", false, Setting::NONE, {0, 16}, {0, 0}},
    {"16, that in UTF-16", "<script>a('b", true, Setting::NONE, {0, 16}, {0, 0}},
    {"704, white space after a slash", "<?xml a/ >b<c>", false, Setting::SELF_CHECK, {0, 704}, {0, 704}},
    {"704 in UTF-16, the body of a comment", "a<!--bc-->d<e>", true, Setting::SELF_CHECK, {0, 704}, {0, 704}},
    {"705, in UTF-16 there is none",
     "a\xE4<b><meta charset=utf-8>c\xE4<d",
     false,
     Setting::WIDE_OBSERVER,
     {705, 16},
     {705, 0}},
    {"710", "a<b>c<d>e<!--", false, Setting::STOP, {710, 0}, {710, 0}},
    {"710 in UTF-16", "a<b>c<d>e<!--", true, Setting::STOP, {710, 0}, {710, 0}},
    {"711, a long token", "a<b>c<!--long-->d<e", false, Setting::TOKEN_SIZE, {711, 0}, {711, 0}},
    {"711, that in UTF-16", "a<b>c<!--long-->d<e", true, Setting::TOKEN_SIZE, {711, 0}, {711, 0}},
    {"711, many attributes", "a<b c>d<e f g>h<i", false, Setting::ATTRIBUTES, {711, 0}, {711, 0}},
    {"711, those in UTF-16", "a<b c>d<e f g>h<i", true, Setting::ATTRIBUTES, {711, 0}, {711, 0}},
    {"711, many open elements", "a<b>c<d>e<f>g", false, Setting::DEPTH, {0, 0}, {711, 0}},
    {"711, those in UTF-16", "a<b>c<d>e<f>g", true, Setting::DEPTH, {0, 0}, {711, 0}},
    {"711, many attributes of open elements", "a<b c>d<e f>g<h", false, Setting::OPEN_ATTRIBUTES, {0, 16}, {711, 0}},
    {"711, those in UTF-16", "a<b c>d<e f>g<h", true, Setting::OPEN_ATTRIBUTES, {0, 16}, {711, 0}},
};

/// Calls `Stop` at a start tag.
template <typename Stopped>
class StoppingObserver final : public ParserObserver<char, std::string> {
public:
    explicit StoppingObserver(Stopped* stoppedParser) : stopped(stoppedParser) {}

    void OnStartTag(StartTagData<char, std::string>*) override {
        stopped->Stop();
    }

private:
    Stopped* stopped;
};

class WideObserver final : public ParserObserver<WideChar, WideString> {};

/// A parser or a rewriter with what a row asks for.
template <typename P>
class Prepared {
public:
    template <typename... Arguments>
    explicit Prepared(const Row& preparedRow, Arguments... arguments)
        : row(preparedRow), parser(arguments...), stopping(&parser) {
        constexpr std::uint64_t TOKEN_BYTES = 8;
        if (row.setting == Setting::SELF_CHECK)
            parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
        else if (row.setting == Setting::TOKEN_SIZE)
            parser.SetMaxTokenSize(row.isWide ? 2 * TOKEN_BYTES : TOKEN_BYTES);
        else if (row.setting == Setting::ATTRIBUTES)
            parser.SetMaxAttributes(1);
        else if (row.setting == Setting::STOP)
            Bind(&stopping);
        else if (row.setting == Setting::WIDE_OBSERVER)
            Bind(&wide);
        if constexpr (std::is_same_v<P, Rewriter>) {
            if (row.setting == Setting::DEPTH)
                parser.SetMaxDepth(1);
            else if (row.setting == Setting::OPEN_ATTRIBUTES)
                parser.SetMaxOpenAttributes(1);
        }
        EXPECT_EQ(parser.StartParse(0, row.isWide ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT),
                  0U);
    }

    P* operator->() {
        return &parser;
    }

private:
    template <typename Observer>
    void Bind(Observer* observer) {
        if constexpr (std::is_same_v<P, Rewriter>)
            parser.SetObserver(observer);
        else
            parser.SetObserver(observer, false);
    }

    const Row& row;
    P parser;
    StoppingObserver<P> stopping;
    WideObserver wide;
};

/// Each piece in turn; of the answers the first that is not 0.
Codes FeedPieces(Prepared<Rewriter>* rewriter, std::string_view bytes, const Cuts& cuts) {
    Codes codes;
    for (const auto& [begin, end] : PiecesOf(cuts, bytes.size())) {
        const HeapPiece<char> piece(bytes.substr(begin, end - begin));
        const std::uint32_t answer = (*rewriter)->ParseBuffer(piece.Data(), piece.Size());
        if (codes.feeding == 0)
            codes.feeding = answer;
    }
    codes.ending = (*rewriter)->EndParse();
    return codes;
}

TEST(RewriterResultsTest, EveryCodeOfADocument) {
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.note);
        const std::string bytes = row.isWide ? ToUtf16LE(row.document) : std::string(row.document);
        Prepared<GenericParser> parser(row);
        Codes ofParser;
        ofParser.feeding = parser->ParseBuffer(bytes.data(), bytes.size());
        ofParser.ending = parser->EndParse();
        EXPECT_EQ(ofParser, row.ofParser);
        ForEverySplit(bytes, [&](const Cuts& cuts) {
            CollectingHandler output;
            Prepared<Rewriter> rewriter(row, &output);
            EXPECT_EQ(FeedPieces(&rewriter, bytes, cuts), row.ofRewriter);
            EXPECT_EQ(output.bytes, bytes);
        });
        CollectingHandler output;
        Prepared<Rewriter> rewriter(row, &output);
        VFS::MemoryInputStream stream(bytes);
        EXPECT_EQ(rewriter->ParseStream(&stream, false), row.ofRewriter.feeding);
        EXPECT_EQ(rewriter->EndParse(), row.ofRewriter.ending);
        EXPECT_EQ(output.bytes, bytes);
    }
}

/// No document is answered with the code of a recognizer, but a stream may have the same.
TEST(RewriterResultsTest, EveryCodeOfAStream) {
    for (const std::uint32_t code : {11U, 12U, 16U, 704U, 705U, 710U, 711U}) {
        for (const bool isWide : {false, true}) {
            const std::string_view document = "a<b>c<d e=f>g<!--h";
            const std::string bytes = isWide ? ToUtf16LE(document) : std::string(document);
            // At every place, also in the middle of a character.
            for (std::size_t size = 1; size < bytes.size(); ++size) {
                SCOPED_TRACE(std::to_string(code) + " after " + std::to_string(size) + " bytes");
                RewriterBench rewriter;
                rewriter.OnContent("", [](RewriterToken) {});
                rewriter.StartParse(0, isWide ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
                FaultyInputStream stream(bytes);
                stream.ShortenRead(1, size).FailRead(2, code);
                EXPECT_EQ(rewriter.ParseStream(&stream, false), code);
                // Half a character waits for the rest of it.
                EXPECT_EQ(rewriter.output.bytes, bytes.substr(0, isWide ? size - size % 2 : size));
                EXPECT_EQ(rewriter.ParseBuffer(bytes.data() + size, bytes.size() - size), 0U);
                rewriter.ExpectEnd(bytes);
            }
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
