#include "tools/kestra-html/view/ViewTokens.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/StringHelper.h"
#include "tools/kestra-html/output/CharsetText.h"
#include "tools/kestra-html/view/ScriptJson.h"

namespace Kestra::Tool {

namespace {

using StringNS::CharSet;

constexpr auto REPLACEMENT = static_cast<WideChar>(0xFFFD);
constexpr std::size_t LONGEST_CHARACTER = 4;  ///< in bytes, of all charsets

/// Units of UTF-16, low byte first, whatever the order of the machine. Half a unit becomes U+FFFD.
bool DecodeUtf16(std::string_view bytes, WideString* text) {
    text->clear();
    text->reserve(bytes.size() / 2 + 1);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        text->push_back(static_cast<WideChar>(low | (high << 8)));
    }
    const bool isWhole = bytes.size() % 2 == 0;
    if (!isWhole)
        text->push_back(REPLACEMENT);
    return isWhole;
}

std::size_t CountReplacements(WideStringView text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), REPLACEMENT));
}

std::size_t CountParts(std::string_view bytes, std::string_view part) {
    std::size_t parts = 0;
    for (std::size_t at = bytes.find(part); at != std::string_view::npos; at = bytes.find(part, at + part.size()))
        ++parts;
    return parts;
}

bool IsAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

/// Turns offsets in bytes of one token, in ascending order, into characters of its text.
class CharacterCounter {
public:
    CharacterCounter(const ViewToken& shownToken, std::size_t textLength)
        : token(shownToken), length(textLength), isPlain(textLength == token.bytes.size() && IsAscii(token.bytes)) {}

    std::size_t Count(std::uint64_t offset) {
        const std::size_t end = std::min(static_cast<std::size_t>(offset - token.place.begin), token.bytes.size());
        if (isPlain)
            return end;
        if (end > bytesDone) {
            DecodeForView(token.charset, token.bytes.substr(bytesDone, end - bytesDone), &decoded);
            charactersDone = std::min(charactersDone + decoded.size(), length);
            bytesDone = end;
        }
        return charactersDone;
    }

private:
    const ViewToken& token;
    std::size_t length;
    bool isPlain;  ///< each byte is a character, as in most tags, so that nothing is decoded twice
    std::size_t bytesDone = 0;
    std::size_t charactersDone = 0;
    WideString decoded;
};

template <typename Number>
void AppendNumber(std::string* list, Number number) {
    if (!list->empty())
        list->push_back(',');
    fmt::format_to(std::back_inserter(*list), "{}", number);
}

/// @param isNeeded  false: the page can do without the list
void AppendList(std::string* json, std::string_view name, std::string* list, bool isNeeded = true) {
    if (isNeeded)
        fmt::format_to(std::back_inserter(*json), ",\"{}\":[{}]", name, *list);
    list->clear();
}

}  // namespace

CharSet::Code GetShownCharset(CharSet::Code charset) {
    const bool isShown = charset == CharSet::UTF16_LE || (charset != CharSet::UNKNOWN && HasConverter(charset));
    return isShown ? charset : CharSet::WINDOWS_1252;
}

bool DecodeForView(CharSet::Code charset, std::string_view bytes, WideString* text) {
    if (charset == CharSet::UTF16_LE)
        return DecodeUtf16(bytes, text);
    // A NUL that is counted last ends a string and belongs to no text, so one is added.
    const std::string terminated(bytes);
    const CharSet::Code code = charset == CharSet::UNKNOWN ? CharSet::WINDOWS_1252 : charset;
    if (StringNS::StringHelper::GetWideFromGeneric(code, terminated.c_str(), terminated.size() + 1, text) != 0)
        StringNS::StringHelper::GetWideFromGeneric(CharSet::WINDOWS_1252, terminated.c_str(), terminated.size() + 1,
                                                   text);
    const std::size_t replacements = CountReplacements(*text);
    return replacements == 0 || (code == CharSet::UTF8 && replacements == CountParts(bytes, "\xEF\xBF\xBD"));
}

std::size_t FindCutForView(CharSet::Code charset, std::string_view bytes) {
    if (charset == CharSet::UTF16_LE) {
        const std::size_t units = bytes.size() - bytes.size() % 2;
        const bool endsWithHighSurrogate = units > 0 && (static_cast<unsigned char>(bytes[units - 1]) & 0xFC) == 0xD8;
        return endsWithHighSurrogate ? units - 2 : units;
    }
    if (CharSet::IsIso2022(charset)) {
        const std::size_t feed = bytes.rfind('\n');
        return feed == std::string_view::npos ? bytes.size() : feed + 1;
    }
    // A character that is cut off is one more that cannot be decoded, whatever there is before it.
    WideString text;
    if (DecodeForView(charset, bytes, &text))
        return bytes.size();
    std::size_t best = 0;
    std::size_t least = CountReplacements(text);
    for (std::size_t back = 1; back < std::min(LONGEST_CHARACTER, bytes.size() + 1); ++back) {
        DecodeForView(charset, bytes.substr(0, bytes.size() - back), &text);
        if (const std::size_t replacements = CountReplacements(text); replacements < least) {
            best = back;
            least = replacements;
        }
    }
    return bytes.size() - best;
}

ViewTokens::ViewTokens(WritePage writePage) : write(std::move(writePage)) {}

void ViewTokens::Add(const ViewToken& token) {
    if (token.charset != charset || count == MOST_TOKENS || texts.size() > MOST_UNITS)
        Flush();
    if (count == 0) {
        begin = token.place.begin;
        charset = token.charset;
    }
    ++count;
    const bool isDecodable = DecodeForView(token.charset, token.bytes, &decoded);
    const std::uint32_t allMarks = token.marks | (isDecodable ? 0 : std::uint32_t{VIEW_MARK_UNDECODABLE});
    texts.append(decoded);
    hasMarks = hasMarks || allMarks != 0;
    hasLengths = hasLengths || decoded.size() != token.bytes.size();
    AppendNumber(&kinds, token.kind);
    AppendNumber(&sizes, token.bytes.size());
    AppendNumber(&lengths, decoded.size());
    AppendNumber(&lines, static_cast<std::int64_t>(token.place.line) - lastLine);
    lastLine = static_cast<std::int64_t>(token.place.line);
    AppendNumber(&columns, token.place.column);
    AppendNumber(&marks, allMarks);
    AddParts(token, decoded);
}

/// The name and the attributes of a tag, or 0 for a token without. The numbers are distances, so
/// that they are short: how far the name is from the begin and its length, and for each attribute
/// how far its name is from the end of the part before, its length, the same for the value, with a
/// length of -1 for none, and whether it is folded.
void ViewTokens::AddParts(const ViewToken& token, WideStringView text) {
    if (!parts.empty())
        parts.push_back(',');
    if (token.nameLength == 0 && token.attributes.empty()) {
        parts.push_back('0');
        return;
    }
    const std::size_t nameBegin = std::min(token.nameBegin, text.size());
    const std::size_t nameLength = std::min(token.nameLength, text.size() - nameBegin);
    fmt::format_to(std::back_inserter(parts), "[{},{}", nameBegin, nameLength);
    CharacterCounter counter(token, text.size());
    std::size_t last = nameBegin + nameLength;
    const auto appendRange = [&](const ViewRange& range) {
        const std::size_t first = std::max(counter.Count(range.begin), last);
        const std::size_t end = std::max(counter.Count(range.end), first);
        fmt::format_to(std::back_inserter(parts), ",{},{}", first - last, end - first);
        last = end;
    };
    for (const ViewAttribute& attribute : token.attributes) {
        appendRange(attribute.name);
        if (attribute.hasValue)
            appendRange(attribute.value);
        else
            parts.append(",0,-1");
        parts.append(attribute.isFolded ? ",1" : ",0");
    }
    parts.push_back(']');
}

void ViewTokens::Flush() {
    if (count == 0)
        return;
    WideString name;
    for (const char letter : DescribeCharset(charset))
        name.push_back(static_cast<WideChar>(static_cast<unsigned char>(letter)));
    if (const CharSet::Code shown = GetShownCharset(charset); shown != charset) {
        for (const char letter : ", shown as " + DescribeCharset(shown))
            name.push_back(static_cast<WideChar>(static_cast<unsigned char>(letter)));
    }
    std::string json = "<script type=\"application/json\" class=\"tokens\">";
    fmt::format_to(std::back_inserter(json), "{{\"begin\":{},\"charset\":", begin);
    AppendScriptJson(&json, name);
    AppendList(&json, "kinds", &kinds);
    AppendList(&json, "sizes", &sizes);
    AppendList(&json, "lengths", &lengths, hasLengths);
    AppendList(&json, "lines", &lines);
    AppendList(&json, "columns", &columns);
    AppendList(&json, "marks", &marks, hasMarks);
    AppendList(&json, "parts", &parts);
    json.append(",\"text\":");
    AppendScriptJson(&json, texts);
    json.append("}</script>\n");
    texts.clear();
    count = 0;
    lastLine = 0;
    hasLengths = false;
    hasMarks = false;
    write(json);
}

}  // namespace Kestra::Tool
