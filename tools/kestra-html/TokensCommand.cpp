#include "tools/kestra-html/TokensCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>

#include "html/framework/ParserObserver.h"
#include "html/framework/ResultCodes.h"
#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "tools/kestra-html/Input.h"
#include "tools/kestra-html/JsonObserver.h"
#include "tools/kestra-html/ResultText.h"
#include "tools/kestra-html/Terminal.h"
#include "tools/kestra-html/TextObserver.h"
#include "tools/kestra-html/TokensPass.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;

/// An input on its way through the command.
struct Input {
    std::string name;
    std::string bytes;
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    GenericParser::DataStreamType type = GenericParser::DATA_STREAM_AUTO;
    bool restarted = false;  ///< the charset was found in a pass that is abandoned
};

class TokensCommand {
public:
    TokensCommand(const TokensOptions& tokensOptions, Console* toolConsole)
        : options(tokensOptions), console(toolConsole), colour(WantsColour()) {}

    ExitStatus Run() {
        ExitStatus status = EXIT_STATUS_GOOD;
        try {
            console->GetProgress().SetInputCount(options.inputs.size());
            for (std::size_t i = 0; i < options.inputs.size(); ++i)
                status = std::max(status, RunInput(i));
            console->Flush();
        } catch (const OutputFailed& failure) {
            status = std::max(status, EXIT_STATUS_FAILED);
            console->Complain(failure.what());
        }
        return status;
    }

private:
    ExitStatus RunInput(std::size_t index) {
        Input input;
        input.name = options.inputs[index];
        input.charset = options.charset;
        input.type = options.input;
        if (!ReadInput(input.name, &input.bytes)) {
            console->Diagnose(input.name, "cannot be read");
            return EXIT_STATUS_UNREADABLE;
        }
        console->GetProgress().StartInput(index + 1, input.name, input.bytes.size());
        if (options.format == TokensOptions::Format::TEXT && options.inputs.size() > 1)
            console->Line(fmt::format("{}==> {} <==", index > 0 ? "\n" : "", PrintableName(input.name)));
        try {
            return RunPasses(&input);
        } catch (const std::bad_alloc&) {
            console->Diagnose(input.name, "not enough memory");
            return EXIT_STATUS_FAILED;
        }
    }

    ExitStatus RunPasses(Input* input) {
        if (options.reparse)
            FindCharset(input);
        const TokensPassResult result = options.observer == TokensOptions::Observer::NARROW ? WriteTokens<char, std::string>(*input)
                                                                                            : WriteTokens<WideChar, WideString>(*input);
        if (result.IsGood())
            return EXIT_STATUS_GOOD;
        console->Diagnose(input->name, DescribeFailures(result));
        return EXIT_STATUS_FAILED;
    }

    /// Only a document of unknown charset can end with another one. It is parsed ahead without output, so that no token of a pass that
    /// has to be abandoned is written, and nothing has to be stored.
    void FindCharset(Input* input) {
        if (input->charset != StringNS::CharSet::UNKNOWN || input->type == GenericParser::DATA_STREAM_UTF16)
            return;
        const TokensPassResult result = options.observer == TokensOptions::Observer::NARROW ? ParseSilently<char, std::string>(*input)
                                                                                            : ParseSilently<WideChar, WideString>(*input);
        if (result.parse != HTML::PARSER_PARSE_AGAIN)
            return;
        input->restarted = true;
        input->charset = result.charset;
        if (result.charset == StringNS::CharSet::UTF16_LE)
            input->type = GenericParser::DATA_STREAM_UTF16;
    }

    template <typename C, typename S>
    TokensPassResult ParseSilently(const Input& input) {
        HTML::ParserObserver<C, S> observer;  // its flavour decides whether text is converted, and so where a parse is abandoned
        GenericParser parser;
        parser.SetObserver(&observer, false);
        return Parse(&parser, input);
    }

    template <typename C, typename S>
    TokensPassResult WriteTokens(const Input& input) {
        GenericParser parser;
        TokensPassResult result;
        if (options.format == TokensOptions::Format::JSON) {
            JsonObserver<C, S> observer(console);
            parser.SetObserver(&observer, false);
            result = Parse(&parser, input);
            observer.WriteResult(result, input.name);
        } else {
            TextObserver<C, S> observer(console, &parser, colour);
            parser.SetObserver(&observer, false);
            result = Parse(&parser, input);
            observer.WriteSummary(result, input.bytes.size(), input.restarted);
        }
        return result;
    }

    TokensPassResult Parse(GenericParser* parser, const Input& input) {
        const BytesDone bytesDone = [this](std::uint64_t bytes) { console->GetProgress().Advance(bytes); };
        return RunTokensPass(parser, input.bytes, input.charset, input.type, options, bytesDone);
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
