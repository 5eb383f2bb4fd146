#pragma once

#include <cstdint>

#include "../../platform/Export.h"
#include "../../platform/Vector.h"
#include "../framework/Attribute.h"

namespace Kestra::HTML {

/// How `AttributesNormalizer::Split` reads a value; may be combined.
enum SplitOption : std::uint32_t {
    SPLIT_PLAIN = 0,        ///< neither of the following
    SPLIT_ESCAPE_RUNS = 1,  ///< a quotation mark in an ISO-2022 escape run is a part of a character
    /// The value was converted from 8-bit text, in which U+0085 and U+00A0 are no white space. The
    /// 8-bit flavour does not need this option.
    SPLIT_NARROW_SPACES = 2,
};

/// Repairs the attribute list of a finished tag.
template <typename C, typename S>
class KESTRA_HTML_API AttributesNormalizer {
public:
    /// Folds every bare word that follows an attribute with a value into that value, so that
    /// "title=hello world" is one attribute.
    ///
    /// The quotes of a value into which words are folded become part of it, and the value is
    /// unquoted afterwards; written back, the list gives the same characters as before. Bare words
    /// before the first value stay. Takes time in proportion to the list and its strings.
    static void Normalize(Vector<Attribute<C, S>>* attributes);

    /// The inverse: what one attribute of a normalized list was before. `<a href="/one" download>`
    /// has the value `"/one" download`, which becomes href with the value `/one` in quotation
    /// marks, and the bare word download.
    ///
    /// A value without folded words stays as it is. Written back, the parts give the same
    /// characters as the attribute. White space after the last word becomes that word's
    /// `beforeEquals`. `GenericParser::GetAttributeParts` says where the parts lie in the document.
    /// The 8-bit record of a UTF-16 document holds UTF-16LE, which cannot be split.
    ///
    /// In an ISO-2022 document, for a wide observer, a word of nothing but escape sequences is
    /// lost: they convert to no characters. `GetAttributeParts` still has its place, so there may
    /// be more places than parts.
    ///
    /// @param attribute  one of a record
    /// @param options    a combination of `SplitOption`
    /// @param parts      receives the attribute, and then its bare words; must not be the list
    ///                   that `attribute` is in
    static void Split(const Attribute<C, S>& attribute, std::uint32_t options, Vector<Attribute<C, S>>* parts);
};

}  // namespace Kestra::HTML
