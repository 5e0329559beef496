// SPDX-License-Identifier: Apache-2.0
//
// Threads that a test cancels, and a limit for the time that they may take.
#pragma once

#include <functional>
#include <utility>

#include <pthread.h>
#include <unistd.h>

namespace mdm::test {

// Runs a function in a thread of its own.
class CancellableThread {
public:
    explicit CancellableThread(std::function<void()> function) : function_(std::move(function))
    {
        pthread_create(&thread_, nullptr, run, this);
    }
    CancellableThread(const CancellableThread &) = delete;
    CancellableThread &operator=(const CancellableThread &) = delete;

    void cancel() const { pthread_cancel(thread_); }

    // Waits for the thread's end, once. False if the function has returned.
    bool ends_cancelled() const
    {
        void *result = nullptr;
        pthread_join(thread_, &result);
        return result == PTHREAD_CANCELED;
    }

private:
    static void *run(void *self)
    {
        static_cast<CancellableThread *>(self)->function_();
        return nullptr;
    }

    std::function<void()> function_;
    pthread_t thread_{};
};

// Ends the process with SIGALRM where a test would otherwise wait for ever: for a lock that nobody
// releases.
class Deadline {
public:
    explicit Deadline(unsigned seconds) { alarm(seconds); }
    ~Deadline() { alarm(0); }
    Deadline(const Deadline &) = delete;
    Deadline &operator=(const Deadline &) = delete;
};

}  // namespace mdm::test
