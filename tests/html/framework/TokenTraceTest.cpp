#include "tools/trace/TokenTrace.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Flavours.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

template <typename Flavour>
class TokenTraceTest : public testing::Test {};

TYPED_TEST_SUITE(TokenTraceTest, Flavours);

TYPED_TEST(TokenTraceTest, Lines) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const S a = To<S>("a");
    const S blank = To<S>(" ");
    const S empty;
    const std::string junk = "<b\xE9\n";
    Vector<HTML::Attribute<C, S>> attributes;
    const Vector<HTML::Attribute<C, S>> none;
    for (const std::uint32_t quote : {0U, 1U, 2U, 3U}) {
        HTML::Attribute<C, S>& attribute = attributes.emplace_back();
        attribute.prefix = blank;
        attribute.name = a;
        attribute.afterEquals = blank;
        attribute.value = To<S>("v");
        attribute.quote = quote;
        attribute.hasValue = true;
    }
    attributes.emplace_back().name = a;
    Vector<HTML::EntityToken<C, S>> tokens;
    for (const std::uint32_t quote : {0U, 1U, 2U, 3U}) {
        HTML::EntityToken<C, S>& token = tokens.emplace_back();
        token.prefix = blank;
        token.value = a;
        token.quote = quote;
    }

    HTML::TextData<C, S> text = {&a};
    HTML::TextData<C, S> nullText = {nullptr};
    HTML::CCommentData<C, S> cComment = {&a};
    HTML::CPPCommentData<C, S> cppComment = {&a};
    HTML::SQuoteStringData<C, S> sQuoteString = {&a};
    HTML::DQuoteStringData<C, S> dQuoteString = {&a};
    HTML::JunkData<C, S> junkData = {&junk};
    HTML::StartTagData<C, S> startTag = {&blank, &a, &attributes, &empty, true};
    HTML::StartTagData<C, S> openStartTag = {&empty, &a, &none, &blank, false};
    HTML::StartTagData<C, S> nullStartTag = {nullptr, nullptr, nullptr, nullptr, true};
    HTML::ShortTagData<C, S> shortTag = {&empty, &a, &none, &empty, true};
    HTML::ShortTagData<C, S> openShortTag = {&empty, &a, &none, &blank, false};
    HTML::EndTagData<C, S> endTag = {&empty, &a, &blank, true, &none, false, &empty};
    HTML::EndTagData<C, S> openEndTag = {&empty, &a, &empty, false, nullptr, true, nullptr};
    HTML::CDATATagData<C, S> cdataTag = {&a, &blank, true};
    HTML::CDATATagData<C, S> openCdataTag = {&a, &blank, false};
    HTML::ConditionalTagData<C, S> conditionalTag = {&a, &blank, &empty, true, true};
    HTML::ConditionalTagData<C, S> openConditionalTag = {&a, &blank, &empty, false, false};
    HTML::CommentTagData<C, S> commentTag = {&a, true};
    HTML::CommentTagData<C, S> openCommentTag = {&a, false};
    HTML::EntityTagData<C, S> entityTag = {&blank, &a, &tokens, &empty};
    HTML::ExternTagData<C, S> externTag = {&empty, &a, &none, &blank, false, &a, false};
    HTML::ExternTagData<C, S> slashExternTag = {&empty, &a, &none, &blank, false, &a, true};
    HTML::ExternTagData<C, S> freeExternTag = {&empty, &a, &none, &blank, true, &a, true};

    std::vector<std::string> lines;
    Trace::TraceObserver<C, S> observer(&lines);
    observer.OnStartParsing();
    observer.OnBOM("\xEF\xBB\xBF", 3);
    observer.OnBOM("\x0F", 1);
    observer.OnCharset(65001);
    observer.OnText(&text);
    observer.OnText(&nullText);
    observer.OnCComment(&cComment);
    observer.OnCPPComment(&cppComment);
    observer.OnSQuoteString(&sQuoteString);
    observer.OnDQuoteString(&dQuoteString);
    observer.OnJunkData(&junkData);
    observer.OnStartTag(&startTag);
    observer.OnStartTag(&openStartTag);
    observer.OnStartTag(&nullStartTag);
    observer.OnShortTag(&shortTag);
    observer.OnShortTag(&openShortTag);
    observer.OnEndTag(&endTag);
    observer.OnEndTag(&openEndTag);
    observer.OnCDATATag(&cdataTag);
    observer.OnCDATATag(&openCdataTag);
    observer.OnConditionalTag(&conditionalTag);
    observer.OnConditionalTag(&openConditionalTag);
    observer.OnCommentTag(&commentTag);
    observer.OnCommentTag(&openCommentTag);
    observer.OnEntityTag(&entityTag);
    observer.OnExternTag(&externTag);
    observer.OnExternTag(&slashExternTag);
    observer.OnExternTag(&freeExternTag);
    observer.OnJSTagStart();
    observer.OnJSTagEnd();
    observer.OnCSSTagStart();
    observer.OnCSSTagEnd();
    observer.OnEndParsing();
    const std::vector<std::string> expected = {
        "start-parsing",
        "bom(EF BB BF)",
        "bom(0F)",
        "charset(65001)",
        "text(a)",
        "text(null)",
        "c-comment(a)",
        "cpp-comment(a)",
        "s-string(a)",
        "d-string(a)",
        "junk(<b\\xE9\\n)",
        "start( |a|{ |a|= |v}{ |a|= |'v'}{ |a|= |\"v\"}{ |a|= |?v?}{|a}|)",
        "start(|a|| , open)",
        "start(null|null|null|null)",
        "short(|a||)",
        "short(|a|| , open)",
        "end(|a| ||)",
        "end(|a||null|null, slash, open)",
        "cdata(a| )",
        "cdata(a| , open)",
        "conditional(a| |)",
        "conditional(a| |, no-bracket, open)",
        "comment(a)",
        "comment(a, open)",
        "entity( |a|{ |a}{ |'a'}{ |\"a\"}{ |?a?}|)",
        "extern(|a|| )",
        "extern(|a|| , slash)",
        "extern-text(a)",
        "js-start",
        "js-end",
        "css-start",
        "css-end",
        "end-parsing",
    };
    EXPECT_EQ(lines, expected);
}

TYPED_TEST(TokenTraceTest, AsciiEscapes) {
    using S = typename TypeParam::S;
    EXPECT_EQ(Trace::Escape(To<S>("")), "");
    EXPECT_EQ(Trace::Escape(To<S>(" a|{}()'\"~")), " a|{}()'\"~");
    EXPECT_EQ(Trace::Escape(To<S>("\\ \n\r\t"sv)), "\\\\ \\n\\r\\t");
    EXPECT_EQ(Trace::Escape(To<S>("\0\x01\x1B\x1F\x7F"sv)), "\\x00\\x01\\x1B\\x1F\\x7F");
}

TYPED_TEST(TokenTraceTest, LongStringsAreCut) {
    using S = typename TypeParam::S;
    Trace::Options options;
    EXPECT_EQ(Trace::Escape(To<S>("abcdef"), options), "abcdef");
    options.cutAt = 3;
    EXPECT_EQ(Trace::Escape(To<S>("abc"), options), "abc");
    EXPECT_EQ(Trace::Escape(To<S>("abcd"), options), "abc...[4]");
    EXPECT_EQ(Trace::Escape(To<S>("\n\n\n\n\n"), options), "\\n\\n\\n...[5]") << "characters are counted, not escapes";
    options.cutAt = 1;
    EXPECT_EQ(Trace::Escape(To<S>("ab"), options), "a...[2]");
    const S name = To<S>("long");
    const S empty;
    Vector<HTML::Attribute<typename TypeParam::C, S>> attributes;
    attributes.emplace_back().name = name;
    const HTML::StartTagData<typename TypeParam::C, S> tag = {&empty, &name, &attributes, &empty, true};
    EXPECT_EQ(Trace::Format(tag, options), "start(|l...[4]|{|l...[4]}|)");
}

TEST(TokenTraceTest, CharactersBeyondAscii) {
    EXPECT_EQ(Trace::Escape("\x80\xE9\xFF"sv), "\\x80\\xE9\\xFF");
    const WideString text = {0x0080, 0x00E9, 0x3042, 0xD83D, 0xDE00, 0xFFFF};
    EXPECT_EQ(Trace::Escape(text), "\\u0080\\u00E9\\u3042\\uD83D\\uDE00\\uFFFF");
    Trace::Options options;
    options.utf8 = true;
    EXPECT_EQ(Trace::Escape("\xC3\xA9"sv, options), "\\xC3\\xA9") << "bytes have no charset here";
    EXPECT_EQ(Trace::Escape(text, options), "\\u0080\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80\\uFFFF");
}

TEST(TokenTraceTest, WhatCannotBeSeenStaysEscaped) {
    Trace::Options options;
    options.utf8 = true;
    // Controls, soft hyphen, marks of direction, separators of lines, byte-order mark, noncharacters.
    const WideString text = {0x0085, 0x009F, 0x00AD, 0x061C, 0x200B, 0x200F, 0x2028, 0x202E, 0x2066, 0xFDD0, 0xFEFF, 0xFFFE};
    EXPECT_EQ(Trace::Escape(text, options), "\\u0085\\u009F\\u00AD\\u061C\\u200B\\u200F\\u2028\\u202E\\u2066\\uFDD0\\uFEFF\\uFFFE");
    EXPECT_EQ(Trace::Escape(WideString{0xDB40, 0xDC01, 0xD83F, 0xDFFE}, options), "\\uDB40\\uDC01\\uD83F\\uDFFE") << "a tag and U+1FFFE";
    EXPECT_EQ(Trace::Escape(WideString{0x00A0, 0x2010, 0xE000, 0xFFFD}, options), "\xC2\xA0\xE2\x80\x90\xEE\x80\x80\xEF\xBF\xBD");
}

TEST(TokenTraceTest, LoneSurrogatesStayEscaped) {
    Trace::Options options;
    options.utf8 = true;
    EXPECT_EQ(Trace::Escape(WideString{0xD83D}, options), "\\uD83D");
    EXPECT_EQ(Trace::Escape(WideString{0xD83D, 'a'}, options), "\\uD83Da");
    EXPECT_EQ(Trace::Escape(WideString{0xDE00, 0xD83D}, options), "\\uDE00\\uD83D");
    EXPECT_EQ(Trace::Escape(WideString{0xD83D, 0xD83D, 0xDE00}, options), "\\uD83D\xF0\x9F\x98\x80");
}

TEST(TokenTraceTest, ACutNeverPartsAPair) {
    Trace::Options options;
    options.utf8 = true;
    options.cutAt = 1;
    EXPECT_EQ(Trace::Escape(WideString{0xD83D, 0xDE00, 'b'}, options), "\xF0\x9F\x98\x80...[3]");
    EXPECT_EQ(Trace::Escape(WideString{0xD83D, 'b'}, options), "\\uD83D...[2]");
}

TEST(TokenTraceTest, Events) {
    EXPECT_EQ(Trace::Format(HTML::ObserverEvent::StartParsing), "start-parsing");
    EXPECT_EQ(Trace::Format(HTML::ObserverEvent::CSSTagEnd), "css-end");
    EXPECT_EQ(Trace::FormatBOM("\xFF\xFE", 2), "bom(FF FE)");
    EXPECT_EQ(Trace::FormatBOM("", 0), "bom()");
    EXPECT_EQ(Trace::FormatCharset(0), "charset(0)");
}

}  // namespace
}  // namespace Kestra::Test
