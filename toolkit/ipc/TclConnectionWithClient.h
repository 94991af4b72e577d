/// TclConnectionWithClient: one accepted client of the command server: its socket, its own
/// Tcl interpreter and, unless the server runs without threads, its own thread that reads
/// length-prefixed scripts, evaluates them and writes framed responses.
#pragma once

#include "core/TqExport.h"
#include "ipc/ProtectedResource.h"
#include "ipc/SocketStreambuf.h"
#include "ipc/TclServerCommand.h"
#include "ipc/ThreadMainObject.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

class IPCByteSource;

/// TclConnectionWithClient: one client of the command server: its socket, its own Tcl
/// interpreter with the server's commands, and (with threads) its own thread that receives
/// and evaluates the client's scripts.
class TQ_EXPORT TclConnectionWithClient : public ThreadMainObject {
public:
    /// Receive buffer capacity; a script of this length or more is cut to one byte less.
    static constexpr int receiveCapacity = 1024;

    /// Takes ownership of the accepted socket and a reference on the server.
    TclConnectionWithClient(TclCommandServer* server, unsigned int socket);
    /// Deletes the interpreter if the thread has not, closes the socket and releases the
    /// server reference.
    ~TclConnectionWithClient() override;

    /// Registers name in the interpreter, bound to handler. Returns the command, owned by
    /// the connection. The interpreter must exist (createTclInterp).
    TclServerCommand* addCommand(const char* name, TclServerHandler handler, bool async,
                                 void* clientData = nullptr);
    /// The Tcl object command of every registered command; clientData is the command.
    static int dispatchTclCommand(void* clientData, Tcl_Interp* interp, int objc,
                                  Tcl_Obj* const objv[]);

    /// Receives and evaluates scripts until done(); lastReadFailed() tells how it ended.
    void executeCommands();
    /// One receiveData(), for the server's polling mode.
    void executeOneCommand();
    /// Reads one script and evaluates it. A short header or an empty read evaluates "quit"
    /// and returns false; a script cut short by the client's hang-up is evaluated as far as
    /// it came; a script that fails in Tcl is answered "Bad command". With an idle timeout,
    /// a connection that sends nothing for that long is treated like one that hung up; a
    /// script the server does not admit is answered "Bad command" and ends the connection;
    /// once the server stops, scripts are no longer evaluated.
    bool receiveData();
    /// 1 when a script (or the end of the stream) can be read, 0 after milliseconds, -1 on
    /// failure.
    int dataAvailableToRead(long milliseconds);

    /// Writes the 20-byte header and the text in one piece; a null or empty text gives a
    /// bare header. Failures are logged; a peer that stops reading is disconnected.
    void sendResp(TclServerRespType type, const char* text);
    /// sendResp of text as a result (TCS_RESULT).
    void sendStr(const char* text) { sendResp(TCS_RESULT, text); }
    /// Writes value big-endian at buffer; returns the position after it.
    static char* writeInt(char* buffer, int value);
    /// The marker text of a response type ("__TCS__ERROR__", ...), static; "" when unknown.
    static const char* encodeResp(TclServerRespType type);

    /// Evaluates script (NUL-terminated) and returns the Tcl code. With the server's script
    /// time limit set, Tcl stops the evaluation with an error once the limit has passed.
    int tclEval(Tcl_Interp* interp, char* script);
    /// Cancels the evaluation in progress, if any, so that it unwinds with an error that no
    /// catch stops; safe from any thread. An evaluation waiting for the servicing thread is
    /// left alone: a stop releases it by itself. A cancel that comes before an evaluation starts is
    /// lost: callers that must stop the connection repeat it until its thread has ended.
    void cancelEvaluation();
    /// Milliseconds since the connection last received a script (or was accepted).
    long idleMilliseconds() const;
    /// Creates the interpreter (safe when the server asks for it), registers the server's
    /// commands and allocates the receive buffer; does nothing if it exists. False when Tcl
    /// refused an interpreter.
    bool createTclInterp();
    /// Deletes the interpreter unless Tcl has deleted it already; does nothing without one.
    void cleanupTclInterp();

    /// How a frame read ended: Frame (text in buffer, NUL-terminated), ShortHeader (fewer
    /// than 4 bytes) or ShortText (no byte of the text). A length of capacity or more is
    /// cut to capacity - 1 and the rest is left unread, to be taken as the next header.
    enum FrameStatus { Frame = 0, ShortHeader = 1, ShortText = 2 };
    /// What readFrame read.
    struct FrameResult {
        FrameStatus status; ///< how the read ended
        long received;      ///< header bytes for ShortHeader, text bytes otherwise
        long length;        ///< the text length asked for, after the cut
    };
    /// Reads one frame (a 4-byte big-endian length, then the text) from source into buffer
    /// of capacity bytes, never writing past it.
    static FrameResult readFrame(IPCByteSource& source, char* buffer, int capacity);

    /// The server the connection belongs to (it holds a reference on it).
    TclCommandServer* server() const { return m_server; }
    /// The socket; piSocket::invalid once the connection's thread has ended.
    unsigned int socket() const { return m_socket; }
    /// The connection's interpreter (owned by it), or null before createTclInterp.
    Tcl_Interp* interp() const { return m_interp; }
    /// True while a script is being evaluated.
    bool isEvaluating() const { return m_evaluating; }
    /// True once a receiveData of executeCommands or executeOneCommand returned false (a
    /// short header, an empty read or an idle timeout); executeCommands starts it false.
    bool lastReadFailed() const { return m_lastReadFailed; }
    /// A stream on the socket, for the connection's own thread while it runs; replies from
    /// other threads go through sendResp, which serialises the writes.
    SocketOStream& ostrm() { return m_ostrm; }
    ///@{
    /// Whether TclCommandServer::broadcast sends to this connection (false at first).
    bool broadcastFlag() const { return m_broadcast.load(); }
    void setBroadcastFlag(bool broadcast) { m_broadcast = broadcast; }
    ///@}
    /// On the server's command mutex: sent when a command this connection handed to the
    /// servicing thread has run.
    SyncSignal& commandDoneSignal() { return m_commandDone; }
    ///@{
    /// Once done, executeCommands returns after the script being handled.
    bool done() const { return m_done.load(); }
    void setDone(bool done) { m_done = done; }
    ///@}
    /// Stops both directions of the socket so the client sees the end of the stream and a
    /// read in progress returns.
    void shutdownSocket();

protected:
    /// Creates the interpreter and, on a thread of its own, runs executeCommands, then frees
    /// the interpreter and Tcl's state of the thread and closes the socket; deactivates.
    void vThreadMain() override;

private:
    void evaluateQuit();
    void noteActivity();
    void closeSocket();

    TclCommandServer* m_server;
    unsigned int m_socket;
    Tcl_Interp* m_interp = nullptr;
    std::unique_ptr<char[]> m_buffer;
    std::atomic<bool> m_evaluating{false};
    std::atomic<bool> m_handingOver{false}; // waiting for the servicing thread
    std::atomic<long long> m_lastActivity;  // steady clock, milliseconds
    /// Guards the interpreter's end against a cancel from another thread.
    std::mutex m_interpMutex;
    bool m_lastReadFailed = false;
    std::atomic<bool> m_broadcast{false};
    std::atomic<bool> m_done{false};
    SocketOStream m_ostrm;
    SyncSignal m_commandDone;
    /// Guards writes and the handle's end: broadcasts and replies come from different threads.
    std::mutex m_sendMutex;
    std::vector<std::unique_ptr<TclServerCommand>> m_commands;
};
