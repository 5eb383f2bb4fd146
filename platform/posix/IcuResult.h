#pragma once

#include <unicode/utypes.h>

#include <new>

namespace Kestra::StringNS {

/// Whether ICU has done what it was asked for. A failure because memory was lacking leaves as
/// `std::bad_alloc`, like one of `operator new`: it is no verdict on what was asked.
inline bool HasSucceeded(UErrorCode error) {
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(error);
}

}  // namespace Kestra::StringNS
