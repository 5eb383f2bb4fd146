#include "c/TokenHandle.h"

#include <algorithm>
#include <new>

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
    return layout->getFlags == nullptr ? 0 : layout->getFlags(bases[0]);
}

template <typename C, typename S>
void TokenHandle<C, S>::SummarizeEvent(kestra_html_summary* summary) const {
    summary->kind = kind;
    summary->name = MakeString("", 0);
    summary->text = HasBytes() ? EncodeBytesOrNull(*Get<std::string>(layout->bytes)) : MakeString("", 0);
    summary->attribute_count = 0;
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetDecodedText(kestra_html_string* string) const {
    if (HasBytes())
        return GetString(KESTRA_HTML_PART_TEXT, string);
    const S& text = *Get<S>(layout->strings[KESTRA_HTML_PART_TEXT]);
    S* const decoded = UseWork().strings.Next();
    *string = Encode(Decode(text, false, parser->GetCharset(), decoded) ? *decoded : text);
    return KESTRA_HTML_OK;
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetAttribute(std::size_t index, kestra_html_attribute* attribute) const {
    if (index >= CountAttributes())
        return KESTRA_HTML_INVALID_ARGUMENT;
    kestra_html_attribute answer{};
    if (HasItems()) {
        const HTML::EntityToken<C, S>& item = GetItems()[index];
        answer.name = answer.before_equals = answer.after_equals = MakeString("", 0);
        answer.prefix = Encode(item.prefix);
        answer.value = Encode(item.value);
        answer.quote = item.quote;
        answer.has_value = 1;
    } else {
        const Entry entry = GetEntry(index);
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
    if (HasItems()) {
        *value = Encode(GetItems()[index].value);
        return KESTRA_HTML_OK;
    }
    const HTML::Attribute<C, S>& written = *GetEntry(index).attribute;
    if (!written.hasValue) {
        *value = MakeString("", 0);
        return KESTRA_HTML_OK;
    }
    S* const decoded = UseWork().strings.Next();
    *value = Encode(Decode(written.value, true, parser->GetCharset(), decoded) ? *decoded : written.value);
    return KESTRA_HTML_OK;
}

template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::GetAttributePlace(std::size_t index, kestra_html_attribute_place* place) const {
    if (index >= CountAttributes())
        return KESTRA_HTML_INVALID_ARGUMENT;
    if (HasItems())
        return KESTRA_HTML_WRONG_KIND;
    const Entry entry = GetEntry(index);
    HTML::AttributePlace found;
    if (entry.part == 0 && !MustSplit(GetAttributes()[entry.index])) {
        if (parser->GetAttributePlace(entry.index, &found) != KESTRA_HTML_OK)
            return KESTRA_HTML_INVALID_ARGUMENT;
    } else {
        if (work.placesOf != entry.index) {
            UseWork().placesOf = NO_ATTRIBUTE;
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
    const std::size_t count = CountEntries();
    for (std::size_t i = 0; i < count; ++i) {
        const S& candidate = GetEntry(i).attribute->name;
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
    work.isUsed = false;
    work.splitting = Splitting::UNKNOWN;
    work.splitUsed = 0;
    work.bytes.Reset();
    work.strings.Reset();
    work.wide.Reset();
    work.placesOf = NO_ATTRIBUTE;
}

/// @param index  less than their count
template <typename C, typename S>
auto TokenHandle<C, S>::GetEntry(std::size_t index) const -> Entry {
    return work.splitting == Splitting::DONE ? work.entries[index] : Entry{&GetAttributes()[index], index, 0};
}

template <typename C, typename S>
void TokenHandle<C, S>::SplitAttributes(const Vector<HTML::Attribute<C, S>>& attributes) const {
    work.isUsed = true;
    if (std::none_of(attributes.begin(), attributes.end(), [this](const auto& one) { return MustSplit(one); })) {
        work.splitting = Splitting::NEEDLESS;
        return;
    }
    work.entries.clear();
    work.splitUsed = 0;
    for (std::uint64_t i = 0; i < attributes.size(); ++i)
        AddEntries(attributes[i], i);
    work.splitting = Splitting::DONE;
}

template <typename C, typename S>
void TokenHandle<C, S>::AddEntries(const HTML::Attribute<C, S>& attribute, std::uint64_t index) const {
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
kestra_html_string TokenHandle<C, S>::EncodeUtf8(WideStringView string) const {
    std::string* const text = UseWork().bytes.Next();
    AppendUtf8(string, text);
    return MakeString(text->data(), text->size());
}

/// Junk and marks are bytes of the document, whatever the flavour.
template <typename C, typename S>
std::uint32_t TokenHandle<C, S>::EncodeBytes(const std::string& text, kestra_html_string* string) const {
    if (IS_NARROW<C> || kind == KESTRA_HTML_MARK || text.empty()) {
        *string = MakeString(text.data(), text.size());
        return KESTRA_HTML_OK;
    }
    WideString* const wide = UseWork().wide.Next();
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
        std::string* const bytes = UseWork().bytes.Next();
        AppendUtf8(*wide, bytes);
        *string = MakeString(bytes->data(), bytes->size());
    } else {
        *string = MakeString(wide->data(), wide->size() * sizeof(WideChar));
    }
    return KESTRA_HTML_OK;
}

template <typename C, typename S>
kestra_html_string TokenHandle<C, S>::EncodeBytesOrNull(const std::string& text) const {
    kestra_html_string string{nullptr, 0};
    if (EncodeBytes(text, &string) == KESTRA_HTML_OUT_OF_MEMORY)
        throw std::bad_alloc();
    return string;
}

KESTRA_HTML_INSTANTIATE(TokenHandle);

}  // namespace Kestra::C
