#include "tests/reference/ReferenceReader.h"

namespace Kestra::Test {
namespace {

constexpr char ESC = 27;

bool IsWhiteSpace(char character) {
    return character == ' ' || (character >= 9 && character <= 13);
}

bool IsInTagName(char character) {
    return !IsWhiteSpace(character) && character != '=' && character != '[' && character != ']' && character != '>' &&
           character != '<';
}

bool IsInAttributeName(char character) {
    return !IsWhiteSpace(character) && character != '=' && character != '>';
}

bool IsInUnquotedValue(char character) {
    return !IsWhiteSpace(character) && character != '>' && character != '<';
}

char Lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

enum class Match { NONE, BEGINNING, WHOLE };

/// The first entry that is as long as `text` and equal wins, so "$(" is whole and never the
/// beginning of "$(C".
template <std::size_t COUNT>
Match MatchEscape(const std::string_view (&table)[COUNT], std::string_view text) {
    Match match = Match::NONE;
    for (const std::string_view entry : table) {
        if (entry == text)
            return Match::WHOLE;
        if (entry.substr(0, text.size()) == text)
            match = Match::BEGINNING;
    }
    return match;
}

const std::string_view ESCAPE_OPENERS[] = {"$@",  "$B",  "$(",  "$A",  "$(C", "$(O", "$(P", "$(Q", "$)C",
                                           "$)A", "$)G", "$*H", "$)E", "$+I", "$+J", "$+K", "$+L", "$+M"};
const std::string_view ESCAPE_CLOSERS[] = {"(B", "(J", ".F", ".A", "(I"};

}  // namespace

bool ReferenceSameWord(std::string_view left, std::string_view right) {
    if (left.size() != right.size())
        return false;
    for (std::size_t index = 0; index < left.size(); index++) {
        if (Lower(left[index]) != Lower(right[index]))
            return false;
    }
    return true;
}

ReferenceReader::ReferenceReader(std::string_view text) : document(text) {}

std::size_t ReferenceReader::Position() const {
    return position;
}

bool ReferenceReader::AtEnd() const {
    return position == document.size();
}

char ReferenceReader::Peek() const {
    return document.at(position);
}

char ReferenceReader::Take() {
    return document.at(position++);
}

bool ReferenceReader::NextIs(char character) const {
    return !AtEnd() && Peek() == character;
}

bool ReferenceReader::TakeIf(char character) {
    if (!NextIs(character))
        return false;
    position++;
    return true;
}

std::string ReferenceReader::ReadWhile(bool (*belongs)(char)) {
    std::string text;
    while (!AtEnd() && belongs(Peek()))
        text += Take();
    return text;
}

std::string ReferenceReader::ReadUntil(std::string_view stops) {
    std::string text;
    while (!AtEnd() && stops.find(Peek()) == std::string_view::npos)
        text += Take();
    return text;
}

std::string ReferenceReader::ReadWhiteSpace() {
    return ReadWhile(IsWhiteSpace);
}

std::string ReferenceReader::ReadTagName() {
    return ReadWhile(IsInTagName);
}

ReferenceOutcome ReferenceReader::ReadQuoted(char quote, bool escapes, bool iso2022, std::string* text) {
    bool escaped = false;
    while (!AtEnd()) {
        const char character = Take();
        if (escaped) {
            *text += character;
            escaped = false;
        } else if (character == quote) {
            return ReferenceOutcome::COMPLETE;
        } else if (character == ESC && iso2022 && quote == '"') {
            if (!ReadEscapeRun(text))
                return ReferenceOutcome::OPEN;
        } else {
            *text += character;
            escaped = escapes && character == '\\';
        }
    }
    return ReferenceOutcome::OPEN;
}

bool ReferenceReader::ReadEscapeRun(std::string* text) {
    std::string sequence;
    bool designated = false;
    while (!designated) {
        if (AtEnd()) {
            *text += ESC + sequence;
            return false;
        }
        sequence += Take();
        const Match match = MatchEscape(ESCAPE_OPENERS, sequence);
        if (match == Match::BEGINNING)
            continue;
        *text += ESC + sequence;
        if (match == Match::NONE)
            return true;
        designated = true;
    }
    for (;;) {
        *text += ReadUntil(std::string_view(&ESC, 1));
        if (AtEnd())
            return false;
        Take();
        sequence.clear();
        for (;;) {
            if (AtEnd()) {
                *text += ESC + sequence;
                return false;
            }
            sequence += Take();
            const Match match = MatchEscape(ESCAPE_CLOSERS, sequence);
            if (match == Match::BEGINNING)
                continue;
            *text += ESC + sequence;
            if (match == Match::WHOLE)
                return true;
            break;  // another sequence belongs to the run
        }
    }
}

void ReferenceReader::ReadRegularExpression(std::string* text) {
    *text += '/';
    bool escaped = false;
    while (!AtEnd()) {
        const char character = Peek();
        if (character == '<' || character == '\n' || character == '\r' || (character == '/' && !escaped))
            return;
        *text += Take();
        escaped = character == '\\' && !escaped;
    }
}

ReferenceOutcome ReferenceReader::ReadValue(bool iso2022, ReferenceItem* item) {
    item->prefix = ReadWhiteSpace();
    if (AtEnd())
        return ReferenceOutcome::OPEN;
    if (TakeIf('\'')) {
        item->quote = ReferenceQuote::SINGLE;
        return ReadQuoted('\'', false, false, &item->value);
    }
    if (TakeIf('"')) {
        item->quote = ReferenceQuote::DOUBLE;
        return ReadQuoted('"', false, iso2022, &item->value);
    }
    item->value = ReadWhile(IsInUnquotedValue);
    return AtEnd() ? ReferenceOutcome::OPEN : ReferenceOutcome::COMPLETE;
}

ReferenceOutcome ReferenceReader::ReadAttribute(const std::string* prefix, bool iso2022,
                                                ReferenceAttribute* attribute) {
    attribute->prefix = prefix != nullptr ? *prefix : ReadWhiteSpace();
    attribute->name = ReadWhile(IsInAttributeName);
    attribute->beforeEquals = ReadWhiteSpace();
    if (AtEnd())
        return ReferenceOutcome::OPEN;
    if (!TakeIf('='))
        return ReferenceOutcome::COMPLETE;
    ReferenceItem item;
    const ReferenceOutcome outcome = ReadValue(iso2022, &item);
    attribute->afterEquals = item.prefix;
    attribute->value = item.value;
    attribute->quote = item.quote;
    attribute->hasValue = true;
    return outcome;
}

ReferenceOutcome ReferenceReader::ReadMarkupOpener(ReferenceMarkup* markup, std::string* word) {
    if (AtEnd())
        return ReferenceOutcome::OPEN;
    if (TakeIf('/')) {
        *markup = ReferenceMarkup::END_TAG;
        return ReferenceOutcome::COMPLETE;
    }
    if (TakeIf('?')) {
        *markup = ReferenceMarkup::INSTRUCTION;
        return ReferenceOutcome::COMPLETE;
    }
    if (!TakeIf('!')) {
        *markup = ReferenceMarkup::START_TAG;
        return ReferenceOutcome::COMPLETE;
    }
    if (AtEnd())
        return ReferenceOutcome::OPEN;
    if (TakeIf('-')) {
        if (AtEnd())
            return ReferenceOutcome::OPEN;
        *markup = ReferenceMarkup::COMMENT;
        return TakeIf('-') ? ReferenceOutcome::COMPLETE : ReferenceOutcome::MALFORMED;
    }
    if (!TakeIf('[')) {
        *markup = ReferenceMarkup::DECLARATION;
        return ReferenceOutcome::COMPLETE;
    }
    *word = ReadTagName();
    if (AtEnd())
        return ReferenceOutcome::OPEN;
    if (ReferenceSameWord(*word, "cdata"))
        *markup = ReferenceMarkup::CDATA;
    else if (ReferenceSameWord(*word, "if") || ReferenceSameWord(*word, "endif"))
        *markup = ReferenceMarkup::CONDITIONAL;
    else
        return ReferenceOutcome::MALFORMED;
    return ReferenceOutcome::COMPLETE;
}

void ReferenceReader::ReadComment(ReferenceComment* comment) {
    std::string* text = &comment->text;
    while (!AtEnd()) {
        *text += Take();
        // Two dashes that are the last of their run, before ">": the body may be empty, the
        // opener's dashes do not count.
        if (text->size() >= 2 && text->substr(text->size() - 2) == "--" && TakeIf('>')) {
            text->resize(text->size() - 2);
            return;
        }
    }
    comment->closed = false;
}

void ReferenceReader::ReadCDATA(ReferenceCDATA* section) {
    for (;;) {
        section->text += ReadUntil("]");
        if (AtEnd())
            break;
        Take();
        if (!TakeIf(']')) {
            section->text += ']';
            continue;
        }
        if (TakeIf('>'))
            return;
        section->text += "]]";
        break;  // whatever follows the second bracket ends the section
    }
    section->closed = false;
}

void ReferenceReader::ReadConditional(ReferenceConditional* section, std::size_t* tailBegin) {
    section->condition = ReadUntil("]");
    section->bracketClosed = TakeIf(']');
    *tailBegin = position;
    const std::string tail = ReadUntil(">");
    section->tagClosed = section->bracketClosed && TakeIf('>');
    if (section->tagClosed)
        section->tail = tail;
}

ReferenceOutcome ReferenceReader::ReadBlockComment(std::string* text) {
    while (!AtEnd()) {
        const char character = Take();
        if (character == '*' && TakeIf('/'))
            return ReferenceOutcome::COMPLETE;
        *text += character;
    }
    return ReferenceOutcome::OPEN;
}

ReferenceOutcome ReferenceReader::ReadLineComment(std::string* text, bool* interrupted, ReferenceMarkup* markup,
                                                  std::string* word) {
    for (;;) {
        *text += ReadUntil("<\n");
        if (AtEnd())
            return ReferenceOutcome::OPEN;
        if (NextIs('\n'))
            return ReferenceOutcome::COMPLETE;
        const std::size_t begin = position;
        Take();
        const ReferenceOutcome outcome = ReadMarkupOpener(markup, word);
        if (outcome != ReferenceOutcome::COMPLETE)
            return outcome;
        *interrupted = *markup == ReferenceMarkup::COMMENT || *markup == ReferenceMarkup::CDATA ||
                       *markup == ReferenceMarkup::CONDITIONAL;
        if (*interrupted)
            return ReferenceOutcome::COMPLETE;
        *text += document.substr(begin, position - begin);
    }
}

}  // namespace Kestra::Test
