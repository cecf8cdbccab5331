#include "image/ThreadPool.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

#include "diagnostics/Log.h"
#include "platform/FloatEnvironment.h"

namespace mv {

namespace {

constexpr unsigned kProbeMilliseconds = 1;

void LogCreation(const Event& event) noexcept {
    if (event.CreationError() != 0) {
        WriteLog(kError, kErrorPrefix, "error creating event. Error code: ", event.CreationError());
    }
}

void LogSignal(bool signalled) noexcept {
    if (!signalled) {
        const unsigned code = LastError();
        WriteLog(kError, kErrorPrefix, "error signaling event. Error code: ", code);
    }
}

}  // namespace

// Ends a job on every way out of `iterate`: nothing of it may be in use when it is left.
class ThreadPool::JobGuard {
public:
    JobGuard(ThreadPool& pool, int active) noexcept : pool_(pool), active_(active) {}
    ~JobGuard() {
        for (int i = 1; i < active_; ++i) {
            pool_.threadData[static_cast<std::size_t>(i)]->doneEvent.Wait();
        }
        pool_.statusFunction = nullptr;
    }
    JobGuard(const JobGuard&) = delete;
    JobGuard& operator=(const JobGuard&) = delete;

private:
    ThreadPool& pool_;
    int active_;
};

ThreadPool::ThreadPool() noexcept {
    // The log must outlive the pool, whose destructor may write to it.
    GetLog();
}

ThreadPool::~ThreadPool() {
    const std::lock_guard guard(poolLock_);
    Shutdown();
}

bool ThreadPool::isWorkerThread() const noexcept {
    const std::uint32_t caller = CurrentThreadId();
    return std::any_of(handles.begin(), handles.end(),
                       [caller](const Thread& thread) { return thread.Id() == caller; });
}

void ThreadPool::setThreadCount(int count) noexcept {
    if (isWorkerThread()) {
        // A job is running and holds the pool lock until this very thread has done its share.
        return;
    }
    const int wanted = std::min(count, kMaxThreads);
    const std::lock_guard guard(poolLock_);
    if (threadCount == wanted) {
        return;
    }
    WriteLog(kTrace, "initializing threadpool with ", wanted, " threads");
    Shutdown();
    threadCount = 1;
    MakeThreadData(std::max(1, wanted));
    StartThreads(wanted);
}

void ThreadPool::MakeThreadData(int count) noexcept {
    try {
        threadData.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            auto data = std::make_shared<ThreadData>();
            for (Event* event : {&data->startEvent, &data->doneEvent, &data->exitEvent}) {
                LogCreation(*event);
                LogSignal(event->Reset());
            }
            data->index = i;
            data->pool = this;
            threadData.push_back(std::move(data));
        }
    } catch (const std::bad_alloc&) {
        // The slots that have memory serve.
    }
}

void ThreadPool::StartThreads(int count) noexcept {
    for (int i = 1; i < count; ++i) {
        const auto slot = static_cast<std::size_t>(i);
        ThreadData* data = slot < threadData.size() ? threadData[slot].get() : nullptr;
        // A thread without events would neither sleep nor be waited for.
        const bool usable = data != nullptr && data->startEvent.IsUsable() &&
                            data->doneEvent.IsUsable() && data->exitEvent.IsUsable();
        if (!usable || !handles[slot].Start(&ThreadPool::WorkerLoop, data, data->exitEvent)) {
            // The missing blank is meant.
            WriteLog(kWarning, kWarningPrefix, "failed to create thread nr ", i, "of ", count);
            return;
        }
        ++threadCount;
    }
}

void ThreadPool::Shutdown() noexcept {
    stop = true;
    const auto end = static_cast<std::size_t>(std::max(1, threadCount));
    for (std::size_t i = 1; i < end; ++i) {
        LogSignal(threadData[i]->startEvent.Set());
    }
    for (std::size_t i = 1; i < end; ++i) {
        if (handles[i].WaitFor(kProbeMilliseconds)) {
            // At the end of a process the system kills threads before it unloads modules; such a
            // thread will never tell that it is gone.
            LogSignal(threadData[i]->exitEvent.Set());
        }
    }
    for (std::size_t i = 1; i < end; ++i) {
        // Not for the thread itself: it may need the loader's lock to end, and an unload holds it.
        threadData[i]->exitEvent.Wait();
    }
    for (std::size_t i = 1; i < end; ++i) {
        handles[i].Close();
    }
    threadData.clear();
}

unsigned ThreadPool::iterate(int count, ThreadPoolFunction function) {
    if (isWorkerThread()) {
        unsigned status = 0;
        for (int i = 0; i < count && status == 0; ++i) {
            status = function(static_cast<unsigned>(i), static_cast<unsigned>(count), 0);
        }
        return status;
    }
    const std::lock_guard poolGuard(poolLock_);
    const int active = std::min(threadCount, count);
    const JobGuard jobGuard(*this, active);
    iterations = count;
    nextIteration = 0;
    statusFunction = std::move(function);
    stop = false;
    for (int i = 1; i < active; ++i) {
        threadData[static_cast<std::size_t>(i)]->status = 0;
    }
    for (int i = 1; i < active; ++i) {
        ThreadData& data = *threadData[static_cast<std::size_t>(i)];
        LogSignal(data.doneEvent.Reset());
        LogSignal(data.startEvent.Set());
    }
    unsigned status = 0;
    RunShare(0, status);
    return status;
}

void ThreadPool::RunShare(int index, unsigned& status) {
    for (;;) {
        int i = 0;
        {
            const std::lock_guard guard(indexLock_);
            i = nextIteration;
            nextIteration = i < iterations ? i + 1 : i;
        }
        // The index of a share that has failed is taken all the same, and skipped.
        if (i >= iterations || status != 0) {
            return;
        }
        status = statusFunction(static_cast<unsigned>(i), static_cast<unsigned>(iterations),
                                static_cast<unsigned>(index));
    }
}

void ThreadPool::WorkerLoop(void* threadData) noexcept {
    ThreadData& data = *static_cast<ThreadData*>(threadData);
    for (;;) {
        data.startEvent.Wait();
        if (data.pool->stop) {
            return;
        }
        try {
            // Results are the same on whichever thread they are computed.
            const FloatEnvironmentGuard guard;
            data.pool->RunShare(data.index, data.status);
        } catch (...) {
            // The one catch-all: a share that throws ends, and the status stays what it was.
        }
        LogSignal(data.startEvent.Reset());
        LogSignal(data.doneEvent.Set());
    }
}

}  // namespace mv
