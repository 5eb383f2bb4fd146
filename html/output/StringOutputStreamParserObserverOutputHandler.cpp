#include "html/output/StringOutputStreamParserObserverOutputHandler.h"

#include <cstring>

#include "html/framework/Instantiate.h"

namespace Kestra::HTML {

template <typename C, typename S, typename Stream>
StringOutputStreamParserObserverOutputHandler<C, S, Stream>::StringOutputStreamParserObserverOutputHandler() = default;

template <typename C, typename S, typename Stream>
StringOutputStreamParserObserverOutputHandler<C, S, Stream>::~StringOutputStreamParserObserverOutputHandler() = default;

template <typename C, typename S, typename Stream>
void StringOutputStreamParserObserverOutputHandler<C, S, Stream>::Write(const void* data, std::uint64_t byteCount,
                                                                        bool) {
    S characters(static_cast<std::size_t>(byteCount / sizeof(C)), C());
    if (characters.empty())
        return;
    std::memcpy(characters.data(), data, characters.size() * sizeof(C));
    stream.write(characters.data(), static_cast<std::streamsize>(characters.size()));
}

template <typename C, typename S, typename Stream>
Stream& StringOutputStreamParserObserverOutputHandler<C, S, Stream>::GetStream() {
    return stream;
}

template <typename C, typename S, typename Stream>
S StringOutputStreamParserObserverOutputHandler<C, S, Stream>::GetString() const {
    return stream.str();
}

KESTRA_HTML_INSTANTIATE(StringOutputStreamParserObserverOutputHandler);

}  // namespace Kestra::HTML
