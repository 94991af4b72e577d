// The command server under many and misbehaving clients: all 16 slots busy at once, a burst
// of connect/quit cycles (some closing without reading their replies) that leaves descriptors
// and threads where they were, and a client that never reads its replies.
#include "IpcTestSupport.h"

namespace {
using TclServerReliability = ServerTest;

int openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

int threads() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("Threads:", 0) == 0)
            return std::stoi(line.substr(8));
    return -1;
}
} // namespace

TEST_F(TclServerReliability, SixteenClients_AreServedAtOnceAndASeventeenthIsRefused) {
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < TclCommandServer::maxConnections; ++i) {
        clients.push_back(std::make_unique<RawClient>(server.port()));
        ASSERT_TRUE(eventually([&] { return server.numConnections() == i + 1; }));
    }
    RawClient refused(server.port());
    EXPECT_TRUE(refused.closedByServer()) << "the seventeenth gets the end of the stream";
    std::vector<std::thread> threads;
    std::atomic<int> answered{0};
    for (auto& client : clients)
        threads.emplace_back([&answered, raw = client.get()] {
            for (int i = 0; i < 20; ++i)
                answered += raw->request("beep") == beeped;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(answered.load(), 16 * 20);
    clients.pop_back();
    ASSERT_TRUE(eventually([&] { return server.numConnections() == 15; }));
    EXPECT_EQ(RawClient(server.port()).request("beep"), beeped) << "a freed slot is used again";
}

TEST_F(TclServerReliability, TwoThousandConnectQuitCycles_LeaveDescriptorsAndThreadsAsTheyWere) {
    {
        RawClient warmUp(server.port());
        ASSERT_EQ(warmUp.request("beep"), beeped);
    }
    ASSERT_TRUE(eventually([&] { return server.numConnections() == 0; }));
    // The thread count once it stops changing: a connection's thread that just ended may take
    // a moment to go.
    int threadsBefore = threads();
    for (int i = 0; i < 100 && eventually([&] { return threads() != threadsBefore; }, 20); ++i)
        threadsBefore = threads();
    const int descriptorsBefore = openDescriptors();
    // Every fourth client is answered and quits, the next asks and hangs up without reading,
    // the next quits at once and the last just hangs up, which the server takes as quit.
    for (int cycle = 0; cycle < 2000; ++cycle) {
        RawClient client(server.port());
        ASSERT_TRUE(client.connected()) << cycle;
        if (cycle % 4 == 0) {
            ASSERT_EQ(client.request("beep"), beeped) << cycle;
        }
        ASSERT_TRUE(cycle % 4 == 3 || client.sendScript(cycle % 4 == 1 ? "beep" : "quit"));
        if (cycle % 2 == 0) {
            ASSERT_TRUE(client.closedByServer()) << cycle;
        }
    }
    EXPECT_EQ(RawClient(server.port()).request("beep"), beeped) << "the server still answers";
    EXPECT_TRUE(eventually([&] { return server.numConnections() == 0; }));
    EXPECT_TRUE(eventually([&] { return openDescriptors() == descriptorsBefore; }))
        << openDescriptors() << " descriptors, " << descriptorsBefore << " before";
    EXPECT_TRUE(eventually([&] { return threads() == threadsBefore; }))
        << threads() << " threads, " << threadsBefore << " before";
}

TEST_F(TclServerReliability, ClientThatNeverReads_IsDroppedAndOthersAreStillServed) {
    server.setSendTimeout(200); // taken by the connections accepted from now on
    RawClient stubborn(server.port());
    // Far more reply bytes than the socket buffers hold; the client reads none of them.
    std::string burst;
    for (int i = 0; i < 400; ++i)
        burst += RawClient::frame("say [string repeat b 65536]");
    std::thread writer([&] { stubborn.sendBytes(burst); });
    RawClient polite(server.port());
    EXPECT_TRUE(eventually([&] { return polite.request("beep") == beeped; }, 10000));
    EXPECT_TRUE(eventually([&] { return server.numConnections() == 1; }, 10000))
        << "the stubborn client was let go";
    stubborn.close();
    writer.join();
    EXPECT_EQ(polite.request("beep"), beeped);
}
