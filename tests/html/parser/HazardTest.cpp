#include <stdexcept>

#include "platform/Services.h"
#include "tests/html/parser/DocumentRows.h"

// Calls in an unlucky order, streams that lie and observers that throw: nothing is read that is
// gone, and no token comes twice.

namespace Kestra::Test {
namespace {

/// Throws at the first text.
class ThrowingParser : public FedParser {
public:
    ThrowingParser() {
        SetHook([this](const std::string& line) {
            if (line.starts_with("text(") && ++texts == 1)
                throw std::runtime_error("thrown by the observer");
        });
        StartSilently();
    }

private:
    int texts = 0;
};

TEST(HazardTest, EveryErrorForgetsABorrowedStream) {
    struct Row {
        const char* note;
        std::function<std::uint32_t(GenericParser*)> fail;
    };
    const Row rows[] = {
        {"a stream that is null", [](GenericParser* parser) { return parser->ParseStream(nullptr, false); }},
        {"a file that does not exist",
         [](GenericParser* parser) { return parser->ParseFile(KESTRA_WIDE("/nonexistent/page.html")); }},
        {"null data with a size", [](GenericParser* parser) { return parser->ParseBuffer(nullptr, 3); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        GenericParser parser;
        parser.StartParse(1252, DATA_STREAM_8BIT);
        auto stream = std::make_unique<VFS::MemoryInputStream>("a<b");
        EXPECT_EQ(parser.ParseStream(stream.get(), false), 0U);
        EXPECT_EQ(row.fail(&parser), 2U);
        stream.reset();
        EXPECT_EQ(parser.EndParse(), 16U) << "without the stream the open tag cannot become junk";
    }
}

TEST(HazardTest, AnOddPieceForgetsABorrowedStream) {
    GenericParser parser;
    parser.StartParse(0, DATA_STREAM_UTF16);
    auto stream = std::make_unique<VFS::MemoryInputStream>(std::string("<\0b\0", 4));
    EXPECT_EQ(parser.ParseStream(stream.get(), false), 0U);
    EXPECT_EQ(parser.ParseBuffer("abc", 3), 2U);
    stream.reset();
    EXPECT_EQ(parser.EndParse(), 16U);
}

TEST(HazardTest, AStreamThatClaimsMoreThanItWasAskedForFails) {
    for (const std::uint64_t excess : {1, 64, 1 << 20}) {
        SCOPED_TRACE(excess);
        FaultyInputStream stream("some text");
        stream.MisreportRead(1, GenericParser::BUFFER_SIZE + excess);
        GenericParser parser;
        parser.StartParse(1252, DATA_STREAM_8BIT);
        EXPECT_EQ(parser.ParseStream(&stream, false), RESULT_STREAM_FAILED);

        FaultyInputStream detected("some text");
        detected.MisreportRead(1, GenericParser::BUFFER_SIZE + excess);
        StringNS::CharSet::Code code = 7;
        EXPECT_EQ(parser.DetectCharset(&detected, &code), RESULT_STREAM_FAILED);
        EXPECT_EQ(code, 7U);
    }
}

TEST(HazardTest, ATokenThatMadeTheObserverThrowDoesNotComeAgain) {
    ThrowingParser parser;
    EXPECT_THROW(parser.Feed("hello<b>"), std::runtime_error);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.TakeLines(), "text(hello)\nend-parsing\n");
}

TEST(HazardTest, AThrowInsideEndParseLeavesNoPendingText) {
    ThrowingParser parser;
    EXPECT_EQ(parser.Feed("hello"), 0U);
    EXPECT_THROW(parser.EndParse(), std::runtime_error);
    EXPECT_EQ(parser.Feed("x"), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.TakeLines(), "text(hello)\ntext(x)\nend-parsing\n");
}

TEST(HazardTest, AThrowWhileAnOwnedStreamIsFedFreesAndForgetsIt) {
    ThrowingParser parser;
    int destructions = 0;
    auto stream = std::make_unique<FaultyInputStream>("hello<b><c");
    stream->CountDestructions(&destructions);
    EXPECT_THROW(parser.ParseStream(stream.release(), true), std::runtime_error);
    EXPECT_EQ(destructions, 1);
    EXPECT_EQ(parser.EndParse(), 0U);
}

TEST(HazardTest, TheDetectorIsKnownFromTheFirstCallbackOn) {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = [](const void*, std::uint64_t, Base::DetectedCharset* detected, std::uint32_t* count) {
        *detected = {20866, 90};
        *count = 1;
        return std::uint32_t{0};
    };
    const Base::ServicesOverride override(services);
    FedParser parser;
    std::vector<bool> wasUsed;
    parser.SetHook([&](const std::string& line) {
        if (line == "start-parsing")
            wasUsed.push_back(parser.WasCharsetDetectorUsed());
    });
    parser.Start(0, DATA_STREAM_AUTO);
    EXPECT_EQ(parser.FeedStream(std::string(300, 'a')), 705U);
    EXPECT_EQ(parser.FeedStream(std::string(300, 'a')), 0U);
    EXPECT_EQ(parser.GetCharset(), 20866U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(wasUsed, (std::vector<bool>{false, true}));
}

}  // namespace
}  // namespace Kestra::Test
