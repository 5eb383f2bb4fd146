#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/kestra-html/input/CallResults.h"
#include "tools/kestra-html/input/ParsePass.h"

namespace Kestra::Tool {

/// What a result code means, in a few words.
std::string_view GetResultMeaning(std::uint32_t code);

/// The same for the first code of a pass that is not 0.
std::string_view GetFailureMeaning(const CallResults& results);

/// The same for what `DetectCharset` returns, where 11 is about the detector.
std::string_view GetDetectionMeaning(std::uint32_t code);

/// Names every call that did not return 0, with its code and the meaning, and the place where the
/// parser was. Empty when each did.
std::string DescribeFailures(const CallResults& results);

/// The same, and that tokens are missing because their text could not be converted for the
/// observer.
std::string DescribeFailures(const ParsePassResult& results);

}  // namespace Kestra::Tool
