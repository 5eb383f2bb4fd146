#pragma once

#include <cstdint>
#include <string>

#include "../../platform/Characters.h"
#include "../../platform/Export.h"

namespace Kestra::HTML {

/// The current piece of input, and the place reached in it.
///
/// The piece is borrowed from the caller that feeds the parser. `position` never exceeds `length`;
/// `buffer[position]` may be read only while `position` is less than `length`. Line and column
/// count over the whole document and describe the next unread character: only a line feed begins a
/// line, a carriage return or a tab is one column.
template <typename C, typename S>
struct KESTRA_HTML_API SimpleParserContext {
    const C* buffer = nullptr;   ///< first character of the piece
    std::uint64_t position = 0;  ///< index of the next character, in characters from the start of the piece
    std::uint64_t length = 0;    ///< characters in the piece
    std::uint64_t line = 1;      ///< from 1
    std::uint64_t column = 1;    ///< from 1

    /// No piece, line 1, column 1. Called once per document, never between its pieces.
    void Init();

    /// Advances over up to `n` characters and keeps line and column. Stops at the end of the piece,
    /// which is no error.
    void MovePointer(std::uint64_t n);
};

}  // namespace Kestra::HTML
