#include "html/rewrite/TagLayoutReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "html/parser/GenericParserEngine.h"

namespace Kestra::HTML {

bool TagLayoutReader::Read(const GenericParser& parser, TokenKind kind, std::uint64_t begin, std::string_view bytes,
                           const DocumentText& charset) {
    std::uint64_t nameEnd = 0;
    layout.offset = begin;
    if (!GenericParser::Internals::GetEngine(parser).GetTagNameEnd(&nameEnd))
        return false;
    const std::size_t unit = charset.GetUnitSize();
    layout.nameEnd = static_cast<std::size_t>(nameEnd - layout.offset);
    layout.nameBegin = unit * (kind == TOKEN_START_TAG || kind == TOKEN_SHORT_TAG ? 1 : 2);
    while (layout.nameBegin < layout.nameEnd && charset.IsSpaceAt(bytes, layout.nameBegin))
        layout.nameBegin += unit;
    layout.attributes.clear();
    AttributePlace place;
    for (std::uint64_t i = 0; parser.GetAttributePlace(i, &place) == PARSER_OK; ++i) {
        if (MayBeFolded(place, bytes) && parser.GetAttributeParts(i, &attributeParts) == PARSER_OK)
            layout.attributes.insert(layout.attributes.end(), attributeParts.begin(), attributeParts.end());
        else
            layout.attributes.push_back(place);
    }
    return true;
}

/// Bare words are folded only into values that count as unquoted, and these then contain white
/// space, a quote or a "<".
bool TagLayoutReader::MayBeFolded(const AttributePlace& place, std::string_view bytes) const {
    if (place.valueBegin == place.nameEnd || place.end != place.valueEnd)
        return false;
    const auto begin = static_cast<std::size_t>(place.valueBegin - layout.offset);
    const std::string_view value = bytes.substr(begin, static_cast<std::size_t>(place.valueEnd - place.valueBegin));
    const auto isTelling = [](char byte) {
        return static_cast<unsigned char>(byte) <= ' ' || static_cast<unsigned char>(byte) >= 0x80 || byte == '"' ||
               byte == '\'' || byte == '<';
    };
    return std::any_of(value.begin(), value.end(), isTelling);
}

}  // namespace Kestra::HTML
