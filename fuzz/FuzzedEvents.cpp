#include "fuzz/FuzzedEvents.h"

#include <algorithm>
#include <iterator>

#include "fuzz/FuzzedCuts.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "tests/reference/DocumentFeeding.h"

namespace Kestra::Fuzz {

namespace {

using StringNS::CharSet;

// The last one has no converter.
constexpr CharSet::Code CHARSETS[] = {
    CharSet::UNKNOWN, CharSet::WINDOWS_1252, CharSet::UTF8, 1251, 932, CharSet::UTF16_LE, 12345};

constexpr unsigned MARKUP_CHOOSES = 1 << 0;
constexpr unsigned BY_STREAM = 1 << 1;
constexpr unsigned COPYING_SHIFT = 2;
constexpr unsigned COPYING_MASK = 3;
constexpr unsigned SECOND_OBSERVER = 1 << 4;
constexpr unsigned READ_BEFORE = 1 << 5;
constexpr unsigned SCRIPTS_AS_TEXT = 1 << 6;

constexpr std::size_t HEADER_SIZE = 5;

char ToByte(std::size_t place) {
    return static_cast<char>(std::min<std::size_t>(place, 255));
}

}  // namespace

FuzzedEvents ReadFuzzedEvents(const std::uint8_t* data, std::size_t size) {
    FuzzedEvents events;
    if (size < HEADER_SIZE)
        return events;
    events.charset = CHARSETS[data[0] % std::size(CHARSETS)];
    const unsigned bits = data[1];
    events.markupChooses = (bits & MARKUP_CHOOSES) != 0;
    events.byStream = (bits & BY_STREAM) != 0;
    events.copying = static_cast<Copying>(bits >> COPYING_SHIFT & COPYING_MASK);
    events.hasSecondObserver = (bits & SECOND_OBSERVER) != 0;
    events.hasReadBefore = (bits & READ_BEFORE) != 0;
    events.scriptsAsText = (bits & SCRIPTS_AS_TEXT) != 0;
    const FuzzedCuts fuzzed = ReadFuzzedCuts(data + HEADER_SIZE, size - HEADER_SIZE);
    events.bytes = fuzzed.bytes;
    events.cuts = fuzzed.cuts;
    if (events.byStream)
        events.cuts = Test::CutsAsRead(fuzzed.cuts, fuzzed.bytes.size(), HTML::StatelessHTMLParser::BUFFER_SIZE);
    const std::size_t places = events.cuts.size() + 2;  // one before each piece, one after the last
    events.copiedAt = data[2] % places;
    events.attachedAt = data[3] % places;
    events.detachedAt = data[4] % places;
    return events;
}

std::string WriteFuzzedEvents(const FuzzedEvents& events) {
    const CharSet::Code* const charset = std::find(std::begin(CHARSETS), std::end(CHARSETS), events.charset);
    unsigned bits = static_cast<unsigned>(events.copying) << COPYING_SHIFT;
    bits |= events.markupChooses ? MARKUP_CHOOSES : 0;
    bits |= events.byStream ? BY_STREAM : 0;
    bits |= events.hasSecondObserver ? SECOND_OBSERVER : 0;
    bits |= events.hasReadBefore ? READ_BEFORE : 0;
    bits |= events.scriptsAsText ? SCRIPTS_AS_TEXT : 0;
    std::string input;
    input += static_cast<char>(charset == std::end(CHARSETS) ? 0 : charset - std::begin(CHARSETS));
    input += static_cast<char>(bits);
    input += ToByte(events.copiedAt);
    input += ToByte(events.attachedAt);
    input += ToByte(events.detachedAt);
    return input + WriteFuzzedCuts({events.cuts, events.bytes});
}

}  // namespace Kestra::Fuzz
