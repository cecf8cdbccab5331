#pragma once

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "platform/Event.h"
#include "platform/RecursiveLock.h"
#include "platform/Thread.h"

namespace mv {

// Receives the iteration, the number of iterations and the index of the thread that runs it; gives
// a status, 0 for success.
using ThreadPoolFunction = std::function<unsigned(unsigned, unsigned, unsigned)>;

// Runs one function for each index of a range on a fixed set of threads, the calling thread among
// them. Owned by the host object; its threads wait between jobs, for as long as the module is
// loaded, and are rebuilt only when another number is wanted. Any thread may call it; one job runs
// at a time. A job on the calling thread's own share must not call `iterate`.
class ThreadPool {
public:
    static constexpr int kMaxThreads = 64;

    ThreadPool() noexcept;
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    // Rebuilds the pool to that size, the caller counted; fewer when the system refuses threads or
    // memory. Does nothing when the size stands.
    void setThreadCount(int count) noexcept;
    // Gives the status of the calling thread's share alone. That is meant: who must see every
    // failure keeps a status of its own.
    unsigned iterate(int count, ThreadPoolFunction function);
    // Whether the caller is one of the threads 1 and up.
    bool isWorkerThread() const noexcept;

private:
    struct ThreadData {
        int index = 0;
        unsigned status = 0;
        Event startEvent;
        Event doneEvent;
        Event exitEvent;
        ThreadPool* pool = nullptr;
    };
    class JobGuard;

    void MakeThreadData(int count) noexcept;
    void StartThreads(int count) noexcept;
    void Shutdown() noexcept;
    void RunShare(int index, unsigned& status);
    static void WorkerLoop(void* threadData) noexcept;

    // Threads that really exist, the caller's slot counted.
    int threadCount = 0;
    int iterations = 0;
    int nextIteration = 0;
    bool stop = false;
    ThreadPoolFunction statusFunction;
    RecursiveLock indexLock_;
    // Held for a whole job and for a whole change of size.
    RecursiveLock poolLock_;
    // Slot i for thread i; slot 0 stays empty.
    std::array<Thread, kMaxThreads> handles;
    std::vector<std::shared_ptr<ThreadData>> threadData;
};

}  // namespace mv
