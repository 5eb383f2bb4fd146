#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tests/support/Splits.h"

namespace Kestra::Fuzz {

/// A document in pieces, as the end of an input of a fuzzer:
///
///     byte 0          how many cuts follow, 0 to 63 (modulo 64)
///     one byte each   the length of the piece before the cut
///     the rest        the document
struct FuzzedCuts {
    Test::Cuts cuts;  ///< none after the end of the document; a piece may be empty
    std::string_view bytes;
};

/// @param data  borrowed by the result
FuzzedCuts ReadFuzzedCuts(const std::uint8_t* data, std::size_t size);

/// The bytes that `ReadFuzzedCuts` reads as this. Pieces are cut to 255 bytes.
std::string WriteFuzzedCuts(const FuzzedCuts& fuzzed);

}  // namespace Kestra::Fuzz
