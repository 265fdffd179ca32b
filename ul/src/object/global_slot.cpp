// SPDX-License-Identifier: Apache-2.0
#include "ul/global_slot.h"

#include "errors/raise.h"
#include "object/immortal.h"

#include "ul/thread.h"

#include <condition_variable>
#include <mutex>
#include <type_traits>

namespace ul {

// A slot is used until the very end of the process.
static_assert(std::is_trivially_destructible_v<CSafeGlobalSlot>);

namespace {

// Shared by all slots: a mutex in each could not be constant-initialised on every platform.
struct CreationState {
    std::mutex mutex;
    std::condition_variable creationEnded;
};

CreationState& getCreationState() {
    static Immortal<CreationState> state;
    return state.get();
}

/// Marks a slot as being created. `lock` holds the state's mutex when this object is constructed and destroyed, but not
/// in between: `create` may use other slots and other threads.
class CreationScope {
public:
    CreationScope(std::unique_lock<std::mutex>& lock, std::uint64_t& creator, std::uint64_t caller)
        : m_lock(lock), m_creator(creator) {
        m_creator = caller;
        m_lock.unlock();
    }
    CreationScope(const CreationScope&) = delete;
    CreationScope& operator=(const CreationScope&) = delete;
    ~CreationScope() {
        m_lock.lock();
        m_creator = 0;
        getCreationState().creationEnded.notify_all();
    }

private:
    std::unique_lock<std::mutex>& m_lock;
    std::uint64_t& m_creator;
};

} // namespace

void* CSafeGlobalSlot::createOnce(void* (*create)(), void (*destroy)(void*)) {
    const std::uint64_t caller = CThread::getCurrentID();
    CreationState& state = getCreationState();
    std::unique_lock<std::mutex> lock(state.mutex);
    if (m_creator == caller)
        raiseError("Global object is used while it is being created.");
    state.creationEnded.wait(lock, [this] { return m_creator == 0; });
    if (void* const object = m_object.load(std::memory_order_relaxed))
        return object;

    const CreationScope scope(lock, m_creator, caller);
    void* const object = create();
    if (!object)
        raiseError("Global object could not be created.");
    m_destroy = destroy;
    m_object.store(object, std::memory_order_release);
    return object;
}

void CSafeGlobalSlot::clear() noexcept {
    if (void* const object = m_object.exchange(nullptr, std::memory_order_acquire)) {
        if (m_destroy)
            m_destroy(object);
    }
}

} // namespace ul
