#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/TokenPlace.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"

namespace Kestra::Tool {

/// Takes a part of the page.
/// @throws what the output throws
using WritePage = std::function<void(std::string_view bytes)>;

/// What a token of a page is marked with; may be combined. The script of the page has the same
/// numbers.
enum ViewMark : std::uint32_t {
    VIEW_MARK_OPEN = 1,         ///< it is not closed
    VIEW_MARK_FOLDED = 2,       ///< bare words are folded into the value of an attribute
    VIEW_MARK_UNDECODABLE = 4,  ///< bytes of it are no characters of the charset
    VIEW_MARK_ESCAPES = 8,      ///< it has escape sequences of ISO-2022
};

/// Where a name or a value lies in a token: in bytes from the first one of the document.
struct ViewRange {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// An attribute as it was written.
struct ViewAttribute {
    ViewRange name;
    ViewRange value;
    bool hasValue = false;
    bool isFolded = false;  ///< a bare word that is folded into the attribute before it
};

/// A token on its way into the page.
struct ViewToken {
    std::size_t kind = 0;  ///< a position in the list of kinds
    HTML::TokenPlace place;
    std::string_view bytes;
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    std::uint32_t marks = 0;
    /// The name of a tag in characters of the token: its first one and their number; none when the
    /// number is 0.
    std::size_t nameBegin = 0;
    std::size_t nameLength = 0;
    std::vector<ViewAttribute> attributes;
};

/// Writes the tokens of a document as JSON, in script elements that browsers do not run. Each has
/// some thousand tokens, one list for each of their properties, and the text of all.
class ViewTokens {
public:
    static constexpr std::size_t MOST_TOKENS = 4096;
    static constexpr std::size_t MOST_UNITS = std::size_t{256} * 1024;  ///< but for a single token

    explicit ViewTokens(WritePage writePage);

    /// @param token  its text must begin where that of the last one ended
    void Add(const ViewToken& token);

    /// Writes what is gathered.
    void Flush();

private:
    void AddParts(const ViewToken& token, WideStringView text);

    WritePage write;
    std::size_t count = 0;
    std::uint64_t begin = 0;  ///< of the first token, in bytes
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    WideString texts;
    WideString decoded;  ///< the text of one token
    std::int64_t lastLine = 0;
    bool hasLengths = false;  ///< a token has not as many characters as bytes
    bool hasMarks = false;

    // Lists without their brackets. The lines are differences, which are short.
    std::string kinds;
    std::string sizes;
    std::string lengths;
    std::string lines;
    std::string columns;
    std::string marks;
    std::string parts;
};

/// The text of bytes in a charset, as the page shows it. One that is unknown, or that the platform
/// cannot decode, is taken for windows-1252.
/// @return false when a byte is no character of the charset
bool DecodeForView(StringNS::CharSet::Code charset, std::string_view bytes, WideString* text);

/// Where a text can be cut so that no character is: at its end or some bytes before it. A text that
/// ISO-2022 switches between sets is cut after a line feed, because a line starts anew.
/// @return how many bytes come first; 0 when they are no whole character
std::size_t FindCutForView(StringNS::CharSet::Code charset, std::string_view bytes);

/// The charset in which `DecodeForView` reads.
StringNS::CharSet::Code GetShownCharset(StringNS::CharSet::Code charset);

}  // namespace Kestra::Tool
