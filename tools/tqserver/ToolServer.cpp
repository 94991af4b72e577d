#include "ToolServer.h"

#include "core/DebugPrint.h"
#include "core/TarqToolkit.h"
#include "ipc/TclConnectionWithClient.h"

#include <cstdio>
#include <cstring>
#include <string_view>
#include <tcl.h>
#include <utility>

namespace {
using Handler = int (ToolServer::*)(TclServerCommand*);

TclServerHandler bound(Handler handler) {
    return static_cast<TclServerHandler>(handler);
}

// Set on a connection's thread when its script added a piece: pieces come as scripts of their
// own, many in a row, and get no end reply, so the client need not read while it sends them.
thread_local bool t_pieceAdded = false;

constexpr const char* pendingScriptKey = "tqserver::pendingScript";

// The script "chunk add" collects, kept with the interpreter and freed with it.
std::string& pendingScript(Tcl_Interp* interp) {
    auto* script = static_cast<std::string*>(Tcl_GetAssocData(interp, pendingScriptKey, nullptr));
    if (!script) {
        script = new std::string;
        Tcl_SetAssocData(
            interp, pendingScriptKey,
            [](ClientData data, Tcl_Interp*) { delete static_cast<std::string*>(data); }, script);
    }
    return *script;
}

// Compares in a time that does not depend on where the texts differ.
bool sameToken(std::string_view given, const std::string& token) {
    if (given.size() != token.size())
        return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < token.size(); ++i)
        difference |= static_cast<unsigned char>(given[i] ^ token[i]);
    return difference == 0;
}
} // namespace

ToolServer::ToolServer(int timeoutMilliseconds, std::string token)
    : m_timeoutMilliseconds(timeoutMilliseconds), m_token(std::move(token)),
      m_timeoutCommand(nullptr, bound(&ToolServer::shutdownCmd), nullptr) {}

ToolServer::~ToolServer() {
    remove();
}

void ToolServer::addCommands(TclConnectionWithClient* connection) {
    TclCommandServer::addCommands(connection);
    connection->addCommand("version", bound(&ToolServer::versionCmd), false);
    connection->addCommand("result", bound(&ToolServer::resultCmd), true);
    connection->addCommand("shutdown", bound(&ToolServer::shutdownCmd), false);
    connection->addCommand("auth", bound(&ToolServer::authCmd), true);
    connection->addCommand("chunk", bound(&ToolServer::chunkCmd), true);
}

void ToolServer::connectionHasBeenRemoved(TclConnectionWithClient* connection) {
    std::lock_guard lock(m_sessionsMutex);
    m_sessions.erase(connection);
}

int ToolServer::acceptsConnection(unsigned int) {
    m_clientCame = true;
    return 1;
}

void ToolServer::serverIsListening(int port) {
    std::printf("tqserver: listening on 127.0.0.1:%d\n", port);
    std::fflush(stdout);
}

TclServerCommand* ToolServer::connectionTimeoutCommand() {
    return m_timeoutMilliseconds > 0 ? &m_timeoutCommand : nullptr;
}

bool ToolServer::inSession(TclConnectionWithClient* connection) {
    std::lock_guard lock(m_sessionsMutex);
    return m_sessions.count(connection) > 0;
}

bool ToolServer::admitScript(TclConnectionWithClient* connection, const char* script) {
    if (m_token.empty() || inSession(connection))
        return true;
    // Checked as text, before anything is evaluated: no command of a stranger's runs.
    std::string_view text(script);
    while (!text.empty() && std::strchr(" \t\r\n", text.back()))
        text.remove_suffix(1);
    constexpr std::string_view prefix = "auth ";
    return text.substr(0, prefix.size()) == prefix &&
           sameToken(text.substr(prefix.size()), m_token);
}

void ToolServer::scriptFailed(TclConnectionWithClient* connection, const char* script,
                              const char* errorText) {
    Printf(DBG_INFO, "\ntqserver: script '%s' failed: %s\n", script, errorText);
    if (!inSession(connection))
        return;
    std::string reply = TclConnectionWithClient::encodeResp(TCS_ERROR);
    reply.append(" ").append(errorText);
    connection->sendResp(TCS_ERROR, reply.c_str());
}

void ToolServer::scriptEvaluated(TclConnectionWithClient* connection, int) {
    if (!std::exchange(t_pieceAdded, false) && !connection->done() && inSession(connection))
        connection->sendResp(TCS_END, TclConnectionWithClient::encodeResp(TCS_END));
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

int ToolServer::shutdownCmd(TclServerCommand* command) {
    if (!command->connection() && clientCame())
        return TCL_OK;
    setDone(true);
    return TCL_OK;
}

int ToolServer::authCmd(TclServerCommand* command) {
    const bool given = command->objc() == 2;
    if (command->objc() > 2 ||
        (!m_token.empty() && !(given && sameToken(Tcl_GetString(command->objv()[1]), m_token))))
        return TCL_ERROR;
    {
        std::lock_guard lock(m_sessionsMutex);
        m_sessions.insert(command->connection());
    }
    sendCmdResp(TCS_STATUS, "session chunk", command);
    return TCL_OK;
}

int ToolServer::chunkCmd(TclServerCommand* command) {
    Tcl_Interp* interp = command->interp();
    const int objc = command->objc();
    const std::string_view action = objc > 1 ? Tcl_GetString(command->objv()[1]) : "";
    std::string& script = pendingScript(interp);
    if (action == "add" && objc == 3) {
        Tcl_Obj* decode[] = {Tcl_NewStringObj("binary", -1), Tcl_NewStringObj("decode", -1),
                             Tcl_NewStringObj("base64", -1), command->objv()[2]};
        for (Tcl_Obj* word : decode)
            Tcl_IncrRefCount(word);
        const int code = Tcl_EvalObjv(interp, 4, decode, TCL_EVAL_GLOBAL);
        for (Tcl_Obj* word : decode)
            Tcl_DecrRefCount(word);
        if (code != TCL_OK)
            return code;
        int length = 0;
        const unsigned char* bytes = Tcl_GetByteArrayFromObj(Tcl_GetObjResult(interp), &length);
        if (script.size() + std::size_t(length) > maxChunkedScript) {
            script.clear();
            Tcl_SetObjResult(interp, Tcl_NewStringObj("chunked script too long", -1));
            return TCL_ERROR;
        }
        script.append(reinterpret_cast<const char*>(bytes), std::size_t(length));
        t_pieceAdded = true;
        Tcl_ResetResult(interp);
        return TCL_OK;
    }
    if (action == "eval" && objc == 2) {
        const std::string whole = std::exchange(script, std::string());
        return Tcl_EvalEx(interp, whole.data(), static_cast<int>(whole.size()), 0);
    }
    Tcl_SetObjResult(interp, Tcl_NewStringObj("usage: chunk add BASE64 | chunk eval", -1));
    return TCL_ERROR;
}
