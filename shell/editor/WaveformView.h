// The waveform of the Key-Sample being edited, both channels, with every marker named and
// the loop's crossfade region shaded. Zoom with the wheel, "+" and "-", "A" to fit the whole
// take, "L" to fit the loop, Up and Down to magnify the height; scroll with the bar or
// Shift+wheel. A marker is picked and dragged
// with the mouse, or picked with Tab and moved with the arrow keys (Shift: ten times as far);
// it lands on a zero crossing when the Key-Sample keeps its markers there. Every move goes
// through the model.
#pragma once

#include "core/MarkerEditing.h"
#include "core/ModelListener.h"
#include "shell/editor/WavePainter.h"

#include <QWidget>

#include <optional>

class QScrollBar;

namespace tg {
class Model;
struct TGsample;
} // namespace tg

namespace tg::shell {

class WaveformView : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    WaveformView(Model& model, TGsample& sample, QWidget* parent = nullptr);
    ~WaveformView() override;

    const WaveViewport& viewport() const { return viewport_; }
    // The painted area (without the scroll bar).
    QRect waveArea() const;
    int xOfFrame(double frame) const;

    void zoomBy(double factor, double anchorX);
    void fitAll();
    void fitLoop();
    void scrollToFrame(double firstFrame);
    // Vertical zoom; fitHeight makes the loudest part nearly fill the lanes.
    void setGain(double gain);
    void fitHeight();

    std::optional<MarkerId> selectedMarker() const { return selected_; }
    void selectMarker(std::optional<MarkerId> id);
    // Moves `id` to `frame` through the model, on the zero crossing nearest to it (or the next
    // one in `direction`, -1 or +1) when the Key-Sample asks for that. Returns where it went.
    int32_t placeMarker(MarkerId id, int32_t frame, int direction = 0);

    void keysChanged(int project, int msl) override;

  signals:
    // A loop marker moved: views that show the loop follow.
    void loopOutRecalculated(TGsample* sample);

  public slots:
    // The Key-Sample was loaded anew or its markers changed elsewhere.
    void updateMarkers(TGsample* sample);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    // Tab and Backtab pick markers here instead of moving the focus.
    bool focusNextPrevChild(bool) override { return false; }

  private:
    std::optional<MarkerId> markerNear(int x) const;
    void limitViewport();
    void syncScrollBar();
    void nudgeSelected(int direction, bool far);

    Model& model_;
    TGsample& sample_;
    QScrollBar* scroll_ = nullptr;
    WaveViewport viewport_;
    std::optional<MarkerId> selected_;
    bool dragging_ = false;
    bool syncing_ = false;
};

} // namespace tg::shell
