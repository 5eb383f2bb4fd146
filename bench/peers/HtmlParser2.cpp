#include <cstdio>
#include <string>

#include "bench/peers/Peers.h"

namespace Kestra::Bench {

namespace {

/// Runs the script once. @return the seconds of its last round; 0 when it failed
double RunScript(const std::string& list) {
    const std::string command = std::string("node '") + KESTRA_HTMLPARSER2_SCRIPT + "' '" + KESTRA_HTMLPARSER2_MODULES + "' '" + list + "'";
    FILE* const output = popen(command.c_str(), "r");
    if (output == nullptr)
        return 0;
    double seconds = 0;
    const bool printed = std::fscanf(output, "%lf", &seconds) == 1;
    return pclose(output) == 0 && printed ? seconds : 0;
}

}  // namespace

void RegisterHtmlParser2(const NamedCorpus& corpus, const std::string& list) {
    const auto run = [corpus, list](benchmark::State& state) {
        for (auto iteration : state) {
            static_cast<void>(iteration);
            const double seconds = RunScript(list);
            if (seconds == 0) {
                state.SkipWithError("the script of Node.js failed");
                return;
            }
            state.SetIterationTime(seconds);
        }
        SetRoundSize(state, corpus.Get());
    };
    benchmark::RegisterBenchmark((corpus.Name() + "/htmlparser2/tokenizer").c_str(), run)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->UseManualTime();
}

}  // namespace Kestra::Bench
