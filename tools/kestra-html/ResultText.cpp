#include "tools/kestra-html/ResultText.h"

#include <fmt/format.h>

#include "html/framework/ResultCodes.h"
#include "html/rewrite/RewriteResults.h"
#include "html/stateless/StatelessResults.h"
#include "platform/Results.h"
#include "tools/kestra-html/CharsetText.h"

namespace Kestra::Tool {

namespace {

std::string_view GetMeaning(std::uint32_t code, bool copyLost) {
    if (copyLost && code == HTML::PARSER_SELF_CHECK_FAILED)
        return "the copy of the tokens could not be written to a temporary file or read back from it";
    return GetResultMeaning(code);
}

void AppendCall(std::string* text, std::string_view call, std::uint32_t code, bool copyLost = false) {
    if (code == HTML::PARSER_OK)
        return;
    if (!text->empty())
        text->append("; ");
    text->append(fmt::format("{} returned {}: {}", call, code, GetMeaning(code, copyLost)));
}

}  // namespace

std::string_view GetResultMeaning(std::uint32_t code) {
    switch (code) {
        case HTML::PARSER_OK:
            return "success";
        case HTML::PARSER_INVALID_ARGUMENT:
            return "an invalid argument, such as an odd number of bytes of UTF-16";
        case HTML::PARSER_RECOVERY_IMPOSSIBLE:
            return "a broken construct cannot be read again";
        case RESULT_OUT_OF_MEMORY:
            return "not enough memory";
        case HTML::STATELESS_NOT_STARTED:
            return "no document has been started";
        case HTML::SP_MALFORMED:
            return "malformed markup, a required part is missing or cannot be recognized";
        case HTML::SP_UNEXPECTED_CHAR:
            return "malformed markup, a character that cannot stand there";
        case HTML::PARSER_UNTERMINATED:
            return "the input ended inside a construct";
        case RESULT_UNSUPPORTED_CHARSET:
            return "there is no converter for the charset";
        case HTML::STATELESS_FILE_NOT_OPENED:
            return "the file could not be opened";
        case HTML::PARSER_SHORT_READ:
            return "the input delivered fewer bytes than expected";
        case RESULT_STREAM_FAILED:
            return "the input could not be read or positioned";
        case RESULT_END_OF_DATA:
            return "the end of the data";
        case HTML::STATELESS_NAME_EXPECTED:
            return "malformed markup, a name must begin with a letter or \"_\"";
        case HTML::STATELESS_TAG_END_EXPECTED:
            return "malformed markup, a tag, a declaration or an instruction must end here";
        case HTML::STATELESS_UNKNOWN_CONSTRUCT:
            return "malformed markup, nothing begins with this character after \"<\", \"<!\" or \"<!-\"";
        case HTML::PARSER_SELF_CHECK_FAILED:
            return "the tokens written back differ from the input";
        case HTML::PARSER_PARSE_AGAIN:
            return "another charset was found, the input must be parsed again";
        case HTML::PARSER_CHARSET_NOT_DETECTED:
            return "the charset could not be detected";
        case HTML::PARSER_TOO_LITTLE_DATA:
            return "too little data to detect the charset";
        case HTML::PARSER_DETECTOR_NOT_CONFIDENT:
            return "the charset detector is not confident enough";
        case HTML::PARSER_DETECTOR_FAILED:
            return "the charset detector failed";
        case HTML::PARSER_STOPPED:
            return "the parse has been stopped";
        case HTML::PARSER_LIMIT_EXCEEDED:
            return "a token is longer, or has more attributes, than the limit allows";
        case HTML::REWRITE_OVER:
            return "the token to be edited is over";
        case HTML::REWRITE_WRONG_KIND:
            return "this kind of token cannot be edited so";
        case HTML::REWRITE_NO_ATTRIBUTE:
            return "the tag has no attribute of that name";
        case HTML::REWRITE_BAD_NAME:
            return "this is no name of an attribute, or the charset of the document lacks a character of it";
        case HTML::REWRITE_NO_CONTENT:
            return "the element has no content";
        case HTML::REWRITE_ENDS_EARLY:
            return "the text would end its script, style sheet or comment";
        case HTML::REWRITE_NOT_IN_CHARSET:
            return "the charset of the document lacks a character of the text";
        case HTML::REWRITE_BAD_SELECTOR:
            return "the selector cannot be read";
    }
    return "an unknown result code";
}

std::string_view GetFailureMeaning(const CallResults& results) {
    return GetMeaning(results.GetFirstFailure(), results.copyLost);
}

std::string_view GetDetectionMeaning(std::uint32_t code) {
    if (code == RESULT_UNAVAILABLE)
        return "the charset detector has no usable answer, as for plain ASCII, or cannot be started";
    return GetResultMeaning(code);
}

std::string DescribeFailures(const CallResults& results) {
    std::string text;
    AppendCall(&text, "StartParse", results.startParse);
    AppendCall(&text, "parsing", results.parse);
    AppendCall(&text, "EndParse", results.endParse, results.copyLost);
    if (!text.empty())
        text.append(fmt::format(" (line {}, column {})", results.line, results.column));
    return text;
}

std::string DescribeFailures(const ParsePassResult& results) {
    std::string text = DescribeFailures(static_cast<const CallResults&>(results));
    if (results.conversionError == 0)
        return text;
    if (!text.empty())
        text.append("; ");
    return text.append(fmt::format("tokens are missing, a conversion from the charset {} returned {}: {}",
                                   DescribeCharset(results.charset), results.conversionError,
                                   GetResultMeaning(results.conversionError)));
}

}  // namespace Kestra::Tool
