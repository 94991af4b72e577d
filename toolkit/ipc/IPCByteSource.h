#pragma once

#include "core/TqExport.h"

#include <cstddef>
#include <string_view>

/// IPCByteSource: where a frame reader takes its bytes from: a socket, or memory so that
/// framing and parsing can be exercised (and fuzzed) without a peer.
class TQ_EXPORT IPCByteSource {
public:
    virtual ~IPCByteSource();
    /// Reads until length bytes arrived or the source ends: the count read, or -1 when a
    /// failure came before any byte (the error is then getLastSocketError()).
    virtual long readFully(void* buffer, std::size_t length) = 0;
    /// The handle named in log lines: the socket, or 0 for memory.
    virtual unsigned int handle() const = 0;
};

/// Reads from a connected socket that the caller keeps open.
class TQ_EXPORT IPCSocketSource final : public IPCByteSource {
public:
    /// Reads from socket.
    explicit IPCSocketSource(unsigned int socket) : m_socket(socket) {}
    long readFully(void* buffer, std::size_t length) override;
    unsigned int handle() const override { return m_socket; }

private:
    unsigned int m_socket;
};

/// Reads from a block of memory that the caller keeps alive. At its end the source yields
/// 0 bytes, or -1 when failAtEnd is set (as a broken connection would).
class TQ_EXPORT IPCMemorySource final : public IPCByteSource {
public:
    /// Reads bytes (not copied) from the start.
    explicit IPCMemorySource(std::string_view bytes, bool failAtEnd = false)
        : m_bytes(bytes), m_failAtEnd(failAtEnd) {}
    long readFully(void* buffer, std::size_t length) override;
    unsigned int handle() const override { return 0; }
    /// The number of bytes not read yet.
    std::size_t remaining() const { return m_bytes.size() - m_position; }

private:
    std::string_view m_bytes;
    std::size_t m_position = 0;
    bool m_failAtEnd;
};
