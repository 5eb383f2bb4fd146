#include "tools/kestra-html/commands/OrderedJobs.h"

#include <algorithm>
#include <exception>

namespace Kestra::Tool {

OrderedJobs::OrderedJobs(std::size_t jobs, std::size_t threads, const MakeWorker& makeWorker)
    : count(jobs), ahead(MOST_AHEAD * threads), done(jobs) {
    const std::size_t wanted = std::min(threads, jobs);
    running.reserve(wanted);
    for (std::size_t i = 0; i < wanted; ++i) {
        try {
            running.emplace_back([this, worker = makeWorker()] { Run(worker); });
        } catch (const std::exception&) {
            if (running.empty())
                throw;
            return;  // fewer threads do the same
        }
    }
}

OrderedJobs::~OrderedJobs() {
    {
        const std::lock_guard lock(guard);
        stopped = true;
    }
    changed.notify_all();
    for (std::thread& thread : running)
        thread.join();
}

bool OrderedJobs::Wait(std::size_t job, std::chrono::milliseconds most) {
    std::unique_lock lock(guard);
    if (waitedFor != job) {
        waitedFor = job;
        changed.notify_all();
    }
    return changed.wait_for(lock, most, [this, job] { return done[job]; });
}

void OrderedJobs::Run(const Job& worker) {
    std::size_t job = 0;
    while (TakeUp(&job)) {
        worker(job);
        {
            const std::lock_guard lock(guard);
            done[job] = true;
        }
        changed.notify_all();
    }
}

bool OrderedJobs::TakeUp(std::size_t* job) {
    std::unique_lock lock(guard);
    changed.wait(lock, [this] { return stopped || next == count || next < waitedFor + ahead; });
    if (stopped || next == count)
        return false;
    *job = next++;
    return true;
}

}  // namespace Kestra::Tool
