// The naming dialog of the WAV and AIFF sets: the naming scheme with its two defaults, the
// destination folder, a preview of the file names, and the warnings before the export.
#pragma once

#include "core/Records.h"

#include <QDialog>

#include <vector>

class QLineEdit;
class QListWidget;

namespace tg::shell {

class ExportNamingDialog : public QDialog {
    Q_OBJECT
  public:
    // `project` is the Project whose names the preview shows; `menuText` names the format.
    ExportNamingDialog(const Project& project, const QString& menuText, QWidget* parent);

    QString namingScheme() const;
    QString destination() const;
    // Preset values (the last ones used).
    void setNamingScheme(const QString& scheme);
    void setDestination(const QString& folder);

    // "Export": refuses an empty destination, shows the naming warnings and asks whether to
    // go on; accepts when the answers allow.
    void tryExport();

  private:
    void updatePreview();
    void browse();

    const Project& project_;
    QLineEdit* scheme_;
    QLineEdit* destination_;
    QListWidget* preview_;
};

} // namespace tg::shell
