#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Characters.h"

namespace Kestra::Test {

/// The two flavours, as parameters of typed tests: `TYPED_TEST_SUITE(TextTest, Flavours)`.
struct Narrow {
    using C = char;
    using S = std::string;
    static constexpr bool WIDE = false;
};

struct Wide {
    using C = WideChar;
    using S = WideString;
    static constexpr bool WIDE = true;
};

using Flavours = testing::Types<Narrow, Wide>;

/// The string of flavour `S` whose characters have the codes of the bytes of `latin1`.
template <typename S>
S To(std::string_view latin1) {
    S text;
    text.reserve(latin1.size());
    for (const char byte : latin1)
        text.push_back(static_cast<typename S::value_type>(static_cast<unsigned char>(byte)));
    return text;
}

/// The bytes of UTF-16 with the low byte first.
inline std::string ToUtf16LE(WideStringView text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (const WideChar unit : text) {
        bytes.push_back(static_cast<char>(static_cast<unsigned>(unit) & 0xFF));
        bytes.push_back(static_cast<char>(static_cast<unsigned>(unit) >> 8));
    }
    return bytes;
}

/// The characters with the codes of the bytes, as UTF-16 with the low byte first.
inline std::string ToUtf16LE(std::string_view latin1) {
    return ToUtf16LE(To<WideString>(latin1));
}

}  // namespace Kestra::Test
