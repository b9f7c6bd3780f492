// The waveform editor and the keyboard as a user meets them in the main window: markers
// dragged and nudged land in the model (on zero crossings when the Key-Sample asks), the info
// panel and the loop's figures follow, and the keyboard shows which keys are recorded.
#include "shell/editor/SampleEditor.h"
#include "analysis/LoopQuality.h"
#include "analysis/tests/TestSignals.h"
#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "shell/MainWindow.h"
#include "shell/editor/LoadedSample.h"
#include "shell/editor/LoopFiguresView.h"
#include "shell/editor/WaveformView.h"
#include "shell/panels/CentralWidget.h"
#include "shell/panels/InfoSettingsWidget.h"
#include "shell/panels/KeyboardWidget.h"
#include "tests/support/TempDir.h"

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace tg::shell {
namespace {

constexpr int kNote = 60;
constexpr int32_t kFrames = 20000;
constexpr double kPeriod = 100.0; // frames per cycle of the test tone

class SampleEditorTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        ASSERT_TRUE(model.newProject().ok());
        Project& project = *model.currentProject();
        copyText(project.name, "Editor");
        copyText(project.dataPath, data.path().c_str());
        ASSERT_TRUE(model.addMultiSample().ok());
        TGmsl& msl = *model.currentMultiSample();
        copyText(msl.name, "Strings");
        TGmsl_key& key = msl.keys[kNote];
        key.keyState = 1;
        key.Note_In = 1000;
        key.Note_Out = 19000;
        key.Loop_In = 5020; // between crossings of both channels
        key.Loop_Out = 15000;
        key.loopMode = 1;
        key.xfadeLen = 400;
        key.zerocrossing = 0;
        writeTone(keySampleFileName(project, msl, kNote));

        window = std::make_unique<MainWindow>(model);
        window->resize(1280, 800);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        model.selectKey(kNote);
        view = window->editor()->waveform();
    }

    // A stereo tone whose channels cross zero at different frames, never exactly on a sample.
    void writeTone(const std::string& path)
    {
        const WaveFormat format = makeWaveFormat(44100, 2, 16);
        const auto bytes = test::makeSignal(format, kFrames, [](int64_t f, int ch) {
            return int32_t(20000.0 * std::sin(2.0 * M_PI * (f + 0.3 + ch * 7) / kPeriod));
        });
        std::string message;
        ASSERT_EQ(writeWav(path, format, bytes, message), 1) << message;
    }

    // What the model tells the panels when a recording run or an edit changed the keys.
    void keysChanged()
    {
        model.notifyListeners([&](TonegrabberModelListener& l) {
            l.keysChanged(model.currentProjectIndex(), model.currentProject()->currentMsl);
        });
    }

    TGmsl_key& key() { return model.currentMultiSample()->keys[kNote]; }

    // True when the signal changes sign (or touches zero) at `frame` in either channel.
    bool crossesZeroAt(int32_t frame) const
    {
        const WaveOverview& wave = window->editor()->sample().wave;
        for (int ch = 0; ch < wave.channels(); ++ch) {
            const int v = wave.sample(frame, ch);
            if (v == 0)
                return true;
            for (int32_t other : {frame - 1, frame + 1})
                if (other >= 0 && other < wave.frames() && (wave.sample(other, ch) > 0) != (v > 0))
                    return true;
        }
        return false;
    }

    void drag(int fromX, int toX)
    {
        const int y = view->waveArea().center().y();
        QTest::mousePress(view, Qt::LeftButton, {}, QPoint(fromX, y));
        // Moves with the button held, as the window system delivers them.
        for (const int x : {(fromX + toX) / 2, toX}) {
            QMouseEvent move(QEvent::MouseMove, QPointF(x, y), view->mapToGlobal(QPoint(x, y)),
                             Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(view, &move);
        }
        QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(toX, y));
    }

    test::TempDir data;
    Model model;
    std::unique_ptr<MainWindow> window;
    WaveformView* view = nullptr;
};

TEST_F(SampleEditorTest, DraggingLoopInMovesTheModelMarkerAndTheInfoShowsIt)
{
    ASSERT_FALSE(window->editor()->sample().wave.empty())
        << window->editor()->sample().problem.toStdString();

    const int from = view->xOfFrame(5020);
    drag(from, from + 120);
    const int32_t moved = key().Loop_In;
    EXPECT_GT(moved, 5020 + 110 * view->viewport().framesPerPixel);
    EXPECT_EQ(view->selectedMarker(), MarkerId::LoopIn);
    EXPECT_TRUE(model.currentProject()->modified);
    const QString info = window->centralArea()->infoSettings()->infoText();
    // The loop plays Loop_Out too.
    EXPECT_TRUE(
        info.contains(QStringLiteral("%1 - 15000 (length %2)").arg(moved).arg(15001 - moved)))
        << info.toStdString();
}

TEST_F(SampleEditorTest, SnappedMarkersLandWhereTheSignChanges)
{
    key().zerocrossing = 1;
    view->fitLoop();
    // Dropped near a crest of the tone, far from where either channel crosses zero.
    const int32_t crest = 5325;
    ASSERT_FALSE(crossesZeroAt(crest));
    drag(view->xOfFrame(5020), view->xOfFrame(crest));
    const int32_t dropped = key().Loop_In;
    EXPECT_TRUE(crossesZeroAt(dropped)) << dropped;
    EXPECT_LE(std::abs(dropped - crest), kPeriod / 2 + view->viewport().framesPerPixel);

    // The arrow key takes Loop_Out to the next crossing after it.
    view->selectMarker(MarkerId::LoopOut);
    const int32_t before = key().Loop_Out;
    QTest::keyClick(view, Qt::Key_Right);
    EXPECT_GT(key().Loop_Out, before);
    EXPECT_LE(key().Loop_Out, before + kPeriod / 2 + 1);
    EXPECT_TRUE(crossesZeroAt(key().Loop_Out)) << key().Loop_Out;
}

TEST_F(SampleEditorTest, ZoomKeysAndFitLoopFrameTheLoop)
{
    view->setFocus();
    QTest::keyClick(view, Qt::Key_L);
    EXPECT_GT(view->xOfFrame(5000), view->waveArea().left());
    EXPECT_LT(view->xOfFrame(15000), view->waveArea().right());
    const double loopScale = view->viewport().framesPerPixel;
    QTest::keyClick(view, Qt::Key_Plus);
    EXPECT_DOUBLE_EQ(view->viewport().framesPerPixel, loopScale / 2);
    QTest::keyClick(view, Qt::Key_A);
    EXPECT_EQ(view->xOfFrame(0), view->waveArea().left());
    EXPECT_NEAR(view->xOfFrame(kFrames), view->waveArea().right() + 1, 1);
}

TEST_F(SampleEditorTest, KeyboardMarksRecordedAndSelectedKeysAndSelectsOnClick)
{
    KeyboardWidget* keyboard = window->keyboard();
    keyboard->resize(1200, 100);
    // Key 60 has its take; key 62 is only selected for recording.
    model.currentMultiSample()->keys[62].keyState = 1;
    const QImage picture = keyboard->grab().toImage();
    EXPECT_EQ(picture.pixelColor(keyboard->recordedMarkCentre(60)), KeyboardWidget::kRecordedMark);
    EXPECT_NE(picture.pixelColor(keyboard->recordedMarkCentre(62)), KeyboardWidget::kRecordedMark);
    EXPECT_NE(picture.pixelColor(keyboard->recordedMarkCentre(61)), KeyboardWidget::kRecordedMark);
    // The recording range 48..79 as a bar over exactly those keys.
    const QRect bar = keyboard->rangeBar();
    EXPECT_EQ(bar.left(), keyboard->keyRect(48).left());
    EXPECT_EQ(bar.right(), keyboard->keyRect(79).right());
    EXPECT_EQ(picture.pixelColor(bar.center()), KeyboardWidget::kRangeBar);

    QSignalSpy selected(keyboard, &KeyboardWidget::keySelected);
    QTest::mouseClick(keyboard, Qt::LeftButton, {}, keyboard->keyRect(61).center());
    ASSERT_EQ(selected.count(), 1);
    EXPECT_EQ(selected.at(0).at(0).toUInt(), 61u);
    EXPECT_EQ(model.currentKey(), 61);
    EXPECT_TRUE(window->editor()->sample().wave.empty());
}

TEST_F(SampleEditorTest, ATakeArrivingForTheOpenKeyIsShown)
{
    model.selectKey(62);
    ASSERT_TRUE(window->editor()->sample().wave.empty());
    // What a recording run does when it has saved a take.
    writeTone(keySampleFileName(*model.currentProject(), *model.currentMultiSample(), 62));
    model.currentMultiSample()->keys[62].hasAudio = 1;
    keysChanged();
    EXPECT_EQ(window->editor()->sample().wave.frames(), kFrames);

    // A take recorded again replaces the file: the new audio is shown, not the old.
    std::string message;
    ASSERT_EQ(writeWav(keySampleFileName(*model.currentProject(), *model.currentMultiSample(), 62),
                       makeWaveFormat(44100, 2, 16), std::vector<uint8_t>(4 * 12000), message),
              1)
        << message;
    keysChanged();
    EXPECT_EQ(window->editor()->sample().wave.frames(), 12000);
}

TEST_F(SampleEditorTest, LoopFiguresFollowTheLoopAndMarkAWrapThatClicks)
{
    const LoopFiguresView* figures = window->editor()->loopFigures();
    const auto text = [&] { return figures->figures()->text().toStdString(); };
    const auto verdict = [&] { return figures->verdict()->text().toStdString(); };

    // The crossfaded loop: what `loops` measures from the take on disk, and seamless.
    WaveFormat format;
    std::vector<uint8_t> recording;
    std::string message;
    ASSERT_EQ(
        readWav(keySampleFileName(*model.currentProject(), *model.currentMultiSample(), kNote),
                format, recording, message),
        1)
        << message;
    LoopQuality expected;
    ASSERT_EQ(measureKeySampleLoop(key(), format, recording, expected, message), 1) << message;
    ASSERT_TRUE(figures->quality().has_value());
    EXPECT_EQ(figures->quality()->wrapStep, expected.wrapStep);
    EXPECT_EQ(figures->quality()->medianStep, expected.medianStep);
    EXPECT_EQ(figures->quality()->levelStepDb, expected.levelStepDb);
    EXPECT_EQ(figures->quality()->seamError, expected.seamError);
    EXPECT_NE(text().find(">9981 frames<"), std::string::npos) << text();
    EXPECT_NE(text().find(">400 frames<"), std::string::npos) << text();
    EXPECT_NE(text().find(QString::asprintf(">%.4f<", expected.seamError).toStdString()),
              std::string::npos)
        << text();
    EXPECT_EQ(verdict(), "Seamless");

    // As auto-loop leaves it: no crossfade, the loop end a whole number of periods after the
    // frame before Loop_In, so the wrap continues the tone.
    key().xfadeLen = 0;
    key().Loop_Out = 15019;
    model.notifyListeners([&](TonegrabberModelListener& l) {
        l.keySamplesChanged(model.currentProject()->currentMsl);
    });
    EXPECT_NE(text().find(">10000 frames<"), std::string::npos) << text();
    EXPECT_NE(text().find(">0 frames<"), std::string::npos) << text();
    EXPECT_EQ(verdict(), "Seamless");

    // Half a period on, the wrap jumps from near zero to a crest: one measurement for the move,
    // none for painting or for a change to another key.
    const int before = figures->measurements();
    view->placeMarker(MarkerId::LoopOut, 15050);
    window->editor()->grab();
    model.currentMultiSample()->keys[62].locked = 1;
    keysChanged();
    EXPECT_EQ(figures->measurements(), before + 1);
    EXPECT_EQ(verdict(), "Clicks at every wrap");
    EXPECT_EQ(figures->verdict()->palette().color(QPalette::WindowText),
              LoopFiguresView::kClickColour);

    // Without a loop nothing is measured or shown.
    key().loopMode = 0;
    keysChanged();
    EXPECT_FALSE(figures->quality().has_value());
    EXPECT_EQ(text(), "");
    EXPECT_EQ(verdict(), "");
}

} // namespace
} // namespace tg::shell
