#pragma once

#include <algorithm>
#include <optional>

#include "html/fastpath/WholeAttributes.h"
#include "html/output/AttributesNormalizer.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"

namespace Kestra::HTML {

/// A tag that has been read from its first character to its ">" in one go. Only `WholeTagReader` makes one: whoever has one knows that no
/// recognizer has run since the text before the tag, which has left the recognizer of text at the beginning of a text.
class WholeTag {
private:
    template <typename, typename>
    friend class WholeTagReader;

    WholeTag() {}
};

/// Reads one tag without escape runs in its values, or declines.
///
/// Either the tag is read: then the record, its state included, and the place in the context are those that the recognizer leaves. Or the
/// reader declines: then the context is as it was, and the recognizer must begin the record and read the tag from its first character.
template <typename C, typename S>
class WholeTagReader : private WholeAttributes<C, S> {
public:
    using StartTag = StartTagSimpleParserData<C, S>;
    using EndTag = EndTagSimpleParserData<C, S>;

    /// @param tagContext  at the first character after "<" or "</"
    explicit WholeTagReader(SimpleParserContext<C, S>* tagContext) : Base(tagContext) {}

    /// @param mostAttributes  a tag that may have more of them is left to the recognizer, which counts them
    WholeTagReader(SimpleParserContext<C, S>* tagContext, std::size_t mostAttributes)
        : Base(tagContext, FindReach(*tagContext, mostAttributes)) {}

    /// Reads a start tag or a short tag with its ">".
    std::optional<WholeTag> Read(StartTag* data) {
        data->attributes.clear();
        if (!ReadName())
            return std::nullopt;
        FoldedWords words;
        const AttributeListStep step = Base::ReadList(Base::TakeWhiteSpace(), &data->attributes, &words);
        if (step == AttributeListStep::NEXT_ATTRIBUTE)
            return std::nullopt;
        const bool isShort = HasClosingMark(step);
        AssignSpace(prefix.begin, prefix.end, &data->prefix);
        AssignText(name.begin, name.end, &data->name);
        AssignSpace(Base::suffix.begin, Base::suffix.end, &data->suffix);
        data->selfClosing = isShort;
        data->closed = true;
        data->iso2022 = false;
        data->state = isShort ? START_TAG_AFTER_SLASH : START_TAG_END_OF_ATTRIBUTES;
        if (words.AreThere())
            AttributesNormalizer<C, S>::Normalize(&data->attributes);
        return Finish();
    }

    /// Reads an end tag without attributes, with its ">".
    std::optional<WholeTag> Read(EndTag* data) {
        if (!ReadName())
            return std::nullopt;
        const Run afterName = Base::TakeWhiteSpace();
        if (Base::AtEnd() || Base::Next() != '>')
            return std::nullopt;
        AssignSpace(prefix.begin, prefix.end, &data->prefix);
        AssignText(name.begin, name.end, &data->name);
        AssignSpace(afterName.begin, afterName.end, &data->afterName);
        data->suffix.clear();
        data->attributes.clear();
        data->slashBeforeClose = false;
        data->closed = true;
        data->iso2022 = false;
        data->state = END_TAG_DECIDE;
        return Finish();
    }

private:
    using Base = WholeAttributes<C, S>;
    using Run = typename Base::Run;

    /// Whether there are words that become part of a value: without them the list is normal already.
    class FoldedWords {
    public:
        static bool MayGoOn() {
            return true;
        }
        void AfterValue() {
            hasValue = true;
        }
        void AfterWord(const Run&) {
            hasWordAfterValue = hasWordAfterValue || hasValue;
        }
        bool AreThere() const {
            return hasWordAfterValue;
        }

    private:
        bool hasValue = false;
        bool hasWordAfterValue = false;
    };

    /// An attribute has two characters at least, but for a first one that is a "=" alone.
    static const C* FindReach(const SimpleParserContext<C, S>& tagContext, std::size_t mostAttributes) {
        const std::uint64_t left = tagContext.length - tagContext.position;
        const std::uint64_t reach = mostAttributes < left ? std::min<std::uint64_t>(left, 2 * mostAttributes) : left;
        return tagContext.buffer + tagContext.position + reach;
    }

    bool ReadName() {
        prefix = Base::TakeWhiteSpace();
        name = Base::template TakeUntil<TagGrammar::TAG_NAME_STOPS>();
        return !Base::AtEnd();
    }

    WholeTag Finish() {
        Base::TakeEndOfTag();
        Base::Consume();
        return WholeTag();
    }

    Run prefix;
    Run name;
};

}  // namespace Kestra::HTML
