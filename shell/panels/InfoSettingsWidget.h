// The info and settings panel: facts about what was selected last (a Project, a Multi-Sample
// or a Key-Sample), under a title that names the kind of selection, and a Multi-Sample's
// settings.
#pragma once

#include "core/ModelListener.h"

#include <QGroupBox>

class QLabel;
class QScrollArea;

namespace tg {
class Model;
}

namespace tg::shell {

class InfoSettingsWidget : public QGroupBox, public TonegrabberModelListener {
    Q_OBJECT
  public:
    enum class Focus { None, Project, MultiSample, Sample };

    explicit InfoSettingsWidget(Model& model, QWidget* parent = nullptr);
    ~InfoSettingsWidget() override;

    Focus focus() const { return focus_; }
    QString infoText() const;

    void projectListChanged() override;
    void currentProjectChanged(int index) override;
    void multiSampleListChanged() override;
    void currentMultiSampleChanged(int index) override;
    void currentKeyChanged(int note) override;
    void projectChanged(int index) override;
    void multiSampleChanged(int index) override;
    void keysChanged(int project, int msl) override;

  private:
    void setFocus(Focus focus);
    void refresh();

    Model& model_;
    Focus focus_ = Focus::None;
    QLabel* info_ = nullptr;
    QScrollArea* settings_ = nullptr;
};

} // namespace tg::shell
