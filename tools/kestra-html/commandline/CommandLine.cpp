#include "tools/kestra-html/commandline/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/kestra-html/commandline/RewriteArguments.h"
#include "tools/kestra-html/commandline/Subcommands.h"
#include "tools/kestra-html/commandline/SuggestedWord.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/system/Arguments.h"

namespace Kestra::Tool {

namespace {

CommandLine Answer(ExitStatus status, std::string text) {
    CommandLine answer;
    answer.answered = status;
    answer.answer = std::move(text);
    while (!answer.answer.empty() && answer.answer.back() == '\n')
        answer.answer.pop_back();
    return answer;
}

/// @param command  the subcommand whose help explains it, or empty
CommandLine WrongUsage(const std::string& command, const std::string& what) {
    const std::string help = command.empty() ? "kestra-html --help" : fmt::format("kestra-html {} --help", command);
    return Answer(EXIT_STATUS_USAGE, fmt::format("kestra-html: {} (see {})", PrintableName(what), help));
}

/// The subcommand that the arguments begin with, after options that the tool itself has.
/// @return its name
/// @throws CLI::ParseError when something else comes first
std::string ReadCommandName(const std::vector<std::string>& arguments, const CLI::App& tool) {
    std::vector<std::string> names;
    for (const CLI::App* const command : tool.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    const std::string all = fmt::format("{} or {}", fmt::join(names.begin(), names.end() - 1, ", "), names.back());
    for (const std::string& argument : arguments) {
        if (argument == "--")
            break;
        if (argument == "--help" || argument == "-h" || argument == "--version")
            continue;
        if (argument.starts_with('-') && argument.size() > 1)
            throw CLI::ValidationError(fmt::format("{} comes before the subcommand; options come after it", argument));
        if (std::find(names.begin(), names.end(), argument) != names.end())
            return argument;
        const std::string suggestion = SuggestWord(argument, names);
        throw CLI::ValidationError(
            fmt::format("there is no subcommand {}{}", argument, suggestion.empty() ? ", only " + all : suggestion));
    }
    return "";
}

/// A subcommand with what its options fill.
template <typename Options>
struct FilledSubcommand {
    FilledSubcommand(CLI::App* tool, const std::string& name, const std::string& description)
        : command(tool, name, description) {
        DeclareOptions(&command, &options);
    }

    /// @param files  more names of inputs
    /// @throws CLI::ParseError
    CommandLine GetCommandLine(const std::vector<std::string>& files) {
        command.FillFields();
        options.inputs.insert(options.inputs.end(), files.begin(), files.end());
        if (options.inputs.empty() && options.filesFrom.empty()) {
            if (options.recursive)
                throw CLI::ValidationError("--recursive", "a directory is missing");
            options.inputs.emplace_back("-");
        }
        if (options.isNulSeparated && options.filesFrom.empty())
            throw CLI::ValidationError("--null", "--files-from is missing");
        if (options.filesFrom == "-" &&
            std::find(options.inputs.begin(), options.inputs.end(), "-") != options.inputs.end())
            throw CLI::ValidationError("--files-from", "standard input is the list of names already");
        options.inputs = ExpandWildcards(options.inputs);
        CommandLine commandLine;
        commandLine.run = options;
        return commandLine;
    }

    Options options;
    Subcommand command;
};

/// @return the arguments without the edits and where they go
std::vector<std::string> TakeEdits(const std::vector<std::string>& arguments, EditOptions* options) {
    RewriteArguments taken = TakeRewriteArguments(arguments);
    *options = taken;
    return std::move(taken.rest);
}

/// @param name  of the subcommand, which has `--feed` and `--line-buffered`
template <typename Options>
CommandLine CheckLineBuffered(const char* name, CommandLine commandLine) {
    const auto& options = std::get<Options>(commandLine.run);
    if (options.lineBuffered && options.feed == FeedOptions::Feed::BUFFER)
        return WrongUsage(name, "--line-buffered parses what is there, and --feed buffer waits for whole pieces");
    return commandLine;
}

/// Its inputs are known only now.
CommandLine CheckRewrite(CommandLine commandLine) {
    const auto& options = std::get<RewriteOptions>(commandLine.run);
    const bool hasStandardInput = std::find(options.inputs.begin(), options.inputs.end(), "-") != options.inputs.end();
    if (options.inPlace && hasStandardInput)
        return WrongUsage("rewrite", "--in-place: standard input is no file");
    if (!options.inPlace && !options.dryRun && options.inputs.size() > 1 && !options.recursive)
        return WrongUsage("rewrite", "more than one file needs --in-place or --dry-run");
    return commandLine;
}

CommandLine CheckView(CommandLine commandLine) {
    if (std::get<ViewOptions>(commandLine.run).inputs.size() > 1)
        return WrongUsage("view", "a page shows one file");
    return commandLine;
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& allArguments) {
    CLI::App tool("Cuts HTML into tokens that together reproduce every byte of it.", "kestra-html");
    tool.allow_windows_style_options(false);  // a name can begin with a slash
    tool.set_version_flag("--version", "kestra-html " KESTRA_HTML_VERSION);
    tool.require_subcommand(0, 1);
    tool.footer(EXIT_STATUS_HELP);
    FilledSubcommand<TokensOptions> tokens(&tool, "tokens", "Print the token stream of every input");
    FilledSubcommand<EventsOptions> events(&tool, "events", "Print the event stream of every input");
    FilledSubcommand<CheckOptions> check(&tool, "check", "Check that the tokens reproduce every input");
    FilledSubcommand<DetectOptions> detect(&tool, "detect", "Detect the charset of every input");
    FilledSubcommand<RewriteOptions> rewrite(&tool, "rewrite", "Copy an input and edit its tags");
    FilledSubcommand<ViewOptions> view(&tool, "view", "Write a page that shows the tokens of an input");
    std::string name;
    try {
        name = ReadCommandName(allArguments, tool);
        const std::vector<std::string> arguments =
            name == "rewrite" ? TakeEdits(allArguments, &rewrite.options) : allArguments;
        // After "--" everything is a file.
        const auto mark = std::find(arguments.begin(), arguments.end(), "--");
        const std::vector<std::string> files(mark == arguments.end() ? mark : mark + 1, arguments.end());
        tool.parse(std::vector<std::string>(std::make_reverse_iterator(mark), arguments.rend()));
        if (tokens.command.IsMeant())
            return CheckLineBuffered<TokensOptions>("tokens", tokens.GetCommandLine(files));
        if (events.command.IsMeant())
            return CheckLineBuffered<EventsOptions>("events", events.GetCommandLine(files));
        if (check.command.IsMeant())
            return check.GetCommandLine(files);
        if (detect.command.IsMeant())
            return detect.GetCommandLine(files);
        if (rewrite.command.IsMeant())
            return CheckRewrite(rewrite.GetCommandLine(files));
        if (view.command.IsMeant())
            return CheckView(view.GetCommandLine(files));
        return WrongUsage("", "a subcommand is required: tokens, events, check, detect, rewrite or view");
    } catch (const CLI::CallForHelp&) {
        return Answer(EXIT_STATUS_GOOD, tool.help());
    } catch (const CLI::CallForVersion& version) {
        return Answer(EXIT_STATUS_GOOD, version.what());
    } catch (const CLI::ParseError& error) {
        return WrongUsage(name, error.what());
    }
}

}  // namespace Kestra::Tool
