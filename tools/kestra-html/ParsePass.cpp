#include "tools/kestra-html/ParsePass.h"

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

bool ParsePassResult::IsGood() const {
    return GetFirstFailure() == HTML::PARSER_OK;
}

std::uint32_t ParsePassResult::GetFirstFailure() const {
    for (const std::uint32_t code : {startParse, parse, endParse}) {
        if (code != HTML::PARSER_OK)
            return code;
    }
    return HTML::PARSER_OK;
}

ParseStart::ParseStart(const ParseOptions& options) : charset(options.charset), type(options.input) {}

StringNS::CharSet::Code ParseStart::GetCharset() const {
    return charset;
}

void ParseStart::SetCharset(StringNS::CharSet::Code code) {
    charset = code;
}

HTML::GenericParser::DataStreamType ParseStart::GetType() const {
    return type;
}

bool ParseStart::WasRestarted() const {
    return restarts > 0;
}

bool ParseStart::CanRestart() const {
    return charset == StringNS::CharSet::UNKNOWN && type != HTML::GenericParser::DATA_STREAM_UTF16 && restarts < MOST_RESTARTS;
}

bool ParseStart::Restart(const ParsePassResult& result) {
    if (result.parse != HTML::PARSER_PARSE_AGAIN || restarts == MOST_RESTARTS)
        return false;
    ++restarts;
    charset = result.charset;
    if (charset == StringNS::CharSet::UTF16_LE)
        type = HTML::GenericParser::DATA_STREAM_UTF16;
    return true;
}

ParsePassResult RunParsePass(HTML::GenericParser* parser, std::string_view content, const ParseStart& start, const ParseOptions& options,
                             const BytesDone& bytesDone) {
    PieceStream stream(content, options.pieceSize, bytesDone);  // the parser re-reads it until `EndParse`
    parser->SetSelfCheck(options.selfCheck);
    parser->SetDetectCharsetErrors(options.detectCharsetErrors);
    parser->SetChrDetMinConfidence(options.minConfidence);

    ParsePassResult result;
    result.startParse = parser->StartParse(start.GetCharset(), start.GetType());
    if (options.feed == ParseOptions::Feed::STREAM)
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
