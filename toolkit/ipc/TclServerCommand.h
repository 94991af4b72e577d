#pragma once

#include "core/TqExport.h"

#include <atomic>

class TclCommandServer;
class TclConnectionWithClient;
class TclServerCommand;
struct Tcl_Interp;
struct Tcl_Obj;

enum TclServerRespType : int {
    TCS_NONE = 0,
    TCS_ERROR = 1,
    TCS_RESULT = 2,
    TCS_START_RESULT = 3,
    TCS_END = 4,
    TCS_STATUS = 5,
    TCS_PROMPT = 6,
    TCS_DISCONNECT = 7,
};

/// A handler returns a Tcl completion code (TCL_OK, TCL_ERROR, ...). Handlers of a derived
/// server are bound with static_cast<TclServerHandler>(&Derived::handler).
using TclServerHandler = int (TclCommandServer::*)(TclServerCommand*);

/// TclServerCommand: one Tcl command registered in a connection's interpreter, bound to a
/// member function of the command server, with the arguments of its current invocation.
/// TclServerRespType: the kinds of response a handler sends (logged, not put on the wire).
class TQ_EXPORT TclServerCommand {
public:
    ///@{
    /// connection may be null for a command that belongs to no client (the timeout command).
    TclServerCommand(TclConnectionWithClient* connection, TclServerHandler handler,
                     void* clientData);
    TclServerCommand(const TclServerCommand& other);
    TclServerCommand& operator=(const TclServerCommand& other);
    ///@}

    ///@{
    /// The connection the command belongs to (not owned), the server member function it
    /// calls, and the client data given at construction.
    TclConnectionWithClient* connection() const { return m_connection; }
    TclServerHandler handler() const { return m_handler; }
    void* clientData() const { return m_clientData; }
    ///@}

    ///@{
    /// The current invocation, valid while the handler runs.
    Tcl_Interp* interp() const { return m_interp; }
    int objc() const { return m_objc; }
    Tcl_Obj* const* objv() const { return m_objv; }
    void setInvocation(Tcl_Interp* interp, int objc, Tcl_Obj* const* objv);
    ///@}

    ///@{
    /// An async command runs on the thread that received it instead of being handed to the
    /// servicing thread.
    void setAsyncFlag(char async) { m_async = async; }
    char getAsyncFlag() const { return m_async; }
    ///@}

    ///@{
    /// The Tcl code of the last execution.
    int result() const { return m_result; }
    void setResult(int result) { m_result = result; }
    ///@}

    ///@{
    /// Set by the servicing thread when it has executed the command it was handed (written
    /// under the server's command mutex; its sender may look before taking the mutex).
    bool executed() const { return m_executed.load(std::memory_order_acquire); }
    void setExecuted(bool executed) { m_executed.store(executed, std::memory_order_release); }
    ///@}

private:
    TclConnectionWithClient* m_connection;
    TclServerHandler m_handler;
    void* m_clientData;
    Tcl_Interp* m_interp = nullptr;
    int m_objc = 0;
    Tcl_Obj* const* m_objv = nullptr;
    char m_async = 0;
    int m_result = 0;
    std::atomic<bool> m_executed{false};
};
