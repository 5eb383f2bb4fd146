#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "html/rewrite/Rewriter.h"
#include "tests/support/FailingNew.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {
namespace {

using namespace HTML;

constexpr std::size_t MOST_ALLOCATIONS = 3000;

/// Needs no memory of its own.
class ReservedOutput final : public ParserObserverOutputHandler {
public:
    ReservedOutput() {
        bytes.reserve(4096);
    }

    void Write(const void* data, std::uint64_t byteCount, bool) override {
        bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string bytes;
};

/// Whichever allocation fails: no answer but 8, or that of the construct that cannot be read again,
/// no exception, and nothing of the document is lost.
TEST(RewriterAllocationTest, NothingIsLost) {
    const std::string page =
        "<i>begin</i><p class=\"one\">some text that is longer than any small string<a href=u download>b</a>"
        "<script>var s = 'a string that is longer than any small string';</script></p><b=/><br>rest";
    bool hasFailed = true;
    std::size_t failures = 0;
    for (std::size_t number = 1; hasFailed; ++number) {
        ASSERT_LT(number, MOST_ALLOCATIONS);
        ReservedOutput output;
        Rewriter rewriter(&output);
        bool ranOut = false;
        const auto take = [&](std::uint32_t result) {
            EXPECT_TRUE(result == 0 || result == 8 || result == HTML::SP_MALFORMED) << result;
            ranOut = ranOut || result != 0;
        };
        rewriter.OnElement("p a[href=u]", [&](RewriterElement element) {
            take(element.GetStartTag().AddAttribute("longer-than-any-small-string",
                                                    "!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!"));
            take(element.Append("!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!", CONTENT_TEXT));
            take(element.InsertAfter("!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!", CONTENT_MARKUP));
        });
        rewriter.OnContent("p", [&](RewriterToken token) { take(token.InsertBefore("!", CONTENT_TEXT)); });
        const std::string_view halves[] = {std::string_view(page).substr(0, 40), std::string_view(page).substr(40)};
        const HeapPiece<char> first(halves[0]);
        const HeapPiece<char> second(halves[1]);
        {
            const FailingAllocation failing(number);
            take(rewriter.StartParse(65001, GenericParser::DATA_STREAM_8BIT));
            take(rewriter.ParseBuffer(first.Data(), first.Size()));
            take(rewriter.ParseBuffer(second.Data(), second.Size()));
            take(rewriter.EndParse());
            hasFailed = failing.HasFailed();
        }
        failures += ranOut ? 1 : 0;
        std::string left = output.bytes;
        left.erase(std::remove(left.begin(), left.end(), '!'), left.end());
        const std::string added = " longer-than-any-small-string=\"\"";
        if (const std::size_t place = left.find(added); place != std::string::npos)
            left.erase(place, added.size());
        EXPECT_EQ(left, page) << "allocation " << number;
    }
    EXPECT_GT(failures, 10U);
}

/// The same for a tag that is edited so often that its names get an index: the edits that were
/// answered with 0 are there, and no others.
TEST(RewriterAllocationTest, ManyEditsAreMadeOrNot) {
    constexpr int ATTRIBUTES = 90;
    std::string page = "<a";
    for (int i = 0; i < ATTRIBUTES; ++i)
        page += " b" + std::to_string(i) + "=1";
    page += ">";
    bool hasFailed = true;
    std::size_t failures = 0;
    for (std::size_t number = 1; hasFailed; ++number) {
        ASSERT_LT(number, MOST_ALLOCATIONS);
        ReservedOutput output;
        Rewriter rewriter(&output);
        std::string expected;
        expected.reserve(4096);
        rewriter.OnElement("a", [&](RewriterElement element) {
            RewriterToken tag = element.GetStartTag();
            char name[] = "b00";
            char newName[] = "c00";
            expected = "<a";
            for (int i = 0; i < ATTRIBUTES; ++i) {
                name[1] = newName[1] = static_cast<char>(i < 10 ? '0' + i : '0' + i / 10);
                name[2] = newName[2] = static_cast<char>('0' + i % 10);
                const std::string_view old(name, i < 10 ? 2 : 3);
                const std::string_view renamed(newName, old.size());
                const bool isRemoved = i % 4 == 1 && tag.RemoveAttribute(old) == REWRITE_OK;
                const bool isRenamed = i % 4 == 2 && tag.RenameAttribute(old, renamed) == REWRITE_OK;
                const bool isSet = i % 4 == 3 && tag.SetAttribute(old, "2") == REWRITE_OK;
                if (!isRemoved)
                    expected.append(" ").append(isRenamed ? renamed : old).append(isSet ? "=2" : "=1");
            }
            expected += ">";
        });
        const HeapPiece<char> piece(page);
        std::uint32_t result = 0;
        {
            const FailingAllocation failing(number);
            rewriter.StartParse(65001, GenericParser::DATA_STREAM_8BIT);
            result = rewriter.ParseBuffer(piece.Data(), piece.Size());
            rewriter.EndParse();
            hasFailed = failing.HasFailed();
        }
        failures += hasFailed ? 1 : 0;
        EXPECT_TRUE(result == 0 || result == 8) << result;
        const bool isAsEdited = !expected.empty() && output.bytes == expected;
        EXPECT_TRUE(isAsEdited || (hasFailed && output.bytes == page))
            << "allocation " << number << ": " << output.bytes;
    }
    EXPECT_GT(failures, 40U);
}

}  // namespace
}  // namespace Kestra::Test
