#include "tools/kestra-html/input/ParsePass.h"

#include <algorithm>
#include <cstddef>

#include "html/framework/ResultCodes.h"
#include "tools/kestra-html/input/PieceFeed.h"

namespace Kestra::Tool {

bool ParsePassResult::IsGood() const {
    return GetFirstFailure() == HTML::PARSER_OK && conversionError == 0;
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
    return charset == StringNS::CharSet::UNKNOWN && type != HTML::GenericParser::DATA_STREAM_UTF16 &&
           restarts < MOST_RESTARTS;
}

bool ParseStart::Restart(const ParsePassResult& result) {
    if (result.parse != HTML::PARSER_PARSE_AGAIN || restarts == MOST_RESTARTS)
        return false;
    RestartWith(result.charset);
    return true;
}

void ParseStart::RestartWith(StringNS::CharSet::Code code) {
    ++restarts;
    charset = code;
    if (charset == StringNS::CharSet::UTF16_LE)
        type = HTML::GenericParser::DATA_STREAM_UTF16;
}

ParsePassResult RunParsePass(HTML::GenericParser* parser, InputSource* source, const ParseStart& start,
                             const ParseOptions& options, const BytesDone& bytesDone, const BeforePiece& beforePiece) {
    PieceSettings settings;
    settings.pieceSize = options.pieceSize;
    settings.takesWhatIsThere = options.takesWhatIsThere && start.GetType() != HTML::GenericParser::DATA_STREAM_UTF16;
    settings.bytesDone = bytesDone;
    settings.beforePiece = [parser, source, &beforePiece](std::uint64_t position) {
        // A construct that fails is read again, from where the last token ended or later.
        source->Forget(std::min(position, parser->GetTokenPlace().begin));
        return !beforePiece || beforePiece(position);
    };
    PieceStream stream(source, settings);  // the parser re-reads it until `EndParse`
    const ParsePiece parsePiece = [parser](const char* piece, std::size_t size) {
        return parser->ParseBuffer(piece, size);
    };
    parser->SetSelfCheck(options.selfCheck);
    parser->SetDetectCharsetErrors(options.detectCharsetErrors);
    parser->SetChrDetMinConfidence(options.minConfidence);
    parser->SetScriptMode(options.scriptMode);
    parser->SetMaxTokenSize(options.maxTokenSize);

    ParsePassResult result;
    result.startParse = parser->StartParse(start.GetCharset(), start.GetType());
    if (options.feed == FeedOptions::Feed::STREAM)
        result.parse = parser->ParseStream(&stream, false);
    else
        result.parse = FeedPieces(source, settings, parsePiece);
    result.line = parser->GetLine();
    result.column = parser->GetColumn();
    result.currentParserName = parser->GetCurrentParserName();
    result.charset = parser->GetCharset();
    result.isWParser = parser->IsWParser();
    result.needsReparsing = parser->NeedsReparsing();
    result.endParse = parser->EndParse();
    result.copyLost = options.selfCheck == HTML::GenericParser::SELF_CHECK_COPY &&
                      result.endParse == HTML::PARSER_SELF_CHECK_FAILED && parser->GetSelfCheckStream() == nullptr;
    result.hasCharsetErrors = parser->HasCharsetErrors();
    result.conversionError = parser->GetConversionError();
    return result;
}

std::uint64_t CountLostMarkBytes(std::string_view input, const ParseStart& start, std::uint64_t pieceSize) {
    const bool looksForMark = start.GetType() != HTML::GenericParser::DATA_STREAM_8BIT &&
                              start.GetType() != HTML::GenericParser::DATA_STREAM_UTF16;
    if (!looksForMark || input.starts_with("\xEF\xBB\xBF") || input.starts_with("\xFF\xFE"))
        return 0;
    const std::uint64_t alike = input.starts_with("\xEF\xBB")                            ? 2
                                : input.starts_with("\xEF") || input.starts_with("\xFF") ? 1
                                                                                         : 0;
    if (alike == input.size())
        return alike;
    return pieceSize == 0 ? 0 : alike / pieceSize * pieceSize;
}

}  // namespace Kestra::Tool
