#include "tools/kestra-html/commands/DetectCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "html/framework/ParserObserver.h"
#include "html/framework/ResultCodes.h"
#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "tools/kestra-html/commands/InputNames.h"
#include "tools/kestra-html/commands/InputRuns.h"
#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/input/MemorySource.h"
#include "tools/kestra-html/input/PieceStream.h"
#include "tools/kestra-html/output/CharsetText.h"
#include "tools/kestra-html/output/JsonLine.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/system/AnsiCharset.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;

constexpr std::uint64_t CERTAIN = 100;     // confidence in what an input says itself, and in ASCII
constexpr std::uint64_t NEVER_DETECT = 1;  // byte of a stream: too little for the detector

/// Where a charset comes from: a word for programs, and one for people.
struct Source {
    const char* word;
    const char* text;
};

constexpr Source MARK = {"mark", "the byte-order mark"};
constexpr Source META = {"meta", "declared in meta"};
constexpr Source DETECTOR = {"detector", "the detector"};
constexpr Source ASCII = {"ascii", "plain ASCII"};
constexpr Source ASSUMED = {"assumed", "assumed"};
constexpr Source NONE = {"none", ""};

/// What is known of the charset of an input.
struct Detection {
    StringNS::CharSet::Code code = StringNS::CharSet::UNKNOWN;
    const Source* source = &NONE;
    std::uint64_t confidence = 0;
    std::uint32_t result = HTML::PARSER_OK;  ///< of `DetectCharset`, where it is asked
};

/// Ends a document as soon as it has said its charset.
class DeclarationObserver final : public HTML::ParserObserver<char, std::string> {
public:
    explicit DeclarationObserver(GenericParser* observedParser) : parser(observedParser) {}

    void OnBOM(const void*, std::uint64_t) override {
        Found(&MARK);
    }

    void OnCharset(StringNS::CharSet::Code) override {
        Found(&META);
    }

    /// Null when the document has not said it.
    const Source* GetSource() const {
        return source;
    }

private:
    void Found(const Source* where) {
        source = where;
        parser->Stop();
    }

    GenericParser* parser;
    const Source* source = nullptr;
};

/// Looks for a byte-order mark, and for what `meta` tags declare.
/// @return whether there is one
bool FindDeclared(const std::string& bytes, const BytesDone& bytesDone, Detection* detection) {
    GenericParser parser;
    DeclarationObserver observer(&parser);
    parser.SetObserver(&observer, false);
    parser.SetChrDetMaxSize(NEVER_DETECT);
    parser.StartParse(StringNS::CharSet::UNKNOWN, GenericParser::DATA_STREAM_AUTO);
    MemorySource source(bytes);
    PieceSettings settings;
    settings.bytesDone = bytesDone;
    PieceStream stream(&source, settings);
    parser.ParseStream(&stream, false);
    if (observer.GetSource() == nullptr)
        return false;
    detection->code = parser.GetCharset();
    detection->source = observer.GetSource();
    detection->confidence = CERTAIN;
    return true;
}

/// Bytes that are the same text in almost every charset. ESC and NUL are signs of others.
bool IsPlainAscii(const std::string& bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) {
        const auto unit = static_cast<unsigned char>(byte);
        return unit > 0 && unit < 0x80 && unit != 0x1B;
    });
}

/// Asks the detector. What is too short for it is judged as if blanks followed, which say nothing
/// of a charset; whatever it is, it is no failure.
void AskDetector(const std::string& bytes, std::uint64_t minConfidence, Detection* detection) {
    GenericParser parser;
    parser.SetChrDetMinConfidence(minConfidence);
    StringNS::CharSet::Code code = StringNS::CharSet::UNKNOWN;
    detection->result = parser.DetectCharset(bytes.data(), bytes.size(), &code);
    const bool isShort = detection->result == HTML::PARSER_TOO_LITTLE_DATA;
    if (isShort) {
        std::string longer = bytes;
        longer.resize(GenericParser::DETECTCHARSET_MIN_SIZE, ' ');
        parser.DetectCharset(longer.data(), longer.size(), &code);
    }
    detection->confidence = parser.GetDetectedConfidence();
    detection->code = code;
    if (code != StringNS::CharSet::UNKNOWN) {
        detection->source = &DETECTOR;
    } else if (IsPlainAscii(bytes)) {
        detection->code = StringNS::CharSet::US_ASCII;
        detection->source = &ASCII;
        detection->confidence = CERTAIN;
    } else if (isShort) {
        detection->code = GetAnsiCharset();
        detection->source = &ASSUMED;
        detection->confidence = 0;  // the detector's is that of another charset
    }
}

class DetectCommand {
public:
    DetectCommand(const DetectOptions& detectOptions, Console* toolConsole)
        : options(detectOptions), console(toolConsole) {}

    ExitStatus Run() {
        std::vector<std::string> names;
        const ExitStatus status = ListInputNames(options, console, &names);
        if (status != EXIT_STATUS_GOOD)
            return status;
        return RunInOrder(names, CountJobs(options), console,
                          [this, &names](std::size_t index, InputOutput* output, const SizeKnown& sizeKnown) {
                              return RunInput(names[index], output, sizeKnown);
                          });
    }

private:
    ExitStatus RunInput(const std::string& name, InputOutput* output, const SizeKnown& sizeKnown) const {
        try {
            std::string bytes;
            const ReadResult result = ReadStart(name, &bytes, output, sizeKnown);
            if (result != ReadResult::READ)
                return ReportUnread(name, result, options.format, nullptr, output);
            Detection detection;
            if (!FindDeclared(bytes, FollowWith(output), &detection))
                AskDetector(bytes, options.minConfidence, &detection);
            return Report(name, bytes.size(), detection, output);
        } catch (const std::bad_alloc&) {
            return ReportUnread(name, ReadResult::OUT_OF_MEMORY, options.format, nullptr, output);
        }
    }

    /// What is to be looked at.
    ReadResult ReadStart(const std::string& name, std::string* bytes, InputOutput* output,
                         const SizeKnown& sizeKnown) const {
        const std::uint64_t most = options.bytes == 0 ? std::uint64_t{bytes->max_size()} : options.bytes;
        const OpenedInput opened = OpenInput(name, MakeReadingEvents(name, output));
        InputSource* const source = opened.source.get();
        if (source == nullptr)
            return opened.result;
        source->ReadOnlyOnce();
        if (const std::optional<std::uint64_t> size = source->GetSize())
            sizeKnown(std::min(*size, most));
        return ReadRest(source, static_cast<std::size_t>(most), bytes, [source, output](std::uint64_t done) {
            source->Forget(done);
            output->Advance(done);
        });
    }

    /// @param size  of what was looked at
    /// @throws OutputFailed
    ExitStatus Report(const std::string& name, std::size_t size, const Detection& detection,
                      InputOutput* output) const {
        if (options.format == OutputFormat::JSON)
            WriteObject(name, detection, output);
        else
            WriteLine(name, size, detection, output);
        if (detection.code != StringNS::CharSet::UNKNOWN)
            return EXIT_STATUS_GOOD;
        output->Diagnose(name, fmt::format("DetectCharset returned {}: {}", detection.result,
                                           GetDetectionMeaning(detection.result)));
        return EXIT_STATUS_FAILED;
    }

    static void WriteObject(const std::string& name, const Detection& detection, InputOutput* output) {
        const WideString charsetName(StringNS::CharSet::GetCharSetName(detection.code));
        const std::string source(detection.source->word);
        JsonLine line(output);
        line.Begin();
        line.File(name);
        line.Number("result", detection.result);
        line.Number("code", detection.code);
        line.String("name", &charsetName);
        line.String("source", &source);
        line.Number("confidence", detection.confidence);
        line.End();
    }

    static void WriteLine(const std::string& name, std::size_t size, const Detection& detection, InputOutput* output) {
        const std::string confidence =
            detection.confidence > 0 ? fmt::format("confidence {}", detection.confidence) : "no confidence";
        output->Line(fmt::format("{}: {}, {}, {}, {}", PrintableName(name), DescribeCharset(detection.code), confidence,
                                 detection.result, Explain(detection, size)));
    }

    static std::string Explain(const Detection& detection, std::size_t size) {
        if (detection.source == &ASSUMED)
            return fmt::format("{}: {}: {} of at least {} bytes", ASSUMED.text, GetDetectionMeaning(detection.result),
                               size, GenericParser::DETECTCHARSET_MIN_SIZE);
        return detection.source == &NONE ? std::string(GetDetectionMeaning(detection.result)) : detection.source->text;
    }

    const DetectOptions& options;
    Console* console;
};

}  // namespace

ExitStatus RunDetect(const DetectOptions& options, Console* console) {
    return DetectCommand(options, console).Run();
}

}  // namespace Kestra::Tool
