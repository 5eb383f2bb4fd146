#include "tools/kestra-html/output/JsonText.h"

#include <charconv>
#include <type_traits>

#include "tools/trace/PlainRun.h"

namespace Kestra::Tool {

namespace {

constexpr std::string_view HEXADECIMAL = "0123456789abcdef";

/// What is written as it is.
using Plain = Trace::PlainText<'"', '\\'>;

/// The letter after the backslash of a short escape, or 0.
char ShortEscape(unsigned unit) {
    switch (unit) {
        case '"':
            return '"';
        case '\\':
            return '\\';
        case '\b':
            return 'b';
        case '\f':
            return 'f';
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\t':
            return 't';
    }
    return 0;
}

/// @return after the escape
char* WriteEscape(char* out, unsigned unit) {
    if (const char letter = ShortEscape(unit); letter != 0) {
        *out++ = '\\';
        *out++ = letter;
    } else {
        *out++ = '\\';
        *out++ = 'u';
        for (unsigned shift = 16; shift > 0; shift -= 4)
            *out++ = HEXADECIMAL[(unit >> (shift - 4)) & 0xF];
    }
    return out;
}

/// @return after what was written
template <typename Unit>
char* WriteUnits(char* out, std::basic_string_view<Unit> units) {
    while (!units.empty()) {
        const std::size_t size = Plain::CopyRun(units.data(), units.size(), out);
        out += size;
        units.remove_prefix(size);
        for (; !units.empty() && !Plain::Has(units.front()); units.remove_prefix(1))
            out = WriteEscape(out, static_cast<std::make_unsigned_t<Unit>>(units.front()));
    }
    return out;
}

}  // namespace

void JsonText::Grow(std::size_t size) {
    bytes.resize(2 * (used + size));
}

/// Block by block: what a block is written as always has room.
template <typename Unit>
void JsonText::EscapeUnits(std::basic_string_view<Unit> string) {
    constexpr std::size_t UNITS_OF_A_BLOCK = 1024;
    constexpr std::size_t LONGEST_UNIT = 6;
    *Reserve(1) = '"';
    ++used;
    do {
        const std::basic_string_view<Unit> block = string.substr(0, UNITS_OF_A_BLOCK);
        char* const out = WriteUnits(Reserve(block.size() * LONGEST_UNIT), block);
        used = static_cast<std::size_t>(out - bytes.data());
        string.remove_prefix(block.size());
    } while (!string.empty());
    Append("\",");
}

template void JsonText::EscapeUnits(std::string_view string);
template void JsonText::EscapeUnits(WideStringView string);

void JsonText::LongNumber(std::uint64_t number) {
    constexpr std::size_t MOST_DIGITS = 20;
    char* const out = Reserve(MOST_DIGITS + 1);
    char* const end = std::to_chars(out, out + MOST_DIGITS, number).ptr;
    *end = ',';
    used += static_cast<std::size_t>(end + 1 - out);
}

}  // namespace Kestra::Tool
