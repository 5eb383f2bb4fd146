#include "tools/kestra-html/rewriting/Utf8Check.h"

#include "platform/CodePoints.h"

namespace Kestra::Tool {

void Utf8Check::Check(std::string_view piece) {
    for (const char letter : piece) {
        const auto byte = static_cast<unsigned char>(letter);
        if (left == 0) {
            CheckFirst(byte);
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

void Utf8Check::CheckFirst(unsigned char byte) {
    if (byte < 0x80)
        return;
    const Utf8Lead lead = ClassifyUtf8Lead(byte);
    isBroken = isBroken || lead.trailing == 0;
    left = lead.trailing;
    least = lead.smallest;
    most = lead.greatest;
}

}  // namespace Kestra::Tool
