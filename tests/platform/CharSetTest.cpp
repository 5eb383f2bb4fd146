#include "platform/CharSet.h"

#include "tests/platform/ConverterCheck.h"

namespace Kestra::Test {
namespace {

std::string Narrow(const WideString& text) {
    std::string narrow;
    for (const WideChar character : text)
        narrow += static_cast<char>(character);
    return narrow;
}

std::string ToUpper(std::string text) {
    for (char& character : text)
        character = character >= 'a' && character <= 'z' ? static_cast<char>(character - 0x20) : character;
    return text;
}

std::string ToLower(std::string text) {
    for (char& character : text)
        character = FoldAscii(character);
    return text;
}

// Looked up before main: the table needs no constructor that could run too late.
const CharSet::Code FOUND_DURING_INITIALIZATION = CharSet::GetCharSetCode(KESTRA_WIDE("koi8-r"));
const WideString NAMED_DURING_INITIALIZATION = CharSet::GetCharSetName(20866);

TEST(CharSetTest, NamesAreFoundDuringStaticInitialization) {
    EXPECT_EQ(FOUND_DURING_INITIALIZATION, 20866U);
    EXPECT_EQ(Narrow(NAMED_DURING_INITIALIZATION), "KOI8-R");
}

TEST(CharSetTest, DeclaredNamesLeadToTheCodePageTheirTextIsIn) {
    struct Case {
        CharSet::Code code;
        const char* names;
    };
    const Case cases[] = {
        {932, "shift_jis shift-jis sjis x-sjis ms_kanji csshiftjis windows-31j cswindows31j"},
        {936, "gb2312 csgb2312 gbk cp936 ms936 windows-936 gb_2312-80 chinese iso-ir-58 x-gbk"},
        {949, "euc-kr cseuckr ks_c_5601-1987 ks_c_5601-1989 ksc_5601 korean iso-ir-149 csksc56011987 windows-949"},
        {950, "big5 csbig5 cn-big5 x-x-big5 big5-hkscs"},
        {874, "windows-874 tis-620 iso-8859-11"},
        {1200, "utf-16 utf-16le csutf16 iso-10646-ucs-2 csunicode ucs-2 unicode"},
        {1201, "utf-16be unicodefffe"},
        {1250, "windows-1250 cp1250 x-cp1250 cswindows1250"},
        {1251, "windows-1251 cp1251"},
        {1252, "windows-1252 cp1252"},
        {1253, "windows-1253"},
        {1254, "windows-1254"},
        {1255, "windows-1255"},
        {1256, "windows-1256"},
        {1257, "windows-1257"},
        {1258, "windows-1258"},
        {866, "ibm866 cp866 866 csibm866"},
        {10000, "macintosh mac csmacintosh x-mac-roman"},
        {10007, "x-mac-cyrillic"},
        {12000, "utf-32 utf-32le"},
        {12001, "utf-32be"},
        {20127, "us-ascii ascii ansi_x3.4-1968 iso646-us us cp367 iso-ir-6"},
        {20866, "koi8-r cskoi8r koi8"},
        {21866, "koi8-u"},
        {28591, "iso-8859-1 iso_8859-1:1987 latin1 l1 ibm819 cp819 csisolatin1 iso-ir-100 iso8859-1"},
        {28592, "iso-8859-2 latin2 l2"},
        {28595, "iso-8859-5 cyrillic"},
        {28596, "iso-8859-6 arabic asmo-708 iso-8859-6-i iso-8859-6-e"},
        {28597, "iso-8859-7 greek greek8 elot_928"},
        {28598, "iso-8859-8 hebrew iso-8859-8-e visual"},
        {28599, "iso-8859-9 latin5 l5"},
        {28603, "iso-8859-13"},
        {28605, "iso-8859-15 latin-9"},
        {38598, "iso-8859-8-i csiso88598i logical"},
        {50220, "cp50220"},
        {50221, "iso-2022-jp csiso2022jp"},
        {50225, "iso-2022-kr csiso2022kr"},
        {51932, "euc-jp extended_unix_code_packed_format_for_japanese cseucpkdfmtjapanese x-euc-jp cp51932"},
        {52936, "hz-gb-2312"},
        {54936, "gb18030"},
        {65000, "utf-7 csutf7 unicode-1-1-utf-7"},
        {65001, "utf-8 utf8 csutf8 unicode-1-1-utf-8"},
    };
    for (const Case& c : cases) {
        for (const std::string& name : SplitNames(c.names))
            EXPECT_EQ(CharSet::GetCharSetCode(To<WideString>(name)), c.code) << name;
    }
}

TEST(CharSetTest, UnknownNamesHaveNoCode) {
    const std::string_view names[] = {
        "",           " ",          "x-unknown",     "bogus",  " utf-8", "utf-8 ", "utf-8\t",  "\"utf-8\"",
        "utf-8\0"sv,  "utf\0-8"sv,  "utf-",          "utf-88", "tf-8",   "UTF_8",  "0",        "65001",
        "windows",    "cp",         "zzzzzzzzzz",    "-",      "!",      "~",      "koi8-r\n", "iso-88",
        "windows-12", "iso 8859-1", "iso-2022-jp-2", "viscii",
    };
    for (const std::string_view name : names)
        EXPECT_EQ(CharSet::GetCharSetCode(To<WideString>(name)), CharSet::UNKNOWN) << name;
    EXPECT_EQ(CharSet::GetCharSetCode(WideString(100000, static_cast<WideChar>('u'))), CharSet::UNKNOWN);
}

TEST(CharSetTest, OnlyAsciiLettersAreFolded) {
    EXPECT_EQ(CharSet::GetCharSetCode(KESTRA_WIDE("UtF-8")), 65001U);
    EXPECT_EQ(CharSet::GetCharSetCode(KESTRA_WIDE("\u212AOI8-R")), CharSet::UNKNOWN);  // KELVIN SIGN
    EXPECT_EQ(CharSet::GetCharSetCode(KESTRA_WIDE("\u017Fhift_ji\u017F")),
              CharSet::UNKNOWN);                                                      // LATIN SMALL LETTER LONG S
    EXPECT_EQ(CharSet::GetCharSetCode(KESTRA_WIDE("\u0175tf-8")), CharSet::UNKNOWN);  // the low byte is "u"
    EXPECT_EQ(CharSet::GetCharSetCode(KESTRA_WIDE("utf-\uFF18")), CharSet::UNKNOWN);
    EXPECT_EQ(CharSet::GetCharSetCode(KESTRA_WIDE("iso\r8859-1")),
              CharSet::UNKNOWN);  // "-" and CR differ by the bit of case
}

TEST(CharSetTest, EveryNameLeadsToItsRowInAnyCase) {
    std::size_t count = 0;
    for (const CharSetRow& row : StringNS::GetCharSetRows()) {
        for (const std::string& name : SplitNames(row.names)) {
            EXPECT_FALSE(name.empty()) << row.code;
            EXPECT_EQ(CharSet::GetCharSetCode(To<WideString>(name)), row.code) << name;
            EXPECT_EQ(CharSet::GetCharSetCode(To<WideString>(ToUpper(name))), row.code) << name;
            EXPECT_EQ(CharSet::GetCharSetCode(To<WideString>(ToLower(name))), row.code) << name;
            EXPECT_EQ(CharSet::GetCharSetCode(To<WideString>(name + " ")), CharSet::UNKNOWN) << name;
            ++count;
        }
    }
    EXPECT_GT(count, 500U);
}

TEST(CharSetTest, PreferredNamesLeadBack) {
    std::set<CharSet::Code> shared;
    for (const CharSetRow& row : StringNS::GetSharedCharSetNames()) {
        shared.insert(row.code);
        EXPECT_EQ(Narrow(CharSet::GetCharSetName(row.code)), row.names);
        EXPECT_NE(CharSet::GetCharSetCode(To<WideString>(row.names)), CharSet::UNKNOWN) << row.names;
    }
    for (const CharSetRow& row : StringNS::GetCharSetRows()) {
        const WideString name = CharSet::GetCharSetName(row.code);
        EXPECT_FALSE(name.empty()) << row.code;
        if (shared.count(row.code) == 0) {
            EXPECT_EQ(Narrow(name), SplitNames(row.names).front()) << row.code;
            EXPECT_EQ(CharSet::GetCharSetCode(name), row.code) << row.code;
        }
    }
}

TEST(CharSetTest, CodesHaveTheirRegisteredNames) {
    struct Case {
        CharSet::Code code;
        const char* name;
    };
    const Case cases[] = {
        {20932, "EUC-JP"},       {51932, "EUC-JP"},       {54936, "GB18030"},        {20866, "KOI8-R"},
        {21866, "KOI8-U"},       {50220, "ISO-2022-JP"},  {50221, "ISO-2022-JP"},    {50222, "ISO-2022-JP"},
        {50225, "ISO-2022-KR"},  {1200, "UTF-16"},        {1201, "UTF-16BE"},        {65000, "UTF-7"},
        {65001, "UTF-8"},        {874, "windows-874"},    {932, "Shift_JIS"},        {936, "GBK"},
        {949, "KS_C_5601-1987"}, {950, "Big5"},           {51949, "EUC-KR"},         {708, "ASMO-708"},
        {1250, "windows-1250"},  {1251, "windows-1251"},  {1252, "windows-1252"},    {1253, "windows-1253"},
        {1254, "windows-1254"},  {1255, "windows-1255"},  {1256, "windows-1256"},    {1257, "windows-1257"},
        {1258, "windows-1258"},  {20127, "US-ASCII"},     {28591, "ISO-8859-1"},     {28592, "ISO-8859-2"},
        {28593, "ISO-8859-3"},   {28594, "ISO-8859-4"},   {28595, "ISO-8859-5"},     {28596, "ISO-8859-6"},
        {28597, "ISO-8859-7"},   {28598, "ISO-8859-8"},   {28599, "ISO-8859-9"},     {28603, "ISO-8859-13"},
        {28605, "ISO-8859-15"},  {38598, "ISO-8859-8-I"}, {10007, "x-mac-cyrillic"}, {10029, "x-mac-ce"},
        {52936, "HZ-GB-2312"},   {852, "IBM852"},         {855, "IBM855"},           {866, "IBM866"},
        {1361, "Johab"},         {51950, "EUC-TW"},       {12000, "UTF-32"},         {12001, "UTF-32BE"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Narrow(CharSet::GetCharSetName(c.code)), c.name) << c.code;
    for (const CharSet::Code code : {0U, 1U, 36U, 38U, 1259U, 20133U, 28602U, 65002U, 0xFFFFFFFFU})
        EXPECT_TRUE(CharSet::GetCharSetName(code).empty()) << code;
}

TEST(CharSetTest, ThreeCodePagesHideMarkupInEscapeRuns) {
    for (const CharSetRow& row : StringNS::GetCharSetRows())
        EXPECT_EQ(CharSet::IsIso2022(row.code), row.code == 50221 || row.code == 50222 || row.code == 50225)
            << row.code;
    EXPECT_TRUE(CharSet::IsIso2022(50222));
    EXPECT_FALSE(CharSet::IsIso2022(0));
}

}  // namespace
}  // namespace Kestra::Test
