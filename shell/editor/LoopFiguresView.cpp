// The loop figures under the splice.
#include "shell/editor/LoopFiguresView.h"

#include "shell/editor/LoadedSample.h"

#include <QLabel>
#include <QVBoxLayout>

#include <string>
#include <utility>

namespace tg::shell {

// Bright enough to read on the dark editor and on a light window alike.
const QColor LoopFiguresView::kClickColour(255, 80, 70);
const QColor LoopFiguresView::kSeamlessColour(80, 200, 110);

LoopFiguresView::LoopFiguresView(Model& model, TGsample& sample, QWidget* parent)
    : QWidget(parent), model_(model), sample_(sample)
{
    setObjectName(QStringLiteral("LoopFiguresView"));
    figures_ = new QLabel(this);
    figures_->setObjectName(QStringLiteral("loopFigures"));
    figures_->setTextFormat(Qt::RichText);
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
    setMinimumHeight(7 * fontMetrics().lineSpacing() + 10);
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
        display(tr("The loop cannot be measured: %1")
                    .arg(QString::fromStdString(message))
                    .toHtmlEscaped(),
                QString(), QColor());
        return;
    }
    quality_ = q;
    // Name and value in two columns, so the figures stay legible in the narrow splice pane.
    const std::pair<QString, QString> rows[] = {
        {tr("Loop"), tr("%1 frames").arg(static_cast<qlonglong>(q.length))},
        {tr("Crossfade"), tr("%1 frames").arg(static_cast<qlonglong>(q.crossfade))},
        {tr("Wrap step"), tr("%1, seam %2").arg(q.wrapStep, 0, 'f', 0).arg(q.seamStep, 0, 'f', 0)},
        {tr("Median step"),
         tr("%1 (seam %2\u00d7)").arg(q.medianStep, 0, 'f', 0).arg(q.stepRatio(), 0, 'f', 1)},
        {tr("Level step"), tr("%1 dB").arg(QString::asprintf("%+.2f", q.levelStepDb))},
        {tr("Seam error"), QString::number(q.seamError, 'f', 4)},
    };
    QString figures = QStringLiteral("<table cellspacing=\"0\" cellpadding=\"0\">");
    for (const auto& [name, value] : rows)
        figures += QStringLiteral("<tr><td>%1&nbsp;&nbsp;</td><td>%2</td></tr>")
                       .arg(name.toHtmlEscaped(), value.toHtmlEscaped());
    figures += QStringLiteral("</table>");
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
