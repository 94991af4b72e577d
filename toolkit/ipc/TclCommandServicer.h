// TclCommandServicer: a thread that services the command server's handed-over commands,
// for applications whose main thread does not call waitForCommand() itself.
#pragma once

#include "core/TqExport.h"
#include "ipc/ThreadMainObject.h"

class TclCommandServer;

class TQ_EXPORT TclCommandServicer : public ThreadMainObject {
public:
    explicit TclCommandServicer(TclCommandServer* server)
        : ThreadMainObject(false), m_server(server) {}
    // Waits for the thread; the server must have been stopped (remove or requestStop).
    ~TclCommandServicer() override { join(); }

protected:
    // Runs syncWaitForCommand() until the server is done.
    void vThreadMain() override;

private:
    TclCommandServer* m_server;
};
