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

/// The junk of an 8-bit document as the wide parser finds it: the high byte after each low one.
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

/// The characters from 128 up as a wide observer sees them: those of Latin-1, which charset 1252
/// shares from A0 up.
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

/// A string of the trace language as the characters it stands for.
std::string Unescape(std::string_view escaped) {
    std::string text;
    for (std::size_t i = 0; i < escaped.size();) {
        const std::size_t length = EscapedLength(escaped, i);
        if (length == 4)
            text.push_back(static_cast<char>(std::stoi(std::string(escaped.substr(i + 2, 2)), nullptr, 16)));
        else if (length == 2)
            text.push_back(escaped[i + 1] == 'n'   ? '\n'
                           : escaped[i + 1] == 'r' ? '\r'
                           : escaped[i + 1] == 't' ? '\t'
                                                   : '\\');
        else
            text.push_back(escaped[i]);
        i += length;
    }
    return text;
}

constexpr std::string_view LINE_COMMENT = "cpp-comment(";

bool IsLineComment(std::string_view line) {
    return line.substr(0, LINE_COMMENT.size()) == LINE_COMMENT;
}

/// Whether the observer of a route is given the token.
bool IsHeard(std::string_view line, const Route& route) {
    return route.wideInput || route.observed == Observed::WIDE || !IsLineComment(line);
}

/// Begin and end of a stretch of a document.
using Stretch = std::pair<std::size_t, std::size_t>;

/// The parts of one token of which the serializer makes something else than what was read.
struct Section {
    std::string opener;
    Lines bodies;  ///< with one character, a "]", between two of them
};

/// The section of a comment, CDATA or conditional token; an empty one for the others.
Section SectionOf(std::string_view line) {
    const std::size_t open = line.find('(');
    if (open == std::string_view::npos || line.back() != ')')
        return {};
    const std::string_view kind = line.substr(0, open);
    std::string_view fields = line.substr(open + 1, line.size() - open - 2);
    for (const std::string_view flag : {", open", ", no-bracket"}) {
        if (fields.size() >= flag.size() && fields.substr(fields.size() - flag.size()) == flag)
            fields.remove_suffix(flag.size());
    }
    if (kind == "comment")
        return {"<!--", {Unescape(fields)}};
    const std::size_t first = fields.find('|');
    if (kind == "cdata")
        return {"<![" + Unescape(fields.substr(0, first)), {Unescape(fields.substr(first + 1))}};
    const std::size_t last = fields.rfind('|');
    if (kind == "conditional") {
        return {"<![" + Unescape(fields.substr(0, first)),
                {Unescape(fields.substr(first + 1, last - first - 1)), Unescape(fields.substr(last + 1))}};
    }
    return {};
}

/// Where the bodies of the sections stand that are not empty.
std::vector<Stretch> BodiesIn(std::string_view latin1, const Lines& tokens) {
    std::vector<Stretch> stretches;
    std::size_t next = 0;
    for (const std::string& token : tokens) {
        const Section section = SectionOf(token);
        if (section.bodies.empty())
            continue;
        std::size_t begin = latin1.find(section.opener + section.bodies[0], next) + section.opener.size();
        for (const std::string& body : section.bodies) {
            if (!body.empty())
                stretches.emplace_back(begin, begin + body.size());
            next = begin + body.size();
            begin = next + 1;
        }
    }
    return stretches;
}

void CheckWhole(const DocumentRow& row, const Route& route, Feed feed, const Cuts& cuts) {
    DocumentSettings settings = SettingsFor(route, feed, row.charset);
    settings.scriptMode = row.scriptMode;
    const bool checked = cuts.size() <= 1;
    settings.selfCheck = checked ? HTML::GenericParser::SELF_CHECK_CRC : HTML::GenericParser::SELF_CHECK_OFF;
    const bool passes = !checked || PassesSelfCheck(row.input, row.tokens, route);
    const DocumentRun run = ParseBy(route, row.input, cuts, settings);
    EXPECT_EQ(Join(Comparable(run.trace, route)),
              Join(passes ? WholeTrace(row.tokens, route, row.charset) : OpenTrace(row.tokens, route, row.charset)));
    EXPECT_EQ(run.startResult, 0U);
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, passes ? 0U : 704U);
    EXPECT_EQ(run.isWide, route.wideInput);
    EXPECT_EQ(run.charset, route.wideInput ? 1200U : row.charset);
    ExpectPlace(row.input, run.line, run.column);
    ExpectPlace(row.input, run.lineAfterEnd, run.columnAfterEnd);
    if (route.wideInput == (route.observed == Observed::WIDE)) {
        EXPECT_EQ(run.output, WrittenBack(row.input, row.tokens, route));
    }
}

bool LeavesWhole(const BrokenRow& row, const Cuts& cuts) {
    return row.uncut == 0 || std::find(cuts.begin(), cuts.end(), row.uncut) == cuts.end();
}

void CheckRecovered(const BrokenRow& row, const Route& route, Feed feed, const Cuts& cuts) {
    DocumentSettings settings = SettingsFor(route, feed);
    settings.scriptMode = row.scriptMode;
    const bool checked = cuts.size() <= 1;
    settings.selfCheck = checked ? HTML::GenericParser::SELF_CHECK_CRC : HTML::GenericParser::SELF_CHECK_OFF;
    const bool passes = !checked || PassesSelfCheck(row.input, row.tokens, route);
    const DocumentRun run = ParseBy(route, row.input, cuts, settings);
    EXPECT_EQ(Join(Comparable(run.trace, route)),
              Join(passes ? WholeTrace(row.tokens, route) : OpenTrace(row.tokens, route)));
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, passes ? 0U : 704U);
    ExpectPlace(row.input, run.line, run.column);
    if (route.wideInput == (route.observed == Observed::WIDE)) {
        EXPECT_EQ(run.output, WrittenBack(row.input, row.tokens, route));
    }
}

void CheckFailed(const BrokenRow& row, const Route& route, Feed feed, const Cuts& cuts) {
    DocumentSettings settings = SettingsFor(route, feed);
    settings.scriptMode = row.scriptMode;
    const DocumentRun run = ParseBy(route, row.input, cuts, settings);
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
        if (!IsHeard(token, route))
            continue;
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
    // An 8-bit observer of the wide parser sees the bytes of UTF-16; rows that look at those bytes
    // themselves stand elsewhere.
    if (route.wideInput && route.observed == Observed::NARROW)
        std::transform(lines.begin(), lines.end(), lines.begin(), WithoutZeros);
    return lines;
}

std::string WrittenBack(std::string_view latin1, const Lines& tokens, const Route& route) {
    std::string text(latin1);
    if (!route.wideInput) {
        std::size_t next = 0;
        for (const std::string& token : tokens) {
            if (IsHeard(token, route) || !IsLineComment(token))
                continue;
            const std::string comment = "//" + Unescape(std::string_view(token).substr(
                                                   LINE_COMMENT.size(), token.size() - LINE_COMMENT.size() - 1));
            next = text.find(comment, next);
            text.erase(next, comment.size());
        }
        return text;
    }
    std::string written;
    std::size_t next = 0;
    for (const auto& [begin, end] : BodiesIn(latin1, tokens)) {
        written += ToUtf16LE(latin1.substr(next, begin - next));
        written += ToUtf16LE(latin1.substr(begin, end - begin)).substr(0, end - begin);
        next = end;
    }
    return written + ToUtf16LE(latin1.substr(next));
}

bool PassesSelfCheck(std::string_view latin1, const Lines& tokens, const Route& route) {
    return !route.wideInput || BodiesIn(latin1, tokens).empty();
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
            ForEverySplit(row.input, [&](const Cuts& cuts) {
                if (LeavesWhole(row, cuts))
                    CheckRecovered(row, route, feed, cuts);
            });
        }
        for (const Feed feed : {Feed::BUFFER, Feed::UNPLACED_STREAM}) {
            SCOPED_TRACE(feed == Feed::BUFFER ? "buffer" : "stream without positions");
            ForEverySplit(row.input, [&](const Cuts& cuts) {
                if (LeavesWhole(row, cuts))
                    CheckFailed(row, route, feed, cuts);
            });
        }
    }
}

const char EVERY_CALLBACK[] =
    "t<a><b/></a><!----><![CDATA]]><![endif]><!d e><?xml f?><?g?>"
    "<script>'s'\"d\"/*c*///l<!----></script><style></style><i j / >";

const Lines EVERY_CALLBACK_TOKENS = {
    "text(t)",
    "start(|a||)",
    "short(|b||)",
    "end(|a|||)",
    "comment()",
    "cdata(CDATA|)",
    "conditional(endif||)",
    "entity(|d|{ |e}|)",
    "extern(|xml|{ |f}|)",
    "extern-text(<?g?>)",
    "start(|script||)",
    "js-start",
    "s-string(s)",
    "d-string(d)",
    "c-comment(c)",
    "cpp-comment(l)",
    "comment()",
    "end(|script|||)",
    "js-end",
    "start(|style||)",
    "css-start",
    "end(|style|||)",
    "css-end",
    "junk(<i j / )",
    "junk(>)",
};

}  // namespace Kestra::Test
