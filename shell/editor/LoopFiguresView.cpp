// The loop figures under the splice.
#include "shell/editor/LoopFiguresView.h"

#include "shell/editor/LoadedSample.h"

#include <QLabel>
#include <QVBoxLayout>

#include <string>

namespace tg::shell {

const QColor LoopFiguresView::kClickColour(205, 35, 25);
const QColor LoopFiguresView::kSeamlessColour(30, 135, 60);

LoopFiguresView::LoopFiguresView(Model& model, TGsample& sample, QWidget* parent)
    : QWidget(parent), model_(model), sample_(sample)
{
    setObjectName(QStringLiteral("LoopFiguresView"));
    figures_ = new QLabel(this);
    figures_->setObjectName(QStringLiteral("loopFigures"));
    figures_->setWordWrap(true);
    figures_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    verdict_ = new QLabel(this);
    verdict_->setObjectName(QStringLiteral("loopVerdict"));
    QFont bold = verdict_->font();
    bold.setBold(true);
    verdict_->setFont(bold);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 2, 6, 4);
    layout->setSpacing(2);
    layout->addWidget(figures_);
    layout->addWidget(verdict_);
    // Room for the figures and the verdict whether a loop is shown or not, so the splice
    // above keeps its height from key to key.
    setMinimumHeight(4 * fontMetrics().lineSpacing() + 10);
}

void LoopFiguresView::refresh(bool audioReloaded)
{
    const TGmsl_key* key = keyOf(model_, sample_);
    if (!key || sample_.wave.empty() || key->loopMode == 0 || key->Loop_Out <= key->Loop_In) {
        measuredInputs_.reset();
        quality_.reset();
        display(QString(), QString(), QColor());
        return;
    }
    const RenderInputs inputs{key->Note_In,      key->Note_Out,   key->Loop_In,    key->Loop_Out,
                              key->loopMode,     key->xfadeLen,   key->bfxfadeLen, key->xfadeCurve,
                              key->bfxfadeCurve, key->clickpopred};
    if (!audioReloaded && measuredInputs_ == inputs)
        return;
    measuredInputs_ = inputs;
    ++measurements_;
    LoopQuality q;
    std::string message;
    if (!measureKeySampleLoop(*key, sample_.wave.format(), sample_.wave.data(), q, message)) {
        quality_.reset();
        display(tr("The loop cannot be measured: %1").arg(QString::fromStdString(message)),
                QString(), QColor());
        return;
    }
    quality_ = q;
    const QString figures = tr("Loop %1 frames, crossfade %2\n"
                               "Wrap step %3 (seam %4) against a median step of %5 (%6\u00d7)\n"
                               "Level step %7 dB, seam error %8")
                                .arg(static_cast<qlonglong>(q.length))
                                .arg(static_cast<qlonglong>(q.crossfade))
                                .arg(q.wrapStep, 0, 'f', 0)
                                .arg(q.seamStep, 0, 'f', 0)
                                .arg(q.medianStep, 0, 'f', 0)
                                .arg(q.stepRatio(), 0, 'f', 1)
                                .arg(QString::asprintf("%+.2f", q.levelStepDb))
                                .arg(q.seamError, 0, 'f', 4);
    if (q.click)
        display(figures, tr("Clicks at every wrap"), kClickColour);
    else
        display(figures, tr("Seamless"), kSeamlessColour);
}

void LoopFiguresView::display(const QString& figures, const QString& verdict, const QColor& colour)
{
    figures_->setText(figures);
    verdict_->setText(verdict);
    QPalette palette = verdict_->palette();
    palette.setColor(QPalette::WindowText,
                     colour.isValid() ? colour : this->palette().color(QPalette::WindowText));
    verdict_->setPalette(palette);
}

} // namespace tg::shell
