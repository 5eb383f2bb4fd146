#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "c/Guard.h"
#include "c/HostStreams.h"
#include "c/kestra/html.h"
#include "html/framework/ResultCodes.h"
#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/CharSetNames.h"

namespace Kestra::C {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

constexpr std::uint32_t CERTAIN = 100;     // confidence in what a document says itself
constexpr std::uint64_t NEVER_DETECT = 1;  // byte of the document: too little for the detector

/// Notes whether a document has a byte-order mark.
class MarkObserver final : public HTML::ParserObserver<char, std::string> {
public:
    void OnBOM(const void*, std::uint64_t) override {
        hasMark = true;
    }

    bool hasMark = false;
};

/// Looks for a mark, and for what `meta` tags declare.
/// @return whether there is one
bool FindDeclared(const void* data, std::size_t size, kestra_html_detection* detection) {
    MarkObserver observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.SetChrDetMaxSize(NEVER_DETECT);
    parser.StartParse(CharSet::UNKNOWN, GenericParser::DATA_STREAM_AUTO);
    parser.ParseStream(MakeBorrowedStream(data, size).release(), true);
    detection->charset = parser.GetCharset();
    if (detection->charset == CharSet::UNKNOWN)
        return false;
    detection->source = observer.hasMark ? KESTRA_HTML_SOURCE_MARK : KESTRA_HTML_SOURCE_META;
    detection->confidence = CERTAIN;
    return true;
}

/// Asks the detector, whose confidence is of interest also when it is too low.
/// @param minConfidence  0 for the default
std::uint32_t AskDetector(const void* data, std::size_t size, std::uint32_t minConfidence,
                          kestra_html_detection* detection) {
    GenericParser parser;
    if (minConfidence != 0)
        parser.SetChrDetMinConfidence(minConfidence);
    CharSet::Code code = CharSet::UNKNOWN;
    const std::uint32_t result = parser.DetectCharset(data, size, &code);
    if (result == HTML::PARSER_TOO_LITTLE_DATA || result == HTML::PARSER_DETECTOR_FAILED)
        return result;
    detection->confidence = static_cast<std::uint32_t>(parser.GetDetectedConfidence());
    if (result == HTML::PARSER_OK) {
        detection->charset = code;
        detection->source = KESTRA_HTML_SOURCE_DETECTOR;
    }
    return result == HTML::PARSER_UNKNOWN_RECOGNIZER ? std::uint32_t{HTML::PARSER_CHARSET_NOT_DETECTED} : result;
}

}  // namespace

}  // namespace Kestra::C

uint32_t kestra_html_detect(const void* data, size_t size, kestra_html_detection* detection) {
    return kestra_html_detect_with_options(data, size, nullptr, detection);
}

uint32_t kestra_html_detect_with_options(const void* data, size_t size, const kestra_html_options* options,
                                         kestra_html_detection* detection) {
    if (detection == nullptr || detection->size < sizeof(detection->size) || (data == nullptr && size > 0))
        return KESTRA_HTML_INVALID_ARGUMENT;
    kestra_html_options used{};
    if (options != nullptr && (!Kestra::C::CopyStruct(options, &used) || used.min_confidence > Kestra::C::CERTAIN))
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Kestra::C::Guard([&] {
        const std::uint64_t most =
            used.max_detect_size == 0 ? Kestra::HTML::GenericParser::BUFFER_SIZE : used.max_detect_size;
        const auto looked = static_cast<std::size_t>(std::min<std::uint64_t>(size, most));
        kestra_html_detection answer{};
        const bool isDeclared = Kestra::C::FindDeclared(data, looked, &answer);
        const std::uint32_t result = isDeclared ? std::uint32_t{KESTRA_HTML_OK}
                                                : Kestra::C::AskDetector(data, looked, used.min_confidence, &answer);
        kestra_html_charset_name(answer.charset, &answer.name);
        Kestra::C::AnswerStruct(answer, detection);
        return result;
    });
}

uint32_t kestra_html_charset_name(uint32_t charset, kestra_html_string* name) {
    if (name == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    const std::string_view found = Kestra::StringNS::FindCharSetName(charset);
    *name = Kestra::C::MakeString(found.data(), found.size());
    return KESTRA_HTML_OK;
}

uint32_t kestra_html_charset_code(const char* name, size_t name_size) {
    if (name == nullptr)
        return 0;
    std::uint32_t code = 0;
    Kestra::C::Guard([&] {
        const std::string_view characters(name, name_size);
        const bool isAscii = std::all_of(characters.begin(), characters.end(), [](char c) { return c > 0; });
        if (isAscii)
            code = Kestra::StringNS::CharSet::GetCharSetCode(Kestra::WideString(characters.begin(), characters.end()));
        return std::uint32_t{KESTRA_HTML_OK};
    });
    return code;
}
