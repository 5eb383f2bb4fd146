// The hostile inputs at a size and at twice the size: "hostile/openers/document/n" and ".../2n"; as
// one buffer each, "hostile/openers/document-buffer/n" and ".../2n".

#include <algorithm>
#include <string>
#include <vector>

#include "bench/Benchmarks.h"
#include "bench/Hostile.h"

namespace Kestra::Bench {

namespace {

/// Fills the caches with something else: no part of an input is there beforehand, whatever its
/// size.
void EmptyCaches() {
    static std::vector<char> other(std::size_t{64} << 20);  // bytes, more than caches hold
    static char fill = 0;
    std::fill(other.begin(), other.end(), ++fill);
    benchmark::DoNotOptimize(other.data());
    benchmark::ClobberMemory();
}

void RegisterOne(const HostileInput& input, HostileKind reader, HostileFeed feed, unsigned times) {
    const auto run = [&input, reader, feed, times](benchmark::State& state) {
        const std::string document = MakeHostile(input, input.size * times);
        for (auto iteration : state) {
            static_cast<void>(iteration);
            state.PauseTiming();
            EmptyCaches();
            state.ResumeTiming();
            const HostileReading reading = ReadHostile(input, reader, feed, document, false);
            if (!reading.accepted) {
                state.SkipWithError("the input was not taken to its end");
                return;
            }
        }
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
    };
    const std::string name = std::string("hostile/") + input.name + (reader == DOCUMENT ? "/document" : "/stateless") +
                             (feed == HostileFeed::BUFFER ? "-buffer" : "") + (times == 1 ? "/n" : "/2n");
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

}  // namespace

void RegisterHostileInputs() {
    for (const HostileInput& input : HostileInputs()) {
        for (const HostileKind reader : {DOCUMENT, STATELESS}) {
            for (const HostileFeed feed : {HostileFeed::STREAM, HostileFeed::BUFFER}) {
                if ((input.kind & reader) == 0 || !CanBeFedAs(feed, input, reader))
                    continue;
                RegisterOne(input, reader, feed, 1);
                RegisterOne(input, reader, feed, 2);
            }
        }
    }
}

}  // namespace Kestra::Bench
