#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "CharSet.h"
#include "Characters.h"

namespace Kestra::StringNS {

/// Converts strings between one code page and UTF-16, both ways. A parser keeps one, so that the
/// converter of a code page is opened once and not for each string.
///
/// 65001, 1252, 20127, 28591 and 1200 are converted by the library itself, the same on every
/// platform; every other code page goes to the platform's converters. Each string starts fresh,
/// stateful encodings included. Not exported; one thread at a time. A copy starts closed: it opens
/// its own converter at its first use.
class CharSetConverter {
public:
    CharSetConverter();
    /// Starts closed.
    CharSetConverter(const CharSetConverter& other);
    /// Closes what this one has open.
    CharSetConverter& operator=(const CharSetConverter& other);
    ~CharSetConverter();

    /// Replaces `*output` by the UTF-16 form of `size` bytes. Embedded NULs are kept; what is
    /// invalid becomes U+FFFD, one per maximal subpart in UTF-8. 1200 takes pairs of bytes, low
    /// byte first; an odd last byte becomes U+FFFD. On Windows the system's converters replace what
    /// is invalid or not assigned by other characters: U+30FB in 932, private characters in others.
    /// @param code  0 is the ANSI rule: the process's ANSI code page on Windows, 1252 on POSIX.
    /// @param data    the bytes; may be null when there are none
    /// @param size    their number
    /// @param output  not null
    /// @return 0; or, with an empty output, RESULT_UNSUPPORTED_CHARSET when there is no converter,
    ///         also for an empty string, or when it failed; or RESULT_OUT_OF_MEMORY, after which
    ///         the next string of the code page may succeed.
    std::uint32_t ToWide(CharSet::Code code, const char* data, std::uint64_t size, WideString* output);

    /// Replaces `*output` by the bytes of `size` UTF-16 units in code page `code`; a character that
    /// the code page lacks becomes "?", or U+FFFD where the code page has it. 1200 gives the units
    /// themselves, low byte first. The system's converters of Windows write "??" for a pair of
    /// surrogates.
    std::uint32_t FromWide(CharSet::Code code, const WideChar* data, std::uint64_t size, std::string* output);

    /// The size of a string without a terminator counted last: one NUL of the code page, or the
    /// single NUL byte that ends any `char` string and follows the last whole character. A NUL byte
    /// that completes a unit of UTF-16 or UTF-32 that is not zero stays. The terminator is left out
    /// before the conversion, so half a character at the end cannot take it for its other half.
    static std::uint64_t LeaveOutTerminator(CharSet::Code code, const char* data, std::uint64_t size);

    /// Whether this platform converts the code page both ways, and strings of ASCII have the same
    /// bytes in it as in ASCII, so that they need no conversion. Throws `std::bad_alloc`, after
    /// which the call may be repeated.
    /// @param code  0 is the ANSI rule.
    bool KeepsAscii(CharSet::Code code);

private:
    class Platform;  // `platform/PlatformConverter.h`

    /// The system converter for `code`: the present one, or a new one that replaces it when it is
    /// for another code page.
    Platform* Open(CharSet::Code code);

    std::unique_ptr<Platform> platform;  ///< for the one code page opened last, one that failed to open included
};

}  // namespace Kestra::StringNS
