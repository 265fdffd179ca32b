// SPDX-License-Identifier: Apache-2.0
#include "system/soak/ends.h"

#include "system/soak/operations.h"

#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace sarn_soak {

namespace {

constexpr int threadCount = 4;

[[noreturn]] void endWhileOthersEncrypt() {
    ::alarm(10);
    // Neither is ever destroyed: the threads use both for as long as there is a process.
    static const Shared& shared = *new Shared;
    static std::atomic<int> encrypted{0};
    for (int i = 0; i < threadCount; ++i)
        std::thread([] {
            for (;;) {
                shared.drawIV();
                ++encrypted;
            }
        }).detach();
    while (encrypted < 2 * threadCount)
        std::this_thread::yield();
    // What the return of main does.
    std::exit(0);
}

} // namespace

void runEnds(int count) {
    for (int i = 0; i < count; ++i) {
        // This process never uses the library, so each child is as new as a program that was just started.
        const pid_t child = ::fork();
        if (child == 0)
            endWhileOthersEncrypt();
        int status = 0;
        ::waitpid(child, &status, 0);
        if (status != 0)
            throw std::runtime_error("process " + std::to_string(i) + " ended with the status " +
                                     std::to_string(status));
    }
}

} // namespace sarn_soak
