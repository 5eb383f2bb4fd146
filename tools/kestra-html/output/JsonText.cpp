#include "tools/kestra-html/output/JsonText.h"

#include <array>
#include <charconv>
#include <type_traits>

namespace Kestra::Tool {

namespace {

constexpr std::string_view HEXADECIMAL = "0123456789abcdef";

constexpr std::array<bool, 0x80> PLAIN = [] {
    std::array<bool, 0x80> plain{};
    for (unsigned unit = 0x20; unit < 0x7F; ++unit)
        plain[unit] = unit != '"' && unit != '\\';
    return plain;
}();

/// True of what is written as it is.
bool IsPlain(unsigned unit) {
    return unit < PLAIN.size() && PLAIN[unit];
}

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
    for (const Unit character : units) {
        const unsigned unit = static_cast<std::make_unsigned_t<Unit>>(character);
        if (IsPlain(unit))
            *out++ = static_cast<char>(unit);
        else
            out = WriteEscape(out, unit);
    }
    return out;
}

}  // namespace

void JsonText::Grow(std::size_t size) {
    bytes.resize(2 * (used + size));
}

/// Block by block: what a block is written as always has room.
template <typename Unit>
void JsonText::Escape(std::basic_string_view<Unit> string) {
    constexpr std::size_t UNITS_OF_A_BLOCK = 1024;
    constexpr std::size_t LONGEST_UNIT = 6;
    Separate();
    Put('"');
    while (!string.empty()) {
        const std::basic_string_view<Unit> block = string.substr(0, UNITS_OF_A_BLOCK);
        char* const out = WriteUnits(Reserve(block.size() * LONGEST_UNIT), block);
        used = static_cast<std::size_t>(out - bytes.data());
        string.remove_prefix(block.size());
    }
    Put('"');
}

void JsonText::String(std::string_view string) {
    Escape(string);
}

void JsonText::String(WideStringView string) {
    Escape(string);
}

void JsonText::Number(std::uint64_t number) {
    constexpr std::size_t MOST_DIGITS = 20;
    Separate();
    char* const out = Reserve(MOST_DIGITS);
    used += static_cast<std::size_t>(std::to_chars(out, out + MOST_DIGITS, number).ptr - out);
}

void JsonText::Word(std::string_view word) {
    Separate();
    word.copy(Reserve(word.size()), word.size());
    used += word.size();
}

}  // namespace Kestra::Tool
