#pragma once

#include <cstdint>

#include "html/stateless/Scan.h"

/// @file
/// Start tags and end tags, and the names, values and attributes that other constructs have too.
/// Not installed.
///
/// An `Init` function prepares the record for the first byte. A `Parse` function reads on from any
/// byte and answers 0 when its part is complete, 16 when the piece is used up, 701 or 702 at a byte
/// that does not fit, and 711 when the token went over a limit.

namespace Kestra::HTML::Stateless {

void InitIdentifierParser(Data& data);
/// A name, into `identifier`.
std::uint32_t ParseIdentifier(Data& data);

void InitValueParser(Data& data);
/// A value of an attribute or an item of a declaration, into `value`.
std::uint32_t ParseValue(Data& data);

void InitAttrParser(Data& data);
/// One attribute, into `identifier`, `value` and `attributePlace`. An attribute that begins with a
/// byte that no name begins with takes the rest of the tag, or of the piece (kept).
std::uint32_t ParseAttr(Data& data);

void InitAttrsParser(Data& data);
/// Into `attributes` and `attributePlaces`.
std::uint32_t ParseAttrs(Data& data);

void InitStartTagParser(Data& data);
std::uint32_t ParseStartTag(Data& data);

void InitEndTagParser(Data& data);
std::uint32_t ParseEndTag(Data& data);

}  // namespace Kestra::HTML::Stateless
