#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "tools/kestra-html/PieceStream.h"
#include "tools/kestra-html/TokensOptions.h"

namespace Kestra::Tool {

/// What a parser answered in one pass over an input.
struct TokensPassResult {
    std::uint32_t startParse = 0;
    std::uint32_t parse = 0;  ///< of `ParseStream`, or of the last `ParseBuffer`
    std::uint32_t endParse = 0;

    // Asked just before `EndParse`.
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    WideString currentParserName;
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    bool isWParser = false;
    bool needsReparsing = false;

    bool hasCharsetErrors = false;  ///< asked just after `EndParse`

    bool IsGood() const;
};

/// Parses an input once, from `StartParse` to `EndParse`, for the observer that is bound to the parser.
/// @param bytesDone  called with the bytes that have been handed to the parser so far
TokensPassResult RunTokensPass(HTML::GenericParser* parser, std::string_view content, StringNS::CharSet::Code charset,
                               HTML::GenericParser::DataStreamType type, const TokensOptions& options, const BytesDone& bytesDone);

}  // namespace Kestra::Tool
