#include "html/output/AttributesNormalizer.h"

#include "html/framework/Instantiate.h"
#include "html/framework/TakeText.h"

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

/// Puts a record in the place of another one, which is worth nothing.
template <typename C, typename S>
void ReplaceAttribute(Attribute<C, S>* from, Attribute<C, S>* to) {
    TakeText(&from->prefix, &to->prefix);
    TakeText(&from->name, &to->name);
    TakeText(&from->beforeEquals, &to->beforeEquals);
    TakeText(&from->afterEquals, &to->afterEquals);
    TakeText(&from->value, &to->value);
    to->quote = from->quote;
    to->hasValue = from->hasValue;
}

}  // namespace

template <typename C, typename S>
void AttributesNormalizer<C, S>::Normalize(Vector<Attribute<C, S>>* attributes) {
    Vector<Attribute<C, S>>& list = *attributes;
    std::size_t kept = 0;  // the records in front of this index are done; behind the first value, the last of them is the anchor
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

KESTRA_HTML_INSTANTIATE(AttributesNormalizer);

}  // namespace Kestra::HTML
