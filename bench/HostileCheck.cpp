// Checks that the time for a hostile input grows with its size and no faster: an input, and one
// eight times as large. Linear time takes eight times as long, n^1.5 twenty-three times, quadratic
// time sixty-four times; the bound is twice linear. What grows faster than its input does so at
// every size, whereas a large input may lie in a slower cache than a small one, most of all on a
// busy machine: an input is broken when the next one, eight times as large again, breaks the bound
// too. Each input is read from a stream, and as one whole buffer where that can be. Prints every
// one; exit status 1 when one breaks a bound.
//
//     kestra-bench-hostile [NAME]        the inputs whose names begin so

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string>
#include <string_view>
#include <thread>

#include "bench/Hostile.h"

namespace Kestra::Bench {

namespace {

constexpr std::uint64_t PART = 10;                // of the size of a benchmark,
constexpr std::uint64_t MOST = 400'000;           // but no more bytes: too many for the nearest caches
constexpr std::uint64_t TIMES = 8;                // how much larger the large input is
constexpr double TIME_BOUND = 2.0 * TIMES;        // large to small, for caches and growing buffers
constexpr std::uint64_t READ_BOUND = 2;           // bytes read, junk included, for each byte of the input
constexpr std::chrono::seconds LONGEST_PAUSE{1};  // for whatever disturbs
constexpr int REPETITIONS = 3;                    // of the small input, of which the shortest counts
constexpr int ATTEMPTS = 6;                       // to stay within the bound of time,
constexpr int FIRST_ATTEMPTS = 2;                 // these without a pause
constexpr double MEASURED_TIME = 0.01;            // seconds, ten ticks of the coarsest clock
// Seconds for a byte. A reading moves each one up to eight times; what is faster than this runs at
// the speed of the cache that it is in.
constexpr double CACHE_TIME = 0.3e-9;

/// Seconds of the processor for one reading.
double Time(const HostileInput& input, HostileKind reader, HostileFeed feed, const std::string& document) {
    const std::clock_t begin = std::clock();
    double seconds = 0;
    int readings = 0;
    while (seconds < MEASURED_TIME) {
        ReadHostile(input, reader, feed, document, false);
        ++readings;
        seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    }
    return seconds / readings;
}

/// How many times as long the large input takes, by the shortest times of both: other programs can
/// only make a reading slower. Nothing counts as faster than the caches. One reading of the large
/// input within the bound is enough; the small one is read more often, because a slow reading of it
/// would hide that the large one is slow.
double TimeRatio(const HostileInput& input, HostileKind reader, HostileFeed feed, const std::string& small,
                 const std::string& large) {
    const double leastOfSmall = CACHE_TIME * static_cast<double>(small.size());
    const double leastOfLarge = CACHE_TIME * static_cast<double>(large.size());
    double shortestOfSmall = std::numeric_limits<double>::infinity();
    double shortestOfLarge = shortestOfSmall;
    for (int attempt = 1;; ++attempt) {
        for (int repetition = 0; repetition < REPETITIONS; ++repetition)
            shortestOfSmall = std::min(shortestOfSmall, Time(input, reader, feed, small));
        shortestOfLarge = std::min(shortestOfLarge, Time(input, reader, feed, large));
        const double ratio = std::max(shortestOfLarge, leastOfLarge) / std::max(shortestOfSmall, leastOfSmall);
        if (ratio <= TIME_BOUND || attempt == ATTEMPTS)
            return ratio;
        if (attempt > FIRST_ATTEMPTS)
            std::this_thread::sleep_for(LONGEST_PAUSE * (attempt - FIRST_ATTEMPTS) / (ATTEMPTS - FIRST_ATTEMPTS));
    }
}

bool Check(const HostileInput& input, HostileKind reader, HostileFeed feed) {
    const std::uint64_t size = std::min(input.size / PART, MOST);
    const std::string small = MakeHostile(input, size);
    const std::string large = MakeHostile(input, size * TIMES);
    const HostileReading reading = ReadHostile(input, reader, feed, large, true);
    double ratio = TimeRatio(input, reader, feed, small, large);
    if (ratio > TIME_BOUND) {
        std::printf("%-30s %4.1f times the time of an eighth: once more, eight times as large\n", input.name, ratio);
        ratio = TimeRatio(input, reader, feed, large, MakeHostile(input, size * TIMES * TIMES));
    }

    const bool isJunkExpected = reader == DOCUMENT && feed == HostileFeed::STREAM && (input.kind & JUNK) != 0;
    const bool isJunkAsExpected = (reading.junk > 0) == isJunkExpected;
    const bool isReadOnce = reading.handedOut >= large.size() && reading.handedOut <= READ_BOUND * large.size();
    const bool isGood = reading.accepted && isJunkAsExpected && isReadOnce && ratio <= TIME_BOUND;
    std::printf("%-30s %-9s %-6s %8.0f bytes: %4.1f times the time of an eighth, %3.1f times read: %s%s%s%s%s\n",
                input.name,
                reader == DOCUMENT    ? "document"
                : reader == STATELESS ? "stateless"
                                      : "rewriter",
                feed == HostileFeed::STREAM ? "stream" : "buffer", static_cast<double>(large.size()), ratio,
                static_cast<double>(reading.handedOut) / static_cast<double>(large.size()), isGood ? "good" : "BROKEN",
                reading.accepted ? "" : ", not taken to its end", isJunkAsExpected ? "" : ", other junk than expected",
                isReadOnce ? "" : ", read too often", ratio <= TIME_BOUND ? "" : ", more than linear");
    return isGood;
}

}  // namespace

}  // namespace Kestra::Bench

int main(int argc, char** argv) {
    using namespace Kestra::Bench;
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    int checked = 0;
    int broken = 0;
    for (const HostileInput& input : HostileInputs()) {
        if (!std::string_view(input.name).starts_with(wanted))
            continue;
        for (const HostileKind reader : {DOCUMENT, STATELESS, REWRITER}) {
            for (const HostileFeed feed : {HostileFeed::STREAM, HostileFeed::BUFFER}) {
                if ((input.kind & reader) == 0 || !CanBeFedAs(feed, input, reader))
                    continue;
                ++checked;
                broken += Check(input, reader, feed) ? 0 : 1;
            }
        }
    }
    std::printf("%d readings, %d broken\n", checked, broken);
    return checked != 0 && broken == 0 ? 0 : 1;
}
