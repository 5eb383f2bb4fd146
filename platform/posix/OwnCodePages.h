#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/CharSet.h"
#include "platform/Characters.h"

namespace Kestra::StringNS {

/// U+FFFD, in place of bytes that are no character.
inline constexpr WideChar REPLACEMENT = 0xFFFD;

/// A code page that charset names lead to and ICU has no table for: Johab (1361), the 7-bit sets
/// 20105 to 20108, T.61 (20261), and the EBCDIC sets 20423, 20880, 20905 and 20924. All their
/// characters lie in the Basic Multilingual Plane, and none of them has states.
class OwnCodePage {
public:
    /// @return null for any other code page, or when ICU lacks what Johab and T.61 take from it.
    ///         Throws `std::bad_alloc`.
    static std::unique_ptr<OwnCodePage> Open(CharSet::Code code);

    OwnCodePage(const OwnCodePage&) = delete;
    OwnCodePage& operator=(const OwnCodePage&) = delete;
    virtual ~OwnCodePage();

    /// As `CharSetConverter::ToWide`. Half a character, and bytes that are none, become U+FFFD, and
    /// no ASCII byte goes with them.
    void ToWide(const char* data, std::uint64_t size, WideString* output) const;

    /// As `CharSetConverter::FromWide`.
    void FromWide(const WideChar* data, std::uint64_t size, std::string* output) const;

protected:
    OwnCodePage();

private:
    /// The character of one byte; 0xFFFD for none, and for a byte that begins one of two.
    virtual WideChar GetSingle(unsigned char byte) const = 0;

    /// The character of two bytes, the first of which is none alone: 0xFFFD for a pair without a
    /// character, 0 when they are no pair, so that the second one is read again. Here, 0.
    virtual WideChar GetDouble(unsigned char lead, unsigned char trail) const;

    /// The byte, or the two bytes with the first one in the upper half, of a character; -1 when the
    /// code page lacks it.
    virtual std::int32_t FindBytes(WideChar unit) const = 0;
};

}  // namespace Kestra::StringNS
