#pragma once

#include <cstdint>
#include <string_view>

#include "platform/CharSet.h"
#include "platform/CharsetDetector.h"
#include "platform/posix/DetectorEngines.h"

namespace Kestra::Base {

/// What speaks for an answer about a text.
struct Evidence {
    /// Bits by which the next charset that reads the text otherwise is worse; below 0 when one
    /// without a code page is better.
    double margin = 0;
    double highBytes = 0;         ///< bytes from 128 up
    double bitsPerByte = 0;       ///< what the answer's page takes for each of them
    bool uchardetAgrees = false;  ///< reads the text the same
    bool icuAgrees = false;
    double icuConfidence = 0;  ///< 0 to 1, for whatever ICU names
    double textBytes = 0;
    double shownBytes = 0;  ///< of these the ones that are no white space
    double controls = 0;    ///< those that text has no use for
    bool isDoubleByte = false;
};

struct Judgement {
    StringNS::CharSet::Code code = 0;  ///< 0 without a byte from 128 up
    Evidence evidence;
    bool isThin = false;           ///< what is beyond ASCII are a few signs: no language is to be told by them
    bool hasSignsOnly = false;     ///< and 1252 reads all of it as signs
    DetectedCharset engines;       ///< for thin text: what the engines say without the models
    bool enginesReadSame = false;  ///< and whether that page reads the text as `code` does
};

/// Weighs the costs of all pages and what both engines say about a text without markup.
Judgement JudgeText(std::string_view text, const EngineAnswer& icu, const EngineAnswer& uchardet);

/// How many of a hundred answers with such evidence are estimated to be right.
std::uint32_t FindConfidence(const Evidence& evidence);

/// The most that an answer may be given for so little text, whoever gives it.
std::uint32_t LimitByLength(const Evidence& evidence, std::uint32_t confidence);

}  // namespace Kestra::Base
