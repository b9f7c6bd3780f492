// "Change Gain": raises or lowers the level of the selected Key-Samples by a number of dB, on
// both channels or one, asking first when the result would clip.
#pragma once

#include <QDialog>

class QButtonGroup;
class QCheckBox;
class QDoubleSpinBox;

namespace tg {
class Model;
}

namespace tg::shell {

class ScopeChoice;

class ChangeGainDialog : public QDialog {
    Q_OBJECT
  public:
    ChangeGainDialog(Model& model, QWidget* parent);

  private:
    void changeGain();

    Model& model_;
    ScopeChoice* scope_;
    QDoubleSpinBox* gainDb_;
    QButtonGroup* channels_;
    QCheckBox* noteAndRelease_;
    QCheckBox* warnClipping_;
};

} // namespace tg::shell
