#include "bench/Hostile.h"

#include "bench/CountingObservers.h"
#include "bench/HostileEdits.h"
#include "bench/PieceStream.h"
#include "html/parser/GenericParser.h"
#include "html/stateless/StatelessHTMLParser.h"

namespace Kestra::Bench {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

constexpr std::uint64_t HALF_A_MILLION = 500'000;
constexpr std::uint64_t SIZE = 4'000'000;  // bytes
// For what takes less than a nanosecond a byte: far more than the caches hold.
constexpr std::uint64_t LONG = 40'000'000;
constexpr std::uint64_t READ = 16384;
// Bytes. An index of names is searched up and down, so it has to stay in a cache.
constexpr std::uint64_t EDITED = 50'000;

// A page as it is, for the smallest pieces.
constexpr std::string_view PAGE =
    "<div class=\"entry\" id=a1><p>The tide tables hang <b>beside</b> the door.<br/><!-- spring --><img src='tide.png' "
    "alt=tide></p></div>\n";

// A failure after a value of a thousand characters.
const std::string LONG_FAILURE = "<a b='" + std::string(1000, 'x') + "' c / >";

const HostileInput INPUTS[] = {
    // Lists of a million.
    {"attributes-distinct", "<a", " b#=1", ">", BOTH, 10 * HALF_A_MILLION},
    {"attributes-equal", "<a", " b=1", ">", BOTH, 4 * HALF_A_MILLION},
    {"attributes-without-value", "<a", " b", ">", BOTH, 2 * HALF_A_MILLION},
    {"words-after-a-value", "<a b=1", " c", ">", BOTH, 2 * HALF_A_MILLION},
    {"words-after-a-quoted-value", "<a b='1'", " c", ">", BOTH, 2 * HALF_A_MILLION},
    {"end-tag-attributes", "</a", " b=1", ">", DOCUMENT, 4 * HALF_A_MILLION},
    {"declaration-words", "<!DOCTYPE", " a", ">", BOTH, 2 * HALF_A_MILLION},
    {"declaration-strings", "<!DOCTYPE", " \"a\"", ">", BOTH, 4 * HALF_A_MILLION},
    {"instruction-attributes", "<?xml", " a='1'", "?>", BOTH, 6 * HALF_A_MILLION},
    // What never ends.
    {"open-text", "", "text ", "", BOTH, LONG},
    {"open-comment", "<!--", "text ", "", BOTH, LONG},
    {"open-comment-dashes", "<!--", "-", "", BOTH, LONG},
    {"open-comment-almost-closed", "<!--", "->", "", BOTH, LONG},
    {"open-cdata", "<![CDATA[", "text ", "", DOCUMENT, LONG},
    {"open-cdata-almost-closed", "<![CDATA[", "] ]", "", DOCUMENT, LONG},
    {"open-conditional", "<![if ", "text ", "", DOCUMENT, LONG},
    {"open-value-single", "<a b='", "text ", "", BOTH | JUNK, LONG},
    {"open-value-double", "<a b=\"", "text ", "", BOTH | JUNK, LONG},
    {"open-value-unquoted", "<a b=", "x", "", BOTH | JUNK, LONG},
    {"open-tag-name", "<a", "a", "", BOTH | JUNK, LONG},
    {"open-end-tag-name", "</a", "a", "", BOTH | JUNK, LONG},
    {"open-attribute-name", "<a ", "b", "", BOTH | JUNK, LONG},
    {"open-white-space", "<a", " ", "", BOTH | JUNK, LONG},
    {"open-instruction", "<?php ", "text ", "", DOCUMENT | JUNK, LONG},
    {"open-xml-declaration", "<?xml a=\"", "text ", "", BOTH | JUNK, LONG},
    {"open-declaration", "<!DOCTYPE ", "text ", "", BOTH | JUNK, 5 * HALF_A_MILLION},
    {"open-declaration-string", "<!DOCTYPE a \"", "text ", "", BOTH | JUNK, LONG},
    {"open-script", "<script>", "a = b < c; ", "", BOTH},
    {"open-script-string", "<script>'", "text ", "", BOTH | JUNK, LONG},
    {"open-script-string-escapes", "<script>\"", "\\\"", "", BOTH | JUNK},
    {"open-script-comment", "<script>/*", "* ", "", BOTH | JUNK},
    {"open-script-line-comment", "<script>//", "text ", "", BOTH | JUNK, LONG},
    {"open-script-expression", "<script>a=/", "x", "", BOTH, LONG},
    {"open-style", "<style>", "a {} ", "", BOTH, LONG},
    // What begins again and again.
    {"openers", "", "<", "", DOCUMENT | JUNK, LONG},
    {"openers-blank", "", "< ", "", DOCUMENT | JUNK, 2 * HALF_A_MILLION},
    {"openers-end-tag", "", "</", "", DOCUMENT | JUNK},
    {"openers-declaration", "", "<!", "", DOCUMENT | EARLY_JUNK},
    {"openers-comment", "", "<!-", "", DOCUMENT | EARLY_JUNK},
    {"openers-section", "", "<![", "", DOCUMENT | EARLY_JUNK},
    {"openers-instruction", "", "<?", "", DOCUMENT | JUNK},
    {"openers-tag", "", "<a", "", DOCUMENT | JUNK, LONG},
    {"openers-attribute", "", "<a b", "", DOCUMENT | JUNK, 4 * HALF_A_MILLION},
    {"openers-value", "", "<a b=", "", DOCUMENT | JUNK, 5 * HALF_A_MILLION},
    {"closers", "", ">", "", BOTH, LONG},
    // Quotes in quotes.
    {"quotes-in-a-tag", "<a b=", "'\"'\"", "", DOCUMENT | JUNK, LONG},
    {"quotes-in-values", "", "<a b='\"' c=\"'\">", "", BOTH},
    {"quotes-in-script", "<script>", "'\"'\"\"", "", BOTH},
    {"quotes-escaped-in-script", "<script>", "'\\''\"\\'\"", "", BOTH},
    {"slashes-in-script", "<script>", "/ ", "", BOTH},
    // Escape runs of ISO-2022-JP.
    {"iso-2022-runs", "", "\x1B$Bab\x1B(B", "", DOCUMENT, SIZE, READ, CharSet::ISO_2022_JP},
    {"iso-2022-escapes", "", "\x1B", "", DOCUMENT, SIZE, READ, CharSet::ISO_2022_JP},
    {"iso-2022-open-run", "\x1B$B", "<a\x1B(", "", DOCUMENT, SIZE, READ, CharSet::ISO_2022_JP},
    {"iso-2022-runs-in-a-value", "<a b=\"", "\x1B$Bab\x1B(B", "\">", DOCUMENT, SIZE, READ, CharSet::ISO_2022_JP},
    {"iso-2022-open-run-in-a-value", "<a b=\"\x1B$B", "\x1B\">", "", DOCUMENT | JUNK, SIZE, READ, CharSet::ISO_2022_JP},
    // End tags in a script that do not end it.
    {"foreign-end-tags", "<script>", "</b>", "</script>", BOTH},
    {"foreign-end-tags-open", "<script>", "</b ", "</script>", BOTH},
    {"foreign-end-tags-almost", "<script>", "</scrip", "</script>", BOTH},
    {"foreign-end-tags-without-name", "<script>", "</", "</script>", BOTH},
    {"foreign-tags", "<script>", "<b ", "</script>", BOTH},
    {"foreign-end-tags-in-style", "<style>", "</b>", "</style>", BOTH},
    // The same where a script is text, and what counts there.
    {"text-script-openers", "<script>", "<", "", DOCUMENT, SIZE, READ, CharSet::UTF8, GenericParser::SCRIPT_AS_TEXT},
    {"text-script-end-tags-almost", "<script>", "</scrip", "</script>", DOCUMENT, SIZE, READ, CharSet::UTF8,
     GenericParser::SCRIPT_AS_TEXT},
    {"text-script-escapes", "<script>", "<!--<script>", "", DOCUMENT, SIZE, READ, CharSet::UTF8,
     GenericParser::SCRIPT_AS_TEXT},
    {"text-script-escapes-closed", "<script>", "<!--<script></script>-->", "</script>", DOCUMENT, SIZE, READ,
     CharSet::UTF8, GenericParser::SCRIPT_AS_TEXT},
    {"text-script-escape-closers", "<script><!-- ", ">", "", DOCUMENT, SIZE, READ, CharSet::UTF8,
     GenericParser::SCRIPT_AS_TEXT},
    {"text-contents", "", "<title></title>", "", DOCUMENT, SIZE, READ, CharSet::UTF8, GenericParser::SCRIPT_AS_TEXT},
    {"text-iso-2022-runs", "<xmp>", "\x1B$B<\x1B(B", "", DOCUMENT, SIZE, READ, CharSet::ISO_2022_JP,
     GenericParser::SCRIPT_AS_TEXT},
    // Failures that become junk, each read again.
    {"failing-tags", "", "<a b / >", "", DOCUMENT | EARLY_JUNK},
    {"failing-tags-long", "", LONG_FAILURE, "", DOCUMENT | EARLY_JUNK, LONG},
    {"failing-tags-in-text", "", "<p>a</p><a b / >", "", DOCUMENT | EARLY_JUNK},
    {"failing-end-tags", "", "</a / >", "", DOCUMENT | EARLY_JUNK},
    {"failing-comments", "", "<!-x", "", DOCUMENT | EARLY_JUNK},
    {"failing-sections", "", "<![x", "", DOCUMENT | EARLY_JUNK},
    {"failing-declarations", "", "<!a", "", DOCUMENT | EARLY_JUNK},
    {"failing-instructions", "", "<?xml>", "", DOCUMENT | EARLY_JUNK},
    {"failing-script-comments", "", "<script>//<!-comments..</script>", "",
     DOCUMENT | EARLY_JUNK},  // 32 bytes: no read cuts its "//"
    // What the host of a rewriter edits again and again.
    {"edits-set", "<a", " b#=1", ">", REWRITER, EDITED, READ, CharSet::UTF8, GenericParser::SCRIPT_AS_TOKENS,
     HostileEdit::SET},
    {"edits-set-folded", "<a", " b#=1 c", ">", REWRITER, EDITED, READ, CharSet::UTF8, GenericParser::SCRIPT_AS_TOKENS,
     HostileEdit::SET},
    {"edits-add", "<a", " b#=1", ">", REWRITER, EDITED, READ, CharSet::UTF8, GenericParser::SCRIPT_AS_TOKENS,
     HostileEdit::ADD},
    {"edits-rename", "<a", " b#=1", ">", REWRITER, EDITED, READ, CharSet::UTF8, GenericParser::SCRIPT_AS_TOKENS,
     HostileEdit::RENAME},
    {"edits-remove", "<a", " b#=1", ">", REWRITER, EDITED, READ, CharSet::UTF8, GenericParser::SCRIPT_AS_TOKENS,
     HostileEdit::REMOVE},
    {"edits-remove-last-first", "<a", " b#=1", ">", REWRITER, EDITED, READ, CharSet::UTF8,
     GenericParser::SCRIPT_AS_TOKENS, HostileEdit::REMOVE_LAST_FIRST},
    {"edits-before-in-raw", "<xmp><a", " b#=1", ">", REWRITER, EDITED, READ, CharSet::UTF8,
     GenericParser::SCRIPT_AS_TOKENS, HostileEdit::INSERT_BEFORE},
    {"edits-after-in-raw", "<xmp><a", " b#=1", ">", REWRITER, EDITED, READ, CharSet::UTF8,
     GenericParser::SCRIPT_AS_TOKENS, HostileEdit::INSERT_AFTER},
    {"edits-throwing", "", "<b>x", "", REWRITER, HALF_A_MILLION, 4, CharSet::UTF8, GenericParser::SCRIPT_AS_TOKENS,
     HostileEdit::THROW_IN_EDITED},
    {"edits-throwing-in-removed", "", "<b><i>x", "", REWRITER, HALF_A_MILLION, 7, CharSet::UTF8,
     GenericParser::SCRIPT_AS_TOKENS, HostileEdit::THROW_IN_REMOVED},
    // The smallest pieces. Their cost is that of a call for each byte, and only reported.
    {"one-byte-page", "", PAGE, "", BOTH, SIZE, 1},
    {"one-byte-attributes", "<a", " b=1", ">", BOTH, 4 * HALF_A_MILLION, 1},
    {"one-byte-open-value", "<a b='", "text ", "", BOTH | JUNK, SIZE, 1},
    {"one-byte-open-comment", "<!--", "- ", "", BOTH, SIZE, 1},
    {"one-byte-text-script", "<script>", "</scrip", "</script>", DOCUMENT, SIZE, 1, CharSet::UTF8,
     GenericParser::SCRIPT_AS_TEXT},
    {"one-byte-failing-tags", "", "<a b / >", "", DOCUMENT | EARLY_JUNK, SIZE, 1},
    {"one-byte-failing-tags-long", "", LONG_FAILURE, "", DOCUMENT | EARLY_JUNK, SIZE, 1},
};

HostileReading ReadDocument(const HostileInput& input, HostileFeed feed, const std::string& document, bool selfCheck) {
    CountingObserver<char, std::string> observer;
    HTML::GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.SetScriptMode(input.scriptMode);
    parser.StartParse(input.charset, HTML::GenericParser::DATA_STREAM_8BIT);
    parser.SetSelfCheck(selfCheck ? HTML::GenericParser::SELF_CHECK_CRC : HTML::GenericParser::SELF_CHECK_OFF);
    if (feed == HostileFeed::BUFFER) {
        const std::uint32_t result = parser.ParseBuffer(document.data(), document.size());
        const std::uint32_t expectedEnd = (input.kind & JUNK) != 0 ? HTML::PARSER_UNTERMINATED : HTML::PARSER_OK;
        return {result == HTML::PARSER_OK && parser.EndParse() == expectedEnd, observer.junk, document.size()};
    }
    PieceStream stream(document, input.piece);
    const std::uint32_t result = parser.ParseStream(&stream, false);
    const std::uint32_t end = parser.EndParse();
    return {result == HTML::PARSER_OK && end == HTML::PARSER_OK, observer.junk, stream.HandedOut()};
}

HostileReading ReadEvents(const HostileInput& input, HostileFeed feed, const std::string& document) {
    CountingEventObserver observer;
    HTML::StatelessHTMLParser parser;
    parser.Attach(&observer);
    parser.StartParse(input.charset);
    if (feed == HostileFeed::BUFFER) {
        const std::uint32_t result = parser.ParseBuffer(document.data(), document.size());
        const std::uint32_t end = parser.EndParse();
        return {(result == HTML::STATELESS_OK || result == HTML::STATELESS_NEED_MORE_DATA) && end == HTML::STATELESS_OK,
                0, document.size()};
    }
    PieceStream stream(document, input.piece);
    const std::uint32_t result = parser.ParseStream(&stream, false);
    parser.EndParse();
    return {result == HTML::STATELESS_OK, 0, stream.HandedOut()};
}

}  // namespace

std::span<const HostileInput> HostileInputs() {
    return INPUTS;
}

std::string MakeHostile(const HostileInput& input, std::uint64_t size) {
    const std::size_t number = input.unit.find('#');
    std::string text(input.begin);
    for (std::uint64_t i = 0; text.size() < size; ++i) {
        if (number == std::string_view::npos)
            text.append(input.unit);
        else
            text.append(input.unit.substr(0, number)).append(std::to_string(i)).append(input.unit.substr(number + 1));
    }
    return text.append(input.end);
}

bool CanBeFedAs(HostileFeed feed, const HostileInput& input, HostileKind reader) {
    if (feed == HostileFeed::STREAM)
        return true;
    return reader != REWRITER && input.piece != 1 && (reader == STATELESS || (input.kind & EARLY_JUNK) != EARLY_JUNK);
}

HostileReading ReadHostile(const HostileInput& input, HostileKind reader, HostileFeed feed, const std::string& document,
                           bool selfCheck) {
    if (reader == REWRITER)
        return RewriteHostile(input, document, selfCheck);
    return reader == STATELESS ? ReadEvents(input, feed, document) : ReadDocument(input, feed, document, selfCheck);
}

}  // namespace Kestra::Bench
