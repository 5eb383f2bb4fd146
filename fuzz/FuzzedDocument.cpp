#include "fuzz/FuzzedDocument.h"

#include <algorithm>
#include <iterator>

namespace Kestra::Fuzz {

namespace {

using StringNS::CharSet;

// Unknown: `meta` tags are looked at. The others: every byte stands for itself, or escape runs are protected.
constexpr CharSet::Code CHARSETS[] = {CharSet::WINDOWS_1252, CharSet::UNKNOWN, CharSet::ISO_2022_JP, CharSet::ISO_2022_KR, CharSet::UTF8};

constexpr std::size_t HEADER_SIZE = 2;
constexpr std::size_t MOST_PIECES = 64;
constexpr std::size_t LONGEST_PIECE = 255;

}  // namespace

FuzzedDocument ReadFuzzedDocument(const std::uint8_t* data, std::size_t size) {
    FuzzedDocument document;
    if (size < HEADER_SIZE)
        return document;
    document.charset = CHARSETS[data[0] % std::size(CHARSETS)];
    const std::size_t pieces = std::min<std::size_t>(data[1] % MOST_PIECES, size - HEADER_SIZE);
    const std::size_t begin = HEADER_SIZE + pieces;
    document.bytes = std::string_view(reinterpret_cast<const char*>(data) + begin, size - begin);
    std::size_t cut = 0;
    for (std::size_t i = 0; i < pieces; ++i) {
        const std::size_t length = data[HEADER_SIZE + i];
        cut += length;
        if (length > 0 && cut < document.bytes.size())
            document.cuts.push_back(cut);
    }
    return document;
}

std::string WriteFuzzedDocument(const FuzzedDocument& document) {
    std::string input;
    const CharSet::Code* const charset = std::find(std::begin(CHARSETS), std::end(CHARSETS), document.charset);
    input += static_cast<char>(charset == std::end(CHARSETS) ? 0 : charset - std::begin(CHARSETS));
    const std::size_t pieces = std::min(document.cuts.size(), MOST_PIECES - 1);
    input += static_cast<char>(pieces);
    for (std::size_t i = 0; i < pieces; ++i)
        input += static_cast<char>(std::min(document.cuts[i] - (i == 0 ? 0 : document.cuts[i - 1]), LONGEST_PIECE));
    input += document.bytes;
    return input;
}

}  // namespace Kestra::Fuzz
