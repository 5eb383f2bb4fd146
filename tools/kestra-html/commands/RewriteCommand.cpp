#include "tools/kestra-html/commands/RewriteCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "html/framework/ParserObserver.h"
#include "html/framework/ResultCodes.h"
#include "html/output/ParserObserverOutputHandler.h"
#include "html/parser/GenericParser.h"
#include "html/rewrite/Rewriter.h"
#include "platform/CharSet.h"
#include "platform/Results.h"
#include "tools/kestra-html/commands/InputNames.h"
#include "tools/kestra-html/commands/InputRuns.h"
#include "tools/kestra-html/input/CallResults.h"
#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/rewriting/PageEdits.h"
#include "tools/kestra-html/rewriting/Utf8Check.h"
#include "tools/kestra-html/system/Folders.h"
#include "tools/kestra-html/system/InPlaceFile.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;
constexpr std::string_view WHY_KEPT = "because its charset may be known only at its end (--charset: not kept)";

/// Thrown when an input cannot be read to its end.
struct InputFailed {
    ReadResult why;
};

/// Where the bytes of a document go: to standard output, into a file, or nowhere.
class PageOutput final : public HTML::ParserObserverOutputHandler {
public:
    PageOutput(Console* toolConsole, InPlaceFile* inPlaceFile, bool writesNothing)
        : console(toolConsole), file(inPlaceFile), isSilent(writesNothing) {}

    void Write(const void* data, std::uint64_t byteCount, bool) override {
        const std::string_view bytes(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
        if (file != nullptr)
            file->Write(bytes);
        else if (!isSilent)
            console->Bytes(bytes);
    }

private:
    Console* console;
    InPlaceFile* file;
    bool isSilent;
};

/// Reads a stream to its end, in blocks that are the same however a pipe is written.
/// @param take  gets each block. @return whether more is wanted
template <typename Take>
void ReadBlocks(InputSource* stream, Take take) {
    std::vector<char> block(BLOCK_SIZE);
    std::uint32_t result = RESULT_OK;
    bool isWanted = true;
    while (result == RESULT_OK && isWanted) {
        std::size_t size = 0;
        while (result == RESULT_OK && size < block.size()) {
            std::uint64_t count = 0;
            result = stream->Read(block.data() + size, block.size() - size, &count);
            size += static_cast<std::size_t>(count);
        }
        if (result != RESULT_OK && result != RESULT_END_OF_DATA)
            throw InputFailed{stream->GetFailure()};
        if (size > 0)
            isWanted = take(std::string_view(block.data(), size));
    }
}

void Rewind(InputSource* stream) {
    if (stream->Seek(0) != RESULT_OK)
        throw InputFailed{stream->GetFailure()};
}

class RewriteCommand {
public:
    RewriteCommand(const RewriteOptions& rewriteOptions, Console* toolConsole)
        : options(rewriteOptions), console(toolConsole) {}

    ExitStatus Run() {
        std::vector<std::string> names;
        const ExitStatus status = ListInputNames(options, console, &names);
        if (status != EXIT_STATUS_GOOD)
            return status;
        if (!options.inPlace && !options.dryRun && names.size() > 1) {
            console->Complain(fmt::format(
                "kestra-html: {} files need --in-place or --dry-run (see kestra-html rewrite --help)", names.size()));
            return EXIT_STATUS_USAGE;
        }
        if (options.inPlace && std::find(names.begin(), names.end(), "-") != names.end()) {
            console->Complain("kestra-html: --in-place: standard input is no file (see kestra-html rewrite --help)");
            return EXIT_STATUS_USAGE;
        }
        // A signal removes the one file that is being written.
        const std::size_t jobs = options.inPlace && !options.dryRun ? 1 : CountJobs(options);
        return RunInOrder(names, jobs, console,
                          [this, &names](std::size_t index, InputOutput* output, const SizeKnown& sizeKnown) {
                              return RunInput(names[index], output, sizeKnown);
                          });
    }

private:
    /// @throws OutputFailed
    ExitStatus RunInput(const std::string& name, InputOutput* output, const SizeKnown& sizeKnown) const {
        try {
            if (options.inPlace && IsSpecialFile(name))
                throw InPlaceFailed("cannot be written: it is not a regular file");
            OpenedInput input = OpenInput(name, MakeReadingEvents(name, output, WHY_KEPT));
            if (input.source == nullptr)
                return DiagnoseUnread(name, input.result, output);
            if (!NeedsCharset())
                input.source->ReadOnlyOnce();
            sizeKnown(input.source->GetSize());
            return Rewrite(name, std::move(input.source), output);
        } catch (const InputFailed& failure) {
            return DiagnoseUnread(name, failure.why, output);
        } catch (const InPlaceFailed& failure) {
            output->Diagnose(name, failure.what());
            return EXIT_STATUS_FAILED;
        } catch (const std::bad_alloc&) {
            return DiagnoseUnread(name, ReadResult::OUT_OF_MEMORY, output);
        }
    }

    /// A file is written only when all of it could be rewritten, and something has changed.
    ExitStatus Rewrite(const std::string& name, std::unique_ptr<InputSource> stream, InputOutput* lines) const {
        const CharSet::Code charset = FindCharset(stream.get());
        stream->ReadOnlyOnce();
        std::optional<InPlaceFile> file;
        if (options.inPlace && !options.dryRun)
            file.emplace(name);
        // Only one input goes to standard output.
        PageOutput output(console, file ? &*file : nullptr, options.dryRun);
        HTML::Rewriter rewriter(&output);
        rewriter.SetScriptMode(options.scriptMode);
        rewriter.SetMaxTokenSize(options.maxTokenSize);
        PageEdits edits(options.edits, &rewriter, [&](const PageEdits::Made& made) { ListEdit(name, made, lines); });
        CallResults results;
        results.startParse = rewriter.StartParse(charset, options.input);
        std::uint64_t done = 0;
        ReadBlocks(stream.get(), [&](std::string_view block) {
            const std::uint32_t result = rewriter.ParseBuffer(block.data(), block.size());
            const bool isFirst = results.parse == HTML::PARSER_OK || results.parse == HTML::PARSER_UNTERMINATED;
            if (isFirst) {
                results.parse = result;
                results.line = rewriter.GetParser().GetLine();
                results.column = rewriter.GetParser().GetColumn();
            }
            done += block.size();
            stream->Forget(done);
            lines->Advance(done);
            const bool isOver = results.parse != HTML::PARSER_OK && results.parse != HTML::PARSER_UNTERMINATED;
            return !isOver || !options.dryRun;  // what follows is copied
        });
        stream.reset();  // Windows replaces no file that is open
        results.endParse = rewriter.EndParse();
        if (results.parse == HTML::PARSER_UNTERMINATED)
            results.parse = HTML::PARSER_OK;  // in the middle of a document
        const ExitStatus status = Judge(name, results, edits, lines);
        if (file && status == EXIT_STATUS_GOOD && edits.GetCount() > 0)
            file->Commit(options.backupSuffix);
        return status;
    }

    static ExitStatus Judge(const std::string& name, const CallResults& results, const PageEdits& edits,
                            InputOutput* output) {
        const PageEdits::Failure& failure = edits.GetFailure();
        if (results.GetFirstFailure() != HTML::PARSER_OK)
            output->Diagnose(name, DescribeFailures(results));
        else if (failure.code != HTML::REWRITE_OK)
            output->Diagnose(name,
                             fmt::format("an edit returned {}: {} (line {}, column {})", failure.code,
                                         GetResultMeaning(failure.code), failure.place.line, failure.place.column));
        else
            return EXIT_STATUS_GOOD;
        return EXIT_STATUS_FAILED;
    }

    void ListEdit(const std::string& name, const PageEdits::Made& made, InputOutput* output) const {
        static constexpr std::string_view NONE = "(none)";
        if (!options.dryRun)
            return;
        const std::string before = made.before ? PrintableName(*made.before) : std::string(NONE);
        const std::string after = made.after ? PrintableName(*made.after) : std::string(NONE);
        output->Line(
            fmt::format("{}:{}:{}: {} -> {}", PrintableName(name), made.place.line, made.place.column, before, after));
    }

    bool NeedsCharset() const {
        return !options.edits.empty() && options.charset == CharSet::UNKNOWN &&
               options.input != GenericParser::DATA_STREAM_UTF16;
    }

    /// The charset that values are read and written in: that of the command line or of the markup.
    /// Without any, UTF-8 when all of the input is UTF-8, and else windows-1252, in which every
    /// byte is a character and stays as it is.
    CharSet::Code FindCharset(InputSource* stream) const {
        if (!NeedsCharset())
            return options.charset;
        const std::optional<CharSet::Code> declared = FindDeclaredCharset(stream);
        Rewind(stream);
        if (declared)
            return *declared;
        Utf8Check utf8;
        ReadBlocks(stream, [&utf8](std::string_view block) {
            utf8.Check(block);
            return true;
        });
        Rewind(stream);
        return utf8.IsUtf8() ? CharSet::UTF8 : CharSet::WINDOWS_1252;
    }

    /// That of the markup, or 0 where the rewriter finds UTF-16 by itself; nothing when there is
    /// none. A token that does not fit the memory ends the search here, and is copied later.
    std::optional<CharSet::Code> FindDeclaredCharset(InputSource* stream) const {
        // Nothing is converted for it, so that no declaration comes too late.
        HTML::ParserObserver<char, std::string> observer;
        GenericParser parser;
        parser.SetObserver(&observer, false);
        parser.SetScriptMode(options.scriptMode);
        parser.SetMaxTokenSize(options.maxTokenSize);
        parser.SetChrDetMaxSize(1);  // too little for the detector: it is not asked
        parser.StartParse(CharSet::UNKNOWN, options.input);
        try {
            parser.ParseStream(stream, false);
        } catch (const std::bad_alloc&) {
        }
        if (parser.IsWParser())
            return CharSet::UNKNOWN;
        const CharSet::Code found = parser.GetCharset();
        return found == CharSet::UNKNOWN || found == CharSet::UTF16_LE ? std::nullopt : std::optional(found);
    }

    const RewriteOptions& options;
    Console* console;
};

}  // namespace

ExitStatus RunRewrite(const RewriteOptions& options, Console* console) {
    return RewriteCommand(options, console).Run();
}

}  // namespace Kestra::Tool
