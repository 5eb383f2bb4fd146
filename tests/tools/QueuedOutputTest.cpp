#include "tools/kestra-html/output/QueuedOutput.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tools/kestra-html/output/LineSink.h"

namespace Kestra::Test {
namespace {

using Tool::OutputQueue;
using Tool::QueuedOutput;
using Tool::StopOutputs;

TEST(QueuedOutput, AWorkerThatIsStoppedThrows) {
    OutputQueue queue;
    QueuedOutput output(&queue);
    StopOutputs(&queue);
    output.Line("gathered only");
    EXPECT_THROW(output.Finish(), Tool::OutputFailed);
    EXPECT_THROW(output.Diagnose("file", "message"), Tool::OutputFailed);
}

/// Writes lines without end. @return how many before it was stopped
std::size_t WriteUntilStopped(QueuedOutput* output, const std::string& line, std::atomic<std::size_t>* lines) {
    try {
        for (;;) {
            output->Line(line);
            ++*lines;
        }
    } catch (const Tool::OutputFailed&) {
        return *lines;
    }
}

TEST(QueuedOutput, WorkersWaitWhileThereIsMuchOfAllTogether) {
    OutputQueue queue;
    QueuedOutput outputs[] = {QueuedOutput(&queue), QueuedOutput(&queue), QueuedOutput(&queue)};
    const std::string line(100'000, 'x');
    std::atomic<std::size_t> lines = 0;
    std::vector<std::thread> workers;
    for (QueuedOutput& output : outputs)
        workers.emplace_back([&] { WriteUntilStopped(&output, line, &lines); });
    while (lines * line.size() < QueuedOutput::MOST_BYTES - line.size())
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::size_t most = QueuedOutput::MOST_BYTES / line.size() + std::size(outputs) + 1;
    EXPECT_LE(lines, most);
    StopOutputs(&queue);
    for (std::thread& worker : workers)
        worker.join();
    EXPECT_LE(lines, most);
}

TEST(QueuedOutput, TheNextOneHasRoomWhateverTheOthersKeep) {
    OutputQueue queue;
    QueuedOutput later(&queue);
    QueuedOutput next(&queue);
    const std::string line(100'000, 'x');
    std::atomic<std::size_t> lines = 0;
    std::thread worker([&] { WriteUntilStopped(&later, line, &lines); });
    while (lines * line.size() < QueuedOutput::MOST_BYTES)  // then there is no room for all together
        std::this_thread::yield();
    Tool::Console console;
    next.WriteTo(&console);  // nothing yet, but it is its turn
    std::atomic<bool> isTaken = false;
    std::thread nextWorker([&] {
        try {
            next.Line(line);
            next.Finish();
            isTaken = true;
        } catch (const Tool::OutputFailed&) {  // it has waited until all was stopped
        }
    });
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!isTaken && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    EXPECT_TRUE(isTaken);
    StopOutputs(&queue);
    worker.join();
    nextWorker.join();
    EXPECT_EQ(queue.next, &next);
}

TEST(QueuedOutput, LinesAreHandedOverBeforeInputIsWaitedFor) {
    OutputQueue queue;
    QueuedOutput output(&queue);
    testing::internal::CaptureStdout();
    {
        Tool::Console console;
        output.Line("first");
        output.WriteTo(&console);
        console.Line("|");
        output.FlushBeforeWait();
        output.WriteTo(&console);
        output.FlushBeforeWait();
        output.WriteTo(&console);
        output.Line("second");
        StopOutputs(&queue);
        output.FlushBeforeWait();  // does not throw
        EXPECT_THROW(output.Finish(), Tool::OutputFailed);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "|\nfirst\n");
}

TEST(QueuedOutput, AStopComesOutOfEveryCall) {
    OutputQueue queue;
    QueuedOutput output(&queue);
    StopOutputs(&queue);
    EXPECT_THROW(output.Remark("file", "message"), Tool::OutputFailed);
    EXPECT_THROW(output.DiagnoseAgain("file", "message"), Tool::OutputFailed);
}

TEST(QueuedOutput, TheMemoryOfLinesIsUsedAgain) {
    OutputQueue queue;
    QueuedOutput first(&queue);
    QueuedOutput second(&queue);
    Tool::Console console;
    first.Line("");
    first.Finish();
    first.Diagnose("", "");  // has no memory worth it
    EXPECT_TRUE(queue.spares.empty());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    first.WriteTo(&console);
    console.Flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), ": \n");
    ASSERT_EQ(queue.spares.size(), 1U);
    EXPECT_EQ(queue.spares[0], "");
    second.Line("line");
    EXPECT_TRUE(queue.spares.empty());
    second.Line(std::string(1'000'000, 'x'));
    testing::internal::CaptureStdout();
    second.WriteTo(&console);
    console.Flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout().size(), 1'000'006U);
    EXPECT_TRUE(queue.spares.empty()) << "that of a very long line is not kept";
}

TEST(QueuedOutput, HowFarAParseIs) {
    OutputQueue queue;
    QueuedOutput output(&queue);
    EXPECT_EQ(output.GetBytesDone(), 0U);
    output.Advance(7);
    EXPECT_EQ(output.GetBytesDone(), 7U);
}

}  // namespace
}  // namespace Kestra::Test
