// The message channel's threads over a socket pair: the sender's queue and reply hand-back,
// the receiver's dispatch of unsolicited messages, the port-file poller and the dispatcher.
#include "IpcTestSupport.h"

#include "ipc/AsyncEventReceiver.h"
#include "ipc/AutoConnectPoller.h"
#include "ipc/IPCMessageDispatcher.h"
#include "ipc/IPCMessageParser.h"
#include "ipc/IPCPortFile.h"
#include "ipc/SyncCommandSender.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {
class Collector : public IPCMessageHandler {
public:
    void handleMessage(IPCMessage* message, IPCCommand* command) override {
        std::lock_guard lock(m_mutex);
        m_messages.emplace_back(message);
        m_commands.push_back(command);
    }
    int count() {
        std::lock_guard lock(m_mutex);
        return static_cast<int>(m_messages.size());
    }
    IPCMessage* message(int i) {
        std::lock_guard lock(m_mutex);
        return m_messages.at(i).get();
    }
    IPCCommand* command(int i) {
        std::lock_guard lock(m_mutex);
        return m_commands.at(i);
    }

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<IPCMessage>> m_messages;
    std::vector<IPCCommand*> m_commands;
};

// Reads one length-prefixed request from the peer side; "" at the end of the stream.
std::string readRequest(unsigned int socket) {
    char prefix[4];
    if (piSocket::receiveAll(socket, prefix, 4) != 4)
        return "";
    std::string text(static_cast<std::size_t>(ipcReadInt(prefix)), '\0');
    piSocket::receiveAll(socket, text.data(), text.size());
    return text;
}
} // namespace

TEST(IPCMessageDispatcher, SendMessage_GoesToTheHandlerOrIsKept) {
    Collector collector;
    IPCMessageDispatcher dispatcher;
    dispatcher.sendMessage(new IPCMessage(1, 2, "kept"), nullptr);
    EXPECT_EQ(dispatcher.numMessages(), 1);
    dispatcher.setHandler(&collector);
    IPCCommand command("cmd");
    dispatcher.sendMessage(new IPCMessage(3, 4, "handled"), &command);
    dispatcher.sendMessage(nullptr, &command);
    ASSERT_EQ(collector.count(), 1);
    EXPECT_STREQ(collector.message(0)->text(), "handled");
    EXPECT_EQ(collector.command(0), &command);
    dispatcher.addCommand(new IPCCommand("owned"));
    EXPECT_EQ(dispatcher.numCommands(), 1);
}

TEST(SyncCommandSender, SyncAndAsyncCommands_AreWrittenInOrderAndRepliesHandedBack) {
    SocketPair pair;
    IPCMessageParser parser;
    IPCMessageDispatcher dispatcher;
    SyncCommandSender sender(&parser, &dispatcher);
    sender.setSocket(pair.ours);
    LogCapture log;
    ASSERT_TRUE(sender.activate());
    std::thread peer([&] {
        EXPECT_EQ(readRequest(pair.peer), "first");
        const std::string reply = replyFrame("one");
        piSocket::sendAll(pair.peer, reply.data(), reply.size());
        EXPECT_EQ(readRequest(pair.peer), "async");
        EXPECT_EQ(readRequest(pair.peer), "second");
        const std::string second = replyFrame("two");
        piSocket::sendAll(pair.peer, second.data(), second.size());
    });
    IPCCommand first("first");
    std::unique_ptr<IPCMessage> reply(sender.syncSendCommand(&first, nullptr));
    ASSERT_TRUE(reply);
    EXPECT_STREQ(reply->text(), "one");
    IPCCommand async("async");
    sender.asyncSendCommand(&async);
    Collector collector;
    IPCCommand second("second");
    EXPECT_EQ(sender.syncSendCommand(&second, &collector), nullptr);
    ASSERT_EQ(collector.count(), 1);
    EXPECT_STREQ(collector.message(0)->text(), "two");
    EXPECT_EQ(collector.command(0), &second);
    peer.join();
    sender.stop();
    sender.join();
    for (const char* line :
         {"\nSyncCommandSender thread starting\n", "\nSyncCommandSender sending 'first'\n",
          "\nSyncCommandSender calling getMessage with socket ",
          "\nSyncCommandSender thread terminating\n"})
        EXPECT_TRUE(log.contains(line)) << line;
}

TEST(SyncCommandSender, UnansweredCommand_ReturnsNullAfterTheReplyTime) {
    SocketPair pair;
    IPCMessageParser parser;
    IPCMessageDispatcher dispatcher;
    SyncCommandSender sender(&parser, &dispatcher);
    sender.setSocket(pair.ours);
    sender.setReplyTimeout(50);
    ASSERT_TRUE(sender.activate());
    IPCCommand silent("set x 1");
    EXPECT_EQ(sender.syncSendCommand(&silent, nullptr), nullptr);
    EXPECT_EQ(readRequest(pair.peer), "set x 1");
}

TEST(SyncCommandSender, ClosedPeer_TellsTheDispatcherAndReleasesTheWaiter) {
    SocketPair pair;
    piSocket::close(pair.peer);
    pair.peer = piSocket::invalid;
    IPCMessageParser parser;
    Collector collector;
    IPCMessageDispatcher dispatcher(&collector);
    SyncCommandSender sender(&parser, &dispatcher);
    sender.setSocket(pair.ours);
    ASSERT_TRUE(sender.activate());
    IPCCommand command("beep");
    EXPECT_EQ(sender.syncSendCommand(&command, nullptr), nullptr);
    ASSERT_TRUE(eventually([&] { return collector.count() == 1; }));
    EXPECT_EQ(collector.message(0)->isa(), IPC_STATUS_MESSAGE);
    EXPECT_EQ(static_cast<IPCStatusMessage*>(collector.message(0))->v_code, DISCONNECTED_FROM_SE);
    sender.join();
    EXPECT_FALSE(sender.getContinueFlag());
}

TEST(AsyncEventReceiver, PeerMessages_AreDispatchedUntilTheStreamEnds) {
    SocketPair pair;
    IPCMessageParser parser;
    Collector collector;
    IPCMessageDispatcher dispatcher(&collector);
    AsyncEventReceiver receiver(&parser, &dispatcher, nullptr);
    receiver.setSocket(pair.ours);
    IPCCommand hello("hello");
    IPCCommand context("context");
    receiver.setAERCommand(&hello);
    receiver.setCommand(&context);
    LogCapture log;
    ASSERT_TRUE(receiver.activate());
    EXPECT_EQ(readRequest(pair.peer), "hello") << "the start command goes out first";
    const std::string events = replyFrame("event 1") + replyFrame("event 2");
    piSocket::sendAll(pair.peer, events.data(), events.size());
    ASSERT_TRUE(eventually([&] { return collector.count() == 2; }));
    EXPECT_STREQ(collector.message(1)->text(), "event 2");
    EXPECT_EQ(collector.command(0), &context);
    piSocket::shutdown(pair.peer);
    receiver.join();
    EXPECT_TRUE(log.contains("\nAsyncEventReceiver thread starting\n"));
    EXPECT_TRUE(log.contains("\nAsyncEventReceiver calling getMessage with socket "));
    EXPECT_TRUE(log.contains("\nAsyncEventReceiver thread terminating\n"));
}

TEST(AsyncEventReceiver, Stop_EndsAReceiverThatWaitsForData) {
    SocketPair pair;
    IPCMessageParser parser;
    IPCMessageDispatcher dispatcher;
    AsyncEventReceiver receiver(&parser, &dispatcher, nullptr);
    receiver.setSocket(pair.ours);
    ASSERT_TRUE(receiver.activate());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    receiver.stop();
    receiver.join();
    EXPECT_TRUE(receiver.threadFinished());
}

TEST(AutoConnectPoller, PortFileThatAppears_IsReportedOnceAsFoundPortfile) {
    const std::string path = ::testing::TempDir() + "tq_poller.port";
    std::remove(path.c_str());
    IPCPortFile portFile(path.c_str());
    Collector collector;
    IPCMessageDispatcher dispatcher(&collector);
    AutoConnectPoller poller(&portFile, 10, &dispatcher);
    LogCapture log;
    ASSERT_TRUE(poller.activate());
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    EXPECT_EQ(collector.count(), 0);
    IPCPortFile writer(path.c_str());
    writer.setOwner(2);
    writer.setPort(4242);
    ASSERT_TRUE(writer.writePortFile());
    ASSERT_TRUE(eventually([&] { return collector.count() == 1; }));
    poller.join();
    EXPECT_EQ(static_cast<IPCStatusMessage*>(collector.message(0))->v_code, FOUND_PORTFILE);
    EXPECT_EQ(collector.command(0), nullptr);
    EXPECT_EQ(portFile.port(), 4242);
    const std::string text = log.captured();
    EXPECT_NE(text.find("\nAuto Polling started\n"), std::string::npos);
    EXPECT_NE(text.find("\nSending FOUND_PORTFILE to main thread\n\nAuto Poller terminating\n"),
              std::string::npos);
    std::remove(path.c_str());
}

TEST(AutoConnectPoller, StopPolling_EndsWithoutAMessage) {
    IPCPortFile portFile((::testing::TempDir() + "tq_never.port").c_str());
    Collector collector;
    IPCMessageDispatcher dispatcher(&collector);
    AutoConnectPoller poller(&portFile, 10000, &dispatcher);
    ASSERT_TRUE(poller.activate());
    poller.stopPolling();
    poller.join();
    EXPECT_EQ(collector.count(), 0);
    EXPECT_FALSE(poller.getContinueFlag());
}
