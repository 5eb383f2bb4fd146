#pragma once

#include <cstdint>

#include "platform/CharSet.h"

namespace Kestra::Base {

/// One answer of the detector.
struct DetectedCharset {
    StringNS::CharSet::Code code = 0;  ///< a Windows code page
    std::uint32_t confidence = 0;      ///< 0 to 100; on POSIX the estimated percentage of such answers that are
                                       ///< right
};

/// Guesses the charset of marked-up text: the system's language service on Windows; on POSIX models
/// of languages, which take the answers of uchardet and ICU into account. Built without those it
/// knows 7-bit text and UTF-8, and answers RESULT_UNAVAILABLE for any other. Not exported.
///
/// Has no state; any number of threads may call it at the same time.
class CharsetDetector {
public:
    /// Detects the charset of `size` bytes. Takes time in proportion to the size.
    ///
    /// @param data   borrowed for the call; null only with a size of 0, for which nothing fits.
    /// @param count  stores the number of results: 1 with `*detected` filled, 0 when nothing fits.
    ///               (The Windows service can count more, but only one is stored.)
    /// @return 0; RESULT_INVALID_ARGUMENT (2) for a null pointer; RESULT_UNAVAILABLE (11) when the
    ///         service cannot be started; RESULT_DETECTION_FAILED (709) when the call fails. After
    ///         a failure neither output is meaningful.
    static std::uint32_t Detect(const void* data, std::uint64_t size, DetectedCharset* detected, std::uint32_t* count);

private:
    /// `Detect` of at least one byte, with arguments that were checked and a count of 0.
    static std::uint32_t DetectBytes(const void* data, std::uint64_t size, DetectedCharset* detected,
                                     std::uint32_t* count);
};

}  // namespace Kestra::Base
