#pragma once

#include <string_view>

namespace Kestra::Test {

/// What follows the opener of a tag, and what becomes of it in the notation of `RecognizerCheck.h`.
struct TagRow {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

}  // namespace Kestra::Test
