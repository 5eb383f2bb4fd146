// The document parser in every flavour, with and without self-check, over every way to feed it; the
// stateless parser.

#include <memory>
#include <string>
#include <type_traits>

#include "bench/Benchmarks.h"
#include "bench/CountingObservers.h"
#include "bench/PieceStream.h"
#include "html/parser/GenericParser.h"
#include "html/stateless/StatelessHTMLParser.h"

namespace Kestra::Bench {

namespace {

using HTML::GenericParser;
using HTML::StatelessHTMLParser;
using StringNS::CharSet;

constexpr std::uint64_t WHOLE = ~std::uint64_t{0};

struct Flavour {
    const char* name;
    bool wideInput;
    bool wideObserver;
    CharSet::Code charset;
};

// "wide" observers get UTF-16 made of 8-bit input: by the library's converters, in which 1252 is
// simpler.
constexpr Flavour FLAVOURS[] = {
    {"8bit", false, false, CharSet::UTF8},
    {"8bit-wide-utf8", false, true, CharSet::UTF8},
    {"8bit-wide-1252", false, true, CharSet::WINDOWS_1252},
    {"16bit", true, true, CharSet::UTF8},
};

struct Feed {
    const char* name;
    bool stream;
    std::uint64_t piece;  // bytes
};

// The document parser reads a stream 16 KB at a time, so there is no larger piece.
constexpr Feed FEEDS[] = {
    {"stream/64", true, 64},    {"stream/4K", true, 4096},    {"stream/16K", true, 16384},    {"buffer/64", false, 64},
    {"buffer/4K", false, 4096}, {"buffer/16K", false, 16384}, {"buffer/whole", false, WHOLE},
};

constexpr Feed STATELESS_FEEDS[] = {
    {"stream/64K", true, 65536},
    {"buffer/whole", false, WHOLE},
};

/// Asks where the token lies.
struct PlaceQuestion {
    void operator()() {
        bytes += Length(parser->GetTokenPlace());
    }
    static std::uint64_t Length(const HTML::TokenPlace& place) {
        return place.end - place.begin;
    }

    const GenericParser* parser = nullptr;
    std::uint64_t bytes = 0;
};

template <typename C, typename S, typename Question = NoQuestion>
class DocumentReader {
public:
    DocumentReader(const Flavour& inputFlavour, const Feed& inputFeed, bool withSelfCheck,
                   GenericParser::ScriptMode scriptMode)
        : flavour(&inputFlavour), feed(&inputFeed), selfCheck(withSelfCheck) {
        if constexpr (std::is_same_v<Question, PlaceQuestion>)
            observer.question.parser = &parser;
        parser.SetObserver(&observer, false);
        parser.SetScriptMode(scriptMode);
    }

    std::uint64_t Read(const Corpus& corpus) {
        observer.tokens = 0;
        for (const std::string& document : corpus.documents) {
            if (!Read(document))
                return 0;
        }
        return observer.tokens;
    }

private:
    bool Read(const std::string& document) {
        parser.StartParse(flavour->charset,
                          flavour->wideInput ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
        parser.SetSelfCheck(selfCheck ? GenericParser::SELF_CHECK_CRC : GenericParser::SELF_CHECK_OFF);
        PieceStream stream(document, feed->piece);
        const std::uint32_t result = feed->stream
                                         ? parser.ParseStream(&stream, false)
                                         : FeedPieces(&parser, document, feed->piece, HTML::PARSER_OK, HTML::PARSER_OK);
        const std::uint32_t end = parser.EndParse();
        // The self-check costs the same where its checksums differ: half of a comment's body is
        // written back in UTF-16, and not all of the tail of a conditional section that is cut
        // between two pieces.
        return result == HTML::PARSER_OK &&
               (end == HTML::PARSER_OK || (end == HTML::PARSER_SELF_CHECK_FAILED && selfCheck));
    }

    const Flavour* flavour;
    const Feed* feed;
    bool selfCheck;
    CountingObserver<C, S, Question> observer;
    GenericParser parser;
};

template <typename C, typename S, typename Question = NoQuestion>
Round PrepareDocumentReader(const Flavour& flavour, const Feed& feed, bool selfCheck,
                            GenericParser::ScriptMode scriptMode = GenericParser::SCRIPT_AS_TOKENS) {
    const auto reader = std::make_shared<DocumentReader<C, S, Question>>(flavour, feed, selfCheck, scriptMode);
    return [reader](const Corpus& corpus) { return reader->Read(corpus); };
}

Round PrepareStatelessReader(const Feed& feed) {
    struct Reader {
        CountingEventObserver observer;
        StatelessHTMLParser parser;
    };
    const auto reader = std::make_shared<Reader>();
    reader->parser.Attach(&reader->observer);
    return [reader, feed](const Corpus& corpus) -> std::uint64_t {
        reader->observer.tokens = 0;
        for (const std::string& document : corpus.documents) {
            reader->parser.StartParse(CharSet::UTF8);
            PieceStream stream(document, feed.piece);
            const std::uint32_t result = feed.stream ? reader->parser.ParseStream(&stream, false)
                                                     : FeedPieces(&reader->parser, document, feed.piece,
                                                                  HTML::STATELESS_OK, HTML::STATELESS_NEED_MORE_DATA);
            reader->parser.EndParse();
            if (result != HTML::STATELESS_OK)
                return 0;
        }
        return reader->observer.tokens;
    };
}

}  // namespace

void RegisterDocumentParser(const NamedCorpus& corpus, bool withBuffers) {
    // Junk is read again from the stream: without a stream, its document ends there.
    const NamedCorpus withoutJunk(corpus.Name(), [corpus] { return WithoutJunk(corpus.Get()); });
    const NamedCorpus wide(corpus.Name(), [corpus] { return Widen(corpus.Get()); });
    const NamedCorpus wideWithoutJunk(corpus.Name(), [withoutJunk] { return Widen(withoutJunk.Get()); });
    for (const Flavour& flavour : FLAVOURS) {
        for (const bool selfCheck : {false, true}) {
            for (const Feed& feed : FEEDS) {
                if (!feed.stream && !withBuffers)
                    continue;
                const NamedCorpus& narrowInput = feed.stream ? corpus : withoutJunk;
                const NamedCorpus& wideInput = feed.stream ? wide : wideWithoutJunk;
                const std::string name =
                    std::string("document/") + flavour.name + (selfCheck ? "-crc/" : "/") + feed.name;
                Register(flavour.wideInput ? wideInput : narrowInput, name, [&flavour, &feed, selfCheck] {
                    return flavour.wideObserver ? PrepareDocumentReader<WideChar, WideString>(flavour, feed, selfCheck)
                                                : PrepareDocumentReader<char, std::string>(flavour, feed, selfCheck);
                });
            }
        }
    }
    Register(corpus, "document/8bit-places/stream/16K",
             [] { return PrepareDocumentReader<char, std::string, PlaceQuestion>(FLAVOURS[0], FEEDS[2], false); });
}

void RegisterScriptModes(const NamedCorpus& corpus) {
    const Feed& feed = FEEDS[2];
    for (const bool asText : {false, true}) {
        Register(corpus, std::string("document/8bit-scripts-as-") + (asText ? "text/" : "tokens/") + feed.name,
                 [&feed, asText] {
                     return PrepareDocumentReader<char, std::string>(
                         FLAVOURS[0], feed, false,
                         asText ? GenericParser::SCRIPT_AS_TEXT : GenericParser::SCRIPT_AS_TOKENS);
                 });
    }
}

void RegisterStatelessParser(const NamedCorpus& corpus) {
    for (const Feed& feed : STATELESS_FEEDS)
        Register(corpus, std::string("stateless/") + feed.name, [&feed] { return PrepareStatelessReader(feed); });
}

}  // namespace Kestra::Bench
