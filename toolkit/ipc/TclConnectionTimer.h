#pragma once

#include "core/TqExport.h"
#include "ipc/ThreadMainObject.h"

#include <condition_variable>
#include <mutex>

class TclCommandServer;
class TclServerCommand;

/// TclConnectionTimer: runs the application's timeout command once its delay has passed, if
/// by then no client is connected (typically to shut down a server nobody used).
class TQ_EXPORT TclConnectionTimer : public ThreadMainObject {
public:
    /// A timer of milliseconds that hands command (not owned) to server's servicing thread;
    /// not started yet.
    TclConnectionTimer(TclCommandServer* server, int milliseconds, TclServerCommand* command);
    /// Cancels the timer and waits for its thread.
    ~TclConnectionTimer() override;
    ///@{
    /// Ends the wait early without running the command.
    void cancel();
    int milliseconds() const { return m_milliseconds; }
    TclServerCommand* command() const { return m_command; }
    ///@}

protected:
    /// Waits the delay unless cancelled; then, when no client is connected, hands the command
    /// to the servicing thread and waits for it. Deactivates at the end.
    void vThreadMain() override;

private:
    TclCommandServer* m_server;
    int m_milliseconds;
    TclServerCommand* m_command;
    std::mutex m_mutex;
    std::condition_variable m_cancelled;
    bool m_cancel = false;
};
