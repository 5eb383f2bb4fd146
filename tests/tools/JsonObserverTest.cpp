#include "tools/kestra-html/JsonObserver.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/ObserverTest.h"

namespace Kestra::Test {
namespace {

using Lines = std::vector<std::string>;

template <typename Flavour>
class JsonObserverTest : public ObserverTest<Flavour> {
protected:
    Tool::JsonObserver<typename Flavour::C, typename Flavour::S> observer{&this->lines};
};

TYPED_TEST_SUITE(JsonObserverTest, ObserverFlavours);

TYPED_TEST(JsonObserverTest, EventsWithoutRecord) {
    this->observer.OnStartParsing();
    this->observer.OnBOM("\xEF\xBB\xBF", 3);
    this->observer.OnBOM("\xFF\xFE", 2);
    this->observer.OnCharset(65001);
    this->observer.OnJSTagStart();
    this->observer.OnJSTagEnd();
    this->observer.OnCSSTagStart();
    this->observer.OnCSSTagEnd();
    this->observer.OnEndParsing();
    EXPECT_EQ(this->lines.Take(), (Lines{
                                      R"({"event":"StartParsing"})",
                                      R"({"event":"BOM","bytes":"\u00ef\u00bb\u00bf"})",
                                      R"({"event":"BOM","bytes":"\u00ff\u00fe"})",
                                      R"({"event":"Charset","code":65001})",
                                      R"({"event":"JSTagStart"})",
                                      R"({"event":"JSTagEnd"})",
                                      R"({"event":"CSSTagStart"})",
                                      R"({"event":"CSSTagEnd"})",
                                      R"({"event":"EndParsing"})",
                                  }));
}

TYPED_TEST(JsonObserverTest, TextRecords) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    HTML::TextData<C, S> text{this->Text("a\xE9")};
    HTML::CCommentData<C, S> cComment{this->Text(" c ")};
    HTML::CPPCommentData<C, S> cppComment{this->Text(" cpp")};
    HTML::SQuoteStringData<C, S> sQuoteString{this->Text("s")};
    HTML::DQuoteStringData<C, S> dQuoteString{this->Text("d")};
    this->observer.OnText(&text);
    this->observer.OnCComment(&cComment);
    this->observer.OnCPPComment(&cppComment);
    this->observer.OnSQuoteString(&sQuoteString);
    this->observer.OnDQuoteString(&dQuoteString);
    EXPECT_EQ(this->lines.Take(), (Lines{
                                      R"({"event":"Text","text":"a\u00e9"})",
                                      R"({"event":"CComment","text":" c "})",
                                      R"({"event":"CPPComment","text":" cpp"})",
                                      R"({"event":"SQuoteString","text":"s"})",
                                      R"({"event":"DQuoteString","text":"d"})",
                                  }));
}

TYPED_TEST(JsonObserverTest, JunkIsBytesInBothFlavours) {
    const std::string bytes("<\0b\xFF", 4);
    HTML::JunkData<typename TypeParam::C, typename TypeParam::S> junk{&bytes};
    this->observer.OnJunkData(&junk);
    EXPECT_EQ(this->lines.Take(), (Lines{R"({"event":"JunkData","text":"<\u0000b\u00ff"})"}));
}

TYPED_TEST(JsonObserverTest, Tags) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Vector<HTML::Attribute<C, S>> attributes;
    attributes.push_back({TypeParam::Text(" "), TypeParam::Text("href"), {}, TypeParam::Text("\n"), TypeParam::Text("x"), 1, true});
    attributes.push_back({TypeParam::Text("\t"), TypeParam::Text("b"), TypeParam::Text(" "), {}, {}, 0, true});
    attributes.push_back({TypeParam::Text(" "), TypeParam::Text("c"), {}, {}, {}, 0, false});
    const Vector<HTML::Attribute<C, S>> none;
    HTML::StartTagData<C, S> start{this->Text(""), this->Text("a"), &attributes, this->Text(" "), true};
    HTML::StartTagData<C, S> openStart{this->Text(" "), this->Text("a"), &none, this->Text(""), false};
    HTML::ShortTagData<C, S> shortTag{this->Text(""), this->Text("br"), &none, this->Text(" "), true};
    HTML::EndTagData<C, S> end{this->Text(" "), this->Text("a"), this->Text("\n"), false, &none, true, this->Text("x")};
    this->observer.OnStartTag(&start);
    this->observer.OnStartTag(&openStart);
    this->observer.OnShortTag(&shortTag);
    this->observer.OnEndTag(&end);
    EXPECT_EQ(this->lines.Take(),
              (Lines{
                  R"({"event":"StartTag","prefix":"","name":"a","attributes":[)"
                  R"({"prefix":" ","name":"href","beforeEquals":"","afterEquals":"\n","value":"x","quote":1,"hasValue":true},)"
                  R"({"prefix":"\t","name":"b","beforeEquals":" ","afterEquals":"","value":"","quote":0,"hasValue":true},)"
                  R"({"prefix":" ","name":"c","beforeEquals":"","afterEquals":"","value":"","quote":0,"hasValue":false}],)"
                  R"("suffix":" ","closed":true})",
                  R"({"event":"StartTag","prefix":" ","name":"a","attributes":[],"suffix":"","closed":false})",
                  R"({"event":"ShortTag","prefix":"","name":"br","attributes":[],"suffix":" ","closed":true})",
                  R"({"event":"EndTag","prefix":" ","name":"a","afterName":"\n","closed":false,"attributes":[],"slashBeforeClose":true,)"
                  R"("suffix":"x"})",
              }));
}

TYPED_TEST(JsonObserverTest, Declarations) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Vector<HTML::EntityToken<C, S>> tokens;
    tokens.push_back({TypeParam::Text(" "), TypeParam::Text("html"), 0});
    tokens.push_back({TypeParam::Text("\n"), TypeParam::Text("-//W3C"), 2});
    HTML::CDATATagData<C, S> cdata{this->Text("CDATA"), this->Text("[x"), true};
    HTML::ConditionalTagData<C, S> conditional{this->Text("if"), this->Text(" IE 6"), this->Text("-"), true, false};
    HTML::CommentTagData<C, S> comment{this->Text(" c "), false};
    HTML::EntityTagData<C, S> entity{this->Text(""), this->Text("DOCTYPE"), &tokens, this->Text(" ")};
    this->observer.OnCDATATag(&cdata);
    this->observer.OnConditionalTag(&conditional);
    this->observer.OnCommentTag(&comment);
    this->observer.OnEntityTag(&entity);
    EXPECT_EQ(this->lines.Take(),
              (Lines{
                  R"({"event":"CDATATag","keyword":"CDATA","text":"[x","closed":true})",
                  R"({"event":"ConditionalTag","keyword":"if","condition":" IE 6","tail":"-","bracketClosed":true,"tagClosed":false})",
                  R"({"event":"CommentTag","text":" c ","closed":false})",
                  R"({"event":"EntityTag","prefix":"","name":"DOCTYPE","tokens":[{"prefix":" ","value":"html","quote":0},)"
                  R"({"prefix":"\n","value":"-//W3C","quote":2}],"suffix":" "})",
              }));
}

TYPED_TEST(JsonObserverTest, ProcessingInstructions) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const Vector<HTML::Attribute<C, S>> none;
    HTML::ExternTagData<C, S> externTag{this->Text(""), this->Text("xml"), &none, this->Text(" "), false, this->Text(""), true};
    HTML::ExternTagData<C, S> freeStyle{this->Text(""), this->Text("php"), nullptr, this->Text(""), true, this->Text("<?php ?>"), false};
    this->observer.OnExternTag(&externTag);
    this->observer.OnExternTag(&freeStyle);
    const std::string expectedTag = R"({"event":"ExternTag","prefix":"","name":"xml","attributes":[],"suffix":" ","freeStyle":false,)"
                                    R"("text":"","slashBeforeClose":true})";
    const std::string expectedFreeStyle = R"({"event":"ExternTag","prefix":"","name":"php","attributes":null,"suffix":"","freeStyle":true,)"
                                          R"("text":"<?php ?>","slashBeforeClose":false})";
    EXPECT_EQ(this->lines.Take(), (Lines{expectedTag, expectedFreeStyle}));
}

TYPED_TEST(JsonObserverTest, WhatIsAbsentIsNull) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    HTML::StartTagData<C, S> start{nullptr, nullptr, nullptr, nullptr, true};
    HTML::EntityTagData<C, S> entity{nullptr, nullptr, nullptr, nullptr};
    this->observer.OnStartTag(&start);
    this->observer.OnEntityTag(&entity);
    EXPECT_EQ(this->lines.Take(), (Lines{
                                      R"({"event":"StartTag","prefix":null,"name":null,"attributes":null,"suffix":null,"closed":true})",
                                      R"({"event":"EntityTag","prefix":null,"name":null,"tokens":null,"suffix":null})",
                                  }));
}

TYPED_TEST(JsonObserverTest, TheResult) {
    Tool::ParsePassResult result;
    result.startParse = 1;
    result.parse = 705;
    result.endParse = 16;
    result.line = 3;
    result.column = 5;
    result.currentParserName = KESTRA_WIDE("TextSimpleParser");
    result.charset = 1252;
    result.isWParser = true;
    result.hasCharsetErrors = false;
    result.needsReparsing = true;
    this->observer.WriteResult(result, "a\"\xC3\xA9\xFF\xF0\x9F\x98\x80.html");
    EXPECT_EQ(this->lines.Take(), (Lines{R"({"event":"Result","startParse":1,"parse":705,"endParse":16,"line":3,"column":5,)"
                                         R"("currentParserName":"TextSimpleParser","charset":1252,"isWParser":true,)"
                                         R"("hasCharsetErrors":false,"needsReparsing":true,"file":"a\"\u00e9\ufffd\ud83d\ude00.html"})"}));
}

}  // namespace
}  // namespace Kestra::Test
