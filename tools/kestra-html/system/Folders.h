#pragma once

#include <string>
#include <vector>

namespace Kestra::Tool {

struct FolderEntry {
    std::string name;       ///< without the folder's
    bool isFolder = false;  ///< and no link to one
    bool isFile = false;    ///< or a link to one, or a link that leads nowhere; a pipe or a device is neither
};

/// True for a folder and for a link to one.
bool IsFolder(const std::string& name);

/// Whether a name is that of a pipe, a device or the like, and not of a file on a disk: to open one
/// may wait for ever, to read it may take what is not there again, and it cannot be replaced.
bool IsSpecialFile(const std::string& name);

/// The entries of a folder in the order of their names: byte by byte, and on Windows regardless of
/// case, as folders are listed there.
/// @return false when it cannot be read to its end
bool ListFolder(const std::string& folder, std::vector<FolderEntry>* entries);

/// The name of a folder and of an entry in it, joined as the system does it: by a backslash on
/// Windows, unless the name of the folder ends with a separator.
std::string JoinNames(const std::string& folder, const std::string& entry);

}  // namespace Kestra::Tool
