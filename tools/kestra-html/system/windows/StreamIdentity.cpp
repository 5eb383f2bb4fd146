#include "tools/kestra-html/system/StreamIdentity.h"

namespace Kestra::Tool {

/// Only standard input has a name that can be given twice.
std::optional<StreamIdentity> IdentifyStream(const std::string& name) {
    return name == "-" ? std::optional(StreamIdentity()) : std::nullopt;
}

}  // namespace Kestra::Tool
