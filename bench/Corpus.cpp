#include "bench/Corpus.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

namespace Kestra::Bench {

Corpus LoadPages(const std::string& folder) {
    std::error_code error;
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::recursive_directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->is_regular_file() && entry->path().extension() == ".html")
            paths.push_back(entry->path());
    }
    std::sort(paths.begin(), paths.end());
    Corpus corpus;
    for (const std::filesystem::path& path : paths) {
        std::ifstream file(path, std::ios::binary);
        corpus.documents.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        corpus.characters += corpus.documents.back().size();
    }
    return corpus;
}

Corpus MakeText(std::uint64_t size) {
    static constexpr char LINE[] = "The harbour lay quiet under a thin mist, and nobody on the quay spoke above a whisper.\n";
    Corpus corpus;
    std::string text(static_cast<std::size_t>(size), ' ');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = LINE[i % (sizeof(LINE) - 1)];
    corpus.documents.push_back(std::move(text));
    corpus.characters = size;
    return corpus;
}

Corpus WithoutScripts(const Corpus& corpus) {
    static constexpr std::string_view BEGIN = "<script";
    static constexpr std::string_view END = "</script>";
    Corpus stripped;
    for (const std::string& document : corpus.documents) {
        std::string rest;
        std::size_t copied = 0;
        while (copied < document.size()) {
            const std::size_t begin = std::min(document.find(BEGIN, copied), document.size());
            rest.append(document, copied, begin - copied);
            const std::size_t end = document.find(END, begin);
            copied = end == std::string::npos ? document.size() : end + END.size();
        }
        stripped.characters += rest.size();
        stripped.documents.push_back(std::move(rest));
    }
    return stripped;
}

Corpus Widen(const Corpus& corpus) {
    Corpus wide;
    wide.characters = corpus.characters;
    for (const std::string& document : corpus.documents) {
        std::string units;
        units.reserve(document.size() * 2);
        for (const char byte : document) {
            units += byte;
            units += '\0';
        }
        wide.documents.push_back(std::move(units));
    }
    return wide;
}

}  // namespace Kestra::Bench
