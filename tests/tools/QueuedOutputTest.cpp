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
    while (lines * line.size() < QueuedOutput::MOST_BYTES - line.size())
        std::this_thread::yield();
    Tool::Console console;
    next.WriteTo(&console);  // nothing yet, but it is its turn
    next.Line(line);         // does not wait
    next.Finish();
    StopOutputs(&queue);
    worker.join();
    EXPECT_EQ(queue.next, &next);
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
