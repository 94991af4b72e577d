#include "ipc/ProtectedResource.h"

#include <chrono>

ProtectedResource::ProtectedResource(const char* name) : m_name(name ? name : "") {}

void SyncSignal::vSend() {
    m_signalled = true;
    m_condition.notify_all();
}

void SyncSignal::vSendAll() {
    ++m_generation;
    m_condition.notify_all();
}

bool SyncSignal::vWait(long milliseconds) {
    // The caller holds the mutex: adopt it for the wait and hand it back held.
    std::unique_lock lock(m_resource.mutex(), std::adopt_lock);
    const unsigned long generation = m_generation;
    const auto woken = [this, generation] { return m_signalled || m_generation != generation; };
    bool signalled = true;
    if (milliseconds < 0)
        m_condition.wait(lock, woken);
    else
        signalled = m_condition.wait_for(lock, std::chrono::milliseconds(milliseconds), woken);
    if (signalled && m_generation == generation)
        m_signalled = false;
    lock.release();
    return signalled;
}
