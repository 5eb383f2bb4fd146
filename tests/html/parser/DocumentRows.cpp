#include "tests/html/parser/DocumentRows.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/Flavours.h"
#include "tests/support/RecognizerRun.h"

namespace Kestra::Test {

namespace {

constexpr std::string_view JUNK = "junk(";

bool IsJunk(const std::string& line) {
    return line.compare(0, JUNK.size(), JUNK) == 0;
}

/// Length of the escaped character at `text[index]`.
std::size_t EscapedLength(std::string_view text, std::size_t index) {
    if (text[index] != '\\')
        return 1;
    return text[index + 1] == 'x' ? 4 : text[index + 1] == 'u' ? 6 : 2;
}

/// The junk of an 8-bit document as the wide parser finds it: the high byte behind each low one.
std::string WidenJunk(const std::string& line) {
    std::string widened(JUNK);
    for (std::size_t i = JUNK.size(); i + 1 < line.size();) {
        const std::size_t length = EscapedLength(line, i);
        widened.append(line, i, length);
        widened.append("\\x00");
        i += length;
    }
    return widened + ")";
}

/// The characters from 128 up as a wide observer sees them: those of Latin-1, which charset 1252 shares from A0 up.
std::string WidenText(const std::string& line) {
    std::string widened;
    for (std::size_t i = 0; i < line.size();) {
        const std::size_t length = EscapedLength(line, i);
        if (length == 4 && line[i + 2] >= '8')
            widened.append("\\u00").append(line, i + 2, 2);
        else
            widened.append(line, i, length);
        i += length;
    }
    return widened;
}

/// The line without the zero bytes of UTF-16.
std::string WithoutZeros(const std::string& line) {
    static constexpr std::string_view ZERO = "\\x00";
    std::string kept;
    for (std::size_t i = 0; i < line.size();) {
        const std::size_t length = EscapedLength(line, i);
        if (line.compare(i, length, ZERO) != 0)
            kept.append(line, i, length);
        i += length;
    }
    return kept;
}

void ExpectPlace(std::string_view input, std::uint64_t line, std::uint64_t column) {
    const Place place = PlaceAfter(input, input.size());
    EXPECT_EQ(line, place.line);
    EXPECT_EQ(column, place.column);
}

/// What the serializer of the observer's flavour makes of an unchanged document.
std::string ExpectedOutput(std::string_view latin1, const Route& route) {
    return route.observed == Observed::WIDE ? ToUtf16LE(latin1) : std::string(latin1);
}

void CheckWhole(const DocumentRow& row, const Route& route, Feed feed, const Cuts& cuts) {
    const DocumentRun run = ParseBy(route, row.input, cuts, SettingsFor(route, feed, row.charset));
    EXPECT_EQ(Join(Comparable(run.trace, route)), Join(WholeTrace(row.tokens, route, row.charset)));
    EXPECT_EQ(run.startResult, 0U);
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, 0U);
    EXPECT_EQ(run.isWide, route.wideInput);
    EXPECT_EQ(run.charset, route.wideInput ? 1200U : row.charset);
    ExpectPlace(row.input, run.line, run.column);
    ExpectPlace(row.input, run.lineAfterEnd, run.columnAfterEnd);
    if (route.wideInput == (route.observed == Observed::WIDE)) {
        EXPECT_EQ(run.output, ExpectedOutput(row.input, route));
    }
}

void CheckRecovered(const BrokenRow& row, const Route& route, Feed feed, const Cuts& cuts) {
    const DocumentRun run = ParseBy(route, row.input, cuts, SettingsFor(route, feed));
    EXPECT_EQ(Join(Comparable(run.trace, route)), Join(WholeTrace(row.tokens, route)));
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, 0U);
    ExpectPlace(row.input, run.line, run.column);
    if (route.wideInput == (route.observed == Observed::WIDE)) {
        EXPECT_EQ(run.output, ExpectedOutput(row.input, route));
    }
}

void CheckFailed(const BrokenRow& row, const Route& route, Feed feed, const Cuts& cuts) {
    const DocumentRun run = ParseBy(route, row.input, cuts, SettingsFor(route, feed));
    EXPECT_EQ(Join(Comparable(run.trace, route)), Join(OpenTrace(row.tokensWithoutStream, route)));
    EXPECT_EQ(run.parseResult, row.parseResult);
    EXPECT_EQ(run.endResult, row.endResult);
    if (row.parseResult == 0)
        ExpectPlace(row.input, run.line, run.column);
}

}  // namespace

std::string Join(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

DocumentSettings SettingsFor(const Route& route, Feed feed, StringNS::CharSet::Code charset) {
    DocumentSettings settings;
    settings.charset = charset;
    settings.type = route.wideInput ? HTML::GenericParser::DATA_STREAM_UTF16 : HTML::GenericParser::DATA_STREAM_8BIT;
    settings.observed = route.observed;
    settings.feed = feed;
    return settings;
}

DocumentRun ParseBy(const Route& route, std::string_view latin1, const Cuts& cuts, const DocumentSettings& settings) {
    if (route.wideInput)
        return ParseDocument(ToUtf16LE(latin1), Scaled(cuts, sizeof(WideChar)), settings);
    return ParseDocument(latin1, cuts, settings);
}

Lines OpenTrace(const Lines& tokens, const Route& route, StringNS::CharSet::Code charset) {
    Lines lines{"start-parsing", Trace::FormatCharset(route.wideInput ? 1200 : charset)};
    for (const std::string& token : tokens) {
        if (IsJunk(token))
            lines.push_back(route.wideInput ? WidenJunk(token) : token);
        else
            lines.push_back(route.observed == Observed::WIDE ? WidenText(token) : token);
    }
    return Comparable(lines, route);
}

Lines WholeTrace(const Lines& tokens, const Route& route, StringNS::CharSet::Code charset) {
    Lines lines = OpenTrace(tokens, route, charset);
    lines.push_back("end-parsing");
    return lines;
}

Lines Comparable(Lines lines, const Route& route) {
    // An 8-bit observer of the wide parser sees the bytes of UTF-16; rows that look at those bytes themselves stand elsewhere.
    if (route.wideInput && route.observed == Observed::NARROW)
        std::transform(lines.begin(), lines.end(), lines.begin(), WithoutZeros);
    return lines;
}

void CheckRow(const DocumentRow& row, const Route& route) {
    for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
        SCOPED_TRACE(std::string(row.note) + ": " + Trace::Escape(row.input) + ", " + route.name +
                     (feed == Feed::BUFFER ? ", by buffer" : ", by stream"));
        ForEverySplit(row.input, [&](const Cuts& cuts) { CheckWhole(row, route, feed, cuts); });
    }
}

void CheckRow(const DocumentRow& row) {
    for (const Route& route : ROUTES)
        CheckRow(row, route);
}

void CheckRow(const BrokenRow& row) {
    for (const Route& route : ROUTES) {
        SCOPED_TRACE(std::string(row.note) + ": " + Trace::Escape(row.input) + ", " + route.name);
        for (const Feed feed : {Feed::STREAM, Feed::OWNED_STREAM}) {
            SCOPED_TRACE(feed == Feed::STREAM ? "borrowed stream" : "owned stream");
            ForEverySplit(row.input, [&](const Cuts& cuts) { CheckRecovered(row, route, feed, cuts); });
        }
        for (const Feed feed : {Feed::BUFFER, Feed::UNPLACED_STREAM}) {
            SCOPED_TRACE(feed == Feed::BUFFER ? "buffer" : "stream without positions");
            ForEverySplit(row.input, [&](const Cuts& cuts) { CheckFailed(row, route, feed, cuts); });
        }
    }
}

const char EVERY_CALLBACK[] = "t<a><b/></a><script>'s'\"d\"</script><style></style><i j / >";

const Lines EVERY_CALLBACK_TOKENS = {
    "text(t)",         "start(|a||)", "short(|b||)",     "end(|a|||)", "start(|script||)", "js-start", "s-string(s)",   "d-string(d)",
    "end(|script|||)", "js-end",      "start(|style||)", "css-start",  "end(|style|||)",   "css-end",  "junk(<i j / )", "junk(>)",
};

}  // namespace Kestra::Test
