#include "tools/kestra-html/commands/InputNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <map>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/input/InputList.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/system/StreamIdentity.h"

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

std::string Describe(const std::string& name) {
    return name == "-" ? "standard input" : PrintableName(name);
}

/// What comes only once can be named only once: of two readers one would get nothing, or a part.
/// @param otherName  read as well; empty for none
/// @return what is wrong; empty when nothing is
std::string FindNamedAgain(const std::vector<std::string>& names, const std::string& otherName) {
    std::map<StreamIdentity, std::string> streams;
    if (const std::optional<StreamIdentity> stream = IdentifyStream(otherName); stream && !otherName.empty())
        streams.emplace(*stream, otherName);
    for (const std::string& name : names) {
        const std::optional<StreamIdentity> stream = IdentifyStream(name);
        if (!stream)
            continue;
        const auto [named, isFirst] = streams.emplace(*stream, name);
        if (isFirst)
            continue;
        if (named->second == name)
            return fmt::format("{} is named more than once, but can be read only once", Describe(name));
        return fmt::format("{} and {} are the same, and can be read only once", Describe(named->second),
                           Describe(name));
    }
    return {};
}

/// @throws std::exception
ExitStatus ListNames(const InputOptions& options, Console* console, std::vector<std::string>* names) {
    std::vector<std::string> all = options.inputs;
    if (!options.filesFrom.empty()) {
        std::string content;
        const ReadResult result = ReadInput(options.filesFrom, &content);
        if (result != ReadResult::READ)
            return DiagnoseUnread(options.filesFrom, result, console);
        AddNames(content, options.isNulSeparated, &all);
    }
    *names = options.recursive ? ListInputs(all) : std::move(all);
    if (const std::string trouble = FindNamedAgain(*names, options.filesFrom); !trouble.empty()) {
        console->Complain(fmt::format("kestra-html: {}", trouble));
        return EXIT_STATUS_USAGE;
    }
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
