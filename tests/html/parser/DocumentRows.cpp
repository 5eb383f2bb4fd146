#include "tests/html/parser/DocumentRows.h"

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

void ExpectTrace(const DocumentRun& run, const Lines& expected, const Route& route) {
    EXPECT_EQ(Join(Comparable(run.trace, route)), Join(expected));
}

/// Checks a document all of whose bytes are delivered, as tokens or as junk.
void CheckWhole(const DocumentRow& row, const Route& route, Feed feed, const Cuts& cuts) {
    DocumentSettings settings = SettingsFor(route, feed, row.charset);
    settings.scriptMode = row.scriptMode;
    const bool checked = cuts.size() <= 1;
    settings.selfCheck = checked ? SELF_CHECK_CRC : SELF_CHECK_OFF;
    const bool passes = !checked || PassesSelfCheck(row.input, row.tokens, route);
    const DocumentRun run = ParseBy(route, row.input, cuts, settings);
    ExpectTrace(run, passes ? WholeTrace(row.tokens, route, row.charset) : OpenTrace(row.tokens, route, row.charset),
                route);
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

void CheckFailed(const BrokenRow& row, const Route& route, Feed feed, const Cuts& cuts, std::uint32_t parseResult) {
    DocumentSettings settings = SettingsFor(route, feed);
    settings.scriptMode = row.scriptMode;
    const DocumentRun run = ParseBy(route, row.input, cuts, settings);
    const Lines before(row.tokens.begin(), std::find_if(row.tokens.begin(), row.tokens.end(), IsJunk));
    ExpectTrace(run, OpenTrace(before, route), route);
    EXPECT_EQ(run.parseResult, parseResult);
    EXPECT_EQ(run.endResult, 16U);
    if (parseResult == 0)
        ExpectPlace(row.input, run.line, run.column);
}

const char* NameOf(Feed feed) {
    switch (feed) {
        case Feed::BUFFER:
            return "by buffer";
        case Feed::STREAM:
            return "by borrowed stream";
        case Feed::OWNED_STREAM:
            return "by owned stream";
        case Feed::UNPLACED_STREAM:
            return "by stream without positions";
    }
    return "";
}

/// @param parseResult  of the buffer with the failure
void CheckBroken(const BrokenRow& row, std::uint32_t parseResult) {
    const DocumentRow whole{row.note, row.input, row.tokens, 1252, row.scriptMode};
    for (const Route& route : ROUTES) {
        for (const Feed feed : {Feed::STREAM, Feed::OWNED_STREAM, Feed::BUFFER, Feed::UNPLACED_STREAM}) {
            SCOPED_TRACE(std::string(row.note) + ": " + Trace::Escape(row.input) + ", " + route.name + ", " +
                         NameOf(feed));
            ForEverySplit(row.input, [&](const Cuts& cuts) {
                if (row.uncut != 0 && std::find(cuts.begin(), cuts.end(), row.uncut) != cuts.end())
                    return;
                if (feed == Feed::STREAM || feed == Feed::OWNED_STREAM)
                    CheckWhole(whole, route, feed, cuts);
                else
                    CheckFailed(row, route, feed, cuts, parseResult);
            });
        }
    }
}

}  // namespace

std::string Join(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

Tokens::Tokens(const std::string& text) {
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        emplace_back(text, begin, end - begin);
        begin = end + 1;
    }
}

Lines operator+(Lines front, const Lines& back) {
    front.insert(front.end(), back.begin(), back.end());
    return front;
}

Lines Open(const std::string& element) {
    return {"start(|" + element + "||)", element == "script" ? "js-start" : "css-start"};
}

Lines Inside(const std::string& element, const Tokens& tokens) {
    return Open(element) + tokens + Lines{"end(|" + element + "|||)", element == "script" ? "js-end" : "css-end"};
}

DocumentSettings SettingsFor(const Route& route, Feed feed, StringNS::CharSet::Code charset) {
    DocumentSettings settings;
    settings.charset = charset;
    settings.type = route.wideInput ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT;
    settings.observed = route.observed;
    settings.feed = feed;
    return settings;
}

DocumentRun ParseBy(const Route& route, std::string_view latin1, const Cuts& cuts, const DocumentSettings& settings) {
    if (route.wideInput)
        return ParseDocument(ToUtf16LE(latin1), Scaled(cuts, sizeof(WideChar)), settings);
    return ParseDocument(latin1, cuts, settings);
}

Lines OpenTrace(const Tokens& tokens, const Route& route, StringNS::CharSet::Code charset) {
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

Lines WholeTrace(const Tokens& tokens, const Route& route, StringNS::CharSet::Code charset) {
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
    SCOPED_TRACE(std::string(row.note) + ": " + Trace::Escape(row.input) + ", " + route.name);
    ForEveryFeeding(row.input.size(), [&](Feed feed, const Cuts& cuts) { CheckWhole(row, route, feed, cuts); });
}

void CheckRow(const DocumentRow& row) {
    for (const Route& route : ROUTES)
        CheckRow(row, route);
}

void CheckFailing(const BrokenRow& row) {
    CheckBroken(row, 11);
}

void CheckOpen(const BrokenRow& row) {
    CheckBroken(row, 0);
}

void ExpectTokens(const DocumentRun& run, const Tokens& tokens, const Route& route, StringNS::CharSet::Code charset) {
    ExpectTrace(run, WholeTrace(tokens, route, charset), route);
    ExpectSuccess(run);
}

void ForEveryFeeding(std::size_t length, const std::function<void(Feed feed, const Cuts& cuts)>& run) {
    for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
        SCOPED_TRACE(NameOf(feed));
        ForEverySplit(length, [&](const Cuts& cuts) { run(feed, cuts); });
    }
}

void CheckWide(const char* note, WideStringView input, const Tokens& tokens) {
    SCOPED_TRACE(note);
    ForEveryFeeding(input.size(), [&](Feed feed, const Cuts& cuts) {
        DocumentSettings settings = SettingsFor(WIDE_TO_WIDE, feed);
        for (const GenericParser::SelfCheck selfCheck : {SELF_CHECK_OFF, SELF_CHECK_CRC}) {
            settings.selfCheck = selfCheck;
            const DocumentRun run = ParseDocument(input, cuts, settings);
            EXPECT_EQ(run.Lines(), "start-parsing\ncharset(1200)\n" + Join(tokens) + "end-parsing\n");
            ExpectSuccess(run);
            EXPECT_EQ(run.line, 1U);
            EXPECT_EQ(run.column, input.size() + 1);
            EXPECT_EQ(run.output, ToUtf16LE(input));
        }
    });
}

void UnbindObserver(GenericParser* parser) {
    parser->SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), false);
}

FedParser::FedParser(Observed observed) : narrow(&lines), wide(&lines) {
    if (observed == Observed::NARROW)
        SetObserver(&narrow, false);
    else if (observed == Observed::WIDE)
        SetObserver(&wide, false);
}

void FedParser::Start(StringNS::CharSet::Code charset, DataStreamType type) {
    EXPECT_EQ(StartParse(charset, type), 0U);
}

void FedParser::StartSilently(StringNS::CharSet::Code charset, DataStreamType type) {
    Start(charset, type);
    lines.clear();
}

std::uint32_t FedParser::Feed(std::string_view piece) {
    return ParseBuffer(piece.data(), piece.size());
}

std::uint32_t FedParser::FeedStream(std::string_view bytes, bool owned) {
    auto stream = std::make_unique<VFS::MemoryInputStream>(std::string(bytes));
    if (owned)
        return ParseStream(stream.release(), true);
    streams.push_back(std::move(stream));
    return ParseStream(streams.back().get(), false);
}

void FedParser::Check(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        SCOPED_TRACE(step.call == END ? "the end" : Trace::Escape(step.bytes));
        lines.clear();
        if (step.call == END)
            EXPECT_EQ(EndParse(), step.result);
        else if (step.call == FEED)
            EXPECT_EQ(Feed(step.bytes), step.result);
        else
            EXPECT_EQ(FeedStream(step.bytes, step.call == FEED_OWNED_STREAM), step.result);
        EXPECT_EQ(TakeLines(), Join(step.lines));
    }
}

void FedParser::SetHook(const std::function<void(const std::string& line)>& hook) {
    narrow.hook = hook;
    wide.hook = hook;
}

std::string FedParser::TakeLines() {
    const std::string taken = Join(lines);
    lines.clear();
    return taken;
}

std::string FedParser::GetParserName() {
    const WideString name = GetCurrentParserName();
    return {name.begin(), name.end()};
}

StartedParser::StartedParser(StringNS::CharSet::Code charset, DataStreamType type, Observed observed)
    : FedParser(observed) {
    StartSilently(charset, type);
}

std::string BytesFor(std::string_view latin1, bool wide) {
    return wide ? ToUtf16LE(latin1) : std::string(latin1);
}

GenericParser::DataStreamType TypeFor(bool wide) {
    return wide ? DATA_STREAM_UTF16 : DATA_STREAM_8BIT;
}

const char EVERY_CALLBACK[] =
    "t<a><b/></a><!----><![CDATA]]><![endif]><!d e><?xml f?><?g?>"
    "<script>'s'\"d\"/*c*///l<!----></script><style></style><i j / >";

const Lines EVERY_CALLBACK_TOKENS = Tokens(
    "text(t)\nstart(|a||)\nshort(|b||)\nend(|a|||)\ncomment()\ncdata(CDATA|)\nconditional(endif||)\n"
    "entity(|d|{ |e}|)\nextern(|xml|{ |f}|)\nextern-text(<?g?>)\nstart(|script||)\njs-start\ns-string(s)\n"
    "d-string(d)\nc-comment(c)\ncpp-comment(l)\ncomment()\nend(|script|||)\njs-end\nstart(|style||)\ncss-start\n"
    "end(|style|||)\ncss-end\njunk(<i j / )\njunk(>)");

}  // namespace Kestra::Test
