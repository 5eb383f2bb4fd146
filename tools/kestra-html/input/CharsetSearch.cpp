#include "tools/kestra-html/input/CharsetSearch.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/ParserObserver.h"
#include "html/framework/ResultCodes.h"
#include "html/parser/GenericParser.h"
#include "platform/Results.h"
#include "tools/kestra-html/input/DeclarationScan.h"
#include "tools/kestra-html/input/ParsePass.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

/// Most pages declare their charset before this place, so that nothing else need be read.
constexpr std::uint64_t PARSED_FIRST = std::uint64_t{64} * 1024;
constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;

/// Stops a parse where the charset is known: at a declaration, or at a byte-order mark.
class CharsetStop final : public HTML::ParserObserver<char, std::string> {
public:
    explicit CharsetStop(GenericParser* observedParser) : parser(observedParser) {}

    void OnBOM(const void*, std::uint64_t) override {
        parser->Stop();
    }

    void OnCharset(CharSet::Code code) override {
        if (code == CharSet::UNKNOWN)
            return;  // `StartParse` says so at once when the input is known to be of bytes
        declared = code;
        parser->Stop();
    }

    std::optional<CharSet::Code> GetDeclared() const {
        return declared;
    }

private:
    GenericParser* parser;
    std::optional<CharSet::Code> declared;
};

/// Ends a parse that no declaration can follow in.
class SearchEnd {
public:
    SearchEnd(InputSource* inputSource, const GenericParser* searchParser)
        : source(inputSource), parser(searchParser) {}

    bool IsBefore(std::uint64_t position) {
        if (position < PARSED_FIRST)
            return true;
        if (!isScanned)
            Scan(position);
        return last >= static_cast<std::int64_t>(parser->GetTokenPlace().end);
    }

private:
    /// From the end of the last token on.
    void Scan(std::uint64_t position) {
        const std::uint64_t begin = parser->GetTokenPlace().end;
        DeclarationScan scan;
        std::vector<char> block(BLOCK_SIZE);
        std::uint64_t count = 0;
        source->Seek(begin);
        while (source->Read(block.data(), block.size(), &count) == RESULT_OK)
            scan.Take(std::string_view(block.data(), static_cast<std::size_t>(count)));
        source->Seek(position);
        isScanned = true;
        if (scan.GetLast() >= 0)
            last = static_cast<std::int64_t>(begin) + scan.GetLast();
    }

    InputSource* source;
    const GenericParser* parser;
    bool isScanned = false;
    std::int64_t last = -1;
};

/// Whether the detector has an answer for the start of the input. A declaration can forestall it.
bool HasDetectedCharset(InputSource* source, const ParseOptions& options) {
    GenericParser parser;
    parser.SetChrDetMinConfidence(options.minConfidence);
    CharSet::Code code = CharSet::UNKNOWN;
    PieceStream start(source, PieceSettings());
    return parser.DetectCharset(&start, &code) == HTML::PARSER_OK && code != CharSet::UNKNOWN;
}

}  // namespace

std::optional<CharSet::Code> FindLateCharset(InputSource* source, const ParseOptions& options, bool isWide,
                                             const BytesDone& bytesDone) {
    const ParseStart start(options);
    if (!start.CanRestart())
        return std::nullopt;
    // Nothing is converted for a narrow observer, so that only the detector comes too late for it,
    // after the last byte of a stream.
    if (!isWide && (options.feed == FeedOptions::Feed::BUFFER || !HasDetectedCharset(source, options)))
        return std::nullopt;
    ParseOptions searchOptions = options;
    searchOptions.selfCheck = GenericParser::SELF_CHECK_OFF;
    searchOptions.detectCharsetErrors = false;
    GenericParser parser;
    CharsetStop stop(&parser);
    parser.SetObserver(&stop, false);
    SearchEnd end(source, &parser);
    BeforePiece beforePiece;
    if (options.maxTokenSize == 0)  // else the parse may fail before it comes to a declaration, or to its end
        beforePiece = [&end](std::uint64_t position) { return end.IsBefore(position); };
    const ParsePassResult result = RunParsePass(&parser, source, start, searchOptions, bytesDone, beforePiece);
    if (stop.GetDeclared())
        return isWide ? stop.GetDeclared() : std::nullopt;
    return result.parse == HTML::PARSER_PARSE_AGAIN ? std::optional(result.charset) : std::nullopt;
}

}  // namespace Kestra::Tool
