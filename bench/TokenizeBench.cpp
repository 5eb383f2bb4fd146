// Megabytes per second of tokenizing, with an observer that counts. "bytes_per_second" is over the bytes fed, so the 16-bit flavour has
// twice as many for the same characters; "characters" is the figure to compare the flavours by.

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <optional>

#include "bench/Corpus.h"
#include "html/parser/GenericParser.h"
#include "platform/MemoryInputStream.h"

namespace Kestra::Bench {

namespace {

using HTML::GenericParser;

constexpr std::uint64_t TEXT_SIZE = 4 * 1024 * 1024;
constexpr char REFERENCE_PAGES[] = "/usr/share/cppreference/doc/html";  // where the package cppreference-doc-en-html puts them

/// Counts tokens and the characters of texts and names, so that every record is looked at.
template <typename C, typename S>
class CountingObserver final : public HTML::ParserObserver<C, S> {
public:
    void OnText(HTML::TextData<C, S>* data) override {
        Count(*data->text);
    }
    void OnSQuoteString(HTML::SQuoteStringData<C, S>* data) override {
        Count(*data->text);
    }
    void OnDQuoteString(HTML::DQuoteStringData<C, S>* data) override {
        Count(*data->text);
    }
    void OnStartTag(HTML::StartTagData<C, S>* data) override {
        Count(*data->name);
        tokens += data->attributes->size();
    }
    void OnShortTag(HTML::ShortTagData<C, S>* data) override {
        Count(*data->name);
        tokens += data->attributes->size();
    }
    void OnEndTag(HTML::EndTagData<C, S>* data) override {
        Count(*data->name);
    }
    void OnJunkData(HTML::JunkData<C, S>* data) override {
        ++tokens;
        characters += data->text->size();
    }

    std::uint64_t tokens = 0;
    std::uint64_t characters = 0;

private:
    void Count(const S& text) {
        ++tokens;
        characters += text.size();
    }
};

enum class Feed {
    STREAM,
    WHOLE_BUFFER,
};

template <typename C, typename S>
void Tokenize(benchmark::State& state, const Corpus& corpus, GenericParser::DataStreamType type, Feed feed) {
    if (corpus.IsEmpty()) {
        state.SkipWithError("the pages are not installed");
        return;
    }
    std::vector<std::unique_ptr<VFS::MemoryInputStream>> streams;
    std::uint64_t bytes = 0;
    for (const std::string& document : corpus.documents) {
        streams.push_back(std::make_unique<VFS::MemoryInputStream>(document));
        bytes += document.size();
    }
    CountingObserver<C, S> observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    for (auto iteration : state) {
        static_cast<void>(iteration);
        for (std::size_t i = 0; i < streams.size(); ++i) {
            parser.StartParse(StringNS::CharSet::UTF8, type);
            if (feed == Feed::STREAM) {
                streams[i]->Seek(0);
                parser.ParseStream(streams[i].get(), false);
            } else {
                parser.ParseBuffer(corpus.documents[i].data(), corpus.documents[i].size());
            }
            parser.EndParse();
        }
    }
    benchmark::DoNotOptimize(observer.characters);
    const auto rounds = static_cast<std::int64_t>(state.iterations());
    state.SetBytesProcessed(rounds * static_cast<std::int64_t>(bytes));
    state.counters["characters"] = benchmark::Counter(static_cast<double>(rounds) * static_cast<double>(corpus.characters),
                                                      benchmark::Counter::kIsRate, benchmark::Counter::kIs1000);
    state.counters["tokens"] = benchmark::Counter(static_cast<double>(observer.tokens), benchmark::Counter::kIsRate);
}

/// Registers one corpus in each flavour; it is loaded when the first of them runs.
void RegisterCorpus(const std::string& name, std::function<Corpus()> load, Feed feed) {
    struct Loaded {
        std::optional<Corpus> narrow;
        std::optional<Corpus> wide;
    };
    const auto loaded = std::make_shared<Loaded>();
    const auto narrow = [loaded, load]() -> const Corpus& {
        if (!loaded->narrow)
            loaded->narrow = load();
        return *loaded->narrow;
    };
    const auto wide = [loaded, narrow]() -> const Corpus& {
        if (!loaded->wide)
            loaded->wide = Widen(narrow());
        return *loaded->wide;
    };
    const auto add = [&](const char* flavour, auto run) {
        benchmark::RegisterBenchmark((name + "/" + flavour).c_str(), run)->Unit(benchmark::kMillisecond);
    };
    add("8bit",
        [narrow, feed](benchmark::State& state) { Tokenize<char, std::string>(state, narrow(), GenericParser::DATA_STREAM_8BIT, feed); });
    add("8bit_wide_observer", [narrow, feed](benchmark::State& state) {
        Tokenize<WideChar, WideString>(state, narrow(), GenericParser::DATA_STREAM_8BIT, feed);
    });
    add("16bit",
        [wide, feed](benchmark::State& state) { Tokenize<WideChar, WideString>(state, wide(), GenericParser::DATA_STREAM_UTF16, feed); });
}

}  // namespace

}  // namespace Kestra::Bench

int main(int argc, char** argv) {
    using namespace Kestra::Bench;
    RegisterCorpus(
        "example_page", [] { return LoadPages(KESTRA_EXAMPLE_PAGES); }, Feed::STREAM);
    RegisterCorpus(
        "cppreference", [] { return LoadPages(REFERENCE_PAGES); }, Feed::STREAM);
    RegisterCorpus(
        "text_only", [] { return MakeText(TEXT_SIZE); }, Feed::WHOLE_BUFFER);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
