#pragma once

#include "core/TqExport.h"
#include "ipc/IPCMessage.h"

#include <memory>
#include <mutex>
#include <vector>

/// Receives the messages of the channel; the application implements it.
class TQ_EXPORT IPCMessageHandler {
public:
    virtual ~IPCMessageHandler();
    /// Takes ownership of message; command is the command it answers (not owned), or null
    /// for an unsolicited message. Called on the channel's threads.
    virtual void handleMessage(IPCMessage* message, IPCCommand* command) = 0;
};

/// IPCMessageDispatcher and IPCMessageHandler: how messages read by the channel's threads
/// reach the application. The handler is called on those threads and passes each message
/// on to the main thread.
class TQ_EXPORT IPCMessageDispatcher {
public:
    /// Hands messages to handler (not owned; null drops them).
    explicit IPCMessageDispatcher(IPCMessageHandler* handler = nullptr) : m_handler(handler) {}
    ///@{
    /// Deletes the commands and messages it keeps.
    ~IPCMessageDispatcher();
    IPCMessageDispatcher(const IPCMessageDispatcher&) = delete;
    IPCMessageDispatcher& operator=(const IPCMessageDispatcher&) = delete;
    ///@}

    ///@{
    /// The handler is not owned.
    void setHandler(IPCMessageHandler* handler);
    IPCMessageHandler* handler() const;
    ///@}
    ///@{
    /// Keeps command or message (taking ownership) until the dispatcher is destroyed.
    void addCommand(IPCCommand* command);
    void addMessage(IPCMessage* message);
    int numCommands() const;
    int numMessages() const;
    ///@}
    /// Hands message (ownership included) with the command it answers to the handler; with
    /// no handler the dispatcher keeps the message. Safe from any thread.
    void sendMessage(IPCMessage* message, IPCCommand* command);

private:
    mutable std::mutex m_mutex;
    IPCMessageHandler* m_handler;
    std::vector<std::unique_ptr<IPCCommand>> m_commands;
    std::vector<std::unique_ptr<IPCMessage>> m_messages;
};
