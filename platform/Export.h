#pragma once

/// @file
/// The two spellings that differ between compilers: what a shared library exports, and nothing
/// else.
///
/// `KESTRA_HTML_API` marks every public class and class template. With GCC and Clang it raises the
/// default visibility; on Windows it exports while the library is built and imports for everyone
/// else. `KESTRA_HTML_STATIC` leaves it empty, for programs that link the objects themselves.

/// @def KESTRA_HTML_API
/// Marks what a shared library exports.

#if defined(KESTRA_HTML_STATIC)
#define KESTRA_HTML_API
#elif defined(_WIN32)
#if defined(KESTRA_HTML_BUILD)
#define KESTRA_HTML_API __declspec(dllexport)
#else
#define KESTRA_HTML_API __declspec(dllimport)
#endif
#else
#define KESTRA_HTML_API __attribute__((visibility("default")))
#endif
