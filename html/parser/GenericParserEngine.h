#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "html/parser/CharsetDetection.h"
#include "html/parser/GenericParser.h"
#include "html/parser/ObserverBinding.h"
#include "html/parser/Parser.h"
#include "html/parser/PieceOrigin.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/InputStream.h"
#include "platform/Uninherited.h"

namespace Kestra::HTML {

/// What `GenericParser` does: it feeds bytes to the parser of one of the two flavours. Methods of
/// the same names answer what is documented there. Not installed.
class GenericParserEngine {
public:
    GenericParserEngine();
    /// A copy continues where the original was; it has no stream, and no call is running in it.
    GenericParserEngine(const GenericParserEngine& other);
    GenericParserEngine& operator=(const GenericParserEngine& other) = delete;
    ~GenericParserEngine();

    template <typename C, typename S>
    void BindObserver(ParserObserver<C, S>* observer, bool owns) {
        observers.Bind(observer, owns, isBusy.Get());
        ForEachParser(
            [this](auto& parser) { parser.GetDelivery().SetObservers(observers.GetNarrow(), observers.GetWide()); });
    }

    std::uint32_t StartParse(StringNS::CharSet::Code code, GenericParser::DataStreamType type);
    std::uint32_t ParseBuffer(const char* data, std::uint64_t size);
    std::uint32_t ParseStream(VFS::InputStream* stream, bool ownsStream);
    std::uint32_t ParseFile(const WideChar* path);
    std::uint32_t EndParse();
    std::uint32_t Stop();
    bool IsStopped() const;

    /// Feeds a piece of a document that can be read again, as the pieces of a stream.
    /// @param size     what `CountWholeUnits` has answered
    /// @param backing  borrowed until `StartParse` or `EndParse`, and the same for all pieces: has
    ///                 the token under way and this piece
    /// @param offset   of the piece, in that stream and in the document
    std::uint32_t FeedPiece(const char* data, std::uint64_t size, VFS::InputStream* backing, std::uint64_t offset);

    /// How many bytes of a piece can be fed: all, or all but the last when that is half a unit of
    /// UTF-16. All bytes of a byte-order mark at the beginning of the piece can be fed, also those
    /// that complete one.
    std::uint64_t CountWholeUnits(const char* data, std::uint64_t size) const;

    /// Where the name of the tag, or the target of the instruction, that is being delivered ends.
    /// @return false when there is none
    bool GetTagNameEnd(std::uint64_t* end) const;

    StringNS::CharSet::Code GetCharset() const;
    bool IsWide() const;
    CharsetDetection& GetDetection();
    const CharsetDetection& GetDetection() const;

    /// Calls `query` with the parser that runs.
    /// @return its answer, `otherwise` when none runs
    template <typename Query, typename Answer>
    Answer QueryRunning(Query query, Answer otherwise) const {
        if (mode == MODE_NARROW)
            return query(narrowParser);
        if (mode == MODE_WIDE)
            return query(wideParser);
        return otherwise;
    }

    template <typename Call, typename Answer>
    Answer CallRunning(Call call, Answer otherwise) {
        if (mode == MODE_NARROW)
            return call(narrowParser);
        if (mode == MODE_WIDE)
            return call(wideParser);
        return otherwise;
    }

    template <typename Call>
    void ForEachParser(Call call) {
        call(narrowParser);
        call(wideParser);
    }

    /// Settings that both parsers have.
    template <typename Query>
    auto QuerySetting(Query query) const {
        return query(narrowParser);
    }

private:
    /// What the first bytes have shown so far, or which parser runs.
    enum FeedMode : std::uint32_t {
        MODE_START = 0,
        MODE_UTF8_MARK_1 = 1,   // EF
        MODE_UTF8_MARK_2 = 2,   // EF BB
        MODE_UTF16_MARK_1 = 3,  // FF
        MODE_NARROW = 4,
        MODE_WIDE = 5,
    };

    auto BeginCall();
    auto BeginStreamUse();
    std::uint32_t StartNarrow(std::uint64_t markLength, std::uint64_t bytesDropped, StringNS::CharSet::Code code,
                              bool detected);
    std::uint32_t StartWide(bool hasMark);
    std::uint32_t AnnounceCharset();
    std::uint32_t FeedBytes(const char* data, std::uint64_t size, const PieceOrigin& origin);
    std::uint32_t FeedFirstBytes(const char* data, std::uint64_t size, const PieceOrigin& origin);
    std::uint32_t FeedNarrow(const char* data, std::uint64_t size, const PieceOrigin& origin);
    std::uint32_t FeedWide(const char* data, std::uint64_t size, const PieceOrigin& origin);
    std::uint32_t FeedStream(VFS::InputStream* stream);
    std::uint32_t ReportLostToken(std::uint32_t result);
    std::uint32_t DetectLateCharset(VFS::InputStream* stream);
    void KeepOpenConstruct();
    void SetBackingStream(VFS::InputStream* stream);

    FeedMode mode = MODE_START;
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    Parser<char, std::string> narrowParser;
    Parser<WideChar, WideString> wideParser;
    ObserverBinding observers;
    CharsetDetection detection;
    bool charsetDetected = false;  // `charset` is the detector's, for the next document fed without `StartParse`
    bool ended = false;            // `EndParse` has been called and nothing fed since
    Uninherited<bool> isBusy;      // a call that feeds, starts or ends is running: callbacks cannot nest another one
    Uninherited<std::unique_ptr<VFS::InputStream>> keptBytes;  // the open construct of an owned stream that is gone
    Uninherited<std::vector<WideChar>> alignedPiece;           // a UTF-16 piece from an odd address
};

/// Leads from a parser to its engine.
struct GenericParser::Internals {
    static GenericParserEngine& GetEngine(GenericParser& parser) {
        return *parser.engine;
    }
    static const GenericParserEngine& GetEngine(const GenericParser& parser) {
        return *parser.engine;
    }
};

}  // namespace Kestra::HTML
