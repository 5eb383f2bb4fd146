#include <variant>

#include "tools/kestra-html/commandline/CommandLine.h"
#include "tools/kestra-html/commands/CheckCommand.h"
#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/DetectCommand.h"
#include "tools/kestra-html/commands/EventsCommand.h"
#include "tools/kestra-html/commands/RewriteCommand.h"
#include "tools/kestra-html/commands/TokensCommand.h"
#include "tools/kestra-html/commands/ViewCommand.h"
#include "tools/kestra-html/output/Console.h"
#include "tools/kestra-html/system/Arguments.h"
#include "tools/kestra-html/system/TemporaryFolder.h"
#include "tools/kestra-html/system/Terminal.h"

namespace {

using namespace Kestra::Tool;

/// Writes help or version to standard output, or what is wrong to standard error.
ExitStatus GiveAnswer(const CommandLine& commandLine, Console* console) {
    if (*commandLine.answered != EXIT_STATUS_GOOD) {
        console->Complain(commandLine.answer);
        return *commandLine.answered;
    }
    try {
        console->Line(commandLine.answer);
        console->Flush();
    } catch (const OutputFailed& failure) {
        return EndFailedOutput(failure, EXIT_STATUS_GOOD, console);
    }
    return EXIT_STATUS_GOOD;
}

ExitStatus Run(const TokensOptions& options, Console* console) {
    return RunTokens(options, console);
}

ExitStatus Run(const EventsOptions& options, Console* console) {
    return RunEvents(options, console);
}

ExitStatus Run(const CheckOptions& options, Console* console) {
    return RunCheck(options, console);
}

ExitStatus Run(const DetectOptions& options, Console* console) {
    return RunDetect(options, console);
}

ExitStatus Run(const RewriteOptions& options, Console* console) {
    return RunRewrite(options, console);
}

ExitStatus Run(const ViewOptions& options, Console* console) {
    return RunView(options, console);
}

}  // namespace

int main(int argc, char** argv) {
    const StandardStreams streams;
    UseTemporaryFolder();
    Console console;
    const CommandLine commandLine = ParseCommandLine(GetArguments(argc, argv));
    if (commandLine.answered)
        return GiveAnswer(commandLine, &console);
    return std::visit([&console](const auto& options) { return Run(options, &console); }, commandLine.run);
}
