#pragma once

#include <cstdint>

/// @file
/// Result codes of the platform services. Every operation that can fail returns one; 0 is success,
/// and nothing is thrown.

namespace Kestra {

/// What the platform services answer.
enum Result : std::uint32_t {
    RESULT_OK = 0,                    ///< success
    RESULT_INVALID_ARGUMENT = 2,      ///< a null pointer, an impossible size, a file that does not exist
    RESULT_OUT_OF_MEMORY = 8,         ///< a read buffer, or what a conversion needs, could not be allocated
    RESULT_UNAVAILABLE = 11,          ///< the charset detector could not be started
    RESULT_UNSUPPORTED_CHARSET = 50,  ///< no converter for this code page, or it failed
    RESULT_STREAM_FAILED = 512,       ///< a stream could not be read, written or positioned
    RESULT_END_OF_DATA = 513,         ///< a read found the stream at its end
    RESULT_DETECTION_FAILED = 709,    ///< the charset detector was started and failed
};

}  // namespace Kestra
