#include "html/stateless/Events.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML::Stateless {

namespace {

constexpr std::uint32_t MARKUP_CHOOSES_CHARSET = 1;  // a bit of the flags

/// Takes the part before the next separator off `rest`, which is null after the last one.
std::string_view CutPart(std::string_view* rest, char separator) {
    const std::size_t end = rest->find(separator);
    const std::string_view part = rest->substr(0, end);
    *rest = end == std::string_view::npos ? std::string_view() : rest->substr(end + 1);
    return part;
}

std::string_view StripBlanks(std::string_view part) {
    const std::size_t first = part.find_first_not_of(' ');
    return first == std::string_view::npos ? part.substr(0, 0)
                                           : part.substr(first, part.find_last_not_of(' ') - first + 1);
}

/// The last parameter "charset=name" of a content type; null for none. A part with more than one
/// "=" is none.
std::string_view FindCharSet(std::string_view content) {
    std::string_view name;
    while (content.data() != nullptr) {
        std::string_view parameter = CutPart(&content, ';');
        const std::string_view key = CutPart(&parameter, '=');
        if (parameter.data() != nullptr && parameter.find('=') == std::string_view::npos &&
            EqualsKeyword(StripBlanks(key), "charset"))
            name = StripBlanks(parameter);
    }
    return name;
}

}  // namespace

// The charset

bool Events::MayChangeCharSet() const {
    return data.charset == StringNS::CharSet::UNKNOWN || (data.flags & MARKUP_CHOOSES_CHARSET) != 0;
}

std::uint32_t Events::CharSetKnown() const {
    return data.charset != StringNS::CharSet::UNKNOWN ? STATELESS_OK : STATELESS_NO_CHARSET;
}

/// Nothing happens when the name is empty.
void Events::SetCharSet(const std::string& name) {
    if (name.empty())
        return;
    ToWide(StringNS::CharSet::UNKNOWN, name, &data.wideName);
    data.charset = StringNS::CharSet::GetCharSetCode(data.wideName);
}

/// `<meta http-equiv=Content-Type content='...; charset=name'>`; the attribute `charset` is not
/// looked at.
std::uint32_t Events::GetCharSetFromStartTag() {
    if (!MayChangeCharSet())
        return STATELESS_INVALID_ARGUMENT;
    if (!EqualsKeyword(data.tagName, "meta"))
        return CharSetKnown();
    std::string_view httpEquiv;
    std::string_view name;
    for (const auto& [attributeName, attributeValue] : data.attributes) {
        if (EqualsKeyword(attributeName, "http-equiv")) {
            httpEquiv = attributeValue;
        } else if (EqualsKeyword(attributeName, "content")) {
            const std::string_view found = FindCharSet(attributeValue);
            if (found.data() != nullptr)
                name = found;
        }
    }
    if (EqualsKeyword(httpEquiv, "content-type"))
        SetCharSet(std::string(name));
    return CharSetKnown();
}

/// `<?xml encoding='name'?>`; the first such attribute counts.
std::uint32_t Events::GetCharSetFromExternTag() {
    if (!MayChangeCharSet())
        return STATELESS_INVALID_ARGUMENT;
    if (!EqualsKeyword(data.tagName, "xml"))
        return CharSetKnown();
    const auto encoding = std::find_if(data.attributes.begin(), data.attributes.end(), [](const auto& attribute) {
        return EqualsKeyword(attribute.first, "encoding");
    });
    if (encoding != data.attributes.end())
        SetCharSet(encoding->second);
    return CharSetKnown();
}

// From bytes to wide strings

/// A charset without a converter falls back to the ANSI rule, so that no event is lost. When memory
/// is lacking it throws instead.
void Events::ToWide(StringNS::CharSet::Code code, const std::string& bytes, WideString* output) {
    const Base::Services& services = Base::GetServices();
    std::uint32_t result = services.toWide(&converter, code, bytes.data(), bytes.size(), output);
    if (result != RESULT_OK && result != RESULT_OUT_OF_MEMORY)
        result = services.toWide(&converter, StringNS::CharSet::UNKNOWN, bytes.data(), bytes.size(), output);
    if (result == RESULT_OUT_OF_MEMORY)
        throw std::bad_alloc();
}

void Events::ConvertName() {
    ToWide(StringNS::CharSet::UNKNOWN, data.tagName, &data.wideName);
}

/// By the charset.
void Events::ConvertStr(const std::string& bytes, WideString* output) {
    ToWide(data.charset, bytes, output);
}

void Events::ConvertAttrs() {
    data.wideAttributes.clear();
    for (const auto& [attributeName, attributeValue] : data.attributes) {
        auto& converted = data.wideAttributes.AppendRecycled();
        ToWide(StringNS::CharSet::UNKNOWN, attributeName, &converted.first);
        ConvertStr(attributeValue, &converted.second);
    }
}

void Events::ConvertTokens() {
    data.wideTokens.clear();
    for (const std::string& token : data.tokens)
        ConvertStr(token, &data.wideTokens.AppendRecycled());
}

// Events

void Events::Raise(unsigned long id, const void* first, const void* second) {
    const void* const arguments[] = {first, second};
    delegate.Call(id, arguments);
}

void Events::RaiseStartTag() {
    data.state = STATE_TEXT;
    GetCharSetFromStartTag();
    if (delegate.IsBound(StatelessHTMLParser::ID_START_TAG)) {
        ConvertName();
        ConvertAttrs();
        Raise(StatelessHTMLParser::ID_START_TAG, data.wideName.c_str(), &data.wideAttributes);
    }
    if (data.selfClosing && !data.stopped)
        RaiseEndTag();
}

void Events::RaiseEndTag() {
    data.state = STATE_TEXT;
    data.attributePlaces.clear();
    if (!delegate.IsBound(StatelessHTMLParser::ID_END_TAG))
        return;
    ConvertName();
    Raise(StatelessHTMLParser::ID_END_TAG, data.wideName.c_str());
}

void Events::RaiseExternTag() {
    data.state = STATE_TEXT;
    GetCharSetFromExternTag();
    if (!delegate.IsBound(StatelessHTMLParser::ID_EXTERN_TAG))
        return;
    ConvertName();
    ConvertAttrs();
    Raise(StatelessHTMLParser::ID_EXTERN_TAG, data.wideName.c_str(), &data.wideAttributes);
}

void Events::RaiseEntityTag() {
    data.state = STATE_TEXT;
    data.attributePlaces.clear();
    if (!delegate.IsBound(StatelessHTMLParser::ID_ENTITY_TAG))
        return;
    ConvertName();
    ConvertTokens();
    Raise(StatelessHTMLParser::ID_ENTITY_TAG, data.wideName.c_str(), &data.wideTokens);
}

void Events::RaiseString(unsigned long id, std::string* bytes) {
    data.state = STATE_TEXT;
    data.attributePlaces.clear();
    const bool isBound = delegate.IsBound(id);
    if (isBound)
        ConvertStr(*bytes, &data.wideText);
    bytes->clear();
    if (isBound)
        Raise(id, data.wideText.c_str());
}

void Events::RaiseBody(unsigned long id) {
    data.state = STATE_TEXT;
    const bool isBound = delegate.IsBound(id);
    if (isBound) {
        ConvertAttrs();
        ToWide(StringNS::CharSet::UNKNOWN, data.text, &data.wideText);
    }
    data.text.clear();
    if (isBound)
        Raise(id, &data.wideAttributes, data.wideText.c_str());
}

}  // namespace Kestra::HTML::Stateless
