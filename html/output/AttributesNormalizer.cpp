#include "html/output/AttributesNormalizer.h"

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"
#include "html/framework/SimpleParserContext.h"
#include "html/text/DQuoteStringSimpleParser.h"

namespace Kestra::HTML {

namespace {

/// Makes the quotes of a value part of it.
template <typename C, typename S>
void AbsorbQuotes(Attribute<C, S>& anchor) {
    if (anchor.quote != QUOTE_SINGLE && anchor.quote != QUOTE_DOUBLE)
        return;
    const C quote = anchor.quote == QUOTE_SINGLE ? '\'' : '"';
    anchor.value.insert(anchor.value.begin(), quote);
    anchor.value += quote;
    anchor.quote = QUOTE_NONE;
}

/// Moves a record over another one, whose contents are not needed.
template <typename C, typename S>
void ReplaceAttribute(Attribute<C, S>* from, Attribute<C, S>* to) {
    MoveText(&from->prefix, &to->prefix);
    MoveText(&from->name, &to->name);
    MoveText(&from->beforeEquals, &to->beforeEquals);
    MoveText(&from->afterEquals, &to->afterEquals);
    MoveText(&from->value, &to->value);
    to->quote = from->quote;
    to->hasValue = from->hasValue;
}

/// Splits a folded value, from its first character on.
template <typename C, typename S>
class ValueSplitter {
public:
    ValueSplitter(const S& foldedValue, std::uint32_t splitOptions)
        : value(foldedValue), options(splitOptions), position(0) {}

    bool AtEnd() const {
        return position == value.size();
    }

    /// The value as it was written. A value with folded words begins with a quote only when it was
    /// quoted.
    void ReadValue(Attribute<C, S>* part) {
        const C first = AtEnd() ? C() : value[0];
        const std::size_t closing = first == '"' || first == '\'' ? FindClosingQuote(first) : S::npos;
        if (closing == S::npos) {
            while (!AtEnd() && value[position] != '<' && !IsWhiteSpace(value[position]))
                ++position;
            part->value.assign(value, 0, position);
            return;
        }
        part->value.assign(value, 1, closing - 1);
        part->quote = first == '"' ? QUOTE_DOUBLE : QUOTE_SINGLE;
        position = closing + 1;
    }

    /// A bare word and the white space before it; all that is left when it is the last one.
    void ReadWord(Attribute<C, S>* part) {
        ReadWhile(&part->prefix, true);
        ReadWhile(&part->name, false);
        std::size_t next = position;
        while (next < value.size() && IsWhiteSpace(value[next]))
            ++next;
        if (next != value.size())
            return;
        part->beforeEquals.assign(value, position);
        position = next;
    }

private:
    bool IsWhiteSpace(C character) const {
        return IsSpace(character) && ((options & SPLIT_NARROW_SPACES) == 0 || character < 0x80);
    }

    void ReadWhile(S* run, bool isWhiteSpace) {
        const std::size_t begin = position;
        while (!AtEnd() && IsWhiteSpace(value[position]) == isWhiteSpace)
            ++position;
        run->assign(value, begin, position - begin);
    }

    std::size_t FindClosingQuote(C quote) const {
        if (quote == '\'' || (options & SPLIT_ESCAPE_RUNS) == 0)
            return value.find(quote, 1);
        SimpleParserContext<C, S> context;
        context.Init();
        context.buffer = value.data();
        context.position = 1;
        context.length = value.size();
        DQuoteStringSimpleParser<C, S> string;
        DQuoteStringSimpleParserData<C, S> data;
        string.BeginParse(&data);
        data.allowEscape2022 = true;
        while (!Scan::AtEnd(context)) {
            const std::uint32_t result = string.Parse(&context, &data);
            if (result == SP_TOKEN_COMPLETE)
                return static_cast<std::size_t>(context.position) - 1;
            if (result != SP_NEED_MORE_DATA)
                break;
        }
        return S::npos;
    }

    const S& value;
    std::uint32_t options;
    std::size_t position;
};

}  // namespace

template <typename C, typename S>
void AttributesNormalizer<C, S>::Normalize(Vector<Attribute<C, S>>* attributes) {
    Vector<Attribute<C, S>>& list = *attributes;
    // The records before this index are done; after the first value the last one is the anchor.
    std::size_t kept = 0;
    bool hasAnchor = false;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i].hasValue || !hasAnchor) {
            hasAnchor = hasAnchor || list[i].hasValue;
            if (kept != i)
                ReplaceAttribute(&list[i], &list[kept]);
            ++kept;
            continue;
        }
        Attribute<C, S>& anchor = list[kept - 1];
        AbsorbQuotes(anchor);
        anchor.value += list[i].prefix;
        anchor.value += list[i].name;
        anchor.value += list[i].beforeEquals;
    }
    list.Truncate(kept);
}

template <typename C, typename S>
void AttributesNormalizer<C, S>::Split(const Attribute<C, S>& attribute, std::uint32_t options,
                                       Vector<Attribute<C, S>>* parts) {
    parts->clear();
    if (!attribute.hasValue || attribute.quote != QUOTE_NONE) {
        parts->push_back(attribute);
        return;
    }
    ValueSplitter<C, S> splitter(attribute.value, options);
    Attribute<C, S>& first = parts->AppendRecycled();
    first.prefix = attribute.prefix;
    first.name = attribute.name;
    first.beforeEquals = attribute.beforeEquals;
    first.afterEquals = attribute.afterEquals;
    first.quote = QUOTE_NONE;
    first.hasValue = true;
    splitter.ReadValue(&first);
    while (!splitter.AtEnd()) {
        Attribute<C, S>& word = parts->AppendRecycled();
        word.afterEquals.clear();
        word.beforeEquals.clear();
        word.value.clear();
        word.quote = QUOTE_NONE;
        word.hasValue = false;
        splitter.ReadWord(&word);
    }
}

KESTRA_HTML_INSTANTIATE(AttributesNormalizer);

}  // namespace Kestra::HTML
