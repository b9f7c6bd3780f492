// The loop splice view.
#include "shell/editor/LoopSpliceView.h"

#include "core/Model.h"
#include "shell/editor/LoadedSample.h"
#include "shell/editor/MarkerScene.h"

#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tg::shell {

LoopSpliceView::LoopSpliceView(Model& model, TGsample& sample, QWidget* parent)
    : QWidget(parent), model_(model), sample_(sample)
{
    setObjectName(QStringLiteral("LoopSpliceView"));
    setMinimumSize(200, 160);
    model_.addListener(this);
}

LoopSpliceView::~LoopSpliceView()
{
    model_.removeListener(this);
}

QRect LoopSpliceView::endArea() const
{
    return QRect(0, 0, width() / 2, height());
}

QRect LoopSpliceView::startArea() const
{
    return QRect(width() / 2, 0, width() - width() / 2, height());
}

WaveViewport LoopSpliceView::endViewport() const
{
    const TGmsl_key* key = keyOf(model_, sample_);
    const double loopEnd = key ? key->Loop_Out + 1.0 : 0.0;
    return WaveViewport{loopEnd - endArea().width() * framesPerPixel_, framesPerPixel_,
                        fittingGain(sample_.wave)};
}

WaveViewport LoopSpliceView::startViewport() const
{
    const TGmsl_key* key = keyOf(model_, sample_);
    return WaveViewport{key ? static_cast<double>(key->Loop_In) : 0.0, framesPerPixel_,
                        fittingGain(sample_.wave)};
}

void LoopSpliceView::keysChanged(int, int)
{
    update();
}

void LoopSpliceView::updateMarkers(TGsample*)
{
    update();
}

void LoopSpliceView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const TGmsl_key* key = keyOf(model_, sample_);
    if (sample_.wave.empty() || !key || key->Loop_Out <= key->Loop_In) {
        painter.fillRect(rect(), palette().window());
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         sample_.wave.empty() ? sample_.problem : tr("No loop set"));
        return;
    }
    const WaveScene scene = markerScene(*key, std::nullopt);
    paintWave(painter, endArea(), sample_.wave, endViewport(), scene);
    paintWave(painter, startArea(), sample_.wave, startViewport(), scene);

    // The step the player makes at the wrap, and the seam itself.
    const int seam = startArea().left();
    const int channels = sample_.wave.channels();
    const double gain = fittingGain(sample_.wave);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(255, 80, 70), 2.0));
    for (int c = 0; c < channels; ++c) {
        const QRect lane = channelLane(rect(), channels, c);
        const double xEnd = endViewport().xOf(key->Loop_Out, endArea().left());
        painter.drawLine(QPointF(xEnd, sampleY(lane, sample_.wave.sample(key->Loop_Out, c), gain)),
                         QPointF(seam, sampleY(lane, sample_.wave.sample(key->Loop_In, c), gain)));
    }
    painter.setPen(QPen(QColor(255, 255, 255, 120), 1.0, Qt::DotLine));
    painter.drawLine(seam, kMarkerLabelStrip, seam, height());
}

void LoopSpliceView::wheelEvent(QWheelEvent* event)
{
    const int notches = event->angleDelta().y() / 120;
    framesPerPixel_ = std::clamp(framesPerPixel_ * std::pow(0.8, notches), 1.0 / 32.0, 4096.0);
    update();
    event->accept();
}

} // namespace tg::shell
