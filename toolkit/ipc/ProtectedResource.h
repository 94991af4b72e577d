#pragma once

#include "core/TqExport.h"

#include <condition_variable>
#include <mutex>
#include <string>

/// ProtectedResource: a named mutex that threads hold while they touch shared state.
/// SyncSignal: an auto-reset event tied to one ProtectedResource; a send is kept until a
/// waiter consumes it, so no wake-up is lost, and a waiter returns only for a send, a
/// vSendAll or its time limit, never spuriously.
class TQ_EXPORT ProtectedResource {
public:
    ///@{
    /// The name is for diagnostics only; null gives an unnamed resource.
    explicit ProtectedResource(const char* name);
    ProtectedResource(const ProtectedResource&) = delete;
    ProtectedResource& operator=(const ProtectedResource&) = delete;
    ///@}

    ///@{
    /// Takes and gives back the mutex (the spelling is the interface's).
    void vAquire() { m_mutex.lock(); }
    void vRelease() { m_mutex.unlock(); }
    ///@}
    /// The name, owned by the resource; "" for an unnamed one.
    const char* name() const { return m_name.c_str(); }
    /// The mutex itself, for waits on a condition; owned by the resource.
    std::mutex& mutex() { return m_mutex; }

private:
    std::string m_name;
    std::mutex m_mutex;
};

/// SyncSignal: an event on a ProtectedResource's mutex that one waiter consumes.
class TQ_EXPORT SyncSignal {
public:
    /// A cleared signal on resource, which must outlive it.
    explicit SyncSignal(ProtectedResource& resource) : m_resource(resource) {}
    SyncSignal(const SyncSignal&) = delete;
    SyncSignal& operator=(const SyncSignal&) = delete;

    /// Each of these must be called with the resource held.
    /// Sets the signal and wakes the waiters; one of them consumes it.
    void vSend();
    /// Wakes every thread waiting now, without leaving a send for later waiters. Waiters that
    /// share one signal but wait for different things re-check their own condition.
    void vSendAll();
    /// Drops a send that no waiter has consumed yet.
    void vClear() { m_signalled = false; }
    /// Waits until the signal is set, then consumes it. The resource is released during the
    /// wait and held again on return. milliseconds -1 waits without limit. Returns false
    /// when the time limit passed first.
    [[nodiscard]] bool vWait(long milliseconds);

private:
    ProtectedResource& m_resource;
    std::condition_variable m_condition;
    bool m_signalled = false;
    unsigned long m_generation = 0;
};
