/// \file
/// Streams over a connected socket: SocketStreambuf and SocketOStream write (and read) raw
/// bytes; IPCSocketStreambuf and IPCSocketIStream read the payloads of framed messages, one
/// message at a time.
#pragma once

#include "core/TqExport.h"

#include <istream>
#include <ostream>
#include <streambuf>

/// A buffered stream buffer over a socket the caller keeps open. Writes go out on sync (or
/// when the buffer fills); reads take what one receive returns.
class TQ_EXPORT SocketStreambuf : public std::streambuf {
public:
    /// Over socket, which the caller keeps open and closes after the buffer is gone.
    explicit SocketStreambuf(unsigned int socket);
    /// The socket given at construction.
    unsigned int socket() const { return m_socket; }

protected:
    /// Sends the full output buffer and buffers c; eof when the socket failed.
    int_type overflow(int_type c) override;
    /// Receives once into m_input; eof when the peer closed or the socket failed.
    int_type underflow() override;
    /// Sends the buffered bytes; -1 when the socket failed.
    int sync() override;

    static constexpr int bufferSize = 1024; ///< The size of each direction's buffer, in bytes.
    char m_input[bufferSize];               ///< The bytes of the last receive.

private:
    unsigned int m_socket;
    char m_output[bufferSize];
};

/// Reads framed messages: nextMessage() takes the next 20-byte header, and the stream then
/// yields that message's payload and ends at its last byte.
class TQ_EXPORT IPCSocketStreambuf : public SocketStreambuf {
public:
    /// What nextMessage found.
    enum MessageStatus {
        MessageReady = 0, ///< a header was read; its payload follows (possibly empty)
        NoMessage = 1,    ///< the time limit passed first
        StreamEnded = 2,  ///< the peer closed, the socket failed or the header was invalid
    };
    /// Over socket, before any message.
    explicit IPCSocketStreambuf(unsigned int socket) : SocketStreambuf(socket) {}
    /// Skips what is left of the current payload, then waits up to milliseconds (-1 without
    /// limit) for the next header.
    MessageStatus nextMessage(long milliseconds);
    /// The payload length of the current message.
    long messageLength() const { return m_length; }

protected:
    /// Receives no further than the current payload's end; eof there.
    int_type underflow() override;

private:
    long m_length = 0;
    long m_remaining = 0;
};

/// An output stream over a socket the caller keeps open; flush sends what was written.
class TQ_EXPORT SocketOStream : public std::ostream {
public:
    /// Writes to socket through its own SocketStreambuf.
    explicit SocketOStream(unsigned int socket) : std::ostream(nullptr), m_buffer(socket) {
        rdbuf(&m_buffer);
    }
    /// The stream's buffer, owned by the stream.
    SocketStreambuf* socketBuffer() { return &m_buffer; }

private:
    SocketStreambuf m_buffer;
};

/// An input stream of framed messages on a socket: after nextMessage, reading yields that
/// message's payload and ends at its last byte.
class TQ_EXPORT IPCSocketIStream : public std::istream {
public:
    /// Reads from socket (kept open by the caller) through its own IPCSocketStreambuf.
    explicit IPCSocketIStream(unsigned int socket) : std::istream(nullptr), m_buffer(socket) {
        rdbuf(&m_buffer);
    }
    ///@{
    /// Moves to the next message and clears the stream's state when one is ready.
    IPCSocketStreambuf::MessageStatus nextMessage(long milliseconds);
    long messageLength() const { return m_buffer.messageLength(); }
    ///@}

private:
    IPCSocketStreambuf m_buffer;
};
