#pragma once

#include <cstdint>

#include "html/parser/GenericParser.h"
#include "tools/kestra-html/FeedOptions.h"

namespace Kestra::Tool {

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
