/// ViewerConfig: the viewer's settings beside the toolkit's in the same INI file: where each
/// window was when the viewer last ended, as WindowParams text.
#pragma once

#include "settings/Config.h"

#include <string>
#include <vector>

class ViewerConfig : public Config {
public:
    /// The saved places, first window first ("WindowCount", then "Window1", "Window2", ...).
    const std::vector<std::string>& windowPlaces() const { return m_windowPlaces; }
    void setWindowPlaces(std::vector<std::string> places) { m_windowPlaces = std::move(places); }

    /// The most places kept; more windows are left where the window system puts them.
    static constexpr int v_maxPlaces = 32;

protected:
    void readApplicationLayout() override;
    void writeApplicationSettings() override;

private:
    std::vector<std::string> m_windowPlaces;
};
