// The command server end to end over loopback: wire format, built-in commands, the
// receive cut, the hand-over to the servicing thread, broadcast, stopping, the polling mode
// and the port file.
#include "IpcTestSupport.h"

#include "core/appiApplication.h"
#include "ipc/IPCPortFile.h"
#include "ipc/TclServerConnectionAcceptor.h"

using TclCommandServerTest = ServerTest;

// A null or empty text is a bare header; the next reply follows it at once. Each reply is
// logged with its text, its type, its byte count and a dump.
TEST_F(TclCommandServerTest, RepliesAreTheExactHeaderAndTextInOrderAndLogged) {
    LogCapture log;
    RawClient client(server.port());
    ASSERT_TRUE(client.sendScript("say; say {}; beep"));
    const std::string empty("\xC0\xCA\xC0\x1A\0\0\0\0\0\0\0\x0C\0\0\0\x0E\0\0\0\0", 20);
    const std::string header("\xC0\xCA\xC0\x1A\0\0\0\x10\0\0\0\x0C\0\0\0\x0E\0\0\0\x10", 20);
    EXPECT_EQ(client.readBytes(76), empty + empty + header + beeped);
    EXPECT_EQ(client.replyText(50), "<no reply>") << "nothing more";
    EXPECT_EQ(system.beeps.load(), 1);
    // The lines of one response come from one thread, together; the reply may reach the
    // client before the last of them is written.
    const std::string resp = "\nTclConnectionWithClient::sendResp ";
    const std::vector<std::string> lines = {
        "\nTclConnectionWithClient received 'say; say {}; beep'\n" + resp + "of 'NULL'\n",
        resp + "of ''\n",
        resp + "of 'Beep you back...'\n" + resp + "type __TCS__RESULT__\n" + resp +
            "sent '36' bytes\nmessage is"
            "00000000: c0 ca c0 1a 00 00 00 10 00 00 00 0c 00 00 00 0e  ................\n"
            "00000010: 00 00 00 10 42 65 65 70 20 79 6f 75 20 62 61 63  ....Beep you bac\n"};
    EXPECT_TRUE(eventually([&] { return log.missing(lines).empty(); })) << log.missing(lines);
}

TEST_F(TclCommandServerTest, ScriptsAnswerAsTheProtocolSays) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"no_such_command", {"Bad command"}},
        {"set x 1", {}}, // a script whose commands send nothing gets no reply
        {"say [string repeat b 65536]", {std::string(65536, 'b')}},
        {"beep; error boom", {beeped, "Bad command"}},
        {"error {the reason}", {"Bad command"}}};
    RawClient client(server.port());
    for (const auto& [script, replies] : cases) {
        ASSERT_TRUE(client.sendScript(script));
        for (const std::string& expected : replies)
            EXPECT_EQ(client.replyText(), expected) << script;
        EXPECT_EQ(client.replyText(replies.empty() ? 200 : 20), "<no reply>") << script;
    }
    EXPECT_EQ(server.lastError(), "the reason") << "the error goes to the application";
}

// Up to 1023 bytes of script are read whole; of a longer one the first 1023 bytes run and the
// surplus is read as the start of the next header.
TEST_F(TclCommandServerTest, ScriptOver1023BytesIsCutAndItsSurplusReadAsTheNextHeader) {
    const std::string next = RawClient::frame("beep");
    std::string script = "beep ;#";
    script.resize(1023, 'x');
    for (const std::size_t length : {1023, 1024, 1027, 1030}) {
        RawClient client(server.port());
        const std::size_t surplus = length - 1023;
        ASSERT_TRUE(
            client.sendBytes(RawClient::lengthPrefix(length) + script + next.substr(0, surplus)));
        ASSERT_TRUE(client.sendBytes(next.substr(surplus)));
        EXPECT_EQ(client.replyText(), beeped) << length;
        EXPECT_EQ(client.replyText(), beeped) << length;
        EXPECT_EQ(client.replyText(20), "<no reply>") << length;
    }
}

// A quit command, an empty script and a client that stops short (which the server takes as
// quit) each end the connection and free its slot, with their log lines.
TEST_F(TclCommandServerTest, QuitAndBrokenClientsEndTheConnectionWithTheirLogLines) {
    const std::tuple<std::string, const char*, bool> cases[] = {
        // bytes, log line, server closes
        {RawClient::frame("quit"), "received 'quit'\n", true},
        {RawClient::frame("exit"), "received 'exit'\n", true},
        {RawClient::frame("disconnect"), "received 'disconnect'\n", true},
        {RawClient::lengthPrefix(0), "failed to read message, received 0 bytes out of 0\n", true},
        {std::string("\0\0", 2), "failed to read header, received = 2\n", false}, // mid-header
        {"", "failed to read header, received = 0\n", false},                     // at once
        {RawClient::lengthPrefix(10) + "bee", "received 'bee'\n", false}};        // mid-script
    for (const auto& [bytes, logLine, serverCloses] : cases) {
        LogCapture log;
        {
            RawClient client(server.port());
            ASSERT_TRUE(eventually([&] { return server.numConnections() == 1; })) << logLine;
            ASSERT_TRUE(bytes.empty() || client.sendBytes(bytes)) << logLine;
            EXPECT_EQ(serverCloses && client.closedByServer(), serverCloses) << logLine;
        }
        EXPECT_TRUE(eventually([&] { return server.numConnections() == 0; })) << logLine;
        EXPECT_TRUE(eventually([&] { return log.contains("thread terminating"); })) << logLine;
        EXPECT_EQ(log.missing({"\nTclConnectionWithClient " + std::string(logLine),
                               "\nTclServerConnectionAcceptor got a connection\n",
                               "\nTclConnectionWithClient thread starting\n"}),
                  "");
    }
    EXPECT_EQ(server.removed.load(), int(std::size(cases)));
    EXPECT_EQ(RawClient(server.port()).request("beep"), beeped) << "the server still answers";
}

// Sync commands run on the one servicing thread; async ones on their connection's own thread,
// where sendResp still answers their own client.
TEST_F(TclCommandServerTest, HandOverRunsSyncCommandsOnTheServicingThreadAndAsyncOnesOnTheirOwn) {
    RawClient first(server.port()), second(server.port());
    const std::string servicer = first.request("where"), ownOfFirst = first.request("here");
    EXPECT_EQ(second.request("where"), servicer);
    EXPECT_NE(second.request("here"), ownOfFirst);
    EXPECT_NE(ownOfFirst, servicer);
}

TEST_F(TclCommandServerTest, BroadcastReachesOnlySubscribedClients) {
    RawClient listener(server.port()), bystander(server.port()), speaker(server.port());
    ASSERT_EQ(listener.request("subscribe"), "subscribed");
    ASSERT_TRUE(speaker.sendScript("announce hello"));
    EXPECT_EQ(listener.replyText(), "hello");
    EXPECT_EQ(bystander.replyText(100), "<no reply>");
    EXPECT_EQ(speaker.replyText(100), "<no reply>");
}

TEST_F(TclCommandServerTest, RequestStopReleasesAWaitingSenderWithAnError) {
    TestServer idle(false); // no servicing thread: a handed-over command waits
    ASSERT_TRUE(idle.start());
    RawClient client(idle.port());
    ASSERT_TRUE(client.sendScript("where"));
    ASSERT_TRUE(eventually([&] {
        std::lock_guard lock(idle.commandMutex().mutex());
        return idle.pendingCommands() == 1;
    }));
    idle.stop();
    // The released sender may still answer "Bad command" before the stream ends.
    const std::string reply = client.replyText();
    EXPECT_TRUE(reply == "Bad command" || reply == "<closed>") << reply;
    EXPECT_TRUE(client.closedByServer());
    EXPECT_EQ(idle.numConnections(), 0);
}

TEST(TclCommandServerNoThreads, PollingModeServesClientsOnTheCallersThread) {
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
        RawClient first(server.port()), second(server.port());
        EXPECT_EQ(first.request("beep"), beeped);
        EXPECT_EQ(second.request("nonsense"), "Bad command");
        EXPECT_EQ(first.request("where"), second.request("here")) << "one thread does it all";
        ASSERT_TRUE(first.sendScript("quit"));
        EXPECT_TRUE(first.closedByServer());
        EXPECT_EQ(second.request("beep"), beeped);
    }
    EXPECT_TRUE(eventually([&] { return server.numConnections() == 0; }));
    stop = true;
    poller.join();
}

// A port file with owner 1 orders the port: the server listens there and leaves the file, or
// fails with the bind message while the port is taken. Any other file, or none, is replaced by
// one with owner 2, which goes when the server stops.
TEST_F(TclCommandServerTest, PortFileOfOwnerOneOrdersThePortAndAnyOtherIsReplaced) {
    const std::string path = ::testing::TempDir() + "tq_server.port";
    const int taken = server.port();
    const std::string ordered = "port = " + std::to_string(taken) + "\nowner = 1\n";
    const std::pair<std::string, bool> cases[] = {// the file ("": none), whether it starts
                                                  {ordered, false},
                                                  {"", true},
                                                  {"owner = 2\nport = 1\n", true},
                                                  {"port = 1\n", true},
                                                  {ordered, true}};
    for (const auto& [text, starts] : cases) {
        if (text == ordered && starts)
            server.stop();
        LogCapture log;
        std::remove(path.c_str());
        if (!text.empty())
            writeText(path, text);
        IPCPortFile portFile(path.c_str());
        TestServer other;
        other.setIPCPortFile(&portFile);
        ::testing::internal::CaptureStderr();
        ASSERT_EQ(other.start(), starts) << text;
        const std::string errors = ::testing::internal::GetCapturedStderr();
        if (!starts) {
            EXPECT_EQ(errors.rfind("Communications error: bind(): Error = ", 0), 0u) << errors;
            continue;
        }
        const std::string written = "owner = 2\nport = " + std::to_string(other.port()) + "\n";
        EXPECT_EQ(readText(path), text == ordered ? text : written);
        EXPECT_STREQ(TclServerConnectionAcceptor::signalPortFilePath(),
                     text == ordered ? "" : path.c_str());
        EXPECT_EQ(other.listeningPort, other.port());
        EXPECT_EQ(other.port() == taken, text == ordered);
        EXPECT_EQ(RawClient(other.port()).request("beep"), beeped) << text;
        other.stop();
        EXPECT_EQ(std::filesystem::exists(path), text == ordered) << "left, or removed";
        EXPECT_STREQ(TclServerConnectionAcceptor::signalPortFilePath(), "");
        EXPECT_EQ(log.missing({"\nTclServerConnectionAcceptor thread starting\n",
                               "\nTclServerConnectionAcceptor thread terminating\n"}),
                  "");
    }
    std::remove(path.c_str());
}

TEST(TclConnectionWithClientStatic, EncodeRespAndWriteIntGiveTheMarkersAndBigEndianBytes) {
    // TCS_NONE to TCS_DISCONNECT, then a value that is no type
    // clang-format off
    const char* const markers[] = {"", "__TCS__ERROR__", "__TCS__RESULT__",
        "__TCS__START__RESULT__", "__TCS__END__", "__TCS__STATUS__", "__TCS__PROMPT__",
        "__TCS__DISCONNECT__", ""};
    // clang-format on
    for (int type = 0; type < 9; ++type)
        EXPECT_STREQ(TclConnectionWithClient::encodeResp(TclServerRespType(type)), markers[type]);
    char buffer[4];
    EXPECT_EQ(TclConnectionWithClient::writeInt(buffer, int(0xC0CAC01A)), buffer + 4);
    EXPECT_EQ(std::string(buffer, 4), "\xC0\xCA\xC0\x1A");
}
