// The device panels: the input level meter and the Input/Output panel.
#include "devices/InputPeakTap.h"
#include "shell/panels/PeakLevelWidget.h"

#include <QTest>
#include <gtest/gtest.h>

namespace tg::shell {
namespace {

TEST(PeakLevelWidget, ShowsTheTapsPeaksHoldsThemAndLightsTheClipLampAtFullScale)
{
    PeakLevelWidget meter;
    meter.resize(300, 80);
    // What the audio thread does with the peaks of two input blocks before the timer fires:
    // the higher one of each channel is shown.
    PeakLevelWidget::tap().onInputPeak(0.5f, 0.1f);
    PeakLevelWidget::tap().onInputPeak(0.2f, 0.25f);
    meter.onUpdateTimer();
    EXPECT_FLOAT_EQ(meter.level(0), 0.5f);
    EXPECT_FLOAT_EQ(meter.level(1), 0.25f);
    EXPECT_FALSE(meter.clipped(0));
    EXPECT_FALSE(meter.clipped(1));

    // A quieter block: the bar falls but not below the new peak, the hold line stays.
    QTest::qWait(60);
    PeakLevelWidget::tap().onInputPeak(0.1f, 1.0f);
    meter.onUpdateTimer();
    EXPECT_LT(meter.level(0), 0.5f);
    EXPECT_GE(meter.level(0), 0.1f);
    EXPECT_FLOAT_EQ(meter.heldPeak(0), 0.5f);
    EXPECT_FALSE(meter.clipped(0));
    EXPECT_TRUE(meter.clipped(1));

    // The lamp stays lit through silence until it is clicked.
    meter.onUpdateTimer();
    EXPECT_TRUE(meter.clipped(1));
    QTest::mouseClick(&meter, Qt::LeftButton, {}, meter.clipLampRect(1).center());
    EXPECT_FALSE(meter.clipped(1));
}

} // namespace
} // namespace tg::shell
