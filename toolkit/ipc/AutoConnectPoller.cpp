#include "ipc/AutoConnectPoller.h"

#include "core/DebugPrint.h"
#include "ipc/IPCMessage.h"
#include "ipc/IPCMessageDispatcher.h"
#include "ipc/IPCPortFile.h"

#include <chrono>

AutoConnectPoller::AutoConnectPoller(IPCPortFile* portFile, long milliseconds,
                                     IPCMessageDispatcher* dispatcher)
    : ThreadMainObject(false), m_portFile(portFile), m_interval(milliseconds),
      m_dispatcher(dispatcher) {}

AutoConnectPoller::~AutoConnectPoller() {
    stopPolling();
    join();
}

void AutoConnectPoller::setContinueFlag(bool proceed) {
    std::lock_guard lock(m_mutex);
    m_continue = proceed;
    m_wake.notify_all();
}

bool AutoConnectPoller::getContinueFlag() const {
    std::lock_guard lock(m_mutex);
    return m_continue;
}

void AutoConnectPoller::vThreadMain() {
    Printf(DBG_INFO, "\nAuto Polling started\n");
    bool found = false;
    while (getContinueFlag()) {
        if (m_portFile->readPortFile()) {
            found = true;
            break;
        }
        std::unique_lock lock(m_mutex);
        m_wake.wait_for(lock, std::chrono::milliseconds(m_interval),
                        [this] { return !m_continue; });
    }
    if (found) {
        auto* message = new IPCStatusMessage(FOUND_PORTFILE);
        Printf(DBG_INFO, "\nSending FOUND_PORTFILE to main thread\n");
        m_dispatcher->sendMessage(message, nullptr);
    }
    Printf(DBG_INFO, "\nAuto Poller terminating\n");
    deactivate();
}
