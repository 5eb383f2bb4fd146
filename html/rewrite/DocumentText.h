#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/CharSet.h"
#include "platform/CharSetConverter.h"
#include "platform/Characters.h"

/// @file
/// Converts texts of a host to the bytes of a document, and back. Not installed.

namespace Kestra::HTML {

/// Writes UTF-8 in the charset of a document, and reads text of the document as UTF-8.
///
/// A character is written in a charset only when its bytes convert back to it and none of them can
/// be taken for markup. ASCII is written as its bytes in every charset: that is how the parsers
/// read it.
class DocumentText {
public:
    /// How a character that the charset lacks is written.
    enum class Lacking { REFERENCE, REFUSED };

    static bool IsWellFormed(std::string_view utf8);

    /// @return false, with unspecified text, for a surrogate without its other half
    static bool FromWide(WideStringView wide, std::string* utf8);

    /// The charset in force, and whether the document is UTF-16, which is then its charset. Costs
    /// nothing until a character beyond ASCII comes.
    void SetCharset(StringNS::CharSet::Code code, bool isUtf16);

    /// Bytes of one unit: 2 in UTF-16.
    std::size_t GetUnitSize() const {
        return isWide ? 2 : 1;
    }

    /// The unit of a document's bytes that begins at `place`.
    char32_t GetUnit(std::string_view bytes, std::size_t place) const;
    /// Whether the parser takes it for white space.
    bool IsSpaceAt(std::string_view bytes, std::size_t place) const;

    /// Whether some bytes of the document are their own UTF-8, without any conversion.
    bool IsPlain(std::string_view bytes) const;

    /// Appends a text, in time proportional to its length.
    /// @param utf8  well-formed
    /// @return false, with some of it appended, when a character is refused
    bool Append(std::string_view utf8, Lacking lacking, std::string* bytes);

    /// Replaces `*utf8` by what the bytes say; what is ill-formed becomes U+FFFD. Bytes of an
    /// unknown charset are UTF-8 when they can be, and 1252 otherwise.
    void Decode(std::string_view bytes, std::string* utf8);

private:
    enum class Kind { UNKNOWN, NONE, UTF8, EXTENDS_ASCII };

    Kind GetKind();
    bool AppendWide(std::string_view utf8, std::string* bytes) const;
    bool AppendBeyondAscii(std::string_view run, Lacking lacking, std::string* bytes);
    bool Convert(WideStringView characters);
    bool AppendLacking(char32_t character, Lacking lacking, std::string* bytes) const;

    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    bool isWide = false;
    Kind kind = Kind::UNKNOWN;
    StringNS::CharSetConverter converter;
    WideString wideText;
    WideString again;
    std::string converted;
};

}  // namespace Kestra::HTML
