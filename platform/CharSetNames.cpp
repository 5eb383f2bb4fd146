#include "platform/CharSetNames.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Kestra::StringNS {

namespace {

// The header names the sources. Every table here is built by the compiler: a lookup during static
// initialization finds it whole.
constexpr CharSetRow ROWS[] = {
    {37, "IBM037 cp037 ebcdic-cp-us ebcdic-cp-ca ebcdic-cp-wt ebcdic-cp-nl csIBM037"},
    {437, "IBM437 cp437 437 csPC8CodePage437 windows-437"},
    {500, "IBM500 CP500 ebcdic-cp-be ebcdic-cp-ch csIBM500"},
    {720, "DOS-720 windows-720"},
    {737, "IBM737 cp737 windows-737"},
    {775, "IBM775 cp775 csPC775Baltic windows-775"},
    {850, "IBM850 cp850 850 csPC850Multilingual windows-850"},
    {852, "IBM852 cp852 852 csPCp852 windows-852"},
    {855, "IBM855 cp855 855 csIBM855 windows-855"},
    {857, "IBM857 cp857 857 csIBM857 windows-857"},
    {858, "IBM00858 CCSID00858 CP00858 PC-Multilingual-850+euro csIBM00858 cp858 windows-858"},
    {860, "IBM860 cp860 860 csIBM860"},
    {861, "IBM861 cp861 861 cp-is csIBM861 windows-861"},
    {862, "IBM862 cp862 862 csPC862LatinHebrew DOS-862 windows-862"},
    {863, "IBM863 cp863 863 csIBM863"},
    {864, "IBM864 cp864 csIBM864"},
    {865, "IBM865 cp865 865 csIBM865"},
    {866, "IBM866 cp866 866 csIBM866 windows-866"},
    {869, "IBM869 cp869 869 cp-gr csIBM869 windows-869"},
    {870, "IBM870 CP870 ebcdic-cp-roece ebcdic-cp-yu csIBM870"},
    {874, "windows-874 cswindows874 TIS-620 csTIS620 ISO-8859-11 iso8859-11 iso885911 DOS-874 x-windows-874 MS874"},
    {875, "cp875 IBM875"},
    {932,
     "Shift_JIS MS_Kanji csShiftJIS Windows-31J csWindows31J shift-jis sjis x-sjis cp932 MS932 x-ms-cp932 windows-932"},
    {936,
     "GBK CP936 MS936 windows-936 csGBK x-gbk GB2312 csGB2312 gb_2312 cn-gb GB_2312-80 gb2312-80 gb231280 iso-ir-58 "
     "chinese "
     "csISO58GB231280 csGB231280"},
    {949,
     "KS_C_5601-1987 KS_C_5601-1989 KSC_5601 korean iso-ir-149 csKSC56011987 ks_c_5601 ks_c_5601_1987 ks-c-5601 "
     "ks-c5601 ksc5601 "
     "EUC-KR csEUCKR cp949 MS949 windows-949 uhc"},
    {950, "Big5 csBig5 Big5-HKSCS csBig5HKSCS cn-big5 x-x-big5 x-big5 cp950 MS950 windows-950 x-windows-950"},
    {1026, "IBM1026 CP1026 csIBM1026"},
    {1047, "IBM1047 IBM-1047 csIBM1047 IBM01047 cp1047"},
    {1140, "IBM01140 CCSID01140 CP01140 ebcdic-us-37+euro csIBM01140"},
    {1141, "IBM01141 CCSID01141 CP01141 ebcdic-de-273+euro csIBM01141"},
    {1142, "IBM01142 CCSID01142 CP01142 ebcdic-dk-277+euro ebcdic-no-277+euro csIBM01142"},
    {1143, "IBM01143 CCSID01143 CP01143 ebcdic-fi-278+euro ebcdic-se-278+euro csIBM01143"},
    {1144, "IBM01144 CCSID01144 CP01144 ebcdic-it-280+euro csIBM01144"},
    {1145, "IBM01145 CCSID01145 CP01145 ebcdic-es-284+euro csIBM01145"},
    {1146, "IBM01146 CCSID01146 CP01146 ebcdic-gb-285+euro csIBM01146"},
    {1147, "IBM01147 CCSID01147 CP01147 ebcdic-fr-297+euro csIBM01147"},
    {1148, "IBM01148 CCSID01148 CP01148 ebcdic-international-500+euro csIBM01148"},
    {1149, "IBM01149 CCSID01149 CP01149 ebcdic-is-871+euro csIBM01149"},
    {1200, "UTF-16 csUTF16 UTF-16LE csUTF16LE ISO-10646-UCS-2 csUnicode ucs-2 unicode unicodeFEFF utf16 windows-1200"},
    {1201, "UTF-16BE csUTF16BE unicodeFFFE windows-1201"},
    {1250, "windows-1250 cswindows1250 cp1250 x-cp1250"},
    {1251, "windows-1251 cswindows1251 cp1251 x-cp1251"},
    {1252, "windows-1252 cswindows1252 cp1252 x-cp1252 x-ansi"},
    {1253, "windows-1253 cswindows1253 cp1253 x-cp1253"},
    {1254, "windows-1254 cswindows1254 cp1254 x-cp1254"},
    {1255, "windows-1255 cswindows1255 cp1255 x-cp1255"},
    {1256, "windows-1256 cswindows1256 cp1256 x-cp1256"},
    {1257, "windows-1257 cswindows1257 cp1257 x-cp1257"},
    {1258, "windows-1258 cswindows1258 cp1258 x-cp1258"},
    {1361, "Johab ms1361"},
    {10000, "macintosh mac csMacintosh x-mac-roman windows-10000"},
    {10006, "x-mac-greek windows-10006"},
    {10007, "x-mac-cyrillic mac-cyrillic windows-10007"},
    {10017, "x-mac-ukrainian"},
    {10029, "x-mac-ce x-mac-centraleurroman mac-centraleurope windows-10029"},
    {10081, "x-mac-turkish windows-10081"},
    {12000, "UTF-32 csUTF32 UTF-32LE csUTF32LE ISO-10646-UCS-4 csUCS4 ucs-4"},
    {12001, "UTF-32BE csUTF32BE"},
    {20105, "ISO_646.irv:1983 iso-ir-2 irv csISO2IntlRefVersion x-IA5"},
    {20106, "DIN_66003 iso-ir-21 de ISO646-DE csISO21German german x-IA5-German"},
    {20107, "SEN_850200_B iso-ir-10 FI ISO646-FI ISO646-SE se csISO10Swedish swedish x-IA5-Swedish"},
    {20108, "NS_4551-1 iso-ir-60 ISO646-NO no csISO60DanishNorwegian csISO60Norwegian1 norwegian x-IA5-Norwegian"},
    {20127,
     "US-ASCII ASCII ANSI_X3.4-1968 ANSI_X3.4-1986 ISO_646.irv:1991 ISO646-US us iso-ir-6 IBM367 cp367 csASCII "
     "windows-20127"},
    {20261, "T.61-8bit T.61 iso-ir-103 csISO103T618bit x-cp20261"},
    {20273, "IBM273 CP273 csIBM273"},
    {20277, "IBM277 EBCDIC-CP-DK EBCDIC-CP-NO csIBM277"},
    {20278, "IBM278 CP278 ebcdic-cp-fi ebcdic-cp-se csIBM278"},
    {20280, "IBM280 CP280 ebcdic-cp-it csIBM280"},
    {20284, "IBM284 CP284 ebcdic-cp-es csIBM284"},
    {20285, "IBM285 CP285 ebcdic-cp-gb csIBM285"},
    {20290, "IBM290 cp290 EBCDIC-JP-kana csIBM290"},
    {20297, "IBM297 cp297 ebcdic-cp-fr csIBM297"},
    {20420, "IBM420 cp420 ebcdic-cp-ar1 csIBM420"},
    {20423, "IBM423 cp423 ebcdic-cp-gr csIBM423"},
    {20424, "IBM424 cp424 ebcdic-cp-he csIBM424"},
    {20838, "IBM-Thai csIBMThai"},
    {20866, "KOI8-R csKOI8R koi8_r koi8 koi windows-20866"},
    {20871, "IBM871 CP871 ebcdic-cp-is csIBM871"},
    {20880, "IBM880 cp880 EBCDIC-Cyrillic csIBM880"},
    {20905, "IBM905 CP905 ebcdic-cp-tr csIBM905"},
    {20924, "IBM00924 CCSID00924 CP00924 ebcdic-Latin9--euro csIBM00924"},
    {20936, "x-cp20936"},
    {20949, "x-cp20949"},
    {21025, "cp1025"},
    {21866, "KOI8-U csKOI8U koi8-ru windows-21866"},
    {28591, "ISO-8859-1 ISO_8859-1:1987 ISO_8859-1 iso8859-1 iso88591 iso-ir-100 latin1 l1 IBM819 CP819 csISOLatin1"},
    {28592, "ISO-8859-2 ISO_8859-2:1987 ISO_8859-2 iso8859-2 iso88592 iso-ir-101 latin2 l2 csISOLatin2 windows-28592"},
    {28593, "ISO-8859-3 ISO_8859-3:1988 ISO_8859-3 iso8859-3 iso88593 iso-ir-109 latin3 l3 csISOLatin3 windows-28593"},
    {28594, "ISO-8859-4 ISO_8859-4:1988 ISO_8859-4 iso8859-4 iso88594 iso-ir-110 latin4 l4 csISOLatin4 windows-28594"},
    {28595,
     "ISO-8859-5 ISO_8859-5:1988 ISO_8859-5 iso8859-5 iso88595 iso-ir-144 cyrillic csISOLatinCyrillic windows-28595"},
    {28596,
     "ISO-8859-6 ISO_8859-6:1987 ISO_8859-6 iso8859-6 iso88596 iso-ir-127 ECMA-114 ASMO-708 arabic csISOLatinArabic "
     "windows-28596 "
     "ISO-8859-6-E ISO_8859-6-E csISO88596E ISO-8859-6-I ISO_8859-6-I csISO88596I"},
    {28597,
     "ISO-8859-7 ISO_8859-7:1987 ISO_8859-7 iso8859-7 iso88597 iso-ir-126 ELOT_928 ECMA-118 greek greek8 sun_eu_greek "
     "csISOLatinGreek "
     "windows-28597"},
    {28598,
     "ISO-8859-8 ISO_8859-8:1988 ISO_8859-8 iso8859-8 iso88598 iso-ir-138 hebrew visual csISOLatinHebrew windows-28598 "
     "ISO-8859-8-E ISO_8859-8-E csISO88598E"},
    {28599, "ISO-8859-9 ISO_8859-9:1989 ISO_8859-9 iso8859-9 iso88599 iso-ir-148 latin5 l5 csISOLatin5 windows-28599"},
    {28603, "ISO-8859-13 csISO885913 iso8859-13 iso885913 windows-28603"},
    {28605, "ISO-8859-15 ISO_8859-15 Latin-9 csISO885915 iso8859-15 iso885915 latin9 l9 csISOLatin9 windows-28605"},
    {38598, "ISO-8859-8-I ISO_8859-8-I csISO88598I logical"},
    {50220, "CP50220 csCP50220"},
    {50221, "ISO-2022-JP csISO2022JP JIS_Encoding csJISEncoding"},
    {50225, "ISO-2022-KR csISO2022KR"},
    {50227, "ISO-2022-CN csISO2022CN ISO-2022-CN-EXT csISO2022CNEXT x-cp50227"},
    {51932,
     "EUC-JP Extended_UNIX_Code_Packed_Format_for_Japanese csEUCPkdFmtJapanese CP51932 csCP51932 x-euc-jp x-euc"},
    {51936, "EUC-CN x-euc-cn"},
    {51950, "EUC-TW x-euc-tw"},
    {52936, "HZ-GB-2312"},
    {54936, "GB18030 csGB18030 windows-54936"},
    {57002, "x-iscii-de windows-57002"},
    {57003, "x-iscii-be windows-57003"},
    {57004, "x-iscii-ta windows-57004"},
    {57005, "x-iscii-te windows-57005"},
    {57006, "x-iscii-as windows-57006"},
    {57007, "x-iscii-or windows-57007"},
    {57008, "x-iscii-ka windows-57008"},
    {57009, "x-iscii-ma windows-57009"},
    {57010, "x-iscii-gu windows-57010"},
    {57011, "x-iscii-pa windows-57011"},
    {65000,
     "UTF-7 csUTF7 UNICODE-1-1-UTF-7 csUnicode11UTF7 unicode-2-0-utf-7 x-unicode-1-1-utf-7 x-unicode-2-0-utf-7 "
     "windows-65000"},
    {65001,
     "UTF-8 csUTF8 utf8 unicode-1-1-utf-8 unicode-2-0-utf-8 unicode11utf8 unicode20utf8 x-unicode20utf8 "
     "x-unicode-1-1-utf-8 "
     "x-unicode-2-0-utf-8 cp65001 windows-65001"},
};

constexpr CharSetRow SHARED_NAMES[] = {
    {708, "ASMO-708"}, {20932, "EUC-JP"}, {50220, "ISO-2022-JP"}, {50222, "ISO-2022-JP"}, {51949, "EUC-KR"},
};

/// One name of a row and the row's code.
struct Name {
    std::string_view text;
    CharSet::Code code = 0;
};

/// Below, equal to or above zero as the left name sorts before, with or after the right one, ASCII
/// case ignored.
template <typename C>
constexpr int CompareFolded(std::basic_string_view<C> left, std::string_view right) {
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        const int difference = static_cast<int>(FoldAscii(left[i])) - static_cast<int>(FoldAscii(right[i]));
        if (difference != 0)
            return difference;
    }
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

/// The first of some names.
constexpr std::string_view FirstName(std::string_view names) {
    return names.substr(0, names.find(' '));
}

constexpr std::size_t CountNames() {
    std::size_t count = 0;
    for (const CharSetRow& row : ROWS)
        count += 1 + static_cast<std::size_t>(std::count(row.names.begin(), row.names.end(), ' '));
    return count;
}

constexpr auto SortNames() {
    std::array<Name, CountNames()> names;
    std::size_t next = 0;
    for (const CharSetRow& row : ROWS) {
        for (std::string_view rest = row.names;;) {
            const std::string_view first = FirstName(rest);
            names[next++] = Name{first, row.code};
            if (first.size() == rest.size())
                break;
            rest.remove_prefix(first.size() + 1);
        }
    }
    std::sort(names.begin(), names.end(),
              [](const Name& left, const Name& right) { return CompareFolded(left.text, right.text) < 0; });
    return names;
}

constexpr auto NAMES = SortNames();

constexpr bool AreNamesUniqueAscii() {
    for (std::size_t i = 0; i < NAMES.size(); ++i) {
        if (NAMES[i].text.empty() || (i > 0 && CompareFolded(NAMES[i - 1].text, NAMES[i].text) == 0))
            return false;
        for (const char character : NAMES[i].text) {
            if (character <= ' ' || character > '~')
                return false;
        }
    }
    return true;
}

constexpr bool ByCode(const CharSetRow& left, const CharSetRow& right) {
    return left.code < right.code;
}

static_assert(AreNamesUniqueAscii());
static_assert(std::is_sorted(std::begin(ROWS), std::end(ROWS), ByCode));
static_assert(std::is_sorted(std::begin(SHARED_NAMES), std::end(SHARED_NAMES), ByCode));

std::string_view FindFirstName(std::span<const CharSetRow> rows, CharSet::Code code) {
    const auto row = std::lower_bound(rows.begin(), rows.end(), CharSetRow{code, {}}, ByCode);
    return row != rows.end() && row->code == code ? FirstName(row->names) : std::string_view();
}

}  // namespace

std::span<const CharSetRow> GetCharSetRows() {
    return ROWS;
}

std::span<const CharSetRow> GetSharedCharSetNames() {
    return SHARED_NAMES;
}

CharSet::Code FindCharSetCode(WideStringView name) {
    const auto found = std::lower_bound(NAMES.begin(), NAMES.end(), name, [](const Name& entry, WideStringView wanted) {
        return CompareFolded(wanted, entry.text) > 0;
    });
    return found != NAMES.end() && CompareFolded(name, found->text) == 0 ? found->code : CharSet::UNKNOWN;
}

std::string_view FindCharSetName(CharSet::Code code) {
    const std::string_view shared = FindFirstName(SHARED_NAMES, code);
    return shared.empty() ? FindFirstName(ROWS, code) : shared;
}

}  // namespace Kestra::StringNS
