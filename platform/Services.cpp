#include "platform/Services.h"

#include <atomic>

namespace Kestra::Base {

namespace {

std::uint32_t AdjustBuffer(DefaultBufferAllocPolicy* buffer, std::uint64_t size) {
    return buffer->AdjustTo(size);
}

std::uint32_t ToWide(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const char* data,
                     std::uint64_t size, WideString* output) {
    return converter->ToWide(code, data, size, output);
}

std::uint32_t FromWide(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const WideChar* data,
                       std::uint64_t size, std::string* output) {
    return converter->FromWide(code, data, size, output);
}

/// One for the process: on Windows a variable of each thread starts a runtime that outlives the
/// library when a host frees it.
constinit std::atomic<const Services*> current = &PLATFORM_SERVICES;

}  // namespace

constinit const Services PLATFORM_SERVICES = {CharsetDetector::Detect, AdjustBuffer, ToWide, FromWide};

const Services& GetServices() {
    return *current.load(std::memory_order_acquire);
}

bool AreServicesReal() {
    return current.load(std::memory_order_relaxed) == &PLATFORM_SERVICES;
}

ServicesOverride::ServicesOverride(const Services& services)
    : previous(current.exchange(&services, std::memory_order_acq_rel)) {}

ServicesOverride::~ServicesOverride() {
    current.store(previous, std::memory_order_release);
}

}  // namespace Kestra::Base
