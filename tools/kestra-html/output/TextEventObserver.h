#pragma once

#include <cstdint>
#include <string>

#include "html/stateless/StatelessHTMLParser.h"
#include "tools/kestra-html/input/EventsPass.h"
#include "tools/kestra-html/output/EventPlaces.h"
#include "tools/kestra-html/output/LineSink.h"
#include "tools/kestra-html/output/TextReport.h"
#include "tools/trace/EventTrace.h"

namespace Kestra::Tool {

/// Writes one line for each callback, for reading: where the construct starts, and its line of the
/// trace language with long strings cut.
class TextEventObserver final : public Trace::EventLineObserver {
public:
    /// @param observedParser  borrowed; asked in each callback where it is
    /// @param withOffsets     lines also have the offsets in bytes
    TextEventObserver(LineSink* lineSink, const HTML::StatelessHTMLParser* observedParser, bool inColour,
                      bool withOffsets = false);

    /// Writes what became of the input: bytes, events by kind, result.
    void WriteSummary(const EventsPassResult& result, const std::string& size);

private:
    void OnLine(unsigned long event, const std::string& text) override;

    EventPlaces places;
    TextReport report;
};

}  // namespace Kestra::Tool
