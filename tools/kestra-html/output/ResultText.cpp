#include "tools/kestra-html/output/ResultText.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "html/framework/ResultCodes.h"
#include "html/rewrite/RewriteResults.h"
#include "html/stateless/StatelessResults.h"
#include "platform/Results.h"
#include "tools/kestra-html/output/CharsetText.h"

namespace Kestra::Tool {

namespace {

struct ResultMeaning {
    std::uint32_t code;
    std::string_view text;
};

constexpr ResultMeaning MEANINGS[] = {
    {HTML::PARSER_OK, "success"},
    {HTML::PARSER_INVALID_ARGUMENT, "an invalid argument, such as an odd number of bytes of UTF-16"},
    {HTML::PARSER_RECOVERY_IMPOSSIBLE, "a broken construct cannot be read again"},
    {RESULT_OUT_OF_MEMORY, "not enough memory"},
    {HTML::STATELESS_NOT_STARTED, "no document has been started"},
    {HTML::SP_MALFORMED, "malformed markup, a required part is missing or cannot be recognized"},
    {HTML::SP_UNEXPECTED_CHAR, "malformed markup, a character that cannot stand there"},
    {HTML::PARSER_UNTERMINATED, "the input ended inside a construct"},
    {RESULT_UNSUPPORTED_CHARSET, "there is no converter for the charset"},
    {HTML::STATELESS_FILE_NOT_OPENED, "the file could not be opened"},
    {HTML::PARSER_SHORT_READ, "the input delivered fewer bytes than expected"},
    {RESULT_STREAM_FAILED, "the input could not be read or positioned"},
    {RESULT_END_OF_DATA, "the end of the data"},
    {HTML::STATELESS_NAME_EXPECTED, "malformed markup, a name must begin with a letter or \"_\""},
    {HTML::STATELESS_TAG_END_EXPECTED, "malformed markup, a tag, a declaration or an instruction must end here"},
    {HTML::STATELESS_UNKNOWN_CONSTRUCT,
     "malformed markup, nothing begins with this character after \"<\", \"<!\" or \"<!-\""},
    {HTML::PARSER_SELF_CHECK_FAILED, "the tokens written back differ from the input"},
    {HTML::PARSER_PARSE_AGAIN, "another charset was found, the input must be parsed again"},
    {HTML::PARSER_CHARSET_NOT_DETECTED, "the charset could not be detected"},
    {HTML::PARSER_TOO_LITTLE_DATA, "too little data to detect the charset"},
    {HTML::PARSER_DETECTOR_NOT_CONFIDENT, "the charset detector is not confident enough"},
    {HTML::PARSER_DETECTOR_FAILED, "the charset detector failed"},
    {HTML::PARSER_STOPPED, "the parse has been stopped"},
    {HTML::PARSER_LIMIT_EXCEEDED, "a token is longer, or has more attributes, than the limit allows"},
    {HTML::REWRITE_OVER, "the token to be edited is over"},
    {HTML::REWRITE_WRONG_KIND, "this kind of token cannot be edited so"},
    {HTML::REWRITE_NO_ATTRIBUTE, "the tag has no attribute of that name"},
    {HTML::REWRITE_BAD_NAME, "this is no name of an attribute, or the charset of the document lacks a character of it"},
    {HTML::REWRITE_NO_CONTENT, "the element has no content"},
    {HTML::REWRITE_ENDS_EARLY, "the text would end its script, style sheet or comment"},
    {HTML::REWRITE_NOT_IN_CHARSET, "the charset of the document lacks a character of the text"},
    {HTML::REWRITE_BAD_SELECTOR, "the selector cannot be read"},
};

std::string_view GetMeaning(std::uint32_t code, bool copyLost) {
    if (copyLost && code == HTML::PARSER_SELF_CHECK_FAILED)
        return "the temporary file for the copy of the tokens could not be written or read, its folder may be full, "
               "read-only or missing";
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
    const auto meaning = std::find_if(std::begin(MEANINGS), std::end(MEANINGS),
                                      [code](const ResultMeaning& row) { return row.code == code; });
    return meaning == std::end(MEANINGS) ? "an unknown result code" : meaning->text;
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
