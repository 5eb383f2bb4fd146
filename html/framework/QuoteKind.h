#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// The quotes of a value in the input.
enum QuoteKind : std::uint32_t {
    QUOTE_NONE = 0,    ///< there are none
    QUOTE_SINGLE = 1,  ///< "'"
    QUOTE_DOUBLE = 2,  ///< the quotation mark
};

}  // namespace Kestra::HTML
