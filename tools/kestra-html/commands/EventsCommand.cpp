#include "tools/kestra-html/commands/EventsCommand.h"

#include "html/stateless/StatelessHTMLParser.h"
#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/input/EventsPass.h"
#include "tools/kestra-html/output/JsonEventObserver.h"
#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/output/TextEventObserver.h"

namespace Kestra::Tool {

namespace {

EventsPassResult WriteEvents(const Input& input, const EventsOptions& options, bool isColoured, InputOutput* output) {
    const BytesDone bytesDone = FollowWith(output);
    HTML::StatelessHTMLParser parser;
    EventsPassResult result;
    if (options.format == OutputFormat::JSON) {
        JsonEventObserver observer(output, options.places ? &parser : nullptr);
        parser.Attach(&observer);
        result = RunEventsPass(&parser, input.source, options, bytesDone);
        if (input.source->GetFailure() == ReadResult::READ)  // else it has the object of an error
            observer.WriteResult(result, input.name);
    } else {
        TextEventObserver observer(output, &parser, isColoured, options.places);
        parser.Attach(&observer);
        result = RunEventsPass(&parser, input.source, options, bytesDone);
        observer.WriteSummary(result, DescribeSize(*input.source));
    }
    return result;
}

}  // namespace

ExitStatus RunEvents(const EventsOptions& givenOptions, Console* console) {
    EventsOptions options = givenOptions;
    // It takes more time: only who asks for each line at once gets events before a piece is full.
    options.takesWhatIsThere = options.lineBuffered;
    if (options.lineBuffered)
        console->SetLineBuffered();
    const bool isColoured = IsColoured(options.colour);
    return RunEachInput(options, options.format, options.lineBuffered, console,
                        [&options, isColoured](const Input& input, InputOutput* output) {
                            input.source->ReadOnlyOnce();
                            const EventsPassResult result = WriteEvents(input, options, isColoured, output);
                            if (result.IsGood() || input.source->GetFailure() != ReadResult::READ)
                                return EXIT_STATUS_GOOD;
                            return ReportFailure(input.name, DescribeFailures(result), options.format, output);
                        });
}

}  // namespace Kestra::Tool
