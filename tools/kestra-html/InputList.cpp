#include "tools/kestra-html/InputList.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace Kestra::Tool {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view PAGE_ENDINGS[] = {".html", ".htm", ".xhtml"};

bool EndsLike(std::string_view name, std::string_view ending) {
    if (name.size() < ending.size())
        return false;
    const auto isSame = [](char letter, char lowerCase) {
        return letter == lowerCase || (letter >= 'A' && letter <= 'Z' && letter + ('a' - 'A') == lowerCase);
    };
    return std::equal(ending.begin(), ending.end(), name.end() - static_cast<std::ptrdiff_t>(ending.size()),
                      [isSame](char lowerCase, char letter) { return isSame(letter, lowerCase); });
}

bool IsPage(std::string_view name) {
    return std::any_of(std::begin(PAGE_ENDINGS), std::end(PAGE_ENDINGS),
                       [name](std::string_view ending) { return EndsLike(name, ending); });
}

/// A link that leads nowhere counts as a file: that it cannot be read is worth a word. Pipes and devices do not.
bool IsFile(const fs::directory_entry& entry) {
    std::error_code error;
    const fs::file_type type = entry.status(error).type();
    return type != fs::file_type::directory && (type == fs::file_type::regular || entry.is_symlink(error));
}

bool IsFolder(const fs::directory_entry& entry) {
    std::error_code error;
    return entry.is_directory(error) && !entry.is_symlink(error);
}

/// The entries of one folder. @return false when it cannot be read to its end
bool ListFolder(const fs::path& folder, std::vector<fs::directory_entry>* entries) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator(); entry.increment(error))
        entries->push_back(*entry);
    std::sort(entries->begin(), entries->end(), [](const fs::directory_entry& left, const fs::directory_entry& right) {
        return left.path().filename().native() < right.path().filename().native();
    });
    return !error;
}

void AddPages(const fs::path& folder, std::vector<std::string>* pages) {
    std::vector<fs::directory_entry> entries;
    if (!ListFolder(folder, &entries))
        pages->push_back(folder.string());
    for (const fs::directory_entry& entry : entries) {
        if (IsFolder(entry))
            AddPages(entry.path(), pages);
        else if (IsPage(entry.path().filename().string()) && IsFile(entry))
            pages->push_back(entry.path().string());
    }
}

}  // namespace

std::vector<std::string> ListInputs(const std::vector<std::string>& names) {
    std::vector<std::string> inputs;
    for (const std::string& name : names) {
        std::error_code error;
        if (name != "-" && fs::is_directory(fs::path(name), error))
            AddPages(name, &inputs);
        else
            inputs.push_back(name);
    }
    return inputs;
}

}  // namespace Kestra::Tool
