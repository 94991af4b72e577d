#include "core/iTaskDescription.h"

iTaskDescription::iTaskDescription(unsigned long total) : m_total(total) {}

iTaskDescription::~iTaskDescription() = default;

void iTaskDescription::setProgress(unsigned long done) {
    m_done.store(done, std::memory_order_relaxed);
}
