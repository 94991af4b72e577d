#include "X11Display.h"

#include "wsi/WindowParams.h"
#include "wsi/WsdTopWindow.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTest>

#include <array>
#include <initializer_list>
#include <memory>

namespace {

class RealDisplay : public ::testing::Test {
protected:
    void SetUp() override {
        if (!x11SkipReason.empty())
            GTEST_SKIP() << x11SkipReason;
        ASSERT_EQ(QGuiApplication::platformName(), QString("xcb"));
        WsdWindow::shutDown();
    }

    // A shown top window whose client area is one colour.
    std::unique_ptr<WsdTopWindow> colouredWindow(Qt::GlobalColor colour) {
        auto window = std::make_unique<WsdTopWindow>();
        auto* area = new QWidget;
        area->setAutoFillBackground(true);
        QPalette palette = area->palette();
        palette.setColor(QPalette::Window, colour);
        area->setPalette(palette);
        window->setCentralWidget(area);
        window->setFrameGeometry(DeviceRectangle(0, 0, 200, 150));
        window->showWindow();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        return window;
    }

    // Waits until the X server has placed the window's frame on rectangle.
    static bool frameReaches(const WsdTopWindow& window, const DeviceRectangle& rectangle) {
        const QRect expected = rectangle.toQRect();
        return QTest::qWaitFor([&] { return window.frameGeometry() == expected; }, 5000);
    }
};

// The whole screen as the X server shows it once pending drawing is done, also saved under
// name in the build tree to look at.
QImage screenshot(const char* name) {
    QTest::qWait(200);
    const QImage shot = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    shot.save(QString::fromUtf8(TQ_TEST_OUTPUT_DIR "/") + QString::fromUtf8(name));
    return shot;
}

struct Sample {
    int x, y;
    QColor colour;
};

void expectPixels(const QImage& shot, std::initializer_list<Sample> samples) {
    ASSERT_EQ(shot.size(), QSize(x11ScreenWidth, x11ScreenHeight));
    for (const Sample& sample : samples)
        EXPECT_EQ(shot.pixelColor(sample.x, sample.y), sample.colour)
            << sample.x << "," << sample.y;
}

TEST_F(RealDisplay, CascadePutsEveryFrameOnItsRectangle) {
    std::array<std::unique_ptr<WsdTopWindow>, 3> windows = {
        colouredWindow(Qt::red), colouredWindow(Qt::green), colouredWindow(Qt::blue)};
    OC_<WsdTopWindow> all;
    for (auto& window : windows)
        all.add(window.get());
    DeviceRectangle screen;
    wsiTopWindow::cascadeWindows(all, screen, false);

    // On a 1000 x 800 screen the step is (40, 66) and every frame 880 x 602.
    const DeviceRectangle expected[] = {DeviceRectangle(120, 198, 1000, 800),
                                        DeviceRectangle(80, 132, 960, 734),
                                        DeviceRectangle(40, 66, 920, 668)};
    for (int k = 0; k < 3; ++k)
        EXPECT_TRUE(frameReaches(*windows[static_cast<std::size_t>(k)], expected[k]))
            << k << ": " << windows[static_cast<std::size_t>(k)]->frameGeometry().x() << ","
            << windows[static_cast<std::size_t>(k)]->frameGeometry().y();

    // The first window is on top, each later one shows above and left of it, and every
    // frame's edge is on the pixel.
    // clang-format off
    expectPixels(screenshot("cascade.png"), {
        {20, 20, Qt::black},  {45, 71, Qt::blue},    {85, 137, Qt::green},
        {500, 500, Qt::red},  {999, 799, Qt::red},   {930, 300, Qt::red},
        {40, 66, Qt::blue},   {39, 66, Qt::black},   {40, 65, Qt::black},
        {919, 100, Qt::blue}, {920, 100, Qt::black}, {60, 667, Qt::blue},
        {60, 668, Qt::black}, {959, 150, Qt::green}, {960, 150, Qt::black},
        {119, 300, Qt::green}, {120, 198, Qt::red},  {120, 197, Qt::green},
    });
    // clang-format on
}

TEST_F(RealDisplay, TilePutsFramesSideBySide) {
    std::array<std::unique_ptr<WsdTopWindow>, 3> windows = {
        colouredWindow(Qt::red), colouredWindow(Qt::green), colouredWindow(Qt::blue)};
    OC_<WsdTopWindow> all;
    for (auto& window : windows)
        all.add(window.get());
    DeviceRectangle area(0, 0, 1000, 800);
    wsiTopWindow::tileWindows(all, area, 1.0, true);
    EXPECT_TRUE(frameReaches(*windows[0], DeviceRectangle(0, 0, 500, 400)));
    EXPECT_TRUE(frameReaches(*windows[1], DeviceRectangle(500, 0, 1000, 400)));
    EXPECT_TRUE(frameReaches(*windows[2], DeviceRectangle(0, 400, 1000, 800)));
    expectPixels(screenshot("tile.png"), {{0, 0, Qt::red},
                                          {499, 399, Qt::red},
                                          {500, 0, Qt::green},
                                          {999, 399, Qt::green},
                                          {0, 400, Qt::blue},
                                          {999, 799, Qt::blue}});
}

TEST_F(RealDisplay, SavedParametersPutTheFrameBackExactly) {
    std::unique_ptr<WsdTopWindow> window = colouredWindow(Qt::yellow);
    const DeviceRectangle place(100, 80, 601, 481);
    window->setFrameGeometry(place);
    ASSERT_TRUE(frameReaches(*window, place));
    WindowParams saved;
    window->getParameters(saved);
    char text[64];
    saved.encode(text, sizeof text);
    EXPECT_STREQ(text, "N,100,100,601,601");

    window->setFrameGeometry(DeviceRectangle(300, 300, 500, 400));
    ASSERT_TRUE(frameReaches(*window, DeviceRectangle(300, 300, 500, 400)));
    window->maximizeWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->isMaximized(); }, 2000));

    WindowParams restored;
    restored.decode(text);
    window->setParameters(restored);
    EXPECT_TRUE(frameReaches(*window, place));
    EXPECT_FALSE(window->isMaximized());
    WindowParams again;
    window->getParameters(again);
    EXPECT_EQ(again, saved);
    expectPixels(screenshot("restored.png"), {{100, 80, Qt::yellow},
                                              {600, 480, Qt::yellow},
                                              {99, 80, Qt::black},
                                              {100, 79, Qt::black},
                                              {601, 480, Qt::black},
                                              {600, 481, Qt::black}});
}

} // namespace
