#include "tests/support/Layout.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
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
#include "html/tags/AttributeSimpleParser.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagFreeStyleSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/IdentifierSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/tags/TokenSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/Escape2022SimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/JunkSimpleParser.h"
#include "html/text/SQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"
#include "html/text/WhiteSpaceSimpleParser.h"
#include "tests/support/Flavours.h"

// One field of `record` with its type; `Record` names the type of the record.
#define EXPECT_FIELD(walk, Record, Type, field)                   \
    static_assert(std::is_same_v<decltype(Record::field), Type>); \
    walk.Next(#field, &Record::field)

namespace Kestra::Test {
namespace {

constexpr std::size_t POLYMORPHIC = sizeof(void*);  // what an object without fields but with virtual operations takes
constexpr std::size_t BEHIND_DESTRUCTOR = 2;        // a virtual destructor takes two slots

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
    EXPECT_FIELD(walk, Record, const C*, buffer);
    EXPECT_FIELD(walk, Record, std::uint64_t, position);
    EXPECT_FIELD(walk, Record, std::uint64_t, length);
    EXPECT_FIELD(walk, Record, std::uint64_t, line);
    EXPECT_FIELD(walk, Record, std::uint64_t, column);
    walk.Last();
}

TYPED_TEST(LayoutTest, AttributeAndEntityToken) {
    using S = typename TypeParam::S;
    using Attribute = HTML::Attribute<typename TypeParam::C, S>;
    const Attribute attribute;
    FieldWalk<Attribute> walk(attribute, 0);
    EXPECT_FIELD(walk, Attribute, S, prefix);
    EXPECT_FIELD(walk, Attribute, S, name);
    EXPECT_FIELD(walk, Attribute, S, beforeEquals);
    EXPECT_FIELD(walk, Attribute, S, afterEquals);
    EXPECT_FIELD(walk, Attribute, S, value);
    EXPECT_FIELD(walk, Attribute, std::uint32_t, quote);
    EXPECT_FIELD(walk, Attribute, bool, hasValue);
    walk.Last();

    using Token = HTML::EntityToken<typename TypeParam::C, S>;
    const Token token;
    FieldWalk<Token> tokenWalk(token, 0);
    EXPECT_FIELD(tokenWalk, Token, S, prefix);
    EXPECT_FIELD(tokenWalk, Token, S, value);
    EXPECT_FIELD(tokenWalk, Token, std::uint32_t, quote);
    tokenWalk.Last();
}

/// A record of nothing but a text.
template <typename Record, typename Text>
void CheckTextRecord() {
    const Record record = {};
    FieldWalk<Record> walk(record, 0);
    EXPECT_FIELD(walk, Record, const Text*, text);
    walk.Last();
}

TYPED_TEST(LayoutTest, TokenRecordsOfTexts) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    CheckTextRecord<HTML::TextData<C, S>, S>();
    CheckTextRecord<HTML::CCommentData<C, S>, S>();
    CheckTextRecord<HTML::CPPCommentData<C, S>, S>();
    CheckTextRecord<HTML::SQuoteStringData<C, S>, S>();
    CheckTextRecord<HTML::DQuoteStringData<C, S>, S>();
    CheckTextRecord<HTML::JunkData<C, S>, std::string>();
}

template <typename Record, typename C, typename S>
void CheckStartOrShortTagRecord() {
    using List = const Vector<HTML::Attribute<C, S>>*;
    const Record record = {};
    FieldWalk<Record> walk(record, 0);
    EXPECT_FIELD(walk, Record, const S*, prefix);
    EXPECT_FIELD(walk, Record, const S*, name);
    EXPECT_FIELD(walk, Record, List, attributes);
    EXPECT_FIELD(walk, Record, const S*, suffix);
    EXPECT_FIELD(walk, Record, bool, closed);
    walk.Last();
}

TYPED_TEST(LayoutTest, TokenRecordsOfTags) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using List = const Vector<HTML::Attribute<C, S>>*;
    CheckStartOrShortTagRecord<HTML::StartTagData<C, S>, C, S>();
    CheckStartOrShortTagRecord<HTML::ShortTagData<C, S>, C, S>();

    using Record = HTML::EndTagData<C, S>;
    const Record record = {};
    FieldWalk<Record> walk(record, 0);
    EXPECT_FIELD(walk, Record, const S*, prefix);
    EXPECT_FIELD(walk, Record, const S*, name);
    EXPECT_FIELD(walk, Record, const S*, afterName);
    EXPECT_FIELD(walk, Record, bool, closed);
    EXPECT_FIELD(walk, Record, List, attributes);
    EXPECT_FIELD(walk, Record, bool, slashBeforeClose);
    EXPECT_FIELD(walk, Record, const S*, suffix);
    walk.Last();
}

TYPED_TEST(LayoutTest, TokenRecordsOfSections) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using CData = HTML::CDATATagData<C, S>;
    const CData cdata = {};
    FieldWalk<CData> cdataWalk(cdata, 0);
    EXPECT_FIELD(cdataWalk, CData, const S*, keyword);
    EXPECT_FIELD(cdataWalk, CData, const S*, text);
    EXPECT_FIELD(cdataWalk, CData, bool, closed);
    cdataWalk.Last();

    using Conditional = HTML::ConditionalTagData<C, S>;
    const Conditional conditional = {};
    FieldWalk<Conditional> conditionalWalk(conditional, 0);
    EXPECT_FIELD(conditionalWalk, Conditional, const S*, keyword);
    EXPECT_FIELD(conditionalWalk, Conditional, const S*, condition);
    EXPECT_FIELD(conditionalWalk, Conditional, const S*, tail);
    EXPECT_FIELD(conditionalWalk, Conditional, bool, bracketClosed);
    EXPECT_FIELD(conditionalWalk, Conditional, bool, tagClosed);
    conditionalWalk.Last();

    using Comment = HTML::CommentTagData<C, S>;
    const Comment comment = {};
    FieldWalk<Comment> commentWalk(comment, 0);
    EXPECT_FIELD(commentWalk, Comment, const S*, text);
    EXPECT_FIELD(commentWalk, Comment, bool, closed);
    commentWalk.Last();
}

TYPED_TEST(LayoutTest, TokenRecordsOfDeclarations) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using Tokens = const Vector<HTML::EntityToken<C, S>>*;
    using List = const Vector<HTML::Attribute<C, S>>*;
    using Entity = HTML::EntityTagData<C, S>;
    const Entity entity = {};
    FieldWalk<Entity> entityWalk(entity, 0);
    EXPECT_FIELD(entityWalk, Entity, const S*, prefix);
    EXPECT_FIELD(entityWalk, Entity, const S*, name);
    EXPECT_FIELD(entityWalk, Entity, Tokens, tokens);
    EXPECT_FIELD(entityWalk, Entity, const S*, suffix);
    entityWalk.Last();

    using Extern = HTML::ExternTagData<C, S>;
    const Extern externTag = {};
    FieldWalk<Extern> externWalk(externTag, 0);
    EXPECT_FIELD(externWalk, Extern, const S*, prefix);
    EXPECT_FIELD(externWalk, Extern, const S*, name);
    EXPECT_FIELD(externWalk, Extern, List, attributes);
    EXPECT_FIELD(externWalk, Extern, const S*, suffix);
    EXPECT_FIELD(externWalk, Extern, bool, freeStyle);
    EXPECT_FIELD(externWalk, Extern, const S*, text);
    EXPECT_FIELD(externWalk, Extern, bool, slashBeforeClose);
    externWalk.Last();
}

TYPED_TEST(LayoutTest, StateRecordsOfText) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using Text = HTML::TextSimpleParserData<C, S>;
    const Text text;
    FieldWalk<Text> textWalk(text, POLYMORPHIC);
    EXPECT_FIELD(textWalk, Text, std::uint32_t, state);
    EXPECT_FIELD(textWalk, Text, bool, allowCComment);
    EXPECT_FIELD(textWalk, Text, bool, allowCPPComment);
    EXPECT_FIELD(textWalk, Text, bool, allowSQuoteString);
    EXPECT_FIELD(textWalk, Text, bool, allowDQuoteString);
    EXPECT_FIELD(textWalk, Text, bool, allowJSRegEx);
    EXPECT_FIELD(textWalk, Text, bool, allowEscape2022);
    EXPECT_FIELD(textWalk, Text, S, text);
    EXPECT_FIELD(textWalk, Text, WideString, nextParserName);
    textWalk.Last();

    using WhiteSpace = HTML::WhiteSpaceSimpleParserData<C, S>;
    const WhiteSpace whiteSpace;
    FieldWalk<WhiteSpace> whiteSpaceWalk(whiteSpace, POLYMORPHIC);
    EXPECT_FIELD(whiteSpaceWalk, WhiteSpace, S, text);
    whiteSpaceWalk.Last();

    using SQuote = HTML::SQuoteStringSimpleParserData<C, S>;
    const SQuote sQuote;
    FieldWalk<SQuote> sQuoteWalk(sQuote, POLYMORPHIC);
    EXPECT_FIELD(sQuoteWalk, SQuote, S, text);
    EXPECT_FIELD(sQuoteWalk, SQuote, C, lastChar);
    EXPECT_FIELD(sQuoteWalk, SQuote, bool, allowEscapes);
    sQuoteWalk.Last();

    using DQuote = HTML::DQuoteStringSimpleParserData<C, S>;
    const DQuote dQuote;
    FieldWalk<DQuote> dQuoteWalk(dQuote, POLYMORPHIC);
    EXPECT_FIELD(dQuoteWalk, DQuote, std::uint32_t, state);
    EXPECT_FIELD(dQuoteWalk, DQuote, S, text);
    EXPECT_FIELD(dQuoteWalk, DQuote, C, lastChar);
    EXPECT_FIELD(dQuoteWalk, DQuote, bool, allowEscapes);
    EXPECT_FIELD(dQuoteWalk, DQuote, bool, allowEscape2022);
    dQuoteWalk.Last();

    using RegEx = HTML::JSRegExSimpleParserData<C, S>;
    const RegEx regEx;
    FieldWalk<RegEx> regExWalk(regEx, POLYMORPHIC);
    EXPECT_FIELD(regExWalk, RegEx, S, text);
    EXPECT_FIELD(regExWalk, RegEx, C, lastChar);
    EXPECT_FIELD(regExWalk, RegEx, bool, allowEscapes);
    regExWalk.Last();

    using Escape = HTML::Escape2022SimpleParserData<C, S>;
    const Escape escape;
    FieldWalk<Escape> escapeWalk(escape, POLYMORPHIC);
    EXPECT_FIELD(escapeWalk, Escape, std::uint32_t, state);
    EXPECT_FIELD(escapeWalk, Escape, S, text);
    EXPECT_FIELD(escapeWalk, Escape, S, pending);
    escapeWalk.Last();

    using Junk = HTML::JunkSimpleParserData<C, S>;
    const Junk junk;
    FieldWalk<Junk> junkWalk(junk, POLYMORPHIC);
    EXPECT_FIELD(junkWalk, Junk, std::string, text);
    junkWalk.Last();
}

TYPED_TEST(LayoutTest, StateRecordsOfTags) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using List = Vector<HTML::Attribute<C, S>>;
    using Identifier = HTML::IdentifierSimpleParserData<C, S>;
    const Identifier identifier;
    FieldWalk<Identifier> identifierWalk(identifier, POLYMORPHIC);
    EXPECT_FIELD(identifierWalk, Identifier, S, text);
    EXPECT_FIELD(identifierWalk, Identifier, bool, attributeNameMode);
    identifierWalk.Last();

    using Token = HTML::TokenSimpleParserData<C, S>;
    const Token token;
    FieldWalk<Token> tokenWalk(token, POLYMORPHIC);
    EXPECT_FIELD(tokenWalk, Token, std::uint32_t, state);
    EXPECT_FIELD(tokenWalk, Token, S, prefix);
    EXPECT_FIELD(tokenWalk, Token, S, value);
    EXPECT_FIELD(tokenWalk, Token, std::uint32_t, quote);
    EXPECT_FIELD(tokenWalk, Token, bool, iso2022);
    tokenWalk.Last();

    using Attribute = HTML::AttributeSimpleParserData<C, S>;
    const Attribute attribute;
    FieldWalk<Attribute> attributeWalk(attribute, POLYMORPHIC);
    EXPECT_FIELD(attributeWalk, Attribute, std::uint32_t, state);
    EXPECT_FIELD(attributeWalk, Attribute, std::uint32_t, hasValue);
    EXPECT_FIELD(attributeWalk, Attribute, S, prefix);
    EXPECT_FIELD(attributeWalk, Attribute, S, name);
    EXPECT_FIELD(attributeWalk, Attribute, S, beforeEquals);
    EXPECT_FIELD(attributeWalk, Attribute, S, afterEquals);
    EXPECT_FIELD(attributeWalk, Attribute, S, value);
    EXPECT_FIELD(attributeWalk, Attribute, std::uint32_t, quote);
    EXPECT_FIELD(attributeWalk, Attribute, bool, iso2022);
    attributeWalk.Last();

    using Generic = HTML::GenericTagSimpleParserData<C, S>;
    const Generic generic;
    FieldWalk<Generic> genericWalk(generic, POLYMORPHIC);
    EXPECT_FIELD(genericWalk, Generic, std::uint32_t, state);
    EXPECT_FIELD(genericWalk, Generic, std::uint32_t, reserved);
    EXPECT_FIELD(genericWalk, Generic, S, text);
    EXPECT_FIELD(genericWalk, Generic, S, keyword);
    EXPECT_FIELD(genericWalk, Generic, WideString, nextParser);
    genericWalk.Last();

    using StartTag = HTML::StartTagSimpleParserData<C, S>;
    const StartTag startTag;
    FieldWalk<StartTag> startTagWalk(startTag, POLYMORPHIC);
    EXPECT_FIELD(startTagWalk, StartTag, std::uint32_t, state);
    EXPECT_FIELD(startTagWalk, StartTag, S, prefix);
    EXPECT_FIELD(startTagWalk, StartTag, S, name);
    EXPECT_FIELD(startTagWalk, StartTag, List, attributes);
    EXPECT_FIELD(startTagWalk, StartTag, S, suffix);
    EXPECT_FIELD(startTagWalk, StartTag, WideString, wideName);
    EXPECT_FIELD(startTagWalk, StartTag, bool, selfClosing);
    EXPECT_FIELD(startTagWalk, StartTag, bool, closed);
    EXPECT_FIELD(startTagWalk, StartTag, bool, iso2022);
    startTagWalk.Last();

    using EndTag = HTML::EndTagSimpleParserData<C, S>;
    const EndTag endTag;
    FieldWalk<EndTag> endTagWalk(endTag, POLYMORPHIC);
    EXPECT_FIELD(endTagWalk, EndTag, std::uint32_t, state);
    EXPECT_FIELD(endTagWalk, EndTag, S, prefix);
    EXPECT_FIELD(endTagWalk, EndTag, S, name);
    EXPECT_FIELD(endTagWalk, EndTag, S, afterName);
    EXPECT_FIELD(endTagWalk, EndTag, S, suffix);
    EXPECT_FIELD(endTagWalk, EndTag, List, attributes);
    EXPECT_FIELD(endTagWalk, EndTag, bool, slashBeforeClose);
    EXPECT_FIELD(endTagWalk, EndTag, bool, closed);
    EXPECT_FIELD(endTagWalk, EndTag, bool, iso2022);
    endTagWalk.Last();
}

TYPED_TEST(LayoutTest, StateRecordsOfSections) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using Comment = HTML::CommentTagSimpleParserData<C, S>;
    const Comment comment;
    FieldWalk<Comment> commentWalk(comment, POLYMORPHIC);
    EXPECT_FIELD(commentWalk, Comment, std::uint32_t, state);
    EXPECT_FIELD(commentWalk, Comment, S, text);
    EXPECT_FIELD(commentWalk, Comment, bool, closed);
    commentWalk.Last();

    using CData = HTML::CDATATagSimpleParserData<C, S>;
    const CData cdata;
    FieldWalk<CData> cdataWalk(cdata, POLYMORPHIC);
    EXPECT_FIELD(cdataWalk, CData, std::uint32_t, state);
    EXPECT_FIELD(cdataWalk, CData, S, keyword);
    EXPECT_FIELD(cdataWalk, CData, S, text);
    EXPECT_FIELD(cdataWalk, CData, bool, closed);
    cdataWalk.Last();

    using Conditional = HTML::ConditionalTagSimpleParserData<C, S>;
    const Conditional conditional;
    FieldWalk<Conditional> conditionalWalk(conditional, POLYMORPHIC);
    EXPECT_FIELD(conditionalWalk, Conditional, std::uint32_t, state);
    EXPECT_FIELD(conditionalWalk, Conditional, S, keyword);
    EXPECT_FIELD(conditionalWalk, Conditional, S, condition);
    EXPECT_FIELD(conditionalWalk, Conditional, S, tail);
    EXPECT_FIELD(conditionalWalk, Conditional, bool, bracketClosed);
    EXPECT_FIELD(conditionalWalk, Conditional, bool, tagClosed);
    conditionalWalk.Last();
}

/// A record of a script comment: both kinds have the same fields.
template <typename Record, typename S>
void CheckScriptCommentRecord() {
    const Record record;
    FieldWalk<Record> walk(record, POLYMORPHIC);
    EXPECT_FIELD(walk, Record, std::uint32_t, state);
    EXPECT_FIELD(walk, Record, S, text);
    EXPECT_FIELD(walk, Record, S, keyword);
    EXPECT_FIELD(walk, Record, WideString, nextParserName);
    walk.Last();
}

TYPED_TEST(LayoutTest, StateRecordsOfScriptComments) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    CheckScriptCommentRecord<HTML::CCommentSimpleParserData<C, S>, S>();
    CheckScriptCommentRecord<HTML::CPPCommentSimpleParserData<C, S>, S>();
}

TYPED_TEST(LayoutTest, StateRecordsOfDeclarations) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    using List = Vector<HTML::Attribute<C, S>>;
    using Tokens = Vector<HTML::EntityToken<C, S>>;
    using Entity = HTML::EntityTagSimpleParserData<C, S>;
    const Entity entity;
    FieldWalk<Entity> entityWalk(entity, POLYMORPHIC);
    EXPECT_FIELD(entityWalk, Entity, std::uint32_t, state);
    EXPECT_FIELD(entityWalk, Entity, S, prefix);
    EXPECT_FIELD(entityWalk, Entity, S, name);
    EXPECT_FIELD(entityWalk, Entity, Tokens, tokens);
    EXPECT_FIELD(entityWalk, Entity, S, suffix);
    EXPECT_FIELD(entityWalk, Entity, bool, iso2022);
    entityWalk.Last();

    using Extern = HTML::ExternTagSimpleParserData<C, S>;
    const Extern externTag;
    FieldWalk<Extern> externWalk(externTag, POLYMORPHIC);
    EXPECT_FIELD(externWalk, Extern, std::uint32_t, state);
    EXPECT_FIELD(externWalk, Extern, bool, freeStyle);
    EXPECT_FIELD(externWalk, Extern, bool, slashBeforeClose);
    EXPECT_FIELD(externWalk, Extern, S, prefix);
    EXPECT_FIELD(externWalk, Extern, S, name);
    EXPECT_FIELD(externWalk, Extern, S, text);
    EXPECT_FIELD(externWalk, Extern, List, attributes);
    EXPECT_FIELD(externWalk, Extern, S, suffix);
    EXPECT_FIELD(externWalk, Extern, bool, iso2022);
    externWalk.Last();

    using FreeStyle = HTML::ExternTagFreeStyleSimpleParserData<C, S>;
    const FreeStyle freeStyle;
    FieldWalk<FreeStyle> freeStyleWalk(freeStyle, POLYMORPHIC);
    EXPECT_FIELD(freeStyleWalk, FreeStyle, std::uint32_t, state);
    EXPECT_FIELD(freeStyleWalk, FreeStyle, bool, questionPending);
    EXPECT_FIELD(freeStyleWalk, FreeStyle, S, text);
    EXPECT_FIELD(freeStyleWalk, FreeStyle, bool, iso2022);
    freeStyleWalk.Last();
}

/// What holds for each recognizer and its record.
template <template <typename, typename> class Parser, template <typename, typename> class Data, typename Flavour>
void CheckRecognizerClass() {
    using C = typename Flavour::C;
    using S = typename Flavour::S;
    using P = Parser<C, S>;
    using D = Data<C, S>;
    static_assert(std::is_same_v<typename P::Data, D>);
    static_assert(std::is_base_of_v<HTML::SimpleParser<C, S, D>, P>);
    static_assert(std::is_base_of_v<HTML::SimpleParserData<C, S>, D>);
    static_assert(std::has_virtual_destructor_v<P> && std::has_virtual_destructor_v<D>);
    static_assert(std::is_default_constructible_v<P> && std::is_copy_constructible_v<P> && std::is_copy_assignable_v<P>);
    static_assert(std::is_default_constructible_v<D> && std::is_copy_constructible_v<D> && std::is_copy_assignable_v<D>);
    static_assert(std::is_same_v<decltype(&P::BeginParse), std::uint32_t (P::*)(D*)>);
    static_assert(std::is_same_v<decltype(&P::Parse), std::uint32_t (P::*)(HTML::SimpleParserContext<C, S>*, D*)>);
    static_assert(std::is_same_v<decltype(&P::EndParse), std::uint32_t (P::*)(D*)>);
    EXPECT_EQ(SlotOf(&P::BeginParse), BEHIND_DESTRUCTOR);
    EXPECT_EQ(SlotOf(&P::Parse), BEHIND_DESTRUCTOR + 1);
    EXPECT_EQ(SlotOf(&P::EndParse), BEHIND_DESTRUCTOR + 2);

    using Base = HTML::SimpleParser<C, S, D>;
    static_assert(std::is_abstract_v<Base> && std::has_virtual_destructor_v<Base>);
    static_assert(sizeof(Base) == POLYMORPHIC);
    EXPECT_EQ(SlotOf(&Base::BeginParse), BEHIND_DESTRUCTOR);
    EXPECT_EQ(SlotOf(&Base::Parse), BEHIND_DESTRUCTOR + 1);
    EXPECT_EQ(SlotOf(&Base::EndParse), BEHIND_DESTRUCTOR + 2);

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
    CheckRecognizerClass<HTML::TextSimpleParser, HTML::TextSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::WhiteSpaceSimpleParser, HTML::WhiteSpaceSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::SQuoteStringSimpleParser, HTML::SQuoteStringSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::DQuoteStringSimpleParser, HTML::DQuoteStringSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::JSRegExSimpleParser, HTML::JSRegExSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::Escape2022SimpleParser, HTML::Escape2022SimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::JunkSimpleParser, HTML::JunkSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::IdentifierSimpleParser, HTML::IdentifierSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::TokenSimpleParser, HTML::TokenSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::AttributeSimpleParser, HTML::AttributeSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::GenericTagSimpleParser, HTML::GenericTagSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::StartTagSimpleParser, HTML::StartTagSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::EndTagSimpleParser, HTML::EndTagSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::CommentTagSimpleParser, HTML::CommentTagSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::CDATATagSimpleParser, HTML::CDATATagSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::ConditionalTagSimpleParser, HTML::ConditionalTagSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::CCommentSimpleParser, HTML::CCommentSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::CPPCommentSimpleParser, HTML::CPPCommentSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::EntityTagSimpleParser, HTML::EntityTagSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::ExternTagSimpleParser, HTML::ExternTagSimpleParserData, TypeParam>();
    CheckRecognizerClass<HTML::ExternTagFreeStyleSimpleParser, HTML::ExternTagFreeStyleSimpleParserData, TypeParam>();
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
    ExpectMembersAndSetting<std::size_t, HTML::StartTagSimpleParser<C, S>, Identifier, IdentifierData, WhiteSpace, WhiteSpaceData,
                            Attribute, AttributeData>();
    ExpectMembersAndSetting<std::size_t, HTML::EndTagSimpleParser<C, S>, Identifier, IdentifierData, WhiteSpace, WhiteSpaceData, Attribute,
                            AttributeData>();
    ExpectMembers<HTML::CommentTagSimpleParser<C, S>>();
    ExpectMembers<HTML::CDATATagSimpleParser<C, S>>();
    ExpectMembersAndSetting<bool, HTML::ConditionalTagSimpleParser<C, S>>();
    ExpectMembers<HTML::CCommentSimpleParser<C, S>, Generic, GenericData>();
    ExpectMembers<HTML::CPPCommentSimpleParser<C, S>, Generic, GenericData>();
    ExpectMembersAndSetting<std::size_t, HTML::EntityTagSimpleParser<C, S>, Identifier, IdentifierData, WhiteSpace, WhiteSpaceData, Token,
                            TokenData>();
    ExpectMembers<FreeStyle, SQuote, SQuoteData, DQuote, DQuoteData>();
    ExpectMembersAndSetting<std::size_t, HTML::ExternTagSimpleParser<C, S>, Identifier, IdentifierData, WhiteSpace, WhiteSpaceData,
                            Attribute, AttributeData, FreeStyle, FreeStyleData>();
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

    // The self-check writes through `OnOutput`; its destructor and `Reset` stand behind everything that an observer has.
    using SelfCheck = HTML::ParserSelfCheck<C, S>;
    CheckObserverSlots<SelfCheck>();
    EXPECT_EQ(SlotOf(&SelfCheck::OnOutput), 22U);
    EXPECT_EQ(SlotOf(&SelfCheck::Reset), 23U + BEHIND_DESTRUCTOR);
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
    using StringHandler = HTML::StringOutputStreamParserObserverOutputHandler<typename TypeParam::C, typename TypeParam::S>;
    EXPECT_EQ(SlotOf(&Handler::Write), BEHIND_DESTRUCTOR);
    EXPECT_EQ(SlotOf(&StringHandler::Write), BEHIND_DESTRUCTOR);
    static_assert(std::has_virtual_destructor_v<Handler>);
    static_assert(std::is_same_v<decltype(&Handler::Write), void (Handler::*)(const void*, std::uint64_t, bool)>);
}

}  // namespace
}  // namespace Kestra::Test
