#include "tools/trace/TokenTrace.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <type_traits>

#include "platform/CodePoints.h"
#include "tools/trace/PlainRun.h"
#include "tools/trace/RecordNotation.h"

namespace Kestra::Trace {

namespace {

constexpr std::string_view HEXADECIMAL = "0123456789ABCDEF";

void AppendHexadecimal(std::string* line, unsigned value, unsigned digits) {
    for (unsigned shift = digits * 4; shift > 0; shift -= 4)
        line->push_back(HEXADECIMAL[(value >> (shift - 4)) & 0xF]);
}

/// What is written as it is.
using Plain = PlainText<'\\'>;

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
    if (Plain::Has(unit)) {
        line->push_back(static_cast<char>(unit));
    } else {
        line->append("\\x");
        AppendHexadecimal(line, unit, 2);
    }
}

/// Appends the units before the first one that is not plain. @return how many
template <typename C>
std::size_t AppendPlain(std::string* line, std::basic_string_view<C> text) {
    char run[64];
    const std::size_t size = Plain::CopyRun(text.data(), std::min(text.size(), sizeof run), run);
    line->append(run, size);
    return size;
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

/// What follows a string or a list that was cut.
void AppendCut(std::string* line, std::size_t size) {
    line->append("...[").append(std::to_string(size)).append("]");
}

void AppendEscaped(std::string* line, std::string_view text, const Options& options) {
    const bool cut = options.cutAt != 0 && text.size() > options.cutAt;
    std::string_view rest = cut ? text.substr(0, static_cast<std::size_t>(options.cutAt)) : text;
    while (!rest.empty()) {
        if (const std::size_t size = AppendPlain(line, rest); size > 0) {
            rest.remove_prefix(size);
            continue;
        }
        const auto byte = static_cast<unsigned>(static_cast<unsigned char>(rest.front()));
        if (byte < 0x80) {
            AppendAscii(line, byte);
        } else {
            line->append("\\x");
            AppendHexadecimal(line, byte, 2);
        }
        rest.remove_prefix(1);
    }
    if (cut)
        AppendCut(line, text.size());
}

template <typename S>
void AppendQuoted(std::string* line, const S& value, std::uint32_t quote, const Options& options) {
    const std::string_view mark = quote < QUOTE_MARKS.size() ? QUOTE_MARKS[quote] : UNKNOWN_QUOTE_MARK;
    line->append(mark);
    AppendEscaped(line, value, options);
    line->append(mark);
}

template <typename C, typename S>
void AppendPart(std::string* line, const HTML::Attribute<C, S>& attribute, const Options& options) {
    line->push_back('{');
    AppendEscaped(line, attribute.prefix, options);
    line->push_back('|');
    AppendEscaped(line, attribute.name, options);
    if (attribute.hasValue) {
        line->push_back('|');
        AppendEscaped(line, attribute.beforeEquals, options);
        line->push_back('=');
        AppendEscaped(line, attribute.afterEquals, options);
        line->push_back('|');
        AppendQuoted(line, attribute.value, attribute.quote, options);
    }
    line->push_back('}');
}

template <typename C, typename S>
void AppendPart(std::string* line, const HTML::EntityToken<C, S>& token, const Options& options) {
    line->push_back('{');
    AppendEscaped(line, token.prefix, options);
    line->push_back('|');
    AppendQuoted(line, token.value, token.quote, options);
    line->push_back('}');
}

/// Appends to a line.
class Line {
public:
    Line(std::string* builtLine, std::string_view kind, const Options& formatOptions)
        : line(builtLine), options(formatOptions) {
        line->append(kind).push_back('(');
    }

    template <typename C>
    Line& Field(const std::basic_string<C>* text) {
        Separate();
        if (text == nullptr)
            line->append(NULL_WORD);
        else
            AppendEscaped(line, *text, options);
        return *this;
    }

    /// A list of attributes or of tokens.
    template <typename T>
    Line& Field(const Vector<T>* items) {
        Separate();
        if (items == nullptr) {
            line->append(NULL_WORD);
            return *this;
        }
        const std::size_t count = items->size();
        const bool cut = options.mostItems != 0 && count > options.mostItems;
        for (std::size_t i = 0; i < (cut ? options.mostItems : count); ++i)
            AppendPart(line, (*items)[i], options);
        if (cut)
            AppendCut(line, count);
        return *this;
    }

    Line& Flag(bool set, std::string_view name) {
        if (set)
            line->append(", ").append(name);
        return *this;
    }

    void Finish() {
        line->push_back(')');
    }

private:
    void Separate() {
        if (!first)
            line->push_back('|');
        first = false;
    }

    std::string* line;
    const Options& options;
    bool first = true;
};

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
void AppendRecord(std::string* text, const Record<C, S>& record, const Options& options) {
    constexpr bool IS_INSTRUCTION = std::is_same_v<Record<C, S>, HTML::ExternTagData<C, S>>;
    if constexpr (IS_INSTRUCTION) {
        if (record.freeStyle)
            return Line(text, RAW_INSTRUCTION, options).Field(record.text).Finish();
    }
    Line line(text, HTML::RecordKind<Record>::WORD, options);
    HTML::ForEachField(record, [&line](std::string_view name, const auto& value) {
        if constexpr (!std::is_same_v<decltype(value), const bool&>) {
            if (!IS_INSTRUCTION || !IsFieldOfRawInstruction(name))
                line.Field(value);
        }
    });
    AppendFlags(record, &line);
    line.Finish();
}

}  // namespace

bool IsInvisible(std::uint32_t codePoint) {
    return codePoint < 0xA0 || codePoint == 0xAD || codePoint == 0x061C || codePoint == 0x180E ||
           (codePoint >= 0x200B && codePoint <= 0x200F) || (codePoint >= 0x2028 && codePoint <= 0x202E) ||
           (codePoint >= 0x2060 && codePoint <= 0x206F) || (codePoint >= 0xFDD0 && codePoint <= 0xFDEF) ||
           codePoint == 0xFEFF || (codePoint >= 0xFFF9 && codePoint <= 0xFFFB) || (codePoint & 0xFFFE) == 0xFFFE ||
           (codePoint >= 0xE0000 && codePoint <= 0xE0FFF);
}

void AppendEscaped(std::string* line, WideStringView text, const Options& options) {
    const bool cut = options.cutAt != 0 && text.size() > options.cutAt;
    std::size_t end = cut ? static_cast<std::size_t>(options.cutAt) : text.size();
    // A cut never parts the two halves of a character.
    if (cut && IsHighSurrogate(static_cast<unsigned>(text[end - 1])) &&
        IsLowSurrogate(static_cast<unsigned>(text[end])))
        ++end;
    for (std::size_t i = 0; i < end;) {
        if (const std::size_t size = AppendPlain(line, text.substr(i, end - i)); size > 0) {
            i += size;
            continue;
        }
        const auto unit = static_cast<unsigned>(text[i]);
        if (unit < 0x80) {
            AppendAscii(line, unit);
            ++i;
        } else {
            i += AppendWide(line, text, i, options.utf8);
        }
    }
    if (cut)
        AppendCut(line, text.size());
}

std::string Escape(std::string_view text, const Options& options) {
    std::string line;
    AppendEscaped(&line, text, options);
    return line;
}

std::string Escape(WideStringView text, const Options& options) {
    std::string line;
    AppendEscaped(&line, text, options);
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
void Append(std::string* line, const Record<C, S>& record, const Options& options) {
    if constexpr (requires { AppendPart(line, record, options); })
        AppendPart(line, record, options);
    else
        AppendRecord(line, record, options);
}

#define INSTANTIATE(NAME, RECORD, WORD)                                                              \
    template void Append(std::string* line, const HTML::RECORD<char, std::string>&, const Options&); \
    template void Append(std::string* line, const HTML::RECORD<WideChar, WideString>&, const Options&);
KESTRA_HTML_FOR_EACH_KIND(INSTANTIATE)
INSTANTIATE(, Attribute, )
INSTANTIATE(, EntityToken, )
#undef INSTANTIATE

}  // namespace Kestra::Trace
