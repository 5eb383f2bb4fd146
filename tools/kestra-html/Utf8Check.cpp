#include "tools/kestra-html/Utf8Check.h"

namespace Kestra::Tool {

void Utf8Check::Take(std::string_view piece) {
    for (const char letter : piece) {
        const auto byte = static_cast<unsigned char>(letter);
        if (left == 0) {
            TakeFirst(byte);
        } else {
            isBroken = isBroken || byte < least || byte > most;
            least = 0x80;
            most = 0xBF;
            --left;
        }
    }
}

bool Utf8Check::IsUtf8() const {
    return !isBroken && left == 0;
}

/// The table of well-formed byte sequences of the Unicode Standard: the first byte limits the second one.
void Utf8Check::TakeFirst(unsigned char byte) {
    if (byte < 0x80)
        return;
    if (byte < 0xC2 || byte > 0xF4) {
        isBroken = true;
        return;
    }
    left = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
    if (byte == 0xE0)
        least = 0xA0;
    else if (byte == 0xED)
        most = 0x9F;
    else if (byte == 0xF0)
        least = 0x90;
    else if (byte == 0xF4)
        most = 0x8F;
}

}  // namespace Kestra::Tool
