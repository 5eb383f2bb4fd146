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
        AssignText(prefix.begin, prefix.end, &data->prefix);
        AssignText(name.begin, name.end, &data->name);
        AssignText(suffix.begin, suffix.end, &data->suffix);
        data->selfClosing = selfClosing;
        data->closed = true;
        if (hasBareBehindValue)
            AttributesNormalizer<C, S>::Normalize(&data->attributes);
        Scan::ConsumeUntil(*context, next);
        return true;
    }

    /// Reads an end tag without attributes, with its ">".
    bool Read(EndTag* data) {
        if (!ReadName())
            return false;
        suffix = {next, Scan::SkipWhiteSpace(next, end)};
        if (suffix.end == end || *suffix.end != '>')
            return false;
        next = suffix.end + 1;
        AssignText(prefix.begin, prefix.end, &data->prefix);
        AssignText(name.begin, name.end, &data->name);
        AssignText(suffix.begin, suffix.end, &data->afterName);
        data->suffix.clear();
        data->attributes.clear();
        data->slashBeforeClose = false;
        data->closed = true;
        Scan::ConsumeUntil(*context, next);
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
        next = Scan::SkipWhiteSpace(begin, end);
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
        for (;;) {
            const Run attributePrefix = TakeWhiteSpace();
            Run attributeName = TakeUntil<ATTRIBUTE_NAME_STOPS>();
            const Run beforeEquals = TakeWhiteSpace();
            if (AtEnd())
                return false;
            if (*next == '=') {
                if (!ReadValue(attributePrefix, attributeName, beforeEquals, data))
                    return false;
                if (selfClosing)
                    return true;
                continue;
            }
            if (attributeName.IsEmpty()) {  // in front of ">"
                suffix = attributePrefix;
                ++next;
                return true;
            }
            if (attributeName.Last() == '/') {
                if (!beforeEquals.IsEmpty())
                    return false;
                --attributeName.end;
                selfClosing = true;
                ++next;
                if (attributeName.IsEmpty()) {
                    suffix = attributePrefix;
                    return true;
                }
            } else {
                next = attributeName.end;  // the white space is the next attribute's
            }
            AppendWithoutValue(attributePrefix, attributeName, &data->attributes);
            if (selfClosing) {
                suffix = {};
                return true;
            }
        }
    }

    bool ReadValue(const Run& attributePrefix, const Run& attributeName, const Run& beforeEquals, StartTag* data) {
        ++next;
        const Run afterEquals = TakeWhiteSpace();
        if (AtEnd())
            return false;
        std::uint32_t quote = QUOTE_NONE;
        Run value;
        if (*next == '"' || *next == '\'') {
            quote = *next == '"' ? QUOTE_DOUBLE : QUOTE_SINGLE;
            value.begin = next + 1;
            value.end =
                quote == QUOTE_DOUBLE ? Scan::Find<Scan::QUOTATION_MARK>(value.begin, end) : Scan::Find<Scan::APOSTROPHE>(value.begin, end);
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
        AssignText(attributePrefix.begin, attributePrefix.end, &attribute.prefix);
        AssignText(attributeName.begin, attributeName.end, &attribute.name);
        AssignText(beforeEquals.begin, beforeEquals.end, &attribute.beforeEquals);
        AssignText(afterEquals.begin, afterEquals.end, &attribute.afterEquals);
        AssignText(value.begin, value.end, &attribute.value);
        attribute.quote = quote;
        attribute.hasValue = true;
        hasValue = true;
        return true;
    }

    void AppendWithoutValue(const Run& attributePrefix, const Run& attributeName, Vector<Attribute<C, S>>* attributes) {
        Attribute<C, S>& attribute = attributes->AppendRecycled();
        AssignText(attributePrefix.begin, attributePrefix.end, &attribute.prefix);
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

    Run prefix;
    Run name;
    Run suffix;
    bool selfClosing = false;
    bool hasValue = false;
    bool hasBareBehindValue = false;
};

}  // namespace Kestra::HTML
