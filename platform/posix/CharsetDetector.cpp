#include "platform/CharsetDetector.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Characters.h"
#include "platform/MarkupStripper.h"
#include "platform/Results.h"
#include "platform/posix/DetectorEngines.h"
#include "platform/posix/EngineRule.h"
#include "platform/posix/TextJudgement.h"
#include "platform/posix/WideText.h"

/// @file
/// What the bytes say without doubt comes first; the text of all others is judged by what its
/// letters cost in the languages of each code page (TextJudgement). docs/charset-detection.md holds
/// the rules, their reasons and the measured scores.

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

constexpr std::uint32_t CERTAIN = 100;
constexpr std::uint32_t UTF16_MIN_CONFIDENCE = 90;  ///< what ICU must say about UTF-16LE in the bytes as they came
constexpr std::uint32_t AGREEMENT_BASE = 90;        ///< both engines find the same escapes: 90 to 100
constexpr std::uint32_t SINGLE_CONFIDENCE = 80;     ///< only one engine finds escapes
constexpr std::uint32_t HZ_CONFIDENCE = 97;
constexpr std::uint32_t CONTRADICTED_LIMIT = 20;  ///< there is a NUL in what is to be 8-bit text
constexpr double CLEAR_MARGIN = 4;                ///< bits by which the models read a few letters better
constexpr std::uint32_t DISPUTED_LIMIT = 15;      ///< the models read a few letters otherwise than the engines
constexpr CharSet::Code HZ = 52936;

/// The kinds of bytes that tell 7-bit text, stateful text and UTF-16 apart.
struct ByteKinds {
    bool highBit = false;
    bool escape = false;
    bool nul = false;
    std::size_t controls = 0;  ///< those that text of bytes has no use for
};

/// White space, ESC, and what shifts in ISO-2022.
bool IsTextControl(char byte) {
    return (byte >= '\t' && byte <= '\r') || byte == 0x1B || byte == 0x0E || byte == 0x0F;
}

ByteKinds FindKinds(std::string_view bytes) {
    ByteKinds kinds;
    for (const char byte : bytes) {
        kinds.highBit = kinds.highBit || (byte & 0x80) != 0;
        kinds.escape = kinds.escape || byte == 0x1B;
        kinds.nul = kinds.nul || byte == 0;
        kinds.controls += byte >= 0 && byte < ' ' && !IsTextControl(byte) ? 1 : 0;
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

/// Both engines name one charset.
std::uint32_t AgreeWith(const EngineAnswer& icu) {
    return AGREEMENT_BASE + icu.confidence * (CERTAIN - AGREEMENT_BASE) / CERTAIN;
}

/// Text of 7 bits that is not ASCII: the engines find its escapes. Code 0 when they find none.
DetectedCharset WeighSevenBits(const EngineAnswer& icu, const EngineAnswer& uchardet) {
    const auto fits = [](const EngineAnswer& answer) {
        return answer.given && (answer.code == CharSet::ISO_2022_JP || answer.code == CharSet::ISO_2022_KR);
    };
    if (fits(icu) && fits(uchardet) && icu.code == uchardet.code)
        return {icu.code, AgreeWith(icu)};
    if (fits(icu) != fits(uchardet))
        return {fits(icu) ? icu.code : uchardet.code, SINGLE_CONFIDENCE};
    return {};
}

/// True for runs of Chinese between "~{" and "~}" and no other "~{", as HZ has them; the end may
/// cut the last run. Source: RFC 1843. Most characters of a text are of the first 55 rows, which
/// lower-case words are not.
bool HasChineseEscapes(std::string_view bytes) {
    constexpr std::size_t LEAST_OF_CUT_RUN = 16;
    std::size_t runs = 0;
    std::size_t characters = 0;
    std::size_t common = 0;
    std::size_t position = bytes.find("~{");
    while (position != std::string_view::npos) {
        position += 2;
        while (position + 1 < bytes.size() && bytes.substr(position, 2) != "~}") {
            if (bytes[position] < 0x21 || bytes[position] > 0x77 || bytes[position + 1] < 0x21 ||
                bytes[position + 1] > 0x7E)
                return false;
            common += bytes[position] <= 0x57 ? 1 : 0;
            position += 2;
            ++characters;
        }
        runs += position + 1 < bytes.size() ? 1 : 0;
        position = position + 1 < bytes.size() ? bytes.find("~{", position) : std::string_view::npos;
    }
    return characters >= (runs > 0 ? 2 : LEAST_OF_CUT_RUN) && common * 5 >= characters * 4;
}

/// True for the charsets in whose text a NUL byte is part of a character.
bool HasNuls(CharSet::Code code) {
    return code == CharSet::UTF16_LE || code == 1201 || code == 12000 || code == 12001;
}

/// Two bytes a character have a NUL, or, where no character is of ASCII, many bytes that are
/// controls to other text. One that ends a file of an old system is none.
bool MayBeWide(std::string_view bytes, const ByteKinds& kinds, bool isUtf8) {
    constexpr char END_OF_FILE = 0x1A;
    constexpr std::size_t LEAST_CONTROLS = 3;
    constexpr std::size_t MOST_BYTES_EACH = 50;
    if (kinds.nul)
        return true;
    const std::size_t controls = kinds.controls - (bytes.ends_with(END_OF_FILE) ? 1 : 0);
    return kinds.highBit && !isUtf8 && controls >= LEAST_CONTROLS && controls * MOST_BYTES_EACH >= bytes.size();
}

/// Text that the engines know by its form rather than by its letters: by a mark, by NULs in four
/// bytes a character, or by escapes beside which a few other bytes are damage.
bool IsForTheEngines(const ByteKinds& kinds, const EngineAnswer& icu, const EngineAnswer& uchardet) {
    const auto hasEscapes = [](const EngineAnswer& answer) {
        return answer.given && (answer.code == CharSet::ISO_2022_JP || answer.code == CharSet::ISO_2022_KR);
    };
    return (HasNuls(icu.code) && icu.code == uchardet.code) || (kinds.nul && icu.given && HasNuls(icu.code)) ||
           (kinds.highBit && kinds.escape && (hasEscapes(icu) || hasEscapes(uchardet)));
}

/// A few signs tell no language: then the engines decide. When the models read the same, the surer
/// one says how sure it is. When they read letters otherwise and are clear about it, they decide.
DetectedCharset ChooseAnswer(const Judgement& judgement) {
    const std::uint32_t confidence = FindConfidence(judgement.evidence);
    if (!judgement.isThin)
        return {judgement.code, confidence};
    if (judgement.enginesReadSame)
        return {judgement.engines.code, std::max(judgement.engines.confidence, confidence)};
    if (judgement.hasSignsOnly)
        return judgement.engines;
    if (judgement.evidence.margin >= CLEAR_MARGIN)
        return {judgement.code, confidence};
    return {judgement.engines.code, std::min(judgement.engines.confidence, DISPUTED_LIMIT)};
}

DetectedCharset FindAnswer(const Judgement& judgement) {
    DetectedCharset answer = ChooseAnswer(judgement);
    answer.confidence = LimitByLength(judgement.evidence, answer.confidence);
    return answer;
}

}  // namespace

std::uint32_t CharsetDetector::DetectBytes(const void* data, std::uint64_t size, DetectedCharset* detected,
                                           std::uint32_t* count) {
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
        std::uint32_t confidence = 0;
        const std::uint32_t result = AskIcuAbout(bytes, CharSet::UTF16_LE, &confidence);
        if (result != RESULT_OK)
            return result;
        if (confidence >= UTF16_MIN_CONFIDENCE)
            return answerWith(CharSet::UTF16_LE, confidence);
    }
    const bool isUtf8 = kinds.highBit && IsUtf8(bytes);
    if (MayBeWide(bytes, kinds, isUtf8)) {
        const DetectedCharset wide = FindWideText(bytes);
        if (wide.code != CharSet::UNKNOWN)
            return answerWith(wide.code, wide.confidence);
    }
    if (!kinds.highBit && !kinds.escape && !kinds.nul)
        return HasChineseEscapes(bytes) ? answerWith(HZ, HZ_CONFIDENCE) : answerWith(CharSet::US_ASCII, CERTAIN);
    if (isUtf8)
        return answerWith(CharSet::UTF8, CERTAIN);

    const std::string text = StripMarkup(bytes);
    if (IsBlank(text))
        return RESULT_OK;
    EngineAnswer icu;
    EngineAnswer uchardet;
    std::uint32_t result = AskIcu(text, &icu);
    if (result == RESULT_OK)
        result = AskUchardet(text, &uchardet);
    if (result != RESULT_OK)
        return result;

    DetectedCharset answer;
    if (IsForTheEngines(kinds, icu, uchardet)) {
        answer = WeighEngines(icu, uchardet, text);
    } else {
        const Judgement judgement = JudgeText(text, icu, uchardet);
        answer = judgement.code == CharSet::UNKNOWN ? WeighSevenBits(icu, uchardet) : FindAnswer(judgement);
    }
    if (kinds.nul && !HasNuls(answer.code))
        answer.confidence = std::min(answer.confidence, CONTRADICTED_LIMIT);
    return answerWith(answer.code, answer.confidence);
}

}  // namespace Kestra::Base
