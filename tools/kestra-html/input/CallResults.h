#pragma once

#include <cstdint>

namespace Kestra::Tool {

/// What a parser answered to the calls of one pass over an input, and where it was.
struct CallResults {
    std::uint32_t startParse = 0;
    std::uint32_t parse = 0;  ///< of `ParseStream`, or of the last `ParseBuffer`
    std::uint32_t endParse = 0;

    // Asked just before `EndParse`.
    std::uint64_t line = 0;
    std::uint64_t column = 0;

    /// The self-check keeps a copy and `EndParse` returned 704 because the copy could not be
    /// written to a temporary file or read back: nothing is known about the tokens.
    bool copyLost = false;

    /// The first code that is not 0, in the order of the calls; 0 when there is none.
    std::uint32_t GetFirstFailure() const;
};

}  // namespace Kestra::Tool
