#include "tools/kestra-html/Place.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/Vector.h"
#include "tests/tools/ObserverTest.h"

namespace Kestra::Test {
namespace {

template <typename Flavour>
class PlaceTest : public ObserverTest<Flavour> {
protected:
    using PlaceOfFlavour = Tool::Place<typename Flavour::C, typename Flavour::S>;

    /// The place behind a record that starts at line 1, column 1.
    template <typename Record>
    static std::string Behind(const Record& data) {
        PlaceOfFlavour place;
        place.Pass(data);
        return Show(place);
    }

    static std::string Show(const PlaceOfFlavour& place) {
        return std::to_string(place.GetLine()) + ":" + std::to_string(place.GetColumn());
    }
};

TYPED_TEST_SUITE(PlaceTest, ObserverFlavours);

TYPED_TEST(PlaceTest, StartsAtOne) {
    EXPECT_EQ(this->Show({}), "1:1");
}

TYPED_TEST(PlaceTest, TextRecords) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    EXPECT_EQ(this->Behind(HTML::TextData<C, S>{this->Text("abc")}), "1:4");
    EXPECT_EQ(this->Behind(HTML::TextData<C, S>{this->Text("a\nbc\n\nd\r\xE9")}), "4:4");
    EXPECT_EQ(this->Behind(HTML::TextData<C, S>{nullptr}), "1:1");
    EXPECT_EQ(this->Behind(HTML::CCommentData<C, S>{this->Text("a\nb")}), "2:4");
    EXPECT_EQ(this->Behind(HTML::CPPCommentData<C, S>{this->Text("ab")}), "1:5");
    EXPECT_EQ(this->Behind(HTML::SQuoteStringData<C, S>{this->Text("ab")}), "1:5");
    EXPECT_EQ(this->Behind(HTML::DQuoteStringData<C, S>{this->Text("a\nb")}), "2:3");
}

TYPED_TEST(PlaceTest, Tags) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Vector<HTML::Attribute<C, S>> attributes;
    attributes.push_back({TypeParam::Text(" "), TypeParam::Text("b"), {}, TypeParam::Text(" "), TypeParam::Text("x"), 1, true});
    const S* const none = this->Text("");
    const S* const name = this->Text("a");
    EXPECT_EQ(this->Behind(HTML::StartTagData<C, S>{none, name, &attributes, this->Text("\n"), true}), "2:2");        // <a b= 'x'\n>
    EXPECT_EQ(this->Behind(HTML::StartTagData<C, S>{none, name, &attributes, none, false}), "1:10");                  // <a b= 'x'
    EXPECT_EQ(this->Behind(HTML::ShortTagData<C, S>{this->Text(" "), name, nullptr, this->Text(" "), true}), "1:7");  // < a />
    EXPECT_EQ(this->Behind(HTML::EndTagData<C, S>{none, name, this->Text(" "), true, nullptr, true, none}), "1:7");   // </a />
}

TYPED_TEST(PlaceTest, Declarations) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Vector<HTML::EntityToken<C, S>> tokens;
    tokens.push_back({TypeParam::Text(" "), TypeParam::Text("h"), 2});
    const S* const none = this->Text("");
    const Vector<HTML::Attribute<C, S>> noAttributes;
    EXPECT_EQ(this->Behind(HTML::EntityTagData<C, S>{none, this->Text("D"), &tokens, none}), "1:9");  // <!D "h">
    EXPECT_EQ(this->Behind(HTML::ExternTagData<C, S>{none, this->Text("xml"), &noAttributes, none, false, none, false}), "1:8");
    EXPECT_EQ(this->Behind(HTML::ExternTagData<C, S>{none, none, nullptr, none, true, this->Text("<?p?>"), false}), "1:6");
}

TYPED_TEST(PlaceTest, BodiesCountInFull) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const S* const keyword = this->Text("CDATA");
    const S* const ifKeyword = this->Text("if");
    const S* const condition = this->Text(" IE");
    const S* const tail = this->Text("--\n");
    EXPECT_EQ(this->Behind(HTML::CommentTagData<C, S>{this->Text("abcd"), true}), "1:12");
    EXPECT_EQ(this->Behind(HTML::CommentTagData<C, S>{this->Text("abcd"), false}), "1:9");
    EXPECT_EQ(this->Behind(HTML::CommentTagData<C, S>{this->Text("a\nbc\nd"), true}), "3:5");
    EXPECT_EQ(this->Behind(HTML::CDATATagData<C, S>{keyword, this->Text("[abc"), true}), "1:16");
    EXPECT_EQ(this->Behind(HTML::CDATATagData<C, S>{keyword, this->Text("[abc\n"), false}), "2:1");
    EXPECT_EQ(this->Behind(HTML::ConditionalTagData<C, S>{ifKeyword, condition, this->Text("--"), true, true}), "1:13");
    EXPECT_EQ(this->Behind(HTML::ConditionalTagData<C, S>{ifKeyword, condition, tail, true, true}), "2:2");
    EXPECT_EQ(this->Behind(HTML::ConditionalTagData<C, S>{ifKeyword, condition, tail, true, false}), "1:10");
    EXPECT_EQ(this->Behind(HTML::ConditionalTagData<C, S>{ifKeyword, condition, this->Text(""), false, true}), "1:10");
}

TYPED_TEST(PlaceTest, JunkIsCountedInTheWidthOfTheDocument) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const std::string narrow = "<a\nbc";
    const std::string wide(
        "<\0\n\0\n\x01"
        "b\0",
        8);  // "<", a line feed, U+010A, "b"
    Tool::Place<C, S> place;
    place.PassJunk({&narrow});
    EXPECT_EQ(this->Show(place), "2:3");
    place.SetUtf16(true);
    place.PassJunk({&wide});
    EXPECT_EQ(this->Show(place), "3:3");
    place.PassJunk({nullptr});
    EXPECT_EQ(this->Show(place), "3:3");
}

TYPED_TEST(PlaceTest, TokensFollowEachOther) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Tool::Place<C, S> place;
    place.Pass(HTML::TextData<C, S>{this->Text("ab")});
    place.Pass(HTML::CommentTagData<C, S>{this->Text("c"), true});
    place.Pass(HTML::TextData<C, S>{this->Text("d\n")});
    place.Pass(HTML::SQuoteStringData<C, S>{this->Text("e")});
    EXPECT_EQ(this->Show(place), "2:4");
}

}  // namespace
}  // namespace Kestra::Test
