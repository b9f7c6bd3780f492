// The input level meter: one bar per input channel in dBFS, a peak-hold line and a clip lamp.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

namespace tg {
class InputPeakTap;
}

namespace tg::shell {

// The audio thread only raises two atomics in a process-wide InputPeakTap (a queued signal
// would allocate on the audio thread); a GUI timer takes them, hands them on through
// changePeakLevel() and repaints. The tap lives as long as the process, so no callback can
// ever reach a listener that is gone, whatever the order of shutdown.
class PeakLevelWidget : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kUpdateIntervalMs = 30;
    // How long the hold line stays at a peak before it follows the bar down.
    static constexpr int kHoldMs = 1500;
    // How fast the bar falls after a peak.
    static constexpr double kFallDbPerSecond = 26.0;
    // The bottom of the scale.
    static constexpr double kFloorDb = -60.0;

    explicit PeakLevelWidget(QWidget* parent = nullptr);

    // The tap the audio engine feeds (registered with the engine on first use).
    static InputPeakTap& tap();

    // Linear levels (0..1) as drawn: the falling bar, the held peak, the clip lamp.
    float level(int channel) const { return level_[channel]; }
    float heldPeak(int channel) const { return held_[channel]; }
    bool clipped(int channel) const { return clipped_[channel]; }
    void resetClip();

    // Where the lamp is drawn; clicking it puts it out.
    QRect clipLampRect(int channel) const;

    QSize sizeHint() const override { return QSize(240, 70); }
    QSize minimumSizeHint() const override { return QSize(120, 50); }

  signals:
    void changePeakLevel(float first, float second);

  public slots:
    void onPeakLevelChanged(float first, float second);
    void onUpdateTimer();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    QRect barRect(int channel) const;
    int xForLevel(const QRect& bar, float level) const;

    QTimer timer_;
    QElapsedTimer clock_;
    qint64 lastTickMs_ = 0;
    qint64 sinceLastTickMs_ = 0;
    float level_[2] = {0.0f, 0.0f};
    float held_[2] = {0.0f, 0.0f};
    qint64 heldAgeMs_[2] = {0, 0};
    bool clipped_[2] = {false, false};
};

} // namespace tg::shell
