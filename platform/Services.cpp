#include "platform/Services.h"

namespace Kestra::Base {

namespace {

std::uint32_t AdjustBuffer(DefaultBufferAllocPolicy* buffer, std::uint64_t size) {
    return buffer->AdjustTo(size);
}

std::uint32_t ToWide(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const char* data, std::uint64_t size,
                     WideString* output) {
    return converter->ToWide(code, data, size, output);
}

std::uint32_t FromWide(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const WideChar* data, std::uint64_t size,
                       std::string* output) {
    return converter->FromWide(code, data, size, output);
}

thread_local const Services* overriding = nullptr;

}  // namespace

const Services PLATFORM_SERVICES = {CharsetDetector::Detect, AdjustBuffer, ToWide, FromWide};

const Services& GetServices() {
    return overriding != nullptr ? *overriding : PLATFORM_SERVICES;
}

ServicesOverride::ServicesOverride(const Services& services) : previous(overriding) {
    overriding = &services;
}

ServicesOverride::~ServicesOverride() {
    overriding = previous;
}

}  // namespace Kestra::Base
