#include "tests/reference/TokenCheck.h"

#include <algorithm>
#include <stdexcept>

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

/// Of the tail of a conditional section only the part in the piece with its ">" is kept, and a failed script comment whose opener is
/// cut in two becomes junk without the first half.
void CutTrace(const ReferenceRun& run, std::string_view document, const Cuts& cuts, std::vector<std::string>* trace) {
    LinesOfKind lines(trace);
    for (const ReferenceStretch& stretch : run.stretches) {
        if (stretch.kind == ReferenceStretch::Kind::CONDITIONAL) {
            std::string& line = lines.Next("conditional(");
            if (!stretch.closed)
                continue;
            const std::size_t tailEnd = stretch.end - 1;
            const std::size_t kept = std::max(stretch.tailBegin, PieceBegin(cuts, tailEnd));
            line.resize(line.size() - Trace::Escape(document.substr(stretch.tailBegin, tailEnd - stretch.tailBegin)).size() - 1);
            line += Trace::Escape(document.substr(kept, tailEnd - kept)) + ")";
        } else if (stretch.kind == ReferenceStretch::Kind::JUNK) {
            std::string& line = lines.Next("junk(");
            if (stretch.failedScriptComment && PieceBegin(cuts, stretch.begin + 1) == stretch.begin + 1)
                line.erase(std::string_view("junk(").size(), 1);
        }
    }
}

}  // namespace

std::string Show(const TokenOutcome& outcome) {
    std::string shown;
    for (const std::string& line : outcome.trace)
        shown += "  " + line + "\n";
    return shown + "  results " + std::to_string(outcome.parseResult) + " and " + std::to_string(outcome.endResult) + ", line " +
           std::to_string(outcome.line) + ", column " + std::to_string(outcome.column) + "\n";
}

TracingParser::TracingParser() : observer(&outcome.trace) {
    parser.SetObserver(&observer, false);
}

const TokenOutcome& TracingParser::Parse(std::string_view document, CharSet::Code charset, Fed fed, const Cuts& cuts) {
    const SilentDetector noDetection;
    outcome.trace.clear();
    parser.StartParse(charset, GenericParser::DATA_STREAM_8BIT);
    if (fed == Fed::STREAM) {
        stream.Reset(document, cuts);
        outcome.parseResult = parser.ParseStream(&stream, false);
    } else {
        ParsePieces(document, cuts);
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

ReferenceRun Refer(std::string_view document, CharSet::Code charset, Fed fed) {
    ReferenceSettings settings;
    settings.charset = charset;
    settings.canReadBack = fed == Fed::STREAM;
    return ParseByReference(document, settings);
}

TokenOutcome ExpectedOf(const ReferenceRun& run, std::string_view document, const Cuts& cuts) {
    TokenOutcome expected{run.trace, run.parseResult, run.endResult, run.line, run.column};
    if (!cuts.empty())
        CutTrace(run, document, cuts, &expected.trace);
    return expected;
}

TokenOutcome ExpectedOf(std::string_view document, CharSet::Code charset, Fed fed, const Cuts& cuts) {
    return ExpectedOf(Refer(document, charset, fed), document, cuts);
}

Cuts Feeding::Make(std::size_t length) const {
    const Cuts cuts = cutsFor(length);
    return fed == Fed::STREAM ? CutsAsRead(cuts, length, GenericParser::BUFFER_SIZE) : cuts;
}

std::string Difference(std::string_view document, const Feeding& feeding) {
    const Cuts cuts = feeding.Make(document.size());
    const TokenOutcome expected = ExpectedOf(document, feeding.charset, feeding.fed, cuts);
    TracingParser parser;
    const TokenOutcome& actual = parser.Parse(document, feeding.charset, feeding.fed, cuts);
    if (actual == expected)
        return "";
    return Trace::Escape(document) + "\n" + (feeding.fed == Fed::STREAM ? "read from a stream" : "fed by buffers") + ", charset " +
           std::to_string(feeding.charset) + ", cut at " + Describe(cuts) + "\nthe library:\n" + Show(actual) + "the reference:\n" +
           Show(expected);
}

}  // namespace Kestra::Test
