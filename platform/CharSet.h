#pragma once

#include <cstdint>
#include <string>

#include "Characters.h"
#include "Export.h"

/// Strings and character sets.
namespace Kestra::StringNS {

/// Character sets are Windows code-page numbers. This class maps them to registered charset names
/// and back.
class KESTRA_HTML_API CharSet {
public:
    using Code = std::uint32_t;  ///< a Windows code page

    static constexpr Code UNKNOWN = 0;               ///< no charset is known
    static constexpr Code UTF16_LE = 1200;           ///< UTF-16, low byte first
    static constexpr Code WINDOWS_1252 = 1252;       ///< Western European, of Windows
    static constexpr Code US_ASCII = 20127;          ///< ASCII
    static constexpr Code EUC_JP_0208_1990 = 20932;  ///< Japanese, EUC with JIS X 0208-1990 and 0212-1990
    static constexpr Code ISO_8859_1 = 28591;        ///< Western European
    static constexpr Code ISO_2022_JP = 50221;       ///< Japanese, by escapes
    static constexpr Code ISO_2022_JP_SISO = 50222;  ///< the same with katakana by SO and SI
    static constexpr Code ISO_2022_KR = 50225;       ///< Korean, by SO and SI
    static constexpr Code EUC_JP = 51932;            ///< Japanese, EUC
    static constexpr Code UTF7 = 65000;              ///< UTF-7
    static constexpr Code UTF8 = 65001;              ///< UTF-8

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
