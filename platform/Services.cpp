#include "platform/Services.h"

#include <atomic>

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

/// The overrides of all threads. A thread sees its own at once, and no other thread's matter to it.
std::atomic<std::uint32_t> overrides = 0;

}  // namespace

const Services PLATFORM_SERVICES = {CharsetDetector::Detect, AdjustBuffer, ToWide, FromWide};

const Services& GetServices() {
    return overriding != nullptr ? *overriding : PLATFORM_SERVICES;
}

bool AreServicesReal() {
    return overrides.load(std::memory_order_relaxed) == 0 || &GetServices() == &PLATFORM_SERVICES;
}

ServicesOverride::ServicesOverride(const Services& services) : previous(overriding) {
    overriding = &services;
    overrides.fetch_add(1, std::memory_order_relaxed);
}

ServicesOverride::~ServicesOverride() {
    overriding = previous;
    overrides.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace Kestra::Base
