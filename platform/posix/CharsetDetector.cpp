#include "platform/CharsetDetector.h"

#include <uchardet.h>
#include <unicode/ucsdet.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Characters.h"
#include "platform/MarkupStripper.h"
#include "platform/Results.h"
#include "platform/posix/DetectorCodePages.h"

/// @file
/// Two engines judge the text, and only what both say counts as certain: ICU's own confidence is
/// the same for right and for wrong answers, and uchardet has none. docs/charset-detection.md holds
/// the rules, their reasons and the measured scores.

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

constexpr std::uint32_t CERTAIN = 100;
constexpr std::uint32_t UTF16_MIN_CONFIDENCE = 90;  ///< what ICU must say about UTF-16LE in the bytes as they came
constexpr std::uint32_t AGREEMENT_BASE = 90;        ///< both engines agree: 90 to 100
constexpr std::uint32_t SINGLE_LIMIT = 60;          ///< only one engine answers
constexpr std::size_t SINGLE_PER_BYTE = 3;          ///< and each byte from 128 up is worth three: 17 of them reach 50
constexpr std::uint32_t DISPUTED_LIMIT = 40;        ///< the engines disagree
constexpr std::uint32_t CONTRADICTED_LIMIT = 20;    ///< there is a NUL in what is to be 8-bit text
constexpr std::uint32_t ICU_PREFERRED_FROM = 50;    ///< in a disagreement; right more often than any other limit
constexpr std::uint32_t ICU_DAMAGED_UTF8 = 25;      ///< ICU: for each bad sequence, more than ten good ones
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

/// What one engine says.
struct Answer {
    bool given = false;            ///< something speaks for the charset that the engine names
    CharSet::Code code = 0;        ///< 0 for a charset without a code page, and for none
    std::uint32_t confidence = 0;  ///< 0 to 100; 0 from uchardet
    std::uint32_t utf8 = 0;        ///< the confidence in UTF-8, also when another charset comes first; 0 from uchardet
};

/// The kinds of bytes that tell 7-bit text, stateful text and UTF-16 apart.
struct ByteKinds {
    bool highBit = false;
    bool escape = false;
    bool nul = false;
};

ByteKinds FindKinds(std::string_view bytes) {
    ByteKinds kinds;
    for (const char byte : bytes) {
        kinds.highBit = kinds.highBit || (byte & 0x80) != 0;
        kinds.escape = kinds.escape || byte == 0x1B;
        kinds.nul = kinds.nul || byte == 0;
    }
    return kinds;
}

bool IsBlank(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char byte) { return IsSpace(byte); });
}

/// True for well-formed UTF-8. The end may cut a sequence.
/// Source: the table of well-formed byte sequences in the Unicode Standard, chapter 3.
bool IsUtf8(std::string_view bytes) {
    std::uint32_t missing = 0;
    // Bounds of the next trail byte: no overlong forms, no surrogates, nothing above 10FFFF.
    unsigned lowest = 0x80;
    unsigned highest = 0xBF;
    for (const char character : bytes) {
        const unsigned byte = static_cast<unsigned char>(character);
        if (missing > 0) {
            if (byte < lowest || byte > highest)
                return false;
            lowest = 0x80;
            highest = 0xBF;
            --missing;
        } else if (byte >= 0x80) {
            if (byte < 0xC2 || byte > 0xF4)
                return false;
            missing = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
            if (byte == 0xE0)
                lowest = 0xA0;
            else if (byte == 0xED)
                highest = 0x9F;
            else if (byte == 0xF0)
                lowest = 0x90;
            else if (byte == 0xF4)
                highest = 0x8F;
        }
    }
    return true;
}

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
    std::uint32_t GetAnswer(Answer* answer) const {
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

std::uint32_t AskUchardet(std::string_view text, Answer* answer) {
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

std::uint32_t AskIcu(std::string_view text, Answer* answer) {
    IcuEngine engine;
    const std::uint32_t result = engine.Run(text);
    return result == RESULT_OK ? engine.GetAnswer(answer) : result;
}

/// Whole buffers in UTF-8 and ASCII are recognized before the engines are asked, so uchardet alone
/// is wrong about them: it takes short Cyrillic text for UTF-8, and text whose other bytes went
/// with the markup for ASCII.
bool CanStandAlone(const Answer& uchardetAnswer) {
    return uchardetAnswer.code != CharSet::UNKNOWN && uchardetAnswer.code != CharSet::UTF8 &&
           uchardetAnswer.code != CharSet::US_ASCII;
}

/// The engines contradict each other: how far ICU leans towards the answer is the confidence, on a
/// scale that stays low. ICU ranks UTF-8 with a damaged character after every charset that happens
/// to fit, so uchardet needs no more than its consent there.
DetectedCharset ChooseDisputed(const Answer& icuAnswer, const Answer& uchardetAnswer) {
    if (uchardetAnswer.code == CharSet::UTF8 && icuAnswer.utf8 >= ICU_DAMAGED_UTF8)
        return {CharSet::UTF8, DISPUTED_LIMIT};
    const bool icuFits = icuAnswer.code != CharSet::UNKNOWN;
    const bool uchardetFits = CanStandAlone(uchardetAnswer);
    if (icuFits && (icuAnswer.confidence >= ICU_PREFERRED_FROM || !uchardetFits))
        return {icuAnswer.code, icuAnswer.confidence * DISPUTED_LIMIT / CERTAIN};
    if (uchardetFits)
        return {uchardetAnswer.code, (CERTAIN - icuAnswer.confidence) * DISPUTED_LIMIT / CERTAIN};
    return {};
}

/// What a single answer can reach: a few bytes fit any charset.
std::uint32_t FindSingleLimit(std::string_view text) {
    const auto highBytes =
        static_cast<std::size_t>(std::ranges::count_if(text, [](char byte) { return (byte & 0x80) != 0; }));
    return highBytes >= SINGLE_LIMIT / SINGLE_PER_BYTE ? SINGLE_LIMIT
                                                       : static_cast<std::uint32_t>(highBytes * SINGLE_PER_BYTE);
}

/// Weighs the two answers about a text. Code 0 when none of them can be given.
DetectedCharset Weigh(const Answer& icuAnswer, const Answer& uchardetAnswer, std::string_view text) {
    if (icuAnswer.code == uchardetAnswer.code && icuAnswer.code != CharSet::UNKNOWN)
        return {icuAnswer.code, AGREEMENT_BASE + icuAnswer.confidence * (CERTAIN - AGREEMENT_BASE) / CERTAIN};
    if (icuAnswer.given && uchardetAnswer.given)
        return ChooseDisputed(icuAnswer, uchardetAnswer);
    if (icuAnswer.given)
        return {icuAnswer.code, std::min(icuAnswer.confidence, FindSingleLimit(text))};
    if (uchardetAnswer.given && CanStandAlone(uchardetAnswer))
        return {uchardetAnswer.code, FindSingleLimit(text)};
    return {};
}

/// True for the charsets in whose text a NUL byte is part of a character.
bool HasNuls(CharSet::Code code) {
    return code == CharSet::UTF16_LE || code == 1201 || code == 12000 || code == 12001;
}

}  // namespace

std::uint32_t CharsetDetector::Detect(const void* data, std::uint64_t size, DetectedCharset* detected,
                                      std::uint32_t* count) {
    if (detected == nullptr || count == nullptr || (data == nullptr && size > 0))
        return RESULT_INVALID_ARGUMENT;
    *count = 0;
    if (size == 0)
        return RESULT_OK;

    const std::string_view bytes(static_cast<const char*>(data), size);
    const auto answerWith = [detected, count](CharSet::Code code, std::uint32_t confidence) {
        *detected = {code, confidence};
        *count = code == CharSet::UNKNOWN ? 0 : 1;
        return RESULT_OK;
    };

    // Without a NUL and without a mark there is no UTF-16 that ICU would be sure of: then the bytes
    // need not be asked for it.
    const ByteKinds kinds = FindKinds(bytes);
    if (kinds.nul || bytes.starts_with("\xFF\xFE")) {
        IcuEngine engine;
        std::uint32_t confidence = 0;
        std::uint32_t result = engine.Run(bytes);
        if (result == RESULT_OK)
            result = engine.GetConfidence(CharSet::UTF16_LE, &confidence);
        if (result != RESULT_OK)
            return result;
        if (confidence >= UTF16_MIN_CONFIDENCE)
            return answerWith(CharSet::UTF16_LE, confidence);
    }
    if (!kinds.highBit && !kinds.escape && !kinds.nul)
        return answerWith(CharSet::US_ASCII, CERTAIN);
    if (kinds.highBit && IsUtf8(bytes))
        return answerWith(CharSet::UTF8, CERTAIN);

    const std::string text = StripMarkup(bytes);
    if (IsBlank(text))
        return RESULT_OK;
    Answer icuAnswer;
    Answer uchardetAnswer;
    std::uint32_t result = AskIcu(text, &icuAnswer);
    if (result == RESULT_OK)
        result = AskUchardet(text, &uchardetAnswer);
    if (result != RESULT_OK)
        return result;

    DetectedCharset answer = Weigh(icuAnswer, uchardetAnswer, text);
    if (kinds.nul && !HasNuls(answer.code))
        answer.confidence = std::min(answer.confidence, CONTRADICTED_LIMIT);
    return answerWith(answer.code, answer.confidence);
}

}  // namespace Kestra::Base
