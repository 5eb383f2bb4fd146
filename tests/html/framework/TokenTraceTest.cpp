#include "tools/trace/TokenTrace.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Flavours.h"
#include "tests/support/NotedRecord.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

template <typename Flavour>
class TokenTraceTest : public testing::Test {};

TYPED_TEST_SUITE(TokenTraceTest, Flavours);

TYPED_TEST(TokenTraceTest, EventsAndCharsets) {
    std::vector<std::string> lines;
    Trace::TraceObserver<typename TypeParam::C, typename TypeParam::S> observer(&lines);
    observer.OnStartParsing();
    observer.OnBOM("\xEF\xBB\xBF", 3);
    observer.OnBOM("\x0F", 1);
    observer.OnCharset(65001);
    observer.OnJSTagStart();
    observer.OnJSTagEnd();
    observer.OnCSSTagStart();
    observer.OnCSSTagEnd();
    observer.OnEndParsing();
    const std::vector<std::string> expected = {
        "start-parsing", "bom(EF BB BF)", "bom(0F)", "charset(65001)", "js-start",
        "js-end",        "css-start",     "css-end", "end-parsing",
    };
    EXPECT_EQ(lines, expected);
}

/// Records field by field, one of each list and flag; `RecordFieldsTest` reads such lines back.
TYPED_TEST(TokenTraceTest, Lines) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const S a = To<S>("a");
    const S blank = To<S>(" ");
    const S empty;
    const std::string junk = "<b\xE9\n";
    Vector<HTML::Attribute<C, S>> attributes;
    const Vector<HTML::Attribute<C, S>> none;
    for (const std::uint32_t quote : {0U, 1U, 2U, 3U})
        attributes.push_back({blank, a, empty, blank, To<S>("v"), quote, true});
    attributes.emplace_back().name = a;
    Vector<HTML::EntityToken<C, S>> tokens;
    for (const std::uint32_t quote : {0U, 1U, 2U, 3U})
        tokens.push_back({blank, a, quote});
    const auto format = [](const auto& record) { return Trace::Format(record); };
    EXPECT_EQ(format(HTML::TextData<C, S>{&a}), "text(a)");
    EXPECT_EQ(format(HTML::TextData<C, S>{nullptr}), "text(null)");
    EXPECT_EQ(format(HTML::CCommentData<C, S>{&a}), "c-comment(a)");
    EXPECT_EQ(format(HTML::CPPCommentData<C, S>{&a}), "cpp-comment(a)");
    EXPECT_EQ(format(HTML::SQuoteStringData<C, S>{&a}), "s-string(a)");
    EXPECT_EQ(format(HTML::DQuoteStringData<C, S>{&a}), "d-string(a)");
    EXPECT_EQ(format(HTML::JunkData<C, S>{&junk}), "junk(<b\\xE9\\n)");
    EXPECT_EQ(format(HTML::StartTagData<C, S>{&blank, &a, &attributes, &empty, true}),
              "start( |a|{ |a|= |v}{ |a|= |'v'}{ |a|= |\"v\"}{ |a|= |?v?}{|a}|)");
    EXPECT_EQ(format(HTML::StartTagData<C, S>{&empty, &a, &none, &blank, false}), "start(|a|| , open)");
    EXPECT_EQ(format(HTML::StartTagData<C, S>{nullptr, nullptr, nullptr, nullptr, true}), "start(null|null|null|null)");
    EXPECT_EQ(format(HTML::ShortTagData<C, S>{&empty, &a, &none, &empty, true}), "short(|a||)");
    EXPECT_EQ(format(HTML::ShortTagData<C, S>{&empty, &a, &none, &blank, false}), "short(|a|| , open)");
    EXPECT_EQ(format(HTML::EndTagData<C, S>{&empty, &a, &blank, true, &none, false, &empty}), "end(|a| ||)");
    EXPECT_EQ(format(HTML::EndTagData<C, S>{&empty, &a, &empty, false, nullptr, true, nullptr}),
              "end(|a||null|null, slash, open)");
    EXPECT_EQ(format(HTML::CDATATagData<C, S>{&a, &blank, true}), "cdata(a| )");
    EXPECT_EQ(format(HTML::CDATATagData<C, S>{&a, &blank, false}), "cdata(a| , open)");
    EXPECT_EQ(format(HTML::ConditionalTagData<C, S>{&a, &blank, &empty, true, true}), "conditional(a| |)");
    EXPECT_EQ(format(HTML::ConditionalTagData<C, S>{&a, &blank, &empty, false, false}),
              "conditional(a| |, no-bracket, open)");
    EXPECT_EQ(format(HTML::CommentTagData<C, S>{&a, true}), "comment(a)");
    EXPECT_EQ(format(HTML::CommentTagData<C, S>{&a, false}), "comment(a, open)");
    EXPECT_EQ(format(HTML::EntityTagData<C, S>{&blank, &a, &tokens, &empty}),
              "entity( |a|{ |a}{ |'a'}{ |\"a\"}{ |?a?}|)");
    EXPECT_EQ(format(HTML::ExternTagData<C, S>{&empty, &a, &none, &blank, false, &a, false}), "extern(|a|| )");
    EXPECT_EQ(format(HTML::ExternTagData<C, S>{&empty, &a, &none, &blank, false, &a, true}), "extern(|a|| , slash)");
    EXPECT_EQ(format(HTML::ExternTagData<C, S>{&empty, &a, &none, &blank, true, &a, true}), "extern-text(a)");
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
    const NotedRecord<HTML::StartTagData, typename TypeParam::C, S> tag("start(|long|{|long}|)");
    EXPECT_EQ(Trace::Format(tag.record, options), "start(|l...[4]|{|l...[4]}|)");
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
    // Controls, soft hyphen, marks of direction, separators of lines, byte-order mark,
    // noncharacters.
    const WideString text = {0x0085, 0x009F, 0x00AD, 0x061C, 0x200B, 0x200F,
                             0x2028, 0x202E, 0x2066, 0xFDD0, 0xFEFF, 0xFFFE};
    EXPECT_EQ(Trace::Escape(text, options),
              "\\u0085\\u009F\\u00AD\\u061C\\u200B\\u200F\\u2028\\u202E\\u2066\\uFDD0\\uFEFF\\uFFFE");
    EXPECT_EQ(Trace::Escape(WideString{0xDB40, 0xDC01, 0xD83F, 0xDFFE}, options), "\\uDB40\\uDC01\\uD83F\\uDFFE")
        << "a tag and U+1FFFE";
    EXPECT_EQ(Trace::Escape(WideString{0x00A0, 0x2010, 0xE000, 0xFFFD}, options),
              "\xC2\xA0\xE2\x80\x90\xEE\x80\x80\xEF\xBF\xBD");
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
