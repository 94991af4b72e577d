// The command server end to end over loopback: wire format, built-in commands, the
// receive cut, the hand-over to the servicing thread, broadcast, the timer and the port file.
#include "IpcTestSupport.h"

#include "core/appiApplication.h"
#include "ipc/IPCPortFile.h"
#include "ipc/TclServerConnectionAcceptor.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <tcl.h>

int TestServer::announceCmd(TclServerCommand* command) {
    if (command->objc() != 2)
        return TCL_ERROR;
    broadcast(TCS_STATUS, Tcl_GetString(command->objv()[1]));
    return TCL_OK;
}

namespace {
class TclCommandServerTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server.start()); }
    QuietSystem system;
    TestServer server;
};

std::string beepScriptOfLength(std::size_t length) {
    std::string script = "beep ;#";
    script.resize(length, 'x');
    return script;
}
} // namespace

TEST_F(TclCommandServerTest, Beep_AnswersWithTheExactHeaderAndText) {
    RawClient client(server.port());
    ASSERT_TRUE(client.connected());
    ASSERT_TRUE(client.sendScript("beep"));
    char raw[IPCHeader::size + 16];
    ASSERT_EQ(piSocket::waitReadable(client.socket(), 5000), 1);
    ASSERT_EQ(piSocket::receiveAll(client.socket(), raw, sizeof raw), long(sizeof raw));
    const unsigned char expected[] = {0xC0, 0xCA, 0xC0, 0x1A, 0, 0,  0, 16, 0, 0,
                                      0,    12,   0,    0,    0, 14, 0, 0,  0, 16};
    EXPECT_EQ(std::string(raw, IPCHeader::size),
              std::string(reinterpret_cast<const char*>(expected), sizeof expected));
    EXPECT_EQ(std::string(raw + IPCHeader::size, 16), "Beep you back...");
    EXPECT_EQ(system.beeps.load(), 1);
}

TEST_F(TclCommandServerTest, Scripts_AnswerAsTheProtocolSays) {
    struct Case {
        const char* script;
        const char* reply;
    } cases[] = {
        {"beep", "Beep you back..."},
        {"no_such_command", "Bad command"},
        {"set x 1", "<no reply>"}, // a script whose commands send nothing gets no reply
        {"empty", ""},
        {"nulltext", ""},
        {"subscribe", "subscribed"},
    };
    RawClient client(server.port());
    for (const Case& c : cases) {
        ASSERT_TRUE(client.sendScript(c.script)) << c.script;
        const std::optional<Reply> reply =
            client.readReply(std::string(c.reply) == "<no reply>" ? 200 : 5000);
        EXPECT_EQ(reply ? reply->text : "<no reply>", c.reply) << c.script;
        if (reply) {
            EXPECT_EQ(reply->header.length, reply->header.value) << c.script;
            EXPECT_EQ(reply->header.reserved, 12);
            EXPECT_EQ(reply->header.code, 14);
        }
    }
    // A script that answered and then failed gets both replies, in order.
    ASSERT_TRUE(client.sendScript("beep; error boom"));
    for (const char* expected : {"Beep you back...", "Bad command"}) {
        const std::optional<Reply> reply = client.readReply();
        EXPECT_EQ(reply ? reply->text : "<no reply>", expected);
    }
}

TEST_F(TclCommandServerTest, FailedScript_IsAnsweredBadCommandAndTheErrorGoesToTheApplication) {
    RawClient client(server.port());
    EXPECT_EQ(client.request("error {the reason}"), "Bad command");
    EXPECT_EQ(server.lastError(), "the reason");
}

TEST_F(TclCommandServerTest, EmptyReply_IsABareHeaderWithBothLengthsZero) {
    RawClient client(server.port());
    for (const char* script : {"empty", "nulltext"}) {
        ASSERT_TRUE(client.sendScript(script));
        const std::optional<Reply> reply = client.readReply();
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->header.length, 0);
        EXPECT_EQ(reply->header.value, 0);
        EXPECT_EQ(piSocket::waitReadable(client.socket(), 50), 0) << "nothing follows the header";
    }
}

TEST_F(TclCommandServerTest, ScriptOf1023Bytes_IsReadWhole) {
    RawClient client(server.port());
    const std::string script = beepScriptOfLength(1022) + "\n";
    ASSERT_EQ(script.size(), 1023u);
    EXPECT_EQ(client.request(script), "Beep you back...");
    EXPECT_EQ(client.request("beep"), "Beep you back...") << "no surplus was left behind";
}

TEST_F(TclCommandServerTest, ScriptOf1024BytesOrMore_IsCutAndItsSurplusReadAsTheNextHeader) {
    struct Case {
        std::size_t length;
    } cases[] = {{1024}, {1027}, {1030}};
    for (const Case& c : cases) {
        RawClient client(server.port());
        // 1023 bytes of script, then the surplus: the start of a length header for "beep",
        // whose remaining header bytes and text are sent separately.
        const std::string next = RawClient::frame("beep");
        const std::size_t surplus = c.length - 1023;
        ASSERT_LE(surplus, next.size());
        std::string bytes = RawClient::lengthPrefix(c.length) + beepScriptOfLength(1023);
        bytes += next.substr(0, surplus);
        ASSERT_TRUE(client.sendBytes(bytes));
        ASSERT_TRUE(client.sendBytes(next.substr(surplus)));
        for (int reply = 0; reply < 2; ++reply) {
            const std::optional<Reply> answer = client.readReply();
            EXPECT_EQ(answer ? answer->text : "<no reply>", "Beep you back...")
                << "length " << c.length << ", reply " << reply;
        }
    }
}

TEST_F(TclCommandServerTest, QuitCommands_CloseTheConnectionAndFreeItsSlot) {
    for (const char* script : {"quit", "exit", "disconnect"}) {
        RawClient client(server.port());
        ASSERT_EQ(client.request("beep"), "Beep you back...");
        ASSERT_TRUE(eventually([&] { return server.numConnections() == 1; }));
        ASSERT_TRUE(client.sendScript(script));
        EXPECT_TRUE(client.closedByServer()) << script;
        EXPECT_TRUE(eventually([&] { return server.numConnections() == 0; })) << script;
    }
    EXPECT_TRUE(eventually([&] { return server.removed.load() == 3; }));
}

TEST_F(TclCommandServerTest, BrokenClients_AreTakenAsQuitWithTheirLogLines) {
    struct Case {
        const char* name;
        std::string bytes;
        const char* logLine;
    } cases[] = {
        {"closes mid-header", std::string("\0\0", 2),
         "\nTclConnectionWithClient failed to read header, received = 2\n"},
        {"closes at once", "", "\nTclConnectionWithClient failed to read header, received = 0\n"},
        {"sends an empty script", RawClient::lengthPrefix(0),
         "\nTclConnectionWithClient failed to read message, received 0 bytes out of 0\n"},
        {"closes mid-script", RawClient::lengthPrefix(10) + "bee",
         "\nTclConnectionWithClient received 'bee'\n"},
    };
    for (const Case& c : cases) {
        LogCapture log;
        {
            RawClient client(server.port());
            ASSERT_TRUE(client.connected());
            ASSERT_TRUE(eventually([&] { return server.numConnections() == 1; })) << c.name;
            ASSERT_TRUE(c.bytes.empty() || client.sendBytes(c.bytes)) << c.name;
        }
        EXPECT_TRUE(eventually([&] { return server.numConnections() == 0; })) << c.name;
        EXPECT_TRUE(eventually([&] { return log.contains("thread terminating"); })) << c.name;
        EXPECT_TRUE(log.contains(c.logLine)) << c.name << "\n" << log.captured();
    }
    RawClient survivor(server.port());
    EXPECT_EQ(survivor.request("beep"), "Beep you back...");
}

TEST_F(TclCommandServerTest, SendResp_LogsTheTextTheByteCountAndADump) {
    RawClient client(server.port());
    ASSERT_EQ(client.request("where"), client.request("where"));
    LogCapture log;
    ASSERT_EQ(client.request("beep"), "Beep you back...");
    // The lines of one response come from one thread, together; the reply may reach the
    // client before the last of them is written.
    const std::string expected = "\nTclConnectionWithClient::sendResp of 'Beep you back...'\n"
                                 "\nTclConnectionWithClient::sendResp type __TCS__RESULT__\n"
                                 "\nTclConnectionWithClient::sendResp sent '36' bytes\n"
                                 "message is"
                                 "00000000: c0 ca c0 1a 00 00 00 10 00 00 00 0c 00 00 00 0e  "
                                 "................\n"
                                 "00000010: 00 00 00 10 42 65 65 70 20 79 6f 75 20 62 61 63  "
                                 "....Beep you bac\n";
    EXPECT_TRUE(eventually([&] { return log.contains(expected); })) << log.captured();
    EXPECT_TRUE(log.contains("\nTclConnectionWithClient received 'beep'\n"));
}

TEST_F(TclCommandServerTest, HandOver_RunsSyncCommandsOnTheServicingThreadAndAsyncOnesOnTheirOwn) {
    RawClient first(server.port());
    RawClient second(server.port());
    const std::string servicerOfFirst = first.request("where");
    const std::string servicerOfSecond = second.request("where");
    const std::string ownOfFirst = first.request("here");
    const std::string ownOfSecond = second.request("here");
    EXPECT_EQ(servicerOfFirst, servicerOfSecond) << "one servicing thread for every client";
    EXPECT_NE(ownOfFirst, ownOfSecond) << "each client has its own thread";
    EXPECT_NE(ownOfFirst, servicerOfFirst);
}

TEST_F(TclCommandServerTest, SixteenClients_AreServedAtOnceAndASeventeenthIsRefused) {
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < TclCommandServer::maxConnections; ++i) {
        clients.push_back(std::make_unique<RawClient>(server.port()));
        ASSERT_TRUE(eventually([&] { return server.numConnections() == i + 1; }));
    }
    RawClient refused(server.port());
    EXPECT_TRUE(refused.closedByServer()) << "the seventeenth gets the end of the stream";
    std::vector<std::thread> threads;
    std::atomic<int> answered{0};
    for (auto& client : clients) {
        threads.emplace_back([&answered, raw = client.get()] {
            for (int i = 0; i < 20; ++i)
                answered += raw->request("beep") == "Beep you back...";
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(answered.load(), 16 * 20);
    clients.pop_back();
    ASSERT_TRUE(eventually([&] { return server.numConnections() == 15; }));
    RawClient seventeenth(server.port());
    EXPECT_EQ(seventeenth.request("beep"), "Beep you back...") << "a freed slot is used again";
}

TEST_F(TclCommandServerTest, Broadcast_ReachesOnlySubscribedClients) {
    RawClient listener(server.port());
    RawClient bystander(server.port());
    RawClient speaker(server.port());
    ASSERT_EQ(listener.request("subscribe"), "subscribed");
    ASSERT_TRUE(speaker.sendScript("announce hello"));
    const std::optional<Reply> heard = listener.readReply();
    EXPECT_EQ(heard ? heard->text : "<none>", "hello");
    EXPECT_FALSE(bystander.readReply(100));
    EXPECT_FALSE(speaker.readReply(100));
}

TEST_F(TclCommandServerTest, RequestStop_ReleasesAWaitingSenderWithAnError) {
    TestServer idle(false); // no servicing thread: a handed-over command waits
    ASSERT_TRUE(idle.start());
    RawClient client(idle.port());
    ASSERT_TRUE(client.sendScript("where"));
    ASSERT_TRUE(eventually([&] {
        idle.commandMutex().vAquire();
        const bool waiting = idle.pendingCommands() == 1;
        idle.commandMutex().vRelease();
        return waiting;
    }));
    idle.stop();
    while (client.readReply(1000)) {
        // the released sender may still answer "Bad command" before the stream ends
    }
    EXPECT_TRUE(client.closedByServer());
    EXPECT_EQ(idle.numConnections(), 0);
}

TEST(TclCommandServerSafety, SafeInterpreters_RefuseFileAccessThatNormalOnesAllow) {
    QuietSystem system;
    for (const bool safe : {false, true}) {
        TestServer server;
        server.setSafeInterpreters(safe);
        ASSERT_TRUE(server.start());
        RawClient client(server.port());
        EXPECT_EQ(client.request("close [open /dev/null]; beep"),
                  safe ? "Bad command" : "Beep you back...");
    }
}

TEST(TclCommandServerTimer, TimeoutCommand_RunsWhenNoClientConnected) {
    QuietSystem system;
    LogCapture log;
    TestServer server;
    server.timeoutMilliseconds = 50;
    ASSERT_TRUE(server.start());
    EXPECT_TRUE(eventually([&] { return server.timeouts.load() == 1; }));
    TestServer busy;
    busy.timeoutMilliseconds = 200;
    ASSERT_TRUE(busy.start());
    RawClient client(busy.port());
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    EXPECT_EQ(client.request("count"), "0") << "a connected client keeps the timer quiet";
}

TEST(TclCommandServerNoThreads, PollingMode_ServesClientsOnTheCallersThread) {
    QuietSystem system;
    appiApplication application;
    application.setDisableThreads(1);
    TestServer server;
    appiApplication::setCurrent(nullptr);
    ASSERT_FALSE(server.usingThreads());
    ASSERT_TRUE(server.start());
    std::atomic<bool> stop{false};
    // Without threads the interpreters belong to the polling thread: it also stops the server.
    std::thread poller([&] {
        while (!stop)
            server.waitForCommand();
        server.stop();
        Tcl_FinalizeThread();
    });
    {
        RawClient first(server.port());
        RawClient second(server.port());
        EXPECT_EQ(first.request("beep"), "Beep you back...");
        EXPECT_EQ(second.request("nonsense"), "Bad command");
        EXPECT_EQ(first.request("where"), second.request("here")) << "one thread does it all";
        ASSERT_TRUE(first.sendScript("quit"));
        EXPECT_TRUE(first.closedByServer());
        EXPECT_EQ(second.request("beep"), "Beep you back...");
    }
    EXPECT_TRUE(eventually([&] { return server.numConnections() == 0; }));
    stop = true;
    poller.join();
    EXPECT_EQ(server.numConnections(), 0);
}

TEST(TclCommandServerPortFile, OwnerOne_ListensOnTheStoredPortAndLeavesTheFile) {
    const std::string path = ::testing::TempDir() + "tq_owner1.port";
    // Find a free port by letting the system choose one for a server that then stops.
    int port;
    {
        IPCPortFile probe(path.c_str());
        TestServer server;
        server.setIPCPortFile(&probe);
        ASSERT_TRUE(server.start());
        port = server.port();
    }
    {
        std::ofstream out(path);
        out << "port = " << port << "\nowner = 1\n";
    }
    IPCPortFile portFile(path.c_str());
    QuietSystem system;
    TestServer server;
    server.setIPCPortFile(&portFile);
    ASSERT_TRUE(server.start());
    EXPECT_EQ(server.port(), port);
    RawClient client(port);
    EXPECT_EQ(client.request("beep"), "Beep you back...");
    server.stop();
    std::ifstream in(path);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text, "port = " + std::to_string(port) + "\nowner = 1\n") << "not rewritten";
    std::remove(path.c_str());
}

TEST(TclCommandServerPortFile, NoUsablePortFile_WritesOwnerTwoAndRemovesItOnStop) {
    const std::string path = ::testing::TempDir() + "tq_owner2.port";
    for (const char* before : {"", "owner = 2\nport = 1\n", "port = 1\n"}) {
        if (*before) {
            std::ofstream out(path);
            out << before;
        }
        IPCPortFile portFile(path.c_str());
        TestServer server;
        server.setIPCPortFile(&portFile);
        ASSERT_TRUE(server.start());
        EXPECT_EQ(server.listeningPort, server.port());
        std::ifstream in(path);
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        EXPECT_EQ(text, "owner = 2\nport = " + std::to_string(server.port()) + "\n") << before;
        struct stat status {};
        ASSERT_EQ(::stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600u) << "readable and writable by its owner only";
        EXPECT_STREQ(TclServerConnectionAcceptor::signalPortFilePath(), path.c_str());
        server.stop();
        EXPECT_FALSE(std::filesystem::exists(path)) << before;
        EXPECT_STREQ(TclServerConnectionAcceptor::signalPortFilePath(), "");
    }
}

TEST(TclCommandServerPortFile, UnusablePort_FailsWithTheBindMessage) {
    const std::string path = ::testing::TempDir() + "tq_busy.port";
    QuietSystem system;
    TestServer holder;
    ASSERT_TRUE(holder.start());
    {
        std::ofstream out(path);
        out << "owner = 1\nport = " << holder.port() << "\n";
    }
    IPCPortFile portFile(path.c_str());
    TestServer server;
    server.setIPCPortFile(&portFile);
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(server.start());
    const std::string printed = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(printed.rfind("Communications error: bind(): Error = ", 0), 0u) << printed;
    std::remove(path.c_str());
}

TEST(TclConnectionWithClientStatic, EncodeRespAndWriteInt_GiveTheMarkersAndBigEndianBytes) {
    struct Case {
        TclServerRespType type;
        const char* marker;
    } cases[] = {{TCS_NONE, ""},
                 {TCS_ERROR, "__TCS__ERROR__"},
                 {TCS_RESULT, "__TCS__RESULT__"},
                 {TCS_START_RESULT, "__TCS__START__RESULT__"},
                 {TCS_END, "__TCS__END__"},
                 {TCS_STATUS, "__TCS__STATUS__"},
                 {TCS_PROMPT, "__TCS__PROMPT__"},
                 {TCS_DISCONNECT, "__TCS__DISCONNECT__"},
                 {static_cast<TclServerRespType>(8), ""}};
    for (const Case& c : cases)
        EXPECT_STREQ(TclConnectionWithClient::encodeResp(c.type), c.marker) << c.type;
    char buffer[8] = {};
    char* end = TclConnectionWithClient::writeInt(buffer, static_cast<int>(0xC0CAC01A));
    EXPECT_EQ(end, buffer + 4);
    EXPECT_EQ(std::string(buffer, 4), "\xC0\xCA\xC0\x1A");
}
