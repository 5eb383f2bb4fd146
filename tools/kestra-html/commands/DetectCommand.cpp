#include "tools/kestra-html/commands/DetectCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "html/framework/ResultCodes.h"
#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/MemoryInputStream.h"
#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/output/CharsetText.h"
#include "tools/kestra-html/output/JsonLine.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/output/ResultText.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;

constexpr std::uint64_t MOST_CONFIDENCE = 100;

/// What the stream form of `DetectCharset` answers.
struct Detection {
    std::uint32_t result = 0;
    StringNS::CharSet::Code code = StringNS::CharSet::UNKNOWN;
};

Detection Detect(VFS::InputStream* stream, std::uint64_t minConfidence) {
    GenericParser parser;
    parser.SetChrDetMinConfidence(minConfidence);
    Detection detection;
    stream->Seek(0);
    detection.result = parser.DetectCharset(stream, &detection.code);
    return detection;
}

/// The confidence that the detector has in its answer. The parser does not give it, but compares
/// it: it is the greatest minimum that is not too much for it, found by halving in at most seven
/// calls. Nothing when there is no answer, and when the detector answers the same whatever the
/// minimum is: then it could not be asked.
std::optional<std::uint64_t> FindConfidence(VFS::InputStream* stream) {
    const auto isEnough = [stream](std::uint64_t confidence) {
        const std::uint32_t result = Detect(stream, confidence).result;
        return result == HTML::PARSER_OK || result == HTML::PARSER_UNKNOWN_RECOGNIZER;
    };
    if (isEnough(MOST_CONFIDENCE + 1))
        return std::nullopt;
    std::uint64_t fewest = 0;  // of the minimums 0 to 100, those that are enough
    std::uint64_t most = MOST_CONFIDENCE + 1;
    while (fewest < most) {
        const std::uint64_t middle = (fewest + most + 1) / 2;
        if (isEnough(middle - 1))
            fewest = middle;
        else
            most = middle - 1;
    }
    return fewest > 0 ? std::optional(fewest - 1) : std::nullopt;
}

class DetectCommand {
public:
    DetectCommand(const DetectOptions& detectOptions, Console* toolConsole)
        : options(detectOptions), console(toolConsole), line(toolConsole) {}

    ExitStatus Run() {
        ExitStatus status = EXIT_STATUS_GOOD;
        try {
            for (const std::string& name : options.inputs)
                status = std::max(status, RunInput(name));
            console->Flush();
        } catch (const OutputFailed& failure) {
            status = std::max(status, EXIT_STATUS_FAILED);
            console->Complain(failure.what());
        }
        return status;
    }

private:
    ExitStatus RunInput(const std::string& name) {
        std::string bytes;
        const ReadResult result = ReadInputStart(name, GenericParser::BUFFER_SIZE, &bytes);
        if (result != ReadResult::READ)
            return DiagnoseUnread(name, result, console);
        try {
            const std::size_t size = bytes.size();
            VFS::MemoryInputStream stream(std::move(bytes));
            return Report(name, size, &stream);
        } catch (const std::bad_alloc&) {
            return DiagnoseUnread(name, ReadResult::OUT_OF_MEMORY, console);
        }
    }

    /// @throws OutputFailed
    ExitStatus Report(const std::string& name, std::size_t size, VFS::InputStream* stream) {
        const Detection detection = Detect(stream, options.minConfidence);
        if (options.format == OutputFormat::JSON)
            WriteObject(name, detection);
        else
            WriteLine(name, detection, Explain(detection, size), stream);
        if (detection.result == HTML::PARSER_OK)
            return EXIT_STATUS_GOOD;
        console->Diagnose(name,
                          fmt::format("DetectCharset returned {}: {}", detection.result, Explain(detection, size)));
        return EXIT_STATUS_FAILED;
    }

    static std::string Explain(const Detection& detection, std::size_t size) {
        const std::string meaning(GetDetectionMeaning(detection.result));
        if (detection.result != HTML::PARSER_TOO_LITTLE_DATA)
            return meaning;
        return fmt::format("{}: {} of at least {} bytes", meaning, size, GenericParser::DETECTCHARSET_MIN_SIZE);
    }

    void WriteObject(const std::string& name, const Detection& detection) {
        const WideString charsetName(StringNS::CharSet::GetCharSetName(detection.code));
        line.Begin();
        line.File(name);
        line.Number("result", detection.result);
        line.Number("code", detection.code);
        line.String("name", &charsetName);
        line.End();
    }

    void WriteLine(const std::string& name, const Detection& detection, const std::string& explanation,
                   VFS::InputStream* stream) {
        const std::optional<std::uint64_t> confidence = FindConfidence(stream);
        console->Line(fmt::format("{}: {}, {}, {}, {}", PrintableName(name), DescribeCharset(detection.code),
                                  confidence ? fmt::format("confidence {}", *confidence) : "no confidence",
                                  detection.result, explanation));
    }

    const DetectOptions& options;
    Console* console;
    JsonLine line;
};

}  // namespace

ExitStatus RunDetect(const DetectOptions& options, Console* console) {
    return DetectCommand(options, console).Run();
}

}  // namespace Kestra::Tool
