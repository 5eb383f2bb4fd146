#pragma once

#include <string_view>

#include "platform/CharsetDetector.h"
#include "platform/posix/DetectorEngines.h"

namespace Kestra::Base {

/// What the two engines say about a text when no model of a language is asked. Only what both name
/// counts as certain: ICU's own confidence is the same for right and for wrong answers, and
/// uchardet has none.
///
/// @return code 0 when neither answer can be given
DetectedCharset WeighEngines(const EngineAnswer& icu, const EngineAnswer& uchardet, std::string_view text);

}  // namespace Kestra::Base
