#include "tools/kestra-html/system/TemporaryFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"
#include "platform/VirtualFileSystem.h"

namespace Kestra::Tool {

namespace {

using StringNS::CharSet;
using StringNS::StringHelper;

constexpr char NO_FOLDER[] = "/dev/null";  ///< no file can be made in it

/// @return false for a name that is not UTF-8 or too long: the library is as it was
bool SetFolder(const std::string& name) {
    WideString wide;
    std::string back;
    return StringHelper::GetWideFromGeneric(CharSet::UTF8, name.data(), name.size(), &wide) == RESULT_OK &&
           StringHelper::GetStringFromWide(CharSet::UTF8, wide.data(), wide.size(), &back) == RESULT_OK &&
           back == name && VFS::VirtualFileSystem::SetTemporaryFolder(wide.c_str()) == RESULT_OK;
}

}  // namespace

void UseTemporaryFolder() {
    const std::string name = GetTemporaryFolder();
    if (SetFolder(name))
        return;
    // A name that the library cannot take is replaced by that of a descriptor, which stays open.
    const int descriptor = open(name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    SetFolder(descriptor < 0 ? NO_FOLDER : fmt::format("/proc/self/fd/{}", descriptor));
}

std::string GetTemporaryFolder() {
    const char* const folder = std::getenv("TMPDIR");
    return folder == nullptr || *folder == 0 ? P_tmpdir : folder;
}

}  // namespace Kestra::Tool
