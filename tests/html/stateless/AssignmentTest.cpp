#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <numeric>
#include <string>
#include <string_view>

#include "html/stateless/StatelessHTMLParser.h"
#include "platform/Observable.h"
#include "tests/support/FailingNew.h"
#include "tools/trace/EventTrace.h"

// Copies for which memory runs out. Whichever allocation fails, an assignment leaves the target as
// it was, and everybody may go afterwards in any order.

namespace Kestra::Test {
namespace {

using HTML::StatelessHTMLParser;

constexpr std::size_t OBSERVERS = 4;
using Order = std::array<std::size_t, OBSERVERS>;

enum class Change { NONE, ASSIGNMENT, COPY };

/// Raises one event.
class Source final : public Base::Observable {
public:
    static constexpr unsigned long EVENT = 3;

    class Observer final : public Base::Observer {
    public:
        Observer(char observerName, std::string* target) : name(observerName), heard(target) {}

        void RegisterCalls(Base::MultiDelegate* delegate) override {
            delegate->Bind(EVENT, this, [](Base::Observer* observer, const void* const*) {
                auto* const self = static_cast<Observer*>(observer);
                *self->heard += self->name;
            });
        }

    private:
        char name;
        std::string* heard;
    };

    void BeginAsSource() {}
    void BeginAsTarget() {}
    void GoOn() {
        GetDelegate().Call(EVENT);
    }
};

/// In the middle of a document, with something long in every string.
class Document final : public StatelessHTMLParser {
public:
    class Observer final : public Trace::EventLineObserver {
    public:
        Observer(char observerName, std::string* target) : name(observerName), heard(target) {}

    private:
        void OnLine(unsigned long, const std::string& line) override {
            *heard += name + (":" + line) + "\n";
        }

        char name;
        std::string* heard;
    };

    void BeginAsSource() {
        StartParse(1252);
        Feed(
            "a text that is longer than a short string<!declaration-with-a-long-name an-item-that-is-long-enough 'and "
            "another long item'>"
            "<style>a</style-that-is-none></style><script>a</scripts-without-an-end></script>"
            "<a-start-tag-with-a-long-name a-long-attribute-name='a value that is long enough' "
            "another-long-attribute-name='a value, cut ");
    }
    void BeginAsTarget() {
        StartParse(65001);
        Feed(
            "another text that is longer than a short string<!another-declaration an-item-that-is-not-the-same 'the "
            "last item'>"
            "<style>b</styles-with-an-end></style><script>an-attribute-of-no-tag = 'a string of a script, cut ");
    }
    void GoOn() {
        Feed("here', \"><i>\xC3\xA4</script></i><b/>");
    }

private:
    void Feed(std::string_view bytes) {
        ParseBuffer(bytes.data(), bytes.size());
    }
};

struct Play {
    std::string heard;
    bool hasFailed = false;
    bool hasThrown = false;
};

/// What both say after the change, and after each observer that goes.
///
/// @param failing  the allocation of the change that fails, from 1; 0 for none
template <typename Subject>
Play PlayWith(Change change, std::size_t failing, const Order& order) {
    Play play;
    std::array<std::unique_ptr<typename Subject::Observer>, OBSERVERS> observers;
    for (std::size_t i = 0; i < OBSERVERS; ++i)
        observers[i] = std::make_unique<typename Subject::Observer>("abcd"[i], &play.heard);
    Subject source;
    for (const std::size_t i : Order{0, 1, 2, 1})
        source.Attach(observers[i].get());
    auto target = std::make_unique<Subject>();
    for (const std::size_t i : Order{3, 1, 0, 0})
        target->Attach(observers[i].get());
    source.BeginAsSource();
    target->BeginAsTarget();
    play.heard.clear();
    {
        const FailingAllocation failure(failing);
        try {
            if (change == Change::ASSIGNMENT)
                *target = source;
            else if (change == Change::COPY)
                target = std::make_unique<Subject>(source);
        } catch (const std::bad_alloc&) {
            play.hasThrown = true;
        }
        play.hasFailed = failure.HasFailed();
    }
    for (const std::size_t next : order) {
        target->GoOn();
        play.heard += "/";
        source.GoOn();
        play.heard += "|";
        observers[next] = nullptr;
    }
    target->GoOn();
    source.GoOn();
    return play;
}

/// @param leastAllocations  that the change makes
template <typename Subject>
void CheckChange(Change change, std::size_t leastAllocations) {
    Order order;
    std::iota(order.begin(), order.end(), std::size_t{0});
    do {
        const Play before = PlayWith<Subject>(Change::NONE, 0, order);
        const Play after = PlayWith<Subject>(change, 0, order);
        ASSERT_NE(before.heard, after.heard);
        for (std::size_t failing = 1;; ++failing) {
            const Play play = PlayWith<Subject>(change, failing, order);
            ASSERT_EQ(play.hasThrown, play.hasFailed) << failing;
            ASSERT_EQ(play.heard, play.hasThrown ? before.heard : after.heard) << failing;
            if (!play.hasFailed) {
                ASSERT_GT(failing, leastAllocations);
                break;
            }
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(AssignmentTest, AnObservableIsAssignedAsAWhole) {
    CheckChange<Source>(Change::ASSIGNMENT, 3);
}

TEST(AssignmentTest, AStatelessParserIsAssignedAsAWhole) {
    CheckChange<Document>(Change::ASSIGNMENT, 30);
}

TEST(AssignmentTest, ACopyThatCannotBeMadeLeavesNothing) {
    CheckChange<Source>(Change::COPY, 3);
    CheckChange<Document>(Change::COPY, 30);
}

}  // namespace
}  // namespace Kestra::Test
