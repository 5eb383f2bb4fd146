#pragma once

#include "html/framework/Scan.h"
#include "html/framework/TakeText.h"
#include "html/tags/AttributeSimpleParser.h"
#include "platform/Vector.h"

/// @file
/// What a tag does with each attribute that its attribute recognizer has completed. Shared by the recognizers of tags; not installed.

namespace Kestra::HTML {

/// What a tag does next.
enum class AttributeListStep {
    NEXT_ATTRIBUTE,  ///< the attribute is in the list, the recognizer is restarted
    CLOSING_MARK,    ///< the attribute ended in the closing mark ("/"), which is taken off it: the end of the tag must follow
    END_OF_LIST,     ///< there was no attribute, only white space in front of ">"
    LONE_MARK,       ///< the closing mark was the whole unquoted value: malformed behind the mark
    MALFORMED,       ///< a closing mark and then white space
};

/// Appends a completed attribute. Without a value only `prefix` and `name` count.
template <typename C, typename S>
void AppendAttribute(AttributeSimpleParserData<C, S>* data, Vector<Attribute<C, S>>* attributes) {
    Attribute<C, S>& attribute = attributes->AppendRecycled();
    TakeText(&data->prefix, &attribute.prefix);
    TakeText(&data->name, &attribute.name);
    attribute.hasValue = data->hasValue != 0;
    if (attribute.hasValue) {
        TakeText(&data->beforeEquals, &attribute.beforeEquals);
        TakeText(&data->afterEquals, &attribute.afterEquals);
        TakeText(&data->value, &attribute.value);
        attribute.quote = data->quote;
    } else {
        attribute.beforeEquals.clear();
        attribute.afterEquals.clear();
        attribute.value.clear();
        attribute.quote = QUOTE_NONE;
    }
}

template <typename C, typename S>
void RestartAttribute(AttributeSimpleParser<C, S>* attribute, AttributeSimpleParserData<C, S>* data, bool iso2022) {
    attribute->BeginParse(data);
    data->iso2022 = iso2022;
}

/// Settles the attribute that `attribute` has just completed: with a value, without one, or none at all.
///
/// The white space behind an attribute without a value becomes the prefix of the next one, which then goes on at its name.
///
/// @param context  one character is left: an attribute completes in front of it, or behind a closing quote
/// @param suffix   receives white space that belongs to no attribute
/// @param bareValueKeepsIso2022  false: the restart behind a non-empty unquoted value leaves `iso2022` off
template <typename C, typename S>
AttributeListStep TakeAttribute(const SimpleParserContext<C, S>& context, AttributeSimpleParser<C, S>* attribute,
                                AttributeSimpleParserData<C, S>* data, Vector<Attribute<C, S>>* attributes, S* suffix, bool iso2022,
                                bool bareValueKeepsIso2022, C closingMark) {
    if (data->hasValue != 0) {
        const bool bare = data->quote == QUOTE_NONE && !data->value.empty();
        if (bare && data->value.back() == closingMark && !Scan::AtEnd(context) && Scan::Next(context) == '>') {
            data->value.pop_back();
            if (data->value.empty())
                return AttributeListStep::LONE_MARK;
            AppendAttribute(data, attributes);
            RestartAttribute(attribute, data, iso2022);
            return AttributeListStep::CLOSING_MARK;
        }
        AppendAttribute(data, attributes);
        RestartAttribute(attribute, data, iso2022 && (!bare || bareValueKeepsIso2022));
        return AttributeListStep::NEXT_ATTRIBUTE;
    }
    if (data->name.empty()) {
        TakeText(&data->prefix, suffix);
        RestartAttribute(attribute, data, iso2022);
        return AttributeListStep::END_OF_LIST;
    }
    AttributeListStep step = AttributeListStep::NEXT_ATTRIBUTE;
    if (data->name.back() == closingMark) {
        if (!data->beforeEquals.empty())
            return AttributeListStep::MALFORMED;
        step = AttributeListStep::CLOSING_MARK;
        data->name.pop_back();
    }
    // The white space moves aside while the recognizer restarts; appending leaves `beforeEquals` alone, and it keeps its buffer.
    if (data->name.empty())
        TakeText(&data->prefix, suffix);
    else
        AppendAttribute(data, attributes);
    S carry;
    carry.swap(data->beforeEquals);
    RestartAttribute(attribute, data, iso2022);
    TakeText(&carry, &data->prefix);
    data->beforeEquals.swap(carry);
    data->state = 1;
    return step;
}

}  // namespace Kestra::HTML
