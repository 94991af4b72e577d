// The viewer on a real X server: two windows of the example diagram cascaded and tiled, their
// frames where the window layer's arrangement puts them, and a screenshot of the result.
#include "X11Display.h"

#include "gui/Viewer.h"
#include "gui/ViewerWindow.h"

#include "settings/Config.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

const std::string v_example = TQ_SOURCE_DIR "/examples/diagrams/memory_write.tqd";

bool frameReaches(const QWidget& window, const DeviceRectangle& rectangle) {
    const QRect expected = rectangle.toQRect();
    return QTest::qWaitFor([&] { return window.frameGeometry() == expected; }, 5000);
}

TEST(ViewerOnX11, TwoWindowsCascadeAndTileWhereTheWindowLayerPutsThem) {
    if (!x11SkipReason.empty())
        GTEST_SKIP() << x11SkipReason;
    ASSERT_EQ(QGuiApplication::platformName(), QString("xcb"));
    QTemporaryDir folder;
    Config::setSettingsFile(folder.filePath("tqdiagram.ini"));
    {
        Viewer viewer;
        std::string error;
        ViewerWindow* first = viewer.openFile(v_example, error);
        ViewerWindow* second = viewer.openFile(v_example, error);
        ASSERT_TRUE(first && second) << error;
        ASSERT_TRUE(QTest::qWaitForWindowExposed(first));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(second));

        DeviceRectangle cascade[2];
        wsiTopWindow::calculateCascade(2, cascade);
        viewer.cascade();
        EXPECT_TRUE(frameReaches(*first, cascade[0]));
        EXPECT_TRUE(frameReaches(*second, cascade[1]));

        const QRect screen = WsdWindow::displayArea(nullptr);
        const DeviceRectangle area(screen.left(), screen.top(), screen.right() + 1,
                                   screen.bottom() + 1);
        DeviceRectangle tile[2];
        wsiTopWindow::calculateTile(area, 0, 2, tile, false);
        viewer.tile();
        EXPECT_TRUE(frameReaches(*first, tile[0]));
        EXPECT_TRUE(frameReaches(*second, tile[1]));

        // The first window shows the example with its cursor; the picture is left to look at.
        viewer.cascade();
        ASSERT_TRUE(frameReaches(*first, cascade[0]));
        viewer.activate(0);
        first->view().setCursorTime(150);
        QTest::qWait(300);
        const QImage shot = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        ASSERT_TRUE(shot.save(QString::fromUtf8(TQ_TEST_OUTPUT_DIR "/viewer.png")));
        // Inside the first window's waveform area the diagram is painted on white.
        const QPoint corner = first->view().viewport()->mapToGlobal(QPoint(0, 0));
        EXPECT_EQ(shot.pixelColor(corner + QPoint(2, 2)), QColor(Qt::white));
    }
    Config::shutdown();
    Config::setSettingsFile(QString());
}

} // namespace
