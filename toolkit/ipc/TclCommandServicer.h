#pragma once

#include "core/TqExport.h"
#include "ipc/ThreadMainObject.h"

class TclCommandServer;

/// TclCommandServicer: a thread that services the command server's handed-over commands,
/// for applications whose main thread does not call waitForCommand() itself.
class TQ_EXPORT TclCommandServicer : public ThreadMainObject {
public:
    /// A servicer of server (not owned; it must outlive the servicer), not started yet.
    explicit TclCommandServicer(TclCommandServer* server)
        : ThreadMainObject(false), m_server(server) {}
    /// Waits for the thread; the server must have been stopped (remove or requestStop).
    ~TclCommandServicer() override { join(); }

protected:
    /// Runs syncWaitForCommand() until the server is done.
    /// Services commands until the server is done, then deactivates.
    void vThreadMain() override;

private:
    TclCommandServer* m_server;
};
