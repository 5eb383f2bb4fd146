#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// Where a token lies in the document.
///
/// Offsets are in bytes from the first one fed after `StartParse`, a byte-order mark included, and
/// `[begin, end)`.
struct TokenPlace {
    std::uint64_t begin = 0;   ///< of the first byte
    std::uint64_t end = 0;     ///< after the last byte
    std::uint64_t line = 1;    ///< of `begin`, from 1
    std::uint64_t column = 1;  ///< of `begin`, from 1, in characters of the running parser, a mark not included
};

/// Where an attribute lies in the document; offsets as in `TokenPlace`.
struct AttributePlace {
    std::uint64_t begin = 0;       ///< of the white space before it
    std::uint64_t end = 0;         ///< after its value, the closing quote included, or after its name when it has none
    std::uint64_t nameBegin = 0;   ///< of the name
    std::uint64_t nameEnd = 0;     ///< after the name
    std::uint64_t valueBegin = 0;  ///< without its quotes; `nameEnd` when there is no value
    std::uint64_t valueEnd = 0;    ///< after the value, before its closing quote
};

}  // namespace Kestra::HTML
