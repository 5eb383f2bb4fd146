#pragma once

#include <cstdint>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"

namespace Kestra::Tool {

/// What the command line says about how inputs are handed to a parser.
struct FeedOptions {
    enum class Feed { STREAM, BUFFER };

    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    Feed feed = Feed::STREAM;
    std::uint64_t maxTokenSize = 0;  ///< bytes; 0 for no limit
    std::uint64_t pieceSize = 0;     ///< bytes; 0 for whole buffers, or for reads as long as asked for
    bool takesWhatIsThere = false;   ///< parse what a pipe has, instead of waiting until a piece is full
};

/// What the command line says about how inputs are cut into tokens.
struct ParseOptions : FeedOptions {
    HTML::GenericParser::DataStreamType input = HTML::GenericParser::DATA_STREAM_AUTO;
    HTML::GenericParser::SelfCheck selfCheck = HTML::GenericParser::SELF_CHECK_OFF;
    bool detectCharsetErrors = false;
    std::uint64_t minConfidence = HTML::GenericParser::DETECTCHARSET_MIN_CONFIDENCE;
    HTML::GenericParser::ScriptMode scriptMode = HTML::GenericParser::SCRIPT_AS_TOKENS;
    bool reparse = true;  ///< start again when the charset is found late
};

}  // namespace Kestra::Tool
