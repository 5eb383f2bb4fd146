#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/CharSet.h"

namespace Kestra::Base {

struct LanguageModel;
struct LetterPage;

/// How badly a text fits a code page.
struct PageScore {
    StringNS::CharSet::Code code = 0;
    double bits = 0;  ///< what it takes to write the text beyond ASCII down so; the least is the best
};

/// Reads a text by the code pages whose languages are known and says what each costs: the bytes
/// are likely in the language of one of them and unlikely in all others.
class TextScores {
public:
    /// Takes linear time.
    ///
    /// @param newText  without markup; borrowed for as long as this lives
    explicit TextScores(std::string_view newText);

    /// The best score of each page, in no order.
    const std::vector<PageScore>& GetScores() const {
        return scores;
    }

    /// Bytes from 128 up.
    std::uint64_t CountHighBytes() const {
        return highBytes;
    }

    /// Pairs of bytes that follow each other, one of them from 128 up, each counted once.
    std::uint64_t CountDistinctPairs() const {
        return firstAscii;
    }

    /// Whether 1252 reads all bytes from 128 up as signs, none as a letter and none within a word.
    bool HasSignsOnly() const;

    /// How much of the pairs is not the same again, 1 for all: of a pair that comes often, each
    /// doubling counts as one more.
    double FindFreshShare() const;

    /// Whether two pages read this text the same.
    bool ReadTheSame(StringNS::CharSet::Code one, StringNS::CharSet::Code other) const;

private:
    struct Pair {
        unsigned char first;
        unsigned char second;
        std::uint32_t count;  ///< 4,294,967,295 for all above
    };

    void CountPairs();
    void CountSurroundings();
    double ScoreAscii(const LanguageModel& model) const;
    void ScoreLanguages();
    double ScoreLanguage(const LanguageModel& model, const LetterPage& page) const;
    void ScoreDoubleBytes();
    void ScoreUtf8();
    void AddScore(StringNS::CharSet::Code code, double bits);

    const std::string_view text;
    std::vector<Pair> pairs;     ///< those with a byte from 128 up, then those with a letter of ASCII
    std::size_t firstAscii = 0;  ///< where these begin
    std::uint64_t highBytes = 0;
    double asciiTotal = 0;
    bool present[128] = {};
    std::uint64_t isolated[128] = {};  ///< those of each byte that have no other beside them, but a letter or digit
    std::uint64_t within[128] = {};    ///< those of each byte that have letters of ASCII on both sides
    std::uint64_t ending[128] = {};    ///< those of each byte that have a letter of ASCII before, none after
    std::vector<PageScore> scores;
};

}  // namespace Kestra::Base
