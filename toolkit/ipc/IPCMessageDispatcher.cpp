#include "ipc/IPCMessageDispatcher.h"

#include "ipc/IPCMessage.h"

IPCMessageHandler::~IPCMessageHandler() = default;

IPCMessageDispatcher::~IPCMessageDispatcher() = default;

void IPCMessageDispatcher::setHandler(IPCMessageHandler* handler) {
    std::lock_guard lock(m_mutex);
    m_handler = handler;
}

IPCMessageHandler* IPCMessageDispatcher::handler() const {
    std::lock_guard lock(m_mutex);
    return m_handler;
}

void IPCMessageDispatcher::addCommand(IPCCommand* command) {
    std::lock_guard lock(m_mutex);
    m_commands.emplace_back(command);
}

void IPCMessageDispatcher::addMessage(IPCMessage* message) {
    std::lock_guard lock(m_mutex);
    m_messages.emplace_back(message);
}

int IPCMessageDispatcher::numCommands() const {
    std::lock_guard lock(m_mutex);
    return static_cast<int>(m_commands.size());
}

int IPCMessageDispatcher::numMessages() const {
    std::lock_guard lock(m_mutex);
    return static_cast<int>(m_messages.size());
}

void IPCMessageDispatcher::sendMessage(IPCMessage* message, IPCCommand* command) {
    if (!message)
        return;
    IPCMessageHandler* target = handler();
    if (target)
        target->handleMessage(message, command);
    else
        addMessage(message);
}
