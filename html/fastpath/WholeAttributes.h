#pragma once

#include <string_view>

#include "html/framework/AssignText.h"
#include "html/framework/Attribute.h"
#include "html/framework/QuoteKind.h"
#include "html/framework/Scan.h"
#include "html/tags/AttributeList.h"
#include "html/tags/TagGrammar.h"
#include "platform/Vector.h"

/// @file
/// Attributes that lie in one piece as a whole, read by pointers straight into the list.
/// `WholeTag.h` says why that agrees with their recognizer. Not installed.

namespace Kestra::HTML {

/// Reads attributes, and the runs of which they and tags consist. `Read...` moves `next`; the
/// context does not move before `Consume`.
template <typename C, typename S>
class WholeAttributes {
public:
    explicit WholeAttributes(SimpleParserContext<C, S>* tagContext)
        : WholeAttributes(tagContext, tagContext->buffer + tagContext->length) {}

    /// Reads on in the list of a start tag after an attribute that its recognizer has completed,
    /// without escape runs in values. Attributes that lie in the piece are consumed one by one;
    /// where the next one does not, the recognizer goes on as if it had read them.
    /// @param restarted  the record of the attribute recognizer, which has been restarted
    /// @param tag  receives attributes and suffix
    /// @param mostAttributes  that are not too many: reading ends after the first one more
    /// @return NEXT_ATTRIBUTE when the recognizer must go on; CLOSING_MARK or END_OF_LIST with all
    ///         up to the ">" consumed, exclusive
    template <typename Tag>
    AttributeListStep ContinueList(AttributeSimpleParserData<C, S>* restarted, Tag* tag, std::size_t mostAttributes) {
        // Before the first attribute there may be white space that has been read already.
        const S& prefix = restarted->prefix;
        const Run before =
            restarted->state == ATTRIBUTE_NAME ? Run{prefix.data(), prefix.data() + prefix.size()} : ReadWhiteSpace();
        Resumption progress{this, restarted, &tag->attributes, mostAttributes};
        const AttributeListStep step = ReadList(before, &tag->attributes, &progress);
        if (step != AttributeListStep::NEXT_ATTRIBUTE) {
            AssignSpace(suffix.begin, suffix.end, &tag->suffix);
            Consume();
        }
        return step;
    }

protected:
    struct Run {
        const C* begin = nullptr;
        const C* end = nullptr;

        bool IsEmpty() const {
            return begin == end;
        }
        std::basic_string_view<C> View() const {
            return {begin, static_cast<std::size_t>(end - begin)};
        }
    };

    struct Value {
        Run afterEquals;
        Run text;
        std::uint32_t quote = QUOTE_NONE;
    };

    /// @param reach  where to stop as if the piece ended
    WholeAttributes(SimpleParserContext<C, S>* tagContext, const C* reach)
        : context(tagContext), next(tagContext->buffer + tagContext->position), end(reach) {}

    bool AtEnd() const {
        return next == end;
    }

    Run ReadWhiteSpace() {
        const C* const begin = next;
        if (next != end && Scan::MayBeWhiteSpace(*next))
            next = Scan::FindAfterWhiteSpace(begin, end, &lines);
        return {begin, next};
    }

    template <Scan::Classes STOPS>
    Run ReadUntil() {
        const C* const begin = next;
        next = Scan::Find<STOPS>(begin, end);
        return {begin, next};
    }

    /// The one loop over attributes, from a name on to the ">" after the list, exclusive. Leaves
    /// `suffix`.
    ///
    /// @param before  white space before the name
    /// @param progress  its `MayReadNext` is asked before each attribute; `AfterValue` or
    ///                  `AfterWord` is called after one that another may follow
    /// @return CLOSING_MARK or END_OF_LIST at ">"; NEXT_ATTRIBUTE where a recognizer must go on
    template <typename Progress>
    AttributeListStep ReadList(Run before, Vector<Attribute<C, S>>* attributes, Progress* progress) {
        using TagGrammar::ClosingMark;
        while (progress->MayReadNext()) {
            const Run name = ReadUntil<TagGrammar::ATTRIBUTE_NAME_STOPS>();
            const Run space = ReadWhiteSpace();
            if (AtEnd())
                return AttributeListStep::NEXT_ATTRIBUTE;
            if (*next == '=') {
                Value value;
                if (!ReadValue(&value))
                    return AttributeListStep::NEXT_ATTRIBUTE;
                const ClosingMark mark = value.quote == QUOTE_NONE
                                             ? TagGrammar::FindMarkOfBareValue<C>(value.text.View(), *next, '/')
                                             : ClosingMark::NONE;
                if (mark == ClosingMark::LONE)
                    return AttributeListStep::NEXT_ATTRIBUTE;
                if (mark == ClosingMark::CLOSES)
                    --value.text.end;
                Append(before, name, space, value, attributes);
                if (mark == ClosingMark::CLOSES)
                    return AttributeListStep::CLOSING_MARK;
                progress->AfterValue();
                before = ReadWhiteSpace();
            } else if (name.IsEmpty()) {
                suffix = before;
                return AttributeListStep::END_OF_LIST;
            } else {
                const ClosingMark mark = TagGrammar::FindMarkOfName<C>(name.View(), !space.IsEmpty(), '/');
                if (mark == ClosingMark::DETACHED)
                    return AttributeListStep::NEXT_ATTRIBUTE;
                if (mark == ClosingMark::CLOSES)
                    return EndWithMark(before, {name.begin, name.end - 1}, attributes, progress);
                AppendWord(before, name, attributes);
                progress->AfterWord(space);
                before = space;
            }
        }
        return AttributeListStep::NEXT_ATTRIBUTE;
    }

    /// Moves the context to what has been read.
    void Consume() {
        lines.Consume(*context, next);
        lines = Scan::Lines<C>();
    }

    /// Reads the ">" that is next.
    void ReadEndOfTag() {
        ++next;
    }

    C Next() const {
        return *next;
    }

    Run suffix;  // white space after the last attribute

private:
    /// Where the recognizer goes on if the next attribute does not lie in the piece.
    struct Resumption {
        WholeAttributes* reader;
        AttributeSimpleParserData<C, S>* restarted;
        const Vector<Attribute<C, S>>* attributes;
        std::size_t mostAttributes;

        bool MayReadNext() const {
            return attributes->size() <= mostAttributes;
        }
        void AfterValue() {
            reader->Consume();
            restarted->state = ATTRIBUTE_PREFIX;  // where the prefix is read anew
        }
        void AfterWord(const Run& space) {
            reader->Consume();
            restarted->state = ATTRIBUTE_NAME;
            AssignSpace(space.begin, space.end, &restarted->prefix);
        }
    };

    /// Reads "=", which is next, and what follows up to the end of the value. False when the piece
    /// ends. After an unquoted value there is another character.
    bool ReadValue(Value* value) {
        ++next;
        value->afterEquals = ReadWhiteSpace();
        if (AtEnd())
            return false;
        if (*next == '"' || *next == '\'') {
            value->quote = *next == '"' ? QUOTE_DOUBLE : QUOTE_SINGLE;
            value->text.begin = next + 1;
            value->text.end = value->quote == QUOTE_DOUBLE
                                  ? Scan::FindCountingLines<Scan::QUOTATION_MARK>(value->text.begin, end, &lines)
                                  : Scan::FindCountingLines<Scan::APOSTROPHE>(value->text.begin, end, &lines);
            if (value->text.end == end)
                return false;
            next = value->text.end + 1;
        } else if (*next != '>') {
            value->text = ReadUntil<TagGrammar::BARE_VALUE_STOPS>();
            if (AtEnd())
                return false;
        }
        return true;
    }

    /// @param word  the last one, without the mark; of "/" alone nothing is left, and no attribute
    template <typename Progress>
    AttributeListStep EndWithMark(const Run& before, const Run& word, Vector<Attribute<C, S>>* attributes,
                                  Progress* progress) {
        if (word.IsEmpty()) {
            suffix = before;
        } else {
            AppendWord(before, word, attributes);
            progress->AfterWord(Run());
        }
        return AttributeListStep::CLOSING_MARK;
    }

    static void Append(const Run& before, const Run& name, const Run& beforeEquals, const Value& value,
                       Vector<Attribute<C, S>>* attributes) {
        Attribute<C, S>& attribute = attributes->AppendRecycled();
        AssignSpace(before.begin, before.end, &attribute.prefix);
        AssignText(name.begin, name.end, &attribute.name);
        AssignSpace(beforeEquals.begin, beforeEquals.end, &attribute.beforeEquals);
        AssignSpace(value.afterEquals.begin, value.afterEquals.end, &attribute.afterEquals);
        AssignText(value.text.begin, value.text.end, &attribute.value);
        attribute.quote = value.quote;
        attribute.hasValue = true;
    }

    /// Appends an attribute without a value.
    static void AppendWord(const Run& before, const Run& name, Vector<Attribute<C, S>>* attributes) {
        Attribute<C, S>& attribute = attributes->AppendRecycled();
        AssignSpace(before.begin, before.end, &attribute.prefix);
        AssignText(name.begin, name.end, &attribute.name);
        attribute.beforeEquals.clear();
        attribute.afterEquals.clear();
        attribute.value.clear();
        attribute.quote = QUOTE_NONE;
        attribute.hasValue = false;
    }

    SimpleParserContext<C, S>* context;
    const C* next;
    const C* const end;
    Scan::Lines<C> lines;  // between the context's place and `next`
};

}  // namespace Kestra::HTML
