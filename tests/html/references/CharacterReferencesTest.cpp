#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "html/framework/QuoteKind.h"
#include "html/references/CharacterReferences.h"
#include "html/references/NamedReferences.h"
#include "platform/CharSet.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"
#include "tests/html/parser/CountedAllocations.h"
#include "tests/support/Flavours.h"
#include "tests/support/RandomInput.h"
#include "tools/trace/TokenTrace.h"

// `compare-with-peer` decodes the same names, and random strings, by another library.

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::NAMED_REFERENCE_COUNT;
using HTML::NAMED_REFERENCES;
using StringNS::CharSet;
using StringNS::StringHelper;

template <typename Flavour>
using References = HTML::CharacterReferences<typename Flavour::C, typename Flavour::S>;

enum class Context { TEXT, VALUE };

/// The text of a flavour, from UTF-8.
template <typename S>
S FromUtf8(std::string_view text) {
    if constexpr (std::is_same_v<S, std::string>) {
        return S(text);
    } else {
        S wide;
        EXPECT_EQ(StringHelper::GetWideFromGeneric(CharSet::UTF8, text.data(), text.size(), &wide), RESULT_OK);
        return wide;
    }
}

template <typename Flavour>
bool Decode(Context context, const typename Flavour::S& text, typename Flavour::S* decoded) {
    return context == Context::TEXT ? References<Flavour>::DecodeText(text, decoded)
                                    : References<Flavour>::DecodeAttributeValue(text, decoded);
}

/// Decodes into another string, and in place; the answer must say whether that changed anything.
template <typename Flavour>
typename Flavour::S Decoded(Context context, const typename Flavour::S& text) {
    using S = typename Flavour::S;
    const S untouched = To<S>("untouched");
    S decoded = untouched;
    const bool changed = Decode<Flavour>(context, text, &decoded);
    if (!changed) {
        EXPECT_EQ(Trace::Escape(decoded), Trace::Escape(untouched));
        decoded = text;
    }
    EXPECT_EQ(changed, decoded != text) << Trace::Escape(text);
    S inPlace = text;
    EXPECT_EQ(Decode<Flavour>(context, inPlace, &inPlace), changed);
    EXPECT_EQ(Trace::Escape(inPlace), Trace::Escape(decoded));
    return decoded;
}

template <typename Flavour>
class CharacterReferencesTest : public testing::Test {};
TYPED_TEST_SUITE(CharacterReferencesTest, Flavours);

struct Row {
    const char* note;
    std::string_view input;  // UTF-8, as the results
    std::string_view text;
    std::string_view value;
};

constexpr Row ROWS[] = {
    {"nothing at all", "", "", ""},
    {"no reference", "tea and biscuits;", "tea and biscuits;", "tea and biscuits;"},
    {"an ampersand alone", "&", "&", "&"},
    {"an ampersand before other characters", "& &; &= &<&-&\u00E9&", "& &; &= &<&-&\u00E9&", "& &; &= &<&-&\u00E9&"},
    {"a reference after an ampersand", "&&amp;", "&&", "&&"},
    {"text is decoded once", "&amp;amp;&amp;lt;", "&amp;&lt;", "&amp;&lt;"},
    {"what is between references stays", "a&lt;b&gt;c&quot;d", "a<b>c\"d", "a<b>c\"d"},
    {"references side by side", "&lt;&lt;&#60;&#x3c;", "<<<<", "<<<<"},

    {"a name without a semicolon at the end", "&amp", "&", "&"},
    {"a name without a semicolon before a letter", "&ampx &ampX", "&x &X", "&ampx &ampX"},
    {"a name without a semicolon before a digit", "&amp0 &amp9", "&0 &9", "&amp0 &amp9"},
    {"a name without a semicolon before an equals sign", "?a&copy=1", "?a\u00A9=1", "?a&copy=1"},
    {"a name without a semicolon before anything else", "&lt &lt-&lt\u00E9&lt&lt", "< <-<\u00E9<<", "< <-<\u00E9<<"},
    {"a name with a semicolon before an equals sign or a letter", "&copy;=&copy;c", "\u00A9=\u00A9c", "\u00A9=\u00A9c"},
    {"the longest name counts", "&notin; &not &notin", "\u2209 \u00AC \u00ACin", "\u2209 \u00AC &notin"},
    {"a shorter name with what looks like the rest of a longer one", "&notit;", "\u00ACit;", "&notit;"},
    {"the longer one of two names without a semicolon", "&copysr &sup12 &sup1", "\u00A9sr \u00B92 \u00B9",
     "&copysr &sup12 \u00B9"},
    {"a value takes no shorter name either", "&timesbar;&timesba;&timesb", "\u2A31\u00D7ba;\u00D7b",
     "\u2A31&timesba;&timesb"},
    {"a name that needs its semicolon", "&alpha &alpha; &alpha", "&alpha \u03B1 &alpha", "&alpha \u03B1 &alpha"},
    {"a name cut by the end", "&alph", "&alph", "&alph"},
    {"no name", "&nosuch; &a; &zzzz", "&nosuch; &a; &zzzz", "&nosuch; &a; &zzzz"},
    {"upper and lower case", "&Eacute;&eacute;&EACUTE;&AMP;&Amp;", "\u00C9\u00E9&EACUTE;&&Amp;",
     "\u00C9\u00E9&EACUTE;&&Amp;"},
    {"the same letters in upper case without a semicolon", "&GT&Gt;&gT;&COPY", ">\u226B&gT;\u00A9",
     ">\u226B&gT;\u00A9"},
    {"a name with digits", "&frac34;&frac341", "\u00BE\u00BE1", "\u00BE&frac341"},
    {"the first name and the last one", "&AElig;&zwnj;", "\u00C6\u200C", "\u00C6\u200C"},
    {"the longest name", "&CounterClockwiseContourIntegral;", "\u2233", "\u2233"},
    {"the longest name cut by the end", "&CounterClockwiseContourIntegral", "&CounterClockwiseContourIntegral",
     "&CounterClockwiseContourIntegral"},
    {"longer than any name", "&CounterClockwiseContourIntegrals; &ampersandampersandampersandampersand;",
     "&CounterClockwiseContourIntegrals; &ersandampersandampersandampersand;",
     "&CounterClockwiseContourIntegrals; &ampersandampersandampersandampersand;"},
    {"two code points", "&NotEqualTilde;&fjlig;&ThickSpace;", "\u2242\u0338fj\u205F\u200A",
     "\u2242\u0338fj\u205F\u200A"},
    {"two code points that take more bytes than the reference", "&nGt;&nLt;", "\u226B\u20D2\u226A\u20D2",
     "\u226B\u20D2\u226A\u20D2"},
    {"code points beyond U+FFFF", "&Afr;&zopf;", "\U0001D504\U0001D56B", "\U0001D504\U0001D56B"},
    {"a name that stands for white space", "&Tab;&NewLine;&nbsp;", "\t\n\u00A0", "\t\n\u00A0"},

    {"decimal", "&#65;&#066;&#0000000000000000000067;", "ABC", "ABC"},
    {"hexadecimal", "&#x41;&#X42;&#x4a;&#X4A;&#x0000000000000000000043;", "ABJJC", "ABJJC"},
    {"a number without a semicolon, in values too", "&#65 &#65=&#65g&#x41 &#x41=&#x41g", "A A=AgA A=Ag",
     "A A=AgA A=Ag"},
    {"a number at the end", "&#65", "A", "A"},
    {"a hexadecimal number at the end", "&#x41", "A", "A"},
    {"a hexadecimal digit after a decimal number", "&#65a;", "Aa;", "Aa;"},
    {"a number right after a number", "&#65&#66", "AB", "AB"},
    {"no digits", "&#", "&#", "&#"},
    {"no digits before a semicolon", "&#;&#x;&#X;", "&#;&#x;&#X;", "&#;&#x;&#X;"},
    {"no digits after an x", "&#x", "&#x", "&#x"},
    {"no digit after an x", "&#xZ &#xg; &#X-1;", "&#xZ &#xg; &#X-1;", "&#xZ &#xg; &#X-1;"},
    {"no decimal digit", "&#a; &#-1; &# 1;", "&#a; &#-1; &# 1;", "&#a; &#-1; &# 1;"},
    {"a reference after no digits", "&#&#x&amp;", "&#&#x&", "&#&#x&"},
    {"zero", "&#0;&#x0;&#00;&#x000", "\uFFFD\uFFFD\uFFFD\uFFFD", "\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"surrogates", "&#xD800;&#xDBFF;&#xDC00;&#xDFFF;", "\uFFFD\uFFFD\uFFFD\uFFFD", "\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"surrogates make no pair", "&#xD83D;&#xDE00;", "\uFFFD\uFFFD", "\uFFFD\uFFFD"},
    {"beside the surrogates", "&#xD7FF;&#xE000;", "\uD7FF\uE000", "\uD7FF\uE000"},
    {"the last code point, and beyond", "&#x10FFFF;&#x110000;&#1114112;", "\U0010FFFF\uFFFD\uFFFD",
     "\U0010FFFF\uFFFD\uFFFD"},
    {"beyond 32 and 64 bits", "&#4294967361;&#x100000041;&#18446744073709551681;&#x10000000000000041;",
     "\uFFFD\uFFFD\uFFFD\uFFFD", "\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"beyond U+FFFF", "&#x10000;&#128512;", "\U00010000\U0001F600", "\U00010000\U0001F600"},
    {"windows-1252", "&#x80;&#130;&#x8e;&#150;&#x9F;", "\u20AC\u201A\u017D\u2013\u0178",
     "\u20AC\u201A\u017D\u2013\u0178"},
    {"what windows-1252 lacks", "&#x81;&#x8D;&#x8F;&#x90;&#157;", "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D",
     "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D"},
    {"beside windows-1252", "&#x7F;&#xA0;", "\x7F\u00A0", "\x7F\u00A0"},
    {"control characters", "&#1;&#x8;&#xD;&#x1F;&#10;", "\x01\x08\r\x1F\n", "\x01\x08\r\x1F\n"},
    {"noncharacters", "&#xFDD0;&#xFFFE;&#xFFFF;&#x1FFFF;", "\uFDD0\uFFFE\uFFFF\U0001FFFF",
     "\uFDD0\uFFFE\uFFFF\U0001FFFF"},
    {"replacement and mark", "&#xFFFD;&#xFEFF;", "\uFFFD\uFEFF", "\uFFFD\uFEFF"},
};

TYPED_TEST(CharacterReferencesTest, Decodes) {
    using S = typename TypeParam::S;
    for (const Row& row : ROWS) {
        // In a block of their own, so that a sanitizer sees where it ends.
        const auto input = std::make_unique<S>(FromUtf8<S>(row.input));
        EXPECT_EQ(Trace::Escape(Decoded<TypeParam>(Context::TEXT, *input)), Trace::Escape(FromUtf8<S>(row.text)))
            << row.note;
        EXPECT_EQ(Trace::Escape(Decoded<TypeParam>(Context::VALUE, *input)), Trace::Escape(FromUtf8<S>(row.value)))
            << row.note;
    }
}

TYPED_TEST(CharacterReferencesTest, KeepsNul) {
    using S = typename TypeParam::S;
    constexpr std::string_view input = "\0&\0&am\0p;&#\0&#1\0;&amp\0&lt;"sv;
    constexpr std::string_view decoded = "\0&\0&am\0p;&#\0\1\0;&\0<"sv;
    for (const Context context : {Context::TEXT, Context::VALUE})
        EXPECT_EQ(Trace::Escape(Decoded<TypeParam>(context, To<S>(input))), Trace::Escape(To<S>(decoded)));
}

TEST(CharacterReferencesWideTest, KeepsLoneSurrogates) {
    const struct {
        const char* note;
        WideString input;
        WideString decoded;
    } rows[] = {
        {"before a reference", {0xD83D, '&', 'l', 't', ';'}, {0xD83D, '<'}},
        {"after a reference", {'&', 'l', 't', ';', 0xDE00}, {'<', 0xDE00}},
        {"after a name without a semicolon", {'&', 'l', 't', 0xDE00}, {'<', 0xDE00}},
        {"inside a name", {'&', 'l', 0xD83D, 't', ';'}, {'&', 'l', 0xD83D, 't', ';'}},
        {"before a number that is the other half", {0xD83D, '&', '#', '5', '6', '8', '3', '2', ';'}, {0xD83D, 0xFFFD}},
        {"both halves around a reference", {0xD83D, '&', 'l', 't', ';', 0xDE00}, {0xD83D, '<', 0xDE00}},
        {"no letter inside a name: its low byte alone is", {'&', 'l', 0x0174, ';'}, {'&', 'l', 0x0174, ';'}},
        {"no letters: their low bytes alone are",
         {'&', 0x0161, 'l', 't', ';', '&', 0x016C, 0x0174},
         {'&', 0x0161, 'l', 't', ';', '&', 0x016C, 0x0174}},
        {"no digits: their low bytes alone are",
         {'&', '#', 0x0131, ';', '&', '#', 'x', 0xFF11},
         {'&', '#', 0x0131, ';', '&', '#', 'x', 0xFF11}},
        {"no ampersand, no semicolon",
         {0x0126, 'l', 't', ';', '&', 'a', 'l', 'p', 'h', 'a', 0x013B},
         {0x0126, 'l', 't', ';', '&', 'a', 'l', 'p', 'h', 'a', 0x013B}},
    };
    for (const auto& row : rows) {
        for (const Context context : {Context::TEXT, Context::VALUE})
            EXPECT_EQ(Trace::Escape(Decoded<Wide>(context, row.input)), Trace::Escape(row.decoded)) << row.note;
    }
}

/// A row of the table: its name, and what it stands for as UTF-8.
std::string_view NameOf(const HTML::NamedReference& row) {
    return {HTML::REFERENCE_NAMES + row.name, static_cast<std::size_t>((&row + 1)->name - row.name)};
}

std::string CharactersOf(const HTML::NamedReference& row) {
    WideString wide;
    if (row.first > 0xFFFF)
        wide.push_back(static_cast<WideChar>(0xD7C0 + (row.first >> 10)));
    wide.push_back(static_cast<WideChar>(row.first > 0xFFFF ? 0xDC00 | (row.first & 0x3FF) : row.first));
    if (row.second != 0)
        wide.push_back(static_cast<WideChar>(row.second));
    std::string text;
    EXPECT_EQ(StringHelper::GetStringFromWide(CharSet::UTF8, wide.data(), wide.size(), &text), RESULT_OK);
    return text;
}

TEST(NamedReferencesTest, AreSortedAndComplete) {
    std::size_t legacy = 0;
    std::string last;
    for (std::size_t i = 0; i < NAMED_REFERENCE_COUNT; ++i) {
        const std::string name(NameOf(NAMED_REFERENCES[i]));
        EXPECT_LT(last, name);
        EXPECT_LE(name.size(), 31U) << name;
        EXPECT_NE(NAMED_REFERENCES[i].first, 0U) << name;
        legacy += NAMED_REFERENCES[i].isLegacy;
        last = name;
    }
    EXPECT_EQ(legacy, 106U);
    EXPECT_EQ(NAMED_REFERENCES[0].name, 0U);
    EXPECT_EQ(NAMED_REFERENCES[NAMED_REFERENCE_COUNT].name, std::size(HTML::REFERENCE_NAMES) - 1);
}

/// What a name and the characters after it become, by a search through the whole table.
std::string Search(Context context, const std::string& text) {
    std::size_t longest = 0;
    const HTML::NamedReference* found = nullptr;
    for (std::size_t i = 0; i < NAMED_REFERENCE_COUNT; ++i) {
        const std::string_view name = NameOf(NAMED_REFERENCES[i]);
        if (text.compare(1, name.size(), name) != 0)
            continue;
        const bool isClosed = text.compare(1 + name.size(), 1, ";") == 0;
        const std::size_t length = 1 + name.size() + (isClosed ? 1 : 0);
        if ((isClosed || NAMED_REFERENCES[i].isLegacy == 1) && length > longest) {
            longest = length;
            found = &NAMED_REFERENCES[i];
        }
    }
    if (found == nullptr)
        return text;
    const std::string rest = text.substr(longest);
    if (context == Context::VALUE && text[longest - 1] != ';' && !rest.empty() &&
        std::string_view("=0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz").find(rest[0]) !=
            std::string_view::npos)
        return text;
    return CharactersOf(*found) + rest;
}

TYPED_TEST(CharacterReferencesTest, FindsEveryName) {
    using S = typename TypeParam::S;
    for (std::size_t i = 0; i < NAMED_REFERENCE_COUNT; ++i) {
        const std::string name(NameOf(NAMED_REFERENCES[i]));
        EXPECT_EQ(Search(Context::VALUE, '&' + name + ';'), CharactersOf(NAMED_REFERENCES[i])) << name;
        for (const char* after : {"", ";", "=", "x;", " "}) {
            const std::string text = '&' + name + after;
            for (const Context context : {Context::TEXT, Context::VALUE})
                ASSERT_EQ(Trace::Escape(Decoded<TypeParam>(context, To<S>(text))),
                          Trace::Escape(FromUtf8<S>(Search(context, text))))
                    << text;
        }
    }
}

// Each would take hours if a character were read again and again.
TYPED_TEST(CharacterReferencesTest, ReadsLongTextOnce) {
    using S = typename TypeParam::S;
    constexpr std::size_t LENGTH = 1 << 20;
    const struct {
        std::string_view begin;
        std::string_view repeated;
        std::string_view decodedBegin;
        std::string_view decodedRepeated;
    } rows[] = {
        {"", "&", "", "&"},
        {"", "&a", "", "&a"},
        {"", "&#", "", "&#"},
        {"", "&#x", "", "&#x"},
        {"&#", "1", "\xEF\xBF\xBD", ""},
        {"&#x", "0", "\xEF\xBF\xBD", ""},
        {"&", "a", "&", "a"},
        {"&amp", "a", "&", "a"},
        {"", "&lt;", "", "<"},
        {"", "&CounterClockwiseContourIntegra", "", "&CounterClockwiseContourIntegra"},
    };
    for (const auto& row : rows) {
        std::string text(row.begin);
        std::string decoded(row.decodedBegin);
        for (std::size_t i = 0; i < LENGTH / row.repeated.size(); ++i) {
            text += row.repeated;
            decoded += row.decodedRepeated;
        }
        EXPECT_TRUE(Decoded<TypeParam>(Context::TEXT, To<S>(text)) == FromUtf8<S>(decoded))
            << row.begin << row.repeated;
    }
}

TYPED_TEST(CharacterReferencesTest, AllocatesNothingForNothing) {
    using S = typename TypeParam::S;
    const std::string letters(10000, 'x');
    const S texts[] = {To<S>(letters), To<S>("& &a; &# &#x &alpha" + letters),
                       To<S>(letters + "& &a; &#; &#x; &alpha")};
    for (const S& text : texts) {
        for (const Context context : {Context::TEXT, Context::VALUE}) {
            S decoded;
            const std::size_t before = CountAllocations();
            const bool changed = Decode<TypeParam>(context, text, &decoded);
            EXPECT_EQ(CountAllocations(), before);
            EXPECT_FALSE(changed);
        }
    }
    S encoded;
    const std::size_t before = CountAllocations();
    const bool changed = References<TypeParam>::EncodeText(texts[0], &encoded) ||
                         References<TypeParam>::EncodeAttributeValue(texts[0], HTML::QUOTE_DOUBLE, &encoded);
    EXPECT_EQ(CountAllocations(), before);
    EXPECT_FALSE(changed);
}

TYPED_TEST(CharacterReferencesTest, KeepsTheMemoryOfItsOutput) {
    using S = typename TypeParam::S;
    const S text = To<S>(
        "tea &amp; biscuits, &lt;milk&gt;, &nGt; sugar, and so on for more characters than a string has without "
        "memory");
    S output;
    ASSERT_TRUE(References<TypeParam>::DecodeText(text, &output));
    const std::size_t before = CountAllocations();
    const bool changed =
        References<TypeParam>::DecodeText(text, &output) && References<TypeParam>::DecodeText(text, &output);
    EXPECT_EQ(CountAllocations(), before);
    EXPECT_TRUE(changed);
}

struct CharSetRow {
    const char* note;
    CharSet::Code code;
    std::string_view input;
    std::string_view decoded;  // bytes of the charset
};

constexpr CharSetRow CHAR_SET_ROWS[] = {
    {"a byte of the charset", CharSet::WINDOWS_1252, "&euro;&eacute;&#xE9;&#x80;&Yuml;", "\x80\xE9\xE9\x80\x9F"},
    {"what the charset lacks stays", CharSet::WINDOWS_1252, "&alpha;&eacute;&alpha;&#x3b1;&#0;",
     "&alpha;\xE9&alpha;&#x3b1;&#0;"},
    {"what the charset lacks stays without its semicolon", CharSet::US_ASCII, "&eacute &eacute&lt", "&eacute &eacute<"},
    {"a question mark is one", CharSet::US_ASCII, "&quest;&#63;&#xFF1F;", "??&#xFF1F;"},
    {"numbers below 160 are windows-1252, whatever the charset", CharSet::ISO_8859_1, "&#x80;&#x81;&#xA0;",
     "&#x80;\x81\xA0"},
    {"both code points or none", CharSet::US_ASCII, "&fjlig;&NotEqualTilde;", "fj&NotEqualTilde;"},
    {"beyond U+FFFF", CharSet::ISO_8859_1, "&Afr;&#x1F600;&amp;", "&Afr;&#x1F600;&"},
    {"other bytes stay as they are", CharSet::WINDOWS_1252, "\xFF\x81&amp\xE9&lt;\x80", "\xFF\x81&\xE9<\x80"},
    {"a charset of the system", 1253, "&alpha;&eacute;&euro;", "\xE1&eacute;\x80"},
    {"two bytes a character", 932, "\x83\x41&alpha;&eacute;&lt;", "\x83\x41\x83\xBF&eacute;<"},
    {"a second byte that is ASCII", 950, "&alpha;\xA5\x5C&nu;&eacute;&gt", "\xA3\x5C\xA5\x5C\xA3\x68&eacute;>"},
    {"UTF-8 as the others", CharSet::UTF8, "&alpha;&Afr;\xFF&amp;", "\xCE\xB1\xF0\x9D\x94\x84\xFF&"},
    {"UTF-16 as bytes", CharSet::UTF16_LE, "&amp;&lt;", "&amp;&lt;"},
    {"escapes", 50221, "\x1B$B&AMP;\x1B(B&amp;", "\x1B$B&AMP;\x1B(B&amp;"},
    {"UTF-7", CharSet::UTF7, "&amp;", "&amp;"},
    {"EBCDIC", 37, "&amp;", "&amp;"},
    {"no converter", 12345, "&amp;&eacute;", "&amp;&eacute;"},
};

TEST(CharacterReferencesCharSetTest, WritesTheCharSet) {
    for (const CharSetRow& row : CHAR_SET_ROWS) {
        for (const Context context : {Context::TEXT, Context::VALUE}) {
            std::string decoded = "untouched";
            const std::string input(row.input);
            const bool changed = context == Context::TEXT
                                     ? References<Narrow>::DecodeText(input, &decoded, row.code)
                                     : References<Narrow>::DecodeAttributeValue(input, &decoded, row.code);
            EXPECT_EQ(changed, row.input != row.decoded) << row.note;
            EXPECT_EQ(Trace::Escape(decoded), Trace::Escape(std::string(changed ? row.decoded : "untouched")))
                << row.note;
        }
    }
}

TEST(CharacterReferencesCharSetTest, ZeroIsTheAnsiRule) {
    std::string euro;
    ASSERT_EQ(StringHelper::GetAnsiFromWide(KESTRA_WIDE("\u20AC"), 1, &euro), RESULT_OK);
    std::string decoded;
    EXPECT_TRUE(References<Narrow>::DecodeText("&euro;", &decoded, CharSet::UNKNOWN));
    EXPECT_EQ(Trace::Escape(decoded), Trace::Escape(euro));
}

TEST(CharacterReferencesCharSetTest, WideTextHasNone) {
    for (const CharSet::Code code : {CharSet::UNKNOWN, CharSet::US_ASCII, CharSet::UTF16_LE, CharSet::Code{12345}}) {
        WideString decoded;
        EXPECT_TRUE(References<Wide>::DecodeText(KESTRA_WIDE("&alpha;&amp;"), &decoded, code));
        EXPECT_EQ(Trace::Escape(decoded), Trace::Escape(WideString(KESTRA_WIDE("\u03B1&"))));
    }
}

constexpr std::uint32_t TEXT = 100;  // beside the quotes

template <typename Flavour>
bool Encode(std::uint32_t form, const typename Flavour::S& text, typename Flavour::S* encoded) {
    return form == TEXT ? References<Flavour>::EncodeText(text, encoded)
                        : References<Flavour>::EncodeAttributeValue(text, form, encoded);
}

struct EncodeRow {
    const char* note;
    std::uint32_t form;
    std::string_view input;  // Latin-1, as the result
    std::string_view encoded;
};

constexpr EncodeRow ENCODE_ROWS[] = {
    {"nothing at all", TEXT, "", ""},
    {"text", TEXT, "a<b>&c&&", "a&lt;b&gt;&amp;c&amp;&amp;"},
    {"quotes in text", TEXT, "\"'", "\"'"},
    {"what is a reference already", TEXT, "&amp;&lt", "&amp;amp;&amp;lt"},
    {"no markup in text", TEXT, "tea = 'milk' & no sugar;", "tea = 'milk' &amp; no sugar;"},
    {"other characters stay", TEXT, "\0\t\n \xA0\xE9\xAD"sv, "\0\t\n \xA0\xE9\xAD"sv},
    {"a value in quotation marks", HTML::QUOTE_DOUBLE, "\"'<&>\"", "&quot;'<&amp;>&quot;"},
    {"a value in apostrophes", HTML::QUOTE_SINGLE, "\"'<&>'", "\"&#39;<&amp;>&#39;"},
    {"a value whose quotes are not known", HTML::QUOTE_NONE, "\"'<&>", "&quot;&#39;<&amp;>"},
    {"another number", 7, "\"'<&>", "&quot;&#39;<&amp;>"},
    {"other characters stay in values", HTML::QUOTE_DOUBLE, "\0\t\n \xA0\xE9=`/"sv, "\0\t\n \xA0\xE9=`/"sv},
};

TYPED_TEST(CharacterReferencesTest, Encodes) {
    using S = typename TypeParam::S;
    for (const EncodeRow& row : ENCODE_ROWS) {
        const S input = To<S>(row.input);
        S encoded = To<S>("untouched");
        const bool changed = Encode<TypeParam>(row.form, input, &encoded);
        EXPECT_EQ(changed, row.input != row.encoded) << row.note;
        EXPECT_EQ(Trace::Escape(encoded), Trace::Escape(To<S>(changed ? row.encoded : "untouched"))) << row.note;
        S inPlace = input;
        EXPECT_EQ(Encode<TypeParam>(row.form, inPlace, &inPlace), changed) << row.note;
        EXPECT_EQ(Trace::Escape(inPlace), Trace::Escape(To<S>(row.encoded))) << row.note;
    }
}

TEST(CharacterReferencesWideTest, EncodesNoCharacterOfTheSameLowByte) {
    const WideString text = {0x0126, 0x013C, 0x013E, 0x0122, 0x0127, 0xD83D};
    WideString encoded;
    for (const std::uint32_t form : {TEXT, std::uint32_t{HTML::QUOTE_NONE}})
        EXPECT_FALSE(Encode<Wide>(form, text, &encoded));
}

TYPED_TEST(CharacterReferencesTest, GivesBackWhatItEncoded) {
    using S = typename TypeParam::S;
    RandomInput random(31, {"&",       "&",     "<",
                            ">",       "\"",    "'",
                            ";",       "=",     " ",
                            "a",       "amp",   "amp;",
                            "&lt",     "&lt;",  "#",
                            "&#",      "&#39;", "x",
                            "1",       "f",     "g",
                            "&#x",     "&#0;",  "copy",
                            "&notit;", "\xE9",  "\xA0",
                            "\x80",    "\xFF",  "\xC3",
                            "\xA9",    "&&",    "\t",
                            "z",       "0",     "-",
                            "quot",    "/",     std::string(1, '\0')});
    std::size_t changes = 0;
    for (std::size_t i = 0; i < 50000; ++i) {
        S text = To<S>(random.Next(12));
        if (TypeParam::WIDE && random.Flip())
            text.insert(random.Below(text.size() + 1), 1,
                        static_cast<typename TypeParam::C>(0xD800 + random.Below(0x800)));
        for (const std::uint32_t form : {TEXT, std::uint32_t{HTML::QUOTE_DOUBLE}, std::uint32_t{HTML::QUOTE_SINGLE}}) {
            S encoded = text;
            changes += Encode<TypeParam>(form, text, &encoded) ? 1 : 0;
            const std::string_view never = form == TEXT ? "<>" : form == HTML::QUOTE_DOUBLE ? "\"" : "'";
            ASSERT_EQ(encoded.find_first_of(To<S>(never)), S::npos) << Trace::Escape(text);
            const S decoded = Decoded<TypeParam>(form == TEXT ? Context::TEXT : Context::VALUE, encoded);
            ASSERT_EQ(Trace::Escape(decoded), Trace::Escape(text)) << Trace::Escape(encoded);
        }
    }
    EXPECT_GT(changes, 50000U);
}

}  // namespace
}  // namespace Kestra::Test
