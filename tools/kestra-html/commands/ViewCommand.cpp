#include "tools/kestra-html/commands/ViewCommand.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/StringHelper.h"
#include "tools/kestra-html/input/CharsetSearch.h"
#include "tools/kestra-html/input/ParsePass.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/system/FileNames.h"
#include "tools/kestra-html/system/Folders.h"
#include "tools/kestra-html/system/InPlaceFile.h"
#include "tools/kestra-html/view/ScriptJson.h"
#include "tools/kestra-html/view/ShownSource.h"
#include "tools/kestra-html/view/ViewObserver.h"
#include "tools/kestra-html/view/ViewPage.h"

namespace Kestra::Tool {

namespace {

using HTML::GenericParser;
using StringNS::CharSet;

/// The file of a page, a device or a pipe, or standard output. A page gets its
/// name when it is whole: until then the file of that name is as it was.
class PageFile {
public:
    /// @param name  "-" for standard output. @throws InPlaceFailed
    PageFile(const std::string& name, Console* toolConsole) : console(toolConsole) {
        if (name == "-")
            return;
        if (IsSpecialFile(name)) {
            errno = 0;
            CheckDevice(device.emplace(ToPath(name), std::ios::binary).is_open());
        } else {
            file.emplace(name, MissingFile::MADE);
        }
    }

    /// @throws InPlaceFailed, OutputFailed
    void Write(std::string_view bytes) {
        if (device) {
            errno = 0;
            CheckDevice(device->write(bytes.data(), static_cast<std::streamsize>(bytes.size())).good());
        } else if (file) {
            file->Write(bytes);
        } else {
            console->Bytes(bytes);
        }
    }

    /// @throws InPlaceFailed
    void Commit() {
        if (device) {
            errno = 0;
            device->close();
            CheckDevice(device->good());
        }
        if (file)
            file->Commit("");
    }

private:
    static void CheckDevice(bool isGood) {
        if (!isGood)
            throw InPlaceFailed("cannot be written: " + std::error_code(errno, std::generic_category()).message());
    }

    Console* console;
    std::optional<InPlaceFile> file;
    std::optional<std::ofstream> device;
};

class ViewCommand {
public:
    ViewCommand(const ViewOptions& viewOptions, Console* toolConsole) : options(viewOptions), console(toolConsole) {}

    ExitStatus Run() {
        return RunEachInput(options, OutputFormat::TEXT, true, console,
                            [this](const Input& input, InputOutput* output) { return RunInput(input, output); });
    }

private:
    /// A failure to read stays in the source, and a page without its end is removed.
    ExitStatus RunInput(const Input& input, InputOutput* output) {
        if (IsOutput(input.name)) {
            output->Diagnose(options.output, "cannot be written: it is the input");
            return EXIT_STATUS_FAILED;
        }
        const ParseStart start = options.reparse ? FindStart(input, output) : ParseStart(options);
        if (input.source->GetFailure() != ReadResult::READ)
            return EXIT_STATUS_GOOD;
        input.source->ReadOnlyOnce();
        try {
            PageFile page(options.output, console);
            const ParsePassResult result = WritePageOf(input, start, &page, output);
            if (input.source->GetFailure() != ReadResult::READ)
                return EXIT_STATUS_GOOD;
            page.Commit();
            if (result.IsGood())
                return EXIT_STATUS_GOOD;
            output->Diagnose(input.name, DescribeFailures(result));
        } catch (const InPlaceFailed& failure) {
            output->Diagnose(options.output, failure.what());
        }
        return EXIT_STATUS_FAILED;
    }

    bool IsOutput(const std::string& name) const {
        std::error_code error;
        return name != "-" && options.output != "-" &&
               std::filesystem::equivalent(ToPath(name), ToPath(options.output), error);
    }

    /// The tokens of a pass that is abandoned for another charset must not be in the page.
    ParseStart FindStart(const Input& input, InputOutput* output) const {
        ParseStart start(options);
        if (const auto charset = FindLateCharset(input.source, options, true, FollowWith(output)))
            start.RestartWith(*charset);
        return start;
    }

    ParsePassResult WritePageOf(const Input& input, const ParseStart& start, PageFile* page,
                                InputOutput* output) const {
        const WritePage write = [page](std::string_view bytes) { page->Write(bytes); };
        page->Write(GetViewPageStart());
        GenericParser parser;
        ShownSource source(input.source);
        ViewObserver observer(&parser, &source, write);
        parser.SetObserver(&observer, false);
        const ParsePassResult result = RunParsePass(&parser, &source, start, options, FollowWith(output));
        observer.Finish();
        page->Write(DescribeDocument(input.name, source.GetReadEnd(), result));
        page->Write(GetViewPageEnd());
        return result;
    }

    /// What the page says about the whole document.
    static std::string DescribeDocument(const std::string& name, std::uint64_t size, const ParsePassResult& result) {
        std::string json = "<script type=\"application/json\" id=\"document\">{\"file\":";
        AppendText(&json, name == "-" ? "standard input" : PrintableName(name));
        json += ",\"bytes\":" + std::to_string(size) + ",\"result\":";
        AppendText(&json, result.IsGood() ? "0, success" : DescribeFailures(result));
        json += ",\"kinds\":[";
        const char* separator = "";
        for (const std::string& kind : ViewObserver::GetKinds()) {
            json += separator;
            AppendText(&json, kind);
            separator = ",";
        }
        return json + "]}</script>\n";
    }

    static void AppendText(std::string* json, const std::string& utf8) {
        WideString text;
        StringNS::StringHelper::GetWideFromGeneric(CharSet::UTF8, utf8.data(), utf8.size(), &text);
        AppendScriptJson(json, text);
    }

    const ViewOptions& options;
    Console* console;
};

}  // namespace

ExitStatus RunView(const ViewOptions& options, Console* console) {
    return ViewCommand(options, console).Run();
}

}  // namespace Kestra::Tool
