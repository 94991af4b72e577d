#include "cli/ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int v_barWidth = 30;

} // namespace

ProgressBar::ProgressBar(std::string label)
    : m_label(std::move(label)), m_terminal(isatty(STDERR_FILENO) != 0) {}

ProgressBar::~ProgressBar() {
    if (m_terminal && m_shown >= 0)
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(m_label.size()) + v_barWidth + 12, "");
}

void ProgressBar::setProgress(unsigned long done) {
    iTaskDescription::setProgress(done);
    if (!m_terminal || total() == 0)
        return;
    // Redrawn only when the percentage moves: a reader reports once per section.
    const int percent =
        static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(total()));
    if (percent == m_shown)
        return;
    m_shown = percent;
    const int filled = v_barWidth * std::min(percent, 100) / 100;
    std::string bar(static_cast<std::size_t>(filled), '#');
    bar.append(static_cast<std::size_t>(v_barWidth - filled), ' ');
    std::fprintf(stderr, "\r%s [%s] %3d%%", m_label.c_str(), bar.c_str(), percent);
    std::fflush(stderr);
}
