#include "tools/kestra-html/commands/TokensCommand.h"

#include <string>

#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/input/CharsetSearch.h"
#include "tools/kestra-html/input/ParsePass.h"
#include "tools/kestra-html/output/JsonObserver.h"
#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/output/TextObserver.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;

class TokensCommand {
public:
    TokensCommand(const TokensOptions& tokensOptions, Console* toolConsole)
        : options(tokensOptions), console(toolConsole), colour(IsColoured(tokensOptions.colour)) {
        // At a terminal, or where each line is wanted at once, a piece does not wait to be full.
        options.takesWhatIsThere = options.lineBuffered || IsOutputTerminal();
    }

    ExitStatus Run() {
        if (options.lineBuffered)
            console->SetLineBuffered();
        return RunEachInput(options, options.format, options.lineBuffered, console,
                            [this](const Input& input, InputOutput* output) { return RunPasses(input, output); });
    }

private:
    ExitStatus RunPasses(const Input& input, InputOutput* output) const {
        const ParseStart start = options.reparse ? FindStart(input, output) : ParseStart(options);
        if (input.source->GetFailure() != ReadResult::READ)
            return EXIT_STATUS_GOOD;  // so far; nothing has been written
        input.source->ReadOnlyOnce();
        const ParsePassResult result = options.observer == TokensOptions::Observer::NARROW
                                           ? WriteTokens<char, std::string>(input, start, output)
                                           : WriteTokens<WideChar, WideString>(input, start, output);
        const bool isRead = input.source->GetFailure() == ReadResult::READ;
        if (result.IsGood() || !isRead)
            return EXIT_STATUS_GOOD;
        return ReportFailure(input.name, DescribeFailures(result), options.format, output);
    }

    /// A document that may have to be started again is searched for its charset first, so that no
    /// token of a pass that has to be abandoned is written, and nothing has to be stored.
    ParseStart FindStart(const Input& input, InputOutput* output) const {
        ParseStart start(options);
        const bool isWide = options.observer == TokensOptions::Observer::WIDE;
        const auto charset = FindLateCharset(input.source, options, isWide, FollowWith(output));
        if (charset)
            start.RestartWith(*charset);
        return start;
    }

    template <typename C, typename S>
    ParsePassResult WriteTokens(const Input& input, const ParseStart& start, InputOutput* output) const {
        GenericParser parser;
        ParsePassResult result;
        if (options.format == OutputFormat::JSON) {
            JsonObserver<C, S> observer(output, options.places ? &parser : nullptr);
            parser.SetObserver(&observer, false);
            result = RunParsePass(&parser, input.source, start, options, FollowWith(output));
            if (input.source->GetFailure() == ReadResult::READ)  // else it has the object of an error
                observer.WriteResult(result, input.name);
        } else {
            TextObserver<C, S> observer(output, &parser, colour, options.places);
            parser.SetObserver(&observer, false);
            result = RunParsePass(&parser, input.source, start, options, FollowWith(output));
            observer.WriteSummary(result, DescribeSize(*input.source), start.WasRestarted());
        }
        return result;
    }

    TokensOptions options;
    Console* console;
    bool colour;
};

}  // namespace

ExitStatus RunTokens(const TokensOptions& options, Console* console) {
    return TokensCommand(options, console).Run();
}

}  // namespace Kestra::Tool
