#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "html/output/ParserObserverOutputHandler.h"
#include "html/rewrite/Rewriter.h"
#include "tests/support/Splits.h"

namespace Kestra::Test {

/// Keeps what a rewriter writes.
class CollectingHandler final : public HTML::ParserObserverOutputHandler {
public:
    void Write(const void* data, std::uint64_t byteCount, bool isMarkup) override;

    std::string bytes;
};

struct RewriteSettings {
    StringNS::CharSet::Code charset = StringNS::CharSet::UTF8;
    HTML::GenericParser::DataStreamType type = HTML::GenericParser::DATA_STREAM_8BIT;
};

/// What came of a document.
struct RewriteRun {
    std::string output;
    std::uint32_t feeding = 0;  ///< the first answer that was not 0
    std::uint32_t ending = 0;
};

/// A rewriter whose output is kept.
struct RewriterBench final : HTML::Rewriter {
    RewriterBench() : Rewriter(&output) {}

    /// Parses a piece in a heap block of its exact size.
    std::uint32_t Feed(std::string_view bytes);

    /// Ends the document and expects the result 0 and all that was written.
    void ExpectEnd(std::string_view expectedOutput);

    CollectingHandler output;
};

using PrepareRewriter = std::function<void(HTML::Rewriter*)>;

/// Rewrites a document, each piece in a heap block of its own.
RewriteRun Rewrite(std::string_view document, const RewriteSettings& settings, const Cuts& cuts,
                   const PrepareRewriter& prepare);

/// The same for UTF-8, uncut.
RewriteRun Rewrite(std::string_view document, const PrepareRewriter& prepare);

/// Expects the same output from a UTF-8 document and the same in UTF-16, uncut and however it is
/// cut; both texts in UTF-8, the second one with references only where UTF-8 has them.
void ExpectRewritten(std::string_view document, std::string_view expected, const PrepareRewriter& prepare);

std::string Utf8ToUtf16LE(std::string_view utf8);

using TokenEdit = std::function<std::uint32_t(HTML::RewriterToken)>;
using ElementEdit = std::function<std::uint32_t(HTML::RewriterElement)>;

/// Edits of a row, by the methods of the same name. The texts are borrowed.

inline auto Before(std::string_view content, HTML::RewriteContent kind = HTML::CONTENT_TEXT) {
    return [=](auto target) { return target.InsertBefore(content, kind); };
}
inline auto After(std::string_view content, HTML::RewriteContent kind = HTML::CONTENT_TEXT) {
    return [=](auto target) { return target.InsertAfter(content, kind); };
}
inline auto Replace(std::string_view content, HTML::RewriteContent kind = HTML::CONTENT_TEXT) {
    return [=](auto target) { return target.Replace(content, kind); };
}
inline auto Remove() {
    return [](auto target) { return target.Remove(); };
}
inline auto Prepend(std::string_view content, HTML::RewriteContent kind = HTML::CONTENT_TEXT) {
    return [=](HTML::RewriterElement element) { return element.Prepend(content, kind); };
}
inline auto Append(std::string_view content, HTML::RewriteContent kind = HTML::CONTENT_TEXT) {
    return [=](HTML::RewriterElement element) { return element.Append(content, kind); };
}
inline auto SetContent(std::string_view content) {
    return [=](HTML::RewriterElement element) { return element.SetContent(content, HTML::CONTENT_TEXT); };
}
inline auto Unwrap() {
    return [](HTML::RewriterElement element) { return element.Unwrap(); };
}
inline auto SetText(std::string_view text) {
    return [=](HTML::RewriterToken token) { return token.SetText(text); };
}
inline auto Set(std::string_view name, std::string_view value) {
    return [=](HTML::RewriterToken token) { return token.SetAttribute(name, value); };
}
inline auto Add(std::string_view name, std::string_view value) {
    return [=](HTML::RewriterToken token) { return token.AddAttribute(name, value); };
}
inline auto Rename(std::string_view name, std::string_view newName) {
    return [=](HTML::RewriterToken token) { return token.RenameAttribute(name, newName); };
}
inline auto Remove(std::string_view name) {
    return [=](HTML::RewriterToken token) { return token.RemoveAttribute(name); };
}

/// One after another. Answers the sum of the answers.
template <typename... Edits>
auto All(Edits... edits) {
    return [=](auto target) {
        std::uint32_t sum = 0;
        ((sum += edits(target)), ...);
        return sum;
    };
}

/// Edits the first token of a kind; with TOKEN_NONE the first that is no text.
PrepareRewriter EditFirst(HTML::TokenKind kind, const TokenEdit& edit, std::uint32_t* result);

/// An edit of the first token that is no text.
struct AttributeRow {
    const char* note;
    std::string_view document;
    TokenEdit edit;
    std::string_view expected;
    std::uint32_t result = HTML::REWRITE_OK;
};

/// An edit of the first token of a kind.
struct TokenRow {
    const char* note;
    std::string_view document;
    HTML::TokenKind kind;
    TokenEdit edit;
    std::string_view expected;
    std::uint32_t result = HTML::REWRITE_OK;
};

/// An edit of every element that a selector matches.
struct ElementRow {
    const char* note;
    std::string_view document;
    std::string_view selector;
    ElementEdit edit;
    std::string_view expected;
    std::uint32_t result = HTML::REWRITE_OK;
};

void CheckRows(const std::vector<AttributeRow>& rows);
void CheckRows(const std::vector<TokenRow>& rows);
void CheckRows(const std::vector<ElementRow>& rows);

}  // namespace Kestra::Test
