#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "tests/support/Splits.h"

/// @file
/// The places of the tokens of a document against the document itself: what is found there by
/// looking at its bytes.

namespace Kestra::Test {

/// How one document is fed and observed.
struct PlacedReading {
    StringNS::CharSet::Code charset = StringNS::CharSet::WINDOWS_1252;
    bool wideInput = false;     ///< in UTF-16, each byte a character
    bool wideObserver = false;  ///< 8-bit text is then 28591, so that its characters are the bytes
    bool fromStream = true;     ///< what fails is read again as junk
    bool scriptsAsText = false;
};

/// What was seen of a document, so that a test can tell that it saw anything.
struct PlacesSeen {
    std::uint64_t tokens = 0;
    std::uint64_t exact = 0;  ///< written back as they stand in the document
    std::uint64_t attributes = 0;
    std::uint64_t words = 0;  ///< bare ones that the values of attributes have taken up
    std::uint64_t holes = 0;  ///< bytes in no token

    PlacesSeen& operator+=(const PlacesSeen& other);
};

/// Parses one document after the other, and looks at the place of every token and every attribute.
class PlaceChecker {
public:
    PlaceChecker();
    ~PlaceChecker();

    /// @param latin1  borrowed
    /// @param cuts    in characters
    /// @param seen    what was seen is added to it
    /// @return what is wrong, or nothing
    std::string Fault(std::string_view latin1, const PlacedReading& reading, const Cuts& cuts, PlacesSeen* seen);

private:
    struct Parsers;
    std::unique_ptr<Parsers> parsers;
};

}  // namespace Kestra::Test
