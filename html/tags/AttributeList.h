#pragma once

#include "html/framework/Attribute.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"
#include "html/tags/AttributeSimpleParser.h"
#include "html/tags/TagGrammar.h"
#include "platform/Vector.h"

/// @file
/// Adds completed attributes to the list of a tag. Shared by the recognizers of tags; not
/// installed.

namespace Kestra::HTML {

/// What a tag does next.
enum class AttributeListStep {
    NEXT_ATTRIBUTE,  ///< the attribute is in the list, and its recognizer reads the next one
    CLOSING_MARK,    ///< the attribute ended in the closing mark, which is taken off it: ">" must follow
    END_OF_LIST,     ///< there was no attribute, only white space before ">"
    LONE_MARK,       ///< the closing mark was the whole unquoted value: malformed after the mark
    MALFORMED,       ///< a closing mark and then white space
};

/// The states of a tag after its attributes.
struct AttributeListExits {
    std::uint32_t afterMark;
    std::uint32_t atEnd;
};

inline bool HasClosingMark(AttributeListStep step) {
    return step == AttributeListStep::CLOSING_MARK || step == AttributeListStep::LONE_MARK;
}

/// @param state  receives the next state of the tag, if there is another one
/// @return SP_NEED_MORE_DATA to go on in that state, or SP_MALFORMED
inline std::uint32_t LeaveAttribute(AttributeListStep step, const AttributeListExits& exits, std::uint32_t* state) {
    if (HasClosingMark(step))
        *state = exits.afterMark;
    else if (step == AttributeListStep::END_OF_LIST)
        *state = exits.atEnd;
    return step == AttributeListStep::LONE_MARK || step == AttributeListStep::MALFORMED ? SP_MALFORMED
                                                                                        : SP_NEED_MORE_DATA;
}

/// Appends a completed attribute. Without a value only `prefix` and `name` count.
template <typename C, typename S>
void AppendAttribute(AttributeSimpleParserData<C, S>* data, Vector<Attribute<C, S>>* attributes) {
    Attribute<C, S>& attribute = attributes->AppendRecycled();
    MoveText(&data->prefix, &attribute.prefix);
    MoveText(&data->name, &attribute.name);
    attribute.hasValue = data->hasValue != 0;
    if (attribute.hasValue) {
        MoveText(&data->beforeEquals, &attribute.beforeEquals);
        MoveText(&data->afterEquals, &attribute.afterEquals);
        MoveText(&data->value, &attribute.value);
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

/// Handles the attributes of one tag, each when its recognizer has completed it.
template <typename C, typename S>
class AttributeList {
public:
    /// @param attributeRecognizer  and its record: those that have completed the attribute
    /// @param tag  the record of a tag with `attributes`, `suffix` and `iso2022`
    template <typename Tag>
    AttributeList(AttributeSimpleParser<C, S>* attributeRecognizer, AttributeSimpleParserData<C, S>* attributeData,
                  Tag* tag)
        : recognizer(attributeRecognizer),
          data(attributeData),
          attributes(&tag->attributes),
          suffix(&tag->suffix),
          iso2022(tag->iso2022) {}

    /// Handles the completed attribute: with a value, without one, or no attribute at all.
    ///
    /// The white space after an attribute without a value becomes the prefix of the next one, which
    /// then goes on at its name.
    ///
    /// @param context  at least one character is left, unless the attribute ended with a closing
    ///                 quote
    /// @param closingMark  "/", or "?" of an XML declaration
    /// @param bareValueKeepsIso2022  false: the restart after a non-empty unquoted value leaves
    ///                               `iso2022` off
    AttributeListStep Settle(const SimpleParserContext<C, S>& context, C closingMark, bool bareValueKeepsIso2022) {
        if (data->hasValue != 0)
            return SettleValue(context, closingMark, bareValueKeepsIso2022);
        if (data->name.empty()) {
            MoveText(&data->prefix, suffix);
            Restart(iso2022);
            return AttributeListStep::END_OF_LIST;
        }
        const auto mark = TagGrammar::FindMarkOfName<C>(data->name, !data->beforeEquals.empty(), closingMark);
        if (mark == TagGrammar::ClosingMark::DETACHED)
            return AttributeListStep::MALFORMED;
        const bool isClosed = mark == TagGrammar::ClosingMark::CLOSES;
        if (isClosed)
            data->name.pop_back();
        AppendNameOrSuffix();
        RestartAtName();
        return isClosed ? AttributeListStep::CLOSING_MARK : AttributeListStep::NEXT_ATTRIBUTE;
    }

    /// Handles a name without its closing mark. If nothing is left of the name, the white space
    /// before it becomes the suffix.
    void AppendNameOrSuffix() {
        if (data->name.empty())
            MoveText(&data->prefix, suffix);
        else
            AppendAttribute(data, attributes);
    }

private:
    AttributeListStep SettleValue(const SimpleParserContext<C, S>& context, C closingMark, bool bareValueKeepsIso2022) {
        const bool isBare = data->quote == QUOTE_NONE && !data->value.empty();
        if (isBare && !Scan::AtEnd(context)) {
            const auto mark = TagGrammar::FindMarkOfBareValue<C>(data->value, Scan::Next(context), closingMark);
            if (mark != TagGrammar::ClosingMark::NONE)
                data->value.pop_back();
            if (mark == TagGrammar::ClosingMark::LONE)
                return AttributeListStep::LONE_MARK;
            if (mark == TagGrammar::ClosingMark::CLOSES) {
                AppendAttribute(data, attributes);
                Restart(iso2022);
                return AttributeListStep::CLOSING_MARK;
            }
        }
        AppendAttribute(data, attributes);
        Restart(iso2022 && (!isBare || bareValueKeepsIso2022));
        return AttributeListStep::NEXT_ATTRIBUTE;
    }

    void Restart(bool allowEscapeRuns) {
        RestartAttribute(recognizer, data, allowEscapeRuns);
    }

    /// Saves the white space while the recognizer restarts, and gives `beforeEquals` its buffer
    /// back.
    void RestartAtName() {
        S carry;
        carry.swap(data->beforeEquals);
        Restart(iso2022);
        MoveText(&carry, &data->prefix);
        data->beforeEquals.swap(carry);
        data->state = ATTRIBUTE_NAME;
    }

    AttributeSimpleParser<C, S>* recognizer;
    AttributeSimpleParserData<C, S>* data;
    Vector<Attribute<C, S>>* attributes;
    S* suffix;
    bool iso2022;
};

}  // namespace Kestra::HTML
