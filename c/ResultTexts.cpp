#include "c/kestra/html.h"

const char* kestra_html_result_text(uint32_t result) {
    switch (result) {
        case KESTRA_HTML_OK:
            return "success";
        case KESTRA_HTML_INVALID_ARGUMENT:
            return "an invalid argument, or a file that cannot be opened";
        case KESTRA_HTML_OUT_OF_MEMORY:
            return "not enough memory";
        case KESTRA_HTML_MALFORMED:
            return "malformed markup: a required part is missing";
        case KESTRA_HTML_UNEXPECTED_CHARACTER:
            return "malformed markup: a character is not allowed where it is";
        case KESTRA_HTML_UNTERMINATED:
            return "the input ended inside a construct";
        case KESTRA_HTML_UNSUPPORTED_CHARSET:
            return "there is no converter for the charset";
        case KESTRA_HTML_SHORT_READ:
            return "the stream delivered fewer bytes than before";
        case KESTRA_HTML_STREAM_FAILED:
            return "the stream could not be read or positioned";
        case KESTRA_HTML_SELF_CHECK_FAILED:
            return "the tokens written back differ from the input";
        case KESTRA_HTML_PARSE_AGAIN:
            return "another charset was found: parse again";
        case KESTRA_HTML_NOT_DETECTED:
            return "the charset could not be detected";
        case KESTRA_HTML_TOO_LITTLE_DATA:
            return "too little data to detect the charset";
        case KESTRA_HTML_NOT_CONFIDENT:
            return "the charset detector is not confident enough";
        case KESTRA_HTML_DETECTOR_FAILED:
            return "the charset detector failed";
        case KESTRA_HTML_STOPPED:
            return "a callback has stopped the document";
        case KESTRA_HTML_LIMIT_EXCEEDED:
            return "a token is longer, or has more attributes, than the limit allows";
        case KESTRA_HTML_OVER:
            return "the token to be edited is over";
        case KESTRA_HTML_WRONG_KIND:
            return "this kind of token has no such part";
        case KESTRA_HTML_NO_ATTRIBUTE:
            return "there is no attribute of that name";
        case KESTRA_HTML_BAD_NAME:
            return "this is no name of an attribute";
        case KESTRA_HTML_NO_CONTENT:
            return "the element has no content";
        case KESTRA_HTML_ENDS_EARLY:
            return "the text would end its script, style sheet or comment";
        case KESTRA_HTML_NOT_IN_CHARSET:
            return "the charset of the document lacks a character of the text";
        case KESTRA_HTML_BAD_SELECTOR:
            return "the selector cannot be read";
        case KESTRA_HTML_CALLBACK_FAILED:
            return "an exception left a callback";
        default:
            return "unknown result";
    }
}

const char* kestra_html_version(void) {
    return KESTRA_HTML_HEADER_VERSION;
}
