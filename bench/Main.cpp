// Megabytes per second of the parsers, of the limits and of the peers, over the same documents.
//
//     kestra-bench [--corpora=FOLDER] [--benchmark_...]        FOLDER has the lists web.txt, wiki.txt,
//                                                              large.txt and scripts.txt

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "bench/Benchmarks.h"
#include "bench/Corpora.h"
#include "bench/peers/Peers.h"

namespace Kestra::Bench {

namespace {

constexpr std::uint64_t TEXT_SIZE = 4 * 1024 * 1024;
constexpr std::string_view CORPORA_OPTION = "--corpora=";

void RegisterAll(const NamedCorpus& corpus, const std::string& list) {
    RegisterLimits(corpus);
    RegisterDocumentParser(corpus, true);
    RegisterCInterface(corpus);
    RegisterScriptModes(corpus);
    RegisterRewriter(corpus);
    RegisterPeers(corpus, list);
    // The stateless parser, and what it is compared with, over the same bytes: those that it can
    // take.
    const NamedCorpus withoutScripts(corpus.Name() + "-without-scripts",
                                     [corpus] { return WithoutScripts(corpus.Get()); });
    RegisterStatelessParser(withoutScripts);
    RegisterHtmlcxx(withoutScripts);
}

bool RegisterList(const std::string& folder, const std::string& name,
                  void (*registerRows)(const NamedCorpus&, const std::string&)) {
    const std::string list = folder + "/" + name + ".txt";
    if (!std::filesystem::exists(list)) {
        std::fprintf(stderr, "kestra-bench: there is no %s\n", list.c_str());
        return false;
    }
    registerRows(NamedCorpus(name, [list] { return LoadList(list); }), list);
    return true;
}

}  // namespace

}  // namespace Kestra::Bench

int main(int argc, char** argv) {
    using namespace Kestra::Bench;
    benchmark::Initialize(&argc, argv);
    if (argc > 1 && std::string_view(argv[1]).starts_with(CORPORA_OPTION)) {
        const std::string folder = argv[1] + CORPORA_OPTION.size();
        for (const char* name : {"web", "wiki", "large"}) {
            if (!RegisterList(folder, name, RegisterAll))
                return 2;
        }
        if (!RegisterList(folder, "scripts",
                          [](const NamedCorpus& corpus, const std::string&) { RegisterScriptModes(corpus); }))
            return 2;
        argv[1] = argv[0];
        ++argv;
        --argc;
    }
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    // The example page has junk.
    const NamedCorpus examplePage("example_page", [] { return LoadFolder(KESTRA_EXAMPLE_PAGES); });
    RegisterDocumentParser(examplePage, false);
    RegisterCInterface(examplePage);
    RegisterRewriter(examplePage);
    const NamedCorpus text("text", [] { return MakeText(TEXT_SIZE); });
    RegisterLimits(text);
    RegisterDocumentParser(text, true);
    RegisterHostileInputs();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
