#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// The table of named character references. Not installed.
///
/// Source: the HTML standard, section "Named character references", which lists 2,231 names and
/// promises never to add or remove one. 2,125 of them end with ";", and 106 are the same as one of
/// those without it. Each leads to one or two code points.
///
/// `setup/named-references` writes the source file from the copy of that list in Python's standard
/// library. The arrays are constant data: no pointers, and nothing to do when the library is
/// loaded.

namespace Kestra::HTML {

/// A name that ends with ";", and what it stands for.
struct NamedReference {
    std::uint16_t name;          ///< where it begins in `REFERENCE_NAMES`; it ends where the next begins
    std::uint16_t second;        ///< the second code point, 0 where there is but one
    std::uint32_t first : 31;    ///< the first code point
    std::uint32_t isLegacy : 1;  ///< 1: the name is listed without ";" too
};

constexpr std::size_t NAMED_REFERENCE_COUNT = 2125;

/// The names one after another, without "&" and ";": ASCII letters and digits, at most 31 a name. A
/// NUL follows the last.
extern const char REFERENCE_NAMES[14005];

/// Sorted by the bytes of the names; the row after the last one has only the end of the names.
extern const NamedReference NAMED_REFERENCES[NAMED_REFERENCE_COUNT + 1];

}  // namespace Kestra::HTML
