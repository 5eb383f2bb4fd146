#include "html/rewrite/RewriterToken.h"

#include <utility>

#include "html/rewrite/RewriterEngine.h"

namespace Kestra::HTML {

namespace {

using Spot = CurrentToken::Spot;

/// Makes an edit, unless the token is over.
template <typename Edit>
std::uint32_t EditToken(const RewriterToken& token, Edit edit) {
    CurrentToken* const found = RewriterEngine::Find(token);
    return found != nullptr ? edit(found) : std::uint32_t{REWRITE_OVER};
}

}  // namespace

RewriterToken::RewriterToken() : generation(0) {}
RewriterToken::RewriterToken(const RewriterToken& other) = default;
RewriterToken& RewriterToken::operator=(const RewriterToken& other) = default;
RewriterToken::~RewriterToken() = default;

RewriterToken::RewriterToken(std::shared_ptr<RewriterEngine*> owner, std::uint64_t number)
    : engine(std::move(owner)), generation(number) {}

bool RewriterToken::IsOver() const {
    return RewriterEngine::Find(*this) == nullptr;
}

TokenKind RewriterToken::GetKind() const {
    const CurrentToken* const found = RewriterEngine::Find(*this);
    return found != nullptr ? found->GetKind() : TOKEN_NONE;
}

TokenPlace RewriterToken::GetPlace() const {
    const CurrentToken* const found = RewriterEngine::Find(*this);
    return found != nullptr ? found->GetPlace() : TokenPlace();
}

std::string_view RewriterToken::GetBytes() const {
    CurrentToken* const found = RewriterEngine::Find(*this);
    return found != nullptr ? found->GetBytes() : std::string_view();
}

std::uint32_t RewriterToken::Remove() {
    return EditToken(*this, [](CurrentToken* found) { return found->Remove(); });
}

bool RewriterToken::HasAttribute(std::string_view name) const {
    CurrentToken* const found = RewriterEngine::Find(*this);
    return found != nullptr && found->HasAttribute(name);
}

std::uint32_t RewriterToken::GetAttribute(std::string_view name, std::string* value) const {
    return EditToken(*this, [&](CurrentToken* found) { return found->GetAttribute(name, value); });
}

std::uint32_t RewriterToken::RenameAttribute(std::string_view name, std::string_view newName) {
    return EditToken(*this, [&](CurrentToken* found) { return found->RenameAttribute(name, newName); });
}

std::uint32_t RewriterToken::RemoveAttribute(std::string_view name) {
    return EditToken(*this, [&](CurrentToken* found) { return found->RemoveAttribute(name); });
}

std::uint32_t RewriterToken::Replace(std::string_view content, RewriteContent kind) {
    return EditToken(*this, [&](CurrentToken* found) { return found->Write(Spot::INSTEAD, content, kind); });
}

std::uint32_t RewriterToken::Replace(WideStringView content, RewriteContent kind) {
    return EditToken(*this, [&](CurrentToken* found) { return found->Write(Spot::INSTEAD, content, kind); });
}

std::uint32_t RewriterToken::InsertBefore(std::string_view content, RewriteContent kind) {
    return EditToken(*this, [&](CurrentToken* found) { return found->Write(Spot::BEFORE, content, kind); });
}

std::uint32_t RewriterToken::InsertBefore(WideStringView content, RewriteContent kind) {
    return EditToken(*this, [&](CurrentToken* found) { return found->Write(Spot::BEFORE, content, kind); });
}

std::uint32_t RewriterToken::InsertAfter(std::string_view content, RewriteContent kind) {
    return EditToken(*this, [&](CurrentToken* found) { return found->Write(Spot::AFTER, content, kind); });
}

std::uint32_t RewriterToken::InsertAfter(WideStringView content, RewriteContent kind) {
    return EditToken(*this, [&](CurrentToken* found) { return found->Write(Spot::AFTER, content, kind); });
}

std::uint32_t RewriterToken::SetText(std::string_view text) {
    return EditToken(*this, [&](CurrentToken* found) { return found->SetText(text); });
}

std::uint32_t RewriterToken::SetText(WideStringView text) {
    return EditToken(*this, [&](CurrentToken* found) { return found->SetText(text); });
}

std::uint32_t RewriterToken::SetAttribute(std::string_view name, std::string_view value) {
    return EditToken(*this, [&](CurrentToken* found) { return found->SetAttribute(name, value, false); });
}

std::uint32_t RewriterToken::SetAttribute(std::string_view name, WideStringView value) {
    return EditToken(*this, [&](CurrentToken* found) { return found->SetAttribute(name, value, false); });
}

std::uint32_t RewriterToken::AddAttribute(std::string_view name, std::string_view value) {
    return EditToken(*this, [&](CurrentToken* found) { return found->SetAttribute(name, value, true); });
}

std::uint32_t RewriterToken::AddAttribute(std::string_view name, WideStringView value) {
    return EditToken(*this, [&](CurrentToken* found) { return found->SetAttribute(name, value, true); });
}

}  // namespace Kestra::HTML
