#pragma once

#include <cstdint>

#include "html/framework/ResultCodes.h"
#include "platform/InputStream.h"
#include "platform/Results.h"

namespace Kestra::HTML {

/// Reads a stream. Fails for a stream that delivers nothing again and again, and for one that
/// claims more bytes than the buffer has. Not installed.
class StreamReader {
public:
    explicit StreamReader(VFS::InputStream* readStream) : stream(readStream) {}

    /// @param count  bytes read, 0 unless the answer is RESULT_OK; with that it may be 0 too, and
    ///               the next read delivers more
    /// @return RESULT_OK, RESULT_END_OF_DATA, or a failure
    std::uint32_t Read(char* buffer, std::uint64_t size, std::uint64_t* count) {
        *count = 0;
        std::uint32_t result = stream->Read(buffer, size, count);
        if (result == RESULT_OK && *count > size)
            result = RESULT_STREAM_FAILED;
        if (result != RESULT_OK) {
            *count = 0;
            return result;
        }
        emptyReads = *count == 0 ? emptyReads + 1 : 0;
        return emptyReads < MOST_EMPTY_READS ? std::uint32_t{RESULT_OK} : std::uint32_t{PARSER_SHORT_READ};
    }

private:
    // In a row, before a stream that never reaches its end is given up.
    static constexpr unsigned MOST_EMPTY_READS = 1000;

    VFS::InputStream* stream;
    unsigned emptyReads = 0;  // in a row
};

}  // namespace Kestra::HTML
