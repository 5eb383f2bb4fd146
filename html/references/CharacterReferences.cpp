#include "html/references/CharacterReferences.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "html/framework/Instantiate.h"
#include "html/framework/QuoteKind.h"
#include "html/references/NamedReferences.h"
#include "platform/CharSetConverter.h"
#include "platform/CodePoints.h"
#include "platform/Results.h"

namespace Kestra::HTML {

namespace {

using StringNS::CharSet;

// The characters that the numbers from 0x80 to 0x9F mean. Source: the table in the HTML standard's
// "Numeric character reference end state"; a number that it leaves out means itself.
constexpr char16_t C1_CONTROLS[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
static_assert(std::size(C1_CONTROLS) == 32);

enum class Context { TEXT, ATTRIBUTE_VALUE };

/// A reference in the text, and what it means.
struct Reference {
    std::size_t length = 0;  ///< in characters, "&" and ";" included; 0 for what is no reference
    char32_t first = 0;
    char32_t second = 0;  ///< 0 where there is but one
};

template <typename C>
bool IsAlphanumeric(C character) {
    const C folded = FoldAscii(character);
    return (folded >= 'a' && folded <= 'z') || (character >= '0' && character <= '9');
}

/// @return the value of a digit, `base` for what is none
template <typename C>
std::uint32_t DigitValue(C character, std::uint32_t base) {
    if (character >= '0' && character <= '9')
        return static_cast<std::uint32_t>(character - '0');
    const C folded = FoldAscii(character);
    if (base == 16 && folded >= 'a' && folded <= 'f')
        return static_cast<std::uint32_t>(folded - 'a') + 10;
    return base;
}

/// The character that a number means.
char32_t ResolveNumber(char32_t number) {
    if (number == 0 || number >= CODE_POINT_END || IsSurrogate(number))
        return REPLACEMENT_CHARACTER;
    if (number >= 0x80 && number <= 0x9F)
        return C1_CONTROLS[number - 0x80];
    return number;
}

/// @param begin  at "&", which "#" follows
template <typename C>
Reference ReadNumericReference(const C* begin, const C* end) {
    const C* place = begin + 2;
    std::uint32_t base = 10;
    if (place != end && FoldAscii(*place) == 'x') {
        base = 16;
        ++place;
    }
    const C* const digits = place;
    char32_t number = 0;
    for (; place != end; ++place) {
        const std::uint32_t digit = DigitValue(*place, base);
        if (digit == base)
            break;
        // The first number that is too great is as good as any of them.
        number = std::min<char32_t>(number * base + digit, CODE_POINT_END);
    }
    if (place == digits)
        return {};
    if (place != end && *place == ';')
        ++place;
    return {static_cast<std::size_t>(place - begin), ResolveNumber(number), 0};
}

std::size_t LengthOfName(const NamedReference& row) {
    return static_cast<std::size_t>((&row + 1)->name - row.name);
}

/// Narrows the table down to the names that begin as the text does, by one character a turn: at
/// most 31 turns.
/// @param begin  at "&", which a letter or a digit follows
template <typename C>
Reference ReadNamedReference(const C* begin, const C* end, Context context) {
    const C* const name = begin + 1;
    const NamedReference* low = NAMED_REFERENCES;
    const NamedReference* high = NAMED_REFERENCES + NAMED_REFERENCE_COUNT;
    const NamedReference* longest = nullptr;
    const C* after = nullptr;  // of the longest name
    for (const C* place = name; place != end && IsAlphanumeric(*place); ++place) {
        const auto depth = static_cast<std::size_t>(place - name);
        const auto character = static_cast<char>(*place);
        const auto characterOf = [depth](const NamedReference& row) { return REFERENCE_NAMES[row.name + depth]; };
        low = std::lower_bound(low, high, character,
                               [&](const NamedReference& row, char wanted) { return characterOf(row) < wanted; });
        high = std::upper_bound(low, high, character,
                                [&](char wanted, const NamedReference& row) { return wanted < characterOf(row); });
        if (low == high)
            break;
        // A name sorts before those that begin with it.
        if (LengthOfName(*low) != depth + 1)
            continue;
        const bool isClosed = place + 1 != end && place[1] == ';';
        if (isClosed || low->isLegacy != 0) {
            longest = low;
            after = place + (isClosed ? 2 : 1);
        }
        ++low;
    }
    if (longest == nullptr)
        return {};
    if (context == Context::ATTRIBUTE_VALUE && after[-1] != ';' && after != end &&
        (*after == '=' || IsAlphanumeric(*after)))
        return {};
    return {static_cast<std::size_t>(after - begin), longest->first, longest->second};
}

/// @param begin  at "&"
template <typename C>
Reference ReadReference(const C* begin, const C* end, Context context) {
    if (end - begin < 2)
        return {};
    if (begin[1] == '#')
        return ReadNumericReference(begin, end);
    return IsAlphanumeric(begin[1]) ? ReadNamedReference(begin, end, context) : Reference{};
}

/// The one or two code points of a reference as UTF-16, none of which is a surrogate.
class WideForm {
public:
    explicit WideForm(const Reference& reference) {
        Add(reference.first);
        if (reference.second != 0)
            Add(reference.second);
    }

    WideStringView View() const {
        return {units, count};
    }

private:
    void Add(char32_t codePoint) {
        WriteUtf16(codePoint, [this](WideChar unit) { units[count++] = unit; });
    }

    WideChar units[4] = {};
    std::size_t count = 0;
};

/// Wide text holds every character.
class WideTarget {
public:
    explicit WideTarget(CharSet::Code) {}

    bool CanRead() const {
        return true;
    }

    /// @return the characters, valid as long as `form`
    WideStringView Convert(const WideForm& form) const {
        return form.View();
    }
};

/// 8-bit text holds the characters of its charset.
class CharSetTarget {
public:
    explicit CharSetTarget(CharSet::Code code) : charset(code) {}

    /// Whether the charset has a converter, and the byte of a "&" is nothing else in it.
    bool CanRead() {
        return converter.KeepsAscii(charset);
    }

    /// @return the characters, valid until the next call; empty when the charset lacks one of them
    std::string_view Convert(const WideForm& form) {
        const WideStringView wide = form.View();
        if (converter.FromWide(charset, wide.data(), wide.size(), &bytes) != RESULT_OK)
            return {};
        // Converters write a mark, or a character that looks alike, for what the charset lacks.
        if (charset != CharSet::UTF8 &&
            (converter.ToWide(charset, bytes.data(), bytes.size(), &again) != RESULT_OK || again != wide))
            return {};
        return bytes;
    }

private:
    CharSet::Code charset;
    StringNS::CharSetConverter converter;
    std::string bytes;
    WideString again;
};

template <typename C>
using Target = std::conditional_t<std::is_same_v<C, char>, CharSetTarget, WideTarget>;

/// The output of one call, begun when the first change is found. It may be the text itself.
template <typename C, typename S>
class Output {
public:
    Output(const S& input, S* result) : text(input), target(result), copied(input.data()) {}

    /// Writes the replacement of `[begin, end)`, which lies after all that was replaced before.
    void Replace(const C* begin, const C* end, std::basic_string_view<C> replacement) {
        S& output = &text == target ? separate : *target;
        if (!changed) {
            output.clear();
            output.reserve(text.size());
            changed = true;
        }
        output.append(copied, begin).append(replacement);
        copied = end;
    }

    /// @return whether anything was replaced
    bool Finish() {
        if (!changed)
            return false;
        const C* const end = text.data() + text.size();
        Replace(end, end, {});
        if (&text == target)
            target->swap(separate);
        return true;
    }

private:
    const S& text;
    S* target;
    const C* copied;  ///< what lies before is in the output
    bool changed = false;
    S separate;
};

template <typename C, typename S>
const C* FindAmpersand(const C* begin, const C* end) {
    const C* const found = S::traits_type::find(begin, static_cast<std::size_t>(end - begin), C('&'));
    return found != nullptr ? found : end;
}

template <typename C, typename S>
bool Decode(const S& text, Context context, CharSet::Code charset, S* decoded) {
    const C* const end = text.data() + text.size();
    const C* place = FindAmpersand<C, S>(text.data(), end);
    if (place == end)
        return false;
    Target<C> target(charset);
    if (!target.CanRead())
        return false;
    Output<C, S> output(text, decoded);
    while (place != end) {
        const Reference reference = ReadReference(place, end, context);
        const C* const after = place + std::max<std::size_t>(reference.length, 1);
        if (reference.length != 0) {
            const WideForm form(reference);
            const std::basic_string_view<C> replacement = target.Convert(form);
            if (!replacement.empty())
                output.Replace(place, after, replacement);
        }
        place = FindAmpersand<C, S>(after, end);
    }
    return output.Finish();
}

/// A character that is encoded.
struct Special {
    char character;
    std::string_view reference;
};

constexpr Special TEXT_SPECIALS[] = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}};
// "&apos;" is younger than HTML 4.
constexpr Special VALUE_SPECIALS[] = {{'"', "&quot;"}, {'&', "&amp;"}, {'\'', "&#39;"}};

template <typename C, typename S>
bool Encode(const S& text, std::span<const Special> specials, S* encoded) {
    const C* const end = text.data() + text.size();
    Output<C, S> output(text, encoded);
    S reference;
    for (const C* place = text.data(); place != end; ++place) {
        for (const Special& special : specials) {
            if (*place != static_cast<C>(special.character))
                continue;
            reference.assign(special.reference.begin(), special.reference.end());
            output.Replace(place, place + 1, reference);
            break;
        }
    }
    return output.Finish();
}

}  // namespace

template <typename C, typename S>
bool CharacterReferences<C, S>::DecodeText(const S& text, S* decoded, CharSet::Code charset) {
    return Decode<C, S>(text, Context::TEXT, charset, decoded);
}

template <typename C, typename S>
bool CharacterReferences<C, S>::DecodeAttributeValue(const S& value, S* decoded, CharSet::Code charset) {
    return Decode<C, S>(value, Context::ATTRIBUTE_VALUE, charset, decoded);
}

template <typename C, typename S>
bool CharacterReferences<C, S>::EncodeText(const S& text, S* encoded) {
    return Encode<C, S>(text, TEXT_SPECIALS, encoded);
}

template <typename C, typename S>
bool CharacterReferences<C, S>::EncodeAttributeValue(const S& value, std::uint32_t quote, S* encoded) {
    std::span<const Special> specials = VALUE_SPECIALS;
    if (quote == QUOTE_DOUBLE)
        specials = specials.first(2);
    else if (quote == QUOTE_SINGLE)
        specials = specials.last(2);
    return Encode<C, S>(value, specials, encoded);
}

KESTRA_HTML_INSTANTIATE(CharacterReferences);

}  // namespace Kestra::HTML
