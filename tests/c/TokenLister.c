#include "tests/c/TokenLister.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void append(token_list *list, const char *text, size_t size) {
    if (list->size + size > list->capacity) {
        const size_t capacity = 2 * (list->size + size);
        char *const grown = (char *)realloc(list->text, capacity);
        if (grown == NULL) {
            list->result = KESTRA_HTML_OUT_OF_MEMORY;
            return;
        }
        list->text = grown;
        list->capacity = capacity;
    }
    memcpy(list->text + list->size, text, size);
    list->size += size;
}

static void append_word(token_list *list, const char *word) {
    append(list, word, strlen(word));
}

static void append_unit(token_list *list, unsigned unit) {
    char escape[16];
    if (unit == '\\') {
        append_word(list, "\\\\");
    } else if (unit == '\n') {
        append_word(list, "\\n");
    } else if (unit == '\r') {
        append_word(list, "\\r");
    } else if (unit == '\t') {
        append_word(list, "\\t");
    } else if (unit < 0x20 || unit == 0x7F || (unit >= 0x80 && !list->is_wide)) {
        snprintf(escape, sizeof escape, "\\x%02X", unit);
        append_word(list, escape);
    } else if (unit >= 0x80) {
        snprintf(escape, sizeof escape, "\\u%04X", unit);
        append_word(list, escape);
    } else {
        escape[0] = (char)unit;
        append(list, escape, 1);
    }
}

static void append_string(token_list *list, const kestra_html_string *string) {
    size_t i;
    if (list->is_wide) {
        const uint16_t *const units = (const uint16_t *)string->data;
        for (i = 0; i < string->size / 2; ++i)
            append_unit(list, units[i]);
    } else {
        const unsigned char *const bytes = (const unsigned char *)string->data;
        for (i = 0; i < string->size; ++i)
            append_unit(list, bytes[i]);
    }
}

static void append_part(token_list *list, const kestra_html_token *token, uint32_t part) {
    kestra_html_string string = {"", 0};
    const uint32_t result = kestra_html_token_string(token, part, &string);
    if (result != KESTRA_HTML_OK && list->result == 0)
        list->result = result;
    append_string(list, &string);
}

static void append_quoted(token_list *list, const kestra_html_attribute *attribute) {
    const char *const quote = attribute->quote == KESTRA_HTML_QUOTE_SINGLE   ? "'"
                              : attribute->quote == KESTRA_HTML_QUOTE_DOUBLE ? "\""
                                                                            : "";
    append_word(list, quote);
    append_string(list, &attribute->value);
    append_word(list, quote);
}

static void append_attributes(token_list *list, const kestra_html_token *token) {
    const int are_items = kestra_html_token_kind(token) == KESTRA_HTML_DECLARATION;
    size_t count = 0;
    size_t i;
    if (kestra_html_token_attribute_count(token, &count) != KESTRA_HTML_OK)
        append_word(list, "uncounted");
    for (i = 0; i < count; ++i) {
        kestra_html_attribute attribute;
        attribute.size = sizeof attribute;
        if (kestra_html_token_attribute(token, i, &attribute) != KESTRA_HTML_OK) {
            append_word(list, "missing");
            continue;
        }
        append_word(list, "{");
        append_string(list, &attribute.prefix);
        append_word(list, "|");
        if (are_items) {
            append_quoted(list, &attribute);
        } else {
            append_string(list, &attribute.name);
            if (attribute.has_value) {
                append_word(list, "|");
                append_string(list, &attribute.before_equals);
                append_word(list, "=");
                append_string(list, &attribute.after_equals);
                append_word(list, "|");
                append_quoted(list, &attribute);
            }
        }
        append_word(list, "}");
    }
}

/// What a line has between its parentheses: a letter for each part.
static const char *get_layout(uint32_t kind, uint32_t flags) {
    switch (kind) {
        case KESTRA_HTML_TEXT:
            return "text(t";
        case KESTRA_HTML_BLOCK_COMMENT:
            return "c-comment(t";
        case KESTRA_HTML_LINE_COMMENT:
            return "cpp-comment(t";
        case KESTRA_HTML_SINGLE_QUOTED_STRING:
            return "s-string(t";
        case KESTRA_HTML_DOUBLE_QUOTED_STRING:
            return "d-string(t";
        case KESTRA_HTML_START_TAG:
            return "start(p|n|a|s";
        case KESTRA_HTML_SHORT_TAG:
            return "short(p|n|a|s";
        case KESTRA_HTML_END_TAG:
            return "end(p|n|w|a|s";
        case KESTRA_HTML_CDATA:
            return "cdata(n|t";
        case KESTRA_HTML_CONDITIONAL:
            return "conditional(n|t|l";
        case KESTRA_HTML_COMMENT:
            return "comment(t";
        case KESTRA_HTML_DECLARATION:
            return "entity(p|n|a|s";
        case KESTRA_HTML_INSTRUCTION:
            return (flags & KESTRA_HTML_FREE_STYLE) != 0 ? "extern-text(t" : "extern(p|n|a|s";
        case KESTRA_HTML_JUNK:
            return "junk(t";
        default:
            return "unknown(";
    }
}

static void append_layout(token_list *list, const kestra_html_token *token, const char *layout) {
    static const char LETTERS[] = "ntpwsl";  /* in the order of kestra_html_part */
    const char *at = strchr(layout, '(') + 1;
    append(list, layout, (size_t)(at - layout));
    for (; *at != '\0'; ++at) {
        if (*at == '|')
            append_word(list, "|");
        else if (*at == 'a')
            append_attributes(list, token);
        else
            append_part(list, token, (uint32_t)(strchr(LETTERS, *at) - LETTERS));
    }
}

static void append_flags(token_list *list, uint32_t kind, uint32_t flags) {
    const int has_end = kind >= KESTRA_HTML_START_TAG && kind <= KESTRA_HTML_COMMENT;
    if (kind == KESTRA_HTML_CONDITIONAL && (flags & KESTRA_HTML_BRACKET_CLOSED) == 0)
        append_word(list, ", no-bracket");
    if (kind != KESTRA_HTML_END_TAG && has_end && (flags & KESTRA_HTML_CLOSED) == 0)
        append_word(list, ", open");
    if ((flags & KESTRA_HTML_SLASH) != 0 && (flags & KESTRA_HTML_FREE_STYLE) == 0)
        append_word(list, ", slash");
    if (kind == KESTRA_HTML_END_TAG && (flags & KESTRA_HTML_CLOSED) == 0)
        append_word(list, ", open");
}

static int is_part(const kestra_html_token *token, uint32_t part, const kestra_html_string *expected) {
    kestra_html_string string = {"", 0};
    return kestra_html_token_string(token, part, &string) == KESTRA_HTML_OK && string.size == expected->size &&
           memcmp(string.data, expected->data, string.size) == 0;
}

/* The summary says what the calls say one by one. */
static void check_summary(token_list *list, const kestra_html_token *token) {
    kestra_html_summary summary;
    size_t count = 0;
    uint32_t result;
    memset(&summary, 0xFF, sizeof summary);
    summary.size = sizeof summary;
    result = kestra_html_token_summary(token, &summary);
    if (result != KESTRA_HTML_OK) {
        kestra_html_string text;
        if (result != kestra_html_token_string(token, KESTRA_HTML_PART_TEXT, &text) || summary.reserved == 0)
            append_word(list, "the summary fails");
        return;
    }
    if (summary.size != sizeof summary || summary.reserved != 0 || summary.kind != kestra_html_token_kind(token) ||
        kestra_html_token_attribute_count(token, &count) != KESTRA_HTML_OK || summary.attribute_count != count ||
        !is_part(token, KESTRA_HTML_PART_NAME, &summary.name) || !is_part(token, KESTRA_HTML_PART_TEXT, &summary.text))
        append_word(list, "the summary differs");
}

uint32_t list_token(void *user, const kestra_html_token *token) {
    token_list *const list = (token_list *)user;
    const uint32_t kind = kestra_html_token_kind(token);
    const uint32_t flags = kestra_html_token_flags(token);
    check_summary(list, token);
    append_layout(list, token, get_layout(kind, flags));
    append_flags(list, kind, flags);
    append_word(list, ")\n");
    return 0;
}
