// Keys and layers read from sample file names, and the order a folder is imported in.
#include "extras/FileNameKeys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using tg::keyFromFileName;
using tg::layerFromFileName;

TEST(FileNameKeys, NoteNamesAsTheProgramWritesThemAndWithFlats)
{
    EXPECT_EQ(keyFromFileName("Piano C#3"), 49);
    EXPECT_EQ(keyFromFileName("Piano Db3"), 49);
    EXPECT_EQ(keyFromFileName("Piano_C4"), 60);
    EXPECT_EQ(keyFromFileName("bass c-1"), 0);
    EXPECT_EQ(keyFromFileName("Lead-G9"), 127);
    EXPECT_EQ(keyFromFileName("Bell Bb-1"), 10);
    // The long export template: the note name at the end wins over the numbers before it.
    EXPECT_EQ(keyFromFileName("Piano-00-Piano-061-Noname-C#4"), 61);
}

TEST(FileNameKeys, WordsModelNamesAndOutOfRangeNotesGiveNoKey)
{
    EXPECT_EQ(keyFromFileName("Bass Pad"), -1);
    EXPECT_EQ(keyFromFileName("D50 Fantasia"), -1); // "D5" followed by a digit
    EXPECT_EQ(keyFromFileName("Take2"), -1);
    EXPECT_EQ(keyFromFileName("Tone G#9"), -1);  // above 127
    EXPECT_EQ(keyFromFileName("Tone Cb-1"), -1); // below 0
}

TEST(FileNameKeys, NumbersStandingAloneAreMidiNotes)
{
    EXPECT_EQ(keyFromFileName("Piano 60"), 60);
    EXPECT_EQ(keyFromFileName("noname-00-060"), 60);
    EXPECT_EQ(keyFromFileName("Strings 200"), -1);
    EXPECT_EQ(keyFromFileName("Piano60"), -1);
    EXPECT_EQ(keyFromFileName("Piano v100"), -1); // a layer tag, not a key
}

TEST(FileNameKeys, LayerTags)
{
    EXPECT_EQ(layerFromFileName("Piano C3 v2"), 2);
    EXPECT_EQ(layerFromFileName("Piano_C3_VEL3"), 3);
    EXPECT_EQ(layerFromFileName("layer0-C3"), 0);
    EXPECT_EQ(layerFromFileName("Violin C3"), -1);
    EXPECT_EQ(layerFromFileName("Piano C3 v2x"), -1);
    EXPECT_EQ(layerFromFileName("Piano C3"), -1);
}

TEST(FileNameKeys, FoldersSortAsPeopleCount)
{
    std::vector<std::string> names{"Kick 10.wav", "Kick 2.wav", "Hat.wav", "Kick 1.wav",
                                   "Kick 02.wav"};
    std::sort(names.begin(), names.end(), tg::naturalLess);
    const std::vector<std::string> expected{"Hat.wav", "Kick 1.wav", "Kick 02.wav", "Kick 2.wav",
                                            "Kick 10.wav"};
    EXPECT_EQ(names, expected);
}
