#include "platform/CharSet.h"
#include "platform/CharsetDetector.h"
#include "platform/CodePoints.h"
#include "platform/Results.h"

/// @file
/// Detection without ICU and uchardet: 7-bit text and UTF-8, which need no statistics, by the rules
/// of the detector that has them.

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

constexpr std::uint32_t CERTAIN = 100;

/// True for well-formed UTF-8. The end may cut a sequence.
bool IsUtf8(const char* from, const char* end) {
    while (from != end) {
        const auto first = static_cast<unsigned char>(*from);
        if (ReadUtf8(&from, end) == ILL_FORMED && (from != end || ClassifyUtf8Lead(first).trailing == 0))
            return false;
    }
    return true;
}

}  // namespace

std::uint32_t CharsetDetector::DetectBytes(const void* data, std::uint64_t size, DetectedCharset* detected,
                                           std::uint32_t* count) {
    const char* const bytes = static_cast<const char*>(data);
    const char* const end = bytes + size;
    bool hasHighBit = false;
    bool hasEscapeOrNul = false;
    for (const char* place = bytes; place != end; ++place) {
        hasHighBit = hasHighBit || (*place & 0x80) != 0;
        hasEscapeOrNul = hasEscapeOrNul || *place == 0x1B || *place == 0;
    }
    if (hasHighBit ? !IsUtf8(bytes, end) : hasEscapeOrNul)
        return RESULT_UNAVAILABLE;
    *detected = {hasHighBit ? CharSet::UTF8 : CharSet::US_ASCII, CERTAIN};
    *count = 1;
    return RESULT_OK;
}

}  // namespace Kestra::Base
