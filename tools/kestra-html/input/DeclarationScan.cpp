#include "tools/kestra-html/input/DeclarationScan.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace Kestra::Tool {

namespace {

constexpr std::string_view META = "meta";
constexpr std::string_view CHARSET = "charset";

constexpr char ToLower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
}

constexpr bool IsWordByte(char byte) {
    return (ToLower(byte) >= 'a' && ToLower(byte) <= 'z') || (byte >= '0' && byte <= '9');
}

/// For each byte, by how much a search for a word may advance when this is the byte under its last
/// letter: Horspool's algorithm.
using Steps = std::array<unsigned char, 256>;

constexpr Steps MakeSteps(std::string_view word) {
    Steps steps{};
    for (std::size_t byte = 0; byte < steps.size(); ++byte) {
        std::size_t step = word.size();
        for (std::size_t i = 0; i + 1 < word.size(); ++i) {
            if (word[i] == ToLower(static_cast<char>(byte)))
                step = word.size() - 1 - i;
        }
        steps[byte] = static_cast<unsigned char>(step);
    }
    return steps;
}

constexpr Steps META_STEPS = MakeSteps(META);
constexpr Steps CHARSET_STEPS = MakeSteps(CHARSET);

bool IsWord(const char* text, std::string_view word) {
    return std::equal(word.begin(), word.end(), text, [](char letter, char byte) { return ToLower(byte) == letter; });
}

/// @param found  called with the offset of each place of the word
template <typename Found>
void Search(std::string_view text, std::string_view word, const Steps& steps, Found found) {
    std::size_t end = word.size();
    while (end <= text.size()) {
        const char last = text[end - 1];
        if (ToLower(last) == word.back() && IsWord(text.data() + end - word.size(), word))
            found(end - word.size());
        end += steps[static_cast<unsigned char>(last)];
    }
}

}  // namespace

/// What spans two calls is looked for in a copy of the bytes around the cut.
void DeclarationScan::Take(std::string_view bytes) {
    if (bytes.empty())
        return;
    std::string around(tail, static_cast<std::size_t>(tailSize));
    around.append(bytes.substr(0, TAIL_SIZE));
    Look(around, taken - tailSize);
    Look(bytes, taken);
    taken += bytes.size();
    std::string end = bytes.size() >= TAIL_SIZE ? std::string() : std::string(tail, static_cast<std::size_t>(tailSize));
    end.append(bytes.substr(bytes.size() - std::min<std::size_t>(bytes.size(), TAIL_SIZE)));
    end.erase(0, end.size() - std::min<std::size_t>(end.size(), TAIL_SIZE));
    tailSize = end.copy(tail, sizeof(tail));
}

/// A byte that is not known, before or after the text, counts as one beside a word: it is in the
/// next call's text, or was in that of the call before.
void DeclarationScan::Look(std::string_view text, std::uint64_t begin) {
    Search(text, META, META_STEPS, [&](std::size_t at) {
        const std::size_t end = at + META.size();
        const bool isPart = (at > 0 && IsWordByte(text[at - 1])) || (end < text.size() && IsWordByte(text[end]));
        if (!isPart)
            lastMeta = std::max(lastMeta, static_cast<std::int64_t>(begin + at));
    });
    Search(text, CHARSET, CHARSET_STEPS,
           [&](std::size_t at) { lastCharset = std::max(lastCharset, static_cast<std::int64_t>(begin + at)); });
}

std::int64_t DeclarationScan::GetLast() const {
    return std::min(lastMeta, lastCharset);
}

}  // namespace Kestra::Tool
