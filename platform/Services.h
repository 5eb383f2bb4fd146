#pragma once

#include <cstdint>

#include "platform/BufferAllocPolicy.h"
#include "platform/CharSetConverter.h"
#include "platform/CharsetDetector.h"

namespace Kestra::Base {

/// The platform services whose failures tests must be able to cause. The parsers reach them
/// through this table, never directly. Not exported: a host cannot replace them.
struct Services {
    std::uint32_t (*detectCharset)(const void* data, std::uint64_t size, DetectedCharset* detected,
                                   std::uint32_t* count);
    std::uint32_t (*adjustBuffer)(DefaultBufferAllocPolicy* buffer, std::uint64_t size);
    std::uint32_t (*toWide)(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const char* data,
                            std::uint64_t size, WideString* output);
    std::uint32_t (*fromWide)(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const WideChar* data,
                              std::uint64_t size, std::string* output);
};

/// The real services.
extern const Services PLATFORM_SERVICES;

/// The real services, or those of the innermost `ServicesOverride`.
const Services& GetServices();

/// Whether `GetServices` answers with the real ones.
bool AreServicesReal();

/// Puts other services in place, in the whole process and for as long as it lives. Made for tests:
/// overrides end in the reverse order of their beginnings, and begin and end while no other thread
/// parses.
class ServicesOverride {
public:
    explicit ServicesOverride(const Services& services);
    ServicesOverride(const ServicesOverride&) = delete;
    ServicesOverride& operator=(const ServicesOverride&) = delete;
    ~ServicesOverride();

private:
    const Services* previous;
};

}  // namespace Kestra::Base
