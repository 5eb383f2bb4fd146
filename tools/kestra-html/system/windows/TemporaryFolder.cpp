#include "tools/kestra-html/system/TemporaryFolder.h"

#include <iterator>

#include "platform/windows/WindowsApi.h"
#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Tool {

void UseTemporaryFolder() {}

std::string GetTemporaryFolder() {
    wchar_t folder[MAX_PATH + 2];
    const DWORD length = GetTempPathW(static_cast<DWORD>(std::size(folder)), folder);
    return length < std::size(folder) ? FromWide(std::wstring_view(folder, length)) : "";
}

}  // namespace Kestra::Tool
