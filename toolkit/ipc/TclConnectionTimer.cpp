#include "ipc/TclConnectionTimer.h"

#include "ipc/TclCommandServer.h"

#include <chrono>

TclConnectionTimer::TclConnectionTimer(TclCommandServer* server, int milliseconds,
                                       TclServerCommand* command)
    : ThreadMainObject(false), m_server(server), m_milliseconds(milliseconds), m_command(command) {}

TclConnectionTimer::~TclConnectionTimer() {
    cancel();
    join();
}

void TclConnectionTimer::cancel() {
    std::lock_guard lock(m_mutex);
    m_cancel = true;
    m_cancelled.notify_all();
}

void TclConnectionTimer::vThreadMain() {
    bool cancelled;
    {
        std::unique_lock lock(m_mutex);
        cancelled = m_cancelled.wait_for(lock, std::chrono::milliseconds(m_milliseconds),
                                         [this] { return m_cancel; });
    }
    if (!cancelled && m_server->numConnections() == 0)
        m_server->syncSendCommand(m_command);
    deactivate();
}
