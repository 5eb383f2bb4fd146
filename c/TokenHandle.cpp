#include "c/TokenHandle.h"

#include "html/framework/Instantiate.h"
#include "html/output/AttributesNormalizer.h"
#include "html/references/CharacterReferences.h"
#include "platform/CharSet.h"
#include "platform/CodePoints.h"
#include "platform/StringHelper.h"

namespace Kestra::C {

namespace {

using StringNS::CharSet;

constexpr std::size_t MOST_UTF8_BYTES = 3;  // of a UTF-16 unit

/// Appends UTF-8; a lone surrogate is U+FFFD.
void AppendUtf8(WideStringView text, std::string* output) {
    output->reserve(output->size() + text.size() * MOST_UTF8_BYTES);
    const WideChar* from = text.data();
    const WideChar* const end = from + text.size();
    while (from != end) {
        const char32_t codePoint = ReadUtf16(&from, end);
        WriteUtf8(IsSurrogate(codePoint) ? REPLACEMENT_CHARACTER : codePoint,
                  [output](char byte) { output->push_back(byte); });
    }
}

bool Decode(const std::string& text, bool isValue, CharSet::Code charset, std::string* decoded) {
    using References = HTML::CharacterReferences<char, std::string>;
    return isValue ? References::DecodeAttributeValue(text, decoded, charset)
                   : References::DecodeText(text, decoded, charset);
}

bool Decode(const WideString& text, bool isValue, CharSet::Code, WideString* decoded) {
    using References = HTML::CharacterReferences<WideChar, WideString>;
    return isValue ? References::DecodeAttributeValue(text, decoded) : References::DecodeText(text, decoded);
}

template <typename C>
constexpr bool IS_NARROW = sizeof(C) == 1;

}  // namespace

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetFlags() const {
    return GetParts().flags;
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetString(std::uint32_t part, kestra_html_string* string) const {
    const TokenParts<C, S>& parts = GetParts();
    if (part >= TokenParts<C, S>::COUNT)
        return KESTRA_HTML_INVALID_ARGUMENT;
    if (part == KESTRA_HTML_PART_TEXT && parts.bytes != nullptr)
        return EncodeBytes(*parts.bytes, string);
    *string = parts.strings[part] == nullptr ? MakeString("", 0) : Encode(*parts.strings[part]);
    return KESTRA_HTML_OK;
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetDecodedText(kestra_html_string* string) const {
    const S* const text = GetParts().strings[KESTRA_HTML_PART_TEXT];
    if (text == nullptr)
        return GetString(KESTRA_HTML_PART_TEXT, string);
    S* const decoded = work.strings.Next();
    *string = Encode(Decode(*text, false, parser->GetCharset(), decoded) ? *decoded : *text);
    return KESTRA_HTML_OK;
}

template <typename C, typename S>
std::size_t TokenHandle<C, S>::CountAttributes() const {
    const TokenParts<C, S>& parts = GetParts();
    return parts.items != nullptr ? parts.items->size() : GetEntries().size();
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetAttribute(std::size_t index, kestra_html_attribute* attribute) const {
    if (index >= CountAttributes())
        return KESTRA_HTML_INVALID_ARGUMENT;
    kestra_html_attribute answer{};
    if (const auto* const items = GetParts().items; items != nullptr) {
        const HTML::EntityToken<C, S>& item = (*items)[index];
        answer.name = answer.before_equals = answer.after_equals = MakeString("", 0);
        answer.prefix = Encode(item.prefix);
        answer.value = Encode(item.value);
        answer.quote = item.quote;
        answer.has_value = 1;
    } else {
        const Entry& entry = GetEntries()[index];
        const HTML::Attribute<C, S>& written = *entry.attribute;
        const kestra_html_string none = MakeString("", 0);
        answer.prefix = Encode(written.prefix);
        answer.name = Encode(written.name);
        // White space after the last word is before an "=" that is not there.
        answer.before_equals = written.hasValue || entry.part > 0 ? Encode(written.beforeEquals) : none;
        answer.after_equals = written.hasValue ? Encode(written.afterEquals) : none;
        answer.value = written.hasValue ? Encode(written.value) : none;
        answer.quote = written.hasValue ? written.quote : 0;
        answer.has_value = written.hasValue ? 1 : 0;
    }
    AnswerStruct(answer, attribute);
    return KESTRA_HTML_OK;
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetDecodedValue(std::size_t index, kestra_html_string* value) const {
    if (index >= CountAttributes())
        return KESTRA_HTML_INVALID_ARGUMENT;
    const bool isItem = GetParts().items != nullptr;
    if (!isItem && !GetEntries()[index].attribute->hasValue) {
        *value = MakeString("", 0);
        return KESTRA_HTML_OK;
    }
    const S& written = isItem ? (*GetParts().items)[index].value : GetEntries()[index].attribute->value;
    S* const decoded = work.strings.Next();
    const bool changes = !isItem && Decode(written, true, parser->GetCharset(), decoded);
    *value = Encode(changes ? *decoded : written);
    return KESTRA_HTML_OK;
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetAttributePlace(std::size_t index, kestra_html_attribute_place* place) const {
    if (index >= CountAttributes())
        return KESTRA_HTML_INVALID_ARGUMENT;
    if (GetParts().items != nullptr)
        return KESTRA_HTML_WRONG_KIND;
    const Entry& entry = GetEntries()[index];
    HTML::AttributePlace found;
    if (entry.part == 0 && !MustSplit((*GetParts().attributes)[entry.index])) {
        if (parser->GetAttributePlace(entry.index, &found) != KESTRA_HTML_OK)
            return KESTRA_HTML_INVALID_ARGUMENT;
    } else {
        if (work.placesOf != entry.index) {
            work.placesOf = NO_ATTRIBUTE;
            if (parser->GetAttributeParts(entry.index, &work.places) != KESTRA_HTML_OK)
                return KESTRA_HTML_INVALID_ARGUMENT;
            work.placesOf = entry.index;
        }
        if (entry.part >= work.places.size())
            return KESTRA_HTML_INVALID_ARGUMENT;
        found = work.places[entry.part];
    }
    *place = {found.begin, found.end, found.nameBegin, found.nameEnd, found.valueBegin, found.valueEnd};
    return KESTRA_HTML_OK;
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::FindAttribute(std::string_view name, std::size_t* index) const {
    const std::vector<Entry>& entries = GetEntries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const S& candidate = entries[i].attribute->name;
        bool isEqual = candidate.size() == name.size();
        for (std::size_t k = 0; isEqual && k < name.size(); ++k)
            isEqual = FoldAscii(candidate[k]) == static_cast<C>(FoldAscii(name[k]));
        if (isEqual) {
            *index = i;
            return KESTRA_HTML_OK;
        }
    }
    return KESTRA_HTML_NO_ATTRIBUTE;
}

template <typename C, typename S>
void TokenHandle<C, S>::Forget() {
    work.hasParts = false;
    work.hasEntries = false;
    work.parts = {};
    work.splitUsed = 0;
    work.bytes.Reset();
    work.strings.Reset();
    work.wide.Reset();
    work.placesOf = NO_ATTRIBUTE;
}

template <typename C, typename S>
const TokenParts<C, S>& TokenHandle<C, S>::GetParts() const {
    if (!work.hasParts) {
        if (record != nullptr)
            find(record, &work.parts);
        work.hasParts = true;
    }
    return work.parts;
}

template <typename C, typename S>
auto TokenHandle<C, S>::GetEntries() const -> const std::vector<Entry>& {
    if (!work.hasEntries) {
        work.entries.clear();
        work.splitUsed = 0;
        const auto* const attributes = GetParts().attributes;
        for (std::uint64_t i = 0; attributes != nullptr && i < attributes->size(); ++i)
            AddEntries(i);
        work.hasEntries = true;
    }
    return work.entries;
}

template <typename C, typename S>
void TokenHandle<C, S>::AddEntries(std::uint64_t index) const {
    const HTML::Attribute<C, S>& attribute = (*work.parts.attributes)[index];
    if (!MustSplit(attribute)) {
        work.entries.push_back({&attribute, index, 0});
        return;
    }
    if (work.splitUsed == work.split.size())
        work.split.emplace_back();
    auto& parts = work.split[work.splitUsed++];
    HTML::AttributesNormalizer<C, S>::Split(attribute, GetSplitOptions(), &parts);
    for (std::size_t i = 0; i < parts.size(); ++i)
        work.entries.push_back({&parts[i], index, i});
}

/// Only a value without quotes can have taken up words. UTF-16 as bytes cannot be split.
template <typename C, typename S>
bool TokenHandle<C, S>::MustSplit(const HTML::Attribute<C, S>& attribute) const {
    return attribute.hasValue && attribute.quote == HTML::QUOTE_NONE && (flags & KESTRA_HTML_WORDS_IN_VALUES) == 0 &&
           !(IS_NARROW<C> && parser->IsWParser());
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetSplitOptions() const {
    if (parser->IsWParser())
        return HTML::SPLIT_PLAIN;
    if (!IS_NARROW<C>)
        return HTML::SPLIT_NARROW_SPACES;
    return CharSet::IsIso2022(parser->GetCharset()) ? HTML::SPLIT_ESCAPE_RUNS : HTML::SPLIT_PLAIN;
}

template <typename C, typename S>
kestra_html_string TokenHandle<C, S>::Encode(const S& string) const {
    if constexpr (!IS_NARROW<C>) {
        if (encoding == KESTRA_HTML_UTF8 && !string.empty()) {
            std::string* const text = work.bytes.Next();
            AppendUtf8(string, text);
            return MakeString(text->data(), text->size());
        }
    }
    return MakeString(string.data(), string.size() * sizeof(C));
}

/// Junk and marks are bytes of the document, whatever the flavour.
template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::EncodeBytes(const std::string& text, kestra_html_string* string) const {
    if (IS_NARROW<C> || kind == KESTRA_HTML_MARK || text.empty()) {
        *string = MakeString(text.data(), text.size());
        return KESTRA_HTML_OK;
    }
    WideString* const wide = work.wide.Next();
    if (parser->IsWParser()) {
        for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
            const auto low = static_cast<unsigned char>(text[i]);
            const auto high = static_cast<unsigned char>(text[i + 1]);
            wide->push_back(static_cast<WideChar>(high << 8 | low));
        }
    } else {
        // The conversion leaves out a NUL at the end.
        const std::size_t size = text.size() - (text.back() == '\0' ? 1 : 0);
        const std::uint32_t result =
            StringNS::StringHelper::GetWideFromGeneric(parser->GetCharset(), text.data(), size, wide);
        if (result != KESTRA_HTML_OK)
            return result;
        if (size < text.size())
            wide->push_back(0);
    }
    if (encoding == KESTRA_HTML_UTF8) {
        std::string* const bytes = work.bytes.Next();
        AppendUtf8(*wide, bytes);
        *string = MakeString(bytes->data(), bytes->size());
    } else {
        *string = MakeString(wide->data(), wide->size() * sizeof(WideChar));
    }
    return KESTRA_HTML_OK;
}

KESTRA_HTML_INSTANTIATE(TokenHandle);

}  // namespace Kestra::C
