// SPDX-License-Identifier: Apache-2.0
// Every order of the steps of two threads that use a registry. A step ends before a lock is taken, while the registry
// asks an item for its name, and while it destroys an item. In each order, the calls have the results that they have
// one after the other, in the order in which they took the lock.
#include "failures/call_watch.h"
#include "support/registries.h"

#include <condition_variable>

namespace sarn_test {

namespace {

/// Lets two threads run in turns. Where both can continue, a list of choices says which does.
class Turns {
public:
    explicit Turns(std::vector<int> choices) : m_choices(std::move(choices)) {}

    /// Ends a step of the calling thread, which continues when it is its turn and `mutex`, if there is one, is free.
    void endStep(std::intptr_t mutex = 0) {
        std::unique_lock<std::mutex> guard(m_mutex);
        Thread& own = getOwn();
        own.wanted = mutex;
        own.isReady = true;
        choose();
        m_changed.wait(guard, [&] { return m_running == &own; });
    }

    /// Runs `work(i)` on threads 0 and 1. Returns the choices that were made.
    template <class Work>
    const std::vector<int>& run(Work work) {
        const auto runOne = [&](std::size_t number) {
            {
                const std::lock_guard<std::mutex> guard(m_mutex);
                m_threads[number].id = std::this_thread::get_id();
            }
            endStep();
            work(number);
            const std::lock_guard<std::mutex> guard(m_mutex);
            getOwn().hasEnded = true;
            choose();
        };
        std::thread first(runOne, 0);
        std::thread second(runOne, 1);
        first.join();
        second.join();
        return m_made;
    }

    void setLocked(std::intptr_t mutex) { m_locked = mutex; }
    /// The number of the calling thread.
    std::size_t getNumber() const { return m_threads[0].id == std::this_thread::get_id() ? 0 : 1; }

private:
    struct Thread {
        std::thread::id id;
        std::intptr_t wanted = 0;
        bool isReady = false;
        bool hasEnded = false;
    };

    Thread& getOwn() { return m_threads[getNumber()]; }
    bool canRun(const Thread& thread) const {
        return !thread.hasEnded && (thread.wanted == 0 || thread.wanted != m_locked);
    }

    /// Gives the turn to a thread, once no thread runs.
    void choose() {
        for (const Thread& thread : m_threads) {
            if (!thread.isReady && !thread.hasEnded)
                return;
        }
        int next = canRun(m_threads[0]) ? 0 : 1;
        if (canRun(m_threads[0]) && canRun(m_threads[1])) {
            if (m_made.size() < m_choices.size())
                next = m_choices[m_made.size()];
            m_made.push_back(next);
        }
        m_running = &m_threads[static_cast<std::size_t>(next)];
        m_running->isReady = false;
        m_changed.notify_all();
    }

    const std::vector<int> m_choices;
    std::vector<int> m_made;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::array<Thread, 2> m_threads;
    Thread* m_running = nullptr;
    // Only the running thread locks and unlocks.
    std::intptr_t m_locked = 0;
};

Turns* turns = nullptr;

/// Ends a step if threads run in turns.
void endStep() {
    if (turns)
        turns->endStep();
}

/// An item of a host with a number. Its name and its end are steps.
template <class Family>
struct Item : HostItem<Family> {
    Item(int itemNumber, int& living) : HostItem<Family>(getHostID, std::bind(countEnd, &living)), number(itemNumber) {
        ++living;
    }
    static void countEnd(int* living) {
        --*living;
        endStep();
    }
    static const char* getHostID() {
        endStep();
        return "host";
    }

    const int number;
};

enum class Operation { Add, Find, Get };
using Program = std::array<Operation, 2>;

template <class Family>
struct Interleavings : testing::Test {
    /// The number of the item that a look-up finds, or of the one that is added; 0 for none.
    int apply(typename Family::Manager& manager, Operation operation, int number) {
        if (operation == Operation::Add) {
            (manager.*Family::addItem)(ul::make<Item<Family>>(number, living).get());
            return number;
        }
        ul::P<typename Family::Item> found;
        try {
            found = (manager.*(operation == Operation::Find ? Family::findItem : Family::getItem))("host");
        } catch (const ul::CError&) {
            EXPECT_EQ(operation, Operation::Get);
        }
        const auto* const item = dynamic_cast<const Item<Family>*>(found.get());
        return item ? item->number : 0;
    }

    /// Runs two programs in the order of the choices, to which it adds those that it makes.
    void runOnce(const std::array<Program, 2>& programs, std::vector<int>& choices) {
        const auto manager = ul::make<typename Family::Manager>();
        std::array<std::vector<int>, 2> results;
        std::array<std::vector<int>, 2> expected;
        int registered = 0;
        CallWatch watch;
        Turns ordered(choices);
        watch.before(HeldLocks::lock, [&](const Call& call) { ordered.endStep(call.arguments[1]); });
        watch.after(HeldLocks::lock, [&](const Call& call) {
            ordered.setLocked(call.arguments[1]);
            const std::size_t thread = ordered.getNumber();
            const std::size_t index = expected[thread].size();
            if (programs[thread].at(index) == Operation::Add)
                registered = getItemNumber(thread, index);
            expected[thread].push_back(registered);
        });
        watch.before(HeldLocks::unlock, [&](const Call&) { ordered.setLocked(0); });
        turns = &ordered;
        choices = ordered.run([&](std::size_t thread) {
            for (std::size_t i = 0; i < programs[thread].size(); ++i)
                results[thread].push_back(apply(*manager, programs[thread][i], getItemNumber(thread, i)));
        });
        turns = nullptr;
        EXPECT_EQ(results, expected);
        EXPECT_EQ(living, registered == 0 ? 0 : 1) << "the others have been destroyed";
    }

    static int getItemNumber(std::size_t thread, std::size_t index) {
        return static_cast<int>(10 * thread + index + 1);
    }

    int living = 0;
};

TYPED_TEST_SUITE(Interleavings, Families, FamilyNames);

} // namespace

TYPED_TEST(Interleavings, OfTwoThreadsWithTwoCallsEach_GiveTheResultsOfTheOrderOfTheirLocks) {
    std::vector<Program> programs;
    for (const Operation first : {Operation::Add, Operation::Find, Operation::Get})
        for (const Operation second : {Operation::Add, Operation::Find, Operation::Get})
            programs.push_back({first, second});
    int orders = 0;
    for (std::size_t first = 0; first < programs.size(); ++first) {
        // The threads are alike, so each pair is tried once.
        for (std::size_t second = first; second < programs.size(); ++second) {
            std::vector<int> choices;
            do {
                this->runOnce({programs[first], programs[second]}, choices);
                ++orders;
                // The next order: the last choice that was 0 becomes 1.
                while (!choices.empty() && choices.back() == 1)
                    choices.pop_back();
                if (!choices.empty())
                    choices.back() = 1;
            } while (!choices.empty() && !this->HasFailure());
        }
    }
    this->RecordProperty("orders", orders);
    EXPECT_GE(orders, 500);
}

} // namespace sarn_test
