#include "tools/kestra-html/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/CharSet.h"
#include "platform/Characters.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;

constexpr const char* TOOL_FOOTER =
    "Exit status:\n"
    "  0  all inputs are good\n"
    "  1  an input ended with a result code other than 0 (the others are processed\n"
    "     all the same), or the output could not be written\n"
    "  2  wrong usage\n"
    "  3  a file cannot be read\n";

constexpr const char* TOKENS_FOOTER =
    "Text format: one line for each token. It starts with the line and the column of\n"
    "the token, from 1, counted in the observer's characters: UTF-16 units of the\n"
    "decoded text for a wide observer, bytes for a narrow one. Long texts are cut and\n"
    "followed by their length: abc...[1200]. A control character is shown as \\n, \\r,\n"
    "\\t or \\x1B. On a terminal the kind is coloured unless NO_COLOR is set.\n"
    "\n"
    "JSON format: JSON Lines, one object for each callback, and a last one for the\n"
    "result of the input.\n"
    "\n"
    "When the charset is found late, the input is parsed again with it; only the\n"
    "last pass is written.\n"
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
StringNS::CharSet::Code ToCharset(const std::string& option, const std::string& text) {
    if (const auto number = ReadNumber(text, UINT32_MAX); number)
        return static_cast<StringNS::CharSet::Code>(*number);
    WideString name;
    for (const char letter : text)
        name.push_back(static_cast<WideChar>(static_cast<unsigned char>(letter)));
    const StringNS::CharSet::Code code = StringNS::CharSet::GetCharSetCode(name);
    if (code == StringNS::CharSet::UNKNOWN)
        throw CLI::ValidationError(option, fmt::format("\"{}\" is neither a number nor a registered charset name", text));
    return code;
}

/// The subcommand `tokens`: its options as texts, and what they mean.
class TokensSubcommand {
public:
    explicit TokensSubcommand(CLI::App* tool) : app(tool->add_subcommand("tokens", "Print the token stream of every input")) {
        AddChoice("--format", &format, {"text", "json"}, "for people, or JSON Lines for programs");
        AddText("--charset", &charset, "CHARSET", "charset of the input: a code-page number or a\nregistered name; 0 is unknown");
        AddChoice("--input", &input, {"auto", "8bit", "utf16"},
                  "look for a byte-order mark, or take the input\nas 8-bit text or as UTF-16");
        AddChoice("--observer", &observer, {"wide", "narrow"}, "characters of the tokens: UTF-16, or bytes as\nthey are in the input");
        AddChoice("--feed", &feed, {"stream", "buffer"}, "hand the input over as one stream, or piece by\npiece");
        AddText("--piece-size", &pieceSize, "N",
                "buffer: bytes of a piece, 0 for all in one;\n"
                "stream: most bytes for a read that asks for\n"
                "16384 or more, 0 for as many as it asks for");
        AddChoice("--self-check", &selfCheck, {"off", "crc", "copy"},
                  "compare the input with its tokens written\nback: only off is supported");
        app->add_flag("--detect-charset-errors", detectCharsetErrors, "tell in the result whether all text could be\ndecoded without loss");
        AddText("--min-confidence", &minConfidence, "N", "least confidence, of 100, of a detected charset");
        app->add_flag("--no-reparse", noReparse, "stop when the charset is found late, instead\nof starting again with it");
        // For the help only. It accepts nothing: as a list, the parser of options would read "[a,b]" as two names.
        app->add_option("FILE...", helpOnly, "files to read; - or none is standard input")
            ->type_name("")
            ->expected(0)
            ->allow_extra_args(false);
        app->allow_extras();
        app->footer(TOKENS_FOOTER + std::string(TOOL_FOOTER));
    }

    /// @throws CLI::ValidationError
    TokensOptions GetOptions() const {
        if (selfCheck != "off")
            throw CLI::ValidationError("--self-check", "\"" + selfCheck + "\" is not supported, only \"off\" is");
        TokensOptions options;
        options.format = format == "json" ? TokensOptions::Format::JSON : TokensOptions::Format::TEXT;
        options.charset = ToCharset("--charset", charset);
        if (input == "8bit")
            options.input = GenericParser::DATA_STREAM_8BIT;
        else if (input == "utf16")
            options.input = GenericParser::DATA_STREAM_UTF16;
        options.observer = observer == "narrow" ? TokensOptions::Observer::NARROW : TokensOptions::Observer::WIDE;
        options.feed = feed == "buffer" ? TokensOptions::Feed::BUFFER : TokensOptions::Feed::STREAM;
        options.pieceSize = ToNumber("--piece-size", pieceSize);
        options.detectCharsetErrors = detectCharsetErrors;
        options.minConfidence = ToNumber("--min-confidence", minConfidence);
        options.reparse = !noReparse;
        options.inputs = GetFiles();
        return options;
    }

private:
    /// What is no option is a file.
    std::vector<std::string> GetFiles() const {
        std::vector<std::string> files = app->remaining();
        for (const std::string& file : files) {
            if (file.size() > 1 && file.front() == '-')
                throw CLI::ExtrasError("tokens", {file});
        }
        return files;
    }

    CLI::Option* AddText(const std::string& name, std::string* value, const std::string& typeName, const std::string& description) {
        return app->add_option(name, *value, description)->type_name(typeName)->take_last()->capture_default_str();
    }

    void AddChoice(const std::string& name, std::string* value, const std::vector<std::string>& choices, const std::string& description) {
        AddText(name, value, CLI::detail::join(choices, "|"), description)->check(CLI::IsMember(choices).description(""));
    }

    CLI::App* app;
    std::string format = "text";
    std::string charset = "0";
    std::string input = "auto";
    std::string observer = "wide";
    std::string feed = "stream";
    std::string pieceSize = "0";
    std::string selfCheck = "off";
    bool detectCharsetErrors = false;
    std::string minConfidence = std::to_string(GenericParser::DETECTCHARSET_MIN_CONFIDENCE);
    bool noReparse = false;
    std::vector<std::string> helpOnly;
};

CommandLine Answer(ExitStatus status, std::string text) {
    CommandLine answer;
    answer.answered = status;
    answer.answer = std::move(text);
    while (!answer.answer.empty() && answer.answer.back() == '\n')
        answer.answer.pop_back();
    return answer;
}

CommandLine WrongUsage(const std::string& what) {
    return Answer(EXIT_STATUS_USAGE, fmt::format("kestra-html: {} (see kestra-html --help)", what));
}

}  // namespace

CommandLine ParseCommandLine(int argc, const char* const* argv) {
    CLI::App tool("Cuts HTML into tokens that together reproduce every byte of it.", "kestra-html");
    tool.set_version_flag("--version", "kestra-html " KESTRA_HTML_VERSION);
    tool.require_subcommand(0, 1);
    tool.footer(TOOL_FOOTER);
    const TokensSubcommand tokens(&tool);
    // Behind "--" everything is a file.
    const char* const* const end = argv + argc;
    const char* const* const mark = std::find(argv + std::min(argc, 1), end, std::string_view("--"));
    try {
        tool.parse(static_cast<int>(mark - argv), argv);
        if (tool.get_subcommands().empty())
            return WrongUsage("a subcommand is required: tokens");
        CommandLine commandLine;
        commandLine.tokens = tokens.GetOptions();
        std::vector<std::string>& inputs = commandLine.tokens.inputs;
        if (mark != end)
            inputs.insert(inputs.end(), mark + 1, end);
        if (inputs.empty())
            inputs.emplace_back("-");
        return commandLine;
    } catch (const CLI::CallForHelp&) {
        return Answer(EXIT_STATUS_GOOD, tool.help());
    } catch (const CLI::CallForVersion& version) {
        return Answer(EXIT_STATUS_GOOD, version.what());
    } catch (const CLI::ParseError& error) {
        return WrongUsage(error.what());
    }
}

}  // namespace Kestra::Tool
