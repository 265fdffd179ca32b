// SPDX-License-Identifier: Apache-2.0
// Work on many threads at once.
#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace sarn_test {

/// Runs `work(i)` for each i below `count`, each on a thread of its own, all of which exist before the first begins.
/// Returns when all have ended, and throws again what the first of them to fail has thrown.
template <class Work>
void runOnThreads(int count, Work work) {
    std::mutex mutex;
    std::condition_variable everybodyIsThere;
    int missing = count;
    std::exception_ptr error;
    const auto run = [&](int number) {
        {
            std::unique_lock<std::mutex> lock(mutex);
            if (--missing == 0)
                everybodyIsThere.notify_all();
            everybodyIsThere.wait(lock, [&] { return missing <= 0; });
        }
        try {
            work(number);
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mutex);
            if (!error)
                error = std::current_exception();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(run, i);
    for (std::thread& thread : threads)
        thread.join();
    if (error)
        std::rethrow_exception(error);
}

} // namespace sarn_test
