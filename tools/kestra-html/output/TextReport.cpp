#include "tools/kestra-html/output/TextReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

namespace Kestra::Tool {

TextReport::TextReport(LineSink* lineSink, bool inColour, bool withOffsets)
    : sink(lineSink), colour(inColour), offsets(withOffsets) {}

void TextReport::Write(TokenKind kind, const HTML::TokenPlace& place, std::string_view text) {
    ++counts[static_cast<std::size_t>(kind)];
    std::string where = fmt::format("{:>6}:{:<5} ", place.line, place.column);
    if (offsets)
        where += fmt::format("{:<17} ", fmt::format("[{},{})", place.begin, place.end));
    if (!colour) {
        sink->Line(where + std::string(text));
        return;
    }
    const std::size_t wordLength = std::min(text.find('('), text.size());
    sink->Line(fmt::format("{}{}{}{}{}", where, GetTokenKindInfo(kind).colour, text.substr(0, wordLength), COLOUR_END,
                           text.substr(wordLength)));
}

void TextReport::Summarize(std::string_view title, std::string_view text) {
    sink->Line(fmt::format("{:<8} {}", title, text));
}

std::string TextReport::DescribeCounts() const {
    std::uint64_t total = 0;
    std::string kinds;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const auto kind = static_cast<TokenKind>(i);
        if (kind == TokenKind::EVENT || counts[i] == 0)
            continue;
        total += counts[i];
        kinds += fmt::format("{}{} {}", kinds.empty() ? ": " : ", ", GetTokenKindInfo(kind).name, counts[i]);
    }
    return fmt::format("{}{}", total, kinds);
}

}  // namespace Kestra::Tool
