#pragma once

#include <algorithm>
#include <optional>

#include "html/fastpath/WholeAttributes.h"
#include "html/output/AttributesNormalizer.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"

/// @file
/// The fast path: text and tags that lie in a piece of input as a whole, read by pointers. Not
/// installed.
///
/// **Two ways.** A document comes in pieces, and a piece may end at any character. The recognizers
/// in `html/text` and `html/tags` can stop and go on anywhere: they keep a state and gather what
/// they have read in a record. That costs several calls and copies for each word. Yet nearly every
/// tag, and nearly every text, begins and ends in the same piece. For these a pointer that moves
/// from the first character to the last one is enough: it finds the runs of a tag, and each run is
/// copied once, into the string of the record where the recognizer would have put it.
///
/// **One grammar.** Both ways must read the same language, so what they decide is written once:
///
/// * `html/tags/TagGrammar.h` has the characters that stop names and bare values, and says whether
///   a "/" closes the tag. Recognizers and fast path ask the same functions.
/// * `html/framework/Scan.h` finds the ends of runs and counts lines for both.
/// * `WholeAttributes::ReadList` is the one loop over attributes of the fast path. It follows the
///   tables of `AttributeSimpleParser` and `TokenSimpleParser` through the states in which a piece
///   goes on, and it answers the same `AttributeListStep` as `AttributeList`.
/// * `AttributesNormalizer` makes bare words a part of the value before them. A list without such
///   words is normal already, and the fast path leaves out the call.
///
/// **When each runs.** `WholeText` reads plain text: no script or style is open, and the charset
/// has no escape runs. `WholeTagReader` is asked after each "<" or "</". The driver does not ask
///
/// * in an ISO-2022 document, in whose values an escape run may hide a quote;
/// * for a start tag in a script or style, whose "<" is text;
/// * for what begins with "<!" or "<?", which is rare.
///
/// `WholeAttributes::ContinueList` serves a start tag that is already in its recognizer, for example
/// because a piece ended in it: from the ninth attribute on, those that lie in the piece are read
/// here, one by one. After each of them the attribute recognizer is where it would be, so that it
/// can go on at any time.
///
/// **What makes the fast path decline.** A start tag is declined when
///
/// * the piece, or what a limit of the token's size lets the driver see of it, ends before the ">";
/// * a "/" is the whole unquoted value before ">", or white space follows a "/" that ends a word:
///   the recognizer fails there, and the driver makes junk of the tag;
/// * it is so long that it might have more attributes than allowed: the recognizer counts them.
///
/// An end tag is declined when the piece ends in it, and when anything but white space lies between
/// its name and its ">". Browsers and authors write nothing there.
///
/// A tag that is declined has not been consumed: the context is as it was before. The record is
/// unspecified, and the recognizer begins it anew. So declining costs time, at most one more pass
/// over the tag in one piece, and never changes a result.
///
/// **Why they agree.** At the ">" both leave the same record, the same state in it (the
/// recognizers' own names, such as START_TAG_AFTER_SLASH), and the same position, line and column.
/// The driver then finishes the tag by the same function. One difference is left: a recognizer has
/// run or has not. After a recognizer the driver begins the recognizer of text anew. After a whole
/// tag it need not, since nothing has touched that recognizer since the text before the tag, at
/// whose end it was as good as new. That is what the type `WholeTag` says: only the reader makes
/// one, and the function that finishes a tag takes one or the mark of the other way. A tag cannot
/// be finished as whole by mistake.
///
/// `tests/html/fastpath` reads each row of the tables of tags, and random tags, both ways, and
/// compares all of that. It also asserts that complete tags are not declined without a reason.

namespace Kestra::HTML {

/// A tag that has been read from its first character to its ">" in one go. Only `WholeTagReader`
/// makes one, so it proves that no recognizer has run since the text before the tag, which
/// has left the recognizer of text at the beginning of a text.
class WholeTag {
private:
    template <typename, typename>
    friend class WholeTagReader;

    WholeTag() {}
};

/// Reads one tag without escape runs in its values, or declines.
///
/// Either the tag is read: then the record, its state included, and the place in the context are
/// those that the recognizer leaves. Or the reader declines: then the context is as it was, and the
/// recognizer must begin the record and read the tag from its first character.
template <typename C, typename S>
class WholeTagReader : private WholeAttributes<C, S> {
public:
    using StartTag = StartTagSimpleParserData<C, S>;
    using EndTag = EndTagSimpleParserData<C, S>;

    /// @param tagContext  at the first character after "<" or "</"
    explicit WholeTagReader(SimpleParserContext<C, S>* tagContext) : Base(tagContext) {}

    /// @param mostAttributes  a tag that may have more of them is left to the recognizer, which
    ///                        counts them
    WholeTagReader(SimpleParserContext<C, S>* tagContext, std::size_t mostAttributes)
        : Base(tagContext, FindReach(*tagContext, mostAttributes)) {}

    /// Reads a start tag or a short tag with its ">".
    std::optional<WholeTag> Read(StartTag* data) {
        data->attributes.clear();
        if (!ReadName())
            return std::nullopt;
        FoldedWords words;
        const AttributeListStep step = Base::ReadList(Base::ReadWhiteSpace(), &data->attributes, &words);
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
        if (words.Exist())
            AttributesNormalizer<C, S>::Normalize(&data->attributes);
        return Finish();
    }

    /// Reads an end tag without attributes, with its ">".
    std::optional<WholeTag> Read(EndTag* data) {
        if (!ReadName())
            return std::nullopt;
        const Run afterName = Base::ReadWhiteSpace();
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

    /// Whether there are words that become part of a value: without them the list is normal
    /// already.
    class FoldedWords {
    public:
        static bool MayReadNext() {
            return true;
        }
        void AfterValue() {
            hasValue = true;
        }
        void AfterWord(const Run&) {
            hasWordAfterValue = hasWordAfterValue || hasValue;
        }
        bool Exist() const {
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
        prefix = Base::ReadWhiteSpace();
        name = Base::template ReadUntil<TagGrammar::TAG_NAME_STOPS>();
        return !Base::AtEnd();
    }

    WholeTag Finish() {
        Base::ReadEndOfTag();
        Base::Consume();
        return WholeTag();
    }

    Run prefix;
    Run name;
};

}  // namespace Kestra::HTML
