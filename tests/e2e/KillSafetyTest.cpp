// The program killed outright (SIGKILL: no handler, no clean-up) at random moments of an
// offline recording run and of a settings save: the project file always loads, and every take
// the run reported finished is still on disk and in the project.
#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>

namespace tg::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kSoundFont = "/usr/share/sounds/sf2/FluidR3_GM.sf2";

// One run of the program, its stderr in a file; killed after `killAfter` unless it ends first.
struct Outcome {
    bool killed = false;
    int exitStatus = -1;
    double seconds = 0.0;
    std::string err;
};

Outcome runProgram(const std::vector<std::string>& arguments, const std::string& errFile,
                   std::chrono::microseconds killAfter)
{
    Outcome outcome;
    const auto begin = Clock::now();
    const pid_t child = startCliProcess(arguments, "/dev/null", errFile);
    int status = 0;
    const auto deadline = begin + killAfter;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (Clock::now() >= deadline) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    outcome.killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    outcome.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    outcome.err = readFileBytes(errFile);
    return outcome;
}

// The files of the takes a run reported finished: the first N of the files it announced,
// where N is the last "(N done)" it printed (printed once the take and the project are saved).
std::vector<std::string> finishedTakes(const std::string& err)
{
    std::vector<std::string> announced;
    const std::regex saving(R"re(saving "([^"]+)")re");
    for (auto it = std::sregex_iterator(err.begin(), err.end(), saving);
         it != std::sregex_iterator(); ++it)
        announced.push_back((*it)[1]);
    size_t done = 0;
    const std::regex progress(R"(\((\d+) done\))");
    for (auto it = std::sregex_iterator(err.begin(), err.end(), progress);
         it != std::sregex_iterator(); ++it)
        done = std::stoul((*it)[1]);
    announced.resize(std::min(done, announced.size()));
    return announced;
}

class KillSafety : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(dir.file("data"));
        // 44 keys (every second one of 88), short notes: a whole run takes a few seconds.
        const Outcome made =
            runProgram({"new", project(), "--data-path", dir.file("data"), "--audio-in",
                        "-Vst Plugin-", "--midi-out", "-Vst Plugin-", "--plugin", "--keys", "88",
                        "--step", "2", "--note-length", "0.1", "--release-length", "0.05",
                        "--format", "44.1KHz, Mono, 16bit"},
                       dir.file("new.err"), std::chrono::seconds(120));
        ASSERT_EQ(made.exitStatus, 0) << made.err;
    }

    std::string project() const { return dir.file("Keys.TGprj"); }

    std::vector<std::string> recordArguments() const
    {
        return {"record", project(), "--offline", "--instrument",
                std::string(kSoundFont) + "?preset=0"};
    }

    // The project file loads, and every take ever reported finished is a whole WAV file whose
    // key in the project has the markers the run set.
    void expectNothingLost(const std::set<std::string>& finished)
    {
        const std::unique_ptr<Model> model = loadProjectFile(project());
        ASSERT_EQ(model->projectCount(), 1);
        const Project& p = model->project(0);
        std::string message;
        std::set<std::string> withMarkers;
        for (int note = 0; note < kKeyCount; ++note) {
            const TGmsl_key& key = p.msl[0].keys[note];
            if (key.Note_Out > key.Note_In)
                withMarkers.insert(keySampleFileName(p, p.msl[0], note));
        }
        for (const std::string& take : finished) {
            WaveFormat format;
            std::vector<uint8_t> data;
            EXPECT_EQ(readWav(take, format, data, message), 1) << message;
            EXPECT_GT(data.size(), 4410u) << take;
            EXPECT_EQ(withMarkers.count(take), 1u) << take << " has no markers in the project";
        }
    }

    TempDir dir;
};

TEST_F(KillSafety, KilledRecordingsAndSavesNeverLoseTheProjectOrAFinishedTake)
{
    // One whole run first: how long it takes, and when its first take is finished.
    const Outcome whole =
        runProgram(recordArguments(), dir.file("run.err"), std::chrono::seconds(300));
    ASSERT_EQ(whole.exitStatus, 0) << whole.err;
    std::set<std::string> finished;
    const std::vector<std::string> all = finishedTakes(whole.err);
    ASSERT_EQ(all.size(), 44u) << whole.err;
    finished.insert(all.begin(), all.end());
    expectNothingLost(finished);

    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    // The kills fall anywhere from the start-up to the end of the run.
    std::uniform_int_distribution<int64_t> recordDelay(0, int64_t(whole.seconds * 1e6));
    const Outcome save = runProgram({"set", project(), "msl_recordsettings_notelength1=0.1"},
                                    dir.file("set.err"), std::chrono::seconds(60));
    ASSERT_EQ(save.exitStatus, 0) << save.err;
    std::uniform_int_distribution<int64_t> setDelay(0, int64_t(save.seconds * 1e6));

    // A kill can come after a quick run has already finished, so the rounds go on until 50
    // kills have landed (bounded, so a program that always finishes first fails below).
    int kills = 0;
    for (int round = 0; kills < 50 && round < 100 && !HasFailure(); ++round) {
        const bool recording = round % 3 != 2;
        const Outcome outcome =
            recording
                ? runProgram(recordArguments(), dir.file("run.err"),
                             std::chrono::microseconds(recordDelay(random)))
                : runProgram({"set", project(),
                              "msl_recordsettings_notelength1=0.1" + std::to_string(round % 2)},
                             dir.file("set.err"), std::chrono::microseconds(setDelay(random)));
        SCOPED_TRACE((recording ? "record killed after " : "set killed after ") +
                     std::to_string(outcome.seconds) + " s");
        kills += outcome.killed ? 1 : 0;
        if (!outcome.killed) {
            EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
        }
        if (recording)
            for (const std::string& take : finishedTakes(outcome.err))
                finished.insert(take);
        expectNothingLost(finished);
    }
    EXPECT_GE(kills, 50);
    std::fprintf(stderr, "%d kills; %zu takes reported finished, none lost\n", kills,
                 finished.size());
}

} // namespace
} // namespace tg::test
