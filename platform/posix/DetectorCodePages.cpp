#include "platform/posix/DetectorCodePages.h"

#include <algorithm>

#include "platform/Characters.h"

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

constexpr DetectorCodePage CODE_PAGES[] = {
    {"ASCII", CharSet::US_ASCII},
    {"BIG5", 950},
    {"EUC-JP", CharSet::EUC_JP},
    {"EUC-KR", 949},
    {"GB18030", 54936},
    {"GB2312", 54936},
    {"HZ-GB-2312", 52936},
    {"IBM852", 852},
    {"IBM855", 855},
    {"IBM866", 866},
    {"ISO-2022-JP", CharSet::ISO_2022_JP},
    {"ISO-2022-KR", CharSet::ISO_2022_KR},
    {"ISO-8859-1", CharSet::WINDOWS_1252},
    {"ISO-8859-11", 874},
    {"ISO-8859-13", 28603},
    {"ISO-8859-15", 28605},
    {"ISO-8859-2", 28592},
    {"ISO-8859-3", 28593},
    {"ISO-8859-4", 28594},
    {"ISO-8859-5", 28595},
    {"ISO-8859-6", 28596},
    {"ISO-8859-7", 28597},
    {"ISO-8859-8", 28598},
    {"ISO-8859-8-I", 1255},
    {"ISO-8859-9", 1254},
    {"KOI8-R", 20866},
    {"MAC-CENTRALEUROPE", 10029},
    {"MAC-CYRILLIC", 10007},
    {"SHIFT_JIS", 932},
    {"TIS-620", 874},
    {"UHC", 949},
    {"UTF-16BE", 1201},
    {"UTF-16LE", CharSet::UTF16_LE},
    {"UTF-32BE", 12001},
    {"UTF-32LE", 12000},
    {"UTF-8", CharSet::UTF8},
    {"WINDOWS-1250", 1250},
    {"WINDOWS-1251", 1251},
    {"WINDOWS-1252", CharSet::WINDOWS_1252},
    {"WINDOWS-1253", 1253},
    {"WINDOWS-1254", 1254},
    {"WINDOWS-1255", 1255},
    {"WINDOWS-1256", 1256},
    {"WINDOWS-1257", 1257},
    {"WINDOWS-1258", 1258},
};

bool SameName(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, FoldAscii<char>, FoldAscii<char>);
}

}  // namespace

std::span<const DetectorCodePage> DetectorCodePages() {
    return CODE_PAGES;
}

CharSet::Code FindDetectorCodePage(std::string_view name) {
    const auto* found =
        std::ranges::find_if(CODE_PAGES, [name](const DetectorCodePage& row) { return SameName(row.name, name); });
    return found == std::ranges::end(CODE_PAGES) ? CharSet::UNKNOWN : found->code;
}

}  // namespace Kestra::Base
