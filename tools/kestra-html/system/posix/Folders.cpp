#include "tools/kestra-html/system/Folders.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "tools/kestra-html/system/FileNames.h"

namespace Kestra::Tool {

namespace {

namespace fs = std::filesystem;

/// A link that leads nowhere counts as a file, so that the tool says that it cannot be read.
FolderEntry Describe(const fs::directory_entry& entry) {
    std::error_code error;
    const bool isLink = entry.is_symlink(error);
    const bool isDirectory = entry.is_directory(error);
    FolderEntry description;
    description.name = entry.path().filename().string();
    description.isFolder = isDirectory && !isLink;
    description.isFile = entry.is_regular_file(error) || (isLink && !isDirectory);
    return description;
}

}  // namespace

bool IsFolder(const std::string& name) {
    std::error_code error;
    return fs::is_directory(ToPath(name), error);
}

bool IsSpecialFile(const std::string& name) {
    std::error_code error;
    const fs::file_status status = fs::status(ToPath(name), error);
    return !error && fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

bool ListFolder(const std::string& folder, std::vector<FolderEntry>* entries) {
    std::error_code error;
    for (fs::directory_iterator entry(ToPath(folder), error); !error && entry != fs::directory_iterator();
         entry.increment(error))
        entries->push_back(Describe(*entry));
    std::sort(entries->begin(), entries->end(),
              [](const FolderEntry& left, const FolderEntry& right) { return left.name < right.name; });
    return !error;
}

std::string JoinNames(const std::string& folder, const std::string& entry) {
    return (fs::path(folder) / entry).string();
}

}  // namespace Kestra::Tool
