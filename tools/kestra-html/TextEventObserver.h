#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "html/stateless/StatelessHTMLObserver.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "platform/Characters.h"
#include "tools/kestra-html/EventsPass.h"
#include "tools/kestra-html/LineSink.h"
#include "tools/kestra-html/TextReport.h"
#include "tools/kestra-html/TokenKind.h"

namespace Kestra::Tool {

/// Writes one line for each callback, for reading: where the construct starts, and what the callback was given, with long strings cut.
///
///     start-parsing  stop-parsing
///     start(name|attributes)  extern(name|attributes)  end(name)
///     script(attributes|body)  style(attributes|body)
///     entity(name|tokens)
///     comment(text)  text(text)
///
/// An attribute is {name=value}, a token {token}; strings have the escapes of the trace language. A construct starts where the event
/// before it left the parser, and the end of the document is where the parser stands: text behind the last tag lies between the two.
class TextEventObserver final : public HTML::StatelessHTMLObserver {
public:
    /// @param observedParser  borrowed; asked in each callback where it stands
    TextEventObserver(LineSink* lineSink, const HTML::StatelessHTMLParser* observedParser, bool inColour);

    void OnStartParsing() override;
    void OnStopParsing() override;
    void OnStartTag(const WideChar* name, const Attributes* attributes) override;
    void OnEndTag(const WideChar* name) override;
    void OnScript(const Attributes* attributes, const WideChar* body) override;
    void OnExternTag(const WideChar* name, const Attributes* attributes) override;
    void OnEntityTag(const WideChar* name, const Tokens* tokens) override;
    void OnComment(const WideChar* text) override;
    void OnText(const WideChar* text) override;
    void OnStyle(const Attributes* attributes, const WideChar* body) override;

    /// Writes what became of the input: bytes, events by kind, result.
    void WriteSummary(const EventsPassResult& result, std::uint64_t size);

private:
    void Print(TokenKind kind, const std::string& text);
    void MoveToParser();

    const HTML::StatelessHTMLParser* parser;
    TextReport report;
    std::size_t line = 1;  ///< of the next construct
    std::size_t column = 1;
};

}  // namespace Kestra::Tool
