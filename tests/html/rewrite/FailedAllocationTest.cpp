#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Selectors.h"
#include "tests/html/rewrite/TestTags.h"
#include "tests/support/FailingNew.h"

// What is left of selectors and open elements when one allocation fails, for each allocation in turn.

namespace Kestra::Test {
namespace {

using HTML::OpenElements;
using HTML::SelectorSet;

constexpr std::size_t TOO_MANY = 1000;

/// Three elements are open; the selectors fill a word but for one bit.
struct Scene {
    Scene() : open(&selectors) {
        for (int i = 0; i < 29; ++i)
            EXPECT_TRUE(selectors.Add("a > b", nullptr));
        for (const char* const selector : {".x", "[h*='y']", "#z", "a", "c"})
            EXPECT_TRUE(selectors.Add(selector, nullptr));
        for (const TestTag& tag : ReadTags("<a><c class='x'><b h='y'>"))
            Take(tag, &open);
    }

    /// All that can be asked of it.
    std::string Describe() const {
        std::vector<std::size_t> matches;
        open.GetMatches(&matches);
        std::string described = JoinNames(open) + '|' + Join(matches) + '|' + std::to_string(selectors.GetCount());
        for (const char* const name : {"a", "b", "c", "d", LONG_NAME})
            described += '|' + std::to_string(open.CountClosedBy(name));
        return described;
    }

    /// What becomes of it, with all of the selectors at work.
    std::string Continue() {
        std::string described;
        for (const TestTag& tag : ReadTags("<c class='x' h='xyz'><d id='z' class='new y'><a><b></d><c></a><b>"))
            described += Join(Take(tag, &open)) + '|';
        return described + Describe();
    }

    static constexpr const char* LONG_NAME = "a-name-that-does-not-fit-into-a-string-without-a-heap";

    SelectorSet selectors;
    OpenElements open;
};

using Step = std::function<void(Scene*)>;

/// Lets each allocation of a call fail, after another call that succeeds.
void CheckCall(
    const char* note, const Step& call, const Step& prepare = [](Scene*) {}) {
    SCOPED_TRACE(note);
    Scene untouched;
    prepare(&untouched);
    const std::string before = untouched.Describe();
    call(&untouched);
    const std::string after = untouched.Describe();
    const std::string end = untouched.Continue();
    EXPECT_GT(end.size(), 20U);
    bool isDone = false;
    for (std::size_t failing = 1; !isDone; ++failing) {
        SCOPED_TRACE(failing);
        ASSERT_LT(failing, TOO_MANY);
        Scene scene;
        prepare(&scene);
        bool hasThrown = false;
        try {
            const FailingAllocation failure(failing);
            call(&scene);
            isDone = !failure.HasFailed();
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
        EXPECT_EQ(hasThrown, !isDone);
        if (hasThrown) {
            // The second time it is as if the first had not been.
            EXPECT_EQ(scene.Describe(), before);
            call(&scene);
        }
        EXPECT_EQ(scene.Describe(), after);
        EXPECT_EQ(scene.Continue(), end);
    }
}

Step OpenTag(const char* markup) {
    return [markup](Scene* scene) {
        const TestTag tag = ReadTags(markup).front();
        std::vector<std::size_t> matches;
        scene->open.Open(tag.name, tag.isShort, tag.attributes.size(), tag, &matches);
    };
}

Step AddSelector(const char* text, bool isRead = true) {
    return [text, isRead](Scene* scene) {
        std::string message;
        EXPECT_EQ(scene->selectors.Add(text, &message), isRead);
    };
}

TEST(SelectorAllocationTest, FailuresChangeNothing) {
    const char* const longSelector =
        "a-type-that-takes-memory > .a-class-that-takes-memory [an-attribute-that-takes-memory*=a-value-of-it] d.new";
    CheckCall("a selector that needs no more words", AddSelector(".new"));
    CheckCall("a selector with new names that needs more words", AddSelector(longSelector));
    CheckCall("a selector that is refused", AddSelector("a-type-that-takes-memory:hover", false));
    CheckCall("an element of a name that is open", OpenTag("<a class='x' h='a value of y that takes memory'>"));
    CheckCall("an element of another name", OpenTag("<d class='x and a value that takes memory' h='y'>"));
    CheckCall("an element of a long name", OpenTag("<a-name-that-does-not-fit-into-a-string-without-a-heap h='y'>"));
    CheckCall("a void element", OpenTag("<br id='z' class='x'>"));
    CheckCall("an element after more selectors", OpenTag("<c class='x' h='y'>"), AddSelector(longSelector));
    // Whether an element needs more room for itself depends on how many there are.
    Step openMore = [](Scene*) {};
    for (int more = 0; more < 6; ++more) {
        openMore = [openMore](Scene* scene) {
            openMore(scene);
            OpenTag("<b class='x'>")(scene);
        };
        CheckCall("an element inside more elements", OpenTag("<c class='x' h='y'>"), openMore);
    }
    CheckCall("the end of an element", [](Scene* scene) { scene->open.CloseInnermost(); });
    CheckCall("the end of all", [](Scene* scene) { scene->open.Clear(); });
    CheckCall("what matches", [](Scene* scene) {
        std::vector<std::size_t> matches;
        scene->open.GetMatches(&matches);
    });
}

TEST(SelectorAllocationTest, FailuresLeaveTheMatchesOfTheCaller) {
    struct {
        const char* tag;
        const char* matches;
    } const rows[] = {{"<a class='x' h='y' id='z'>", "29 30 31 32"}, {"<br class='x' h='y' id='z'>", "29 30 31"}};
    for (const auto& row : rows) {
        const TestTag tag = ReadTags(row.tag).front();
        bool isDone = false;
        for (std::size_t failing = 1; !isDone; ++failing) {
            ASSERT_LT(failing, TOO_MANY);
            Scene scene;
            std::vector<std::size_t> matches{7};
            try {
                const FailingAllocation failure(failing);
                scene.open.Open(tag.name, tag.isShort, tag.attributes.size(), tag, &matches);
                isDone = !failure.HasFailed();
            } catch (const std::bad_alloc&) {
            }
            EXPECT_EQ(Join(matches), isDone ? row.matches : "7") << row.tag << failing;
        }
    }
}

TEST(SelectorAllocationTest, ClosingAllocatesNothing) {
    Scene scene;
    {
        const FailingAllocation failure(1);
        EXPECT_EQ(scene.open.CountClosedBy("c"), 2U);
        EXPECT_EQ(scene.open.CountClosedBy("no such name that would need memory"), 0U);
        EXPECT_TRUE(scene.open.HasMatches());
        scene.open.CloseInnermost();
        scene.open.CloseInnermost();
        scene.open.Clear();
        EXPECT_FALSE(failure.HasFailed());
    }
    EXPECT_EQ(scene.open.GetDepth(), 0U);
}

}  // namespace
}  // namespace Kestra::Test
