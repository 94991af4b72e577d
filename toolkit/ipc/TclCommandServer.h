/// TclCommandServer: the abstract Tcl command server. It accepts up to 16 loopback clients,
/// gives each a connection with its own interpreter, and hands the commands that touch
/// application state to one servicing thread, one at a time. The application derives from
/// it, adds its commands and supplies the connection-timeout policy.
#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"
#include "ipc/ProtectedResource.h"
#include "ipc/TclServerCommand.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class IPCPortFile;
class TclConnectionTimer;
class TclServerConnectionAcceptor;

/// TclCommandServer: lets other processes on this machine drive the application with Tcl
/// scripts over loopback TCP, one interpreter per client connection. The application derives
/// from it, adds its commands and supplies the connection-timeout policy.
class TQ_EXPORT TclCommandServer : public TqObject {
public:
    /// The number of connection slots: a client beyond them waits for slotWait() or is
    /// refused.
    static constexpr int maxConnections = 16;

    /// Whether the server uses threads is decided here, from the application's flags.
    TclCommandServer();
    /// A derived server calls remove() in its own destructor, while its overrides still
    /// exist: the acceptor thread calls them until it is stopped.
    ~TclCommandServer() override;
    TclCommandServer(const TclCommandServer&) = delete;
    TclCommandServer& operator=(const TclCommandServer&) = delete;

    // --- Overridable operations, in slot order ---
    /// Stops serving: the acceptor, the timer and every connection end (a script still running
    /// is cancelled), the servicing thread and every waiting sender are released, and a port
    /// file the server wrote is removed.
    /// Must not be called from a command handler (set done() there instead). Without threads
    /// it runs on the polling thread, since the connections' interpreters belong to it.
    virtual void remove();
    /// Registers the commands of a new connection; the base registers "beep", "disconnect",
    /// "exit" and "quit".
    virtual void addCommands(TclConnectionWithClient* connection);
    /// The server's name, static: defaultServerName() ("tclcmdserv").
    virtual const char* serverName() const { return defaultServerName(); }
    /// Creates the connection for an accepted socket (owned by the server from then on).
    virtual TclConnectionWithClient* newConnection(unsigned int socket);
    /// Told on the removing thread after a connection left its slot; empty by default.
    virtual void connectionHasBeenRemoved(TclConnectionWithClient* connection);
    /// 1 when an accepted socket may become a connection (the default), 0 to refuse it.
    /// Runs on the acceptor thread.
    virtual int acceptsConnection(unsigned int socket);
    /// Told once the server listens, with its port, on the thread that called execute().
    virtual void serverIsListening(int port) = 0;
    /// The command to run when no client is connected once the timeout has passed, or null
    /// for no timer. The command must live as long as the server.
    virtual TclServerCommand* connectionTimeoutCommand() = 0;
    /// Told on the connection's thread when a script failed in Tcl, before "Bad command" is
    /// sent; errorText is the interpreter's result. Must be thread-safe.
    virtual void scriptFailed(TclConnectionWithClient* connection, const char* script,
                              const char* errorText) = 0;
    /// The connection timeout in milliseconds.
    virtual int connectionTimeoutMilliseconds() = 0;
    /// Asked on the connection's thread before a received script is evaluated; false answers
    /// it "Bad command" and ends the connection without evaluating anything. Admits every
    /// script by default. Must be thread-safe.
    virtual bool admitScript(TclConnectionWithClient* connection, const char* script);
    /// Told on the connection's thread after a script was evaluated and any "Bad command"
    /// sent, with its Tcl code; empty by default. Must be thread-safe.
    virtual void scriptEvaluated(TclConnectionWithClient* connection, int code);

    /// "tclcmdserv", a static string.
    static const char* defaultServerName() { return "tclcmdserv"; }

    // --- Serving ---
    /// Starts serving: lookForConnections(true). False when the socket could not be set up.
    [[nodiscard]] bool execute();
    /// Creates and starts the acceptor, and the connection timer when the application
    /// asks for one. False when the listening socket could not be set up.
    [[nodiscard]] bool lookForConnections(bool isBlocking);
    /// Services one command: syncWaitForCommand() with threads, else asyncWaitForCommand(true).
    void waitForCommand();
    /// On a connection thread: hands command to the servicing thread and waits until it ran.
    /// Returns its result, or TCL_ERROR when the server stopped first.
    int syncSendCommand(TclServerCommand* command);
    /// Runs command on the calling thread and returns its result.
    int asyncSendCommand(TclServerCommand* command);
    /// On the servicing thread: waits for a handed-over command (or done()) and runs it.
    void syncWaitForCommand();
    /// Without threads: waits up to the poll interval (block) or not at all for a client or a
    /// script, accepts or services each that is ready. Returns how many were handled, -1 when
    /// the wait failed.
    int asyncWaitForCommand(bool block);
    /// Runs currentCommand() on the calling thread, which counts as the servicing thread
    /// while it runs.
    void executeCurrentCommand();
    /// Calls command's handler on the calling thread and stores its Tcl code as the
    /// command's result; sendResp inside the handler answers command's connection.
    void executeCommand(TclServerCommand* command);

    /// Wakes the servicing thread and every waiting sender and marks the server done; safe
    /// from any thread and from signal-watching threads, but not from a command handler.
    void requestStop();
    /// Cancels the script each connection is evaluating (see
    /// TclConnectionWithClient::cancelEvaluation); safe from any thread.
    void cancelEvaluations();

    // --- Connections ---
    /// Puts connection into the first free slot; false when all 16 are in use.
    [[nodiscard]] bool addConnection(TclConnectionWithClient* connection);
    /// Waits up to milliseconds until a slot is free or the server stops accepting; true when
    /// one is free. A client that hung up keeps its slot until its "quit" has been serviced,
    /// so a client arriving just after may find every slot taken for that moment.
    bool waitForFreeSlot(long milliseconds);
    /// Takes connection out of its slot, tells connectionHasBeenRemoved and queues it for
    /// reaping; does nothing for a connection that is not in a slot.
    void removeConnection(TclConnectionWithClient* connection);
    /// Reaps, removes every occupied slot, and reaps again.
    void removeAllConnections();
    /// Deletes the removed connections whose threads have ended.
    void reapConnections();
    /// The number of occupied slots.
    int numConnections() const;
    /// The number of connections removed but not yet deleted.
    int numConnectionsAwaitingReaping() const;
    /// True while the acceptor runs and the server is not done; the acceptor thread loops on
    /// it.
    bool acceptingConnection() const;
    /// Told by the acceptor when its thread ends: acceptingConnection() is false from then on.
    void acceptorDied();
    /// The listening port, or 0 before the server listens.
    int port() const;

    // --- Responses ---
    /// To the connection of the command whose handler runs on the calling thread (else of the
    /// current command); nothing when there is none.
    void sendResp(TclServerRespType type, const char* text);
    /// To command's own connection; nothing when command or its connection is null.
    void sendCmdResp(TclServerRespType type, const char* text, TclServerCommand* command);
    /// sendResp of text as a result (TCS_RESULT).
    void sendStr(const char* text) { sendResp(TCS_RESULT, text); }
    /// To every connection whose broadcast flag is set.
    void broadcast(TclServerRespType type, const char* text);
    ///@{
    /// On connection or, when it is null, on the connection sendResp would answer.
    /// getClientBroadcast is false when there is no such connection.
    void setClientBroadcast(bool broadcast, TclConnectionWithClient* connection);
    bool getClientBroadcast(TclConnectionWithClient* connection) const;
    ///@}

    // --- Built-in commands ---
    ///@{
    /// "exit", "quit" and "disconnect": end the command's connection. Return TCL_OK.
    int exitCmd(TclServerCommand* command);
    int disconnectCmd(TclServerCommand* command);
    ///@}
    /// "beep": beeps and answers "Beep you back..." as a result. Returns TCL_OK.
    int beepCmd(TclServerCommand* command);

    // --- Settings and state ---
    /// The port file is not owned; it must outlive the server's listening.
    ///@{
    void setIPCPortFile(IPCPortFile* portFile) { m_portFile = portFile; }
    IPCPortFile* getIPCPortFile() const { return m_portFile; }
    ///@}
    /// Deletes the port file and forgets it in the signal handler.
    void removeIPCPortFile();
    /// True unless the application disabled threads when the server was created.
    bool usingThreads() const { return m_usingThreads; }
    /// Gives each new connection a safe interpreter (no file, process or socket commands).
    ///@{
    void setSafeInterpreters(bool safe) { m_safeInterpreters = safe; }
    bool safeInterpreters() const { return m_safeInterpreters; }
    ///@}
    /// How long the acceptor and the polling mode wait in one go, in milliseconds (100).
    ///@{
    void setPollInterval(long milliseconds) { m_pollInterval = milliseconds; }
    long pollInterval() const { return m_pollInterval; }
    ///@}
    /// How long a reply may wait for a client that does not read, in milliseconds (5000).
    ///@{
    void setSendTimeout(long milliseconds) { m_sendTimeout = milliseconds; }
    long sendTimeout() const { return m_sendTimeout; }
    ///@}
    /// How long the acceptor waits for a slot to come free before it refuses a client, in
    /// milliseconds (1000); 0 refuses at once.
    ///@{
    void setSlotWait(long milliseconds) { m_slotWait = milliseconds; }
    long slotWait() const { return m_slotWait; }
    ///@}
    /// A connection that sends no script for this long is closed, in milliseconds; 0 (the
    /// default) keeps idle connections for ever. Taken by connections accepted from now on.
    ///@{
    void setIdleTimeout(long milliseconds) { m_idleTimeout = milliseconds; }
    long idleTimeout() const { return m_idleTimeout.load(); }
    ///@}
    /// A script that runs longer than this is cancelled by Tcl's time limit and answered "Bad
    /// command", in milliseconds; 0 (the default) lets scripts run as long as they take.
    ///@{
    void setScriptTimeLimit(long milliseconds) { m_scriptTimeLimit = milliseconds; }
    long scriptTimeLimit() const { return m_scriptTimeLimit.load(); }
    ///@}

    ///@{
    /// The hand-over to the servicing thread: one mutex, a signal that a command waits
    /// (sent by syncSendCommand) and a signal that it ran (sent by the servicing thread).
    /// Owned by the server.
    ProtectedResource& commandMutex() { return m_commandMutex; }
    SyncSignal& requestSignal() { return m_requestSignal; }
    SyncSignal& doneSignal() { return m_doneSignal; }
    ///@}
    /// The command the servicing thread runs now; read under the command mutex, or by the
    /// running handler itself.
    TclServerCommand* currentCommand() const { return m_currentCommand; }
    /// How many handed-over commands wait for the servicing thread; read under the mutex.
    int pendingCommands() const { return static_cast<int>(m_pending.size()); }
    ///@{
    /// Once done, the servicing loop and the acceptor end; a handler sets it to stop the
    /// server from inside a command.
    bool done() const { return m_done.load(); }
    void setDone(bool done) { m_done = done; }
    ///@}
    ///@{
    /// A flag kept for the application's handlers (false at start); the server does not
    /// read it.
    void setAsyncBreak(bool asyncBreak) { m_asyncBreak = asyncBreak; }
    bool getAsyncBreak() const { return m_asyncBreak.load(); }
    ///@}

    /// Connections count themselves here; the server outlives them, since remove() deletes
    /// every connection before the server goes.
    ///@{
    void addReference() { ++m_references; }
    void removeReference() { --m_references; }
    int references() const { return m_references.load(); }
    ///@}

private:
    TclServerCommand* runningCommand() const;
    TclConnectionWithClient* targetOf(TclConnectionWithClient* connection) const;
    void acceptPending();
    int serviceReadyConnections(long milliseconds, bool accept);
    void reapConnections(bool wait);
    void closeIdleConnections();
    void assertNotInHandler(const char* operation) const;
    SyncSignal& finishedSignalOf(TclServerCommand* command);

    std::unique_ptr<TclServerConnectionAcceptor> m_acceptor;
    std::unique_ptr<TclConnectionTimer> m_timer;
    IPCPortFile* m_portFile = nullptr;

    mutable std::mutex m_connectionsMutex; // slots, count and reap list
    TclConnectionWithClient* m_connections[maxConnections] = {};
    int m_numConnections = 0;
    std::vector<TclConnectionWithClient*> m_reapList;
    std::condition_variable_any m_slotFreed; // on m_connectionsMutex

    ProtectedResource m_commandMutex{"TclCommandServer"};
    SyncSignal m_requestSignal{m_commandMutex};
    /// Tells the senders of commands without a connection (the timer) that theirs ran; a
    /// connection's sender waits on the connection's own signal, so only it is woken.
    SyncSignal m_doneSignal{m_commandMutex};
    std::deque<TclServerCommand*> m_pending; // handed over, in order of arrival
    std::mutex m_servicingMutex;             // one servicing cycle at a time
    TclServerCommand* m_currentCommand = nullptr;
    std::atomic<std::thread::id> m_servicingThread{};
    std::atomic<std::thread::id> m_pollingThread{}; // the caller of asyncWaitForCommand

    const bool m_usingThreads;
    std::atomic<bool> m_accepting{false};
    std::atomic<bool> m_done{false};
    std::atomic<bool> m_asyncBreak{false};
    std::atomic<int> m_references{0};
    bool m_removed = false;
    bool m_safeInterpreters = false;
    long m_pollInterval = 100;
    long m_sendTimeout = 5000;
    long m_slotWait = 1000;
    std::atomic<long> m_idleTimeout{0};
    std::atomic<long> m_scriptTimeLimit{0};
};
