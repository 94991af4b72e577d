#include "ipc/TclServerConnectionAcceptor.h"

#include "core/DebugPrint.h"
#include "ipc/IPCPortFile.h"
#include "ipc/TclCommandServer.h"
#include "ipc/TclConnectionWithClient.h"
#include "ipc/platform/piSocket.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {
// The port file the signal handler deletes. Written only outside signal context, read by
// the handler, which does only async-signal-safe work: unlink, then hand the signal to the
// disposition it replaced (the default one, or a handler such as a sanitizer's).
char signalPath[4096];
constexpr int handledSignals[] = {SIGINT, SIGABRT, SIGFPE, SIGILL, SIGSEGV, SIGTERM};
struct sigaction previousActions[NSIG];
bool handlerInstalled = false;

void removePortFileOnSignal(int signal) {
    if (signalPath[0] != '\0') {
        ::unlink(signalPath);
        signalPath[0] = '\0';
    }
    ::sigaction(signal, &previousActions[signal], nullptr);
    ::raise(signal);
}

void installSignalHandler() {
    if (handlerInstalled)
        return;
    handlerInstalled = true;
    struct sigaction action {};
    action.sa_handler = removePortFileOnSignal;
    sigemptyset(&action.sa_mask);
    for (const int signal : handledSignals)
        ::sigaction(signal, &action, &previousActions[signal]);
}

void rememberForSignal(const char* path) {
    std::strncpy(signalPath, path, sizeof signalPath - 1);
    signalPath[sizeof signalPath - 1] = '\0';
}
} // namespace

TclServerConnectionAcceptor::TclServerConnectionAcceptor(TclCommandServer* server)
    : ThreadMainObject(!server->usingThreads()), m_server(server), m_socket(piSocket::invalid) {}

TclServerConnectionAcceptor::~TclServerConnectionAcceptor() {
    deactivate();
    join();
    piSocket::close(m_socket);
}

const char* TclServerConnectionAcceptor::signalPortFilePath() {
    return signalPath;
}

void TclServerConnectionAcceptor::clearSignalPortFilePath() {
    signalPath[0] = '\0';
}

bool TclServerConnectionAcceptor::init() {
    return createSocket() && startListening();
}

bool TclServerConnectionAcceptor::createSocket() {
    if (m_socket != piSocket::invalid)
        return true;
    const unsigned int socket =
        piSocket::initSocketSubsystem() ? piSocket::createStreamSocket() : piSocket::invalid;
    if (socket == piSocket::invalid) {
        std::printf("socket() call failed: %d\n", getLastSocketError());
        std::fflush(stdout);
        return false;
    }
    IPCPortFile* portFile = m_server->getIPCPortFile();
    int port = 0;
    if (portFile && portFile->readPortFile() && portFile->owner() == 1)
        port = portFile->port();
    if (!piSocket::bindLoopback(socket, port)) {
        reportSocketError("bind", getLastSocketError());
        piSocket::close(socket);
        return false;
    }
    piSocket::setNoDelay(socket);
    if (port == 0) {
        port = piSocket::localPort(socket);
        if (port < 0) {
            reportSocketError("getsockname", getLastSocketError());
            piSocket::close(socket);
            return false;
        }
        if (portFile) {
            portFile->setOwner(2);
            portFile->setPort(port);
            if (!portFile->writePortFile())
                Printf(DBG_ERRORS, "\nTclServerConnectionAcceptor cannot write port file '%s'\n",
                       portFile->fileName());
            rememberForSignal(portFile->fileName());
            installSignalHandler();
        }
    }
    m_socket = socket;
    m_port = port;
    return true;
}

bool TclServerConnectionAcceptor::startListening() {
    if (!piSocket::listen(m_socket, 5)) {
        reportSocketError("listen", getLastSocketError());
        return false;
    }
    return true;
}

int TclServerConnectionAcceptor::connectionIsPending(long milliseconds) {
    return piSocket::waitReadable(m_socket, milliseconds);
}

TclConnectionWithClient* TclServerConnectionAcceptor::waitForConnection() {
    if (connectionIsPending(isBlocking() ? m_server->pollInterval() : 0) <= 0)
        return nullptr;
    const unsigned int socket = piSocket::accept(m_socket);
    if (socket == piSocket::invalid) {
        std::printf("ERROR: accept call failed\n");
        std::fflush(stdout);
        return nullptr;
    }
    piSocket::setNoDelay(socket);
    piSocket::setSendTimeout(socket, m_server->sendTimeout());
    // A client that stops in the middle of a script is idle too: its read gives up.
    if (m_server->idleTimeout() > 0)
        piSocket::setReceiveTimeout(socket, m_server->idleTimeout());
    Printf(DBG_INFO, "\nTclServerConnectionAcceptor got a connection\n");
    if (!m_server->acceptsConnection(socket)) {
        piSocket::close(socket);
        return nullptr;
    }
    return m_server->newConnection(socket);
}

void TclServerConnectionAcceptor::vThreadMain() {
    Printf(DBG_INFO, "\nTclServerConnectionAcceptor thread starting\n");
    while (m_server->acceptingConnection() && isActive()) {
        TclConnectionWithClient* connection = waitForConnection();
        if (!connection)
            continue;
        // A client that just hung up holds its slot until the servicing thread has run its
        // "quit"; a newcomer meanwhile waits for that instead of being turned away.
        const bool added = m_server->addConnection(connection) ||
                           (m_server->waitForFreeSlot(m_server->slotWait()) &&
                            m_server->addConnection(connection));
        if (!added) {
            Printf(DBG_INFO,
                   "\nTclServerConnectionAcceptor refused a connection: all %d "
                   "slots in use\n",
                   TclCommandServer::maxConnections);
            delete connection;
        } else if (!connection->activate()) {
            m_server->removeConnection(connection);
        }
    }
    Printf(DBG_INFO, "\nTclServerConnectionAcceptor thread terminating\n");
    m_server->acceptorDied();
    deactivate();
}
