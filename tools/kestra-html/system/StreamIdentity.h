#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace Kestra::Tool {

/// Tells a pipe, a socket or a terminal from every other.
struct StreamIdentity {
    std::uint64_t device = 0;
    std::uint64_t file = 0;

    auto operator<=>(const StreamIdentity&) const = default;
};

/// Of an input whose bytes come only once.
/// @param name  as on the command line; "-" is standard input, whatever that is
/// @return nothing for what can be read again, and for what cannot be read
std::optional<StreamIdentity> IdentifyStream(const std::string& name);

}  // namespace Kestra::Tool
