/* A user of the DLL that is compiled for the ABI of another compiler, and has no runtime at all: it
 * exits with 0 when the C interface does what it should, else with the number of what it did not. */
#include <kestra/html.h>

__declspec(dllimport) void __stdcall ExitProcess(unsigned code);

static const char PAGE[] = "text<a href='x&lt;'>";

typedef struct seen {
    unsigned tokens;
    unsigned links;
} seen;

static int is_link(kestra_html_string link) {
    const char *const bytes = link.data;
    return link.size == 2 && bytes[0] == 'x' && bytes[1] == '<';
}

static uint32_t on_token(void *user, const kestra_html_token *token) {
    seen *const counts = user;
    size_t index;
    kestra_html_string link;
    ++counts->tokens;
    if (kestra_html_token_kind(token) == KESTRA_HTML_START_TAG &&
        kestra_html_token_find_attribute(token, "href", 4, &index) == KESTRA_HTML_OK &&
        kestra_html_token_decoded_value(token, index, &link) == KESTRA_HTML_OK && is_link(link))
        ++counts->links;
    return 0;
}

static unsigned parse(void) {
    static seen counts;
    static kestra_html_options options; /* zeroed: there is no memset here */
    kestra_html_parser *parser;
    options.size = sizeof options;
    options.encoding = KESTRA_HTML_UTF8;
    options.on_token = on_token;
    options.user = &counts;
    if (kestra_html_parser_create(&options, &parser) != KESTRA_HTML_OK)
        return 1;
    if (kestra_html_parser_start(parser, 65001, KESTRA_HTML_DATA_8BIT) != KESTRA_HTML_OK)
        return 2;
    if (kestra_html_parser_feed(parser, PAGE, sizeof PAGE - 1) != KESTRA_HTML_OK)
        return 3;
    if (kestra_html_parser_end(parser) != KESTRA_HTML_OK)
        return 4;
    kestra_html_parser_destroy(parser);
    return counts.tokens == 2 && counts.links == 1 ? 0 : 5;
}

void start(void) {
    ExitProcess(parse());
}
