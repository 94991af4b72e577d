// The main of the tests that need a real X server: it starts a private Xvfb display without
// a window manager and runs Qt's xcb platform on it. When Xvfb cannot start every test skips
// with the reason.
#include "X11Display.h"
#include "XvfbServer.h"

#include "core/TqObject.h"

#include <QApplication>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

std::string x11SkipReason;

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    std::unique_ptr<XvfbServer> server;
    if (!::testing::GTEST_FLAG(list_tests)) {
        server = std::make_unique<XvfbServer>(x11ScreenWidth, x11ScreenHeight);
        if (server->running()) {
            setenv("DISPLAY", server->display().c_str(), 1);
            setenv("QT_QPA_PLATFORM", "xcb", 1);
        } else {
            x11SkipReason = server->message();
        }
    }
    if (!server || !server->running())
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    int result;
    {
        QApplication application(argc, argv);
        TqObject::startUp();
        result = RUN_ALL_TESTS();
        TqObject::shutDown();
    }
    return result;
}
