#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Kestra::Tool {

/// Runs numbered jobs on several threads, taken up in their order, while their owner waits for them
/// one after the other.
///
/// The threads are at most MOST_AHEAD jobs per thread ahead of the one that is waited for.
class OrderedJobs {
public:
    static constexpr std::size_t MOST_AHEAD = 16;

    /// Runs one job. Called on its thread; must not throw.
    using Job = std::function<void(std::size_t)>;
    /// Makes what runs the jobs of one thread. Called once for each thread, on the caller's.
    using MakeWorker = std::function<Job()>;

    /// Starts at once.
    /// @param threads  at least 1; no more are started than there are jobs, or than the system has
    ///                 room for
    /// @throws std::exception what the first thread failed with; when a later one fails, those
    /// before it do the work
    OrderedJobs(std::size_t jobs, std::size_t threads, const MakeWorker& makeWorker);
    OrderedJobs(const OrderedJobs&) = delete;
    OrderedJobs& operator=(const OrderedJobs&) = delete;
    /// Waits for the jobs in progress; no others are taken up.
    ~OrderedJobs();

    /// Waits until a job is done. Numbers must be asked for in order.
    /// @return false when the time is over
    bool Wait(std::size_t job, std::chrono::milliseconds most);

private:
    void Run(const Job& worker);
    bool TakeUp(std::size_t* job);

    const std::size_t count;
    const std::size_t ahead;
    std::mutex guard;  ///< of all that follows
    std::condition_variable changed;
    std::vector<bool> done;
    std::size_t next = 0;
    std::size_t waitedFor = 0;
    bool stopped = false;
    std::vector<std::thread> running;
};

}  // namespace Kestra::Tool
