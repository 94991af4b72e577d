/// ProgressBar: the task of a long read, shown as a bar on standard error when that is a
/// terminal (and not at all otherwise), so that reading a large dump is visibly alive.
#pragma once

#include "core/iTaskDescription.h"

#include <string>

class ProgressBar : public iTaskDescription {
public:
    /// A bar labelled with what is read; quiet when standard error is not a terminal.
    explicit ProgressBar(std::string label);
    /// Clears the bar's line if one was drawn.
    ~ProgressBar() override;

    void setProgress(unsigned long done) override;

private:
    std::string m_label;
    bool m_terminal;
    int m_shown = -1;
};
