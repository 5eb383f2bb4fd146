#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "html/rewrite/SelectorReader.h"

/// @file
/// Compiled selectors, and how a start tag is matched. Not installed.

namespace Kestra::HTML {

/// The attributes of a start tag, as the selectors need them.
class TagAttributes {
public:
    virtual ~TagAttributes() = default;

    /// Finds the first attribute of a name, which is in lower case. A name is asked for only when a
    /// selector depends on it, and at most once with and once without a value.
    ///
    /// @param value  receives the value as UTF-8 with its references decoded, empty where the
    ///               attribute has none; null when only its presence matters
    virtual bool Find(std::string_view name, std::string* value) const = 0;
};

/// A set of selectors, each with a number: 0 for the first.
///
/// Every compound of every selector has a bit, those of one selector side by side, from left to
/// right. What an element matches is a set of bits, and the bits of an element follow from those of
/// its parent and its ancestors: a compound can match where the bit before its own is set there,
/// and a selector matches where the bit of its last compound is set. So a start tag is tried
/// against each compound once, whatever its depth.
///
/// Types and names of attributes are compared without the case of "A" to "Z"; ids, classes and
/// values exactly, unless the flag "i" asks for the same. So the attributes whose values browsers
/// compare without their case, such as "type", need that flag here.
class SelectorSet {
public:
    using Word = std::uint64_t;

    static constexpr std::size_t WORD_BITS = 64;

    /// What was asked about the current tag. Kept from tag to tag, so that memory is allocated
    /// once; long values are freed.
    class Scratch {
    private:
        friend class SelectorSet;

        void Clear() noexcept;

        enum State : std::uint8_t { UNKNOWN, ABSENT, PRESENT, HAS_VALUE };

        struct Attribute {
            State state = UNKNOWN;
            std::string value;
        };

        std::vector<Attribute> attributes;  // by number
        std::vector<std::size_t> asked;     // those that are not UNKNOWN
        std::vector<Word> classes;          // those that the tag has, a bit for each number
        bool hasClasses = false;            // whether they are known
    };

    SelectorSet() = default;
    SelectorSet(const SelectorSet&) = delete;
    SelectorSet& operator=(const SelectorSet&) = delete;

    /// Adds a selector; its number is the present `GetCount`.
    ///
    /// An element that is open already matches none of its compounds.
    /// @return as `ReadSelector`. Whatever fails, an allocation too, changes nothing.
    bool Add(std::string_view text, std::string* message);

    std::size_t GetCount() const {
        return count;
    }

    /// How many words a set of compounds has. More selectors can make it more, never less.
    std::size_t GetWordCount() const {
        return last.size();
    }

    /// Finds the compounds that a start tag matches.
    ///
    /// @param name       in lower case
    /// @param parent     the compounds that the parent matches
    /// @param ancestors  those that it or an element around it matches
    /// @param matched    receives those that the tag matches; unspecified after an exception. All
    ///                   three have `GetWordCount` words.
    void Match(std::string_view name, const TagAttributes& attributes, std::span<const Word> parent,
               std::span<const Word> ancestors, Scratch* scratch, std::span<Word> matched) const;

    /// Counts the selectors whose last compound is in a set, which may have fewer words.
    std::size_t CountSelectors(std::span<const Word> set) const;

    /// Replaces the numbers in `*selectors` by theirs, in ascending order.
    void GetSelectors(std::span<const Word> set, std::vector<std::size_t>* selectors) const;

private:
    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);

    // Ordered, so that no choice of names makes it slow.
    using Numbers = std::map<std::string, std::size_t, std::less<>>;

    struct Condition {
        SelectorCondition::Kind kind;
        bool ignoresCase;
        std::size_t attribute;             // its number
        std::size_t classNumber;           // of a class only
        std::string_view name;             // of the attribute, borrowed from `attributeNumbers`
        std::string value;                 // of the attribute
        std::vector<std::size_t> borders;  // of the begins of the value, for CONTAINS
    };

    struct Compound {
        std::size_t type;      // its number, NONE for any
        std::size_t selector;  // its number, of the last compound only
        std::size_t begin;     // of its conditions
        std::size_t end;
    };

    static Numbers::const_iterator Number(std::string_view name, Numbers* numbers);
    static bool HasAttribute(const Condition& condition, bool asksForValue, const TagAttributes& tag, Scratch* scratch);
    static bool MatchesValue(std::string_view value, const Condition& condition);
    static bool Equals(std::string_view value, const Condition& condition);
    static bool Contains(std::string_view value, const Condition& condition);

    Condition Compile(SelectorCondition* read);
    void PrepareScratch(Scratch* scratch) const;
    bool Matches(const Compound& compound, std::size_t type, const TagAttributes& tag, Scratch* scratch) const;
    bool Matches(const Condition& condition, const TagAttributes& tag, Scratch* scratch) const;
    bool HasClass(const Condition& condition, const TagAttributes& tag, Scratch* scratch) const;

    std::vector<Compound> compounds;  // by bit
    std::vector<Condition> conditions;
    std::vector<Word> first;       // compounds that need no other element
    std::vector<Word> child;       // that need the one before them in the parent
    std::vector<Word> descendant;  // that need it in any ancestor
    std::vector<Word> last;        // whose selector matches when they do
    std::size_t count = 0;
    Numbers types;
    Numbers attributeNumbers;
    Numbers classNumbers;
};

}  // namespace Kestra::HTML
