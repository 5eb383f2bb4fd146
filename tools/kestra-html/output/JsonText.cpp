#include "tools/kestra-html/output/JsonText.h"

namespace Kestra::Tool {

namespace {

constexpr std::string_view HEXADECIMAL = "0123456789abcdef";

/// The letter after the backslash of a short escape, or 0.
char ShortEscape(unsigned unit) {
    switch (unit) {
        case '"':
            return '"';
        case '\\':
            return '\\';
        case '\b':
            return 'b';
        case '\f':
            return 'f';
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\t':
            return 't';
    }
    return 0;
}

void AppendUnit(std::string* json, unsigned unit) {
    if (const char letter = ShortEscape(unit); letter != 0) {
        json->push_back('\\');
        json->push_back(letter);
    } else if (unit >= 0x20 && unit < 0x7F) {
        json->push_back(static_cast<char>(unit));
    } else {
        json->append("\\u");
        for (unsigned shift = 16; shift > 0; shift -= 4)
            json->push_back(HEXADECIMAL[(unit >> (shift - 4)) & 0xF]);
    }
}

}  // namespace

void AppendJsonString(std::string* json, std::string_view bytes) {
    json->push_back('"');
    for (const char byte : bytes)
        AppendUnit(json, static_cast<unsigned char>(byte));
    json->push_back('"');
}

void AppendJsonString(std::string* json, WideStringView text) {
    json->push_back('"');
    for (const WideChar unit : text)
        AppendUnit(json, static_cast<unsigned>(unit));
    json->push_back('"');
}

}  // namespace Kestra::Tool
