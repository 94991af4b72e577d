#include "wsi/wsiTopWindow.h"

#include "core/appiApplication.h"
#include "graphics/geometry/DevicePoint.h"
#include "wsi/WsdTopWindow.h"

#include <QGuiApplication>
#include <QScreen>

#include <cmath>
#include <vector>

OC_<wsiTopWindow>* wsiTopWindow::p_topWindows = nullptr;
int wsiTopWindow::v_disableCount = 0;
int wsiTopWindow::v_cascadeAdjustment = 0;
int wsiTopWindow::v_buttonBaseWidth = 6;
int wsiTopWindow::v_buttonBaseHeight = 6;
int wsiTopWindow::v_buttonWidth = 6 + 32;
int wsiTopWindow::v_buttonHeight = 6 + 28;
int wsiTopWindow::v_smallButtonHeight = 6 + 28 - 10;
int wsiTopWindow::v_horizontalButtonGap = 4;
int wsiTopWindow::v_verticalButtonGap = 4;
int wsiTopWindow::v_toolbarWidth = 6 + 32 + 2 * 4;

namespace {

DeviceRectangle primaryDisplayArea() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return DeviceRectangle();
    const QRect area = screen->availableGeometry();
    return DeviceRectangle(DevicePoint(area.x(), area.y()),
                           DevicePoint(area.width(), area.height()), 0);
}

// The windows that take part in an arrangement: with openOnly those shown and not minimised.
OC_<WsdTopWindow> takingPart(OC_<WsdTopWindow>& windows, bool openOnly) {
    if (!openOnly)
        return windows;
    OC_<WsdTopWindow> open;
    wsiTopWindow::getOpenWindows(windows, open);
    return open;
}

// Splits the span [from, from + length) into parts pieces that share their edges.
int edge(int from, int length, int index, int parts) {
    return from + static_cast<int>(static_cast<long long>(length) * index / parts);
}

} // namespace

wsiTopWindow::wsiTopWindow(QWidget& widget) : WsdWindow(widget) {
    // From the first top window on, the toolkit's shutdown also releases the services that
    // only a windowed application uses.
    if (appiApplication* application = appiApplication::current())
        application->setWindowSystemRunning(1);
    if (!p_topWindows)
        p_topWindows = new OC_<wsiTopWindow>;
    p_topWindows->add(this);
}

wsiTopWindow::~wsiTopWindow() {
    unregisterTopWindow(*this);
}

bool wsiTopWindow::isTopWindow(wsiTopWindow& window) {
    return p_topWindows && p_topWindows->contains(&window);
}

void wsiTopWindow::unregisterTopWindow(wsiTopWindow& window) {
    if (p_topWindows)
        p_topWindows->remove(&window);
}

wsiTopWindow* wsiTopWindow::topmostTopWindow() {
    if (!p_topWindows || p_topWindows->isEmpty())
        return nullptr;
    return p_topWindows->at(p_topWindows->size() - 1);
}

void wsiTopWindow::setTopmostTopWindow(wsiWindow& window) {
    auto* top = dynamic_cast<wsiTopWindow*>(&window);
    if (top && p_topWindows && p_topWindows->remove(top))
        p_topWindows->add(top);
}

void wsiTopWindow::disableTopWindows() {
    if (v_disableCount++ != 0 || !p_topWindows)
        return;
    for (wsiTopWindow* window : *p_topWindows)
        if (window->isOpen())
            window->enableWindow(false);
}

void wsiTopWindow::enableTopWindows() {
    if (!p_topWindows || v_disableCount <= 0)
        return;
    if (--v_disableCount != 0)
        return;
    for (wsiTopWindow* window : *p_topWindows)
        if (window->isOpen())
            window->enableWindow(true);
}

void wsiTopWindow::getOpenWindows(const OC_<WsdTopWindow>& all, OC_<WsdTopWindow>& open) {
    for (WsdTopWindow* window : all)
        if (window->isOpen() && !window->isIconic())
            open.add(window);
}

void wsiTopWindow::calculateCascade(int count, DeviceRectangle* rectangles) {
    calculateCascade(primaryDisplayArea(), count, rectangles);
}

void wsiTopWindow::calculateCascade(const DeviceRectangle& area, int count,
                                    DeviceRectangle* rectangles) {
    const int width = area.width();
    const int height = area.height();
    const DevicePoint step(width / 22 / 8 * 8, height / 12);
    const DevicePoint size(width - count * step.x() + v_cascadeAdjustment,
                           height - count * step.y());
    DevicePoint position(area.left() + step.x() - v_cascadeAdjustment, area.top() + step.y());
    for (int i = 0; i < count; ++i) {
        rectangles[count - 1 - i] = DeviceRectangle(
            position, DevicePoint(position.x() + size.x(), position.y() + size.y()));
        position = DevicePoint(position.x() + step.x(), position.y() + step.y());
    }
}

void wsiTopWindow::calculateTile(const DeviceRectangle& area, double aspectRatio, int count,
                                 DeviceRectangle* rectangles, bool byColumns) {
    if (count <= 0)
        return;
    const double wanted = aspectRatio > 0 ? aspectRatio : 1.0;
    // Work in the frame where the grid fills lines one after the other: rows, or columns
    // with the axes swapped.
    const int along = byColumns ? area.height() : area.width();
    const int across = byColumns ? area.width() : area.height();
    // The mean over all windows of how far each cell's shape is from the wanted one, so that
    // the widened cells of a short last line count too.
    auto shapeError = [&](int perLine) {
        const int lines = (count + perLine - 1) / perLine;
        const int inLastLine = count - (lines - 1) * perLine;
        auto error = [&](int inLine) {
            const double cellAlong = static_cast<double>(along) / inLine;
            const double cellAcross = static_cast<double>(across) / lines;
            const double aspect = byColumns ? cellAcross / cellAlong : cellAlong / cellAcross;
            return aspect > 0 ? std::fabs(std::log(aspect / wanted)) : HUGE_VAL;
        };
        return ((lines - 1) * perLine * error(perLine) + inLastLine * error(inLastLine)) / count;
    };
    int bestPerLine = 1;
    double bestError = HUGE_VAL;
    for (int perLine = 1; perLine <= count; ++perLine) {
        const double error = shapeError(perLine);
        if (error < bestError) {
            bestError = error;
            bestPerLine = perLine;
        }
    }
    const int lines = (count + bestPerLine - 1) / bestPerLine;
    const int alongOrigin = byColumns ? area.top() : area.left();
    const int acrossOrigin = byColumns ? area.left() : area.top();
    for (int k = 0; k < count; ++k) {
        const int line = k / bestPerLine;
        const int inLine = line == lines - 1 ? count - line * bestPerLine : bestPerLine;
        const int index = k % bestPerLine;
        const int a0 = edge(alongOrigin, along, index, inLine);
        const int a1 = edge(alongOrigin, along, index + 1, inLine);
        const int c0 = edge(acrossOrigin, across, line, lines);
        const int c1 = edge(acrossOrigin, across, line + 1, lines);
        rectangles[k] =
            byColumns ? DeviceRectangle(c0, a0, c1, a1) : DeviceRectangle(a0, c0, a1, c1);
    }
}

void wsiTopWindow::cascadeWindows(OC_<WsdTopWindow>& windows, DeviceRectangle& area,
                                  bool openOnly) {
    OC_<WsdTopWindow> arranged = takingPart(windows, openOnly);
    if (arranged.isEmpty())
        return;
    std::vector<DeviceRectangle> rectangles(static_cast<std::size_t>(arranged.size()));
    const DeviceRectangle over =
        area.width() > 0 && area.height() > 0 ? area : primaryDisplayArea();
    calculateCascade(over, arranged.size(), rectangles.data());
    WsdTopWindow::arrangeWindows(arranged, rectangles.data());
    // The furthest down-right goes on top, so that every title bar stays in sight.
    for (int k = arranged.size() - 1; k >= 0; --k)
        arranged.at(k)->widget().raise();
}

void wsiTopWindow::tileWindows(OC_<WsdTopWindow>& windows, DeviceRectangle& area,
                               double aspectRatio, bool openOnly) {
    OC_<WsdTopWindow> arranged = takingPart(windows, openOnly);
    if (arranged.isEmpty())
        return;
    std::vector<DeviceRectangle> rectangles(static_cast<std::size_t>(arranged.size()));
    const DeviceRectangle over =
        area.width() > 0 && area.height() > 0 ? area : primaryDisplayArea();
    calculateTile(over, aspectRatio, arranged.size(), rectangles.data(), false);
    WsdTopWindow::arrangeWindows(arranged, rectangles.data());
}

void wsiTopWindow::initButtonSizes() {
    v_buttonWidth = v_buttonBaseWidth + 32;
    v_buttonHeight = v_buttonBaseHeight + 28;
    v_smallButtonHeight = v_buttonHeight - 10;
    v_toolbarWidth = v_buttonWidth + 2 * v_horizontalButtonGap;
}

void wsiTopWindow::setButtonBaseSize(int width, int height) {
    v_buttonBaseWidth = width;
    v_buttonBaseHeight = height;
    initButtonSizes();
}

int wsiTopWindow::toolbarHeight(int rows, const char* rowFlags) {
    int height = (rows + 1) * v_verticalButtonGap;
    for (int row = 0; row < rows; ++row)
        height += !rowFlags || rowFlags[row] ? v_buttonHeight : v_smallButtonHeight;
    return height;
}

void wsiTopWindow::buttonGap(DevicePoint& point, bool horizontal) const {
    if (horizontal)
        point = DevicePoint(point.x() + v_horizontalButtonGap, point.y());
    else
        point = DevicePoint(point.x(), point.y() + v_verticalButtonGap);
}

void wsiTopWindow::releaseRegistry() {
    delete p_topWindows;
    p_topWindows = nullptr;
    v_disableCount = 0;
}
