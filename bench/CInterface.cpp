// The document parser by the C interface, with the work of the counting observers.

#include <kestra/html.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "bench/Benchmarks.h"

namespace Kestra::Bench {

namespace {

constexpr std::uint32_t UTF8 = 65001;
constexpr std::size_t PIECE = 16384;  // bytes

/// What `CountingObserver` counts, as far as a host of C asks for it.
struct Counts {
    std::uint64_t tokens = 0;
    std::uint64_t attributes = 0;
    std::uint64_t bytes = 0;
};

std::uint32_t Count(void* user, const kestra_html_token*, const kestra_html_summary* summary) {
    auto* const counts = static_cast<Counts*>(user);
    ++counts->tokens;
    counts->bytes += summary->name.size + summary->text.size;
    counts->attributes += summary->attribute_count;
    return 0;
}

/// The same for a host that asks.
std::uint32_t AskAndCount(void* user, const kestra_html_token* token) {
    kestra_html_summary summary;
    summary.size = sizeof summary;
    return kestra_html_token_summary(token, &summary) == KESTRA_HTML_OK ? Count(user, token, &summary) : 1;
}

/// A document whose bytes come by pieces.
struct Source {
    const std::string* document;
    std::size_t next = 0;

    static std::uint32_t Read(void* user, void* buffer, std::size_t size, std::size_t* bytesRead) {
        auto* const source = static_cast<Source*>(user);
        *bytesRead = std::min({size, PIECE, source->document->size() - source->next});
        std::memcpy(buffer, source->document->data() + source->next, *bytesRead);
        source->next += *bytesRead;
        return 0;
    }

    static std::uint32_t Seek(void* user, std::uint64_t position) {
        static_cast<Source*>(user)->next = static_cast<std::size_t>(position);
        return 0;
    }
};

class CReader {
public:
    CReader(std::uint32_t flags, bool asks) {
        kestra_html_options options{};
        options.size = sizeof options;
        options.flags = flags;
        options.user = &counts;
        if (asks)
            options.on_token = &AskAndCount;
        else
            options.on_summary = &Count;
        kestra_html_parser_create(&options, &parser);
    }
    CReader(const CReader&) = delete;
    CReader& operator=(const CReader&) = delete;
    ~CReader() {
        kestra_html_parser_destroy(parser);
    }

    std::uint64_t Read(const Corpus& corpus) {
        counts.tokens = 0;
        for (const std::string& document : corpus.documents) {
            Source source{&document};
            kestra_html_stream stream{};
            stream.size = sizeof stream;
            stream.user = &source;
            stream.read = &Source::Read;
            stream.seek = &Source::Seek;
            kestra_html_parser_start(parser, UTF8, KESTRA_HTML_DATA_8BIT);
            if (kestra_html_parser_feed_stream(parser, &stream) != KESTRA_HTML_OK ||
                kestra_html_parser_end(parser) != KESTRA_HTML_OK)
                return 0;
        }
        return counts.tokens;
    }

private:
    Counts counts;
    kestra_html_parser* parser = nullptr;
};

}  // namespace

void RegisterCInterface(const NamedCorpus& corpus) {
    const auto prepare = [](std::uint32_t flags, bool asks) -> Round {
        const auto reader = std::make_shared<CReader>(flags, asks);
        return [reader](const Corpus& read) { return reader->Read(read); };
    };
    Register(corpus, "c/8bit/stream/16K", [prepare] { return prepare(KESTRA_HTML_WORDS_IN_VALUES, false); });
    Register(corpus, "c/8bit-asked/stream/16K", [prepare] { return prepare(KESTRA_HTML_WORDS_IN_VALUES, true); });
    Register(corpus, "c/8bit-words-apart/stream/16K", [prepare] { return prepare(0, false); });
}

}  // namespace Kestra::Bench
