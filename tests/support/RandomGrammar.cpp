#include "tests/support/RandomGrammar.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Kestra::Test {

Dice::Dice(std::uint64_t seed) : engine(seed) {}

std::size_t Dice::Below(std::size_t bound) {
    return static_cast<std::size_t>(engine() % bound);
}

std::size_t Dice::Between(std::size_t least, std::size_t most) {
    return least + Below(most - least + 1);
}

bool Dice::OneIn(std::size_t bound) {
    return Below(bound) == 0;
}

char Dice::Byte() {
    return static_cast<char>(static_cast<unsigned char>(Below(256)));
}

/// Reads the text of one rule.
class RandomGrammar::Reader {
public:
    Reader(RandomGrammar* targetGrammar, std::string_view ruleText) : grammar(targetGrammar), text(ruleText) {}

    /// Up to the closing brace or the end.
    Group ReadGroup() {
        Group group;
        do {
            group.alternatives.push_back(ReadAlternative());
            group.weight += group.alternatives.back().weight;
        } while (Skip("|"));
        return group;
    }

    bool IsAtEnd() const {
        return text.empty();
    }

private:
    static constexpr std::string_view DIGITS = "0123456789";

    bool Skip(std::string_view expected) {
        const bool isThere = text.starts_with(expected);
        text.remove_prefix(isThere ? expected.size() : 0);
        return isThere;
    }

    std::string_view SkipAll(std::string_view characters) {
        const std::string_view run = text.substr(0, text.find_first_not_of(characters));
        text.remove_prefix(run.size());
        return run;
    }

    std::size_t ReadNumber() {
        return std::stoul(std::string(SkipAll(DIGITS)));
    }

    Alternative ReadAlternative() {
        Alternative alternative;
        const std::size_t digits = text.find_first_not_of(DIGITS);
        if (digits != 0 && digits != std::string_view::npos && text[digits] == ':') {
            alternative.weight = ReadNumber();
            text.remove_prefix(1);
        }
        Part part;
        while (!text.empty() && text.front() != '|' && text.front() != '}') {
            if (Skip("{")) {
                ReadReference(&part);
                alternative.parts.push_back(std::exchange(part, Part()));
            } else {
                Skip("`");
                part.text += text.front();
                text.remove_prefix(1);
            }
        }
        alternative.parts.push_back(part);
        return alternative;
    }

    void ReadReference(Part* part) {
        part->least = part->most = 1;
        const std::string_view before = text;
        const std::string_view name = SkipAll("abcdefghijklmnopqrstuvwxyz-0123456789");
        if (Skip("*")) {
            part->least = ReadNumber();
            if (!Skip("-"))
                throw std::invalid_argument("no range in " + std::string(before));
            part->most = ReadNumber();
        }
        if (text.starts_with('}')) {
            const auto rule = grammar->indexes.find(name);
            if (rule == grammar->indexes.end())
                throw std::invalid_argument("no rule " + std::string(name));
            part->group = rule->second;
        } else {
            text = before;
            Group group = ReadGroup();
            if (group.alternatives.size() == 1)
                throw std::invalid_argument("no choice in " + std::string(before));
            part->group = grammar->groups.size();
            grammar->groups.push_back(std::move(group));
        }
        if (!Skip("}"))
            throw std::invalid_argument("no closing brace in " + std::string(before));
    }

    RandomGrammar* grammar;
    std::string_view text;
};

RandomGrammar::RandomGrammar(std::initializer_list<Rule> rules, std::size_t longestRun)
    : indexes{{"byte", 0}}, groups(rules.size() + 1), longest(longestRun) {
    for (std::size_t i = 0; i < rules.size(); ++i)
        indexes[std::string(rules.begin()[i].name)] = i + 1;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        const std::string_view text = rules.begin()[i].text;
        if (text.starts_with('#')) {
            groups[i + 1].run = text.substr(1);
            continue;
        }
        Reader reader(this, text);
        Group group = reader.ReadGroup();
        groups[i + 1] = std::move(group);
        if (!reader.IsAtEnd())
            throw std::invalid_argument("a closing brace too many in " + std::string(text));
    }
}

void RandomGrammar::Append(std::string_view rule, Dice* dice, std::string* text) const {
    const auto found = indexes.find(rule);
    if (found == indexes.end())
        throw std::invalid_argument("no rule " + std::string(rule));
    AppendGroup(found->second, dice, text);
}

std::string RandomGrammar::Make(std::string_view rule, Dice* dice) const {
    std::string text;
    Append(rule, dice, &text);
    return text;
}

void RandomGrammar::AppendGroup(std::size_t index, Dice* dice, std::string* text) const {
    const Group& group = groups[index];
    if (index == 0) {
        *text += dice->Byte();
    } else if (!group.run.empty()) {
        AppendRun(group.run, dice, text);
    } else {
        std::size_t choice = dice->Below(group.weight);
        const Alternative* alternative = group.alternatives.data();
        for (; choice >= alternative->weight; ++alternative)
            choice -= alternative->weight;
        for (const Part& part : alternative->parts) {
            *text += part.text;
            const std::size_t count = part.least == part.most ? part.least : dice->Between(part.least, part.most);
            for (std::size_t i = 0; i < count; ++i)
                AppendGroup(part.group, dice, text);
        }
    }
}

void RandomGrammar::AppendRun(std::string_view characters, Dice* dice, std::string* text) const {
    const std::size_t choice = dice->Below(256);
    const std::size_t most = choice == 0 ? longest : std::min<std::size_t>(longest, choice < 16 ? 400 : 40);
    for (std::size_t length = dice->Between(1, most); length > 0; --length)
        *text += characters[dice->Below(characters.size())];
}

}  // namespace Kestra::Test
