#include "gui/ViewerConfig.h"

#include <QSettings>

#include <algorithm>
#include <cstdlib>

namespace {
std::string placeKey(int index) {
    return "Window" + std::to_string(index + 1);
}
} // namespace

void ViewerConfig::readApplicationLayout() {
    m_windowPlaces.clear();
    char text[64];
    if (!getApplicationResource("WindowCount", text, sizeof text))
        return;
    const int count = std::clamp(std::atoi(text), 0, v_maxPlaces);
    for (int k = 0; k < count; ++k) {
        if (getApplicationResource(placeKey(k).c_str(), text, sizeof text))
            m_windowPlaces.emplace_back(text);
    }
}

// Places are layout, kept only with the full settings when the user keeps them on exit and
// asked for window positions to be saved.
void ViewerConfig::writeApplicationSettings() {
    if (!saveWindowPos())
        return;
    QSettings* store = settings();
    const int count = std::min(static_cast<int>(m_windowPlaces.size()), v_maxPlaces);
    store->setValue("WindowCount", count);
    for (int k = 0; k < count; ++k)
        store->setValue(QString::fromStdString(placeKey(k)),
                        QString::fromStdString(m_windowPlaces[static_cast<std::size_t>(k)]));
}
