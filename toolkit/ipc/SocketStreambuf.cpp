#include "ipc/SocketStreambuf.h"

#include "ipc/IPCMessage.h"
#include "ipc/platform/piSocket.h"

#include <algorithm>

SocketStreambuf::SocketStreambuf(unsigned int socket) : m_socket(socket) {
    setp(m_output, m_output + bufferSize);
    setg(m_input, m_input, m_input);
}

SocketStreambuf::int_type SocketStreambuf::overflow(int_type c) {
    if (sync() != 0)
        return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return traits_type::not_eof(c);
}

int SocketStreambuf::sync() {
    const long pending = pptr() - pbase();
    if (pending > 0 && piSocket::sendAll(m_socket, pbase(), static_cast<std::size_t>(pending)) < 0)
        return -1;
    setp(m_output, m_output + bufferSize);
    return 0;
}

SocketStreambuf::int_type SocketStreambuf::underflow() {
    if (gptr() < egptr())
        return traits_type::to_int_type(*gptr());
    const long count = piSocket::receive(m_socket, m_input, bufferSize);
    if (count <= 0)
        return traits_type::eof();
    setg(m_input, m_input, m_input + count);
    return traits_type::to_int_type(*gptr());
}

IPCSocketStreambuf::MessageStatus IPCSocketStreambuf::nextMessage(long milliseconds) {
    // Bytes already in the get area were counted off when they arrived.
    setg(m_input, m_input, m_input);
    while (m_remaining > 0) {
        if (underflow() == traits_type::eof())
            return StreamEnded;
        setg(m_input, m_input, m_input);
    }
    const int ready = piSocket::waitReadable(socket(), milliseconds);
    if (ready == 0)
        return NoMessage;
    char headerBytes[IPCHeader::size];
    if (ready < 0 ||
        piSocket::receiveAll(socket(), headerBytes, sizeof headerBytes) != IPCHeader::size)
        return StreamEnded;
    const IPCHeader header = IPCHeader::decode(headerBytes);
    if (header.start != IPCHeader::magic)
        return StreamEnded;
    m_length = std::max<long>(header.length, 0);
    m_remaining = m_length;
    return MessageReady;
}

IPCSocketStreambuf::int_type IPCSocketStreambuf::underflow() {
    if (gptr() < egptr())
        return traits_type::to_int_type(*gptr());
    if (m_remaining <= 0)
        return traits_type::eof();
    const long wanted = std::min<long>(m_remaining, bufferSize);
    const long count = piSocket::receive(socket(), m_input, static_cast<std::size_t>(wanted));
    if (count <= 0)
        return traits_type::eof();
    m_remaining -= count;
    setg(m_input, m_input, m_input + count);
    return traits_type::to_int_type(*gptr());
}

IPCSocketStreambuf::MessageStatus IPCSocketIStream::nextMessage(long milliseconds) {
    const IPCSocketStreambuf::MessageStatus status = m_buffer.nextMessage(milliseconds);
    if (status == IPCSocketStreambuf::MessageReady)
        clear();
    return status;
}
