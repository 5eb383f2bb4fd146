#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace Kestra::Test {

/// Random choices that are the same on every platform for the same seed.
class Dice {
public:
    explicit Dice(std::uint64_t seed);

    /// A number from 0 to `bound` - 1.
    std::size_t Below(std::size_t bound);

    /// A number from `least` to `most`.
    std::size_t Between(std::size_t least, std::size_t most);

    /// True once in `bound` times.
    bool OneIn(std::size_t bound);

    char Byte();

    template <std::size_t N>
    std::string_view Pick(const std::string_view (&choices)[N]) {
        return choices[Below(N)];
    }

private:
    std::mt19937_64 engine;
};

/// Makes text at random by named rules.
///
///     a|b|2:c         one of the alternatives; the last one twice as often as the others
///     {name}          what the rule of this name makes; "byte" is a rule that makes any byte
///     {name*2-5}      that two to five times, each time anew
///     {a|b{name}}     one of the alternatives, in the middle of another one
///     `{              a brace: a backtick makes the next character one of the text
///     #abc            the text of a whole rule: a run of these characters, of random length
class RandomGrammar {
public:
    struct Rule {
        std::string_view name;
        std::string_view text;
    };

    /// @param longestRun  most characters of a run. Most runs have less than 40, one in sixteen up
    ///                    to 400, one in 256 up to the longest.
    explicit RandomGrammar(std::initializer_list<Rule> rules, std::size_t longestRun = 1);

    /// Appends what a rule makes.
    void Append(std::string_view rule, Dice* dice, std::string* text) const;

    std::string Make(std::string_view rule, Dice* dice) const;

private:
    /// A text, then a group several times.
    struct Part {
        std::string text;
        std::size_t group = 0;
        std::size_t least = 0;
        std::size_t most = 0;
    };

    struct Alternative {
        std::size_t weight = 1;
        std::vector<Part> parts;
    };

    struct Group {
        std::vector<Alternative> alternatives;
        std::size_t weight = 0;
        std::string_view run;
    };

    class Reader;

    void AppendGroup(std::size_t index, Dice* dice, std::string* text) const;
    void AppendRun(std::string_view characters, Dice* dice, std::string* text) const;

    std::map<std::string, std::size_t, std::less<>> indexes;
    std::vector<Group> groups;  // any byte, then the rules, then the groups in the middle of them
    std::size_t longest;
};

}  // namespace Kestra::Test
