#pragma once

#include <string>

#include "bench/Hostile.h"

namespace Kestra::Bench {

/// Rewrites an input that lies in memory, piece by piece, with the edits that it is made for.
/// Accepted when every edit was made and the output has the size that follows.
HostileReading RewriteHostile(const HostileInput& input, const std::string& document, bool selfCheck);

}  // namespace Kestra::Bench
