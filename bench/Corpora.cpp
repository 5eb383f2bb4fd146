#include "bench/Corpora.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include "html/parser/GenericParser.h"
#include "html/stateless/StatelessHTMLParser.h"

namespace Kestra::Bench {

namespace {

std::string LoadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool IsWithoutJunk(const std::string& document) {
    HTML::GenericParser parser;
    parser.StartParse(StringNS::CharSet::UTF8, HTML::GenericParser::DATA_STREAM_8BIT);
    return parser.ParseBuffer(document.data(), document.size()) == HTML::PARSER_OK &&
           parser.EndParse() == HTML::PARSER_OK;
}

bool IsAcceptedByStatelessParser(const std::string& document) {
    HTML::StatelessHTMLParser parser;
    parser.StartParse(StringNS::CharSet::UTF8);
    return parser.ParseBuffer(document.data(), document.size()) == HTML::STATELESS_OK;
}

std::string RemoveScripts(const std::string& document) {
    static constexpr std::string_view BEGIN = "<script";
    static constexpr std::string_view END = "</script>";
    std::string rest;
    std::size_t copied = 0;
    while (copied < document.size()) {
        const std::size_t begin = std::min(document.find(BEGIN, copied), document.size());
        rest.append(document, copied, begin - copied);
        const std::size_t end = document.find(END, begin);
        copied = end == std::string::npos ? document.size() : end + END.size();
    }
    return rest;
}

}  // namespace

void Corpus::Add(std::string document, std::uint64_t bytesPerCharacter) {
    bytes += document.size();
    characters += document.size() / bytesPerCharacter;
    documents.push_back(std::move(document));
}

NamedCorpus::NamedCorpus(std::string corpusName, std::function<Corpus()> load)
    : name(std::move(corpusName)), loading(std::make_shared<Loading>(Loading{std::move(load), {}})) {}

const Corpus& NamedCorpus::Get() const {
    if (!loading->corpus)
        loading->corpus = loading->load();
    return *loading->corpus;
}

Corpus LoadList(const std::string& list) {
    const std::filesystem::path folder = std::filesystem::path(list).parent_path();
    Corpus corpus;
    std::ifstream lines(list);
    for (std::string line; std::getline(lines, line);)
        corpus.Add(LoadFile(folder / line));
    return corpus;
}

Corpus LoadFolder(const std::string& folder) {
    std::error_code error;
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file() && entry->path().extension() == ".html")
            paths.push_back(entry->path());
    }
    std::sort(paths.begin(), paths.end());
    Corpus corpus;
    for (const std::filesystem::path& path : paths)
        corpus.Add(LoadFile(path));
    return corpus;
}

Corpus MakeText(std::uint64_t size) {
    static constexpr std::string_view LINE =
        "The harbour lay quiet under a thin mist, and nobody on the quay spoke above a whisper.\n";
    std::string text(static_cast<std::size_t>(size), ' ');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = LINE[i % LINE.size()];
    Corpus corpus;
    corpus.Add(std::move(text));
    return corpus;
}

Corpus Widen(const Corpus& corpus) {
    Corpus wide;
    wide.leftOut = corpus.leftOut;
    for (const std::string& document : corpus.documents) {
        std::string units(document.size() * 2, '\0');
        for (std::size_t i = 0; i < document.size(); ++i)
            units[2 * i] = document[i];
        wide.Add(std::move(units), 2);
    }
    return wide;
}

Corpus WithoutJunk(const Corpus& corpus) {
    Corpus accepted;
    for (const std::string& document : corpus.documents) {
        if (IsWithoutJunk(document))
            accepted.Add(document);
        else
            ++accepted.leftOut;
    }
    return accepted;
}

Corpus WithoutScripts(const Corpus& corpus) {
    Corpus accepted;
    for (const std::string& document : corpus.documents) {
        std::string rest = RemoveScripts(document);
        if (IsAcceptedByStatelessParser(rest))
            accepted.Add(std::move(rest));
        else
            ++accepted.leftOut;
    }
    return accepted;
}

}  // namespace Kestra::Bench
