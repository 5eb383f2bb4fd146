#include "tools/kestra-html/TokensPass.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

#include "html/framework/ResultCodes.h"

namespace Kestra::Tool {

namespace {

/// Feeds piece by piece, each in a heap block of its exact size that is gone before the next, so that a sanitizer sees every access
/// outside the piece.
std::uint32_t FeedBuffers(HTML::GenericParser* parser, std::string_view content, std::uint64_t pieceSize, const BytesDone& bytesDone) {
    std::uint32_t result = HTML::PARSER_OK;
    std::size_t offset = 0;
    while (offset < content.size() && (result == HTML::PARSER_OK || result == HTML::PARSER_UNTERMINATED)) {
        const std::size_t left = content.size() - offset;
        const std::size_t size = pieceSize == 0 ? left : static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize, left));
        const std::unique_ptr<char[]> piece(new char[size]);
        std::memcpy(piece.get(), content.data() + offset, size);
        result = parser->ParseBuffer(piece.get(), size);
        offset += size;
        bytesDone(offset);
    }
    return result;
}

}  // namespace

bool TokensPassResult::IsGood() const {
    return startParse == HTML::PARSER_OK && parse == HTML::PARSER_OK && endParse == HTML::PARSER_OK;
}

TokensPassResult RunTokensPass(HTML::GenericParser* parser, std::string_view content, StringNS::CharSet::Code charset,
                               HTML::GenericParser::DataStreamType type, const TokensOptions& options, const BytesDone& bytesDone) {
    PieceStream stream(content, options.pieceSize, bytesDone);  // the parser re-reads it until `EndParse`
    parser->SetSelfCheck(HTML::GenericParser::SELF_CHECK_OFF);
    parser->SetDetectCharsetErrors(options.detectCharsetErrors);
    parser->SetChrDetMinConfidence(options.minConfidence);

    TokensPassResult result;
    result.startParse = parser->StartParse(charset, type);
    if (options.feed == TokensOptions::Feed::STREAM)
        result.parse = parser->ParseStream(&stream, false);
    else
        result.parse = FeedBuffers(parser, content, options.pieceSize, bytesDone);
    result.line = parser->GetLine();
    result.column = parser->GetColumn();
    result.currentParserName = parser->GetCurrentParserName();
    result.charset = parser->GetCharset();
    result.isWParser = parser->IsWParser();
    result.needsReparsing = parser->NeedsReparsing();
    result.endParse = parser->EndParse();
    result.hasCharsetErrors = parser->HasCharsetErrors();
    return result;
}

}  // namespace Kestra::Tool
