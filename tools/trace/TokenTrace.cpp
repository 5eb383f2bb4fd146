#include "tools/trace/TokenTrace.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <utility>

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

void AppendUtf8(std::string* line, unsigned codePoint) {
    const auto put = [line](unsigned byte) { line->push_back(static_cast<char>(byte)); };
    if (codePoint < 0x800) {
        put(0xC0 | (codePoint >> 6));
    } else if (codePoint < 0x10000) {
        put(0xE0 | (codePoint >> 12));
        put(0x80 | ((codePoint >> 6) & 0x3F));
    } else {
        put(0xF0 | (codePoint >> 18));
        put(0x80 | ((codePoint >> 12) & 0x3F));
        put(0x80 | ((codePoint >> 6) & 0x3F));
    }
    put(0x80 | (codePoint & 0x3F));
}

bool IsHighSurrogate(unsigned unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(unsigned unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendEscapedUnit(std::string* line, unsigned unit) {
    line->append("\\u");
    AppendHexadecimal(line, unit, 4);
}

/// Appends the character at `text[index]`, one of at least U+0080. @return the units it takes
std::size_t AppendWide(std::string* line, WideStringView text, std::size_t index, bool utf8) {
    const auto unit = static_cast<unsigned>(text[index]);
    const auto next = index + 1 < text.size() ? static_cast<unsigned>(text[index + 1]) : 0U;
    if (utf8 && IsHighSurrogate(unit) && IsLowSurrogate(next)) {
        const unsigned codePoint = 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00);
        if (IsInvisible(codePoint)) {
            AppendEscapedUnit(line, unit);
            AppendEscapedUnit(line, next);
        } else {
            AppendUtf8(line, codePoint);
        }
        return 2;
    }
    if (utf8 && !IsHighSurrogate(unit) && !IsLowSurrogate(unit) && !IsInvisible(unit))
        AppendUtf8(line, unit);
    else
        AppendEscapedUnit(line, unit);
    return 1;
}

/// Builds one line.
class Line {
public:
    Line(std::string_view kind, const Options& formatOptions) : line(kind), options(formatOptions) {
        line.push_back('(');
    }

    template <typename S>
    Line& Field(const S* text) {
        Separate();
        if (text == nullptr)
            line.append("null");
        else
            line.append(Escape(*text, options));
        return *this;
    }

    /// A list of attributes or of tokens.
    template <typename T>
    Line& List(const Vector<T>* items) {
        Separate();
        if (items == nullptr) {
            line.append("null");
        } else {
            for (const T& item : *items)
                line.append(Format(item, options));
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
    constexpr std::array<std::string_view, 3> MARKS = {"", "'", "\""};
    const std::string_view mark = quote < MARKS.size() ? MARKS[quote] : "?";
    return std::string(mark) + Escape(value, options) + std::string(mark);
}

template <typename Record>
std::string FormatTextOnly(std::string_view kind, const Record& data, const Options& options) {
    return Line(kind, options).Field(data.text).Finish();
}

template <typename Record>
std::string FormatStartOrShort(std::string_view kind, const Record& data, const Options& options) {
    return Line(kind, options)
        .Field(data.prefix)
        .Field(data.name)
        .List(data.attributes)
        .Field(data.suffix)
        .Flag(!data.closed, "open")
        .Finish();
}

}  // namespace

bool IsInvisible(std::uint32_t codePoint) {
    return codePoint < 0xA0 || codePoint == 0xAD || codePoint == 0x061C || codePoint == 0x180E ||
           (codePoint >= 0x200B && codePoint <= 0x200F) || (codePoint >= 0x2028 && codePoint <= 0x202E) ||
           (codePoint >= 0x2060 && codePoint <= 0x206F) || (codePoint >= 0xFDD0 && codePoint <= 0xFDEF) || codePoint == 0xFEFF ||
           (codePoint >= 0xFFF9 && codePoint <= 0xFFFB) || (codePoint & 0xFFFE) == 0xFFFE || (codePoint >= 0xE0000 && codePoint <= 0xE0FFF);
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
    if (cut && IsHighSurrogate(static_cast<unsigned>(text[end - 1])) && IsLowSurrogate(static_cast<unsigned>(text[end])))
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

std::string Format(Event event) {
    switch (event) {
        case Event::START_PARSING:
            return "start-parsing";
        case Event::END_PARSING:
            return "end-parsing";
        case Event::JS_TAG_START:
            return "js-start";
        case Event::JS_TAG_END:
            return "js-end";
        case Event::CSS_TAG_START:
            return "css-start";
        case Event::CSS_TAG_END:
            return "css-end";
    }
    return {};
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

template <typename C, typename S>
std::string Format(const HTML::Attribute<C, S>& attribute, const Options& options) {
    std::string item = Concatenate({"{", Escape(attribute.prefix, options), "|", Escape(attribute.name, options)});
    if (attribute.hasValue) {
        item += Concatenate({"|", Escape(attribute.beforeEquals, options), "=", Escape(attribute.afterEquals, options), "|",
                             Quoted(attribute.value, attribute.quote, options)});
    }
    return item + "}";
}

template <typename C, typename S>
std::string Format(const HTML::EntityToken<C, S>& token, const Options& options) {
    return Concatenate({"{", Escape(token.prefix, options), "|", Quoted(token.value, token.quote, options), "}"});
}

template <typename C, typename S>
std::string Format(const HTML::TextData<C, S>& data, const Options& options) {
    return FormatTextOnly("text", data, options);
}

template <typename C, typename S>
std::string Format(const HTML::CCommentData<C, S>& data, const Options& options) {
    return FormatTextOnly("c-comment", data, options);
}

template <typename C, typename S>
std::string Format(const HTML::CPPCommentData<C, S>& data, const Options& options) {
    return FormatTextOnly("cpp-comment", data, options);
}

template <typename C, typename S>
std::string Format(const HTML::SQuoteStringData<C, S>& data, const Options& options) {
    return FormatTextOnly("s-string", data, options);
}

template <typename C, typename S>
std::string Format(const HTML::DQuoteStringData<C, S>& data, const Options& options) {
    return FormatTextOnly("d-string", data, options);
}

template <typename C, typename S>
std::string Format(const HTML::JunkData<C, S>& data, const Options& options) {
    return FormatTextOnly("junk", data, options);
}

template <typename C, typename S>
std::string Format(const HTML::StartTagData<C, S>& data, const Options& options) {
    return FormatStartOrShort("start", data, options);
}

template <typename C, typename S>
std::string Format(const HTML::ShortTagData<C, S>& data, const Options& options) {
    return FormatStartOrShort("short", data, options);
}

template <typename C, typename S>
std::string Format(const HTML::EndTagData<C, S>& data, const Options& options) {
    return Line("end", options)
        .Field(data.prefix)
        .Field(data.name)
        .Field(data.afterName)
        .List(data.attributes)
        .Field(data.suffix)
        .Flag(data.slashBeforeClose, "slash")
        .Flag(!data.closed, "open")
        .Finish();
}

template <typename C, typename S>
std::string Format(const HTML::CDATATagData<C, S>& data, const Options& options) {
    return Line("cdata", options).Field(data.keyword).Field(data.text).Flag(!data.closed, "open").Finish();
}

template <typename C, typename S>
std::string Format(const HTML::ConditionalTagData<C, S>& data, const Options& options) {
    return Line("conditional", options)
        .Field(data.keyword)
        .Field(data.condition)
        .Field(data.tail)
        .Flag(!data.bracketClosed, "no-bracket")
        .Flag(!data.tagClosed, "open")
        .Finish();
}

template <typename C, typename S>
std::string Format(const HTML::CommentTagData<C, S>& data, const Options& options) {
    return Line("comment", options).Field(data.text).Flag(!data.closed, "open").Finish();
}

template <typename C, typename S>
std::string Format(const HTML::EntityTagData<C, S>& data, const Options& options) {
    return Line("entity", options).Field(data.prefix).Field(data.name).List(data.tokens).Field(data.suffix).Finish();
}

template <typename C, typename S>
std::string Format(const HTML::ExternTagData<C, S>& data, const Options& options) {
    if (data.freeStyle)
        return FormatTextOnly("extern-text", data, options);
    return Line("extern", options)
        .Field(data.prefix)
        .Field(data.name)
        .List(data.attributes)
        .Field(data.suffix)
        .Flag(data.slashBeforeClose, "slash")
        .Finish();
}

template <typename C, typename S>
TraceObserver<C, S>::TraceObserver(std::vector<std::string>* lines, const Options& options) : tracedLines(lines), traceOptions(options) {}

template <typename C, typename S>
void TraceObserver<C, S>::OnStartParsing() {
    tracedLines->push_back(Format(Event::START_PARSING));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnEndParsing() {
    tracedLines->push_back(Format(Event::END_PARSING));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    tracedLines->push_back(FormatBOM(bytes, size));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnCharset(StringNS::CharSet::Code code) {
    tracedLines->push_back(FormatCharset(code));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnText(HTML::TextData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnCComment(HTML::CCommentData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnCPPComment(HTML::CPPCommentData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnSQuoteString(HTML::SQuoteStringData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnDQuoteString(HTML::DQuoteStringData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnStartTag(HTML::StartTagData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnShortTag(HTML::ShortTagData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnEndTag(HTML::EndTagData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnCDATATag(HTML::CDATATagData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnConditionalTag(HTML::ConditionalTagData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnCommentTag(HTML::CommentTagData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnEntityTag(HTML::EntityTagData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnExternTag(HTML::ExternTagData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnJSTagStart() {
    tracedLines->push_back(Format(Event::JS_TAG_START));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnJSTagEnd() {
    tracedLines->push_back(Format(Event::JS_TAG_END));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnCSSTagStart() {
    tracedLines->push_back(Format(Event::CSS_TAG_START));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnCSSTagEnd() {
    tracedLines->push_back(Format(Event::CSS_TAG_END));
}

template <typename C, typename S>
void TraceObserver<C, S>::OnJunkData(HTML::JunkData<C, S>* data) {
    tracedLines->push_back(Format(*data, traceOptions));
}

template class TraceObserver<char, std::string>;
template class TraceObserver<WideChar, WideString>;

#define KESTRA_TRACE_INSTANTIATE_FORMAT(Record)                                          \
    template std::string Format(const HTML::Record<char, std::string>&, const Options&); \
    template std::string Format(const HTML::Record<WideChar, WideString>&, const Options&)

KESTRA_TRACE_INSTANTIATE_FORMAT(Attribute);
KESTRA_TRACE_INSTANTIATE_FORMAT(EntityToken);
KESTRA_TRACE_INSTANTIATE_FORMAT(TextData);
KESTRA_TRACE_INSTANTIATE_FORMAT(CCommentData);
KESTRA_TRACE_INSTANTIATE_FORMAT(CPPCommentData);
KESTRA_TRACE_INSTANTIATE_FORMAT(SQuoteStringData);
KESTRA_TRACE_INSTANTIATE_FORMAT(DQuoteStringData);
KESTRA_TRACE_INSTANTIATE_FORMAT(JunkData);
KESTRA_TRACE_INSTANTIATE_FORMAT(StartTagData);
KESTRA_TRACE_INSTANTIATE_FORMAT(ShortTagData);
KESTRA_TRACE_INSTANTIATE_FORMAT(EndTagData);
KESTRA_TRACE_INSTANTIATE_FORMAT(CDATATagData);
KESTRA_TRACE_INSTANTIATE_FORMAT(ConditionalTagData);
KESTRA_TRACE_INSTANTIATE_FORMAT(CommentTagData);
KESTRA_TRACE_INSTANTIATE_FORMAT(EntityTagData);
KESTRA_TRACE_INSTANTIATE_FORMAT(ExternTagData);

}  // namespace Kestra::Trace
