/// @file
/// Feeds a document to the stateless parser and aborts when something is not as the reference
/// parser says: the events, the result of each piece and of the end, line and column. In the middle
/// of it the parser may be copied, and a second observer may come and go.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "fuzz/EventReading.h"
#include "fuzz/Expect.h"
#include "fuzz/FuzzedEvents.h"
#include "tests/reference/events/StatelessReference.h"
#include "tests/support/EventRun.h"
#include "tests/support/Splits.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Fuzz {

namespace {

using Lines = std::vector<std::string>;
using Readings = std::vector<std::unique_ptr<EventReading>>;

std::vector<std::string> PiecesOf(const FuzzedEvents& events) {
    std::vector<std::string> pieces;
    for (const auto& [begin, end] : Test::PiecesOf(events.cuts, events.bytes.size()))
        pieces.emplace_back(events.bytes.substr(begin, end - begin));
    return pieces;
}

/// The places where the feeding stops, in order: those where something is to happen, and the end.
std::set<std::size_t> StopsOf(const FuzzedEvents& events) {
    std::set<std::size_t> stops = {events.cuts.size() + 1};
    if (events.hasSecondObserver)
        stops.insert({events.attachedAt, events.detachedAt});
    if (events.copying != Copying::NONE)
        stops.insert(events.copiedAt);
    return stops;
}

void Copy(Copying copying, Readings* readings) {
    EventReading& original = *readings->front();
    switch (copying) {
        case Copying::NONE:
            break;
        case Copying::REPLACED:
            original.ReplaceParser();
            break;
        case Copying::ASSIGNED:
            original.AssignParser();
            break;
        case Copying::SEPARATED:
            readings->push_back(std::make_unique<EventReading>(&original));
            break;
    }
}

/// Parses the document. The copy that goes on by itself is fed before the original.
Readings Read(const FuzzedEvents& events) {
    Readings readings;
    readings.push_back(std::make_unique<EventReading>(&events));
    std::size_t fed = 0;
    for (const std::size_t stop : StopsOf(events)) {
        for (auto reading = readings.rbegin(); reading != readings.rend(); ++reading) {
            (*reading)->Feed(fed, stop);
            if (events.hasSecondObserver && stop == events.attachedAt)
                (*reading)->AttachSecondObserver();
            if (events.hasSecondObserver && stop == events.detachedAt)
                (*reading)->DetachSecondObserver();
        }
        if (stop == events.copiedAt)
            Copy(events.copying, &readings);
        fed = stop;
    }
    for (auto reading = readings.rbegin(); reading != readings.rend(); ++reading)
        (*reading)->End();
    return readings;
}

/// The result of each stream of a feeding by streams.
/// @param pieceResults  one for each piece up to the first failure
std::vector<std::uint32_t> ResultsOfStreams(const FuzzedEvents& events,
                                            const std::vector<std::uint32_t>& pieceResults) {
    std::vector<std::uint32_t> results;
    std::size_t begin = 0;
    for (const std::size_t stop : StopsOf(events)) {
        const std::size_t end = std::min(stop, pieceResults.size());
        if (begin < end)
            results.push_back(pieceResults[end - 1] == 16 ? 0 : pieceResults[end - 1]);
        begin = end;
    }
    return results;
}

Test::EventRun ExpectedRun(const FuzzedEvents& events, const std::vector<std::string>& pieces) {
    const Test::StatelessReferenceRun reference =
        Test::ParseStatelessByReference(pieces, events.charset, events.markupChooses ? 1 : 0, events.scriptsAsText);
    Test::EventRun expected;
    expected.trace = reference.trace;
    expected.parseResults = events.byStream ? ResultsOfStreams(events, reference.parseResults) : reference.parseResults;
    expected.endResult = reference.endResult;
    expected.line = reference.line;
    expected.column = reference.column;
    return expected;
}

/// How many events there are before the piece `place` is fed.
std::ptrdiff_t EventsBefore(std::size_t place, const FuzzedEvents& events, const std::vector<std::string>& pieces) {
    const std::vector<std::string> fed(pieces.begin(), pieces.begin() + static_cast<std::ptrdiff_t>(place));
    const Test::EventRun run = ExpectedRun(events, fed);
    return static_cast<std::ptrdiff_t>(run.trace.size()) - 1;  // without that of the end
}

/// What the second observer sees. One that is detached before it is attached stays to the end.
Lines ExpectedSecondTrace(const FuzzedEvents& events, const std::vector<std::string>& pieces, const Lines& trace) {
    if (!events.hasSecondObserver)
        return {};
    const auto begin = trace.begin() + EventsBefore(events.attachedAt, events, pieces);
    if (events.detachedAt < events.attachedAt)
        return {begin, trace.end()};
    return {begin, trace.begin() + EventsBefore(events.detachedAt, events, pieces)};
}

std::string Describe(const Test::EventRun& run, const Lines& secondTrace) {
    std::string shown = run.Describe() + "results";
    for (const std::uint32_t result : run.parseResults)
        shown += " " + std::to_string(result);
    shown += ", of the end " + std::to_string(run.endResult) + "\n";
    for (const std::string& line : secondTrace)
        shown += "second: " + line + "\n";
    return shown;
}

std::string Describe(const FuzzedEvents& events, const std::vector<std::string>& pieces) {
    std::string shown =
        "charset " + std::to_string(events.charset) + (events.markupChooses ? ", the markup chooses" : "");
    shown += events.hasReadBefore ? ", has read before" : "";
    shown += events.scriptsAsText ? ", scripts as text" : "";
    if (events.hasSecondObserver)
        shown += ", second observer attached at " + std::to_string(events.attachedAt) + ", detached at " +
                 std::to_string(events.detachedAt);
    if (events.copying != Copying::NONE)
        shown +=
            ", copy " + std::to_string(static_cast<int>(events.copying)) + " at " + std::to_string(events.copiedAt);
    shown += events.byStream ? ", by streams:\n" : ", by buffers:\n";
    for (const std::string& piece : pieces)
        shown += "  " + Trace::Escape(piece) + "\n";
    return shown;
}

void CheckEvents(const FuzzedEvents& events) {
    const std::vector<std::string> pieces = PiecesOf(events);
    const Test::EventRun expectedRun = ExpectedRun(events, pieces);
    const std::string expected = Describe(expectedRun, ExpectedSecondTrace(events, pieces, expectedRun.trace));
    for (const std::unique_ptr<EventReading>& reading : Read(events)) {
        const std::string actual = Describe(reading->Run(), reading->SecondTrace());
        if (actual != expected)
            Expect(Describe(events, pieces) + "the library:\n" + actual + "the reference:\n" + expected);
    }
}

}  // namespace

}  // namespace Kestra::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Kestra::Fuzz::CheckEvents(Kestra::Fuzz::ReadFuzzedEvents(data, size));
    return 0;
}
