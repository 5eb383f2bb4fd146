#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

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

}  // namespace Kestra::Test
