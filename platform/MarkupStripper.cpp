#include "platform/MarkupStripper.h"

#include <cstddef>
#include <utility>

#include "platform/Characters.h"

namespace Kestra::Base {

namespace {

constexpr char ESCAPE = '\x1B';
constexpr char SHIFT_OUT = '\x0E';
constexpr char SHIFT_IN = '\x0F';

bool IsLetter(char character) {
    const char folded = FoldAscii(character);
    return folded >= 'a' && folded <= 'z';
}

/// The characters that end a tag name.
bool EndsName(char character) {
    return IsSpace(character) || character == '/' || character == '>';
}

class Stripper {
public:
    explicit Stripper(std::string_view newMarkup) : markup(newMarkup) {}

    std::string Strip() {
        text.reserve(markup.size());
        while (position < markup.size()) {
            const char character = markup[position];
            if (character == '<' && OpensConstruct())
                SkipConstruct();
            else if (character == ESCAPE && NextIs('$'))
                CopyDesignation();
            else if (character == SHIFT_OUT && inIso2022Kr)
                CopyThrough(markup.find(SHIFT_IN, position), 1);
            else
                CopyPlain();
        }
        return std::move(text);
    }

private:
    bool NextIs(char character) const {
        return position + 1 < markup.size() && markup[position + 1] == character;
    }

    bool OpensConstruct() const {
        return position + 1 < markup.size() &&
               (IsLetter(markup[position + 1]) || NextIs('/') || NextIs('!') || NextIs('?'));
    }

    /// Copies at least one byte, whatever it is.
    void CopyPlain() {
        std::size_t end = position + 1;
        while (end < markup.size() && markup[end] != '<' && markup[end] != ESCAPE && markup[end] != SHIFT_OUT)
            ++end;
        CopyThrough(end - 1, 1);
    }

    /// Copies up to the end of the `length` bytes at `found`, or everything when nothing was found.
    void CopyThrough(std::size_t found, std::size_t length) {
        const std::size_t end = found == std::string_view::npos ? markup.size() : found + length;
        text.append(markup.substr(position, end - position));
        position = end;
    }

    /// ESC "$" ")" only announces the runs between SO and SI; every other ESC "$" opens a run that
    /// lasts to the next ESC "(".
    void CopyDesignation() {
        if (position + 2 < markup.size() && markup[position + 2] == ')') {
            inIso2022Kr = true;
            CopyThrough(position, 3);
        } else {
            CopyThrough(markup.find("\x1B(", position + 2), 2);
        }
    }

    void SkipConstruct() {
        const std::size_t start = position;
        if (markup.substr(start, 4) == "<!--") {
            SkipThrough(markup.find("-->", start + 2), 3);  // "<!-->" is a comment, too
        } else {
            const std::string_view name = TagName(start + 1);
            position = start + 1 + name.size();
            SkipTag();
            if (EqualsKeyword(name, "script"))
                SkipRawText("script");
            else if (EqualsKeyword(name, "style"))
                SkipRawText("style");
        }
        if (position < markup.size() && !text.empty() && !IsSpace(text.back()))
            text += ' ';
    }

    void SkipThrough(std::size_t found, std::size_t length) {
        position = found == std::string_view::npos ? markup.size() : found + length;
    }

    /// Only as much of the name as it takes to tell "script" and "style" from all others.
    std::string_view TagName(std::size_t start) const {
        std::size_t end = start;
        while (end < markup.size() && end - start < 8 && !EndsName(markup[end]))
            ++end;
        return markup.substr(start, end - start);
    }

    void SkipTag() {
        bool valueFollows = false;
        while (position < markup.size()) {
            const char character = markup[position++];
            if (character == '>')
                return;
            if (valueFollows && (character == '"' || character == '\''))
                SkipQuoted(character);
            valueFollows = character == '=' || (valueFollows && IsSpace(character));
        }
    }

    /// A quote that never closes is a character like any other. The search for it runs to the end
    /// once per kind of quote: had it found nothing, no later quote of that kind could have come
    /// here.
    void SkipQuoted(char quote) {
        const std::size_t end = markup.find(quote, position);
        if (end != std::string_view::npos)
            position = end + 1;
    }

    /// Stops before the end tag, which is then skipped like any other.
    void SkipRawText(std::string_view name) {
        for (;;) {
            position = markup.find("</", position);
            if (position == std::string_view::npos) {
                position = markup.size();
                return;
            }
            const std::size_t end = position + 2 + name.size();
            if (EqualsKeyword(markup.substr(position + 2, name.size()), name) &&
                (end >= markup.size() || EndsName(markup[end])))
                return;
            position += 2;
        }
    }

    const std::string_view markup;
    std::size_t position = 0;
    std::string text;
    bool inIso2022Kr = false;
};

}  // namespace

std::string StripMarkup(std::string_view markup) {
    return Stripper(markup).Strip();
}

}  // namespace Kestra::Base
