#pragma once

#include <cstdint>
#include <string_view>

#include "platform/Characters.h"

/// @file
/// What must not be written into elements whose content is not markup, and into comments. Not
/// installed.

namespace Kestra::HTML {

/// The elements whose content is no markup to browsers, one bit for each; they may be combined.
enum RawElement : std::uint32_t {
    RAW_NONE = 0,
    RAW_SCRIPT = 1,
    RAW_STYLE = 2,
    RAW_XMP = 4,
    RAW_IFRAME = 8,
    RAW_NOEMBED = 16,
    RAW_NOFRAMES = 32,
    RAW_PLAINTEXT = 64,  ///< nothing ends it
};

/// @param name  in lower case
/// @return RAW_NONE for every other element
std::uint32_t FindRawElement(std::string_view name);

/// Whether a name, in any flavour, may be that of a raw element: those begin with one of five
/// letters.
template <typename S>
bool MayBeRawElement(const S& name) {
    if (name.size() < 3)
        return false;
    const auto first = FoldAscii(name[0]);
    return first == 's' || first == 'x' || first == 'i' || first == 'n' || first == 'p';
}

/// The text around something that is written into a raw element. Characters beyond ASCII may be
/// any bytes from 0x80 up.
struct RawSurroundings {
    std::string_view before;   ///< the last characters before it, 40 of them or all
    std::string_view after;    ///< the first ones after it, as far as they are known
    bool isAfterKnown = true;  ///< nothing is known after `after`, or what comes is longer than any end tag
};

/// Whether an inserted text, which may be empty, makes an end tag of one of the elements, or could
/// together with what comes after it and is not yet known; in a script also "<!--" or the beginning
/// of its start tag, since an end tag does not count after both.
bool EndsRawElement(std::uint32_t elements, std::string_view inserted, const RawSurroundings& surroundings);

/// Whether the text of a comment would end it, or does so in browsers.
bool EndsComment(std::string_view text);

/// Whether a text would change its meaning after these characters: it would continue a reference or
/// the name of a tag that they begin.
/// @param before  the last characters before it, as many as the longest name of a reference has, or
///                all
bool ContinuesMarkup(std::string_view before, char first);

}  // namespace Kestra::HTML
