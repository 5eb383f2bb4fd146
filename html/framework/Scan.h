#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "html/framework/Block.h"
#include "html/framework/SimpleParserContext.h"

/// @file
/// The only place where characters are skipped. A run is found, and lines are counted, in one pass:
/// by blocks of characters when the run ends at a few characters, else by a table of the classes of
/// characters. Not installed.
///
/// The names say what a helper does:
///
/// * `Find...` answers a place and moves nothing. With `Lines` it counts the lines up to that place.
/// * `Consume...` moves the context past a run, exactly as `SimpleParserContext::MovePointer` would,
///   and answers the run. `Advance` does so for one character.
/// * Stops are the classes of the characters that end a run; the run ends before the first of them.
///
/// What is marked `inline` belongs into the loop that calls it.

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

/// The classes of the characters 0 to 255 in the flavour `C`. The flavours differ in U+0085 and
/// U+00A0, white space only when wide.
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

/// The table of one flavour. As a member it stays inside the library; a variable template would be
/// exported.
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

/// Without a table: true for all white space and a few characters more.
inline bool MayBeWhiteSpace(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

inline bool MayBeWhiteSpace(WideChar character) {
    return character <= ' ' || character >= 0x80;
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

/// The lines that end in a run, counted while its end is searched for.
template <typename C>
class Lines {
public:
    void CountLine(const C* lineFeed) {
        ++count;
        lastBegin = lineFeed + 1;
    }

#if defined(KESTRA_HAS_VECTORS)
    void CountLines(const C* block, Places lineFeeds) {
        count += lineFeeds.Count();
        lastBegin = block + lineFeeds.Last() + 1;
    }
#endif

    /// Consumes the run, from the current place to `end`.
    template <typename S>
    void Consume(SimpleParserContext<C, S>& context, const C* end) const {
        const auto length = static_cast<std::size_t>(end - (context.buffer + context.position));
        context.position += length;
        context.line += count;
        context.column =
            lastBegin == nullptr ? context.column + length : static_cast<std::uint64_t>(end - lastBegin) + 1;
    }

private:
    std::uint64_t count = 0;
    const C* lastBegin = nullptr;  // of the last line, when it begins in the run
};

#if defined(KESTRA_HAS_VECTORS)

template <typename C>
bool HasBlock(const C* begin, const C* end) {
    return end - begin >= static_cast<std::ptrdiff_t>(Block<C>::LENGTH);
}

/// Whether a block decides exactly which characters belong to the classes. It does not for white
/// space beyond ASCII, which only wide characters have.
template <Classes CLASSES, typename C>
constexpr bool IS_EXACT_IN_BLOCK = sizeof(C) == 1 || (CLASSES & WHITE_SPACE) == 0;

/// The places of the characters that belong to the classes. When the block does not decide that
/// exactly, some of the places may have other characters.
template <Classes CLASSES, typename C>
Places FindInBlock(const Block<C>& block) {
    Matches matches;
    if ((CLASSES & WHITE_SPACE) != 0)
        matches = block.CompareWithWhiteSpace();
    const auto add = [&](Classes of, char character) {
        if ((CLASSES & of) != 0)
            matches = matches | block.CompareWith(character);
    };
    add(LINE_FEED, '\n');
    add(LESS_THAN, '<');
    add(GREATER_THAN, '>');
    add(EQUALS_SIGN, '=');
    add(BRACKET, '[');
    add(BRACKET | CLOSING_BRACKET, ']');
    add(SLASH, '/');
    add(APOSTROPHE, '\'');
    add(QUOTATION_MARK, '"');
    add(ESCAPE, ESC);
    add(BACKSLASH, '\\');
    add(CARRIAGE_RETURN, '\r');
    add(HYPHEN, '-');
    add(ASTERISK, '*');
    add(QUESTION_MARK, '?');
    return matches.GetPlaces();
}

#endif

/// The first character from `begin` on that belongs to `STOPS`, or `end`; consumes nothing.
template <Classes STOPS, typename C>
inline const C* Find(const C* begin, const C* end) {
#if defined(KESTRA_HAS_VECTORS)
    while (HasBlock(begin, end)) {
        const auto stops = FindInBlock<STOPS>(Block<C>(begin));
        begin += stops.Any() ? stops.First() : Block<C>::LENGTH;
        if (!stops.Any())
            continue;
        if (IS_EXACT_IN_BLOCK<STOPS, C> || (ClassesOf(*begin) & STOPS) != 0)
            return begin;
        ++begin;
    }
#endif
    while (begin != end && (ClassesOf(*begin) & STOPS) == 0)
        ++begin;
    return begin;
}

/// The first character from `begin` on that is no white space, or `end`. Counts the lines between
/// them.
template <typename C>
inline const C* FindAfterWhiteSpace(const C* begin, const C* end, Lines<C>* lines) {
    for (; begin != end && (ClassesOf(*begin) & WHITE_SPACE) != 0; ++begin) {
        if (*begin == '\n')
            lines->CountLine(begin);
    }
    return begin;
}

/// The first character from `begin` on that belongs to `STOPS`, which have no white space, or
/// `end`. Counts the lines between them.
template <Classes STOPS, typename C>
inline const C* FindCountingLines(const C* begin, const C* end, Lines<C>* lines) {
    static_assert((STOPS & WHITE_SPACE) == 0, "lines end in white space");
#if defined(KESTRA_HAS_VECTORS)
    for (; HasBlock(begin, end); begin += Block<C>::LENGTH) {
        const Block<C> block(begin);
        const auto stops = FindInBlock<STOPS>(block);
        auto lineFeeds = FindInBlock<LINE_FEED>(block);
        if (stops.Any())
            lineFeeds = lineFeeds.Before(stops.First());
        if (lineFeeds.Any())
            lines->CountLines(begin, lineFeeds);
        if (stops.Any())
            return begin + stops.First();
    }
#endif
    for (; begin != end && (ClassesOf(*begin) & STOPS) == 0; ++begin) {
        if (*begin == '\n')
            lines->CountLine(begin);
    }
    return begin;
}

/// Consumes characters up to the first one that belongs to `stops`, or to the end of the piece, and
/// returns them. When the stops are constant, the overload below is faster.
template <typename C, typename S>
std::basic_string_view<C> ConsumeUntil(SimpleParserContext<C, S>& context, Classes stops) {
    const C* const begin = context.buffer + context.position;
    const C* const end = context.buffer + context.length;
    const Classes interesting = static_cast<Classes>(stops | LINE_FEED);
    const C* next = begin;
    Lines<C> lines;
    for (;;) {
        while (next != end && (ClassesOf(*next) & interesting) == 0)
            ++next;
        if (next == end || (ClassesOf(*next) & stops) != 0)
            break;
        lines.CountLine(next);
        ++next;
    }
    lines.Consume(context, next);
    return {begin, static_cast<std::size_t>(next - begin)};
}

/// The same for constant stops without white space, by blocks.
template <Classes STOPS, typename C, typename S>
inline std::basic_string_view<C> ConsumeUntil(SimpleParserContext<C, S>& context) {
    const C* const begin = context.buffer + context.position;
    Lines<C> lines;
    const C* const end =
        FindCountingLines<STOPS>(begin, static_cast<const C*>(context.buffer + context.length), &lines);
    lines.Consume(context, end);
    return {begin, static_cast<std::size_t>(end - begin)};
}

/// Consumes the white space at the current place and returns it.
template <typename C, typename S>
std::basic_string_view<C> ConsumeWhiteSpace(SimpleParserContext<C, S>& context) {
    const std::uint64_t begin = context.position;
    while (!AtEnd(context) && (ClassesOf(Next(context)) & WHITE_SPACE) != 0)
        Advance(context);
    return {context.buffer + begin, static_cast<std::size_t>(context.position - begin)};
}

}  // namespace Kestra::HTML::Scan
