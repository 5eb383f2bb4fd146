#pragma once

#include <cstdint>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"

namespace Kestra::Tool {

/// How the output of a subcommand is written.
enum class OutputFormat { TEXT, JSON };

/// What the command line says about how inputs are parsed.
struct ParseOptions {
    enum class Feed { STREAM, BUFFER };

    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    HTML::GenericParser::DataStreamType input = HTML::GenericParser::DATA_STREAM_AUTO;
    Feed feed = Feed::STREAM;
    std::uint64_t pieceSize = 0;  ///< bytes; 0 for whole buffers, or for reads as long as asked for
    HTML::GenericParser::SelfCheck selfCheck = HTML::GenericParser::SELF_CHECK_OFF;
    bool detectCharsetErrors = false;
    std::uint64_t minConfidence = HTML::GenericParser::DETECTCHARSET_MIN_CONFIDENCE;
    bool reparse = true;  ///< start again when the charset is found late
};

}  // namespace Kestra::Tool
