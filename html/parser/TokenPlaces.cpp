#include "html/parser/TokenPlaces.h"

#include "html/framework/Instantiate.h"
#include "html/output/AttributesNormalizer.h"

namespace Kestra::HTML {

namespace {

/// Characters of one quote of a value.
template <typename C, typename S>
std::uint64_t GetQuoteLength(const Attribute<C, S>& attribute) {
    return attribute.quote == QUOTE_SINGLE || attribute.quote == QUOTE_DOUBLE ? 1 : 0;
}

/// Characters that an attribute has in the document.
template <typename C, typename S>
std::uint64_t GetWrittenLength(const Attribute<C, S>& attribute) {
    const std::uint64_t name = attribute.prefix.size() + attribute.name.size();
    if (!attribute.hasValue)
        return name;
    return name + attribute.beforeEquals.size() + 1 + attribute.afterEquals.size() + attribute.value.size() +
           2 * GetQuoteLength(attribute);
}

}  // namespace

template <typename C, typename S>
void TokenPlaces<C, S>::BeginDocument(std::uint64_t bytes) {
    bytesDropped = bytes;
    boundaries[0] = boundaries[1] = Boundary();
    attributeCursor = AttributeCursor();
}

template <typename C, typename S>
void TokenPlaces<C, S>::SkipPiece(const ParserInput<C, S>& input) {
    boundaries[lastEnd] = {input.fedBefore + input.pieceLength, input.context.line, input.context.column};
}

template <typename C, typename S>
std::uint64_t TokenPlaces<C, S>::SkipTo(const ParserInput<C, S>& input, std::uint64_t bytes) {
    const std::uint64_t offset = (bytes - bytesDropped) / sizeof(C);
    boundaries[lastEnd] = {offset, input.context.line, input.context.column};
    return offset;
}

template <typename C, typename S>
void TokenPlaces<C, S>::GoBackToEnd(ParserInput<C, S>* input) const {
    const Boundary& end = boundaries[lastEnd];
    input->fedBefore = end.offset;
    input->pieceLength = 0;
    input->context.position = 0;
    input->context.length = 0;
    input->context.line = end.line;
    input->context.column = end.column;
}

template <typename C, typename S>
TokenPlace TokenPlaces<C, S>::GetTokenPlace() const {
    const Boundary& begin = boundaries[lastEnd ^ 1U];
    return {ToBytes(begin.offset), ToBytes(boundaries[lastEnd].offset), begin.line, begin.column};
}

template <typename C, typename S>
std::uint64_t TokenPlaces<C, S>::ToBytes(std::uint64_t offset) const {
    return bytesDropped + offset * sizeof(C);
}

template <typename C, typename S>
bool TokenPlaces<C, S>::GetAttributePlace(const DeliveredAttributes<C, S>& delivered, std::size_t index,
                                          AttributePlace* place) const {
    if (delivered.list == nullptr || index >= delivered.list->size())
        return false;
    *place = PlaceOf((*delivered.list)[index], FindAttribute(delivered, index));
    return true;
}

template <typename C, typename S>
bool TokenPlaces<C, S>::GetAttributeParts(const DeliveredAttributes<C, S>& delivered, bool isIso2022, std::size_t index,
                                          std::vector<AttributePlace>* places) const {
    if (delivered.list == nullptr || index >= delivered.list->size())
        return false;
    Vector<Attribute<C, S>> parts;
    const bool mayHaveEscapeRuns = isIso2022 && !IsAfterBareValue(delivered, index);
    AttributesNormalizer<C, S>::Split((*delivered.list)[index], mayHaveEscapeRuns ? SPLIT_ESCAPE_RUNS : SPLIT_PLAIN,
                                      &parts);
    std::vector<AttributePlace> found;
    std::uint64_t offset = FindAttribute(delivered, index);
    for (const Attribute<C, S>& part : parts) {
        found.push_back(PlaceOf(part, offset));
        offset += GetWrittenLength(part);
    }
    places->swap(found);
    return true;
}

template <typename C, typename S>
bool TokenPlaces<C, S>::IsAfterBareValue(const DeliveredAttributes<C, S>& delivered, std::size_t index) const {
    if (!delivered.bareValueEndsEscapeRuns || index == 0)
        return false;
    const Attribute<C, S>& before = (*delivered.list)[index - 1];
    if (!before.hasValue || before.quote != QUOTE_NONE || before.value.empty())
        return false;
    Vector<Attribute<C, S>> parts;
    AttributesNormalizer<C, S>::Split(before, SPLIT_ESCAPE_RUNS, &parts);
    return parts.size() == 1 && parts[0].quote == QUOTE_NONE;
}

/// Adds up the lengths of the attributes before it, starting from the one that was asked for last.
/// @return where the attribute begins, in characters
template <typename C, typename S>
std::uint64_t TokenPlaces<C, S>::FindAttribute(const DeliveredAttributes<C, S>& delivered, std::size_t index) const {
    AttributeCursor& cursor = attributeCursor;
    if (cursor.listBegin != delivered.listBegin || cursor.index > index)
        cursor = {delivered.listBegin, 0, delivered.listBegin};
    for (; cursor.index < index; ++cursor.index)
        cursor.offset += GetWrittenLength((*delivered.list)[cursor.index]);
    return cursor.offset;
}

/// @param offset  where it begins, in characters
template <typename C, typename S>
AttributePlace TokenPlaces<C, S>::PlaceOf(const Attribute<C, S>& attribute, std::uint64_t offset) const {
    const std::uint64_t nameBegin = offset + attribute.prefix.size();
    const std::uint64_t nameEnd = nameBegin + attribute.name.size();
    std::uint64_t valueBegin = nameEnd;
    if (attribute.hasValue)
        valueBegin += attribute.beforeEquals.size() + 1 + attribute.afterEquals.size() + GetQuoteLength(attribute);
    AttributePlace place;
    place.begin = ToBytes(offset);
    place.end = ToBytes(offset + GetWrittenLength(attribute));
    place.nameBegin = ToBytes(nameBegin);
    place.nameEnd = ToBytes(nameEnd);
    place.valueBegin = ToBytes(valueBegin);
    place.valueEnd = ToBytes(valueBegin + (attribute.hasValue ? attribute.value.size() : 0));
    return place;
}

KESTRA_HTML_INSTANTIATE_STRUCT(DeliveredAttributes);
KESTRA_HTML_INSTANTIATE(TokenPlaces);

}  // namespace Kestra::HTML
