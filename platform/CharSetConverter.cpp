#include "platform/CharSetConverter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <new>

#include "platform/AsciiRuns.h"
#include "platform/CodePoints.h"
#include "platform/PlatformConverter.h"
#include "platform/Results.h"

namespace Kestra::StringNS {

namespace {

constexpr char UNMAPPABLE = '?';

// Bytes 0x80 to 0x9F of code page 1252. Source: Microsoft's best-fit table bestfit1252; it gives
// the five bytes that the registered windows-1252 leaves undefined (81, 8D, 8F, 90, 9D) the C1
// control of the same number.
constexpr std::array<WideChar, 32> WINDOWS_1252_HIGH = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                        0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The code pages of the platform's converters in which the bytes from 0 to 127 are ASCII, alone and
// before any others, on every platform. Not among them: EBCDIC, wider units, escapes and shifts
// (ISO-2022, HZ, UTF-7, ISCII), 864 with its own per cent sign, T.61, and the national variants of
// seven bits.
constexpr CharSet::Code KEEPING_ASCII[] = {
    437,   708,   720,   737,   775,   850,   852,   855,   857,   858,   860,   861,   862,   863,   865,
    866,   869,   874,   932,   936,   949,   950,   1250,  1251,  1253,  1254,  1255,  1256,  1257,  1258,
    1361,  10000, 10006, 10007, 10017, 10029, 10081, 20866, 20932, 20936, 20949, 21866, 28592, 28593, 28594,
    28595, 28596, 28597, 28598, 28599, 28603, 28605, 38598, 51932, 51936, 51949, 51950, 54936};
static_assert(std::is_sorted(std::begin(KEEPING_ASCII), std::end(KEEPING_ASCII)));

/// Resizes `*output` to `size` characters without copying its contents when it must grow; they are
/// unspecified afterwards.
/// @return its first character.
template <typename S>
typename S::value_type* Presize(S* output, std::uint64_t size) {
    if (output->capacity() < size)
        output->clear();
    output->resize(static_cast<std::size_t>(size));
    return output->data();
}

/// Cuts a presized string after the last character written.
template <typename S>
void CutAt(S* output, const typename S::value_type* end) {
    output->resize(static_cast<std::size_t>(end - output->data()));
}

unsigned char ByteAt(const char* place) {
    return static_cast<unsigned char>(*place);
}

/// Copies the ASCII run at the front of `[*from, end)`, and advances both places after it. There is
/// room for a character for each one up to `end`.
template <typename From, typename To>
void CopyRun(const From** from, const From* end, To** to) {
    const std::size_t run = CopyAscii(*from, static_cast<std::size_t>(end - *from), *to);
    *from += run;
    *to += run;
}

/// Reads one code point from U+0080 to U+FFFF, as most beyond ASCII are.
/// @return 0, and nothing is read, when `*from` is not one.
char32_t ReadShortUtf8(const char** from, const char* end) {
    const char* const place = *from;
    const char32_t first = ByteAt(place);
    const auto left = end - place;
    if (first >= 0xC2 && first < 0xE0 && left >= 2 && IsTrailingByte(place[1])) {
        *from = place + 2;
        return ((first & 0x1FU) << 6) | (ByteAt(place + 1) & 0x3FU);
    }
    if (first < 0xE0 || first > 0xEF || left < 3 || !IsTrailingByte(place[1]) || !IsTrailingByte(place[2]))
        return 0;
    const char32_t codePoint =
        ((first & 0x0FU) << 12) | ((ByteAt(place + 1) & 0x3FU) << 6) | (ByteAt(place + 2) & 0x3FU);
    if (codePoint < 0x800 || IsSurrogate(codePoint))
        return 0;
    *from = place + 3;
    return codePoint;
}

void Utf8ToWide(const char* from, std::uint64_t size, WideString* output) {
    const char* const end = from + size;
    WideChar* to = Presize(output, size);  // no sequence is shorter than what it becomes
    while (from != end) {
        CopyRun(&from, end, &to);
        while (from != end && ByteAt(from) >= 0x80) {
            char32_t codePoint = ReadShortUtf8(&from, end);
            if (codePoint == 0)
                codePoint = ReadUtf8(&from, end);
            WriteUtf16(codePoint == ILL_FORMED ? REPLACEMENT_CHARACTER : codePoint,
                       [&to](WideChar unit) { *to++ = unit; });
        }
    }
    CutAt(output, to);
}

/// The exact number of UTF-8 bytes of `[from, end)`.
std::uint64_t CountUtf8(const WideChar* from, const WideChar* end) {
    std::uint64_t count = 0;
    std::uint64_t pairs = 0;
    for (const WideChar* place = from; place != end; ++place) {
        const char32_t unit = *place;
        count += 1U + (unit >= 0x80 ? 1U : 0U) + (unit >= 0x800 ? 1U : 0U);
        pairs += IsLowSurrogate(unit) && place != from && IsHighSurrogate(place[-1]) ? 1U : 0U;
    }
    return count - 2 * pairs;  // both halves were counted as three bytes
}

void WideToUtf8(const WideChar* from, std::uint64_t size, std::string* output) {
    const WideChar* const end = from + size;
    char* to = Presize(output, CountUtf8(from, end));
    while (from != end) {
        CopyRun(&from, end, &to);
        while (from != end && *from >= 0x80) {
            const char32_t codePoint = ReadUtf16(&from, end);
            WriteUtf8(IsSurrogate(codePoint) ? REPLACEMENT_CHARACTER : codePoint, [&to](char byte) { *to++ = byte; });
        }
    }
}

/// What the bytes from 0x80 up stand for in 1252, 28591 and 20127: the character of the same number
/// but for the table of 1252, and nothing in 20127.
template <CharSet::Code CODE>
constexpr std::array<WideChar, 128> MakeUpperHalf() {
    std::array<WideChar, 128> units{};
    for (std::size_t i = 0; i < units.size(); ++i) {
        const bool isListed = CODE == CharSet::WINDOWS_1252 && i < WINDOWS_1252_HIGH.size();
        units[i] = isListed ? WINDOWS_1252_HIGH[i]
                            : static_cast<WideChar>(CODE == CharSet::US_ASCII ? REPLACEMENT_CHARACTER : 0x80 + i);
    }
    return units;
}

template <CharSet::Code CODE>
void SingleByteToWide(const char* from, std::uint64_t size, WideString* output) {
    static constexpr std::array<WideChar, 128> UPPER_HALF = MakeUpperHalf<CODE>();
    const char* const end = from + size;
    WideChar* to = Presize(output, size);
    while (from != end) {
        CopyRun(&from, end, &to);
        for (; from != end && ByteAt(from) >= 0x80; ++from)
            *to++ = UPPER_HALF[ByteAt(from) - 0x80U];
    }
}

/// The byte of a code point from U+0080 up, "?" for one that the code page lacks.
template <CharSet::Code CODE>
char NarrowCodePoint(char32_t codePoint) {
    if (CODE == CharSet::US_ASCII)
        return UNMAPPABLE;
    if (codePoint <= 0xFF && (CODE == CharSet::ISO_8859_1 || codePoint >= 0xA0))
        return static_cast<char>(static_cast<unsigned char>(codePoint));
    if (CODE == CharSet::WINDOWS_1252) {
        for (std::size_t i = 0; i < WINDOWS_1252_HIGH.size(); ++i) {
            if (codePoint == WINDOWS_1252_HIGH[i])
                return static_cast<char>(static_cast<unsigned char>(0x80 + i));
        }
    }
    return UNMAPPABLE;
}

template <CharSet::Code CODE>
void WideToSingleByte(const WideChar* from, std::uint64_t size, std::string* output) {
    const WideChar* const end = from + size;
    char* to = Presize(output, size);
    while (from != end) {
        CopyRun(&from, end, &to);
        while (from != end && *from >= 0x80)
            *to++ = NarrowCodePoint<CODE>(ReadUtf16(&from, end));
    }
    CutAt(output, to);
}

void Utf16ToWide(const char* from, std::uint64_t size, WideString* output) {
    const std::uint64_t pairs = size / 2;
    WideChar* const to = Presize(output, pairs + size % 2);
    for (std::uint64_t i = 0; i < pairs; ++i)
        to[i] = static_cast<WideChar>(ByteAt(from + 2 * i) | ByteAt(from + 2 * i + 1) << 8);
    if (size % 2 != 0)
        to[pairs] = static_cast<WideChar>(REPLACEMENT_CHARACTER);
}

void WideToUtf16(const WideChar* from, std::uint64_t size, std::string* output) {
    char* const to = Presize(output, 2 * size);
    for (std::uint64_t i = 0; i < size; ++i) {
        to[2 * i] = static_cast<char>(static_cast<unsigned char>(from[i] & 0xFFU));
        to[2 * i + 1] = static_cast<char>(static_cast<unsigned char>(from[i] >> 8));
    }
}

/// Bytes of the smallest character of a code page.
std::uint64_t GetUnitSize(CharSet::Code code) {
    switch (code) {
        case 1200:
        case 1201:
            return 2;
        case 12000:
        case 12001:
            return 4;
        default:
            return 1;
    }
}

}  // namespace

CharSetConverter::CharSetConverter() = default;

CharSetConverter::CharSetConverter(const CharSetConverter&) : CharSetConverter() {}

CharSetConverter& CharSetConverter::operator=(const CharSetConverter&) {
    platform.reset();
    return *this;
}

CharSetConverter::~CharSetConverter() = default;

CharSetConverter::Platform* CharSetConverter::Open(CharSet::Code code) {
    if (platform == nullptr || platform->GetCode() != code)
        platform = std::make_unique<Platform>(code);
    return platform.get();
}

std::uint64_t CharSetConverter::LeaveOutTerminator(CharSet::Code code, const char* data, std::uint64_t size) {
    const std::uint64_t unit = GetUnitSize(code);
    const std::uint64_t length = size % unit == 0 ? unit : 1;
    if (size < length)
        return size;
    return std::all_of(data + (size - length), data + size, [](char byte) { return byte == 0; }) ? size - length : size;
}

bool CharSetConverter::KeepsAscii(CharSet::Code code) {
    if (code == CharSet::UNKNOWN)
        code = SystemConverter::GetAnsiCode();
    switch (code) {
        case CharSet::UTF8:
        case CharSet::WINDOWS_1252:
        case CharSet::US_ASCII:
        case CharSet::ISO_8859_1:
            return true;
        default:
            return std::binary_search(std::begin(KEEPING_ASCII), std::end(KEEPING_ASCII), code) &&
                   Open(code)->Converts();
    }
}

std::uint32_t CharSetConverter::ToWide(CharSet::Code code, const char* data, std::uint64_t size,
                                       WideString* output) try {
    if (code == CharSet::UNKNOWN)
        code = SystemConverter::GetAnsiCode();
    switch (code) {
        case CharSet::UTF8:
            Utf8ToWide(data, size, output);
            return RESULT_OK;
        case CharSet::WINDOWS_1252:
            SingleByteToWide<CharSet::WINDOWS_1252>(data, size, output);
            return RESULT_OK;
        case CharSet::US_ASCII:
            SingleByteToWide<CharSet::US_ASCII>(data, size, output);
            return RESULT_OK;
        case CharSet::ISO_8859_1:
            SingleByteToWide<CharSet::ISO_8859_1>(data, size, output);
            return RESULT_OK;
        case CharSet::UTF16_LE:
            Utf16ToWide(data, size, output);
            return RESULT_OK;
        default:
            return Open(code)->ToWide(data, size, output);
    }
} catch (const std::bad_alloc&) {
    output->clear();
    return RESULT_OUT_OF_MEMORY;
}

std::uint32_t CharSetConverter::FromWide(CharSet::Code code, const WideChar* data, std::uint64_t size,
                                         std::string* output) try {
    if (code == CharSet::UNKNOWN)
        code = SystemConverter::GetAnsiCode();
    switch (code) {
        case CharSet::UTF8:
            WideToUtf8(data, size, output);
            return RESULT_OK;
        case CharSet::WINDOWS_1252:
            WideToSingleByte<CharSet::WINDOWS_1252>(data, size, output);
            return RESULT_OK;
        case CharSet::US_ASCII:
            WideToSingleByte<CharSet::US_ASCII>(data, size, output);
            return RESULT_OK;
        case CharSet::ISO_8859_1:
            WideToSingleByte<CharSet::ISO_8859_1>(data, size, output);
            return RESULT_OK;
        case CharSet::UTF16_LE:
            WideToUtf16(data, size, output);
            return RESULT_OK;
        default:
            return Open(code)->FromWide(data, size, output);
    }
} catch (const std::bad_alloc&) {
    output->clear();
    return RESULT_OUT_OF_MEMORY;
}

}  // namespace Kestra::StringNS
