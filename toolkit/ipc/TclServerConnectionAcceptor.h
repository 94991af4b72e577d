#pragma once

#include "core/TqExport.h"
#include "ipc/ThreadMainObject.h"

#include <atomic>

class TclCommandServer;
class TclConnectionWithClient;

/// TclServerConnectionAcceptor: the command server's listening socket on 127.0.0.1 and the
/// thread that accepts clients and gives each a connection.
class TQ_EXPORT TclServerConnectionAcceptor : public ThreadMainObject {
public:
    /// Pseudo (no thread) when the server runs without threads.
    explicit TclServerConnectionAcceptor(TclCommandServer* server);
    /// Closes the listening socket.
    ~TclServerConnectionAcceptor() override;

    /// createSocket() and startListening(); false when either failed (already reported).
    [[nodiscard]] bool init();
    ///@{
    /// Creates and binds the listening socket: on the port of a port file whose owner is 1,
    /// else on a system-chosen port that is then written to the port file with owner 2
    /// (removed again by the fatal and termination signals). Failures are printed; false.
    [[nodiscard]] bool createSocket();
    [[nodiscard]] bool startListening();
    ///@}
    /// 1 when a client waits to be accepted, 0 after milliseconds (-1 without limit), -1 on
    /// failure.
    int connectionIsPending(long milliseconds);
    /// Waits (when blocking, up to the server's poll interval) and accepts one client: its
    /// new connection, or null when none came, the accept failed or the server refused it.
    TclConnectionWithClient* waitForConnection();

    ///@{
    /// Whether waitForConnection waits up to the server's poll interval (true) or only
    /// looks (false).
    void setIsBlocking(bool isBlocking) { m_isBlocking = isBlocking; }
    bool isBlocking() const { return m_isBlocking.load(); }
    ///@}
    ///@{
    /// The listening socket (owned by the acceptor), and the port it listens on (0 before it
    /// listens).
    unsigned int listeningSocket() const { return m_socket; }
    int port() const { return m_port.load(); }
    ///@}

    ///@{
    /// The path the signal handler deletes, static; "" when none.
    static const char* signalPortFilePath();
    static void clearSignalPortFilePath();
    ///@}

protected:
    /// Accepts clients while the server accepts, giving each a slot (waiting up to the
    /// server's slot wait for one) and starting its thread; a client without a slot is
    /// refused. Tells the server acceptorDied at the end.
    void vThreadMain() override;

private:
    TclCommandServer* m_server;
    unsigned int m_socket;
    std::atomic<int> m_port{0};
    std::atomic<bool> m_isBlocking{true};
};
