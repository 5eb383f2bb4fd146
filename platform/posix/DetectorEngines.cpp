#include "platform/posix/DetectorEngines.h"

#include <uchardet.h>
#include <unicode/ucsdet.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>

#include "platform/Results.h"
#include "platform/posix/DetectorCodePages.h"

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

/// ICU: the bytes can be read as this charset, and nothing else speaks for it.
constexpr std::uint32_t ICU_NO_INDICATION = 10;

struct CloseIcu {
    void operator()(UCharsetDetector* detector) const {
        ucsdet_close(detector);
    }
};

struct CloseUchardet {
    void operator()(uchardet_t detector) const {
        uchardet_delete(detector);
    }
};

/// ICU's detector over one buffer.
class IcuEngine {
public:
    /// @param bytes  borrowed for as long as the engine lives; what follows 2 GB is left out.
    std::uint32_t Run(std::string_view bytes) {
        UErrorCode status = U_ZERO_ERROR;
        detector.reset(ucsdet_open(&status));
        if (U_FAILURE(status) || detector == nullptr)
            return RESULT_UNAVAILABLE;
        constexpr std::size_t LIMIT = std::numeric_limits<std::int32_t>::max();
        ucsdet_setText(detector.get(), bytes.data(), static_cast<std::int32_t>(std::min(bytes.size(), LIMIT)), &status);
        matches = ucsdet_detectAll(detector.get(), &matchCount, &status);
        if (status == U_INVALID_CHAR_FOUND) {  // how it says that no charset matches
            matchCount = 0;
            return RESULT_OK;
        }
        return U_FAILURE(status) ? RESULT_DETECTION_FAILED : RESULT_OK;
    }

    /// The best match.
    std::uint32_t GetAnswer(EngineAnswer* answer) const {
        if (matchCount == 0)
            return RESULT_OK;
        std::string_view name;
        const std::uint32_t result = GetMatch(0, &name, &answer->confidence);
        if (result != RESULT_OK)
            return result;
        answer->given = answer->confidence > ICU_NO_INDICATION;
        answer->code = FindDetectorCodePage(name);
        return GetConfidence(CharSet::UTF8, &answer->utf8);
    }

    /// The confidence of one charset wherever it is among the matches, 0 when it does not.
    std::uint32_t GetConfidence(CharSet::Code code, std::uint32_t* confidence) const {
        *confidence = 0;
        for (std::int32_t i = 0; i < matchCount; ++i) {
            std::string_view name;
            std::uint32_t matchConfidence = 0;
            const std::uint32_t result = GetMatch(i, &name, &matchConfidence);
            if (result != RESULT_OK)
                return result;
            if (FindDetectorCodePage(name) == code) {
                *confidence = matchConfidence;
                return RESULT_OK;
            }
        }
        return RESULT_OK;
    }

private:
    std::uint32_t GetMatch(std::int32_t index, std::string_view* name, std::uint32_t* confidence) const {
        UErrorCode status = U_ZERO_ERROR;
        const char* nameText = ucsdet_getName(matches[index], &status);
        const std::int32_t value = ucsdet_getConfidence(matches[index], &status);
        if (U_FAILURE(status) || nameText == nullptr)
            return RESULT_DETECTION_FAILED;
        *name = nameText;
        *confidence = static_cast<std::uint32_t>(std::clamp(value, 0, 100));
        return RESULT_OK;
    }

    std::unique_ptr<UCharsetDetector, CloseIcu> detector;
    const UCharsetMatch** matches = nullptr;
    std::int32_t matchCount = 0;
};

/// uchardet names UTF-16 and UTF-32 by their byte-order mark but keeps the order to itself.
CharSet::Code FindUchardetCodePage(std::string_view name, std::string_view text) {
    const bool bigEndian = text.front() == '\xFE' || text.front() == '\0';
    if (name == "UTF-16")
        return bigEndian ? 1201 : CharSet::UTF16_LE;
    if (name == "UTF-32")
        return bigEndian ? 12001 : 12000;
    return FindDetectorCodePage(name);
}

}  // namespace

std::uint32_t AskIcu(std::string_view text, EngineAnswer* answer) {
    IcuEngine engine;
    const std::uint32_t result = engine.Run(text);
    return result == RESULT_OK ? engine.GetAnswer(answer) : result;
}

std::uint32_t AskUchardet(std::string_view text, EngineAnswer* answer) {
    const std::unique_ptr<uchardet, CloseUchardet> detector(uchardet_new());
    if (detector == nullptr)
        return RESULT_UNAVAILABLE;
    if (uchardet_handle_data(detector.get(), text.data(), text.size()) != 0)
        return RESULT_DETECTION_FAILED;
    uchardet_data_end(detector.get());
    const std::string_view name = uchardet_get_charset(detector.get());
    answer->given = !name.empty();
    answer->code = answer->given ? FindUchardetCodePage(name, text) : CharSet::UNKNOWN;
    return RESULT_OK;
}

std::uint32_t AskIcuAbout(std::string_view bytes, CharSet::Code code, std::uint32_t* confidence) {
    IcuEngine engine;
    const std::uint32_t result = engine.Run(bytes);
    return result == RESULT_OK ? engine.GetConfidence(code, confidence) : result;
}

}  // namespace Kestra::Base
