#include "bench/Benchmarks.h"

#include <utility>

namespace Kestra::Bench {

void SetRoundSize(benchmark::State& state, const Corpus& corpus) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(corpus.bytes));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(corpus.characters));
    if (corpus.leftOut != 0)
        state.counters["left_out"] = static_cast<double>(corpus.leftOut);
}

void Register(const NamedCorpus& corpus, const std::string& name, std::function<Round()> prepare) {
    const auto run = [corpus, prepare = std::move(prepare)](benchmark::State& state) {
        const Corpus& documents = corpus.Get();
        const Round round = prepare();
        std::uint64_t counted = 0;
        for (auto iteration : state) {
            static_cast<void>(iteration);
            counted = round(documents);
        }
        if (counted == 0)
            state.SkipWithError("nothing was read, or it was not accepted");
        SetRoundSize(state, documents);
    };
    benchmark::RegisterBenchmark((corpus.Name() + "/" + name).c_str(), run)->Unit(benchmark::kMillisecond);
}

void Register(const NamedCorpus& corpus, const std::string& name, Count count) {
    Register(corpus, name, [count]() -> Round {
        return [count](const Corpus& documents) {
            std::uint64_t counted = 0;
            for (const std::string& document : documents.documents)
                counted += count(document);
            return counted;
        };
    });
}

}  // namespace Kestra::Bench
