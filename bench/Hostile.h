#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"

namespace Kestra::Bench {

/// Which parsers read an input, and what it makes them do; flags.
enum HostileKind : unsigned {
    DOCUMENT = 1,
    STATELESS = 2,  ///< the stateless parser takes the input to its end
    BOTH = 3,
    JUNK = 4,         ///< the document parser finds malformed what it has to read again
    EARLY_JUNK = 12,  ///< and finds it before the end of the input
    REWRITER = 16,    ///< a rewriter copies the input with the edits of its host
};

/// What the host of a rewriter does. For each attribute of a tag:
enum class HostileEdit {
    NONE,
    SET,     ///< it is set,
    ADD,     ///< or another one is,
    RENAME,  ///< or it gets another name,
    REMOVE,  ///< or is removed,
    REMOVE_LAST_FIRST,
    INSERT_BEFORE,  ///< or something is written before the tag, of which one attribute has changed,
    INSERT_AFTER,   ///< or after it.
    /// Every `b` is edited and every text in it throws.
    THROW_IN_EDITED,
    THROW_IN_REMOVED,  ///< And an `i` loses its content, until the exception comes.
};

/// How an input is handed over.
enum class HostileFeed {
    STREAM,  ///< by reads of its size
    BUFFER,  ///< as one whole buffer: work that is repeated within a piece shows in a large one
};

/// An input made to be slow: of any size, so that the time can be seen to grow with it and no
/// faster.
struct HostileInput {
    const char* name;
    std::string_view begin;
    std::string_view unit;  ///< is repeated; a "#" in it is a number that counts up
    std::string_view end;
    unsigned kind;                   ///< of HostileKind
    std::uint64_t size = 4'000'000;  ///< bytes for a benchmark, which reads twice as many as well
    std::uint64_t piece = 16384;     ///< bytes that the stream hands over at once
    StringNS::CharSet::Code charset = StringNS::CharSet::UTF8;
    HTML::GenericParser::ScriptMode scriptMode = HTML::GenericParser::SCRIPT_AS_TOKENS;
    HostileEdit edit = HostileEdit::NONE;  ///< for a rewriter
};

std::span<const HostileInput> HostileInputs();

/// The input in about so many bytes.
std::string MakeHostile(const HostileInput& input, std::uint64_t size);

struct HostileReading {
    /// The whole input was taken as expected; with the self-check, written back as it is as well.
    bool accepted = false;
    std::uint64_t junk = 0;  ///< bytes
    /// Bytes that the stream gave, those that were read again included; those of a buffer.
    std::uint64_t handedOut = 0;
};

/// In a buffer, which is one piece, the document parser stops at the first junk: it would have to
/// read it again. A rewriter is fed in pieces only.
/// @param reader  DOCUMENT, STATELESS or REWRITER
bool CanBeFedAs(HostileFeed feed, const HostileInput& input, HostileKind reader);

/// Reads an input that lies in memory.
/// @param reader  DOCUMENT, REWRITER or STATELESS, which has no self-check
HostileReading ReadHostile(const HostileInput& input, HostileKind reader, HostileFeed feed, const std::string& document,
                           bool selfCheck);

}  // namespace Kestra::Bench
