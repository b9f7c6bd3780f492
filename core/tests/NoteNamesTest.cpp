#include "core/NoteNames.h"

#include <gtest/gtest.h>

TEST(NoteNames, OctaveStartsAtMinusOneAndMiddleCIsC4)
{
    EXPECT_EQ(tg::noteName(0), "C-1");
    EXPECT_EQ(tg::noteName(11), "B-1");
    EXPECT_EQ(tg::noteName(12), "C0");
    EXPECT_EQ(tg::noteName(60), "C4");
    EXPECT_EQ(tg::noteName(61), "C#4");
    EXPECT_EQ(tg::noteName(69), "A4");
    EXPECT_EQ(tg::noteName(127), "G9");
}

TEST(NoteNames, OutOfRangeNotesHaveNoName)
{
    EXPECT_EQ(tg::noteName(-1), "");
    EXPECT_EQ(tg::noteName(128), "");
}
