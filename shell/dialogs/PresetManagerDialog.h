// The preset manager: the stored presets, renamed in place, deleted, or applied as a new Project
// ready to record (its name and data folder given here).
#pragma once

#include <QDialog>

class QLineEdit;
class QListWidget;
class QListWidgetItem;

namespace tg {
class Model;
}

namespace tg::shell {

class PresetManagerDialog : public QDialog {
    Q_OBJECT
  public:
    explicit PresetManagerDialog(Model& model, QWidget* parent = nullptr);

    QListWidget* presets() const { return list_; }
    QLineEdit* projectName() const { return projectName_; }
    QLineEdit* dataFolder() const { return dataFolder_; }

    // The buttons' work on the selected preset.
    void applySelected();
    void deleteSelected();

  private:
    void reload();
    void renamed(QListWidgetItem* item);
    void browse();

    Model& model_;
    QListWidget* list_ = nullptr;
    QLineEdit* projectName_ = nullptr;
    QLineEdit* dataFolder_ = nullptr;
};

// "Save selected Project as Preset": asks for a name (and before replacing a preset of that
// name) and stores the current Project's settings.
void saveSelectedProjectAsPreset(Model& model, QWidget* parent);

} // namespace tg::shell
