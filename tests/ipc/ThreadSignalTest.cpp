// ThreadMainObject, ProtectedResource and SyncSignal: sends are never lost, waits end only
// for a send or their time limit, and thread objects start, finish and join as promised.
#include "ipc/ProtectedResource.h"
#include "ipc/ThreadMainObject.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {
struct Counter : ThreadMainObject {
    explicit Counter(bool pseudo) : ThreadMainObject(pseudo) {}
    ~Counter() override { join(); }
    void vThreadMain() override {
        ++runs;
        deactivate();
    }
    std::atomic<int> runs{0};
};

class SyncSignalTest : public ::testing::Test {
protected:
    // Runs waiters threads that each wait up to milliseconds, sends with send once they all
    // wait, and returns how many woke by a send.
    int wakeWaiters(int waiters, long milliseconds, void (SyncSignal::*send)()) {
        std::atomic<int> waiting{0}, woken{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < waiters; ++i)
            threads.emplace_back([&] {
                resource.vAquire();
                ++waiting;
                woken += signal.vWait(milliseconds);
                resource.vRelease();
            });
        while (waiting < waiters)
            std::this_thread::yield();
        resource.vAquire(); // taken once the last waiter waits
        (signal.*send)();
        resource.vRelease();
        for (std::thread& thread : threads)
            thread.join();
        return woken;
    }
    ProtectedResource resource{nullptr};
    SyncSignal signal{resource};
};
} // namespace

// A send before the wait is kept for it; a timed wait that gets none returns false after its
// limit, holding the mutex again.
TEST_F(SyncSignalTest, SendIsKeptForOneWaitAndAWaitWithoutOneEndsAtItsLimit) {
    EXPECT_STREQ(resource.name(), "");
    resource.vAquire();
    signal.vSend();
    EXPECT_TRUE(signal.vWait(-1));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(signal.vWait(30)) << "the send was consumed";
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_FALSE(resource.mutex().try_lock()) << "held again on return";
    signal.vSend();
    signal.vClear();
    EXPECT_FALSE(signal.vWait(0)) << "a cleared send is gone";
    resource.vRelease();
}

TEST_F(SyncSignalTest, SendWakesExactlyOneWaiterSendAllWakesEveryOneAndLeavesNothing) {
    EXPECT_EQ(wakeWaiters(3, 300, &SyncSignal::vSend), 1);
    EXPECT_EQ(wakeWaiters(4, 5000, &SyncSignal::vSendAll), 4);
    resource.vAquire();
    EXPECT_FALSE(signal.vWait(0));
    resource.vRelease();
}

TEST(ThreadMainObject, ActivateRunsTheThreadOnceAndAPseudoObjectRunsNone) {
    Counter counter(false), pseudo(true);
    EXPECT_TRUE(counter.threadFinished()) << "nothing runs before activate";
    ASSERT_TRUE(counter.activate());
    counter.join();
    EXPECT_EQ(counter.runs.load(), 1);
    EXPECT_TRUE(counter.threadFinished());
    EXPECT_FALSE(counter.isActive());
    ASSERT_TRUE(counter.activate()) << "a finished object may run again";
    counter.join();
    EXPECT_EQ(counter.runs.load(), 2);
    EXPECT_TRUE(pseudo.isPsuedo());
    EXPECT_FALSE(pseudo.activate());
    EXPECT_EQ(pseudo.runs.load(), 0);
}
