#pragma once

#include <cstdint>
#include <string>

#include "CharSet.h"
#include "Characters.h"
#include "Export.h"
#include "Vector.h"

namespace Kestra::StringNS {

/// The byte-order mark of UTF-8, not NUL-terminated.
extern KESTRA_HTML_API const unsigned char BOM_UTF8[3];
/// The byte-order mark of UTF-16, low byte first, not NUL-terminated.
extern KESTRA_HTML_API const unsigned char BOM_UTF16_LE[2];

/// String conversions and small string services.
///
/// A conversion takes a count of characters. When the last character counted is a NUL terminator,
/// the result leaves it out; every other NUL is kept. Each call opens a converter: parsers keep a
/// `CharSetConverter` instead. Conversions return 0, RESULT_INVALID_ARGUMENT (a null pointer with a
/// count, a null output), RESULT_UNSUPPORTED_CHARSET, when there is no converter or when it failed,
/// or RESULT_OUT_OF_MEMORY; after a failure the output is empty. On Windows a string of more than
/// 256 MB in an encoding with states, or without a place to cut it, is such a failure.
class KESTRA_HTML_API StringHelper {
public:
    /// What `StripAnsiChars` and `StripWideChars` strip.
    enum StripMode : std::uint32_t {
        STRIP_FRONT = 1,  ///< from the front
        STRIP_BACK = 2,   ///< from the back
        STRIP_BOTH = 3,   ///< from both ends
    };

    /// From the bytes of a code page to UTF-16; code 0 is the ANSI rule. `conversionType` is
    /// reserved and must be 0.
    static std::uint32_t GetWideFromGeneric(CharSet::Code code, const char* data, std::uint64_t size,
                                            WideString* output, std::uint32_t conversionType = 0);

    /// From the ANSI code page (1252 on POSIX) to UTF-16.
    static std::uint32_t GetStringFromAnsi(const char* data, std::uint64_t size, WideString* output);

    /// From UTF-16 to the ANSI code page.
    static std::uint32_t GetAnsiFromWide(const WideChar* data, std::uint64_t size, std::string* output);

    /// From UTF-16 to the bytes of a code page; code 0 is the ANSI rule.
    static std::uint32_t GetStringFromWide(CharSet::Code code, const WideChar* data, std::uint64_t size,
                                           std::string* output);

    /// Splits at every occurrence of the separator. Empty parts are kept, so the parts are always
    /// one more than the separators.
    static void SplitAnsiString(const std::string& text, char separator, Vector<std::string>* parts);
    /// The same for a wide string.
    static void SplitWideString(const WideString& text, WideChar separator, Vector<WideString>* parts);

    /// Removes the characters of `set` from the front, the back or both ends of `*text`.
    /// @param text  not null
    /// @param mode  a `StripMode`
    /// @param set   the characters, in any order
    static void StripAnsiChars(std::string* text, std::uint32_t mode, const std::string& set);
    /// The same for a wide string.
    static void StripWideChars(WideString* text, std::uint32_t mode, const WideString& set);
};

}  // namespace Kestra::StringNS
