#include "tools/kestra-html/view/ScriptJson.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Kestra::Tool {

namespace {

constexpr std::string_view HEXADECIMAL = "0123456789abcdef";

bool IsBetween(std::uint32_t unit, std::uint32_t first, std::uint32_t last) {
    return unit >= first && unit <= last;
}

bool IsHighSurrogate(std::uint32_t unit) {
    return IsBetween(unit, 0xD800, 0xDBFF);
}

bool IsLowSurrogate(std::uint32_t unit) {
    return IsBetween(unit, 0xDC00, 0xDFFF);
}

/// Of a unit that is no surrogate.
bool NeedsEscape(std::uint32_t unit) {
    if (unit < 0x7F)
        return unit < 0x20 || unit == '"' || unit == '\\' || unit == '<' || unit == '>' || unit == '&';
    return unit < 0xA0 || IsBetween(unit, 0x200B, 0x200F) || IsBetween(unit, 0x2028, 0x202E) ||
           IsBetween(unit, 0x2060, 0x206F) || unit == 0xFEFF || unit >= 0xFFF0;
}

void AppendEscape(std::string* json, std::uint32_t unit) {
    json->append("\\u");
    for (unsigned shift = 16; shift > 0; shift -= 4)
        json->push_back(HEXADECIMAL[(unit >> (shift - 4)) & 0xF]);
}

void AppendUtf8(std::string* json, std::uint32_t character) {
    const auto append = [json](std::uint32_t byte) { json->push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        append(character);
        return;
    }
    if (character < 0x800) {
        append(0xC0 | (character >> 6));
    } else {
        if (character < 0x10000) {
            append(0xE0 | (character >> 12));
        } else {
            append(0xF0 | (character >> 18));
            append(0x80 | ((character >> 12) & 0x3F));
        }
        append(0x80 | ((character >> 6) & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

}  // namespace

void AppendScriptJson(std::string* json, WideStringView text) {
    json->push_back('"');
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto unit = static_cast<std::uint32_t>(text[i]);
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            ++i;
            AppendUtf8(json, 0x10000 + ((unit - 0xD800) << 10) + (static_cast<std::uint32_t>(text[i]) - 0xDC00));
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit) || NeedsEscape(unit)) {
            AppendEscape(json, unit);
        } else {
            AppendUtf8(json, unit);
        }
    }
    json->push_back('"');
}

}  // namespace Kestra::Tool
