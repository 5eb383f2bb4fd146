#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "html/stateless/StatelessHTMLParser.h"
#include "tests/support/Splits.h"
#include "tools/trace/EventTrace.h"

namespace Kestra::Test {

/// Appends the line of each event to a list of its owner.
class EventTraceObserver : public Trace::EventLineObserver {
public:
    /// @param lines  borrowed; must live as long as events come
    /// @param prefix  of each line
    explicit EventTraceObserver(std::vector<std::string>* lines, std::string prefix = "");

    std::function<void(const std::string& line)> hook;  ///< called after each line, if there is one

private:
    void OnLine(unsigned long event, const std::string& line) override;

    std::vector<std::string>* tracedLines;
    std::string linePrefix;
};

/// A stateless parser with an observer that traces it.
struct TracedParser final : HTML::StatelessHTMLParser {
    TracedParser();

    /// Starts a document; the lines begin after "start-parsing".
    void Start(ScriptMode mode = SCRIPT_AS_TOKENS);

    /// Parses a piece in a heap block of its exact size.
    std::uint32_t Feed(std::string_view bytes);

    /// Parses a document in pieces.
    /// @return the result of the last one
    std::uint32_t Feed(std::string_view document, const Cuts& cuts);

    std::vector<std::string> lines;
    EventTraceObserver observer{&lines};
};

std::uint64_t OffsetOf(const HTML::StatelessHTMLParser& parser);

/// Offset, line and column, for example "17 2:5".
std::string PlaceOf(const HTML::StatelessHTMLParser& parser);

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

/// Feeds the pieces, each a heap block of its exact size that is freed before the next one, for as
/// long as the result is 0 or 16.
EventRun ParseEvents(const std::vector<std::string>& pieces, StringNS::CharSet::Code charset = 0,
                     unsigned long flags = 1);

/// The same with a parser that has no observer, and has none afterwards. Whatever it read before
/// makes no difference; its limits and its script mode are its own.
EventRun ParseEvents(HTML::StatelessHTMLParser* parser, const std::vector<std::string>& pieces,
                     StringNS::CharSet::Code charset, unsigned long flags);

}  // namespace Kestra::Test
