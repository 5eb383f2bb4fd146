#include "tools/kestra-html/Arguments.h"

#include <memory>

#include "platform/windows/WindowsApi.h"
#include "tools/kestra-html/windows/Utf8.h"

// After the header above, which it needs.
#include <shellapi.h>

namespace Kestra::Tool {

namespace {

struct FreeLocal {
    void operator()(wchar_t** memory) const {
        LocalFree(memory);
    }
};

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

}  // namespace Kestra::Tool
