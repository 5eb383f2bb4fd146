#include "platform/CharsetDetector.h"

#include "platform/Results.h"

namespace Kestra::Base {

std::uint32_t CharsetDetector::Detect(const void* data, std::uint64_t size, DetectedCharset* detected,
                                      std::uint32_t* count) {
    if (detected == nullptr || count == nullptr || (data == nullptr && size > 0))
        return RESULT_INVALID_ARGUMENT;
    *count = 0;
    return size == 0 ? std::uint32_t{RESULT_OK} : DetectBytes(data, size, detected, count);
}

}  // namespace Kestra::Base
