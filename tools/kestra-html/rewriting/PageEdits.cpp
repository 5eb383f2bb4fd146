#include "tools/kestra-html/rewriting/PageEdits.h"

#include <utility>

#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/StringHelper.h"

namespace Kestra::Tool {

using HTML::RewriterElement;
using HTML::RewriterToken;

PageEdits::PageEdits(const std::vector<RewriteEdit>& edits, HTML::Rewriter* rewriter, Listener listener)
    : parser(rewriter->GetParser()), listen(std::move(listener)) {
    // What is removed needs no other edit, and reports none. So it is found first: callbacks come
    // in the order in which they are bound.
    for (const RewriteEdit& edit : edits) {
        if (edit.kind == RewriteEdit::Kind::REMOVE_ELEMENT)
            rewriter->OnElement(edit.selector + " *", [this](const RewriterElement& inside) {
                removed = inside.GetStartTag().GetPlace().begin;
            });
    }
    for (const RewriteEdit& edit : edits) {
        if (edit.kind == RewriteEdit::Kind::REMOVE_ELEMENT)
            rewriter->OnElement(edit.selector, [this](const RewriterElement& element) { RemoveElement(element); });
    }
    for (const RewriteEdit& edit : edits)
        Register(edit, rewriter);
}

std::uint64_t PageEdits::GetCount() const {
    return count;
}

const PageEdits::Failure& PageEdits::GetFailure() const {
    return failure;
}

void PageEdits::Register(const RewriteEdit& edit, HTML::Rewriter* rewriter) {
    void (PageEdits::*make)(RewriterToken, const RewriteEdit&) = nullptr;
    switch (edit.kind) {
        case RewriteEdit::Kind::SET:
            make = &PageEdits::Set;
            break;
        case RewriteEdit::Kind::REPLACE:
            make = &PageEdits::Replace;
            break;
        case RewriteEdit::Kind::REMOVE:
            make = &PageEdits::Remove;
            break;
        case RewriteEdit::Kind::REMOVE_ELEMENT:
            return;
    }
    rewriter->OnElement(edit.selector, [this, make, &edit](const RewriterElement& element) {
        const RewriterToken tag = element.GetStartTag();
        if (!IsRemoved(tag))
            (this->*make)(tag, edit);
    });
}

void PageEdits::RemoveElement(RewriterElement element) {
    const RewriterToken tag = element.GetStartTag();
    if (IsRemoved(tag))
        return;
    Made made{tag.GetPlace(), ShowBytes(tag), std::nullopt};
    removed = made.place.begin;
    Conclude(element.Remove(), std::move(made));
}

void PageEdits::Set(RewriterToken tag, const RewriteEdit& edit) {
    std::string value;
    const bool isThere = tag.GetAttribute(edit.attribute, &value) == HTML::REWRITE_OK;
    SetValue(tag, edit.attribute, isThere ? std::optional(value) : std::nullopt, edit.value);
}

void PageEdits::Replace(RewriterToken tag, const RewriteEdit& edit) {
    std::string value;
    if (tag.GetAttribute(edit.attribute, &value) != HTML::REWRITE_OK)
        return;
    const std::string before = value;
    if (edit.replacement->Apply(&value))
        SetValue(tag, edit.attribute, before, value);
}

/// All attributes of the name: without the first one, another would count.
void PageEdits::Remove(RewriterToken tag, const RewriteEdit& edit) {
    std::string value;
    while (tag.GetAttribute(edit.attribute, &value) == HTML::REWRITE_OK) {
        const std::uint32_t result = tag.RemoveAttribute(edit.attribute);
        Conclude(result, {tag.GetPlace(), value, std::nullopt});
        if (result != HTML::REWRITE_OK)
            break;
    }
}

/// A value that stays as it is is not written anew.
void PageEdits::SetValue(RewriterToken tag, const std::string& attribute, const std::optional<std::string>& before,
                         const std::string& after) {
    if (before != after)
        Conclude(tag.SetAttribute(attribute, after), {tag.GetPlace(), before, after});
}

void PageEdits::Conclude(std::uint32_t result, Made made) {
    if (result == HTML::REWRITE_OK) {
        ++count;
        listen(made);
    } else if (failure.code == HTML::REWRITE_OK) {
        failure = {result, made.place};
    }
}

bool PageEdits::IsRemoved(const RewriterToken& tag) const {
    return removed == tag.GetPlace().begin;
}

std::string PageEdits::ShowBytes(const RewriterToken& tag) const {
    using StringNS::CharSet;
    using StringNS::StringHelper;
    const std::string_view bytes = tag.GetBytes();
    WideString wide;
    std::string text;
    const bool isConverted =
        StringHelper::GetWideFromGeneric(parser.GetCharset(), bytes.data(), bytes.size(), &wide) == 0 &&
        StringHelper::GetStringFromWide(CharSet::UTF8, wide.data(), wide.size(), &text) == 0;
    return isConverted ? text : std::string(bytes);
}

}  // namespace Kestra::Tool
