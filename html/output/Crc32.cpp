#include "html/output/Crc32.h"

#include <array>
#include <cstddef>

namespace Kestra::HTML {

namespace {

constexpr std::uint32_t POLYNOMIAL = 0xEDB88320;
constexpr unsigned STRIDE = 16;       // bytes per step of the tables
constexpr unsigned SHORT_STRIDE = 4;  // and after the last one

using Table = std::array<std::array<std::uint32_t, 256>, STRIDE>;

/// A remainder times x. Its highest bit is the coefficient of 1.
constexpr std::uint32_t TimesX(std::uint32_t remainder) {
    return (remainder >> 1) ^ ((remainder & 1) != 0 ? POLYNOMIAL : 0);
}

/// `TABLE[k][b]` is what the byte `b` adds to the register when `k` more bytes follow it in the same
/// step.
constexpr Table MakeTable() {
    Table table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit)
            remainder = TimesX(remainder);
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

/// What `COUNT` bytes add to the register when `FOLLOWING` more bytes follow them in the same step.
template <unsigned COUNT, unsigned FOLLOWING>
std::uint32_t HashBytes(const unsigned char* bytes) {
    std::uint32_t sum = 0;
    for (unsigned i = 0; i < COUNT; ++i)
        sum ^= TABLE[FOLLOWING + COUNT - 1 - i][bytes[i]];
    return sum;
}

/// What the register, combined with the first four bytes, adds in a step of `BYTES` bytes; the
/// whole new register when `BYTES` is 4.
template <unsigned BYTES>
std::uint32_t HashStep(std::uint32_t value, const unsigned char* bytes) {
    return TABLE[BYTES - 1][(value ^ bytes[0]) & 0xFF] ^ TABLE[BYTES - 2][((value >> 8) ^ bytes[1]) & 0xFF] ^
           TABLE[BYTES - 3][((value >> 16) ^ bytes[2]) & 0xFF] ^ TABLE[BYTES - 4][(value >> 24) ^ bytes[3]];
}

/// Adds bytes to the register, which is not inverted here.
std::uint32_t UpdateRegister(std::uint32_t value, const unsigned char* next, std::uint64_t size) {
    for (; size >= STRIDE; size -= STRIDE, next += STRIDE)
        value = HashStep<STRIDE>(value, next) ^ HashBytes<STRIDE - SHORT_STRIDE, 0>(next + SHORT_STRIDE);
    for (; size >= SHORT_STRIDE; size -= SHORT_STRIDE, next += SHORT_STRIDE)
        value = HashStep<SHORT_STRIDE>(value, next);
    for (; size > 0; --size, ++next)
        value = (value >> 8) ^ TABLE[0][(value ^ *next) & 0xFF];
    return value;
}

}  // namespace

std::uint32_t UpdateCrc32ByTables(std::uint32_t crc, const void* data, std::uint64_t size) {
    return ~UpdateRegister(~crc, static_cast<const unsigned char*>(data), size);
}

#if defined(KESTRA_HAS_CARRYLESS_BLOCKS)

namespace {

constexpr std::size_t LANES = 4;  // one multiplication takes several cycles, but the next three need not wait for it

/// The remainder of x^exponent, as a polynomial below x^64.
constexpr std::uint64_t PowerOfX(unsigned exponent) {
    std::uint32_t remainder = 0x80000000;
    for (unsigned i = 0; i < exponent; ++i)
        remainder = TimesX(remainder);
    return static_cast<std::uint64_t>(remainder) << 32;
}

/// The factors that carry a block over as many others without changing the remainder of the whole.
/// A product has one x too many, and the first half of a block is 64 places above the second one.
template <std::size_t BLOCKS>
CarrylessBlock FactorsOver() {
    constexpr unsigned PLACES = 8 * CarrylessBlock::LENGTH * BLOCKS - 1;
    constexpr std::uint64_t FIRST = PowerOfX(PLACES + 64);
    constexpr std::uint64_t SECOND = PowerOfX(PLACES);
    return CarrylessBlock(FIRST, SECOND);
}

}  // namespace

KESTRA_CARRYLESS_FUNCTION std::uint32_t UpdateCrc32ByFolding(std::uint32_t crc, const void* data, std::uint64_t size) {
    constexpr std::size_t LENGTH = CarrylessBlock::LENGTH;
    constexpr std::size_t STEP = LANES * LENGTH;
    const auto* next = static_cast<const unsigned char*>(data);
    if (size < 2 * STEP)
        return UpdateCrc32ByTables(crc, data, size);  // faster there: the last block goes through them all the same
    CarrylessBlock first(next);
    CarrylessBlock second(next + LENGTH);
    CarrylessBlock third(next + 2 * LENGTH);
    CarrylessBlock fourth(next + 3 * LENGTH);
    first.Add(CarrylessBlock(~crc, 0));
    const CarrylessBlock overLanes = FactorsOver<LANES>();
    for (next += STEP, size -= STEP; size >= STEP; next += STEP, size -= STEP) {
        first.MultiplyAndAdd(overLanes, CarrylessBlock(next));
        second.MultiplyAndAdd(overLanes, CarrylessBlock(next + LENGTH));
        third.MultiplyAndAdd(overLanes, CarrylessBlock(next + 2 * LENGTH));
        fourth.MultiplyAndAdd(overLanes, CarrylessBlock(next + 3 * LENGTH));
    }
    const CarrylessBlock overOne = FactorsOver<1>();
    first.MultiplyAndAdd(overOne, second);
    first.MultiplyAndAdd(overOne, third);
    first.MultiplyAndAdd(overOne, fourth);
    for (; size >= LENGTH; next += LENGTH, size -= LENGTH)
        first.MultiplyAndAdd(overOne, CarrylessBlock(next));
    // One block has the remainder of all that came before.
    unsigned char block[LENGTH];
    first.Store(block);
    return ~UpdateRegister(UpdateRegister(0, block, LENGTH), next, size);
}

std::uint32_t UpdateCrc32(std::uint32_t crc, const void* data, std::uint64_t size) {
    return Base::HasCarrylessMultiplication() ? UpdateCrc32ByFolding(crc, data, size)
                                              : UpdateCrc32ByTables(crc, data, size);
}

#else

std::uint32_t UpdateCrc32(std::uint32_t crc, const void* data, std::uint64_t size) {
    return UpdateCrc32ByTables(crc, data, size);
}

#endif

}  // namespace Kestra::HTML
