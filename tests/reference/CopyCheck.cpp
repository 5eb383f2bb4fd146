#include "tests/reference/CopyCheck.h"

#include <algorithm>

#include "tests/support/Flavours.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

/// The characters of a conditional tail that are kept: none when it is never closed, else those in
/// the piece with its ">".
std::size_t KeptTailBegin(const ReferenceStretch& stretch, const Cuts& cuts) {
    return stretch.closed ? std::max(stretch.tailBegin, PieceBegin(cuts, stretch.end - 1)) : stretch.end;
}

std::string_view TextOf(std::string_view document, const ReferenceStretch& stretch) {
    return document.substr(stretch.begin, stretch.end - stretch.begin);
}

/// The opener, the body and the closer of a stretch.
struct Parts {
    std::string_view opener;
    std::string_view body;
    std::string_view closer;
};

Parts Divide(std::string_view text, std::size_t openerLength, std::string_view closer) {
    const bool isClosed = text.size() >= openerLength + closer.size() && text.ends_with(closer);
    const std::size_t end = isClosed ? text.size() - closer.size() : text.size();
    return {text.substr(0, openerLength), text.substr(openerLength, end - openerLength), text.substr(end)};
}

/// The beginning of a conditional section.
struct Conditional {
    std::string_view opener;     ///< with its keyword
    std::string_view condition;  ///< up to the first "]"
    std::string_view bracket;    ///< that "]", or nothing
};

Conditional DivideConditional(std::string_view text) {
    constexpr std::string_view IF = "<![if";
    constexpr std::string_view ENDIF = "<![endif";
    const bool isIf = text[IF.size() - 2] == 'i' || text[IF.size() - 2] == 'I';
    const std::size_t openerEnd = (isIf ? IF : ENDIF).size();
    const std::size_t conditionEnd = std::min(text.find(']'), text.size());
    return {text.substr(0, openerEnd), text.substr(openerEnd, conditionEnd - openerEnd),
            text.substr(conditionEnd).substr(0, 1)};
}

std::string WideCopy(std::string_view document, const ReferenceStretch& stretch, const Cuts& cuts) {
    const std::string_view text = TextOf(document, stretch);
    Parts parts;
    switch (stretch.kind) {
        case ReferenceStretch::Kind::COMMENT:
            parts = Divide(text, std::string_view("<!--").size(), "-->");
            return Widened(parts.opener) + WidenedBody(parts.body) + Widened(parts.closer);
        case ReferenceStretch::Kind::CDATA:
            parts = Divide(text, std::string_view("<![CDATA").size(), "]]>");
            return Widened(parts.opener) + WidenedBody(parts.body) + Widened(parts.closer);
        case ReferenceStretch::Kind::CONDITIONAL: {
            const Conditional section = DivideConditional(text);
            const std::size_t kept = KeptTailBegin(stretch, cuts) - stretch.begin;
            const std::size_t tailEnd = stretch.closed ? text.size() - 1 : text.size();
            return Widened(section.opener) + WidenedBody(section.condition) + Widened(section.bracket) +
                   WidenedBody(text.substr(kept, tailEnd - kept)) + Widened(text.substr(tailEnd));
        }
        default:
            return Widened(LosesItsSlash(stretch, cuts) ? text.substr(1) : std::string_view(stretch.copy));
    }
}

}  // namespace

std::string Show(const CopyOutcome& outcome) {
    return "  results " + std::to_string(outcome.parseResult) + " and " + std::to_string(outcome.endResult) +
           "\n  copy " + Trace::Escape(outcome.copy) + "\n";
}

SelfCheckingParser::SelfCheckingParser() {
    parser.SetObserver(&observer, false);
    parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
}

const CopyOutcome& SelfCheckingParser::Parse(std::string_view document, CharSet::Code charset,
                                             GenericParser::DataStreamType type, const Cuts& cuts, bool scriptsAsText) {
    const SilentDetector noDetection;
    stream.Reset(document, cuts);
    parser.SetScriptMode(scriptsAsText ? GenericParser::SCRIPT_AS_TEXT : GenericParser::SCRIPT_AS_TOKENS);
    parser.StartParse(charset, type);
    outcome.parseResult = parser.ParseStream(&stream, false);
    outcome.endResult = parser.EndParse();
    outcome.copy.clear();
    VFS::InputStream* const copy = parser.GetSelfCheckStream();
    char buffer[1024];
    std::uint64_t count = 0;
    while (copy != nullptr && copy->Read(buffer, sizeof(buffer), &count) == 0)
        outcome.copy.append(buffer, static_cast<std::size_t>(count));
    return outcome;
}

bool LosesItsSlash(const ReferenceStretch& stretch, const Cuts& cuts) {
    return stretch.failedScriptComment && PieceBegin(cuts, stretch.begin + 1) == stretch.begin + 1;
}

bool IsException(const ReferenceStretch& stretch, const Cuts& cuts) {
    if (stretch.kind == ReferenceStretch::Kind::CONDITIONAL)
        return KeptTailBegin(stretch, cuts) > stretch.tailBegin;
    return stretch.swapsSlashAndSpace || LosesItsSlash(stretch, cuts);
}

bool HasBody(std::string_view document, const ReferenceStretch& stretch) {
    const std::string_view text = TextOf(document, stretch);
    switch (stretch.kind) {
        case ReferenceStretch::Kind::COMMENT:
            return text != "<!---->" && text != "<!--";
        case ReferenceStretch::Kind::CDATA:
            return text.size() > std::string_view("<![CDATA").size() &&
                   text.substr(std::string_view("<![CDATA").size()) != "]]>";
        case ReferenceStretch::Kind::CONDITIONAL:
            return !DivideConditional(text).condition.empty() ||
                   stretch.tailBegin < stretch.end - (stretch.closed ? 1 : 0);
        default:
            return false;
    }
}

std::string Widened(std::string_view latin1) {
    return ToUtf16LE(latin1);
}

std::string WidenedBody(std::string_view latin1) {
    return ToUtf16LE(latin1).substr(0, latin1.size());
}

std::string WithoutWideSpaces(std::string_view document) {
    std::string other(document);
    std::replace_if(
        other.begin(), other.end(), [](char byte) { return byte == '\x85' || byte == '\xA0'; }, '\xE9');
    return other;
}

ReferenceRun Refer(std::string_view document, const Reading& reading) {
    ReferenceSettings settings;
    settings.charset = reading.charset;
    settings.scriptsAsText = reading.scriptsAsText;
    return ParseByReference(document, settings);
}

Expectation Expect(std::string_view document, const ReferenceRun& run, const Reading& reading, const Cuts& cuts) {
    Expectation expected;
    expected.input = reading.wide ? Widened(document) : std::string(document);
    if (!reading.wide)
        expected.outcome.copy = CopyByReference(run, document, cuts);
    for (const ReferenceStretch& stretch : run.stretches) {
        expected.isException =
            expected.isException || IsException(stretch, cuts) || (reading.wide && HasBody(document, stretch));
        if (reading.wide)
            expected.outcome.copy += WideCopy(document, stretch, cuts);
    }
    expected.outcome.endResult = expected.isException ? std::uint32_t{HTML::PARSER_SELF_CHECK_FAILED} : 0;
    return expected;
}

Expectation Expect(std::string_view document, const Reading& reading, const Cuts& cuts) {
    return Expect(document, Refer(document, reading), reading, cuts);
}

std::string Fault(SelfCheckingParser* parser, std::string_view document, const ReferenceRun& run,
                  const Reading& reading) {
    constexpr std::size_t READ = GenericParser::BUFFER_SIZE;
    const Cuts cuts =
        CutsAsRead(reading.cutsFor(document.size()), document.size(), reading.wide ? READ / sizeof(WideChar) : READ);
    const Expectation expected = Expect(document, run, reading, cuts);
    const CopyOutcome& actual = reading.wide
                                    ? parser->Parse(expected.input, reading.charset, GenericParser::DATA_STREAM_UTF16,
                                                    Scaled(cuts, sizeof(WideChar)), reading.scriptsAsText)
                                    : parser->Parse(expected.input, reading.charset, GenericParser::DATA_STREAM_8BIT,
                                                    cuts, reading.scriptsAsText);
    const bool isWritten = actual.copy == expected.input;
    if (actual == expected.outcome && isWritten != expected.isException)
        return "";
    return Trace::Escape(document) + "\n" + (reading.wide ? "wide" : "8-bit") +
           (reading.scriptsAsText ? ", scripts as text" : "") + ", charset " + std::to_string(reading.charset) +
           ", cut at " + Describe(cuts) + "\n" + (expected.isException ? "an exception\n" : "no exception\n") +
           "the library:\n" + Show(actual) + "expected:\n" + Show(expected.outcome);
}

std::string Fault(std::string_view document, const Reading& reading) {
    SelfCheckingParser parser;
    return Fault(&parser, document, Refer(document, reading), reading);
}

}  // namespace Kestra::Test
