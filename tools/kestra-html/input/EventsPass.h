#pragma once

#include <cstdint>

#include "html/stateless/StatelessHTMLParser.h"
#include "tools/kestra-html/input/CallResults.h"
#include "tools/kestra-html/input/ParseOptions.h"
#include "tools/kestra-html/input/PieceStream.h"

namespace Kestra::Tool {

/// How inputs are handed to a stateless parser.
struct EventsPassOptions : FeedOptions {
    std::uint32_t flags = 1;  ///< for `SetFlags`
    HTML::StatelessHTMLParser::ScriptMode scriptMode = HTML::StatelessHTMLParser::SCRIPT_AS_TOKENS;
};

/// What a stateless parser answered in one pass over an input.
struct EventsPassResult : CallResults {
    /// A document may end inside a construct: a `parse` of 16 is good, too.
    bool IsGood() const;
};

/// Parses an input once, from `StartParse` to `EndParse`, for the observers that are attached to
/// the parser. A failure to read is in the source.
/// @param bytesDone  called with the bytes that have been handed to the parser so far
EventsPassResult RunEventsPass(HTML::StatelessHTMLParser* parser, InputSource* source, const EventsPassOptions& options,
                               const BytesDone& bytesDone);

}  // namespace Kestra::Tool
