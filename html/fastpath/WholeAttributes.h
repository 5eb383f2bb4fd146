#pragma once

#include "html/framework/AssignText.h"
#include "html/framework/Attribute.h"
#include "html/framework/QuoteKind.h"
#include "html/framework/Scan.h"
#include "html/tags/AttributeSimpleParser.h"
#include "platform/Vector.h"

/// @file
/// Attributes that lie in one piece as a whole, which nearly all do: read by pointers, straight into the list, without a recognizer.
///
/// What an attribute is stands in the tables of the recognizers; here is the shortest way through them. Values must not have escape runs.
/// Not installed.

namespace Kestra::HTML {

/// Reads attributes, and the runs that they and tags are made of.
template <typename C, typename S>
class WholeAttributes {
public:
    explicit WholeAttributes(SimpleParserContext<C, S>* tagContext)
        : context(tagContext), next(context->buffer + context->position), end(context->buffer + context->length) {}

    /// Reads attributes as far as they lie in the piece, up to the end of the list or to one that ends in a "/", for an attribute
    /// recognizer that has just been restarted. It goes on behind them, as if it had read them.
    /// @param most  attributes that are not too many: reading ends after the first one more
    void Take(AttributeSimpleParserData<C, S>* restarted, std::size_t most, Vector<Attribute<C, S>>* attributes) {
        // In front of the first attribute there may be white space that has been read already.
        const bool startsAtName = restarted->state != 0;
        Run before = startsAtName ? Run{restarted->prefix.data(), restarted->prefix.data() + restarted->prefix.size()} : TakeWhiteSpace();
        while (attributes->size() <= most) {
            const Run attributeName = TakeUntil<ATTRIBUTE_NAME_STOPS>();
            const Run behind = TakeWhiteSpace();
            if (AtEnd())
                return;
            if (*next == '=') {
                Value value;
                if (!ReadValue(&value) || IsClosingMark(value))
                    return;
                Append(before, attributeName, behind, value, attributes);
                Consume();
                GoOn(restarted, 0, Run());
                before = TakeWhiteSpace();
            } else {
                if (attributeName.IsEmpty() || attributeName.Last() == '/')
                    return;
                AppendWithoutValue(before, attributeName, attributes);
                Consume();
                GoOn(restarted, 1, behind);
                before = behind;
            }
        }
    }

protected:
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

    struct Value {
        Run afterEquals;
        Run text;
        std::uint32_t quote = QUOTE_NONE;
    };

    static constexpr Scan::Classes ATTRIBUTE_NAME_STOPS = Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN;
    static constexpr Scan::Classes BARE_VALUE_STOPS = Scan::WHITE_SPACE | Scan::GREATER_THAN | Scan::LESS_THAN;

    bool AtEnd() const {
        return next == end;
    }

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

    /// Reads "=", which is next, and what follows up to the end of the value. False when the piece ends.
    bool ReadValue(Value* value) {
        ++next;
        value->afterEquals = TakeWhiteSpace();
        if (AtEnd())
            return false;
        if (*next == '"' || *next == '\'') {
            value->quote = *next == '"' ? QUOTE_DOUBLE : QUOTE_SINGLE;
            value->text.begin = next + 1;
            value->text.end = value->quote == QUOTE_DOUBLE ? Scan::FindBehindLines<Scan::QUOTATION_MARK>(value->text.begin, end, &lines)
                                                           : Scan::FindBehindLines<Scan::APOSTROPHE>(value->text.begin, end, &lines);
            if (value->text.end == end)
                return false;
            next = value->text.end + 1;
        } else if (*next != '>') {
            value->text = TakeUntil<BARE_VALUE_STOPS>();
            if (AtEnd())
                return false;
        }
        return true;
    }

    /// Whether an unquoted value ends in the "/" of a short tag.
    bool IsClosingMark(const Value& value) const {
        return value.quote == QUOTE_NONE && !value.text.IsEmpty() && value.text.Last() == '/' && *next == '>';
    }

    static void Append(const Run& before, const Run& attributeName, const Run& behind, const Value& value,
                       Vector<Attribute<C, S>>* attributes) {
        Attribute<C, S>& attribute = attributes->AppendRecycled();
        AssignSpace(before.begin, before.end, &attribute.prefix);
        AssignText(attributeName.begin, attributeName.end, &attribute.name);
        AssignSpace(behind.begin, behind.end, &attribute.beforeEquals);
        AssignSpace(value.afterEquals.begin, value.afterEquals.end, &attribute.afterEquals);
        AssignText(value.text.begin, value.text.end, &attribute.value);
        attribute.quote = value.quote;
        attribute.hasValue = true;
    }

    static void AppendWithoutValue(const Run& before, const Run& attributeName, Vector<Attribute<C, S>>* attributes) {
        Attribute<C, S>& attribute = attributes->AppendRecycled();
        AssignSpace(before.begin, before.end, &attribute.prefix);
        AssignText(attributeName.begin, attributeName.end, &attribute.name);
        attribute.beforeEquals.clear();
        attribute.afterEquals.clear();
        attribute.value.clear();
        attribute.quote = QUOTE_NONE;
        attribute.hasValue = false;
    }

    /// Moves the context to what has been read.
    void Consume() {
        lines.Consume(*context, next);
        lines = Scan::Lines<C>();
    }

private:
    /// Where a restarted recognizer goes on: in front of the white space before an attribute, or behind it.
    static void GoOn(AttributeSimpleParserData<C, S>* restarted, std::uint32_t state, const Run& prefix) {
        restarted->state = state;
        AssignSpace(prefix.begin, prefix.end, &restarted->prefix);
    }

    SimpleParserContext<C, S>* context;

protected:
    const C* next;
    const C* const end;

private:
    Scan::Lines<C> lines;  // between the context's place and `next`
};

}  // namespace Kestra::HTML
