#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "platform/Characters.h"

/// @file
/// Bytes of the document read as markup. Not installed.

namespace Kestra::HTML {

/// Reads the characters around a place of the document, as many as decide what an inserted text
/// would mean there.
class DocumentView {
public:
    static constexpr std::size_t SURROUNDING_UNITS = 40;  ///< more than an end tag, or the name of a reference, has
    static constexpr std::size_t TAIL_SIZE = SURROUNDING_UNITS * sizeof(WideChar);  ///< in bytes

    /// @param documentParser  borrowed: knows whether the document is UTF-16
    explicit DocumentView(const GenericParser* documentParser) : parser(documentParser) {}

    /// The characters of some bytes of the document, every one beyond ASCII as the byte 0x80.
    std::string ViewOf(std::string_view bytes) const;

    /// The last bytes of `before` and `bytes`, joined: as many as matter.
    static std::string LastOf(std::string_view bytes, std::string_view before);

    /// The last characters of `before` and `bytes`.
    std::string ViewTail(std::string_view bytes, std::string_view before) const;

    /// The first characters of `before` and `bytes`.
    std::string ViewHead(std::string_view bytes, std::string_view before) const;

    /// Writes the first character of a text as a reference where it would continue the reference,
    /// or the tag, that the characters before it begin.
    void Guard(std::string_view before, std::string* bytes) const;

private:
    const GenericParser* parser;
};

}  // namespace Kestra::HTML
