#include "ipc/TclCommandServer.h"

#include "core/DebugPrint.h"
#include "core/appiApplication.h"
#include "core/platform/piSystem.h"
#include "ipc/IPCPortFile.h"
#include "ipc/TclConnectionTimer.h"
#include "ipc/TclConnectionWithClient.h"
#include "ipc/TclServerConnectionAcceptor.h"
#include "ipc/platform/piSocket.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <poll.h>
#include <tcl.h>
#include <thread>
#include <utility>

namespace {
bool threadsDisabled() {
    const appiApplication* application = appiApplication::current();
    return application && application->disableThreads();
}

// The command whose handler runs on this thread. An async handler runs on its connection's
// thread while the servicing thread runs another command: its replies go to its own client.
thread_local TclServerCommand* t_runningCommand = nullptr;
} // namespace

TclCommandServer::TclCommandServer() : m_usingThreads(!threadsDisabled()) {}

TclCommandServer::~TclCommandServer() {
    assert((m_removed || !m_acceptor) &&
           "a TclCommandServer that served must be stopped with remove() before it is destroyed");
    TclCommandServer::remove();
}

// --- Overridable operations ---

void TclCommandServer::remove() {
    assertNotInHandler("remove()");
    if (m_removed)
        return;
    assert((usingThreads() || m_pollingThread == std::thread::id() ||
            m_pollingThread == std::this_thread::get_id()) &&
           "without threads, remove() runs on the thread that polled: it owns the interpreters");
    m_removed = true;
    m_accepting = false;
    requestStop();
    m_timer.reset();
    if (m_acceptor) {
        m_acceptor->deactivate();
        m_acceptor->join();
    }
    removeAllConnections();
    reapConnections(true);
    m_acceptor.reset();
    if (m_portFile && m_portFile->owner() == 2)
        removeIPCPortFile();
}

void TclCommandServer::addCommands(TclConnectionWithClient* connection) {
    connection->addCommand("beep", &TclCommandServer::beepCmd, false);
    connection->addCommand("disconnect", &TclCommandServer::disconnectCmd, false);
    connection->addCommand("exit", &TclCommandServer::exitCmd, false);
    connection->addCommand("quit", &TclCommandServer::exitCmd, false);
}

TclConnectionWithClient* TclCommandServer::newConnection(unsigned int socket) {
    return new TclConnectionWithClient(this, socket);
}

void TclCommandServer::connectionHasBeenRemoved(TclConnectionWithClient*) {}

int TclCommandServer::acceptsConnection(unsigned int) {
    return 1;
}

bool TclCommandServer::admitScript(TclConnectionWithClient*, const char*) {
    return true;
}

void TclCommandServer::scriptEvaluated(TclConnectionWithClient*, int) {}

// --- Serving ---

bool TclCommandServer::execute() {
    return lookForConnections(true);
}

bool TclCommandServer::lookForConnections(bool isBlocking) {
    if (!m_acceptor)
        m_acceptor = std::make_unique<TclServerConnectionAcceptor>(this);
    if (!m_acceptor->init()) {
        m_acceptor.reset();
        return false;
    }
    m_removed = false;
    m_done = false;
    m_accepting = true;
    serverIsListening(m_acceptor->port());
    m_acceptor->setIsBlocking(isBlocking);
    if (m_acceptor->activate() && !m_timer) {
        TclServerCommand* command = connectionTimeoutCommand();
        if (command) {
            const int milliseconds = connectionTimeoutMilliseconds();
            char text[64];
            std::snprintf(text, sizeof text, "Starting connection timer for %d msec.\n",
                          milliseconds);
            std::fputs(text, stderr);
            broadcast(TCS_RESULT, text);
            m_timer = std::make_unique<TclConnectionTimer>(this, milliseconds, command);
            if (!m_timer->activate())
                m_timer.reset();
        }
    }
    return true;
}

void TclCommandServer::waitForCommand() {
    if (usingThreads())
        syncWaitForCommand();
    else
        asyncWaitForCommand(true);
}

// The hand-over: a sender queues its command, wakes the servicing thread and waits on the
// signal of its own connection until the command has run; the servicing thread runs the
// queued commands one at a time and wakes exactly the sender whose command it ran. Every wait
// re-checks its own condition, so no wake-up is lost and none is taken for another's.
int TclCommandServer::syncSendCommand(TclServerCommand* command) {
    m_commandMutex.vAquire();
    if (done()) {
        m_commandMutex.vRelease();
        return TCL_ERROR;
    }
    command->setExecuted(false);
    m_pending.push_back(command);
    m_requestSignal.vSend();
    // A short command is usually done before a blocked sender could be woken: look a few
    // times first, yielding so that a servicing thread on the same processor gets to run.
    m_commandMutex.vRelease();
    for (int look = 0; look < 64 && !command->executed(); ++look)
        std::this_thread::yield();
    m_commandMutex.vAquire();
    SyncSignal& finished = finishedSignalOf(command);
    // A send the signal holds now is for a command whose completion is already visible (this
    // one, or an earlier one seen done while looking): drop it, or a wait would wake for it.
    finished.vClear();
    // A stop releases the sender at once, unless its command is running: then the sender
    // waits for it, since the command belongs to the sender's connection.
    while (!command->executed() && !(done() && m_currentCommand != command))
        (void)finished.vWait(-1);
    const bool executed = command->executed();
    if (!executed)
        m_pending.erase(std::remove(m_pending.begin(), m_pending.end(), command), m_pending.end());
    m_commandMutex.vRelease();
    return executed ? command->result() : TCL_ERROR;
}

SyncSignal& TclCommandServer::finishedSignalOf(TclServerCommand* command) {
    return command->connection() ? command->connection()->commandDoneSignal() : m_doneSignal;
}

int TclCommandServer::asyncSendCommand(TclServerCommand* command) {
    if (usingThreads()) {
        executeCommand(command);
    } else {
        TclServerCommand* previous = m_currentCommand;
        m_currentCommand = command;
        executeCommand(command);
        m_currentCommand = previous;
    }
    return command->result();
}

// The handler runs with the command mutex released, so senders queue their commands without
// waiting for it; the servicing mutex keeps handlers one at a time even when several threads
// service the server.
void TclCommandServer::syncWaitForCommand() {
    std::lock_guard servicing(m_servicingMutex);
    m_commandMutex.vAquire();
    while (m_pending.empty() && !done())
        (void)m_requestSignal.vWait(-1);
    if (done()) {
        m_commandMutex.vRelease();
        return;
    }
    TclServerCommand* command = m_pending.front();
    m_pending.pop_front();
    m_currentCommand = command;
    m_commandMutex.vRelease();

    executeCurrentCommand();

    m_commandMutex.vAquire();
    m_currentCommand = nullptr;
    command->setExecuted(true);
    if (command->connection())
        finishedSignalOf(command).vSend();
    else
        m_doneSignal.vSendAll();
    m_commandMutex.vRelease();
}

int TclCommandServer::asyncWaitForCommand(bool block) {
    m_pollingThread = std::this_thread::get_id();
    const int handled = serviceReadyConnections(block ? m_pollInterval : 0, true);
    closeIdleConnections();
    return handled;
}

int TclCommandServer::serviceReadyConnections(long milliseconds, bool accept) {
    std::vector<pollfd> sockets;
    std::vector<TclConnectionWithClient*> owners;
    {
        std::lock_guard lock(m_connectionsMutex);
        for (TclConnectionWithClient* connection : m_connections) {
            if (connection) {
                sockets.push_back({static_cast<int>(connection->socket()), POLLIN, 0});
                owners.push_back(connection);
            }
        }
    }
    // The listening socket comes last: a client that hung up then gives up its slot before
    // a new one is let in.
    if (accept && m_acceptor && acceptingConnection()) {
        sockets.push_back({static_cast<int>(m_acceptor->listeningSocket()), POLLIN, 0});
        owners.push_back(nullptr);
    }
    const int ready = ::poll(sockets.data(), sockets.size(), int(milliseconds));
    if (ready < 0) {
        const int error = getLastSocketError();
        if (error == EINTR)
            return 0;
        reportSocketError("select", error);
        return -1;
    }
    int handled = 0;
    // A connection is removed (and later reaped) only while it runs its own command, so the
    // pointers collected above stay valid until each has had its turn.
    for (std::size_t i = 0; i < sockets.size(); ++i) {
        if (sockets[i].revents == 0)
            continue;
        ++handled;
        if (owners[i])
            owners[i]->executeOneCommand();
        else
            acceptPending();
    }
    return handled;
}

void TclCommandServer::closeIdleConnections() {
    const long limit = idleTimeout();
    if (limit <= 0)
        return;
    std::vector<TclConnectionWithClient*> idle;
    {
        std::lock_guard lock(m_connectionsMutex);
        for (TclConnectionWithClient* connection : m_connections) {
            if (connection && connection->idleMilliseconds() >= limit)
                idle.push_back(connection);
        }
    }
    for (TclConnectionWithClient* connection : idle) {
        Printf(DBG_INFO, "\nTclCommandServer closing a connection idle for %ld msec\n", limit);
        removeConnection(connection);
    }
}

void TclCommandServer::executeCurrentCommand() {
    m_servicingThread = std::this_thread::get_id();
    executeCommand(m_currentCommand);
    m_servicingThread = std::thread::id{};
}

void TclCommandServer::executeCommand(TclServerCommand* command) {
    TclServerCommand* const outer = std::exchange(t_runningCommand, command);
    command->setResult((this->*(command->handler()))(command));
    t_runningCommand = outer;
}

TclServerCommand* TclCommandServer::runningCommand() const {
    return t_runningCommand ? t_runningCommand : m_currentCommand;
}

void TclCommandServer::requestStop() {
    assertNotInHandler("requestStop()");
    m_done = true;
    m_commandMutex.vAquire();
    m_requestSignal.vSendAll();
    m_doneSignal.vSendAll();
    for (TclServerCommand* command : m_pending)
        finishedSignalOf(command).vSendAll();
    m_commandMutex.vRelease();
    cancelEvaluations();
}

void TclCommandServer::cancelEvaluations() {
    std::lock_guard lock(m_connectionsMutex);
    for (TclConnectionWithClient* connection : m_connections) {
        if (connection)
            connection->cancelEvaluation();
    }
}

void TclCommandServer::assertNotInHandler([[maybe_unused]] const char* operation) const {
    assert(m_servicingThread != std::this_thread::get_id() &&
           "this operation would wait for the command mutex its own handler holds; set done()");
}

void TclCommandServer::acceptPending() {
    TclConnectionWithClient* connection = m_acceptor->waitForConnection();
    if (!connection)
        return;
    // Without threads a client that hung up is noticed only by servicing its socket: do that,
    // for up to the slot wait, before refusing the new one.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(m_slotWait);
    bool added = addConnection(connection);
    while (!added && std::chrono::steady_clock::now() < deadline && !done()) {
        serviceReadyConnections(std::min(m_pollInterval, m_slotWait), false);
        added = addConnection(connection);
    }
    if (!added) {
        Printf(DBG_INFO, "\nTclCommandServer refused a connection: all %d slots in use\n",
               maxConnections);
        delete connection;
        return;
    }
    if (!connection->createTclInterp())
        removeConnection(connection);
}

// --- Connections ---

bool TclCommandServer::addConnection(TclConnectionWithClient* connection) {
    reapConnections(false);
    std::lock_guard lock(m_connectionsMutex);
    for (TclConnectionWithClient*& slot : m_connections) {
        if (!slot) {
            slot = connection;
            ++m_numConnections;
            return true;
        }
    }
    return false;
}

void TclCommandServer::removeConnection(TclConnectionWithClient* connection) {
    reapConnections(false);
    {
        std::lock_guard lock(m_connectionsMutex);
        TclConnectionWithClient** slot =
            std::find(std::begin(m_connections), std::end(m_connections), connection);
        if (!connection || slot == std::end(m_connections))
            return;
        *slot = nullptr;
        --m_numConnections;
        m_reapList.push_back(connection);
    }
    m_slotFreed.notify_all();
    connection->setDone(true);
    connection->shutdownSocket();
    connectionHasBeenRemoved(connection);
}

void TclCommandServer::removeAllConnections() {
    reapConnections(false);
    std::vector<TclConnectionWithClient*> occupied;
    {
        std::lock_guard lock(m_connectionsMutex);
        for (TclConnectionWithClient* connection : m_connections) {
            if (connection)
                occupied.push_back(connection);
        }
    }
    for (TclConnectionWithClient* connection : occupied)
        removeConnection(connection);
    reapConnections(false);
}

bool TclCommandServer::waitForFreeSlot(long milliseconds) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    std::unique_lock lock(m_connectionsMutex);
    // Woken by each removal; a stop is seen within a poll interval.
    while (m_numConnections >= maxConnections) {
        const auto now = std::chrono::steady_clock::now();
        if (!acceptingConnection() || now >= deadline)
            return false;
        m_slotFreed.wait_until(lock,
                               std::min(deadline, now + std::chrono::milliseconds(m_pollInterval)));
    }
    return true;
}

void TclCommandServer::reapConnections() {
    reapConnections(false);
}

void TclCommandServer::reapConnections(bool wait) {
    std::vector<TclConnectionWithClient*> finished;
    {
        std::lock_guard lock(m_connectionsMutex);
        const auto ended = std::stable_partition(m_reapList.begin(), m_reapList.end(),
                                                 [wait](TclConnectionWithClient* connection) {
                                                     return !wait && !connection->threadFinished();
                                                 });
        finished.assign(ended, m_reapList.end());
        m_reapList.erase(ended, m_reapList.end());
    }
    // Deleting waits for a thread only when asked to; a finished thread is just joined. A
    // thread still evaluating a script is cancelled until it ends: a cancel that reaches
    // the interpreter just before an evaluation begins is forgotten by Tcl, so it is repeated.
    for (TclConnectionWithClient* connection : finished) {
        while (!connection->threadFinished()) {
            connection->cancelEvaluation();
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        delete connection;
    }
}

int TclCommandServer::numConnections() const {
    std::lock_guard lock(m_connectionsMutex);
    return m_numConnections;
}

int TclCommandServer::numConnectionsAwaitingReaping() const {
    std::lock_guard lock(m_connectionsMutex);
    return static_cast<int>(m_reapList.size());
}

bool TclCommandServer::acceptingConnection() const {
    return m_accepting && !done();
}

void TclCommandServer::acceptorDied() {
    m_accepting = false;
}

int TclCommandServer::port() const {
    return m_acceptor ? m_acceptor->port() : 0;
}

// --- Responses ---

void TclCommandServer::sendResp(TclServerRespType type, const char* text) {
    sendCmdResp(type, text, runningCommand());
}

void TclCommandServer::sendCmdResp(TclServerRespType type, const char* text,
                                   TclServerCommand* command) {
    if (command && command->connection())
        command->connection()->sendResp(type, text);
}

void TclCommandServer::broadcast(TclServerRespType type, const char* text) {
    std::lock_guard lock(m_connectionsMutex);
    for (TclConnectionWithClient* connection : m_connections) {
        if (connection && connection->broadcastFlag())
            connection->sendResp(type, text);
    }
}

TclConnectionWithClient* TclCommandServer::targetOf(TclConnectionWithClient* connection) const {
    if (connection)
        return connection;
    const TclServerCommand* command = runningCommand();
    return command ? command->connection() : nullptr;
}

void TclCommandServer::setClientBroadcast(bool broadcast, TclConnectionWithClient* connection) {
    if (TclConnectionWithClient* target = targetOf(connection))
        target->setBroadcastFlag(broadcast);
}

bool TclCommandServer::getClientBroadcast(TclConnectionWithClient* connection) const {
    const TclConnectionWithClient* target = targetOf(connection);
    return target && target->broadcastFlag();
}

// --- Built-in commands ---

int TclCommandServer::exitCmd(TclServerCommand* command) {
    if (command->connection())
        removeConnection(command->connection());
    return TCL_OK;
}

int TclCommandServer::beepCmd(TclServerCommand* command) {
    piSystem::current().beep();
    sendCmdResp(TCS_RESULT, "Beep you back...", command);
    return TCL_OK;
}

int TclCommandServer::disconnectCmd(TclServerCommand* command) {
    return exitCmd(command);
}

// --- Settings and state ---

void TclCommandServer::removeIPCPortFile() {
    if (m_portFile)
        m_portFile->removePortFile();
    TclServerConnectionAcceptor::clearSignalPortFilePath();
}
