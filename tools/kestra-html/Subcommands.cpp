#include "tools/kestra-html/Subcommands.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <system_error>

#include "html/parser/GenericParser.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "tools/kestra-html/CharsetText.h"

namespace Kestra::Tool {

const char* const EXIT_STATUS_HELP =
    "Exit status:\n"
    "  0  all inputs are good\n"
    "  1  an input ended with a result code other than 0 or was not reproduced (the\n"
    "     others are processed all the same), or the output could not be written\n"
    "  2  wrong usage\n"
    "  3  a file cannot be read\n";

namespace {

using HTML::GenericParser;
using HTML::StatelessHTMLParser;
using StringNS::CharSet;

constexpr const char* TOKENS_FOOTER =
    "Text format: one line for each token. It starts with the line and the column of\n"
    "the token, from 1, counted in the parser's characters: bytes, and units of\n"
    "UTF-16 input. An event without a token, such as js-start, stands after the tag\n"
    "that caused it. Long texts are cut and followed by their length: abc...[1200]. A\n"
    "control character is shown as \\n, \\r, \\t or \\x1B. On a terminal the kind is\n"
    "coloured unless NO_COLOR is set. With --places the offsets follow, [begin,end).\n"
    "\n"
    "JSON format: JSON Lines, one object for each callback, and a last one for the\n"
    "result of the input. With --places the objects of callbacks get begin, end, line\n"
    "and column, those without a token the ones of the tag that caused them; and the\n"
    "attributes begin, end, nameBegin, nameEnd, valueBegin and valueEnd, the last two\n"
    "null without a value.\n"
    "\n"
    "When the charset is found late, the input is parsed again with it; only the\n"
    "last pass is written.\n"
    "\n";

constexpr const char* EVENTS_FOOTER =
    "The events are those of the stateless parser, which takes 8-bit text. A comment\n"
    "ends with its piece, and text after the last tag causes no event. A parse that\n"
    "ends inside a construct, with 16, is good.\n"
    "\n"
    "Text format: one line for each event. It starts with the line and the column of\n"
    "the construct, from 1, as the parser counts them: two line breaks in a row are\n"
    "one, and a byte of text, of a script or of a style sheet is two columns. Long\n"
    "texts are cut and followed by their length: abc...[1200]. A control character is\n"
    "shown as \\n, \\r, \\t or \\x1B. On a terminal the kind is coloured unless NO_COLOR\n"
    "is set. With --places the offsets follow, [begin,end).\n"
    "\n"
    "JSON format: JSON Lines, one object for each callback, and a last one for the\n"
    "result of the input. With --places the objects of callbacks get begin, end, line\n"
    "and column, and attributePlaces when they have attributes: for each begin, end,\n"
    "nameBegin, nameEnd, valueBegin and valueEnd, the last two null without a value.\n"
    "\n";

constexpr const char* CHECK_FOOTER =
    "Each input is parsed with the self-check that keeps a copy of the tokens written\n"
    "back, and the copy is compared with the input byte for byte. Three options of\n"
    "tokens do not apply: --self-check is copy, --observer is wide, and what could\n"
    "not be decoded is not told, as the copy is never decoded.\n"
    "\n"
    "Text format: one line for each input, with ok or the result code, and a summary.\n"
    "The rate is that of the parse with its self-check, in millions of bytes per\n"
    "second; in the summary it is that of the whole run. Where the copy differs, the\n"
    "line names the first byte, counted from 0, and the token that holds it.\n"
    "\n"
    "JSON format: JSON Lines, one object for each input.\n"
    "\n"
    "When the charset is found late, the input is parsed again with it; only the\n"
    "last pass counts.\n"
    "\n";

constexpr const char* DETECT_FOOTER =
    "The first 16384 bytes are looked at; at least 256 are needed.\n"
    "\n"
    "Text format: one line for each input: the code page and its name, how sure the\n"
    "detector is, of 100, and the result code. An answer that is not sure enough is\n"
    "not given; its confidence is.\n"
    "\n"
    "JSON format: JSON Lines, one object for each input.\n"
    "\n";

std::optional<std::uint64_t> ReadNumber(const std::string& text, std::uint64_t most) {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || next != end || number > most)
        return std::nullopt;
    return number;
}

std::uint64_t ToNumber(const std::string& option, const std::string& text) {
    const auto number = ReadNumber(text, UINT64_MAX);
    if (!number)
        throw CLI::ValidationError(option, fmt::format("\"{}\" is not a decimal number", text));
    return *number;
}

/// A code-page number or a registered charset name.
CharSet::Code ReadCharset(const std::string& option, const std::string& text) {
    if (const auto number = ReadNumber(text, UINT32_MAX); number)
        return static_cast<CharSet::Code>(*number);
    WideString name;
    for (const char letter : text)
        name.push_back(static_cast<WideChar>(static_cast<unsigned char>(letter)));
    const CharSet::Code code = CharSet::GetCharSetCode(name);
    if (code == CharSet::UNKNOWN)
        throw CLI::ValidationError(option,
                                   fmt::format("\"{}\" is neither a number nor a registered charset name", text));
    return code;
}

/// What cannot be decoded would be lost on its way to the observer. Where nothing is decoded, a
/// code that has a name is one all the same.
CharSet::Code ToCharset(const std::string& option, const std::string& text, bool decodes) {
    const CharSet::Code code = ReadCharset(option, text);
    const bool isKnown =
        code == CharSet::UNKNOWN || HasConverter(code) || (!decodes && !CharSet::GetCharSetName(code).empty());
    if (!isKnown)
        throw CLI::ValidationError(option,
                                   fmt::format("there is no converter for the charset {}", DescribeCharset(code)));
    return code;
}

std::uint64_t ToNumberWithin(const std::string& option, const std::string& text, std::uint64_t least,
                             std::uint64_t most) {
    const auto number = ReadNumber(text, most);
    if (!number || *number < least)
        throw CLI::ValidationError(option, fmt::format("\"{}\" is not a number from {} to {}", text, least, most));
    return *number;
}

}  // namespace

Subcommand::Subcommand(CLI::App* tool, const std::string& name, const std::string& description)
    : app(tool->add_subcommand(name, description)),
      minConfidence(std::to_string(GenericParser::DETECTCHARSET_MIN_CONFIDENCE)) {}

bool Subcommand::IsMeant() const {
    return app->parsed();
}

void Subcommand::AddText(const std::string& name, std::string* value, const std::string& typeName,
                         const std::string& description) {
    app->add_option(name, *value, description)->type_name(typeName)->take_last()->capture_default_str();
}

void Subcommand::AddChoice(const std::string& name, std::string* value, const std::vector<std::string>& choices,
                           const std::string& description) {
    AddText(name, value, CLI::detail::join(choices, "|"), description);
    app->get_option(name)->check(CLI::IsMember(choices).description(""));
}

void Subcommand::AddFlag(const std::string& name, bool* value, const std::string& description) {
    app->add_flag(name, *value, description);
}

void Subcommand::AddFormat() {
    AddChoice("--format", &format, {"text", "json"}, "for people, or JSON Lines for programs");
}

void Subcommand::AddMinConfidence() {
    AddText("--min-confidence", &minConfidence, "N", "least confidence, of 100, of a detected charset");
}

/// The option is for the help only. It accepts nothing: as a list, the parser of options would read
/// "[a,b]" as two names.
void Subcommand::AddFiles(const std::string& description, const std::string& footer) {
    app->add_option("FILE...", helpOnly, description)->type_name("")->expected(0)->allow_extra_args(false);
    app->allow_extras();
    app->footer(footer + EXIT_STATUS_HELP);
}

OutputFormat Subcommand::GetFormat() const {
    return format == "json" ? OutputFormat::JSON : OutputFormat::TEXT;
}

std::uint64_t Subcommand::GetMinConfidence() const {
    return ToNumber("--min-confidence", minConfidence);
}

std::vector<std::string> Subcommand::GetFiles() const {
    std::vector<std::string> files = app->remaining();
    for (const std::string& file : files) {
        if (file.size() > 1 && file.front() == '-')
            throw CLI::ExtrasError(app->get_name(), {file});
    }
    return files;
}

void FeedingSubcommand::AddCharset() {
    AddText("--charset", &charset, "CHARSET",
            "charset of the input: a code-page number or a\nregistered name; 0 is unknown");
}

void FeedingSubcommand::AddFeed() {
    AddChoice("--feed", &feed, {"stream", "buffer"}, "hand the input over as one stream, or piece by\npiece");
    AddText("--piece-size", &pieceSize, "N",
            "buffer: bytes of a piece, 0 for all in one;\n"
            "stream: most bytes for a read that asks for\n"
            "16384 or more, 0 for as many as it asks for");
}

void FeedingSubcommand::AddMaxToken() {
    AddText("--max-token", &maxToken, "N",
            "most bytes of a token, 0 for any number; a longer\none ends the input with 711");
}

void FeedingSubcommand::AddScripts() {
    AddChoice("--scripts", &scripts, {"tokens", "text"},
              "look for strings and comments in scripts, or\nread the content of script, style, textarea,\ntitle and "
              "their like as "
              "text, as browsers do");
}

bool FeedingSubcommand::WantsScriptsAsText() const {
    return scripts == "text";
}

void FeedingSubcommand::TakeFeedOptions(FeedOptions* options, bool decodes) const {
    options->charset = ToCharset("--charset", charset, decodes);
    options->feed = feed == "buffer" ? FeedOptions::Feed::BUFFER : FeedOptions::Feed::STREAM;
    options->pieceSize = ToNumber("--piece-size", pieceSize);
    options->maxTokenSize = ToNumber("--max-token", maxToken);
}

void ParsingSubcommand::AddInput() {
    AddChoice("--input", &input, {"auto", "8bit", "utf16"},
              "look for a byte-order mark, or take the input\nas 8-bit text or as UTF-16");
}

void ParsingSubcommand::AddNoReparse() {
    AddFlag("--no-reparse", &noReparse, "stop when the charset is found late, instead\nof starting again with it");
}

void ParsingSubcommand::TakeParseOptions(ParseOptions* options, bool decodes) const {
    TakeFeedOptions(options, decodes);
    if (input == "8bit")
        options->input = GenericParser::DATA_STREAM_8BIT;
    else if (input == "utf16")
        options->input = GenericParser::DATA_STREAM_UTF16;
    options->scriptMode = WantsScriptsAsText() ? GenericParser::SCRIPT_AS_TEXT : GenericParser::SCRIPT_AS_TOKENS;
    options->minConfidence = GetMinConfidence();
    options->reparse = !noReparse;
}

TokensSubcommand::TokensSubcommand(CLI::App* tool)
    : ParsingSubcommand(tool, "tokens", "Print the token stream of every input") {
    AddFormat();
    AddCharset();
    AddInput();
    AddChoice("--observer", &observer, {"wide", "narrow"},
              "characters of the tokens: UTF-16, or bytes as\nthey are in the input");
    AddFeed();
    AddScripts();
    AddMaxToken();
    AddChoice("--self-check", &selfCheck, {"off", "crc", "copy"},
              "compare the input with its tokens written\nback, by checksum; copy keeps those, too");
    AddFlag("--detect-charset-errors", &detectCharsetErrors,
            "tell in the result whether all text could be\ndecoded without loss");
    AddMinConfidence();
    AddNoReparse();
    AddFlag("--places", &places,
            "tell where each token, and in JSON each\nattribute, lies, in bytes from the first one");
    AddFiles("files to read; - or none is standard input", TOKENS_FOOTER);
}

TokensOptions TokensSubcommand::GetOptions() const {
    TokensOptions options;
    options.format = GetFormat();
    options.observer = observer == "narrow" ? TokensOptions::Observer::NARROW : TokensOptions::Observer::WIDE;
    TakeParseOptions(&options, options.observer == TokensOptions::Observer::WIDE);
    if (selfCheck == "crc")
        options.selfCheck = GenericParser::SELF_CHECK_CRC;
    else if (selfCheck == "copy")
        options.selfCheck = GenericParser::SELF_CHECK_COPY;
    options.detectCharsetErrors = detectCharsetErrors;
    options.places = places;
    options.inputs = GetFiles();
    return options;
}

EventsSubcommand::EventsSubcommand(CLI::App* tool)
    : FeedingSubcommand(tool, "events", "Print the event stream of every input"),
      flags(std::to_string(EventsOptions().flags)) {
    AddFormat();
    AddCharset();
    AddFeed();
    AddScripts();
    AddMaxToken();
    AddText("--flags", &flags, "N", "flags of the parser; 1: the markup may replace\nthe charset");
    AddFlag("--places", &places, "tell where each construct lies, in bytes from\nthe first one");
    AddFiles("files to read; - or none is standard input", EVENTS_FOOTER);
}

EventsOptions EventsSubcommand::GetOptions() const {
    EventsOptions options;
    TakeFeedOptions(&options, true);
    options.format = GetFormat();
    options.flags = static_cast<std::uint32_t>(ToNumberWithin("--flags", flags, 0, UINT32_MAX));
    options.scriptMode =
        WantsScriptsAsText() ? StatelessHTMLParser::SCRIPT_AS_TEXT : StatelessHTMLParser::SCRIPT_AS_TOKENS;
    options.places = places;
    options.inputs = GetFiles();
    return options;
}

CheckSubcommand::CheckSubcommand(CLI::App* tool)
    : ParsingSubcommand(tool, "check", "Check that the tokens reproduce every input") {
    AddFormat();
    AddCharset();
    AddInput();
    AddFeed();
    AddScripts();
    AddMaxToken();
    AddMinConfidence();
    AddNoReparse();
    AddFlag("--recursive", &recursive, "walk directories: their .html, .htm and .xhtml\nfiles, sorted by name");
    AddText("--jobs", &jobs, "N", "threads; the output stays in the order of the\ninputs");
    AddFiles("files to read, with --recursive directories,\ntoo; - or none is standard input", CHECK_FOOTER);
}

CheckOptions CheckSubcommand::GetOptions() const {
    CheckOptions options;
    TakeParseOptions(&options, false);
    options.format = GetFormat();
    options.selfCheck = GenericParser::SELF_CHECK_COPY;
    options.recursive = recursive;
    options.jobs = static_cast<std::size_t>(ToNumberWithin("--jobs", jobs, 1, CheckOptions::MOST_JOBS));
    options.inputs = GetFiles();
    return options;
}

DetectSubcommand::DetectSubcommand(CLI::App* tool) : Subcommand(tool, "detect", "Detect the charset of every input") {
    AddFormat();
    AddMinConfidence();
    AddFiles("files to read; - or none is standard input", DETECT_FOOTER);
}

DetectOptions DetectSubcommand::GetOptions() const {
    DetectOptions options;
    options.format = GetFormat();
    options.minConfidence = GetMinConfidence();
    options.inputs = GetFiles();
    return options;
}

}  // namespace Kestra::Tool
