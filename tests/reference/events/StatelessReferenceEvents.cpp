#include "tests/reference/events/StatelessReferenceEvents.h"

#include <cstddef>
#include <map>

#include "platform/CharSet.h"
#include "platform/CharSetConverter.h"
#include "platform/Characters.h"
#include "platform/StringHelper.h"
#include "platform/Vector.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {
namespace {

using StringNS::CharSet;
using StringNS::StringHelper;

char Fold(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

/// The ANSI rule. The count includes the terminator, so that a NUL which ends the string itself is
/// kept.
WideString WideByAnsi(const std::string& text) {
    WideString wide;
    StringHelper::GetStringFromAnsi(text.c_str(), text.size() + 1, &wide);
    return wide;
}

/// Pairs of bytes, low byte first; an odd last byte is U+FFFD.
WideString WideByPairs(const std::string& text) {
    WideString wide;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        if (i + 1 == text.size()) {
            wide.push_back(static_cast<WideChar>(0xFFFD));
            break;
        }
        const unsigned low = static_cast<unsigned char>(text[i]);
        const unsigned high = static_cast<unsigned char>(text[i + 1]);
        wide.push_back(static_cast<WideChar>(low + 256 * high));
    }
    return wide;
}

/// Whether anything converts from a code page. That there is nothing is found out once: a system
/// may search for long each time.
bool HasConverter(std::uint32_t charset) {
    static std::map<std::uint32_t, bool> known;
    const auto [place, isNew] = known.emplace(charset, false);
    if (isNew) {
        WideString none;
        place->second = StringHelper::GetWideFromGeneric(charset, "", 1, &none) == 0;
    }
    return place->second;
}

/// The charset rule: all of the text, by the charset in force, or by the ANSI rule when none is set
/// or it has no converter.
WideString WideByCharset(const std::string& text, std::uint32_t charset) {
    if (charset == 0)
        return WideByAnsi(text);
    if (charset == 1200)
        return WideByPairs(text);
    if (!HasConverter(charset))
        return WideByAnsi(text);
    WideString wide;
    std::uint32_t result = 0;
    // The units of these have two and four bytes: one NUL is no terminator.
    if (charset == 1201 || charset == 12000 || charset == 12001)
        result = StringNS::CharSetConverter().ToWide(charset, text.c_str(), text.size(), &wide);
    else
        result = StringHelper::GetWideFromGeneric(charset, text.c_str(), text.size() + 1, &wide);
    return result == 0 ? wide : WideByAnsi(text);
}

/// What a callback sees of a NUL-terminated string.
std::string UpToNul(const WideString& text) {
    return Trace::Escape(WideStringView(text).substr(0, text.find(static_cast<WideChar>(0))));
}

std::string Whole(const WideString& text) {
    return Trace::Escape(WideStringView(text));
}

std::string Pairs(const ReferencePairs& attributes, std::uint32_t charset) {
    std::string line;
    for (const ReferencePair& attribute : attributes)
        line += "{" + Whole(WideByAnsi(attribute.name)) + "=" + Whole(WideByCharset(attribute.value, charset)) + "}";
    return line;
}

std::string WithoutOuterSpaces(std::string text) {
    StringHelper::StripAnsiChars(&text, 3, " ");
    return text;
}

bool MayChangeCharset(std::uint32_t charset, std::uint32_t flags) {
    return charset == 0 || (flags & 1) != 0;
}

}  // namespace

bool EqualsFolded(const std::string& left, const std::string& right) {
    if (left.size() != right.size())
        return false;
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (Fold(left[i]) != Fold(right[i]))
            return false;
    }
    return true;
}

std::uint32_t CharsetAfterStartTag(const std::string& name, const ReferencePairs& attributes, std::uint32_t charset,
                                   std::uint32_t flags) {
    if (!MayChangeCharset(charset, flags) || !EqualsFolded(name, "meta"))
        return charset;
    std::string equivalent;
    WideString charsetName;
    for (const ReferencePair& attribute : attributes) {
        if (EqualsFolded(attribute.name, "http-equiv"))
            equivalent = attribute.value;
        if (!EqualsFolded(attribute.name, "content"))
            continue;
        Vector<std::string> parts;
        StringHelper::SplitAnsiString(attribute.value, ';', &parts);
        for (const std::string& part : parts) {
            Vector<std::string> sides;
            StringHelper::SplitAnsiString(part, '=', &sides);
            if (sides.size() == 2 && EqualsFolded(WithoutOuterSpaces(sides[0]), "charset"))
                charsetName = WideByAnsi(WithoutOuterSpaces(sides[1]));
        }
    }
    if (EqualsFolded(equivalent, "content-type") && !charsetName.empty())
        return CharSet::GetCharSetCode(charsetName);
    return charset;
}

std::uint32_t CharsetAfterExternTag(const std::string& name, const ReferencePairs& attributes, std::uint32_t charset,
                                    std::uint32_t flags) {
    if (!MayChangeCharset(charset, flags) || !EqualsFolded(name, "xml"))
        return charset;
    for (const ReferencePair& attribute : attributes) {
        if (!EqualsFolded(attribute.name, "encoding"))
            continue;
        // Only the first one counts, even if it is empty.
        return attribute.value.empty() ? charset : CharSet::GetCharSetCode(WideByAnsi(attribute.value));
    }
    return charset;
}

std::string StartLine(const std::string& name, const ReferencePairs& attributes, std::uint32_t charset) {
    return "start(" + UpToNul(WideByAnsi(name)) + "|" + Pairs(attributes, charset) + ")";
}

std::string EndLine(const std::string& name) {
    return "end(" + UpToNul(WideByAnsi(name)) + ")";
}

std::string ScriptLine(const ReferencePairs& attributes, const std::string& body, std::uint32_t charset) {
    // Bodies go by the ANSI rule whatever the charset is.
    return "script(" + Pairs(attributes, charset) + "|" + UpToNul(WideByAnsi(body)) + ")";
}

std::string StyleLine(const ReferencePairs& attributes, const std::string& body, std::uint32_t charset) {
    return "style(" + Pairs(attributes, charset) + "|" + UpToNul(WideByAnsi(body)) + ")";
}

std::string ExternLine(const std::string& name, const ReferencePairs& attributes, std::uint32_t charset) {
    return "extern(" + UpToNul(WideByAnsi(name)) + "|" + Pairs(attributes, charset) + ")";
}

std::string EntityLine(const std::string& name, const std::vector<std::string>& tokens, std::uint32_t charset) {
    std::string line = "entity(" + UpToNul(WideByAnsi(name)) + "|";
    for (const std::string& token : tokens)
        line += "{" + Whole(WideByCharset(token, charset)) + "}";
    return line + ")";
}

std::string CommentLine(const std::string& text, std::uint32_t charset) {
    return "comment(" + UpToNul(WideByCharset(text, charset)) + ")";
}

std::string TextLine(const std::string& text, std::uint32_t charset) {
    return "text(" + UpToNul(WideByCharset(text, charset)) + ")";
}

}  // namespace Kestra::Test
