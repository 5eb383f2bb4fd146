// The hostile inputs at a size and at twice the size: "hostile/openers/document/n" and ".../2n".

#include <string>

#include "bench/Benchmarks.h"
#include "bench/Hostile.h"

namespace Kestra::Bench {

namespace {

void RegisterOne(const HostileInput& input, HostileKind reader, const char* readerName, unsigned times) {
    const auto run = [&input, reader, times](benchmark::State& state) {
        const std::string document = MakeHostile(input, input.size * times);
        for (auto iteration : state) {
            static_cast<void>(iteration);
            const HostileReading reading = ReadHostile(input, reader, document, false);
            if (!reading.accepted) {
                state.SkipWithError("the input was not taken to its end");
                return;
            }
        }
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
    };
    const std::string name = std::string("hostile/") + input.name + "/" + readerName + (times == 1 ? "/n" : "/2n");
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

}  // namespace

void RegisterHostileInputs() {
    for (const HostileInput& input : HostileInputs()) {
        for (const unsigned times : {1U, 2U}) {
            RegisterOne(input, DOCUMENT, "document", times);
            if ((input.kind & STATELESS) != 0)
                RegisterOne(input, STATELESS, "stateless", times);
        }
    }
}

}  // namespace Kestra::Bench
