// "Export Settings": the radio groups and check boxes of the Export Settings word, with only
// the values the format allows enabled, starting on the last used word (or the format's
// default) as corrected for the format.
#pragma once

#include "export/ExportFormats.h"

#include <QDialog>

#include <vector>

class QButtonGroup;
class QCheckBox;

namespace tg::shell {

class ExportSettingsDialog : public QDialog {
    Q_OBJECT
  public:
    ExportSettingsDialog(const QString& menuText, bool hasLastWord, uint32_t lastWord,
                         QWidget* parent);

    // The word the dialog shows now.
    uint32_t word() const;
    // "Loop all Samples (use Loop points if available)", for the formats that offer it.
    bool loopAll() const;

  private:
    uint32_t start_; // the preselected word: untouched switches keep its fields
    std::vector<QButtonGroup*> groups_;
    std::vector<QCheckBox*> switches_;
    QCheckBox* loopAll_ = nullptr;
};

} // namespace tg::shell
