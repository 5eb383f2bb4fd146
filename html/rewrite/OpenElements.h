#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "html/rewrite/Selectors.h"

/// @file
/// The stack of open elements, with what they match. Not installed.

namespace Kestra::HTML {

/// The elements that start tags have opened and no end tag has closed yet, and which selectors they
/// match.
///
/// Lexical: no tag is implied, so an end tag closes the innermost element of its name with all that
/// is open inside it, or nothing. Void elements are never open. A short tag opens an element like a
/// start tag, except for `svg` and `math` and elements inside them, where it has no content; inside
/// `foreignObject`, `desc` and `title` of an `svg` it opens again.
///
/// A start tag costs time in proportion to the compounds of all selectors, an end tag to what it
/// closes; both search a map of the names that are open. What depends on attributes is decided when
/// the tag comes: an open element keeps its name, and sets of compounds where they differ from
/// those of its parent.
///
/// When an allocation fails, or what is asked about a tag throws, the call has changed nothing.
class OpenElements {
public:
    struct OpenedElement {
        bool hasContent;   ///< it is open from now on
        bool isOverLimit;  ///< a limit forbids it: nothing was opened, and nothing matches
    };

    /// @param selectors  borrowed for as long as this lives. Those that are added later match
    ///                   elements that open later; an open element counts as matching none of their
    ///                   compounds.
    explicit OpenElements(const SelectorSet* selectors);
    OpenElements(const OpenElements&) = delete;
    OpenElements& operator=(const OpenElements&) = delete;

    /// Takes a start tag. An element that has content becomes the innermost one.
    ///
    /// @param name            with "A" to "Z" in lower case
    /// @param attributeCount  of the tag, for the limit
    /// @param matches         receives the numbers of the selectors that the element matches, in
    ///                        ascending order
    OpenedElement Open(std::string_view name, bool isShortTag, std::uint64_t attributeCount,
                       const TagAttributes& attributes, std::vector<std::size_t>* matches);

    /// How many elements an end tag of a name closes: those inside the innermost one of that name,
    /// and that one. 0: a stray one.
    /// @param name  with "A" to "Z" in lower case
    std::size_t CountClosedBy(std::string_view name) const;

    /// Closes the innermost element, of which there must be one.
    void CloseInnermost() noexcept;

    /// Closes all elements, and frees their memory. Selectors and limits stay.
    void Clear() noexcept;

    std::size_t GetDepth() const {
        return elements.size();
    }

    /// The name of an open element: 0 is the outermost one, depth - 1 the innermost. Borrowed until
    /// the element closes.
    std::string_view GetName(std::size_t index) const {
        return elements[index].name->first;
    }

    /// A number that the owner gives to an open element, 0 to begin with.
    std::size_t GetPayload(std::size_t index) const {
        return elements[index].payload;
    }

    void SetPayload(std::size_t index, std::size_t payload) {
        elements[index].payload = payload;
    }

    /// Whether some open element matches some selector.
    bool HasMatches() const;

    /// Puts the numbers of the selectors that some open element matches in place of those in
    /// `*selectors`, in ascending order.
    void GetMatches(std::vector<std::size_t>* selectors) const;

    /// How many elements may be open, 0 for any number. It counts for the next start tag.
    void SetMaxDepth(std::uint64_t count) {
        maxDepth = count;
    }

    /// How many attributes the tags of all open elements may have together, 0 for any number.
    void SetMaxOpenAttributes(std::uint64_t count) {
        maxAttributes = count;
    }

private:
    using Word = SelectorSet::Word;

    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);

    /// By what rules the content of an element is read.
    enum class Content : std::uint8_t { HTML, SVG, MATH };

    /// The index of the innermost open element by name, NONE where there is none any more. Ordered,
    /// so that no choice of names makes it slow.
    using Names = std::map<std::string, std::size_t, std::less<>>;

    struct Element {
        Names::iterator name;
        std::size_t sameName;   // the index of the next one outwards of the same name, or NONE
        std::size_t matched;    // the number of the set of compounds that it matches
        std::size_t ancestors;  // of those that it or an element around it matches
        std::size_t firstSet;   // how many sets there were before it
        std::size_t payload;
        std::uint64_t attributeCount;
        Content content;
    };

    std::span<const Word> GetMatched() const;
    std::span<const Word> GetSet(std::size_t number) const;
    void AddSets(Element* element) noexcept;
    void WidenSets();
    void ForgetName(Names::iterator name) noexcept;

    const SelectorSet* selectorSet;
    std::vector<Element> elements;
    Names names;
    std::size_t unusedNames = 0;
    std::vector<Word> sets;  // one after another; the first, number 0, is empty
    std::size_t setCount = 1;
    std::size_t setWords = 0;   // of each set
    std::vector<Word> matched;  // by the current tag
    SelectorSet::Scratch scratch;
    std::uint64_t attributeTotal = 0;
    std::uint64_t maxDepth = 0;
    std::uint64_t maxAttributes = 0;
};

}  // namespace Kestra::HTML
