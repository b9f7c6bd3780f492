// Editors of the MIDI controllers the current Multi-Sample sends: a row per controller number
// with an active check and its value. MidiControllerWidget holds 0-63 (the MSB and LSB pairs
// of the controller table), ParameterWidget 64-120 (the parameter table).
#pragma once

#include "core/ModelListener.h"

#include <QWidget>

class QTableWidget;

namespace tg {
class Model;
}

namespace tg::shell {

class ControllerTableWidget : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    ~ControllerTableWidget() override;

    int firstController() const { return first_; }
    QTableWidget* table() const { return table_; }
    // Row of controller number `controller`.
    int rowOf(int controller) const { return controller - first_; }

    void currentProjectChanged(int index) override;
    void currentMultiSampleChanged(int index) override;
    void multiSampleChanged(int index) override;
    void settingChanged(const std::string& key) override;

  protected:
    ControllerTableWidget(Model& model, int first, int last, QWidget* parent);

  private:
    void refresh();
    void store(int controller);

    Model& model_;
    int first_;
    int last_;
    bool refreshing_ = false;
    QTableWidget* table_ = nullptr;
};

class MidiControllerWidget : public ControllerTableWidget {
    Q_OBJECT
  public:
    explicit MidiControllerWidget(Model& model, QWidget* parent = nullptr);
};

class ParameterWidget : public ControllerTableWidget {
    Q_OBJECT
  public:
    explicit ParameterWidget(Model& model, QWidget* parent = nullptr);
};

} // namespace tg::shell
