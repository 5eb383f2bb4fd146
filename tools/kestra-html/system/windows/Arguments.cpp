#include "tools/kestra-html/system/Arguments.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

#include "platform/windows/WindowsApi.h"
#include "tools/kestra-html/system/FileNames.h"
#include "tools/kestra-html/system/Folders.h"
#include "tools/kestra-html/system/windows/Utf8.h"

// After the header of the system above, which it needs.
#include <shellapi.h>

namespace Kestra::Tool {

namespace {

struct FreeLocal {
    void operator()(wchar_t** memory) const {
        LocalFree(memory);
    }
};

constexpr std::string_view WILDCARDS = "*?";
constexpr std::string_view SEPARATORS = "\\/";
constexpr std::string_view VERBATIM = "\\\\?\\";

bool HasWildcard(std::string_view text) {
    return text.find_first_of(WILDCARDS) != std::string_view::npos;
}

/// The part of a name that no wildcard can be in: the drive, or the prefix whose question mark is
/// none.
std::size_t RootLength(std::string_view name) {
    if (name.starts_with(VERBATIM))
        return VERBATIM.size();
    return name.size() > 1 && name[1] == ':' ? 2 : 0;
}

bool IsSameLetter(wchar_t left, wchar_t right) {
    return CompareStringOrdinal(&left, 1, &right, 1, TRUE) == CSTR_EQUAL;
}

/// Tries the last "*" with ever more characters.
bool Matches(std::wstring_view name, std::wstring_view pattern) {
    std::size_t at = 0;
    std::size_t inPattern = 0;
    std::size_t lastStar = std::wstring_view::npos;
    std::size_t starEnd = 0;  // of what the last "*" matches
    while (at < name.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == L'*') {
            lastStar = inPattern++;
            starEnd = at;
        } else if (inPattern < pattern.size() &&
                   (pattern[inPattern] == L'?' || IsSameLetter(pattern[inPattern], name[at]))) {
            ++inPattern;
            ++at;
        } else if (lastStar != std::wstring_view::npos) {
            inPattern = lastStar + 1;
            at = ++starEnd;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', inPattern) == std::wstring_view::npos;
}

/// "*.*" matches every name: one without a dot counts as one that ends with it, too.
bool MatchesEntry(const std::string& entry, std::string_view part) {
    const std::wstring name = NameToWide(entry);
    const std::wstring pattern = NameToWide(part);
    return Matches(name, pattern) || (name.find(L'.') == std::wstring::npos && Matches(name + L'.', pattern));
}

bool Exists(const std::string& name) {
    return GetFileAttributesW(ToPath(name).c_str()) != INVALID_FILE_ATTRIBUTES;
}

/// Whether the name of a file means something else when it is alone: standard input, or a
/// device.
bool IsTakenAlone(const std::string& name) {
    return name == "-" || ToPath(name).wstring() == NameToWide(name);
}

/// Appends every match.
/// @param found  the parts before, with a separator at the end
/// @param rest   the parts that follow
void Expand(const std::string& found, std::string_view rest, std::vector<std::string>* matches) {
    const std::size_t begin = std::min(rest.find_first_of(WILDCARDS), rest.size());
    if (begin == rest.size()) {
        if (Exists(found + std::string(rest)))
            matches->push_back(found + std::string(rest));
        return;
    }
    const std::size_t partBegin = rest.find_last_of(SEPARATORS, begin) + 1;  // 0 for none
    const std::size_t partEnd = std::min(rest.find_first_of(SEPARATORS, begin), rest.size());
    const std::size_t nextPart = std::min(rest.find_first_not_of(SEPARATORS, partEnd), rest.size());
    const std::string folder = found + std::string(rest.substr(0, partBegin));
    std::vector<FolderEntry> entries;
    ListFolder(folder.empty() ? "." : folder, &entries);
    for (const FolderEntry& entry : entries) {
        if (!MatchesEntry(entry.name, rest.substr(partBegin, partEnd - partBegin)))
            continue;
        const std::string name = folder + entry.name;
        if (partEnd == rest.size())
            matches->push_back(folder.empty() && IsTakenAlone(name) ? ".\\" + name : name);
        else if (IsFolder(name))
            Expand(name + std::string(rest.substr(partEnd, nextPart - partEnd)), rest.substr(nextPart), matches);
    }
}

}  // namespace

/// Those of `main` are in the ANSI code page, which lacks most characters.
std::vector<std::string> GetArguments(int, const char* const*) {
    int count = 0;
    const std::unique_ptr<wchar_t*[], FreeLocal> wide(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int i = 1; wide != nullptr && i < count; ++i)
        arguments.push_back(NameFromWide(wide[static_cast<std::size_t>(i)]));
    return arguments;
}

std::vector<std::string> ExpandWildcards(const std::vector<std::string>& names) {
    std::vector<std::string> expanded;
    for (const std::string& name : names) {
        const std::size_t root = RootLength(name);
        const std::size_t before = expanded.size();
        if (HasWildcard(std::string_view(name).substr(root)))
            Expand(name.substr(0, root), std::string_view(name).substr(root), &expanded);
        if (expanded.size() == before)
            expanded.push_back(name);
    }
    return expanded;
}

}  // namespace Kestra::Tool
