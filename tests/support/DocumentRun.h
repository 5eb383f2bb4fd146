#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/InputStream.h"
#include "tests/support/Splits.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {

/// Which observer a document is parsed for.
enum class Observed { NARROW, WIDE, NOBODY };

/// How a document reaches the parser.
enum class Feed {
    BUFFER,          ///< `ParseBuffer` for each piece, a heap block of its exact size that is freed before the next one
    STREAM,          ///< `ParseStream` over a borrowed stream whose reads are cut
    OWNED_STREAM,    ///< the same, and the parser owns the stream
    UNPLACED_STREAM  ///< `ParseStream` over a borrowed stream that knows no positions, so that nothing can be re-read
};

struct DocumentSettings {
    StringNS::CharSet::Code charset = 1252;
    HTML::GenericParser::DataStreamType type = HTML::GenericParser::DATA_STREAM_8BIT;
    Observed observed = Observed::NARROW;
    Feed feed = Feed::BUFFER;
    HTML::GenericParser::SelfCheck selfCheck = HTML::GenericParser::SELF_CHECK_OFF;
    HTML::GenericParser::ScriptMode scriptMode = HTML::GenericParser::SCRIPT_AS_TOKENS;
    bool detectCharsetErrors = false;
    std::uint64_t minConfidence = HTML::GenericParser::DETECTCHARSET_MIN_CONFIDENCE;
    Trace::Options trace;

    /// Makes the stream of the stream feeds in place of the usual one.
    std::function<std::unique_ptr<VFS::InputStream>(const std::string& bytes, const Cuts& cuts)> makeStream;

    /// Called before `StartParse`, after the settings above have been made.
    std::function<void(HTML::GenericParser*)> prepare;

    /// Called in `Feed::BUFFER` between two pieces with the parser in place; may replace it by a
    /// copy.
    std::function<void(std::unique_ptr<HTML::GenericParser>*)> betweenPieces;
};

/// What became of a document. The queries are answered just before `EndParse`, unless it says
/// otherwise.
struct DocumentRun {
    std::vector<std::string> trace;  ///< of all callbacks; adjacent text tokens are not merged
    std::string output;              ///< the bytes of all tokens written back
    std::uint32_t startResult = 0;
    std::uint32_t parseResult = 0;  ///< of `ParseStream`, or of the last `ParseBuffer`
    std::uint32_t endResult = 0;
    std::uint64_t bytesFed = 0;  ///< `Feed::BUFFER`: bytes in the pieces that were fed
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    std::string parserName;
    StringNS::CharSet::Code charset = 0;
    bool isWide = false;
    bool needsReparsing = false;
    bool wasCharsetDetectorUsed = false;
    bool hasCharsetErrors = false;      ///< just after `EndParse`
    std::uint32_t conversionError = 0;  ///< just after `EndParse`
    std::uint64_t lineAfterEnd = 0;     ///< just after `EndParse`
    std::uint64_t columnAfterEnd = 0;   ///< just after `EndParse`

    /// The lines of `trace`, each ended by a line feed.
    std::string Lines() const;
};

/// Parses the bytes of a document with a `GenericParser` of its own: `StartParse`, the pieces for
/// as long as the result is 0 or 16, `EndParse`. A result of 705 is not followed up.
/// @param cuts  in bytes: the pieces of a buffer, or the sizes of the long reads of a stream
DocumentRun ParseDocument(std::string_view bytes, const Cuts& cuts, const DocumentSettings& settings = {});

/// The same for a document in UTF-16: `settings.type` is taken as DATA_STREAM_UTF16, and the cuts
/// are in characters.
DocumentRun ParseDocument(WideStringView text, const Cuts& cuts, DocumentSettings settings = {});

/// A stream over `bytes` whose reads of at least `GenericParser::BUFFER_SIZE` bytes deliver the
/// pieces between the cuts. Shorter reads, those of a token being re-read, are served whole.
std::unique_ptr<VFS::InputStream> MakeCutStream(std::string bytes, const Cuts& cuts);

}  // namespace Kestra::Test
