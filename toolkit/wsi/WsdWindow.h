/// WsdWindow: the Qt side of a window. It carries out wsiWindow's primitives on the QWidget
/// that the window is, and holds the window system's process-wide settings.
#pragma once

#include "core/TqExport.h"
#include "wsi/wsiWindow.h"

class DeviceRectangle;
class QRect;
class QWidget;

/// WsdWindow: a wsiWindow carried out on a QWidget.
class TQ_EXPORT WsdWindow : public wsiWindow {
public:
    ~WsdWindow() override;

    /// The widget this window is.
    QWidget& widget() const { return m_widget; }

    bool isIconic() const override;
    bool isMaximized() const override;
    bool isOpen() const override;
    bool isWindowEnabled() const override;
    void decorationSizes(DevicePoint& topLeft, DevicePoint& bottomRight) const override;
    void getParameters(WindowParams& params) const override;
    void setParameters(const WindowParams& params) override;

    /// Returns the window to its normal state (neither minimised nor maximised) and places
    /// it so that its outer frame, as the frame is now measured, fills frame.
    void setFrameGeometry(const DeviceRectangle& frame);
    /// The available area (without panels and docks) of the screen the widget is on, or of
    /// the primary screen; by value, empty when there is no screen.
    static QRect displayArea(const QWidget* widget);

    /// Whether top windows made from now on keep their painted contents when they grow, so
    /// that only the newly uncovered part is painted ("CacheScreenBits" in the settings).
    ///@{
    static bool cacheScreenBits() { return v_cacheScreenBits; }
    static void setCacheScreenBits(bool on);
    ///@}
    /// Releases the window system's process-wide state: the registry of top windows, the
    /// outstanding disable requests and the caching flag. Windows that still exist stay
    /// usable but are no longer registered.
    static void shutDown();

protected:
    /// widget is the QWidget the most derived class is (or holds); it must outlive this.
    explicit WsdWindow(QWidget& widget);

    void primitiveShowWindow() override;
    void primitiveHideWindow() override;
    void primitiveIconifyWindow() override;
    void primitiveMaximizeWindow() override;
    void primitiveEnableWindow(bool enabled) override;
    void primitiveSetWindowTitle(const char* title) override;
    void primitiveSetIconTitle(const char* title) override;
    void primitiveSetPointer(WsiCursor cursor) override;

private:
    static bool v_cacheScreenBits;
    QWidget& m_widget;
};
