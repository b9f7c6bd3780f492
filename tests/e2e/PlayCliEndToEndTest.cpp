// `play` as a user runs it: a sampled organ key held for three seconds on an output that is
// a JACK client of the test's own. What arrived there must be the rendered note once, its
// loop over and over while the key was held, then the release, sample for sample.
#include "tests/e2e/SampledKey.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <string>

namespace tg::test {
namespace {

constexpr const char* kCaptureClient = "tg-e2e-play-capture";
constexpr double kHoldSeconds = 3.0;

TEST(PlayCli, HeldKeyPlaysNoteOnceLoopUntilLetGoThenRelease)
{
    TempDir dir;
    const std::string home = dir.file("home");
    SampledKey sampled;
    std::string output;
    ASSERT_TRUE(makeSampledKey(dir.path(), home, sampled, output)) << output;
    chooseAudioOutput(home, kCaptureClient);

    JackCapture capture(kCaptureClient, 60.0);
    ASSERT_TRUE(capture.ok());
    ASSERT_EQ(capture.sampleRate(), int(sampled.format.nSamplesPerSec));
    expectKeyHeardRight(capture, sampled, kHoldSeconds, LetGo::Release, [&] {
        ASSERT_EQ(runCliProcess("play '" + sampled.project + "' --key " +
                                    std::to_string(SampledKey::kNote) + " --hold " +
                                    std::to_string(kHoldSeconds),
                                &output, home),
                  0)
            << output;
    });
}

} // namespace
} // namespace tg::test
