#include "tools/kestra-html/output/PrintableName.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "platform/CodePoints.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

namespace {

/// The character at the start of a text.
struct Character {
    char32_t codePoint = ILL_FORMED;
    std::size_t size = 0;
};

Character ReadCharacter(std::string_view text) {
    const char* next = text.data();
    const char32_t codePoint = ReadUtf8(&next, text.data() + text.size());
    return {codePoint, static_cast<std::size_t>(next - text.data())};
}

}  // namespace

std::string PrintableName(std::string_view name) {
    std::string printable;
    const auto out = std::back_inserter(printable);
    for (std::size_t i = 0; i < name.size();) {
        const Character character = ReadCharacter(name.substr(i));
        const char32_t codePoint = character.codePoint;
        const bool isByte = codePoint == ILL_FORMED || codePoint < 0x20 || codePoint == 0x7F;
        if (isByte)
            fmt::format_to(out, "\\x{:02X}", static_cast<unsigned>(static_cast<unsigned char>(name[i])));
        else if (codePoint >= 0x80 && Trace::IsInvisible(static_cast<unsigned>(codePoint)))
            fmt::format_to(out, "\\{}{:0{}X}", codePoint > 0xFFFF ? 'U' : 'u', static_cast<std::uint32_t>(codePoint),
                           codePoint > 0xFFFF ? 8 : 4);
        else
            printable.append(name.substr(i, character.size));
        i += isByte ? 1 : character.size;
    }
    return printable;
}

}  // namespace Kestra::Tool
