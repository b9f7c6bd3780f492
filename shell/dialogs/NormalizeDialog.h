// "Normalize": brings the selected Key-Samples to a level, or each Multi-Sample's Key-Samples
// to its loudest one, and measures the highest level of a selection.
#pragma once

#include <QDialog>

class QCheckBox;
class QDoubleSpinBox;
class QRadioButton;

namespace tg {
class Model;
}

namespace tg::shell {

class ScopeChoice;

class NormalizeDialog : public QDialog {
    Q_OBJECT
  public:
    NormalizeDialog(Model& model, QWidget* parent);

  private:
    void normalize();
    void findHighestLevel(int scope);

    Model& model_;
    ScopeChoice* scope_;
    QRadioButton* toValue_;
    QRadioButton* toMaximum_;
    QDoubleSpinBox* targetDb_;
    QCheckBox* equalLeftRight_;
    QCheckBox* noteAndRelease_;
};

} // namespace tg::shell
