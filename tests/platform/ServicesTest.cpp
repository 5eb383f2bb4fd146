#include "platform/Services.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>

#include "platform/Characters.h"
#include "platform/Results.h"

namespace Kestra::Base {
namespace {

std::uint32_t FailToAdjust(DefaultBufferAllocPolicy*, std::uint64_t) {
    return RESULT_OUT_OF_MEMORY;
}

std::uint32_t FailToDetect(const void*, std::uint64_t, DetectedCharset*, std::uint32_t*) {
    return RESULT_DETECTION_FAILED;
}

Services WithFailingBuffer(Services services) {
    services.adjustBuffer = FailToAdjust;
    return services;
}

TEST(ServicesTest, TheRealServicesDoTheirWork) {
    EXPECT_EQ(&GetServices(), &PLATFORM_SERVICES);

    DefaultBufferAllocPolicy buffer;
    EXPECT_EQ(GetServices().adjustBuffer(&buffer, 100), RESULT_OK);
    EXPECT_GE(buffer.GetSize(), 100U);

    StringNS::CharSetConverter converter;
    WideString wide;
    EXPECT_EQ(GetServices().toWide(&converter, 1252, "\x80", 1, &wide), RESULT_OK);
    EXPECT_TRUE(wide == KESTRA_WIDE("\u20AC"));
    std::string narrow;
    EXPECT_EQ(GetServices().fromWide(&converter, 1252, wide.data(), wide.size(), &narrow), RESULT_OK);
    EXPECT_EQ(narrow, "\x80");
    EXPECT_EQ(GetServices().toWide(&converter, 4711, "a", 1, &wide), RESULT_UNSUPPORTED_CHARSET);

    DetectedCharset detected;
    std::uint32_t count = 4711;
    EXPECT_EQ(GetServices().detectCharset("", 0, &detected, &count), RESULT_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(GetServices().detectCharset(nullptr, 300, &detected, &count), RESULT_INVALID_ARGUMENT);
}

TEST(ServicesTest, OverridesNest) {
    const Services outer = WithFailingBuffer(PLATFORM_SERVICES);
    {
        const ServicesOverride outerOverride(outer);
        EXPECT_EQ(&GetServices(), &outer);
        DefaultBufferAllocPolicy buffer;
        EXPECT_EQ(GetServices().adjustBuffer(&buffer, 1), RESULT_OUT_OF_MEMORY);
        {
            Services inner = outer;
            inner.detectCharset = FailToDetect;
            const ServicesOverride innerOverride(inner);
            EXPECT_EQ(&GetServices(), &inner);
            EXPECT_EQ(GetServices().detectCharset("", 0, nullptr, nullptr), RESULT_DETECTION_FAILED);
        }
        EXPECT_EQ(&GetServices(), &outer);
    }
    EXPECT_EQ(&GetServices(), &PLATFORM_SERVICES);
}

TEST(ServicesTest, AnExceptionEndsAnOverride) {
    const Services services = WithFailingBuffer(PLATFORM_SERVICES);
    try {
        const ServicesOverride replacement(services);
        throw std::runtime_error("thrown by an observer");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(&GetServices(), &PLATFORM_SERVICES);
    }
    EXPECT_EQ(&GetServices(), &PLATFORM_SERVICES);
}

TEST(ServicesTest, AnOverrideIsSeenByEveryThread) {
    const Services services = WithFailingBuffer(PLATFORM_SERVICES);
    const Services* seen = nullptr;
    bool isReal = true;
    const auto look = [&] {
        seen = &GetServices();
        isReal = AreServicesReal();
    };
    {
        const ServicesOverride replacement(services);
        std::thread(look).join();
        EXPECT_EQ(seen, &services);
        EXPECT_FALSE(isReal);
    }
    std::thread(look).join();
    EXPECT_EQ(seen, &PLATFORM_SERVICES);
    EXPECT_TRUE(isReal);
}

TEST(ServicesTest, AnOverrideByTheRealServicesIsReal) {
    EXPECT_TRUE(AreServicesReal());
    const Services services = WithFailingBuffer(PLATFORM_SERVICES);
    {
        const ServicesOverride replacement(services);
        EXPECT_FALSE(AreServicesReal());
        {
            const ServicesOverride real(PLATFORM_SERVICES);
            EXPECT_TRUE(AreServicesReal());
        }
        EXPECT_FALSE(AreServicesReal());
    }
    EXPECT_TRUE(AreServicesReal());
}

}  // namespace
}  // namespace Kestra::Base
