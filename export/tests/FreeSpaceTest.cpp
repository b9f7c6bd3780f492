#include "export/FreeSpace.h"

#include "export/ExportSettings.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

std::unique_ptr<tg::Project> projectWithKeys()
{
    auto p = std::make_unique<tg::Project>();
    p->mslCount = 2;
    for (int m = 0; m < 2; ++m) {
        tg::TGmsl_key& key = p->msl[m].keys[60];
        key.keyState = 1;
        key.hasAudio = 1;
        key.Note_In = 100;
        key.Note_Out = 44199; // 44100 frames
    }
    p->msl[0].keys[61].keyState = 1; // present but never recorded: not counted
    return p;
}

tg::WaveFormatProbe probeOf(uint32_t rate)
{
    return [rate](const std::string&, tg::WaveFormat& format) {
        format = tg::makeWaveFormat(rate, 1, 24);
        return true;
    };
}

} // namespace

TEST(FreeSpace, SameSettingsCountAs44kStereo16Bit)
{
    auto p = projectWithKeys();
    using namespace tg::exportbits;
    const uint32_t same = kFrequencySame | kDepthSame | kChannelsSame;
    // 2 keys x 44100 frames x 2 channels x 2 bytes, whatever the files hold.
    EXPECT_EQ(tg::estimateExportBytes(*p, same, probeOf(44100)), 352800u);
    // Files at 88.2 kHz are halved to 44.1 kHz.
    EXPECT_EQ(tg::estimateExportBytes(*p, same, probeOf(88200)), 176400u);
    // 48 kHz mono 24-bit target from 44.1 kHz files.
    EXPECT_EQ(
        tg::estimateExportBytes(*p, kFrequency48000 | kDepth24 | kChannelsMonoLeft, probeOf(44100)),
        2u * 48000 * 3);
}

TEST(FreeSpace, UsableLoopsAreCountedInsteadOfTheNote)
{
    tg::TGmsl_key key;
    key.Note_In = 0;
    key.Note_Out = 999;
    key.Loop_In = 200;
    key.Loop_Out = 299;
    EXPECT_EQ(tg::estimatedFrames(key), 1000); // loop off
    key.loopMode = 1;
    EXPECT_EQ(tg::estimatedFrames(key), 100);
    key.loopMode = 2;
    key.bfxfadeLen = 10;
    EXPECT_EQ(tg::estimatedFrames(key), 2 * 99 + 1 - 10);
    key.loopMode = 1;
    key.Loop_Out = 205; // 5 frames apart: too short
    EXPECT_EQ(tg::estimatedFrames(key), 1000);
    key.Loop_Out = 1000; // past the note
    EXPECT_EQ(tg::estimatedFrames(key), 1000);
}

TEST(FreeSpace, FiveMebibytesOfGraceAFolderNotYetMadeAndAnUnreadableFile)
{
    EXPECT_TRUE(tg::enoughSpace(1000, 1000 + 5242880));
    EXPECT_FALSE(tg::enoughSpace(1000, 1001 + 5242880));
    auto p = projectWithKeys();
    std::string message;
    // A folder the export has yet to create counts the free space of its drive.
    EXPECT_TRUE(
        tg::checkFreeSpace(*p, 0x20408, "/tmp/tg-not-there/deeper", probeOf(44100), message));
    const auto failing = [](const std::string&, tg::WaveFormat&) { return false; };
    EXPECT_EQ(tg::estimateExportBytes(*p, 0x20408, failing), UINT64_MAX);
    EXPECT_FALSE(tg::checkFreeSpace(*p, 0x20408, "/tmp", failing, message));
    EXPECT_EQ(message, "Sorry! Not enough space available for export. Aborting!");
}
