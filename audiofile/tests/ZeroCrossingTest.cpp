// The zero-crossing finder: which frame of a crossing pair wins, directions, channel rules.
#include "audiofile/ZeroCrossing.h"

#include "audiofile/tests/TestAudio.h"

#include <gtest/gtest.h>

using namespace tg;
using namespace tg::test;

namespace {

struct Signal {
    WaveFormat format;
    std::vector<uint8_t> bytes;
    int32_t find(int32_t position, int direction, int rule = kZeroCrossingEitherChannel) const
    {
        return findZeroCrossing(&format, bytes.data(), static_cast<int32_t>(bytes.size()), position,
                                direction, rule);
    }
};

Signal mono16(const std::vector<int32_t>& v)
{
    Signal s{makeWaveFormat(44100, 1, 16), {}};
    s.bytes = packSamples(s.format, v);
    return s;
}

Signal stereo16(const std::vector<int32_t>& interleaved)
{
    Signal s{makeWaveFormat(44100, 2, 16), {}};
    s.bytes = packSamples(s.format, interleaved);
    return s;
}

} // namespace

TEST(ZeroCrossing, SignChangeReturnsTheFrameNearerZeroAndTheFirstOnTies)
{
    //                       0    1    2   3   4   5   6    7
    Signal s = mono16({500, 400, 300, 10, -5, -9, 7, 900});
    EXPECT_EQ(s.find(0, +1), 4); // 10 | -5: -5 is nearer zero
    EXPECT_EQ(s.find(7, -1), 6); // 7 | -9 going back: 7 is nearer
    Signal tie = mono16({100, 50, -50, -100});
    EXPECT_EQ(tie.find(0, +1), 1);
    EXPECT_EQ(tie.find(3, -1), 2);
}

TEST(ZeroCrossing, ExactZeroCountsAndARunOfZerosGivesItsFirstFrameInTheSearchDirection)
{
    Signal s = mono16({5, 6, 0, 0, 0, 7, 8});
    EXPECT_EQ(s.find(0, +1), 2);
    EXPECT_EQ(s.find(6, -1), 4);
    EXPECT_EQ(s.find(3, +1), 3);
}

TEST(ZeroCrossing, NearestPrefersTheCloserSideAndBackwardOnEqualDistance)
{
    //                      0   1   2   3   4   5   6   7   8
    Signal s = mono16({-3, 0, 5, 6, 7, 8, 9, 0, 4});
    EXPECT_EQ(s.find(3, 0), 1); // back: 1 (distance 2), forward: 7 (distance 4)
    EXPECT_EQ(s.find(5, 0), 7);
    EXPECT_EQ(s.find(4, 0), 1); // 3 each way: backward wins
}

TEST(ZeroCrossing, EdgesAndBadArguments)
{
    Signal s = mono16({5, 6, 7, 8});
    EXPECT_EQ(s.find(0, -1), 0);
    EXPECT_EQ(s.find(3, +1), 3);
    EXPECT_EQ(s.find(1, +1), 3);  // no crossing: the last frame inside
    EXPECT_EQ(s.find(99, -1), 0); // clamped, then runs to the start
    EXPECT_EQ(s.find(-50, +1), 3);
    EXPECT_EQ(findZeroCrossing(nullptr, s.bytes.data(), 8, 1, 1, 0), 0);
    EXPECT_EQ(findZeroCrossing(&s.format, nullptr, 8, 1, 1, 0), 0);
    EXPECT_EQ(findZeroCrossing(&s.format, s.bytes.data(), 0, 1, 1, 0), 0);
}

TEST(ZeroCrossing, EitherChannelRuleTakesLeftFirstThenRight)
{
    // Left crosses between 2 and 3, right between 1 and 2.
    Signal s = stereo16({10, 10, 9, 10, 8, -1, -7, -2});
    EXPECT_EQ(s.find(0, +1), 2); // right 10 -> -1 between frames 1 and 2: -1 is nearer
    Signal leftOnly = stereo16({10, 10, 9, 10, 8, 11, -20, 12});
    EXPECT_EQ(leftOnly.find(0, +1), 2); // 8 | -20: 8 nearer
}

TEST(ZeroCrossing, BothChannelsRuleNeedsBothToCrossBetweenTheSameFrames)
{
    // Left crosses between 1|2, right between 3|4: never together.
    Signal apart = stereo16({10, 10, 5, 5, -5, 6, -6, 7, -7, -8});
    EXPECT_EQ(apart.find(0, +1, kZeroCrossingBothChannels), 4);
    EXPECT_EQ(apart.find(0, +1, kZeroCrossingEitherChannel), 1);
    // Both cross between 1|2; frame 2 has the smaller sum of magnitudes.
    Signal together = stereo16({10, 10, 6, 5, -2, -3, -9, -9});
    EXPECT_EQ(together.find(0, +1, kZeroCrossingBothChannels), 2);
    // One channel touching zero while the other crosses also counts.
    Signal touch = stereo16({10, 10, 0, 4, 3, -4});
    EXPECT_EQ(touch.find(0, +1, kZeroCrossingBothChannels), 1);
}

TEST(ZeroCrossing, EightBitSamplesAreCentredOn128)
{
    Signal s{makeWaveFormat(22050, 1, 8), {}};
    s.bytes = {200, 180, 130, 127, 100};
    EXPECT_EQ(s.find(0, +1), 3); // +2 | -1
}
