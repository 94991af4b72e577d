#include "ipc/AsyncEventReceiver.h"

#include "core/DebugPrint.h"
#include "ipc/IPCMessage.h"
#include "ipc/IPCMessageDispatcher.h"
#include "ipc/IPCMessageParser.h"
#include "ipc/SocketStreambuf.h"
#include "ipc/SyncCommandSender.h"
#include "ipc/platform/piSocket.h"

AsyncEventReceiver::AsyncEventReceiver(IPCMessageParser* parser, IPCMessageDispatcher* dispatcher,
                                       SyncCommandSender* sender)
    : ThreadMainObject(false), m_parser(parser), m_dispatcher(dispatcher), m_sender(sender),
      m_socket(piSocket::invalid) {}

AsyncEventReceiver::~AsyncEventReceiver() {
    stop();
    join();
}

void AsyncEventReceiver::stop() {
    m_continue = false;
    if (m_socket != piSocket::invalid)
        piSocket::shutdownRead(m_socket);
}

void AsyncEventReceiver::vThreadMain() {
    Printf(DBG_INFO, "\nAsyncEventReceiver thread starting\n");
    if (m_aerCommand) {
        if (m_sender) {
            m_sender->asyncSendCommand(m_aerCommand);
        } else {
            SocketOStream out(m_socket);
            m_aerCommand->writeOn(out);
        }
    }
    while (getContinueFlag()) {
        Printf(DBG_INFO, "\nAsyncEventReceiver calling getMessage with socket %d\n", m_socket);
        bool readError = false;
        IPCMessage* message = m_parser->getMessage(m_socket, readError);
        if (message)
            m_dispatcher->sendMessage(message, m_command);
        else if (m_parser->lastHeaderBytes() != IPCHeader::size)
            break; // the stream ended or failed: nothing more will come
    }
    Printf(DBG_INFO, "\nAsyncEventReceiver thread terminating\n");
    deactivate();
}
