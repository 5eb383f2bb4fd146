#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Kestra::Bench {

/// Documents in memory.
struct Corpus {
    std::vector<std::string> documents;
    std::uint64_t bytes = 0;       ///< of all documents together
    std::uint64_t characters = 0;  ///< the same, in units of one or two bytes
    std::uint64_t leftOut = 0;     ///< documents of the corpus it was made of that are not in it

    void Add(std::string document, std::uint64_t bytesPerCharacter = 1);
};

/// A corpus with a name, loaded when it is first asked for, and kept.
class NamedCorpus {
public:
    NamedCorpus(std::string corpusName, std::function<Corpus()> load);

    const std::string& Name() const {
        return name;
    }
    const Corpus& Get() const;

private:
    struct Loading {
        std::function<Corpus()> load;
        std::optional<Corpus> corpus;
    };

    std::string name;
    std::shared_ptr<Loading> loading;  // shared by copies
};

/// The files that a list names, one path a line, relative to the folder of the list.
Corpus LoadList(const std::string& list);

/// Every .html file below a folder, in the order of their paths.
Corpus LoadFolder(const std::string& folder);

/// One document without any markup: lines of words, `size` bytes long.
Corpus MakeText(std::uint64_t size);

/// The same documents as UTF-16, low byte first, one unit for each byte.
Corpus Widen(const Corpus& corpus);

/// The documents that the document parser takes to their end without a stream: none of them has
/// anything that becomes junk.
Corpus WithoutJunk(const Corpus& corpus);

/// The documents without their scripts, from "<script" to "</script>", as far as the stateless
/// parser takes them to their end. It stops at malformed markup, and a quote in a script that is
/// never closed would take the rest of a page along.
Corpus WithoutScripts(const Corpus& corpus);

}  // namespace Kestra::Bench
