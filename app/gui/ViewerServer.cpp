#include "gui/ViewerServer.h"

#include "core/DebugPrint.h"
#include "ipc/TclConnectionWithClient.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <cstdio>
#include <memory>
#include <tcl.h>

namespace {
// One command handed to the GUI thread and its answer, shared so that an answer arriving
// after the server stopped waiting writes into memory that still exists.
struct Call {
    std::string script;
    std::string result;
    bool ok = false;
    bool done = false;
};

// True on a connection's thread while it evaluates a script its client sent; each
// connection has a thread of its own, so no other connection can see it.
thread_local bool t_evaluatingClientScript = false;
} // namespace

ViewerServer::ViewerServer(Evaluator evaluate) : m_forwarding(std::make_shared<Forwarding>()) {
    m_forwarding->evaluate = std::move(evaluate);
}

ViewerServer::~ViewerServer() {
    stopForwarding();
    remove();
}

void ViewerServer::addCommands(TclConnectionWithClient* connection) {
    TclCommandServer::addCommands(connection);
    const auto forward = static_cast<TclServerHandler>(&ViewerServer::forwardCmd);
    for (const char* name : {"diagram", "signal", "arrow", "marker", "view", "window"})
        connection->addCommand(name, forward, true);
    // Replaces the built-in "quit", which only ends the client's connection.
    connection->addCommand("quit", static_cast<TclServerHandler>(&ViewerServer::quitCmd), true);
}

bool ViewerServer::admitScript(TclConnectionWithClient* connection, const char* script) {
    t_evaluatingClientScript = TclCommandServer::admitScript(connection, script);
    return t_evaluatingClientScript;
}

void ViewerServer::scriptEvaluated(TclConnectionWithClient* connection, int code) {
    t_evaluatingClientScript = false;
    TclCommandServer::scriptEvaluated(connection, code);
}

int ViewerServer::quitCmd(TclServerCommand* command) {
    if (t_evaluatingClientScript)
        return forwardCmd(command);
    return exitCmd(command);
}

void ViewerServer::serverIsListening(int port) {
    std::printf("tqdiagram view: serving on 127.0.0.1:%d\n", port);
    std::fflush(stdout);
}

void ViewerServer::scriptFailed(TclConnectionWithClient*, const char* script,
                                const char* errorText) {
    Printf(DBG_INFO, "\ntqdiagram view: script '%s' failed: %s\n", script, errorText);
}

void ViewerServer::stopForwarding() {
    std::lock_guard<std::mutex> lock(m_forwarding->mutex);
    m_forwarding->stopped = true;
    m_forwarding->answered.notify_all();
}

int ViewerServer::forwardCmd(TclServerCommand* command) {
    auto call = std::make_shared<Call>();
    {
        Tcl_Obj* words = Tcl_NewListObj(command->objc(), command->objv());
        Tcl_IncrRefCount(words);
        call->script = Tcl_GetString(words);
        Tcl_DecrRefCount(words);
    }
    const std::shared_ptr<Forwarding> forwarding = m_forwarding;
    {
        std::lock_guard<std::mutex> lock(forwarding->mutex);
        if (forwarding->stopped)
            return TCL_ERROR;
    }
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [forwarding, call] {
            {
                std::lock_guard<std::mutex> lock(forwarding->mutex);
                if (forwarding->stopped)
                    return;
            }
            std::string result;
            const bool ok = forwarding->evaluate(call->script, result);
            std::lock_guard<std::mutex> lock(forwarding->mutex);
            call->result = std::move(result);
            call->ok = ok;
            call->done = true;
            forwarding->answered.notify_all();
        },
        Qt::QueuedConnection);
    std::unique_lock<std::mutex> lock(forwarding->mutex);
    forwarding->answered.wait(lock, [&] { return call->done || forwarding->stopped; });
    if (!call->done)
        return TCL_ERROR;
    const bool ok = call->ok;
    const std::string result = call->result;
    lock.unlock();
    sendCmdResp(ok ? TCS_RESULT : TCS_ERROR, result.c_str(), command);
    return ok ? TCL_OK : TCL_ERROR;
}
