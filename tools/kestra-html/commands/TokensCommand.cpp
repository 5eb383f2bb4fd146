#include "tools/kestra-html/commands/TokensCommand.h"

#include <string>

#include "html/framework/ParserObserver.h"
#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/input/ParsePass.h"
#include "tools/kestra-html/output/JsonObserver.h"
#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/output/TextObserver.h"
#include "tools/kestra-html/system/Terminal.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;

class TokensCommand {
public:
    TokensCommand(const TokensOptions& tokensOptions, Console* toolConsole)
        : options(tokensOptions), console(toolConsole), colour(WantsColour()) {}

    ExitStatus Run() {
        return RunEachInput(options.inputs, options.format, console,
                            [this](const Input& input) { return RunPasses(input); });
    }

private:
    ExitStatus RunPasses(const Input& input) {
        const ParseStart start = options.reparse ? FindStart(input) : ParseStart(options);
        const ParsePassResult result = options.observer == TokensOptions::Observer::NARROW
                                           ? WriteTokens<char, std::string>(input, start)
                                           : WriteTokens<WideChar, WideString>(input, start);
        if (result.IsGood())
            return EXIT_STATUS_GOOD;
        console->Diagnose(input.name, DescribeFailures(result));
        return EXIT_STATUS_FAILED;
    }

    /// A document that may have to be started again is parsed ahead without output, so that no
    /// token of a pass that has to be abandoned is written, and nothing has to be stored.
    ParseStart FindStart(const Input& input) {
        ParseStart start(options);
        bool isAbandoned = true;
        while (isAbandoned && start.CanRestart()) {
            isAbandoned = start.Restart(options.observer == TokensOptions::Observer::NARROW
                                            ? ParseSilently<char, std::string>(input, start)
                                            : ParseSilently<WideChar, WideString>(input, start));
        }
        return start;
    }

    template <typename C, typename S>
    ParsePassResult ParseSilently(const Input& input, const ParseStart& start) {
        // Its flavour decides whether text is converted, and so where a parse is abandoned.
        HTML::ParserObserver<C, S> observer;
        GenericParser parser;
        parser.SetObserver(&observer, false);
        ParseOptions silentOptions = options;
        silentOptions.selfCheck = GenericParser::SELF_CHECK_OFF;
        return Parse(&parser, input, start, silentOptions);
    }

    template <typename C, typename S>
    ParsePassResult WriteTokens(const Input& input, const ParseStart& start) {
        GenericParser parser;
        ParsePassResult result;
        if (options.format == OutputFormat::JSON) {
            JsonObserver<C, S> observer(console, options.places ? &parser : nullptr);
            parser.SetObserver(&observer, false);
            result = Parse(&parser, input, start, options);
            observer.WriteResult(result, input.name);
        } else {
            TextObserver<C, S> observer(console, &parser, colour, options.places);
            parser.SetObserver(&observer, false);
            result = Parse(&parser, input, start, options);
            observer.WriteSummary(result, input.bytes.size(), start.WasRestarted());
        }
        return result;
    }

    ParsePassResult Parse(GenericParser* parser, const Input& input, const ParseStart& start,
                          const ParseOptions& parseOptions) {
        const BytesDone bytesDone = [this](std::uint64_t bytes) { console->GetProgress().Advance(bytes); };
        return RunParsePass(parser, input.bytes, start, parseOptions, bytesDone);
    }

    const TokensOptions& options;
    Console* console;
    bool colour;
};

}  // namespace

ExitStatus RunTokens(const TokensOptions& options, Console* console) {
    return TokensCommand(options, console).Run();
}

}  // namespace Kestra::Tool
