#include "tools/kestra-html/PrintableName.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

namespace {

/// The character of at least two bytes at the start of `bytes`, by the shortest-form rule of UTF-8 (RFC 3629).
struct Utf8Character {
    std::uint32_t codePoint = 0;
    std::size_t size = 0;  ///< 0 when there is none
};

Utf8Character ReadCharacter(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < size)
        return {};
    std::uint32_t codePoint = lead & (0xFFU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(bytes[i]);
        if ((next & 0xC0) != 0x80)
            return {};
        codePoint = codePoint << 6 | (next & 0x3FU);
    }
    const bool isTooLong = codePoint < (size == 4 ? 0x10000U : size == 3 ? 0x800U : 0x80U);
    const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (isTooLong || isSurrogate || codePoint > 0x10FFFF)
        return {};
    return {codePoint, size};
}

}  // namespace

std::string PrintableName(std::string_view name) {
    std::string printable;
    const auto out = std::back_inserter(printable);
    for (std::size_t i = 0; i < name.size();) {
        const auto byte = static_cast<unsigned char>(name[i]);
        const Utf8Character character = byte < 0x80 ? Utf8Character{byte, 1} : ReadCharacter(name.substr(i));
        if (character.size == 0 || byte < 0x20 || byte == 0x7F)
            fmt::format_to(out, "\\x{:02X}", static_cast<unsigned>(byte));
        else if (byte >= 0x80 && Trace::IsInvisible(character.codePoint))
            fmt::format_to(out, "\\{}{:0{}X}", character.codePoint > 0xFFFF ? 'U' : 'u', character.codePoint,
                           character.codePoint > 0xFFFF ? 8 : 4);
        else
            printable.append(name.substr(i, character.size));
        i += character.size == 0 ? 1 : character.size;
    }
    return printable;
}

}  // namespace Kestra::Tool
