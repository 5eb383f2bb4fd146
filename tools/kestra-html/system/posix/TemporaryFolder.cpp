#include "tools/kestra-html/system/TemporaryFolder.h"

#include <cstdio>
#include <cstdlib>

#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/StringHelper.h"
#include "platform/VirtualFileSystem.h"

namespace Kestra::Tool {

void UseTemporaryFolder() {
    const std::string name = GetTemporaryFolder();
    WideString wide;
    if (StringNS::StringHelper::GetWideFromGeneric(StringNS::CharSet::UTF8, name.data(), name.size(), &wide) == 0)
        VFS::VirtualFileSystem::SetTemporaryFolder(wide.c_str());
}

std::string GetTemporaryFolder() {
    const char* const folder = std::getenv("TMPDIR");
    return folder == nullptr || *folder == 0 ? P_tmpdir : folder;
}

}  // namespace Kestra::Tool
