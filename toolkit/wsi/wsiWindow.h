/// wsiWindow: the portable interface of a window. Each operation forwards to a primitive
/// that the Qt side (WsdWindow) implements, so that the application's windows can change
/// what an operation does around the primitive without touching Qt.
#pragma once

#include "core/TqExport.h"

#include <string>

class DevicePoint;
class WindowParams;

/// The mouse pointer shapes a window can show.
enum WsiCursor : int {
    wsiArrowCursor = 0,
    wsiCrossCursor = 1,
    wsiIBeamCursor = 2,
    wsiWaitCursor = 3,
    wsiSizeAllCursor = 4,
    wsiSizeHorCursor = 5,
    wsiSizeVerCursor = 6,
    wsiHandCursor = 7,
    wsiForbiddenCursor = 8,
};

/// wsiWindow: the portable interface of a window; each operation forwards to a primitive
/// of the Qt side (WsdWindow).
class TQ_EXPORT wsiWindow {
public:
    virtual ~wsiWindow();

    // --- Showing ---------------------------------------------------------------------------
    ///@{
    /// Shows the window in its last show state, or hides it (it keeps its place and state).
    virtual void showWindow() { primitiveShowWindow(); }
    virtual void hideWindow() { primitiveHideWindow(); }
    ///@}
    /// Minimises the window.
    virtual void iconifyWindow() { primitiveIconifyWindow(); }
    /// Makes the window fill its display's available area.
    virtual void maximizeWindow() { primitiveMaximizeWindow(); }
    ///@{
    /// The show state now: minimised, or maximised (false for a hidden window).
    virtual bool isIconic() const = 0;
    virtual bool isMaximized() const = 0;
    ///@}
    /// Shown, whether minimised or not.
    virtual bool isOpen() const = 0;
    /// Whether the window takes input; a disabled window ignores the mouse and keyboard.
    ///@{
    virtual void enableWindow(bool enabled) { primitiveEnableWindow(enabled); }
    virtual bool isWindowEnabled() const = 0;
    ///@}

    // --- Titles ----------------------------------------------------------------------------
    /// Sets the main part of the title (UTF-8; null is empty) and shows the whole title.
    virtual void setWindowTitle(const char* title);
    /// Sets the part shown after the main part, such as the open document's name, and shows
    /// the whole title; null or empty shows the main part alone.
    void setTitleDetail(const char* detail);
    /// Shows the title made of its parts: "<main> - <detail>", or the main part alone.
    virtual void updateWindowTitle();
    /// The title as updateWindowTitle() shows it, by value.
    std::string windowTitleText() const;
    /// The title of the window while it is minimised.
    virtual void setIconTitle(const char* title) { primitiveSetIconTitle(title ? title : ""); }

    // --- Pointer ---------------------------------------------------------------------------
    /// The pointer shown over the window while no hourglass is up.
    ///@{
    virtual void setPointer(WsiCursor cursor);
    WsiCursor pointer() const { return m_pointer; }
    ///@}
    /// Puts the hourglass up (true) or takes one request down (false). Requests nest: the
    /// pointer returns only when every request is taken down; an extra false does nothing.
    virtual void setHourglass(bool on);
    /// True while at least one hourglass request is up.
    bool isHourglassUp() const { return m_hourglassCount > 0; }

    // --- Place -----------------------------------------------------------------------------
    /// The frame's extent around the client area: topLeft gets the left and top widths,
    /// bottomRight the right and bottom widths (all 0 without a window manager's frame).
    virtual void decorationSizes(DevicePoint& topLeft, DevicePoint& bottomRight) const = 0;
    /// The window's outer frame in thousandths of its display's available area, and its show
    /// state; a minimised or maximised window reports its normal place.
    virtual void getParameters(WindowParams& params) const = 0;
    /// Puts the outer frame where params says and gives the window its show state (an
    /// unspecified state changes only the place).
    virtual void setParameters(const WindowParams& params) = 0;

    /// Opens the application's help; false when the application names no help file or it
    /// cannot be opened.
    virtual bool help();

protected:
    wsiWindow() = default;
    wsiWindow(const wsiWindow&) = delete;
    wsiWindow& operator=(const wsiWindow&) = delete;

    ///@{
    /// What the window system does for showWindow, hideWindow, iconifyWindow,
    /// maximizeWindow and enableWindow.
    virtual void primitiveShowWindow() = 0;
    virtual void primitiveHideWindow() = 0;
    virtual void primitiveIconifyWindow() = 0;
    virtual void primitiveMaximizeWindow() = 0;
    virtual void primitiveEnableWindow(bool enabled) = 0;
    ///@}
    /// title is UTF-8 and never null.
    virtual void primitiveSetWindowTitle(const char* title) = 0;
    /// title is UTF-8 and never null.
    virtual void primitiveSetIconTitle(const char* title) = 0;
    /// Shows cursor over the window (the hourglass is cursor wsiWaitCursor).
    virtual void primitiveSetPointer(WsiCursor cursor) = 0;

private:
    std::string m_title;
    std::string m_titleDetail;
    WsiCursor m_pointer = wsiArrowCursor;
    int m_hourglassCount = 0;
};
