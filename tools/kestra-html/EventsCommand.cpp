#include "tools/kestra-html/EventsCommand.h"

#include "html/stateless/StatelessHTMLParser.h"
#include "tools/kestra-html/EachInput.h"
#include "tools/kestra-html/EventsPass.h"
#include "tools/kestra-html/JsonEventObserver.h"
#include "tools/kestra-html/ResultText.h"
#include "tools/kestra-html/Terminal.h"
#include "tools/kestra-html/TextEventObserver.h"

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
