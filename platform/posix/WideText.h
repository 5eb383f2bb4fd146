#pragma once

#include <string_view>

#include "platform/CharsetDetector.h"

namespace Kestra::Base {

/// Recognizes UTF-16 without a mark: 1200 for little-endian, 1201 for big-endian, 0 when the bytes
/// make no text in either order. They are text when the units lie close together, as those of one
/// script do, and the other order has them apart.
///
/// Takes linear time. An odd last byte is left out.
DetectedCharset FindWideText(std::string_view bytes);

}  // namespace Kestra::Base
