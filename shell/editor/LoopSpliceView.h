// The join of a loop: the last frames of the loop on the left, the first frames of the loop
// on the right, so the step the player makes from Loop_Out back to Loop_In can be judged by
// eye. The crossfade region is shaded; the wheel zooms. The loop's measured figures are shown
// beneath it (LoopFiguresView).
#pragma once

#include "core/ModelListener.h"
#include "shell/editor/WavePainter.h"

#include <QWidget>

namespace tg {
class Model;
struct TGsample;
} // namespace tg

namespace tg::shell {

class LoopSpliceView : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    LoopSpliceView(Model& model, TGsample& sample, QWidget* parent = nullptr);
    ~LoopSpliceView() override;

    double framesPerPixel() const { return framesPerPixel_; }
    // The two halves: the loop's end ends at the left one's right edge, its start begins at
    // the right one's left edge.
    WaveViewport endViewport() const;
    WaveViewport startViewport() const;

    void keysChanged(int project, int msl) override;

  public slots:
    void updateMarkers(TGsample* sample);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    QRect endArea() const;
    QRect startArea() const;

    Model& model_;
    TGsample& sample_;
    double framesPerPixel_ = 0.5;
};

} // namespace tg::shell
