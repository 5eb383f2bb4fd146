#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/kestra-html/commands/InputOptions.h"
#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/input/PieceStream.h"
#include "tools/kestra-html/output/Console.h"
#include "tools/kestra-html/output/InputOutput.h"

namespace Kestra::Tool {

/// How the output of a subcommand is written.
enum class OutputFormat { TEXT, JSON };

/// When the text format is coloured. AUTO: on a terminal that shows colours.
enum class ColourChoice { AUTO, ALWAYS, NEVER };

bool IsColoured(ColourChoice choice);

/// How the tool ends. Of several, the greatest counts.
enum ExitStatus : int {
    EXIT_STATUS_GOOD = 0,
    EXIT_STATUS_FAILED = 1,         ///< an input ended with a result code other than 0, or output could not be written
    EXIT_STATUS_USAGE = 2,          ///< wrong usage; nothing was processed
    EXIT_STATUS_UNREADABLE = 3,     ///< a file cannot be read
    EXIT_STATUS_READER_GONE = 141,  ///< the reader of the output has gone: what shells show for the signal of that
};

/// An input on its way through a subcommand.
struct Input {
    std::string name;     ///< as given on the command line
    InputSource* source;  ///< at its start
};

/// Why an input was not read, for a diagnostic.
/// @param result  not READ
std::string DescribeUnread(ReadResult result);

/// Says on standard error why an input was not read.
/// @param result  not READ
/// @return the exit status for it
ExitStatus DiagnoseUnread(const std::string& name, ReadResult result, InputOutput* output);

/// The same, and in the JSON format an object with the members `error` and `file`.
/// @param event  what begins the object as the member `event`; null for no such member
/// @throws OutputFailed
ExitStatus ReportUnread(const std::string& name, ReadResult result, OutputFormat format, const char* event,
                        InputOutput* output);

/// Says on standard error how the work on an input failed. The text format has said it already.
/// @return the exit status for it
ExitStatus ReportFailure(const std::string& name, const std::string& failure, OutputFormat format, InputOutput* output);

/// Ends a run whose output cannot be written: takes the progress line off the terminal and says
/// what is wrong, but not that a reader has gone.
ExitStatus EndFailedOutput(const OutputFailed& failure, ExitStatus status, Console* console);

/// What happens while an input is read: output does not wait for it, and a temporary file is
/// remarked on.
/// @param output   borrowed for as long as the input is read
/// @param whyKept  a literal: why a pipe goes into the file, and the options with which it does not
ReadingEvents MakeReadingEvents(const std::string& name, InputOutput* output,
                                std::string_view whyKept =
                                    "because its charset may be known only at its end "
                                    "(--charset or --no-reparse: not kept)");

/// Tells the output how far a parse is.
BytesDone FollowWith(InputOutput* output);

/// The size of an input that has been parsed. A pipe is not read any further when the parse ended
/// before it did: then it is what has been read.
std::uint64_t CountBytes(const InputSource& source);

/// The same for people: "at least" so many when there may be more.
std::string DescribeSize(const InputSource& source);

/// Parses an input, writes what it finds and says what is wrong.
/// @param output  borrowed for the call; all that is written goes there
/// @return how it ended. A failure to read it is in its source
/// @throws OutputFailed, std::bad_alloc
using RunInput = std::function<ExitStatus(const Input& input, InputOutput* output)>;

/// Runs a subcommand over its inputs: opens each of them and, in the text format of several inputs,
/// announces it by a header. What cannot be read or does not fit the memory gets a diagnostic and
/// an object, and the next one its turn.
/// @param oneAtATime  whatever the options say
/// @return how the worst one ended
ExitStatus RunEachInput(const InputOptions& options, OutputFormat format, bool oneAtATime, Console* console,
                        const RunInput& run);

}  // namespace Kestra::Tool
