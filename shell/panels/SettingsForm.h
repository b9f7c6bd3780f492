// A form of settings widgets bound to the keyed settings accessor: one widget per key, named
// by its key ("prefs_datapath", "msl_recordsettings_xfadelength"), writing through the
// accessor as the user edits and reloading when the model says the value changed.
#pragma once

#include "core/ModelListener.h"
#include "core/SettingsAccessor.h"

#include <QWidget>

class QFormLayout;

#include <functional>
#include <vector>

namespace tg {
class Model;
}

namespace tg::shell {

class SettingsForm : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    SettingsForm(Model& model, const std::vector<SettingKey>& keys, QWidget* parent = nullptr);
    ~SettingsForm() override;

    // Every widget shows the value the model holds now.
    void reload();

    void settingChanged(const std::string& key) override;
    void preferencesChanged() override { reload(); }
    void currentProjectChanged(int) override { reload(); }
    void currentMultiSampleChanged(int) override { reload(); }
    void multiSampleChanged(int) override { reload(); }

  private:
    struct Field {
        std::string key;
        std::function<void()> load; // model -> widget
    };
    void addField(const SettingKey& key, QFormLayout* layout);

    Model& model_;
    std::vector<Field> fields_;
    bool loading_ = false;
};

} // namespace tg::shell
