#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/output/Console.h"
#include "tools/kestra-html/output/InputOutput.h"

namespace Kestra::Tool {

/// Says how large an input is, as soon as that is known.
using SizeKnown = std::function<void(std::optional<std::uint64_t> size)>;

/// The work on one input.
/// @param index   of its name
/// @param output  borrowed for the call; all that is written goes there
/// @param sizeKnown  may be called, at most once
/// @return how it ended
/// @throws OutputFailed
using RunOne = std::function<ExitStatus(std::size_t index, InputOutput* output, const SizeKnown& sizeKnown)>;

/// What is written after the output of all inputs. @throws OutputFailed
using WriteEnd = std::function<void()>;

/// Runs the work on each input, some at a time, and writes the output of each in the order of the
/// names. An exception of the work on one input is said of that input, and ends no other. When
/// standard input is named more than once, they run one at a time, so that the first one reads it.
/// @param jobs      threads, at least 1
/// @param writeEnd  called on the caller's thread, unless the output has failed; may be empty
/// @return how the worst one ended
ExitStatus RunInOrder(const std::vector<std::string>& names, std::size_t jobs, Console* console, const RunOne& runOne,
                      const WriteEnd& writeEnd = {});

}  // namespace Kestra::Tool
