#pragma once

#include <string>

#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "QuoteKind.h"

namespace Kestra::HTML {

/// One word or quoted string of a declaration such as "<!DOCTYPE html>".
template <typename C, typename S>
struct KESTRA_HTML_API EntityToken {
    S prefix;                          ///< white space before it
    S value;                           ///< without its quotes
    std::uint32_t quote = QUOTE_NONE;  ///< a QuoteKind
};

}  // namespace Kestra::HTML
