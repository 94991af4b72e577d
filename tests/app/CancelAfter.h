/// CancelAfter: a task that the reader's and tokenizer's tests cancel once a given number of
/// bytes were read.
#pragma once

#include "core/iTaskDescription.h"

class CancelAfter : public iTaskDescription {
public:
    explicit CancelAfter(unsigned long bytes) : m_bytes(bytes) {}
    void setProgress(unsigned long done) override {
        iTaskDescription::setProgress(done);
        if (done >= m_bytes)
            cancel();
    }

private:
    unsigned long m_bytes;
};
