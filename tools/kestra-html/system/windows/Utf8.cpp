#include "tools/kestra-html/system/windows/Utf8.h"

#include "platform/CodePoints.h"
#include "platform/windows/WindowsApi.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t MOST_TRAILING_BYTES = 3;  ///< bytes of a character after its first one

/// The three bytes of a lone surrogate, as UTF-8 would have them if it had any: ED, A0 to BF, 80 to
/// BF.
constexpr std::size_t SURROGATE_SIZE = 3;

bool BeginsWithSurrogate(std::string_view bytes) {
    const auto second = static_cast<unsigned char>(bytes.size() < SURROGATE_SIZE ? 0 : bytes[1]);
    return second >= 0xA0 && second <= 0xBF && bytes[0] == '\xED' && IsTrailingByte(bytes[2]);
}

char ToByte(unsigned value) {
    return static_cast<char>(static_cast<unsigned char>(value));
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
    std::string bytes(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr);
    return bytes;
}

std::wstring NameToWide(std::string_view name) {
    std::wstring wide;
    std::size_t begin = 0;  // of the text after the last lone surrogate
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (!BeginsWithSurrogate(name.substr(at)))
            continue;
        wide += ToWide(name.substr(begin, at - begin));
        const auto second = static_cast<unsigned char>(name[at + 1]);
        const auto third = static_cast<unsigned char>(name[at + 2]);
        wide += static_cast<wchar_t>(0xD000U | (second & 0x3FU) << 6 | (third & 0x3FU));
        at += SURROGATE_SIZE - 1;
        begin = at + 1;
    }
    return wide + ToWide(name.substr(begin));
}

std::string NameFromWide(std::wstring_view name) {
    std::string bytes;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < name.size(); ++at) {
        const wchar_t unit = name[at];
        if (IsHighSurrogate(unit) && at + 1 < name.size() && IsLowSurrogate(name[at + 1])) {
            ++at;
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
            bytes += FromWide(name.substr(begin, at - begin));
            bytes += {'\xED', ToByte(0x80U | (unit >> 6 & 0x3FU)), ToByte(0x80U | (unit & 0x3FU))};
            begin = at + 1;
        }
    }
    return bytes + FromWide(name.substr(begin));
}

std::size_t FindCut(std::string_view text, std::size_t limit) {
    if (text.size() <= limit)
        return text.size();
    std::size_t cut = limit;
    while (limit - cut < MOST_TRAILING_BYTES && IsTrailingByte(text[cut]))
        --cut;
    return IsTrailingByte(text[cut]) ? limit : cut;
}

}  // namespace Kestra::Tool
