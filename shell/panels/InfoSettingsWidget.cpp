// The info and settings panel.
#include "shell/panels/InfoSettingsWidget.h"

#include "core/Model.h"
#include "core/NoteNames.h"
#include "core/SettingsAccessor.h"
#include "shell/panels/SettingsForm.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>

namespace tg::shell {

namespace {

QString titleFor(InfoSettingsWidget::Focus focus)
{
    switch (focus) {
    case InfoSettingsWidget::Focus::Project:
        return QStringLiteral("Project Info and Settings");
    case InfoSettingsWidget::Focus::MultiSample:
        return QStringLiteral("Multi-Sample Info and Settings");
    case InfoSettingsWidget::Focus::Sample:
        return QStringLiteral("Sample Info and Settings");
    case InfoSettingsWidget::Focus::None:
        break;
    }
    return QStringLiteral("Info and Settings");
}

QString row(const QString& label, const QString& value)
{
    return QStringLiteral("<tr><td>%1</td><td>%2</td></tr>")
        .arg(label.toHtmlEscaped(), value.toHtmlEscaped());
}

QString projectInfo(const Project& p)
{
    int keysWithAudio = 0;
    for (int m = 0; m < p.mslCount; ++m)
        for (const TGmsl_key& key : p.msl[m].keys)
            keysWithAudio += key.hasAudio ? 1 : 0;
    return row(QObject::tr("Project"), QString::fromUtf8(p.name)) +
           row(QObject::tr("Folder"), QString::fromUtf8(p.projectDir)) +
           row(QObject::tr("Data path"), QString::fromUtf8(p.dataPath)) +
           row(QObject::tr("Multi-Samples"), QString::number(p.mslCount)) +
           row(QObject::tr("Key-Samples with audio"), QString::number(keysWithAudio)) +
           row(QObject::tr("Unsaved changes"), p.modified ? QObject::tr("yes") : QObject::tr("no"));
}

QString multiSampleInfo(const TGmsl& m)
{
    int selected = 0;
    int recorded = 0;
    for (const TGmsl_key& key : m.keys) {
        selected += key.keyState ? 1 : 0;
        recorded += key.hasAudio ? 1 : 0;
    }
    return row(QObject::tr("Multi-Sample"), QString::fromUtf8(m.name)) +
           row(QObject::tr("MIDI out"), QStringLiteral("%1, channel %2")
                                            .arg(QString::fromUtf8(m.MIDIoutDevice))
                                            .arg(m.MIDIoutChannel + 1)) +
           row(QObject::tr("Audio in"), QString::fromUtf8(m.AudioInDevice)) +
           row(QObject::tr("Format"), QString::fromUtf8(m.AudioInFormat)) +
           row(QObject::tr("Velocity range"),
               QStringLiteral("%1 - %2").arg(m.range_start).arg(m.range_end)) +
           row(QObject::tr("Keys selected / recorded"),
               QStringLiteral("%1 / %2").arg(selected).arg(recorded));
}

QString sampleInfo(const TGmsl_key& k, int note)
{
    return row(QObject::tr("Key"),
               QStringLiteral("%1 (%2)").arg(note).arg(QString::fromStdString(noteName(note)))) +
           row(QObject::tr("Name"), QString::fromUtf8(k.name)) +
           row(QObject::tr("Audio"), k.hasAudio ? QObject::tr("recorded") : QObject::tr("none")) +
           row(QObject::tr("Note"), QStringLiteral("%1 - %2").arg(k.Note_In).arg(k.Note_Out)) +
           row(QObject::tr("Loop"), k.loopMode == 0 ? QObject::tr("off")
                                                    : QStringLiteral("%1 - %2 (length %3)")
                                                          .arg(k.Loop_In)
                                                          .arg(k.Loop_Out)
                                                          // Loop_Out is played too
                                                          .arg(k.Loop_Out - k.Loop_In + 1)) +
           row(QObject::tr("Release"),
               k.releaseOn ? QStringLiteral("%1 - %2").arg(k.Release_In).arg(k.Release_Out)
                           : QObject::tr("off")) +
           row(QObject::tr("Locked"), k.locked ? QObject::tr("yes") : QObject::tr("no"));
}

} // namespace

InfoSettingsWidget::InfoSettingsWidget(Model& model, QWidget* parent)
    : QGroupBox(parent), model_(model)
{
    setObjectName(QStringLiteral("InfoSettingsWidget"));
    info_ = new QLabel(this);
    info_->setObjectName(QStringLiteral("info"));
    info_->setTextFormat(Qt::RichText);
    info_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    info_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A Multi-Sample's settings sit beside its facts, one widget per settings key.
    settings_ = new QScrollArea(this);
    settings_->setObjectName(QStringLiteral("multiSampleSettings"));
    settings_->setWidget(new SettingsForm(model_, settingKeys("msl")));
    settings_->setWidgetResizable(true);
    settings_->setFrameShape(QFrame::NoFrame);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(info_, 2);
    layout->addWidget(settings_, 3);
    model_.addListener(this);
    setFocus(model_.currentProject() ? Focus::Project : Focus::None);
}

InfoSettingsWidget::~InfoSettingsWidget()
{
    model_.removeListener(this);
}

QString InfoSettingsWidget::infoText() const
{
    return info_->text();
}

void InfoSettingsWidget::setFocus(Focus focus)
{
    if (!model_.currentProject())
        focus = Focus::None;
    else if (focus == Focus::MultiSample && !model_.currentMultiSample())
        focus = Focus::Project;
    else if (focus == Focus::Sample && (!model_.currentMultiSample() || model_.currentKey() < 0))
        focus = Focus::MultiSample;
    focus_ = focus;
    setTitle(titleFor(focus_));
    settings_->setVisible(focus_ == Focus::MultiSample);
    refresh();
}

void InfoSettingsWidget::refresh()
{
    QString rows;
    const Project* project = model_.currentProject();
    const TGmsl* msl = model_.currentMultiSample();
    switch (focus_) {
    case Focus::Project:
        rows = projectInfo(*project);
        break;
    case Focus::MultiSample:
        rows = multiSampleInfo(*msl);
        break;
    case Focus::Sample:
        rows = sampleInfo(msl->keys[model_.currentKey()], model_.currentKey());
        break;
    case Focus::None:
        rows = row(tr("Projects"), tr("none open"));
        break;
    }
    info_->setText(QStringLiteral("<table cellspacing=\"4\">%1</table>").arg(rows));
}

void InfoSettingsWidget::projectListChanged()
{
    setFocus(focus_ == Focus::None ? Focus::Project : focus_);
}

void InfoSettingsWidget::currentProjectChanged(int)
{
    setFocus(Focus::Project);
}

void InfoSettingsWidget::multiSampleListChanged()
{
    setFocus(focus_);
}

void InfoSettingsWidget::currentMultiSampleChanged(int)
{
    setFocus(Focus::MultiSample);
}

void InfoSettingsWidget::currentKeyChanged(int note)
{
    setFocus(note >= 0 ? Focus::Sample : Focus::MultiSample);
}

void InfoSettingsWidget::projectChanged(int)
{
    refresh();
}

void InfoSettingsWidget::multiSampleChanged(int)
{
    refresh();
}

void InfoSettingsWidget::keysChanged(int, int)
{
    refresh();
}

} // namespace tg::shell
