#include "platform/posix/EngineRule.h"

#include <algorithm>
#include <cstddef>

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

constexpr std::uint32_t CERTAIN = 100;
constexpr std::uint32_t AGREEMENT_BASE = 90;      ///< both engines agree: 90 to 100
constexpr std::uint32_t SINGLE_LIMIT = 60;        ///< only one engine answers
constexpr std::size_t SINGLE_PER_BYTE = 3;        ///< and each byte from 128 up is worth three: 17 of them reach 50
constexpr std::uint32_t DISPUTED_LIMIT = 40;      ///< the engines disagree
constexpr std::uint32_t ICU_PREFERRED_FROM = 50;  ///< in a disagreement; right more often than any other limit
constexpr std::uint32_t ICU_DAMAGED_UTF8 = 25;    ///< ICU: for each bad sequence, more than ten good ones

/// Whole buffers in UTF-8 and ASCII are recognized before the engines are asked, so uchardet alone
/// is wrong about them: it takes short Cyrillic text for UTF-8, and text whose other bytes went
/// with the markup for ASCII.
bool CanStandAlone(const EngineAnswer& uchardet) {
    return uchardet.code != CharSet::UNKNOWN && uchardet.code != CharSet::UTF8 && uchardet.code != CharSet::US_ASCII;
}

/// The engines contradict each other: how far ICU leans towards the answer is the confidence, on a
/// scale that stays low. ICU ranks UTF-8 with a damaged character after every charset that happens
/// to fit, so uchardet needs no more than its consent there.
DetectedCharset ChooseDisputed(const EngineAnswer& icu, const EngineAnswer& uchardet) {
    if (uchardet.code == CharSet::UTF8 && icu.utf8 >= ICU_DAMAGED_UTF8)
        return {CharSet::UTF8, DISPUTED_LIMIT};
    const bool icuFits = icu.code != CharSet::UNKNOWN;
    const bool uchardetFits = CanStandAlone(uchardet);
    if (icuFits && (icu.confidence >= ICU_PREFERRED_FROM || !uchardetFits))
        return {icu.code, icu.confidence * DISPUTED_LIMIT / CERTAIN};
    if (uchardetFits)
        return {uchardet.code, (CERTAIN - icu.confidence) * DISPUTED_LIMIT / CERTAIN};
    return {};
}

/// What a single answer can reach: a few bytes fit any charset.
std::uint32_t FindSingleLimit(std::string_view text) {
    const auto highBytes =
        static_cast<std::size_t>(std::ranges::count_if(text, [](char byte) { return (byte & 0x80) != 0; }));
    return highBytes >= SINGLE_LIMIT / SINGLE_PER_BYTE ? SINGLE_LIMIT
                                                       : static_cast<std::uint32_t>(highBytes * SINGLE_PER_BYTE);
}

}  // namespace

DetectedCharset WeighEngines(const EngineAnswer& icu, const EngineAnswer& uchardet, std::string_view text) {
    if (icu.code == uchardet.code && icu.code != CharSet::UNKNOWN)
        return {icu.code, AGREEMENT_BASE + icu.confidence * (CERTAIN - AGREEMENT_BASE) / CERTAIN};
    if (icu.given && uchardet.given)
        return ChooseDisputed(icu, uchardet);
    if (icu.given)
        return {icu.code, std::min(icu.confidence, FindSingleLimit(text))};
    if (uchardet.given && CanStandAlone(uchardet))
        return {uchardet.code, FindSingleLimit(text)};
    return {};
}

}  // namespace Kestra::Base
