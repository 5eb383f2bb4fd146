#include "fuzz/FuzzedCuts.h"

#include <algorithm>

namespace Kestra::Fuzz {

namespace {

constexpr std::size_t MOST_CUTS = 63;
constexpr std::size_t LONGEST_PIECE = 255;

}  // namespace

FuzzedCuts ReadFuzzedCuts(const std::uint8_t* data, std::size_t size) {
    FuzzedCuts fuzzed;
    if (size == 0)
        return fuzzed;
    const std::size_t begin = 1 + std::min<std::size_t>(data[0] % (MOST_CUTS + 1), size - 1);
    fuzzed.bytes = std::string_view(reinterpret_cast<const char*>(data) + begin, size - begin);
    std::size_t cut = 0;
    for (std::size_t i = 1; i < begin; ++i) {
        cut += data[i];
        if (cut <= fuzzed.bytes.size())
            fuzzed.cuts.push_back(cut);
    }
    return fuzzed;
}

std::string WriteFuzzedCuts(const FuzzedCuts& fuzzed) {
    std::string input;
    const std::size_t count = std::min(fuzzed.cuts.size(), MOST_CUTS);
    input += static_cast<char>(count);
    for (std::size_t i = 0; i < count; ++i)
        input += static_cast<char>(std::min(fuzzed.cuts[i] - (i == 0 ? 0 : fuzzed.cuts[i - 1]), LONGEST_PIECE));
    input += fuzzed.bytes;
    return input;
}

}  // namespace Kestra::Fuzz
