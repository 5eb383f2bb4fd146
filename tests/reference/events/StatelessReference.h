#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// A second implementation of the stateless parser, which shares no scanning code with the library:
/// one state per place in the markup, one function per state, one byte at a time. It is slow on
/// purpose. Tests and fuzzers compare the two.
///
/// Its trace has one line of ASCII text for each event. Strings are in the escapes of the tokens'
/// trace language:
///
///     start-parsing  stop-parsing
///     start(name|{name=value}{name=value})      end(name)
///     script({name=value}|body)                 style({name=value}|body)
///     extern(name|{name=value})                 entity(name|{token}{token})
///     comment(text)                             text(text)
///
/// A name, text or body is what a callback sees: it ends at its first NUL. Attribute values and
/// tokens keep theirs.

namespace Kestra::Test {

struct StatelessReferenceRun {
    std::vector<std::string> trace;
    std::vector<std::uint32_t> parseResults;  ///< one for each piece that was fed
    std::uint32_t endResult = 0;              ///< of `EndParse`
    std::uint64_t line = 1;                   ///< just before `EndParse`
    std::uint64_t column = 1;
    std::uint32_t charset = 0;  ///< in force before `EndParse`
};

/// Runs one parse from `StartParse` to `EndParse`. Pieces are fed while the result is 0 or 16; any
/// other result ends the feeding.
/// @param charset  given to `StartParse`; 0 is the ANSI rule and lets the markup choose.
/// @param flags  bit 0 lets the markup replace a charset that is set.
/// @param scriptsAsText  the content of scripts and the like is text.
StatelessReferenceRun ParseStatelessByReference(const std::vector<std::string>& pieces, std::uint32_t charset = 0,
                                                std::uint32_t flags = 1, bool scriptsAsText = false);

}  // namespace Kestra::Test
