// The instrument copier: Multi-Samples of one open Project, with their Key-Samples and files,
// copied into another open Project or into a new one.
#pragma once

#include <QDialog>

class QComboBox;
class QLineEdit;
class QListWidget;

namespace tg {
class Model;
}

namespace tg::shell {

class InstrumentCopierDialog : public QDialog {
    Q_OBJECT
  public:
    explicit InstrumentCopierDialog(Model& model, QWidget* parent = nullptr);

    QComboBox* source() const { return source_; }
    QListWidget* multiSamples() const { return multiSamples_; }
    QComboBox* target() const { return target_; }
    QLineEdit* newProjectName() const { return newName_; }

    // Copies the checked Multi-Samples; the dialog closes when something was copied.
    void accept() override;

  private:
    void fillMultiSamples();

    Model& model_;
    QComboBox* source_ = nullptr;
    QListWidget* multiSamples_ = nullptr;
    QComboBox* target_ = nullptr;
    QLineEdit* newName_ = nullptr;
};

} // namespace tg::shell
