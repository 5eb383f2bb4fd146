#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// What a recognizer answers.
enum RecognizerResult : std::uint32_t {
    /// Not yet complete: call `Parse` again while the piece has characters left, else with the next
    /// one.
    SP_NEED_MORE_DATA = 0,
    SP_NOT_THIS_TOKEN = 2,    ///< what follows "<" is no start tag; the characters gathered are text
    SP_MALFORMED = 11,        ///< a required character or part is missing
    SP_UNEXPECTED_CHAR = 12,  ///< a character that is not allowed here
    SP_UNTERMINATED = 16,     ///< from `EndParse`: the input ended inside the construct
    SP_TOKEN_COMPLETE = 19,   ///< complete, or handed over to another recognizer; the text is in the record
};

/// What a parse answers, besides the codes of a recognizer that failed and the codes of the stream
/// (`platform/Results.h`).
enum ParserResult : std::uint32_t {
    PARSER_OK = 0,  ///< success
    /// A null pointer with a size, an odd number of bytes of UTF-16, or called from a callback.
    PARSER_INVALID_ARGUMENT = 2,
    PARSER_RECOVERY_IMPOSSIBLE = 5,  ///< the bytes of a failed construct cannot be read again; never leaves the driver
    /// A hand-over to a recognizer that does not exist; also: the charset detector has no usable
    /// answer.
    PARSER_UNKNOWN_RECOGNIZER = 11,
    PARSER_UNTERMINATED = 16,        ///< the input ended inside a construct, and its bytes cannot be read again
    PARSER_SHORT_READ = 507,         ///< the stream gave fewer bytes than it had given before, or none again and again
    PARSER_SELF_CHECK_FAILED = 704,  ///< the tokens written back differ from the input
    PARSER_PARSE_AGAIN = 705,        ///< the charset has changed: start again with `GetCharset`
    PARSER_CHARSET_NOT_DETECTED = 706,    ///< the charset of a whole stream could not be detected
    PARSER_TOO_LITTLE_DATA = 707,         ///< fewer bytes than the detector needs
    PARSER_DETECTOR_NOT_CONFIDENT = 708,  ///< the detector has no answer, or not confidently enough
    PARSER_DETECTOR_FAILED = 709,         ///< the call of the detector failed
    PARSER_STOPPED = 710,                 ///< a callback has called `Stop`
    PARSER_LIMIT_EXCEEDED = 711,          ///< a token is longer, or has more attributes, than the host allows
};

}  // namespace Kestra::HTML
