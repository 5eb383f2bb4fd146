#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "html/framework/ParserObserver.h"
#include "html/parser/GenericParser.h"
#include "tests/reference/DocumentFeeding.h"
#include "tests/reference/ReferenceTokenizer.h"
#include "tests/support/Splits.h"

/// @file
/// What the tokens of a document give when they are written back, in both flavours, against what
/// the reference tokenizer says.

namespace Kestra::Test {

/// What became of a document: the results, and the copy that the tokens written back gave.
struct CopyOutcome {
    std::uint32_t parseResult = 0;
    std::uint32_t endResult = 0;
    std::string copy;

    bool operator==(const CopyOutcome&) const = default;
};

std::string Show(const CopyOutcome& outcome);

/// Reads one document after the other as a stream, with the same parser, and keeps the copy.
class SelfCheckingParser {
public:
    SelfCheckingParser();

    /// @param cuts  in bytes
    /// @return valid until the next document
    const CopyOutcome& Parse(std::string_view document, StringNS::CharSet::Code charset,
                             HTML::GenericParser::DataStreamType type, const Cuts& cuts, bool scriptsAsText = false);

private:
    HTML::ParserObserver<char, std::string> observer;
    HTML::GenericParser parser;
    CopyOutcome outcome;
    CutInputStream stream;
};

/// True when the opener of a script comment is cut between its two characters, and its comment
/// fails or is open at the end.
bool LosesItsSlash(const ReferenceStretch& stretch, const Cuts& cuts);

/// True for the stretches that an 8-bit parser does not write back as they stood.
bool IsException(const ReferenceStretch& stretch, const Cuts& cuts);

/// True for the stretches that a wide parser does not write back as they stood, although an 8-bit
/// parser does: those with a body.
bool HasBody(std::string_view document, const ReferenceStretch& stretch);

/// The bytes of the characters in UTF-16; of a body only the first half of them.
std::string Widened(std::string_view latin1);
std::string WidenedBody(std::string_view latin1);

/// 0x85 and 0xA0 are white space in wide text only, so that a wide document with them has other
/// tokens. They become another character.
std::string WithoutWideSpaces(std::string_view document);

/// How one document is read. The cuts are made anew for each length, so that a document can be
/// shortened.
struct Reading {
    StringNS::CharSet::Code charset = StringNS::CharSet::WINDOWS_1252;
    bool wide = false;  ///< each byte is a character of UTF-16
    bool scriptsAsText = false;
    std::function<Cuts(std::size_t length)> cutsFor = [](std::size_t) { return Cuts(); };  ///< in characters
};

/// What must become of a document, and whether that is the input itself.
struct Expectation {
    std::string input;  ///< in bytes
    CopyOutcome outcome;
    bool isException = false;  ///< some stretch is not written back as it stood
};

/// The reference's answer to the document uncut.
ReferenceRun Refer(std::string_view document, const Reading& reading);

/// @param run  of the document, in the charset of the reading
Expectation Expect(std::string_view document, const ReferenceRun& run, const Reading& reading, const Cuts& cuts);
Expectation Expect(std::string_view document, const Reading& reading, const Cuts& cuts);

/// @param parser  may have parsed other documents before
/// @param run  of the document, in the charset of the reading
/// @return what is wrong, or nothing
std::string Fault(SelfCheckingParser* parser, std::string_view document, const ReferenceRun& run,
                  const Reading& reading);

/// @return the same for a parser of its own
std::string Fault(std::string_view document, const Reading& reading);

}  // namespace Kestra::Test
