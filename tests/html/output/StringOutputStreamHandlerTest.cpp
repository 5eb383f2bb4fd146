#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "html/output/ParserObserverOutput.h"
#include "html/output/StringOutputStreamParserObserverOutputHandler.h"
#include "tests/support/Flavours.h"

namespace Kestra::Test {
namespace {

using namespace std::string_literals;

template <typename Flavour>
using Handler = HTML::StringOutputStreamParserObserverOutputHandler<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
class StringOutputStreamHandlerTest : public testing::Test {};

TYPED_TEST_SUITE(StringOutputStreamHandlerTest, Flavours);

TYPED_TEST(StringOutputStreamHandlerTest, AppendsWhatIsWritten) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Handler<TypeParam> handler;
    EXPECT_EQ(handler.GetString(), S());
    const S first = To<S>("a\0b\xE9"s);
    const S second = To<S>("\n<c>");
    handler.Write(first.data(), first.size() * sizeof(C), true);
    EXPECT_EQ(handler.GetString(), first);
    handler.Write(second.data(), second.size() * sizeof(C), false);
    EXPECT_EQ(handler.GetString(), first + second);
    handler.Write(second.data(), 0, true);
    handler.Write(nullptr, 0, true);
    EXPECT_EQ(handler.GetString(), first + second);
    EXPECT_EQ(handler.GetStream().str(), first + second);
}

TYPED_TEST(StringOutputStreamHandlerTest, TheStreamIsOneOfTheFlavour) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    static_assert(
        std::is_same_v<decltype(std::declval<Handler<TypeParam>&>().GetStream()), std::basic_ostringstream<C>&>);
    static_assert(std::is_base_of_v<HTML::ParserObserverOutputHandler, Handler<TypeParam>>);
    static_assert(!std::is_copy_constructible_v<Handler<TypeParam>>);
    static_assert(!std::is_copy_assignable_v<Handler<TypeParam>>);
    Handler<TypeParam> handler;
    const S text = To<S>("text");
    handler.Write(text.data(), text.size() * sizeof(C), true);
    handler.GetStream().str(S());
    EXPECT_EQ(handler.GetString(), S());
    EXPECT_TRUE(handler.GetStream().good());
}

TYPED_TEST(StringOutputStreamHandlerTest, DataMayStartAtAnyAddress) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const S text = To<S>("unaligned \xE9");
    for (std::size_t shift = 0; shift < 4; ++shift) {
        std::vector<char> bytes(shift + text.size() * sizeof(C));
        std::memcpy(bytes.data() + shift, text.data(), text.size() * sizeof(C));
        Handler<TypeParam> handler;
        handler.Write(bytes.data() + shift, text.size() * sizeof(C), true);
        EXPECT_EQ(handler.GetString(), text);
    }
}

TYPED_TEST(StringOutputStreamHandlerTest, TakesTokensOfTheSerializer) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const S empty;
    const S name = To<S>("a");
    Vector<HTML::Attribute<C, S>> attributes;
    HTML::Attribute<C, S>& attribute = attributes.emplace_back();
    attribute.prefix = To<S>(" ");
    attribute.name = To<S>("b");
    attribute.beforeEquals = To<S>(" ");
    attribute.afterEquals = To<S>(" ");
    attribute.value = To<S>("c");
    attribute.quote = 1;
    attribute.hasValue = true;
    const HTML::StartTagData<C, S> tag = {&empty, &name, &attributes, &empty, true};
    Handler<TypeParam> handler;
    HTML::ParserObserverOutput<C, S>::GetStartTagOutput(&tag, &handler);
    EXPECT_EQ(handler.GetString(), To<S>("<a b = 'c'>"));
}

TEST(StringOutputStreamHandlerTest, HalfAWideCharacterIsDropped) {
    Handler<Wide> handler;
    handler.Write("a\0b\0c", 5, true);
    handler.Write("d", 1, true);
    handler.Write("e\0f", 3, false);
    EXPECT_EQ(handler.GetString(), KESTRA_WIDE("abe"));
}

}  // namespace
}  // namespace Kestra::Test
