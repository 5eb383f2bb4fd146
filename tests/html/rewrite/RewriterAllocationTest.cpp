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

/// Whichever allocation fails: no answer but 8, or that of the construct that cannot be read again, no exception, and nothing of the
/// document is lost.
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
            take(element.GetStartTag().AddAttribute("longer-than-any-small-string", "!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!"));
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

}  // namespace
}  // namespace Kestra::Test
