#include <kestra/html/framework/ParserNames.h>
#include <kestra/html/framework/ResultCodes.h>
#include <kestra/html/framework/SimpleParser.h>
#include <kestra/html/framework/SimpleParserContext.h>
#include <kestra/html/tags/AttributeSimpleParser.h>
#include <kestra/html/tags/EndTagSimpleParser.h>
#include <kestra/html/tags/EntityTagSimpleParser.h>
#include <kestra/html/tags/ExternTagFreeStyleSimpleParser.h>
#include <kestra/html/tags/ExternTagSimpleParser.h>
#include <kestra/html/tags/GenericTagSimpleParser.h>
#include <kestra/html/tags/IdentifierSimpleParser.h>
#include <kestra/html/tags/StartTagSimpleParser.h>
#include <kestra/html/tags/TokenSimpleParser.h>
#include <kestra/html/text/CCommentSimpleParser.h>
#include <kestra/html/text/CDATATagSimpleParser.h>
#include <kestra/html/text/CPPCommentSimpleParser.h>
#include <kestra/html/text/CommentTagSimpleParser.h>
#include <kestra/html/text/ConditionalTagSimpleParser.h>
#include <kestra/html/text/DQuoteStringSimpleParser.h>
#include <kestra/html/text/Escape2022SimpleParser.h>
#include <kestra/html/text/JSRegExSimpleParser.h>
#include <kestra/html/text/JunkSimpleParser.h>
#include <kestra/html/text/SQuoteStringSimpleParser.h>
#include <kestra/html/text/TextSimpleParser.h>
#include <kestra/html/text/WhiteSpaceSimpleParser.h>

#include <typeinfo>

#include "Check.h"

using namespace Kestra::HTML;

namespace {

/// One construct read by a recognizer of the library, through its base class, as a host's own
/// driver would do it.
template <typename C, typename S, template <typename, typename> class Parser,
          template <typename, typename> class Record>
struct Reading {
    /// Feeds the text one character a piece.
    /// @param options  called after `BeginParse`
    template <typename Options>
    Reading(const std::string& ascii, Options options) {
        const S text = Text<S>(ascii);
        Parser<C, S> parser;
        SimpleParser<C, S, Record<C, S>>& recognizer = parser;
        SimpleParserContext<C, S> context;
        context.Init();
        CHECK(recognizer.BeginParse(&record) == SP_NEED_MORE_DATA);
        options(&record);
        while (result == SP_NEED_MORE_DATA && consumed < text.size()) {
            context.buffer = text.data() + consumed;
            context.position = 0;
            context.length = 1;
            do
                result = recognizer.Parse(&context, &record);
            while (result == SP_NEED_MORE_DATA && context.position < context.length);
            consumed += context.position;
        }
        if (result == SP_NEED_MORE_DATA)
            result = recognizer.EndParse(&record);
        column = context.column;
    }

    explicit Reading(const std::string& ascii) : Reading(ascii, [](Record<C, S>*) {}) {}

    Record<C, S> record;
    std::uint32_t result = SP_NEED_MORE_DATA;
    std::uint64_t consumed = 0;
    std::uint64_t column = 0;
};

template <typename C, typename S>
void UseFramework() {
    SimpleParserContext<C, S> context;
    context.Init();
    const S text = Text<S>("a\nbc");
    context.buffer = text.data();
    context.length = text.size();
    context.MovePointer(3);
    CHECK(context.position == 3 && context.line == 2 && context.column == 2);
    context.MovePointer(100);
    CHECK(context.position == 4 && context.column == 3);

    // The records are polymorphic across the library's border.
    TextSimpleParserData<C, S> record;
    record.text = text;
    SimpleParserData<C, S>& base = record;
    CHECK(typeid(base) == typeid(TextSimpleParserData<C, S>));
    CHECK(dynamic_cast<TextSimpleParserData<C, S>*>(&base) == &record);
    CHECK(dynamic_cast<JunkSimpleParserData<C, S>*>(&base) == nullptr);
    const TextSimpleParserData<C, S> copy = record;
    record.text.clear();
    CHECK(copy.text == text);
}

template <typename C, typename S>
void UseTextRecognizers() {
    const Reading<C, S, TextSimpleParser, TextSimpleParserData> text("a<b");
    CHECK(text.result == SP_TOKEN_COMPLETE && text.record.text == Text<S>("a") && text.consumed == 2 &&
          text.column == 3);
    CHECK(text.record.nextParserName == ParserNames::GENERIC_TAG);

    const Reading<C, S, WhiteSpaceSimpleParser, WhiteSpaceSimpleParserData> blanks(" \tx");
    CHECK(blanks.result == SP_TOKEN_COMPLETE && blanks.record.text == Text<S>(" \t") && blanks.consumed == 2);

    const Reading<C, S, JunkSimpleParser, JunkSimpleParserData> junk("ab<c");
    CHECK(junk.result == SP_TOKEN_COMPLETE && junk.consumed == 2 && junk.record.text.size() == 2 * sizeof(C));

    const Reading<C, S, Escape2022SimpleParser, Escape2022SimpleParserData> escape("$B<'\x1B(Bx");
    CHECK(escape.result == SP_TOKEN_COMPLETE && escape.record.text == Text<S>("\x1B$B<'\x1B(B") &&
          escape.consumed == 7);
}

template <typename C, typename S>
void UseLiteralRecognizers() {
    const auto escapes = [](auto* record) { record->allowEscapes = true; };
    const Reading<C, S, SQuoteStringSimpleParser, SQuoteStringSimpleParserData> single("it\\'s'x", escapes);
    CHECK(single.result == SP_TOKEN_COMPLETE && single.record.text == Text<S>("it\\'s") && single.consumed == 6);
    const Reading<C, S, SQuoteStringSimpleParser, SQuoteStringSimpleParserData> open("it");
    CHECK(open.result == SP_UNTERMINATED && open.record.text == Text<S>("it"));

    const Reading<C, S, DQuoteStringSimpleParser, DQuoteStringSimpleParserData> quoted("a'<b\"x");
    CHECK(quoted.result == SP_TOKEN_COMPLETE && quoted.record.text == Text<S>("a'<b") && quoted.consumed == 5);

    const Reading<C, S, JSRegExSimpleParser, JSRegExSimpleParserData> expression("a\\/b/g", escapes);
    CHECK(expression.result == SP_TOKEN_COMPLETE && expression.record.text == Text<S>("/a\\/b") &&
          expression.consumed == 4);
}

template <typename C, typename S>
void UsePiecesOfTags() {
    const Reading<C, S, IdentifierSimpleParser, IdentifierSimpleParserData> name("h1/ x");
    CHECK(name.result == SP_TOKEN_COMPLETE && name.record.text == Text<S>("h1/"));

    const Reading<C, S, TokenSimpleParser, TokenSimpleParserData> value(" 'a b'");
    CHECK(value.result == SP_TOKEN_COMPLETE && value.record.prefix == Text<S>(" ") &&
          value.record.value == Text<S>("a b"));
    CHECK(value.record.quote == QUOTE_SINGLE);

    const Reading<C, S, AttributeSimpleParser, AttributeSimpleParserData> attribute(" href = \"x\">");
    CHECK(attribute.result == SP_TOKEN_COMPLETE && attribute.record.hasValue == 1 &&
          attribute.record.quote == QUOTE_DOUBLE);
    CHECK(attribute.record.prefix == Text<S>(" ") && attribute.record.name == Text<S>("href"));
    CHECK(attribute.record.beforeEquals == Text<S>(" ") && attribute.record.afterEquals == Text<S>(" "));
    CHECK(attribute.record.value == Text<S>("x") && attribute.consumed == 11);

    const Reading<C, S, GenericTagSimpleParser, GenericTagSimpleParserData> section("![cdata[x");
    CHECK(section.result == SP_TOKEN_COMPLETE && section.record.nextParser == ParserNames::CDATA_TAG);
    CHECK(section.record.keyword == Text<S>("cdata") && section.consumed == 7);
    const Reading<C, S, GenericTagSimpleParser, GenericTagSimpleParserData> broken("!-x");
    CHECK(broken.result == SP_MALFORMED);
}

template <typename C, typename S>
void UseTags() {
    const Reading<C, S, StartTagSimpleParser, StartTagSimpleParserData> start("div hidden class=a id='b' />x");
    CHECK(start.result == SP_TOKEN_COMPLETE && start.record.name == Text<S>("div") &&
          start.record.attributes.size() == 3);
    CHECK(start.record.selfClosing && start.record.closed && start.consumed == 28);
    CHECK(start.record.attributes[2].value == Text<S>("b") && start.record.attributes[2].quote == QUOTE_SINGLE);
    CHECK(!start.record.attributes[0].hasValue && start.record.suffix == Text<S>(" "));
    const Reading<C, S, StartTagSimpleParser, StartTagSimpleParserData> malformed("a b / >");
    CHECK(malformed.result == SP_MALFORMED);

    const Reading<C, S, EndTagSimpleParser, EndTagSimpleParserData> end(" div <");
    CHECK(end.result == SP_TOKEN_COMPLETE && end.record.prefix == Text<S>(" ") && end.record.name == Text<S>("div"));
    CHECK(end.record.afterName == Text<S>(" ") && !end.record.closed && end.consumed == 5);
}

template <typename C, typename S>
void UseSections() {
    const Reading<C, S, CommentTagSimpleParser, CommentTagSimpleParserData> comment("a--b--->x");
    CHECK(comment.result == SP_TOKEN_COMPLETE && comment.record.text == Text<S>("a--b-") && comment.record.closed);
    CHECK(comment.consumed == 8);
    const Reading<C, S, CommentTagSimpleParser, CommentTagSimpleParserData> open("a--");
    CHECK(open.result == SP_TOKEN_COMPLETE && open.record.text == Text<S>("a--") && !open.record.closed);

    const auto keyword = [](auto* record) { record->keyword = Text<S>("CDATA"); };
    const Reading<C, S, CDATATagSimpleParser, CDATATagSimpleParserData> section("[a]b]]>x", keyword);
    CHECK(section.result == SP_TOKEN_COMPLETE && section.record.text == Text<S>("[a]b") && section.record.closed);
    CHECK(section.record.keyword == Text<S>("CDATA") && section.consumed == 7);

    const Reading<C, S, ConditionalTagSimpleParser, ConditionalTagSimpleParserData> condition(" !IE]>x");
    CHECK(condition.result == SP_TOKEN_COMPLETE && condition.record.condition == Text<S>(" !IE") &&
          condition.consumed == 6);
    CHECK(condition.record.tail.empty() && condition.record.bracketClosed && condition.record.tagClosed);
}

template <typename C, typename S>
void UseScriptComments() {
    const Reading<C, S, CCommentSimpleParser, CCommentSimpleParserData> block("a*<!--**/x");
    CHECK(block.result == SP_TOKEN_COMPLETE && block.record.text == Text<S>("a*<!--*") && block.consumed == 9);

    const Reading<C, S, CPPCommentSimpleParser, CPPCommentSimpleParserData> line("a</b>\n");
    CHECK(line.result == SP_TOKEN_COMPLETE && line.record.text == Text<S>("a</b>") && line.consumed == 5);
    CHECK(line.record.nextParserName.empty());
    const Reading<C, S, CPPCommentSimpleParser, CPPCommentSimpleParserData> handedOver("a<![if x");
    CHECK(handedOver.result == SP_TOKEN_COMPLETE && handedOver.record.nextParserName == ParserNames::CONDITIONAL_TAG);
    CHECK(handedOver.record.text == Text<S>("a") && handedOver.record.keyword == Text<S>("if") &&
          handedOver.consumed == 6);
}

template <typename C, typename S>
void UseDeclarations() {
    const Reading<C, S, EntityTagSimpleParser, EntityTagSimpleParserData> entity("DOCTYPE html \"\" >x");
    CHECK(entity.result == SP_TOKEN_COMPLETE && entity.record.name == Text<S>("DOCTYPE") &&
          entity.record.tokens.size() == 2);
    CHECK(entity.record.tokens[0].value == Text<S>("html") && entity.record.tokens[1].quote == QUOTE_DOUBLE);
    CHECK(entity.record.suffix == Text<S>(" ") && entity.consumed == 17);

    const Reading<C, S, ExternTagSimpleParser, ExternTagSimpleParserData> xml("xml a='b' c=d?>x");
    CHECK(xml.result == SP_TOKEN_COMPLETE && xml.record.name == Text<S>("xml") && xml.record.attributes.size() == 2);
    CHECK(xml.record.attributes[1].value == Text<S>("d") && !xml.record.freeStyle && xml.consumed == 15);
    const Reading<C, S, ExternTagSimpleParser, ExternTagSimpleParserData> php("php '?>' ?>x");
    CHECK(php.result == SP_TOKEN_COMPLETE && php.record.freeStyle && php.record.text == Text<S>("<?php '?>' ?>"));

    const Reading<C, S, ExternTagFreeStyleSimpleParser, ExternTagFreeStyleSimpleParserData> freeStyle(" /*>*/?>x");
    CHECK(freeStyle.result == SP_TOKEN_COMPLETE && freeStyle.record.text == Text<S>(" /*>*/?>") &&
          freeStyle.consumed == 8);
}

template <typename S>
void UseFlavour() {
    using C = CharacterOf<S>;
    UseFramework<C, S>();
    UseTextRecognizers<C, S>();
    UseLiteralRecognizers<C, S>();
    UsePiecesOfTags<C, S>();
    UseTags<C, S>();
    UseSections<C, S>();
    UseScriptComments<C, S>();
    UseDeclarations<C, S>();
}

}  // namespace

void UseRecognizers() {
    UseFlavour<std::string>();
    UseFlavour<Kestra::WideString>();
}
