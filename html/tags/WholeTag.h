#pragma once

#include "html/framework/AssignText.h"
#include "html/framework/QuoteKind.h"
#include "html/framework/Scan.h"
#include "html/output/AttributesNormalizer.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"

/// @file
/// Tags that lie in one piece as a whole, which nearly all do: read by pointers, straight into the record, without a recognizer.
///
/// What a tag is stands in the tables of the recognizers; here is the shortest way through them. A tag that leaves this way, because the
/// piece ends or because something odd stands in it, has not been consumed, and its recognizer begins at its first character. Not
/// installed.

namespace Kestra::HTML {

/// Reads one tag.
template <typename C, typename S>
class WholeTag {
public:
    using StartTag = StartTagSimpleParserData<C, S>;
    using EndTag = EndTagSimpleParserData<C, S>;

    /// @param tagContext  at the first character behind "<" or "</"
    explicit WholeTag(SimpleParserContext<C, S>* tagContext)
        : context(tagContext), next(context->buffer + context->position), end(context->buffer + context->length) {}

    /// Reads a start tag or a short tag with its ">". Values must not have escape runs.
    /// @param data  its fields are those of the tag when true is returned; otherwise it must be begun anew
    bool Read(StartTag* data) {
        data->attributes.clear();
        if (!ReadName() || !ReadAttributes(data))
            return false;
        AssignSpace(prefix.begin, prefix.end, &data->prefix);
        AssignText(name.begin, name.end, &data->name);
        AssignSpace(suffix.begin, suffix.end, &data->suffix);
        data->selfClosing = selfClosing;
        data->closed = true;
        data->state = selfClosing ? START_TAG_AFTER_SLASH : START_TAG_END_OF_ATTRIBUTES;
        if (hasBareBehindValue)
            AttributesNormalizer<C, S>::Normalize(&data->attributes);
        lines.Consume(*context, next);
        return true;
    }

    /// Reads an end tag without attributes, with its ">".
    bool Read(EndTag* data) {
        if (!ReadName())
            return false;
        suffix = TakeWhiteSpace();
        if (AtEnd() || *next != '>')
            return false;
        ++next;
        AssignSpace(prefix.begin, prefix.end, &data->prefix);
        AssignText(name.begin, name.end, &data->name);
        AssignSpace(suffix.begin, suffix.end, &data->afterName);
        data->suffix.clear();
        data->attributes.clear();
        data->slashBeforeClose = false;
        data->closed = true;
        lines.Consume(*context, next);
        return true;
    }

private:
    struct Run {
        const C* begin = nullptr;
        const C* end = nullptr;

        bool IsEmpty() const {
            return begin == end;
        }
        C Last() const {
            return end[-1];
        }
    };

    static constexpr Scan::Classes TAG_NAME_STOPS =
        Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN | Scan::BRACKET | Scan::LESS_THAN;
    static constexpr Scan::Classes ATTRIBUTE_NAME_STOPS = Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN;
    static constexpr Scan::Classes BARE_VALUE_STOPS = Scan::WHITE_SPACE | Scan::GREATER_THAN | Scan::LESS_THAN;

    Run TakeWhiteSpace() {
        const C* const begin = next;
        if (next != end && Scan::MayBeWhiteSpace(*next))
            next = Scan::FindBehindWhiteSpace(begin, end, &lines);
        return {begin, next};
    }

    template <Scan::Classes STOPS>
    Run TakeUntil() {
        const C* const begin = next;
        next = Scan::Find<STOPS>(begin, end);
        return {begin, next};
    }

    bool AtEnd() const {
        return next == end;
    }

    bool ReadName() {
        prefix = TakeWhiteSpace();
        name = TakeUntil<TAG_NAME_STOPS>();
        return !AtEnd();
    }

    /// Reads all up to the ">", inclusive.
    bool ReadAttributes(StartTag* data) {
        Run before = TakeWhiteSpace();
        for (;;) {
            Run attributeName = TakeUntil<ATTRIBUTE_NAME_STOPS>();
            const Run behind = TakeWhiteSpace();
            if (AtEnd())
                return false;
            if (*next == '=') {
                if (!ReadValue(before, attributeName, behind, data))
                    return false;
                if (selfClosing)
                    return true;
                before = TakeWhiteSpace();
            } else if (attributeName.IsEmpty()) {  // in front of ">"
                suffix = before;
                ++next;
                return true;
            } else if (attributeName.Last() == '/') {
                return behind.IsEmpty() && ReadClosingMark(before, attributeName, data);
            } else {
                AppendWithoutValue(before, attributeName, data);
                before = behind;
            }
        }
    }

    /// A word ends in "/", and ">" is next.
    bool ReadClosingMark(const Run& before, const Run& word, StartTag* data) {
        const Run attributeName = {word.begin, word.end - 1};
        if (attributeName.IsEmpty())
            suffix = before;
        else
            AppendWithoutValue(before, attributeName, data);
        selfClosing = true;
        ++next;
        return true;
    }

    /// Behind a name and its white space, in front of "=".
    bool ReadValue(const Run& before, const Run& attributeName, const Run& behind, StartTag* data) {
        ++next;
        const Run afterEquals = TakeWhiteSpace();
        if (AtEnd())
            return false;
        std::uint32_t quote = QUOTE_NONE;
        Run value;
        if (*next == '"' || *next == '\'') {
            quote = *next == '"' ? QUOTE_DOUBLE : QUOTE_SINGLE;
            value.begin = next + 1;
            value.end = quote == QUOTE_DOUBLE ? Scan::FindBehindLines<Scan::QUOTATION_MARK>(value.begin, end, &lines)
                                              : Scan::FindBehindLines<Scan::APOSTROPHE>(value.begin, end, &lines);
            if (value.end == end)
                return false;
            next = value.end + 1;
        } else if (*next != '>') {
            value = TakeUntil<BARE_VALUE_STOPS>();
            if (AtEnd())
                return false;
            if (*next == '>' && !value.IsEmpty() && value.Last() == '/') {
                --value.end;
                if (value.IsEmpty())
                    return false;
                selfClosing = true;
                ++next;
            }
        }
        Attribute<C, S>& attribute = data->attributes.AppendRecycled();
        AssignSpace(before.begin, before.end, &attribute.prefix);
        AssignText(attributeName.begin, attributeName.end, &attribute.name);
        AssignSpace(behind.begin, behind.end, &attribute.beforeEquals);
        AssignSpace(afterEquals.begin, afterEquals.end, &attribute.afterEquals);
        AssignText(value.begin, value.end, &attribute.value);
        attribute.quote = quote;
        attribute.hasValue = true;
        hasValue = true;
        return true;
    }

    void AppendWithoutValue(const Run& before, const Run& attributeName, StartTag* data) {
        Attribute<C, S>& attribute = data->attributes.AppendRecycled();
        AssignSpace(before.begin, before.end, &attribute.prefix);
        AssignText(attributeName.begin, attributeName.end, &attribute.name);
        attribute.beforeEquals.clear();
        attribute.afterEquals.clear();
        attribute.value.clear();
        attribute.quote = QUOTE_NONE;
        attribute.hasValue = false;
        hasBareBehindValue = hasBareBehindValue || hasValue;
    }

    SimpleParserContext<C, S>* context;
    const C* next;
    const C* const end;
    Scan::Lines<C> lines;  // between the context's place and `next`

    Run prefix;
    Run name;
    Run suffix;
    bool selfClosing = false;
    bool hasValue = false;
    bool hasBareBehindValue = false;
};

}  // namespace Kestra::HTML
