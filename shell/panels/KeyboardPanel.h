// The Keyboard dock's panel: the keyboard with its Play and Stop buttons, wired to playback.
#pragma once

#include <QWidget>

class QPushButton;

namespace tg::shell {

class KeyboardWidget;
class KeyPlayback;

class KeyboardPanel : public QWidget {
    Q_OBJECT
  public:
    KeyboardPanel(KeyboardWidget& keyboard, KeyPlayback& playback, QWidget* parent = nullptr);

    // "Play" plays the selected key for as long as it is held down; "Stop" fades out.
    QPushButton* playButton() const { return play_; }
    QPushButton* stopButton() const { return stop_; }

  private:
    QPushButton* play_;
    QPushButton* stop_;
};

} // namespace tg::shell
