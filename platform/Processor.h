#pragma once

/// @file
/// What a processor can do beyond the vectors that the compiler takes for granted. Not installed.
///
/// `KESTRA_CARRYLESS_FUNCTION` stands in front of a function that multiplies without carries, as checksums want it: with it GCC and Clang
/// let the instruction through in this one function; other compilers for x86-64 always do. Where the processor never has the instruction
/// the macro is not defined.

#if defined(__clang__) || defined(__GNUC__)
#if defined(__SSE2__)
#define KESTRA_CARRYLESS_FUNCTION __attribute__((target("pclmul")))
#endif
#elif defined(_M_X64)
#define KESTRA_CARRYLESS_FUNCTION
#endif

namespace Kestra::Base {

/// Whether a function marked with `KESTRA_CARRYLESS_FUNCTION` may run. The processor is asked once.
bool HasCarrylessMultiplication();

}  // namespace Kestra::Base
