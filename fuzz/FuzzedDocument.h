#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/CharSet.h"
#include "tests/support/Splits.h"

namespace Kestra::Fuzz {

/// A document as the fuzzer makes it: how it is fed comes before its bytes, so that mutations reach
/// that as well.
///
///     byte 0          the charset, an index modulo their number
///     the rest        the document in pieces; see `FuzzedCuts`
struct FuzzedDocument {
    StringNS::CharSet::Code charset = StringNS::CharSet::WINDOWS_1252;
    Test::Cuts cuts;  ///< in bytes, all inside the document; no piece is empty
    std::string_view bytes;
};

/// @param data  borrowed by the result
FuzzedDocument ReadFuzzedDocument(const std::uint8_t* data, std::size_t size);

/// The input of the fuzzer that `ReadFuzzedDocument` reads as this document. Pieces are cut to 255
/// bytes.
std::string WriteFuzzedDocument(const FuzzedDocument& document);

}  // namespace Kestra::Fuzz
