#pragma once

#include <cstdint>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/InputStream.h"

namespace Kestra::HTML {

/// Detects the charset of some bytes by the platform's detector, and decides whether its answer is
/// good enough. `GenericParser::DetectCharset` documents the results. Not installed.
class CharsetDetection {
public:
    std::uint32_t Detect(const void* data, std::uint64_t size, StringNS::CharSet::Code* out);

    /// Over the first bytes from the stream's current position on.
    std::uint32_t Detect(VFS::InputStream* stream, StringNS::CharSet::Code* out);

    void SetMinConfidence(std::uint64_t leastConfidence);
    std::uint64_t GetMinConfidence() const;
    /// @param bytes  of a stream; 0 for all
    void SetMaxSize(std::uint64_t bytes);
    std::uint64_t GetMaxSize() const;
    /// Of the last answer of the detector, good enough or not.
    std::uint64_t GetConfidence() const;

private:
    std::uint32_t AskDetector(const void* data, std::uint64_t size, StringNS::CharSet::Code* out);

    std::uint64_t minConfidence = GenericParser::DETECTCHARSET_MIN_CONFIDENCE;  // of 100
    std::uint64_t maxSize = GenericParser::BUFFER_SIZE;                         // of a stream, in bytes; 0 for all
    std::uint64_t confidence = 0;                                               // of the last answer, of 100
};

}  // namespace Kestra::HTML
