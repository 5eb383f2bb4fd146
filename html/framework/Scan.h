#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "html/framework/SimpleParserContext.h"

/// @file
/// The only place where characters are skipped. A run is found, and line and column kept, in one pass over one table of character
/// classes; each helper moves the context exactly as `SimpleParserContext::MovePointer` would. Not installed.

namespace Kestra::HTML::Scan {

using Classes = std::uint16_t;

constexpr Classes LINE_FEED = 1 << 0;
constexpr Classes WHITE_SPACE = 1 << 1;
constexpr Classes LESS_THAN = 1 << 2;
constexpr Classes GREATER_THAN = 1 << 3;
constexpr Classes EQUALS_SIGN = 1 << 4;
constexpr Classes BRACKET = 1 << 5;  // "[" and "]"
constexpr Classes SLASH = 1 << 6;
constexpr Classes APOSTROPHE = 1 << 7;
constexpr Classes QUOTATION_MARK = 1 << 8;
constexpr Classes ESCAPE = 1 << 9;  // the ESC character, 27
constexpr Classes BACKSLASH = 1 << 10;
constexpr Classes CARRIAGE_RETURN = 1 << 11;
constexpr Classes HYPHEN = 1 << 12;
constexpr Classes CLOSING_BRACKET = 1 << 13;  // "]" alone
constexpr Classes ASTERISK = 1 << 14;
constexpr Classes QUESTION_MARK = 1 << 15;

constexpr char ESC = 27;

/// The classes of the characters 0 to 255 in the flavour `C`. The flavours differ in U+0085 and U+00A0, white space only when wide.
template <typename C>
constexpr std::array<Classes, 256> MakeClassTable() {
    std::array<Classes, 256> table{};
    for (unsigned code = 0; code < 256; ++code) {
        if (IsSpace(static_cast<C>(code)))
            table[code] = WHITE_SPACE;
    }
    table['\n'] |= LINE_FEED;
    table['\r'] |= CARRIAGE_RETURN;
    table['<'] |= LESS_THAN;
    table['>'] |= GREATER_THAN;
    table['='] |= EQUALS_SIGN;
    table['['] |= BRACKET;
    table[']'] |= BRACKET | CLOSING_BRACKET;
    table['/'] |= SLASH;
    table['\''] |= APOSTROPHE;
    table['"'] |= QUOTATION_MARK;
    table[static_cast<unsigned>(ESC)] |= ESCAPE;
    table['\\'] |= BACKSLASH;
    table['-'] |= HYPHEN;
    table['*'] |= ASTERISK;
    table['?'] |= QUESTION_MARK;
    return table;
}

/// Holds the table of one flavour. A member stays inside the library; a variable template would be exported.
template <typename C>
struct ClassTable {
    static constexpr std::array<Classes, 256> CLASSES = MakeClassTable<C>();
};

inline Classes ClassesOf(char character) {
    return ClassTable<char>::CLASSES[static_cast<unsigned char>(character)];
}

inline Classes ClassesOf(WideChar character) {
    if (character < 256)
        return ClassTable<WideChar>::CLASSES[character];
    return IsSpace(character) ? WHITE_SPACE : Classes{0};
}

template <typename C, typename S>
bool AtEnd(const SimpleParserContext<C, S>& context) {
    return context.position >= context.length;
}

/// The next unread character; one must be left.
template <typename C, typename S>
C Next(const SimpleParserContext<C, S>& context) {
    return context.buffer[context.position];
}

/// Consumes one character; one must be left.
template <typename C, typename S>
void Advance(SimpleParserContext<C, S>& context) {
    if (Next(context) == '\n') {
        ++context.line;
        context.column = 1;
    } else {
        ++context.column;
    }
    ++context.position;
}

/// Consumes characters up to the first one that belongs to `stops`, or to the end of the piece, and returns them.
template <typename C, typename S>
std::basic_string_view<C> RunUntil(SimpleParserContext<C, S>& context, Classes stops) {
    const C* const begin = context.buffer + context.position;
    const C* const end = context.buffer + context.length;
    const C* lineBegin = nullptr;
    const Classes interesting = static_cast<Classes>(stops | LINE_FEED);
    const C* next = begin;
    for (;;) {
        // Four characters at a time while none of them matters: runs of text and of values are mostly longer.
        while (end - next >= 4 && ((ClassesOf(next[0]) | ClassesOf(next[1]) | ClassesOf(next[2]) | ClassesOf(next[3])) & interesting) == 0)
            next += 4;
        while (next != end && (ClassesOf(*next) & interesting) == 0)
            ++next;
        if (next == end || (ClassesOf(*next) & stops) != 0)
            break;
        ++next;
        ++context.line;
        lineBegin = next;
    }
    const auto count = static_cast<std::size_t>(next - begin);
    context.position += count;
    context.column = lineBegin == nullptr ? context.column + count : static_cast<std::uint64_t>(next - lineBegin) + 1;
    return {begin, count};
}

/// Consumes the white space at the current place and returns it.
template <typename C, typename S>
std::basic_string_view<C> RunOfWhiteSpace(SimpleParserContext<C, S>& context) {
    const std::uint64_t begin = context.position;
    while (!AtEnd(context) && (ClassesOf(Next(context)) & WHITE_SPACE) != 0)
        Advance(context);
    return {context.buffer + begin, static_cast<std::size_t>(context.position - begin)};
}

}  // namespace Kestra::HTML::Scan
