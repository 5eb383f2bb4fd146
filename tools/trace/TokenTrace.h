#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/RecordFields.h"
#include "html/framework/TokenObserver.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"

/// @file
/// The trace language: one line of ASCII text for each callback of an observer, the same for both
/// flavours as long as the input is ASCII. Parameters are in parentheses and are separated by "|",
/// flags follow after ", ".
///
///     start-parsing  end-parsing  js-start  js-end  css-start  css-end
///     bom(EF BB BF)                                   bytes in hexadecimal
///     charset(65001)
///     text(t)  c-comment(t)  cpp-comment(t)  s-string(t)  d-string(t)  junk(t)
///     start(prefix|name|attributes|suffix)            ", open" when not closed
///     short(prefix|name|attributes|suffix)            ", open" when not closed
///     end(prefix|name|afterName|attributes|suffix)    ", slash" for slashBeforeClose, ", open" when not closed
///     cdata(keyword|text)                             ", open" when not closed
///     conditional(keyword|condition|tail)             ", no-bracket", ", open" when not closed by ">"
///     comment(text)                                   ", open" when not closed
///     entity(prefix|name|tokens|suffix)               a token is {prefix|value}, its value in the quotes that it had
///     extern(prefix|name|attributes|suffix)           ", slash" for slashBeforeClose
///     extern-text(text)                               free style
///
/// An attribute is {prefix|name}, or {prefix|name|beforeEquals=afterEquals|value} with the value in
/// the quotes that it had. A value of an unknown quote kind is written between question marks. A
/// null string or list is written as `null`.
///
/// In strings, a backslash is `\\`, line feed `\n`, carriage return `\r`, tab `\t`, every other
/// control character `\x1B`, a byte from 128 up `\xE9` and a wide unit from U+0080 up `\u00E9`. All
/// other characters are written as they are.

namespace Kestra::Trace {

struct Options {
    /// Strings of more characters are cut there and followed by `...[LENGTH]`; 0 cuts nothing.
    std::uint64_t cutAt = 0;
    /// Printable wide characters from U+0080 up as UTF-8; controls and lone surrogates stay
    /// escapes.
    bool utf8 = false;
    /// Lists of more items are cut after so many, in the same way; 0 cuts nothing.
    std::uint64_t mostItems = 0;
};

/// True of characters from U+0080 up that a terminal shows as nothing, obeys, or must not be sent:
/// C1 controls, separators of lines, marks of direction, other invisible format characters,
/// noncharacters.
bool IsInvisible(std::uint32_t codePoint);

/// A string in the escapes of the trace language.
std::string Escape(std::string_view text, const Options& options = {});
std::string Escape(WideStringView text, const Options& options = {});

/// The same at the end of a line.
void AppendEscaped(std::string* line, WideStringView text, const Options& options = {});

/// A callback without a record or argument.
std::string Format(HTML::ObserverEvent event);
std::string FormatBOM(const void* bytes, std::uint64_t size);
std::string FormatCharset(StringNS::CharSet::Code code);

/// Appends the record of a token, an attribute or a part of a declaration.
template <template <typename, typename> class Record, typename C, typename S>
void Append(std::string* line, const Record<C, S>& record, const Options& options = {});

/// The same as a string of its own.
template <template <typename, typename> class Record, typename C, typename S>
std::string Format(const Record<C, S>& record, const Options& options = {}) {
    std::string line;
    Append(&line, record, options);
    return line;
}

/// Appends one line for each callback to a list of its owner.
template <typename C, typename S>
class TraceObserver : public HTML::EventObserver<TraceObserver<C, S>, C, S> {
public:
    /// @param lines  borrowed; must live as long as callbacks come
    explicit TraceObserver(std::vector<std::string>* lines, const Options& options = {})
        : tracedLines(lines), traceOptions(options) {}

    void OnBOM(const void* bytes, std::uint64_t size) override {
        tracedLines->push_back(FormatBOM(bytes, size));
    }

    void OnCharset(StringNS::CharSet::Code code) override {
        tracedLines->push_back(FormatCharset(code));
    }

    void OnEvent(HTML::ObserverEvent event) {
        tracedLines->push_back(Format(event));
    }

    template <typename Record>
    void OnToken(const Record* record) {
        tracedLines->push_back(Format(*record, traceOptions));
    }

private:
    std::vector<std::string>* tracedLines;
    Options traceOptions;
};

}  // namespace Kestra::Trace
