#pragma once

#include <cstdint>

#include "../../platform/Export.h"

namespace Kestra::HTML {

/// Where the serializer writes to. Hosts derive from it.
class KESTRA_HTML_API ParserObserverOutputHandler {
public:
    ParserObserverOutputHandler();
    /// A handler of this class has no state: there is nothing to copy.
    ParserObserverOutputHandler(const ParserObserverOutputHandler& other);
    /// Copies nothing.
    ParserObserverOutputHandler& operator=(const ParserObserverOutputHandler& other);
    virtual ~ParserObserverOutputHandler();

    /// Receives the next piece of output; does nothing by default.
    ///
    /// @param data       characters of the serializer's flavour, borrowed for the call; a wide body
    ///                   may start at an odd address
    /// @param byteCount  bytes, not characters; may be 0
    /// @param isMarkup   false for the bodies of comments, CDATA and conditional sections, for a
    ///                   byte-order mark and for junk. A sink may ignore it.
    virtual void Write(const void* data, std::uint64_t byteCount, bool isMarkup);
};

}  // namespace Kestra::HTML
