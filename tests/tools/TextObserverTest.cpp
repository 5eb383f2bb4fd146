#include "tools/kestra-html/TextObserver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Vector.h"
#include "tests/tools/ObserverTest.h"

namespace Kestra::Test {
namespace {

using Lines = std::vector<std::string>;

template <typename Flavour>
class TextObserverTest : public ObserverTest<Flavour> {
protected:
    /// Calls every callback that has a token, in the order of the summary.
    template <typename C, typename S>
    void ObserveEverything(Tool::TextObserver<C, S>* observer) {
        const Vector<HTML::Attribute<C, S>> attributes;
        const Vector<HTML::EntityToken<C, S>> tokens;
        const S* const none = this->Text("");
        const S* const name = this->Text("n");
        const std::string bytes = "<";
        HTML::TextData<C, S> text{name};
        HTML::StartTagData<C, S> start{none, name, &attributes, none, true};
        HTML::ShortTagData<C, S> shortTag{none, name, &attributes, none, true};
        HTML::EndTagData<C, S> end{none, name, none, true, &attributes, false, none};
        HTML::CommentTagData<C, S> comment{name, true};
        HTML::CDATATagData<C, S> cdata{name, none, true};
        HTML::ConditionalTagData<C, S> conditional{name, none, none, true, true};
        HTML::EntityTagData<C, S> entity{none, name, &tokens, none};
        HTML::ExternTagData<C, S> externTag{none, name, &attributes, none, false, none, false};
        HTML::ExternTagData<C, S> freeStyle{none, name, &attributes, none, true, name, false};
        HTML::CCommentData<C, S> cComment{name};
        HTML::CPPCommentData<C, S> cppComment{name};
        HTML::SQuoteStringData<C, S> sQuoteString{name};
        HTML::DQuoteStringData<C, S> dQuoteString{name};
        HTML::JunkData<C, S> junk{&bytes};
        observer->OnStartParsing();
        observer->OnBOM("\xEF", 1);
        observer->OnCharset(1252);
        observer->OnText(&text);
        observer->OnStartTag(&start);
        observer->OnShortTag(&shortTag);
        observer->OnEndTag(&end);
        observer->OnCommentTag(&comment);
        observer->OnCDATATag(&cdata);
        observer->OnConditionalTag(&conditional);
        observer->OnEntityTag(&entity);
        observer->OnExternTag(&externTag);
        observer->OnExternTag(&freeStyle);
        observer->OnJSTagStart();
        observer->OnCComment(&cComment);
        observer->OnCPPComment(&cppComment);
        observer->OnSQuoteString(&sQuoteString);
        observer->OnDQuoteString(&dQuoteString);
        observer->OnJSTagEnd();
        observer->OnCSSTagStart();
        observer->OnCSSTagEnd();
        observer->OnJunkData(&junk);
        observer->OnEndParsing();
    }

    HTML::GenericParser parser;
};

TYPED_TEST_SUITE(TextObserverTest, ObserverFlavours);

TYPED_TEST(TextObserverTest, EveryCallbackIsALineWithItsPlace) {
    Tool::TextObserver<typename TypeParam::C, typename TypeParam::S> observer(&this->lines, &this->parser, false);
    this->ObserveEverything(&observer);
    EXPECT_EQ(
        this->lines.Take(),
        (Lines{
            "     1:1     start-parsing",  "     1:1     bom(EF)",          "     1:1     charset(1252)", "     1:1     text(n)",
            "     1:2     start(|n||)",    "     1:5     short(|n||)",      "     1:9     end(|n|||)",    "     1:13    comment(n)",
            "     1:21    cdata(n|)",      "     1:28    conditional(n||)", "     1:34    entity(|n||)",  "     1:38    extern(|n||)",
            "     1:43    extern-text(n)", "     1:44    js-start",         "     1:44    c-comment(n)",  "     1:49    cpp-comment(n)",
            "     1:52    s-string(n)",    "     1:55    d-string(n)",      "     1:58    js-end",        "     1:58    css-start",
            "     1:58    css-end",        "     1:58    junk(<)",          "     1:59    end-parsing",
        }));
}

TYPED_TEST(TextObserverTest, TheKindIsColoured) {
    Tool::TextObserver<typename TypeParam::C, typename TypeParam::S> observer(&this->lines, &this->parser, true);
    this->ObserveEverything(&observer);
    const Lines all = this->lines.Take();
    ASSERT_EQ(all.size(), 23U);
    EXPECT_EQ(all[0], "     1:1     \x1B[2mstart-parsing\x1B[0m");
    EXPECT_EQ(all[3], "     1:1     \x1B[1mtext\x1B[0m(n)");
    EXPECT_EQ(all[4], "     1:2     \x1B[36mstart\x1B[0m(|n||)");
    EXPECT_EQ(all[7], "     1:13    \x1B[32mcomment\x1B[0m(n)");
    EXPECT_EQ(all[10], "     1:34    \x1B[35mentity\x1B[0m(|n||)");
    EXPECT_EQ(all[16], "     1:52    \x1B[33ms-string\x1B[0m(n)");
    EXPECT_EQ(all[21], "     1:58    \x1B[31mjunk\x1B[0m(<)");
}

TYPED_TEST(TextObserverTest, LongTextsAreCutWithTheirLength) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    Tool::TextObserver<C, S> observer(&this->lines, &this->parser, false);
    HTML::TextData<C, S> whole{this->Text(std::string(60, 'a'))};
    HTML::TextData<C, S> cut{this->Text(std::string(61, 'b'))};
    const std::string bytes(1000, 'c');
    HTML::JunkData<C, S> junk{&bytes};
    observer.OnText(&whole);
    observer.OnText(&cut);
    observer.OnJunkData(&junk);
    EXPECT_EQ(this->lines.Take(), (Lines{
                                      "     1:1     text(" + std::string(60, 'a') + ")",
                                      "     1:61    text(" + std::string(60, 'b') + "...[61])",
                                      "     1:122   junk(" + std::string(60, 'c') + "...[1000])",
                                  }));
}

TYPED_TEST(TextObserverTest, TheSummary) {
    Tool::TextObserver<typename TypeParam::C, typename TypeParam::S> observer(&this->lines, &this->parser, false);
    Tool::ParsePassResult result;
    observer.WriteSummary(result, 0, false);
    EXPECT_EQ(this->lines.Take(), (Lines{"bytes    0", "tokens   0", "charset  unknown", "result   0, success"}));

    this->ObserveEverything(&observer);
    this->lines.Take();
    result.charset = 65001;
    result.parse = 11;
    result.line = 2;
    result.column = 3;
    result.hasCharsetErrors = true;
    observer.WriteSummary(result, 1234, true);
    EXPECT_EQ(this->lines.Take(),
              (Lines{
                  "bytes    1234",
                  "tokens   15: text 1, start 1, short 1, end 1, comment 1, cdata 1, conditional 1, entity 1, extern 2, c-comment 1, "
                  "cpp-comment 1, s-string 1, d-string 1, junk 1",
                  "charset  65001 (UTF-8), found in a first pass, with decoding errors",
                  "result   parsing returned 11: malformed markup, a required part is missing or cannot be recognized (line 2, column 3)",
              }));

    result = {};
    result.charset = 4711;
    result.conversionError = 50;
    observer.WriteSummary(result, 2, false);
    EXPECT_EQ(this->lines.Take()[3],
              "result   tokens are missing, a conversion from the charset 4711 returned 50: there is no converter for the charset");

    result = {};
    result.charset = 1200;
    result.isWParser = true;
    observer.WriteSummary(result, 2, false);
    EXPECT_EQ(this->lines.Take()[2], "charset  1200 (UTF-16), 16-bit parser");
    result.charset = 4711;
    result.isWParser = false;
    observer.WriteSummary(result, 2, false);
    EXPECT_EQ(this->lines.Take()[2], "charset  4711");
}

TEST(TextObserverFlavours, LettersOutsideAscii) {
    KeptLines lines;
    const HTML::GenericParser parser;
    Tool::TextObserver<WideChar, WideString> wide(&lines, &parser, false);
    const WideString word = KESTRA_WIDE("\u00E9\u65E5\u0085");
    HTML::TextData<WideChar, WideString> wideText{&word};
    wide.OnText(&wideText);
    Tool::TextObserver<char, std::string> narrow(&lines, &parser, false);
    const std::string bytes = "\xE9\x1B";
    HTML::TextData<char, std::string> narrowText{&bytes};
    narrow.OnText(&narrowText);
    EXPECT_EQ(lines.Take(), (Lines{"     1:1     text(\xC3\xA9\xE6\x97\xA5\\u0085)", "     1:1     text(\\xE9\\x1B)"}));
}

}  // namespace
}  // namespace Kestra::Test
