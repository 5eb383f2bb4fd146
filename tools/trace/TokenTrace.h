#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/ParserObserver.h"
#include "html/framework/TokenRecords.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"

/// @file
/// The trace language: one line of ASCII text for each callback of an observer, the same for both flavours as long as the input is
/// ASCII. Parameters stand in parentheses and are separated by "|", flags follow behind ", ".
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
/// An attribute is {prefix|name}, or {prefix|name|beforeEquals=afterEquals|value} with the value in the quotes that it had. A value of
/// an unknown quote kind stands between question marks. A null string or list is written as `null`.
///
/// In strings, a backslash is `\\`, line feed `\n`, carriage return `\r`, tab `\t`, every other control character `\x1B`, a byte from
/// 128 up `\xE9` and a wide unit from U+0080 up `\u00E9`. All other characters stand for themselves.

namespace Kestra::Trace {

struct Options {
    std::uint64_t cutAt = 0;  ///< strings of more characters are cut there and followed by `...[LENGTH]`; 0 cuts nothing
    bool utf8 = false;        ///< printable wide characters from U+0080 up as UTF-8; controls and lone surrogates stay escapes
};

/// The callbacks without a record or argument.
enum class Event {
    START_PARSING,
    END_PARSING,
    JS_TAG_START,
    JS_TAG_END,
    CSS_TAG_START,
    CSS_TAG_END,
};

/// True of characters from U+0080 up that a terminal shows as nothing, obeys, or must not be sent: C1 controls, separators of lines,
/// marks of direction, other invisible format characters, noncharacters.
bool IsInvisible(std::uint32_t codePoint);

/// A string in the escapes of the trace language.
std::string Escape(std::string_view text, const Options& options = {});
std::string Escape(WideStringView text, const Options& options = {});

std::string Format(Event event);
std::string FormatBOM(const void* bytes, std::uint64_t size);
std::string FormatCharset(StringNS::CharSet::Code code);

template <typename C, typename S>
std::string Format(const HTML::Attribute<C, S>& attribute, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::EntityToken<C, S>& token, const Options& options = {});

template <typename C, typename S>
std::string Format(const HTML::TextData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::CCommentData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::CPPCommentData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::SQuoteStringData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::DQuoteStringData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::JunkData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::StartTagData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::ShortTagData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::EndTagData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::CDATATagData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::ConditionalTagData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::CommentTagData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::EntityTagData<C, S>& data, const Options& options = {});
template <typename C, typename S>
std::string Format(const HTML::ExternTagData<C, S>& data, const Options& options = {});

/// Appends one line for each callback to a list of its owner.
template <typename C, typename S>
class TraceObserver : public HTML::ParserObserver<C, S> {
public:
    /// @param lines  borrowed; must live as long as callbacks come
    explicit TraceObserver(std::vector<std::string>* lines, const Options& options = {});

    void OnStartParsing() override;
    void OnEndParsing() override;
    void OnBOM(const void* bytes, std::uint64_t size) override;
    void OnCharset(StringNS::CharSet::Code code) override;
    void OnText(HTML::TextData<C, S>* data) override;
    void OnCComment(HTML::CCommentData<C, S>* data) override;
    void OnCPPComment(HTML::CPPCommentData<C, S>* data) override;
    void OnSQuoteString(HTML::SQuoteStringData<C, S>* data) override;
    void OnDQuoteString(HTML::DQuoteStringData<C, S>* data) override;
    void OnStartTag(HTML::StartTagData<C, S>* data) override;
    void OnShortTag(HTML::ShortTagData<C, S>* data) override;
    void OnEndTag(HTML::EndTagData<C, S>* data) override;
    void OnCDATATag(HTML::CDATATagData<C, S>* data) override;
    void OnConditionalTag(HTML::ConditionalTagData<C, S>* data) override;
    void OnCommentTag(HTML::CommentTagData<C, S>* data) override;
    void OnEntityTag(HTML::EntityTagData<C, S>* data) override;
    void OnExternTag(HTML::ExternTagData<C, S>* data) override;
    void OnJSTagStart() override;
    void OnJSTagEnd() override;
    void OnCSSTagStart() override;
    void OnCSSTagEnd() override;
    void OnJunkData(HTML::JunkData<C, S>* data) override;

private:
    std::vector<std::string>* tracedLines;
    Options traceOptions;
};

}  // namespace Kestra::Trace
