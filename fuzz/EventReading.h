#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/FuzzedEvents.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "tests/support/EventRun.h"

namespace Kestra::Fuzz {

/// A stateless parser in a fuzzed document, with two observers: one from the start, one that comes
/// and goes.
class EventReading {
public:
    /// Starts the document.
    /// @param fuzzedEvents  borrowed
    explicit EventReading(const FuzzedEvents* fuzzedEvents);

    /// Goes on with a copy of the original's parser, which has observers of its own: they have seen
    /// what the original's have seen.
    explicit EventReading(EventReading* original);

    EventReading(const EventReading&) = delete;
    EventReading& operator=(const EventReading&) = delete;
    ~EventReading() = default;

    /// Feeds the pieces from `begin` to before `end`: by buffers one by one, for as long as the
    /// result is 0 or 16; or by one stream, which reads them one by one. Feeds nothing after a
    /// failure, and no stream without a piece.
    void Feed(std::size_t begin, std::size_t end);

    void AttachSecondObserver();
    void DetachSecondObserver();

    /// Goes on with a copy of the parser, which has the same observers, and destroys the original.
    void ReplaceParser();

    /// As above; the copy was another parser before, which has read the document to its end.
    void AssignParser();

    void End();

    /// What the first observer saw; a result for each piece, or for each stream; the place.
    const Test::EventRun& Run() const;

    const std::vector<std::string>& SecondTrace() const;

private:
    void FeedStream(std::size_t begin, std::size_t end);

    const FuzzedEvents* events;
    bool hasFailed = false;
    bool secondIsAttached = false;
    Test::EventRun run;
    std::vector<std::string> secondTrace;
    Test::EventTraceObserver first;
    Test::EventTraceObserver second;
    std::unique_ptr<HTML::StatelessHTMLParser> parser;
};

}  // namespace Kestra::Fuzz
