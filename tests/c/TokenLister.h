#ifndef KESTRA_TESTS_C_TOKEN_LISTER_H
#define KESTRA_TESTS_C_TOKEN_LISTER_H

#include <kestra/html.h>
#include <stddef.h>

/// @file
/// Writes tokens in the trace language (`tools/trace/TokenTrace.h`), by the C interface alone. The
/// source is compiled as C99 and as C++.

/// Lines of text, each ended by a line feed. Zeroed at the start.
typedef struct token_list {
    char* text;  ///< for `free`
    size_t size;
    size_t capacity;
    int is_wide;      ///< strings are UTF-16
    uint32_t result;  ///< the first answer that was not 0
} token_list;

#ifdef __cplusplus
extern "C" {
#endif

/// Appends a line for each token. The options need KESTRA_HTML_WORDS_IN_VALUES.
uint32_t list_token(void* list, const kestra_html_token* token);

/// The same, compiled as C++.
uint32_t list_token_in_cpp(void* list, const kestra_html_token* token);

#ifdef __cplusplus
}
#endif

#endif
