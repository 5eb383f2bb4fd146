#include "tests/html/rewrite/RewriteRun.h"

#include <memory>

#include "platform/StringHelper.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {

void CollectingHandler::Write(const void* data, std::uint64_t byteCount, bool isMarkup) {
    EXPECT_TRUE(isMarkup);
    bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
}

std::uint32_t RewriterBench::Feed(std::string_view bytes) {
    const HeapPiece<char> piece(bytes);
    return ParseBuffer(piece.Data(), piece.Size());
}

void RewriterBench::ExpectEnd(std::string_view expectedOutput) {
    EXPECT_EQ(EndParse(), 0U);
    EXPECT_EQ(output.bytes, expectedOutput);
}

RewriteRun Rewrite(std::string_view document, const RewriteSettings& settings, const Cuts& cuts,
                   const PrepareRewriter& prepare) {
    RewriteRun run;
    RewriterBench rewriter;
    prepare(&rewriter);
    EXPECT_EQ(rewriter.StartParse(settings.charset, settings.type), 0U);
    for (const auto& [begin, end] : PiecesOf(cuts, document.size())) {
        const std::uint32_t result = rewriter.Feed(document.substr(begin, end - begin));
        if (run.feeding == 0)
            run.feeding = result;
    }
    run.ending = rewriter.EndParse();
    run.output = rewriter.output.bytes;
    return run;
}

RewriteRun Rewrite(std::string_view document, const PrepareRewriter& prepare) {
    return Rewrite(document, RewriteSettings(), {}, prepare);
}

std::string Utf8ToUtf16LE(std::string_view utf8) {
    WideString wide;
    StringNS::StringHelper::GetWideFromGeneric(StringNS::CharSet::UTF8, utf8.data(), utf8.size(), &wide);
    return ToUtf16LE(wide);
}

void ExpectRewritten(std::string_view document, std::string_view expected, const PrepareRewriter& prepare) {
    const auto expect = [&](const std::string& bytes, const std::string& expectedBytes,
                            const RewriteSettings& settings) {
        ForEverySplit(bytes, [&](const Cuts& cuts) {
            const RewriteRun run = Rewrite(bytes, settings, cuts, prepare);
            EXPECT_EQ(run.output, expectedBytes);
            EXPECT_EQ(run.feeding, 0U);
            EXPECT_EQ(run.ending, 0U);
        });
    };
    expect(std::string(document), std::string(expected), RewriteSettings());
    RewriteSettings wide;
    wide.type = HTML::GenericParser::DATA_STREAM_UTF16;
    expect(Utf8ToUtf16LE(document), Utf8ToUtf16LE(expected), wide);
}

PrepareRewriter EditFirst(HTML::TokenKind kind, const TokenEdit& edit, std::uint32_t* result) {
    return [=](HTML::Rewriter* rewriter) {
        const auto isDone = std::make_shared<bool>(false);
        rewriter->OnContent("", [=](HTML::RewriterToken token) {
            const bool isMeant =
                kind == HTML::TOKEN_NONE ? token.GetKind() != HTML::TOKEN_TEXT : token.GetKind() == kind;
            if (!isMeant || *isDone)
                return;
            *isDone = true;
            *result = edit(token);
        });
    };
}

void CheckRows(const std::vector<AttributeRow>& rows) {
    std::vector<TokenRow> tokenRows;
    for (const AttributeRow& row : rows)
        tokenRows.push_back({row.note, row.document, HTML::TOKEN_NONE, row.edit, row.expected, row.result});
    CheckRows(tokenRows);
}

void CheckRows(const std::vector<TokenRow>& rows) {
    for (const TokenRow& row : rows) {
        SCOPED_TRACE(row.note);
        std::uint32_t result = 12345;
        ExpectRewritten(row.document, row.expected, EditFirst(row.kind, row.edit, &result));
        EXPECT_EQ(result, row.result);
    }
}

void CheckRows(const std::vector<ElementRow>& rows) {
    for (const ElementRow& row : rows) {
        SCOPED_TRACE(row.note);
        std::uint32_t result = 12345;
        ExpectRewritten(row.document, row.expected, [&](HTML::Rewriter* rewriter) {
            const auto edit = [&](HTML::RewriterElement element) { result = row.edit(element); };
            ASSERT_EQ(rewriter->OnElement(row.selector, edit), HTML::REWRITE_OK);
        });
        EXPECT_EQ(result, row.result);
    }
}

}  // namespace Kestra::Test
