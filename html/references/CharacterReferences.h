#pragma once

#include <cstdint>

#include "../../platform/CharSet.h"
#include "../../platform/Export.h"

namespace Kestra::HTML {

/// Character references, such as "&lt;" and "&#60;": replaces them by their characters, and writes
/// them for characters that would be markup.
///
/// The parsers deliver text and values as they are written. To get their characters, decode a text,
/// or a value without its quotes, as one string: a reference that is cut in two is none. There are
/// no references in script and style elements, comments, CDATA sections and declarations.
///
/// Every function answers whether anything changes. If nothing changes, it answers false and does
/// not touch the output: the text itself is the result. That allocates nothing, unless the text has
/// a "&" and its charset is converted by the system. Otherwise the output is replaced; output and
/// text may be the same string. An output that is reused keeps its capacity. The time is in
/// proportion to the length of the text. Thread-safe. Throws only `std::bad_alloc`, after which the
/// output is unspecified.
///
/// 8-bit text must be in a charset that extends ASCII, in which the byte of "&" has no other
/// meaning. UTF-16, UTF-7, EBCDIC, and charsets with escapes or shifts such as ISO-2022 do not
/// extend ASCII: convert such text (`StringHelper::GetWideFromGeneric`) and use the wide flavour.
///
/// Source: the HTML standard, from "Character reference state" to "Numeric character reference end
/// state".
template <typename C, typename S>
class KESTRA_HTML_API CharacterReferences {
public:
    /// Decodes all references in text between tags.
    ///
    /// Named ones: the longest of the standard's 2,231 names counts, 106 of which need no ";":
    /// "&notit;" is the not sign and "it;", and "&notin;" is one character. Numeric ones, decimal
    /// and hexadecimal: the ";" may be missing; 0, surrogates and what is greater than 0x10FFFF
    /// stand for U+FFFD, 0x80 to 0x9F for the characters of windows-1252 where it has one,
    /// everything else for itself, other control characters and noncharacters too. What is no
    /// reference stays as it is. Text is decoded once: "&amp;lt;" is "&lt;".
    ///
    /// @param text     as it is written
    /// @param decoded  receives the result, if anything changes
    /// @param charset  of 8-bit text; wide text needs none. A reference to what it lacks stays as
    ///                 it is. 0 is the ANSI rule (the process's code page on Windows, 1252 on
    ///                 POSIX). In a charset that has no converter, or does not extend ASCII,
    ///                 nothing is decoded.
    static bool DecodeText(const S& text, S* decoded, StringNS::CharSet::Code charset = StringNS::CharSet::UTF8);

    /// The same for the value of an attribute, without its quotes. A name without ";" is no
    /// reference here when "=", a letter or a digit follows: "?a=1&copy=2" stays as it is.
    static bool DecodeAttributeValue(const S& value, S* decoded,
                                     StringNS::CharSet::Code charset = StringNS::CharSet::UTF8);

    /// Writes "&amp;", "&lt;" and "&gt;" for "&", "<" and ">". `DecodeText` gives the text again.
    ///
    /// No other character is encoded. That includes U+00A0, for which browsers write "&nbsp;": it
    /// is a character like any other, and in 8-bit text its bytes depend on the charset.
    static bool EncodeText(const S& text, S* encoded);

    /// Writes "&amp;" for "&", and "&quot;" or "&#39;" for the quote. `DecodeAttributeValue` gives
    /// the value again.
    ///
    /// @param value    the characters
    /// @param quote    QUOTE_DOUBLE or QUOTE_SINGLE, the one that is written around the value. Any
    ///                 other number encodes both, for a value whose quotes are not yet known. A
    ///                 value without quotes can need more than that.
    /// @param encoded  receives the result, if anything changes
    static bool EncodeAttributeValue(const S& value, std::uint32_t quote, S* encoded);
};

}  // namespace Kestra::HTML
