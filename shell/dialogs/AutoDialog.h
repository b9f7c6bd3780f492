// "Auto-Note/Auto-Loop for all": reruns note and loop finding over a Multi-Sample or Project,
// optionally taking lengths, silence and loop markers from the loaded Key-Sample.
#pragma once

#include <QDialog>

class QCheckBox;
class QRadioButton;

namespace tg {
class Model;
}

namespace tg::shell {

class AutoDialog : public QDialog {
    Q_OBJECT
  public:
    AutoDialog(Model& model, QWidget* parent);

  private:
    void start();

    Model& model_;
    QCheckBox* autoNote_;
    QCheckBox* autoLoop_;
    QRadioButton* loopFromSettings_;
    QRadioButton* loopFromLoaded_;
    QCheckBox* equalNoteLength_;
    QCheckBox* equalSilence_;
    QCheckBox* releaseOff_;
    QRadioButton* inMultiSample_;
    QRadioButton* inProject_;
};

} // namespace tg::shell
