// The estimation dialog over projects the command line made: its figures are those of the
// command line's `estimate` for the same scope, and its options leave keys out.
#include "shell/wizard/EstimationDialog.h"
#include "core/Model.h"
#include "shell/MainWindow.h"
#include "shell/ProjectFileFlow.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace tg::shell {
namespace {

// What the real tonegrabber-cli printed on standard output.
std::string cliOutput(const std::string& arguments)
{
    std::string output;
    test::runCliProcess(arguments + " 2>/dev/null", &output);
    return output;
}

RecordingEstimate cliEstimate(const std::string& arguments)
{
    const auto figures = nlohmann::json::parse(cliOutput("estimate " + arguments + " --json"));
    return {figures.at("seconds").get<double>(), figures.at("bytes").get<uint64_t>()};
}

class EstimationDialogTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(dir.file("data"));
        const std::string data = " --data-path '" + dir.file("data") + "'";
        cliOutput("new '" + layered + "'" + data +
                  " --layers 3 --keys 49 --step 2 --note-length 4 --release-length 1");
        cliOutput("new '" + mono + "'" + data + " --keys 88 --format '48KHz, Mono, 8bit'");
        window.projectFiles().openFiles(
            {QString::fromStdString(layered), QString::fromStdString(mono)});
        ASSERT_EQ(model.projectCount(), 2);
        model.selectProject(0);
        model.currentProject()->currentMsl = 1;
    }

    test::TempDir dir;
    const std::string layered = dir.file("Layered.TGprj");
    const std::string mono = dir.file("Mono.TGprj");
    Model model;
    MainWindow window{model};
};

TEST_F(EstimationDialogTest, FiguresAreThoseOfTheCommandLineForEachScope)
{
    EstimationDialog dialog(model);
    EXPECT_EQ(dialog.windowTitle(), "Estimate Time and Size");

    const RecordingEstimate project = cliEstimate("'" + layered + "' --scope project");
    EXPECT_DOUBLE_EQ(dialog.estimate().seconds, project.seconds); // the preselected scope
    EXPECT_EQ(dialog.estimate().bytes, project.bytes);
    // The figures as the command line prints them.
    EXPECT_EQ((dialog.timeText() + "\n" + dialog.sizeText() + "\n").toStdString(),
              cliOutput("estimate '" + layered + "' --scope project"));

    dialog.findChild<QAbstractButton*>("scopeMultiSample")->click();
    const RecordingEstimate second =
        cliEstimate("'" + layered + "' --scope multisample --multisample 1");
    EXPECT_DOUBLE_EQ(dialog.estimate().seconds, second.seconds);
    EXPECT_EQ(dialog.estimate().bytes, second.bytes);
    EXPECT_LT(second.bytes, project.bytes);

    dialog.findChild<QAbstractButton*>("scopeAll")->click();
    const RecordingEstimate other = cliEstimate("'" + mono + "' --scope project");
    EXPECT_DOUBLE_EQ(dialog.estimate().seconds, project.seconds + other.seconds);
    EXPECT_EQ(dialog.estimate().bytes, project.bytes + other.bytes);
}

// Keeping locked keys leaves them out; recording only empty keys leaves out every key with audio.
TEST_F(EstimationDialogTest, OptionsLeaveOutKeysWithAudio)
{
    TGmsl& msl = *model.currentMultiSample();
    for (TGmsl_key& key : msl.keys)
        key.hasAudio = key.keyState;
    msl.keys[60].locked = 1;

    EstimationDialog dialog(model);
    dialog.findChild<QAbstractButton*>("scopeMultiSample")->click();
    const double all = dialog.estimate().seconds;
    auto* keepLocked = dialog.findChild<QCheckBox*>("keepLocked");
    keepLocked->click();
    EXPECT_LT(dialog.estimate().seconds, all);
    keepLocked->click();
    dialog.findChild<QCheckBox*>("onlyEmpty")->click();
    EXPECT_EQ(dialog.timeText(), "0 h 0 min 0 sec");
    EXPECT_EQ(dialog.sizeText(), "0 MB");
}

} // namespace
} // namespace tg::shell
