#pragma once

#include <cstdint>
#include <string_view>

#include "platform/CharSet.h"

namespace Kestra::Base {

/// What one engine says.
struct EngineAnswer {
    bool given = false;                ///< something speaks for the charset that the engine names
    StringNS::CharSet::Code code = 0;  ///< 0 for a charset without a code page, and for none
    std::uint32_t confidence = 0;      ///< 0 to 100; 0 from uchardet
    std::uint32_t utf8 = 0;            ///< the confidence in UTF-8, also when another comes first; 0 from uchardet
};

/// @param text  of one byte or more
/// @return 0, RESULT_UNAVAILABLE or RESULT_DETECTION_FAILED
std::uint32_t AskIcu(std::string_view text, EngineAnswer* answer);

/// As AskIcu.
std::uint32_t AskUchardet(std::string_view text, EngineAnswer* answer);

/// How sure ICU is of one charset, at whatever rank; 0 when it does not name it.
std::uint32_t AskIcuAbout(std::string_view bytes, StringNS::CharSet::Code code, std::uint32_t* confidence);

}  // namespace Kestra::Base
