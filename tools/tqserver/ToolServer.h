#pragma once

#include "ipc/TclCommandServer.h"

#include <atomic>
#include <mutex>
#include <string>
#include <unordered_set>

/// ToolServer: the command server of the tqserver program. Besides the built-in commands it
/// answers "version", "result SCRIPT", "shutdown", "auth ?TOKEN?" and "chunk add|eval", lets
/// in only clients that present its token, and shuts down when no client came within its
/// timeout.
class ToolServer : public TclCommandServer {
public:
    ///@{
    /// timeoutMilliseconds 0 means no connection timeout; an empty token lets every client in.
    ToolServer(int timeoutMilliseconds, std::string token);
    ~ToolServer() override;
    ///@}

    void addCommands(TclConnectionWithClient* connection) override;
    void connectionHasBeenRemoved(TclConnectionWithClient* connection) override;
    int acceptsConnection(unsigned int socket) override;
    void serverIsListening(int port) override;
    TclServerCommand* connectionTimeoutCommand() override;
    void scriptFailed(TclConnectionWithClient* connection, const char* script,
                      const char* errorText) override;
    int connectionTimeoutMilliseconds() override { return m_timeoutMilliseconds; }
    /// With a token, a connection's first script must be exactly "auth TOKEN".
    bool admitScript(TclConnectionWithClient* connection, const char* script) override;
    /// Ends each script of a session with a "__TCS__END__" reply, except a script that added
    /// a piece of a long one.
    void scriptEvaluated(TclConnectionWithClient* connection, int code) override;

    /// Whether any client has connected since the server started.
    bool clientCame() const { return m_clientCame.load(); }

    /// The longest script "chunk eval" takes, in bytes.
    static constexpr std::size_t maxChunkedScript = std::size_t(64) << 20;

private:
    bool inSession(TclConnectionWithClient* connection);
    /// Replies with the library version.
    int versionCmd(TclServerCommand* command);
    /// Evaluates its argument in the connection's interpreter (on the connection's thread,
    /// which owns it) and replies with the result; a failing script is a failing command,
    /// whose error text the session's error reply carries.
    int resultCmd(TclServerCommand* command);
    /// Marks the server done: the serving loop then stops and the program exits. As the
    /// timeout command it does so only when no client has come.
    int shutdownCmd(TclServerCommand* command);
    /// Opens the session: from now on the connection's failed scripts are answered with their
    /// error text before "Bad command", and each script ends with "__TCS__END__". Replies
    /// "session chunk".
    int authCmd(TclServerCommand* command);
    /// "chunk add BASE64" appends the decoded bytes to the connection's pending script (no
    /// reply); "chunk eval" evaluates the pending script as if it had come whole and empties it.
    int chunkCmd(TclServerCommand* command);

    int m_timeoutMilliseconds;
    std::string m_token;
    TclServerCommand m_timeoutCommand;
    std::atomic<bool> m_clientCame{false};
    std::mutex m_sessionsMutex;
    std::unordered_set<TclConnectionWithClient*> m_sessions;
};
