#include "tests/support/Splits.h"

#include <gtest/gtest.h>

namespace Kestra::Test {

namespace {

/// Failures of the running test so far.
int CountFailures() {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    if (test == nullptr)
        return 0;
    int failures = 0;
    for (int i = 0; i < test->result()->total_part_count(); ++i) {
        if (test->result()->GetTestPartResult(i).failed())
            ++failures;
    }
    return failures;
}

}  // namespace

void ForEverySplit(std::size_t length, const std::function<void(const Cuts&)>& run) {
    const int before = CountFailures();
    const auto passes = [&](const Cuts& cuts) {
        SCOPED_TRACE("cut at " + Describe(cuts));
        run(cuts);
        return CountFailures() == before;
    };
    if (!passes({}))
        return;
    for (std::size_t cut = 1; cut < length; ++cut) {
        if (!passes({cut}))
            return;
    }
    if (length <= MAX_LENGTH_FOR_PAIRS) {
        for (std::size_t first = 1; first < length; ++first) {
            for (std::size_t second = first + 1; second < length; ++second) {
                if (!passes({first, second}))
                    return;
            }
        }
    }
    if (length > 3)
        passes(CutsEvery(1, length));
}

void ForEverySplit(std::string_view input, const std::function<void(const Cuts&)>& run) {
    ForEverySplit(input.size(), run);
}

void ForEverySplit(WideStringView input, const std::function<void(const Cuts&)>& run) {
    ForEverySplit(input.size(), run);
}

void ForEachUntilFailure(std::size_t count, const std::function<void(std::size_t)>& run) {
    const int before = CountFailures();
    for (std::size_t i = 0; i < count && CountFailures() == before; ++i)
        run(i);
}

Cuts CutsEvery(std::size_t size, std::size_t length) {
    Cuts cuts;
    for (std::size_t cut = size; cut < length; cut += size)
        cuts.push_back(cut);
    return cuts;
}

Cuts Scaled(const Cuts& cuts, std::size_t factor) {
    Cuts scaled;
    for (const std::size_t cut : cuts)
        scaled.push_back(cut * factor);
    return scaled;
}

std::vector<std::pair<std::size_t, std::size_t>> PiecesOf(const Cuts& cuts, std::size_t length) {
    std::vector<std::pair<std::size_t, std::size_t>> pieces;
    std::size_t begin = 0;
    for (const std::size_t cut : cuts) {
        pieces.emplace_back(begin, cut);
        begin = cut;
    }
    pieces.emplace_back(begin, length);
    return pieces;
}

std::string Describe(const Cuts& cuts) {
    if (cuts.empty())
        return "no place";
    std::string text;
    for (const std::size_t cut : cuts) {
        if (text.size() > 120)
            return text + " and so on";
        text += (text.empty() ? "" : ", ") + std::to_string(cut);
    }
    return text;
}

}  // namespace Kestra::Test
