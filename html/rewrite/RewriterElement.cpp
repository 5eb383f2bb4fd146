#include "html/rewrite/RewriterElement.h"

#include "html/rewrite/RewriterEngine.h"

namespace Kestra::HTML {

namespace {

using Spot = RewriterEngine::Spot;

/// Puts an edit to the engine of an element.
template <typename Edit>
std::uint32_t EditElement(const RewriterToken& startTag, Edit edit) {
    RewriterEngine* const engine = RewriterEngine::Find(startTag);
    return engine != nullptr ? edit(engine) : std::uint32_t{REWRITE_OVER};
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
    const RewriterEngine* const engine = RewriterEngine::Find(startTag);
    return engine != nullptr ? engine->GetTagName() : std::string();
}

RewriterToken RewriterElement::GetStartTag() const {
    return startTag;
}

bool RewriterElement::HasContent() const {
    const RewriterEngine* const engine = RewriterEngine::Find(startTag);
    return engine != nullptr && engine->HasContent();
}

std::uint32_t RewriterElement::Remove() {
    return EditElement(startTag, [](RewriterEngine* engine) { return engine->RemoveElement(); });
}

std::uint32_t RewriterElement::Unwrap() {
    return EditElement(startTag, [](RewriterEngine* engine) { return engine->Unwrap(); });
}

std::uint32_t RewriterElement::InsertBefore(std::string_view content, RewriteContent kind) {
    return EditElement(startTag, [&](RewriterEngine* engine) { return engine->Write(Spot::BEFORE, content, kind); });
}

std::uint32_t RewriterElement::InsertBefore(WideStringView content, RewriteContent kind) {
    return EditElement(startTag, [&](RewriterEngine* engine) { return engine->Write(Spot::BEFORE, content, kind); });
}

std::uint32_t RewriterElement::InsertAfter(std::string_view content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::AFTER_ELEMENT, content, kind); });
}

std::uint32_t RewriterElement::InsertAfter(WideStringView content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::AFTER_ELEMENT, content, kind); });
}

std::uint32_t RewriterElement::Prepend(std::string_view content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::CONTENT_BEGIN, content, kind); });
}

std::uint32_t RewriterElement::Prepend(WideStringView content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::CONTENT_BEGIN, content, kind); });
}

std::uint32_t RewriterElement::Append(std::string_view content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::CONTENT_END, content, kind); });
}

std::uint32_t RewriterElement::Append(WideStringView content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::CONTENT_END, content, kind); });
}

std::uint32_t RewriterElement::SetContent(std::string_view content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::INSTEAD_OF_CONTENT, content, kind); });
}

std::uint32_t RewriterElement::SetContent(WideStringView content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::INSTEAD_OF_CONTENT, content, kind); });
}

std::uint32_t RewriterElement::Replace(std::string_view content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::INSTEAD_OF_ELEMENT, content, kind); });
}

std::uint32_t RewriterElement::Replace(WideStringView content, RewriteContent kind) {
    return EditElement(startTag,
                       [&](RewriterEngine* engine) { return engine->Write(Spot::INSTEAD_OF_ELEMENT, content, kind); });
}

}  // namespace Kestra::HTML
