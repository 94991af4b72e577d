#include "ipc/TclConnectionWithClient.h"

#include "core/DebugPrint.h"
#include "ipc/IPCByteSource.h"
#include "ipc/IPCMessage.h"
#include "ipc/TclCommandServer.h"
#include "ipc/platform/piSocket.h"

#include <cassert>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <string>
#include <tcl.h>

namespace {
std::once_flag tclInitialised;

const char* const responseMarkers[] = {
    "",
    "__TCS__ERROR__",
    "__TCS__RESULT__",
    "__TCS__START__RESULT__",
    "__TCS__END__",
    "__TCS__STATUS__",
    "__TCS__PROMPT__",
    "__TCS__DISCONNECT__",
};
} // namespace

TclConnectionWithClient::TclConnectionWithClient(TclCommandServer* server, unsigned int socket)
    : ThreadMainObject(!server->usingThreads()), m_server(server), m_socket(socket),
      m_ostrm(socket), m_commandDone(server->commandMutex()) {
    noteActivity();
    m_server->addReference();
}

TclConnectionWithClient::~TclConnectionWithClient() {
    join();
    cleanupTclInterp();
    // The commands are the client data of the interpreter's commands: they go after it.
    m_commands.clear();
    closeSocket();
    m_server->removeReference();
}

TclServerCommand* TclConnectionWithClient::addCommand(const char* name, TclServerHandler handler,
                                                      bool async, void* clientData) {
    assert(m_interp && "addCommand needs the connection's interpreter (createTclInterp)");
    auto command = std::make_unique<TclServerCommand>(this, handler, clientData);
    command->setAsyncFlag(async ? 1 : 0);
    Tcl_CreateObjCommand(m_interp, name, &TclConnectionWithClient::dispatchTclCommand,
                         command.get(), nullptr);
    m_commands.push_back(std::move(command));
    return m_commands.back().get();
}

int TclConnectionWithClient::dispatchTclCommand(void* clientData, Tcl_Interp* interp, int objc,
                                                Tcl_Obj* const objv[]) {
    auto* command = static_cast<TclServerCommand*>(clientData);
    command->setInvocation(interp, objc, objv);
    TclConnectionWithClient* connection = command->connection();
    TclCommandServer* server = connection->server();
    if (!connection->isPsuedo() && !command->getAsyncFlag()) {
        // A stop releases a waiting sender by itself, and the command it waits for may be the
        // one that asked for the stop ("shutdown"): no cancel is needed while it waits.
        connection->m_handingOver = true;
        const int code = server->syncSendCommand(command);
        connection->m_handingOver = false;
        return code;
    }
    return server->asyncSendCommand(command);
}

void TclConnectionWithClient::executeCommands() {
    m_lastReadFailed = false;
    while (!done()) {
        if (!receiveData())
            m_lastReadFailed = true;
    }
}

void TclConnectionWithClient::executeOneCommand() {
    if (!receiveData())
        m_lastReadFailed = true;
}

TclConnectionWithClient::FrameResult
TclConnectionWithClient::readFrame(IPCByteSource& source, char* buffer, int capacity) {
    char header[4];
    const long headerBytes = source.readFully(header, sizeof header);
    if (headerBytes < 4)
        return {ShortHeader, headerBytes, 0};
    long length = static_cast<std::uint32_t>(ipcReadInt(header));
    if (length >= capacity)
        length = capacity - 1; // the surplus stays unread and becomes the next header
    const long received =
        length > 0 ? source.readFully(buffer, static_cast<std::size_t>(length)) : 0;
    if (received < 1)
        return {ShortText, received, length};
    buffer[received] = '\0';
    return {Frame, received, length};
}

void TclConnectionWithClient::evaluateQuit() {
    std::strcpy(m_buffer.get(), "quit");
    tclEval(m_interp, m_buffer.get());
}

bool TclConnectionWithClient::receiveData() {
    if (!m_interp && !createTclInterp()) {
        m_server->removeConnection(this);
        return false;
    }
    const long idleTimeout = m_server->idleTimeout();
    if (idleTimeout > 0 && !isPsuedo() && dataAvailableToRead(idleTimeout) == 0) {
        Printf(DBG_INFO, "\nTclConnectionWithClient closing after %ld msec without a script\n",
               idleTimeout);
        evaluateQuit();
        return false;
    }
    IPCSocketSource source(m_socket);
    errno = 0; // a hang-up ends a read without setting it
    const FrameResult frame = readFrame(source, m_buffer.get(), receiveCapacity);
    const int readError = errno;
    noteActivity();
    if (frame.status == Frame && frame.received < frame.length &&
        (readError == EAGAIN || readError == EWOULDBLOCK)) {
        // The idle timeout ended a script in the middle: unlike one cut by a hang-up, whose
        // start is evaluated, it is dropped with the connection.
        Printf(DBG_INFO, "\nTclConnectionWithClient closing after %ld msec inside a script\n",
               m_server->idleTimeout());
        evaluateQuit();
        return false;
    }
    if (frame.status == ShortHeader) {
        Printf(DBG_INFO, "\nTclConnectionWithClient failed to read header, received = %d\n",
               static_cast<int>(frame.received));
        evaluateQuit();
        return false;
    }
    if (frame.status == ShortText) {
        // An empty script (length 0) lands here too: no text byte arrives, and the client is
        // taken to have quit. This is how the protocol behaves, and it is to stay so.
        Printf(DBG_INFO,
               "\nTclConnectionWithClient failed to read message, received %d bytes out of %d\n",
               static_cast<int>(frame.received), static_cast<int>(frame.length));
        evaluateQuit();
        return false;
    }
    Printf(DBG_INFO, "\nTclConnectionWithClient received '%s'\n", m_buffer.get());
    if (m_server->done()) {
        // A stopping server evaluates nothing more: an evaluation begun now could miss the
        // cancel that ends the ones already running.
        evaluateQuit();
        return false;
    }
    if (!m_server->admitScript(this, m_buffer.get())) {
        Printf(DBG_INFO, "\nTclConnectionWithClient script not admitted, closing\n");
        sendResp(TCS_ERROR, "Bad command");
        evaluateQuit();
        return false;
    }
    const int code = tclEval(m_interp, m_buffer.get());
    if (code != TCL_OK) {
        m_server->scriptFailed(this, m_buffer.get(), Tcl_GetStringResult(m_interp));
        sendResp(TCS_ERROR, "Bad command");
    }
    m_server->scriptEvaluated(this, code);
    return true;
}

void TclConnectionWithClient::noteActivity() {
    m_lastActivity = std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::steady_clock::now().time_since_epoch())
                         .count();
}

long TclConnectionWithClient::idleMilliseconds() const {
    const long long now = std::chrono::duration_cast<std::chrono::milliseconds>(
                              std::chrono::steady_clock::now().time_since_epoch())
                              .count();
    return static_cast<long>(now - m_lastActivity.load());
}

int TclConnectionWithClient::dataAvailableToRead(long milliseconds) {
    return piSocket::waitReadable(m_socket, milliseconds);
}

char* TclConnectionWithClient::writeInt(char* buffer, int value) {
    return ipcWriteInt(buffer, value);
}

const char* TclConnectionWithClient::encodeResp(TclServerRespType type) {
    if (type < TCS_NONE || type > TCS_DISCONNECT)
        return "";
    return responseMarkers[type];
}

void TclConnectionWithClient::sendResp(TclServerRespType type, const char* text) {
    Printf(DBG_INFO, "\nTclConnectionWithClient::sendResp of '%s'\n", text ? text : "NULL");
    Printf(DBG_TRACE, "\nTclConnectionWithClient::sendResp type %s\n", encodeResp(type));
    const std::size_t length = text ? std::strlen(text) : 0;
    std::string message(IPCHeader::size + length, '\0');
    IPCHeader header;
    header.length = static_cast<std::int32_t>(length);
    header.value = header.length;
    header.encode(message.data());
    if (length > 0)
        std::memcpy(message.data() + IPCHeader::size, text, length);
    long sent;
    int error = 0;
    {
        std::lock_guard lock(m_sendMutex);
        sent = piSocket::sendAll(m_socket, message.data(), message.size());
        if (sent < 0)
            error = getLastSocketError();
    }
    if (sent < 0) {
        Printf(DBG_INFO, "\nTclConnectionWithClient::sendResp failed, SocketError is %d\n", error);
        // A client that stopped reading would hold up whoever answers it: let it go.
        if (error == EAGAIN || error == EWOULDBLOCK)
            shutdownSocket();
    }
    Printf(DBG_INFO, "\nTclConnectionWithClient::sendResp sent '%d' bytes\n",
           static_cast<int>(sent));
    Printf(DBG_TRACE, "message is");
    dumpBuff(DBG_TRACE, message.data(), message.size());
}

int TclConnectionWithClient::tclEval(Tcl_Interp* interp, char* script) {
    const long limit = m_server->scriptTimeLimit();
    if (limit > 0) {
        Tcl_Time end;
        Tcl_GetTime(&end);
        end.sec += limit / 1000 + (end.usec + (limit % 1000) * 1000) / 1000000;
        end.usec = (end.usec + (limit % 1000) * 1000) % 1000000;
        // A limit once exceeded stays so until reset: each script gets a fresh one.
        Tcl_LimitTypeReset(interp, TCL_LIMIT_TIME);
        Tcl_LimitSetTime(interp, &end);
        Tcl_LimitTypeSet(interp, TCL_LIMIT_TIME);
    }
    m_evaluating = true;
    const int code = Tcl_Eval(interp, script);
    m_evaluating = false;
    if (limit > 0)
        Tcl_LimitTypeReset(interp, TCL_LIMIT_TIME);
    return code;
}

void TclConnectionWithClient::cancelEvaluation() {
    std::lock_guard lock(m_interpMutex);
    if (m_interp && m_evaluating && !m_handingOver)
        Tcl_CancelEval(m_interp, nullptr, nullptr, TCL_CANCEL_UNWIND);
}

bool TclConnectionWithClient::createTclInterp() {
    if (m_interp)
        return true;
    std::call_once(tclInitialised, [] { Tcl_FindExecutable(nullptr); });
    m_server->commandMutex().vAquire();
    Tcl_Interp* interp = Tcl_CreateInterp();
    m_server->commandMutex().vRelease();
    {
        std::lock_guard lock(m_interpMutex);
        m_interp = interp;
    }
    if (!m_interp)
        return false;
    if (m_server->safeInterpreters())
        Tcl_MakeSafe(m_interp);
    m_buffer = std::make_unique<char[]>(receiveCapacity);
    m_server->addCommands(this);
    return true;
}

void TclConnectionWithClient::cleanupTclInterp() {
    std::lock_guard lock(m_interpMutex);
    if (!m_interp)
        return;
    if (!Tcl_InterpDeleted(m_interp))
        Tcl_DeleteInterp(m_interp);
    m_interp = nullptr;
}

void TclConnectionWithClient::shutdownSocket() {
    std::lock_guard lock(m_sendMutex);
    if (m_socket != piSocket::invalid)
        piSocket::shutdown(m_socket);
}

void TclConnectionWithClient::closeSocket() {
    std::lock_guard lock(m_sendMutex);
    piSocket::close(m_socket);
    m_socket = piSocket::invalid;
}

void TclConnectionWithClient::vThreadMain() {
    Printf(DBG_INFO, "\nTclConnectionWithClient thread starting\n");
    // Without an interpreter the first receiveData() gives up the connection's slot.
    createTclInterp();
    if (!isPsuedo())
        executeCommands();
    Printf(DBG_INFO, "\nTclConnectionWithClient thread terminating\n");
    if (!isPsuedo()) {
        // The interpreter and Tcl's per-thread state belong to this thread: free them here.
        cleanupTclInterp();
        Tcl_FinalizeThread();
        // A connection that waits to be reaped holds no descriptor.
        closeSocket();
    }
    deactivate();
}
