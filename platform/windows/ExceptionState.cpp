/// @file
/// The exceptions that a thread is throwing and handling, as the C++ runtime of GCC asks for them
/// (Itanium C++ ABI, 2.2.2).
///
/// The runtime has such a function of its own. Linked into a DLL it starts the runtime of threads
/// with the first exception, which takes an index of thread storage and two handles of the process
/// and never gives them back: a host that loads, uses and frees the library about a thousand times
/// has none left. The linker takes the function here instead, and the destructor below returns what
/// it took.

#include <cstdlib>

#if defined(__MINGW32__) && defined(__GLIBCXX__)

#include <atomic>
#include <cstddef>
#include <exception>

#include "platform/windows/WindowsApi.h"

namespace __cxxabiv1 {

/// As the runtime has it.
struct __cxa_eh_globals {
    void* caughtExceptions;
    unsigned uncaughtExceptions;
};

}  // namespace __cxxabiv1

namespace Kestra::Base {

namespace {

using State = __cxxabiv1::__cxa_eh_globals;

/// The states of so many threads need no memory from the heap: what is thrown may say that there is
/// none left.
constexpr std::size_t OWN_STATES = 64;

constinit State ownStates[OWN_STATES] = {};
constinit std::atomic<bool> isTaken[OWN_STATES] = {};

/// @return all zeros, or null when there is no memory
State* ClaimState() {
    for (std::size_t i = 0; i < OWN_STATES; ++i) {
        if (!isTaken[i].exchange(true, std::memory_order_acquire)) {
            ownStates[i] = {};
            return &ownStates[i];
        }
    }
    return static_cast<State*>(std::calloc(1, sizeof(State)));
}

/// Called by the system at the end of a thread, and for the threads that are left when the index is
/// given back.
void WINAPI ReleaseState(void* value) {
    auto* const state = static_cast<State*>(value);
    for (std::size_t i = 0; i < OWN_STATES; ++i) {
        if (state == &ownStates[i]) {
            isTaken[i].store(false, std::memory_order_release);
            return;
        }
    }
    std::free(state);
}

constinit std::atomic<DWORD> index = FLS_OUT_OF_INDEXES;

/// The index of the states in the storage of threads; the first exception takes it.
DWORD GetIndex() {
    DWORD current = index.load(std::memory_order_acquire);
    if (current != FLS_OUT_OF_INDEXES)
        return current;
    const DWORD taken = FlsAlloc(ReleaseState);
    if (index.compare_exchange_strong(current, taken, std::memory_order_acq_rel))
        return taken;
    FlsFree(taken);  // another thread came first
    return current;
}

/// Runs when the library is freed.
__attribute__((destructor)) void ReleaseIndex() {
    const DWORD taken = index.exchange(FLS_OUT_OF_INDEXES);
    if (taken != FLS_OUT_OF_INDEXES)
        FlsFree(taken);
}

/// The state of the calling thread. The last error stays what it is: it may be read after a catch.
State* GetState() {
    const DWORD error = GetLastError();
    const DWORD ours = GetIndex();
    auto* state = static_cast<State*>(FlsGetValue(ours));
    if (state == nullptr) {
        state = ClaimState();
        if (state == nullptr || FlsSetValue(ours, state) == 0)
            std::terminate();  // as the runtime does; it cannot throw without a state
    }
    SetLastError(error);
    return state;
}

}  // namespace

}  // namespace Kestra::Base

namespace __cxxabiv1 {

extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept;
extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept;

__cxa_eh_globals* __cxa_get_globals() noexcept {
    return Kestra::Base::GetState();
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return Kestra::Base::GetState();
}

}  // namespace __cxxabiv1

#endif
