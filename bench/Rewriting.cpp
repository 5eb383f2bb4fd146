// The rewriter, without edits and with one in every start tag.

#include <memory>
#include <string>

#include "bench/Benchmarks.h"
#include "bench/CountingObservers.h"
#include "bench/PieceStream.h"
#include "html/rewrite/Rewriter.h"

namespace Kestra::Bench {

namespace {

using HTML::GenericParser;
using HTML::Rewriter;

/// Counts the bytes that are written.
class CountingOutput final : public HTML::ParserObserverOutputHandler {
public:
    void Write(const void*, std::uint64_t byteCount, bool) override {
        bytes += byteCount;
    }

    std::uint64_t bytes = 0;
};

/// Sets an attribute of every start tag and short tag.
class AttributeSetter final : public HTML::ParserObserver<char, std::string> {
public:
    void OnStartTag(HTML::StartTagData<char, std::string>*) override {
        Set();
    }
    void OnShortTag(HTML::ShortTagData<char, std::string>*) override {
        Set();
    }

    Rewriter* rewriter = nullptr;
    std::uint64_t tokens = 0;  // with the attribute

private:
    void Set() {
        tokens += rewriter->GetToken().SetAttribute("data-x", "y") == HTML::REWRITE_OK ? 1 : 0;
    }
};

template <typename Observer>
struct Copier {
    Copier() : rewriter(&output) {
        if constexpr (std::is_same_v<Observer, AttributeSetter>)
            observer.rewriter = &rewriter;
        rewriter.SetObserver(&observer);
    }

    /// @return how many tokens were counted; 0 when an answer was wrong, or the output is smaller
    ///         than the input
    std::uint64_t Copy(const Corpus& corpus) {
        observer.tokens = 0;
        for (const std::string& document : corpus.documents) {
            output.bytes = 0;
            rewriter.StartParse(StringNS::CharSet::UTF8, GenericParser::DATA_STREAM_8BIT);
            PieceStream stream(document, PIECE);
            if (rewriter.ParseStream(&stream, false) != HTML::PARSER_OK || rewriter.EndParse() != HTML::PARSER_OK ||
                output.bytes < document.size())
                return 0;
        }
        return observer.tokens;
    }

    static constexpr std::uint64_t PIECE = 16384;

    CountingOutput output;
    Observer observer;
    Rewriter rewriter;
};

template <typename Observer>
Round PrepareCopier() {
    const auto copier = std::make_shared<Copier<Observer>>();
    return [copier](const Corpus& corpus) { return copier->Copy(corpus); };
}

}  // namespace

void RegisterRewriter(const NamedCorpus& corpus) {
    Register(corpus, "rewriter/without-edits/stream/16K", PrepareCopier<CountingObserver<char, std::string>>);
    Register(corpus, "rewriter/attribute-of-every-tag/stream/16K", PrepareCopier<AttributeSetter>);
}

}  // namespace Kestra::Bench
