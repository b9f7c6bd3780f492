// The editor area.
#include "shell/editor/SampleEditor.h"

#include "core/Model.h"
#include "shell/editor/LoopFiguresView.h"
#include "shell/editor/LoopSpliceView.h"
#include "shell/editor/WaveformView.h"

#include <QHBoxLayout>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

namespace tg::shell {

SampleEditor::SampleEditor(Model& model, QWidget* parent) : QWidget(parent), model_(model)
{
    setObjectName(QStringLiteral("SampleEditor"));
    waveform_ = new WaveformView(model_, sample_, this);
    splice_ = new LoopSpliceView(model_, sample_, this);
    figures_ = new LoopFiguresView(model_, sample_, this);

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(4, 2, 4, 0);
    const auto addButton = [&](const QString& name, const QString& text, const QString& tip,
                               auto action) {
        auto* button = new QToolButton(this);
        button->setObjectName(name);
        button->setText(text);
        button->setToolTip(tip);
        button->setFocusPolicy(Qt::NoFocus);
        connect(button, &QToolButton::clicked, waveform_, action);
        buttons->addWidget(button);
    };
    const auto centre = [this] { return waveform_->waveArea().center().x(); };
    addButton(QStringLiteral("fitAllButton"), tr("Whole Take"), tr("Show the whole take (A)"),
              [this] { waveform_->fitAll(); });
    addButton(QStringLiteral("fitLoopButton"), tr("Loop"), tr("Show the loop (L)"),
              [this] { waveform_->fitLoop(); });
    addButton(QStringLiteral("zoomInButton"), tr("+"), tr("Zoom in (+)"),
              [this, centre] { waveform_->zoomBy(0.5, centre()); });
    addButton(QStringLiteral("zoomOutButton"), tr("-"), tr("Zoom out (-)"),
              [this, centre] { waveform_->zoomBy(2.0, centre()); });
    buttons->addStretch(1);

    // The figures sit right under the join they describe.
    auto* loopPane = new QWidget(this);
    auto* loopLayout = new QVBoxLayout(loopPane);
    loopLayout->setContentsMargins(0, 0, 0, 0);
    loopLayout->setSpacing(0);
    loopLayout->addWidget(splice_, 1);
    loopLayout->addWidget(figures_);

    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(waveform_);
    splitter->addWidget(loopPane);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({3000, 1000});

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addLayout(buttons);
    layout->addWidget(splitter, 1);

    connect(waveform_, &WaveformView::loopOutRecalculated, splice_, &LoopSpliceView::updateMarkers);
    model_.addListener(this);
    follow(true);
}

SampleEditor::~SampleEditor()
{
    model_.removeListener(this);
}

void SampleEditor::follow(bool always)
{
    const TGmsl* msl = model_.currentMultiSample();
    const int project = model_.currentProject() ? model_.currentProjectIndex() : -1;
    const int mslIndex = msl ? model_.currentProject()->currentMsl : -1;
    const int note = msl ? model_.currentKey() : -1;
    if (!always && sample_.sameKey(project, mslIndex, note))
        return;
    waveform_->selectMarker(std::nullopt);
    load(true);
}

void SampleEditor::load(bool fit)
{
    loadCurrentKeySample(model_, sample_);
    if (fit) {
        waveform_->fitAll();
        waveform_->fitHeight();
    } else {
        waveform_->updateMarkers(&sample_);
    }
    splice_->updateMarkers(&sample_);
    figures_->refresh(true);
}

void SampleEditor::projectListChanged()
{
    follow(true);
}

void SampleEditor::currentProjectChanged(int)
{
    follow(false);
}

void SampleEditor::multiSampleListChanged()
{
    follow(true);
}

void SampleEditor::currentMultiSampleChanged(int)
{
    follow(false);
}

void SampleEditor::currentKeyChanged(int)
{
    follow(false);
}

void SampleEditor::keysChanged(int project, int msl)
{
    // A take that arrived for the open key, or replaced its take (its markers alone move
    // without a reload).
    if (project != sample_.project || (msl != -1 && msl != sample_.msl))
        return;
    const TGmsl_key* key = keyOf(model_, sample_);
    if (key && key->hasAudio && (!sample_.keyHadAudio || takeReplacedOnDisk(model_, sample_)))
        follow(true);
    else
        figures_->refresh(false);
}

void SampleEditor::keySamplesChanged(int msl)
{
    // Normalize, change gain and auto-note/auto-loop rewrite takes and move markers: the open
    // one is read again, keeping the view where it is.
    if (sample_.project == model_.currentProjectIndex() && msl == sample_.msl)
        load(false);
}

void SampleEditor::onKeySelected(uint note)
{
    model_.selectKey(static_cast<int>(note));
}

} // namespace tg::shell
