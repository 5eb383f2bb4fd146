#include "platform/Processor.h"

#include <atomic>

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

enum class Answer : unsigned char {
    NONE,
    NO,
    YES,
};

/// Not a static object of the function, whose guard starts the runtime of threads.
constinit std::atomic<Answer> lastAnswer = Answer::NONE;

}  // namespace

bool HasCarrylessMultiplication() {
    // Threads that come at the same time may each ask: the answer is the same.
    Answer answer = lastAnswer.load(std::memory_order_relaxed);
    if (answer == Answer::NONE) {
        answer = AskProcessor() ? Answer::YES : Answer::NO;
        lastAnswer.store(answer, std::memory_order_relaxed);
    }
    return answer == Answer::YES;
}

}  // namespace Kestra::Base
