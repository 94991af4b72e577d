#pragma once

#include "core/TqExport.h"

#include <atomic>

/// iTaskDescription: the progress and cancellation state of one long-running task (a scan or
/// a file read), shared between the code doing the work and the code watching it.
class TQ_EXPORT iTaskDescription {
public:
    ///@{
    /// total: the expected amount of work in the task's unit (characters for a read), 0 when
    /// unknown.
    explicit iTaskDescription(unsigned long total = 0);
    virtual ~iTaskDescription();
    ///@}

    iTaskDescription(const iTaskDescription&) = delete;
    iTaskDescription& operator=(const iTaskDescription&) = delete;

    ///@{
    /// Called by the worker: how much is done so far. The base records it; a subclass may also
    /// show it (and must then stay cheap, as a reader reports once per section).
    virtual void setProgress(unsigned long done);
    unsigned long progress() const { return m_done.load(std::memory_order_relaxed); }
    ///@}

    ///@{
    /// The amount of work in all, in the units of setProgress (0: not known); safe from any
    /// thread.
    void setTotal(unsigned long total) { m_total.store(total, std::memory_order_relaxed); }
    unsigned long total() const { return m_total.load(std::memory_order_relaxed); }
    ///@}

    ///@{
    /// Asks the worker to stop; safe from any thread. The worker polls isCancelled() and ends
    /// its work early, reporting failure.
    void cancel() { m_cancelled.store(true, std::memory_order_relaxed); }
    bool isCancelled() const { return m_cancelled.load(std::memory_order_relaxed); }
    ///@}

private:
    std::atomic<unsigned long> m_total;
    std::atomic<unsigned long> m_done{0};
    std::atomic<bool> m_cancelled{false};
};
