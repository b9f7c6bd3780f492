// The level dialogs over real Key-Sample files: normalize, the clipping question of change
// gain, and Cancel in the progress dialog while a long batch runs.
#include "shell/dialogs/ChangeGainDialog.h"
#include "shell/dialogs/NormalizeDialog.h"
#include "shell/dialogs/ProgressDialog.h"

#include "analysis/Levels.h"
#include "analysis/tests/TestSignals.h"
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Model.h"
#include "core/Names.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/TempDir.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QProgressBar>
#include <QPushButton>
#include <gtest/gtest.h>

#include <cmath>

namespace tg::shell {
namespace {

class LevelDialogs : public ::testing::Test {
  protected:
    void SetUp() override
    {
        model.newProject();
        model.addMultiSample();
        Project& project = *model.currentProject();
        copyText(project.name, "Levels");
        copyText(project.dataPath, dir.path().c_str());
        copyText(project.msl[0].name, "Piano");
    }

    // A stereo 16-bit Key-Sample of `frames` frames peaking at `peak` (fraction of full scale).
    void addKey(int note, double peak, int frames = 2000)
    {
        const WaveFormat format = makeWaveFormat(44100, 2, 16);
        const auto data = test::makeSignal(format, frames, [peak](int64_t f, int channel) {
            const double s = peak * std::sin(2 * M_PI * f / 100.0) * (f == 25 ? 1.0 : 0.999);
            return int32_t(std::lround((channel == 0 ? s : s / 2) * 32767));
        });
        std::string message;
        ASSERT_TRUE(writeWav(path(note), format, data, message)) << message;
        TGmsl_key& key = model.currentProject()->msl[0].keys[note];
        key.keyState = 1;
        key.hasAudio = 1;
    }

    std::string path(int note) { return keySampleFileName(*model.currentProject(), msl(), note); }
    const TGmsl& msl() { return model.currentProject()->msl[0]; }

    double peakDb(int note)
    {
        WaveFormat format;
        std::vector<uint8_t> data;
        std::string message;
        EXPECT_TRUE(readWav(path(note), format, data, message)) << message;
        const ChannelLevels levels = measureLevels(format, data.data(), data.size());
        return levelInDb(std::max(levels.left, levels.right));
    }

    static void clickOk(QDialog& dialog)
    {
        dialog.findChild<QDialogButtonBox*>("buttons")->button(QDialogButtonBox::Ok)->click();
    }

    test::TempDir dir;
    Model model;
};

TEST_F(LevelDialogs, NormalizeToMinusOneDbThroughTheDialog)
{
    addKey(60, 0.25);
    addKey(64, 0.9);
    NormalizeDialog dialog(model, nullptr);
    dialog.show();
    dialog.findChild<QDoubleSpinBox*>("targetDb")->setValue(-1.0);
    {
        test::MessageBoxAnswerer answerer;
        clickOk(dialog);
        EXPECT_EQ(answerer.texts(), QStringList{"Normalizing done."});
    }
    for (int note : {60, 64})
        EXPECT_NEAR(peakDb(note), -1.0, 0.01) << note;
    EXPECT_EQ(dialog.result(), QDialog::Accepted);

    // The level finder reports on the same files.
    NormalizeDialog again(model, nullptr);
    test::MessageBoxAnswerer reporter;
    again.findChild<QPushButton*>("findInMultiSample")->click();
    ASSERT_EQ(reporter.texts().size(), 1);
    EXPECT_TRUE(reporter.texts()[0].startsWith("Maximum level in Multi-Sample: -1.0"))
        << reporter.texts()[0].toStdString();
}

TEST_F(LevelDialogs, ClippingQuestionAnsweredNoChangesNothing)
{
    addKey(60, std::pow(10.0, -3.0 / 20)); // -3 dB: +12 dB would clip
    addKey(62, 0.1);
    const std::string before = test::readFileBytes(path(62));
    ChangeGainDialog dialog(model, nullptr);
    dialog.show();
    dialog.findChild<QDoubleSpinBox*>("gainDb")->setValue(12.0);
    {
        test::MessageBoxAnswerer answerer(QMessageBox::No);
        clickOk(dialog);
        EXPECT_EQ(answerer.texts(), QStringList{"Some clipping will occur. Continue anyway?"});
    }
    EXPECT_EQ(test::readFileBytes(path(62)), before);
    EXPECT_TRUE(dialog.isVisible()) << "no returns to the dialog";

    // Yes goes ahead: the quiet key gains 12 dB.
    test::MessageBoxAnswerer yes(QMessageBox::Yes);
    clickOk(dialog);
    EXPECT_EQ(yes.texts(),
              QStringList({"Some clipping will occur. Continue anyway?", "Changing gain done."}));
    EXPECT_NEAR(peakDb(62), levelInDb(0.1) + 12.0, 0.01);
}

TEST_F(LevelDialogs, CancelStopsALongBatchWithinOneKey)
{
    std::vector<std::string> before;
    for (int note = 30; note < 90; ++note) {
        addKey(note, 0.25, 20000);
        before.push_back(test::readFileBytes(path(note)));
    }
    const auto changedKeys = [&] {
        int changed = 0;
        for (int note = 30; note < 90; ++note)
            changed += test::readFileBytes(path(note)) != before[note - 30];
        return changed;
    };

    int changedAtCancel = -1;
    QTimer cancelWhenRunning;
    QObject::connect(&cancelWhenRunning, &QTimer::timeout, [&] {
        auto* progress = qobject_cast<ProgressDialog*>(QApplication::activeModalWidget());
        if (progress == nullptr || changedAtCancel >= 0 ||
            progress->findChild<QProgressBar*>("progress")->value() == 0)
            return;
        progress->cancelButton()->click();
        changedAtCancel = changedKeys(); // counted after the flag is set
    });
    cancelWhenRunning.start(5);

    NormalizeDialog dialog(model, nullptr);
    dialog.show();
    dialog.findChild<QDoubleSpinBox*>("targetDb")->setValue(-1.0);
    test::MessageBoxAnswerer answerer;
    clickOk(dialog);
    ASSERT_GE(changedAtCancel, 1) << "Cancel came before the first key";
    ASSERT_LT(changedAtCancel, 59) << "the batch ended before Cancel";
    EXPECT_TRUE(answerer.texts().isEmpty()) << answerer.texts().join("|").toStdString();
    const int changed = changedKeys();
    EXPECT_LE(changed, changedAtCancel + 1);
    EXPECT_LT(changed, 60);
}

} // namespace
} // namespace tg::shell
