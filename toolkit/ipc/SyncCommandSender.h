#pragma once

#include "core/TqExport.h"
#include "ipc/ProtectedResource.h"
#include "ipc/SocketStreambuf.h"
#include "ipc/ThreadMainObject.h"

#include <atomic>
#include <deque>
#include <memory>
#include <utility>

class IPCCommand;
class IPCMessage;
class IPCMessageDispatcher;
class IPCMessageHandler;
class IPCMessageParser;

/// How a queued command is sent: without waiting, or with its reply read and handed back.
enum IPCSyncType {
    IPC_ASYNC_SEND = 0,
    IPC_SYNC_SEND = 1,
};

/// SyncCommandSender: the channel's sender thread. It takes commands from a queue, writes
/// them to the peer and, for those that are waited for, reads the reply and wakes the
/// waiter.
class TQ_EXPORT SyncCommandSender : public ThreadMainObject {
public:
    /// Neither the parser nor the dispatcher is owned. The dispatcher is told
    /// DISCONNECTED_FROM_SE when a command cannot be written; the thread then ends.
    SyncCommandSender(IPCMessageParser* parser, IPCMessageDispatcher* dispatcher);
    /// Stops the thread and waits for it; deletes a reply nobody took.
    ~SyncCommandSender() override;

    ///@{
    /// The connected socket (not owned); set before activate().
    void setSocket(unsigned int socket);
    unsigned int socket() const { return m_socket; }
    ///@}
    /// How long the thread waits for a reply, in milliseconds (-1 without limit; 2000).
    void setReplyTimeout(long milliseconds) { m_replyTimeout = milliseconds; }

    /// Queue access; each is called with commandMutex() held. The command is not owned.
    void addCommandtoQueue(IPCCommand* command, int syncType);
    ///@{
    /// The command and the sync type at the head of the queue: null and -1 when it is empty.
    IPCCommand* getCommandfromQueue() const;
    int getSyncTypefromQueue() const;
    ///@}

    ///@{
    /// The last reply read (owned by the sender until taken); set under commandMutex().
    void setIPCMessage(IPCMessage* message);
    IPCMessage* getIPCMessage() const { return m_message.get(); }
    ///@}

    ///@{
    /// While the flag holds (true at first) the thread sends; once cleared it ends after
    /// the command it is sending. A broken connection clears it.
    void setContinueFlag(bool proceed) { m_continue = proceed; }
    bool getContinueFlag() const { return m_continue.load(); }
    ///@}
    /// Ends the thread after the command it is sending, and wakes every waiter.
    void stop();

    /// The stream commands are written to, owned by the sender; for its own thread.
    SocketOStream& ostrm() { return *m_ostrm; }
    ///@{
    /// The mutex of the queue and the reply, and the signals on it: a command was queued
    /// (cmdSignal), a reply was read or the thread ended (doneSignal), an asynchronous command
    /// went out (asyncReadySignal). Owned by the sender.
    ProtectedResource& commandMutex() { return m_commandMutex; }
    SyncSignal& cmdSignal() { return m_cmdSignal; }
    SyncSignal& doneSignal() { return m_doneSignal; }
    SyncSignal& asyncReadySignal() { return m_asyncReadySignal; }
    ///@}

    /// Queues command and waits until its reply was read or the reply time passed; safe from
    /// several threads at once, each getting the reply to its own command. With a handler,
    /// the reply goes to it and null is returned; otherwise the reply is returned for the
    /// caller to delete. Null when no reply came or the sender stopped.
    IPCMessage* syncSendCommand(IPCCommand* command, IPCMessageHandler* handler);
    /// Queues command without waiting for anything.
    void asyncSendCommand(IPCCommand* command);

protected:
    /// Sends the queued commands in order; for a synchronous one, reads the reply within the
    /// reply time and wakes its waiter. A broken connection tells the dispatcher
    /// DISCONNECTED_FROM_SE and ends the thread.
    void vThreadMain() override;

private:
    IPCMessageParser* m_parser;
    IPCMessageDispatcher* m_dispatcher;
    unsigned int m_socket;
    long m_replyTimeout = 2000;
    std::unique_ptr<SocketOStream> m_ostrm;
    std::deque<std::pair<IPCCommand*, int>> m_queue;
    std::unique_ptr<IPCMessage> m_message;
    IPCCommand* m_answered = nullptr; ///< the synchronous command whose reply awaits its waiter
    std::atomic<bool> m_continue{true};
    ProtectedResource m_commandMutex{"SyncCommandSender"};
    SyncSignal m_cmdSignal{m_commandMutex};
    SyncSignal m_doneSignal{m_commandMutex};
    SyncSignal m_asyncReadySignal{m_commandMutex};
};
