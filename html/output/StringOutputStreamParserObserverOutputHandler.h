#pragma once

#include <sstream>
#include <string>

#include "../../platform/Characters.h"
#include "ParserObserverOutputHandler.h"

namespace Kestra::HTML {

/// A sink that appends to a string stream of its own.
template <typename C, typename S, typename Stream = std::basic_ostringstream<C>>
class KESTRA_HTML_API StringOutputStreamParserObserverOutputHandler : public ParserObserverOutputHandler {
public:
    StringOutputStreamParserObserverOutputHandler();
    StringOutputStreamParserObserverOutputHandler(const StringOutputStreamParserObserverOutputHandler&) = delete;
    StringOutputStreamParserObserverOutputHandler& operator=(const StringOutputStreamParserObserverOutputHandler&) =
        delete;
    ~StringOutputStreamParserObserverOutputHandler() override;

    /// Appends the whole characters in `byteCount` bytes. Output is unformatted, since streams of
    /// the wide flavour lack the facets that formatted output needs.
    void Write(const void* data, std::uint64_t byteCount, bool isMarkup) override;

    /// The stream that is written to.
    Stream& GetStream();

    /// Everything written so far.
    S GetString() const;

private:
    Stream stream;
};

}  // namespace Kestra::HTML
