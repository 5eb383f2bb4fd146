#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/CharsetDetector.h"
#include "platform/MemoryInputStream.h"
#include "platform/Results.h"
#include "platform/Services.h"
#include "tests/platform/windows/ScriptedLanguageService.h"
#include "tests/platform/windows/SystemCalls.h"
#include "tests/support/TestStreams.h"

// The system's language service, by a class object of the test in its place: what it is asked, what
// becomes of its answers, and that COM is left as it was found.

namespace Kestra::Base {
namespace {

using HTML::GenericParser;
using StringNS::CharSet;
using Test::FaultyInputStream;
using Test::HookedSystem;
using Test::IsWine;
using Test::LanguageServiceScript;
using Test::RealSystem;
using Test::ScriptedLanguageService;

/// COM on a thread.
enum class Com {
    NONE,
    SINGLE_THREADED,
    MULTI_THREADED,
};

Com GetCom() {
    ULONG_PTR token = 0;
    if (CoGetContextToken(&token) == CO_E_NOTINITIALIZED)
        return Com::NONE;
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    EXPECT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
    return type == APTTYPE_MTA ? Com::MULTI_THREADED : Com::SINGLE_THREADED;
}

/// Runs on a thread of its own which has COM so, and finds COM there so afterwards: initialized
/// once and no more.
void OnThread(Com com, const std::function<void()>& run) {
    std::thread thread([com, &run] {
        EXPECT_EQ(GetCom(), Com::NONE);
        if (com != Com::NONE) {
            EXPECT_EQ(
                CoInitializeEx(nullptr, com == Com::MULTI_THREADED ? COINIT_MULTITHREADED : COINIT_APARTMENTTHREADED),
                S_OK);
        }
        EXPECT_EQ(GetCom(), com);
        run();
        EXPECT_EQ(GetCom(), com);
        if (com != Com::NONE)
            CoUninitialize();
        EXPECT_EQ(GetCom(), Com::NONE);
    });
    thread.join();
}

/// Text with bytes of every value, and nowhere twice the same.
std::string MakeText(std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text += i % 7 == 0 ? static_cast<char>(0x80 + i / 7 % 0x80) : static_cast<char>('a' + i % 26);
    return text;
}

const std::string TEXT = MakeText(300);

struct Answer {
    const char* note;
    HRESULT result;
    INT count;
    UINT code;
    INT confidence;
    std::uint32_t detectorResult;
    std::uint32_t detectedCount;
    std::uint32_t parserResult;
    CharSet::Code parserCode;
    std::uint32_t streamResult;
};

constexpr HRESULT FAILURE = E_FAIL;
constexpr HRESULT WITHOUT_CODE = E_NOTIMPL;

const Answer ANSWERS[] = {
    // note, what the service says, what the detector makes of it, the buffer form, the stream
    {"one good result", S_OK, 1, 1251, 90, RESULT_OK, 1, 0, 1251, 705},
    {"a confidence at the limit", S_OK, 1, 1251, 50, RESULT_OK, 1, 0, 1251, 705},
    {"a confidence below the limit", S_OK, 1, 1251, 49, RESULT_OK, 1, 708, 0, 0},
    {"a confidence above all", S_OK, 1, 1251, std::numeric_limits<INT>::max(), RESULT_OK, 1, 0, 1251, 705},
    {"a confidence below zero", S_OK, 1, 1251, -1, RESULT_OK, 1, 708, 0, 0},
    {"no result", S_OK, 0, 1251, 90, RESULT_OK, 0, 708, 0, 0},
    {"two results", S_OK, 2, 1251, 90, RESULT_OK, 2, 708, 0, 0},
    {"less than no result", S_OK, -1, 1251, 90, RESULT_OK, 0, 708, 0, 0},
    {"S_FALSE with one result", S_FALSE, 1, 1251, 90, RESULT_OK, 1, 0, 1251, 705},
    {"S_FALSE with no result", S_FALSE, 0, 1251, 90, RESULT_OK, 0, 708, 0, 0},
    {"S_FALSE with two results", S_FALSE, 2, 1251, 90, RESULT_OK, 2, 708, 0, 0},
    {"a failure, whatever stands in the outputs", FAILURE, 1, 1251, 90, RESULT_DETECTION_FAILED, 0, 709, 0, 706},
    {"a failure without results", FAILURE, 0, 0, 0, RESULT_DETECTION_FAILED, 0, 709, 0, 706},
    {"a service without code", WITHOUT_CODE, 2, 20127, 100, RESULT_DETECTION_FAILED, 0, 709, 0, 706},
    {"ASCII is of no use", S_OK, 1, 20127, 100, RESULT_OK, 1, 11, 0, 0},
    {"EUC-JP", S_OK, 1, 51932, 80, RESULT_OK, 1, 0, 20932, 705},
    {"a code page without a name", S_OK, 1, 11, 100, RESULT_OK, 1, 11, 0, 0},
    {"no code page", S_OK, 1, 0, 100, RESULT_OK, 1, 11, 0, 0},
    {"UTF-16", S_OK, 1, 1200, 100, RESULT_OK, 1, 0, 1200, 705},
    {"UTF-8", S_OK, 1, 65001, 51, RESULT_OK, 1, 0, 65001, 705},
};

LanguageServiceScript MakeScript(const Answer& answer) {
    LanguageServiceScript script;
    script.result = answer.result;
    script.count = answer.count;
    script.code = answer.code;
    script.confidence = answer.confidence;
    return script;
}

/// The service was asked as often as that, each time by an object of its own, as it must be asked;
/// nobody holds on to anything.
void ExpectAsked(const LanguageServiceScript& script, int calls, std::string_view bytes) {
    EXPECT_EQ(script.calls, calls);
    EXPECT_EQ(script.objects, calls);
    EXPECT_EQ(script.references, 0);
    EXPECT_EQ(script.flags, 8U);
    EXPECT_EQ(script.preferred, 0U);
    EXPECT_EQ(script.room, 1);
    EXPECT_TRUE(script.bytes == bytes) << script.bytes.size() << " bytes";
}

class LanguageServiceTest : public testing::TestWithParam<Com> {};

TEST_P(LanguageServiceTest, TheDetectorPassesTheAnswerOn) {
    OnThread(GetParam(), [] {
        for (const Answer& answer : ANSWERS) {
            SCOPED_TRACE(answer.note);
            LanguageServiceScript script = MakeScript(answer);
            const ScriptedLanguageService service(&script);
            const ULONG references = service.GetReferences();
            const std::unique_ptr<char[]> block(new char[TEXT.size()]);
            TEXT.copy(block.get(), TEXT.size());
            DetectedCharset detected{4711, 4711};
            std::uint32_t count = 4711;
            EXPECT_EQ(CharsetDetector::Detect(block.get(), TEXT.size(), &detected, &count), answer.detectorResult);
            if (answer.detectorResult == RESULT_OK) {
                EXPECT_EQ(count, answer.detectedCount);
                EXPECT_EQ(detected.code, answer.code);
                EXPECT_EQ(detected.confidence, static_cast<std::uint32_t>(std::max(answer.confidence, 0)));
            }
            ExpectAsked(script, 1, TEXT);
            EXPECT_EQ(service.GetReferences(), references);
            EXPECT_EQ(std::string_view(block.get(), TEXT.size()), TEXT);
        }
    });
}

TEST_P(LanguageServiceTest, TheBufferFormAndTheStreamFormJudgeTheAnswer) {
    OnThread(GetParam(), [] {
        for (const Answer& answer : ANSWERS) {
            SCOPED_TRACE(answer.note);
            LanguageServiceScript script = MakeScript(answer);
            const ScriptedLanguageService service(&script);
            const ULONG references = service.GetReferences();
            GenericParser parser;
            CharSet::Code code = 4711;
            EXPECT_EQ(parser.DetectCharset(TEXT.data(), TEXT.size(), &code), answer.parserResult);
            EXPECT_EQ(code, answer.parserCode);
            ExpectAsked(script, 1, TEXT);

            code = 4711;
            VFS::MemoryInputStream stream("front" + TEXT);
            ASSERT_EQ(stream.Seek(5), RESULT_OK);
            EXPECT_EQ(parser.DetectCharset(&stream, &code), answer.parserResult);
            EXPECT_EQ(code, answer.parserCode);
            ExpectAsked(script, 2, TEXT);
            EXPECT_EQ(service.GetReferences(), references);
        }
    });
}

TEST_P(LanguageServiceTest, AStreamOfUnknownCharsetAsksAtItsEnd) {
    OnThread(GetParam(), [] {
        for (const Answer& answer : ANSWERS) {
            for (const bool isOwned : {false, true}) {
                SCOPED_TRACE(answer.note);
                LanguageServiceScript script = MakeScript(answer);
                const ScriptedLanguageService service(&script);
                GenericParser parser;
                int destructions = 0;
                auto stream = std::make_unique<FaultyInputStream>(TEXT);
                stream->CountDestructions(&destructions);
                EXPECT_EQ(parser.StartParse(0, GenericParser::DATA_STREAM_8BIT), 0U);
                EXPECT_EQ(parser.ParseStream(isOwned ? stream.release() : stream.get(), isOwned), answer.streamResult);
                EXPECT_EQ(destructions, isOwned ? 1 : 0);
                ExpectAsked(script, 1, TEXT);
                EXPECT_EQ(parser.GetCharset(), answer.streamResult == 705 ? answer.parserCode : 0);
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Apartments, LanguageServiceTest, testing::Values(Com::SINGLE_THREADED, Com::MULTI_THREADED),
                         [](const testing::TestParamInfo<Com>& com) {
                             return std::string(com.param == Com::MULTI_THREADED ? "MultiThreaded" : "SingleThreaded");
                         });

/// Runs with a service that gives one answer.
void WithAnswer(UINT code, INT confidence, const std::function<void(LanguageServiceScript*)>& run) {
    OnThread(Com::SINGLE_THREADED, [&] {
        LanguageServiceScript script;
        script.code = code;
        script.confidence = confidence;
        const ScriptedLanguageService service(&script);
        run(&script);
    });
}

TEST(LanguageServiceParserTest, TheSecondRunHasTheCharset) {
    WithAnswer(1251, 90, [](LanguageServiceScript* script) {
        GenericParser parser;
        VFS::MemoryInputStream stream(TEXT);
        EXPECT_EQ(parser.StartParse(0, GenericParser::DATA_STREAM_AUTO), 0U);
        EXPECT_EQ(parser.ParseStream(&stream, false), 705U);
        EXPECT_EQ(stream.Seek(0), RESULT_OK);
        EXPECT_EQ(parser.StartParse(parser.GetCharset(), GenericParser::DATA_STREAM_AUTO), 0U);
        EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(parser.GetCharset(), 1251U);
        EXPECT_EQ(script->calls, 1) << "a known charset asks nobody";
    });
}

TEST(LanguageServiceParserTest, Utf16IsReadAsSuchInTheSecondRun) {
    WithAnswer(1200, 100, [](LanguageServiceScript* script) {
        std::string text;
        for (int i = 0; i < 200; ++i)
            text += std::string_view("<\0b\0>\0", 6);
        GenericParser parser;
        VFS::MemoryInputStream stream(text);
        EXPECT_EQ(parser.StartParse(0, GenericParser::DATA_STREAM_8BIT), 0U);
        EXPECT_EQ(parser.ParseStream(&stream, false), 705U);
        EXPECT_EQ(parser.GetCharset(), 1200U);
        EXPECT_FALSE(parser.IsWParser());
        EXPECT_EQ(stream.Seek(0), RESULT_OK);
        EXPECT_EQ(parser.StartParse(parser.GetCharset(), GenericParser::DATA_STREAM_UTF16), 0U);
        EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
        EXPECT_TRUE(parser.IsWParser());
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(script->calls, 1);
    });
}

TEST(LanguageServiceParserTest, TheLimitOfConfidenceIsTheHosts) {
    struct Row {
        std::uint64_t limit;
        INT confidence;
        std::uint32_t expected;
    };
    const Row rows[] = {
        {0, 0, 0},     {0, -5, 0},      {1, 0, 708},
        {100, 100, 0}, {101, 100, 708}, {std::numeric_limits<std::uint64_t>::max(), 100, 708},
    };
    for (const Row& row : rows) {
        WithAnswer(1251, row.confidence, [&row](LanguageServiceScript*) {
            GenericParser parser;
            parser.SetChrDetMinConfidence(row.limit);
            CharSet::Code code = 4711;
            EXPECT_EQ(parser.DetectCharset(TEXT.data(), TEXT.size(), &code), row.expected)
                << row.limit << ", " << row.confidence;
            EXPECT_EQ(code, row.expected == 0 ? 1251U : 0U);
        });
    }
}

TEST(LanguageServiceParserTest, AStreamIsJudgedByItsFirst16384Bytes) {
    WithAnswer(1251, 90, [](LanguageServiceScript* script) {
        const std::string text = MakeText(40000);
        GenericParser parser;
        VFS::MemoryInputStream stream(text);
        EXPECT_EQ(parser.StartParse(0, GenericParser::DATA_STREAM_8BIT), 0U);
        EXPECT_EQ(parser.ParseStream(&stream, false), 705U);
        ExpectAsked(*script, 1, std::string_view(text).substr(0, 16384));
    });
}

TEST(LanguageServiceParserTest, LittleTextLeavesComAlone) {
    HookedSystem system;
    int initializations = 0;
    system->coInitialize = [&initializations] {
        ++initializations;
        return RealSystem::Initialize();
    };
    WithAnswer(1251, 90, [&initializations](LanguageServiceScript* script) {
        GenericParser parser;
        CharSet::Code code = 4711;
        EXPECT_EQ(parser.DetectCharset(TEXT.data(), 255, &code), 707U);
        EXPECT_EQ(code, 4711U);
        VFS::MemoryInputStream stream(TEXT.substr(0, 255));
        EXPECT_EQ(parser.StartParse(0, GenericParser::DATA_STREAM_8BIT), 0U);
        EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
        DetectedCharset detected;
        std::uint32_t count = 4711;
        EXPECT_EQ(CharsetDetector::Detect("", 0, &detected, &count), RESULT_OK);
        EXPECT_EQ(count, 0U);
        EXPECT_EQ(CharsetDetector::Detect(nullptr, 1, &detected, &count), RESULT_INVALID_ARGUMENT);
        EXPECT_EQ(CharsetDetector::Detect("a", 1, nullptr, &count), RESULT_INVALID_ARGUMENT);
        EXPECT_EQ(CharsetDetector::Detect("a", 1, &detected, nullptr), RESULT_INVALID_ARGUMENT);
        EXPECT_EQ(initializations, 0);
        EXPECT_EQ(parser.DetectCharset(TEXT.data(), 256, &code), 0U);
        EXPECT_EQ(initializations, 1);
        EXPECT_EQ(script->calls, 1);
    });
}

TEST(LanguageServiceDetectorTest, OneByteIsEnoughForTheDetector) {
    WithAnswer(1251, 90, [](LanguageServiceScript* script) {
        DetectedCharset detected;
        std::uint32_t count = 0;
        EXPECT_EQ(CharsetDetector::Detect("a", 1, &detected, &count), RESULT_OK);
        ExpectAsked(*script, 1, "a");
    });
}

TEST(LanguageServiceDetectorTest, TheServicesLeadToIt) {
    WithAnswer(1251, 90, [](LanguageServiceScript* script) {
        DetectedCharset detected;
        std::uint32_t count = 0;
        EXPECT_EQ(GetServices().detectCharset(TEXT.data(), TEXT.size(), &detected, &count), RESULT_OK);
        EXPECT_EQ(count, 1U);
        EXPECT_EQ(detected.code, 1251U);
        ExpectAsked(*script, 1, TEXT);
    });
}

TEST(LanguageServiceDetectorTest, OutputsThatTheServiceLeavesAloneAreNoAnswer) {
    WithAnswer(1251, 90, [](LanguageServiceScript* script) {
        script->leavesOutputs = true;
        GenericParser parser;
        CharSet::Code code = 4711;
        EXPECT_EQ(parser.DetectCharset(TEXT.data(), TEXT.size(), &code), 708U) << "the confidence is that of no answer";
        EXPECT_EQ(code, 0U);
        script->result = E_NOTIMPL;
        EXPECT_EQ(parser.DetectCharset(TEXT.data(), TEXT.size(), &code), 709U);
        EXPECT_EQ(code, 0U);
        EXPECT_EQ(script->references, 0);
    });
}

/// What a detection calls, in order; the script may let the start of COM and of the service fail.
class RecordedCom {
public:
    explicit RecordedCom(const LanguageServiceScript* watchedScript = nullptr) : script(watchedScript) {
        system->coInitialize = [this] {
            const HRESULT result = initialization == S_OK ? RealSystem::Initialize() : initialization;
            calls += SUCCEEDED(result) ? "initialize " : "no-com ";
            if (whenInitialized)
                whenInitialized();
            return result;
        };
        system->coCreateInstance = [this](const CLSID& classId, IUnknown* outer, DWORD context, const IID& interfaceId,
                                          void** object) {
            EXPECT_TRUE(classId == ScriptedLanguageService::CLASS);
            EXPECT_TRUE(interfaceId == ScriptedLanguageService::INTERFACE);
            EXPECT_EQ(outer, nullptr);
            EXPECT_EQ(context, 23U);
            calls += "create ";
            if (creation != S_OK)
                return creation;
            if (createsNothing) {
                *object = nullptr;
                return S_OK;
            }
            return RealSystem::CreateInstance(classId, outer, context, interfaceId, object);
        };
        system->coUninitialize = [this] {
            if (script != nullptr) {
                EXPECT_EQ(script->references, 0) << "the service must be released while there is COM";
            }
            calls += "uninitialize ";
            if (beforeUninitialized)
                beforeUninitialized();
            RealSystem::Uninitialize();
        };
    }

    HRESULT initialization = S_OK;  ///< a failure leaves COM alone
    HRESULT creation = S_OK;
    bool createsNothing = false;
    std::function<void()> whenInitialized;
    std::function<void()> beforeUninitialized;
    std::string calls;

private:
    const LanguageServiceScript* script;
    HookedSystem system;
};

std::uint32_t Detect() {
    DetectedCharset detected;
    std::uint32_t count = 0;
    return CharsetDetector::Detect(TEXT.data(), TEXT.size(), &detected, &count);
}

/// What the parser makes of a service that cannot be started: the buffer form fails, a stream
/// passes without a charset.
void ExpectUnavailable() {
    EXPECT_EQ(Detect(), RESULT_UNAVAILABLE);
    GenericParser parser;
    CharSet::Code code = 4711;
    EXPECT_EQ(parser.DetectCharset(TEXT.data(), TEXT.size(), &code), 11U);
    EXPECT_EQ(code, 0U);
    VFS::MemoryInputStream stream(TEXT);
    EXPECT_EQ(parser.StartParse(0, GenericParser::DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(parser.GetCharset(), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
}

constexpr int DETECTIONS = 3;  // of ExpectUnavailable

std::string Repeat(std::string_view text, int times) {
    std::string repeated;
    for (; times > 0; --times)
        repeated += text;
    return repeated;
}

TEST(LanguageServiceComTest, InitializeAndUninitializeArePairedWhateverTheAnswerIs) {
    for (const Com com : {Com::SINGLE_THREADED, Com::MULTI_THREADED}) {
        for (const Answer& answer : ANSWERS) {
            OnThread(com, [com, &answer] {
                LanguageServiceScript script = MakeScript(answer);
                const ScriptedLanguageService service(&script);
                RecordedCom recorded(&script);
                EXPECT_EQ(Detect(), answer.detectorResult);
                // A thread that is multi-threaded keeps its COM: the detector's initialization
                // fails, and is not undone.
                EXPECT_EQ(recorded.calls,
                          com == Com::MULTI_THREADED ? "no-com create " : "initialize create uninitialize ")
                    << answer.note;
            });
        }
    }
}

TEST(LanguageServiceComTest, AThreadWithoutComHasItForTheCallOnly) {
    OnThread(Com::NONE, [] {
        LanguageServiceScript script;
        script.code = 1251;
        script.confidence = 90;
        std::unique_ptr<ScriptedLanguageService> service;
        RecordedCom recorded(&script);
        recorded.whenInitialized = [&] {
            EXPECT_EQ(GetCom(), Com::SINGLE_THREADED);
            service = std::make_unique<ScriptedLanguageService>(&script);
        };
        recorded.beforeUninitialized = [&] { service.reset(); };
        for (const HRESULT result : {S_OK, S_FALSE, FAILURE}) {
            script.result = result;
            recorded.calls.clear();
            EXPECT_EQ(Detect(), result == FAILURE ? std::uint32_t{RESULT_DETECTION_FAILED} : std::uint32_t{RESULT_OK});
            EXPECT_EQ(recorded.calls, "initialize create uninitialize ");
            EXPECT_EQ(GetCom(), Com::NONE);
        }
        EXPECT_EQ(script.calls, 3);
    });
}

TEST(LanguageServiceComTest, AServiceThatCannotBeStartedIsUnavailable) {
    for (const Com com : {Com::NONE, Com::SINGLE_THREADED, Com::MULTI_THREADED}) {
        const std::string detection = com == Com::MULTI_THREADED ? "no-com create " : "initialize create uninitialize ";
        for (const HRESULT result :
             {REGDB_E_CLASSNOTREG, CLASS_E_NOAGGREGATION, E_NOINTERFACE, E_OUTOFMEMORY, E_ACCESSDENIED}) {
            OnThread(com, [&] {
                RecordedCom recorded;
                recorded.creation = result;
                ExpectUnavailable();
                EXPECT_EQ(recorded.calls, Repeat(detection, DETECTIONS));
            });
        }
        OnThread(com, [&] {
            RecordedCom recorded;
            recorded.createsNothing = true;
            ExpectUnavailable();
            EXPECT_EQ(recorded.calls, Repeat(detection, DETECTIONS));
        });
    }
}

TEST(LanguageServiceComTest, AClassObjectThatMakesNothingIsUnavailable) {
    for (const Com com : {Com::SINGLE_THREADED, Com::MULTI_THREADED}) {
        OnThread(com, [] {
            LanguageServiceScript script;
            script.creation = E_OUTOFMEMORY;
            const ScriptedLanguageService service(&script);
            const ULONG references = service.GetReferences();
            ExpectUnavailable();
            EXPECT_EQ(script.objects, 0);
            EXPECT_EQ(service.GetReferences(), references);
        });
        OnThread(com, [] {
            LanguageServiceScript script;
            script.interfaceAnswer = E_NOINTERFACE;
            const ScriptedLanguageService service(&script);
            const ULONG references = service.GetReferences();
            ExpectUnavailable();
            EXPECT_EQ(script.objects, DETECTIONS);
            EXPECT_EQ(script.references, 0);
            EXPECT_EQ(script.calls, 0);
            EXPECT_EQ(service.GetReferences(), references);
        });
    }
}

TEST(LanguageServiceComTest, WithoutComTheServiceIsUnavailableAndNothingIsUndone) {
    OnThread(Com::NONE, [] {
        RecordedCom recorded;
        recorded.initialization = E_OUTOFMEMORY;
        recorded.creation = CO_E_NOTINITIALIZED;
        ExpectUnavailable();
        EXPECT_EQ(recorded.calls, Repeat("no-com create ", DETECTIONS));
    });
}

TEST(LanguageServiceComTest, ManyDetectionsLeaveNothing) {
    for (const Com com : {Com::SINGLE_THREADED, Com::MULTI_THREADED}) {
        OnThread(com, [] {
            LanguageServiceScript script;
            script.code = 1251;
            script.confidence = 90;
            const ScriptedLanguageService service(&script);
            const ULONG references = service.GetReferences();
            for (int i = 0; i < 1000; ++i)
                EXPECT_EQ(Detect(), RESULT_OK);
            ExpectAsked(script, 1000, TEXT);
            EXPECT_EQ(service.GetReferences(), references);
        });
    }
}

TEST(LanguageServiceComTest, ThreadsDoNotDisturbEachOther) {
    std::atomic<int> waiting = 4;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (UINT number = 0; number < 4; ++number) {
        threads.emplace_back([number, &waiting, &wrong] {
            CoInitialize(nullptr);
            {
                LanguageServiceScript script;
                script.code = 1250 + number;
                script.confidence = static_cast<INT>(90 + number);
                const ScriptedLanguageService service(&script);
                --waiting;
                while (waiting > 0)
                    std::this_thread::yield();
                for (int i = 0; i < 200; ++i) {
                    DetectedCharset detected;
                    std::uint32_t count = 0;
                    if (CharsetDetector::Detect(TEXT.data(), TEXT.size(), &detected, &count) != RESULT_OK ||
                        count != 1 || detected.code != script.code || detected.confidence != 90 + number)
                        ++wrong;
                }
                if (script.calls != 200 || script.references != 0)
                    ++wrong;
            }
            CoUninitialize();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

/// Wine's own service answers E_NOTIMPL to everything and touches no output.
TEST(LanguageServiceWineTest, TheServiceOfWineIsAStub) {
    if (!IsWine())
        GTEST_SKIP() << "a service that works";
    for (const Com com : {Com::NONE, Com::SINGLE_THREADED, Com::MULTI_THREADED}) {
        OnThread(com, [com] {
            RecordedCom recorded;
            GenericParser parser;
            CharSet::Code code = 4711;
            EXPECT_EQ(parser.DetectCharset(TEXT.data(), TEXT.size(), &code), 709U);
            EXPECT_EQ(code, 0U);
            VFS::MemoryInputStream stream(TEXT);
            EXPECT_EQ(parser.StartParse(0, GenericParser::DATA_STREAM_8BIT), 0U);
            EXPECT_EQ(parser.ParseStream(&stream, false), 706U);
            EXPECT_EQ(parser.EndParse(), 0U);
            EXPECT_EQ(recorded.calls,
                      Repeat(com == Com::MULTI_THREADED ? "no-com create " : "initialize create uninitialize ", 2));
        });
    }
}

}  // namespace
}  // namespace Kestra::Base
