// The waveform view of the Key-Sample being edited.
#include "shell/editor/WaveformView.h"

#include "analysis/MarkerMoves.h"
#include "core/Model.h"
#include "shell/editor/LoadedSample.h"
#include "shell/editor/MarkerScene.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tg::shell {

namespace {

constexpr double kFinestFramesPerPixel = 1.0 / 32.0; // 32 pixels per frame at most
constexpr int kPickDistance = 5;                     // pixels from a marker line that grab it

bool movesLoop(MarkerId id)
{
    return id == MarkerId::LoopIn || id == MarkerId::LoopOut;
}

} // namespace

WaveformView::WaveformView(Model& model, TGsample& sample, QWidget* parent)
    : QWidget(parent), model_(model), sample_(sample)
{
    setObjectName(QStringLiteral("WaveformView"));
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(320, 160);
    setMouseTracking(true);
    scroll_ = new QScrollBar(Qt::Horizontal, this);
    scroll_->setObjectName(QStringLiteral("waveformScroll"));
    connect(scroll_, &QScrollBar::valueChanged, this, [this](int value) {
        if (!syncing_)
            scrollToFrame(value);
    });
    model_.addListener(this);
}

WaveformView::~WaveformView()
{
    model_.removeListener(this);
}

QRect WaveformView::waveArea() const
{
    return QRect(0, 0, width(), height() - scroll_->sizeHint().height());
}

int WaveformView::xOfFrame(double frame) const
{
    return static_cast<int>(std::floor(viewport_.xOf(frame, waveArea().left())));
}

void WaveformView::limitViewport()
{
    const double frames = static_cast<double>(std::max<int64_t>(sample_.wave.frames(), 1));
    const double columns = std::max(waveArea().width(), 1);
    const double coarsest = std::max(frames / columns, kFinestFramesPerPixel);
    viewport_.framesPerPixel =
        std::clamp(viewport_.framesPerPixel, kFinestFramesPerPixel, coarsest);
    const double shown = columns * viewport_.framesPerPixel;
    viewport_.firstFrame = std::clamp(viewport_.firstFrame, 0.0, std::max(0.0, frames - shown));
    syncScrollBar();
    update();
}

void WaveformView::syncScrollBar()
{
    const double shown = std::max(waveArea().width(), 1) * viewport_.framesPerPixel;
    const int64_t frames = sample_.wave.frames();
    syncing_ = true;
    scroll_->setRange(0, static_cast<int>(std::max<double>(0.0, frames - shown)));
    scroll_->setPageStep(static_cast<int>(std::max(1.0, shown)));
    scroll_->setSingleStep(static_cast<int>(std::max(1.0, shown / 20)));
    scroll_->setValue(static_cast<int>(viewport_.firstFrame));
    syncing_ = false;
}

void WaveformView::zoomBy(double factor, double anchorX)
{
    const double anchorFrame = viewport_.frameAt(anchorX, waveArea().left());
    viewport_.framesPerPixel *= factor;
    limitViewport();
    viewport_.firstFrame = anchorFrame - (anchorX - waveArea().left()) * viewport_.framesPerPixel;
    limitViewport();
}

void WaveformView::fitAll()
{
    viewport_.firstFrame = 0.0;
    viewport_.framesPerPixel = 1e300;
    limitViewport();
}

void WaveformView::fitLoop()
{
    const TGmsl_key* key = keyOf(model_, sample_);
    if (!key || key->Loop_Out <= key->Loop_In)
        return;
    // The loop with a tenth of its length either side, so its markers stay clear of the edges.
    const double length = key->Loop_Out + 1.0 - key->Loop_In;
    const double margin = length / 10.0;
    viewport_.framesPerPixel = (length + 2 * margin) / std::max(waveArea().width(), 1);
    viewport_.firstFrame = key->Loop_In - margin;
    limitViewport();
}

void WaveformView::scrollToFrame(double firstFrame)
{
    viewport_.firstFrame = firstFrame;
    limitViewport();
}

void WaveformView::setGain(double gain)
{
    viewport_.gain = std::clamp(gain, 1.0, 64.0);
    update();
}

void WaveformView::fitHeight()
{
    setGain(fittingGain(sample_.wave));
}

void WaveformView::selectMarker(std::optional<MarkerId> id)
{
    selected_ = id;
    update();
}

int32_t WaveformView::placeMarker(MarkerId id, int32_t frame, int direction)
{
    const TGmsl_key* key = keyOf(model_, sample_);
    const WaveOverview& wave = sample_.wave;
    if (!key || wave.empty())
        return frame;
    int32_t placed = frame;
    moveMarkerOnAudio(model_, sample_.note, id, frame, direction, wave.format(), wave.data().data(),
                      wave.data().size(), placed);
    if (movesLoop(id))
        emit loopOutRecalculated(&sample_);
    return placed;
}

void WaveformView::nudgeSelected(int direction, bool far)
{
    const TGmsl_key* key = keyOf(model_, sample_);
    if (!selected_ || !key)
        return;
    const int32_t step =
        static_cast<int32_t>(std::max(1.0, std::round(viewport_.framesPerPixel))) * (far ? 10 : 1);
    placeMarker(*selected_, markerValue(*key, *selected_) + direction * step, direction);
}

std::optional<MarkerId> WaveformView::markerNear(int x) const
{
    const TGmsl_key* key = keyOf(model_, sample_);
    if (!key)
        return std::nullopt;
    std::optional<MarkerId> nearest;
    int best = kPickDistance + 1;
    for (MarkerId id : allMarkers()) {
        int distance = std::abs(xOfFrame(markerValue(*key, id)) - x);
        if (selected_ && *selected_ == id && distance <= kPickDistance)
            distance = -1; // the picked marker wins over one drawn at the same place
        if (distance < best) {
            best = distance;
            nearest = id;
        }
    }
    return nearest;
}

void WaveformView::keysChanged(int, int)
{
    update();
}

void WaveformView::updateMarkers(TGsample*)
{
    limitViewport();
}

void WaveformView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect area = waveArea();
    const TGmsl_key* key = keyOf(model_, sample_);
    if (sample_.wave.empty() || !key) {
        painter.fillRect(rect(), palette().window());
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(area, Qt::AlignCenter, sample_.problem);
        return;
    }
    paintWave(painter, area, sample_.wave, viewport_, markerScene(*key, selected_));
    if (viewport_.gain > 1.0) {
        painter.setPen(QColor(200, 200, 200));
        painter.drawText(area.adjusted(0, 0, -6, -4), Qt::AlignRight | Qt::AlignBottom,
                         tr("Height x%1").arg(viewport_.gain, 0, 'f', 1));
    }
}

void WaveformView::resizeEvent(QResizeEvent* event)
{
    // A view that showed the whole take keeps showing all of it.
    const double shownBefore = std::max(event->oldSize().width(), 1) * viewport_.framesPerPixel;
    const bool wholeTake = viewport_.firstFrame <= 0.0 && shownBefore >= sample_.wave.frames();
    const int barHeight = scroll_->sizeHint().height();
    scroll_->setGeometry(0, height() - barHeight, width(), barHeight);
    if (wholeTake)
        fitAll();
    else
        limitViewport();
}

void WaveformView::wheelEvent(QWheelEvent* event)
{
    const int notches = event->angleDelta().y() / 120;
    if (notches == 0)
        return;
    if (event->modifiers() & Qt::ShiftModifier) {
        const double shown = waveArea().width() * viewport_.framesPerPixel;
        scrollToFrame(viewport_.firstFrame - notches * shown / 10.0);
    } else {
        zoomBy(std::pow(0.8, notches), event->position().x());
    }
    event->accept();
}

void WaveformView::keyPressEvent(QKeyEvent* event)
{
    const double centre = waveArea().center().x();
    const bool far = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoomBy(0.5, centre);
        break;
    case Qt::Key_Minus:
        zoomBy(2.0, centre);
        break;
    case Qt::Key_A:
        fitAll();
        break;
    case Qt::Key_L:
        fitLoop();
        break;
    case Qt::Key_Up:
        setGain(viewport_.gain * 1.5);
        break;
    case Qt::Key_Down:
        setGain(viewport_.gain / 1.5);
        break;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: {
        const int step = event->key() == Qt::Key_Tab ? 1 : kMarkerCount - 1;
        const int next = selected_ ? (static_cast<int>(*selected_) + step) % kMarkerCount
                                   : (step == 1 ? 0 : kMarkerCount - 1);
        selectMarker(allMarkers()[static_cast<size_t>(next)]);
        break;
    }
    case Qt::Key_Left:
        nudgeSelected(-1, far);
        break;
    case Qt::Key_Right:
        nudgeSelected(+1, far);
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
}

void WaveformView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    setFocus(Qt::MouseFocusReason);
    const std::optional<MarkerId> id = markerNear(event->pos().x());
    if (!id)
        return;
    selectMarker(id);
    dragging_ = true;
}

void WaveformView::mouseMoveEvent(QMouseEvent* event)
{
    if (!dragging_ || !selected_) {
        setCursor(markerNear(event->pos().x()) ? Qt::SizeHorCursor : Qt::ArrowCursor);
        return;
    }
    const double frame = viewport_.frameAt(event->pos().x() + 0.5, waveArea().left());
    placeMarker(*selected_, static_cast<int32_t>(std::floor(frame)));
}

void WaveformView::mouseReleaseEvent(QMouseEvent*)
{
    dragging_ = false;
}

} // namespace tg::shell
