#pragma once

#include "core/TqExport.h"
#include "ipc/ThreadMainObject.h"

#include <condition_variable>
#include <mutex>

class IPCMessageDispatcher;
class IPCPortFile;

/// AutoConnectPoller: a thread that waits for the peer's port file to appear and then tells
/// the dispatcher FOUND_PORTFILE.
class TQ_EXPORT AutoConnectPoller : public ThreadMainObject {
public:
    /// Neither the port file nor the dispatcher is owned.
    AutoConnectPoller(IPCPortFile* portFile, long milliseconds, IPCMessageDispatcher* dispatcher);
    /// Stops polling and waits for the thread.
    ~AutoConnectPoller() override;

    ///@{
    /// While the flag holds (true at first) the poller keeps looking for the port file;
    /// clearing it wakes the poller, which then ends. Safe from any thread.
    void setContinueFlag(bool proceed);
    bool getContinueFlag() const;
    ///@}
    ///@{
    /// Ends the polling at once, without a message.
    void stopPolling() { setContinueFlag(false); }
    long interval() const { return m_interval; }
    ///@}

protected:
    /// Reads the port file every interval until it is found or the flag is cleared; when
    /// found, sends FOUND_PORTFILE through the dispatcher. Deactivates at the end.
    void vThreadMain() override;

private:
    IPCPortFile* m_portFile;
    long m_interval;
    IPCMessageDispatcher* m_dispatcher;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_continue = true;
};
