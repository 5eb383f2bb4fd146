#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// @file
/// The classes of bytes that the stateless parser knows. Not installed.

namespace Kestra::HTML::Stateless {

using Classes = std::uint8_t;

constexpr Classes WHITE_SPACE = 1 << 0;
constexpr Classes NAME_START = 1 << 1;   // letters and "_"
constexpr Classes NAME = 1 << 2;         // letters, digits, "_", ":" and "-"
constexpr Classes TAG_STOP = 1 << 3;     // "?", "/" and ">": an attribute list ends before them
constexpr Classes VALUE_STOP = 1 << 4;   // ">" and white space
constexpr Classes SCRIPT_STOP = 1 << 5;  // what may change the state of a script
constexpr Classes LINE_END = 1 << 6;     // CR and LF
constexpr Classes RAW_STOP = 1 << 7;     // "<" and ">": what may change the state of an escaped part

/// In the C locale: no byte from 128 up is in any class.
constexpr std::array<Classes, 256> MakeClassTable() {
    std::array<Classes, 256> table{};
    for (const char space : {' ', '\t', '\n', '\v', '\f', '\r'})
        table[static_cast<unsigned char>(space)] = WHITE_SPACE | VALUE_STOP;
    for (unsigned letter = 0; letter < 26; ++letter) {
        table['a' + letter] = NAME_START | NAME;
        table['A' + letter] = NAME_START | NAME;
    }
    for (unsigned digit = 0; digit < 10; ++digit)
        table['0' + digit] = NAME;
    table['_'] = NAME_START | NAME;
    table[':'] = NAME;
    table['-'] = NAME;
    table['?'] = TAG_STOP;
    table['/'] = TAG_STOP | SCRIPT_STOP;
    table['>'] = TAG_STOP | VALUE_STOP;
    for (const char stop : {'<', '*', '\'', '"'})
        table[static_cast<unsigned char>(stop)] |= SCRIPT_STOP;
    table['<'] |= RAW_STOP;
    table['>'] |= RAW_STOP;
    table['\r'] |= LINE_END;
    table['\n'] |= LINE_END;
    return table;
}

inline constexpr std::array<Classes, 256> CLASSES = MakeClassTable();

inline bool Is(unsigned char byte, Classes classes) {
    return (CLASSES[byte] & classes) != 0;
}

}  // namespace Kestra::HTML::Stateless
