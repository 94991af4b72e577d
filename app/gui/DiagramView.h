/// DiagramView: a diagram on the screen, painted by the renderer over the window of time the
/// user scrolled and zoomed to, with a cursor line that reads every shown signal's value.
/// A change of the diagram, the window of time or the width draws the rows in view straight
/// into the viewport; later frames copy the exposed part of a picture drawn as it is needed,
/// or filled when the user pauses.
#pragma once

#include "model/Diagram.h"
#include "render/DiagramPainter.h"
#include "render/NameCache.h"
#include "render/RenderOptions.h"

#include <QAbstractScrollArea>
#include <QImage>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class Dependent;

class DiagramView : public QAbstractScrollArea {
public:
    /// Shows diagram (which must outlive the view) fitted into the view; every change the
    /// diagram announces repaints the view.
    explicit DiagramView(Diagram& diagram, QWidget* parent = nullptr);
    ~DiagramView() override;

    // --- Window of time ------------------------------------------------------------------------
    Time from() const { return m_from; }
    Time to() const { return m_to; }
    /// Shows from..to; a window narrower than one time unit becomes one unit wide.
    void setTimeWindow(Time from, Time to);
    /// Narrows (factor > 1) or widens the window around the time `around` (the middle of the
    /// window when unset), keeping that time where it is on the screen.
    void zoom(double factor, std::optional<Time> around = std::nullopt);
    /// Shows the diagram's whole span.
    void fit();
    /// Moves the window by pages widths (negative: back in time).
    void scrollTime(double pages);
    /// Layout pixels per time unit of the current window, 0 before the first layout.
    double pixelsPerTime();

    // --- Cursor --------------------------------------------------------------------------------
    std::optional<Time> cursorTime() const { return m_cursor; }
    void setCursorTime(std::optional<Time> time);
    /// The time under the horizontal position x of the viewport, or unset left of the
    /// waveforms.
    std::optional<Time> timeAt(int x);
    struct CursorValue {
        std::string signal;
        std::string value;
        bool operator==(const CursorValue&) const = default;
    };
    /// Each shown signal's value at the cursor, top to bottom: a bus value as the diagram
    /// writes it ("A5", "8'hA5"), a bit's level as 0, 1, X, Z, L or H; empty without a cursor.
    std::vector<CursorValue> cursorValues();

    // --- What is shown -------------------------------------------------------------------------
    /// Hierarchical-name patterns of the signals shown (empty: all).
    const std::vector<std::string>& patterns() const { return m_options.patterns; }
    void setPatterns(std::vector<std::string> patterns);
    /// The view as the renderer takes it: the shown signals, the window of time and the
    /// viewport's width. `tqdiagram render` with the same options draws the same picture.
    RenderOptions renderOptions() const;
    /// The status line: zoom and visible span ("Zoom 12.5 px/ns  0 ns - 80 ns"), and the
    /// cursor's time when there is one.
    std::string statusText();
    /// Called whenever the status text may have changed.
    void setStatusListener(std::function<void()> listener) {
        m_statusListener = std::move(listener);
    }
    /// The layout error when the view shows nothing (no signal selected), else empty.
    const std::string& layoutError() const { return m_layoutError; }
    /// Paints so far, for tests that wait for the repaint a change causes.
    int paintCount() const { return m_paintCount; }
    /// How often the renderer has drawn a frame of its own so far: the first frame after a
    /// change of the diagram, the window of time or the width, a frame that finds most of its
    /// rows missing from the picture, and every frame of a picture too tall to keep. Other
    /// frames copy from the picture, drawing only the rows it lacks.
    int renderCount() const { return m_renderCount; }
    /// How many strips of the picture have been drawn so far, for tests of which frames draw.
    int stripCount() const { return m_stripCount; }
    /// The height in pixels of the strips the picture is drawn in.
    static constexpr int v_stripHeight = 32;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void diagramChanged(Aspect aspect);
    /// Lays the picture out again when the diagram, the window or the width changed; false
    /// when nothing can be shown.
    bool ensureLayout();
    void invalidate();
    void updateScrollBars();
    /// Renders the rows of the picture between top and bottom (picture pixels) that are not
    /// drawn yet, for this and later frames to copy from; false when the picture would be too
    /// tall to keep, and frames are then painted directly.
    bool ensurePicture(int top, int bottom);
    /// The first and last strip of the picture that hold the rows between top and bottom.
    std::pair<std::size_t, std::size_t> strips(int top, int bottom) const;
    /// Whether fewer than half the strips over the rows between top and bottom are drawn, so
    /// that drawing them into the picture and copying would cost more than drawing the frame.
    bool pictureLacksMost(int top, int bottom) const;
    /// Draws the rows in view into the picture once the user has paused after a frame that did
    /// not use it, so that the scroll or click that follows only copies.
    void completePicture();
    void paintCursor(QPainter& painter);
    void notifyStatus();

    Diagram& m_diagram;
    std::unique_ptr<Dependent> m_listener;
    RenderOptions m_options;
    std::unique_ptr<DiagramPainter> m_painter;
    // Kept from one layout to the next: zooming and scrolling show the same names.
    NameCache m_names;
    std::string m_layoutError;
    // The picture of the current layout, drawn strip by strip as the strips come into view:
    // frames that only scroll vertically, move the cursor or uncover the window copy from it.
    // A layout's first frame does not use it.
    QImage m_picture;
    bool m_pictureValid = false;
    std::vector<bool> m_stripDrawn;
    static constexpr int v_maxPictureHeight = 32768;
    bool m_layoutValid = false;
    bool m_layoutPainted = false;
    QTimer m_pictureTimer;
    static constexpr int v_pictureDelayMs = 60;
    int m_stripCount = 0;
    Time m_from = 0;
    Time m_to = 1;
    std::optional<Time> m_cursor;
    std::function<void()> m_statusListener;
    int m_paintCount = 0;
    int m_renderCount = 0;
    bool m_updatingScrollBars = false;
};
