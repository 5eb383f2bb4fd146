#include "tools/kestra-html/input/InputList.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "tools/kestra-html/system/Folders.h"

namespace Kestra::Tool {

namespace {

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

void AddPages(const std::string& folder, std::vector<std::string>* pages) {
    std::vector<FolderEntry> entries;
    if (!ListFolder(folder, &entries))
        pages->push_back(folder);
    for (const FolderEntry& entry : entries) {
        if (entry.isFolder)
            AddPages(JoinNames(folder, entry.name), pages);
        else if (entry.isFile && IsPage(entry.name))
            pages->push_back(JoinNames(folder, entry.name));
    }
}

}  // namespace

std::vector<std::string> ListInputs(const std::vector<std::string>& names) {
    std::vector<std::string> inputs;
    for (const std::string& name : names) {
        if (name != "-" && IsFolder(name))
            AddPages(name, &inputs);
        else
            inputs.push_back(name);
    }
    return inputs;
}

}  // namespace Kestra::Tool
