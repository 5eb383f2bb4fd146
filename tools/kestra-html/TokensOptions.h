#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html tokens`.
struct TokensOptions {
    enum class Format { TEXT, JSON };
    enum class Observer { WIDE, NARROW };
    enum class Feed { STREAM, BUFFER };

    Format format = Format::TEXT;
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    HTML::GenericParser::DataStreamType input = HTML::GenericParser::DATA_STREAM_AUTO;
    Observer observer = Observer::WIDE;
    Feed feed = Feed::STREAM;
    std::uint64_t pieceSize = 0;  ///< bytes; 0 for whole buffers, or for reads as long as asked for
    bool detectCharsetErrors = false;
    std::uint64_t minConfidence = HTML::GenericParser::DETECTCHARSET_MIN_CONFIDENCE;
    bool reparse = true;              ///< start again when the charset is found late
    std::vector<std::string> inputs;  ///< file names, "-" for standard input; at least one
};

}  // namespace Kestra::Tool
