#include "tools/kestra-html/system/FileNames.h"

namespace Kestra::Tool {

std::filesystem::path ToPath(const std::string& name) {
    return name.find('\0') == std::string::npos ? std::filesystem::path(name) : std::filesystem::path();
}

}  // namespace Kestra::Tool
