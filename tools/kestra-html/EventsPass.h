#pragma once

#include <string_view>

#include "html/stateless/StatelessHTMLParser.h"
#include "tools/kestra-html/CallResults.h"
#include "tools/kestra-html/EventsOptions.h"
#include "tools/kestra-html/PieceStream.h"

namespace Kestra::Tool {

/// What a stateless parser answered in one pass over an input.
struct EventsPassResult : CallResults {
    /// A document may end inside a construct: a `parse` of 16 is good, too.
    bool IsGood() const;
};

/// Parses an input once, from `StartParse` to `EndParse`, for the observers that are attached to
/// the parser.
/// @param bytesDone  called with the bytes that have been handed to the parser so far
EventsPassResult RunEventsPass(HTML::StatelessHTMLParser* parser, std::string_view content,
                               const EventsOptions& options, const BytesDone& bytesDone);

}  // namespace Kestra::Tool
