#pragma once

/// @file
/// The instructions of single processors, in one place: what there is, and what compilers want to
/// hear about it. Not installed.
///
/// `KESTRA_HAS_VECTORS` is defined where every processor has vectors of sixteen bytes (SSE2), which
/// is any x86-64; their functions are then included. Whoever uses them has plain loops for the
/// rest; a test compiles with `KESTRA_NO_VECTORS` to have them everywhere.
///
/// `KESTRA_CARRYLESS_FUNCTION` comes before a function that multiplies without carries, as
/// checksums want it: with it GCC and Clang let the instruction through in this one function; other
/// compilers for x86-64 always do. Where the processor never has the instruction the macro is not
/// defined.

#if (defined(__SSE2__) || defined(_M_X64)) && !defined(KESTRA_NO_VECTORS)
#define KESTRA_HAS_VECTORS
#include <emmintrin.h>
#include <wmmintrin.h>
#if defined(__clang__) || defined(__GNUC__)
#define KESTRA_CARRYLESS_FUNCTION __attribute__((target("pclmul")))
#else
#define KESTRA_CARRYLESS_FUNCTION
#endif
#endif

namespace Kestra::Base {

/// Whether a function marked with `KESTRA_CARRYLESS_FUNCTION` may run. The processor is asked by
/// the first call.
bool HasCarrylessMultiplication();

}  // namespace Kestra::Base
