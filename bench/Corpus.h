#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Kestra::Bench {

/// The documents that a benchmark parses, in memory.
struct Corpus {
    std::vector<std::string> documents;
    std::uint64_t characters = 0;  ///< of all documents together

    bool IsEmpty() const {
        return documents.empty();
    }
};

/// Every .html file below a folder, in the order of their paths, as bytes; empty when there is no such folder.
Corpus LoadPages(const std::string& folder);

/// One document without any markup: lines of words, `size` bytes long.
Corpus MakeText(std::uint64_t size);

/// The same documents without their scripts, from "<script" to "</script>".
Corpus WithoutScripts(const Corpus& corpus);

/// The same documents as UTF-16, low byte first, one unit for each byte.
Corpus Widen(const Corpus& corpus);

}  // namespace Kestra::Bench
