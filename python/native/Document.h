#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "html/DocumentParser.h"
#include "platform/InputStream.h"

namespace Kestra::Python {

/// The bytes of a document: those of an object with the buffer protocol, of a file that is named,
/// or of what `read` answers. They last as long as this does.
class Document {
public:
    /// With the GIL; it is dropped while a file is read.
    /// @throws TypeError for what is none of these, OSError when a file cannot be read
    static std::shared_ptr<const Document> Open(const pybind11::object& source);

    explicit Document(std::string ownBytes);
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    /// With the GIL.
    ~Document();

    std::string_view GetBytes() const {
        return bytes;
    }

private:
    Document() = default;

    Py_buffer buffer{};
    bool hasBuffer = false;
    std::string own;
    std::string_view bytes;
};

/// A stream over bytes that somebody else has.
class BytesStream final : public VFS::InputStream {
public:
    explicit BytesStream(std::string_view streamBytes) : bytes(streamBytes) {}

    std::uint32_t Read(void* target, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    std::string_view bytes;
    std::uint64_t next = 0;
};

/// How a document is parsed.
struct ParseOptions {
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    HTML::GenericParser::DataStreamType type = HTML::GenericParser::DATA_STREAM_AUTO;
    HTML::GenericParser::ScriptMode scriptMode = HTML::GenericParser::SCRIPT_AS_TEXT;
    std::uint64_t maxTokenSize = 0;
    std::uint64_t maxAttributes = 0;
};

/// Makes the settings.
void SetUp(HTML::GenericParser* parser, const ParseOptions& options);

/// Parses a document to its end; once more when its charset is found late.
/// @param restart  called before each attempt
/// @return the first result that is a failure, or 0; a charset that was not detected is none
template <typename Restart>
std::uint32_t ParseWhole(HTML::GenericParser* parser, std::string_view bytes, ParseOptions options, Restart restart) {
    SetUp(parser, options);
    for (bool isAgain = false;; isAgain = true) {
        restart();
        std::uint32_t result = parser->StartParse(options.charset, options.type);
        BytesStream stream(bytes);
        if (result == HTML::PARSER_OK)
            result = parser->ParseStream(&stream, false);
        if (result == HTML::PARSER_PARSE_AGAIN && !isAgain) {
            options.charset = parser->GetCharset();
            continue;
        }
        if (result != HTML::PARSER_OK && result != HTML::PARSER_CHARSET_NOT_DETECTED)
            return result;
        return parser->EndParse();
    }
}

}  // namespace Kestra::Python
