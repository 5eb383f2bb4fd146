#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "tools/kestra-html/commands/CheckCommand.h"
#include "tools/kestra-html/input/InputSource.h"
#include "tools/kestra-html/input/ParsePass.h"

namespace Kestra::Tool {

/// What the check of one input found.
struct CheckOutcome {
    ParsePassResult result;  ///< of the pass that counts
    std::uint64_t tokens = 0;
    double seconds = 0;    ///< of that pass alone
    bool hasCopy = false;  ///< the parser has one; without, an empty one is compared
    /// Byte offset; nothing when the copy equals the input, and when it is lost.
    std::optional<std::uint64_t> firstDifference;
    std::uint64_t lostMarkBytes = 0;  ///< bytes at the start that belong to no token and are in no copy
    std::string token;                ///< the one that holds that byte, in the trace language; empty when there is none
    std::uint64_t tokenStart = 0;     ///< byte offset

    bool IsReproduced() const;
    /// True when the copy lacks nothing before what it lacks of a byte-order mark.
    bool HasLostMark() const;
    bool IsGood() const;
};

/// A charset in which a document of the given one has the same tokens, and which can be converted
/// for the observer: one without a converter would lose the tokens on their way to it.
///
/// The charset decides two things about the tokens: whether it is looked for in the markup, and
/// whether the escapes of ISO-2022 are known. So another ISO-2022 page takes the place of such a
/// one, and 1252 that of every other. Without any ISO-2022 page it is 1252 too.
StringNS::CharSet::Code FindConvertible(StringNS::CharSet::Code code,
                                        const std::function<bool(StringNS::CharSet::Code)>& hasConverter);

/// Parses inputs with the self-check that keeps a copy, and compares the copy with the input. Uses
/// one parser for all of them.
class InputChecker {
public:
    /// @param checkOptions  borrowed
    explicit InputChecker(const CheckOptions& checkOptions);

    /// Reads the input again for each pass, and for the comparison. A failure to read is in the
    /// source; the outcome is then of no worth.
    /// @param bytesDone  called with the bytes that have been handed to the parser so far
    CheckOutcome Check(InputSource* source, const BytesDone& bytesDone);

private:
    void FindToken(InputSource* source, const ParseStart& start, const BytesDone& bytesDone, CheckOutcome* outcome);

    const CheckOptions& options;
    HTML::GenericParser parser;
};

}  // namespace Kestra::Tool
