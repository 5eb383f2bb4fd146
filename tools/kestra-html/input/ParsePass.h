#pragma once

#include <cstdint>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "tools/kestra-html/input/CallResults.h"
#include "tools/kestra-html/input/ParseOptions.h"
#include "tools/kestra-html/input/PieceStream.h"

namespace Kestra::Tool {

/// What a parser answered in one pass over an input.
struct ParsePassResult : CallResults {
    // Asked just before `EndParse`.
    WideString currentParserName;
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    bool isWParser = false;
    bool needsReparsing = false;

    // Asked just after `EndParse`.
    bool hasCharsetErrors = false;
    /// The last code of a conversion for the observer that failed: tokens are missing; 0 for none.
    std::uint32_t conversionError = 0;

    /// Every call returned 0 and no token is missing.
    bool IsGood() const;
};

/// How a pass begins: the arguments of `StartParse`.
class ParseStart {
public:
    static constexpr unsigned MOST_RESTARTS = 2;  ///< passes that may be abandoned for another charset

    explicit ParseStart(const ParseOptions& options);

    StringNS::CharSet::Code GetCharset() const;
    void SetCharset(StringNS::CharSet::Code code);
    HTML::GenericParser::DataStreamType GetType() const;
    bool WasRestarted() const;

    /// True when a pass may be abandoned for another charset: only a document of unknown charset
    /// is.
    bool CanRestart() const;

    /// Takes over the charset that a pass was abandoned for.
    /// @return false when the pass counts: it was not abandoned, or there have been MOST_RESTARTS
    ///         before. Nothing changes then.
    bool Restart(const ParsePassResult& result);
    /// Takes over a charset that has been found.
    void RestartWith(StringNS::CharSet::Code code);

private:
    StringNS::CharSet::Code charset;
    HTML::GenericParser::DataStreamType type;
    unsigned restarts = 0;
};

/// Parses an input once, from `StartParse` to `EndParse`, for the observer that is bound to the
/// parser. A failure to read is in the source.
/// @param bytesDone    called with the bytes that have been handed to the parser so far
/// @param beforePiece  may end the input; empty: it goes to its end
ParsePassResult RunParsePass(HTML::GenericParser* parser, InputSource* source, const ParseStart& start,
                             const ParseOptions& options, const BytesDone& bytesDone,
                             const BeforePiece& beforePiece = {});

/// The bytes at the start of an input that belong to no token: those of a byte-order mark that the
/// input, or a piece, ends in and that does not go on, which the parser drops.
/// @param input  at least its first four bytes, or all of a shorter one
std::uint64_t CountLostMarkBytes(std::string_view input, const ParseStart& start, std::uint64_t pieceSize);

}  // namespace Kestra::Tool
