#include "ipc/TclServerCommand.h"

TclServerCommand::TclServerCommand(TclConnectionWithClient* connection, TclServerHandler handler,
                                   void* clientData)
    : m_connection(connection), m_handler(handler), m_clientData(clientData) {}

// A copy is a fresh binding of the same command: it has no invocation and was never executed.
TclServerCommand::TclServerCommand(const TclServerCommand& other)
    : m_connection(other.m_connection), m_handler(other.m_handler),
      m_clientData(other.m_clientData), m_async(other.m_async), m_result(other.m_result) {}

TclServerCommand& TclServerCommand::operator=(const TclServerCommand& other) {
    if (this != &other) {
        m_connection = other.m_connection;
        m_handler = other.m_handler;
        m_clientData = other.m_clientData;
        m_interp = nullptr;
        m_objc = 0;
        m_objv = nullptr;
        m_async = other.m_async;
        m_result = other.m_result;
        m_executed = false;
    }
    return *this;
}

void TclServerCommand::setInvocation(Tcl_Interp* interp, int objc, Tcl_Obj* const* objv) {
    m_interp = interp;
    m_objc = objc;
    m_objv = objv;
}
