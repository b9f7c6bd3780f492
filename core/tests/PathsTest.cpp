#include "core/Paths.h"

#include <gtest/gtest.h>

#include <cstdlib>

TEST(Paths, JoinUsesOneSeparator)
{
    EXPECT_EQ(tg::joinPath("/a/b", "c.TGprj"), "/a/b/c.TGprj");
    EXPECT_EQ(tg::joinPath("/a/b/", "c"), "/a/b/c");
    EXPECT_EQ(tg::joinPath("", "c"), "c");
}

TEST(Paths, StoredBackslashesBecomeNative)
{
    EXPECT_EQ(tg::nativePath("..\\Piano_data"), "../Piano_data");
    EXPECT_EQ(tg::nativePath("/already/native"), "/already/native");
}

TEST(Paths, UserDataFolderFollowsTonegrabberHome)
{
    setenv("TONEGRABBER_HOME", "/tmp/somewhere", 1);
    EXPECT_EQ(tg::userDataFolder(), "/tmp/somewhere");
    unsetenv("TONEGRABBER_HOME");
    const std::string folder = tg::userDataFolder();
    EXPECT_NE(folder.find("Corvane/Tonegrabber6"), std::string::npos) << folder;
}
