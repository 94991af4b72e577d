// ToolServer: the command server of the tqserver program. Besides the built-in commands it
// answers "version", "result SCRIPT" and "shutdown", and shuts down when no client came
// within its timeout.
#pragma once

#include "ipc/TclCommandServer.h"

class ToolServer : public TclCommandServer {
public:
    // timeoutMilliseconds 0 means no connection timeout.
    explicit ToolServer(int timeoutMilliseconds);
    ~ToolServer() override;

    void addCommands(TclConnectionWithClient* connection) override;
    void serverIsListening(int port) override;
    TclServerCommand* connectionTimeoutCommand() override;
    void scriptFailed(TclConnectionWithClient* connection, const char* script,
                      const char* errorText) override;
    int connectionTimeoutMilliseconds() override { return m_timeoutMilliseconds; }

private:
    // Replies with the library version.
    int versionCmd(TclServerCommand* command);
    // Evaluates its argument in the connection's interpreter (on the connection's thread,
    // which owns it) and replies with the result; a failing script is a failing command.
    int resultCmd(TclServerCommand* command);
    // Marks the server done: the serving loop then stops and the program exits.
    int shutdownCmd(TclServerCommand* command);

    int m_timeoutMilliseconds;
    TclServerCommand m_timeoutCommand;
};
