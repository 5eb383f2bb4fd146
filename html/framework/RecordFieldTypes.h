#pragma once

#include <cstdint>
#include <string>

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "platform/Characters.h"
#include "platform/Vector.h"

/// @file
/// The types that the fields of records have, and a line of `html/framework/RecordFields.h`. Not
/// installed.

namespace Kestra::HTML {

/// A string of the record's flavour that lies elsewhere.
struct TextField {
    template <typename C, typename S>
    using Type = const S*;
};

/// Bytes in both flavours that lie elsewhere.
struct BytesField {
    template <typename C, typename S>
    using Type = const std::string*;
};

template <template <typename, typename> class Item>
struct ListField {
    template <typename C, typename S>
    using Type = const Vector<Item<C, S>>*;
};

using AttributesField = ListField<Attribute>;
using TokensField = ListField<EntityToken>;

/// What a record has itself, in one type for both flavours.
template <typename Value>
struct OwnField {
    template <typename C, typename S>
    using Type = Value;
};

using FlagField = OwnField<bool>;
using NumberField = OwnField<std::uint32_t>;
using WideStringField = OwnField<WideString>;
using OwnBytesField = OwnField<std::string>;

struct CharacterField {
    template <typename C, typename S>
    using Type = C;
};

struct StringField {
    template <typename C, typename S>
    using Type = S;
};

template <template <typename, typename> class Item>
struct OwnListField {
    template <typename C, typename S>
    using Type = Vector<Item<C, S>>;
};

using OwnAttributesField = OwnListField<Attribute>;
using OwnTokensField = OwnListField<EntityToken>;

/// Whether a record has memory of its own for a field, which grows with the input.
template <typename Tag>
inline constexpr bool IS_BUFFER = false;
template <>
inline constexpr bool IS_BUFFER<StringField> = true;
template <>
inline constexpr bool IS_BUFFER<OwnBytesField> = true;
template <>
inline constexpr bool IS_BUFFER<OwnAttributesField> = true;
template <>
inline constexpr bool IS_BUFFER<OwnTokensField> = true;

/// A line of a list. It finds the field by its name, in a record of either flavour, and in any
/// other record that has a field of this name.
template <typename TypeOfField, typename Getter>
struct RecordField {
    using Tag = TypeOfField;

    const char* name;
    Getter getter;

    template <typename Record>
    constexpr auto& In(Record& record) const {
        return getter(record);
    }
};

template <typename Tag, typename Getter>
constexpr RecordField<Tag, Getter> MakeRecordField(const char* name, Getter getter) {
    return {name, getter};
}

}  // namespace Kestra::HTML
