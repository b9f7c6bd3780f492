// "Import Single-Sample-Soundlibrary": a folder of one-shot samples becomes one new Multi-Sample
// of the current Project, one key per file upward from a start key.
#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;

namespace tg {
class Model;
}

namespace tg::shell {

class ImportSoundLibraryDialog : public QDialog {
    Q_OBJECT
  public:
    explicit ImportSoundLibraryDialog(Model& model, QWidget* parent = nullptr);

    // The folder and the first key, as the user sets them.
    void setFolder(const QString& folder);
    void setFirstKey(int note);

    // Imports; the dialog closes when the import ran, and stays open on a refusal.
    void accept() override;

  private:
    void browse();
    void updatePreview();

    Model& model_;
    QLineEdit* folder_ = nullptr;
    QComboBox* firstKey_ = nullptr;
    QLabel* preview_ = nullptr;
};

} // namespace tg::shell
