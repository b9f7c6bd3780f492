// Joining paths. Stored backslash paths are checked where projects are read
// (ProjectFileTest.RelativeDataPaths...), the user data folder at start-up (StartupFolders).
#include "core/Paths.h"

#include <gtest/gtest.h>

TEST(Paths, JoinUsesOneSeparator)
{
    EXPECT_EQ(tg::joinPath("/a/b", "c.TGprj"), "/a/b/c.TGprj");
    EXPECT_EQ(tg::joinPath("/a/b/", "c"), "/a/b/c");
    EXPECT_EQ(tg::joinPath("", "c"), "c");
}
