#pragma once

#include "core/TqExport.h"

#include <atomic>
#include <mutex>
#include <thread>

/// ThreadMainObject: an object whose activity runs on a thread of its own. activate() starts
/// the thread on vThreadMain(); a pseudo object runs no thread and is driven by its owner.
/// A derived class stops and joins its thread in its own destructor, while vThreadMain's
/// overrider still exists.
class TQ_EXPORT ThreadMainObject {
public:
    /// An inactive object; a pseudo one (isPsuedo) never starts a thread of its own.
    explicit ThreadMainObject(bool isPsuedo);
    ///@{
    /// Waits for the thread to end (it must have been told to stop), or detaches it when the
    /// object is destroyed on its own thread.
    virtual ~ThreadMainObject();
    ThreadMainObject(const ThreadMainObject&) = delete;
    ThreadMainObject& operator=(const ThreadMainObject&) = delete;
    ///@}

    /// True for an object that runs no thread of its own (the spelling is the interface's).
    bool isPsuedo() const { return m_isPsuedo; }
    /// Starts a thread running vThreadMain(). Returns false for a pseudo object, when the
    /// object is already active, or when the system refuses a thread.
    [[nodiscard]] bool activate();
    ///@{
    /// Ends the object's activity: isActive() is false from here on. Called by vThreadMain
    /// as its last step, and by owners that stop the object.
    virtual void deactivate();
    bool isActive() const { return m_active.load(std::memory_order_acquire); }
    ///@}
    /// True once vThreadMain has returned (or the thread never started): the object may then
    /// be destroyed without waiting.
    bool threadFinished() const { return m_finished.load(std::memory_order_acquire); }
    /// Waits until the thread has ended; does nothing on its own thread or without a thread.
    void join();

protected:
    /// The object's activity, run on its thread by activate(); ends with deactivate().
    virtual void vThreadMain() = 0;

private:
    const bool m_isPsuedo;
    std::atomic<bool> m_active{false};
    std::atomic<bool> m_finished{true};
    std::mutex m_startGate;
    std::thread m_thread;
};
