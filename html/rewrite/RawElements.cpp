#include "html/rewrite/RawElements.h"

#include <string>

#include "platform/Characters.h"

namespace Kestra::HTML {

namespace {

struct NamedRawElement {
    RawElement element;
    std::string_view name;
};

constexpr NamedRawElement RAW_ELEMENTS[] = {
    {RAW_SCRIPT, "script"},       {RAW_STYLE, "style"},     {RAW_XMP, "xmp"},
    {RAW_IFRAME, "iframe"},       {RAW_NOEMBED, "noembed"}, {RAW_NOFRAMES, "noframes"},
    {RAW_PLAINTEXT, "plaintext"},
};

enum class Match { NONE, PART, WHOLE };  // PART: all that is there, but more is needed

/// Reads the name of a tag from `place` on. The parser ends it where browsers do not.
/// @param end  receives where a whole one ends, its last character and one more
Match MatchName(std::string_view text, std::size_t place, std::string_view name, std::size_t* end) {
    for (const char character : name) {
        if (place == text.size())
            return Match::PART;
        if (FoldAscii(text[place++]) != character)
            return Match::NONE;
    }
    if (place == text.size())
        return Match::PART;
    *end = place + 1;
    const bool isNameOver =
        IsSpace(text[place]) || std::string_view("/>=<[]").find(text[place]) != std::string_view::npos;
    return isNameOver ? Match::WHOLE : Match::NONE;
}

/// Reads an end tag at `begin`. The parser takes white space before the name.
Match MatchEndTag(std::string_view text, std::size_t begin, std::string_view name, std::size_t* end) {
    std::size_t place = begin + 1;
    if (place == text.size())
        return Match::PART;
    if (text[place++] != '/')
        return Match::NONE;
    while (place < text.size() && IsSpace(text[place]))
        ++place;
    return MatchName(text, place, name, end);
}

Match MatchCommentOpener(std::string_view text, std::size_t begin, std::size_t* end) {
    constexpr std::string_view OPENER = "<!--";
    const std::string_view found = text.substr(begin, OPENER.size());
    *end = begin + OPENER.size();
    if (found == OPENER)
        return Match::WHOLE;
    return found == OPENER.substr(0, found.size()) ? Match::PART : Match::NONE;
}

bool IsWordCharacter(char character) {
    const char folded = FoldAscii(character);
    return (folded >= 'a' && folded <= 'z') || (character >= '0' && character <= '9');
}

}  // namespace

std::uint32_t FindRawElement(std::string_view name) {
    if (name.size() < 3 || name.size() > 9)
        return RAW_NONE;
    for (const NamedRawElement& row : RAW_ELEMENTS) {
        if (row.name == name)
            return row.element;
    }
    return RAW_NONE;
}

bool EndsRawElement(std::uint32_t elements, std::string_view inserted, const RawSurroundings& surroundings) {
    const std::string text = std::string(surroundings.before).append(inserted).append(surroundings.after);
    const std::size_t begin = surroundings.before.size();
    const std::size_t end = begin + inserted.size();
    for (std::size_t place = text.find('<'); place < end; place = text.find('<', place + 1)) {
        const auto isNew = [&](Match match, std::size_t matchEnd) {
            return (match == Match::WHOLE && matchEnd > begin) || (match == Match::PART && !surroundings.isAfterKnown);
        };
        for (const NamedRawElement& row : RAW_ELEMENTS) {
            if ((elements & row.element) == 0 || row.element == RAW_PLAINTEXT)
                continue;
            std::size_t matchEnd = 0;
            if (const Match match = MatchEndTag(text, place, row.name, &matchEnd); isNew(match, matchEnd))
                return true;
            if (row.element != RAW_SCRIPT)
                continue;
            if (const Match match = MatchCommentOpener(text, place, &matchEnd); isNew(match, matchEnd))
                return true;
            if (const Match match = MatchName(text, place + 1, row.name, &matchEnd); isNew(match, matchEnd))
                return true;
        }
    }
    return false;
}

bool EndsComment(std::string_view text) {
    return text.starts_with('>') || text.starts_with("->") || text.ends_with('-') ||
           text.find("-->") != std::string_view::npos || text.find("--!>") != std::string_view::npos;
}

bool ContinuesMarkup(std::string_view before, char first) {
    if (before.ends_with('<') || before.ends_with("</") || before.ends_with("<!") || before.ends_with("<?") ||
        before.ends_with("<!-"))
        return true;
    if (!IsWordCharacter(first) && first != '#' && first != ';')
        return false;
    while (!before.empty() && (IsWordCharacter(before.back()) || before.back() == '#'))
        before.remove_suffix(1);
    return before.ends_with('&');
}

}  // namespace Kestra::HTML
