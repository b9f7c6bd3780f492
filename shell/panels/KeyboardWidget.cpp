// The on-screen keyboard.
#include "shell/panels/KeyboardWidget.h"

#include "core/Model.h"
#include "core/NoteNames.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace tg::shell {

namespace {

constexpr int kWhiteKeys = 75; // white keys among MIDI notes 0..127
constexpr int kRangeStrip = 10;

bool isBlack(int note)
{
    switch (note % 12) {
    case 1:
    case 3:
    case 6:
    case 8:
    case 10:
        return true;
    default:
        return false;
    }
}

// Index of the white key at or just below `note`.
int whiteIndex(int note)
{
    static const int inOctave[12] = {0, 0, 1, 1, 2, 3, 3, 4, 4, 5, 5, 6};
    return note / 12 * 7 + inOctave[note % 12];
}

} // namespace

const QColor KeyboardWidget::kRecordedMark(40, 200, 90);
const QColor KeyboardWidget::kRangeBar(42, 130, 218);

KeyboardWidget::KeyboardWidget(Model& model, QWidget* parent) : QWidget(parent), model_(model)
{
    setObjectName(QStringLiteral("KeyboardWidget"));
    setMinimumSize(600, 70);
    model_.addListener(this);
}

KeyboardWidget::~KeyboardWidget()
{
    model_.removeListener(this);
}

QRect KeyboardWidget::keysArea() const
{
    return QRect(0, kRangeStrip + 2, width(), height() - kRangeStrip - 2);
}

QRect KeyboardWidget::keyRect(int note) const
{
    const QRect area = keysArea();
    const double white = static_cast<double>(area.width()) / kWhiteKeys;
    if (!isBlack(note)) {
        const int left = static_cast<int>(whiteIndex(note) * white);
        const int right = static_cast<int>((whiteIndex(note) + 1) * white);
        return QRect(area.left() + left, area.top(), right - left, area.height());
    }
    // A black key straddles the border after the white key below it.
    const double centre = (whiteIndex(note) + 1) * white;
    const int w = std::max(3, static_cast<int>(white * 0.6));
    return QRect(area.left() + static_cast<int>(centre - w / 2.0), area.top(), w,
                 area.height() * 6 / 10);
}

int KeyboardWidget::keyAt(const QPoint& point) const
{
    for (int note = 0; note < kKeyCount; ++note)
        if (isBlack(note) && keyRect(note).contains(point))
            return note;
    for (int note = 0; note < kKeyCount; ++note)
        if (!isBlack(note) && keyRect(note).contains(point))
            return note;
    return -1;
}

QPoint KeyboardWidget::recordedMarkCentre(int note) const
{
    const QRect key = keyRect(note);
    const int fromBottom = isBlack(note) ? key.width() / 2 + 2 : 20;
    return QPoint(key.center().x(), key.bottom() - fromBottom);
}

QRect KeyboardWidget::rangeBar() const
{
    const TGmsl* msl = const_cast<Model&>(model_).currentMultiSample();
    if (!msl)
        return QRect();
    const int low = std::clamp<int>(msl->KBrangeIn, 0, kKeyCount - 1);
    const int high = std::clamp<int>(msl->KBrangeOut, low, kKeyCount - 1);
    const int left = keyRect(low).left();
    const int right = keyRect(high).right();
    return QRect(left, 0, right - left + 1, kRangeStrip);
}

void KeyboardWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(30, 32, 36));
    const TGmsl* msl = model_.currentMultiSample();
    const int current = msl ? model_.currentKey() : -1;
    const QColor selectedTint(150, 190, 240);
    const QColor currentKey(255, 160, 40);
    const int dot = std::max(3, keyRect(0).width() / 3);

    const auto paintKey = [&](int note) {
        const QRect key = keyRect(note);
        const TGmsl_key* record = msl ? &msl->keys[note] : nullptr;
        QColor fill = isBlack(note) ? QColor(20, 20, 22) : QColor(235, 235, 232);
        if (record && record->keyState)
            fill = isBlack(note) ? selectedTint.darker(260) : selectedTint;
        if (note == current)
            fill = currentKey;
        painter.fillRect(key, fill);
        painter.setPen(QColor(60, 60, 60));
        painter.drawRect(key.adjusted(0, 0, -1, -1));
        if (record && record->hasAudio) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(kRecordedMark);
            painter.drawEllipse(recordedMarkCentre(note), dot, dot);
            painter.setBrush(Qt::NoBrush);
        }
    };
    for (int note = 0; note < kKeyCount; ++note)
        if (!isBlack(note))
            paintKey(note);
    painter.setPen(QColor(70, 70, 70));
    QFont small = painter.font();
    small.setPointSizeF(std::max(5.0, small.pointSizeF() * 0.7));
    painter.setFont(small);
    for (int note = 0; note < kKeyCount; note += 12) {
        const QRect key = keyRect(note);
        painter.drawText(key.adjusted(0, 0, 0, -3), Qt::AlignBottom | Qt::AlignHCenter,
                         QString::fromStdString(noteName(note)));
    }
    for (int note = 0; note < kKeyCount; ++note)
        if (isBlack(note))
            paintKey(note);
    if (msl)
        painter.fillRect(rangeBar(), kRangeBar);
}

void KeyboardWidget::mousePressEvent(QMouseEvent* event)
{
    const int note = keyAt(event->pos());
    if (event->button() != Qt::LeftButton || note < 0)
        return;
    emit keySelected(static_cast<uint>(note));
    heldKey_ = note;
    emit keyPressed(note);
}

void KeyboardWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || heldKey_ < 0)
        return;
    const int note = heldKey_;
    heldKey_ = -1;
    emit keyReleased(note);
}

void KeyboardWidget::currentProjectChanged(int)
{
    update();
}

void KeyboardWidget::currentMultiSampleChanged(int)
{
    update();
}

void KeyboardWidget::currentKeyChanged(int)
{
    update();
}

void KeyboardWidget::multiSampleListChanged()
{
    update();
}

void KeyboardWidget::projectListChanged()
{
    update();
}

void KeyboardWidget::keysChanged(int, int)
{
    update();
}

void KeyboardWidget::settingChanged(const std::string&)
{
    update(); // the recording range is a setting
}

} // namespace tg::shell
