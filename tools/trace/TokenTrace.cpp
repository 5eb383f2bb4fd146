#include "tools/trace/TokenTrace.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>

#include "platform/CodePoints.h"
#include "tools/trace/RecordNotation.h"

namespace Kestra::Trace {

namespace {

constexpr std::string_view HEXADECIMAL = "0123456789ABCDEF";

void AppendHexadecimal(std::string* line, unsigned value, unsigned digits) {
    for (unsigned shift = digits * 4; shift > 0; shift -= 4)
        line->push_back(HEXADECIMAL[(value >> (shift - 4)) & 0xF]);
}

std::string Concatenate(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts)
        text += part;
    return text;
}

/// One unit from 0 to 127.
void AppendAscii(std::string* line, unsigned unit) {
    switch (unit) {
        case '\\':
            line->append("\\\\");
            return;
        case '\n':
            line->append("\\n");
            return;
        case '\r':
            line->append("\\r");
            return;
        case '\t':
            line->append("\\t");
            return;
    }
    if (unit < 0x20 || unit == 0x7F) {
        line->append("\\x");
        AppendHexadecimal(line, unit, 2);
    } else {
        line->push_back(static_cast<char>(unit));
    }
}

void AppendUtf8(std::string* line, char32_t codePoint) {
    WriteUtf8(codePoint, [line](char byte) { line->push_back(byte); });
}

void AppendEscapedUnit(std::string* line, unsigned unit) {
    line->append("\\u");
    AppendHexadecimal(line, unit, 4);
}

/// Appends the character at `text[index]`, one of at least U+0080.
/// @return the units it takes
std::size_t AppendWide(std::string* line, WideStringView text, std::size_t index, bool utf8) {
    const auto unit = static_cast<unsigned>(text[index]);
    const auto next = index + 1 < text.size() ? static_cast<unsigned>(text[index + 1]) : 0U;
    if (utf8 && IsHighSurrogate(unit) && IsLowSurrogate(next)) {
        const char32_t codePoint = JoinSurrogates(unit, next);
        if (IsInvisible(codePoint)) {
            AppendEscapedUnit(line, unit);
            AppendEscapedUnit(line, next);
        } else {
            AppendUtf8(line, codePoint);
        }
        return 2;
    }
    if (utf8 && !IsSurrogate(unit) && !IsInvisible(unit))
        AppendUtf8(line, unit);
    else
        AppendEscapedUnit(line, unit);
    return 1;
}

template <typename C, typename S>
std::string FormatPart(const HTML::Attribute<C, S>& attribute, const Options& options);
template <typename C, typename S>
std::string FormatPart(const HTML::EntityToken<C, S>& token, const Options& options);

/// Builds one line.
class Line {
public:
    Line(std::string_view kind, const Options& formatOptions) : line(kind), options(formatOptions) {
        line.push_back('(');
    }

    template <typename C>
    Line& Field(const std::basic_string<C>* text) {
        Separate();
        if (text == nullptr)
            line.append(NULL_WORD);
        else
            line.append(Escape(*text, options));
        return *this;
    }

    /// A list of attributes or of tokens.
    template <typename T>
    Line& Field(const Vector<T>* items) {
        Separate();
        if (items == nullptr) {
            line.append(NULL_WORD);
        } else {
            for (const T& item : *items)
                line.append(FormatPart(item, options));
        }
        return *this;
    }

    Line& Flag(bool set, std::string_view name) {
        if (set) {
            line.append(", ");
            line.append(name);
        }
        return *this;
    }

    std::string Finish() {
        line.push_back(')');
        return std::move(line);
    }

private:
    void Separate() {
        if (!first)
            line.push_back('|');
        first = false;
    }

    std::string line;
    const Options& options;
    bool first = true;
};

template <typename S>
std::string Quoted(const S& value, std::uint32_t quote, const Options& options) {
    const std::string_view mark = quote < QUOTE_MARKS.size() ? QUOTE_MARKS[quote] : UNKNOWN_QUOTE_MARK;
    return Concatenate({mark, Escape(value, options), mark});
}

template <typename C, typename S>
std::string FormatPart(const HTML::Attribute<C, S>& attribute, const Options& options) {
    std::string item = Concatenate({"{", Escape(attribute.prefix, options), "|", Escape(attribute.name, options)});
    if (attribute.hasValue) {
        item += Concatenate({"|", Escape(attribute.beforeEquals, options), "=", Escape(attribute.afterEquals, options),
                             "|", Quoted(attribute.value, attribute.quote, options)});
    }
    return item + "}";
}

template <typename C, typename S>
std::string FormatPart(const HTML::EntityToken<C, S>& token, const Options& options) {
    return Concatenate({"{", Escape(token.prefix, options), "|", Quoted(token.value, token.quote, options), "}"});
}

/// The words after the parameters.
template <template <typename, typename> class Record, typename C, typename S>
void AppendFlags(const Record<C, S>& record, Line* line) {
    constexpr bool IS_INSTRUCTION = std::is_same_v<Record<C, S>, HTML::ExternTagData<C, S>>;
    for (const FlagNotation& notation : FLAG_NOTATIONS) {
        HTML::ForEachField(record, [line, &notation](std::string_view name, const auto& value) {
            if constexpr (std::is_same_v<decltype(value), const bool&>)
                line->Flag(name == notation.field && value == notation.value, notation.word);
        });
    }
    HTML::ForEachField(record, [line](std::string_view name, const auto& value) {
        if constexpr (std::is_same_v<decltype(value), const bool&>)
            line->Flag(value && !HasFlagNotation(name) && !(IS_INSTRUCTION && IsFieldOfRawInstruction(name)), name);
    });
}

template <template <typename, typename> class Record, typename C, typename S>
std::string FormatRecord(const Record<C, S>& record, const Options& options) {
    constexpr bool IS_INSTRUCTION = std::is_same_v<Record<C, S>, HTML::ExternTagData<C, S>>;
    if constexpr (IS_INSTRUCTION) {
        if (record.freeStyle)
            return Line(RAW_INSTRUCTION, options).Field(record.text).Finish();
    }
    Line line(HTML::RecordKind<Record>::WORD, options);
    HTML::ForEachField(record, [&line](std::string_view name, const auto& value) {
        if constexpr (!std::is_same_v<decltype(value), const bool&>) {
            if (!IS_INSTRUCTION || !IsFieldOfRawInstruction(name))
                line.Field(value);
        }
    });
    AppendFlags(record, &line);
    return line.Finish();
}

}  // namespace

bool IsInvisible(std::uint32_t codePoint) {
    return codePoint < 0xA0 || codePoint == 0xAD || codePoint == 0x061C || codePoint == 0x180E ||
           (codePoint >= 0x200B && codePoint <= 0x200F) || (codePoint >= 0x2028 && codePoint <= 0x202E) ||
           (codePoint >= 0x2060 && codePoint <= 0x206F) || (codePoint >= 0xFDD0 && codePoint <= 0xFDEF) ||
           codePoint == 0xFEFF || (codePoint >= 0xFFF9 && codePoint <= 0xFFFB) || (codePoint & 0xFFFE) == 0xFFFE ||
           (codePoint >= 0xE0000 && codePoint <= 0xE0FFF);
}

std::string Escape(std::string_view text, const Options& options) {
    const bool cut = options.cutAt != 0 && text.size() > options.cutAt;
    std::string line;
    line.reserve(text.size());
    for (const char character : cut ? text.substr(0, static_cast<std::size_t>(options.cutAt)) : text) {
        const auto byte = static_cast<unsigned>(static_cast<unsigned char>(character));
        if (byte < 0x80) {
            AppendAscii(&line, byte);
        } else {
            line.append("\\x");
            AppendHexadecimal(&line, byte, 2);
        }
    }
    if (cut)
        line.append("...[" + std::to_string(text.size()) + "]");
    return line;
}

std::string Escape(WideStringView text, const Options& options) {
    const bool cut = options.cutAt != 0 && text.size() > options.cutAt;
    std::size_t end = cut ? static_cast<std::size_t>(options.cutAt) : text.size();
    // A cut never parts the two halves of a character.
    if (cut && IsHighSurrogate(static_cast<unsigned>(text[end - 1])) &&
        IsLowSurrogate(static_cast<unsigned>(text[end])))
        ++end;
    std::string line;
    line.reserve(text.size());
    for (std::size_t i = 0; i < end;) {
        const auto unit = static_cast<unsigned>(text[i]);
        if (unit < 0x80) {
            AppendAscii(&line, unit);
            ++i;
        } else {
            i += AppendWide(&line, text, i, options.utf8);
        }
    }
    if (cut)
        line.append("...[" + std::to_string(text.size()) + "]");
    return line;
}

std::string Format(HTML::ObserverEvent event) {
    return HTML::GetEventNames(event).word;
}

std::string FormatBOM(const void* bytes, std::uint64_t size) {
    std::string line = "bom(";
    const auto* const next = static_cast<const unsigned char*>(bytes);
    for (std::uint64_t i = 0; i < size; ++i) {
        if (i > 0)
            line.push_back(' ');
        AppendHexadecimal(&line, next[i], 2);
    }
    return line + ")";
}

std::string FormatCharset(StringNS::CharSet::Code code) {
    return "charset(" + std::to_string(code) + ")";
}

template <template <typename, typename> class Record, typename C, typename S>
std::string Format(const Record<C, S>& record, const Options& options) {
    if constexpr (requires { FormatPart(record, options); })
        return FormatPart(record, options);
    else
        return FormatRecord(record, options);
}

#define INSTANTIATE(NAME, RECORD, WORD)                                                  \
    template std::string Format(const HTML::RECORD<char, std::string>&, const Options&); \
    template std::string Format(const HTML::RECORD<WideChar, WideString>&, const Options&);
KESTRA_HTML_FOR_EACH_KIND(INSTANTIATE)
INSTANTIATE(, Attribute, )
INSTANTIATE(, EntityToken, )
#undef INSTANTIATE

}  // namespace Kestra::Trace
