#include "c/Paths.h"

#include <string_view>

#include "platform/CodePoints.h"

namespace Kestra::C {

WideString MakeWidePath(const char* path) {
    WideString wide;
    if (path == nullptr)
        return wide;
    const std::string_view bytes(path);
    const char* from = bytes.data();
    const char* const end = from + bytes.size();
    while (from != end) {
        const char32_t codePoint = ReadUtf8(&from, end);
        if (codePoint == ILL_FORMED)
            return WideString();
        WriteUtf16(codePoint, [&wide](WideChar unit) { wide.push_back(unit); });
    }
    return wide;
}

}  // namespace Kestra::C
