// `record` of a Project made with `new --semi`, as a user types it at a terminal: the program
// runs on a pseudo-terminal, bouncing from the General MIDI SoundFont, and the test answers
// its questions; and the same run with standard input from a pipe.
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tg::test {
namespace {

constexpr const char* kFont = "/usr/share/sounds/sf2/FluidR3_GM.sf2";
constexpr int kAnswerTimeoutMs = 120 * 1000; // loading the font under the sanitizers is slow

class SemiAutomaticCli : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(dir.file("home"));
        std::filesystem::create_directories(dir.file("data"));
        setenv("TONEGRABBER_HOME", dir.file("home").c_str(), 1);
        std::string output;
        // Keys 48, 66 and 84.
        ASSERT_EQ(cli("new '" + project() + "' --semi --data-path '" + dir.file("data") +
                          "' --audio-in -Vst\\ Plugin- --midi-out -Vst\\ Plugin- --plugin "
                          "--keys 37 --step 18 --note-length 0.8 --release-length 0.3 "
                          "--format '44.1KHz, Mono, 16bit'",
                      output),
                  0)
            << output;
    }

    void TearDown() override
    {
        if (child > 0) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
        if (terminal >= 0)
            close(terminal);
    }

    // Runs the command with standard input from `input` (a shell redirection).
    int cli(const std::string& arguments, std::string& output, const char* input = "/dev/null")
    {
        return runCliProcess(arguments + " < " + input, &output);
    }

    // Starts `record` on a new pseudo-terminal.
    void startOnTerminal()
    {
        child = forkpty(&terminal, nullptr, nullptr, nullptr);
        ASSERT_GE(child, 0);
        if (child == 0) {
            const std::string instrument = std::string(kFont) + "?preset=0";
            execl(TG_CLI_PATH, TG_CLI_PATH, "record", project().c_str(), "--offline",
                  "--instrument", instrument.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
    }

    // Reads the terminal until `text` appears after what earlier calls matched.
    bool expect(const std::string& text)
    {
        const auto deadline =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(kAnswerTimeoutMs);
        for (;;) {
            const size_t found = transcript.find(text, matched);
            if (found != std::string::npos) {
                matched = found + text.size();
                return true;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0 || !readTerminal(int(left.count())))
                return false;
        }
    }

    bool readTerminal(int timeoutMs)
    {
        pollfd input{terminal, POLLIN, 0};
        if (poll(&input, 1, timeoutMs) <= 0)
            return false;
        char buffer[4096];
        const ssize_t got = read(terminal, buffer, sizeof buffer);
        if (got <= 0)
            return false; // the program closed the terminal
        transcript.append(buffer, size_t(got));
        return true;
    }

    void answer(const std::string& line)
    {
        const std::string typed = line + "\n";
        ASSERT_EQ(write(terminal, typed.data(), typed.size()), ssize_t(typed.size()));
    }

    int exitStatus()
    {
        while (readTerminal(1000)) {
        }
        int status = 0;
        waitpid(child, &status, 0);
        child = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string project() const { return dir.file("Keys.TGprj"); }

    TempDir dir;
    pid_t child = -1;
    int terminal = -1;
    std::string transcript;
    size_t matched = 0;
};

TEST_F(SemiAutomaticCli, TakesAreKeptDiscardedAndNamedAsAnswered)
{
    startOnTerminal();
    const char* const kQuestion = "name the key (n NAME), prehear (p)";
    // What the program says, and the line typed then (none: only wait for the text).
    const std::vector<std::pair<const char*, const char*>> dialogue = {
        {"(Semi Automatic Mode)", nullptr},
        {"Next Key: NOTE 48", ""},
        {"Take of NOTE 48", nullptr},
        {kQuestion, "k"},
        // The first take of 66 is discarded: the same key comes again.
        {"Next Key: NOTE 66", ""},
        {kQuestion, "p"},
        {"Prehear is not available here", "x"},
        {"Please answer k, d, n NAME or p.", "d"},
        {"Next Key: NOTE 66", ""},
        {"Take of NOTE 66", nullptr},
        {kQuestion, "n Soft Pad"},
        {"[Key Name: \"Soft Pad\"]", "k"},
        {"Kept NOTE 66 (F#4) of \"Velocity 127\" as \"Soft Pad\".", nullptr},
        {"Next Key: NOTE 84", ""},
        {kQuestion, "n Top"},
        {"[Key Name: \"Top\"]", "k"},
    };
    for (const auto& [said, typed] : dialogue) {
        ASSERT_TRUE(expect(said)) << transcript;
        if (typed != nullptr)
            answer(typed);
    }
    ASSERT_EQ(exitStatus(), 0) << transcript;
    EXPECT_EQ(transcript.find("Next Key: NOTE 84", matched), std::string::npos) << transcript;

    std::string output;
    ASSERT_EQ(cli("info --json '" + project() + "'", output), 0) << output;
    const nlohmann::json keys = nlohmann::json::parse(output)["multisamples"][0]["keys"];
    EXPECT_EQ(keys[48]["name"], "");
    EXPECT_EQ(keys[66]["name"], "Soft Pad");
    EXPECT_EQ(keys[84]["name"], "Top");
    for (int note : {48, 66, 84}) {
        EXPECT_EQ(keys[note]["hasAudio"], 1) << note;
        // Each take holds the note: its start was found after the half-second lead-in.
        EXPECT_GT(keys[note]["Note_In"].get<int>(), 20000) << note;
        EXPECT_GT(keys[note]["Note_Out"].get<int>(), keys[note]["Note_In"].get<int>()) << note;
    }
}

TEST_F(SemiAutomaticCli, PipeNeedsYesWhichKeepsEveryTake)
{
    std::string output;
    const std::string record = "record '" + project() + "' --offline --instrument '" + kFont + "'";
    EXPECT_EQ(cli(record, output), 2) << output;
    EXPECT_NE(output.find("standard input is not a terminal; give --yes"), std::string::npos)
        << output;
    EXPECT_TRUE(std::filesystem::is_empty(dir.file("data"))) << "recorded before the refusal";

    ASSERT_EQ(cli(record + " --yes", output), 0) << output;
    EXPECT_NE(output.find("(Semi Automatic Mode)"), std::string::npos) << output;
    ASSERT_EQ(cli("info --json '" + project() + "'", output), 0) << output;
    const nlohmann::json keys = nlohmann::json::parse(output)["multisamples"][0]["keys"];
    for (int note : {48, 66, 84})
        EXPECT_EQ(keys[note]["hasAudio"], 1) << note;
}

} // namespace
} // namespace tg::test
