#include "tests/reference/TokenCheck.h"

#include <algorithm>
#include <stdexcept>

#include "tests/reference/CopyCheck.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

/// The lines of a kind, one after the other.
class LinesOfKind {
public:
    explicit LinesOfKind(std::vector<std::string>* traceLines) : lines(traceLines) {}

    /// @return the next line that begins with `opening`
    std::string& Next(std::string_view opening) {
        while (next < lines->size() && !(*lines)[next].starts_with(opening))
            ++next;
        if (next == lines->size())
            throw std::logic_error("the stretches of the reference do not fit its trace: " + std::string(opening));
        return (*lines)[next++];
    }

private:
    std::vector<std::string>* lines;
    std::size_t next = 0;
};

/// Of the tail of a conditional section only the part in the piece with its ">" is kept, and a
/// failed script comment whose opener is cut in two becomes junk without the first half.
void CutTrace(const ReferenceRun& run, std::string_view document, const Cuts& cuts, std::vector<std::string>* trace) {
    LinesOfKind lines(trace);
    for (const ReferenceStretch& stretch : run.stretches) {
        if (stretch.kind == ReferenceStretch::Kind::CONDITIONAL) {
            std::string& line = lines.Next("conditional(");
            if (!stretch.closed)
                continue;
            const std::size_t tailEnd = stretch.end - 1;
            const std::size_t kept = std::max(stretch.tailBegin, PieceBegin(cuts, tailEnd));
            line.resize(line.size() -
                        Trace::Escape(document.substr(stretch.tailBegin, tailEnd - stretch.tailBegin)).size() - 1);
            line += Trace::Escape(document.substr(kept, tailEnd - kept)) + ")";
        } else if (stretch.kind == ReferenceStretch::Kind::JUNK) {
            std::string& line = lines.Next("junk(");
            if (stretch.failedScriptComment && PieceBegin(cuts, stretch.begin + 1) == stretch.begin + 1)
                line.erase(std::string_view("junk(").size(), 1);
        }
    }
}

/// The number that two hexadecimal digits stand for.
unsigned NumberOf(std::string_view digits) {
    return static_cast<unsigned>(std::stoul(std::string(digits), nullptr, 16));
}

/// What an escaped string of the trace language stands for.
std::string Unescape(std::string_view escaped) {
    std::string text;
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != '\\') {
            text += escaped[i];
            continue;
        }
        const char kind = escaped[++i];
        if (kind == 'x') {
            text += static_cast<char>(static_cast<unsigned char>(NumberOf(escaped.substr(i + 1, 2))));
            i += 2;
        } else {
            text += kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind == 't' ? '\t' : kind;
        }
    }
    return text;
}

/// The line that the wide parser traces. Its charset is that of UTF-16; its junk is bytes, two for
/// each character; other text has wide escapes from U+0080 up.
std::string WideLine(const std::string& line) {
    constexpr std::string_view JUNK = "junk(";
    if (line.starts_with("charset("))
        return Trace::FormatCharset(CharSet::UTF16_LE);
    if (line.starts_with(JUNK))
        return std::string(JUNK) +
               Trace::Escape(Widened(Unescape(line.substr(JUNK.size(), line.size() - JUNK.size() - 1)))) + ")";
    std::string wide;
    for (std::size_t i = 0; i < line.size(); ++i) {
        wide += line[i];
        if (line[i] != '\\')
            continue;
        ++i;
        if (line[i] == 'x' && NumberOf(std::string_view(line).substr(i + 1, 2)) >= 0x80)
            wide += "u00";
        else
            wide += line[i];
    }
    return wide;
}

}  // namespace

std::string Show(const TokenOutcome& outcome) {
    std::string shown;
    for (const std::string& line : outcome.trace)
        shown += "  " + line + "\n";
    return shown + "  results " + std::to_string(outcome.parseResult) + " and " + std::to_string(outcome.endResult) +
           ", line " + std::to_string(outcome.line) + ", column " + std::to_string(outcome.column) + "\n";
}

TracingParser::TracingParser(bool wideFlavour)
    : wide(wideFlavour), observer(&outcome.trace), wideObserver(&outcome.trace) {
    if (wide)
        parser.SetObserver(&wideObserver, false);
    else
        parser.SetObserver(&observer, false);
}

const TokenOutcome& TracingParser::Parse(std::string_view document, CharSet::Code charset, Fed fed, const Cuts& cuts,
                                         bool scriptsAsText) {
    const SilentDetector noDetection;
    const std::string widened = wide ? Widened(document) : "";
    const std::string_view bytes = wide ? widened : document;
    const Cuts byteCuts = wide ? Scaled(cuts, sizeof(WideChar)) : cuts;
    outcome.trace.clear();
    parser.SetScriptMode(scriptsAsText ? GenericParser::SCRIPT_AS_TEXT : GenericParser::SCRIPT_AS_TOKENS);
    parser.StartParse(charset, wide ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
    if (fed == Fed::STREAM) {
        stream.Reset(bytes, byteCuts);
        outcome.parseResult = parser.ParseStream(&stream, false);
    } else {
        ParsePieces(bytes, byteCuts);
    }
    outcome.line = parser.GetLine();
    outcome.column = parser.GetColumn();
    outcome.endResult = parser.EndParse();
    return outcome;
}

void TracingParser::ParsePieces(std::string_view document, const Cuts& cuts) {
    outcome.parseResult = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= cuts.size() && outcome.parseResult == 0; ++i) {
        const std::size_t end = i < cuts.size() ? cuts[i] : document.size();
        const HeapPiece<char> piece(document.substr(begin, end - begin));
        outcome.parseResult = parser.ParseBuffer(piece.Data(), piece.Size());
        begin = end;
    }
}

ReferenceRun Refer(std::string_view document, CharSet::Code charset, Fed fed, bool wide, bool scriptsAsText) {
    ReferenceSettings settings;
    settings.charset = wide ? CharSet::WINDOWS_1252 : charset;
    settings.tellsLineComments = wide;
    settings.scriptsAsText = scriptsAsText;
    settings.canReadBack = fed == Fed::STREAM;
    return ParseByReference(document, settings);
}

TokenOutcome ExpectedOf(const ReferenceRun& run, std::string_view document, const Cuts& cuts, bool wide) {
    TokenOutcome expected{run.trace, run.parseResult, run.endResult, run.line, run.column};
    if (!cuts.empty())
        CutTrace(run, document, cuts, &expected.trace);
    if (wide)
        std::transform(expected.trace.begin(), expected.trace.end(), expected.trace.begin(), WideLine);
    return expected;
}

TokenOutcome ExpectedOf(std::string_view document, CharSet::Code charset, Fed fed, const Cuts& cuts) {
    return ExpectedOf(Refer(document, charset, fed), document, cuts);
}

Cuts Feeding::Make(std::size_t length) const {
    const Cuts cuts = cutsFor(length);
    const std::size_t readSize = wide ? GenericParser::BUFFER_SIZE / sizeof(WideChar) : GenericParser::BUFFER_SIZE;
    return fed == Fed::STREAM ? CutsAsRead(cuts, length, readSize) : cuts;
}

std::string Difference(std::string_view document, const Feeding& feeding) {
    const Cuts cuts = feeding.Make(document.size());
    const ReferenceRun run = Refer(document, feeding.charset, feeding.fed, feeding.wide, feeding.scriptsAsText);
    const TokenOutcome expected = ExpectedOf(run, document, cuts, feeding.wide);
    TracingParser parser(feeding.wide);
    const TokenOutcome& actual = parser.Parse(document, feeding.charset, feeding.fed, cuts, feeding.scriptsAsText);
    if (actual == expected)
        return "";
    return Trace::Escape(document) + "\n" + (feeding.fed == Fed::STREAM ? "read from a stream" : "fed by buffers") +
           (feeding.wide ? " in UTF-16" : "") + (feeding.scriptsAsText ? ", scripts as text" : "") + ", charset " +
           std::to_string(feeding.charset) + ", cut at " + Describe(cuts) + "\nthe library:\n" + Show(actual) +
           "the reference:\n" + Show(expected);
}

}  // namespace Kestra::Test
