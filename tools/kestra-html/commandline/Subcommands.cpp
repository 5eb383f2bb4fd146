#include "tools/kestra-html/commandline/Subcommands.h"

#include <fmt/format.h>

#include <cstdint>
#include <functional>
#include <string>

#include "html/parser/GenericParser.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "tools/kestra-html/output/CharsetText.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;
using HTML::StatelessHTMLParser;
using StringNS::CharSet;

constexpr std::uint64_t MOST_CONFIDENCE = 100;

constexpr const char* TOKENS_FOOTER =
    "Text format: one line for each token. It starts with the line and the column of\n"
    "the token, from 1, counted in the parser's characters: bytes, and units of\n"
    "UTF-16 input; with --places the offsets follow, [begin,end). Then come the kind\n"
    "and, in parentheses, the parts of the token with | between them:\n"
    "  text(T)  comment(T)  junk(T)  c-comment(T)  cpp-comment(T)  s-string(T)\n"
    "  d-string(T)  extern-text(T)  cdata(WORD|T)  conditional(WORD|CONDITION|REST)\n"
    "  start(SPACE|NAME|ATTRIBUTES|SPACE)  short, extern, entity: the same\n"
    "  end(SPACE|NAME|SPACE|ATTRIBUTES|SPACE)\n"
    "  an attribute: {SPACE|NAME} or {SPACE|NAME|SPACE=SPACE|VALUE}\n"
    "\", open\" follows when the end of the token is missing. An event without a token,\n"
    "such as js-start, follows the tag that caused it. Long texts and lists are cut\n"
    "and followed by their length: abc...[1200]. A control character is shown as \\n,\n"
    "\\r, \\t or \\x1B.\n"
    "\n"
    "JSON format: JSON Lines, one object for each callback, and a last one for the\n"
    "result of the input. With --places the objects of callbacks get begin, end, line\n"
    "and column. Those without a token get the place of the tag that caused them.\n"
    "Attributes get begin, end, nameBegin, nameEnd, valueBegin and valueEnd; the last\n"
    "two are null without a value.\n"
    "\n"
    "When the charset is found late, the input is parsed again with it; only the\n"
    "last pass is written. A pipe is kept for that, above 1 MiB in a temporary file,\n"
    "unless --charset, --no-reparse, --input utf16 or its start make it needless:\n"
    "then its tokens appear as they come. Temporary files lie where the system has\n"
    "them, on POSIX in $TMPDIR when that is set.\n"
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
    "shown as \\n, \\r, \\t or \\x1B. With --places the offsets follow, [begin,end).\n"
    "\n"
    "JSON format: JSON Lines, one object for each callback, and a last one for the\n"
    "result of the input. With --places the objects of callbacks get begin, end, line\n"
    "and column, and attributePlaces when they have attributes. Each place has begin,\n"
    "end, nameBegin, nameEnd, valueBegin and valueEnd; the last two are null without\n"
    "a value.\n"
    "\n";

constexpr const char* CHECK_FOOTER =
    "Each input is parsed with the self-check that keeps a copy of the tokens written\n"
    "back, and the copy is compared with the input byte for byte. Three options of\n"
    "tokens do not apply: --self-check is copy, --observer is wide, and decoding\n"
    "errors are not reported, because the copy is never decoded.\n"
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
    "\n"
    "Temporary files are used for a pipe above 1 MiB and for a copy above 4 MiB. They\n"
    "lie where the system has them, on POSIX in $TMPDIR when that is set.\n"
    "\n";

constexpr const char* DETECT_FOOTER =
    "The charset is that of the byte-order mark, or what a meta tag declares, or what\n"
    "the detector sees; otherwise plain ASCII, which is the same text in almost every\n"
    "charset, and for fewer than 256 bytes what the library assumes. Only an input\n"
    "whose charset stays unknown is not good.\n"
    "\n"
    "Text format: one line for each input: the code page and its name, the\n"
    "confidence, at most 100, the result code of the detector, and where the charset\n"
    "comes from. An answer of too little confidence is left out, but its confidence\n"
    "is written.\n"
    "\n"
    "JSON format: JSON Lines, one object for each input. Its source is mark, meta,\n"
    "detector, ascii, assumed or none.\n"
    "\n";

constexpr const char* REWRITE_FOOTER =
    "Except for the edits the input is copied byte for byte. ELEMENT is the name of\n"
    "an element or * for any, ATTRIBUTE that of an attribute; both are compared\n"
    "without the case of A to Z. SELECTOR is one of CSS: a name or *, #id, .class and\n"
    "[attribute] with its operators, joined by white space or \">\". REGEX is in the\n"
    "syntax of RE2; every match is replaced, and \\1 to \\9 are what its groups\n"
    "matched. Values are plain text: references such as &amp; are decoded before an\n"
    "edit, and written where a value needs them. Elements are removed first; the\n"
    "other edits are made in the order of the options. An element without its end tag\n"
    "lasts until the one around it ends.\n"
    "\n"
    "With --in-place a file is written beside itself and then put in its place. It\n"
    "keeps its permissions; a link stays one, and what it leads to is written. A file\n"
    "that is read-only, has nothing to edit, or cannot be rewritten to its end, stays\n"
    "as it is. SUFFIX is added to the file's name for a copy of it as it was.\n"
    "\n"
    "With --dry-run only a line for each edit is written, with the place of the tag:\n"
    "file:line:column: old -> new. A value that does not exist is (none).\n"
    "\n"
    "Without --charset the charset is that of the markup. If that names none, it is\n"
    "UTF-8 when all of the input is UTF-8, and otherwise windows-1252, in which every\n"
    "byte stays as it is.\n"
    "\n"
    "With --scripts tokens a string, a comment or a regular expression of a script\n"
    "may hide the tags after it from the edits.\n"
    "\n";

constexpr const char* VIEW_FOOTER =
    "The page is one file that needs nothing else: open it in a browser. It shows the\n"
    "markup with each token in the colour of its kind. For the token under the\n"
    "pointer or chosen by the keyboard it shows the kind, the place, the name, the\n"
    "attributes and the charset. Junk, open and undecodable tokens and folded\n"
    "attributes are marked. Kinds can be hidden, and the text can be searched.\n"
    "Nothing of the input is ever run or loaded.\n"
    "\n"
    "Bytes are shown as text in the charset that is in force. If it is unknown they\n"
    "are shown as windows-1252.\n"
    "\n"
    "The page is written whatever the result of the parse, which it shows.\n"
    "\n";

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

void AddFormat(Subcommand* command, OutputFormat* format) {
    command->AddChoice("--format", format, {{"text", OutputFormat::TEXT}, {"json", OutputFormat::JSON}},
                       "for people, or JSON Lines for programs");
}

void AddColour(Subcommand* command, ColourChoice* colour) {
    command->AddChoice("--color", colour,
                       {{"auto", ColourChoice::AUTO}, {"always", ColourChoice::ALWAYS}, {"never", ColourChoice::NEVER}},
                       "colour the kinds of the text format; auto: on a\nterminal, unless NO_COLOR is set");
}

/// @param decodes  whether the text of the inputs is decoded; called when words and flags are known
void AddCharset(Subcommand* command, CharSet::Code* charset, const std::function<bool()>& decodes) {
    const std::string option = "--charset";
    command->AddValue(option, "CHARSET", std::to_string(*charset),
                      "charset of the input: a code-page number or a\nregistered name; 0 is unknown",
                      [=](const std::string& text) { *charset = ToCharset(option, text, decodes()); });
}

bool DecodesAlways() {
    return true;
}

bool DecodesNever() {
    return false;
}

void AddLineBuffered(Subcommand* command, bool* lineBuffered) {
    command->AddFlag("--line-buffered", lineBuffered,
                     "write each line at once, and parse what a pipe\n"
                     "has instead of waiting for a whole piece; one\n"
                     "input after the other, and no --feed buffer");
}

void AddInput(Subcommand* command, ParseOptions* options) {
    command->AddChoice("--input", &options->input,
                       {{"auto", GenericParser::DATA_STREAM_AUTO},
                        {"8bit", GenericParser::DATA_STREAM_8BIT},
                        {"utf16", GenericParser::DATA_STREAM_UTF16}},
                       "look for a byte-order mark, or take the input\nas 8-bit text or as UTF-16");
}

void AddFeed(Subcommand* command, FeedOptions* options) {
    command->AddChoice("--feed", &options->feed,
                       {{"stream", FeedOptions::Feed::STREAM}, {"buffer", FeedOptions::Feed::BUFFER}},
                       "hand the input over as one stream, or piece by\npiece");
    command->AddNumber("--piece-size", &options->pieceSize,
                       "buffer: bytes of a piece, 0 for all in one,\n"
                       "which takes memory for the whole input;\n"
                       "stream: most bytes for a read that asks for\n"
                       "16384 or more, 0 for as many as it asks for");
}

/// @param mode  of either parser
template <typename Mode>
void AddScripts(Subcommand* command, Mode* mode, Mode asTokens, Mode asText) {
    command->AddChoice("--scripts", mode, {{"tokens", asTokens}, {"text", asText}},
                       "look for strings and comments in scripts, or\n"
                       "read the content of script, style, textarea,\n"
                       "title and their like as text, as browsers do");
}

void AddScripts(Subcommand* command, ParseOptions* options) {
    AddScripts(command, &options->scriptMode, GenericParser::SCRIPT_AS_TOKENS, GenericParser::SCRIPT_AS_TEXT);
}

void AddMaxToken(Subcommand* command, FeedOptions* options) {
    command->AddNumber("--max-token", &options->maxTokenSize,
                       "most bytes of a token, 0 for any number; a longer\none ends the input with 711");
}

void AddMinConfidence(Subcommand* command, std::uint64_t* minConfidence) {
    command->AddNumberWithin("--min-confidence", minConfidence, std::uint64_t{0}, MOST_CONFIDENCE,
                             "least confidence, of 100, of a detected charset");
}

void AddNoReparse(Subcommand* command, ParseOptions* options) {
    command->AddNegativeFlag("--no-reparse", &options->reparse,
                             "stop when the charset is found late, instead\nof starting again with it");
}

/// What is the same for the inputs of all subcommands.
/// @param jobs  what `--jobs` counts
void AddInputs(Subcommand* command, InputOptions* options, const std::string& description, const std::string& footer,
               const std::string& jobs =
                   "files at a time, as many as there are cores if\nnot given; the output "
                   "stays in their order") {
    command->AddFlag("-r,--recursive", &options->recursive,
                     "walk directories: their .html, .htm and .xhtml\nfiles, sorted by name");
    command->AddOptional("--files-from", "FILE", "read more names from a file, one a line; - is\nstandard input",
                         [options](const std::string& name) {
                             if (name.empty())
                                 throw CLI::ValidationError("--files-from", "the name of a file is missing");
                             options->filesFrom = name;
                         });
    command->AddFlag("-0,--null", &options->isNulSeparated, "names of --files-from end with a NUL");
    command->AddOptional("-j,--jobs", "N", jobs, [options](const std::string& text) {
        options->jobs =
            static_cast<std::size_t>(Subcommand::ReadNumberWithin("--jobs", text, 1, InputOptions::MOST_JOBS));
    });
    command->AddFiles(&options->inputs, description, footer);
}

}  // namespace

void DeclareOptions(Subcommand* command, TokensOptions* options) {
    using Observer = TokensOptions::Observer;
    AddFormat(command, &options->format);
    AddColour(command, &options->colour);
    AddCharset(command, &options->charset, [options] { return options->observer == Observer::WIDE; });
    AddInput(command, options);
    command->AddChoice("--observer", &options->observer, {{"wide", Observer::WIDE}, {"narrow", Observer::NARROW}},
                       "characters of the tokens: UTF-16, or bytes as\nthey are in the input");
    AddFeed(command, options);
    AddScripts(command, options);
    AddMaxToken(command, options);
    command->AddChoice("--self-check", &options->selfCheck,
                       {{"off", GenericParser::SELF_CHECK_OFF},
                        {"crc", GenericParser::SELF_CHECK_CRC},
                        {"copy", GenericParser::SELF_CHECK_COPY}},
                       "compare the input with its tokens written\nback, by checksum; copy also keeps the text");
    command->AddFlag("--detect-charset-errors", &options->detectCharsetErrors,
                     "say in the result whether all text could be\ndecoded without loss");
    // Scripts silence the detector with one more than there is.
    command->AddNumberWithin("--min-confidence", &options->minConfidence, std::uint64_t{0}, MOST_CONFIDENCE + 1,
                             "least confidence, of 100, of a detected charset;\nwith 101 none is detected");
    AddNoReparse(command, options);
    command->AddFlag("--places", &options->places,
                     "write the place of each token, and in JSON of\neach attribute, in bytes from the first one");
    AddLineBuffered(command, &options->lineBuffered);
    AddInputs(command, options, "files to read; - or none is standard input", TOKENS_FOOTER);
}

void DeclareOptions(Subcommand* command, EventsOptions* options) {
    AddFormat(command, &options->format);
    AddColour(command, &options->colour);
    AddCharset(command, &options->charset, DecodesAlways);
    AddFeed(command, options);
    AddScripts(command, &options->scriptMode, StatelessHTMLParser::SCRIPT_AS_TOKENS,
               StatelessHTMLParser::SCRIPT_AS_TEXT);
    AddMaxToken(command, options);
    command->AddNumberWithin("--flags", &options->flags, std::uint32_t{0}, UINT32_MAX,
                             "flags of the parser; 1: the markup may replace\nthe charset");
    command->AddFlag("--places", &options->places, "write the place of each construct, in bytes\nfrom the first one");
    AddLineBuffered(command, &options->lineBuffered);
    AddInputs(command, options, "files to read; - or none is standard input", EVENTS_FOOTER);
}

void DeclareOptions(Subcommand* command, CheckOptions* options) {
    options->selfCheck = GenericParser::SELF_CHECK_COPY;
    AddFormat(command, &options->format);
    AddCharset(command, &options->charset, DecodesNever);
    AddInput(command, options);
    AddFeed(command, options);
    AddScripts(command, options);
    AddMaxToken(command, options);
    AddMinConfidence(command, &options->minConfidence);
    AddNoReparse(command, options);
    AddInputs(command, options, "files to read; - or none is standard input", CHECK_FOOTER);
}

void DeclareOptions(Subcommand* command, DetectOptions* options) {
    AddFormat(command, &options->format);
    AddMinConfidence(command, &options->minConfidence);
    command->AddNumber("--bytes", &options->bytes, "how many bytes of each input are looked at; 0 for\nall of them");
    AddInputs(command, options, "files to read; - or none is standard input", DETECT_FOOTER);
}

void DeclareOptions(Subcommand* command, RewriteOptions* options) {
    command->AddToHelp("--set", "ELEMENT.ATTRIBUTE=VALUE", "give an attribute a value, or add it");
    command->AddToHelp("--replace", "ELEMENT.ATTRIBUTE REGEX REPLACEMENT",
                       "replace what matches in the value of an\nattribute");
    command->AddToHelp("--remove", "ELEMENT.ATTRIBUTE", "remove an attribute");
    command->AddToHelp("--remove-element", "SELECTOR", "remove elements with their content");
    command->AddToHelp("--in-place", "[=SUFFIX]", "write into the files, with a backup or without");
    command->AddFlag("--dry-run", &options->dryRun, "list the edits and change nothing");
    AddCharset(command, &options->charset, DecodesAlways);
    AddInput(command, options);
    AddScripts(command, options);
    AddMaxToken(command, options);
    AddInputs(command, options,
              "the file to read, with --in-place or --dry-run\nany number; - or none is standard input", REWRITE_FOOTER,
              "with --dry-run files at a time, as many as there\nare cores if not given; --in-place writes one\n"
              "after the other");
}

void DeclareOptions(Subcommand* command, ViewOptions* options) {
    command->AddValue("-o,--output", "FILE", options->output, "the page to write; - is standard output",
                      [options](const std::string& name) { options->output = name; });
    AddCharset(command, &options->charset, DecodesAlways);
    AddInput(command, options);
    AddScripts(command, options);
    AddMaxToken(command, options);
    AddMinConfidence(command, &options->minConfidence);
    AddNoReparse(command, options);
    command->AddFiles(&options->inputs, "the file to read; - or none is standard input", VIEW_FOOTER);
}

}  // namespace Kestra::Tool
