#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "tools/kestra-html/input/InputSource.h"
#include "tools/kestra-html/input/PieceStream.h"
#include "tools/kestra-html/input/PipeSource.h"
#include "tools/kestra-html/system/RawInput.h"

namespace Kestra::Tool {

struct OpenedInput {
    std::unique_ptr<InputSource> source;  ///< null when it cannot be opened
    ReadResult result = ReadResult::UNREADABLE;
};

/// Opens a file, or standard input for the name "-", to be read while it is parsed.
OpenedInput OpenInput(const std::string& name, ReadingEvents events = {});

/// Reads a whole file, pipe or device, or standard input for the name "-".
ReadResult ReadInput(const std::string& name, std::string* bytes);

/// Reads from the current place to the end, or until there are `limit` bytes.
/// @param bytesDone  called with the bytes that have been read so far; may be empty
ReadResult ReadRest(InputSource* source, std::size_t limit, std::string* bytes, const BytesDone& bytesDone = {});

}  // namespace Kestra::Tool
