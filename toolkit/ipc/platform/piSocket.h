/// piSocket: the toolkit's small socket layer over POSIX sockets. Handles are unsigned ints
/// as the message channel and the command server store them; every address is loopback.
#pragma once

#include "core/TqExport.h"

#include <cstddef>

/// The error of the last failed socket call on this thread (errno on POSIX).
TQ_EXPORT int getLastSocketError();
/// Prints "Communications error: <call>(): Error = <error>\n" to standard error.
TQ_EXPORT void reportSocketError(const char* call, int error);

/// piSocket: the TCP socket calls the IPC classes make, over POSIX sockets; a socket is an
/// unsigned handle, piSocket::invalid for none.
class TQ_EXPORT piSocket {
public:
    static constexpr unsigned int invalid = ~0u; ///< No socket: what failed calls return.

    /// Prepares the process for sockets; true on success (always on POSIX, where writes to a
    /// closed peer are made with MSG_NOSIGNAL instead of ignoring SIGPIPE process-wide).
    static bool initSocketSubsystem();
    /// A new TCP stream socket (close-on-exec), or invalid; the error is getLastSocketError().
    static unsigned int createStreamSocket();
    /// Binds to 127.0.0.1:port (0 lets the system choose; a given port may be taken again
    /// while an earlier socket on it lingers in TIME_WAIT); false on failure.
    [[nodiscard]] static bool bindLoopback(unsigned int socket, int port);
    /// The local port of a bound socket, or -1 on failure.
    static int localPort(unsigned int socket);
    /// Starts listening with room for backlog pending clients; false on failure.
    [[nodiscard]] static bool listen(unsigned int socket, int backlog);
    /// The accepted socket (close-on-exec), or invalid.
    static unsigned int accept(unsigned int socket);
    /// A socket connected to 127.0.0.1:port, or invalid.
    static unsigned int connectLoopback(int port);
    /// Sets SO_SNDTIMEO, so that a send to a peer that stops reading fails after the given
    /// time instead of blocking for ever; false on failure.
    static bool setSendTimeout(unsigned int socket, long milliseconds);
    /// Sets SO_RCVTIMEO, so that a receive gives up (failing with EAGAIN) after the given time
    /// without a byte; false on failure.
    static bool setReceiveTimeout(unsigned int socket, long milliseconds);
    /// Sets TCP_NODELAY; false on failure.
    static bool setNoDelay(unsigned int socket);
    /// 1 when the socket can be read without blocking (data, end of stream or an error),
    /// 0 when milliseconds passed first (-1 waits without limit), -1 on failure.
    static int waitReadable(unsigned int socket, long milliseconds);
    /// Sends all bytes, resuming after interruptions; returns length, or -1 on failure.
    static long sendAll(unsigned int socket, const void* data, std::size_t length);
    /// One receive: the count read, 0 at end of stream, -1 on failure.
    static long receive(unsigned int socket, void* buffer, std::size_t length);
    /// Receives until length bytes arrived or the stream ends: the count read, or -1 when a
    /// failure came before any byte.
    static long receiveAll(unsigned int socket, void* buffer, std::size_t length);
    /// Stops both directions, waking a thread blocked on the socket; the handle stays open.
    static void shutdown(unsigned int socket);
    /// Stops receiving only, waking a thread blocked in a receive; sending still works.
    static void shutdownRead(unsigned int socket);
    /// Closes the handle; invalid is ignored.
    static void close(unsigned int socket);
};
