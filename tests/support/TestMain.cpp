// The main of every test executable: a Qt application on the offscreen platform (so that
// painting and fonts work without a display) and the toolkit's static buffer ring.
#include "core/TqObject.h"

#include <QApplication>
#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    TqObject::startUp();
    const int result = RUN_ALL_TESTS();
    TqObject::shutDown();
    return result;
}
