// The tuning oscillator's controls: choices kept in the INI file, and a clear word when no
// output is chosen. What it sounds like is checked on the real sound chain.
#include "shell/dialogs/TuningOscillatorBox.h"

#include "core/IniKeys.h"
#include "shell/IniFile.h"

#include <QComboBox>
#include <QPushButton>
#include <QSpinBox>
#include <gtest/gtest.h>

namespace tg::shell {
namespace {

QVariant stored(const char* key)
{
    return openIniFile()->value(QString::fromLatin1(key));
}

TEST(TuningOscillatorBox, ChoicesAreRememberedAndAMissingOutputIsExplained)
{
    openIniFile()->setValue(QString::fromLatin1(ini::kTuningOscillatorWaveform), "Rect");
    openIniFile()->setValue(QString::fromLatin1(ini::kTuningOscillatorNote), 57);
    TuningOscillatorBox box;
    EXPECT_EQ(box.waveformBox()->currentText(), "Rect");
    EXPECT_EQ(box.noteBox()->currentText(), "A3  220.00 Hz");

    box.waveformBox()->setCurrentText("Sine");
    box.noteBox()->setCurrentIndex(box.noteBox()->findData(69));
    box.volumeBox()->setValue(-20);
    EXPECT_EQ(stored(ini::kTuningOscillatorWaveform).toString(), "Sine");
    EXPECT_EQ(stored(ini::kTuningOscillatorNote).toInt(), 69);
    EXPECT_EQ(stored(ini::kTuningOscillatorVolume).toInt(), -20);

    box.playButton()->click(); // the preferences name no output
    EXPECT_EQ(box.problem(), "No audio output is chosen in the preferences.");
    EXPECT_EQ(box.playButton()->text(), "Start");
    EXPECT_FALSE(box.isPlaying());
}

} // namespace
} // namespace tg::shell
