#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// A second tokenizer of the 8-bit document parser's language: the whole document at once,
/// character by character, nothing shared with the library. Tests compare the two.

namespace Kestra::Test {

struct ReferenceSettings {
    std::uint32_t charset = 1252;  ///< given to `StartParse` with 8-bit data; 65000 acts as 1252
    /// Fed as one positioned stream; false: by `ParseBuffer`, so that nothing can be read again.
    bool canReadBack = true;
    bool scriptsAsText = false;  ///< the content of scripts and the like is one text
    /// Reports line comments, as the wide parser does; the 8-bit parser does not.
    bool tellsLineComments = false;
};

/// One stretch of the input and what became of it, in input order. Stretches touch, and cover the
/// input from its start to the end of what became tokens: to the end of the input, or to the start
/// of the construct that could not be read again.
struct ReferenceStretch {
    enum class Kind {
        TEXT,
        TAG,
        COMMENT,
        CDATA,
        CONDITIONAL,
        DECLARATION,
        INSTRUCTION,
        STRING,
        SCRIPT_COMMENT,
        REGULAR_EXPRESSION,
        JUNK
    };

    Kind kind = Kind::TEXT;
    std::size_t begin = 0;  ///< [begin, end) in bytes; a regular expression includes its opening slash
    std::size_t end = 0;
    /// CONDITIONAL: the first byte after its first "]"; `end` when there is none, and for other
    /// kinds.
    std::size_t tailBegin = 0;
    bool closed = true;  ///< CONDITIONAL: the ">" was found; true for other kinds
    /// INSTRUCTION: an XML declaration whose last name ended in "/", then white space, then ">".
    bool swapsSlashAndSpace = false;
    /// JUNK that came of a script comment which failed or was open at the end of the input.
    bool failedScriptComment = false;
    std::string copy;  ///< what the tokens of this stretch, written back, give when the input is one piece
};

struct ReferenceRun {
    std::vector<std::string> trace;  ///< the callbacks of an 8-bit observer, in the trace language
    std::uint32_t parseResult = 0;   ///< of the feeding; the charset detector at the end of a stream is left out
    std::uint32_t endResult = 0;     ///< of `EndParse`
    std::uint64_t line = 1;          ///< just before `EndParse`
    std::uint64_t column = 1;
    std::vector<ReferenceStretch> stretches;
    std::string copy;  ///< all stretches written back
};

/// Tokenizes a document that arrives in one piece.
ReferenceRun ParseByReference(std::string_view document, const ReferenceSettings& settings = {});

/// What the written-back copy is when the document is fed in pieces cut at `cuts` (byte offsets in
/// ascending order) of one positioned stream. Two things depend on cuts: of the tail of a
/// conditional section only the part in the piece with its ">" is kept, and the junk of a failed or
/// open script comment starts at the second character of its opener if the piece does.
/// @param run  of the same document.
std::string CopyByReference(const ReferenceRun& run, std::string_view document, const std::vector<std::size_t>& cuts);

}  // namespace Kestra::Test
