#pragma once

#include "html/framework/Attribute.h"
#include "platform/Vector.h"

namespace Kestra::HTML {

/// Repairs the attribute list of a finished tag.
template <typename C, typename S>
class KESTRA_HTML_API AttributesNormalizer {
public:
    /// Folds every bare word that follows an attribute with a value into that value, so that "title=hello world" is one attribute.
    ///
    /// The quotes of a value that takes words up become part of it, and it counts as unquoted from then on; written back, the list gives
    /// the same characters as before. Bare words in front of the first value stay. Linear in the length of the list and its strings.
    static void Normalize(Vector<Attribute<C, S>>* attributes);
};

}  // namespace Kestra::HTML
