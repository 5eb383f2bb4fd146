#include "tools/kestra-html/commandline/SuggestedWord.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace Kestra::Tool {

namespace {

/// How many letters must be added, left out or changed to make one word of the other; two that have
/// changed places count as one.
std::size_t CountChanges(std::string_view from, std::string_view to) {
    std::vector<std::size_t> before;  // the row before the last one
    std::vector<std::size_t> last(to.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::vector<std::size_t> row(to.size() + 1, i);
        for (std::size_t k = 1; k <= to.size(); ++k) {
            const std::size_t changed = last[k - 1] + (from[i - 1] == to[k - 1] ? 0 : 1);
            row[k] = std::min({last[k] + 1, row[k - 1] + 1, changed});
            if (i > 1 && k > 1 && from[i - 1] == to[k - 2] && from[i - 2] == to[k - 1])
                row[k] = std::min(row[k], before[k - 2] + 1);
        }
        before = std::move(last);
        last = std::move(row);
    }
    return last.back();
}

}  // namespace

std::string SuggestWord(std::string_view word, const std::vector<std::string>& known) {
    constexpr std::size_t LONGEST = 64;
    if (word.size() > LONGEST)
        return "";
    const std::string* nearest = nullptr;
    std::size_t fewest = std::clamp<std::size_t>(word.size() / 2, 1, 2) + 1;
    for (const std::string& candidate : known) {
        // The beginning of a word means the word.
        const bool isBeginning = word.size() > 3 && candidate.starts_with(word);
        const std::size_t changes = isBeginning ? 1 : CountChanges(word, candidate);
        if (changes < fewest) {
            fewest = changes;
            nearest = &candidate;
        }
    }
    return nearest == nullptr ? "" : ", did you mean " + *nearest + "?";
}

}  // namespace Kestra::Tool
