#pragma once

#include <cstdint>

#include "html/framework/RawTextElements.h"
#include "html/stateless/Scan.h"

/// @file
/// The content of scripts, of style sheets and of the other elements without markup, from after
/// their start tag. The body is in `text`. Not installed.
///
/// A `Parse` function answers 0 when its part is complete, 16 when the piece is used up, and 711
/// when the token went over a limit.

namespace Kestra::HTML::Stateless {

void InitScriptTagParser(Data& data);
/// A script whose strings and comments are known, and its end tag.
std::uint32_t ParseScriptTag(Data& data);

void InitStyleTagParser(Data& data);
/// A style sheet and its end tag.
std::uint32_t ParseStyleTag(Data& data);

/// The element whose content is text; `NONE` when there is none.
RawTextElement GetRawElement(const Data& data);

/// Whether the content is reported together with the start tag.
bool IsScriptOrStyle(RawTextElement element);

/// Also resets to the beginning of a content.
void InitRawTextParser(Data& data);
/// A content that is text, up to where browsers end it: before the character that ends the name of
/// the end tag, such as ">". `heldBack` is then "</" and that name.
std::uint32_t ParseRawText(Data& data);

/// What lies between the name of such an end tag and its ">" is dropped.
std::uint32_t ParseRawTextEnd(Data& data);

}  // namespace Kestra::HTML::Stateless
