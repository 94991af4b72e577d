/// wsiTopWindow: a top-level window. The class keeps the registry of top windows in their
/// stacking order, nested disabling of all of them (for modal work), the cascade and tile
/// geometry, and the toolbar button metrics that every top window shares.
#pragma once

#include "core/Collections.h"
#include "core/TqExport.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "wsi/WsdWindow.h"

class WsdTopWindow;

/// wsiTopWindow: a window of the application's own (not a dialog), registered while it lives;
/// the registry knows the topmost one, disables them all at once and arranges them.
class TQ_EXPORT wsiTopWindow : public WsdWindow {
public:
    /// Unregisters the window.
    ~wsiTopWindow() override;

    // --- Registry: the last registered window, or the last made topmost, is the topmost ------
    /// True while window is registered.
    static bool isTopWindow(wsiTopWindow& window);
    /// Removes the window from the registry; nothing happens if it is not there.
    static void unregisterTopWindow(wsiTopWindow& window);
    /// The topmost registered window, or null when none is registered.
    static wsiTopWindow* topmostTopWindow();
    /// Makes a registered window the topmost. A window that is not registered is left out:
    /// it is not added.
    static void setTopmostTopWindow(wsiWindow& window);
    /// The registered top windows, bottom first, or null before the first top window.
    static const OC_<wsiTopWindow>* topWindows() { return p_topWindows; }

    ///@{
    /// Disable requests nest. The first disables every registered window that is open; the
    /// matching last enable enables them again. An enable without a request does nothing.
    static void disableTopWindows();
    static void enableTopWindows();
    static bool areTopWindowsDisabled() { return v_disableCount > 0; }
    ///@}
    /// Appends to open the windows of all that are shown and not minimised.
    static void getOpenWindows(const OC_<WsdTopWindow>& all, OC_<WsdTopWindow>& open);

    // --- Geometry ----------------------------------------------------------------------------
    /// Cascades count frames over the available area of the primary screen (W x H): the step
    /// is (W / 22 rounded down to a multiple of 8, H / 12), every frame is (W - count x
    /// step.x + A, H - count x step.y) with A the cascade adjustment, and frame count - 1
    /// starts at the area's origin plus (step.x - A, step.y), each lower number one step
    /// further down and right. rectangles must hold count elements.
    static void calculateCascade(int count, DeviceRectangle* rectangles);
    /// The same cascade over area (its extent as W x H, positions from its origin).
    static void calculateCascade(const DeviceRectangle& area, int count,
                                 DeviceRectangle* rectangles);
    /// Tiles area with count frames in a grid without gaps or overlap. The number of columns
    /// is chosen so that a cell's width / height comes closest to aspectRatio (1 when it is
    /// not above 0); the grid is filled row by row, or column by column with byColumns, and
    /// the cells of a last, shorter row (column) are widened (heightened) to fill the area.
    /// rectangles must hold count elements; rectangles share edges (right is exclusive).
    static void calculateTile(const DeviceRectangle& area, double aspectRatio, int count,
                              DeviceRectangle* rectangles, bool byColumns);
    /// Cascades the windows over area (the primary screen's available area when area is
    /// empty); with openOnly only windows that are shown and not minimised take part, else
    /// minimised windows are restored. The first window ends furthest down-right and on top.
    static void cascadeWindows(OC_<WsdTopWindow>& windows, DeviceRectangle& area, bool openOnly);
    /// Tiles the windows over area (the primary screen's available area when empty) row by
    /// row, as calculateTile does; openOnly as for cascadeWindows.
    static void tileWindows(OC_<WsdTopWindow>& windows, DeviceRectangle& area, double aspectRatio,
                            bool openOnly);
    ///@{
    /// The cascade's horizontal adjustment A (0 unless the application sets it).
    static int cascadeAdjustment() { return v_cascadeAdjustment; }
    static void setCascadeAdjustment(int adjustment) { v_cascadeAdjustment = adjustment; }
    ///@}

    // --- Toolbar metrics ---------------------------------------------------------------------
    /// Computes the button sizes from the base sizes (6 and 6 unless the application sets
    /// them): width base + 32, height base + 28, small height height - 10; the toolbar is a
    /// button wide plus a gap on either side.
    static void initButtonSizes();
    /// Sets the base sizes and computes the button sizes from them.
    static void setButtonBaseSize(int width, int height);
    ///@{
    /// The sizes initButtonSizes computed, in device units.
    static int buttonWidth() { return v_buttonWidth; }
    static int buttonHeight() { return v_buttonHeight; }
    static int smallButtonHeight() { return v_smallButtonHeight; }
    static int toolbarWidth() { return v_toolbarWidth; }
    ///@}
    /// (rows + 1) vertical gaps plus each row's height: a full button for a row whose flag is
    /// non-zero (or with null rowFlags), else a small one. rowFlags holds rows flags.
    static int toolbarHeight(int rows, const char* rowFlags);
    ///@{
    /// The gaps between buttons: 4 and 4 device units.
    static int horizontalButtonGap() { return v_horizontalButtonGap; }
    static int verticalButtonGap() { return v_verticalButtonGap; }
    ///@}
    /// Advances point by the horizontal gap along x, or by the vertical gap along y.
    void buttonGap(DevicePoint& point, bool horizontal) const;

    /// Forgets the registry and the outstanding disable requests (see WsdWindow::shutDown).
    static void releaseRegistry();

protected:
    /// Registers the window as the topmost and marks the application's window system as
    /// running. widget as for WsdWindow.
    explicit wsiTopWindow(QWidget& widget);

private:
    static OC_<wsiTopWindow>* p_topWindows;
    static int v_disableCount;
    static int v_cascadeAdjustment;
    static int v_buttonBaseWidth;
    static int v_buttonBaseHeight;
    static int v_buttonWidth;
    static int v_buttonHeight;
    static int v_smallButtonHeight;
    static int v_toolbarWidth;
    static int v_horizontalButtonGap;
    static int v_verticalButtonGap;
};
