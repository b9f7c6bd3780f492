// The MIDI monitor: one table row per incoming message with its decoded text.
#pragma once

#include <QWidget>

#include <vector>

class QTableWidget;

namespace tg {
class MidiManager;
}

namespace tg::shell {

class MidiMonitorWidget : public QWidget {
    Q_OBJECT
  public:
    explicit MidiMonitorWidget(QWidget* parent = nullptr);

    // Shows every message `manager` receives from the MIDI input.
    void listenTo(MidiManager& manager);

    QTableWidget* table() const { return table_; }

  public slots:
    void onMidiIn(std::vector<unsigned char> message);
    void clear();

  private:
    QTableWidget* table_ = nullptr;
};

} // namespace tg::shell
