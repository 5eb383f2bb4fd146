#include "tools/kestra-html/system/FileNames.h"

#include "platform/windows/LongPath.h"
#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Tool {

std::filesystem::path ToPath(const std::string& name) {
    return name.find('\0') == std::string::npos ? std::filesystem::path(VFS::GetVerbatimPath(NameToWide(name)))
                                                : std::filesystem::path();
}

}  // namespace Kestra::Tool
