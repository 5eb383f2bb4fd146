#include "html/parser/RecordConverter.h"

#include <bit>
#include <new>

#include "html/framework/AssignText.h"
#include "html/framework/Instantiate.h"
#include "platform/AsciiRuns.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML {

namespace {

bool ContainsReplacementCharacter(const WideString& text) {
    return text.find(static_cast<WideChar>(0xFFFD)) != WideString::npos;
}

/// The bytes to convert of a string and the NUL that ends it. The NUL completes a unit of UTF-16BE
/// or UTF-32 that lacks its last byte, and is left out anywhere else. In 1200 an odd last byte
/// stays (kept).
std::uint64_t CountBytes(StringNS::CharSet::Code code, const std::string& text) {
    if (code == StringNS::CharSet::UTF16_LE)
        return text.size();
    return StringNS::CharSetConverter::LeaveOutTerminator(code, text.data(), text.size() + 1);
}

/// Resizes the string without a library call if it was ever this long; its contents are then
/// unspecified.
template <typename S>
void ResizeUnspecified(std::size_t length, S* text) {
    if (length <= text->size()) [[likely]]
        text->erase(length);
    else
        text->resize(length);
}

}  // namespace

template <typename C, typename S>
RecordConverter<C, S>::RecordConverter()
    : charset(0),
      charsetShortcut(SHORTCUT_UNKNOWN),
      shortcut(SHORTCUT_NONE),
      result(0),
      detectReplacements(false),
      hasConverted(false),
      hasReplacements(false) {}

template <typename C, typename S>
RecordConverter<C, S>::RecordConverter(const RecordConverter&) = default;

template <typename C, typename S>
RecordConverter<C, S>& RecordConverter<C, S>::operator=(const RecordConverter&) = default;

template <typename C, typename S>
RecordConverter<C, S>::~RecordConverter() = default;

template <typename C, typename S>
void RecordConverter<C, S>::Begin(StringNS::CharSet::Code documentCharset, bool detect) {
    result = 0;
    detectReplacements = detect;
    hasConverted = false;
    hasReplacements = false;
    if (documentCharset != charset || charsetShortcut == SHORTCUT_UNKNOWN) {
        charset = documentCharset;
        charsetShortcut = SHORTCUT_UNKNOWN;
        try {
            charsetShortcut = FindShortcut();
        } catch (const std::bad_alloc&) {
            result = RESULT_OUT_OF_MEMORY;
        }
    }
    const bool hasShortcut = charsetShortcut != SHORTCUT_UNKNOWN && Base::AreServicesReal();
    shortcut = hasShortcut ? charsetShortcut : SHORTCUT_NONE;
}

template <typename C, typename S>
auto RecordConverter<C, S>::FindShortcut() -> Shortcut {
    if (charset == StringNS::CharSet::UTF16_LE) {
        const bool isCopy = std::is_same_v<C, WideChar> && std::endian::native == std::endian::little;
        return isCopy ? SHORTCUT_COPY : SHORTCUT_NONE;
    }
    return converter.KeepsAscii(charset) ? SHORTCUT_ASCII : SHORTCUT_NONE;
}

/// Most strings of a tag are empty, and most strings of a document are ASCII; the conversion
/// services are called only for the others.
template <typename C, typename S>
void RecordConverter<C, S>::ConvertString(const S& from, OtherString* to) {
    if (from.empty() && shortcut != SHORTCUT_NONE)
        to->clear();
    else
        ConvertCharacters(from, to);
}

template <typename C, typename S>
void RecordConverter<C, S>::ConvertCharacters(const S& from, OtherString* to) {
    if (shortcut == SHORTCUT_ASCII) {
        ResizeUnspecified(from.size(), to);
        if (StringNS::CopyAscii(from.data(), from.size(), to->data()) != from.size())
            CallServices(from, to);
    } else if (shortcut == SHORTCUT_COPY) {
        if constexpr (std::is_same_v<C, WideChar>) {
            const char* const bytes = reinterpret_cast<const char*>(from.data());
            AssignText(bytes, bytes + from.size() * sizeof(C), to);
        }
    } else {
        CallServices(from, to);
    }
}

template <typename C, typename S>
void RecordConverter<C, S>::CallServices(const S& from, OtherString* to) {
    if (result != 0)
        return;
    const Base::Services& services = Base::GetServices();
    if constexpr (std::is_same_v<C, char>) {
        result = services.toWide(&converter, charset, from.data(), CountBytes(charset, from), to);
        if (result == 0 && detectReplacements && ContainsReplacementCharacter(*to) &&
            !(charset == StringNS::CharSet::UTF8 && from.find("\xEF\xBF\xBD") != std::string::npos))
            hasReplacements = true;
    } else {
        result = services.fromWide(&converter, charset, from.data(), from.size(), to);
    }
}

template <typename C, typename S>
auto RecordConverter<C, S>::ConvertField(const S* from, OtherString* to) -> const OtherString* {
    hasConverted = true;
    ConvertString(*from, to);
    return to;
}

template <typename C, typename S>
template <template <typename, typename> class Item>
void RecordConverter<C, S>::ConvertList(const Vector<Item<C, S>>& from, Vector<Item<OtherCharacter, OtherString>>* to) {
    to->clear();
    for (const Item<C, S>& source : from) {
        Item<OtherCharacter, OtherString>& target = to->AppendRecycled();
        ForEachField<Item>(
            [this, &source, &target]<typename Tag, typename Getter>(const RecordField<Tag, Getter>& field) {
                if constexpr (std::is_same_v<Tag, StringField>)
                    this->ConvertString(field.In(source), &field.In(target));
                else
                    field.In(target) = field.In(source);
            });
    }
}

template <typename C, typename S>
auto RecordConverter<C, S>::ConvertField(const Vector<Attribute<C, S>>* from)
    -> const Vector<Attribute<OtherCharacter, OtherString>>* {
    ConvertList(*from, &attributes);
    return &attributes;
}

template <typename C, typename S>
auto RecordConverter<C, S>::ConvertField(const Vector<EntityToken<C, S>>* from)
    -> const Vector<EntityToken<OtherCharacter, OtherString>>* {
    ConvertList(*from, &tokens);
    return &tokens;
}

template <typename C, typename S>
template <template <typename, typename> class Record>
void RecordConverter<C, S>::Convert(const Record<C, S>& from, Record<OtherCharacter, OtherString>* to) {
    if constexpr (std::is_same_v<Record<C, S>, JunkData<C, S>>)
        result = 0;  // it needs nothing of what `Begin` could not have
    OtherString* string = strings.data();
    ForEachField<Record>(
        [this, &from, to, &string]<typename Tag, typename Getter>(const RecordField<Tag, Getter>& field) {
            if constexpr (std::is_same_v<Tag, TextField>)
                field.In(*to) = this->ConvertField(field.In(from), string++);
            else if constexpr (std::is_same_v<Tag, AttributesField> || std::is_same_v<Tag, TokensField>)
                field.In(*to) = this->ConvertField(field.In(from));
            else
                field.In(*to) = field.In(from);
        });
}

template <typename C, typename S>
std::uint32_t RecordConverter<C, S>::GetResult() const {
    return result;
}

template <typename C, typename S>
bool RecordConverter<C, S>::HasConverted() const {
    return hasConverted;
}

template <typename C, typename S>
bool RecordConverter<C, S>::HasReplacements() const {
    return hasReplacements;
}

KESTRA_HTML_INSTANTIATE(RecordConverter);

#define INSTANTIATE(NAME, RECORD, WORD)                                                               \
    template void RecordConverter<char, std::string>::Convert(const RECORD<char, std::string>&,       \
                                                              RECORD<WideChar, WideString>*);         \
    template void RecordConverter<WideChar, WideString>::Convert(const RECORD<WideChar, WideString>&, \
                                                                 RECORD<char, std::string>*);
KESTRA_HTML_FOR_EACH_KIND(INSTANTIATE)
#undef INSTANTIATE

}  // namespace Kestra::HTML
