#include "html/rewrite/TagEdits.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "html/rewrite/DocumentText.h"
#include "html/rewrite/RewriteResults.h"
#include "tests/html/parser/CountedAllocations.h"

namespace Kestra::Test {
namespace {

using namespace HTML;

/// A tag with attributes b0, b1, ... and where they lie.
struct MadeTag {
    explicit MadeTag(std::size_t attributes) {
        layout.nameBegin = 1;
        layout.nameEnd = 2;
        for (std::size_t i = 0; i < attributes; ++i) {
            AttributePlace& place = layout.attributes.emplace_back();
            place.begin = bytes.size();
            place.nameBegin = place.begin + 1;
            bytes.append(" b").append(std::to_string(i));
            place.nameEnd = bytes.size();
            place.valueBegin = place.nameEnd + 1;
            place.valueEnd = place.end = place.valueBegin + 1;
            bytes.append("=1");
        }
        bytes += ">";
    }

    std::string bytes = "<a";
    TagLayout layout;
};

/// What a tag that is loaded again takes from the heap for some searches.
std::size_t CountForSearches(std::size_t attributes, std::size_t searches) {
    const MadeTag tag(attributes);
    const std::string last = "B" + std::to_string(attributes - 1);
    DocumentText text;
    text.SetCharset(StringNS::CharSet::UTF8, false);
    TagEdits edits;
    edits.Load(tag.bytes, tag.layout, &text);
    edits.Forget();
    const std::size_t before = CountAllocations();
    edits.Load(tag.bytes, tag.layout, &text);
    for (std::size_t i = 0; i < searches; ++i) {
        EXPECT_TRUE(edits.Has(last));
        EXPECT_FALSE(edits.Has("c"));
    }
    return CountAllocations() - before;
}

TEST(TagEditsTest, OnlyManySearchesOfManyAttributesTakeMemory) {
    EXPECT_EQ(CountForSearches(1, 1000), 0U);
    EXPECT_EQ(CountForSearches(32, 1000), 0U);
    EXPECT_EQ(CountForSearches(1000, 16), 0U);
    EXPECT_EQ(CountForSearches(1000, 17), 1000U);
}

/// A tag is searched without what was known of the one before.
TEST(TagEditsTest, ForgetsTheTagBefore) {
    const MadeTag large(100);
    const MadeTag small(50);
    DocumentText text;
    text.SetCharset(StringNS::CharSet::UTF8, false);
    TagEdits edits;
    for (const MadeTag* tag : {&large, &small, &large}) {
        const std::size_t count = tag->layout.attributes.size();
        edits.Load(tag->bytes, tag->layout, &text);
        for (std::size_t i = 0; i < 100; ++i)
            EXPECT_EQ(edits.Has("b" + std::to_string(i)), i < count) << i << " of " << count;
        EXPECT_EQ(edits.Remove("b7"), REWRITE_OK);
        EXPECT_FALSE(edits.Has("b7"));
        EXPECT_EQ(edits.Add("b7", "2"), REWRITE_OK);
        EXPECT_TRUE(edits.Has("b7"));
        std::string expected = tag->bytes;
        expected.erase(expected.find(" b7=1"), 5).insert(expected.size() - 1, " b7=\"2\"");
        std::string written;
        edits.Write(&written);
        EXPECT_EQ(written, expected);
        edits.Forget();
    }
}

}  // namespace
}  // namespace Kestra::Test
