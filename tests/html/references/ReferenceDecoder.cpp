// Decodes strings from standard input, for the comparison with another decoder. A line is "t" for
// text or "a" for the value of an attribute, then the UTF-8 of the string in hexadecimal. The
// answer is a line of four words: "changed" or "same", "=" and the 8-bit result, and the same two
// of the wide flavour. Results are in hexadecimal, the wide one as UTF-16 with the low byte first.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "html/references/CharacterReferences.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"

using namespace Kestra;

namespace {

std::string FromHexadecimal(std::string_view digits) {
    const auto valueOf = [](char digit) { return digit <= '9' ? digit - '0' : digit - 'a' + 10; };
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<char>(valueOf(digits[i]) * 16 + valueOf(digits[i + 1])));
    return bytes;
}

std::string ToHexadecimal(std::string_view bytes) {
    std::string digits;
    for (const char byte : bytes) {
        digits.push_back("0123456789abcdef"[static_cast<unsigned char>(byte) >> 4]);
        digits.push_back("0123456789abcdef"[static_cast<unsigned char>(byte) & 15]);
    }
    return digits;
}

std::string BytesOf(const std::string& text) {
    return text;
}

std::string BytesOf(const WideString& text) {
    std::string bytes;
    StringNS::StringHelper::GetStringFromWide(StringNS::CharSet::UTF16_LE, text.data(), text.size(), &bytes);
    return bytes;
}

template <typename S>
std::string Describe(char context, const S& text) {
    using References = HTML::CharacterReferences<typename S::value_type, S>;
    S decoded;
    const bool changed =
        context == 'a' ? References::DecodeAttributeValue(text, &decoded) : References::DecodeText(text, &decoded);
    return (changed ? "changed =" : "same =") + ToHexadecimal(BytesOf(changed ? decoded : text));
}

}  // namespace

int main() {
    std::string line;
    while (std::getline(std::cin, line)) {
        if (line.empty())
            return EXIT_FAILURE;
        const std::string text = FromHexadecimal(std::string_view(line).substr(1));
        WideString wide;
        if (StringNS::StringHelper::GetWideFromGeneric(StringNS::CharSet::UTF8, text.data(), text.size(), &wide) !=
            RESULT_OK)
            return EXIT_FAILURE;
        std::cout << Describe(line[0], text) << ' ' << Describe(line[0], wide) << '\n';
    }
    return EXIT_SUCCESS;
}
