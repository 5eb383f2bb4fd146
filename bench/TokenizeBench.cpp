// Megabytes per second of tokenizing, and of the stateless parser, with an observer that counts. "bytes_per_second" is over the bytes fed,
// so the 16-bit flavour has twice as many for the same characters; "characters" is the figure to compare the flavours by.

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <optional>

#include "bench/Corpus.h"
#include "html/parser/GenericParser.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "platform/MemoryInputStream.h"

namespace Kestra::Bench {

namespace {

using HTML::GenericParser;
using HTML::StatelessHTMLParser;

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

/// The same for the events of the stateless parser.
class CountingEventObserver final : public HTML::StatelessHTMLObserver {
public:
    void OnStartTag(const WideChar* name, const Attributes* attributes) override {
        Count(name);
        events += attributes->size();
    }
    void OnEndTag(const WideChar* name) override {
        Count(name);
    }
    void OnScript(const Attributes* attributes, const WideChar* body) override {
        Count(body);
        events += attributes->size();
    }
    void OnEntityTag(const WideChar* name, const Tokens* tokens) override {
        Count(name);
        events += tokens->size();
    }
    void OnExternTag(const WideChar* name, const Attributes* attributes) override {
        Count(name);
        events += attributes->size();
    }
    void OnComment(const WideChar* text) override {
        Count(text);
    }
    void OnText(const WideChar* text) override {
        Count(text);
    }
    void OnStyle(const Attributes* attributes, const WideChar* body) override {
        Count(body);
        events += attributes->size();
    }

    std::uint64_t events = 0;
    std::uint64_t characters = 0;

private:
    void Count(WideStringView text) {
        ++events;
        characters += text.size();
    }
};

enum class Feed {
    STREAM,
    WHOLE_BUFFER,
};

/// The documents of a corpus as streams in memory, which are read again in each round.
class Documents {
public:
    explicit Documents(const Corpus& documentCorpus) : corpus(&documentCorpus) {
        for (const std::string& document : corpus->documents)
            streams.push_back(std::make_unique<VFS::MemoryInputStream>(document));
    }

    std::size_t Count() const {
        return streams.size();
    }

    template <typename Parser>
    std::uint32_t Parse(Parser* parser, std::size_t index, Feed feed) const {
        if (feed == Feed::WHOLE_BUFFER)
            return parser->ParseBuffer(corpus->documents[index].data(), corpus->documents[index].size());
        streams[index]->Seek(0);
        return parser->ParseStream(streams[index].get(), false);
    }

private:
    const Corpus* corpus;
    std::vector<std::unique_ptr<VFS::MemoryInputStream>> streams;
};

bool IsMissing(benchmark::State& state, const Corpus& corpus) {
    if (corpus.IsEmpty())
        state.SkipWithError("the pages are not installed");
    return corpus.IsEmpty();
}

void Report(benchmark::State& state, const Corpus& corpus, std::uint64_t tokens) {
    std::uint64_t bytes = 0;
    for (const std::string& document : corpus.documents)
        bytes += document.size();
    const auto rounds = static_cast<std::int64_t>(state.iterations());
    state.SetBytesProcessed(rounds * static_cast<std::int64_t>(bytes));
    state.counters["characters"] = benchmark::Counter(static_cast<double>(rounds) * static_cast<double>(corpus.characters),
                                                      benchmark::Counter::kIsRate, benchmark::Counter::kIs1000);
    state.counters["tokens"] = benchmark::Counter(static_cast<double>(tokens), benchmark::Counter::kIsRate);
}

template <typename C, typename S>
void Tokenize(benchmark::State& state, const Corpus& corpus, GenericParser::DataStreamType type, Feed feed) {
    if (IsMissing(state, corpus))
        return;
    const Documents documents(corpus);
    CountingObserver<C, S> observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    for (auto iteration : state) {
        static_cast<void>(iteration);
        for (std::size_t i = 0; i < documents.Count(); ++i) {
            parser.StartParse(StringNS::CharSet::UTF8, type);
            documents.Parse(&parser, i, feed);
            parser.EndParse();
        }
    }
    benchmark::DoNotOptimize(observer.characters);
    Report(state, corpus, observer.tokens);
}

/// The documents that the stateless parser takes to their end: it stops at the first construct that is malformed.
Corpus WellFormed(const Corpus& corpus) {
    Corpus accepted;
    for (const std::string& document : corpus.documents) {
        StatelessHTMLParser parser;
        parser.StartParse(StringNS::CharSet::UTF8);
        const std::uint32_t result = parser.ParseBuffer(document.data(), document.size());
        if (result != HTML::STATELESS_OK && result != HTML::STATELESS_NEED_MORE_DATA)
            continue;
        accepted.documents.push_back(document);
        accepted.characters += document.size();
    }
    return accepted;
}

/// `left_out` counts the documents that are not well-formed.
void ReportEvents(benchmark::State& state, const Corpus& corpus, Feed feed) {
    if (IsMissing(state, corpus))
        return;
    const Corpus wellFormed = WellFormed(corpus);
    const Documents documents(wellFormed);
    CountingEventObserver observer;
    StatelessHTMLParser parser;
    parser.Attach(&observer);
    for (auto iteration : state) {
        static_cast<void>(iteration);
        for (std::size_t i = 0; i < documents.Count(); ++i) {
            parser.StartParse(StringNS::CharSet::UTF8);
            documents.Parse(&parser, i, feed);
            parser.EndParse();
        }
    }
    benchmark::DoNotOptimize(observer.characters);
    Report(state, wellFormed, observer.events);
    state.counters["left_out"] = static_cast<double>(corpus.documents.size() - wellFormed.documents.size());
}

/// Registers one corpus in each flavour, and for the stateless parser; it is loaded when the first of them runs.
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
    add("stateless", [narrow, feed](benchmark::State& state) { ReportEvents(state, narrow(), feed); });
}

}  // namespace

}  // namespace Kestra::Bench

int main(int argc, char** argv) {
    using namespace Kestra::Bench;
    RegisterCorpus(
        "example_page", [] { return LoadPages(KESTRA_EXAMPLE_PAGES); }, Feed::STREAM);
    RegisterCorpus(
        "cppreference", [] { return LoadPages(REFERENCE_PAGES); }, Feed::STREAM);
    // A script of these pages takes most of the page along when the stateless parser reads it: a quote in it is never closed.
    RegisterCorpus(
        "cppreference_without_scripts", [] { return WithoutScripts(LoadPages(REFERENCE_PAGES)); }, Feed::STREAM);
    RegisterCorpus(
        "text_only", [] { return MakeText(TEXT_SIZE); }, Feed::WHOLE_BUFFER);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
