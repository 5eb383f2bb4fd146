#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "python/native/Document.h"

namespace Kestra::Python {

/// Text that is ASCII alone as bytes, all other as UTF-16.
struct ExtractedText {
    std::string ascii;
    WideString wide;
    bool isWide = false;
};

struct Links {
    std::vector<ExtractedText> links;
    std::uint32_t result = 0;
};

/// The first `href` of each `a` and `area`, references decoded, in the order of the document.
/// Without the GIL.
Links FindLinks(std::string_view bytes, const ParseOptions& options);

struct PageText {
    WideString text;
    std::uint32_t result = 0;
};

/// What a reader sees of a page, lexically: its texts without those of scripts and their like,
/// references decoded, white space collapsed, a line for each block. Without the GIL.
PageText ExtractText(std::string_view bytes, const ParseOptions& options);

}  // namespace Kestra::Python
