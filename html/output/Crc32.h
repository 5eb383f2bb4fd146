#pragma once

#include <cstdint>

#include "html/output/CarrylessBlock.h"

/// @file
/// The CRC-32 of ISO 3309: reflected polynomial 0xEDB88320, register inverted before and after. Not
/// installed.

namespace Kestra::HTML {

/// In the fastest way that the processor knows.
///
/// @param crc  of what came before, 0 for nothing
/// @return the checksum of what came before and `size` bytes more
std::uint32_t UpdateCrc32(std::uint32_t crc, const void* data, std::uint64_t size);

/// The same on every processor, sixteen bytes a step.
std::uint32_t UpdateCrc32ByTables(std::uint32_t crc, const void* data, std::uint64_t size);

#if defined(KESTRA_HAS_CARRYLESS_BLOCKS)

/// The same where `Base::HasCarrylessMultiplication`, 64 bytes a step: several times as fast on
/// long runs.
std::uint32_t UpdateCrc32ByFolding(std::uint32_t crc, const void* data, std::uint64_t size);

#endif

}  // namespace Kestra::HTML
