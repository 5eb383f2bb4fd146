#include "html/framework/RecordFields.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/TokenObserver.h"
#include "tests/support/Flavours.h"
#include "tests/support/NotedRecord.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {
namespace {

/// Records in the trace language, beside those that are made from the list.
const std::string_view LINES[] = {
    "text(a<b)",
    "text()",
    "text(null)",
    "text(\\\\ \\n\\r\\t\\x00\\x1B\\x7F)",
    "c-comment( c )",
    "cpp-comment( c)",
    "s-string(s\\\\')",
    "d-string(d\\\\\")",
    "junk(<b\\xE9\\n)",
    "junk(null)",
    "start( |a|{ |a|= |v}{ |a|\\t= |'v'}{ |a|=|\"v\"}{ |a|=|?v?}{|a}{ |}| )",
    "start(|a||)",
    "start(|a|| , open)",
    "start(null|null|null|null)",
    "start(||{ |a|=|''}{ |a|=|'}{ |a|=|}|)",
    "short(|br||)",
    "short( |br|{ |a}| , open)",
    "end(|a| ||)",
    "end(|a| |{|b}|\\n, slash)",
    "end(|a||null|null, open)",
    "end(|a||null|null, slash, open)",
    "cdata(CDATA|[x)",
    "cdata(CDATA|[x], open)",
    "conditional(if| IE 6|)",
    "conditional(if| IE 6|t, open)",
    "conditional(if| IE 6|, no-bracket, open)",
    "conditional(null|null|null, no-bracket)",
    "comment( c-)",
    "comment(a, b, open)",
    "entity( |DOCTYPE|{ |html}{\\n|'a'}{|\"b\"}{ |?a?}|)",
    "entity(|m|null|)",
    "extern(|xml|{ |version|=|'1.0'}| )",
    "extern(|xml|| , slash)",
    "extern-text(<?php a ?>)",
    "extern-text(null)",
};

template <typename Flavour>
class RecordFieldsTest : public testing::Test {};

TYPED_TEST_SUITE(RecordFieldsTest, Flavours);

TYPED_TEST(RecordFieldsTest, ARecordOfALineIsTracedAsThisLine) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    std::vector<std::string> lines(std::begin(LINES), std::end(LINES));
    const std::vector<std::string> made = MakeLinesOfEveryKind();
    lines.insert(lines.end(), made.begin(), made.end());
    EXPECT_GE(made.size(), 14U);
    for (const std::string& line : lines) {
        SCOPED_TRACE(line);
        int records = 0;
        UseNotedRecord<C, S>(line, [&](const auto* record) {
            ++records;
            EXPECT_EQ(Trace::Format(*record), line);
        });
        EXPECT_EQ(records, 1);
        std::vector<std::string> traced;
        Trace::TraceObserver<C, S> observer(&traced);
        CallNoted<C, S>(&observer, line);
        EXPECT_EQ(traced, std::vector<std::string>{line});
    }
}

TYPED_TEST(RecordFieldsTest, EscapesAreCharacters) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const NotedRecord<HTML::StartTagData, C, S> tag("start(\\x7C|\\x6Eull|{ |\\x7D|=|\\x22a\\x22}{|x|=|'\\xE9'}|)");
    EXPECT_EQ(*tag.record.prefix, To<S>("|"));
    EXPECT_EQ(*tag.record.name, To<S>("null"));
    ASSERT_EQ(tag.record.attributes->size(), 2U);
    EXPECT_EQ(tag.record.attributes->front().name, To<S>("}"));
    EXPECT_EQ(tag.record.attributes->front().value, To<S>("\"a\""));
    EXPECT_EQ(tag.record.attributes->front().quote, HTML::QUOTE_NONE);
    EXPECT_EQ(tag.record.attributes->back().value, To<S>("\xE9"));
    EXPECT_EQ(tag.record.attributes->back().quote, HTML::QUOTE_SINGLE);
}

TEST(RecordFieldsTest, UnitsOfTheWideFlavour) {
    const NotedRecord<HTML::TextData, WideChar, WideString> text("text(\\u3042\\uD83D\\uDE00\\x80)");
    EXPECT_EQ(*text.record.text, (WideString{0x3042, 0xD83D, 0xDE00, 0x80}));
}

TYPED_TEST(RecordFieldsTest, WhatIsNoLineIsRefused) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    struct Case {
        const char* note;
        std::string_view line;
    };
    const Case CASES[] = {
        {"nothing", ""},
        {"no such kind", "tag(a)"},
        {"an event", "js-start"},
        {"no end", "text(a"},
        {"a parameter too many", "text(a|b)"},
        {"a parameter too few", "start(|a|)"},
        {"no list", "start(|a|b|)"},
        {"an attribute without its end", "start(|a|{ |b|)"},
        {"a value without its equals sign", "start(|a|{ |b|c}|)"},
        {"an unknown escape", "text(\\q)"},
        {"an escape without its digits", "text(\\x4)"},
        {"an escape at the end", "text(a\\)"},
    };
    for (const Case& c : CASES) {
        const auto use = [](auto* record) { ADD_FAILURE() << "is taken as " << Trace::Format(*record); };
        SCOPED_TRACE(c.note);
        EXPECT_THROW((UseNotedRecord<C, S>(c.line, use)), std::invalid_argument);
    }
}

TEST(RecordFieldsTest, LinesAreMadeFromTheList) {
    const std::vector<std::string> made = MakeLinesOfEveryKind();
    const std::string_view LISTS[] = {"{ |n|\\t=\\n|v}{\\r|o|=|'w'}{|p|=|\"x\"}{ |q}", "{ |v}{\\n|'w'}{|\"x\"}"};
    const std::string attributes(LISTS[0]);
    for (const std::string& line :
         {std::string("text(a)"), "end(a|b|c|" + attributes + "|d)", "end(a|b|c|" + attributes + "|d, open)",
          "end(a|b|c|" + attributes + "|d, slash)", std::string("conditional(a|b|c, no-bracket)"),
          "entity(a|b|" + std::string(LISTS[1]) + "|c)", "extern(a|b|" + attributes + "|c)",
          "extern(a|b|" + attributes + "|c, slash)", std::string("extern-text(a)"), std::string("junk(a)")})
        EXPECT_EQ(std::count(made.begin(), made.end(), line), 1) << line;
}

/// The kinds as programs know them.
TEST(RecordFieldsTest, KindsHaveTheirNumbers) {
    EXPECT_EQ(HTML::RecordKind<HTML::TextData>::KIND_OF_TOKEN, HTML::TOKEN_TEXT);
    EXPECT_EQ(HTML::RecordKind<HTML::CCommentData>::KIND_OF_TOKEN, HTML::TOKEN_C_COMMENT);
    EXPECT_EQ(HTML::RecordKind<HTML::CPPCommentData>::KIND_OF_TOKEN, HTML::TOKEN_CPP_COMMENT);
    EXPECT_EQ(HTML::RecordKind<HTML::SQuoteStringData>::KIND_OF_TOKEN, HTML::TOKEN_S_QUOTE_STRING);
    EXPECT_EQ(HTML::RecordKind<HTML::DQuoteStringData>::KIND_OF_TOKEN, HTML::TOKEN_D_QUOTE_STRING);
    EXPECT_EQ(HTML::RecordKind<HTML::StartTagData>::KIND_OF_TOKEN, HTML::TOKEN_START_TAG);
    EXPECT_EQ(HTML::RecordKind<HTML::ShortTagData>::KIND_OF_TOKEN, HTML::TOKEN_SHORT_TAG);
    EXPECT_EQ(HTML::RecordKind<HTML::EndTagData>::KIND_OF_TOKEN, HTML::TOKEN_END_TAG);
    EXPECT_EQ(HTML::RecordKind<HTML::CDATATagData>::KIND_OF_TOKEN, HTML::TOKEN_CDATA_TAG);
    EXPECT_EQ(HTML::RecordKind<HTML::ConditionalTagData>::KIND_OF_TOKEN, HTML::TOKEN_CONDITIONAL_TAG);
    EXPECT_EQ(HTML::RecordKind<HTML::CommentTagData>::KIND_OF_TOKEN, HTML::TOKEN_COMMENT_TAG);
    EXPECT_EQ(HTML::RecordKind<HTML::EntityTagData>::KIND_OF_TOKEN, HTML::TOKEN_ENTITY_TAG);
    EXPECT_EQ(HTML::RecordKind<HTML::ExternTagData>::KIND_OF_TOKEN, HTML::TOKEN_EXTERN_TAG);
    EXPECT_EQ(HTML::RecordKind<HTML::JunkData>::KIND_OF_TOKEN, HTML::TOKEN_JUNK);
}

/// Counts what it gets, by kind; each kind has a callback of its own.
template <typename C, typename S>
class KindList final : public HTML::EventObserver<KindList<C, S>, C, S> {
public:
    template <template <typename, typename> class Record>
    void OnToken(Record<C, S>*) {
        words.emplace_back(HTML::RecordKind<Record>::WORD);
    }

    void OnEvent(HTML::ObserverEvent event) {
        words.emplace_back(HTML::GetEventNames(event).word);
    }

    std::vector<std::string> words;
};

TYPED_TEST(RecordFieldsTest, EveryCallbackIsOfItsKind) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    KindList<C, S> list;
    HTML::ParserObserver<C, S>* const observer = &list;
    std::vector<std::string> expected;
    HTML::ForEachKind([&]<template <typename, typename> class Record>() {
        Record<C, S> record{};
        HTML::CallObserver(observer, &record);
        expected.emplace_back(HTML::RecordKind<Record>::WORD);
    });
    observer->OnStartParsing();
    observer->OnJSTagStart();
    observer->OnJSTagEnd();
    observer->OnCSSTagStart();
    observer->OnCSSTagEnd();
    observer->OnEndParsing();
    expected.insert(expected.end(), {"start-parsing", "js-start", "js-end", "css-start", "css-end", "end-parsing"});
    EXPECT_EQ(list.words, expected);
}

}  // namespace
}  // namespace Kestra::Test
