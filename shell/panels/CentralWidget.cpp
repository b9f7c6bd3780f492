// The central area.
#include "shell/panels/CentralWidget.h"

#include "core/Model.h"
#include "core/NoteNames.h"
#include "shell/panels/InfoSettingsWidget.h"

#include <QLabel>
#include <QSplitter>
#include <QVBoxLayout>

namespace tg::shell {

CentralWidget::CentralWidget(Model& model, QWidget* parent) : QWidget(parent), model_(model)
{
    setObjectName(QStringLiteral("CentralWidget"));

    header_ = new QLabel(QStringLiteral("<b>Tonegrabber 6</b> &mdash; auto-sampler"), this);
    header_->setObjectName(QStringLiteral("header"));
    header_->setContentsMargins(8, 4, 8, 4);

    auto* editorHolder = new QWidget(this);
    editorArea_ = new QVBoxLayout(editorHolder);
    editorArea_->setContentsMargins(0, 0, 0, 0);
    selection_ = new QLabel(editorHolder);
    selection_->setObjectName(QStringLiteral("selectedKeySample"));
    selection_->setAlignment(Qt::AlignCenter);
    selection_->setMinimumHeight(120);
    selection_->setFrameShape(QFrame::StyledPanel);
    editorArea_->addWidget(selection_);

    info_ = new InfoSettingsWidget(model, this);

    auto* splitter = new QSplitter(Qt::Vertical, this);
    splitter->addWidget(editorHolder);
    splitter->addWidget(info_);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(header_);
    layout->addWidget(splitter, 1);

    model_.addListener(this);
    showSelection();
}

CentralWidget::~CentralWidget()
{
    model_.removeListener(this);
}

void CentralWidget::setEditor(QWidget* editor)
{
    editorArea_->removeWidget(selection_);
    selection_->hide();
    editorArea_->addWidget(editor);
}

QString CentralWidget::selectionText() const
{
    return selection_->text();
}

void CentralWidget::showSelection()
{
    const TGmsl* msl = model_.currentMultiSample();
    const int note = model_.currentKey();
    if (!msl || note < 0) {
        selection_->setText(tr("No Key-Sample selected"));
        return;
    }
    const TGmsl_key& key = msl->keys[note];
    selection_->setText(tr("Key-Sample %1 (%2) of \"%3\"%4")
                            .arg(note)
                            .arg(QString::fromStdString(noteName(note)))
                            .arg(QString::fromUtf8(msl->name))
                            .arg(key.hasAudio ? QString() : tr(": not recorded yet")));
}

void CentralWidget::currentProjectChanged(int)
{
    showSelection();
}

void CentralWidget::currentMultiSampleChanged(int)
{
    showSelection();
}

void CentralWidget::currentKeyChanged(int)
{
    showSelection();
}

void CentralWidget::projectListChanged()
{
    showSelection();
}

void CentralWidget::multiSampleListChanged()
{
    showSelection();
}

} // namespace tg::shell
