// The Samples panel: the 128 keys of the current Multi-Sample with their note names, names,
// audio, markers, and the two switches a user sets per key: selected for recording and
// locked. Clicking a key selects it for the editor and the info panel.
#pragma once

#include "core/ModelListener.h"

#include <QWidget>

class QLabel;
class QTableWidget;
class QTableWidgetItem;

namespace tg {
class Model;
struct TGmsl_key;
} // namespace tg

namespace tg::shell {

class SamplesWidget : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    enum Column { KeyColumn, NameColumn, SelectedColumn, AudioColumn, LockedColumn, MarkersColumn };

    explicit SamplesWidget(Model& model, QWidget* parent = nullptr);
    ~SamplesWidget() override;

    QTableWidget* table() const { return table_; }
    // "Keys of <Multi-Sample>", or a note that there is none.
    QString heading() const;

    void projectListChanged() override { refresh(); }
    void currentProjectChanged(int) override { refresh(); }
    void multiSampleListChanged() override { refresh(); }
    void currentMultiSampleChanged(int) override { refresh(); }
    void multiSampleChanged(int) override { refresh(); }
    void keysChanged(int project, int msl) override;
    void currentKeyChanged(int note) override;

    // The markers column of one key: note, loop and release ranges in frames.
    static QString markerSummary(const TGmsl_key& key);

  private:
    void refresh();
    void onItemChanged(QTableWidgetItem* item);
    void onCurrentCellChanged(int row);

    Model& model_;
    QLabel* heading_ = nullptr;
    QTableWidget* table_ = nullptr;
    bool refreshing_ = false;
};

} // namespace tg::shell
