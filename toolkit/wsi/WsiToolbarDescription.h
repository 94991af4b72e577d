/// WsiToolbarDescription: what a top window's toolbar holds, row by row: the commands its
/// buttons run (by action identifier), the gaps between them, and which rows are full height.
#pragma once

#include "core/TqExport.h"

#include <vector>

class TQ_EXPORT WsiToolbarDescription {
public:
    /// Starts a new row; a row that is not full height has small buttons.
    void addRow(bool fullHeight = true);
    /// Appends a button for the command id to the last row (starting a full-height row if
    /// there is none).
    void addButton(int id);
    /// Appends a gap of one button gap to the last row.
    void addGap() { addButton(gap); }

    /// The number of rows described.
    int rows() const { return static_cast<int>(m_rows.size()); }
    /// One flag per row, non-zero for a full-height row, in the form toolbarHeight() takes;
    /// null when there are no rows. Valid until the description changes.
    const char* rowFlags() const { return m_flags.empty() ? nullptr : m_flags.data(); }
    /// The identifiers of a row's buttons in order, gap for a gap.
    const std::vector<int>& row(int index) const {
        return m_rows.at(static_cast<std::size_t>(index));
    }

    /// The identifier that stands for a gap.
    static constexpr int gap = 0;

private:
    std::vector<std::vector<int>> m_rows;
    std::vector<char> m_flags;
};
