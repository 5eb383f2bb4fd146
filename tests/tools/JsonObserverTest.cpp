#include "tools/kestra-html/output/JsonObserver.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "html/parser/GenericParser.h"
#include "tests/support/NotedRecord.h"
#include "tests/tools/ObserverTest.h"
#include "tests/tools/TextSource.h"
#include "tools/kestra-html/input/ParsePass.h"

namespace Kestra::Test {
namespace {

using Lines = std::vector<std::string>;

template <typename Flavour>
class JsonObserverTest : public ObserverTest<Flavour> {
protected:
    /// Calls the observer as for the token of a line in the trace language.
    void Observe(std::string_view line) {
        CallNoted<typename Flavour::C, typename Flavour::S>(&observer, line);
    }

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
    this->Observe("text(a\\xE9)");
    this->Observe("c-comment( c )");
    this->Observe("cpp-comment( cpp)");
    this->Observe("s-string(s)");
    this->Observe("d-string(d)");
    EXPECT_EQ(this->lines.Take(), (Lines{
                                      R"({"event":"Text","text":"a\u00e9"})",
                                      R"({"event":"CComment","text":" c "})",
                                      R"({"event":"CPPComment","text":" cpp"})",
                                      R"({"event":"SQuoteString","text":"s"})",
                                      R"({"event":"DQuoteString","text":"d"})",
                                  }));
}

TYPED_TEST(JsonObserverTest, JunkIsBytesInBothFlavours) {
    this->Observe("junk(<\\x00b\\xFF)");
    EXPECT_EQ(this->lines.Take(), (Lines{R"({"event":"JunkData","text":"<\u0000b\u00ff"})"}));
}

TYPED_TEST(JsonObserverTest, Tags) {
    this->Observe("start(|a|{ |href|=\\n|'x'}{\\t|b| =|}{ |c}| )");
    this->Observe("start( |a||, open)");
    this->Observe("short(|br|| )");
    this->Observe("end( |a|\\n||x, slash, open)");
    EXPECT_EQ(
        this->lines.Take(),
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
    this->Observe("cdata(CDATA|[x)");
    this->Observe("conditional(if| IE 6|-, open)");
    this->Observe("comment( c , open)");
    this->Observe("entity(|DOCTYPE|{ |html}{\\n|\"-//W3C\"}| )");
    EXPECT_EQ(
        this->lines.Take(),
        (Lines{
            R"({"event":"CDATATag","keyword":"CDATA","text":"[x","closed":true})",
            R"({"event":"ConditionalTag","keyword":"if","condition":" IE 6","tail":"-","bracketClosed":true,"tagClosed":false})",
            R"({"event":"CommentTag","text":" c ","closed":false})",
            R"({"event":"EntityTag","prefix":"","name":"DOCTYPE","tokens":[{"prefix":" ","value":"html","quote":0},)"
            R"({"prefix":"\n","value":"-//W3C","quote":2}],"suffix":" "})",
        }));
}

TYPED_TEST(JsonObserverTest, ProcessingInstructions) {
    using Instruction = NotedRecord<HTML::ExternTagData, typename TypeParam::C, typename TypeParam::S>;
    Instruction declaration("extern(|xml|| , slash)");
    Instruction instruction("extern-text(<?php ?>)");
    declaration.record.text = this->Text("");
    instruction.record.name = this->Text("php");
    instruction.record.attributes = nullptr;
    this->observer.OnExternTag(&declaration.record);
    this->observer.OnExternTag(&instruction.record);
    const std::string expectedTag =
        R"({"event":"ExternTag","prefix":"","name":"xml","attributes":[],"suffix":" ","freeStyle":false,)"
        R"("text":"","slashBeforeClose":true})";
    const std::string expectedFreeStyle =
        R"({"event":"ExternTag","prefix":"","name":"php","attributes":null,"suffix":"","freeStyle":true,)"
        R"("text":"<?php ?>","slashBeforeClose":false})";
    EXPECT_EQ(this->lines.Take(), (Lines{expectedTag, expectedFreeStyle}));
}

TYPED_TEST(JsonObserverTest, WhatIsAbsentIsNull) {
    this->Observe("start(null|null|null|null)");
    this->Observe("entity(null|null|null|null)");
    EXPECT_EQ(this->lines.Take(),
              (Lines{
                  R"({"event":"StartTag","prefix":null,"name":null,"attributes":null,"suffix":null,"closed":true})",
                  R"({"event":"EntityTag","prefix":null,"name":null,"tokens":null,"suffix":null})",
              }));
}

/// The lines for a document, with places.
template <typename C, typename S>
Lines ObservePlaces(const std::string& page, HTML::GenericParser::DataStreamType type) {
    KeptLines lines;
    HTML::GenericParser parser;
    Tool::JsonObserver<C, S> observer(&lines, &parser);
    parser.SetObserver(&observer, false);
    Tool::ParseOptions options;
    options.charset = 1252;
    options.input = type;
    TextSource source(page);
    const Tool::ParsePassResult result =
        Tool::RunParsePass(&parser, &source, Tool::ParseStart(options), options, [](std::uint64_t) {});
    EXPECT_TRUE(result.IsGood());
    observer.WriteResult(result, "-");
    return lines.Take();
}

TYPED_TEST(JsonObserverTest, PlacesFollowTheOwnMembers) {
    const std::string page = "a\n<a b c='d'\te=f g h = \"\" >\n<br i/></a j><?xml k='l'?><!m n><script></script>";
    Lines placed =
        ObservePlaces<typename TypeParam::C, typename TypeParam::S>(page, HTML::GenericParser::DATA_STREAM_AUTO);
    EXPECT_EQ(placed.back().find("\"begin\""), std::string::npos) << "the result has no place";
    placed.pop_back();
    EXPECT_EQ(
        placed,
        (Lines{
            R"({"event":"StartParsing","begin":0,"end":0,"line":1,"column":1})",
            R"({"event":"Text","text":"a\n","begin":0,"end":2,"line":1,"column":1})",
            R"({"event":"StartTag","prefix":"","name":"a","attributes":[)"
            R"({"prefix":" ","name":"b","beforeEquals":"","afterEquals":"","value":"","quote":0,"hasValue":false,)"
            R"("begin":4,"end":6,"nameBegin":5,"nameEnd":6,"valueBegin":null,"valueEnd":null},)"
            R"({"prefix":" ","name":"c","beforeEquals":"","afterEquals":"","value":"d","quote":1,"hasValue":true,)"
            R"("begin":6,"end":12,"nameBegin":7,"nameEnd":8,"valueBegin":10,"valueEnd":11},)"
            R"({"prefix":"\t","name":"e","beforeEquals":"","afterEquals":"","value":"f g","quote":0,)"
            R"("hasValue":true,"begin":12,"end":18,"nameBegin":13,"nameEnd":14,"valueBegin":15,"valueEnd":18},)"
            R"({"prefix":" ","name":"h","beforeEquals":" ","afterEquals":" ","value":"","quote":2,"hasValue":true,)"
            R"("begin":18,"end":25,"nameBegin":19,"nameEnd":20,"valueBegin":24,"valueEnd":24}],)"
            R"("suffix":" ","closed":true,"begin":2,"end":27,"line":2,"column":1})",
            R"({"event":"Text","text":"\n","begin":27,"end":28,"line":2,"column":26})",
            R"({"event":"ShortTag","prefix":"","name":"br","attributes":[)"
            R"({"prefix":" ","name":"i","beforeEquals":"","afterEquals":"","value":"","quote":0,"hasValue":false,)"
            R"("begin":31,"end":33,"nameBegin":32,"nameEnd":33,"valueBegin":null,"valueEnd":null}],)"
            R"("suffix":"","closed":true,"begin":28,"end":35,"line":3,"column":1})",
            R"({"event":"EndTag","prefix":"","name":"a","afterName":" ","closed":true,"attributes":[)"
            R"({"prefix":"","name":"j","beforeEquals":"","afterEquals":"","value":"","quote":0,"hasValue":false,)"
            R"("begin":39,"end":40,"nameBegin":39,"nameEnd":40,"valueBegin":null,"valueEnd":null}],)"
            R"("slashBeforeClose":false,"suffix":"","begin":35,"end":41,"line":3,"column":8})",
            R"({"event":"ExternTag","prefix":"","name":"xml","attributes":[)"
            R"({"prefix":" ","name":"k","beforeEquals":"","afterEquals":"","value":"l","quote":1,"hasValue":true,)"
            R"("begin":46,"end":52,"nameBegin":47,"nameEnd":48,"valueBegin":50,"valueEnd":51}],)"
            R"("suffix":"","freeStyle":false,"text":"","slashBeforeClose":false,"begin":41,"end":54,"line":3,)"
            R"("column":14})",
            R"({"event":"EntityTag","prefix":"","name":"m","tokens":[{"prefix":" ","value":"n","quote":0}],)"
            R"("suffix":"","begin":54,"end":60,"line":3,"column":27})",
            R"({"event":"StartTag","prefix":"","name":"script","attributes":[],)"
            R"("suffix":"","closed":true,"begin":60,"end":68,"line":3,"column":33})",
            R"({"event":"JSTagStart","begin":60,"end":68,"line":3,"column":33})",
            R"({"event":"EndTag","prefix":"","name":"script","afterName":"","closed":true,"attributes":[],)"
            R"("slashBeforeClose":false,"suffix":"","begin":68,"end":77,"line":3,"column":41})",
            R"({"event":"JSTagEnd","begin":68,"end":77,"line":3,"column":41})",
            R"({"event":"EndParsing","begin":77,"end":77,"line":3,"column":50})",
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
    EXPECT_EQ(this->lines.Take(),
              (Lines{R"({"event":"Result","startParse":1,"parse":705,"endParse":16,"line":3,"column":5,)"
                     R"("currentParserName":"TextSimpleParser","charset":1252,"isWParser":true,)"
                     R"("hasCharsetErrors":false,"needsReparsing":true,"file":"a\"\u00e9\ufffd\ud83d\ude00.html"})"}));
}

}  // namespace
}  // namespace Kestra::Test
