#include "tools/kestra-html/output/TextReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace Kestra::Tool {

namespace {

// How wide the parts of a place are.
constexpr std::size_t LINE_COLUMNS = 6;
constexpr std::size_t COLUMN_COLUMNS = 5;
constexpr std::size_t OFFSETS_COLUMNS = 17;

constexpr std::size_t MOST_DIGITS = 20;

/// @param digits  where they are written
std::string_view Format(std::uint64_t number, char (&digits)[MOST_DIGITS]) {
    char* const end = std::to_chars(digits, digits + MOST_DIGITS, number).ptr;
    return {digits, static_cast<std::size_t>(end - digits)};
}

}  // namespace

TextReport::TextReport(LineSink* lineSink, bool inColour, bool withOffsets)
    : sink(lineSink), colour(inColour), offsets(withOffsets) {}

std::string* TextReport::Begin(TokenKind kind, const HTML::TokenPlace& place) {
    ++counts[static_cast<std::size_t>(kind)];
    kindOfLine = kind;
    char digits[MOST_DIGITS];
    const std::string_view number = Format(place.line, digits);
    line.assign(number.size() < LINE_COLUMNS ? LINE_COLUMNS - number.size() : 0, ' ');
    line.append(number);
    line.push_back(':');
    AppendNumber(place.column);
    PadTo(LINE_COLUMNS + 1 + COLUMN_COLUMNS);
    if (offsets) {
        const std::size_t begin = line.size();
        line.push_back('[');
        AppendNumber(place.begin);
        line.push_back(',');
        AppendNumber(place.end);
        line.push_back(')');
        PadTo(begin + OFFSETS_COLUMNS);
    }
    textBegin = line.size();
    return &line;
}

void TextReport::End() {
    if (colour) {
        line.insert(std::min(line.find('(', textBegin), line.size()), COLOUR_END);
        line.insert(textBegin, GetTokenKindInfo(kindOfLine).colour);
    }
    sink->Line(line);
}

void TextReport::Write(TokenKind kind, const HTML::TokenPlace& place, std::string_view text) {
    Begin(kind, place)->append(text);
    End();
}

void TextReport::AppendNumber(std::uint64_t number) {
    char digits[MOST_DIGITS];
    line.append(Format(number, digits));
}

/// Ends a column of so many characters, and at least one space after it.
void TextReport::PadTo(std::size_t size) {
    line.append(line.size() < size ? size - line.size() + 1 : 1, ' ');
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
