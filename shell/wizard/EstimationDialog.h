// "Estimate Time and Size": how long recording the selected Multi-Sample, the selected
// Project or all Projects will take and how much audio it will store, with the record
// options that leave keys out.
#pragma once

#include "analysis/Estimate.h"

#include <QButtonGroup>
#include <QDialog>

class QCheckBox;
class QLabel;

namespace tg {
class Model;
}

namespace tg::shell {

constexpr const char* kEstimationDialogTitle = "Estimate Time and Size";

class EstimationDialog : public QDialog {
    Q_OBJECT
  public:
    enum Scope { SelectedMultiSample, SelectedProject, AllProjects };

    EstimationDialog(const Model& model, QWidget* parent = nullptr);

    // The figures of the current choices, as shown.
    const RecordingEstimate& estimate() const { return estimate_; }
    QString timeText() const;
    QString sizeText() const;

  private:
    void recompute();

    const Model& model_;
    QButtonGroup scope_;
    QCheckBox* keepLocked_;
    QCheckBox* onlyEmpty_;
    QLabel* time_;
    QLabel* size_;
    RecordingEstimate estimate_;
};

} // namespace tg::shell
