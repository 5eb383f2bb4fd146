#include "html/rewrite/Selectors.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <utility>

#include "html/rewrite/MakeRoom.h"
#include "platform/Characters.h"

namespace Kestra::HTML {

namespace {

/// Longer values are freed when their tag is done with.
constexpr std::size_t KEPT_VALUE_SIZE = 1024;

/// The length of the longest border of each begin of `value`: of what is both its begin and its
/// end, and shorter than itself.
std::vector<std::size_t> FindBorders(std::string_view value) {
    std::vector<std::size_t> borders(value.size(), 0);
    for (std::size_t i = 1, length = 0; i < value.size(); ++i) {
        while (length > 0 && value[i] != value[length])
            length = borders[length - 1];
        if (value[i] == value[length])
            ++length;
        borders[i] = length;
    }
    return borders;
}

bool HasBit(const std::vector<SelectorSet::Word>& words, std::size_t bit) {
    return (words[bit / SelectorSet::WORD_BITS] >> bit % SelectorSet::WORD_BITS & 1) != 0;
}

void SetBit(std::size_t bit, std::vector<SelectorSet::Word>* words) {
    (*words)[bit / SelectorSet::WORD_BITS] |= SelectorSet::Word{1} << bit % SelectorSet::WORD_BITS;
}

/// Calls a function with each set bit, in ascending order.
template <typename Function>
void ForEachBit(SelectorSet::Word word, std::size_t firstBit, Function function) {
    for (; word != 0; word &= word - 1)
        function(firstBit + static_cast<std::size_t>(std::countr_zero(word)));
}

/// Calls a function with each word of a list, until it returns true.
/// @return whether it did
template <typename Function>
bool AnyWord(std::string_view list, Function function) {
    const char* const end = list.data() + list.size();
    for (const char* place = list.data(); place != end;) {
        const char* const begin = place;
        place = std::find_if(place, end, IsSelectorSpace);
        if (place != begin && function(std::string_view(begin, static_cast<std::size_t>(place - begin))))
            return true;
        if (place != end)
            ++place;
    }
    return false;
}

}  // namespace

bool SelectorSet::Add(std::string_view text, std::string* message) {
    std::vector<SelectorCompound> read;
    if (!ReadSelector(text, &read, message))
        return false;

    std::vector<Condition> newConditions;
    std::vector<Compound> newCompounds;
    for (SelectorCompound& compound : read) {
        const std::size_t begin = conditions.size() + newConditions.size();
        // A name that gets a number and is not used after all does no harm.
        for (SelectorCondition& condition : compound.conditions)
            newConditions.push_back(Compile(&condition));
        const std::size_t type = compound.hasType ? Number(compound.type, &types)->second : NONE;
        newCompounds.push_back({type, NONE, begin, begin + compound.conditions.size()});
    }
    newCompounds.back().selector = count;

    const std::size_t bit = compounds.size();
    const std::size_t words = (bit + newCompounds.size() + WORD_BITS - 1) / WORD_BITS;
    MakeRoom(newConditions.size(), &conditions);
    MakeRoom(newCompounds.size(), &compounds);
    for (std::vector<Word>* const mask : {&first, &child, &descendant, &last})
        MakeRoom(words - mask->size(), mask);

    // Nothing fails from here on.
    for (std::vector<Word>* const mask : {&first, &child, &descendant, &last})
        mask->resize(words);
    std::move(newConditions.begin(), newConditions.end(), std::back_inserter(conditions));
    compounds.insert(compounds.end(), newCompounds.begin(), newCompounds.end());
    for (std::size_t i = 0; i < read.size(); ++i)
        SetBit(bit + i, i == 0 ? &first : read[i].isChild ? &child : &descendant);
    SetBit(compounds.size() - 1, &last);
    ++count;
    return true;
}

void SelectorSet::Match(std::string_view name, const TagAttributes& attributes, std::span<const Word> parent,
                        std::span<const Word> ancestors, Scratch* scratch, std::span<Word> matched) const {
    if (count == 0)
        return;
    PrepareScratch(scratch);
    const auto type = types.find(name);
    const std::size_t typeNumber = type == types.end() ? NONE : type->second;
    Word parentCarry = 0;
    Word ancestorCarry = 0;
    for (std::size_t i = 0; i < last.size(); ++i) {
        const Word candidates = first[i] | (child[i] & (parent[i] << 1 | parentCarry)) |
                                (descendant[i] & (ancestors[i] << 1 | ancestorCarry));
        parentCarry = parent[i] >> (WORD_BITS - 1);
        ancestorCarry = ancestors[i] >> (WORD_BITS - 1);
        Word result = 0;
        ForEachBit(candidates, i * WORD_BITS, [&](std::size_t bit) {
            if (Matches(compounds[bit], typeNumber, attributes, scratch))
                result |= Word{1} << bit % WORD_BITS;
        });
        matched[i] = result;
    }
    scratch->Clear();
}

std::size_t SelectorSet::CountSelectors(std::span<const Word> set) const {
    std::size_t selectors = 0;
    for (std::size_t i = 0; i < set.size(); ++i)
        selectors += static_cast<std::size_t>(std::popcount(set[i] & last[i]));
    return selectors;
}

void SelectorSet::GetSelectors(std::span<const Word> set, std::vector<std::size_t>* selectors) const {
    selectors->reserve(CountSelectors(set));
    selectors->clear();
    for (std::size_t i = 0; i < set.size(); ++i)
        ForEachBit(set[i] & last[i], i * WORD_BITS,
                   [&](std::size_t bit) { selectors->push_back(compounds[bit].selector); });
}

/// Gives the next number to a name that has none.
SelectorSet::Numbers::const_iterator SelectorSet::Number(std::string_view name, Numbers* numbers) {
    const auto known = numbers->find(name);
    return known != numbers->end() ? known : numbers->emplace(name, numbers->size()).first;
}

/// Compiles a condition, and gives numbers to its names.
SelectorSet::Condition SelectorSet::Compile(SelectorCondition* read) {
    const bool isClass = read->kind == SelectorCondition::CLASS;
    const auto attribute = Number(isClass ? std::string_view("class") : read->name, &attributeNumbers);
    const std::size_t classNumber = isClass ? Number(read->value, &classNumbers)->second : NONE;
    Condition condition{read->kind, read->ignoresCase, attribute->second, classNumber, attribute->first, {}, {}};
    if (read->kind == SelectorCondition::CONTAINS)
        condition.borders = FindBorders(read->value);
    if (!isClass)
        condition.value = std::move(read->value);
    return condition;
}

void SelectorSet::Scratch::Clear() noexcept {
    for (const std::size_t number : asked) {
        Attribute& attribute = attributes[number];
        attribute.state = UNKNOWN;
        attribute.value.clear();
        if (attribute.value.capacity() > KEPT_VALUE_SIZE)
            std::string().swap(attribute.value);
    }
    asked.clear();
    hasClasses = false;
}

/// Resizes the lists of answers about one tag.
void SelectorSet::PrepareScratch(Scratch* scratch) const {
    scratch->Clear();
    if (scratch->attributes.size() < attributeNumbers.size()) {
        scratch->asked.reserve(attributeNumbers.size());
        scratch->attributes.resize(attributeNumbers.size());
    }
}

bool SelectorSet::Matches(const Compound& compound, std::size_t type, const TagAttributes& tag,
                          Scratch* scratch) const {
    if (compound.type != NONE && compound.type != type)
        return false;
    for (std::size_t i = compound.begin; i < compound.end; ++i) {
        if (!Matches(conditions[i], tag, scratch))
            return false;
    }
    return true;
}

bool SelectorSet::Matches(const Condition& condition, const TagAttributes& tag, Scratch* scratch) const {
    if (condition.kind == SelectorCondition::NEVER)
        return false;
    if (condition.kind == SelectorCondition::CLASS)
        return HasClass(condition, tag, scratch);
    const bool asksForValue = condition.kind != SelectorCondition::PRESENT;
    if (!HasAttribute(condition, asksForValue, tag, scratch))
        return false;
    return !asksForValue || MatchesValue(scratch->attributes[condition.attribute].value, condition);
}

/// Whether the tag has the attribute of a condition; with its value, when that is asked for.
bool SelectorSet::HasAttribute(const Condition& condition, bool asksForValue, const TagAttributes& tag,
                               Scratch* scratch) {
    Scratch::Attribute& attribute = scratch->attributes[condition.attribute];
    if (attribute.state == Scratch::UNKNOWN || (asksForValue && attribute.state == Scratch::PRESENT)) {
        if (attribute.state == Scratch::UNKNOWN)
            scratch->asked.push_back(condition.attribute);
        const bool isFound = tag.Find(condition.name, asksForValue ? &attribute.value : nullptr);
        attribute.state = !isFound ? Scratch::ABSENT : asksForValue ? Scratch::HAS_VALUE : Scratch::PRESENT;
    }
    return attribute.state != Scratch::ABSENT;
}

/// Whether the tag has a class. All its classes are looked up together, at the first question.
bool SelectorSet::HasClass(const Condition& condition, const TagAttributes& tag, Scratch* scratch) const {
    if (!scratch->hasClasses) {
        scratch->classes.assign((classNumbers.size() + WORD_BITS - 1) / WORD_BITS, 0);
        if (HasAttribute(condition, true, tag, scratch)) {
            AnyWord(scratch->attributes[condition.attribute].value, [&](std::string_view word) {
                const auto found = classNumbers.find(word);
                if (found != classNumbers.end())
                    SetBit(found->second, &scratch->classes);
                return false;
            });
        }
        scratch->hasClasses = true;
    }
    return HasBit(scratch->classes, condition.classNumber);
}

bool SelectorSet::MatchesValue(std::string_view value, const Condition& condition) {
    const std::string_view expected = condition.value;
    switch (condition.kind) {
        case SelectorCondition::NEVER:
        case SelectorCondition::CLASS:
        case SelectorCondition::PRESENT:
            break;
        case SelectorCondition::EQUAL:
            return Equals(value, condition);
        case SelectorCondition::INCLUDES:
            return AnyWord(value, [&](std::string_view word) { return Equals(word, condition); });
        case SelectorCondition::DASH_MATCH:
            return Equals(value.substr(0, expected.size()), condition) &&
                   (value.size() == expected.size() || value[expected.size()] == '-');
        case SelectorCondition::BEGINS:
            return Equals(value.substr(0, expected.size()), condition);
        case SelectorCondition::ENDS:
            return value.size() >= expected.size() && Equals(value.substr(value.size() - expected.size()), condition);
        case SelectorCondition::CONTAINS:
            return Contains(value, condition);
    }
    return false;
}

bool SelectorSet::Equals(std::string_view value, const Condition& condition) {
    if (!condition.ignoresCase)
        return value == condition.value;
    return EqualsKeyword(value, condition.value);
}

/// Searches a value in linear time, also when it repeats itself.
/// Source: the algorithm of Knuth, Morris and Pratt.
bool SelectorSet::Contains(std::string_view value, const Condition& condition) {
    const std::string_view expected = condition.value;
    std::size_t length = 0;
    for (const char written : value) {
        const char character = condition.ignoresCase ? FoldAscii(written) : written;
        while (length > 0 && character != expected[length])
            length = condition.borders[length - 1];
        if (character == expected[length] && ++length == expected.size())
            return true;
    }
    return false;
}

}  // namespace Kestra::HTML
