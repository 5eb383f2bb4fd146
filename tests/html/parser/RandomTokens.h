#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace Kestra::Test {

/// Makes markup of every kind, one token after another, with random content and of random length;
/// the same for the same seed.
///
/// Most lengths are below 40 characters, one in sixteen below 400, one in 256 up to the longest,
/// none above it. Everything is ASCII.
class RandomTokens {
public:
    RandomTokens(std::uint32_t seed, std::size_t longestRun) : engine(seed), longest(longestRun) {}

    /// The next token or, for a script or a style sheet, the next element. Nothing in it is junk.
    std::string Next();

    /// A construct that is given up, and is junk together with the text after it.
    std::string NextJunk();

    /// Tokens of which each has the same meaning for the stateless parser.
    std::string NextPlain();

    /// Text without markup. @param size  in characters
    std::string Text(std::size_t size);

private:
    std::size_t Below(std::size_t limit);
    std::size_t Length();
    std::string Pick(std::string_view characters, std::size_t size);
    std::string Word();
    std::string Space();
    std::string OptionalSpace();
    std::string TagName();
    std::string Phrase();
    std::string Attribute();
    std::string Attributes();
    std::string StartTag();
    std::string EndTag();
    std::string Comment();
    std::string Section();
    std::string Declaration();
    std::string Instruction();
    std::string ServerTag();
    std::string Script();
    std::string ScriptItem();
    std::string Style();
    std::string StyleItem();

    std::mt19937 engine;
    std::size_t longest;
};

}  // namespace Kestra::Test
