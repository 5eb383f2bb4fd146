#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// The CRC-32 of ISO 3309: reflected polynomial 0xEDB88320, register inverted before and after. Not installed.
///
/// @param crc  of what came before, 0 for nothing
/// @return the checksum of what came before and `size` bytes more
std::uint32_t UpdateCrc32(std::uint32_t crc, const void* data, std::uint64_t size);

}  // namespace Kestra::HTML
