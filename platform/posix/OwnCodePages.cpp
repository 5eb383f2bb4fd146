#include "platform/posix/OwnCodePages.h"

#include <unicode/unorm2.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "platform/CodePoints.h"
#include "platform/posix/IcuResult.h"
#include "platform/posix/JohabPage.h"

namespace Kestra::StringNS {

namespace {

constexpr WideChar UNMAPPABLE = u'?';

using ByteTable = std::array<WideChar, 256>;

// The 7-bit sets. Source: ISO 646 and the register of coded character sets, under the names that
// lead here (ISO-IR 2, 21, 10 and 60). The eighth bit is no part of any: a byte from 0x80 up is no
// character, as in 20127. Windows has later variants under two of the numbers, SEN 850200 C for
// 20107 and NS 4551-2 for 20108.

/// A byte that is another character than in ASCII.
struct Variant {
    unsigned char byte;
    WideChar unit;
};

template <std::size_t COUNT>
constexpr ByteTable MakeSevenBitTable(const Variant (&variants)[COUNT]) {
    ByteTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = byte < 0x80 ? static_cast<WideChar>(byte) : REPLACEMENT;
    for (const Variant& variant : variants)
        table[variant.byte] = variant.unit;
    return table;
}

constexpr ByteTable INTERNATIONAL = MakeSevenBitTable({{'$', 0x00A4}, {'~', 0x203E}});
constexpr ByteTable GERMAN = MakeSevenBitTable({{'@', 0x00A7},
                                                {'[', 0x00C4},
                                                {'\\', 0x00D6},
                                                {']', 0x00DC},
                                                {'{', 0x00E4},
                                                {'|', 0x00F6},
                                                {'}', 0x00FC},
                                                {'~', 0x00DF}});
constexpr ByteTable SWEDISH = MakeSevenBitTable({{'$', 0x00A4},
                                                 {'[', 0x00C4},
                                                 {'\\', 0x00D6},
                                                 {']', 0x00C5},
                                                 {'{', 0x00E4},
                                                 {'|', 0x00F6},
                                                 {'}', 0x00E5},
                                                 {'~', 0x203E}});
constexpr ByteTable NORWEGIAN = MakeSevenBitTable(
    {{'[', 0x00C6}, {'\\', 0x00D8}, {']', 0x00C5}, {'{', 0x00E6}, {'|', 0x00F8}, {'}', 0x00E5}, {'~', 0x203E}});

// The EBCDIC sets. Source: IBM's Character Data Representation Architecture (CDRA), coded character
// sets 423, 880, 905 and 924, with the characters that Microsoft's tables add to the first three.
// The controls lie where ICU's tables of EBCDIC have them; so 0x15 is U+0085 and 0x25 the line
// feed.

/// Bytes 0x00 to 0x3F.
constexpr std::array<unsigned char, 64> EBCDIC_CONTROLS = {
    0x00, 0x01, 0x02, 0x03, 0x9C, 0x09, 0x86, 0x7F, 0x97, 0x8D, 0x8E, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F,
    0x10, 0x11, 0x12, 0x13, 0x9D, 0x85, 0x08, 0x87, 0x18, 0x19, 0x92, 0x8F, 0x1C, 0x1D, 0x1E, 0x1F,
    0x80, 0x81, 0x82, 0x83, 0x84, 0x0A, 0x17, 0x1B, 0x88, 0x89, 0x8A, 0x8B, 0x8C, 0x05, 0x06, 0x07,
    0x90, 0x91, 0x16, 0x93, 0x94, 0x95, 0x96, 0x04, 0x98, 0x99, 0x9A, 0x9B, 0x14, 0x15, 0x9E, 0x1A};

/// @param graphics  bytes 0x40 to 0xFE; the last byte is the control U+009F
constexpr ByteTable MakeEbcdicTable(const WideChar (&graphics)[192]) {
    ByteTable table{};
    for (std::size_t byte = 0; byte < EBCDIC_CONTROLS.size(); ++byte)
        table[byte] = EBCDIC_CONTROLS[byte];
    for (std::size_t i = 0; i + 1 < std::size(graphics); ++i)
        table[EBCDIC_CONTROLS.size() + i] = graphics[i];
    table[0xFF] = 0x009F;
    return table;
}

// A line for each sixteen bytes.
// clang-format off
constexpr ByteTable GREEK = MakeEbcdicTable(
    u" \u0391\u0392\u0393\u0394\u0395\u0396\u0397\u0398\u0399[.<(+!"
    u"&\u039A\u039B\u039C\u039D\u039E\u039F\u03A0\u03A1\u03A3]$*);^"
    u"-/\u03A4\u03A5\u03A6\u03A7\u03A8\u03A9\uFFFD\uFFFD|,%_>?"
    u"\uFFFD\u0386\u0388\u0389\u00A0\u038A\u038C\u038E\u038F`:\u00A3\u00A7'=\""
    u"\u00C4abcdefghi\u03B1\u03B2\u03B3\u03B4\u03B5\u03B6"
    u"\u00D6jklmnopqr\u03B7\u03B8\u03B9\u03BA\u03BB\u03BC"
    u"\u00DC\u00A8stuvwxyz\u03BD\u03BE\u03BF\u03C0\u03C1\u03C3"
    u"\uFFFD\u03AC\u03AD\u03AE\u03CA\u03AF\u03CC\u03CD\u03CB\u03CE\u03C2\u03C4\u03C5\u03C6\u03C7\u03C8"
    u"\u00B8ABCDEFGHI\u00AD\u03C9\u00E2\u00E0\u00E4\u00EA"
    u"\u00B4JKLMNOPQR\u00B1\u00E9\u00E8\u00EB\u00EE\u00EF"
    u"\u00B0\uFFFDSTUVWXYZ\u00BD\u00F6\u00F4\u00FB\u00F9\u00FC"
    u"0123456789\u00FF\u00E7\u00C7\uFFFD\uFFFD");

constexpr ByteTable CYRILLIC = MakeEbcdicTable(
    u" \u00A0\u0452\u0453\u0451\u0454\u0455\u0456\u0457\u0458[.<(+!"
    u"&\u0459\u045A\u045B\u045C\u045E\u045F\u042A\u2116\u0402]$*);^"
    u"-/\u0403\u0401\u0404\u0405\u0406\u0407\u0408\u0409|,%_>?"
    u"\u040A\u040B\u040C\u00AD\u040E\u040F\u044E\u0430\u0431`:#@'=\""
    u"\u0446abcdefghi\u0434\u0435\u0444\u0433\u0445\u0438"
    u"\u0439jklmnopqr\u043A\u043B\u043C\u043D\u043E\u043F"
    u"\u044F~stuvwxyz\u0440\u0441\u0442\u0443\u0436\u0432"
    u"\u044C\u044B\u0437\u0448\u044D\u0449\u0447\u044A\u042E\u0410\u0411\u0426\u0414\u0415\u0424\u0413"
    u"{ABCDEFGHI\u0425\u0418\u0419\u041A\u041B\u041C"
    u"}JKLMNOPQR\u041D\u041E\u041F\u042F\u0420\u0421"
    u"\\\u00A4STUVWXYZ\u0422\u0423\u0416\u0412\u042C\u042B"
    u"0123456789\u0417\u0428\u042D\u0429\u0427");

constexpr ByteTable TURKISH = MakeEbcdicTable(
    u" \u00A0\u00E2\u00E4\u00E0\u00E1\uFFFD\u010B{\u00F1\u00C7.<(+!"
    u"&\u00E9\u00EA\u00EB\u00E8\u00ED\u00EE\u00EF\u00EC\u00DF\u011E\u0130*);^"
    u"-/\u00C2\u00C4\u00C0\u00C1\uFFFD\u010A[\u00D1\u015F,%_>?"
    u"\uFFFD\u00C9\u00CA\u00CB\u00C8\u00CD\u00CE\u00CF\u00CC\u0131:\u00D6\u015E'=\u00DC"
    u"\u02D8abcdefghi\u0127\u0109\u015D\u016D\uFFFD|"
    u"\u00B0jklmnopqr\u0125\u011D\u0135\u00B8\uFFFD\u00A4"
    u"\u00B5\u00F6stuvwxyz\u0126\u0108\u015C\u016C\uFFFD@"
    u"\u02D9\u00A3\u017C}\u017B\u00A7]\u00B7\u00BD$\u0124\u011C\u0134\u00A8\u00B4\u00D7"
    u"\u00E7ABCDEFGHI\u00AD\u00F4~\u00F2\u00F3\u0121"
    u"\u011FJKLMNOPQR`\u00FB\\\u00F9\u00FA\uFFFD"
    u"\u00FC\u00F7STUVWXYZ\u00B2\u00D4#\u00D2\u00D3\u0120"
    u"0123456789\u00B3\u00DB\"\u00D9\u00DA");

constexpr ByteTable LATIN_9 = MakeEbcdicTable(
    u" \u00A0\u00E2\u00E4\u00E0\u00E1\u00E3\u00E5\u00E7\u00F1\u00DD.<(+|"
    u"&\u00E9\u00EA\u00EB\u00E8\u00ED\u00EE\u00EF\u00EC\u00DF!$*);^"
    u"-/\u00C2\u00C4\u00C0\u00C1\u00C3\u00C5\u00C7\u00D1\u0160,%_>?"
    u"\u00F8\u00C9\u00CA\u00CB\u00C8\u00CD\u00CE\u00CF\u00CC`:#@'=\""
    u"\u00D8abcdefghi\u00AB\u00BB\u00F0\u00FD\u00FE\u00B1"
    u"\u00B0jklmnopqr\u00AA\u00BA\u00E6\u017E\u00C6\u20AC"
    u"\u00B5~stuvwxyz\u00A1\u00BF\u00D0[\u00DE\u00AE"
    u"\u00A2\u00A3\u00A5\u00B7\u00A9\u00A7\u00B6\u0152\u0153\u0178\u00AC\u0161\u00AF]\u017D\u00D7"
    u"{ABCDEFGHI\u00AD\u00F4\u00F6\u00F2\u00F3\u00F5"
    u"}JKLMNOPQR\u00B9\u00FB\u00FC\u00F9\u00FA\u00FF"
    u"\\\u00F7STUVWXYZ\u00B2\u00D4\u00D6\u00D2\u00D3\u00D5"
    u"0123456789\u00B3\u00DB\u00DC\u00D9\u00DA");

// clang-format on

/// A code page of single bytes.
class SingleBytePage final : public OwnCodePage {
public:
    explicit SingleBytePage(const ByteTable& characters) : table(characters) {}

private:
    WideChar GetSingle(unsigned char byte) const override {
        return table[byte];
    }

    std::int32_t FindBytes(WideChar unit) const override {
        const auto* const found = unit == REPLACEMENT ? table.end() : std::find(table.begin(), table.end(), unit);
        return found == table.end() ? -1 : static_cast<std::int32_t>(found - table.begin());
    }

    const ByteTable& table;
};

// T.61. Source: ITU-T T.61 and ISO-IR 103 for the single bytes. A byte from 0xC0 to 0xCF is an
// accent and stands before its letter; what both are together is Unicode's canonical composition,
// which gives all the pairs of T.61 and those that Windows has besides. An accent before a space
// stands alone; five of these are in ASCII, and in no other place of T.61.

constexpr unsigned char FIRST_ACCENT = 0xC0;
constexpr std::array<WideChar, 16> COMBINING_ACCENTS = {0,      0x0300, 0x0301, 0x0302, 0x0303, 0x0304, 0x0306, 0x0307,
                                                        0x0308, 0,      0x030A, 0x0327, 0,      0x030B, 0x0328, 0x030C};
constexpr std::array<WideChar, 16> LONE_ACCENTS = {0,      '`', 0x00B4, '^',    '~', 0x00AF, 0x02D8, 0x02D9,
                                                   0x00A8, 0,   0x02DA, 0x00B8, 0,   0x02DD, 0x02DB, 0x02C7};

constexpr ByteTable MakeT61Table() {
    // Bytes 0xA0 to 0xFF; the accents are none alone.
    constexpr WideChar UPPER[] =
        u"\uFFFD\u00A1\u00A2\u00A3$\u00A5#\u00A7\u00A4\uFFFD\uFFFD\u00AB\uFFFD\uFFFD\uFFFD\uFFFD"
        u"\u00B0\u00B1\u00B2\u00B3\u00D7\u00B5\u00B6\u00B7\u00F7\uFFFD\uFFFD\u00BB\u00BC\u00BD\u00BE\u00BF"
        u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"
        u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"
        u"\u2126\u00C6\u00D0\u00AA\u0126\uFFFD\u0132\u013F\u0141\u00D8\u0152\u00BA\u00DE\u0166\u014A\u0149"
        u"\u0138\u00E6\u0111\u00F0\u0127\u0131\u0133\u0140\u0142\u00F8\u0153\u00DF\u00FE\u0167\u014B\uFFFD";
    ByteTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = byte < 0xA0 ? static_cast<WideChar>(byte) : UPPER[byte - 0xA0];
    for (const char byte : {'#', '$', '\\', '^', '`', '{', '}', '~'})
        table[static_cast<unsigned char>(byte)] = REPLACEMENT;
    return table;
}

constexpr ByteTable T61 = MakeT61Table();

class T61Page final : public OwnCodePage {
public:
    /// @return null when ICU has no normalization
    static std::unique_ptr<OwnCodePage> Open() {
        UErrorCode error = U_ZERO_ERROR;
        const UNormalizer2* const normalizer = unorm2_getNFCInstance(&error);
        return HasSucceeded(error) ? std::unique_ptr<OwnCodePage>(new T61Page(normalizer)) : nullptr;
    }

private:
    explicit T61Page(const UNormalizer2* composition) : normalizer(composition) {}

    WideChar GetSingle(unsigned char byte) const override {
        return T61[byte];
    }

    WideChar GetDouble(unsigned char lead, unsigned char trail) const override {
        const std::size_t accent = static_cast<std::size_t>(lead) - FIRST_ACCENT;
        if (lead < FIRST_ACCENT || accent >= COMBINING_ACCENTS.size() || COMBINING_ACCENTS[accent] == 0)
            return 0;
        if (trail == ' ')
            return LONE_ACCENTS[accent];
        const UChar32 composed = unorm2_composePair(normalizer, T61[trail], COMBINING_ACCENTS[accent]);
        return composed < 0 ? WideChar{0} : static_cast<WideChar>(composed);
    }

    std::int32_t FindBytes(WideChar unit) const override {
        if (unit == 0 || unit == REPLACEMENT)
            return unit == 0 ? 0 : -1;
        const std::int32_t single = FindSingle(unit);
        if (single >= 0)
            return single;
        const auto* const lone = std::find(LONE_ACCENTS.begin(), LONE_ACCENTS.end(), unit);
        if (lone != LONE_ACCENTS.end())
            return Join(lone - LONE_ACCENTS.begin(), ' ');
        std::array<UChar, 4> parts{};
        UErrorCode error = U_ZERO_ERROR;
        const std::int32_t count =
            unorm2_getRawDecomposition(normalizer, unit, parts.data(), static_cast<std::int32_t>(parts.size()), &error);
        if (!HasSucceeded(error) || count != 2)
            return -1;
        const std::int32_t letter = FindSingle(parts[0]);
        const auto* const accent = std::find(COMBINING_ACCENTS.begin(), COMBINING_ACCENTS.end(), parts[1]);
        return letter < 0 || accent == COMBINING_ACCENTS.end() ? -1 : Join(accent - COMBINING_ACCENTS.begin(), letter);
    }

    static std::int32_t FindSingle(WideChar unit) {
        const auto* const found = std::find(T61.begin(), T61.end(), unit);
        return found == T61.end() ? -1 : static_cast<std::int32_t>(found - T61.begin());
    }

    static std::int32_t Join(std::ptrdiff_t accent, std::int32_t trail) {
        return static_cast<std::int32_t>(FIRST_ACCENT + accent) << 8 | trail;
    }

    const UNormalizer2* normalizer;  ///< ICU's, never freed
};

}  // namespace

OwnCodePage::OwnCodePage() = default;

OwnCodePage::~OwnCodePage() = default;

std::unique_ptr<OwnCodePage> OwnCodePage::Open(CharSet::Code code) {
    switch (code) {
        case 1361:
            return OpenJohabPage();
        case 20105:
            return std::make_unique<SingleBytePage>(INTERNATIONAL);
        case 20106:
            return std::make_unique<SingleBytePage>(GERMAN);
        case 20107:
            return std::make_unique<SingleBytePage>(SWEDISH);
        case 20108:
            return std::make_unique<SingleBytePage>(NORWEGIAN);
        case 20261:
            return T61Page::Open();
        case 20423:
            return std::make_unique<SingleBytePage>(GREEK);
        case 20880:
            return std::make_unique<SingleBytePage>(CYRILLIC);
        case 20905:
            return std::make_unique<SingleBytePage>(TURKISH);
        case 20924:
            return std::make_unique<SingleBytePage>(LATIN_9);
        default:
            return nullptr;
    }
}

WideChar OwnCodePage::GetDouble(unsigned char, unsigned char) const {
    return 0;
}

void OwnCodePage::ToWide(const char* data, std::uint64_t size, WideString* output) const {
    const char* const end = data + size;
    output->clear();
    output->reserve(static_cast<std::size_t>(size));
    while (data != end) {
        const auto lead = static_cast<unsigned char>(*data++);
        WideChar unit = GetSingle(lead);
        if (unit == REPLACEMENT && data != end) {
            const WideChar pair = GetDouble(lead, static_cast<unsigned char>(*data));
            if (pair != 0) {
                unit = pair;
                ++data;
            }
        }
        output->push_back(unit);
    }
}

void OwnCodePage::FromWide(const WideChar* data, std::uint64_t size, std::string* output) const {
    const auto put = [output](std::int32_t byte) {
        output->push_back(static_cast<char>(static_cast<unsigned char>(byte)));
    };
    const WideChar* const end = data + size;
    output->clear();
    output->reserve(static_cast<std::size_t>(size));
    while (data != end) {
        const WideChar unit = *data++;
        if (IsHighSurrogate(unit) && data != end && IsLowSurrogate(*data))
            ++data;  // a pair is one character, which no code page here has
        std::int32_t bytes = FindBytes(unit);
        if (bytes < 0)
            bytes = FindBytes(UNMAPPABLE);
        if (bytes > 0xFF)
            put(bytes >> 8);
        put(bytes & 0xFF);
    }
}

}  // namespace Kestra::StringNS
