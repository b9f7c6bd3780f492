// The input level meter.
#include "shell/panels/PeakLevelWidget.h"

#include "devices/AudioEngine.h"
#include "devices/InputPeakTap.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tg::shell {

namespace {

constexpr int kMargin = 6;
constexpr int kLabelWidth = 14;
constexpr int kLampWidth = 34;
constexpr int kScaleHeight = 14;

double toDb(float level)
{
    return level > 0.0f ? 20.0 * std::log10(double(level)) : -1000.0;
}

} // namespace

InputPeakTap& PeakLevelWidget::tap()
{
    // Deliberately never destroyed: the audio thread may still call it during shutdown.
    static InputPeakTap* const instance = [] {
        auto* created = new InputPeakTap;
        audio::addLevelListener(created);
        return created;
    }();
    return *instance;
}

PeakLevelWidget::PeakLevelWidget(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("PeakLevelWidget"));
    setMinimumHeight(64);
    tap();
    connect(this, &PeakLevelWidget::changePeakLevel, this, &PeakLevelWidget::onPeakLevelChanged);
    connect(&timer_, &QTimer::timeout, this, &PeakLevelWidget::onUpdateTimer);
    clock_.start();
    timer_.start(kUpdateIntervalMs);
}

void PeakLevelWidget::onUpdateTimer()
{
    const qint64 now = clock_.elapsed();
    sinceLastTickMs_ = now - lastTickMs_;
    lastTickMs_ = now;
    float first = 0.0f;
    float second = 0.0f;
    tap().take(first, second);
    emit changePeakLevel(first, second);
    update();
}

void PeakLevelWidget::onPeakLevelChanged(float first, float second)
{
    const float peaks[2] = {first, second};
    const double fall =
        std::pow(10.0, -kFallDbPerSecond * double(sinceLastTickMs_) / 1000.0 / 20.0);
    for (int channel = 0; channel < 2; ++channel) {
        const float peak = std::clamp(peaks[channel], 0.0f, 1.0f);
        level_[channel] = std::max(peak, float(level_[channel] * fall));
        if (peak >= held_[channel]) {
            held_[channel] = peak;
            heldAgeMs_[channel] = 0;
        } else {
            heldAgeMs_[channel] += sinceLastTickMs_;
            if (heldAgeMs_[channel] > kHoldMs)
                held_[channel] = level_[channel];
        }
        // The engine limits a peak to full scale, so 1.0 means the converter ran out of range.
        if (peak >= 1.0f)
            clipped_[channel] = true;
    }
    sinceLastTickMs_ = 0;
}

void PeakLevelWidget::resetClip()
{
    clipped_[0] = clipped_[1] = false;
    update();
}

QRect PeakLevelWidget::barRect(int channel) const
{
    const int height = (this->height() - 2 * kMargin - kScaleHeight - 4) / 2;
    const int left = kMargin + kLabelWidth;
    const int width = this->width() - left - kMargin - kLampWidth - 4;
    return QRect(left, kMargin + channel * (height + 4), std::max(width, 1), std::max(height, 1));
}

QRect PeakLevelWidget::clipLampRect(int channel) const
{
    const QRect bar = barRect(channel);
    return QRect(bar.right() + 5, bar.top(), kLampWidth, bar.height());
}

int PeakLevelWidget::xForLevel(const QRect& bar, float level) const
{
    const double db = std::clamp(toDb(level), kFloorDb, 0.0);
    return bar.left() + int(std::lround((db - kFloorDb) / -kFloorDb * bar.width()));
}

void PeakLevelWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    static const char* const names[2] = {"L", "R"};
    for (int channel = 0; channel < 2; ++channel) {
        const QRect bar = barRect(channel);
        painter.fillRect(bar, QColor(30, 30, 30));
        QLinearGradient gradient(bar.topLeft(), bar.topRight());
        gradient.setColorAt(0.0, QColor(40, 170, 60));
        gradient.setColorAt(0.75, QColor(40, 170, 60)); // -15 dB
        gradient.setColorAt(0.9, QColor(230, 200, 40)); // -6 dB
        gradient.setColorAt(1.0, QColor(220, 40, 30));
        const int levelX = xForLevel(bar, level_[channel]);
        if (levelX > bar.left())
            painter.fillRect(QRect(bar.left(), bar.top(), levelX - bar.left(), bar.height()),
                             gradient);
        if (held_[channel] > 0.0f) {
            const int holdX = std::min(xForLevel(bar, held_[channel]), bar.right());
            painter.setPen(QPen(Qt::white, 2));
            painter.drawLine(holdX, bar.top(), holdX, bar.bottom());
        }
        painter.setPen(palette().windowText().color());
        painter.drawText(QRect(kMargin, bar.top(), kLabelWidth, bar.height()), Qt::AlignVCenter,
                         QString::fromLatin1(names[channel]));
        const QRect lamp = clipLampRect(channel);
        painter.fillRect(lamp, clipped_[channel] ? QColor(230, 30, 30) : QColor(70, 20, 20));
        painter.setPen(clipped_[channel] ? Qt::white : QColor(150, 110, 110));
        painter.drawText(lamp, Qt::AlignCenter, tr("CLIP"));
    }
    // dBFS scale under the bars.
    const QRect bottom = barRect(1);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.8);
    painter.setFont(small);
    painter.setPen(palette().windowText().color());
    for (int db = int(kFloorDb); db <= 0; db += 12) {
        const int x = xForLevel(bottom, float(std::pow(10.0, db / 20.0)));
        painter.drawLine(x, bottom.bottom() + 2, x, bottom.bottom() + 4);
        painter.drawText(QRect(x - 20, bottom.bottom() + 4, 40, kScaleHeight), Qt::AlignCenter,
                         QString::number(db));
    }
}

void PeakLevelWidget::mousePressEvent(QMouseEvent* event)
{
    if (clipLampRect(0).contains(event->pos()) || clipLampRect(1).contains(event->pos()))
        resetClip();
    QWidget::mousePressEvent(event);
}

} // namespace tg::shell
