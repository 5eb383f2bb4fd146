#include "html/rewrite/RewriterElement.h"

#include "html/rewrite/RewriterEngine.h"

namespace Kestra::HTML {

namespace {

using Spot = CurrentToken::Spot;

/// Makes an edit, unless the element is over.
template <typename Edit>
std::uint32_t EditElement(const RewriterToken& startTag, Edit edit) {
    CurrentToken* const found = RewriterEngine::Find(startTag);
    return found != nullptr ? edit(found) : std::uint32_t{REWRITE_OVER};
}

}  // namespace

RewriterElement::RewriterElement() = default;
RewriterElement::RewriterElement(const RewriterElement& other) = default;
RewriterElement& RewriterElement::operator=(const RewriterElement& other) = default;
RewriterElement::~RewriterElement() = default;

RewriterElement::RewriterElement(const RewriterToken& tag) : startTag(tag) {}

bool RewriterElement::IsOver() const {
    return startTag.IsOver();
}

std::string RewriterElement::GetName() const {
    const CurrentToken* const found = RewriterEngine::Find(startTag);
    return found != nullptr ? found->GetTagName() : std::string();
}

RewriterToken RewriterElement::GetStartTag() const {
    return startTag;
}

bool RewriterElement::HasContent() const {
    const CurrentToken* const found = RewriterEngine::Find(startTag);
    return found != nullptr && found->HasContent();
}

std::uint32_t RewriterElement::Remove() {
    return EditElement(startTag, [](CurrentToken* found) { return found->RemoveElement(); });
}

std::uint32_t RewriterElement::Unwrap() {
    return EditElement(startTag, [](CurrentToken* found) { return found->Unwrap(); });
}

std::uint32_t RewriterElement::InsertBefore(std::string_view content, RewriteContent kind) {
    return EditElement(startTag, [&](CurrentToken* found) { return found->Write(Spot::BEFORE, content, kind); });
}

std::uint32_t RewriterElement::InsertBefore(WideStringView content, RewriteContent kind) {
    return EditElement(startTag, [&](CurrentToken* found) { return found->Write(Spot::BEFORE, content, kind); });
}

std::uint32_t RewriterElement::InsertAfter(std::string_view content, RewriteContent kind) {
    return EditElement(startTag, [&](CurrentToken* found) { return found->Write(Spot::AFTER_ELEMENT, content, kind); });
}

std::uint32_t RewriterElement::InsertAfter(WideStringView content, RewriteContent kind) {
    return EditElement(startTag, [&](CurrentToken* found) { return found->Write(Spot::AFTER_ELEMENT, content, kind); });
}

std::uint32_t RewriterElement::Prepend(std::string_view content, RewriteContent kind) {
    return EditElement(startTag, [&](CurrentToken* found) { return found->Write(Spot::CONTENT_BEGIN, content, kind); });
}

std::uint32_t RewriterElement::Prepend(WideStringView content, RewriteContent kind) {
    return EditElement(startTag, [&](CurrentToken* found) { return found->Write(Spot::CONTENT_BEGIN, content, kind); });
}

std::uint32_t RewriterElement::Append(std::string_view content, RewriteContent kind) {
    return EditElement(startTag, [&](CurrentToken* found) { return found->Write(Spot::CONTENT_END, content, kind); });
}

std::uint32_t RewriterElement::Append(WideStringView content, RewriteContent kind) {
    return EditElement(startTag, [&](CurrentToken* found) { return found->Write(Spot::CONTENT_END, content, kind); });
}

std::uint32_t RewriterElement::SetContent(std::string_view content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](CurrentToken* found) { return found->Write(Spot::INSTEAD_OF_CONTENT, content, kind); });
}

std::uint32_t RewriterElement::SetContent(WideStringView content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](CurrentToken* found) { return found->Write(Spot::INSTEAD_OF_CONTENT, content, kind); });
}

std::uint32_t RewriterElement::Replace(std::string_view content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](CurrentToken* found) { return found->Write(Spot::INSTEAD_OF_ELEMENT, content, kind); });
}

std::uint32_t RewriterElement::Replace(WideStringView content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](CurrentToken* found) { return found->Write(Spot::INSTEAD_OF_ELEMENT, content, kind); });
}

}  // namespace Kestra::HTML
