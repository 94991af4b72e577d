#include "wsi/WsdWindow.h"

#include "core/TarqToolkit.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "wsi/WindowParams.h"
#include "wsi/wsiTopWindow.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <cmath>

bool WsdWindow::v_cacheScreenBits = false;

namespace {

struct Margins {
    int left, top, right, bottom;
};

// The frame's widths around the client area, as the window system reports them now.
Margins frameMargins(const QWidget& widget) {
    const QRect frame = widget.frameGeometry();
    const QRect client = widget.geometry();
    const int left = client.x() - frame.x();
    const int top = client.y() - frame.y();
    return {left, top, frame.width() - (client.width() + left),
            frame.height() - (client.height() + top)};
}

// A coordinate in thousandths of the span starting at origin, rounded to the nearest.
int toThousandths(int coordinate, int origin, int span) {
    return span > 0 ? static_cast<int>(std::lround((coordinate - origin) * 1000.0 / span)) : 0;
}

int fromThousandths(int value, int origin, int span) {
    return origin + static_cast<int>(std::lround(value * static_cast<double>(span) / 1000.0));
}

Qt::CursorShape shapeOf(WsiCursor cursor) {
    static const Qt::CursorShape shapes[] = {
        Qt::ArrowCursor,   Qt::CrossCursor,        Qt::IBeamCursor,
        Qt::WaitCursor,    Qt::SizeAllCursor,      Qt::SizeHorCursor,
        Qt::SizeVerCursor, Qt::PointingHandCursor, Qt::ForbiddenCursor};
    return cursor >= 0 && cursor <= wsiForbiddenCursor ? shapes[cursor] : Qt::ArrowCursor;
}

} // namespace

WsdWindow::WsdWindow(QWidget& widget) : m_widget(widget) {
    TarqToolkit::setShutDownStep(TqShutDownStep::NativeWindows, &WsdWindow::shutDown);
}

WsdWindow::~WsdWindow() = default;

bool WsdWindow::isIconic() const {
    return m_widget.isMinimized();
}

bool WsdWindow::isMaximized() const {
    return m_widget.isMaximized();
}

bool WsdWindow::isOpen() const {
    return m_widget.isVisible();
}

bool WsdWindow::isWindowEnabled() const {
    return m_widget.isEnabled();
}

void WsdWindow::decorationSizes(DevicePoint& topLeft, DevicePoint& bottomRight) const {
    const Margins margins = frameMargins(m_widget);
    topLeft = DevicePoint(margins.left, margins.top);
    bottomRight = DevicePoint(margins.right, margins.bottom);
}

QRect WsdWindow::displayArea(const QWidget* widget) {
    QScreen* screen = widget ? widget->screen() : nullptr;
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect();
}

void WsdWindow::getParameters(WindowParams& params) const {
    const QRect area = displayArea(&m_widget);
    QRect frame = m_widget.frameGeometry();
    if (m_widget.isMinimized() || m_widget.isMaximized()) {
        const Margins margins = frameMargins(m_widget);
        frame = m_widget.normalGeometry().adjusted(-margins.left, -margins.top, margins.right,
                                                   margins.bottom);
    }
    // Qt's right and bottom are the last pixel inside; the saved edges lie just outside.
    params.setRectangle(toThousandths(frame.left(), area.left(), area.width()),
                        toThousandths(frame.top(), area.top(), area.height()),
                        toThousandths(frame.right() + 1, area.left(), area.width()),
                        toThousandths(frame.bottom() + 1, area.top(), area.height()));
    if (!m_widget.isVisible())
        params.setShowState(WindowParams::Hidden);
    else if (m_widget.isMinimized())
        params.setShowState(WindowParams::Iconic);
    else if (m_widget.isMaximized())
        params.setShowState(WindowParams::Zoomed);
    else
        params.setShowState(WindowParams::Normal);
}

void WsdWindow::setParameters(const WindowParams& params) {
    const QRect area = displayArea(&m_widget);
    setFrameGeometry(DeviceRectangle(fromThousandths(params.left(), area.left(), area.width()),
                                     fromThousandths(params.top(), area.top(), area.height()),
                                     fromThousandths(params.right(), area.left(), area.width()),
                                     fromThousandths(params.bottom(), area.top(), area.height())));
    switch (params.showState()) {
    case WindowParams::Normal:
        m_widget.showNormal();
        break;
    case WindowParams::Iconic:
        m_widget.showMinimized();
        break;
    case WindowParams::Hidden:
        m_widget.hide();
        break;
    case WindowParams::Zoomed:
        m_widget.showMaximized();
        break;
    case WindowParams::Active:
        m_widget.show();
        m_widget.raise();
        m_widget.activateWindow();
        break;
    default:
        break;
    }
}

void WsdWindow::setFrameGeometry(const DeviceRectangle& frame) {
    if (m_widget.isMinimized() || m_widget.isMaximized())
        m_widget.showNormal();
    const Margins margins = frameMargins(m_widget);
    m_widget.setGeometry(frame.left() + margins.left, frame.top() + margins.top,
                         frame.width() - margins.left - margins.right,
                         frame.height() - margins.top - margins.bottom);
}

void WsdWindow::setCacheScreenBits(bool on) {
    v_cacheScreenBits = on;
    TarqToolkit::setShutDownStep(TqShutDownStep::NativeWindows, &WsdWindow::shutDown);
}

void WsdWindow::shutDown() {
    wsiTopWindow::releaseRegistry();
    v_cacheScreenBits = false;
}

void WsdWindow::primitiveShowWindow() {
    m_widget.show();
}

void WsdWindow::primitiveHideWindow() {
    m_widget.hide();
}

void WsdWindow::primitiveIconifyWindow() {
    m_widget.showMinimized();
}

void WsdWindow::primitiveMaximizeWindow() {
    m_widget.showMaximized();
}

void WsdWindow::primitiveEnableWindow(bool enabled) {
    m_widget.setEnabled(enabled);
}

void WsdWindow::primitiveSetWindowTitle(const char* title) {
    m_widget.setWindowTitle(QString::fromUtf8(title));
}

void WsdWindow::primitiveSetIconTitle(const char* title) {
    m_widget.setWindowIconText(QString::fromUtf8(title));
}

void WsdWindow::primitiveSetPointer(WsiCursor cursor) {
    m_widget.setCursor(shapeOf(cursor));
}
