#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "html/stateless/StatelessHTMLParser.h"
#include "platform/MemoryInputStream.h"
#include "platform/Services.h"
#include "tests/support/EventRun.h"
#include "tests/support/Flavours.h"
#include "tests/support/TestStreams.h"

// The stateless parser as a host uses it: streams, files, observers, copies.

namespace Kestra::Test {
namespace {

using HTML::StatelessHTMLParser;
using Lines = std::vector<std::string>;

/// Traces every event, and calls a hook inside the callback of a start tag.
class HookedListener : public EventTraceObserver {
public:
    using EventTraceObserver::EventTraceObserver;

    void OnStartTag(const WideChar* name, const Attributes* attributes) override {
        EventTraceObserver::OnStartTag(name, attributes);
        if (hook)
            hook();
    }

    std::function<void()> hook;
};

TEST(StatelessHTMLParserTest, WithoutAnObserver) {
    StatelessHTMLParser parser;
    EXPECT_EQ(parser.StartParse(0), 0U);
    EXPECT_EQ(parser.ParseBuffer("a<b c=d>e</b><!--f--><script>g</script>", 39), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
}

TEST(StatelessHTMLParserTest, ACallThatIsNestedChangesNothing) {
    Lines lines;
    HookedListener listener(&lines);
    StatelessHTMLParser parser;
    parser.Attach(&listener);
    std::vector<std::uint32_t> results;
    int destructions = 0;
    auto stream = std::make_unique<FaultyInputStream>(std::string("<z>"));
    stream->CountDestructions(&destructions);
    listener.hook = [&] {
        results = {parser.StartParse(0), parser.ParseBuffer("<z>", 3), parser.ParseStream(stream.get(), true),
                   parser.ParseFile(KESTRA_WIDE("x")), parser.EndParse()};
    };
    parser.StartParse(0);
    EXPECT_EQ(parser.ParseBuffer("a<b>c<d>", 8), 0U);
    EXPECT_EQ(results, std::vector<std::uint32_t>(5, 2));
    EXPECT_EQ(destructions, 0);  // a refused stream stays the caller's
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(lines, (Lines{"start-parsing", "text(a)", "start(b|)", "text(c)", "start(d|)", "stop-parsing"}));
}

TEST(StatelessHTMLParserTest, AnExceptionPassesThroughAndTheNextCallGoesOn) {
    Lines lines;
    HookedListener listener(&lines);
    StatelessHTMLParser parser;
    parser.Attach(&listener);
    listener.hook = [] { throw 1; };
    parser.StartParse(0);
    EXPECT_THROW(parser.ParseBuffer("<a>", 3), int);
    listener.hook = nullptr;
    EXPECT_EQ(parser.ParseBuffer("b<c>", 4), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(lines, (Lines{"start-parsing", "start(a|)", "text(b)", "start(c|)", "stop-parsing"}));
}

TEST(StatelessHTMLParserTest, TwoObserversAndOneThatLeaves) {
    Lines lines;
    StatelessHTMLParser parser;
    EventTraceObserver one(&lines);
    parser.Attach(&one);
    {
        EventTraceObserver other(&lines);
        parser.Attach(&other);
        parser.StartParse(0);
        parser.ParseBuffer("<a>", 3);
    }
    parser.ParseBuffer("<b>", 3);
    EXPECT_EQ(lines, (Lines{"start-parsing", "start-parsing", "start(a|)", "start(a|)", "start(b|)"}));
}

TEST(StatelessHTMLParserTest, ACopyGoesOnInTheMiddleOfATag) {
    const std::string document = "a<p b='c' d>e<!D x y><script>f='g'</script><?xml h=i?></p>";
    const EventRun whole = ParseEvents({document});
    for (std::size_t cut = 0; cut <= document.size(); ++cut) {
        const EventRun expected = ParseEvents({document.substr(0, cut), document.substr(cut)});
        Lines lines;
        EventTraceObserver observer(&lines);
        auto parser = std::make_unique<StatelessHTMLParser>();
        parser->Attach(&observer);
        parser->StartParse(0);
        parser->ParseBuffer(document.data(), cut);
        StatelessHTMLParser copy(*parser);
        parser = nullptr;
        StatelessHTMLParser assigned;
        assigned = copy;
        copy.Detach(&observer);
        assigned.ParseBuffer(document.data() + cut, document.size() - cut);
        assigned.EndParse();
        EXPECT_EQ(lines, expected.trace) << "cut at " << cut;
    }
    EXPECT_EQ(whole.trace.size(), 9U);
}

TEST(StatelessHTMLParserTest, AStreamIsReadToItsEnd) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{10}, std::size_t{65535}, std::size_t{65536}, std::size_t{131072}, std::size_t{200000}}) {
        SCOPED_TRACE(size);
        std::string document(size, 'x');
        document += "<p>";
        if (size >= 65536)
            document.resize(size);
        Lines lines;
        EventTraceObserver observer(&lines);
        StatelessHTMLParser parser;
        parser.Attach(&observer);
        parser.StartParse(0);
        int destructions = 0;
        auto* const stream = new FaultyInputStream(document);
        stream->CountDestructions(&destructions);
        EXPECT_EQ(parser.ParseStream(stream, true), 0U);
        EXPECT_EQ(destructions, 1);
        EXPECT_EQ(parser.ParseBuffer("<q>", 3), 0U);
        EXPECT_EQ(lines.back(), "start(q|)");
    }
}

std::uint32_t NoBuffer(Base::DefaultBufferAllocPolicy*, std::uint64_t) {
    return 8;
}

TEST(StatelessHTMLParserTest, AStreamThatFails) {
    StatelessHTMLParser parser;
    int destructions = 0;
    const auto make = [&destructions] {
        auto* const stream = new FaultyInputStream(std::string("<a><b>"));
        stream->CountDestructions(&destructions);
        return stream;
    };
    EXPECT_EQ(parser.ParseStream(make(), true), 10U);  // by the first piece: nothing was started
    EXPECT_EQ(destructions, 1);
    parser.StartParse(0);
    auto* const failing = make();
    failing->ShortenRead(1, 3).FailRead(2, 77);
    EXPECT_EQ(parser.ParseStream(failing, true), 77U);
    EXPECT_EQ(destructions, 2);
    auto* const lying = make();
    lying->MisreportRead(1, 70000);
    EXPECT_EQ(parser.ParseStream(lying, true), 512U);
    EXPECT_EQ(destructions, 3);
    Base::Services services = Base::PLATFORM_SERVICES;
    services.adjustBuffer = NoBuffer;
    {
        const Base::ServicesOverride replacement(services);
        EXPECT_EQ(parser.ParseStream(make(), true), 8U);
        EXPECT_EQ(destructions, 4);
    }
    const std::unique_ptr<FaultyInputStream> borrowed(make());
    borrowed->ReadNothing(1);
    EXPECT_EQ(parser.ParseStream(borrowed.get(), false), 0U);
    EXPECT_EQ(destructions, 4);
    VFS::MemoryInputStream malformed(std::string("<a><%"));
    EXPECT_EQ(parser.ParseStream(&malformed, false), 703U);
    EXPECT_EQ(parser.ParseFile(KESTRA_WIDE("/no/such/file")), 506U);
    EXPECT_EQ(parser.ParseFile(nullptr), 506U);
}

TEST(StatelessHTMLParserTest, FlagsKeep32Bits) {
    StatelessHTMLParser parser;
    EXPECT_EQ(parser.GetFlags(), 1U);
    EXPECT_EQ(parser.SetFlags(~0UL), 0U);
    EXPECT_EQ(parser.GetFlags(), 0xFFFFFFFFUL);
}

TEST(StatelessHTMLParserTest, NulsEndWhatACallbackSeesExceptInValues) {
    const std::string document("a\0b<p c='d\0e'>", 14);
    EXPECT_EQ(ParseEvents({document}).trace, (Lines{"start-parsing", "text(a)", "start(p|{c=d\\x00e})", "stop-parsing"}));
}

}  // namespace
}  // namespace Kestra::Test
