#include "fuzz/FuzzedDocument.h"

#include <algorithm>
#include <iterator>

#include "fuzz/FuzzedCuts.h"

namespace Kestra::Fuzz {

namespace {

using StringNS::CharSet;

// For the unknown one `meta` tags are examined. The others are without escape runs, or with some
// that are protected.
constexpr CharSet::Code CHARSETS[] = {CharSet::WINDOWS_1252, CharSet::UNKNOWN, CharSet::ISO_2022_JP,
                                      CharSet::ISO_2022_KR, CharSet::UTF8};

}  // namespace

FuzzedDocument ReadFuzzedDocument(const std::uint8_t* data, std::size_t size) {
    FuzzedDocument document;
    if (size == 0)
        return document;
    document.charset = CHARSETS[data[0] % std::size(CHARSETS)];
    const FuzzedCuts fuzzed = ReadFuzzedCuts(data + 1, size - 1);
    document.bytes = fuzzed.bytes;
    std::size_t begin = 0;
    for (const std::size_t cut : fuzzed.cuts) {
        if (cut > begin && cut < document.bytes.size())
            document.cuts.push_back(cut);
        begin = cut;
    }
    return document;
}

std::string WriteFuzzedDocument(const FuzzedDocument& document) {
    const CharSet::Code* const charset = std::find(std::begin(CHARSETS), std::end(CHARSETS), document.charset);
    std::string input;
    input += static_cast<char>(charset == std::end(CHARSETS) ? 0 : charset - std::begin(CHARSETS));
    return input + WriteFuzzedCuts({document.cuts, document.bytes});
}

}  // namespace Kestra::Fuzz
