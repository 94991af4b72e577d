// The command server under misbehaving and many clients: a burst of connect/quit cycles
// leaves descriptors and threads where they were, and clients that never read their
// replies do not hold up the others.
#include "IpcTestSupport.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <fstream>

namespace {
int openDescriptors() {
    int count = 0;
    DIR* directory = ::opendir("/proc/self/fd");
    while (directory && ::readdir(directory))
        ++count;
    if (directory)
        ::closedir(directory);
    return count;
}

int threads() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("Threads:", 0) == 0)
            return std::stoi(line.substr(8));
    }
    return -1;
}

// The thread count once it has stopped changing: threads of connections that just ended
// may take a moment to go.
int settledThreads() {
    int previous = threads();
    for (int i = 0; i < 100; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        const int now = threads();
        if (now == previous)
            return now;
        previous = now;
    }
    return previous;
}
} // namespace

TEST(TclServerReliability, TwoThousandConnectQuitCycles_LeaveDescriptorsAndThreadsAsTheyWere) {
    QuietSystem system;
    TestServer server;
    ASSERT_TRUE(server.start());
    {
        RawClient warmUp(server.port());
        ASSERT_EQ(warmUp.request("beep"), "Beep you back...");
        ASSERT_TRUE(warmUp.sendScript("quit"));
        ASSERT_TRUE(warmUp.closedByServer());
    }
    ASSERT_TRUE(eventually([&] { return server.numConnections() == 0; }));
    const int threadsBefore = settledThreads();
    const int descriptorsBefore = openDescriptors();
    for (int cycle = 0; cycle < 2000; ++cycle) {
        RawClient client(server.port());
        ASSERT_TRUE(client.connected()) << cycle;
        if (cycle % 4 == 0) {
            ASSERT_EQ(client.request("beep"), "Beep you back...") << cycle;
        }
        if (cycle % 2 == 0) {
            ASSERT_TRUE(client.sendScript("quit"));
            ASSERT_TRUE(client.closedByServer()) << cycle;
        }
        // Odd cycles just hang up, which the server takes as quit.
    }
    RawClient after(server.port());
    EXPECT_EQ(after.request("beep"), "Beep you back...") << "the server still answers";
    after.close();
    EXPECT_TRUE(eventually([&] { return server.numConnections() == 0; }));
    EXPECT_TRUE(eventually([&] { return openDescriptors() == descriptorsBefore; }))
        << openDescriptors() << " descriptors, " << descriptorsBefore << " before";
    EXPECT_TRUE(eventually([&] { return threads() == threadsBefore; }))
        << threads() << " threads, " << threadsBefore << " before";
}

TEST(TclServerReliability, ClientThatNeverReads_IsDroppedAndOthersAreStillServed) {
    QuietSystem system;
    TestServer server;
    server.setSendTimeout(200);
    ASSERT_TRUE(server.start());
    RawClient stubborn(server.port());
    // Far more reply bytes than the socket buffers hold; the client reads none of them.
    std::string burst;
    for (int i = 0; i < 400; ++i)
        burst += RawClient::frame("big");
    std::thread writer([&] { stubborn.sendBytes(burst); });
    RawClient polite(server.port());
    EXPECT_TRUE(eventually([&] { return polite.request("beep") == "Beep you back..."; }, 10000));
    EXPECT_TRUE(eventually([&] { return server.numConnections() == 1; }, 10000))
        << "the stubborn client was let go";
    stubborn.close();
    writer.join();
    EXPECT_EQ(polite.request("beep"), "Beep you back...");
}

TEST(TclServerReliability, ClientsThatCloseWithoutReading_DoNotDisturbTheServer) {
    QuietSystem system;
    TestServer server;
    ASSERT_TRUE(server.start());
    // Few enough that the listen backlog of 5 does not make the clients' connects retry.
    for (int i = 0; i < 12; ++i) {
        RawClient client(server.port());
        ASSERT_TRUE(client.sendScript("beep"));
        ASSERT_TRUE(client.sendScript("beep"));
    }
    RawClient last(server.port());
    EXPECT_EQ(last.request("beep"), "Beep you back...");
    EXPECT_TRUE(eventually([&] { return server.numConnections() == 1; }));
}
