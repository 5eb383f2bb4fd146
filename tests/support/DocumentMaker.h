#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CharSet.h"
#include "tests/support/RandomGrammar.h"

namespace Kestra::Test {

/// A document and the charset that it is parsed in.
struct MadeDocument {
    std::string bytes;
    StringNS::CharSet::Code charset = StringNS::CharSet::WINDOWS_1252;
};

/// Makes 8-bit documents at random: of the grammar of all constructs, whole and broken; of windows
/// of real pages, mutated; and of openers, closers and their beginnings in any order. Most have 10
/// to 400 bytes, one in sixty up to 40 KB, so that a stream of it takes several reads; in those a
/// construct often lies across the end of a read.
class DocumentMaker {
public:
    /// @param pages  borrowed; the pages that are mutated, at least one
    explicit DocumentMaker(const std::vector<std::string>* pages);

    /// @return the document of this seed, always the same for the same pages
    MadeDocument Make(std::uint64_t seed);

    /// @return the same for a document of elements whose content browsers take for text, with what
    ///         begins and ends it
    MadeDocument MakeWithContents(std::uint64_t seed);

private:
    const std::vector<std::string>* sourcePages;
};

/// The pages that are mutated: every HTML file of a folder, in the order of their names.
std::vector<std::string> ReadPages(const std::string& folder);

/// The characters of the enumerated documents: everything on which a construct opens, closes or
/// changes.
inline constexpr std::string_view ENUMERATED_CHARACTERS = "<>/!-[]?\"'= a\\\n*";

/// Calls `run` for every string of 1 to `maxLength` characters of ENUMERATED_CHARACTERS that begins
/// with the character `first`, the shorter ones in front. Stops when `run` answers false. The view
/// is valid for the call.
/// @param prefix  comes before each string
void ForEachString(std::string_view prefix, char first, std::size_t maxLength,
                   const std::function<bool(std::string_view)>& run);

/// Removes bytes for as long as the rest still fails: ever smaller pieces, down to single bytes, in
/// at most 20,000 attempts.
std::string Shorten(std::string document, const std::function<bool(std::string_view)>& fails);

}  // namespace Kestra::Test
