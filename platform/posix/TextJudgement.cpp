#include "platform/posix/TextJudgement.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "platform/posix/EngineRule.h"
#include "platform/posix/LanguageModels.h"
#include "platform/posix/TextScores.h"

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

// What an engine's word is worth, in bits: enough to decide about short text, nothing beside long.
constexpr double UCHARDET_BITS = 3;
constexpr double ICU_BITS = 3;        ///< times its confidence
constexpr double AGREEMENT_BITS = 3;  ///< both name pages that read the text the same

// The logarithm of the odds that an answer is right, as tests/charsets/fit-confidence finds it. The
// engines are part of the margin already: where both agree, more of it is theirs, and none of it
// where neither does.
constexpr double BASE = -0.900;
constexpr double PER_BIT = 0.441;  ///< of the margin
constexpr double BOTH_AGREE = -2.688;
constexpr double NONE_AGREES = 2.228;

constexpr std::uint32_t LEAST_CONFIDENCE = 1;
constexpr double MOST_CONFIDENCE = 99;  ///< of what is likely and no more
constexpr double PER_BYTE = 6;          ///< shown: text of less than 16 bytes has not been measured

// Where few pairs differ and few bytes are beyond ASCII, a price or a temperature reads as well in
// any language.
constexpr std::uint64_t FEW_PAIRS = 12;
constexpr double FEW_HIGH_BYTES = 0.01;  ///< of all
constexpr std::uint64_t FEW_PAIRS_OF_SIGNS = 40;

// Noise, and text in a charset that no page here is.
constexpr double BAD_FIT = 8;                ///< bits for each byte from 128 up
constexpr double BAD_DOUBLE_BYTE_FIT = 8.3;  ///< lists of rare Chinese words come close to it
constexpr double MUCH_BEYOND_ASCII = 0.4;    ///< of all bytes
constexpr double MANY_CONTROLS = 0.01;
constexpr double DOUBTED_LIMIT = 49;

bool IsControl(char byte) {
    return (byte >= 0 && byte < ' ' && (byte < '\t' || byte > '\r') && byte != 0x1B) || byte == 0x7F;
}

bool IsShown(char byte) {
    return byte != ' ' && (byte < '\t' || byte > '\r');
}

bool IsDoubleByte(CharSet::Code code) {
    return code == 932 || code == CharSet::EUC_JP || code == 54936 || code == 949 || code == 950;
}

bool HasFewSigns(const TextScores& scores) {
    return scores.CountDistinctPairs() < FEW_PAIRS_OF_SIGNS && scores.HasSignsOnly();
}

bool HasFewPairs(const TextScores& scores, double textBytes) {
    return scores.CountDistinctPairs() < FEW_PAIRS &&
           static_cast<double>(scores.CountHighBytes()) < FEW_HIGH_BYTES * textBytes;
}

/// The page that an engine names instead of one that it does not know: 1252 for ISO-8859-15 (ICU),
/// KOI8-R for KOI8-U (both).
CharSet::Code FindStandIn(CharSet::Code code) {
    if (code == 28605)
        return CharSet::WINDOWS_1252;
    return code == 21866 ? 20866 : CharSet::UNKNOWN;
}

}  // namespace

Judgement JudgeText(std::string_view text, const EngineAnswer& icu, const EngineAnswer& uchardet) {
    const TextScores scores(text);
    Judgement judgement;
    if (scores.CountHighBytes() == 0)
        return judgement;
    const auto names = [&scores](const EngineAnswer& answer, CharSet::Code code) {
        return answer.given && answer.code != 0 &&
               (scores.ReadTheSame(answer.code, code) || answer.code == FindStandIn(code));
    };
    const double icuConfidence = icu.given ? icu.confidence / 100.0 : 0;
    std::vector<PageScore> ranked = scores.GetScores();
    for (PageScore& page : ranked) {
        const bool byIcu = names(icu, page.code);
        const bool byUchardet = names(uchardet, page.code);
        page.bits -= (byUchardet ? UCHARDET_BITS : 0) + (byIcu ? ICU_BITS * icuConfidence : 0) +
                     (byIcu && byUchardet ? AGREEMENT_BITS : 0);
    }
    const auto hasCodePage = [](const PageScore& page) { return page.code < FIRST_WITHOUT_CODE_PAGE; };
    const auto nameless = std::partition(ranked.begin(), ranked.end(), hasCodePage);
    const PageScore best = *std::min_element(
        ranked.begin(), nameless, [](const PageScore& one, const PageScore& other) { return one.bits < other.bits; });
    double next = std::numeric_limits<double>::infinity();
    for (const PageScore& page : ranked) {
        if (!scores.ReadTheSame(page.code, best.code))
            next = std::min(next, page.bits);
    }

    // Of pages that read the text the same, what both engines name is the answer, and else the page
    // that is most common.
    judgement.code = best.code;
    if (icu.given && uchardet.given && icu.code == uchardet.code && names(icu, best.code) &&
        icu.code != FindStandIn(best.code))
        judgement.code = icu.code;
    const auto highBytes = static_cast<double>(scores.CountHighBytes());
    judgement.evidence = {
        (next - best.bits) * scores.FindFreshShare(),
        highBytes,
        best.bits / highBytes,
        names(uchardet, best.code),
        names(icu, best.code),
        icuConfidence,
        static_cast<double>(text.size()),
        static_cast<double>(std::ranges::count_if(text, IsShown)),
        static_cast<double>(std::ranges::count_if(text, IsControl)),
        IsDoubleByte(best.code),
    };
    judgement.hasSignsOnly = HasFewSigns(scores);
    judgement.isThin = judgement.hasSignsOnly || HasFewPairs(scores, judgement.evidence.textBytes);
    if (judgement.isThin) {
        judgement.engines = WeighEngines(icu, uchardet, text);
        judgement.enginesReadSame = scores.ReadTheSame(judgement.engines.code, judgement.code);
    }
    return judgement;
}

std::uint32_t FindConfidence(const Evidence& evidence) {
    if (evidence.margin <= 0)
        return LEAST_CONFIDENCE;
    double odds = BASE + PER_BIT * evidence.margin;
    if (evidence.uchardetAgrees && evidence.icuAgrees)
        odds += BOTH_AGREE;
    if (!evidence.uchardetAgrees && !evidence.icuAgrees)
        odds += NONE_AGREES;
    const double fitted = 100 / (1 + std::exp(-odds));
    const bool isDoubted = (evidence.bitsPerByte >= (evidence.isDoubleByte ? BAD_DOUBLE_BYTE_FIT : BAD_FIT) &&
                            evidence.highBytes >= evidence.textBytes * MUCH_BEYOND_ASCII) ||
                           evidence.controls > evidence.textBytes * MANY_CONTROLS;
    const double most = isDoubted ? DOUBTED_LIMIT : MOST_CONFIDENCE;
    const double limited = std::min(fitted, most);
    return static_cast<std::uint32_t>(std::lround(std::max<double>(limited, LEAST_CONFIDENCE)));
}

std::uint32_t LimitByLength(const Evidence& evidence, std::uint32_t confidence) {
    return static_cast<std::uint32_t>(std::min<double>(confidence, evidence.shownBytes * PER_BYTE));
}

}  // namespace Kestra::Base
