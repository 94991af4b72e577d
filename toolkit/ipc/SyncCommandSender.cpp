#include "ipc/SyncCommandSender.h"

#include "core/DebugPrint.h"
#include "ipc/IPCMessage.h"
#include "ipc/IPCMessageDispatcher.h"
#include "ipc/IPCMessageParser.h"
#include "ipc/platform/piSocket.h"

SyncCommandSender::SyncCommandSender(IPCMessageParser* parser, IPCMessageDispatcher* dispatcher)
    : ThreadMainObject(false), m_parser(parser), m_dispatcher(dispatcher),
      m_socket(piSocket::invalid) {}

SyncCommandSender::~SyncCommandSender() {
    stop();
    join();
}

void SyncCommandSender::setSocket(unsigned int socket) {
    m_socket = socket;
    m_ostrm = std::make_unique<SocketOStream>(socket);
}

void SyncCommandSender::addCommandtoQueue(IPCCommand* command, int syncType) {
    m_queue.emplace_back(command, syncType);
}

IPCCommand* SyncCommandSender::getCommandfromQueue() const {
    return m_queue.empty() ? nullptr : m_queue.front().first;
}

int SyncCommandSender::getSyncTypefromQueue() const {
    return m_queue.empty() ? -1 : m_queue.front().second;
}

void SyncCommandSender::setIPCMessage(IPCMessage* message) {
    if (m_message.get() != message)
        m_message.reset(message);
}

void SyncCommandSender::stop() {
    m_continue = false;
    m_commandMutex.vAquire();
    m_cmdSignal.vSendAll();
    m_doneSignal.vSendAll();
    m_commandMutex.vRelease();
}

IPCMessage* SyncCommandSender::syncSendCommand(IPCCommand* command, IPCMessageHandler* handler) {
    m_commandMutex.vAquire();
    addCommandtoQueue(command, IPC_SYNC_SEND);
    m_cmdSignal.vSend();
    while (m_answered != command && getContinueFlag())
        (void)m_doneSignal.vWait(-1);
    IPCMessage* reply = nullptr;
    if (m_answered == command) {
        reply = m_message.release();
        m_answered = nullptr;
        m_cmdSignal.vSend(); // the sender thread may go on to the next command
    }
    m_commandMutex.vRelease();
    if (reply && handler) {
        handler->handleMessage(reply, command);
        return nullptr;
    }
    return reply;
}

void SyncCommandSender::asyncSendCommand(IPCCommand* command) {
    m_commandMutex.vAquire();
    addCommandtoQueue(command, IPC_ASYNC_SEND);
    m_cmdSignal.vSend();
    m_commandMutex.vRelease();
}

void SyncCommandSender::vThreadMain() {
    Printf(DBG_INFO, "\nSyncCommandSender thread starting\n");
    m_commandMutex.vAquire();
    while (getContinueFlag()) {
        // A reply is taken by its waiter before the next one is read: each waiter gets its own.
        while ((m_queue.empty() || m_answered) && getContinueFlag())
            (void)m_cmdSignal.vWait(-1);
        if (!getContinueFlag())
            break;
        IPCCommand* command = getCommandfromQueue();
        const int syncType = getSyncTypefromQueue();
        m_queue.pop_front();
        m_commandMutex.vRelease();

        Printf(DBG_INFO, "\nSyncCommandSender sending '%s'\n",
               command->text() ? command->text() : "NULL");
        command->writeOn(*m_ostrm);
        IPCMessage* reply = nullptr;
        if (syncType == IPC_SYNC_SEND && m_ostrm->good() &&
            piSocket::waitReadable(m_socket, m_replyTimeout) > 0) {
            Printf(DBG_INFO, "\nSyncCommandSender calling getMessage with socket %d\n", m_socket);
            bool readError = false;
            reply = m_parser->getMessage(m_socket, readError);
        }

        const bool broken = !m_ostrm->good();
        if (broken && m_dispatcher)
            m_dispatcher->sendMessage(new IPCStatusMessage(DISCONNECTED_FROM_SE), command);

        m_commandMutex.vAquire();
        if (broken)
            m_continue = false;
        if (syncType == IPC_SYNC_SEND) {
            setIPCMessage(reply);
            m_answered = command;
            m_doneSignal.vSendAll();
        } else {
            m_asyncReadySignal.vSend();
        }
    }
    m_doneSignal.vSendAll();
    m_commandMutex.vRelease();
    Printf(DBG_INFO, "\nSyncCommandSender thread terminating\n");
    deactivate();
}
