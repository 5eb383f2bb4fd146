#include "html/parser/CharsetDetection.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>

#include "html/framework/ResultCodes.h"
#include "html/parser/StreamPieces.h"
#include "platform/CharsetDetector.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML {

namespace {

constexpr std::uint64_t MOST_CONFIDENCE = 100;
constexpr std::uint64_t NO_LIMIT = std::numeric_limits<std::uint64_t>::max();

/// The detector needs memory, also in proportion to the document.
template <typename Call>
std::uint32_t AnswerLackOfMemory(Call call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return RESULT_OUT_OF_MEMORY;
    } catch (const std::length_error&) {  // a string cannot be as long
        return RESULT_OUT_OF_MEMORY;
    }
}

}  // namespace

std::uint32_t CharsetDetection::Detect(const void* data, std::uint64_t size, StringNS::CharSet::Code* out) {
    confidence = 0;
    if (out == nullptr || (data == nullptr && size > 0))
        return PARSER_INVALID_ARGUMENT;
    if (size < GenericParser::DETECTCHARSET_MIN_SIZE)
        return PARSER_TOO_LITTLE_DATA;
    *out = StringNS::CharSet::UNKNOWN;
    const std::uint32_t result = AnswerLackOfMemory([this, data, size, out] { return AskDetector(data, size, out); });
    if (result == RESULT_OUT_OF_MEMORY)
        confidence = 0;
    return result;
}

std::uint32_t CharsetDetection::AskDetector(const void* data, std::uint64_t size, StringNS::CharSet::Code* out) {
    Base::DetectedCharset detected;
    std::uint32_t count = 0;
    const std::uint32_t result = Base::GetServices().detectCharset(data, size, &detected, &count);
    if (result != RESULT_OK)
        return result;
    // With several answers it is not known whose confidence was stored.
    if (count == 1)
        confidence = std::min<std::uint64_t>(detected.confidence, MOST_CONFIDENCE);
    if (count != 1 || minConfidence > detected.confidence)
        return PARSER_DETECTOR_NOT_CONFIDENT;
    if (detected.code == StringNS::CharSet::EUC_JP)
        detected.code = StringNS::CharSet::EUC_JP_0208_1990;
    if (detected.code == StringNS::CharSet::US_ASCII || StringNS::CharSet::GetCharSetName(detected.code).empty())
        return RESULT_UNAVAILABLE;
    *out = detected.code;
    return PARSER_OK;
}

std::uint32_t CharsetDetection::Detect(VFS::InputStream* stream, StringNS::CharSet::Code* out) {
    confidence = 0;
    if (stream == nullptr || out == nullptr)
        return PARSER_INVALID_ARGUMENT;
    StreamPieces pieces(stream);
    std::uint32_t result = pieces.Allocate();
    const char* data = nullptr;
    std::uint64_t size = 0;
    if (result == RESULT_OK)
        result = pieces.ReadStart(maxSize == 0 ? NO_LIMIT : maxSize, &data, &size);
    return result == RESULT_OK ? Detect(data, size, out) : result;
}

void CharsetDetection::SetMinConfidence(std::uint64_t leastConfidence) {
    minConfidence = leastConfidence;
}

std::uint64_t CharsetDetection::GetMinConfidence() const {
    return minConfidence;
}

void CharsetDetection::SetMaxSize(std::uint64_t bytes) {
    maxSize = bytes;
}

std::uint64_t CharsetDetection::GetMaxSize() const {
    return maxSize;
}

std::uint64_t CharsetDetection::GetConfidence() const {
    return confidence;
}

}  // namespace Kestra::HTML
