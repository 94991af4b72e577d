#include "ipc/IPCByteSource.h"

#include "ipc/platform/piSocket.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

IPCByteSource::~IPCByteSource() = default;

long IPCSocketSource::readFully(void* buffer, std::size_t length) {
    return piSocket::receiveAll(m_socket, buffer, length);
}

long IPCMemorySource::readFully(void* buffer, std::size_t length) {
    const std::size_t count = std::min(length, remaining());
    if (count == 0 && length > 0 && m_failAtEnd) {
        errno = ECONNRESET;
        return -1;
    }
    std::memcpy(buffer, m_bytes.data() + m_position, count);
    m_position += count;
    return static_cast<long>(count);
}
