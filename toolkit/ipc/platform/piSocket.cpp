#include "ipc/platform/piSocket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace {
int fd(unsigned int socket) {
    return static_cast<int>(socket);
}

sockaddr_in loopbackAddress(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    return address;
}

unsigned int handleOf(int descriptor) {
    return descriptor < 0 ? piSocket::invalid : static_cast<unsigned int>(descriptor);
}
} // namespace

int getLastSocketError() {
    return errno;
}

void reportSocketError(const char* call, int error) {
    std::fprintf(stderr, "Communications error: %s(): Error = %d\n", call, error);
}

bool piSocket::initSocketSubsystem() {
    return true;
}

unsigned int piSocket::createStreamSocket() {
    return handleOf(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

bool piSocket::bindLoopback(unsigned int socket, int port) {
    if (port != 0) {
        const int on = 1;
        ::setsockopt(fd(socket), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    }
    const sockaddr_in address = loopbackAddress(port);
    return ::bind(fd(socket), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

int piSocket::localPort(unsigned int socket) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (::getsockname(fd(socket), reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return -1;
    return ntohs(address.sin_port);
}

bool piSocket::listen(unsigned int socket, int backlog) {
    return ::listen(fd(socket), backlog) == 0;
}

unsigned int piSocket::accept(unsigned int socket) {
    int accepted;
    do
        accepted = ::accept4(fd(socket), nullptr, nullptr, SOCK_CLOEXEC);
    while (accepted < 0 && errno == EINTR);
    return handleOf(accepted);
}

unsigned int piSocket::connectLoopback(int port) {
    const unsigned int socket = createStreamSocket();
    if (socket == invalid)
        return invalid;
    const sockaddr_in address = loopbackAddress(port);
    if (::connect(fd(socket), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int error = errno;
        ::close(fd(socket));
        errno = error;
        return invalid;
    }
    setNoDelay(socket);
    return socket;
}

bool piSocket::setSendTimeout(unsigned int socket, long milliseconds) {
    timeval limit{};
    limit.tv_sec = milliseconds / 1000;
    limit.tv_usec = (milliseconds % 1000) * 1000;
    return ::setsockopt(fd(socket), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) == 0;
}

bool piSocket::setReceiveTimeout(unsigned int socket, long milliseconds) {
    timeval limit{};
    limit.tv_sec = milliseconds / 1000;
    limit.tv_usec = (milliseconds % 1000) * 1000;
    return ::setsockopt(fd(socket), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) == 0;
}

bool piSocket::setNoDelay(unsigned int socket) {
    const int on = 1;
    return ::setsockopt(fd(socket), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0;
}

int piSocket::waitReadable(unsigned int socket, long milliseconds) {
    pollfd entry{fd(socket), POLLIN, 0};
    const int timeout = milliseconds < 0 ? -1 : static_cast<int>(milliseconds);
    const int result = ::poll(&entry, 1, timeout);
    if (result < 0)
        return -1;
    return result > 0 ? 1 : 0;
}

long piSocket::sendAll(unsigned int socket, const void* data, std::size_t length) {
    const auto* bytes = static_cast<const char*>(data);
    std::size_t sent = 0;
    while (sent < length) {
        const ssize_t count = ::send(fd(socket), bytes + sent, length - sent, MSG_NOSIGNAL);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return -1;
        }
        sent += static_cast<std::size_t>(count);
    }
    return static_cast<long>(sent);
}

long piSocket::receive(unsigned int socket, void* buffer, std::size_t length) {
    ssize_t count;
    do
        count = ::recv(fd(socket), buffer, length, 0);
    while (count < 0 && errno == EINTR);
    return count;
}

long piSocket::receiveAll(unsigned int socket, void* buffer, std::size_t length) {
    auto* bytes = static_cast<char*>(buffer);
    std::size_t received = 0;
    while (received < length) {
        const long count = receive(socket, bytes + received, length - received);
        if (count < 0)
            return received > 0 ? static_cast<long>(received) : -1;
        if (count == 0)
            break;
        received += static_cast<std::size_t>(count);
    }
    return static_cast<long>(received);
}

void piSocket::shutdown(unsigned int socket) {
    ::shutdown(fd(socket), SHUT_RDWR);
}

void piSocket::shutdownRead(unsigned int socket) {
    ::shutdown(fd(socket), SHUT_RD);
}

void piSocket::close(unsigned int socket) {
    if (socket != invalid)
        ::close(fd(socket));
}
