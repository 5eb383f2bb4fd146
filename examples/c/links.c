/* Prints where the links of a page lead, one a line, in UTF-8. Malformed markup is passed over. */
#include <kestra/html.h>
#include <stdio.h>

static int is_a(const kestra_html_token *token) {
    kestra_html_string name;
    return kestra_html_token_string(token, KESTRA_HTML_PART_NAME, &name) == KESTRA_HTML_OK && name.size == 1 &&
           (*(const char *)name.data == 'a' || *(const char *)name.data == 'A');
}

static uint32_t print_link(void *user, const kestra_html_token *token) {
    const uint32_t kind = kestra_html_token_kind(token);
    size_t index;
    kestra_html_string link;
    (void)user;
    if ((kind != KESTRA_HTML_START_TAG && kind != KESTRA_HTML_SHORT_TAG) || !is_a(token))
        return 0;
    if (kestra_html_token_find_attribute(token, "href", 4, &index) == KESTRA_HTML_OK &&
        kestra_html_token_decoded_value(token, index, &link) == KESTRA_HTML_OK)
        printf("%.*s\n", (int)link.size, (const char *)link.data);
    return 0; /* anything else would stop the document */
}

/* Parses a file as a document. */
static uint32_t parse(kestra_html_parser *parser, const char *path) {
    uint32_t result;
    kestra_html_parser_start(parser, 65001, KESTRA_HTML_DATA_AUTO); /* UTF-8, unless a mark says otherwise */
    result = kestra_html_parser_feed_file(parser, path);
    return result == KESTRA_HTML_OK ? kestra_html_parser_end(parser) : result;
}

int main(int argc, char **argv) {
    kestra_html_options options = {.size = sizeof(kestra_html_options)};
    kestra_html_parser *parser;
    uint32_t result;
    if (argc != 2) {
        fputs("usage: links PAGE\n", stderr);
        return 2;
    }
    options.encoding = KESTRA_HTML_UTF8;
    options.script_mode = KESTRA_HTML_SCRIPT_AS_TEXT; /* as browsers read them */
    options.on_token = print_link;
    result = kestra_html_parser_create(&options, &parser);
    if (result == KESTRA_HTML_OK)
        result = parse(parser, argv[1]);
    if (result != KESTRA_HTML_OK)
        fprintf(stderr, "%s: %s\n", argv[1], kestra_html_result_text(result));
    kestra_html_parser_destroy(parser);
    return result == KESTRA_HTML_OK ? 0 : 1;
}
