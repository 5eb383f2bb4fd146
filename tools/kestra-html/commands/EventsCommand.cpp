#include "tools/kestra-html/commands/EventsCommand.h"

#include "html/stateless/StatelessHTMLParser.h"
#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/input/EventsPass.h"
#include "tools/kestra-html/output/JsonEventObserver.h"
#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/output/TextEventObserver.h"
#include "tools/kestra-html/system/Terminal.h"

namespace Kestra::Tool {

namespace {

EventsPassResult WriteEvents(const Input& input, const EventsOptions& options, Console* console) {
    const BytesDone bytesDone = [console](std::uint64_t bytes) { console->GetProgress().Advance(bytes); };
    HTML::StatelessHTMLParser parser;
    EventsPassResult result;
    if (options.format == OutputFormat::JSON) {
        JsonEventObserver observer(console, options.places ? &parser : nullptr);
        parser.Attach(&observer);
        result = RunEventsPass(&parser, input.bytes, options, bytesDone);
        observer.WriteResult(result, input.name);
    } else {
        TextEventObserver observer(console, &parser, WantsColour(), options.places);
        parser.Attach(&observer);
        result = RunEventsPass(&parser, input.bytes, options, bytesDone);
        observer.WriteSummary(result, input.bytes.size());
    }
    return result;
}

}  // namespace

ExitStatus RunEvents(const EventsOptions& options, Console* console) {
    return RunEachInput(options.inputs, options.format, console, [&options, console](const Input& input) {
        const EventsPassResult result = WriteEvents(input, options, console);
        if (result.IsGood())
            return EXIT_STATUS_GOOD;
        console->Diagnose(input.name, DescribeFailures(result));
        return EXIT_STATUS_FAILED;
    });
}

}  // namespace Kestra::Tool
