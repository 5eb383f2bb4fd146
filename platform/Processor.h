#pragma once

/// @file
/// The instructions that only some processors have, and how compilers are asked for them. Not
/// installed.
///
/// `KESTRA_HAS_VECTORS` is defined where every processor has vectors of sixteen bytes (SSE2), which
/// is any x86-64; their functions are then included. Code that uses them also has plain loops for
/// other processors; a test compiles these everywhere, with `KESTRA_NO_VECTORS`.
///
/// `KESTRA_CARRYLESS_FUNCTION` comes before a function that multiplies without carries, as
/// checksums do: it makes GCC and Clang accept the instruction in this function; other compilers
/// for x86-64 always accept it. Where the processor never has the instruction the macro is not
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
