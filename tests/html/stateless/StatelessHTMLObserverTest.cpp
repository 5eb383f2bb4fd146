#include "html/stateless/StatelessHTMLObserver.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "html/stateless/StatelessHTMLParser.h"
#include "platform/Observable.h"
#include "tests/support/EventRun.h"

// Who is called, when, in which order, and with what.

namespace Kestra::Test {
namespace {

using HTML::StatelessHTMLObserver;
using HTML::StatelessHTMLParser;
using Lines = std::vector<std::string>;

/// One of each event.
constexpr std::string_view EVERY_EVENT = "a<b c=d></b><script e>f</script><?g h=i?><!j k><!--l--><style>m</style>";

const Lines EVERY_LINE = {"start-parsing",    "text(a)",       "start(b|{c=d})", "end(b)",    "script({e=}|f)",
                          "extern(g|{h=i?})", "entity(j|{k})", "comment(l)",     "style(|m)", "stop-parsing"};

void ParseAll(StatelessHTMLParser* parser, std::string_view document = EVERY_EVENT) {
    EXPECT_EQ(parser->StartParse(0), 0U);
    EXPECT_EQ(parser->ParseBuffer(document.data(), document.size()), 0U);
    EXPECT_EQ(parser->EndParse(), 0U);
}

TEST(StatelessHTMLObserverTest, Identifiers) {
    static_assert(std::is_same_v<decltype(StatelessHTMLParser::ID_START_PARSING), const unsigned long>);
    EXPECT_EQ(StatelessHTMLParser::ID_START_PARSING, 0UL);
    EXPECT_EQ(StatelessHTMLParser::ID_STOP_PARSING, 1UL);
    EXPECT_EQ(StatelessHTMLParser::ID_START_TAG, 2UL);
    EXPECT_EQ(StatelessHTMLParser::ID_END_TAG, 3UL);
    EXPECT_EQ(StatelessHTMLParser::ID_SCRIPT, 4UL);
    EXPECT_EQ(StatelessHTMLParser::ID_EXTERN_TAG, 5UL);
    EXPECT_EQ(StatelessHTMLParser::ID_ENTITY_TAG, 6UL);
    EXPECT_EQ(StatelessHTMLParser::ID_COMMENT, 7UL);
    EXPECT_EQ(StatelessHTMLParser::ID_TEXT, 8UL);
    EXPECT_EQ(StatelessHTMLParser::ID_STYLE, 9UL);
}

TEST(StatelessHTMLObserverTest, BindsTenEvents) {
    StatelessHTMLObserver observer;
    Base::MultiDelegate delegate;
    observer.RegisterCalls(&delegate);
    for (unsigned long id = 0; id < 10; ++id)
        EXPECT_TRUE(delegate.IsBound(id)) << id;
    EXPECT_FALSE(delegate.IsBound(10));
}

/// The calls of a delegate reach the overrides of a derived class, with the values of the event in
/// their order.
TEST(StatelessHTMLObserverTest, BindsEachIdentifierToItsCallback) {
    Lines lines;
    EventTraceObserver observer(&lines);
    Base::MultiDelegate delegate;
    observer.RegisterCalls(&delegate);
    const WideChar* const name = KESTRA_WIDE("n");
    StatelessHTMLObserver::Attributes attributes;
    attributes.push_back({WideString(KESTRA_WIDE("a")), WideString(KESTRA_WIDE("v"))});
    StatelessHTMLObserver::Tokens tokens;
    tokens.push_back(WideString(KESTRA_WIDE("t")));
    const void* const onlyName[] = {name};
    const void* const nameAndAttributes[] = {name, &attributes};
    const void* const attributesAndBody[] = {&attributes, name};
    const void* const nameAndTokens[] = {name, &tokens};
    delegate.Call(0);
    delegate.Call(1);
    delegate.Call(2, nameAndAttributes);
    delegate.Call(3, onlyName);
    delegate.Call(4, attributesAndBody);
    delegate.Call(5, nameAndAttributes);
    delegate.Call(6, nameAndTokens);
    delegate.Call(7, onlyName);
    delegate.Call(8, onlyName);
    delegate.Call(9, attributesAndBody);
    EXPECT_EQ(lines, (Lines{"start-parsing", "stop-parsing", "start(n|{a=v})", "end(n)", "script({a=v}|n)",
                            "extern(n|{a=v})", "entity(n|{t})", "comment(n)", "text(n)", "style({a=v}|n)"}));
}

TEST(StatelessHTMLObserverTest, HearsEveryEvent) {
    TracedParser parser;
    ParseAll(&parser);
    EXPECT_EQ(parser.lines, EVERY_LINE);
}

/// Only the callback that it overrides does anything.
class EndTagObserver : public StatelessHTMLObserver {
public:
    void OnEndTag(const WideChar* name) override {
        names += name;
    }

    WideString names;
};

TEST(StatelessHTMLObserverTest, DoesNothingByDefault) {
    StatelessHTMLObserver nothing;
    EndTagObserver endTags;
    StatelessHTMLParser parser;
    parser.Attach(&nothing);
    parser.Attach(&endTags);
    ParseAll(&parser);
    EXPECT_EQ(endTags.names, KESTRA_WIDE("b"));
}

TEST(StatelessHTMLObserverTest, RegisteredTwiceHearsEveryEventTwice) {
    TracedParser parser;
    parser.Attach(&parser.observer);
    ParseAll(&parser);
    Lines twice;
    for (const std::string& line : EVERY_LINE)
        twice.insert(twice.end(), 2, line);
    EXPECT_EQ(parser.lines, twice);
    parser.Detach(&parser.observer);
    parser.lines.clear();
    ParseAll(&parser);
    EXPECT_EQ(parser.lines, Lines());
}

TEST(StatelessHTMLObserverTest, OrderOfRegistration) {
    Lines lines;
    EventTraceObserver first(&lines, "first: ");
    EventTraceObserver second(&lines, "second: ");
    StatelessHTMLParser parser;
    parser.Attach(&second);
    parser.Attach(&first);
    ParseAll(&parser);
    Lines expected;
    for (const std::string& line : EVERY_LINE) {
        expected.push_back("second: " + line);
        expected.push_back("first: " + line);
    }
    EXPECT_EQ(lines, expected);
}

TEST(StatelessHTMLObserverTest, AttachedInACallbackHearsTheNextEvent) {
    Lines lines;
    EventTraceObserver first(&lines, "first: ");
    EventTraceObserver second(&lines, "second: ");
    StatelessHTMLParser parser;
    parser.Attach(&first);
    first.hook = [&](const std::string& line) {
        if (line == "first: start(b|)")
            parser.Attach(&second);
    };
    ParseAll(&parser, "<a><b/>");
    EXPECT_EQ(lines, (Lines{"first: start-parsing", "first: start(a|)", "first: start(b|)", "first: end(b)",
                            "second: end(b)", "first: stop-parsing", "second: stop-parsing"}));
}

TEST(StatelessHTMLObserverTest, DetachedInACallbackHearsNothingMore) {
    Lines lines;
    EventTraceObserver first(&lines, "first: ");
    EventTraceObserver second(&lines, "second: ");
    StatelessHTMLParser parser;
    parser.Attach(&first);
    parser.Attach(&second);
    first.hook = [&](const std::string& line) {
        if (line == "first: start(b|)")
            parser.Detach(&second);
        if (line == "first: end(b)")
            parser.Detach(&first);
    };
    ParseAll(&parser, "<a><b/><c>");
    EXPECT_EQ(lines, (Lines{"first: start-parsing", "second: start-parsing", "first: start(a|)", "second: start(a|)",
                            "first: start(b|)", "first: end(b)"}));
}

TEST(StatelessHTMLObserverTest, AttachedWhileAParserRuns) {
    Lines lines;
    EventTraceObserver observer(&lines);
    StatelessHTMLParser parser;
    parser.StartParse(0);
    parser.ParseBuffer("<a>b<c", 6);
    parser.Attach(&observer);
    parser.ParseBuffer(" d>", 3);
    parser.EndParse();
    EXPECT_EQ(lines, (Lines{"start(c|{d=})", "stop-parsing"}));
}

TEST(StatelessHTMLObserverTest, ACallbackMayFeedAnotherParser) {
    Lines lines;
    EventTraceObserver outer(&lines, "outer: ");
    EventTraceObserver inner(&lines, "inner: ");
    StatelessHTMLParser parser;
    StatelessHTMLParser other;
    parser.Attach(&outer);
    other.Attach(&inner);
    outer.hook = [&](const std::string& line) {
        if (line == "outer: start(a|)")
            ParseAll(&other, "<b>");
    };
    ParseAll(&parser, "<a><c>");
    EXPECT_EQ(lines, (Lines{"outer: start-parsing", "outer: start(a|)", "inner: start-parsing", "inner: start(b|)",
                            "inner: stop-parsing", "outer: start(c|)", "outer: stop-parsing"}));
}

TEST(StatelessHTMLObserverTest, ObservesTwoParsers) {
    Lines lines;
    EventTraceObserver observer(&lines);
    StatelessHTMLParser parser;
    StatelessHTMLParser other;
    parser.Attach(&observer);
    other.Attach(&observer);
    parser.StartParse(0);
    other.StartParse(0);
    parser.ParseBuffer("<a>b", 4);
    other.ParseBuffer("c<d>", 4);
    parser.ParseBuffer("<e>", 3);
    EXPECT_EQ(lines,
              (Lines{"start-parsing", "start-parsing", "start(a|)", "text(c)", "start(d|)", "text(b)", "start(e|)"}));
}

TEST(StatelessHTMLObserverTest, ACopyIsAttachedToNothing) {
    TracedParser parser;
    const EventTraceObserver copy(parser.observer);
    EventTraceObserver assigned(&parser.lines);
    assigned = parser.observer;
    ParseAll(&parser);
    EXPECT_EQ(parser.lines, EVERY_LINE);
}

/// Keeps whether its lists were there.
class ListObserver : public StatelessHTMLObserver {
public:
    void OnStartTag(const WideChar*, const Attributes* attributes) override {
        Note(attributes);
    }
    void OnScript(const Attributes* attributes, const WideChar*) override {
        Note(attributes);
    }
    void OnExternTag(const WideChar*, const Attributes* attributes) override {
        Note(attributes);
    }
    void OnEntityTag(const WideChar*, const Tokens* tokens) override {
        Note(tokens);
    }
    void OnStyle(const Attributes* attributes, const WideChar*) override {
        Note(attributes);
    }

    std::vector<std::size_t> sizes;

private:
    template <typename List>
    void Note(const List* list) {
        ASSERT_NE(list, nullptr);
        sizes.push_back(list->size());
    }
};

TEST(StatelessHTMLObserverTest, ListsAreThereWhenEmpty) {
    ListObserver observer;
    StatelessHTMLParser parser;
    parser.Attach(&observer);
    ParseAll(&parser,
             "<a b c><a><script d></script><script></script><?e?><!f g h><!f><style i></style><style></style>");
    EXPECT_EQ(observer.sizes, (std::vector<std::size_t>{2, 0, 1, 0, 0, 2, 1, 1, 0}));
}

}  // namespace
}  // namespace Kestra::Test
