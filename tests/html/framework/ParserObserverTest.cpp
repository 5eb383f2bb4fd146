#include "html/framework/ParserObserver.h"

#include <gtest/gtest.h>

#include "html/framework/RecordFields.h"
#include "tests/support/Flavours.h"

namespace Kestra::Test {
namespace {

/// Calls every operation; a default that looked at its argument would read through a null pointer.
template <typename Observer>
void CallEverything(Observer* observer) {
    observer->OnBOM(nullptr, 3);
    observer->OnCharset(65001);
#define CALL_TOKEN(NAME, RECORD, WORD) observer->On##NAME(nullptr);
    KESTRA_HTML_FOR_EACH_KIND(CALL_TOKEN)
#undef CALL_TOKEN
#define CALL_EVENT(NAME, WORD) observer->On##NAME();
    KESTRA_HTML_FOR_EACH_EVENT(CALL_EVENT)
#undef CALL_EVENT
}

template <typename Flavour>
class ParserObserverTest : public testing::Test {};

TYPED_TEST_SUITE(ParserObserverTest, Flavours);

/// Overrides two operations and counts their calls.
template <typename C, typename S>
class Counter final : public HTML::ParserObserver<C, S> {
public:
    void OnText(HTML::TextData<C, S>*) override {
        ++texts;
    }
    void OnJunkData(HTML::JunkData<C, S>*) override {
        ++junks;
    }

    int texts = 0;
    int junks = 0;
};

TYPED_TEST(ParserObserverTest, OperationsThatAreNotOverriddenDoNothing) {
    Counter<typename TypeParam::C, typename TypeParam::S> counter;
    HTML::ParserObserver<typename TypeParam::C, typename TypeParam::S>* const observer = &counter;
    CallEverything(observer);
    EXPECT_EQ(counter.texts, 1);
    EXPECT_EQ(counter.junks, 1);
}

TYPED_TEST(ParserObserverTest, ACopyIsAnObserverOfItsOwn) {
    Counter<typename TypeParam::C, typename TypeParam::S> counter;
    CallEverything(&counter);
    Counter<typename TypeParam::C, typename TypeParam::S> copy(counter);
    CallEverything(&copy);
    Counter<typename TypeParam::C, typename TypeParam::S> assigned;
    assigned = copy;
    CallEverything(&assigned);
    EXPECT_EQ(counter.texts, 1);
    EXPECT_EQ(copy.texts, 2);
    EXPECT_EQ(assigned.texts, 3);
}

/// An observer as a host writes it.
class HostObserver final : public HTML::GenericParserObserver {
public:
    void OnCharset(StringNS::CharSet::Code newCode) override {
        code = newCode;
    }

    StringNS::CharSet::Code code = 0;
};

TEST(ParserObserverTest, TheObserverOfHostsIsAWideOne) {
    HostObserver host;
    HTML::ParserObserver<WideChar, WideString>* const observer = &host;
    CallEverything(observer);
    EXPECT_EQ(host.code, 65001U);
    HostObserver copy(host);
    copy.OnCharset(1252);
    EXPECT_EQ(copy.code, 1252U);
    EXPECT_EQ(host.code, 65001U);
}

}  // namespace
}  // namespace Kestra::Test
