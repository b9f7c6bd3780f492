// Drawing a stretch of a Key-Sample.
#include "shell/editor/WavePainter.h"

#include <QFontMetrics>
#include <QLineF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tg::shell {

namespace {

const QColor kBackground(24, 26, 30);
const QColor kLaneBackground(32, 35, 41);
const QColor kCentreLine(70, 75, 85);
const QColor kWave(110, 200, 140);
const QColor kLabelText(230, 230, 230);
constexpr int kLabelRows = 4;
constexpr int kLabelRowHeight = kMarkerLabelStrip / kLabelRows;

// Whole-pixel columns: a vertical line from each column's min to its max, stretched to meet
// the column before so that steep slopes stay one connected trace.
void paintColumns(QPainter& painter, const QRect& lane, const WaveOverview& wave, int channel,
                  const WaveViewport& viewport, std::vector<MinMax>& ranges,
                  std::vector<QLineF>& lines)
{
    wave.columns(channel, viewport.firstFrame, viewport.framesPerPixel, lane.width(), ranges);
    lines.clear();
    MinMax previous{1, 0};
    for (int c = 0; c < lane.width(); ++c) {
        MinMax r = ranges[static_cast<size_t>(c)];
        if (r.min > r.max) {
            previous = r;
            continue;
        }
        if (previous.min <= previous.max) {
            r.min = std::min(r.min, previous.max);
            r.max = std::max(r.max, previous.min);
        }
        previous = ranges[static_cast<size_t>(c)];
        const double x = lane.left() + c + 0.5;
        lines.emplace_back(x, sampleY(lane, r.max, viewport.gain), x,
                           sampleY(lane, r.min, viewport.gain) + 0.01);
    }
    painter.drawLines(lines.data(), static_cast<int>(lines.size()));
}

// Below one frame per pixel: a line through the samples, with a dot on each when they are far
// enough apart to tell one from the next.
void paintSamples(QPainter& painter, const QRect& lane, const WaveOverview& wave, int channel,
                  const WaveViewport& viewport, std::vector<QLineF>& lines)
{
    const int64_t first = std::max<int64_t>(0, static_cast<int64_t>(viewport.firstFrame) - 1);
    const int64_t last = std::min<int64_t>(
        wave.frames() - 1,
        static_cast<int64_t>(viewport.frameAt(lane.right() + 1, lane.left())) + 1);
    lines.clear();
    QPointF previous;
    for (int64_t f = first; f <= last; ++f) {
        const QPointF point(viewport.xOf(static_cast<double>(f), lane.left()),
                            sampleY(lane, wave.sample(f, channel), viewport.gain));
        if (f > first)
            lines.emplace_back(previous, point);
        previous = point;
    }
    painter.drawLines(lines.data(), static_cast<int>(lines.size()));
    if (viewport.framesPerPixel <= 0.2) {
        painter.save();
        painter.setBrush(painter.pen().color());
        for (const QLineF& line : lines)
            painter.drawEllipse(line.p2(), 2.0, 2.0);
        painter.restore();
    }
}

void paintMarkers(QPainter& painter, const QRect& area, const WaveViewport& viewport,
                  const WaveScene& scene)
{
    const QFontMetrics metrics(painter.font());
    // Each label goes into the first row where it does not cover the label before it.
    std::vector<const MarkerMark*> order;
    for (const MarkerMark& mark : scene.markers)
        order.push_back(&mark);
    std::stable_sort(order.begin(), order.end(),
                     [](const MarkerMark* a, const MarkerMark* b) { return a->frame < b->frame; });
    double rowEnd[kLabelRows];
    std::fill(std::begin(rowEnd), std::end(rowEnd), -1e9);
    for (const MarkerMark* mark : order) {
        const double x = std::floor(viewport.xOf(mark->frame, area.left())) + 0.5;
        if (x < area.left() - 1 || x > area.right() + 1)
            continue;
        QPen pen(mark->color, mark->selected ? 3.0 : 1.0);
        if (!mark->selected)
            pen.setStyle(Qt::DashLine);
        painter.setPen(pen);
        painter.drawLine(QPointF(x, area.top() + kMarkerLabelStrip), QPointF(x, area.bottom()));

        const int textWidth = metrics.horizontalAdvance(mark->name) + 6;
        // Near the right edge the label hangs to the left of its line.
        const double left = std::min(x, static_cast<double>(area.right() - textWidth));
        int row = 0;
        while (row < kLabelRows - 1 && rowEnd[row] > left)
            ++row;
        rowEnd[row] = left + textWidth + 2;
        const QRectF label(left, area.top() + row * kLabelRowHeight + 1, textWidth,
                           kLabelRowHeight - 2);
        painter.fillRect(label, mark->selected ? mark->color : mark->color.darker(250));
        painter.setPen(mark->selected ? QColor(Qt::black) : kLabelText);
        painter.drawText(label, Qt::AlignCenter, mark->name);
        painter.setPen(QPen(mark->color, 1.0));
        painter.drawLine(QPointF(x, label.bottom()), QPointF(x, area.top() + kMarkerLabelStrip));
    }
}

} // namespace

QRect channelLane(const QRect& area, int channels, int channel)
{
    channels = std::max(channels, 1);
    const int top = area.top() + kMarkerLabelStrip;
    const int height = (area.bottom() + 1 - top) / channels;
    return QRect(area.left(), top + channel * height, area.width(), height - 1);
}

double sampleY(const QRect& lane, int value, double gain)
{
    const double half = (lane.height() - 2) / 2.0;
    const double scaled = std::clamp(value / 32768.0 * gain, -1.0, 1.0);
    return lane.top() + 1 + half - scaled * half;
}

double fittingGain(const WaveOverview& wave)
{
    int peak = 1;
    for (int c = 0; c < wave.channels(); ++c) {
        const MinMax whole = wave.whole(c);
        if (whole.min <= whole.max)
            peak = std::max({peak, std::abs(int(whole.min)), std::abs(int(whole.max))});
    }
    return std::clamp(0.9 * 32768.0 / peak, 1.0, 32.0);
}

void paintWave(QPainter& painter, const QRect& area, const WaveOverview& wave,
               const WaveViewport& viewport, const WaveScene& scene)
{
    painter.save();
    painter.setClipRect(area);
    painter.fillRect(area, kBackground);
    const int channels = std::max(wave.channels(), 1);
    for (int c = 0; c < channels; ++c)
        painter.fillRect(channelLane(area, channels, c), kLaneBackground);

    const QRect lanes(area.left(), area.top() + kMarkerLabelStrip, area.width(),
                      area.height() - kMarkerLabelStrip);
    for (const ShadedRegion& region : scene.regions) {
        if (region.end < region.begin)
            continue;
        const double x0 = viewport.xOf(region.begin, area.left());
        const double x1 = viewport.xOf(region.end + 1.0, area.left());
        painter.fillRect(QRectF(x0, lanes.top(), std::max(1.0, x1 - x0), lanes.height()),
                         region.color);
    }

    if (!wave.empty()) {
        std::vector<MinMax> ranges;
        std::vector<QLineF> lines;
        for (int c = 0; c < channels; ++c) {
            const QRect lane = channelLane(area, channels, c);
            painter.setPen(QPen(kCentreLine, 1.0));
            painter.drawLine(QPointF(lane.left(), sampleY(lane, 0)),
                             QPointF(lane.right(), sampleY(lane, 0)));
            painter.setPen(QPen(kWave, 1.0));
            if (viewport.framesPerPixel >= 1.0)
                paintColumns(painter, lane, wave, c, viewport, ranges, lines);
            else
                paintSamples(painter, lane, wave, c, viewport, lines);
        }
    }
    paintMarkers(painter, area, viewport, scene);
    painter.restore();
}

} // namespace tg::shell
