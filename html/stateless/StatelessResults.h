#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// What the operations of `StatelessHTMLParser` return; a code of a stream or a buffer passes
/// through unchanged.
enum StatelessResult : std::uint32_t {
    STATELESS_OK = 0,  ///< success
    /// A null stream, null data with a size, or called from a callback; internal: the flags keep
    /// the charset.
    STATELESS_INVALID_ARGUMENT = 2,
    STATELESS_NO_CHARSET = 6,    ///< internal: no charset is known after a tag that may declare one
    STATELESS_NOT_STARTED = 10,  ///< `ParseBuffer` outside of `StartParse` and `EndParse`
    /// The piece ended inside a tag, a declaration, a script or a style sheet; no error.
    STATELESS_NEED_MORE_DATA = 16,
    STATELESS_FILE_NOT_OPENED = 506,    ///< `ParseFile`
    STATELESS_NAME_EXPECTED = 701,      ///< a name must begin with a letter or "_"
    STATELESS_TAG_END_EXPECTED = 702,   ///< something else is where a tag, a declaration or an instruction must end
    STATELESS_UNKNOWN_CONSTRUCT = 703,  ///< nothing begins with this character after "<", "<!" or "<!-"
    STATELESS_STOPPED = 710,            ///< a callback has called `Stop`
    STATELESS_LIMIT_EXCEEDED = 711,     ///< a token is longer, or has more attributes, than the host allows
};

}  // namespace Kestra::HTML
