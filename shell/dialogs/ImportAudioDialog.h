// "Import Audio Files" (and its WAV-only and AIFF-only entries): the files or folders to import,
// where each file goes (key, layer, Multi-Sample; keys without a source chosen by hand), what
// to do with keys that hold a Key-Sample, then the import with its progress.
#pragma once

#include "extras/AudioImport.h"

#include <QDialog>
#include <QStringList>

#include <map>
#include <string>
#include <vector>

class QComboBox;
class QLabel;
class QTableWidget;

namespace tg {
class Model;
}

namespace tg::shell {

class ImportAudioDialog : public QDialog {
    Q_OBJECT
  public:
    ImportAudioDialog(Model& model, ImportFileTypes types, QWidget* parent = nullptr);

    // Adds files and folders, as the "Add Files..." and "Add Folder..." buttons do after their
    // file dialogs.
    void addPaths(const QStringList& paths);
    // Where the files go as the table shows it.
    const std::vector<ImportItem>& plan() const { return plan_; }
    QTableWidget* table() const { return table_; }

    // Imports; the dialog closes when the import ran, and stays open on a refusal.
    void accept() override;

  private:
    void addFiles();
    void addFolder();
    void removeSelected();
    void replan();
    void fillTable();
    ConflictAnswer askAboutOccupiedKey(const ImportItem& item);

    Model& model_;
    ImportFileTypes types_;
    QStringList paths_;
    std::vector<ImportItem> plan_;
    std::map<std::string, int> chosenKeys_; // keys picked by hand, by file
    ConflictAnswer answerForAll_ = ConflictAnswer::Cancel;
    bool answerGivenForAll_ = false;
    QComboBox* multiSample_ = nullptr;
    QComboBox* firstKey_ = nullptr;
    QComboBox* layer_ = nullptr;
    QComboBox* conflicts_ = nullptr;
    QTableWidget* table_ = nullptr;
    QLabel* summary_ = nullptr;
};

// The title of the dialog for `types`: "Import Audio Files", "Import WAV-Files",
// "Import AIFF-Files".
QString importDialogTitle(ImportFileTypes types);

} // namespace tg::shell
