#include "tests/html/rewrite/RewriteRun.h"

#include <gtest/gtest.h>

#include "platform/StringHelper.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {

void CollectingHandler::Write(const void* data, std::uint64_t byteCount, bool isMarkup) {
    EXPECT_TRUE(isMarkup);
    bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
}

RewriteRun Rewrite(std::string_view document, const RewriteSettings& settings, const Cuts& cuts,
                   const PrepareRewriter& prepare) {
    RewriteRun run;
    CollectingHandler output;
    HTML::Rewriter rewriter(&output);
    prepare(&rewriter);
    EXPECT_EQ(rewriter.StartParse(settings.charset, settings.type), 0U);
    for (const auto& [begin, end] : PiecesOf(cuts, document.size())) {
        const HeapPiece<char> piece(document.substr(begin, end - begin));
        const std::uint32_t result = rewriter.ParseBuffer(piece.Data(), piece.Size());
        if (run.feeding == 0)
            run.feeding = result;
    }
    run.ending = rewriter.EndParse();
    run.output = output.bytes;
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

}  // namespace Kestra::Test
