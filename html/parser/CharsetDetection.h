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
    std::uint32_t Detect(const void* data, std::uint64_t size, StringNS::CharSet::Code* out) const;

    /// Over the first bytes from the stream's current position on.
    std::uint32_t Detect(VFS::InputStream* stream, StringNS::CharSet::Code* out) const;

    void SetMinConfidence(std::uint64_t confidence);
    std::uint64_t GetMinConfidence() const;

private:
    std::uint64_t minConfidence = GenericParser::DETECTCHARSET_MIN_CONFIDENCE;  // of 100
};

}  // namespace Kestra::HTML
