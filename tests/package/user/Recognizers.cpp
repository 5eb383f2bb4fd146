#include <kestra/html/framework/ParserNames.h>
#include <kestra/html/framework/ResultCodes.h>
#include <kestra/html/framework/SimpleParser.h>
#include <kestra/html/framework/SimpleParserContext.h>
#include <kestra/html/tags/AttributeSimpleParser.h>
#include <kestra/html/tags/EndTagSimpleParser.h>
#include <kestra/html/tags/GenericTagSimpleParser.h>
#include <kestra/html/tags/IdentifierSimpleParser.h>
#include <kestra/html/tags/StartTagSimpleParser.h>
#include <kestra/html/tags/TokenSimpleParser.h>
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

/// One construct read by a recognizer of the library, through its base class, as a host's own driver would do it.
template <typename C, typename S, template <typename, typename> class Parser, template <typename, typename> class Record>
struct Reading {
    /// Feeds the text one character a piece.
    /// @param options  called behind `BeginParse`
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
    CHECK(text.result == SP_TOKEN_COMPLETE && text.record.text == Text<S>("a") && text.consumed == 2 && text.column == 3);
    CHECK(text.record.nextParserName == ParserNames::GENERIC_TAG);

    const Reading<C, S, WhiteSpaceSimpleParser, WhiteSpaceSimpleParserData> blanks(" \tx");
    CHECK(blanks.result == SP_TOKEN_COMPLETE && blanks.record.text == Text<S>(" \t") && blanks.consumed == 2);

    const Reading<C, S, JunkSimpleParser, JunkSimpleParserData> junk("ab<c");
    CHECK(junk.result == SP_TOKEN_COMPLETE && junk.consumed == 2 && junk.record.text.size() == 2 * sizeof(C));

    const Reading<C, S, Escape2022SimpleParser, Escape2022SimpleParserData> escape("$B<'\x1B(Bx");
    CHECK(escape.result == SP_TOKEN_COMPLETE && escape.record.text == Text<S>("\x1B$B<'\x1B(B") && escape.consumed == 7);
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
    CHECK(expression.result == SP_TOKEN_COMPLETE && expression.record.text == Text<S>("/a\\/b") && expression.consumed == 4);
}

template <typename C, typename S>
void UsePiecesOfTags() {
    const Reading<C, S, IdentifierSimpleParser, IdentifierSimpleParserData> name("h1/ x");
    CHECK(name.result == SP_TOKEN_COMPLETE && name.record.text == Text<S>("h1/"));

    const Reading<C, S, TokenSimpleParser, TokenSimpleParserData> value(" 'a b'");
    CHECK(value.result == SP_TOKEN_COMPLETE && value.record.prefix == Text<S>(" ") && value.record.value == Text<S>("a b"));
    CHECK(value.record.quote == QUOTE_SINGLE);

    const Reading<C, S, AttributeSimpleParser, AttributeSimpleParserData> attribute(" href = \"x\">");
    CHECK(attribute.result == SP_TOKEN_COMPLETE && attribute.record.hasValue == 1 && attribute.record.quote == QUOTE_DOUBLE);
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
    CHECK(start.result == SP_TOKEN_COMPLETE && start.record.name == Text<S>("div") && start.record.attributes.size() == 3);
    CHECK(start.record.selfClosing && start.record.closed && start.consumed == 28);
    CHECK(start.record.attributes[2].value == Text<S>("b") && start.record.attributes[2].quote == QUOTE_SINGLE);
    CHECK(!start.record.attributes[0].hasValue && start.record.suffix == Text<S>(" "));
    const Reading<C, S, StartTagSimpleParser, StartTagSimpleParserData> malformed("a b / >");
    CHECK(malformed.result == SP_MALFORMED);

    const Reading<C, S, EndTagSimpleParser, EndTagSimpleParserData> end(" div <");
    CHECK(end.result == SP_TOKEN_COMPLETE && end.record.prefix == Text<S>(" ") && end.record.name == Text<S>("div"));
    CHECK(end.record.afterName == Text<S>(" ") && !end.record.closed && end.consumed == 5);
}

template <typename S>
void UseFlavour() {
    using C = CharacterOf<S>;
    UseFramework<C, S>();
    UseTextRecognizers<C, S>();
    UseLiteralRecognizers<C, S>();
    UsePiecesOfTags<C, S>();
    UseTags<C, S>();
}

}  // namespace

void UseRecognizers() {
    UseFlavour<std::string>();
    UseFlavour<Kestra::WideString>();
}
