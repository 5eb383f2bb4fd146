#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CharSetConverter.h"
#include "python/native/Document.h"

namespace Kestra::Python {

/// The tokens of a document by columns, without their texts: those are in the document.
struct TokenTable {
    std::vector<std::uint8_t> kinds;  ///< `TokenKind`
    std::vector<std::uint64_t> begins;
    std::vector<std::uint64_t> ends;
    std::vector<std::uint64_t> lines;
    std::vector<std::uint64_t> columns;
    /// Where the bytes of each token are, when they are not at its place in the document.
    std::vector<std::uint64_t> rawBegins;
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    bool isUtf16 = false;
    std::uint32_t result = 0;  ///< the first failure

    std::size_t GetSize() const {
        return kinds.size();
    }
};

/// Makes the table of a document. Without the GIL.
TokenTable ReadTokens(std::string_view bytes, const ParseOptions& options);

/// Reads a document that comes in pieces of any size.
class PieceReader {
public:
    explicit PieceReader(const ParseOptions& options);
    PieceReader(const PieceReader&) = delete;
    PieceReader& operator=(const PieceReader&) = delete;
    ~PieceReader();

    /// @param bytes  receives those of the tokens that the piece completes
    TokenTable Feed(std::string_view piece, std::string* bytes);
    TokenTable End(std::string* bytes);

private:
    class Impl;

    TokenTable Take(std::uint32_t result, std::string* bytes);

    std::unique_ptr<Impl> impl;
};

/// An attribute of a token, or an item of a declaration, which has no name.
struct AttributeText {
    WideString name;
    WideString value;  ///< references decoded
    bool hasValue = false;
    std::uint32_t quote = 0;     ///< a `QuoteKind`
    HTML::AttributePlace place;  ///< in the document; zeros for an item
};

/// What a token says.
struct TokenText {
    WideString name;
    WideString text;  ///< as written
    std::vector<AttributeText> attributes;
};

/// Reads a token once more.
/// @param bytes  of the token
/// @param begin  its offset in the document
TokenText ReadToken(std::string_view bytes, HTML::TokenKind kind, std::uint64_t begin, StringNS::CharSet::Code charset,
                    bool isUtf16);

/// Bytes of a document as text. What cannot be decoded is U+FFFD; with an unknown charset it is
/// windows-1252, and so with UTF-7.
WideString Decode(std::string_view bytes, StringNS::CharSet::Code charset, bool isUtf16);

/// The same of bytes that are not UTF-16.
/// @param converter  serves many texts
WideString Decode(std::string_view bytes, StringNS::CharSet::Code charset, StringNS::CharSetConverter* converter);

}  // namespace Kestra::Python
