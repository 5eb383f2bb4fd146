#include "tools/kestra-html/input/EventsPass.h"

#include <cstddef>
#include <cstdint>

#include "tools/kestra-html/input/EventPieces.h"
#include "tools/kestra-html/input/PieceFeed.h"

namespace Kestra::Tool {

namespace {

/// @return what `StartParse` returned
std::uint32_t Start(HTML::StatelessHTMLParser* parser, const EventsPassOptions& options) {
    parser->SetFlags(options.flags);
    parser->SetScriptMode(options.scriptMode);
    parser->SetMaxTokenSize(options.maxTokenSize);
    return parser->StartParse(options.charset);
}

}  // namespace

bool EventsPassResult::IsGood() const {
    CallResults strict = *this;
    if (strict.parse == HTML::STATELESS_NEED_MORE_DATA)
        strict.parse = HTML::STATELESS_OK;
    return strict.GetFirstFailure() == HTML::STATELESS_OK;
}

EventsPassResult RunEventsPass(HTML::StatelessHTMLParser* parser, InputSource* source, const EventsPassOptions& options,
                               const BytesDone& bytesDone) {
    EventsPassResult result;
    result.startParse = Start(parser, options);
    PieceSettings settings;
    settings.pieceSize = options.pieceSize;
    settings.bytesDone = bytesDone;
    settings.beforePiece = [source](std::uint64_t position) {
        source->Forget(position);
        return true;
    };
    if (options.feed == FeedOptions::Feed::STREAM && options.takesWhatIsThere) {
        HTML::StatelessHTMLParser follower;
        Start(&follower, options);
        EventPieces stream(follower, source, settings);
        result.parse = parser->ParseStream(&stream, false);
    } else if (options.feed == FeedOptions::Feed::STREAM) {
        PieceStream stream(source, settings);
        result.parse = parser->ParseStream(&stream, false);
    } else {
        const ParsePiece parsePiece = [parser](const char* piece, std::size_t size) {
            return parser->ParseBuffer(piece, size);
        };
        result.parse = FeedPieces(source, settings, parsePiece);
    }
    std::size_t line = 0;
    std::size_t column = 0;
    parser->GetCurrentLineNumber(&line);
    parser->GetCurrentColumnNumber(&column);
    result.line = line;
    result.column = column;
    result.endParse = parser->EndParse();
    return result;
}

}  // namespace Kestra::Tool
