// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace sarn_test {

/// Runs `work(i)` for each i below `count` on a thread of its own. All threads exist before the work begins. Returns
/// when all have ended, and rethrows the first exception.
template <class Work>
void runOnThreads(int count, Work work) {
    std::mutex mutex;
    std::condition_variable allExist;
    int missing = count;
    std::exception_ptr error;
    const auto run = [&](int number) {
        {
            std::unique_lock<std::mutex> lock(mutex);
            if (--missing == 0)
                allExist.notify_all();
            allExist.wait(lock, [&] { return missing <= 0; });
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
