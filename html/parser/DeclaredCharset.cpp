#include "html/parser/DeclaredCharset.h"

#include <cstdint>
#include <new>
#include <string_view>

#include "platform/Results.h"
#include "platform/StringHelper.h"

namespace Kestra::HTML {

namespace {

/// Blanks only: other white space belongs to the name.
std::string_view WithoutBlanks(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

/// The value of a parameter "charset = value"; a null view for any other parameter. A second "="
/// makes it another one.
std::string_view CharsetParameter(std::string_view parameter) {
    const std::size_t equals = parameter.find('=');
    if (equals == std::string_view::npos || parameter.find('=', equals + 1) != std::string_view::npos)
        return {};
    if (!EqualsKeyword(WithoutBlanks(parameter.substr(0, equals)), "charset"))
        return {};
    return WithoutBlanks(parameter.substr(equals + 1));
}

/// The first charset parameter of a content type such as "text/html; charset=koi8-r"; empty for
/// none.
std::string_view CharsetOfContentType(std::string_view content) {
    for (;;) {
        const std::size_t end = content.find(';');
        const std::string_view value = CharsetParameter(content.substr(0, end));
        if (value.data() != nullptr || end == std::string_view::npos)
            return value;
        content.remove_prefix(end + 1);
    }
}

}  // namespace

StringNS::CharSet::Code FindDeclaredCharset(const Vector<Attribute<char, std::string>>& attributes,
                                            WideString* buffer) {
    std::string_view content;
    std::string_view charset;
    for (const Attribute<char, std::string>& attribute : attributes) {
        if (EqualsKeyword(attribute.name, "content"))
            content = attribute.value;
        else if (EqualsKeyword(attribute.name, "charset"))
            charset = attribute.value;
    }
    const std::string_view name = charset.empty() ? CharsetOfContentType(content) : charset;
    // The conversion would take a NUL at the end for a terminator; no name has one.
    if (name.empty() || name.back() == 0)
        return StringNS::CharSet::UNKNOWN;
    const std::uint32_t result = StringNS::StringHelper::GetStringFromAnsi(name.data(), name.size(), buffer);
    if (result == RESULT_OUT_OF_MEMORY)
        throw std::bad_alloc();  // the name is not unknown
    if (result != RESULT_OK)
        return StringNS::CharSet::UNKNOWN;
    const StringNS::CharSet::Code code = StringNS::CharSet::GetCharSetCode(*buffer);
    return code == StringNS::CharSet::UTF16_LE ? StringNS::CharSet::UNKNOWN : code;
}

StringNS::CharSet::Code FindDeclaredCharset(const Vector<Attribute<WideChar, WideString>>&, WideString*) {
    return StringNS::CharSet::UNKNOWN;
}

}  // namespace Kestra::HTML
