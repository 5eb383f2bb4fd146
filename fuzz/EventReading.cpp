#include "fuzz/EventReading.h"

#include <utility>

#include "tests/reference/DocumentFeeding.h"
#include "tests/support/Pieces.h"

namespace Kestra::Fuzz {

namespace {

using HTML::StatelessHTMLParser;

/// Feeds a parser the whole document, and does not end it.
void ReadToTheEnd(const FuzzedEvents& events, StatelessHTMLParser* parser) {
    parser->StartParse(events.charset);
    const Test::HeapPiece<char> piece(events.bytes);
    parser->ParseBuffer(piece.Data(), piece.Size());
}

}  // namespace

EventReading::EventReading(const FuzzedEvents* fuzzedEvents)
    : events(fuzzedEvents), first(&run.trace), second(&secondTrace), parser(std::make_unique<StatelessHTMLParser>()) {
    parser->SetScriptMode(events->scriptsAsText ? StatelessHTMLParser::SCRIPT_AS_TEXT
                                                : StatelessHTMLParser::SCRIPT_AS_TOKENS);
    if (events->hasReadBefore)
        ReadToTheEnd(*events, parser.get());
    parser->Attach(&first);
    parser->SetFlags(events->markupChooses ? 1 : 0);
    parser->StartParse(events->charset);
}

EventReading::EventReading(EventReading* original)
    : events(original->events),
      hasFailed(original->hasFailed),
      run(original->run),
      secondTrace(original->secondTrace),
      first(&run.trace),
      second(&secondTrace),
      parser(std::make_unique<StatelessHTMLParser>(*original->parser)) {
    parser->Detach(&original->first);
    parser->Detach(&original->second);
    parser->Attach(&first);
    if (original->secondIsAttached)
        AttachSecondObserver();
}

void EventReading::Feed(std::size_t begin, std::size_t end) {
    if (events->byStream) {
        FeedStream(begin, end);
        return;
    }
    const auto pieces = Test::PiecesOf(events->cuts, events->bytes.size());
    for (std::size_t i = begin; i < end && !hasFailed; ++i) {
        const Test::HeapPiece<char> piece(events->bytes.substr(pieces[i].first, pieces[i].second - pieces[i].first));
        const std::uint32_t result = parser->ParseBuffer(piece.Data(), piece.Size());
        run.parseResults.push_back(result);
        hasFailed = result != 0 && result != 16;
    }
}

void EventReading::FeedStream(std::size_t begin, std::size_t end) {
    if (begin == end || hasFailed)
        return;
    const auto pieces = Test::PiecesOf(events->cuts, events->bytes.size());
    const std::size_t from = pieces[begin].first;
    Test::Cuts cuts;
    for (std::size_t i = begin + 1; i < end; ++i)
        cuts.push_back(pieces[i].first - from);
    auto stream = std::make_unique<Test::CutInputStream>();
    stream->Reset(events->bytes.substr(from, pieces[end - 1].second - from), cuts);
    run.parseResults.push_back(parser->ParseStream(stream.release(), true));
    hasFailed = run.parseResults.back() != 0;
}

void EventReading::AttachSecondObserver() {
    parser->Attach(&second);
    secondIsAttached = true;
}

void EventReading::DetachSecondObserver() {
    parser->Detach(&second);
    secondIsAttached = false;
}

void EventReading::ReplaceParser() {
    parser = std::make_unique<StatelessHTMLParser>(*parser);
}

void EventReading::AssignParser() {
    auto copy = std::make_unique<StatelessHTMLParser>();
    ReadToTheEnd(*events, copy.get());
    *copy = *parser;
    parser = std::move(copy);
}

void EventReading::End() {
    std::size_t line = 0;
    std::size_t column = 0;
    parser->GetCurrentLineNumber(&line);
    parser->GetCurrentColumnNumber(&column);
    run.line = line;
    run.column = column;
    run.endResult = parser->EndParse();
}

const Test::EventRun& EventReading::Run() const {
    return run;
}

const std::vector<std::string>& EventReading::SecondTrace() const {
    return secondTrace;
}

}  // namespace Kestra::Fuzz
