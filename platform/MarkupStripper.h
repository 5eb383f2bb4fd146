#pragma once

#include <string>
#include <string_view>

namespace Kestra::Base {

/// The text of a marked-up buffer in any charset that keeps ASCII in place: tags, comments and the
/// contents of `script` and `style` are left out, character references are kept as they are.
///
/// A charset detector needs the language of the text, which 12 KB of script before it would hide.
/// The reading is rough on purpose: a "<" opens a tag when a letter, "/", "!" or "?" follows;
/// ">" inside a quoted attribute value does not close it. One space is written where a construct
/// was, unless white space is there already, so that words do not grow together. A construct
/// without an end (buffers are cut anywhere) reaches to the end. The two-byte runs of ISO-2022 ("<"
/// is a plain byte there) are text.
///
/// UTF-16 and UTF-32 keep their tags: their "<" is followed by a NUL.
///
/// Takes linear time on every input, and the result is never longer than the input.
std::string StripMarkup(std::string_view markup);

}  // namespace Kestra::Base
