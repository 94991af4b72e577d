#include "ToolServer.h"

#include "core/DebugPrint.h"
#include "core/TarqToolkit.h"
#include "ipc/TclConnectionWithClient.h"

#include <cstdio>
#include <tcl.h>

namespace {
using Handler = int (ToolServer::*)(TclServerCommand*);

TclServerHandler bound(Handler handler) {
    return static_cast<TclServerHandler>(handler);
}
} // namespace

ToolServer::ToolServer(int timeoutMilliseconds)
    : m_timeoutMilliseconds(timeoutMilliseconds),
      m_timeoutCommand(nullptr, bound(&ToolServer::shutdownCmd), nullptr) {}

ToolServer::~ToolServer() {
    remove();
}

void ToolServer::addCommands(TclConnectionWithClient* connection) {
    TclCommandServer::addCommands(connection);
    connection->addCommand("version", bound(&ToolServer::versionCmd), false);
    connection->addCommand("result", bound(&ToolServer::resultCmd), true);
    connection->addCommand("shutdown", bound(&ToolServer::shutdownCmd), false);
}

void ToolServer::serverIsListening(int port) {
    std::printf("tqserver: listening on 127.0.0.1:%d\n", port);
    std::fflush(stdout);
}

TclServerCommand* ToolServer::connectionTimeoutCommand() {
    return m_timeoutMilliseconds > 0 ? &m_timeoutCommand : nullptr;
}

void ToolServer::scriptFailed(TclConnectionWithClient*, const char* script, const char* errorText) {
    Printf(DBG_INFO, "\ntqserver: script '%s' failed: %s\n", script, errorText);
}

int ToolServer::versionCmd(TclServerCommand* command) {
    sendCmdResp(TCS_RESULT, tqVersionString(), command);
    return TCL_OK;
}

int ToolServer::resultCmd(TclServerCommand* command) {
    if (command->objc() != 2)
        return TCL_ERROR;
    Tcl_Interp* interp = command->interp();
    if (Tcl_EvalObjEx(interp, command->objv()[1], 0) != TCL_OK)
        return TCL_ERROR;
    sendCmdResp(TCS_RESULT, Tcl_GetStringResult(interp), command);
    return TCL_OK;
}

int ToolServer::shutdownCmd(TclServerCommand*) {
    setDone(true);
    return TCL_OK;
}
