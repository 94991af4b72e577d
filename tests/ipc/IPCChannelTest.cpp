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

namespace {
// Keeps each message the dispatcher hands on as "TEXT>COMMAND": its text ("<null>" without
// one) or status code, and the text of the command it answers ("-" for none).
struct Collector : IPCMessageHandler {
    void handleMessage(IPCMessage* message, IPCCommand* command) override {
        const std::unique_ptr<IPCMessage> owned(message);
        const auto* status = dynamic_cast<IPCStatusMessage*>(message);
        const std::string text = status            ? "status " + std::to_string(status->v_code)
                                 : message->text() ? message->text()
                                                   : "<null>";
        std::lock_guard lock(mutex);
        texts.push_back(text + ">" + (command ? command->text() : "-"));
    }
    std::vector<std::string> received() {
        std::lock_guard lock(mutex);
        return texts;
    }
    bool hasReceived(std::size_t count) {
        return eventually([&] { return received().size() == count; });
    }
    std::mutex mutex;
    std::vector<std::string> texts;
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

// A socket pair whose first end a channel thread uses, with its parser and dispatcher.
class ChannelTest : public ::testing::Test {
protected:
    SocketPair pair;
    IPCMessageParser parser;
    Collector collector;
    IPCMessageDispatcher dispatcher{&collector};
    SyncCommandSender sender{&parser, &dispatcher};
    void startSender() {
        sender.setSocket(pair.ours);
        ASSERT_TRUE(sender.activate());
    }
};
} // namespace

TEST(IPCMessageDispatcher, SendMessageGoesToTheHandlerOrIsKept) {
    Collector collector;
    IPCMessageDispatcher dispatcher;
    dispatcher.sendMessage(new IPCMessage(1, 2, "kept"), nullptr);
    EXPECT_EQ(dispatcher.numMessages(), 1);
    dispatcher.setHandler(&collector);
    IPCCommand command("cmd");
    dispatcher.sendMessage(new IPCMessage(3, 4, "handled"), &command);
    dispatcher.sendMessage(nullptr, &command);
    EXPECT_EQ(collector.received(), std::vector<std::string>{"handled>cmd"});
    dispatcher.addCommand(new IPCCommand("owned"));
    EXPECT_EQ(dispatcher.numCommands(), 1);
}

// Sync and async commands go out in order; a reply goes back to its waiter, or to the
// handler it names; an unanswered one gives null after the reply time. A command that cannot
// be written tells the dispatcher DISCONNECTED_FROM_SE and ends the thread.
TEST_F(ChannelTest, SyncCommandSenderWritesInOrderAndHandsRepliesBack) {
    LogCapture log;
    sender.setReplyTimeout(100);
    startSender();
    std::thread peer([&] {
        EXPECT_EQ(readRequest(pair.peer), "first");
        sendAll(pair.peer, replyFrame("one"));
        EXPECT_EQ(readRequest(pair.peer), "async");
        EXPECT_EQ(readRequest(pair.peer), "second");
        sendAll(pair.peer, replyFrame("two"));
        EXPECT_EQ(readRequest(pair.peer), "silent");
    });
    IPCCommand first("first"), async("async"), second("second"), silent("silent"), lost("lost");
    std::unique_ptr<IPCMessage> reply(sender.syncSendCommand(&first, nullptr));
    EXPECT_STREQ(reply ? reply->text() : "<none>", "one");
    sender.asyncSendCommand(&async);
    EXPECT_EQ(sender.syncSendCommand(&second, &collector), nullptr);
    EXPECT_EQ(sender.syncSendCommand(&silent, nullptr), nullptr);
    peer.join();
    pair.closePeer();
    EXPECT_EQ(sender.syncSendCommand(&lost, nullptr), nullptr);
    sender.join();
    EXPECT_FALSE(sender.getContinueFlag());
    EXPECT_EQ(collector.received(), (std::vector<std::string>{"two>second", "status 4>lost"}));
    EXPECT_EQ(log.missing({"\nSyncCommandSender thread starting\n",
                           "\nSyncCommandSender sending 'first'\n",
                           "\nSyncCommandSender calling getMessage with socket ",
                           "\nSyncCommandSender thread terminating\n"}),
              "");
}

// Threads that send at once each get the reply to their own command.
TEST_F(ChannelTest, SyncCommandSenderGivesConcurrentSendersTheirOwnReplies) {
    startSender();
    constexpr int senders = 4, rounds = 50;
    std::thread echo([&] {
        for (int i = 0; i < senders * rounds; ++i)
            sendAll(pair.peer, replyFrame(readRequest(pair.peer)));
    });
    std::atomic<int> right{0}, finished{0};
    std::vector<std::thread> threads;
    for (int s = 0; s < senders; ++s)
        threads.emplace_back([&, s] {
            for (int r = 0; r < rounds; ++r) {
                IPCCommand command(
                    ("sender " + std::to_string(s) + "." + std::to_string(r)).c_str());
                std::unique_ptr<IPCMessage> reply(sender.syncSendCommand(&command, nullptr));
                right += reply && std::string(reply->text()) == command.text();
            }
            ++finished;
        });
    EXPECT_TRUE(eventually([&] { return finished == senders; }, 20000));
    sender.stop();                 // releases a sender that would wait for ever
    piSocket::shutdown(pair.ours); // and the echo, should it wait for more
    for (std::thread& thread : threads)
        thread.join();
    echo.join();
    EXPECT_EQ(right.load(), senders * rounds);
}

TEST_F(ChannelTest, AsyncEventReceiverDispatchesPeerMessagesUntilTheStreamEndsOrItStops) {
    AsyncEventReceiver receiver(&parser, &dispatcher, nullptr), idle(&parser, &dispatcher, nullptr);
    receiver.setSocket(pair.ours);
    IPCCommand hello("hello"), context("context");
    receiver.setAERCommand(&hello);
    receiver.setCommand(&context);
    LogCapture log;
    ASSERT_TRUE(receiver.activate());
    EXPECT_EQ(readRequest(pair.peer), "hello") << "the start command goes out first";
    sendAll(pair.peer, replyFrame("event 1") + frameBytes(0xBAD, 0, 0, 0, "") + replyFrame(""));
    ASSERT_TRUE(collector.hasReceived(2)) << "a frame with a bad magic is skipped";
    EXPECT_EQ(collector.received(),
              (std::vector<std::string>{"event 1>context", "<null>>context"}));
    piSocket::shutdown(pair.peer);
    receiver.join();
    EXPECT_EQ(log.missing({"\nAsyncEventReceiver thread starting\n",
                           "\nAsyncEventReceiver calling getMessage with socket ",
                           "\nAsyncEventReceiver thread terminating\n"}),
              "");

    SocketPair quiet;
    idle.setSocket(quiet.ours);
    ASSERT_TRUE(idle.activate());
    idle.stop();
    idle.join();
    EXPECT_TRUE(idle.threadFinished()) << "stop ends a receiver that waits for data";
}

TEST(AutoConnectPoller, PortFileThatAppearsIsReportedOnceAndStopPollingEndsQuietly) {
    const std::string path = ::testing::TempDir() + "tq_poller.port";
    std::remove(path.c_str());
    IPCPortFile portFile(path.c_str());
    Collector collector;
    IPCMessageDispatcher dispatcher(&collector);
    AutoConnectPoller poller(&portFile, 10, &dispatcher), stopped(&portFile, 10000, &dispatcher);
    LogCapture log;
    ASSERT_TRUE(stopped.activate());
    stopped.stopPolling();
    stopped.join();
    EXPECT_FALSE(stopped.getContinueFlag());
    ASSERT_TRUE(poller.activate());
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    EXPECT_TRUE(collector.received().empty());
    writeText(path, "owner = 2\nport = 4242\n");
    ASSERT_TRUE(collector.hasReceived(1));
    poller.join();
    EXPECT_EQ(collector.received(), std::vector<std::string>{"status 0>-"}) << "FOUND_PORTFILE";
    EXPECT_EQ(portFile.port(), 4242);
    EXPECT_EQ(log.missing({"\nAuto Polling started\n",
                           "\nSending FOUND_PORTFILE to main thread\n\nAuto Poller terminating\n"}),
              "");
    std::remove(path.c_str());
}
