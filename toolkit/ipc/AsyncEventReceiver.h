#pragma once

#include "core/TqExport.h"
#include "ipc/ThreadMainObject.h"

#include <atomic>

class IPCCommand;
class IPCMessageDispatcher;
class IPCMessageParser;
class SyncCommandSender;

/// AsyncEventReceiver: the channel's receiver thread. It reads the messages the peer sends
/// on its own accord and hands each to the dispatcher.
class TQ_EXPORT AsyncEventReceiver : public ThreadMainObject {
public:
    /// None of the three is owned; sender may be null.
    AsyncEventReceiver(IPCMessageParser* parser, IPCMessageDispatcher* dispatcher,
                       SyncCommandSender* sender);
    /// Stops the thread and waits for it.
    ~AsyncEventReceiver() override;

    ///@{
    /// The connected socket (not owned); set before activate().
    void setSocket(unsigned int socket) { m_socket = socket; }
    unsigned int socket() const { return m_socket; }
    ///@}
    ///@{
    /// The command the received messages are passed with (not owned; may be null).
    void setCommand(IPCCommand* command) { m_command = command; }
    IPCCommand* command() const { return m_command; }
    ///@}
    ///@{
    /// A command sent once when the thread starts, through the sender when there is one
    /// (not owned; may be null).
    void setAERCommand(IPCCommand* command) { m_aerCommand = command; }
    void setContinueFlag(bool proceed) { m_continue = proceed; }
    bool getContinueFlag() const { return m_continue.load(); }
    ///@}
    /// Ends the thread: clears the continue flag and stops reading from the socket.
    void stop();

protected:
    /// Reads messages until stopped or the peer closes the stream.
    void vThreadMain() override;

private:
    IPCMessageParser* m_parser;
    IPCMessageDispatcher* m_dispatcher;
    SyncCommandSender* m_sender;
    unsigned int m_socket;
    IPCCommand* m_command = nullptr;
    IPCCommand* m_aerCommand = nullptr;
    std::atomic<bool> m_continue{true};
};
