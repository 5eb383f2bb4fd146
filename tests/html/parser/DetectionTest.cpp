#include <limits>
#include <new>
#include <stdexcept>

#include "platform/Services.h"
#include "platform/StringHelper.h"
#include "tests/html/parser/DocumentRows.h"

namespace Kestra::Test {
namespace {

constexpr std::uint32_t HOST_CODE = 4711;

/// What the scripted detector answers, and what it was asked.
struct DetectorScript {
    std::uint32_t result = 0;
    StringNS::CharSet::Code code = 0;
    std::uint32_t confidence = 100;
    std::uint32_t count = 1;
    void (*fail)() = nullptr;  ///< throws

    int calls = 0;
    std::string data;
};

DetectorScript* script = nullptr;

std::uint32_t DetectByScript(const void* data, std::uint64_t size, Base::DetectedCharset* detected,
                             std::uint32_t* count) {
    ++script->calls;
    script->data.assign(static_cast<const char*>(data), static_cast<std::size_t>(size));
    if (script->fail != nullptr)
        script->fail();
    if (script->result != 0)
        return script->result;
    detected->code = script->code;
    detected->confidence = script->confidence;
    *count = script->count;
    return 0;
}

/// Puts a scripted detector in place, also of another one for a while.
class ScriptedDetector {
public:
    explicit ScriptedDetector(DetectorScript newScript)
        : running(std::move(newScript)), previous(script), services(WithScript()), replacement(services) {
        script = &running;
    }
    ScriptedDetector(const ScriptedDetector&) = delete;
    ScriptedDetector& operator=(const ScriptedDetector&) = delete;
    ~ScriptedDetector() {
        script = previous;
    }

    DetectorScript running;

private:
    static Base::Services WithScript() {
        Base::Services scripted = Base::PLATFORM_SERVICES;
        scripted.detectCharset = DetectByScript;
        return scripted;
    }

    DetectorScript* previous;
    Base::Services services;
    Base::ServicesOverride replacement;
};

DetectorScript Answer(StringNS::CharSet::Code code, std::uint32_t confidence = 100, std::uint32_t count = 1) {
    DetectorScript answer;
    answer.code = code;
    answer.confidence = confidence;
    answer.count = count;
    return answer;
}

DetectorScript Failure(std::uint32_t result) {
    DetectorScript failure;
    failure.result = result;
    return failure;
}

DetectorScript Throw(void (*fail)()) {
    DetectorScript failure;
    failure.fail = fail;
    return failure;
}

struct AnswerRow {
    const char* note;
    DetectorScript script;
    std::uint64_t minConfidence;
    std::uint32_t detectResult;
    StringNS::CharSet::Code detectedCode;  ///< what `DetectCharset` stores
    std::uint32_t streamResult;
};

const AnswerRow ANSWERS[] = {
    {"a charset with full confidence", Answer(1251), 50, 0, 1251, 705},
    {"confidence of exactly the minimum", Answer(1251, 50), 50, 0, 1251, 705},
    {"one less", Answer(1251, 49), 50, 708, 0, 0},
    {"a higher minimum", Answer(1251, 79), 80, 708, 0, 0},
    {"no minimum", Answer(1251, 0), 0, 0, 1251, 705},
    {"a minimum that nothing reaches", Answer(1251, 100), 101, 708, 0, 0},
    {"EUC-JP is replaced by 20932", Answer(51932), 50, 0, 20932, 705},
    {"20932 itself", Answer(20932), 50, 0, 20932, 705},
    {"UTF-8", Answer(65001), 50, 0, 65001, 705},
    {"UTF-16", Answer(1200), 50, 0, 1200, 705},
    {"ISO-2022-JP", Answer(50221), 50, 0, 50221, 705},
    {"GB18030", Answer(54936), 50, 0, 54936, 705},
    {"ASCII is no answer", Answer(20127), 50, 11, 0, 0},
    {"a code page without a name is none", Answer(4711), 50, 11, 0, 0},
    {"nor is code page 0", Answer(0), 50, 11, 0, 0},
    {"ASCII without confidence is not confident first", Answer(20127, 10), 50, 708, 0, 0},
    {"no result", Answer(1251, 100, 0), 50, 708, 0, 0},
    {"two results", Answer(1251, 100, 2), 50, 708, 0, 0},
    {"the detector cannot be started", Failure(11), 50, 11, 0, 0},
    {"the detector fails", Failure(709), 50, 709, 0, 706},
    {"memory is lacking", Throw([] { throw std::bad_alloc(); }), 50, 8, 0, 0},
    {"a string cannot be as long", Throw([] { throw std::length_error("too long"); }), 50, 8, 0, 0},
};

/// A document of the given size that leaves no doubt about its tokens.
std::string DocumentOf(std::size_t size) {
    return "<p>" + std::string(size - 7, 'x') + "</p>";
}

TEST(DetectCharsetTest, TheDetectorsAnswers) {
    const std::string text(256, 'x');
    for (const AnswerRow& row : ANSWERS) {
        SCOPED_TRACE(row.note);
        const ScriptedDetector detector(row.script);
        GenericParser parser;
        parser.SetChrDetMinConfidence(row.minConfidence);
        StringNS::CharSet::Code code = 1;
        EXPECT_EQ(parser.DetectCharset(text.data(), text.size(), &code), row.detectResult);
        EXPECT_EQ(code, row.detectedCode);
        VFS::MemoryInputStream stream(text);
        code = 1;
        EXPECT_EQ(parser.DetectCharset(&stream, &code), row.detectResult);
        EXPECT_EQ(code, row.detectedCode);
        EXPECT_EQ(detector.running.calls, 2);
        EXPECT_EQ(detector.running.data, text);
    }
}

TEST(DetectCharsetTest, TooLittleDataNeverReachesTheDetector) {
    const ScriptedDetector detector(Answer(1251));
    GenericParser parser;
    const std::string text(256, 'x');
    for (const std::uint64_t size : {0, 1, 100, 255}) {
        StringNS::CharSet::Code code = 77;
        EXPECT_EQ(parser.DetectCharset(text.data(), size, &code), 707U);
        EXPECT_EQ(code, 77U);
        VFS::MemoryInputStream stream(text.substr(0, static_cast<std::size_t>(size)));
        EXPECT_EQ(parser.DetectCharset(&stream, &code), 707U);
        EXPECT_EQ(code, 77U);
    }
    EXPECT_EQ(detector.running.calls, 0);
    StringNS::CharSet::Code code = 77;
    EXPECT_EQ(parser.DetectCharset(text.data(), 256, &code), 0U);
    EXPECT_EQ(code, 1251U);
    EXPECT_EQ(detector.running.calls, 1);
}

TEST(DetectCharsetTest, TheStreamFormReadsUpTo16384BytesHoweverShortTheReadsAre) {
    std::string text;
    for (int i = 0; text.size() < 20000; ++i)
        text += std::to_string(i) + " ";
    struct Row {
        std::uint64_t readSize;
        std::uint64_t start;
        std::uint64_t size;
    };
    const Row rows[] = {
        {16384, 0, 20000}, {1, 0, 20000},    {100, 0, 20000},       {5000, 0, 16384},
        {7, 0, 300},       {7, 1000, 20000}, {16384, 19700, 20000},
    };
    for (const Row& row : rows) {
        const ScriptedDetector detector(Answer(1251));
        BoundedInputStream stream(text.substr(0, static_cast<std::size_t>(row.size)), AtMost(row.readSize));
        EXPECT_EQ(stream.Seek(row.start), 0U);
        GenericParser parser;
        StringNS::CharSet::Code code = 0;
        EXPECT_EQ(parser.DetectCharset(&stream, &code), 0U);
        EXPECT_EQ(code, 1251U);
        const std::uint64_t expected = std::min<std::uint64_t>(row.size - row.start, 16384);
        EXPECT_EQ(detector.running.data,
                  text.substr(static_cast<std::size_t>(row.start), static_cast<std::size_t>(expected)));
        std::uint64_t position = 0;
        EXPECT_EQ(stream.GetPosition(&position), 0U);
        EXPECT_EQ(position, row.start + expected);
    }
}

TEST(DetectCharsetTest, TheMostBytesOfAStream) {
    constexpr std::uint64_t ALL = std::numeric_limits<std::uint64_t>::max();
    const std::string text = DocumentOf(100000);
    const struct {
        const char* note;
        std::uint64_t most;
        std::uint64_t size;  // of the stream
        std::uint64_t looked;
    } rows[] = {
        {"as many as there are for the least data", 256, 20000, 256},
        {"fewer than a read has", 1000, 20000, 1000},
        {"one fewer than a buffer has", 16383, 20000, 16383},
        {"the default", 16384, 20000, 16384},
        {"one more", 16385, 20000, 16385},
        {"all of them, to the byte", 20000, 20000, 20000},
        {"several buffers", 50000, 100000, 50000},
        {"a buffer that is full exactly when it has doubled", 32768, 100000, 32768},
        {"more than there are", 1000000, 100000, 100000},
        {"more than memory could hold", ALL, 100000, 100000},
        {"no limit", 0, 100000, 100000},
        {"no limit, and the end of a buffer is that of the stream", 0, 65536, 65536},
    };
    for (const auto& row : rows) {
        for (const std::uint64_t readSize : {1000, 16384, 100000}) {
            SCOPED_TRACE(row.note);
            const std::string bytes = text.substr(0, static_cast<std::size_t>(row.size));
            const ScriptedDetector detector(Answer(1251));
            GenericParser parser;
            EXPECT_EQ(parser.SetChrDetMaxSize(row.most), 0U);
            EXPECT_EQ(parser.GetChrDetMaxSize(), row.most);
            BoundedInputStream called(bytes, AtMost(readSize));
            StringNS::CharSet::Code code = 0;
            EXPECT_EQ(parser.DetectCharset(&called, &code), 0U);
            EXPECT_EQ(detector.running.data, bytes.substr(0, static_cast<std::size_t>(row.looked)));
            std::uint64_t position = 0;
            EXPECT_EQ(called.GetPosition(&position), 0U);
            EXPECT_EQ(position, row.looked);
            // A parse looks at the same bytes.
            BoundedInputStream parsed(bytes, AtMost(readSize));
            EXPECT_EQ(parser.StartParse(0, DATA_STREAM_AUTO), 0U);
            EXPECT_EQ(parser.ParseStream(&parsed, false), 705U);
            EXPECT_EQ(detector.running.data, bytes.substr(0, static_cast<std::size_t>(row.looked)));
            EXPECT_EQ(detector.running.calls, 2);
        }
    }
}

TEST(DetectCharsetTest, WithAMostOfFewerBytesThanItNeedsTheDetectorIsNeverAsked) {
    const ScriptedDetector detector(Answer(1251));
    GenericParser parser;
    for (const std::uint64_t most : {1, 255}) {
        parser.SetChrDetMaxSize(most);
        VFS::MemoryInputStream called(DocumentOf(300));
        StringNS::CharSet::Code code = 77;
        EXPECT_EQ(parser.DetectCharset(&called, &code), 707U);
        EXPECT_EQ(code, 77U);
        VFS::MemoryInputStream parsed(DocumentOf(300));
        EXPECT_EQ(parser.StartParse(0, DATA_STREAM_AUTO), 0U);
        EXPECT_EQ(parser.ParseStream(&parsed, false), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
    }
    EXPECT_EQ(detector.running.calls, 0);
    // It limits streams only.
    const std::string text = DocumentOf(300);
    StringNS::CharSet::Code code = 0;
    EXPECT_EQ(parser.DetectCharset(text.data(), text.size(), &code), 0U);
    EXPECT_EQ(detector.running.data, text);
}

int buffersAllowed = 0;

std::uint32_t AdjustSome(Base::DefaultBufferAllocPolicy* buffer, std::uint64_t size) {
    return buffersAllowed-- > 0 ? buffer->AdjustTo(size) : std::uint32_t{RESULT_OUT_OF_MEMORY};
}

TEST(DetectCharsetTest, AStreamThatDoesNotFitTheMemory) {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.adjustBuffer = AdjustSome;
    services.detectCharset = DetectByScript;
    DetectorScript asked = Answer(1251);
    script = &asked;
    const Base::ServicesOverride replacement(services);
    for (const int buffers : {1, 2}) {
        GenericParser parser;
        parser.SetChrDetMaxSize(0);
        VFS::MemoryInputStream called(DocumentOf(100000));
        buffersAllowed = buffers;
        StringNS::CharSet::Code code = 0;
        EXPECT_EQ(parser.DetectCharset(&called, &code), static_cast<std::uint32_t>(RESULT_OUT_OF_MEMORY));
        // The first buffer of a parse is that for its pieces. The text stays as it was read.
        VFS::MemoryInputStream parsed(DocumentOf(100000));
        buffersAllowed = 1 + buffers;
        EXPECT_EQ(parser.StartParse(0, DATA_STREAM_AUTO), 0U);
        EXPECT_EQ(parser.ParseStream(&parsed, false), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
    }
    EXPECT_EQ(asked.calls, 0);
}

TEST(DetectedConfidenceTest, OfTheLastAnswer) {
    const std::string text = DocumentOf(300);
    const struct {
        const char* note;
        DetectorScript script;
        std::uint64_t confidence;
    } rows[] = {
        {"a charset", Answer(1251, 73), 73},
        {"too low a confidence", Answer(1251, 12), 12},
        {"none at all", Answer(1251, 0), 0},
        {"ASCII", Answer(20127, 100), 100},
        {"a code page without a name", Answer(4711, 64), 64},
        {"more than there is", Answer(1251, 250), 100},
        {"no result", Answer(1251, 88, 0), 0},
        {"two results", Answer(1251, 88, 2), 0},
        {"the detector cannot be started", Failure(11), 0},
        {"the detector fails", Failure(709), 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        GenericParser parser;
        EXPECT_EQ(parser.GetDetectedConfidence(), 0U);
        StringNS::CharSet::Code code = 0;
        const auto askBefore = [&] {
            const ScriptedDetector before(Answer(1252, 51));
            EXPECT_EQ(parser.DetectCharset(text.data(), text.size(), &code), 0U);
            EXPECT_EQ(parser.GetDetectedConfidence(), 51U);
        };
        const ScriptedDetector detector(row.script);
        askBefore();
        parser.DetectCharset(text.data(), text.size(), &code);
        EXPECT_EQ(parser.GetDetectedConfidence(), row.confidence) << "of a buffer";
        askBefore();
        VFS::MemoryInputStream called(text);
        parser.DetectCharset(&called, &code);
        EXPECT_EQ(parser.GetDetectedConfidence(), row.confidence) << "of a stream";
        askBefore();
        VFS::MemoryInputStream parsed(text);
        parser.StartParse(0, DATA_STREAM_AUTO);
        parser.ParseStream(&parsed, false);
        EXPECT_EQ(parser.GetDetectedConfidence(), row.confidence) << "of a parse";
    }
}

TEST(DetectedConfidenceTest, WhatFailsBeforeTheDetectorIsAskedHasNone) {
    const std::string text = DocumentOf(300);
    const struct {
        const char* note;
        std::uint32_t (*call)(GenericParser* parser, const std::string& text);
        std::uint32_t result;
    } rows[] = {
        {"too little data",
         [](GenericParser* parser, const std::string& bytes) {
             StringNS::CharSet::Code code = 0;
             return parser->DetectCharset(bytes.data(), 255, &code);
         },
         707},
        {"null for the code",
         [](GenericParser* parser, const std::string& bytes) {
             return parser->DetectCharset(bytes.data(), bytes.size(), nullptr);
         },
         2},
        {"no stream",
         [](GenericParser* parser, const std::string&) {
             StringNS::CharSet::Code code = 0;
             return parser->DetectCharset(nullptr, &code);
         },
         2},
        {"a stream that cannot be read",
         [](GenericParser* parser, const std::string& bytes) {
             FaultyInputStream stream(bytes);
             stream.FailRead(1, HOST_CODE);
             StringNS::CharSet::Code code = 0;
             return parser->DetectCharset(&stream, &code);
         },
         HOST_CODE},
    };
    const ScriptedDetector detector(Answer(1251, 60));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        GenericParser parser;
        StringNS::CharSet::Code code = 0;
        EXPECT_EQ(parser.DetectCharset(text.data(), text.size(), &code), 0U);
        EXPECT_EQ(parser.GetDetectedConfidence(), 60U);
        EXPECT_EQ(row.call(&parser, text), row.result);
        EXPECT_EQ(parser.GetDetectedConfidence(), 0U);
    }
}

TEST(DetectedConfidenceTest, StaysUntilTheDetectorIsAskedAgain) {
    const ScriptedDetector detector(Answer(1251, 77));
    const std::string text = DocumentOf(300);
    GenericParser parser;
    VFS::MemoryInputStream stream(text);
    EXPECT_EQ(parser.StartParse(0, DATA_STREAM_AUTO), 0U);
    EXPECT_EQ(parser.ParseStream(&stream, false), 705U);
    EXPECT_EQ(parser.GetDetectedConfidence(), 77U);
    EXPECT_EQ(parser.StartParse(parser.GetCharset(), DATA_STREAM_AUTO), 0U);
    EXPECT_EQ(parser.GetDetectedConfidence(), 77U);
    EXPECT_EQ(stream.Seek(0), 0U);
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.GetDetectedConfidence(), 77U);
}

TEST(DetectedConfidenceTest, CopiesHaveItAndTheMostBytes) {
    const ScriptedDetector detector(Answer(1251, 77));
    const std::string text = DocumentOf(300);
    GenericParser parser;
    EXPECT_EQ(parser.GetChrDetMaxSize(), 16384U);
    parser.SetChrDetMaxSize(290);
    StringNS::CharSet::Code code = 0;
    EXPECT_EQ(parser.DetectCharset(text.data(), text.size(), &code), 0U);
    GenericParser copied(parser);
    GenericParser moved(std::move(parser));
    GenericParser assigned;
    assigned.SetChrDetMaxSize(0);
    assigned = copied;
    // What was moved from is as it was.
    for (GenericParser* const each : {&copied, &moved, &assigned, &parser}) {  // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(each->GetDetectedConfidence(), 77U);
        EXPECT_EQ(each->GetChrDetMaxSize(), 290U);
        VFS::MemoryInputStream stream(text);
        EXPECT_EQ(each->DetectCharset(&stream, &code), 0U);
        EXPECT_EQ(detector.running.data, text.substr(0, 290));
    }
    // From then on each has its own.
    EXPECT_EQ(copied.DetectCharset(text.data(), 255, &code), 707U);
    copied.SetChrDetMaxSize(0);
    EXPECT_EQ(copied.GetDetectedConfidence(), 0U);
    EXPECT_EQ(assigned.GetDetectedConfidence(), 77U);
    EXPECT_EQ(assigned.GetChrDetMaxSize(), 290U);
}

TEST(DetectCharsetTest, StreamsThatFailOrAreExhausted) {
    const ScriptedDetector detector(Answer(1251));
    GenericParser parser;
    const std::string text(400, 'x');
    StringNS::CharSet::Code code = 5;
    {
        FaultyInputStream stream(text);
        stream.FailRead(1, HOST_CODE);
        EXPECT_EQ(parser.DetectCharset(&stream, &code), HOST_CODE);
    }
    {
        FaultyInputStream stream(text);
        stream.ShortenRead(1, 300).FailRead(2, HOST_CODE);
        EXPECT_EQ(parser.DetectCharset(&stream, &code), HOST_CODE);
    }
    EXPECT_EQ(detector.running.calls, 0);
    {
        FaultyInputStream stream(text);
        stream.ShortenRead(1, 255).FailRead(2, RESULT_END_OF_DATA);
        EXPECT_EQ(parser.DetectCharset(&stream, &code), 707U);
    }
    {
        VFS::MemoryInputStream stream(text);
        EXPECT_EQ(stream.Seek(400), 0U);
        EXPECT_EQ(parser.DetectCharset(&stream, &code), 707U);
    }
    {
        // 513 is the end, also where `IsEnd` never says so; a read of nothing is none.
        FaultyInputStream stream(text);
        stream.NeverEnd().ReadNothing(1).ShortenRead(2, 30);
        EXPECT_EQ(parser.DetectCharset(&stream, &code), 0U);
        EXPECT_EQ(detector.running.data, text);
        EXPECT_EQ(code, 1251U);
    }
}

std::uint32_t FailToAdjust(Base::DefaultBufferAllocPolicy*, std::uint64_t) {
    return RESULT_OUT_OF_MEMORY;
}

TEST(DetectCharsetTest, WithoutAReadBufferTheStreamIsNotRead) {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.adjustBuffer = FailToAdjust;
    const Base::ServicesOverride replacement(services);
    GenericParser parser;
    FaultyInputStream stream(std::string(300, 'x'));
    StringNS::CharSet::Code code = 0;
    EXPECT_EQ(parser.DetectCharset(&stream, &code), static_cast<std::uint32_t>(RESULT_OUT_OF_MEMORY));
    EXPECT_EQ(stream.GetReadCalls(), 0U);
}

TEST(DetectCharsetTest, NullPointers) {
    GenericParser parser;
    StringNS::CharSet::Code code = 9;
    EXPECT_EQ(parser.DetectCharset(static_cast<const void*>(nullptr), 300, &code), 2U);
    EXPECT_EQ(parser.DetectCharset(static_cast<VFS::InputStream*>(nullptr), &code), 2U);
    EXPECT_EQ(code, 9U);
}

Lines TokensOf(std::size_t size) {
    return {"start-parsing", "start(|p||)", "text(" + std::string(size - 7, 'x') + ")", "end(|p|||)"};
}

TEST(LateDetectionTest, TheDetectorsAnswersAfterAStream) {
    for (const AnswerRow& row : ANSWERS) {
        for (const bool owned : {false, true}) {
            SCOPED_TRACE(row.note);
            const ScriptedDetector detector(row.script);
            FedParser parser;
            parser.SetChrDetMinConfidence(row.minConfidence);
            parser.Start(0, DATA_STREAM_AUTO);
            int destructions = 0;
            auto stream = std::make_unique<FaultyInputStream>(DocumentOf(300));
            stream->CountDestructions(&destructions);
            EXPECT_EQ(parser.ParseStream(owned ? stream.release() : stream.get(), owned), row.streamResult);
            EXPECT_EQ(detector.running.calls, 1);
            EXPECT_EQ(detector.running.data, DocumentOf(300));
            EXPECT_EQ(destructions, owned ? 1 : 0);
            EXPECT_EQ(Join(parser.lines), Join(TokensOf(300)));
            parser.lines.clear();
            if (row.streamResult == 705) {
                // No parser runs until more is fed; the answer is the new charset.
                EXPECT_EQ(parser.GetCharset(), row.detectedCode);
                EXPECT_TRUE(parser.GetCurrentParserName().empty());
                EXPECT_EQ(parser.GetLine(), 1U);
                EXPECT_EQ(parser.GetColumn(), 1U);
                EXPECT_FALSE(parser.IsWParser());
                EXPECT_FALSE(parser.NeedsReparsing());
                EXPECT_EQ(parser.EndParse(), 0U);
                EXPECT_EQ(Join(parser.lines), "");
            } else {
                EXPECT_EQ(parser.GetCharset(), 0U);
                EXPECT_FALSE(parser.WasCharsetDetectorUsed());
                EXPECT_EQ(parser.EndParse(), 0U);
                EXPECT_EQ(Join(parser.lines), "end-parsing\n");
            }
        }
    }
}

TEST(LateDetectionTest, TheSameWithA8BitTypeAndAWideObserver) {
    const ScriptedDetector detector(Answer(1251));
    FedParser parser(Observed::WIDE);
    parser.Start(0);
    EXPECT_EQ(parser.FeedStream(DocumentOf(300)), 705U);
    EXPECT_EQ(parser.GetCharset(), 1251U);
    Lines expected = TokensOf(300);
    expected.insert(expected.begin() + 1, "charset(0)");
    EXPECT_EQ(Join(parser.lines), Join(expected));
}

TEST(LateDetectionTest, DataFedAgainWithoutStartParseUsesTheDetectedCharset) {
    const ScriptedDetector detector(Answer(1251));
    FedParser parser(Observed::WIDE);
    parser.Start(0, DATA_STREAM_AUTO);
    const std::string document = DocumentOf(300) + "\xC6";
    {
        VFS::MemoryInputStream gone(document);
        EXPECT_EQ(parser.ParseStream(&gone, false), 705U);
    }
    parser.lines.clear();
    EXPECT_FALSE(parser.WasCharsetDetectorUsed());
    VFS::MemoryInputStream stream(document);
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(detector.running.calls, 1);
    EXPECT_EQ(parser.GetCharset(), 1251U);
    EXPECT_TRUE(parser.WasCharsetDetectorUsed());
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_TRUE(parser.WasCharsetDetectorUsed());
    Lines expected = TokensOf(300);
    expected.push_back("text(\\u0416)");
    expected.push_back("end-parsing");
    EXPECT_EQ(Join(parser.lines), Join(expected));

    // The next document is none of the detector's.
    parser.Start(1251, DATA_STREAM_AUTO);
    EXPECT_EQ(parser.Feed("a"), 0U);
    EXPECT_FALSE(parser.WasCharsetDetectorUsed());
}

TEST(LateDetectionTest, StartingAgainWithTheDetectedCharset) {
    for (const GenericParser::DataStreamType type : {DATA_STREAM_AUTO, DATA_STREAM_8BIT}) {
        const ScriptedDetector detector(Answer(1251));
        FedParser parser(Observed::WIDE);
        parser.Start(0, type);
        const std::string document = DocumentOf(300) + "\xC6";
        VFS::MemoryInputStream stream(document);
        EXPECT_EQ(parser.ParseStream(&stream, false), 705U);
        EXPECT_EQ(stream.Seek(0), 0U);
        parser.Start(parser.GetCharset(), type);
        EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
        EXPECT_FALSE(parser.WasCharsetDetectorUsed());
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(parser.lines[parser.lines.size() - 2], "text(\\u0416)");
    }
}

TEST(LateDetectionTest, WhereNothingHasToBeDetected) {
    struct Row {
        const char* note;
        StringNS::CharSet::Code charset;
        GenericParser::DataStreamType type;
        std::string bytes;
    };
    const Row rows[] = {
        {"the charset is known", 1252, DATA_STREAM_AUTO, DocumentOf(300)},
        {"UTF-7 is 1252", 65000, DATA_STREAM_AUTO, DocumentOf(300)},
        {"a UTF-8 mark", 0, DATA_STREAM_AUTO, "\xEF\xBB\xBF" + DocumentOf(300)},
        {"a UTF-16 mark", 0, DATA_STREAM_AUTO, "\xFF\xFE" + DocumentOf(300)},
        {"UTF-16", 0, DATA_STREAM_UTF16, DocumentOf(300)},
        {"an empty stream starts no parser", 0, DATA_STREAM_AUTO, ""},
        {"half a mark neither", 0, DATA_STREAM_AUTO, "\xEF"},
        {"too little data", 0, DATA_STREAM_AUTO, DocumentOf(255)},
        {"too little data with a type", 0, DATA_STREAM_8BIT, DocumentOf(255)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const ScriptedDetector detector(Answer(1251));
        GenericParser parser;
        EXPECT_EQ(parser.StartParse(row.charset, row.type), 0U);
        FaultyInputStream stream(row.bytes);
        EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
        EXPECT_EQ(detector.running.calls, 0);
        EXPECT_EQ(parser.EndParse(), 0U);
    }
}

TEST(LateDetectionTest, TheStreamIsReadFromItsStartAgain) {
    // Whatever the stream's position was at first, detection looks at the first 16,384 bytes.
    std::string bytes = std::string(100, '#') + DocumentOf(20000);
    const ScriptedDetector detector(Answer(1251));
    GenericParser parser;
    EXPECT_EQ(parser.StartParse(0, DATA_STREAM_AUTO), 0U);
    BoundedInputStream stream(bytes, AtMost(1000));
    EXPECT_EQ(stream.Seek(100), 0U);
    EXPECT_EQ(parser.ParseStream(&stream, false), 705U);
    EXPECT_EQ(detector.running.data, bytes.substr(0, 16384));
}

TEST(LateDetectionTest, AStreamThatCannotBeReadAgainIsNotDetected) {
    struct Row {
        const char* note;
        void (*spoil)(FaultyInputStream*);
    };
    const Row rows[] = {
        {"no seek", [](FaultyInputStream* stream) { stream->FailSeeksFrom(1, HOST_CODE); }},
        {"no read", [](FaultyInputStream* stream) { stream->FailReadsFrom(2, HOST_CODE); }},
        {"an end too early", [](FaultyInputStream* stream) { stream->FailReadsFrom(2, RESULT_END_OF_DATA); }},
    };
    for (const Row& row : rows) {
        for (const bool owned : {false, true}) {
            SCOPED_TRACE(row.note);
            const ScriptedDetector detector(Answer(1251));
            FedParser parser;
            parser.Start(0, DATA_STREAM_AUTO);
            int destructions = 0;
            auto stream = std::make_unique<FaultyInputStream>(DocumentOf(300));
            stream->CountDestructions(&destructions);
            row.spoil(stream.get());
            EXPECT_EQ(parser.ParseStream(owned ? stream.release() : stream.get(), owned), 0U);
            EXPECT_EQ(detector.running.calls, 0);
            EXPECT_EQ(destructions, owned ? 1 : 0);
            EXPECT_EQ(parser.EndParse(), 0U);
            Lines expected = TokensOf(300);
            expected.push_back("end-parsing");
            EXPECT_EQ(Join(parser.lines), Join(expected));
        }
    }
}

TEST(LateDetectionTest, AnOpenConstructIsStillReadAgainAfterAnAnswerOfNoUse) {
    for (const bool owned : {false, true}) {
        const ScriptedDetector detector(Answer(20127));
        FedParser parser;
        parser.Start(0, DATA_STREAM_AUTO);
        EXPECT_EQ(parser.FeedStream(DocumentOf(300) + "<a b", owned), 0U);
        EXPECT_EQ(detector.running.calls, 1);
        EXPECT_EQ(parser.EndParse(), 0U);
        Lines expected = TokensOf(300);
        expected.push_back("junk(<a b)");
        expected.push_back("end-parsing");
        EXPECT_EQ(Join(parser.lines), Join(expected));
    }
}

TEST(LateDetectionTest, AfterItsFailureAnOpenConstructIsStillReadAgain) {
    struct Row {
        const char* note;
        const char* open;
        const char* junk;
    };
    const Row rows[] = {
        {"a start tag", "<a b", "junk(<a b)"},
        {"half an opener of a comment", "<!-", "junk(<!-)"},
    };
    for (const Row& row : rows) {
        for (const bool owned : {false, true}) {
            SCOPED_TRACE(std::string(row.note) + (owned ? ", owned stream" : ", borrowed stream"));
            const ScriptedDetector detector(Failure(709));
            FedParser parser;
            parser.Start(0, DATA_STREAM_AUTO);
            int destructions = 0;
            auto stream = std::make_unique<FaultyInputStream>(DocumentOf(300) + row.open);
            stream->CountDestructions(&destructions);
            VFS::InputStream* const fed = owned ? stream.release() : stream.get();
            EXPECT_EQ(parser.ParseStream(fed, owned), 706U);
            EXPECT_EQ(destructions, owned ? 1 : 0);
            EXPECT_EQ(parser.EndParse(), 0U);
            Lines expected = TokensOf(300);
            expected.push_back(row.junk);
            expected.push_back("end-parsing");
            EXPECT_EQ(Join(parser.lines), Join(expected));
            // After the end it is forgotten.
            stream.reset();
            EXPECT_EQ(parser.Feed("<c"), 0U);
            EXPECT_EQ(parser.EndParse(), 16U);
        }
    }
}

TEST(LateDetectionTest, WhenTheCharsetIsFoundTheStreamIsForgotten) {
    const ScriptedDetector detector(Answer(1251));
    GenericParser parser;
    EXPECT_EQ(parser.StartParse(0, DATA_STREAM_AUTO), 0U);
    auto stream = std::make_unique<VFS::MemoryInputStream>(DocumentOf(300) + "<a b");
    EXPECT_EQ(parser.ParseStream(stream.get(), false), 705U);
    stream.reset();
    EXPECT_EQ(parser.ParseBuffer("<c", 2), 0U);
    EXPECT_EQ(parser.EndParse(), 16U);
}

TEST(LateDetectionTest, BuffersAreNeverDetected) {
    const ScriptedDetector detector(Answer(1251));
    GenericParser parser;
    EXPECT_EQ(parser.StartParse(0, DATA_STREAM_AUTO), 0U);
    const std::string document = DocumentOf(1000);
    EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.GetCharset(), 0U);
    EXPECT_EQ(detector.running.calls, 0);
}

}  // namespace
}  // namespace Kestra::Test
