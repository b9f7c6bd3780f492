// Where a Prophet-X program or a Quantum map goes and what it is called: user bank, category,
// program number and name for the Prophet-X; sample folder and map name for the Quantum.
#pragma once

#include "export/ExportFormats.h"
#include "export/ExportTemplateFormats.h"

#include <QDialog>

class QLineEdit;
class QSpinBox;

namespace tg::shell {

class ExportTaggingDialog : public QDialog {
    Q_OBJECT
  public:
    // `defaultName` (the Project's name) fills the name fields.
    ExportTaggingDialog(ExportFormat format, const QString& defaultName, QWidget* parent);

    // The choices as the exporters take them.
    ExportTagging tagging() const;

  private:
    void acceptIfComplete();

    ExportFormat format_;
    QLineEdit* bank_ = nullptr;
    QLineEdit* category_ = nullptr;
    QSpinBox* programNumber_ = nullptr;
    QLineEdit* name_ = nullptr;
    QLineEdit* folder_ = nullptr;
};

} // namespace tg::shell
