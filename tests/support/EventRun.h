#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "html/stateless/StatelessHTMLObserver.h"
#include "html/stateless/StatelessHTMLParser.h"

namespace Kestra::Test {

/// Appends one line for each event to a list of its owner:
///
///     start-parsing  stop-parsing
///     start(name|{name=value}{name=value})      end(name)
///     script({name=value}|body)                 style({name=value}|body)
///     extern(name|{name=value})                 entity(name|{token}{token})
///     comment(text)                             text(text)
class EventTraceObserver : public HTML::StatelessHTMLObserver {
public:
    /// @param lines  borrowed; must live as long as events come
    explicit EventTraceObserver(std::vector<std::string>* lines);

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

private:
    std::vector<std::string>* tracedLines;
};

/// What became of a document that the stateless parser was fed.
struct EventRun {
    std::vector<std::string> trace;
    std::vector<std::uint32_t> parseResults;  ///< one for each piece that was fed
    std::uint32_t endResult = 0;
    std::uint64_t line = 1;    ///< just before `EndParse`
    std::uint64_t column = 1;  ///< just before `EndParse`

    /// The lines of `trace`, the results of the pieces but 0 and 16, and the place.
    std::string Describe() const;
};

/// Feeds the pieces, each a heap block of its exact size that is freed before the next one, for as long as the result is 0 or 16.
EventRun ParseEvents(const std::vector<std::string>& pieces, StringNS::CharSet::Code charset = 0, unsigned long flags = 1);

}  // namespace Kestra::Test
