#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/CharSet.h"
#include "tests/support/Splits.h"

namespace Kestra::Fuzz {

/// What becomes of the parser in the middle of the document.
enum class Copying {
    NONE,
    REPLACED,   ///< a copy goes on, the original is destroyed
    ASSIGNED,   ///< as above, and the copy was another parser in the middle of another document
    SEPARATED,  ///< both go on, each with observers of its own
};

/// A document for the stateless parser as the fuzzer makes it, with what else happens while it is
/// parsed:
///
///     byte 0          the charset, an index modulo their number
///     byte 1          bit 0: the markup may replace the charset; bit 1: fed by streams, not by buffers;
///                     bits 2 and 3: a `Copying`; bit 4: a second observer; bit 5: the parser has read the document
///                     before, to an end in the middle; bit 6: the contents of scripts and the like are text
///     byte 2          the piece before which the parser is copied, modulo their number plus one, like the next two
///     byte 3          the piece before which the second observer is attached
///     byte 4          the piece before which it is detached
///     the rest        the document in pieces; see `FuzzedCuts`
struct FuzzedEvents {
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    bool markupChooses = false;
    bool byStream = false;
    Copying copying = Copying::NONE;
    bool hasSecondObserver = false;
    bool hasReadBefore = false;
    bool scriptsAsText = false;
    std::size_t copiedAt = 0;
    std::size_t attachedAt = 0;
    std::size_t detachedAt = 0;
    Test::Cuts cuts;  ///< in bytes; by buffers a piece may be empty
    std::string_view bytes;
};

/// @param data  borrowed by the result
FuzzedEvents ReadFuzzedEvents(const std::uint8_t* data, std::size_t size);

/// The input of the fuzzer that `ReadFuzzedEvents` reads as this. Pieces are cut to 255 bytes,
/// places to the 255th piece.
std::string WriteFuzzedEvents(const FuzzedEvents& events);

}  // namespace Kestra::Fuzz
