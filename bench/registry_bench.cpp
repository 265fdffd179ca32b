// SPDX-License-Identifier: Apache-2.0
// The look-up of an identifier, by one thread and by eight, compared with a recursive mutex and a map.
#include "comparison.h"
#include "families.h"

#include <sarn/cipher.h>
#include <sarn/digest.h>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <sched.h>

namespace bench {

namespace {

constexpr int threadCount = 8;
constexpr int lookUpsPerThread = 2000;

/// The simplest registry.
struct RawRegistry {
    std::shared_ptr<int> get(const std::wstring& id) {
        const std::lock_guard<std::recursive_mutex> lock(mutex);
        return items.find(id)->second;
    }

    std::recursive_mutex mutex;
    std::map<std::wstring, std::shared_ptr<int>> items;
};

/// Runs `work` on eight threads and all processors.
void runThreads(const Work& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&] {
            cpu_set_t all;
            CPU_ZERO(&all);
            for (unsigned cpu = 0; cpu < std::thread::hardware_concurrency(); ++cpu)
                CPU_SET(cpu, &all);
            sched_setaffinity(0, sizeof all, &all);
            for (int n = 0; n < lookUpsPerThread; ++n)
                work();
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

void registerRegistries() {
    const auto raw = std::make_shared<RawRegistry>();
    for (const wchar_t* const id : {L"aes256cbc", L"aes128cbc", L"bfcbc", L"cast128cbc", L"null"})
        raw->items[id] = std::make_shared<int>(1);
    const auto id = std::make_shared<std::wstring>(L"aes256cbc");
    const auto cipherID = std::make_shared<ul::String>("aes256cbc");
    const auto digestID = std::make_shared<ul::String>("sha1");
    const Work getRaw = [=] { benchmark::DoNotOptimize(raw->get(*id)); };
    const Work getCipher = [=] { benchmark::DoNotOptimize(sarn::CCipherManager::get()->getCipher(*cipherID)); };
    const Work getType = [=] { benchmark::DoNotOptimize(sarn::CDigestManager::get()->getType(*digestID)); };
    compare("look-up of a cipher (raw: mutex and map)", 0, getRaw, getCipher, atMost(60));
    compare("look-up of a digest (raw: mutex and map)", 0, getRaw, getType, atMost(60));
    const auto inThreads = [](const Work& work) { return [work] { runThreads(work); }; };
    compare("2000 look-ups in each of 8 threads", 0, inThreads(getRaw), inThreads(getCipher));
}

} // namespace bench
