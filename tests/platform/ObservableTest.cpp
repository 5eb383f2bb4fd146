#include "platform/Observable.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace Kestra::Test {
namespace {

using Base::MultiDelegate;
using Base::Observable;
using Base::Observer;

constexpr unsigned long EVENT = 3;
constexpr unsigned long OTHER_EVENT = 4;

/// Raises events with one number.
class Source : public Observable {
public:
    void Raise(unsigned long id = EVENT) {
        const int number = ++raised;
        const void* const arguments[] = {&number};
        GetDelegate().Call(id, arguments);
    }

    int raised = 0;
};

/// Writes its name and the number of each event down.
class Listener : public Observer {
public:
    Listener(char listenerName, std::string* target) : name(listenerName), heard(target) {}

    void RegisterCalls(MultiDelegate* delegate) override {
        delegate->Bind(EVENT, this, &Listener::Hear);
    }

    std::function<void()> whenHeard;

private:
    static void Hear(Observer* observer, const void* const* arguments) {
        auto* const listener = static_cast<Listener*>(observer);
        *listener->heard += listener->name;
        *listener->heard += static_cast<char>('0' + *static_cast<const int*>(arguments[0]));
        const std::function<void()> call = listener->whenHeard;  // which may replace itself
        if (call)
            call();
    }

    char name;
    std::string* heard;
};

TEST(ObservableTest, CallsInTheOrderOfAttachment) {
    std::string heard;
    Listener a('a', &heard);
    Listener b('b', &heard);
    Source source;
    source.Raise();
    EXPECT_EQ(heard, "");
    source.Attach(&b);
    source.Attach(&a);
    source.Attach(nullptr);
    source.Raise();
    source.Raise(OTHER_EVENT);
    EXPECT_EQ(heard, "b2a2");
    source.Detach(&b);
    source.Detach(&b);
    source.Detach(nullptr);
    source.Raise();
    EXPECT_EQ(heard, "b2a2a4");
}

TEST(ObservableTest, AttachedTwiceHearsTwiceUntilDetached) {
    std::string heard;
    Listener a('a', &heard);
    Source source;
    source.Attach(&a);
    source.Attach(&a);
    source.Raise();
    EXPECT_EQ(heard, "a1a1");
    source.Detach(&a);
    source.Raise();
    EXPECT_EQ(heard, "a1a1");
}

TEST(ObservableTest, ChangesInsideACallback) {
    std::string heard;
    Listener a('a', &heard);
    Listener b('b', &heard);
    Listener c('c', &heard);
    Source source;
    source.Attach(&a);
    source.Attach(&b);
    a.whenHeard = [&] {
        source.Detach(&b);
        source.Attach(&c);
        a.whenHeard = nullptr;
    };
    source.Raise();
    EXPECT_EQ(heard, "a1");
    source.Raise();
    EXPECT_EQ(heard, "a1a2c2");
}

TEST(ObservableTest, OneThatDetachesItselfAndIsAttachedAgain) {
    std::string heard;
    Listener a('a', &heard);
    Listener b('b', &heard);
    Source source;
    source.Attach(&a);
    source.Attach(&b);
    a.whenHeard = [&] {
        source.Detach(&a);
        source.Attach(&a);
        a.whenHeard = nullptr;
    };
    source.Raise();
    EXPECT_EQ(heard, "a1b1");
    source.Raise();
    EXPECT_EQ(heard, "a1b1b2a2");
}

TEST(ObservableTest, AnEventInsideAnEvent) {
    std::string heard;
    Listener a('a', &heard);
    Listener b('b', &heard);
    Source source;
    source.Attach(&a);
    source.Attach(&b);
    a.whenHeard = [&] {
        a.whenHeard = nullptr;
        source.Detach(&b);
        source.Raise();
        source.Attach(&b);
    };
    source.Raise();
    EXPECT_EQ(heard, "a1a2");
    source.Raise();
    EXPECT_EQ(heard, "a1a2a3b3");
}

TEST(ObservableTest, AnExceptionLeavesNothing) {
    std::string heard;
    Listener a('a', &heard);
    Listener b('b', &heard);
    Source source;
    source.Attach(&a);
    source.Attach(&b);
    a.whenHeard = [&] {
        source.Detach(&b);
        throw 1;
    };
    EXPECT_THROW(source.Raise(), int);
    a.whenHeard = nullptr;
    source.Raise();
    EXPECT_EQ(heard, "a1a2");
}

TEST(ObservableTest, AnObserverThatGoesDetachesItself) {
    std::string heard;
    Source one;
    Source other;
    {
        Listener a('a', &heard);
        one.Attach(&a);
        one.Attach(&a);
        other.Attach(&a);
    }
    one.Raise();
    other.Raise();
    EXPECT_EQ(heard, "");
}

TEST(ObservableTest, AnObserverThatGoesInItsOwnCallback) {
    std::string heard;
    Source source;
    auto a = std::make_unique<Listener>('a', &heard);
    Listener b('b', &heard);
    source.Attach(a.get());
    source.Attach(&b);
    b.whenHeard = [&] { a = nullptr; };
    source.Raise();
    source.Raise();
    EXPECT_EQ(heard, "a1b1b2");
}

TEST(ObservableTest, AnObservableThatGoesIsForgotten) {
    std::string heard;
    Listener a('a', &heard);
    {
        Source source;
        source.Attach(&a);
        source.Raise();
    }
    EXPECT_EQ(heard, "a1");  // and the listener goes without touching it
}

TEST(ObservableTest, ACopyHasTheSameObservers) {
    std::string heard;
    Source source;
    {
        Listener a('a', &heard);
        source.Attach(&a);
        Source copy(source);
        copy.Raise();
        source.Raise();
        EXPECT_EQ(heard, "a1a1");
        copy.Detach(&a);
        copy.Raise();
        source.Raise();
        EXPECT_EQ(heard, "a1a1a2");
        Listener b('b', &heard);
        copy.Attach(&b);
        copy = source;
        copy.Raise();
        EXPECT_EQ(heard, "a1a1a2a3");
        copy = *&copy;
        copy.Raise();
        EXPECT_EQ(heard, "a1a1a2a3a4");
    }
    source.Raise();
    EXPECT_EQ(heard, "a1a1a2a3a4");
}

TEST(ObservableTest, ACopyOfAnObserverIsAttachedToNothing) {
    std::string heard;
    Source source;
    Listener a('a', &heard);
    source.Attach(&a);
    {
        Listener copy(a);
        Listener assigned('b', &heard);
        assigned = a;
        source.Raise();
    }
    source.Raise();
    EXPECT_EQ(heard, "a1a2");
}

TEST(MultiDelegateTest, BindsCallsAndRemoves) {
    std::string heard;
    Listener a('a', &heard);
    MultiDelegate delegate;
    EXPECT_FALSE(delegate.IsBound(EVENT));
    delegate.Call(EVENT);
    a.RegisterCalls(&delegate);
    a.RegisterCalls(&delegate);
    EXPECT_TRUE(delegate.IsBound(EVENT));
    EXPECT_FALSE(delegate.IsBound(OTHER_EVENT));
    const int number = 7;
    const void* const arguments[] = {&number};
    delegate.Call(EVENT, arguments);
    MultiDelegate copy(delegate);
    delegate.Remove(&a);
    EXPECT_FALSE(delegate.IsBound(EVENT));
    delegate.Call(EVENT, arguments);
    EXPECT_EQ(heard, "a7a7");
    copy.Call(EVENT, arguments);
    EXPECT_EQ(heard, "a7a7a7a7");
    copy = delegate;
    EXPECT_FALSE(copy.IsBound(EVENT));
}

}  // namespace
}  // namespace Kestra::Test
