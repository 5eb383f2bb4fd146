#include "tools/kestra-html/commands/InputNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <string_view>
#include <thread>
#include <utility>

#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/input/InputList.h"

namespace Kestra::Tool {

namespace {

/// Splits the content of a file of names. Empty names are left out, and so is the carriage return
/// at the end of a line.
void AddNames(std::string_view content, bool isNulSeparated, std::vector<std::string>* names) {
    const char separator = isNulSeparated ? '\0' : '\n';
    while (!content.empty()) {
        const std::size_t size = std::min(content.find(separator), content.size());
        std::string_view name = content.substr(0, size);
        content.remove_prefix(std::min(size + 1, content.size()));
        if (!isNulSeparated && name.ends_with('\r'))
            name.remove_suffix(1);
        if (!name.empty())
            names->emplace_back(name);
    }
}

/// @throws std::exception
ExitStatus ListNames(const InputOptions& options, Console* console, std::vector<std::string>* names) {
    std::vector<std::string> all = options.inputs;
    if (!options.filesFrom.empty()) {
        std::string content;
        const ReadResult result = ReadInput(options.filesFrom, &content);
        if (result != ReadResult::READ)
            return DiagnoseUnread(options.filesFrom, result, console);
        std::vector<std::string> listed;
        AddNames(content, options.isNulSeparated, &listed);
        const bool isReadAgain =
            options.filesFrom == "-" && std::find(listed.begin(), listed.end(), "-") != listed.end();
        if (isReadAgain) {
            console->Complain("kestra-html: --files-from: standard input is the list of names already");
            return EXIT_STATUS_USAGE;
        }
        all.insert(all.end(), std::make_move_iterator(listed.begin()), std::make_move_iterator(listed.end()));
    }
    *names = options.recursive ? ListInputs(all) : std::move(all);
    return EXIT_STATUS_GOOD;
}

}  // namespace

ExitStatus ListInputNames(const InputOptions& options, Console* console, std::vector<std::string>* names) {
    try {
        return ListNames(options, console, names);
    } catch (const std::exception& failure) {  // no memory
        console->Complain(fmt::format("kestra-html: {}", failure.what()));
        return EXIT_STATUS_FAILED;
    }
}

std::size_t CountJobs(const InputOptions& options) {
    if (options.jobs != InputOptions::AS_MANY_AS_CORES)
        return options.jobs;
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, InputOptions::MOST_JOBS);
}

}  // namespace Kestra::Tool
