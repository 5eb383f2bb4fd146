#pragma once

#include <optional>

#include "platform/CharSet.h"
#include "tools/kestra-html/input/InputSource.h"
#include "tools/kestra-html/input/ParseOptions.h"
#include "tools/kestra-html/input/PieceStream.h"

namespace Kestra::Tool {

/// Finds the charset for which the parse of an input would be abandoned and started again.
///
/// Nothing is converted and no observer gets a record: a tag that declares a charset ends the
/// search, and after the first pieces only the part of the input is parsed in which there can be
/// one.
/// @param isWide  the observer of the parse gets UTF-16: a declaration comes too late for it
/// @return nothing when the parse goes through at the first time, or when it would fail
std::optional<StringNS::CharSet::Code> FindLateCharset(InputSource* source, const ParseOptions& options, bool isWide,
                                                       const BytesDone& bytesDone);

}  // namespace Kestra::Tool
