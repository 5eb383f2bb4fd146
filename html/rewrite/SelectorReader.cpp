#include "html/rewrite/SelectorReader.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "platform/Characters.h"
#include "platform/CodePoints.h"

namespace Kestra::HTML {

namespace {

constexpr std::size_t NOWHERE = static_cast<std::size_t>(-1);
constexpr int MOST_HEX_DIGITS = 6;

/// The place of the first character that is not well-formed, or NOWHERE.
std::size_t FindIllFormed(std::string_view text) {
    const char* next = text.data();
    const char* const end = next + text.size();
    while (next != end) {
        const char* const begin = next;
        if (ReadUtf8(&next, end) == ILL_FORMED)
            return static_cast<std::size_t>(begin - text.data());
    }
    return NOWHERE;
}

bool IsLineEnd(char character) {
    return character == '\n' || character == '\f' || character == '\r';
}

/// @return the value of a hexadecimal digit, 16 for what is none
std::uint32_t DigitValue(char character) {
    const char folded = FoldAscii(character);
    if (folded >= '0' && folded <= '9')
        return static_cast<std::uint32_t>(folded - '0');
    return folded >= 'a' && folded <= 'f' ? static_cast<std::uint32_t>(folded - 'a') + 10 : 16;
}

/// What a name may begin with, escapes and dashes left out.
bool BeginsName(char character) {
    const char folded = FoldAscii(character);
    return (folded >= 'a' && folded <= 'z') || folded == '_' || static_cast<unsigned char>(folded) >= 0x80;
}

bool ContinuesName(char character) {
    return BeginsName(character) || character == '-' || (character >= '0' && character <= '9');
}

void FoldText(std::string* text) {
    for (char& character : *text)
        character = FoldAscii(character);
}

bool IsWord(std::string_view value) {
    return !value.empty() && std::none_of(value.begin(), value.end(), IsSelectorSpace);
}

/// Reads one text. Each method returns false when it has refused something.
class Reader {
public:
    explicit Reader(std::string_view selector) : text(selector) {}

    bool Read() {
        const std::size_t illFormed = FindIllFormed(text);
        if (illFormed != NOWHERE)
            return Refuse(illFormed, "this is not well-formed UTF-8");
        const std::size_t nul = text.find('\0');
        if (nul != NOWHERE)
            return Refuse(nul, "a NUL character is not supported");
        SkipSpaces();
        if (AtEnd())
            return Refuse(0, "the selector is empty");
        for (bool isChild = false;;) {
            compounds.emplace_back();
            compounds.back().isChild = isChild;
            if (!ReadCompound(&compounds.back()))
                return false;
            const bool hasSpaces = SkipSpaces();
            if (AtEnd())
                return true;
            isChild = Peek() == '>';
            if (isChild) {
                const std::size_t combinator = place++;
                SkipSpaces();
                if (AtEnd())
                    return Refuse(combinator, "nothing follows the combinator \">\"");
            } else if (!hasSpaces) {
                return RefuseNext();
            }
        }
    }

    std::vector<SelectorCompound> compounds;

    /// What was refused.
    std::string GetMessage() const {
        const auto passed = static_cast<std::size_t>(
            errorPlace - std::count_if(text.begin(), text.begin() + errorPlace, IsTrailingByte));
        return std::string("character ") + std::to_string(passed + 1) + ": " + error;
    }

private:
    bool AtEnd() const {
        return place == text.size();
    }

    /// The character at some distance, NUL after the end.
    char Peek(std::size_t distance = 0) const {
        return place + distance < text.size() ? text[place + distance] : '\0';
    }

    bool SkipSpaces() {
        const std::size_t begin = place;
        while (IsSelectorSpace(Peek()))
            ++place;
        return place != begin;
    }

    bool Refuse(std::size_t where, std::string what) {
        errorPlace = static_cast<std::ptrdiff_t>(where);
        error = std::move(what);
        return false;
    }

    /// Refuses the next character, or the end of the text, when there is no better message.
    bool RefuseUnexpected() {
        if (AtEnd())
            return Refuse(place, "the selector ends too early");
        const char character = Peek();
        if (character > ' ' && character < 0x7F)
            return Refuse(place, std::string("\"") + character + "\" is not expected here");
        return Refuse(place, IsSelectorSpace(character) ? "white space is not expected here"
                                                        : "this character is not expected here");
    }

    /// Refuses the next character where a compound should begin or continue.
    bool RefuseNext() {
        switch (Peek()) {
            case ',':
                return Refuse(place, "lists of selectors, with \",\", are not supported");
            case '+':
            case '~':
                return Refuse(place, std::string("the combinator \"") + Peek() + "\" is not supported");
            case '>':
                return Refuse(place, "nothing precedes the combinator \">\"");
            case '|':
                return Refuse(place, "namespaces, with \"|\", are not supported");
            case ':':
                if (Peek(1) == ':')
                    return Refuse(place, "pseudo-elements such as \"::before\" are not supported");
                return Refuse(place, "pseudo-classes such as \":hover\" are not supported");
            case '/':
                if (Peek(1) == '*')
                    return Refuse(place, "comments are not supported");
                break;
            case '\\':
                if (!HasEscape(0))
                    return RefuseEscape();
                break;
            default:
                break;
        }
        return RefuseUnexpected();
    }

    bool RefuseEscape() {
        if (place + 1 == text.size())
            return Refuse(place, "nothing follows the \"\\\"");
        return Refuse(place, "a \"\\\" cannot escape the end of a line here");
    }

    /// Whether a "\" at some distance begins an escape.
    bool HasEscape(std::size_t distance) const {
        return Peek(distance) == '\\' && place + distance + 1 < text.size() && !IsLineEnd(Peek(distance + 1));
    }

    bool HasName() const {
        if (Peek() != '-')
            return BeginsName(Peek()) || HasEscape(0);
        return Peek(1) == '-' || BeginsName(Peek(1)) || HasEscape(1);
    }

    /// Decodes an escape, from its "\" on: up to six hexadecimal digits and one white space after
    /// them, or any other character.
    void ReadEscape(std::string* decoded) {
        ++place;
        std::uint32_t code = 0;
        int digits = 0;
        for (; digits < MOST_HEX_DIGITS && DigitValue(Peek()) < 16; ++digits, ++place)
            code = code * 16 + DigitValue(Peek());
        if (digits == 0) {
            do
                decoded->push_back(text[place++]);
            while (IsTrailingByte(Peek()));
            return;
        }
        if (Peek() == '\r' && Peek(1) == '\n')
            ++place;
        if (IsSelectorSpace(Peek()))
            ++place;
        const bool isCharacter = code != 0 && code < CODE_POINT_END && !IsSurrogate(code);
        WriteUtf8(isCharacter ? code : REPLACEMENT_CHARACTER, [decoded](char byte) { decoded->push_back(byte); });
    }

    /// Reads a name: letters, digits, dashes, low lines, everything beyond ASCII, and escapes.
    void ReadName(std::string* name) {
        for (;;) {
            const std::size_t begin = place;
            while (ContinuesName(Peek()))
                ++place;
            name->append(text.substr(begin, place - begin));
            if (!HasEscape(0))
                return;
            ReadEscape(name);
        }
    }

    /// Refuses what does not begin a name.
    bool RefuseName(const char* what) {
        if (Peek() == '\\')
            return RefuseEscape();
        return Refuse(place, what);
    }

    bool ReadString(std::string* value) {
        const std::size_t begin = place;
        const char quote = text[place++];
        for (;;) {
            if (AtEnd())
                return Refuse(begin, "this string is not closed");
            const char character = Peek();
            if (IsLineEnd(character))
                return Refuse(place, "a line ends within a string");
            if (character != '\\') {
                ++place;
                if (character == quote)
                    return true;
                value->push_back(character);
            } else if (HasEscape(0)) {
                ReadEscape(value);
            } else {
                // An escaped end of a line is left out.
                place += Peek(1) == '\r' && Peek(2) == '\n' ? 3 : 2;
                place = std::min(place, text.size());
            }
        }
    }

    bool ReadCompound(SelectorCompound* compound) {
        const std::size_t begin = place;
        // What CSS reads as the end of a comment of markup is no name.
        if (HasName() && text.substr(place, 3) != "-->") {
            compound->hasType = true;
            ReadName(&compound->type);
            FoldText(&compound->type);
        } else if (Peek() == '*') {
            ++place;
        }
        for (;;) {
            bool isRead = false;
            if (Peek() == '#')
                isRead = ReadId(compound);
            else if (Peek() == '.')
                isRead = ReadClass(compound);
            else if (Peek() == '[')
                isRead = ReadAttribute(compound);
            else
                break;
            if (!isRead)
                return false;
        }
        if (place == begin)
            return RefuseNext();
        if (HasName() || Peek() == '*')
            return Refuse(place, "a type must be the first part of its compound");
        return true;
    }

    bool ReadId(SelectorCompound* compound) {
        ++place;
        if (!HasName())
            return RefuseName("a name is expected after \"#\"");
        SelectorCondition condition;
        condition.kind = SelectorCondition::EQUAL;
        condition.name = "id";
        ReadName(&condition.value);
        compound->conditions.push_back(std::move(condition));
        return true;
    }

    bool ReadClass(SelectorCompound* compound) {
        ++place;
        if (!HasName() || text.substr(place, 3) == "-->")
            return RefuseName("a name is expected after \".\"");
        SelectorCondition condition;
        ReadName(&condition.value);
        // A name with an escaped white space in it is no word of a list.
        condition.kind = IsWord(condition.value) ? SelectorCondition::CLASS : SelectorCondition::NEVER;
        compound->conditions.push_back(std::move(condition));
        return true;
    }

    /// Reads an attribute, from its "[" to its "]".
    bool ReadAttribute(SelectorCompound* compound) {
        const std::size_t begin = place++;
        SelectorCondition condition;
        SkipSpaces();
        if (AtEnd())
            return Refuse(begin, "this \"[\" is not closed");
        if (Peek() == '|' || (Peek() == '*' && Peek(1) == '|'))
            return Refuse(Peek() == '|' ? place : place + 1, "namespaces, with \"|\", are not supported");
        if (!HasName() || text.substr(place, 3) == "-->")
            return RefuseName("the name of an attribute is expected here");
        ReadName(&condition.name);
        FoldText(&condition.name);
        SkipSpaces();
        condition.kind = SelectorCondition::PRESENT;
        if (Peek() != ']' && !AtEnd() && !(ReadOperator(&condition) && ReadValue(begin, &condition)))
            return false;
        if (AtEnd())
            return Refuse(begin, "this \"[\" is not closed");
        if (Peek() != ']')
            return Refuse(place, "\"]\" is expected here");
        ++place;
        compound->conditions.push_back(std::move(condition));
        return true;
    }

    bool ReadOperator(SelectorCondition* condition) {
        switch (Peek()) {
            case '=':
                condition->kind = SelectorCondition::EQUAL;
                ++place;
                return true;
            case '~':
                condition->kind = SelectorCondition::INCLUDES;
                break;
            case '|':
                if (Peek(1) != '=')
                    return Refuse(place, "namespaces, with \"|\", are not supported");
                condition->kind = SelectorCondition::DASH_MATCH;
                break;
            case '^':
                condition->kind = SelectorCondition::BEGINS;
                break;
            case '$':
                condition->kind = SelectorCondition::ENDS;
                break;
            case '*':
                condition->kind = SelectorCondition::CONTAINS;
                break;
            default:
                if (Peek() == '\\')
                    return RefuseEscape();
                return Refuse(place, "\"]\", \"=\", \"~=\", \"|=\", \"^=\", \"$=\" or \"*=\" is expected here");
        }
        ++place;
        if (Peek() != '=')
            return Refuse(place, std::string("\"=\" is expected after \"") + text[place - 1] + "\"");
        ++place;
        return true;
    }

    /// Reads what follows an operator, but for the "]".
    /// @param begin  of the attribute
    bool ReadValue(std::size_t begin, SelectorCondition* condition) {
        SkipSpaces();
        if (AtEnd())
            return Refuse(begin, "this \"[\" is not closed");
        if (Peek() == '"' || Peek() == '\'') {
            if (!ReadString(&condition->value))
                return false;
        } else if (HasName() && text.substr(place, 3) != "-->") {
            ReadName(&condition->value);
        } else {
            return RefuseName("a name or a string is expected here");
        }
        SkipSpaces();
        if (HasName()) {
            const std::size_t flagBegin = place;
            std::string flag;
            ReadName(&flag);
            FoldText(&flag);
            if (flag != "i" && flag != "s")
                return Refuse(flagBegin, "the only flags are \"i\" and \"s\"");
            condition->ignoresCase = flag == "i";
            SkipSpaces();
        }
        if (condition->ignoresCase)
            FoldText(&condition->value);
        const bool takesWord = condition->kind == SelectorCondition::INCLUDES;
        const bool takesEmpty =
            condition->kind == SelectorCondition::EQUAL || condition->kind == SelectorCondition::DASH_MATCH;
        if (takesWord ? !IsWord(condition->value) : condition->value.empty() && !takesEmpty)
            condition->kind = SelectorCondition::NEVER;
        return true;
    }

    std::string_view text;
    std::size_t place = 0;
    std::string error;
    std::ptrdiff_t errorPlace = 0;
};

}  // namespace

bool ReadSelector(std::string_view text, std::vector<SelectorCompound>* compounds, std::string* message) {
    Reader reader(text);
    if (reader.Read()) {
        *compounds = std::move(reader.compounds);
        return true;
    }
    if (message != nullptr)
        *message = reader.GetMessage();
    return false;
}

}  // namespace Kestra::HTML
