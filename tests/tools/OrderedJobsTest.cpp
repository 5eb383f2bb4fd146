#include "tools/kestra-html/commands/OrderedJobs.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Kestra::Test {
namespace {

using Tool::OrderedJobs;

constexpr std::chrono::milliseconds LONG{60000};
constexpr std::chrono::milliseconds SHORT{20};

TEST(OrderedJobs, EveryJobIsDoneOnceWhenItsTurnComes) {
    for (const std::size_t threads : {1U, 2U, 7U}) {
        std::vector<std::atomic<int>> runs(300);
        const auto makeWorker = [&] { return [&](std::size_t job) { ++runs[job]; }; };
        OrderedJobs jobs(runs.size(), threads, makeWorker);
        for (std::size_t i = 0; i < runs.size(); ++i) {
            ASSERT_TRUE(jobs.Wait(i, LONG));
            EXPECT_EQ(runs[i], 1);
        }
    }
}

TEST(OrderedJobs, EachThreadHasItsOwnWorker) {
    std::mutex guard;
    std::vector<std::set<std::thread::id>> users;
    int made = 0;
    const auto makeWorker = [&] {
        const int number = made++;
        users.emplace_back();
        return [&, number](std::size_t) {
            const std::lock_guard lock(guard);
            users[static_cast<std::size_t>(number)].insert(std::this_thread::get_id());
        };
    };
    users.reserve(3);
    {
        OrderedJobs jobs(100, 3, makeWorker);
        for (std::size_t i = 0; i < 100; ++i)
            ASSERT_TRUE(jobs.Wait(i, LONG));
    }
    EXPECT_EQ(made, 3);
    std::set<std::thread::id> all;
    for (const auto& ids : users) {
        EXPECT_LE(ids.size(), 1U);
        for (const std::thread::id id : ids)
            EXPECT_TRUE(all.insert(id).second) << "no thread uses two workers";
    }
    EXPECT_EQ(all.count(std::this_thread::get_id()), 0U);
}

TEST(OrderedJobs, NoMoreThreadsThanJobs) {
    int made = 0;
    const auto makeWorker = [&] {
        ++made;
        return [](std::size_t) {};
    };
    {
        OrderedJobs jobs(2, 8, makeWorker);
        EXPECT_TRUE(jobs.Wait(0, LONG));
        EXPECT_TRUE(jobs.Wait(1, LONG));
    }
    EXPECT_EQ(made, 2);
    { OrderedJobs none(0, 8, makeWorker); }
    EXPECT_EQ(made, 2);
}

TEST(OrderedJobs, WaitingEndsWithTheTime) {
    std::mutex held;
    std::unique_lock lock(held);
    const auto makeWorker = [&] { return [&](std::size_t) { const std::lock_guard wait(held); }; };
    OrderedJobs jobs(1, 1, makeWorker);
    EXPECT_FALSE(jobs.Wait(0, SHORT));
    lock.unlock();
    EXPECT_TRUE(jobs.Wait(0, LONG));
}

TEST(OrderedJobs, TheThreadsAreNotFarAhead) {
    const std::size_t most = OrderedJobs::MOST_AHEAD * 2;
    std::atomic<std::size_t> begun = 0;
    const auto makeWorker = [&begun] { return [&begun](std::size_t) { ++begun; }; };
    OrderedJobs jobs(1000, 2, makeWorker);
    ASSERT_TRUE(jobs.Wait(0, LONG));
    std::this_thread::sleep_for(SHORT);
    EXPECT_LE(begun, most);
    for (std::size_t i = 1; i < most; ++i)
        ASSERT_TRUE(jobs.Wait(i, LONG)) << "and they get that far";
    EXPECT_GE(begun, most);
}

TEST(OrderedJobs, AnEndLeavesJobsUndone) {
    std::atomic<int> runs = 0;
    {
        const auto makeWorker = [&] {
            return [&](std::size_t) {
                ++runs;
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            };
        };
        OrderedJobs jobs(100000, 2, makeWorker);
        ASSERT_TRUE(jobs.Wait(0, LONG));
    }
    EXPECT_LE(runs, static_cast<int>(OrderedJobs::MOST_AHEAD * 2));
}

TEST(OrderedJobs, AWorkerThatCannotBeMade) {
    int made = 0;
    const auto makeOne = [&]() -> OrderedJobs::Job {
        if (++made > 1)
            throw std::runtime_error("no more");
        return [](std::size_t) {};
    };
    OrderedJobs jobs(50, 4, makeOne);
    for (std::size_t i = 0; i < 50; ++i)
        EXPECT_TRUE(jobs.Wait(i, LONG)) << "the first thread does it all";
    EXPECT_EQ(made, 2);
    const auto makeNone = []() -> OrderedJobs::Job { throw std::runtime_error("none"); };
    EXPECT_THROW(OrderedJobs(50, 4, makeNone), std::runtime_error);
}

}  // namespace
}  // namespace Kestra::Test
