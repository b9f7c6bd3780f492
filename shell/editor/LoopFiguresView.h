// The quality figures of the open Key-Sample's loop, shown under its splice: length, crossfade,
// the wrap step against the loop's median step, the level step across the seam, the seam error
// and whether the wrap clicks. They are measured from the note as the renderer plays it, the
// same measurement `tonegrabber-cli loops` reports, and only when the loop or the audio
// changed, never while painting.
#pragma once

#include "analysis/LoopQuality.h"

#include <QColor>
#include <QWidget>

#include <array>
#include <cstdint>
#include <optional>

class QLabel;

namespace tg {
class Model;
struct TGsample;
} // namespace tg

namespace tg::shell {

class LoopFiguresView : public QWidget {
    Q_OBJECT
  public:
    // The verdict's colours: a wrap that clicks, and one that joins seamlessly.
    static const QColor kClickColour;
    static const QColor kSeamlessColour;

    LoopFiguresView(Model& model, TGsample& sample, QWidget* parent = nullptr);

    // Measures the open key's loop again when anything the renderer plays it from changed
    // since the last measurement: its note and loop markers, loop mode, crossfade lengths and
    // curves, or (`audioReloaded`) the recording itself. GUI thread.
    void refresh(bool audioReloaded);

    // The last measurement; empty when the open key has no loop that could be measured.
    const std::optional<LoopQuality>& quality() const { return quality_; }
    // How many measurements were made so far (one per change).
    int measurements() const { return measurements_; }
    QLabel* figures() const { return figures_; }
    QLabel* verdict() const { return verdict_; }

  private:
    // The key's fields a rendered loop depends on.
    using RenderInputs = std::array<int32_t, 10>;

    void display(const QString& figures, const QString& verdict, const QColor& colour);

    Model& model_;
    TGsample& sample_;
    QLabel* figures_ = nullptr;
    QLabel* verdict_ = nullptr;
    std::optional<RenderInputs> measuredInputs_;
    std::optional<LoopQuality> quality_;
    int measurements_ = 0;
};

} // namespace tg::shell
