#include "platform/Processor.h"

#if defined(KESTRA_CARRYLESS_FUNCTION)
#if defined(_MSC_VER)
#include <intrin.h>
#else
#include <cpuid.h>
#endif
#endif

namespace Kestra::Base {

namespace {

#if defined(KESTRA_CARRYLESS_FUNCTION)

constexpr unsigned FEATURES = 1;        // the page of CPUID that lists them
constexpr unsigned PCLMULQDQ = 1 << 1;  // in ECX

bool AskProcessor() {
#if defined(_MSC_VER)
    int registers[4] = {};
    __cpuid(registers, static_cast<int>(FEATURES));
    return (static_cast<unsigned>(registers[2]) & PCLMULQDQ) != 0;
#else
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    return __get_cpuid(FEATURES, &a, &b, &c, &d) != 0 && (c & PCLMULQDQ) != 0;
#endif
}

#else

bool AskProcessor() {
    return false;
}

#endif

}  // namespace

bool HasCarrylessMultiplication() {
    static const bool answer = AskProcessor();
    return answer;
}

}  // namespace Kestra::Base
