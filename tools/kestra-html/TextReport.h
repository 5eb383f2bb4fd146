#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "html/framework/TokenPlace.h"
#include "tools/kestra-html/LineSink.h"
#include "tools/kestra-html/TokenKind.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

/// The text format: a line for each token or event, with its place, and the number of each kind.
class TextReport {
public:
    /// How strings are shown: so many characters of each, in UTF-8.
    static constexpr Trace::Options STRINGS = {60, true};

    /// @param withOffsets  lines also tell the offsets of the place
    TextReport(LineSink* lineSink, bool inColour, bool withOffsets);

    /// Writes a line and counts it. @param text  in the trace language; begins with the word that
    /// is coloured
    void Write(TokenKind kind, const HTML::TokenPlace& place, std::string_view text);

    /// Writes a line of the summary. @param title  at most eight letters
    void Summarize(std::string_view title, std::string_view text);

    /// The number of lines so far and, after it, that of each kind. Those of `TokenKind::EVENT` are
    /// not counted.
    std::string DescribeCounts() const;

private:
    LineSink* sink;
    bool colour;
    bool offsets;
    std::array<std::uint64_t, TOKEN_KIND_COUNT> counts{};
};

}  // namespace Kestra::Tool
