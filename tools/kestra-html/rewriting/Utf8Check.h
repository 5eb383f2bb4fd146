#pragma once

#include <string_view>

namespace Kestra::Tool {

/// Checks whether bytes that come piece by piece are UTF-8: no overlong form, no surrogate, nothing
/// beyond U+10FFFF, nothing cut at the end.
class Utf8Check {
public:
    void Check(std::string_view piece);
    /// Of all bytes so far.
    bool IsUtf8() const;

private:
    void CheckFirst(unsigned char byte);

    unsigned left = 0;           ///< bytes that the character under way still needs
    unsigned char least = 0x80;  ///< of the next one of them
    unsigned char most = 0xBF;
    bool isBroken = false;
};

}  // namespace Kestra::Tool
