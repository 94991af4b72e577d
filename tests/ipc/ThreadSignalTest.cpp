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
class Counter : public ThreadMainObject {
public:
    explicit Counter(bool pseudo) : ThreadMainObject(pseudo) {}
    ~Counter() override { join(); }
    std::atomic<int> runs{0};

protected:
    void vThreadMain() override {
        ++runs;
        deactivate();
    }
};

using Clock = std::chrono::steady_clock;
} // namespace

TEST(SyncSignal, SendBeforeWait_IsKeptAndConsumedByOneWait) {
    ProtectedResource resource("test");
    SyncSignal signal(resource);
    resource.vAquire();
    signal.vSend();
    EXPECT_TRUE(signal.vWait(-1));
    EXPECT_FALSE(signal.vWait(10)) << "the send was consumed";
    signal.vSend();
    signal.vClear();
    EXPECT_FALSE(signal.vWait(10)) << "a cleared send is gone";
    resource.vRelease();
}

TEST(SyncSignal, TimedWait_ReturnsFalseAfterItsLimitWithTheMutexHeld) {
    ProtectedResource resource(nullptr);
    SyncSignal signal(resource);
    EXPECT_STREQ(resource.name(), "");
    resource.vAquire();
    const auto start = Clock::now();
    EXPECT_FALSE(signal.vWait(30));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_FALSE(resource.mutex().try_lock()) << "held again on return";
    resource.vRelease();
}

TEST(SyncSignal, SendFromAnotherThread_WakesAnUnlimitedWait) {
    ProtectedResource resource("test");
    SyncSignal signal(resource);
    for (int round = 0; round < 200; ++round) {
        std::thread sender([&] {
            resource.vAquire();
            signal.vSend();
            resource.vRelease();
        });
        resource.vAquire();
        EXPECT_TRUE(signal.vWait(-1));
        resource.vRelease();
        sender.join();
    }
}

TEST(SyncSignal, SendAll_WakesEveryWaiterAndLeavesNoSendBehind) {
    ProtectedResource resource("test");
    SyncSignal signal(resource);
    std::atomic<int> waiting{0};
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i) {
        waiters.emplace_back([&] {
            resource.vAquire();
            ++waiting;
            if (signal.vWait(5000))
                ++woken;
            resource.vRelease();
        });
    }
    while (waiting < 4)
        std::this_thread::yield();
    resource.vAquire();
    signal.vSendAll();
    resource.vRelease();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(woken.load(), 4);
    resource.vAquire();
    EXPECT_FALSE(signal.vWait(0));
    resource.vRelease();
}

TEST(SyncSignal, OneSendWithManyWaiters_WakesExactlyOne) {
    ProtectedResource resource("test");
    SyncSignal signal(resource);
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i) {
        waiters.emplace_back([&] {
            resource.vAquire();
            if (signal.vWait(300))
                ++woken;
            resource.vRelease();
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    resource.vAquire();
    signal.vSend();
    resource.vRelease();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(woken.load(), 1);
}

TEST(ThreadMainObject, Activate_RunsTheThreadOnceAndFinishes) {
    Counter counter(false);
    EXPECT_TRUE(counter.threadFinished()) << "nothing runs before activate";
    ASSERT_TRUE(counter.activate());
    counter.join();
    EXPECT_EQ(counter.runs.load(), 1);
    EXPECT_TRUE(counter.threadFinished());
    EXPECT_FALSE(counter.isActive());
    ASSERT_TRUE(counter.activate()) << "a finished object may run again";
    counter.join();
    EXPECT_EQ(counter.runs.load(), 2);
}

TEST(ThreadMainObject, PseudoObject_RunsNoThread) {
    Counter counter(true);
    EXPECT_TRUE(counter.isPsuedo());
    EXPECT_FALSE(counter.activate());
    counter.join();
    EXPECT_EQ(counter.runs.load(), 0);
}
