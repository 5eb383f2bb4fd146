#include "tools/kestra-html/input/DeclarationScan.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Kestra::Test {
namespace {

std::int64_t Find(std::string_view text, std::size_t blockSize) {
    Tool::DeclarationScan scan;
    for (std::size_t at = 0; at < text.size(); at += blockSize)
        scan.Take(text.substr(at, blockSize));
    return scan.GetLast();
}

TEST(DeclarationScan, TheLastPlaceOfADeclaration) {
    const struct {
        const char* note;
        std::string_view text;
        std::int64_t last;
    } CASES[] = {
        {"nothing", "", -1},
        {"no word", "<p>some text</p>", -1},
        {"one word is not enough", "<meta name=x>", -1},
        {"nor the other", "<script charset=x>", -1},
        {"the first of both", "<meta charset=x>", 1},
        {"in any case", "<mEtA CHARset=x>", 1},
        {"the other before", "charset <meta>", 0},
        {"the last of either counts", "<meta charset=x> meta charset charset", 17},
        {"a longer word is no meta", "<metadata charset=x>", -1},
        {"nor is its end", "<xmeta charset=x>", -1},
        {"but after a hyphen", "<x-meta charset=x>", 3},
        {"charset may be a part", "<meta xcharsets>", 1},
        {"words that begin in vain", "<mmeta memeta/meta chcharcharset", 14},
    };
    for (const auto& row : CASES) {
        EXPECT_EQ(Find(row.text, 1000), row.last) << row.note;
        // A cut may hide what makes a word longer. Then too much is parsed, never too little.
        for (std::size_t size = 1; size <= row.text.size(); ++size)
            EXPECT_GE(Find(row.text, size), row.last) << row.note << ", in blocks of " << size;
    }
}

}  // namespace
}  // namespace Kestra::Test
