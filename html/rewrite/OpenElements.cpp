#include "html/rewrite/OpenElements.h"

#include <algorithm>
#include <iterator>

#include "html/rewrite/MakeRoom.h"

namespace Kestra::HTML {

namespace {

/// Sorted. Source: the HTML standard, "Void elements", and the void elements of "Serializing HTML
/// fragments" that are obsolete; "command" was one in early drafts.
constexpr std::string_view VOID_ELEMENTS[] = {"area",  "base",  "basefont", "bgsound", "br",    "col",    "command",
                                              "embed", "frame", "hr",       "img",     "input", "keygen", "link",
                                              "meta",  "param", "source",   "track",   "wbr"};
static_assert(std::is_sorted(std::begin(VOID_ELEMENTS), std::end(VOID_ELEMENTS)));

/// Names that no element has any more are kept as long as they are short and not many: the next
/// element will probably have one of them.
constexpr std::size_t KEPT_NAME_SIZE = 32;
constexpr std::size_t KEPT_NAMES = 256;

bool IsVoid(std::string_view name) {
    return std::binary_search(std::begin(VOID_ELEMENTS), std::end(VOID_ELEMENTS), name);
}

}  // namespace

OpenElements::OpenElements(const SelectorSet* selectors) : selectorSet(selectors) {}

OpenElements::OpenedElement OpenElements::Open(std::string_view name, bool isShortTag, std::uint64_t attributeCount,
                                               const TagAttributes& attributes, std::vector<std::size_t>* matches) {
    Content content = elements.empty() ? Content::HTML : elements.back().content;
    if (name == "svg")
        content = Content::SVG;
    else if (name == "math")
        content = Content::MATH;
    const bool hasContent = !IsVoid(name) && !(isShortTag && content != Content::HTML);
    if (content == Content::SVG && (name == "foreignobject" || name == "desc" || name == "title"))
        content = Content::HTML;
    // Subtracted, as a sum could be too great.
    if (hasContent &&
        ((maxDepth != 0 && elements.size() >= maxDepth) ||
         (maxAttributes != 0 && (attributeTotal > maxAttributes || attributeCount > maxAttributes - attributeTotal)))) {
        matches->clear();
        return {false, true};
    }

    WidenSets();
    const std::size_t parentMatched = elements.empty() ? 0 : elements.back().matched;
    const std::size_t parentAncestors = elements.empty() ? 0 : elements.back().ancestors;
    matched.resize(setWords);
    selectorSet->Match(name, attributes, GetSet(parentMatched), GetSet(parentAncestors), &scratch, matched);
    if (!hasContent) {
        selectorSet->GetSelectors(matched, matches);
        return {false, false};
    }

    MakeRoom(1, &elements);
    MakeRoom(2 * setWords, &sets);
    matches->reserve(selectorSet->CountSelectors(matched));
    auto open = names.find(name);
    if (open == names.end())
        open = names.emplace(name, NONE).first;
    else if (open->second == NONE)
        --unusedNames;

    // Nothing fails from here on.
    selectorSet->GetSelectors(matched, matches);
    Element element{open, open->second, parentMatched, parentAncestors, setCount, 0, attributeCount, content};
    open->second = elements.size();
    attributeTotal += attributeCount;
    AddSets(&element);
    elements.push_back(element);
    return {true, false};
}

/// Gives an element sets of its own where those of its parent do not fit. There must be room for
/// them.
void OpenElements::AddSets(Element* element) noexcept {
    // Most elements match what their parent does, mostly nothing.
    const auto addSet = [&](const auto& wordAt) {
        for (std::size_t i = 0; i < setWords; ++i)
            sets.push_back(wordAt(i));
        return setCount++;
    };
    if (!std::ranges::equal(matched, GetSet(element->matched)))
        element->matched = addSet([&](std::size_t i) { return matched[i]; });
    const std::size_t outer = element->ancestors;
    bool addsMatches = false;
    for (std::size_t i = 0; i < setWords; ++i)
        addsMatches = addsMatches || (matched[i] & ~GetSet(outer)[i]) != 0;
    if (addsMatches)
        element->ancestors = addSet([&](std::size_t i) { return matched[i] | GetSet(outer)[i]; });
}

std::size_t OpenElements::CountClosedBy(std::string_view name) const {
    // Most end tags, and without a search.
    if (!elements.empty() && elements.back().name->first == name)
        return 1;
    const auto open = names.find(name);
    return open == names.end() || open->second == NONE ? 0 : elements.size() - open->second;
}

void OpenElements::CloseInnermost() noexcept {
    const Element& element = elements.back();
    const auto name = element.name;
    name->second = element.sameName;
    attributeTotal -= element.attributeCount;
    setCount = element.firstSet;
    sets.resize(setCount * setWords);
    elements.pop_back();
    if (name->second == NONE)
        ForgetName(name);
}

void OpenElements::Clear() noexcept {
    std::vector<Element>().swap(elements);
    std::vector<Word>().swap(sets);
    names.clear();
    unusedNames = 0;
    setCount = 1;
    setWords = 0;
    attributeTotal = 0;
}

bool OpenElements::HasMatches() const {
    return selectorSet->CountSelectors(GetMatched()) != 0;
}

void OpenElements::GetMatches(std::vector<std::size_t>* selectors) const {
    selectorSet->GetSelectors(GetMatched(), selectors);
}

/// The compounds that some open element matches.
std::span<const OpenElements::Word> OpenElements::GetMatched() const {
    return GetSet(elements.empty() ? 0 : elements.back().ancestors);
}

std::span<const OpenElements::Word> OpenElements::GetSet(std::size_t number) const {
    // Without selectors, and before the first element, the empty set has no words either.
    return std::span(sets).subspan(number * setWords, setWords);
}

/// Gives each set the words that the selectors need by now.
void OpenElements::WidenSets() {
    const std::size_t words = selectorSet->GetWordCount();
    if (words == setWords)
        return;
    std::vector<Word> wider(setCount * words);
    for (std::size_t i = 0; i < setCount; ++i)
        std::copy_n(sets.begin() + static_cast<std::ptrdiff_t>(i * setWords), setWords,
                    wider.begin() + static_cast<std::ptrdiff_t>(i * words));
    sets.swap(wider);
    setWords = words;
}

/// Frees a name that no open element has any more, or all of those when they are many.
void OpenElements::ForgetName(Names::iterator name) noexcept {
    if (name->first.size() > KEPT_NAME_SIZE) {
        names.erase(name);
        return;
    }
    // At least half of the names go then, so that it takes constant time for each of them.
    ++unusedNames;
    if (unusedNames > KEPT_NAMES + (names.size() - unusedNames)) {
        std::erase_if(names, [](const auto& entry) { return entry.second == NONE; });
        unusedNames = 0;
    }
}

}  // namespace Kestra::HTML
