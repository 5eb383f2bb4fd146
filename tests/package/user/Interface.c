/* The C interface, as a program of C uses it: every function once. */
#include <kestra/html.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

static void check(int is_right, int line) {
    if (!is_right) {
        printf("Interface.c:%d: wrong\n", line);
        ++failures;
    }
}

#define CHECK(IS_RIGHT) check(IS_RIGHT, __LINE__)

static int is_text(kestra_html_string string, const char *text) {
    return string.size == strlen(text) && memcmp(string.data, text, string.size) == 0;
}

static uint32_t on_token(void *user, const kestra_html_token *token) {
    kestra_html_string string;
    kestra_html_place place;
    size_t index;
    if (kestra_html_token_kind(token) == KESTRA_HTML_START_TAG) {
        kestra_html_attribute attribute = {.size = sizeof(kestra_html_attribute)};
        kestra_html_summary summary = {.size = sizeof summary};
        kestra_html_attribute_place attribute_place;
        CHECK(kestra_html_token_flags(token) == KESTRA_HTML_CLOSED);
        CHECK(kestra_html_token_place(token, &place) == 0 && place.end == 17);
        CHECK(kestra_html_token_string(token, KESTRA_HTML_PART_NAME, &string) == 0 && is_text(string, "a"));
        CHECK(kestra_html_token_attribute_count(token, &index) == 0 && index == 1);
        CHECK(kestra_html_token_summary(token, &summary) == 0 && is_text(summary.name, "a"));
        CHECK(kestra_html_token_find_attribute(token, "href", 4, &index) == 0 && index == 0);
        CHECK(kestra_html_token_attribute(token, 0, &attribute) == 0 && is_text(attribute.value, "x&amp;"));
        CHECK(kestra_html_token_decoded_value(token, 0, &string) == 0 && is_text(string, "x&"));
        CHECK(kestra_html_token_attribute_place(token, 0, &attribute_place) == 0 && attribute_place.name_begin == 3);
        return 0;
    }
    CHECK(kestra_html_token_decoded_text(token, &string) == 0 && is_text(string, "<"));
    CHECK(kestra_html_parser_stop(*(kestra_html_parser **)user) == 0);
    return 0;
}

static uint32_t on_output(void *user, const void *data, size_t size) {
    kestra_html_string *output = user;
    CHECK(output->size + size < 200);
    memcpy((char *)output->data + output->size, data, size);
    output->size += size;
    return 0;
}

static uint32_t read_nothing(void *user, void *buffer, size_t size, size_t *bytes_read) {
    (void)user;
    (void)buffer;
    (void)size;
    *bytes_read = 0;
    return 0;
}

static void use_parser(void) {
    static const char PAGE[] = "<a href='x&amp;'>&lt;";
    const kestra_html_stream stream = {.size = sizeof stream, .read = read_nothing};
    kestra_html_parser *parser = NULL;
    kestra_html_options options = {.size = sizeof options, .encoding = KESTRA_HTML_UTF8};
    kestra_html_place place;
    char copied[200];
    kestra_html_string output = {copied, 0};
    options.user = &parser;
    options.on_token = on_token;
    options.self_check = KESTRA_HTML_CHECK_COPY;
    CHECK(kestra_html_parser_create(&options, &parser) == 0);
    CHECK(kestra_html_parser_set_limits(parser, 1000, 10) == 0);
    CHECK(kestra_html_parser_start(parser, 65001, KESTRA_HTML_DATA_8BIT) == 0);
    CHECK(kestra_html_parser_feed(parser, PAGE, strlen(PAGE)) == 0);
    CHECK(kestra_html_parser_line(parser) == 1 && kestra_html_parser_column(parser) == strlen(PAGE) + 1);
    CHECK(kestra_html_parser_charset(parser) == 65001 && !kestra_html_parser_is_utf16(parser));
    CHECK(!kestra_html_parser_used_detector(parser) && !kestra_html_parser_has_charset_errors(parser));
    CHECK(kestra_html_parser_conversion_error(parser) == 0 && kestra_html_parser_detected_confidence(parser) == 0);
    CHECK(kestra_html_parser_end(parser) == KESTRA_HTML_STOPPED); /* the text was open */
    CHECK(kestra_html_parser_place(parser, &place) == 0 && place.end == strlen(PAGE));
    CHECK(kestra_html_parser_start(parser, 65001, KESTRA_HTML_DATA_8BIT) == 0);
    CHECK(kestra_html_parser_feed_stream(parser, &stream) == 0);
    CHECK(kestra_html_parser_feed_file(parser, "no-such-page.html") == KESTRA_HTML_INVALID_ARGUMENT);
    CHECK(kestra_html_parser_feed_document(parser, PAGE, 17) == 0);
    CHECK(kestra_html_parser_end(parser) == 0);
    CHECK(kestra_html_parser_write_copy(parser, on_output, &output) == 0 && output.size == 17);
    kestra_html_parser_destroy(parser);
}

static uint32_t on_element(void *user, kestra_html_edit_element *element) {
    kestra_html_edit_token *tag = kestra_html_element_tag(element);
    kestra_html_string string;
    (void)user;
    CHECK(kestra_html_element_name(element, &string) == 0);
    CHECK(kestra_html_element_has_content(element) == 1);
    if (is_text(string, "i"))
        return kestra_html_element_remove(element);
    if (is_text(string, "u"))
        return kestra_html_element_unwrap(element);
    CHECK(kestra_html_edit_get_attribute(tag, "c", 1, &string) == 0 && is_text(string, "d"));
    CHECK(kestra_html_edit_set_attribute(tag, "c", 1, "e", 1) == 0);
    CHECK(kestra_html_edit_add_attribute(tag, "f", 1, "g", 1) == 0);
    CHECK(kestra_html_edit_rename_attribute(tag, "f", 1, "h", 1) == 0);
    CHECK(kestra_html_edit_remove_attribute(tag, "c", 1) == 0);
    return kestra_html_element_write(element, KESTRA_HTML_APPEND, "&", 1, KESTRA_HTML_AS_TEXT);
}

static uint32_t on_content(void *user, kestra_html_edit_token *token) {
    kestra_html_string bytes;
    kestra_html_place place;
    (void)user;
    CHECK(kestra_html_edit_bytes(token, &bytes) == 0);
    CHECK(kestra_html_edit_place(token, &place) == 0 && place.end - place.begin == bytes.size);
    if (kestra_html_edit_kind(token) == KESTRA_HTML_COMMENT)
        return kestra_html_edit_remove(token);
    if (kestra_html_edit_kind(token) != KESTRA_HTML_TEXT)
        return 0;
    CHECK(kestra_html_edit_set_text(token, "t", 1) == 0);
    CHECK(kestra_html_edit_insert_before(token, "(", 1, KESTRA_HTML_AS_TEXT) == 0);
    CHECK(kestra_html_edit_insert_after(token, ")", 1, KESTRA_HTML_AS_TEXT) == 0);
    return kestra_html_edit_replace(token, "s", 1, KESTRA_HTML_AS_TEXT);
}

static void use_rewriter(void) {
    static const char PAGE[] = "<b c=d>x<!--y--></b><i>z</i><u></u>";
    const kestra_html_stream stream = {.size = sizeof stream, .read = read_nothing};
    char written[200];
    kestra_html_string output = {written, 0};
    kestra_html_rewriter *rewriter = NULL;
    kestra_html_rewriter_options options = {.size = sizeof options};
    options.user = &output;
    options.on_output = on_output;
    CHECK(kestra_html_rewriter_create(&options, &rewriter) == 0);
    CHECK(kestra_html_rewriter_on_element(rewriter, "*", 1, on_element, NULL, NULL, 0) == 0);
    CHECK(kestra_html_rewriter_on_content(rewriter, "b", 1, on_content, NULL, NULL, 0) == 0);
    CHECK(kestra_html_rewriter_start(rewriter, 65001, KESTRA_HTML_DATA_8BIT) == 0);
    CHECK(kestra_html_rewriter_feed(rewriter, PAGE, strlen(PAGE)) == 0);
    CHECK(kestra_html_rewriter_feed_stream(rewriter, &stream) == 0);
    CHECK(kestra_html_rewriter_feed_file(rewriter, "no-such-page.html") == KESTRA_HTML_INVALID_ARGUMENT);
    CHECK(kestra_html_rewriter_charset(rewriter) == 65001);
    CHECK(kestra_html_rewriter_end(rewriter) == 0);
    CHECK(is_text(output, "<b h=\"g\">(s)&amp;</b>"));
    kestra_html_rewriter_destroy(rewriter);
}

static void use_charsets(void) {
    kestra_html_detection detection = {.size = sizeof detection};
    kestra_html_string name;
    CHECK(kestra_html_detect("<meta charset=koi8-r>", 21, &detection) == 0 && is_text(detection.name, "KOI8-R"));
    const kestra_html_options options = {.size = sizeof options, .max_detect_size = 9};
    CHECK(kestra_html_detect_with_options("<meta charset=koi8-r>", 21, &options, &detection) ==
          KESTRA_HTML_TOO_LITTLE_DATA);
    CHECK(kestra_html_charset_name(65001, &name) == 0 && is_text(name, "UTF-8"));
    CHECK(kestra_html_charset_code("utf-8", 5) == 65001);
    CHECK(kestra_html_check("<a>", 3, 65001) == 0);
    CHECK(strcmp(kestra_html_result_text(0), "success") == 0);
    CHECK(strncmp(kestra_html_version(), "0.1.", 4) == 0);
}

/* Returns how much is wrong. */
int CheckInterface(void) {
    use_parser();
    use_rewriter();
    use_charsets();
    return failures;
}
