// The keyboard dock's panel.
#include "shell/panels/KeyboardPanel.h"

#include "shell/KeyPlayback.h"
#include "shell/panels/KeyboardWidget.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace tg::shell {

KeyboardPanel::KeyboardPanel(KeyboardWidget& keyboard, KeyPlayback& playback, QWidget* parent)
    : QWidget(parent), play_(new QPushButton(tr("Play"))), stop_(new QPushButton(tr("Stop")))
{
    play_->setObjectName(QStringLiteral("playKeyButton"));
    stop_->setObjectName(QStringLiteral("stopKeyButton"));
    play_->setToolTip(tr("Plays the selected Key-Sample while held: note, loop, release"));
    stop_->setToolTip(tr("Stops playback"));
    auto* buttons = new QVBoxLayout;
    buttons->addWidget(play_);
    buttons->addWidget(stop_);
    buttons->addStretch();
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addLayout(buttons);
    layout->addWidget(&keyboard, 1);

    connect(&keyboard, &KeyboardWidget::keyPressed, &playback, &KeyPlayback::pressKey);
    connect(&keyboard, &KeyboardWidget::keyReleased, &playback, &KeyPlayback::releaseKey);
    connect(play_, &QPushButton::pressed, &playback, &KeyPlayback::playCurrentKey);
    connect(play_, &QPushButton::released, &playback, &KeyPlayback::releaseCurrentKey);
    connect(stop_, &QPushButton::clicked, &playback, &KeyPlayback::stop);
}

} // namespace tg::shell
