#include "ipc/ThreadMainObject.h"

#include <system_error>

ThreadMainObject::ThreadMainObject(bool isPsuedo) : m_isPsuedo(isPsuedo) {}

ThreadMainObject::~ThreadMainObject() {
    if (!m_thread.joinable())
        return;
    if (m_thread.get_id() == std::this_thread::get_id())
        m_thread.detach();
    else
        m_thread.join();
}

bool ThreadMainObject::activate() {
    if (m_isPsuedo || m_active.load(std::memory_order_acquire))
        return false;
    join();
    m_active.store(true, std::memory_order_release);
    m_finished.store(false, std::memory_order_release);
    // The new thread waits at the gate until m_thread is assigned: once it has run, whoever
    // sees threadFinished() may destroy the object, and this function must be done with it.
    std::unique_lock gate(m_startGate);
    try {
        m_thread = std::thread([this] {
            { std::lock_guard passed(m_startGate); }
            vThreadMain();
            // The last touch of this object on the thread: after it the owner may delete it.
            m_finished.store(true, std::memory_order_release);
        });
    } catch (const std::system_error&) {
        m_active.store(false, std::memory_order_release);
        m_finished.store(true, std::memory_order_release);
        return false;
    }
    gate.unlock();
    return true;
}

void ThreadMainObject::deactivate() {
    m_active.store(false, std::memory_order_release);
}

void ThreadMainObject::join() {
    if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id())
        m_thread.join();
}
