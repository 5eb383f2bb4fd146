#include <optional>

#include "tests/reference/ReferenceReader.h"

namespace Kestra::Test {
namespace {

bool EndsWith(const std::string& text, char character) {
    return !text.empty() && text.back() == character;
}

bool IsEmptyUnquoted(const std::string& value, ReferenceQuote quote) {
    return value.empty() && quote == ReferenceQuote::NONE;
}

/// An unquoted value, not empty, whose last character is the mark of the tag's end: "a=x/>".
bool TakesMarkFromValue(const ReferenceAttribute& attribute, char mark) {
    return attribute.hasValue && attribute.quote == ReferenceQuote::NONE && EndsWith(attribute.value, mark);
}

/// Whether the attribute after this one, which has a value, reads ISO-2022 runs: after an unquoted
/// value that is not empty it does not.
bool HandsOnIso2022(const ReferenceAttribute& attribute) {
    return attribute.quote != ReferenceQuote::NONE || attribute.value.empty();
}

/// The list with its bare words folded into the value before them.
ReferenceAttributes Normalized(const ReferenceAttributes& attributes) {
    ReferenceAttributes result;
    bool anchored = false;
    std::size_t anchor = 0;
    for (const ReferenceAttribute& attribute : attributes) {
        if (attribute.hasValue || !anchored) {
            result.push_back(attribute);
            if (attribute.hasValue) {
                anchored = true;
                anchor = result.size() - 1;
            }
            continue;
        }
        ReferenceAttribute& valued = result[anchor];
        if (valued.quote == ReferenceQuote::SINGLE)
            valued.value = "'" + valued.value + "'";
        if (valued.quote == ReferenceQuote::DOUBLE)
            valued.value = "\"" + valued.value + "\"";
        valued.quote = ReferenceQuote::NONE;
        valued.value += attribute.prefix + attribute.name + attribute.beforeEquals;
    }
    return result;
}

/// An attribute without a value: the white space after its name belongs to what follows.
ReferenceAttribute Bare(const std::string& prefix, const std::string& name) {
    ReferenceAttribute attribute;
    attribute.prefix = prefix;
    attribute.name = name;
    return attribute;
}

}  // namespace

ReferenceOutcome ReferenceReader::ReadAttributeList(bool everyRestartKeepsIso2022, bool iso2022,
                                                    ReferenceAttributes* attributes, std::string* suffix, bool* slash) {
    std::optional<std::string> prefix;
    bool attributeIso2022 = iso2022;
    for (;;) {
        if (AtEnd())
            return ReferenceOutcome::OPEN;
        ReferenceAttribute attribute;
        const ReferenceOutcome outcome = ReadAttribute(prefix ? &*prefix : nullptr, attributeIso2022, &attribute);
        if (outcome != ReferenceOutcome::COMPLETE)
            return outcome;
        prefix.reset();
        attributeIso2022 = iso2022;

        if (TakesMarkFromValue(attribute, '/') && NextIs('>')) {
            attribute.value.pop_back();
            if (attribute.value.empty())
                return ReferenceOutcome::MALFORMED;
            attributes->push_back(attribute);
            *slash = true;
            return ReferenceOutcome::COMPLETE;
        }
        if (attribute.hasValue) {
            attributes->push_back(attribute);
            attributeIso2022 = iso2022 && (everyRestartKeepsIso2022 || HandsOnIso2022(attribute));
            continue;
        }
        if (attribute.name.empty()) {
            *suffix = attribute.prefix;
            return ReferenceOutcome::COMPLETE;
        }
        if (EndsWith(attribute.name, '/')) {
            if (!attribute.beforeEquals.empty())
                return ReferenceOutcome::MALFORMED;
            attribute.name.pop_back();
            if (attribute.name.empty())
                *suffix = attribute.prefix;
            else
                attributes->push_back(Bare(attribute.prefix, attribute.name));
            *slash = true;
            return ReferenceOutcome::COMPLETE;
        }
        attributes->push_back(Bare(attribute.prefix, attribute.name));
        prefix = attribute.beforeEquals;
    }
}

ReferenceOutcome ReferenceReader::ReadStartTag(bool iso2022, ReferenceStartTag* tag) {
    tag->prefix = ReadWhiteSpace();
    tag->name = ReadTagName();
    const ReferenceOutcome outcome = ReadAttributeList(false, iso2022, &tag->attributes, &tag->suffix, &tag->isShort);
    if (outcome != ReferenceOutcome::COMPLETE)
        return outcome;
    if (!TakeIf('>'))  // a list is over before a ">" only
        return ReferenceOutcome::MALFORMED;
    tag->written = tag->attributes;
    tag->attributes = Normalized(tag->written);
    // A name keeps a "/" that touches it. The document's view of "<br/>" is the short tag "br".
    if (!tag->isShort && tag->attributes.empty() && tag->suffix.empty() && tag->name.size() > 1 &&
        EndsWith(tag->name, '/')) {
        tag->name.pop_back();
        tag->isShort = true;
    }
    return ReferenceOutcome::COMPLETE;
}

ReferenceOutcome ReferenceReader::ReadEndTag(bool iso2022, ReferenceEndTag* tag) {
    tag->prefix = ReadWhiteSpace();
    tag->name = ReadTagName();
    tag->afterName = ReadWhiteSpace();
    if (AtEnd())
        return ReferenceOutcome::OPEN;
    if (NextIs('<')) {
        tag->closed = false;  // the "<" belongs to the next token
        return ReferenceOutcome::COMPLETE;
    }
    if (!NextIs('>')) {
        const ReferenceOutcome outcome =
            ReadAttributeList(true, iso2022, &tag->attributes, &tag->suffix, &tag->slashBeforeClose);
        if (outcome != ReferenceOutcome::COMPLETE)
            return outcome;
    }
    if (!TakeIf('>'))
        return ReferenceOutcome::MALFORMED;
    tag->written = tag->attributes;
    tag->attributes = Normalized(tag->written);
    return ReferenceOutcome::COMPLETE;
}

ReferenceOutcome ReferenceReader::ReadInstruction(bool iso2022, ReferenceInstruction* instruction) {
    instruction->prefix = ReadWhiteSpace();
    instruction->name = ReadTagName();
    if (AtEnd())
        return ReferenceOutcome::OPEN;
    const std::string beginning = instruction->name.substr(0, 4);
    if (ReferenceSameWord(instruction->name, "xml") || ReferenceSameWord(beginning, "xml:") ||
        ReferenceSameWord(beginning, "xml-"))
        return ReadXMLDeclaration(iso2022, instruction);
    return ReadFreeStyle(iso2022, instruction);
}

ReferenceOutcome ReferenceReader::ReadXMLDeclaration(bool iso2022, ReferenceInstruction* instruction) {
    std::optional<std::string> prefix;
    bool attributeIso2022 = iso2022;
    for (;;) {
        if (AtEnd())
            return ReferenceOutcome::OPEN;
        ReferenceAttribute attribute;
        const ReferenceOutcome outcome = ReadAttribute(prefix ? &*prefix : nullptr, attributeIso2022, &attribute);
        if (outcome != ReferenceOutcome::COMPLETE)
            return outcome;
        prefix.reset();
        attributeIso2022 = iso2022;

        if (TakesMarkFromValue(attribute, '?') && NextIs('>')) {
            attribute.value.pop_back();
            if (attribute.value.empty())
                return ReferenceOutcome::MALFORMED;
            instruction->attributes.push_back(attribute);
            break;
        }
        if (attribute.hasValue) {
            instruction->attributes.push_back(attribute);
            attributeIso2022 = iso2022 && HandsOnIso2022(attribute);
            continue;
        }
        if (attribute.name.empty())
            return ReferenceOutcome::MALFORMED;  // a "?" would have been a name
        const bool slash = EndsWith(attribute.name, '/');
        if (slash || EndsWith(attribute.name, '?')) {
            if (!slash && !attribute.beforeEquals.empty())
                return ReferenceOutcome::MALFORMED;
            attribute.name.pop_back();
            if (attribute.name.empty())
                instruction->suffix = attribute.prefix;
            else
                instruction->attributes.push_back(Bare(attribute.prefix, attribute.name));
            instruction->suffix += attribute.beforeEquals;
            instruction->slashBeforeClose = slash;
            instruction->swapsSlashAndSpace = slash && !attribute.beforeEquals.empty();
            break;
        }
        instruction->attributes.push_back(Bare(attribute.prefix, attribute.name));
        prefix = attribute.beforeEquals;
    }
    return TakeIf('>') ? ReferenceOutcome::COMPLETE : ReferenceOutcome::MALFORMED;
}

ReferenceOutcome ReferenceReader::ReadFreeStyle(bool iso2022, ReferenceInstruction* instruction) {
    instruction->freeStyle = true;
    std::string& text = instruction->text;
    text = "<?" + instruction->prefix + instruction->name;
    while (!AtEnd()) {
        const char character = Take();
        text += character;
        if (character == '>')  // with or without a "?" before it
            return ReferenceOutcome::COMPLETE;
        if (character == '\'' || character == '"') {
            if (ReadQuoted(character, true, iso2022, &text) != ReferenceOutcome::COMPLETE)
                return ReferenceOutcome::OPEN;
            text += character;
        } else if (character == '/' && TakeIf('*')) {
            text += '*' + ReadUntil("*");
            if (AtEnd())
                return ReferenceOutcome::OPEN;
            text += Take();  // the first "*" ends the comment, with a "/" after it or not
            if (TakeIf('/'))
                text += '/';
        } else if (character == '/' && TakeIf('/')) {
            text += '/' + ReadUntil("\n");
            if (AtEnd())
                return ReferenceOutcome::OPEN;
            text += Take();
        }
    }
    return ReferenceOutcome::OPEN;
}

ReferenceOutcome ReferenceReader::ReadDeclaration(bool iso2022, ReferenceDeclaration* declaration) {
    declaration->prefix = ReadWhiteSpace();
    declaration->name = ReadTagName();
    for (;;) {
        ReferenceItem item;
        const ReferenceOutcome outcome = ReadValue(iso2022, &item);
        if (outcome != ReferenceOutcome::COMPLETE)
            return outcome;
        if (IsEmptyUnquoted(item.value, item.quote)) {
            declaration->suffix = item.prefix;
            return TakeIf('>') ? ReferenceOutcome::COMPLETE : ReferenceOutcome::MALFORMED;
        }
        declaration->items.push_back(item);
    }
}

}  // namespace Kestra::Test
