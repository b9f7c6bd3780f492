// Main of the widget tests: the offscreen platform, a fresh user data folder per process,
// and one QApplication for every test.
#include "shell/QtPlatformLeaks.h"
#include "tests/support/TempDir.h"

#include <QApplication>
#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::testing::InitGoogleTest(&argc, argv);
    tg::test::TempDir home;
    setenv("TONEGRABBER_HOME", home.path().c_str(), 1);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
