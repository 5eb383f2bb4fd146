#include "platform/SystemConverter.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <utility>

#include "platform/Results.h"
#include "platform/posix/IcuResult.h"
#include "platform/posix/OwnCodePages.h"

namespace Kestra::StringNS {

namespace {

static_assert(sizeof(UChar) == sizeof(WideChar));

/// The ICU converter for a code page.
struct ConverterName {
    CharSet::Code code;
    const char* name;
};

// Sources: ICU's converter names (convrtrs.txt) and Microsoft's list of code-page identifiers.
// Where ICU has several tables for a code page, it is the one with Microsoft's mappings: the names
// with "windows", ibm-943_P15A for 932, the 2007 table for EUC-JP.
constexpr ConverterName CONVERTERS[] = {
    {37, "ibm-37_P100-1995"},
    {437, "ibm-437_P100-1995"},
    {500, "ibm-500_P100-1995"},
    {708, "ibm-1089_P100-1995"},  // the Arabic letters; the drawing characters of 708 are in no table of ICU's
    {720, "ibm-720_P100-1997"},
    {737, "ibm-737_P100-1997"},
    {775, "ibm-775_P100-1996"},
    {850, "ibm-850_P100-1995"},
    {852, "ibm-852_P100-1995"},
    {855, "ibm-855_P100-1995"},
    {857, "ibm-857_P100-1995"},
    {858, "ibm-858_P100-1997"},
    {860, "ibm-860_P100-1995"},
    {861, "ibm-861_P100-1995"},
    {862, "ibm-862_P100-1995"},
    {863, "ibm-863_P100-1995"},
    {864, "ibm-864_X110-1999"},
    {865, "ibm-865_P100-1995"},
    {866, "ibm-866_P100-1995"},
    {869, "ibm-869_P100-1995"},
    {870, "ibm-870_P100-1995"},
    {874, "windows-874-2000"},
    {875, "ibm-875_P100-1995"},
    {932, "ibm-943_P15A-2003"},
    {936, "windows-936-2000"},
    {949, "windows-949-2000"},
    {950, "windows-950-2000"},
    {1026, "ibm-1026_P100-1995"},
    {1047, "ibm-1047_P100-1995"},
    {1140, "ibm-1140_P100-1997"},
    {1141, "ibm-1141_P100-1997"},
    {1142, "ibm-1142_P100-1997"},
    {1143, "ibm-1143_P100-1997"},
    {1144, "ibm-1144_P100-1997"},
    {1145, "ibm-1145_P100-1997"},
    {1146, "ibm-1146_P100-1997"},
    {1147, "ibm-1147_P100-1997"},
    {1148, "ibm-1148_P100-1997"},
    {1149, "ibm-1149_P100-1997"},
    {1201, "UTF-16BE"},
    {1250, "ibm-5346_P100-1998"},
    {1251, "ibm-5347_P100-1998"},
    {1253, "ibm-5349_P100-1998"},
    {1254, "ibm-5350_P100-1998"},
    {1255, "ibm-9447_P100-2002"},
    {1256, "ibm-9448_X100-2005"},
    {1257, "ibm-9449_P100-2002"},
    {1258, "ibm-5354_P100-1998"},
    {10000, "macos-0_2-10.2"},
    {10006, "macos-6_2-10.4"},
    {10007, "macos-7_3-10.2"},
    {10017, "macos-7_3-10.2"},
    {10029, "macos-29-10.2"},
    {10081, "macos-35-10.2"},
    {12000, "UTF-32LE"},
    {12001, "UTF-32BE"},
    {20273, "ibm-273_P100-1995"},
    {20277, "ibm-277_P100-1995"},
    {20278, "ibm-278_P100-1995"},
    {20280, "ibm-280_P100-1995"},
    {20284, "ibm-284_P100-1995"},
    {20285, "ibm-285_P100-1995"},
    {20290, "ibm-290_P100-1995"},
    {20297, "ibm-297_P100-1995"},
    {20420, "ibm-420_X120-1999"},
    {20424, "ibm-424_P100-1995"},
    {20838, "ibm-838_P100-1995"},
    {20866, "ibm-878_P100-1996"},
    {20871, "ibm-871_P100-1995"},
    {20932, "euc-jp-2007"},
    {20936, "ibm-1383_P110-1999"},
    {20949, "ibm-970_P110_P110-2006_U2"},
    {21025, "ibm-1025_P100-1995"},
    {21866, "ibm-1168_P100-2002"},
    {28592, "ibm-912_P100-1995"},
    {28593, "ibm-913_P100-2000"},
    {28594, "ibm-914_P100-1995"},
    {28595, "ibm-915_P100-1995"},
    {28596, "ibm-1089_P100-1995"},
    {28597, "ibm-9005_X110-2007"},
    {28598, "ibm-5012_P100-1999"},
    {28599, "ibm-920_P100-1995"},
    {28603, "ibm-921_P100-1995"},
    {28605, "ibm-923_P100-1998"},
    {38598, "ibm-5012_P100-1999"},
    {50220, "ISO_2022,locale=ja,version=1"},
    {50221, "ISO_2022,locale=ja,version=1"},
    {50222, "ISO_2022,locale=ja,version=3"},  // the version that knows the shifts SO and SI
    {50225, "ISO_2022,locale=ko,version=0"},
    {50227, "ISO_2022,locale=zh,version=1"},
    {51932, "euc-jp-2007"},
    {51936, "windows-936-2000"},
    {51949, "windows-949-2000"},
    {51950, "euc-tw-2014"},
    {52936, "HZ"},
    {54936, "gb18030"},
    {57002, "ISCII,version=0"},
    {57003, "ISCII,version=1"},
    {57004, "ISCII,version=5"},
    {57005, "ISCII,version=6"},
    {57006, "ISCII,version=1"},
    {57007, "ISCII,version=4"},
    {57008, "ISCII,version=7"},
    {57009, "ISCII,version=8"},
    {57010, "ISCII,version=3"},
    {57011, "ISCII,version=2"},
    {65000, "UTF-7"},
};

constexpr bool ByCode(const ConverterName& left, const ConverterName& right) {
    return left.code < right.code;
}

/// Whether U+FFFD can be written in a code page.
constexpr bool HasReplacement(CharSet::Code code) {
    return code == 1201 || code == 12000 || code == 12001 || code == 54936 || code == 65000;
}

/// Whether ICU's one-way mappings apply from UTF-16: in these two they write half-width katakana as
/// full-width ones. Elsewhere they would write look-alikes.
constexpr bool UsesFallback(CharSet::Code code) {
    return code == 50220 || code == 50221;
}

static_assert(std::is_sorted(std::begin(CONVERTERS), std::end(CONVERTERS), ByCode));

/// Source units that one ICU call takes, far below the 2^31 bytes that it accepts: sizes have 64
/// bits here.
constexpr std::size_t STEP = 4096;

/// Target units that one call may fill: more than any step makes, below ICU's limit of 2^30.
constexpr std::size_t MAX_ROOM = 64 * STEP;

constexpr UChar UNMAPPABLE = '?';

/// A single byte that a Windows code page gives a character and ICU's table none.
struct SingleByte {
    CharSet::Code code;
    unsigned char byte;
    WideChar unit;
};

// Source: Microsoft's best-fit table of code page 932.
constexpr SingleByte SINGLE_BYTES[] = {
    {932, 0x80, 0x0080}, {932, 0xA0, 0xF8F0}, {932, 0xFD, 0xF8F1}, {932, 0xFE, 0xF8F2}, {932, 0xFF, 0xF8F3},
};

/// Writes what ICU's table lacks, and U+FFFD for an invalid or unassigned byte sequence. ICU's own
/// callback writes U+001A for single bytes of some code pages.
/// @param context  the converter's row in `CONVERTERS`.
extern "C" void ReplaceBytes(const void* context, UConverterToUnicodeArgs* arguments, const char* bytes,
                             std::int32_t size, UConverterCallbackReason reason, UErrorCode* error) {
    if (reason > UCNV_IRREGULAR)
        return;  // a reset, a copy or the closing of the converter
    const CharSet::Code code = static_cast<const ConverterName*>(context)->code;
    UChar unit = REPLACEMENT;
    for (const SingleByte& single : SINGLE_BYTES) {
        if (single.code == code && size == 1 && single.byte == static_cast<unsigned char>(*bytes))
            unit = single.unit;
    }
    *error = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(arguments, &unit, 1, 0, error);
}

/// Writes what ICU's table lacks, and "?" or U+FFFD for a character that the code page lacks, once
/// per code point or lone surrogate.
/// @param context  the converter's row in `CONVERTERS`.
extern "C" void ReplaceCharacter(const void* context, UConverterFromUnicodeArgs* arguments, const UChar*, std::int32_t,
                                 UChar32 codePoint, UConverterCallbackReason reason, UErrorCode* error) {
    if (reason > UCNV_IRREGULAR)
        return;
    *error = U_ZERO_ERROR;
    const CharSet::Code code = static_cast<const ConverterName*>(context)->code;
    for (const SingleByte& single : SINGLE_BYTES) {
        if (single.code == code && static_cast<UChar32>(single.unit) == codePoint) {
            const char byte = static_cast<char>(single.byte);
            ucnv_cbFromUWriteBytes(arguments, &byte, 1, 0, error);
            return;
        }
    }
    const UChar unit = HasReplacement(code) ? REPLACEMENT : UNMAPPABLE;
    const UChar* source = &unit;
    ucnv_cbFromUWriteUChars(arguments, &source, source + 1, 0, error);
}

/// Several IBM tables rotate three controls: byte 1A is U+001C, 1C is U+007F and 7F is U+001A. The
/// Windows code pages leave all three where they are. Undoes the rotation on the Unicode side,
/// where no other byte gives these characters.
WideChar TurnBack(WideChar unit) {
    return unit == 0x1C ? WideChar{0x1A} : unit == 0x7F ? WideChar{0x1C} : unit == 0x1A ? WideChar{0x7F} : unit;
}

/// The other way: what ICU must be given so that it writes the bytes of the Windows code page.
WideChar TurnForth(WideChar unit) {
    return unit == 0x1A ? WideChar{0x1C} : unit == 0x1C ? WideChar{0x7F} : unit == 0x7F ? WideChar{0x1A} : unit;
}

/// Converts `size` units in steps, and gives `*output` more room whenever ICU asks for it.
/// @param convert  one ICU call: (to, its end, from, its end, whether the input ends there, error),
///                 advancing `*to` and `*from`.
template <typename In, typename Out, typename Convert>
std::uint32_t ConvertInSteps(const In* from, std::uint64_t size, Out* output, Convert convert) {
    if (size == 0)
        return RESULT_OK;  // not even the header of ISO-2022-KR
    const In* const end = from + size;
    output->resize(static_cast<std::size_t>(size));
    std::size_t used = 0;
    for (bool isDone = false; !isDone;) {
        const In* const stepEnd = from + std::min(STEP, static_cast<std::size_t>(end - from));
        typename Out::value_type* to = output->data() + used;
        UErrorCode error = U_ZERO_ERROR;
        convert(&to, output->data() + std::min(output->size(), used + MAX_ROOM), &from, stepEnd, stepEnd == end ? 1 : 0,
                &error);
        used = static_cast<std::size_t>(to - output->data());
        if (error == U_BUFFER_OVERFLOW_ERROR) {
            output->resize(2 * output->size() + 64);  // 64: a few characters may need escapes around each
        } else if (!HasSucceeded(error)) {
            output->clear();
            return RESULT_UNSUPPORTED_CHARSET;
        } else {
            isDone = stepEnd == end;
        }
    }
    output->resize(used);
    return RESULT_OK;
}

/// A code page that ICU has no converter for.
class OwnConverter final : public SystemConverter {
public:
    explicit OwnConverter(std::unique_ptr<OwnCodePage> ownPage) : page(std::move(ownPage)) {}

    std::uint32_t ToWide(const char* data, std::uint64_t size, WideString* output) override {
        page->ToWide(data, size, output);
        return RESULT_OK;
    }

    std::uint32_t FromWide(const WideChar* data, std::uint64_t size, std::string* output) override {
        page->FromWide(data, size, output);
        return RESULT_OK;
    }

private:
    std::unique_ptr<OwnCodePage> page;
};

class IcuConverter final : public SystemConverter {
public:
    /// @return an open converter, or null. Throws `std::bad_alloc`.
    static std::unique_ptr<IcuConverter> Open(const ConverterName* name);

    ~IcuConverter() override;

    std::uint32_t ToWide(const char* data, std::uint64_t size, WideString* output) override;
    std::uint32_t FromWide(const WideChar* data, std::uint64_t size, std::string* output) override;

private:
    bool Rotates();

    UConverter* converter = nullptr;
    bool isRotated = false;  ///< `TurnBack` applies
};

std::unique_ptr<IcuConverter> IcuConverter::Open(const ConverterName* name) {
    auto opened = std::make_unique<IcuConverter>();
    UErrorCode error = U_ZERO_ERROR;
    opened->converter = ucnv_open(name->name, &error);
    ucnv_setToUCallBack(opened->converter, ReplaceBytes, name, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(opened->converter, ReplaceCharacter, name, nullptr, nullptr, &error);
    if (!HasSucceeded(error)) {
        // Without its list of names, which it may have had no memory to read, ICU takes a name with
        // options for an unknown one.
        UErrorCode listError = U_ZERO_ERROR;
        ucnv_countAliases(name->name, &listError);
        HasSucceeded(listError);
        return nullptr;
    }
    ucnv_setFallback(opened->converter, UsesFallback(name->code) ? 1 : 0);
    opened->isRotated = opened->Rotates();
    return opened;
}

IcuConverter::~IcuConverter() {
    ucnv_close(converter);  // takes null
}

std::uint32_t IcuConverter::ToWide(const char* data, std::uint64_t size, WideString* output) {
    ucnv_resetToUnicode(converter);
    const std::uint32_t result = ConvertInSteps(
        data, size, output,
        [this](WideChar** to, const WideChar* toEnd, const char** from, const char* fromEnd, UBool isLast,
               UErrorCode* error) { ucnv_toUnicode(converter, to, toEnd, from, fromEnd, nullptr, isLast, error); });
    if (isRotated)
        std::transform(output->begin(), output->end(), output->begin(), TurnBack);
    return result;
}

std::uint32_t IcuConverter::FromWide(const WideChar* data, std::uint64_t size, std::string* output) {
    ucnv_resetFromUnicode(converter);
    return ConvertInSteps(data, size, output,
                          [this](char** to, const char* toEnd, const WideChar** from, const WideChar* fromEnd,
                                 UBool isLast, UErrorCode* error) {
                              if (!isRotated) {
                                  ucnv_fromUnicode(converter, to, toEnd, from, fromEnd, nullptr, isLast, error);
                                  return;
                              }
                              std::array<WideChar, STEP> turned;
                              const WideChar* const turnedEnd =
                                  std::transform(*from, fromEnd, turned.data(), TurnForth);
                              const WideChar* next = turned.data();
                              ucnv_fromUnicode(converter, to, toEnd, &next, turnedEnd, nullptr, isLast, error);
                              *from += next - turned.data();
                          });
}

bool IcuConverter::Rotates() {
    std::array<UChar, 8> units{};
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t count =
        ucnv_toUChars(converter, units.data(), static_cast<std::int32_t>(units.size()), "\x1A\x1C\x7F", 3, &error);
    return HasSucceeded(error) && count == 3 && units[0] == 0x1C && units[1] == 0x7F && units[2] == 0x1A;
}

}  // namespace

CharSet::Code SystemConverter::GetAnsiCode() {
    return CharSet::WINDOWS_1252;
}

std::unique_ptr<SystemConverter> SystemConverter::Open(CharSet::Code code) {
    if (auto own = OwnCodePage::Open(code))
        return std::make_unique<OwnConverter>(std::move(own));
    const auto* const name =
        std::lower_bound(std::begin(CONVERTERS), std::end(CONVERTERS), ConverterName{code, nullptr}, ByCode);
    if (name == std::end(CONVERTERS) || name->code != code)
        return nullptr;
    return IcuConverter::Open(name);
}

}  // namespace Kestra::StringNS
