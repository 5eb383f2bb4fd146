#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>

#include "html/framework/RecordFields.h"
#include "html/framework/TokenRecords.h"
#include "platform/CharSet.h"
#include "platform/CharSetConverter.h"
#include "platform/Characters.h"

namespace Kestra::HTML {

template <typename C, typename S>
class RecognizerBuffers;

/// The flavour that `C` is not.
template <typename C>
struct OtherFlavour {
    using Character = std::conditional_t<std::is_same_v<C, char>, WideChar, char>;
    using String = std::basic_string<Character>;
};

/// The record of the same kind in the other flavour.
template <typename Record>
struct RecordOfOtherFlavour;

template <template <typename, typename> class Record, typename C, typename S>
struct RecordOfOtherFlavour<Record<C, S>> {
    using Type = Record<typename OtherFlavour<C>::Character, typename OtherFlavour<C>::String>;
};

/// The largest number of strings of the flavour in the fields of one record.
constexpr std::size_t CountMostTexts() {
    std::size_t most = 0;
    ForEachKind([&most]<template <typename, typename> class Record>() {
        std::size_t count = 0;
        ForEachField<Record>([&count]<typename Tag, typename Getter>(const RecordField<Tag, Getter>&) {
            count += std::is_same_v<Tag, TextField> ? 1 : 0;
        });
        most = count > most ? count : most;
    });
    return most;
}

/// Rebuilds token records of the flavour (`C`, `S`) in the other one, in its own strings, which the
/// next record reuses.
///
/// Not exported. A copy opens its own converter at its first use.
template <typename C, typename S>
class RecordConverter {
public:
    using OtherCharacter = typename OtherFlavour<C>::Character;
    using OtherString = typename OtherFlavour<C>::String;

    RecordConverter();
    RecordConverter(const RecordConverter& other);
    RecordConverter& operator=(const RecordConverter& other);
    ~RecordConverter();

    /// Prepares for one record: 8-bit strings are in `documentCharset`, wide ones become bytes of
    /// it.
    /// @param detect  search for replacements in what 8-bit strings become
    void Begin(StringNS::CharSet::Code documentCharset, bool detect);

    /// Fills a record of the other flavour; it is valid until the next `Begin`, and only if
    /// `GetResult` is 0. Throws `std::bad_alloc` when its own strings and lists cannot grow. Junk
    /// is bytes in both flavours and crosses unconverted.
    template <template <typename, typename> class Record>
    void Convert(const Record<C, S>& from, Record<OtherCharacter, OtherString>* to);

    /// 0, or the code of the first string that could not be converted. RESULT_OUT_OF_MEMORY says
    /// nothing about the charset: the next record is converted as usual.
    std::uint32_t GetResult() const;

    /// True when a string was converted, or failed to be.
    bool HasConverted() const;

    /// True when an invalid byte sequence became U+FFFD. A U+FFFD of the UTF-8 document itself does
    /// not count.
    bool HasReplacements() const;

private:
    template <typename, typename>
    friend class RecognizerBuffers;

    /// Which strings can be converted without the conversion services.
    enum Shortcut : std::uint32_t {
        SHORTCUT_UNKNOWN,  // no record yet, or no memory to find out
        SHORTCUT_NONE,
        SHORTCUT_ASCII,  // a string of ASCII is the same in both flavours
        SHORTCUT_COPY,   // wide characters are their own bytes
    };

    Shortcut FindShortcut();
    void ConvertString(const S& from, OtherString* to);
    void ConvertCharacters(const S& from, OtherString* to);
    void CallServices(const S& from, OtherString* to);
    const OtherString* ConvertField(const S* from, OtherString* to);
    const Vector<Attribute<OtherCharacter, OtherString>>* ConvertField(const Vector<Attribute<C, S>>* from);
    const Vector<EntityToken<OtherCharacter, OtherString>>* ConvertField(const Vector<EntityToken<C, S>>* from);
    template <template <typename, typename> class Item>
    void ConvertList(const Vector<Item<C, S>>& from, Vector<Item<OtherCharacter, OtherString>>* to);

    static constexpr std::size_t MOST_STRINGS = CountMostTexts();  // of one record, its lists apart

    StringNS::CharSetConverter converter;
    StringNS::CharSet::Code charset;
    Shortcut charsetShortcut;  ///< of `charset`
    Shortcut shortcut;         ///< of this record: none where the services are not the real ones
    std::uint32_t result;
    bool detectReplacements;
    bool hasConverted;
    bool hasReplacements;
    std::array<OtherString, MOST_STRINGS> strings;
    Vector<Attribute<OtherCharacter, OtherString>> attributes;
    Vector<EntityToken<OtherCharacter, OtherString>> tokens;
};

}  // namespace Kestra::HTML
