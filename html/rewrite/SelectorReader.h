#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// Reads the text of a selector. Not installed.

namespace Kestra::HTML {

/// A selector of one attribute, or of one class. Ids are selectors of the attribute "id".
struct SelectorCondition {
    enum Kind {
        NEVER,       ///< matches nothing, as an empty word in a list does
        CLASS,       ///< ".value"
        PRESENT,     ///< [name]
        EQUAL,       ///< [name=value], "#value"
        INCLUDES,    ///< [name~=value], a word in a list
        DASH_MATCH,  ///< [name|=value], the value or its begin before "-"
        BEGINS,      ///< [name^=value]
        ENDS,        ///< [name$=value]
        CONTAINS,    ///< [name*=value]
    };

    Kind kind = NEVER;
    bool ignoresCase = false;  ///< of "A" to "Z" in the value, which is then in lower case
    std::string name;          ///< in lower case; empty for a class
    std::string value;         ///< escapes decoded
};

/// What must be true of one element.
struct SelectorCompound {
    bool isChild = false;  ///< of an element that the compound before it matches; else that one is any ancestor
    bool hasType = false;
    std::string type;  ///< in lower case
    std::vector<SelectorCondition> conditions;
};

/// Reads one selector, in UTF-8 and in the syntax of CSS: types and "*", ids, classes, attributes
/// with all operators and the flags "i" and "s", and compounds of them that are joined by white
/// space (descendant) or ">" (child).
///
/// Types, names of attributes and, with the flag "i", values come out with "A" to "Z" in lower
/// case. What CSS closes by itself where the text ends, such as a string, is refused here, and so
/// are comments and NUL characters. The time is linear, and nothing is read recursively.
///
/// @param compounds  receives the compounds from left to right, at least one
/// @param message    receives what is wrong and where, in English; may be null. Characters are
///                   code points, counted from 1.
/// @return false when the text is refused, which leaves `compounds` unchanged; otherwise `message`
///         is unchanged
bool ReadSelector(std::string_view text, std::vector<SelectorCompound>* compounds, std::string* message);

/// White space of CSS, which is also what separates the words of a list in a value.
constexpr bool IsSelectorSpace(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\n' || character == '\f' || character == '\r';
}

}  // namespace Kestra::HTML
