/* Copies a page, and makes its links safe: "http:" becomes "https:". Every other byte stays. */
#include <kestra/html.h>
#include <stdio.h>
#include <string.h>

static uint32_t write_output(void *user, const void *data, size_t size) {
    return fwrite(data, 1, size, user) == size ? 0 : KESTRA_HTML_STREAM_FAILED;
}

static uint32_t make_safe(void *user, kestra_html_edit_element *element) {
    kestra_html_edit_token *tag = kestra_html_element_tag(element);
    kestra_html_string link;
    char safe[4096] = "https:";
    (void)user;
    if (kestra_html_edit_get_attribute(tag, "href", 4, &link) != KESTRA_HTML_OK || link.size + 1 > sizeof safe)
        return 0; /* goes on; a longer link stays as it is */
    memcpy(safe + 6, (const char *)link.data + 5, link.size - 5);
    return kestra_html_edit_set_attribute(tag, "href", 4, safe, link.size + 1);
}

static uint32_t rewrite(kestra_html_rewriter *rewriter, const char *path) {
    const char *selector = "a[href^='http:' i]";
    uint32_t result = kestra_html_rewriter_on_element(rewriter, selector, strlen(selector), make_safe, NULL, NULL, 0);
    if (result == KESTRA_HTML_OK)
        result = kestra_html_rewriter_start(rewriter, 0, KESTRA_HTML_DATA_AUTO);
    if (result == KESTRA_HTML_OK)
        result = kestra_html_rewriter_feed_file(rewriter, path);
    /* Also after a failure: what is not yet written is written as it came. */
    if (result == KESTRA_HTML_OK)
        return kestra_html_rewriter_end(rewriter);
    kestra_html_rewriter_end(rewriter);
    return result;
}

int main(int argc, char **argv) {
    kestra_html_rewriter_options options = {.size = sizeof(kestra_html_rewriter_options)};
    kestra_html_rewriter *rewriter;
    uint32_t result;
    if (argc != 3) {
        fputs("usage: rewrite PAGE OUTPUT\n", stderr);
        return 2;
    }
    options.on_output = write_output;
    options.user = fopen(argv[2], "wb");
    if (options.user == NULL) {
        perror(argv[2]);
        return 1;
    }
    result = kestra_html_rewriter_create(&options, &rewriter);
    if (result == KESTRA_HTML_OK)
        result = rewrite(rewriter, argv[1]);
    if (fclose(options.user) != 0)
        result = KESTRA_HTML_STREAM_FAILED;
    if (result != KESTRA_HTML_OK)
        fprintf(stderr, "%s: %s\n", argv[1], kestra_html_result_text(result));
    kestra_html_rewriter_destroy(rewriter);
    return result == KESTRA_HTML_OK ? 0 : 1;
}
