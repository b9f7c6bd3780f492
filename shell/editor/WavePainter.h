// Drawing a stretch of a Key-Sample: its channels one above the other, shaded regions and
// named markers. The waveform view, the loop splice view and the draw benchmark all paint
// through here, onto a widget or an image alike.
#pragma once

#include "shell/editor/WaveOverview.h"

#include <QColor>
#include <QRect>
#include <QString>

#include <vector>

class QPainter;

namespace tg::shell {

// Which frames the area shows: frame firstFrame at its left edge, framesPerPixel frames per
// pixel column (below 1 the samples are drawn as a line through their points).
struct WaveViewport {
    double firstFrame = 0.0;
    double framesPerPixel = 1.0;
    double gain = 1.0; // vertical zoom: 1 shows full scale across the lane

    double xOf(double frame, int left) const
    {
        return left + (frame - firstFrame) / framesPerPixel;
    }
    double frameAt(double x, int left) const { return firstFrame + (x - left) * framesPerPixel; }
};

struct MarkerMark {
    QString name;
    int32_t frame = 0;
    QColor color;
    bool selected = false;
};

// Frames begin .. end inclusive, tinted.
struct ShadedRegion {
    int32_t begin = 0;
    int32_t end = 0;
    QColor color;
};

struct WaveScene {
    std::vector<ShadedRegion> regions;
    std::vector<MarkerMark> markers;
};

// Height of the strip above the channels that holds the marker names.
constexpr int kMarkerLabelStrip = 60;

// Paints background, regions, the channels' waveforms and the markers into `area`.
void paintWave(QPainter& painter, const QRect& area, const WaveOverview& wave,
               const WaveViewport& viewport, const WaveScene& scene);

// The lane of channel `channel` inside a painted area (below the label strip).
QRect channelLane(const QRect& area, int channels, int channel);
// The y of a sample value (scaled to 16 bits) in a lane, magnified by `gain` and kept inside it.
double sampleY(const QRect& lane, int value, double gain = 1.0);

// The vertical zoom at which the loudest sample of `wave` nearly fills its lane (at most 32).
double fittingGain(const WaveOverview& wave);

} // namespace tg::shell
