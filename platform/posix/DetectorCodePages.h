#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/CharSet.h"

namespace Kestra::Base {

/// A charset name as an engine spells it, and the code page that the detector answers for it.
struct DetectorCodePage {
    std::string_view name;
    StringNS::CharSet::Code code = 0;
};

/// Every charset that uchardet 0.0.7 or ICU 72 can name and that has a Windows code page, in
/// alphabetical order, no name twice in any spelling of case.
///
/// A charset that is a subset of a Windows code page stands with the superset, which reads all of
/// its text the same: ISO-8859-1 is 1252, ISO-8859-9 is 1254, TIS-620 and ISO-8859-11 are 874,
/// GB2312 is GB18030, EUC-KR is 949. ISO-8859-8-I (Hebrew in the order of reading) is 1255, whose
/// letters are the same; two signs differ, the currency sign (A4) and the double underscore (DF).
///
/// Left out, as Windows has no code page for them: ISO-8859-10, ISO-8859-16, VISCII, EUC-TW,
/// ISO-2022-CN, the two reading orders of IBM420 and IBM424, the two unusual byte orders of UTF-32.
///
/// Sources: the code-page identifiers of Windows; the names in the sources of both engines.
std::span<const DetectorCodePage> DetectorCodePages();

/// The code page for the name of an engine, ASCII case ignored; 0 when there is none.
StringNS::CharSet::Code FindDetectorCodePage(std::string_view name);

}  // namespace Kestra::Base
