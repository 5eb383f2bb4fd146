#include "tools/kestra-html/windows/Utf8.h"

#include "platform/windows/WindowsApi.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t MOST_BEHIND_LEAD = 3;  ///< bytes of a character behind its first one

bool IsBehindLead(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

std::wstring ToWide(std::string_view text) {
    if (text.empty())
        return {};
    const int size = static_cast<int>(text.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string FromWide(std::wstring_view text) {
    if (text.empty())
        return {};
    const int size = static_cast<int>(text.size());
    std::string bytes(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr);
    return bytes;
}

std::size_t FindCut(std::string_view text, std::size_t limit) {
    if (text.size() <= limit)
        return text.size();
    std::size_t cut = limit;
    while (limit - cut < MOST_BEHIND_LEAD && IsBehindLead(text[cut]))
        --cut;
    return IsBehindLead(text[cut]) ? limit : cut;
}

}  // namespace Kestra::Tool
