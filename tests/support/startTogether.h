/// Starts the threads of a test at the same time, and ends a test whose threads hang.
#ifndef CORVANE_TESTS_SUPPORT_STARTTOGETHER_H
#define CORVANE_TESTS_SUPPORT_STARTTOGETHER_H

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Corvane::Testing {

/// Runs all functions at once, each on a thread of its own, and waits for them. After two minutes it aborts the
/// process, so that the test fails and leaves a core.
inline void startTogether(const std::vector<std::function<void()>>& functions)
{
    std::mutex mutex;
    std::condition_variable changed;
    std::size_t waiting = 0;
    std::size_t done = 0;
    std::vector<std::thread> threads;
    for (const auto& function : functions) {
        threads.emplace_back([&] {
            {
                std::unique_lock<std::mutex> lock(mutex);
                ++waiting;
                changed.notify_all();
                changed.wait(lock, [&] { return waiting == functions.size(); });
            }
            function();
            const std::lock_guard<std::mutex> lock(mutex);
            ++done;
            changed.notify_all();
        });
    }
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (!changed.wait_for(lock, std::chrono::minutes(2), [&] { return done == functions.size(); })) {
            std::fputs("The threads of this test hang.\n", stderr);
            std::abort();
        }
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

} // namespace Corvane::Testing

#endif
