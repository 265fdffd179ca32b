// SPDX-License-Identifier: Apache-2.0
#include "system/soak/first_use.h"

#include "system/soak/operations.h"

#include "sarn/openssl_init.h"

#include "ul/random.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace sarn_soak {

namespace {

using Addresses = std::array<const void*, 7>;

Addresses getAll() {
    return {sarn::CCipherManager::get().get(),
            sarn::CDigestManager::get().get(),
            sarn::COpenSSLInit::get().get(),
            sarn::COpenSSLInit::CThreadStuff::get().get(),
            sarn::COpenSSLInit::CCleaner::get().get(),
            ul::CMTRand::getGlobal().get(),
            ul::CMTRand::getGlobalInstanceMutex().get()};
}

bool areAllTheSame(int threadCount) {
    std::vector<Addresses> seen(static_cast<std::size_t>(threadCount));
    std::atomic<int> waiting{threadCount};
    std::atomic<bool> hasFailed{false};
    std::vector<std::thread> threads;
    for (Addresses& addresses : seen) {
        threads.emplace_back([&] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            try {
                addresses = getAll();
                Shared().drawIV();
            } catch (...) {
                hasFailed = true;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    return !hasFailed && std::all_of(seen.begin(), seen.end(), [&](const Addresses& some) { return some == seen[0]; });
}

} // namespace

void runFirstUses(int count, int threadCount) {
    for (int i = 0; i < count; ++i) {
        // This process never uses the library, so each child is as new as a program that was just started.
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(10);
            ::_exit(areAllTheSame(threadCount) ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            throw std::runtime_error("the first use failed in a new process");
    }
}

} // namespace sarn_soak
