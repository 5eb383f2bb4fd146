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

/// The bytes to convert of a string, which counts with the NUL that ends it: the NUL completes a unit of UTF-16BE or UTF-32 that lacks its
/// last byte, and is left out anywhere else. In 1200 an odd last byte stays one; hosts rely on it.
std::uint64_t CountBytes(StringNS::CharSet::Code code, const std::string& text) {
    if (code == StringNS::CharSet::UTF16_LE)
        return text.size();
    return StringNS::CharSetConverter::LeaveOutTerminator(code, text.data(), text.size() + 1);
}

/// Makes a string so long, without a call where it has been longer. What it holds then is worth nothing.
template <typename S>
void MakeLength(std::size_t length, S* text) {
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

/// Most strings of a tag are empty, and most of a document are ASCII; the services are called for what is left.
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
        MakeLength(from.size(), to);
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
auto RecordConverter<C, S>::Slot(std::size_t slot, const S* from) -> const OtherString* {
    hasConverted = true;
    ConvertString(*from, &strings[slot]);
    return &strings[slot];
}

template <typename C, typename S>
auto RecordConverter<C, S>::Attributes(const Vector<Attribute<C, S>>* from) -> const Vector<Attribute<OtherCharacter, OtherString>>* {
    attributes.clear();
    for (const Attribute<C, S>& source : *from) {
        Attribute<OtherCharacter, OtherString>& attribute = attributes.AppendRecycled();
        ConvertString(source.prefix, &attribute.prefix);
        ConvertString(source.name, &attribute.name);
        ConvertString(source.beforeEquals, &attribute.beforeEquals);
        ConvertString(source.afterEquals, &attribute.afterEquals);
        ConvertString(source.value, &attribute.value);
        attribute.quote = source.quote;
        attribute.hasValue = source.hasValue;
    }
    return &attributes;
}

template <typename C, typename S>
auto RecordConverter<C, S>::Tokens(const Vector<EntityToken<C, S>>* from) -> const Vector<EntityToken<OtherCharacter, OtherString>>* {
    tokens.clear();
    for (const EntityToken<C, S>& source : *from) {
        EntityToken<OtherCharacter, OtherString>& token = tokens.AppendRecycled();
        ConvertString(source.prefix, &token.prefix);
        ConvertString(source.value, &token.value);
        token.quote = source.quote;
    }
    return &tokens;
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const TextData<C, S>& from, TextData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.text)};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const CCommentData<C, S>& from, CCommentData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.text)};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const CPPCommentData<C, S>& from, CPPCommentData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.text)};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const SQuoteStringData<C, S>& from, SQuoteStringData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.text)};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const DQuoteStringData<C, S>& from, DQuoteStringData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.text)};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const StartTagData<C, S>& from, StartTagData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.prefix), Slot(1, from.name), Attributes(from.attributes), Slot(2, from.suffix), from.closed};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const ShortTagData<C, S>& from, ShortTagData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.prefix), Slot(1, from.name), Attributes(from.attributes), Slot(2, from.suffix), from.closed};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const EndTagData<C, S>& from, EndTagData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.prefix),        Slot(1, from.name),    Slot(2, from.afterName), from.closed,
           Attributes(from.attributes), from.slashBeforeClose, Slot(3, from.suffix)};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const CDATATagData<C, S>& from, CDATATagData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.keyword), Slot(1, from.text), from.closed};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const ConditionalTagData<C, S>& from, ConditionalTagData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.keyword), Slot(1, from.condition), Slot(2, from.tail), from.bracketClosed, from.tagClosed};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const CommentTagData<C, S>& from, CommentTagData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.text), from.closed};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const EntityTagData<C, S>& from, EntityTagData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.prefix), Slot(1, from.name), Tokens(from.tokens), Slot(2, from.suffix)};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const ExternTagData<C, S>& from, ExternTagData<OtherCharacter, OtherString>* to) {
    *to = {Slot(0, from.prefix), Slot(1, from.name), Attributes(from.attributes), Slot(2, from.suffix),
           from.freeStyle,       Slot(3, from.text), from.slashBeforeClose};
}

template <typename C, typename S>
void RecordConverter<C, S>::Convert(const JunkData<C, S>& from, JunkData<OtherCharacter, OtherString>* to) {
    result = 0;  // it needs nothing of what `Begin` could not have
    *to = {from.text};
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

}  // namespace Kestra::HTML
