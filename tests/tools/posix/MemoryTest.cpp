#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/tools/ToolRun.h"
#include "tools/kestra-html/commandline/RewriteArguments.h"
#include "tools/kestra-html/commands/CheckCommand.h"
#include "tools/kestra-html/commands/DetectCommand.h"
#include "tools/kestra-html/commands/EventsCommand.h"
#include "tools/kestra-html/commands/RewriteCommand.h"
#include "tools/kestra-html/commands/TokensCommand.h"
#include "tools/kestra-html/input/Input.h"

/// @file
/// What becomes of an input that does not fit the memory. The program has an `operator new` of its
/// own, which fails for large blocks when a test says so: a limit of the system for the address
/// space leaves no room for a sanitizer.

namespace {

std::atomic<std::size_t> largestBlock = static_cast<std::size_t>(-1);

void* Allocate(std::size_t size) noexcept {
    return size <= largestBlock ? std::malloc(size) : nullptr;
}

void* AllocateOrThrow(std::size_t size) {
    if (void* const block = Allocate(size))
        return block;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}

namespace Kestra::Test {
namespace {

constexpr std::size_t INPUT_SIZE = 3000000;
constexpr std::size_t TOO_SMALL_FOR_THE_INPUT = 2000000;
constexpr std::size_t ENOUGH_FOR_THE_INPUT = 5000000;  // but not for the records of its attributes

class ToolMemory : public testing::Test {
protected:
    ToolMemory() : large(folder.Write("large", MakeTag()).string()), small(folder.Write("small", "<p>").string()) {}

    /// A tag of many attributes.
    static std::string MakeTag() {
        std::string tag = "<p";
        while (tag.size() < INPUT_SIZE)
            tag += " a";
        return tag;
    }

    /// Over the large input and then the small one, in JSON.
    template <typename Options>
    ToolRun RunOnBoth(Tool::ExitStatus (*command)(const Options&, Tool::Console*), std::size_t limit, Options options) {
        options.format = Tool::OutputFormat::JSON;
        options.inputs = {large, small};
        ToolRun run{};
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        {
            Tool::Console console;
            largestBlock = limit;
            run.status = command(options, &console);
            largestBlock = static_cast<std::size_t>(-1);
        }
        run.output = testing::internal::GetCapturedStdout();
        run.errors = testing::internal::GetCapturedStderr();
        return run;
    }

    std::string NotEnough() const {
        return large + ": not enough memory\n";
    }

    /// The next input has had its turn.
    bool HasSmall(const std::string& output) const {
        return output.find("\"file\":\"" + small + "\"") != std::string::npos;
    }

    TemporaryFolder folder;
    std::string large;
    std::string small;
};

Tool::CheckOptions CheckOptionsWith(std::size_t jobs) {
    Tool::CheckOptions options;
    options.charset = 1252;
    options.selfCheck = HTML::GenericParser::SELF_CHECK_COPY;
    options.jobs = jobs;
    return options;
}

TEST_F(ToolMemory, AnInputThatCannotBeReadWhole) {
    std::string bytes;
    largestBlock = TOO_SMALL_FOR_THE_INPUT;
    const Tool::ReadResult whole = Tool::ReadInput(large, &bytes);
    const Tool::OpenedInput opened = Tool::OpenInput(large);
    const Tool::ReadResult start = Tool::ReadRest(opened.source.get(), 16384, &bytes);
    largestBlock = static_cast<std::size_t>(-1);
    EXPECT_EQ(whole, Tool::ReadResult::OUT_OF_MEMORY);
    EXPECT_EQ(start, Tool::ReadResult::READ);
    EXPECT_EQ(Tool::ReadInput(large, &bytes), Tool::ReadResult::READ);
    EXPECT_EQ(bytes.size(), INPUT_SIZE);
    EXPECT_EQ(Tool::ReadInput(large + "x", &bytes), Tool::ReadResult::MISSING);
}

TEST_F(ToolMemory, WhileReading) {
    const ToolRun runs[] = {
        RunOnBoth(Tool::RunTokens, TOO_SMALL_FOR_THE_INPUT, Tool::TokensOptions()),
        RunOnBoth(Tool::RunEvents, TOO_SMALL_FOR_THE_INPUT, Tool::EventsOptions()),
        RunOnBoth(Tool::RunCheck, TOO_SMALL_FOR_THE_INPUT, CheckOptionsWith(1)),
        RunOnBoth(Tool::RunCheck, TOO_SMALL_FOR_THE_INPUT, CheckOptionsWith(2)),
    };
    for (const ToolRun& run : runs) {
        EXPECT_TRUE(Ended(run, 1, NotEnough()));
        EXPECT_TRUE(HasSmall(run.output)) << run.output;
        EXPECT_TRUE(Contains(run.output, "\"error\":\"not enough memory\",\"file\":\"" + large));
    }
}

TEST_F(ToolMemory, WhileParsing) {
    const ToolRun runs[] = {
        RunOnBoth(Tool::RunTokens, ENOUGH_FOR_THE_INPUT, Tool::TokensOptions()),
        RunOnBoth(Tool::RunEvents, ENOUGH_FOR_THE_INPUT, Tool::EventsOptions()),
        RunOnBoth(Tool::RunCheck, ENOUGH_FOR_THE_INPUT, CheckOptionsWith(1)),
        RunOnBoth(Tool::RunCheck, ENOUGH_FOR_THE_INPUT, CheckOptionsWith(2)),
    };
    for (const ToolRun& run : runs) {
        EXPECT_TRUE(Ended(run, 1, NotEnough()));
        EXPECT_TRUE(HasSmall(run.output)) << run.output;
        EXPECT_TRUE(Contains(run.output, "\"error\":\"not enough memory\",\"file\":\"" + large));
    }
}

/// What is written for a file.
ToolRun RunRewrite(const std::string& file, std::size_t limit) {
    Tool::RewriteOptions options;
    options.edits = Tool::TakeRewriteArguments({"--set", "b.c=d"}).edits;
    options.inputs = {file};
    ToolRun run{};
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        Tool::Console console;
        largestBlock = limit;
        run.status = Tool::RunRewrite(options, &console);
        largestBlock = static_cast<std::size_t>(-1);
    }
    run.output = testing::internal::GetCapturedStdout();
    run.errors = testing::internal::GetCapturedStderr();
    return run;
}

TEST_F(ToolMemory, RewritingTakesMemoryForATokenAndNotForTheInput) {
    std::string page;
    while (page.size() < INPUT_SIZE)
        page += "<p a>text</p>\n<!-- more -->";
    const ToolRun run = RunRewrite(folder.Write("page", page + "<b>").string(), 500000);
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(run.output == page + "<b c=\"d\">");
}

TEST_F(ToolMemory, ATokenThatDoesNotFitTheMemoryIsCopied) {
    const ToolRun run = RunRewrite(large, TOO_SMALL_FOR_THE_INPUT);
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Contains(run.errors, "not enough memory"));
    EXPECT_TRUE(run.output == MakeTag()) << run.output.size();
}

TEST_F(ToolMemory, AFileThatCannotBeReadCountsForMore) {
    small += "x";
    EXPECT_TRUE(Ended(RunOnBoth(Tool::RunCheck, TOO_SMALL_FOR_THE_INPUT, CheckOptionsWith(1)), 3,
                      NotEnough() + small + ": cannot be read: no such file\n"));
}

}  // namespace
}  // namespace Kestra::Test
