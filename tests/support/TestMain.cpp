// Test main: every test process gets a fresh, empty user data folder through
// TONEGRABBER_HOME, so no test reads or writes the real one.
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    tg::test::TempDir home;
    setenv("TONEGRABBER_HOME", home.path().c_str(), 1);
    return RUN_ALL_TESTS();
}
