// AutoConnectPoller: a thread that waits for the peer's port file to appear and then tells
// the dispatcher FOUND_PORTFILE.
#pragma once

#include "core/TqExport.h"
#include "ipc/ThreadMainObject.h"

#include <condition_variable>
#include <mutex>

class IPCMessageDispatcher;
class IPCPortFile;

class TQ_EXPORT AutoConnectPoller : public ThreadMainObject {
public:
    // Neither the port file nor the dispatcher is owned.
    AutoConnectPoller(IPCPortFile* portFile, long milliseconds, IPCMessageDispatcher* dispatcher);
    // Stops polling and waits for the thread.
    ~AutoConnectPoller() override;

    void setContinueFlag(bool proceed);
    bool getContinueFlag() const;
    // Ends the polling at once, without a message.
    void stopPolling() { setContinueFlag(false); }
    long interval() const { return m_interval; }

protected:
    void vThreadMain() override;

private:
    IPCPortFile* m_portFile;
    long m_interval;
    IPCMessageDispatcher* m_dispatcher;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_continue = true;
};
