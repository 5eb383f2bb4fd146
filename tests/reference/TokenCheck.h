#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "tests/reference/DocumentFeeding.h"
#include "tests/reference/ReferenceTokenizer.h"
#include "tests/support/Splits.h"
#include "tools/trace/TokenTrace.h"

/// @file
/// The tokens of a document against those of the reference tokenizer, however the document is cut:
/// the 8-bit parser's, and those of the wide parser for the same characters in UTF-16.

namespace Kestra::Test {

enum class Fed { STREAM, BUFFER };

/// What of a parse is compared.
struct TokenOutcome {
    std::vector<std::string> trace;
    std::uint32_t parseResult = 0;
    std::uint32_t endResult = 0;
    std::uint64_t line = 0;
    std::uint64_t column = 0;

    bool operator==(const TokenOutcome&) const = default;
};

std::string Show(const TokenOutcome& outcome);

/// Parses one document after the other with the same parser.
class TracingParser {
public:
    /// @param wideFlavour  documents are handed over in UTF-16, each byte a character; one with
    ///                     0x85 or 0xA0 has other tokens there
    explicit TracingParser(bool wideFlavour = false);

    /// @param cuts  in characters
    /// @return valid until the next document
    const TokenOutcome& Parse(std::string_view document, StringNS::CharSet::Code charset, Fed fed, const Cuts& cuts,
                              bool scriptsAsText = false);

private:
    void ParsePieces(std::string_view document, const Cuts& cuts);

    bool wide;
    HTML::GenericParser parser;
    TokenOutcome outcome;
    Trace::TraceObserver<char, std::string> observer;
    Trace::TraceObserver<WideChar, WideString> wideObserver;
    CutInputStream stream;
};

/// The reference's answer to a document fed in one piece.
/// @param wide  in UTF-16, where no charset counts but that: no escape runs, no declarations
ReferenceRun Refer(std::string_view document, StringNS::CharSet::Code charset, Fed fed, bool wide = false,
                   bool scriptsAsText = false);

/// @param run  of the document uncut
TokenOutcome ExpectedOf(const ReferenceRun& run, std::string_view document, const Cuts& cuts, bool wide = false);
TokenOutcome ExpectedOf(std::string_view document, StringNS::CharSet::Code charset, Fed fed, const Cuts& cuts);

/// How one document is fed. The cuts are made anew for each length, so that a document can be
/// shortened.
struct Feeding {
    StringNS::CharSet::Code charset = StringNS::CharSet::WINDOWS_1252;
    Fed fed = Fed::STREAM;
    bool wide = false;
    bool scriptsAsText = false;
    std::function<Cuts(std::size_t length)> cutsFor = [](std::size_t) { return Cuts(); };

    /// @return in characters
    Cuts Make(std::size_t length) const;
};

/// @return what differs for a parser of its own, or nothing
std::string Difference(std::string_view document, const Feeding& feeding);

}  // namespace Kestra::Test
