#include "tests/support/DocumentRun.h"

#include <algorithm>
#include <utility>

#include "html/framework/TokenObserver.h"
#include "html/output/ParserObserverOutput.h"
#include "platform/Results.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"
#include "tests/support/TestStreams.h"

namespace Kestra::Test {

namespace {

/// Writes tokens back into a string of bytes.
template <typename C, typename S>
class Collector final : public HTML::ParserObserverOutput<C, S> {
public:
    void OnOutput(const void* data, std::uint64_t byteCount, bool) override {
        collected.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string collected;
};

/// Traces every callback and writes it back.
template <typename C, typename S>
class DocumentObserver final : public HTML::CallbackObserver<DocumentObserver<C, S>, C, S> {
public:
    DocumentObserver(std::vector<std::string>* lines, const Trace::Options& options) : tracer(lines, options) {}

    const std::string& GetOutput() const {
        return collector.collected;
    }

    template <typename Call>
    void OnCallback(Call call) {
        call(&tracer);
        call(&collector);
    }

private:
    Trace::TraceObserver<C, S> tracer;
    Collector<C, S> collector;
};

std::unique_ptr<VFS::InputStream> MakeStream(const std::string& bytes, const Cuts& cuts,
                                             const DocumentSettings& settings) {
    if (settings.makeStream)
        return settings.makeStream(bytes, cuts);
    std::unique_ptr<VFS::InputStream> stream = MakeCutStream(bytes, cuts);
    if (settings.feed == Feed::UNPLACED_STREAM) {
        auto unplaced = std::make_unique<FaultyInputStream>(std::move(stream));
        unplaced->FailGetPositionsFrom(1, RESULT_STREAM_FAILED);
        stream = std::move(unplaced);
    }
    return stream;
}

/// @param parser  replaced when `settings.betweenPieces` does so
void FeedPieces(std::unique_ptr<HTML::GenericParser>* parser, const std::string& bytes, const Cuts& cuts,
                const DocumentSettings& settings, DocumentRun* run) {
    for (const auto& [begin, end] : PiecesOf(cuts, bytes.size())) {
        if (begin > 0 && settings.betweenPieces)
            settings.betweenPieces(parser);
        const HeapPiece<char> piece(std::string_view(bytes).substr(begin, end - begin));
        run->parseResult = (*parser)->ParseBuffer(piece.Data(), piece.Size());
        run->bytesFed = end;
        if (run->parseResult != HTML::PARSER_OK && run->parseResult != HTML::PARSER_UNTERMINATED)
            return;
    }
}

}  // namespace

std::string DocumentRun::Lines() const {
    std::string lines;
    for (const std::string& callback : trace)
        lines += callback + "\n";
    return lines;
}

DocumentRun ParseDocument(std::string_view bytes, const Cuts& cuts, const DocumentSettings& settings) {
    DocumentRun run;
    DocumentObserver<char, std::string> narrow(&run.trace, settings.trace);
    DocumentObserver<WideChar, WideString> wide(&run.trace, settings.trace);
    // The stream outlives the parser: a borrowed one may be read until `EndParse`.
    std::unique_ptr<VFS::InputStream> stream;
    auto parser = std::make_unique<HTML::GenericParser>();
    if (settings.observed == Observed::NARROW)
        parser->SetObserver(&narrow, false);
    else if (settings.observed == Observed::WIDE)
        parser->SetObserver(&wide, false);
    parser->SetSelfCheck(settings.selfCheck);
    parser->SetScriptMode(settings.scriptMode);
    parser->SetDetectCharsetErrors(settings.detectCharsetErrors);
    parser->SetChrDetMinConfidence(settings.minConfidence);
    if (settings.prepare)
        settings.prepare(parser.get());

    run.startResult = parser->StartParse(settings.charset, settings.type);
    const std::string document(bytes);
    if (settings.feed == Feed::BUFFER) {
        FeedPieces(&parser, document, cuts, settings, &run);
    } else {
        stream = MakeStream(document, cuts, settings);
        const bool owned = settings.feed == Feed::OWNED_STREAM;
        run.parseResult = parser->ParseStream(owned ? stream.release() : stream.get(), owned);
    }

    run.line = parser->GetLine();
    run.column = parser->GetColumn();
    for (const WideChar character : parser->GetCurrentParserName())
        run.parserName.push_back(static_cast<char>(character));
    run.charset = parser->GetCharset();
    run.isWide = parser->IsWParser();
    run.needsReparsing = parser->NeedsReparsing();
    run.wasCharsetDetectorUsed = parser->WasCharsetDetectorUsed();
    run.endResult = parser->EndParse();
    run.hasCharsetErrors = parser->HasCharsetErrors();
    run.conversionError = parser->GetConversionError();
    run.lineAfterEnd = parser->GetLine();
    run.columnAfterEnd = parser->GetColumn();
    run.output = settings.observed == Observed::WIDE ? wide.GetOutput() : narrow.GetOutput();
    return run;
}

DocumentRun ParseDocument(WideStringView text, const Cuts& cuts, DocumentSettings settings) {
    settings.type = HTML::GenericParser::DATA_STREAM_UTF16;
    return ParseDocument(ToUtf16LE(text), Scaled(cuts, sizeof(WideChar)), settings);
}

std::unique_ptr<VFS::InputStream> MakeCutStream(std::string bytes, const Cuts& cuts) {
    std::vector<std::uint64_t> sizes;
    for (const auto& [begin, end] : PiecesOf(cuts, bytes.size()))
        sizes.push_back(end - begin);
    return std::make_unique<BoundedInputStream>(std::move(bytes),
                                                OnlyFrom(HTML::GenericParser::BUFFER_SIZE, InSizes(std::move(sizes))));
}

}  // namespace Kestra::Test
