#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "html/stateless/ByteClasses.h"
#include "html/stateless/StatelessHTMLParser.h"

/// @file
/// Moves over the piece, and counts lines and columns. What is `inline` here belongs into the loop
/// that calls it. Not installed.

namespace Kestra::HTML::Stateless {

using Data = StatelessHTMLParserData;

/// Of the main machine.
enum State : std::uint32_t {
    STATE_TEXT = 0,
    STATE_AFTER_LESS_THAN = 1,
    STATE_EXTERN_TAG = 2,
    STATE_AFTER_EXCLAMATION_MARK = 3,
    STATE_AFTER_HYPHEN = 4,
    STATE_COMMENT = 5,
    STATE_END_TAG = 6,
    STATE_START_TAG = 7,
    STATE_ENTITY_TAG = 8,
    STATE_SCRIPT = 9,
    STATE_STYLE = 10,
    STATE_RAW_TEXT = 11,
    STATE_RAW_TEXT_END = 12,
};

inline bool AtEnd(const Data& data) {
    return data.position >= data.length;
}

/// The next unread byte; one must be left.
inline unsigned char Next(const Data& data) {
    return *data.cursor;
}

/// The bytes from the next unread one on, to append to a string.
inline const char* NextBytes(const Data& data) {
    return reinterpret_cast<const char*>(data.cursor);
}

/// How many bytes are unread before the first one that belongs to `stops`.
inline std::size_t CountUntil(const Data& data, Classes stops) {
    const unsigned char* const bytes = data.cursor;
    const std::uint64_t size = data.length - data.position;
    std::size_t count = 0;
    while (count < size && !Is(bytes[count], stops))
        ++count;
    return count;
}

/// How many bytes are unread before the first `stop`.
inline std::size_t CountUntilByte(const Data& data, char stop) {
    const auto size = static_cast<std::size_t>(data.length - data.position);
    const void* const found = std::memchr(data.cursor, stop, size);
    return found == nullptr ? size : static_cast<std::size_t>(static_cast<const unsigned char*>(found) - data.cursor);
}

/// Bytes of the document before the next unread one. Bytes that are held back count as unread.
inline std::uint64_t GetOffset(const Data& data) {
    return data.pieceOffset + data.position - data.heldBack.size();
}

/// True when `byte` was the last one consumed, in this piece or an earlier one.
inline bool IsAfter(const Data& data, char byte) {
    return (data.position > 0 ? data.cursor[-1] : data.lastByte) == static_cast<unsigned char>(byte);
}

/// Skips one byte; the caller counts lines and columns.
inline void PassByte(Data& data) {
    ++data.cursor;
    ++data.position;
}

inline void ConsumeRun(Data& data, std::size_t count) {
    data.cursor += count;
    data.position += count;
    data.column += count;
}

/// One byte that is not counted as content.
inline void Consume(Data& data) {
    ConsumeRun(data, 1);
}

/// Two line breaks in a row count as one; any other byte in between makes them two (kept).
inline void CountContent(Data& data, unsigned char byte) {
    if (!Is(byte, LINE_END)) {
        ++data.column;
        data.afterNewline = false;
    } else if (data.afterNewline) {
        data.afterNewline = false;
    } else {
        ++data.line;
        data.column = 1;
        data.afterNewline = true;
    }
}

/// One byte of content counts twice in its column (kept).
inline void ConsumeContent(Data& data) {
    CountContent(data, Next(data));
    Consume(data);
}

inline void ConsumeContentRun(Data& data, std::size_t count) {
    const unsigned char* next = data.cursor;
    std::uint64_t newColumn = data.column;
    bool isAfterNewline = data.afterNewline;
    for (const unsigned char* const end = next + count; next != end; ++next) {
        if (!Is(*next, LINE_END)) {
            newColumn += 2;
            isAfterNewline = false;
        } else if (isAfterNewline) {
            ++newColumn;
            isAfterNewline = false;
        } else {
            ++data.line;
            newColumn = 2;
            isAfterNewline = true;
        }
    }
    data.cursor = next;
    data.position += count;
    data.column = newColumn;
    data.afterNewline = isAfterNewline;
}

/// False when the piece is used up.
inline bool SkipWhiteSpace(Data& data) {
    while (!AtEnd(data) && Is(Next(data), WHITE_SPACE)) {
        CountContent(data, Next(data));
        PassByte(data);
    }
    return !AtEnd(data);
}

/// The next byte is the first one of a token.
inline void BeginToken(Data& data) {
    data.tokenOffset = GetOffset(data);
    data.tokenLine = data.line;
    data.tokenColumn = data.column;
    data.tokenAfterNewline = data.afterNewline;
}

/// Whether the unfinished token would exceed the limit with that many more bytes.
inline bool GoesOver(const Data& data, std::size_t count) {
    return GetOffset(data) + count - data.tokenOffset > data.maxBytes;
}

/// Consumes a run and appends it to `text`. False, and nothing happens, when the token would go
/// over its limit.
[[nodiscard]] inline bool AppendRun(Data& data, std::size_t count, std::string* text) {
    if (GoesOver(data, count))
        return false;
    text->append(NextBytes(data), count);
    ConsumeRun(data, count);
    return true;
}

/// The same for a run that counts as content.
[[nodiscard]] inline bool AppendContentRun(Data& data, std::size_t count, std::string* text) {
    if (GoesOver(data, count))
        return false;
    text->append(NextBytes(data), count);
    ConsumeContentRun(data, count);
    return true;
}

}  // namespace Kestra::HTML::Stateless
