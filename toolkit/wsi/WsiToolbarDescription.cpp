#include "wsi/WsiToolbarDescription.h"

void WsiToolbarDescription::addRow(bool fullHeight) {
    m_rows.emplace_back();
    m_flags.push_back(fullHeight ? 1 : 0);
}

void WsiToolbarDescription::addButton(int id) {
    if (m_rows.empty())
        addRow(true);
    m_rows.back().push_back(id);
}
