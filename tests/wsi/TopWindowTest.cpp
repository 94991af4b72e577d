#include "wsi/WsdTopWindow.h"

#include "core/appiApplication.h"
#include "graphics/geometry/DevicePoint.h"
#include "wsi/WindowParams.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QGuiApplication>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QToolBar>

#include <memory>
#include <vector>

namespace {

// Each test starts with no registered top windows and the start metrics.
class TopWindows : public ::testing::Test {
protected:
    void SetUp() override {
        WsdWindow::shutDown();
        wsiTopWindow::setButtonBaseSize(6, 6);
        wsiTopWindow::setCascadeAdjustment(0);
    }
    void TearDown() override { SetUp(); }
};

std::vector<wsiTopWindow*> registered() {
    std::vector<wsiTopWindow*> windows;
    if (const OC_<wsiTopWindow>* all = wsiTopWindow::topWindows())
        windows.assign(all->begin(), all->end());
    return windows;
}

TEST_F(TopWindows, RegistryKeepsTheTopmostLast) {
    EXPECT_EQ(wsiTopWindow::topmostTopWindow(), nullptr);
    WsdTopWindow a, b, c;
    EXPECT_EQ(registered(), (std::vector<wsiTopWindow*>{&a, &b, &c}));
    EXPECT_EQ(wsiTopWindow::topmostTopWindow(), &c);
    wsiTopWindow::setTopmostTopWindow(a);
    EXPECT_EQ(registered(), (std::vector<wsiTopWindow*>{&b, &c, &a}));

    // A window that is not registered is not added.
    wsiTopWindow::unregisterTopWindow(b);
    EXPECT_FALSE(wsiTopWindow::isTopWindow(b));
    wsiTopWindow::setTopmostTopWindow(b);
    EXPECT_EQ(registered(), (std::vector<wsiTopWindow*>{&c, &a}));
    wsiTopWindow::unregisterTopWindow(b);
    {
        WsdTopWindow d;
        EXPECT_TRUE(wsiTopWindow::isTopWindow(d));
    }
    EXPECT_EQ(registered(), (std::vector<wsiTopWindow*>{&c, &a}));
    WsdWindow::shutDown();
    EXPECT_EQ(wsiTopWindow::topmostTopWindow(), nullptr);
    wsiTopWindow::setTopmostTopWindow(a);
    EXPECT_FALSE(wsiTopWindow::isTopWindow(a));
}

TEST_F(TopWindows, DisableNestsAndTouchesOnlyOpenWindows) {
    WsdTopWindow shown, other, hidden;
    shown.showWindow();
    other.showWindow();
    auto enabled = [&] {
        return std::vector<bool>{shown.isWindowEnabled(), other.isWindowEnabled(),
                                 hidden.isWindowEnabled()};
    };
    wsiTopWindow::disableTopWindows();
    wsiTopWindow::disableTopWindows();
    EXPECT_TRUE(wsiTopWindow::areTopWindowsDisabled());
    EXPECT_EQ(enabled(), (std::vector<bool>{false, false, true}));
    wsiTopWindow::enableTopWindows();
    EXPECT_EQ(enabled(), (std::vector<bool>{false, false, true}));
    wsiTopWindow::enableTopWindows();
    EXPECT_FALSE(wsiTopWindow::areTopWindowsDisabled());
    EXPECT_EQ(enabled(), (std::vector<bool>{true, true, true}));
    // An extra enable does nothing, not even to a window disabled on its own.
    other.enableWindow(false);
    wsiTopWindow::enableTopWindows();
    EXPECT_EQ(enabled(), (std::vector<bool>{true, false, true}));
    // Without a registry an enable does nothing, and a disable still counts.
    WsdWindow::shutDown();
    wsiTopWindow::enableTopWindows();
    EXPECT_FALSE(wsiTopWindow::areTopWindowsDisabled());
    wsiTopWindow::disableTopWindows();
    EXPECT_TRUE(wsiTopWindow::areTopWindowsDisabled());
}

std::vector<std::vector<int>> edgesOf(const DeviceRectangle* rectangles, int count) {
    std::vector<std::vector<int>> edges;
    for (int i = 0; i < count; ++i)
        edges.push_back({rectangles[i].left(), rectangles[i].top(), rectangles[i].right(),
                         rectangles[i].bottom()});
    return edges;
}

TEST_F(TopWindows, CascadeStepsFromTopLeftToTheFirstWindow) {
    DeviceRectangle r[3];
    wsiTopWindow::calculateCascade(DeviceRectangle(0, 0, 1024, 768), 3, r);
    EXPECT_EQ(edgesOf(r, 3), (std::vector<std::vector<int>>{
                                 {120, 192, 1024, 768}, {80, 128, 984, 704}, {40, 64, 944, 640}}));
    // The adjustment widens every window and moves the column left; an origin moves all.
    wsiTopWindow::setCascadeAdjustment(10);
    wsiTopWindow::calculateCascade(DeviceRectangle(100, 20, 1124, 788), 1, r);
    EXPECT_EQ(edgesOf(r, 1), (std::vector<std::vector<int>>{{130, 84, 1124, 788}}));
    // 1920 / 22 = 87, rounded down to a multiple of 8: 80.
    wsiTopWindow::setCascadeAdjustment(0);
    wsiTopWindow::calculateCascade(DeviceRectangle(0, 0, 1920, 1080), 2, r);
    EXPECT_EQ(edgesOf(r, 2),
              (std::vector<std::vector<int>>{{160, 180, 1920, 1080}, {80, 90, 1840, 990}}));
    // Without an area, the primary screen's available area.
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    DeviceRectangle fromScreen[2], fromArea[2];
    wsiTopWindow::calculateCascade(2, fromScreen);
    wsiTopWindow::calculateCascade(DeviceRectangle(screen.x(), screen.y(),
                                                   screen.x() + screen.width(),
                                                   screen.y() + screen.height()),
                                   2, fromArea);
    EXPECT_EQ(edgesOf(fromScreen, 2), edgesOf(fromArea, 2));
}

TEST_F(TopWindows, TileFillsTheAreaWithoutOverlap) {
    // clang-format off
    const struct { int count; double aspect; bool byColumns; int columns; int rows; } rows[] = {
        {1, 1.0, false, 1, 1}, {2, 1.0, false, 2, 1}, {3, 1.0, false, 2, 2},
        {4, 1.0, false, 2, 2}, {5, 1.0, false, 3, 2}, {7, 1.0, true, 3, 3},
        {4, 4.0, false, 1, 4}, {4, 0.25, false, 4, 1}, {6, 0.0, true, 3, 2},
        {13, 1.5, false, 4, 4},
    };
    // clang-format on
    const DeviceRectangle area(10, 20, 1010, 820);
    for (const auto& row : rows) {
        std::vector<DeviceRectangle> r(static_cast<std::size_t>(row.count));
        wsiTopWindow::calculateTile(area, row.aspect, row.count, r.data(), row.byColumns);
        long long covered = 0;
        std::vector<int> lefts, tops;
        for (int i = 0; i < row.count; ++i) {
            const DeviceRectangle& a = r[static_cast<std::size_t>(i)];
            covered += static_cast<long long>(a.width()) * a.height();
            EXPECT_TRUE(a.left() >= area.left() && a.right() <= area.right() &&
                        a.top() >= area.top() && a.bottom() <= area.bottom())
                << row.count << " #" << i;
            for (int j = 0; j < i; ++j) {
                const DeviceRectangle& b = r[static_cast<std::size_t>(j)];
                EXPECT_TRUE(a.right() <= b.left() || b.right() <= a.left() ||
                            a.bottom() <= b.top() || b.bottom() <= a.top())
                    << row.count << " #" << i << " overlaps #" << j;
            }
            lefts.push_back(a.left());
            tops.push_back(a.top());
        }
        EXPECT_EQ(covered, static_cast<long long>(area.width()) * area.height()) << row.count;
        std::sort(lefts.begin(), lefts.end());
        std::sort(tops.begin(), tops.end());
        lefts.erase(std::unique(lefts.begin(), lefts.end()), lefts.end());
        tops.erase(std::unique(tops.begin(), tops.end()), tops.end());
        // The number of distinct edges across the lines is the number of lines.
        EXPECT_EQ(static_cast<int>(row.byColumns ? lefts.size() : tops.size()),
                  row.byColumns ? row.columns : row.rows)
            << row.count << " aspect " << row.aspect;
    }
    // Row by row: the first window top-left, the second to its right.
    DeviceRectangle r[3];
    wsiTopWindow::calculateTile(area, 1.0, 3, r, false);
    EXPECT_EQ(edgesOf(r, 3), (std::vector<std::vector<int>>{
                                 {10, 20, 510, 420}, {510, 20, 1010, 420}, {10, 420, 1010, 820}}));
    wsiTopWindow::calculateTile(area, 1.0, 3, r, true);
    EXPECT_EQ(edgesOf(r, 3), (std::vector<std::vector<int>>{
                                 {10, 20, 510, 420}, {10, 420, 510, 820}, {510, 20, 1010, 820}}));
}

TEST_F(TopWindows, ToolbarMetricsFollowTheBaseSizes) {
    const char flags[] = {1, 0};
    EXPECT_EQ(wsiTopWindow::toolbarHeight(2, flags), 70);
    EXPECT_EQ(wsiTopWindow::toolbarHeight(2, nullptr), 3 * 4 + 34 + 34);
    EXPECT_EQ(wsiTopWindow::toolbarHeight(0, nullptr), 4);
    EXPECT_EQ(wsiTopWindow::toolbarWidth(), 38 + 8);
    wsiTopWindow::setButtonBaseSize(16, 10);
    EXPECT_EQ(wsiTopWindow::buttonWidth(), 48);
    EXPECT_EQ(wsiTopWindow::buttonHeight(), 38);
    EXPECT_EQ(wsiTopWindow::smallButtonHeight(), 28);
    EXPECT_EQ(wsiTopWindow::toolbarWidth(), 56);
    WsdTopWindow window;
    DevicePoint p(10, 20);
    window.buttonGap(p, true);
    EXPECT_EQ(p, DevicePoint(14, 20));
    window.buttonGap(p, false);
    EXPECT_EQ(p, DevicePoint(14, 24));
}

TEST_F(TopWindows, ToolbarBuildsOneBarPerRowFromTheActions) {
    WsdTopWindow window;
    window.addAction(1, "Open");
    Menu* edit = window.addMenu("&Edit");
    edit->addItem(2, "&Undo");
    WsiToolbarDescription description;
    description.addButton(1);
    description.addGap();
    description.addButton(2);
    description.addRow(false);
    description.addButton(1);
    description.addButton(99);
    window.setToolbar(description);
    const QList<QToolBar*> bars = window.findChildren<QToolBar*>();
    ASSERT_EQ(bars.size(), 2);
    const QSize full(38, 34), small(38, 24);
    EXPECT_EQ(bars[0]->actions().size(), 3);
    EXPECT_EQ(bars[0]->widgetForAction(window.actions().find(2)->qAction())->size(), full);
    EXPECT_EQ(bars[1]->actions().size(), 1);
    EXPECT_EQ(bars[1]->widgetForAction(window.actions().find(1)->qAction())->size(), small);
    EXPECT_EQ(window.toolbarDescription().rows(), 2);
    window.setToolbar(WsiToolbarDescription());
    EXPECT_TRUE(window.findChildren<QToolBar*>().isEmpty());
    // Rebuilding leaves no break of the old rows behind.
    window.setToolbar(description);
    window.setToolbar(description);
    const QList<QToolBar*> rebuilt = window.findChildren<QToolBar*>();
    ASSERT_EQ(rebuilt.size(), 2);
    EXPECT_FALSE(window.toolBarBreak(rebuilt[0]));
    EXPECT_TRUE(window.toolBarBreak(rebuilt[1]));
}

TEST_F(TopWindows, ActionsKeyedByIdentifierAcrossMenus) {
    WsdTopWindow window;
    Menu* file = window.addMenu("&File");
    EXPECT_NE(file->addItem(10, "&Open"), nullptr);
    EXPECT_EQ(file->addItem(10, "again"), nullptr);
    Menu* view = window.addMenu("&View");
    EXPECT_EQ(view->addItem(10, "clash"), nullptr);
    EXPECT_NE(view->addItem(11, "&Tile"), nullptr);
    EXPECT_EQ(window.addAction(11, "clash"), nullptr);
    EXPECT_EQ(window.actions().size(), 2);
    EXPECT_TRUE(window.actions().enable(11, false));
    EXPECT_FALSE(view->qMenu()->actions().at(0)->isEnabled());
    EXPECT_TRUE(window.actions().setText(10, "&Open..."));
    EXPECT_EQ(file->qMenu()->actions().at(0)->text(), QString("&Open..."));
    EXPECT_FALSE(window.actions().enable(12, true));
    EXPECT_FALSE(window.actions().isEnabled(12));
    EXPECT_EQ(window.menuBar()->actions().size(), 2);

    Menu own("Own");
    own.addItem(1, "one");
    own.addSeparator();
    own.addItem(2, "two");
    EXPECT_EQ(own.qMenu()->actions().size(), 3);
    EXPECT_TRUE(own.enableItem(2, false));
    EXPECT_FALSE(own.isItemEnabled(2));
    EXPECT_TRUE(own.setItemText(1, "uno"));
    EXPECT_STREQ(own.itemText(1), "uno");
    EXPECT_EQ(own.itemText(3), nullptr);
}

TEST_F(TopWindows, TitlesJoinTheirParts) {
    WsdTopWindow window;
    window.setWindowTitle("Viewer");
    EXPECT_EQ(window.windowTitle(), QString("Viewer"));
    window.setTitleDetail("counter.tqd");
    EXPECT_EQ(window.windowTitle(), QString("Viewer - counter.tqd"));
    window.setTitleDetail(nullptr);
    EXPECT_EQ(window.windowTitle(), QString("Viewer"));
    window.setIconTitle("ctr");
    EXPECT_EQ(window.windowIconText(), QString("ctr"));
    window.setWindowTitle(QString("Qt's own"));
    EXPECT_EQ(window.windowTitle(), QString("Qt's own"));
}

TEST_F(TopWindows, HourglassNestsOverThePointer) {
    WsdTopWindow window;
    window.setPointer(wsiCrossCursor);
    EXPECT_EQ(window.cursor().shape(), Qt::CrossCursor);
    window.setHourglass(true);
    window.setHourglass(true);
    window.setPointer(wsiIBeamCursor);
    EXPECT_EQ(window.cursor().shape(), Qt::WaitCursor);
    window.setHourglass(false);
    EXPECT_EQ(window.cursor().shape(), Qt::WaitCursor);
    window.setHourglass(false);
    EXPECT_EQ(window.cursor().shape(), Qt::IBeamCursor);
    window.setHourglass(false);
    EXPECT_FALSE(window.isHourglassUp());
    EXPECT_EQ(window.cursor().shape(), Qt::IBeamCursor);
}

TEST_F(TopWindows, ShowOperationsReachTheWidget) {
    WsdTopWindow window;
    EXPECT_FALSE(window.isOpen());
    window.showWindow();
    EXPECT_TRUE(window.isOpen());
    window.maximizeWindow();
    EXPECT_TRUE(window.isMaximized());
    window.iconifyWindow();
    EXPECT_TRUE(window.isIconic());
    OC_<WsdTopWindow> all, open;
    WsdTopWindow shown;
    shown.showWindow();
    all.add(&window);
    all.add(&shown);
    wsiTopWindow::getOpenWindows(all, open);
    EXPECT_EQ(open.size(), 1);
    EXPECT_EQ(open.at(0), &shown);
    window.hideWindow();
    EXPECT_FALSE(window.isOpen());
}

TEST_F(TopWindows, ParametersPutTheWindowBackWhereItWas) {
    const QRect area = WsdWindow::displayArea(nullptr);
    WsdTopWindow window;
    window.showWindow();
    window.setFrameGeometry(
        DeviceRectangle(area.x() + 80, area.y() + 60, area.x() + 480, area.y() + 360));
    WindowParams saved;
    window.getParameters(saved);
    EXPECT_EQ(saved.showState(), WindowParams::Normal);
    char text[64];
    saved.encode(text, sizeof text);

    window.setFrameGeometry(DeviceRectangle(area.x(), area.y(), area.x() + 200, area.y() + 100));
    window.maximizeWindow();
    WindowParams whileMaximized;
    window.getParameters(whileMaximized);
    EXPECT_EQ(whileMaximized.showState(), WindowParams::Zoomed);

    WindowParams restored;
    restored.decode(text);
    window.setParameters(restored);
    // Thousandths of the display: exact up to 1000 pixels, within one pixel above.
    const QRect frame = window.frameGeometry();
    const int slackX = area.width() > 1000 ? 1 : 0, slackY = area.height() > 1000 ? 1 : 0;
    EXPECT_NEAR(frame.left(), area.x() + 80, slackX) << text;
    EXPECT_NEAR(frame.top(), area.y() + 60, slackY) << text;
    EXPECT_NEAR(frame.right() + 1, area.x() + 480, slackX) << text;
    EXPECT_NEAR(frame.bottom() + 1, area.y() + 360, slackY) << text;
    EXPECT_FALSE(window.isMaximized());

    restored.setShowState(WindowParams::Hidden);
    window.setParameters(restored);
    EXPECT_FALSE(window.isOpen());
    WindowParams hidden;
    window.getParameters(hidden);
    EXPECT_EQ(hidden.showState(), WindowParams::Hidden);
}

TEST_F(TopWindows, CacheScreenBitsReachesNewWindows) {
    WsdWindow::setCacheScreenBits(true);
    WsdTopWindow caching;
    WsdWindow::setCacheScreenBits(false);
    WsdTopWindow plain;
    EXPECT_TRUE(caching.testAttribute(Qt::WA_StaticContents));
    EXPECT_FALSE(plain.testAttribute(Qt::WA_StaticContents));
    WsdWindow::setCacheScreenBits(true);
    WsdWindow::shutDown();
    EXPECT_FALSE(WsdWindow::cacheScreenBits());
}

TEST_F(TopWindows, FirstTopWindowMarksTheWindowSystemRunning) {
    class Application : public appiApplication {};
    Application application;
    EXPECT_FALSE(application.isWindowSystemRunning());
    WsdTopWindow window;
    EXPECT_TRUE(application.isWindowSystemRunning());
    EXPECT_FALSE(window.help());
    // Without a window manager there is no frame around the client area.
    DevicePoint topLeft(-1, -1), bottomRight(-1, -1);
    window.decorationSizes(topLeft, bottomRight);
    EXPECT_EQ(topLeft, DevicePoint(0, 0));
    EXPECT_EQ(bottomRight, DevicePoint(0, 0));
}

} // namespace
