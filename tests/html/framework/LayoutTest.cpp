#include "tests/support/Layout.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/framework/ParserObserver.h"
#include "html/framework/SimpleParser.h"
#include "html/framework/SimpleParserContext.h"
#include "html/framework/TokenRecords.h"
#include "html/output/ParserObserverOutput.h"
#include "html/output/ParserObserverOutputHandler.h"
#include "html/output/ParserSelfCheck.h"
#include "html/output/StringOutputStreamParserObserverOutputHandler.h"
#include "tests/support/Flavours.h"
#include "tests/support/Recognizers.h"

namespace Kestra::Test {
namespace {

constexpr std::size_t POLYMORPHIC = sizeof(void*);  // what an object without fields but with virtual operations takes
constexpr std::size_t AFTER_DESTRUCTOR = 2;         // a virtual destructor takes two slots

template <typename Flavour>
class LayoutTest : public testing::Test {};

TYPED_TEST_SUITE(LayoutTest, Flavours);

TYPED_TEST(LayoutTest, Context) {
    using C = typename TypeParam::C;
    using Record = HTML::SimpleParserContext<C, typename TypeParam::S>;
    static_assert(!std::is_polymorphic_v<Record>);
    static_assert(sizeof(Record) == 40, "five fields of 64 bits");
    const Record record;
    FieldWalk<Record> walk(record, 0);
    walk.Next("buffer", record.buffer).Next("position", record.position).Next("length", record.length);
    walk.Next("line", record.line).Next("column", record.column).Last();
    static_assert(std::is_same_v<decltype(record.position), std::uint64_t> &&
                  std::is_same_v<decltype(record.length), std::uint64_t>);
    static_assert(std::is_same_v<decltype(record.line), std::uint64_t> &&
                  std::is_same_v<decltype(record.column), std::uint64_t>);
    static_assert(std::is_same_v<decltype(record.buffer), const C*>);
}

TYPED_TEST(LayoutTest, AttributeAndEntityToken) {
    ExpectFieldsOfList<HTML::Attribute, typename TypeParam::C, typename TypeParam::S>(0);
    ExpectFieldsOfList<HTML::EntityToken, typename TypeParam::C, typename TypeParam::S>(0);
}

TYPED_TEST(LayoutTest, TokenRecords) {
    std::size_t kinds = 0;
    HTML::ForEachKind([&kinds]<template <typename, typename> class Record>() {
        SCOPED_TRACE(HTML::RecordKind<Record>::NAME);
        ExpectFieldsOfList<Record, typename TypeParam::C, typename TypeParam::S>(0);
        ++kinds;
    });
    EXPECT_GE(kinds, 14U);
}

template <template <typename, typename> class Data, typename C, typename S>
void CheckStateRecord(const Data<C, S>*) {
    ExpectFieldsOfList<Data, C, S>(POLYMORPHIC);
}

TYPED_TEST(LayoutTest, StateRecords) {
    ForEachRecognizer<TypeParam>([]<typename Parser>(std::string_view) {
        CheckStateRecord(static_cast<const typename Parser::Data*>(nullptr));
    });
}

/// What holds for each recognizer and its record.
template <template <typename, typename> class Parser, template <typename, typename> class Data, typename C, typename S>
void CheckRecognizerClass(const Parser<C, S>*, const Data<C, S>*) {
    using P = Parser<C, S>;
    using D = Data<C, S>;
    static_assert(std::is_same_v<typename P::Data, D>);
    static_assert(std::is_base_of_v<HTML::SimpleParser<C, S, D>, P>);
    static_assert(std::is_base_of_v<HTML::SimpleParserData<C, S>, D>);
    static_assert(std::has_virtual_destructor_v<P> && std::has_virtual_destructor_v<D>);
    static_assert(std::is_default_constructible_v<P> && std::is_copy_constructible_v<P> &&
                  std::is_copy_assignable_v<P>);
    static_assert(std::is_default_constructible_v<D> && std::is_copy_constructible_v<D> &&
                  std::is_copy_assignable_v<D>);
    static_assert(std::is_same_v<decltype(&P::BeginParse), std::uint32_t (P::*)(D*)>);
    static_assert(std::is_same_v<decltype(&P::Parse), std::uint32_t (P::*)(HTML::SimpleParserContext<C, S>*, D*)>);
    static_assert(std::is_same_v<decltype(&P::EndParse), std::uint32_t (P::*)(D*)>);
    EXPECT_EQ(SlotOf(&P::BeginParse), AFTER_DESTRUCTOR);
    EXPECT_EQ(SlotOf(&P::Parse), AFTER_DESTRUCTOR + 1);
    EXPECT_EQ(SlotOf(&P::EndParse), AFTER_DESTRUCTOR + 2);

    using Base = HTML::SimpleParser<C, S, D>;
    static_assert(std::is_abstract_v<Base> && std::has_virtual_destructor_v<Base>);
    static_assert(sizeof(Base) == POLYMORPHIC);
    EXPECT_EQ(SlotOf(&Base::BeginParse), AFTER_DESTRUCTOR);
    EXPECT_EQ(SlotOf(&Base::Parse), AFTER_DESTRUCTOR + 1);
    EXPECT_EQ(SlotOf(&Base::EndParse), AFTER_DESTRUCTOR + 2);

    // Through the base as well: the slots lead to the operations of their names.
    P parser;
    D data;
    Base& base = parser;
    EXPECT_EQ(base.BeginParse(&data), HTML::SP_NEED_MORE_DATA);
    HTML::SimpleParserContext<C, S> context;
    EXPECT_EQ(base.Parse(&context, &data), HTML::SP_NEED_MORE_DATA);
    EXPECT_TRUE(base.EndParse(&data) == HTML::SP_TOKEN_COMPLETE || base.EndParse(&data) == HTML::SP_UNTERMINATED);
}

TYPED_TEST(LayoutTest, RecognizerClasses) {
    ForEachRecognizer<TypeParam>([]<typename Parser>(std::string_view) {
        CheckRecognizerClass(static_cast<const Parser*>(nullptr), static_cast<const typename Parser::Data*>(nullptr));
    });
    static_assert(sizeof(HTML::SimpleParserData<typename TypeParam::C, typename TypeParam::S>) == POLYMORPHIC);
    static_assert(std::has_virtual_destructor_v<HTML::SimpleParserData<typename TypeParam::C, typename TypeParam::S>>);
}

TYPED_TEST(LayoutTest, MembersOfRecognizers) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using Escape = HTML::Escape2022SimpleParser<C, S>;
    using EscapeData = HTML::Escape2022SimpleParserData<C, S>;
    using WhiteSpace = HTML::WhiteSpaceSimpleParser<C, S>;
    using WhiteSpaceData = HTML::WhiteSpaceSimpleParserData<C, S>;
    using SQuote = HTML::SQuoteStringSimpleParser<C, S>;
    using SQuoteData = HTML::SQuoteStringSimpleParserData<C, S>;
    using DQuote = HTML::DQuoteStringSimpleParser<C, S>;
    using DQuoteData = HTML::DQuoteStringSimpleParserData<C, S>;
    using Identifier = HTML::IdentifierSimpleParser<C, S>;
    using IdentifierData = HTML::IdentifierSimpleParserData<C, S>;
    using Token = HTML::TokenSimpleParser<C, S>;
    using TokenData = HTML::TokenSimpleParserData<C, S>;
    using Attribute = HTML::AttributeSimpleParser<C, S>;
    using AttributeData = HTML::AttributeSimpleParserData<C, S>;
    ExpectMembers<WhiteSpace>();
    ExpectMembers<SQuote>();
    ExpectMembers<HTML::JSRegExSimpleParser<C, S>>();
    ExpectMembers<Escape>();
    ExpectMembers<HTML::JunkSimpleParser<C, S>>();
    ExpectMembers<Identifier>();
    ExpectMembers<HTML::TextSimpleParser<C, S>, Escape, EscapeData>();
    ExpectMembers<DQuote, Escape, EscapeData>();
    ExpectMembers<Token, WhiteSpace, WhiteSpaceData, SQuote, SQuoteData, DQuote, DQuoteData>();
    ExpectMembers<Attribute, Identifier, IdentifierData, WhiteSpace, WhiteSpaceData, Token, TokenData>();
    using Generic = HTML::GenericTagSimpleParser<C, S>;
    using GenericData = HTML::GenericTagSimpleParserData<C, S>;
    using FreeStyle = HTML::ExternTagFreeStyleSimpleParser<C, S>;
    using FreeStyleData = HTML::ExternTagFreeStyleSimpleParserData<C, S>;
    ExpectMembers<Generic, Identifier, IdentifierData>();
    ExpectMembersAndSetting<std::size_t, HTML::StartTagSimpleParser<C, S>, Identifier, IdentifierData, WhiteSpace,
                            WhiteSpaceData, Attribute, AttributeData>();
    ExpectMembersAndSetting<std::size_t, HTML::EndTagSimpleParser<C, S>, Identifier, IdentifierData, WhiteSpace,
                            WhiteSpaceData, Attribute, AttributeData>();
    ExpectMembers<HTML::CommentTagSimpleParser<C, S>>();
    ExpectMembers<HTML::CDATATagSimpleParser<C, S>>();
    ExpectMembersAndSetting<bool, HTML::ConditionalTagSimpleParser<C, S>>();
    ExpectMembers<HTML::CCommentSimpleParser<C, S>, Generic, GenericData>();
    ExpectMembers<HTML::CPPCommentSimpleParser<C, S>, Generic, GenericData>();
    ExpectMembersAndSetting<std::size_t, HTML::EntityTagSimpleParser<C, S>, Identifier, IdentifierData, WhiteSpace,
                            WhiteSpaceData, Token, TokenData>();
    ExpectMembers<FreeStyle, SQuote, SQuoteData, DQuote, DQuoteData>();
    ExpectMembersAndSetting<std::size_t, HTML::ExternTagSimpleParser<C, S>, Identifier, IdentifierData, WhiteSpace,
                            WhiteSpaceData, Attribute, AttributeData, FreeStyle, FreeStyleData>();
}

/// The 22 operations of an observer, in their order.
template <typename Observer>
void CheckObserverSlots() {
    EXPECT_EQ(SlotOf(&Observer::OnStartParsing), 0U);
    EXPECT_EQ(SlotOf(&Observer::OnEndParsing), 1U);
    EXPECT_EQ(SlotOf(&Observer::OnBOM), 2U);
    EXPECT_EQ(SlotOf(&Observer::OnCharset), 3U);
    EXPECT_EQ(SlotOf(&Observer::OnText), 4U);
    EXPECT_EQ(SlotOf(&Observer::OnCComment), 5U);
    EXPECT_EQ(SlotOf(&Observer::OnCPPComment), 6U);
    EXPECT_EQ(SlotOf(&Observer::OnSQuoteString), 7U);
    EXPECT_EQ(SlotOf(&Observer::OnDQuoteString), 8U);
    EXPECT_EQ(SlotOf(&Observer::OnStartTag), 9U);
    EXPECT_EQ(SlotOf(&Observer::OnShortTag), 10U);
    EXPECT_EQ(SlotOf(&Observer::OnEndTag), 11U);
    EXPECT_EQ(SlotOf(&Observer::OnCDATATag), 12U);
    EXPECT_EQ(SlotOf(&Observer::OnConditionalTag), 13U);
    EXPECT_EQ(SlotOf(&Observer::OnCommentTag), 14U);
    EXPECT_EQ(SlotOf(&Observer::OnEntityTag), 15U);
    EXPECT_EQ(SlotOf(&Observer::OnExternTag), 16U);
    EXPECT_EQ(SlotOf(&Observer::OnJSTagStart), 17U);
    EXPECT_EQ(SlotOf(&Observer::OnJSTagEnd), 18U);
    EXPECT_EQ(SlotOf(&Observer::OnCSSTagStart), 19U);
    EXPECT_EQ(SlotOf(&Observer::OnCSSTagEnd), 20U);
    EXPECT_EQ(SlotOf(&Observer::OnJunkData), 21U);
}

TYPED_TEST(LayoutTest, Observers) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using Observer = HTML::ParserObserver<C, S>;
    CheckObserverSlots<Observer>();
    static_assert(sizeof(Observer) == POLYMORPHIC);
    static_assert(!std::has_virtual_destructor_v<Observer>);
    static_assert(std::is_default_constructible_v<Observer> && std::is_copy_constructible_v<Observer>);
    static_assert(std::is_copy_assignable_v<Observer>);
    static_assert(std::is_same_v<decltype(&Observer::OnBOM), void (Observer::*)(const void*, std::uint64_t)>);
    static_assert(std::is_same_v<decltype(&Observer::OnCharset), void (Observer::*)(StringNS::CharSet::Code)>);
    static_assert(std::is_same_v<decltype(&Observer::OnJunkData), void (Observer::*)(HTML::JunkData<C, S>*)>);

    using Output = HTML::ParserObserverOutput<C, S>;
    CheckObserverSlots<Output>();
    EXPECT_EQ(SlotOf(&Output::OnOutput), 22U);
    static_assert(!std::has_virtual_destructor_v<Output>);

    // The self-check writes through `OnOutput`; its destructor and `Reset` stand after everything
    // that an observer has.
    using SelfCheck = HTML::ParserSelfCheck<C, S>;
    CheckObserverSlots<SelfCheck>();
    EXPECT_EQ(SlotOf(&SelfCheck::OnOutput), 22U);
    EXPECT_EQ(SlotOf(&SelfCheck::Reset), 23U + AFTER_DESTRUCTOR);
    static_assert(std::is_base_of_v<Output, SelfCheck>);
    static_assert(std::has_virtual_destructor_v<SelfCheck>);
    static_assert(std::is_same_v<decltype(&SelfCheck::Reset), void (SelfCheck::*)(bool)>);
}

TEST(LayoutTest, ObserversOfHosts) {
    CheckObserverSlots<HTML::GenericParserObserver>();
    CheckObserverSlots<HTML::GenericParserObserverOutput>();
    EXPECT_EQ(SlotOf(&HTML::GenericParserObserverOutput::OnOutput), 22U);
    static_assert(std::is_base_of_v<HTML::ParserObserver<WideChar, WideString>, HTML::GenericParserObserver>);
    static_assert(sizeof(HTML::GenericParserObserver) == POLYMORPHIC);
    static_assert(!std::has_virtual_destructor_v<HTML::GenericParserObserver>);
}

TYPED_TEST(LayoutTest, OutputHandlers) {
    using Handler = HTML::ParserObserverOutputHandler;
    using StringHandler =
        HTML::StringOutputStreamParserObserverOutputHandler<typename TypeParam::C, typename TypeParam::S>;
    EXPECT_EQ(SlotOf(&Handler::Write), AFTER_DESTRUCTOR);
    EXPECT_EQ(SlotOf(&StringHandler::Write), AFTER_DESTRUCTOR);
    static_assert(std::has_virtual_destructor_v<Handler>);
    static_assert(std::is_same_v<decltype(&Handler::Write), void (Handler::*)(const void*, std::uint64_t, bool)>);
}

}  // namespace
}  // namespace Kestra::Test
