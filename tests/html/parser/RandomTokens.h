#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/support/RandomGrammar.h"

namespace Kestra::Test {

/// Makes markup of every kind, one token after another, with random content and of random length;
/// the same for the same seed.
///
/// Most lengths are below 40 characters, one in sixteen below 400, one in 256 up to the longest,
/// none above it. Everything is ASCII.
class RandomTokens {
public:
    RandomTokens(std::uint64_t seed, std::size_t longestRun);

    /// The next token or, for a script or a style sheet, the next element. Nothing in it is junk.
    std::string Next();

    /// A construct that is given up, and is junk together with the text after it.
    std::string NextJunk();

    /// Tokens of which each has the same meaning for the stateless parser.
    std::string NextPlain();

    /// Text without markup.
    /// @param size  in characters
    std::string Text(std::size_t size);

private:
    Dice dice;
    RandomGrammar grammar;
};

}  // namespace Kestra::Test
