#pragma once

#include <cstdint>
#include <string>

#include "Characters.h"
#include "Export.h"

namespace Kestra::StringNS {

/// Character sets are Windows code-page numbers. This class maps them to registered charset names
/// and back.
class KESTRA_HTML_API CharSet {
public:
    using Code = std::uint32_t;

    static constexpr Code UNKNOWN = 0;
    static constexpr Code UTF16_LE = 1200;
    static constexpr Code WINDOWS_1252 = 1252;
    static constexpr Code US_ASCII = 20127;
    static constexpr Code EUC_JP_0208_1990 = 20932;
    static constexpr Code ISO_8859_1 = 28591;
    static constexpr Code ISO_2022_JP = 50221;
    static constexpr Code ISO_2022_JP_SISO = 50222;
    static constexpr Code ISO_2022_KR = 50225;
    static constexpr Code EUC_JP = 51932;
    static constexpr Code UTF7 = 65000;
    static constexpr Code UTF8 = 65001;

    /// The code of a registered charset name or alias: ASCII case is ignored, nothing is trimmed. 0
    /// for an unknown name.
    static Code GetCharSetCode(const WideString& name);

    /// The preferred name of a code, spelled as registered ("UTF-8", "Shift_JIS"); empty for a code
    /// without one.
    static WideString GetCharSetName(Code code);

    /// True for the three ISO-2022 code pages whose escape runs hide markup characters: 50221,
    /// 50222 and 50225.
    static bool IsIso2022(Code code);
};

}  // namespace Kestra::StringNS
