// The central area: the header line, the editor area that shows the selected Key-Sample, and
// the info and settings panel below it.
#pragma once

#include "core/ModelListener.h"

#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace tg {
class Model;
}

namespace tg::shell {

class InfoSettingsWidget;

class CentralWidget : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    explicit CentralWidget(Model& model, QWidget* parent = nullptr);
    ~CentralWidget() override;

    QWidget* header() const { return header_; }
    InfoSettingsWidget* infoSettings() const { return info_; }
    // Puts the editor in the place of the selected-key label (the area takes it over).
    void setEditor(QWidget* editor);

    // What the editor area says about the selection.
    QString selectionText() const;

    void currentProjectChanged(int index) override;
    void currentMultiSampleChanged(int index) override;
    void currentKeyChanged(int note) override;
    void projectListChanged() override;
    void multiSampleListChanged() override;

  private:
    void showSelection();

    Model& model_;
    QWidget* header_ = nullptr;
    QLabel* selection_ = nullptr;
    QVBoxLayout* editorArea_ = nullptr;
    InfoSettingsWidget* info_ = nullptr;
};

} // namespace tg::shell
