#include "ipc/TclCommandServicer.h"

#include "ipc/TclCommandServer.h"

void TclCommandServicer::vThreadMain() {
    while (!m_server->done())
        m_server->syncWaitForCommand();
    deactivate();
}
