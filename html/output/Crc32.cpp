#include "html/output/Crc32.h"

#include <array>

namespace Kestra::HTML {

namespace {

constexpr std::uint32_t POLYNOMIAL = 0xEDB88320;
constexpr unsigned STRIDE = 4;  // bytes per step

using Table = std::array<std::array<std::uint32_t, 256>, STRIDE>;

/// `TABLE[k][b]` is what the byte `b` does to the register when `k` more bytes follow it in the same step.
constexpr Table MakeTable() {
    Table table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? POLYNOMIAL : 0);
        table[0][byte] = remainder;
    }
    for (unsigned distance = 1; distance < STRIDE; ++distance) {
        for (unsigned byte = 0; byte < 256; ++byte) {
            const std::uint32_t nearer = table[distance - 1][byte];
            table[distance][byte] = (nearer >> 8) ^ table[0][nearer & 0xFF];
        }
    }
    return table;
}

constexpr Table TABLE = MakeTable();

}  // namespace

std::uint32_t UpdateCrc32(std::uint32_t crc, const void* data, std::uint64_t size) {
    const auto* next = static_cast<const unsigned char*>(data);
    std::uint32_t value = ~crc;
    for (; size >= STRIDE; size -= STRIDE, next += STRIDE) {
        value = TABLE[3][(value ^ next[0]) & 0xFF] ^ TABLE[2][((value >> 8) ^ next[1]) & 0xFF] ^
                TABLE[1][((value >> 16) ^ next[2]) & 0xFF] ^ TABLE[0][(value >> 24) ^ next[3]];
    }
    for (; size > 0; --size, ++next)
        value = (value >> 8) ^ TABLE[0][(value ^ *next) & 0xFF];
    return ~value;
}

}  // namespace Kestra::HTML
