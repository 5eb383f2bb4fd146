#include <gtest/gtest.h>
#include <unicode/uclean.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "html/parser/GenericParser.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"

// Memory that is lacking once while a token is converted. This program has allocation functions of
// its own, and ICU's as well are its own.

namespace {

long failingAllocation = 0;  // counted from now on; 0 and less: none
bool hasFailed = false;

bool Fails() {
    if (failingAllocation <= 0 || --failingAllocation > 0)
        return false;
    hasFailed = true;
    return true;
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* const block = Fails() ? nullptr : std::malloc(size != 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}

// Inlined, it would look to the compiler like `free` of what `new` gave.
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    ::operator delete(block);
}

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using StringNS::CharSet;
using StringNS::StringHelper;

extern "C" void* AllocateForIcu(const void*, std::size_t size) {
    return Fails() ? nullptr : std::malloc(size);
}

extern "C" void* ReallocateForIcu(const void*, void* block, std::size_t size) {
    return Fails() ? nullptr : std::realloc(block, size);
}

extern "C" void FreeForIcu(const void*, void* block) {
    std::free(block);
}

/// ICU as it is before its first use: nothing loaded, nothing remembered. No converter is open.
void RestartIcu() {
    u_cleanup();
    UErrorCode error = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, AllocateForIcu, ReallocateForIcu, FreeForIcu, &error);
    ASSERT_TRUE(U_SUCCESS(error));
}

/// Lets the n-th allocation from now on fail, for as long as it lives.
class Shortage {
public:
    explicit Shortage(long allocation) {
        hasFailed = false;
        failingAllocation = allocation;
    }
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;
    ~Shortage() {
        failingAllocation = 0;
    }
};

/// Writes down the texts and tags. What it takes for itself never fails.
class Recorder final : public HTML::ParserObserver<WideChar, WideString> {
public:
    std::vector<WideString> tokens;

    void OnText(HTML::TextData<WideChar, WideString>* data) override {
        Add(*data->text);
    }
    void OnStartTag(HTML::StartTagData<WideChar, WideString>* data) override {
        Add(*data->name);
    }
    void OnJunkData(HTML::JunkData<WideChar, WideString>*) override {
        Add(KESTRA_WIDE("junk"));
    }
    void OnEndParsing() override {
        Add(KESTRA_WIDE("end"));
    }

private:
    void Add(const WideString& token) {
        const long left = failingAllocation;
        failingAllocation = 0;
        tokens.push_back(token);
        failingAllocation = left;
    }
};

/// A character of the code page that is not ASCII, so that each text needs the converter.
struct Row {
    CharSet::Code code;
    std::string bytes;
    WideString units;
};

const Row ROWS[] = {
    {932, "\x93\xFA", KESTRA_WIDE("\u65E5")},
    {1251, "\xE0", KESTRA_WIDE("\u0430")},
    {1361, "\x88\x61", KESTRA_WIDE("\uAC00")},
    {20106, "[", KESTRA_WIDE("\u00C4")},
    {20261,
     "\xC2"
     "e",
     KESTRA_WIDE("\u00E9")},
    {50221, "\x1B$B$\"\x1B(B", KESTRA_WIDE("\u3042")},
    {54936, "\xD6\xD0", KESTRA_WIDE("\u4E2D")},
};

std::string MakeDocument(const Row& row) {
    return row.bytes + "<b>" + row.bytes + "<i>";
}

std::vector<WideString> MakeTokens(const Row& row, bool isFirstLost) {
    std::vector<WideString> tokens = {row.units, KESTRA_WIDE("b"), row.units, KESTRA_WIDE("i"), KESTRA_WIDE("end")};
    if (isFirstLost)
        tokens.erase(tokens.begin());
    return tokens;
}

/// What a document gives, and what the calls answer.
struct Outcome {
    std::uint32_t result = 0;
    std::uint32_t endResult = 0;
    std::uint32_t error = 0;
    bool hasErrors = false;
    bool hasFailed = false;
    std::vector<WideString> tokens;
};

/// A parser whose buffers are there, so that nothing but a conversion allocates: it has read the
/// documents for an observer that needs none.
class Bench {
public:
    explicit Bench(CharSet::Code documentCharset, const std::string& document) : charset(documentCharset) {
        HTML::ParserObserver<char, std::string> idle;
        parser.SetObserver(&idle, false);
        parser.SetDetectCharsetErrors(true);
        for (int i = 0; i < 2; ++i) {
            parser.StartParse(charset, GenericParser::DATA_STREAM_8BIT);
            EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
            EXPECT_EQ(parser.EndParse(), 0U);
        }
        parser.SetObserver(&recorder, false);
    }

    /// @param allocation  that fails in the call that feeds; 0 for none
    Outcome Parse(const std::string& document, long allocation) {
        Outcome run;
        recorder.tokens.clear();
        parser.StartParse(charset, GenericParser::DATA_STREAM_8BIT);
        {
            const Shortage shortage(allocation);
            run.result = parser.ParseBuffer(document.data(), document.size());
            run.hasFailed = hasFailed;
        }
        run.error = parser.GetConversionError();
        run.hasErrors = parser.HasCharsetErrors();
        run.endResult = parser.EndParse();
        run.tokens = recorder.tokens;
        return run;
    }

private:
    CharSet::Code charset;
    Recorder recorder;
    GenericParser parser;
};

void ExpectWhole(const Row& row, const Outcome& run) {
    EXPECT_EQ(run.result, 0U);
    EXPECT_EQ(run.error, 0U);
    EXPECT_FALSE(run.hasErrors);
    EXPECT_EQ(run.endResult, 0U);
    EXPECT_EQ(run.tokens, MakeTokens(row, false));
}

/// @param remembers  ICU itself may have failed for good
void CheckShortage(const Row& row, bool isCold, long allocation, bool remembers, bool* isOver, std::size_t* lost) {
    SCOPED_TRACE(std::to_string(row.code) + (isCold ? ", cold, allocation " : ", warm, allocation ") +
                 std::to_string(allocation));
    RestartIcu();
    if (!isCold) {
        WideString wide;
        EXPECT_EQ(StringHelper::GetWideFromGeneric(row.code, "a", 1, &wide), RESULT_OK);
    }
    const std::string document = MakeDocument(row);
    Bench bench(row.code, document);
    const Outcome run = bench.Parse(document, allocation);
    *isOver = !run.hasFailed;
    const Outcome next = bench.Parse(document, 0);
    if (run.result == 0) {  // ICU can do without some of what it asks for
        ExpectWhole(row, run);
        ExpectWhole(row, next);
        return;
    }
    ++*lost;
    EXPECT_EQ(run.result, static_cast<std::uint32_t>(RESULT_OUT_OF_MEMORY));
    EXPECT_EQ(run.error, static_cast<std::uint32_t>(RESULT_OUT_OF_MEMORY));
    EXPECT_TRUE(run.hasErrors);
    EXPECT_EQ(run.endResult, 0U);
    if (remembers && next.result != 0) {
        EXPECT_EQ(next.result, static_cast<std::uint32_t>(RESULT_OUT_OF_MEMORY));
        return;
    }
    EXPECT_EQ(run.tokens, MakeTokens(row, true));
    ExpectWhole(row, next);
}

TEST(ConversionMemoryTest, AShortageWhileTheConverterOpensLosesOneToken) {
    for (const Row& row : ROWS) {
        for (const bool isCold : {true, false}) {
            // The names of ICU's ISO-2022 converters need its list of names, and T.61 needs its
            // normalization: what ICU could not start with, it never asks for again.
            const bool remembers = isCold && (row.code == 50221 || row.code == 20261);
            std::size_t lost = 0;
            bool isOver = false;
            for (long allocation = 1; !isOver && allocation < 100; ++allocation)
                CheckShortage(row, isCold, allocation, remembers, &isOver, &lost);
            EXPECT_TRUE(isOver) << row.code;
            EXPECT_GE(lost, 3U) << row.code;
        }
    }
}

TEST(ConversionMemoryTest, AShortageWhileStringsGrowLosesOneToken) {
    std::string document = "<b";
    for (int i = 0; i < 20; ++i)
        document += " a-name-that-is-longer-than-any-string-keeps-in-itself='\xC3\xA9'";
    document += "><i>";
    bool isOver = false;
    std::size_t lost = 0;
    for (long allocation = 1; !isOver && allocation < 200; ++allocation) {
        Bench bench(65001, document);
        const Outcome run = bench.Parse(document, allocation);
        isOver = !run.hasFailed;
        lost += isOver ? 0 : 1;
        EXPECT_EQ(run.result, isOver ? 0U : static_cast<std::uint32_t>(RESULT_OUT_OF_MEMORY)) << allocation;
        EXPECT_EQ(run.endResult, 0U);
        std::vector<WideString> tokens = {KESTRA_WIDE("i"), KESTRA_WIDE("end")};
        if (isOver)
            tokens.insert(tokens.begin(), KESTRA_WIDE("b"));
        EXPECT_EQ(run.tokens, tokens) << allocation;
        EXPECT_EQ(bench.Parse(document, 0).tokens.size(), 3U);
    }
    EXPECT_TRUE(isOver);
    EXPECT_GE(lost, 20U);
}

TEST(ConversionMemoryTest, TheStaticConversionsAnswerIt) {
    for (const Row& row : ROWS) {
        std::size_t lacking = 0;
        bool isOver = false;
        for (long allocation = 1; !isOver && allocation < 100; ++allocation) {
            RestartIcu();
            WideString units = KESTRA_WIDE("old content");
            std::string bytes = "old content";
            std::uint32_t result = 0;
            std::uint32_t backResult = 0;
            {
                const Shortage shortage(allocation);
                result = StringHelper::GetWideFromGeneric(row.code, row.bytes.data(), row.bytes.size(), &units);
                isOver = !hasFailed;
            }
            lacking += result == RESULT_OUT_OF_MEMORY ? 1 : 0;
            EXPECT_TRUE(result == RESULT_OK || result == RESULT_OUT_OF_MEMORY) << row.code << ": " << result;
            EXPECT_EQ(units, result == RESULT_OK ? row.units : WideString()) << row.code;
            RestartIcu();
            {
                const Shortage shortage(allocation);
                backResult = StringHelper::GetStringFromWide(row.code, row.units.data(), row.units.size(), &bytes);
                isOver = isOver && !hasFailed;
            }
            lacking += backResult == RESULT_OUT_OF_MEMORY ? 1 : 0;
            EXPECT_TRUE(backResult == RESULT_OK || backResult == RESULT_OUT_OF_MEMORY)
                << row.code << ": " << backResult;
            EXPECT_EQ(bytes, backResult == RESULT_OK ? row.bytes : std::string()) << row.code;
        }
        EXPECT_TRUE(isOver) << row.code;
        EXPECT_GE(lacking, 6U) << row.code;
    }
}

}  // namespace
}  // namespace Kestra::Test
