#include <cstdio>
#include <string>

#include "bench/peers/Peers.h"

namespace Kestra::Bench {

namespace {

/// Runs a script once.
/// @return the seconds of its last round; 0 when it failed
double RunScript(const char* script, const char* modules, const std::string& list) {
    const std::string command = std::string("node '") + script + "' '" + modules + "' '" + list + "'";
    FILE* const output = popen(command.c_str(), "r");
    if (output == nullptr)
        return 0;
    double seconds = 0;
    const bool printed = std::fscanf(output, "%lf", &seconds) == 1;
    return pclose(output) == 0 && printed ? seconds : 0;
}

void RegisterScript(const NamedCorpus& corpus, const char* name, const char* script, const char* modules,
                    const std::string& list) {
    const auto run = [=](benchmark::State& state) {
        for (auto iteration : state) {
            static_cast<void>(iteration);
            const double seconds = RunScript(script, modules, list);
            if (seconds == 0) {
                state.SkipWithError("the script of Node.js failed");
                return;
            }
            state.SetIterationTime(seconds);
        }
        SetRoundSize(state, corpus.Get());
    };
    benchmark::RegisterBenchmark((corpus.Name() + "/" + name).c_str(), run)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->UseManualTime();
}

}  // namespace

void RegisterHtmlParser2(const NamedCorpus& corpus, const std::string& list) {
    RegisterScript(corpus, "htmlparser2/tokenizer", KESTRA_HTMLPARSER2_SCRIPT, KESTRA_HTMLPARSER2_MODULES, list);
}

void RegisterParse5RewritingStream(const NamedCorpus& corpus, const std::string& list) {
    RegisterScript(corpus, "parse5/rewriting-stream", KESTRA_PARSE5_SCRIPT, KESTRA_PARSE5_MODULES, list);
}

}  // namespace Kestra::Bench
