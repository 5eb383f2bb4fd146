#pragma once

#include "html/output/AttributesNormalizer.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/tags/WholeAttributes.h"

/// @file
/// Tags that lie in one piece as a whole, which nearly all do: read by pointers, straight into the record, without a recognizer.
///
/// A tag that leaves this way, because the piece ends or because something odd stands in it, has not been consumed, and its recognizer
/// begins at its first character. Not installed.

namespace Kestra::HTML {

/// Reads one tag.
template <typename C, typename S>
class WholeTag : private WholeAttributes<C, S> {
public:
    using StartTag = StartTagSimpleParserData<C, S>;
    using EndTag = EndTagSimpleParserData<C, S>;

    /// @param tagContext  at the first character behind "<" or "</"
    explicit WholeTag(SimpleParserContext<C, S>* tagContext) : WholeAttributes<C, S>(tagContext) {}

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
        data->iso2022 = false;
        data->state = selfClosing ? START_TAG_AFTER_SLASH : START_TAG_END_OF_ATTRIBUTES;
        if (hasBareBehindValue)
            AttributesNormalizer<C, S>::Normalize(&data->attributes);
        Base::Consume();
        return true;
    }

    /// Reads an end tag without attributes, with its ">".
    bool Read(EndTag* data) {
        if (!ReadName())
            return false;
        suffix = Base::TakeWhiteSpace();
        if (Base::AtEnd() || *next != '>')
            return false;
        ++next;
        AssignSpace(prefix.begin, prefix.end, &data->prefix);
        AssignText(name.begin, name.end, &data->name);
        AssignSpace(suffix.begin, suffix.end, &data->afterName);
        data->suffix.clear();
        data->attributes.clear();
        data->slashBeforeClose = false;
        data->closed = true;
        data->iso2022 = false;
        data->state = END_TAG_DECIDE;
        Base::Consume();
        return true;
    }

private:
    using Base = WholeAttributes<C, S>;
    using Run = typename Base::Run;
    using Base::next;

    static constexpr Scan::Classes TAG_NAME_STOPS =
        Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN | Scan::BRACKET | Scan::LESS_THAN;

    bool ReadName() {
        prefix = Base::TakeWhiteSpace();
        name = Base::template TakeUntil<TAG_NAME_STOPS>();
        return !Base::AtEnd();
    }

    /// Reads all up to the ">", inclusive.
    bool ReadAttributes(StartTag* data) {
        Run before = Base::TakeWhiteSpace();
        for (;;) {
            const Run attributeName = Base::template TakeUntil<Base::ATTRIBUTE_NAME_STOPS>();
            const Run behind = Base::TakeWhiteSpace();
            if (Base::AtEnd())
                return false;
            if (*next == '=') {
                typename Base::Value value;
                if (!Base::ReadValue(&value))
                    return false;
                const bool isLast = Base::IsClosingMark(value);
                if (isLast && --value.text.end == value.text.begin)
                    return false;
                Base::Append(before, attributeName, behind, value, &data->attributes);
                if (isLast)
                    return Close();
                hasValue = true;
                before = Base::TakeWhiteSpace();
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
        return Close();
    }

    void AppendWithoutValue(const Run& before, const Run& attributeName, StartTag* data) {
        Base::AppendWithoutValue(before, attributeName, &data->attributes);
        hasBareBehindValue = hasBareBehindValue || hasValue;
    }

    /// Takes the ">" behind a "/".
    bool Close() {
        selfClosing = true;
        ++next;
        return true;
    }

    Run prefix;
    Run name;
    Run suffix;
    bool selfClosing = false;
    bool hasValue = false;
    bool hasBareBehindValue = false;
};

}  // namespace Kestra::HTML
