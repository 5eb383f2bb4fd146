#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "html/stateless/StatelessHTMLParser.h"
#include "tools/kestra-html/EventsPass.h"
#include "tools/kestra-html/LineSink.h"
#include "tools/kestra-html/TextReport.h"
#include "tools/trace/EventTrace.h"

namespace Kestra::Tool {

/// Writes one line for each callback, for reading: where the construct starts, and its line of the trace language with long strings cut.
///
/// A construct starts where the event before it left the parser, and the end of the document is where the parser stands: text behind the
/// last tag lies between the two.
class TextEventObserver final : public Trace::EventLineObserver {
public:
    /// @param observedParser  borrowed; asked in each callback where it stands
    TextEventObserver(LineSink* lineSink, const HTML::StatelessHTMLParser* observedParser, bool inColour);

    /// Writes what became of the input: bytes, events by kind, result.
    void WriteSummary(const EventsPassResult& result, std::uint64_t size);

private:
    void OnLine(unsigned long event, const std::string& text) override;
    void MoveToParser();

    const HTML::StatelessHTMLParser* parser;
    TextReport report;
    std::size_t line = 1;  ///< of the next construct
    std::size_t column = 1;
};

}  // namespace Kestra::Tool
