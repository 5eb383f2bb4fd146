#pragma once

#include <string>

#include "../../platform/Characters.h"
#include "../../platform/Export.h"
#include "QuoteKind.h"

namespace Kestra::HTML {

/// One attribute of a tag, as written: together the strings hold every character of it but the "="
/// and the quotes.
template <typename C, typename S>
struct KESTRA_HTML_API Attribute {
    S prefix;                          ///< white space before the name
    S name;                            ///< as written
    S beforeEquals;                    ///< white space between the name and "="
    S afterEquals;                     ///< white space between "=" and the value
    S value;                           ///< without its quotes
    std::uint32_t quote = QUOTE_NONE;  ///< a QuoteKind
    bool hasValue = false;  ///< "=" and a value, which may be empty; without them only `prefix` and `name` count
};

}  // namespace Kestra::HTML
