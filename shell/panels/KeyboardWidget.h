// The on-screen keyboard: all 128 MIDI notes, the Multi-Sample's recording range as a bar
// above the keys, keys selected for recording tinted, recorded keys with a dot, the selected
// key highlighted. A click selects a key.
#pragma once

#include "core/ModelListener.h"

#include <QColor>
#include <QWidget>

namespace tg {
class Model;
}

namespace tg::shell {

class KeyboardWidget : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    static const QColor kRecordedMark;
    static const QColor kRangeBar;

    explicit KeyboardWidget(Model& model, QWidget* parent = nullptr);
    ~KeyboardWidget() override;

    // The key drawn at `point` (black keys lie above white ones), -1 for none.
    int keyAt(const QPoint& point) const;
    QRect keyRect(int note) const;
    // Where the dot of a recorded key sits.
    QPoint recordedMarkCentre(int note) const;
    // The bar of the recording range, empty without a Multi-Sample.
    QRect rangeBar() const;

    QSize sizeHint() const override { return QSize(1200, 110); }

    void currentProjectChanged(int index) override;
    void currentMultiSampleChanged(int index) override;
    void currentKeyChanged(int note) override;
    void multiSampleListChanged() override;
    void projectListChanged() override;
    void keysChanged(int project, int msl) override;
    void settingChanged(const std::string& key) override;

  signals:
    void keySelected(uint note);
    // The mouse went down on a key and up again (wherever the pointer then is): the key is
    // played for as long as it is held.
    void keyPressed(int note);
    void keyReleased(int note);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    QRect keysArea() const;

    Model& model_;
    int heldKey_ = -1;
};

} // namespace tg::shell
