// These tests own a Qt application. They run off screen unless a platform is asked for by QT_QPA_PLATFORM.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::setenv("WICKFIELD_MOTION", "reduced", 0);  // sheets stand at once
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
