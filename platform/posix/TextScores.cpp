#include "platform/posix/TextScores.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <span>
#include <utility>

#include "platform/CodePoints.h"
#include "platform/posix/LanguageModels.h"

/// @file
/// A language is a table of what each letter costs after each other letter, in bits: what a good
/// code of that language would take for it. A byte that is no letter of the language costs more
/// than any letter. So the costs of all languages, and those of characters of two bytes, are on one
/// scale, and a difference of ten bits means that one reading is a thousand times as likely.

namespace Kestra::Base {

namespace {

using StringNS::CharSet;

constexpr double DIGITS_PER_BIT = 4;
constexpr char16_t NO_CHARACTER = 0xFFFD;

// Costs in bits.
constexpr double COMMON_SIGN = 10;        ///< a quotation mark, a dash, a space that does not break
constexpr double SIGN_WITHIN_WORD = 8;    ///< and at the end of one, if it opens a quotation; beside what it is
constexpr double FOREIGN_LETTER = 15;     ///< of the same script
constexpr double LETTER_IN_ENGLISH = 11;  ///< where all letters beyond ASCII are foreign
constexpr double ODD_CHARACTER = 16;      ///< a letter of another script, a line of a box
constexpr double NOTHING = 30;            ///< a control, and a byte that is no character
constexpr double UPPER_AFTER_LOWER = 5;
constexpr double UPPER_AFTER_UPPER = 0.7;

constexpr double ISOLATED_LETTER = 8;  ///< not Latin, beside a digit or an ASCII letter: more likely a sign

constexpr double ASCII_LETTER = 4;  ///< which one it is, where all are one symbol

constexpr double TRAIL_BYTE = 6.2;           ///< one of some 90, a few of them more common
constexpr double HALF_WIDTH_KANA = 18;       ///< a single byte of 932
constexpr double MORE_HALF_WIDTH = 9;        ///< the same after another one
constexpr double SUPPLEMENT_CHARACTER = 21;  ///< of EUC-JP, rare
constexpr double AFTER_ASCII_LETTER = 3;     ///< Chinese, Japanese and Korean seldom continue a foreign word
constexpr double FOUR_BYTES = 24;            ///< of GB18030, beside the two of its Unicode 1.0 part
constexpr double DAMAGE = 20;                ///< a byte that is no part of a character
constexpr double UTF8_CHARACTERS[] = {0, 0, 9, 13, 20};  ///< by their length

// Bytes of EUC-JP that announce one character of another set.
constexpr unsigned char HALF_WIDTH_SHIFT = 0x8E;
constexpr unsigned char SUPPLEMENT_SHIFT = 0x8F;

/// The ASCII letters around tell the language, but less surely than those that it has alone.
constexpr double ASCII_WEIGHT = 0.5;
constexpr double ASCII_PER_HIGH = 20;  ///< so many pairs of ASCII letters count for each pair beyond

/// Where letters are not Latin, few texts are nearly all foreign.
constexpr double LEAST_SHARE_OF_LETTERS = 0.03;
constexpr double FEW_LETTERS = 8;

bool IsAsciiLetter(unsigned char byte) {
    const auto folded = static_cast<unsigned char>(byte | 0x20);
    return folded >= 'a' && folded <= 'z';
}

bool IsAlphanumeric(unsigned char byte) {
    return IsAsciiLetter(byte) || (byte >= '0' && byte <= '9');
}

bool IsCommonSign(char16_t unit) {
    constexpr std::u16string_view SIGNS =
        u"\u00D7\u00F7\u2013\u2014\u2018\u2019\u201A\u201C\u201D\u201E\u2022\u2026\u2039\u203A\u20AC\u2116\u2122";
    return (unit >= 0xA0 && unit <= 0xBF) || SIGNS.find(unit) != std::u16string_view::npos;
}

/// True for signs that have letters on both sides: an apostrophe, a hyphen, a space.
bool MayBeWithin(char16_t unit) {
    constexpr std::u16string_view SIGNS = u"\u00A0\u00AD\u00B7\u2013\u2014\u2019";
    return SIGNS.find(unit) != std::u16string_view::npos;
}

/// True for quotation marks that no word ends with.
bool IsOpener(char16_t unit) {
    return unit == 0x201A || unit == 0x201E || unit == 0x00A1 || unit == 0x00BF;
}

/// What the 256 bytes are in one language and page.
struct ByteSymbols {
    static constexpr std::size_t NO_SYMBOL = 0xFFFF;

    std::array<std::uint16_t, 256> symbols = {};  ///< the number in the model; NO_SYMBOL for none
    std::array<float, 256> costs = {};            ///< of a byte that has no symbol
    std::array<bool, 256> letter = {};            ///< beyond ASCII, and no sign
    std::array<bool, 256> lower = {};
    std::array<bool, 256> upper = {};
};

double FindOddCost(const LanguageModel& model, char16_t unit) {
    if (unit == NO_CHARACTER || unit < 0xA0)
        return NOTHING;
    if (IsCommonSign(unit))
        return COMMON_SIGN;
    const bool isEnglish = model.language == "en";
    if (model.latin)
        return unit < 0xC0 || unit >= 0x0250 ? ODD_CHARACTER : isEnglish ? LETTER_IN_ENGLISH : FOREIGN_LETTER;
    const char16_t script = model.lower[model.lower.size() / 2] >> 8;
    return unit >> 8 == script ? FOREIGN_LETTER : ODD_CHARACTER;
}

/// @param present  the bytes from 128 up that are asked for
ByteSymbols MakeSymbols(const LanguageModel& model, const LetterPage& page, const bool (&present)[128]) {
    ByteSymbols made;
    for (unsigned byte = 'a'; byte <= 'z'; ++byte) {
        made.symbols[byte] = static_cast<std::uint16_t>(model.latin ? byte - 'a' + 1 : 1);
        made.symbols[byte - 0x20] = made.symbols[byte];
        made.lower[byte] = true;
        made.upper[byte - 0x20] = true;
    }
    const std::size_t first = model.latin ? 27 : 2;
    for (std::size_t byte = 128; byte < 256; ++byte) {
        if (!present[byte - 128])
            continue;
        const char16_t unit = page.units[byte - 128];
        const std::size_t lower = model.lower.find(unit);
        const std::size_t upper = model.upper.rfind(unit);
        const std::size_t found = lower != std::u16string_view::npos ? lower : upper;
        if (found == std::u16string_view::npos || unit == NO_CHARACTER) {
            made.symbols[byte] = ByteSymbols::NO_SYMBOL;
            made.costs[byte] = static_cast<float>(FindOddCost(model, unit));
            continue;
        }
        made.symbols[byte] = static_cast<std::uint16_t>(first + found);
        made.letter[byte] = !IsCommonSign(unit);
        made.lower[byte] = lower != std::u16string_view::npos && model.upper[found] != unit;
        made.upper[byte] = lower == std::u16string_view::npos;
    }
    return made;
}

const LetterPage* FindLetterPage(CharSet::Code code) {
    const auto pages = LetterPages();
    const auto found = std::ranges::find(pages, code, &LetterPage::code);
    return found == pages.end() ? nullptr : &*found;
}

const std::array<float, 128>& DigitCosts() {
    static const std::array<float, 128> costs = [] {
        std::array<float, 128> made{};
        for (std::size_t digit = 0; digit < made.size(); ++digit)
            made[digit] = static_cast<float>(ReadCostDigit(static_cast<char>(digit)) / DIGITS_PER_BIT);
        return made;
    }();
    return costs;
}

float FindCost(const LanguageModel& model, std::size_t previous, std::size_t next) {
    const std::size_t size = (model.latin ? 27 : 2) + model.lower.size();
    return DigitCosts()[static_cast<unsigned char>(model.costs[previous * size + next])];
}

const LanguageModel* FindEnglish() {
    const auto models = LanguageModels();
    return &*std::ranges::find(models, "en", &LanguageModel::language);
}

/// Which bytes a character of two has.
struct DoubleByteRules {
    CharSet::Code code;
    unsigned char firstLead;
    unsigned char lastLead;
    bool (*isTrail)(unsigned char);
};

bool IsTrailEuc(unsigned char byte) {
    return byte >= 0xA1 && byte != 0xFF;
}

bool IsHalfWidthKana(unsigned char byte) {
    return byte >= 0xA1 && byte <= 0xDF;
}

bool IsTrailShiftJis(unsigned char byte) {
    return byte >= 0x40 && byte <= 0xFC && byte != 0x7F;
}

bool IsTrailGbk(unsigned char byte) {
    return byte >= 0x40 && byte <= 0xFE && byte != 0x7F;
}

bool IsTrailBig5(unsigned char byte) {
    return (byte >= 0x40 && byte <= 0x7E) || (byte >= 0xA1 && byte <= 0xFE);
}

bool IsTrailUhc(unsigned char byte) {
    return IsAsciiLetter(byte) || (byte >= 0x81 && byte <= 0xFE);
}

constexpr DoubleByteRules DOUBLE_BYTES[] = {
    {932, 0x81, 0xFC, IsTrailShiftJis}, {CharSet::EUC_JP, 0xA1, 0xFE, IsTrailEuc},
    {54936, 0x81, 0xFE, IsTrailGbk},    {949, 0x81, 0xFE, IsTrailUhc},
    {950, 0xA1, 0xF9, IsTrailBig5},
};

double ScoreDoubleByteText(std::string_view text, const DoubleByteRules& rules, std::string_view leadCosts) {
    double bits = 0;
    std::size_t position = 0;
    unsigned char previous = 0;
    std::size_t halfWidthEnd = text.size();
    while (position < text.size()) {
        const auto byte = static_cast<unsigned char>(text[position++]);
        const bool isAfterHigh = previous >= 0x80;
        const bool followsLetter = IsAsciiLetter(std::exchange(previous, byte));
        if (byte < 0x80) {
            bits += isAfterHigh && IsAsciiLetter(byte) ? ASCII_LETTER : 0;
            continue;
        }
        if (followsLetter)
            bits += AFTER_ASCII_LETTER;
        if (rules.code == CharSet::EUC_JP && byte == HALF_WIDTH_SHIFT && position < text.size() &&
            IsHalfWidthKana(static_cast<unsigned char>(text[position]))) {
            bits += position - 1 == halfWidthEnd ? MORE_HALF_WIDTH : HALF_WIDTH_KANA;
            halfWidthEnd = ++position;
            continue;
        }
        if (rules.code == CharSet::EUC_JP && byte == SUPPLEMENT_SHIFT && position + 1 < text.size() &&
            IsTrailEuc(static_cast<unsigned char>(text[position])) &&
            IsTrailEuc(static_cast<unsigned char>(text[position + 1]))) {
            bits += SUPPLEMENT_CHARACTER;
            position += 2;
            continue;
        }
        if (rules.code == 932 && IsHalfWidthKana(byte)) {
            bits += position - 1 == halfWidthEnd ? MORE_HALF_WIDTH : HALF_WIDTH_KANA;
            halfWidthEnd = position;
            continue;
        }
        if (position == text.size())  // cut
            break;
        const auto trail = static_cast<unsigned char>(text[position]);
        const bool isLead = byte >= rules.firstLead && byte <= rules.lastLead;
        if (isLead && rules.isTrail(trail)) {
            bits += DigitCosts()[static_cast<unsigned char>(leadCosts[byte - 128U])] + TRAIL_BYTE;
            ++position;
            previous = 0x80;
        } else if (rules.code == 54936 && isLead && trail >= '0' && trail <= '9' && position + 2 < text.size() &&
                   static_cast<unsigned char>(text[position + 1]) >= 0x81 && text[position + 2] >= '0' &&
                   text[position + 2] <= '9') {
            bits += FOUR_BYTES;
            position += 3;
        } else {
            bits += DAMAGE;
        }
    }
    return bits;
}

}  // namespace

TextScores::TextScores(std::string_view newText) : text(newText) {
    CountPairs();
    ScoreLanguages();
    ScoreDoubleBytes();
    ScoreUtf8();
}

/// A table of all pairs has a row and a column for each letter of ASCII, for each other byte that
/// occurs, and for all else; it is small beside one for all bytes.
void TextScores::CountPairs() {
    std::array<std::uint8_t, 256> classes{};
    std::vector<unsigned char> members = {' '};
    for (unsigned byte = 'A'; byte <= 'z'; ++byte) {
        if (IsAsciiLetter(static_cast<unsigned char>(byte)))
            members.push_back(static_cast<unsigned char>(byte));
    }
    for (const char character : text) {
        if ((character & 0x80) != 0) {
            ++highBytes;
            present[static_cast<unsigned char>(character) - 128] = true;
        }
    }
    for (std::size_t i = 0; i < std::size(present); ++i) {
        if (present[i])
            members.push_back(static_cast<unsigned char>(i + 128));
    }
    for (std::size_t i = 1; i < members.size(); ++i)
        classes[members[i]] = static_cast<std::uint8_t>(i);

    const std::size_t size = members.size();
    std::vector<std::uint32_t> counts(size * size);
    std::size_t previous = 0;
    const auto countPair = [&counts, &previous, size](std::size_t next) {
        std::uint32_t& count = counts[previous * size + next];
        if (count < std::numeric_limits<std::uint32_t>::max())
            ++count;
        previous = next;
    };
    for (const char character : text)
        countPair(classes[static_cast<unsigned char>(character)]);
    countPair(0);
    CountSurroundings();

    counts[0] = 0;
    pairs.reserve(counts.size() - static_cast<std::size_t>(std::ranges::count(counts, 0)));
    for (std::size_t pair = 0; pair < counts.size(); ++pair) {
        if (counts[pair] > 0)
            pairs.push_back({members[pair / size], members[pair % size], counts[pair]});
    }
    const auto ascii = std::partition(pairs.begin(), pairs.end(),
                                      [](const Pair& pair) { return ((pair.first | pair.second) & 0x80) != 0; });
    firstAscii = static_cast<std::size_t>(ascii - pairs.begin());
    for (const Pair& pair : std::span(pairs).subspan(firstAscii))
        asciiTotal += pair.count;
}

/// Isolated ones are mostly signs: of a price, a temperature, a unit, a footnote. Those in a word
/// and at its end are mostly letters.
void TextScores::CountSurroundings() {
    unsigned char before = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto after = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        if (byte >= 0x80 && before < 0x80 && after < 0x80 && (IsAlphanumeric(before) || IsAlphanumeric(after)))
            ++isolated[byte - 0x80];
        if (byte >= 0x80 && IsAsciiLetter(before)) {
            if (IsAsciiLetter(after))
                ++within[byte - 0x80];
            else if (after < 0x80)
                ++ending[byte - 0x80];
        }
        before = byte;
    }
}

bool TextScores::HasSignsOnly() const {
    const LetterPage* const page = FindLetterPage(CharSet::WINDOWS_1252);
    for (std::size_t i = 0; i < std::size(present); ++i) {
        if (present[i] && (!IsCommonSign(page->units[i]) || (within[i] > 0 && !MayBeWithin(page->units[i])) ||
                           (ending[i] > 0 && IsOpener(page->units[i]))))
            return false;
    }
    return true;
}

double TextScores::FindFreshShare() const {
    double fresh = 0;
    double total = 0;
    for (const Pair& pair : std::span(pairs).first(firstAscii)) {
        fresh += 1 + std::log2(static_cast<double>(pair.count));
        total += pair.count;
    }
    return total > 0 ? fresh / total : 1;
}

void TextScores::AddScore(CharSet::Code code, double bits) {
    const auto found = std::ranges::find(scores, code, &PageScore::code);
    if (found == scores.end())
        scores.push_back({code, bits});
    else
        found->bits = std::min(found->bits, bits);
}

double TextScores::ScoreAscii(const LanguageModel& model) const {
    const auto symbolOf = [](unsigned char byte) {
        return IsAsciiLetter(byte) ? static_cast<std::size_t>((byte | 0x20) - 'a' + 1) : std::size_t{0};
    };
    double bits = 0;
    for (const Pair& pair : std::span(pairs).subspan(firstAscii))
        bits += static_cast<double>(pair.count) * FindCost(model, symbolOf(pair.first), symbolOf(pair.second));
    const double most = ASCII_PER_HIGH * static_cast<double>(highBytes);
    return bits * ASCII_WEIGHT * (asciiTotal > most ? most / asciiTotal : 1);
}

/// Foreign words among letters that are not Latin are mostly English.
void TextScores::ScoreLanguages() {
    const double englishBits = ScoreAscii(*FindEnglish());
    for (const LanguageModel& model : LanguageModels()) {
        const double asciiBits = model.latin ? ScoreAscii(model) : englishBits;
        for (const PageOfLanguage& page : model.pages) {
            const LetterPage* const letters = page.code == 0 ? nullptr : FindLetterPage(page.code);
            if (letters != nullptr)
                AddScore(page.code, page.rarity + asciiBits + ScoreLanguage(model, *letters));
        }
    }
}

double TextScores::ScoreLanguage(const LanguageModel& model, const LetterPage& page) const {
    const ByteSymbols bytes = MakeSymbols(model, page, present);
    double bits = 0;
    double letters = 0;
    for (const Pair& pair : std::span(pairs).first(firstAscii)) {
        const std::size_t next = bytes.symbols[pair.second];
        double cost = 0;
        if (next == ByteSymbols::NO_SYMBOL) {
            cost = bytes.costs[pair.second];
        } else {
            letters += bytes.letter[pair.second] ? pair.count : 0;
            const std::size_t previous = bytes.symbols[pair.first];
            cost = FindCost(model, previous == ByteSymbols::NO_SYMBOL ? 0 : previous, next);
            if (!model.latin && IsAsciiLetter(pair.second))
                cost += ASCII_LETTER;
            // Messages of programs have fewer of them than prose.
            if (pair.second >= 128 && !bytes.letter[pair.second])
                cost = std::min(cost, COMMON_SIGN);
            if (bytes.upper[pair.second])
                cost += bytes.lower[pair.first] ? UPPER_AFTER_LOWER : bytes.upper[pair.first] ? UPPER_AFTER_UPPER : 0;
        }
        bits += pair.count * cost;
    }
    for (std::size_t byte = 0; byte < std::size(present); ++byte) {
        const char16_t unit = page.units[byte];
        if (!present[byte] || !IsCommonSign(unit))
            continue;
        if (!MayBeWithin(unit))
            bits += static_cast<double>(within[byte]) * SIGN_WITHIN_WORD;
        if (IsOpener(unit))
            bits += static_cast<double>(ending[byte]) * SIGN_WITHIN_WORD;
    }
    for (std::size_t byte = 128; byte < 256 && !model.latin; ++byte)
        bits += bytes.letter[byte] ? static_cast<double>(isolated[byte - 128]) * ISOLATED_LETTER : 0;
    if (!model.latin && letters < LEAST_SHARE_OF_LETTERS * asciiTotal)
        bits += FEW_LETTERS;
    return bits;
}

void TextScores::ScoreDoubleBytes() {
    const double asciiBits = ScoreAscii(*FindEnglish());
    for (const LeadByteModel& model : LeadByteModels()) {
        const auto* const rules = std::ranges::find(DOUBLE_BYTES, model.code, &DoubleByteRules::code);
        AddScore(model.code, asciiBits + ScoreDoubleByteText(text, *rules, model.costs));
    }
}

void TextScores::ScoreUtf8() {
    double bits = ScoreAscii(*FindEnglish());
    const char* const end = text.data() + text.size();
    for (const char* place = text.data(); place != end;) {
        if ((*place & 0x80) == 0) {
            ++place;
            continue;
        }
        const char* const start = place;
        const bool isCharacter = ReadUtf8(&place, end) != ILL_FORMED;
        bits += isCharacter ? UTF8_CHARACTERS[place - start] : DAMAGE * static_cast<double>(place - start);
    }
    AddScore(CharSet::UTF8, bits);
}

bool TextScores::ReadTheSame(CharSet::Code one, CharSet::Code other) const {
    if (one == other)
        return true;
    const LetterPage* const onePage = FindLetterPage(one);
    const LetterPage* const otherPage = FindLetterPage(other);
    if (onePage == nullptr || otherPage == nullptr)
        return false;
    for (std::size_t i = 0; i < std::size(present); ++i) {
        if (present[i] && onePage->units[i] != otherPage->units[i])
            return false;
    }
    return true;
}

}  // namespace Kestra::Base
