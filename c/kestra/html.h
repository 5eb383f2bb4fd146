#ifndef KESTRA_HTML_H
#define KESTRA_HTML_H

#include <stddef.h>
#include <stdint.h>

/// @file
/// The library for C, and for every language that can call C. C99; a C++ program may use it too.
///
///     static uint32_t on_token(void *user, const kestra_html_token *token) { ... return 0; }
///
///     kestra_html_options options = {.size = sizeof options};
///     options.encoding = KESTRA_HTML_UTF8;
///     options.on_token = on_token;
///     kestra_html_parser *parser;
///     result = kestra_html_parser_create(&options, &parser);
///     result = kestra_html_parser_start(parser, 0, KESTRA_HTML_DATA_AUTO);
///     result = kestra_html_parser_feed(parser, data, size);  // any number of times
///     result = kestra_html_parser_end(parser);
///     kestra_html_parser_destroy(parser);
///
/// **Results**: every call that can fail returns a `kestra_html_result`; 0 is success. A null
/// handle or a null output is answered with KESTRA_HTML_INVALID_ARGUMENT.
///
/// **Ownership**: what `..._create` makes, the caller gives to `..._destroy`. Everything else that
/// the library hands out is borrowed: tokens and their strings until the callback returns, texts of
/// the library for ever. The library never frees what the caller allocated, nor the reverse.
///
/// **Callbacks** run inside the call that fed the input, on its thread. They must return: a
/// `longjmp` out of one is not allowed. An exception of a C++ host that leaves one ends the
/// document as `kestra_html_parser_stop` does, and the call answers KESTRA_HTML_CALLBACK_FAILED.
///
/// **Exceptions**: none leave a function of this header. When memory is exhausted, the answer is
/// KESTRA_HTML_OUT_OF_MEMORY.
///
/// **Threads**: a handle is for one thread at a time; different handles, and the functions without
/// a handle, are for any number of threads at once.
///
/// **Structs** that begin with `size` may grow: set it to the size that your compiler knows, and
/// everything that you do not set to 0. A struct larger than the library knows is accepted when
/// what the library does not know is 0.
///
/// **Sizes and offsets** are in bytes, those of UTF-16 as well.

/// @def KESTRA_HTML_CALL
/// Marks the functions that the library exports.

#if defined(KESTRA_HTML_STATIC)
#define KESTRA_HTML_CALL
#elif defined(_WIN32)
#if defined(KESTRA_HTML_BUILD)
#define KESTRA_HTML_CALL __declspec(dllexport)
#else
#define KESTRA_HTML_CALL __declspec(dllimport)
#endif
#else
#define KESTRA_HTML_CALL __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// ---- Results ------------------------------------------------------------------------------------

/// What calls answer. Values that a stream of the host returns come through unchanged.
typedef enum kestra_html_result {
    KESTRA_HTML_OK = 0,                     ///< success
    KESTRA_HTML_INVALID_ARGUMENT = 2,       ///< a null pointer, a value out of range, a call out of a callback
    KESTRA_HTML_OUT_OF_MEMORY = 8,          ///< of a feeding or ending call: as 0, but a token was lost
    KESTRA_HTML_MALFORMED = 11,             ///< a construct lacks a part, and cannot be read again
    KESTRA_HTML_UNEXPECTED_CHARACTER = 12,  ///< the same for a character that is not allowed
    KESTRA_HTML_UNTERMINATED = 16,          ///< the same for a construct that the end of the input cut
    KESTRA_HTML_UNSUPPORTED_CHARSET = 50,   ///< there is no converter, or it failed
    KESTRA_HTML_SHORT_READ = 507,           ///< a stream gave less than before, or nothing again and again
    KESTRA_HTML_STREAM_FAILED = 512,        ///< a stream could not be read or positioned
    KESTRA_HTML_SELF_CHECK_FAILED = 704,    ///< the tokens written back differ from the input
    KESTRA_HTML_PARSE_AGAIN = 705,          ///< the charset was found late: start again with it
    KESTRA_HTML_NOT_DETECTED = 706,         ///< all was parsed, but the charset could not be detected
    KESTRA_HTML_TOO_LITTLE_DATA = 707,      ///< fewer than 256 bytes are not looked at by the detector
    KESTRA_HTML_NOT_CONFIDENT = 708,        ///< the detector has no answer, or not confidently enough
    KESTRA_HTML_DETECTOR_FAILED = 709,      ///< the call of the detector failed
    KESTRA_HTML_STOPPED = 710,              ///< a callback has stopped the document
    KESTRA_HTML_LIMIT_EXCEEDED = 711,       ///< a token is longer, or has more attributes, than allowed
    KESTRA_HTML_OVER = 720,                 ///< an edit after its callback has returned
    KESTRA_HTML_WRONG_KIND = 721,           ///< the token has no attributes, or no text of its own
    KESTRA_HTML_NO_ATTRIBUTE = 722,         ///< there is no attribute of that name
    KESTRA_HTML_BAD_NAME = 723,             ///< no name of an attribute
    KESTRA_HTML_NO_CONTENT = 724,           ///< a void element has no content
    KESTRA_HTML_ENDS_EARLY = 725,           ///< the text would end its script, style sheet or comment
    KESTRA_HTML_NOT_IN_CHARSET = 726,       ///< the charset lacks a character, and a reference means nothing there
    KESTRA_HTML_BAD_SELECTOR = 727,         ///< a selector that cannot be read, or is not supported
    KESTRA_HTML_CALLBACK_FAILED = 730       ///< an exception left a callback
} kestra_html_result;

/// What a result means, in English, NUL-terminated; for an unknown one "unknown result".
KESTRA_HTML_CALL const char* kestra_html_result_text(uint32_t result);

/// The version of this header.
#define KESTRA_HTML_HEADER_VERSION "0.1.0"

/// The version of the library, written like that of the header.
KESTRA_HTML_CALL const char* kestra_html_version(void);

// ---- Strings and places -------------------------------------------------------------------------

/// A borrowed string, not NUL-terminated. UTF-16 is in the byte order of the machine, and aligned.
typedef struct kestra_html_string {
    const void* data;  ///< never null
    size_t size;       ///< in bytes
} kestra_html_string;

/// How strings are delivered.
typedef enum kestra_html_encoding {
    KESTRA_HTML_BYTES = 0,  ///< the bytes of the document, in its charset, as they are written
    KESTRA_HTML_UTF8 = 1,   ///< decoded; what cannot be decoded is U+FFFD
    KESTRA_HTML_UTF16 = 2   ///< decoded, as 16-bit units
} kestra_html_encoding;

/// Where a token lies. Offsets count from the first byte fed after `kestra_html_parser_start`.
typedef struct kestra_html_place {
    uint64_t begin;   ///< of the first byte
    uint64_t end;     ///< after the last byte
    uint64_t line;    ///< of `begin`, from 1
    uint64_t column;  ///< of `begin`, from 1, in characters
} kestra_html_place;

// ---- Tokens -------------------------------------------------------------------------------------

/// The kinds of tokens. The last ones carry no markup, and come only with KESTRA_HTML_EVENTS.
typedef enum kestra_html_kind {
    KESTRA_HTML_TEXT = 1,                  ///< text between two constructs, or a regular expression of a script
    KESTRA_HTML_BLOCK_COMMENT = 2,         ///< of a script or style sheet, without its marks
    KESTRA_HTML_LINE_COMMENT = 3,          ///< of a script; none in KESTRA_HTML_BYTES of 8-bit text
    KESTRA_HTML_SINGLE_QUOTED_STRING = 4,  ///< of a script, without its quotes
    KESTRA_HTML_DOUBLE_QUOTED_STRING = 5,  ///< the same in quotation marks
    KESTRA_HTML_START_TAG = 6,             ///< a tag, unless it ends with "/>"
    KESTRA_HTML_SHORT_TAG = 7,             ///< a tag that ends with "/>"
    KESTRA_HTML_END_TAG = 8,               ///< "</...>"
    KESTRA_HTML_CDATA = 9,                 ///< "<![CDATA[...]]>"
    KESTRA_HTML_CONDITIONAL = 10,          ///< "<![if ...]>", "<![endif]>"
    KESTRA_HTML_COMMENT = 11,              ///< "<!--...-->"
    KESTRA_HTML_DECLARATION = 12,          ///< "<!DOCTYPE ...>"
    KESTRA_HTML_INSTRUCTION = 13,          ///< "<?...>"
    KESTRA_HTML_JUNK = 14,                 ///< what fits no construct
    KESTRA_HTML_DOCUMENT_START = 32,       ///< before everything else
    KESTRA_HTML_DOCUMENT_END = 33,         ///< after everything else, unless the document ended with an error
    KESTRA_HTML_MARK = 34,                 ///< a byte-order mark; its bytes are the text
    KESTRA_HTML_CHARSET = 35,              ///< the charset in force: `kestra_html_parser_charset`
    KESTRA_HTML_SCRIPT_START = 36,         ///< after the start tag of a `script`
    KESTRA_HTML_SCRIPT_END = 37,           ///< after the end tag of a `script`, also of a stray one
    KESTRA_HTML_STYLE_START = 38,          ///< after the start tag of a `style`
    KESTRA_HTML_STYLE_END = 39             ///< after the end tag of a `style`, also of a stray one
} kestra_html_kind;

/// The strings of a token, beside its attributes. Together, with the punctuation of its kind, they
/// have every character of it.
typedef enum kestra_html_part {
    KESTRA_HTML_PART_NAME = 0,        ///< of a tag, an instruction, a declaration; "CDATA", "if", "endif"
    KESTRA_HTML_PART_TEXT = 1,        ///< what a text, string, comment, section or junk has; the condition of "if"
    KESTRA_HTML_PART_PREFIX = 2,      ///< white space before the name
    KESTRA_HTML_PART_AFTER_NAME = 3,  ///< white space after the name of an end tag
    KESTRA_HTML_PART_SUFFIX = 4,      ///< white space after the last attribute
    KESTRA_HTML_PART_TAIL = 5         ///< of a conditional section, between "]" and ">"
} kestra_html_part;

/// What a token has beside its strings; may be combined.
enum {
    KESTRA_HTML_CLOSED = 1,          ///< its ">", "-->" or "]]>" was there
    KESTRA_HTML_BRACKET_CLOSED = 2,  ///< of a conditional section: the "]"
    KESTRA_HTML_SLASH = 4,           ///< of an end tag or an instruction: a "/" before the ">"
    KESTRA_HTML_FREE_STYLE = 8       ///< an instruction that is all text
};

/// The quotes of a value.
typedef enum kestra_html_quote {
    KESTRA_HTML_QUOTE_NONE = 0,    ///< there are none
    KESTRA_HTML_QUOTE_SINGLE = 1,  ///< "'"
    KESTRA_HTML_QUOTE_DOUBLE = 2   ///< the quotation mark
} kestra_html_quote;

/// An attribute, or an item of a declaration, which has a value and no name.
typedef struct kestra_html_attribute {
    size_t size;                       ///< of this struct
    kestra_html_string name;           ///< as written
    kestra_html_string value;          ///< as written, without quotes; empty when there is none
    kestra_html_string prefix;         ///< white space before it
    kestra_html_string before_equals;  ///< white space before the "="
    kestra_html_string after_equals;   ///< white space after the "="
    uint32_t quote;                    ///< a `kestra_html_quote`
    uint32_t has_value;                ///< 1 when there was a "=", or for an item
} kestra_html_attribute;

/// Where an attribute lies; offsets as in `kestra_html_place`.
typedef struct kestra_html_attribute_place {
    uint64_t begin;        ///< of the white space before it
    uint64_t end;          ///< after its value, the closing quote included, or after its name when it has none
    uint64_t name_begin;   ///< of the name
    uint64_t name_end;     ///< after the name
    uint64_t value_begin;  ///< without quotes; `name_end` when there is no value
    uint64_t value_end;    ///< after the value, before its closing quote
} kestra_html_attribute_place;

/// A token that is being delivered. Borrowed, with all its strings, until the callback returns.
/// Nothing is converted, split or counted before it is asked for.
typedef struct kestra_html_token kestra_html_token;

/// Gets the tokens of a document, one a call.
/// @return 0 to go on; any other value stops the document, as `kestra_html_parser_stop`
typedef uint32_t (*kestra_html_token_callback)(void* user, const kestra_html_token* token);

/// A `kestra_html_kind`; 0 for null.
KESTRA_HTML_CALL uint32_t kestra_html_token_kind(const kestra_html_token* token);

/// KESTRA_HTML_CLOSED and its like; 0 for null.
KESTRA_HTML_CALL uint32_t kestra_html_token_flags(const kestra_html_token* token);

/// The place of the token; of one without markup, that of the tag that caused it.
/// @return 0; 2 for null
KESTRA_HTML_CALL uint32_t kestra_html_token_place(const kestra_html_token* token, kestra_html_place* place);

/// A string of the token, in the encoding of the options; empty when its kind has no such part.
/// @param token   borrowed, as in every function of tokens
/// @param part    a `kestra_html_part`
/// @param string  untouched when the answer is not 0
/// @return 0; 2 for null or an unknown part; 8; 50 for junk that cannot be decoded
KESTRA_HTML_CALL uint32_t kestra_html_token_string(const kestra_html_token* token, uint32_t part,
                                                   kestra_html_string* string);

/// The text with its character references decoded, as of text between tags. There are none in
/// scripts and style sheets.
/// @return as `kestra_html_token_string`
KESTRA_HTML_CALL uint32_t kestra_html_token_decoded_text(const kestra_html_token* token, kestra_html_string* string);

/// The number of attributes, or of the items of a declaration. A bare word that a value has taken
/// up, as in `<a href=/one download>`, is an attribute of its own; not in KESTRA_HTML_BYTES of
/// UTF-16, nor with KESTRA_HTML_WORDS_IN_VALUES.
/// @return 0; 2 for null; 8
KESTRA_HTML_CALL uint32_t kestra_html_token_attribute_count(const kestra_html_token* token, size_t* count);

/// What most hosts ask of every token, in one call.
typedef struct kestra_html_summary {
    size_t size;              ///< of this struct
    uint32_t kind;            ///< as `kestra_html_token_kind`
    uint32_t reserved;        ///< 0
    kestra_html_string name;  ///< KESTRA_HTML_PART_NAME
    kestra_html_string text;  ///< KESTRA_HTML_PART_TEXT
    size_t attribute_count;   ///< as `kestra_html_token_attribute_count`
} kestra_html_summary;

/// The same as the calls for the kind, both strings and the count, at the cost of one.
/// @param token    borrowed
/// @param summary  its `size` is set before the call; the rest is untouched when the answer is not
///                 0
/// @return 0; 2 for null or a `size` that is too small; 8; 50 for junk that cannot be decoded
KESTRA_HTML_CALL uint32_t kestra_html_token_summary(const kestra_html_token* token, kestra_html_summary* summary);

/// The same as `kestra_html_token_callback`, with the summary already made: the quickest way to see
/// every token.
/// @param user     that of the options
/// @param token    borrowed until the callback returns
/// @param summary  borrowed until the callback returns. Its `size` is what the library knows, and
///                 may grow. The text of junk that cannot be decoded is a null pointer.
/// @return as `kestra_html_token_callback`
typedef uint32_t (*kestra_html_summary_callback)(void* user, const kestra_html_token* token,
                                                 const kestra_html_summary* summary);

/// An attribute, or an item of a declaration.
/// @param token      borrowed
/// @param index      from 0, in document order
/// @param attribute  its `size` is set before the call; the rest is untouched when the answer is
///                   not 0
/// @return 0; 2 for null, an index out of range, or a `size` that is too small; 8
KESTRA_HTML_CALL uint32_t kestra_html_token_attribute(const kestra_html_token* token, size_t index,
                                                      kestra_html_attribute* attribute);

/// The value of an attribute with its character references decoded.
/// @return 0; 2 for null or an index out of range; 8
KESTRA_HTML_CALL uint32_t kestra_html_token_decoded_value(const kestra_html_token* token, size_t index,
                                                          kestra_html_string* value);

/// Where an attribute lies. The items of a declaration have no places.
/// @return 0; 2 for null or an index out of range; 721 for an item; 8
KESTRA_HTML_CALL uint32_t kestra_html_token_attribute_place(const kestra_html_token* token, size_t index,
                                                            kestra_html_attribute_place* place);

/// The first attribute of a name, compared without the case of "A" to "Z".
/// @param token      borrowed
/// @param name       in ASCII
/// @param name_size  its bytes
/// @param index      untouched when the answer is not 0
/// @return 0; 2 for null; 722 when there is none; 8
KESTRA_HTML_CALL uint32_t kestra_html_token_find_attribute(const kestra_html_token* token, const char* name,
                                                           size_t name_size, size_t* index);

// ---- Parsers ------------------------------------------------------------------------------------

/// What the bytes of a document are.
typedef enum kestra_html_data_type {
    KESTRA_HTML_DATA_AUTO = 0,  ///< decided by a byte-order mark in the first bytes
    KESTRA_HTML_DATA_8BIT = 1,  ///< 8-bit text in the charset given
    KESTRA_HTML_DATA_UTF16 = 2  ///< low byte first
} kestra_html_data_type;

/// How the content of `script`, `style` and similar elements is read.
typedef enum kestra_html_script_mode {
    KESTRA_HTML_SCRIPT_AS_TOKENS = 0,  ///< strings and comments of scripts are tokens
    KESTRA_HTML_SCRIPT_AS_TEXT = 1     ///< the content of a script is one text, as browsers end it
} kestra_html_script_mode;

/// What is compared at the end of a document.
typedef enum kestra_html_self_check {
    KESTRA_HTML_CHECK_OFF = 0,  ///< nothing
    KESTRA_HTML_CHECK_CRC = 1,  ///< compare the checksums of the input and of the tokens written back
    KESTRA_HTML_CHECK_COPY = 2  ///< and keep what is written back
} kestra_html_self_check;

/// Flags of the options; may be combined.
enum {
    KESTRA_HTML_EVENTS = 1,           ///< deliver also what carries no markup
    KESTRA_HTML_WORDS_IN_VALUES = 2,  ///< attributes as the records have them, bare words in values
    KESTRA_HTML_CHARSET_ERRORS = 4    ///< note whether decoding lost something; costs time
};

/// Zeroed, with `size`, all is at its default.
typedef struct kestra_html_options {
    size_t size;                          ///< of this struct
    uint32_t encoding;                    ///< a `kestra_html_encoding`
    uint32_t flags;                       ///< KESTRA_HTML_EVENTS and its like
    uint32_t script_mode;                 ///< a `kestra_html_script_mode`
    uint32_t self_check;                  ///< a `kestra_html_self_check`
    uint64_t max_token_size;              ///< bytes of the document; 0 for no limit
    uint64_t max_attributes;              ///< of one tag; 0 for no limit
    uint32_t min_confidence;              ///< what the detector must reach, 1 to 100; 0 for 50
    uint32_t reserved;                    ///< 0
    void* user;                           ///< handed to the callback
    kestra_html_token_callback on_token;  ///< null when only results are wanted
    /// Called instead of `on_token`, which must be null then.
    kestra_html_summary_callback on_summary;
    /// What the detector looks at of a document, in bytes; 0 for 16,384. UINT64_MAX is all of it.
    uint64_t max_detect_size;
} kestra_html_options;

/// Parses one document at a time: bytes in, tokens out.
typedef struct kestra_html_parser kestra_html_parser;

/// Makes a parser.
/// @param options  copied; null for the defaults
/// @param parser   receives the parser, to be given to `kestra_html_parser_destroy`
/// @return 0; 2 for null or bad options, and `*parser` is null then; 8
KESTRA_HTML_CALL uint32_t kestra_html_parser_create(const kestra_html_options* options, kestra_html_parser** parser);

/// Frees a parser. Not in a callback. Null is allowed.
KESTRA_HTML_CALL void kestra_html_parser_destroy(kestra_html_parser* parser);

/// Begins a document. What an unfinished one left is dropped.
/// @param parser     that of the document, as in every function of parsers
/// @param charset    a Windows code page, such as 65001 for UTF-8; 0 when it is not known: then
///                   byte-order mark, `meta` tags, and for streams the detector decide
/// @param data_type  a `kestra_html_data_type`
/// @return 0; 2 for null or out of a callback; 8; 710
KESTRA_HTML_CALL uint32_t kestra_html_parser_start(kestra_html_parser* parser, uint32_t charset, uint32_t data_type);

/// Parses the next piece, of any size. A construct that turns out to be none cannot be read again
/// from pieces: the document ends with 11, 12 or 16. Who has a document as a whole uses
/// `kestra_html_parser_feed_document`, where such a construct is delivered as junk.
/// @param parser  that of the document
/// @param data    borrowed for the call
/// @param size    in bytes
/// @return 0; 2 for null with a size, for UTF-16 in an odd number of bytes, or out of a callback; 8
///         as 0, but a token was lost; 11, 12, 16; 705; 710; 711; 730
KESTRA_HTML_CALL uint32_t kestra_html_parser_feed(kestra_html_parser* parser, const void* data, size_t size);

/// Parses a document, or the rest of it, that lies in memory as a whole, up to but not including
/// its end.
/// @param parser  that of the document
/// @param data    borrowed for the call
/// @param size    in bytes
/// @return as `kestra_html_parser_feed`, and 706
KESTRA_HTML_CALL uint32_t kestra_html_parser_feed_document(kestra_html_parser* parser, const void* data, size_t size);

/// Where a document comes from. Every function returns 0, or a code of its own that the parse then
/// answers. Borrowed for the call that reads it.
typedef struct kestra_html_stream {
    size_t size;  ///< of this struct
    void* user;   ///< handed to the functions
    /// Reads up to `size` bytes. Sets `*bytes_read`, 0 only at the end.
    uint32_t (*read)(void* user, void* buffer, size_t size, size_t* bytes_read);
    /// Moves to an offset from the start. Null for a stream that cannot: then a broken construct
    /// ends the document.
    uint32_t (*seek)(void* user, uint64_t position);
} kestra_html_stream;

/// Parses a stream from where it is to its end.
/// @return as `kestra_html_parser_feed_document`; 507; a code of the stream
KESTRA_HTML_CALL uint32_t kestra_html_parser_feed_stream(kestra_html_parser* parser, const kestra_html_stream* stream);

/// Parses a file.
/// @param parser  that of the document
/// @param path    in UTF-8, NUL-terminated, on Windows too
/// @return as `kestra_html_parser_feed_document`; 2 when it cannot be opened; 512
KESTRA_HTML_CALL uint32_t kestra_html_parser_feed_file(kestra_html_parser* parser, const char* path);

/// Ends the document: delivers what is open.
/// @return 0, also when no document is open; 2 for null or out of a callback; 8 as 0, but a token
///         was lost; 11, 12, 16; 704; 710; 711; 730
KESTRA_HTML_CALL uint32_t kestra_html_parser_end(kestra_html_parser* parser);

/// Ends the document out of a callback: nothing more is delivered, and the feeding call answers
/// 710.
/// @return 0; 2 for null or outside a callback
KESTRA_HTML_CALL uint32_t kestra_html_parser_stop(kestra_html_parser* parser);

/// @name Questions. With null they answer 0.
/// @{

/// The charset in force, a Windows code page; 0 when it is not known.
KESTRA_HTML_CALL uint32_t kestra_html_parser_charset(const kestra_html_parser* parser);
/// 1 when the document is read as UTF-16.
KESTRA_HTML_CALL uint32_t kestra_html_parser_is_utf16(const kestra_html_parser* parser);
/// 1 when the charset was chosen by the detector.
KESTRA_HTML_CALL uint32_t kestra_html_parser_used_detector(const kestra_html_parser* parser);
/// How sure the detector was when a parse of this parser asked it last, also when it was not sure
/// enough: of 100; 0 when it was never asked or had no answer.
KESTRA_HTML_CALL uint32_t kestra_html_parser_detected_confidence(const kestra_html_parser* parser);
/// 1 with KESTRA_HTML_CHARSET_ERRORS when something could not be decoded without loss.
KESTRA_HTML_CALL uint32_t kestra_html_parser_has_charset_errors(const kestra_html_parser* parser);
/// The code of the last conversion that failed, so that a token was lost: 50 or 8; 0 for none.
KESTRA_HTML_CALL uint32_t kestra_html_parser_conversion_error(const kestra_html_parser* parser);
/// The line of the next character, from 1.
KESTRA_HTML_CALL uint64_t kestra_html_parser_line(const kestra_html_parser* parser);
/// The column of the next character, from 1, in characters.
KESTRA_HTML_CALL uint64_t kestra_html_parser_column(const kestra_html_parser* parser);

/// @}

/// The place of the token that was delivered last. After 711 its `end` is the first byte of the
/// token that was too long.
/// @return 0; 2 for null
KESTRA_HTML_CALL uint32_t kestra_html_parser_place(const kestra_html_parser* parser, kestra_html_place* place);

/// Other limits, at once.
/// @return 0; 2 for null
KESTRA_HTML_CALL uint32_t kestra_html_parser_set_limits(kestra_html_parser* parser, uint64_t max_token_size,
                                                        uint64_t max_attributes);

/// Gets bytes, borrowed for the call. @return 0 to go on; any other value ends the writing
typedef uint32_t (*kestra_html_write_callback)(void* user, const void* data, size_t size);

/// Writes what the tokens were, written back; needs KESTRA_HTML_CHECK_COPY, and
/// `kestra_html_parser_end` before.
/// @return 0; 2 for null, or when nothing was kept; 512; a value of the callback
KESTRA_HTML_CALL uint32_t kestra_html_parser_write_copy(kestra_html_parser* parser, kestra_html_write_callback write,
                                                        void* user);

/// Whether a document is reproduced from its tokens, to the last byte.
/// @param data     borrowed for the call
/// @param size     in bytes
/// @param charset  as in `kestra_html_parser_start`
/// @return 0 when it is; 704 when not; 2 for null with a size; 8
KESTRA_HTML_CALL uint32_t kestra_html_check(const void* data, size_t size, uint32_t charset);

// ---- Charsets -----------------------------------------------------------------------------------

/// Where an answer of `kestra_html_detect` comes from.
typedef enum kestra_html_charset_source {
    KESTRA_HTML_SOURCE_NONE = 0,     ///< there is no answer
    KESTRA_HTML_SOURCE_MARK = 1,     ///< a byte-order mark
    KESTRA_HTML_SOURCE_META = 2,     ///< a `meta` tag
    KESTRA_HTML_SOURCE_DETECTOR = 3  ///< the bytes themselves
} kestra_html_charset_source;

/// What `kestra_html_detect` finds.
typedef struct kestra_html_detection {
    size_t size;              ///< of this struct
    uint32_t charset;         ///< a Windows code page; 0 when there is no answer
    uint32_t confidence;      ///< 0 to 100; 100 for a mark and a declaration
    uint32_t source;          ///< a `kestra_html_charset_source`
    kestra_html_string name;  ///< the registered name, in ASCII, for ever; empty when there is none
} kestra_html_detection;

/// Finds the charset of a document: by its mark, by what its first 16,384 bytes declare, or by the
/// detector.
/// @param data       the document, or its beginning; borrowed for the call
/// @param size       in bytes
/// @param detection  its `size` is set before the call; the rest is written also for 706 to 709
/// @return 0; 2 for null; 706 when nothing is declared and the detector has no usable answer, as
///         for ASCII; 707 when there is too little for the detector; 708; 709; 8
KESTRA_HTML_CALL uint32_t kestra_html_detect(const void* data, size_t size, kestra_html_detection* detection);

/// `kestra_html_detect`, looking at as many bytes as the host says. A page that begins with a long
/// script has its text, and so what the detector needs, after the first 16,384 bytes.
/// @param data     the document, or its beginning; borrowed for the call
/// @param size     in bytes
/// @param options  `max_detect_size` is the most bytes that are looked at for a declaration and by
///                 the detector: 0 for 16,384, UINT64_MAX for all of `data`. `min_confidence` is
///                 used as well, the rest ignored. Null is as `kestra_html_detect`. Time is in
///                 proportion to the bytes; docs/charset-detection.md has the memory
/// @param detection  its `size` is set before the call; the rest is written as by
///                   `kestra_html_detect`
/// @return as `kestra_html_detect`; 2 also for bad options
KESTRA_HTML_CALL uint32_t kestra_html_detect_with_options(const void* data, size_t size,
                                                          const kestra_html_options* options,
                                                          kestra_html_detection* detection);

/// The registered name of a code page, such as "UTF-8", in ASCII, for ever; empty when it has none.
/// @return 0; 2 for null
KESTRA_HTML_CALL uint32_t kestra_html_charset_name(uint32_t charset, kestra_html_string* name);

/// The code page of a registered name or alias, in ASCII, whatever its case; 0 when unknown.
KESTRA_HTML_CALL uint32_t kestra_html_charset_code(const char* name, size_t name_size);

// ---- Rewriting ----------------------------------------------------------------------------------

/// Copies a document, and changes what callbacks ask for. All else is copied as the bytes that came
/// in, whatever the answers are.
typedef struct kestra_html_rewriter kestra_html_rewriter;

/// A token of a rewriter. Borrowed until the callback returns.
typedef struct kestra_html_edit_token kestra_html_edit_token;

/// An element whose start tag is delivered. Borrowed until the callback returns.
typedef struct kestra_html_edit_element kestra_html_edit_element;

/// Zeroed, with `size` and `on_output`, all is at its default.
typedef struct kestra_html_rewriter_options {
    size_t size;                   ///< of this struct
    uint32_t script_mode;          ///< a `kestra_html_script_mode`
    uint32_t reserved;             ///< 0
    uint64_t max_token_size;       ///< bytes of the document; 0 for no limit
    uint64_t max_attributes;       ///< of one tag; 0 for no limit
    uint64_t max_depth;            ///< of open elements; 0 for no limit
    uint64_t max_open_attributes;  ///< of all open elements; 0 for no limit
    void* user;                    ///< handed to `on_output`
    /// Gets the output in parts of any size. After a value other than 0 nothing more is written,
    /// and every call that feeds or ends this document answers that value.
    kestra_html_write_callback on_output;
} kestra_html_rewriter_options;

/// Makes a rewriter.
/// @param options   copied
/// @param rewriter  receives the rewriter, to be given to `kestra_html_rewriter_destroy`
/// @return 0; 2 for null or bad options, and `*rewriter` is null then; 8
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_create(const kestra_html_rewriter_options* options,
                                                      kestra_html_rewriter** rewriter);
/// Frees a rewriter. Not in a callback. Null is allowed. Writes nothing.
KESTRA_HTML_CALL void kestra_html_rewriter_destroy(kestra_html_rewriter* rewriter);

/// Gets the elements that a selector matches, one a call.
/// @return as `kestra_html_token_callback`
typedef uint32_t (*kestra_html_element_callback)(void* user, kestra_html_edit_element* element);

/// Gets the tokens of a content, one a call.
/// @return as `kestra_html_token_callback`
typedef uint32_t (*kestra_html_content_callback)(void* user, kestra_html_edit_token* token);

/// Calls back for every element that a CSS selector matches.
/// @param rewriter       that of the documents
/// @param selector       in UTF-8: types, `*`, `#id`, `.class`, attributes, joined by white space
///                       or ">"
/// @param selector_size  in bytes
/// @param callback       not null; used until the rewriter is destroyed
/// @param user           handed to the callback
/// @param message        receives what is wrong with the selector, cut to `message_size` with its
///                       NUL; may be null
/// @param message_size   in bytes
/// @return 0; 2 for null or in a callback; 727; 8
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_on_element(kestra_html_rewriter* rewriter, const char* selector,
                                                          size_t selector_size, kestra_html_element_callback callback,
                                                          void* user, char* message, size_t message_size);

/// Calls back for every token in the content of the elements that a selector matches; with an empty
/// one, for every token of the document.
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_on_content(kestra_html_rewriter* rewriter, const char* selector,
                                                          size_t selector_size, kestra_html_content_callback callback,
                                                          void* user, char* message, size_t message_size);

/// Begins a document. This function and the next ones answer as those of the parser; broken
/// constructs are read again from the bytes at hand, so that 11, 12 and 16 do not occur. After
/// another answer than 0 and 8 the rest of the document is copied as it is: go on feeding.
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_start(kestra_html_rewriter* rewriter, uint32_t charset,
                                                     uint32_t data_type);
/// As `kestra_html_parser_feed`.
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_feed(kestra_html_rewriter* rewriter, const void* data, size_t size);
/// As `kestra_html_parser_feed_stream`; `seek` is not called.
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_feed_stream(kestra_html_rewriter* rewriter,
                                                           const kestra_html_stream* stream);
/// As `kestra_html_parser_feed_file`.
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_feed_file(kestra_html_rewriter* rewriter, const char* path);
/// Ends the document: writes what is left of it.
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_end(kestra_html_rewriter* rewriter);
/// As `kestra_html_parser_charset`.
KESTRA_HTML_CALL uint32_t kestra_html_rewriter_charset(const kestra_html_rewriter* rewriter);

/// What an inserted string is.
typedef enum kestra_html_content {
    KESTRA_HTML_AS_TEXT = 0,   ///< "&", "<" and ">" become references
    KESTRA_HTML_AS_MARKUP = 1  ///< written as it is
} kestra_html_content;

/// @name Edits
/// Texts, names and values are UTF-8; `size` is theirs. Every edit returns 0; 2 for null or for
/// what is no UTF-8; 8; 720; or the code that is named. An edit that does not return 0 changes
/// nothing.
/// @{

/// A `kestra_html_kind`; 0 for null, for a token that is over, and for one without markup.
KESTRA_HTML_CALL uint32_t kestra_html_edit_kind(const kestra_html_edit_token* token);
/// The place of the token.
KESTRA_HTML_CALL uint32_t kestra_html_edit_place(const kestra_html_edit_token* token, kestra_html_place* place);
/// The bytes of the token as they came in.
KESTRA_HTML_CALL uint32_t kestra_html_edit_bytes(const kestra_html_edit_token* token, kestra_html_string* bytes);
/// Writes something in place of the token. `content` is a `kestra_html_content`, here and below.
KESTRA_HTML_CALL uint32_t kestra_html_edit_replace(kestra_html_edit_token* token, const char* data, size_t size,
                                                   uint32_t content);
/// Writes nothing in place of the token.
KESTRA_HTML_CALL uint32_t kestra_html_edit_remove(kestra_html_edit_token* token);
/// Writes something right before the token, after what earlier calls wrote there.
KESTRA_HTML_CALL uint32_t kestra_html_edit_insert_before(kestra_html_edit_token* token, const char* data, size_t size,
                                                         uint32_t content);
/// Writes something after the token, after what earlier calls wrote there.
KESTRA_HTML_CALL uint32_t kestra_html_edit_insert_after(kestra_html_edit_token* token, const char* data, size_t size,
                                                        uint32_t content);
/// Another text for a text or a comment. 721 for other kinds; 725, 726.
KESTRA_HTML_CALL uint32_t kestra_html_edit_set_text(kestra_html_edit_token* token, const char* data, size_t size);
/// The value of an attribute, references decoded; borrowed until the next call with this token.
/// 722 when there is none; 721.
KESTRA_HTML_CALL uint32_t kestra_html_edit_get_attribute(kestra_html_edit_token* token, const char* name,
                                                         size_t name_size, kestra_html_string* value);
/// Sets the value, or adds the attribute. 721, 723.
KESTRA_HTML_CALL uint32_t kestra_html_edit_set_attribute(kestra_html_edit_token* token, const char* name,
                                                         size_t name_size, const char* value, size_t value_size);
/// Adds an attribute after the last one. 721, 723.
KESTRA_HTML_CALL uint32_t kestra_html_edit_add_attribute(kestra_html_edit_token* token, const char* name,
                                                         size_t name_size, const char* value, size_t value_size);
/// Writes another name; the value is unchanged. 721, 722, 723.
KESTRA_HTML_CALL uint32_t kestra_html_edit_rename_attribute(kestra_html_edit_token* token, const char* name,
                                                            size_t name_size, const char* new_name,
                                                            size_t new_name_size);
/// Removes an attribute and the white space before it. 721, 722.
KESTRA_HTML_CALL uint32_t kestra_html_edit_remove_attribute(kestra_html_edit_token* token, const char* name,
                                                            size_t name_size);

/// The start tag of an element; null for null.
KESTRA_HTML_CALL kestra_html_edit_token* kestra_html_element_tag(kestra_html_edit_element* element);
/// The name, with "A" to "Z" in lower case.
KESTRA_HTML_CALL uint32_t kestra_html_element_name(kestra_html_edit_element* element, kestra_html_string* name);
/// 0 for a void element; else 1.
KESTRA_HTML_CALL uint32_t kestra_html_element_has_content(const kestra_html_edit_element* element);
/// Where something is put, or what it takes the place of.
typedef enum kestra_html_position {
    KESTRA_HTML_BEFORE = 0,   ///< before the start tag
    KESTRA_HTML_AFTER = 1,    ///< after the end tag
    KESTRA_HTML_PREPEND = 2,  ///< right after the start tag
    KESTRA_HTML_APPEND = 3,   ///< right before the end tag
    KESTRA_HTML_CONTENT = 4,  ///< in place of all between the tags
    KESTRA_HTML_ELEMENT = 5   ///< in place of the element
} kestra_html_position;
/// Writes something at a `kestra_html_position`. 724, 725, 726.
KESTRA_HTML_CALL uint32_t kestra_html_element_write(kestra_html_edit_element* element, uint32_t position,
                                                    const char* data, size_t size, uint32_t content);
/// Writes nothing of the element, its content included.
KESTRA_HTML_CALL uint32_t kestra_html_element_remove(kestra_html_edit_element* element);
/// Writes the content without the two tags.
KESTRA_HTML_CALL uint32_t kestra_html_element_unwrap(kestra_html_edit_element* element);

/// @}

#ifdef __cplusplus
}
#endif

#endif
