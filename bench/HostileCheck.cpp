// Checks that the time for a hostile input grows with its size and no faster: an input, and one eight times as large. Linear time takes
// eight times as long, quadratic time sixty-four times, and the bound lies between. Prints every input; exit status 1 when one breaks a
// bound.
//
//     kestra-bench-hostile [NAME]        the inputs whose names begin so

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>

#include "bench/Hostile.h"

namespace Kestra::Bench {

namespace {

constexpr std::uint64_t PART = 10;       // of the size of a benchmark,
constexpr std::uint64_t MOST = 400'000;  // but no more bytes: too many for the nearest caches
constexpr std::uint64_t TIMES = 8;       // how much larger the large input is
constexpr double TIME_BOUND = 30;        // large to small, for caches, growing buffers and a busy machine
constexpr std::uint64_t READ_BOUND = 2;  // bytes read, junk included, for each byte of the input
constexpr int ATTEMPTS = 4;              // to stay within the bound of time
constexpr double MEASURED_TIME = 0.02;   // seconds, twenty ticks of the coarsest clock

/// Seconds of the processor for one reading.
double Time(const HostileInput& input, HostileKind reader, const std::string& document) {
    const std::clock_t begin = std::clock();
    double seconds = 0;
    int readings = 0;
    while (seconds < MEASURED_TIME) {
        ReadHostile(input, reader, document, false);
        ++readings;
        seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    }
    return seconds / readings;
}

bool Check(const HostileInput& input, HostileKind reader, const char* readerName) {
    const std::uint64_t size = std::min(input.size / PART, MOST);
    const std::string small = MakeHostile(input, size);
    const std::string large = MakeHostile(input, size * TIMES);
    const HostileReading reading = ReadHostile(input, reader, large, true);
    double ratio = 0;
    for (int attempt = 0; attempt < ATTEMPTS && (attempt == 0 || ratio > TIME_BOUND); ++attempt)
        ratio = Time(input, reader, large) / Time(input, reader, small);

    const bool isJunkAsExpected = reader == STATELESS || (reading.junk > 0) == ((input.kind & JUNK) != 0);
    const bool isReadOnce = reading.handedOut >= large.size() && reading.handedOut <= READ_BOUND * large.size();
    const bool isGood = reading.accepted && isJunkAsExpected && isReadOnce && ratio <= TIME_BOUND;
    std::printf("%-30s %-10s %8.0f bytes: %4.1f times the time of an eighth, %3.1f times read: %s%s%s%s\n", input.name, readerName,
                static_cast<double>(large.size()), ratio, static_cast<double>(reading.handedOut) / static_cast<double>(large.size()),
                isGood ? "good" : "BROKEN", reading.accepted ? "" : ", not taken to its end",
                isJunkAsExpected ? "" : ", other junk than expected", isReadOnce ? "" : ", read too often");
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
        ++checked;
        broken += Check(input, DOCUMENT, "document") ? 0 : 1;
        if ((input.kind & STATELESS) != 0)
            broken += Check(input, STATELESS, "stateless") ? 0 : 1;
    }
    std::printf("%d inputs, %d broken\n", checked, broken);
    return checked != 0 && broken == 0 ? 0 : 1;
}
