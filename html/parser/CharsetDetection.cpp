#include "html/parser/CharsetDetection.h"

#include "html/framework/ResultCodes.h"
#include "html/parser/StreamPieces.h"
#include "platform/CharsetDetector.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML {

std::uint32_t CharsetDetection::Detect(const void* data, std::uint64_t size, StringNS::CharSet::Code* out) const {
    if (out == nullptr || (data == nullptr && size > 0))
        return PARSER_INVALID_ARGUMENT;
    if (size < GenericParser::DETECTCHARSET_MIN_SIZE)
        return PARSER_TOO_LITTLE_DATA;
    *out = StringNS::CharSet::UNKNOWN;
    Base::DetectedCharset detected;
    std::uint32_t count = 0;
    const std::uint32_t result = Base::GetServices().detectCharset(data, size, &detected, &count);
    if (result != RESULT_OK)
        return result;
    if (count != 1 || minConfidence > detected.confidence)
        return PARSER_DETECTOR_NOT_CONFIDENT;
    if (detected.code == StringNS::CharSet::EUC_JP)
        detected.code = StringNS::CharSet::EUC_JP_0208_1990;
    if (detected.code == StringNS::CharSet::US_ASCII || StringNS::CharSet::GetCharSetName(detected.code).empty())
        return RESULT_UNAVAILABLE;
    *out = detected.code;
    return PARSER_OK;
}

std::uint32_t CharsetDetection::Detect(VFS::InputStream* stream, StringNS::CharSet::Code* out) const {
    if (stream == nullptr || out == nullptr)
        return PARSER_INVALID_ARGUMENT;
    StreamPieces pieces(stream);
    std::uint32_t result = pieces.Allocate();
    const char* data = nullptr;
    std::uint64_t size = 0;
    if (result == RESULT_OK)
        result = pieces.FillBuffer(&data, &size);
    return result == RESULT_OK ? Detect(data, size, out) : result;
}

void CharsetDetection::SetMinConfidence(std::uint64_t confidence) {
    minConfidence = confidence;
}

std::uint64_t CharsetDetection::GetMinConfidence() const {
    return minConfidence;
}

}  // namespace Kestra::HTML
