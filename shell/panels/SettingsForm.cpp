// Settings widgets over the keyed accessor.
#include "shell/panels/SettingsForm.h"

#include "analysis/FadeCurves.h"
#include "core/Model.h"
#include "devices/DeviceTables.h"
#include "audiofile/RecordFormats.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QSpinBox>

#include <cstring>

namespace tg::shell {

namespace {

// How a key is shown beyond its value kind.
enum class Look { Plain, Flag, Midi, Channel, Format, Curve, AudioIn, MidiOut };

struct Presentation {
    const char* name; // the key without its prefix, dots as underscores
    const char* label;
    Look look;
};

const Presentation kPresentations[] = {
    {"AudioInDevice", "Audio input device", Look::AudioIn},
    {"AudioInFormat", "Recording format", Look::Format},
    {"MIDIoutDevice", "MIDI output device", Look::MidiOut},
    {"recordsettings_xfadetype", "Crossfade curve", Look::Curve},
    {"recordsettings_bfxfadetype", "Backward-forward crossfade curve", Look::Curve},
    {"datapath", "Data folder of new projects", Look::Plain},
    {"TempDir", "Folder for temporary files", Look::Plain},
    {"SampleEditor", "External sample editor", Look::Plain},
    {"MIDIoutChannel", "MIDI channel", Look::Channel},
    {"AutoSendReset", "Send reset before recording", Look::Flag},
    {"MIDIoutProgram_active", "Send program change", Look::Flag},
    {"MIDIoutProgram", "Program", Look::Midi},
    {"MIDIoutAttackVelocity", "Note-on velocity", Look::Midi},
    {"MIDIoutReleaseVelocity", "Note-off velocity", Look::Midi},
    {"MIDIoutAfterTouch", "Aftertouch", Look::Midi},
    {"KBrangeIn", "Lowest key to record", Look::Midi},
    {"KBrangeOut", "Highest key to record", Look::Midi},
    {"ClickPopRedFade_in", "Click/pop fade-in length", Look::Plain},
    {"ClickPopRedFade_out", "Click/pop fade-out length", Look::Plain},
    {"promptWhenDeleting", "Ask before deleting", Look::Flag},
    {"showPrjWizardAtStartup", "Open the project wizard at start", Look::Flag},
    {"loadPrjAtStartup", "Load the start-up projects", Look::Flag},
    {"recordsettings_latency", "Latency compensation", Look::Plain},
    {"mappingsettings_mapTo", "Layer without velocity range", Look::Plain},
    {"mappingsettings_range_start", "Velocity range from", Look::Midi},
    {"mappingsettings_range_end", "Velocity range to", Look::Midi},
    {"recordsettings_notelength2_active", "Use a second note length", Look::Flag},
    {"recordsettings_releaselength2_active", "Use a second release length", Look::Flag},
    {"recordsettings_clickpopred", "Click/pop reduction", Look::Flag},
    {"recordsettings_zerocrossing", "Snap markers to zero crossings", Look::Flag},
    {"recordsettings_autoloop", "Search loops after recording", Look::Flag},
    {"recordsettings_autogain", "Automatic gain", Look::Flag},
    {"recordsettings_notelength1", "Note length (s)", Look::Plain},
    {"recordsettings_notelength2", "Second note length (s)", Look::Plain},
    {"recordsettings_releaselength1", "Release length (s)", Look::Plain},
    {"recordsettings_releaselength2", "Second release length (s)", Look::Plain},
    {"recordsettings_thresPrecisionIn", "Note start threshold precision", Look::Plain},
    {"recordsettings_thresPrecisionOut", "Note end threshold precision", Look::Plain},
    {"recordsettings_recpause", "Pause between notes (s)", Look::Plain},
    {"recordsettings_loopsearchlength", "Loop search length", Look::Plain},
    {"recordsettings_loopstart", "Loop search start", Look::Plain},
    {"recordsettings_loopoutsearchstart", "Loop end search start", Look::Plain},
    {"recordsettings_xfadelength", "Crossfade length", Look::Plain},
    {"recordsettings_bfxfadelength", "Backward-forward crossfade length", Look::Plain},
};

Presentation presentationOf(const std::string& key)
{
    const std::string name = key.substr(key.find('_') + 1);
    for (const Presentation& p : kPresentations)
        if (name == p.name)
            return p;
    return {nullptr, nullptr, Look::Plain};
}

QStringList choicesFor(Look look)
{
    QStringList choices;
    const DeviceTables& tables = deviceTables();
    switch (look) {
    case Look::Format:
        for (int i = 0; i < kRecordFormatCount; ++i)
            choices << QString::fromLatin1(recordFormatTable()[i].name);
        break;
    case Look::Curve:
        for (int i = 0; i < kFadeCurveCount; ++i)
            choices << QString::fromLatin1(fadeCurveName(i));
        break;
    case Look::AudioIn:
        for (const AudioInputEntry& entry : tables.audioIn)
            choices << QString::fromStdString(entry.name);
        break;
    case Look::MidiOut:
        for (const std::string& name : tables.midiOut)
            choices << QString::fromStdString(name);
        break;
    default:
        break;
    }
    return choices;
}

} // namespace

SettingsForm::SettingsForm(Model& model, const std::vector<SettingKey>& keys, QWidget* parent)
    : QWidget(parent), model_(model)
{
    auto* layout = new QFormLayout(this);
    layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    for (const SettingKey& key : keys)
        addField(key, layout);
    model_.addListener(this);
    reload();
}

SettingsForm::~SettingsForm()
{
    model_.removeListener(this);
}

void SettingsForm::addField(const SettingKey& setting, QFormLayout* layout)
{
    const Presentation look = presentationOf(setting.key);
    const std::string key = setting.key;
    const QString label = look.label ? tr(look.label) : QString::fromStdString(key);
    QWidget* widget = nullptr;
    std::function<void()> load;

    if (setting.kind == SettingKind::Text) {
        const QStringList choices = choicesFor(look.look);
        if (look.look == Look::Plain) {
            auto* edit = new QLineEdit(this);
            load = [=] {
                bool ok = false;
                edit->setText(QString::fromStdString(settingText(model_, key, ok)));
            };
            connect(edit, &QLineEdit::editingFinished, this, [=] {
                bool written = false;
                if (!loading_)
                    setSettingText(model_, key, edit->text().toStdString(), written);
            });
            widget = edit;
        } else {
            auto* combo = new QComboBox(this);
            combo->addItems(choices);
            combo->setEditable(look.look == Look::AudioIn || look.look == Look::MidiOut);
            load = [=] {
                bool ok = false;
                combo->setCurrentText(QString::fromStdString(settingText(model_, key, ok)));
            };
            connect(combo, &QComboBox::currentTextChanged, this, [=](const QString& text) {
                bool written = false;
                if (!loading_)
                    setSettingText(model_, key, text.toStdString(), written);
            });
            widget = combo;
        }
    } else if (setting.kind == SettingKind::Char ||
               (setting.kind == SettingKind::Short && look.look == Look::Flag)) {
        auto* box = new QCheckBox(this);
        const bool isChar = setting.kind == SettingKind::Char;
        load = [=] {
            bool ok = false;
            box->setChecked(isChar ? settingChar(model_, key, ok) != 0
                                   : settingShort(model_, key, ok) != 0);
        };
        connect(box, &QCheckBox::toggled, this, [=](bool on) {
            bool written = false;
            if (loading_)
                return;
            if (isChar)
                setSettingChar(model_, key, on ? 1 : 0, written);
            else
                setSettingShort(model_, key, on ? 1 : 0, written);
        });
        widget = box;
    } else if (setting.kind == SettingKind::Double) {
        auto* spin = new QDoubleSpinBox(this);
        spin->setRange(-100000.0, 100000.0);
        spin->setDecimals(3);
        load = [=] {
            bool ok = false;
            spin->setValue(settingDouble(model_, key, ok));
        };
        connect(spin, qOverload<double>(&QDoubleSpinBox::valueChanged), this, [=](double value) {
            bool written = false;
            if (!loading_)
                setSettingDouble(model_, key, value, written);
        });
        widget = spin;
    } else {
        // Shorts and longs; a MIDI channel is shown 1-16 and kept 0-15.
        auto* spin = new QSpinBox(this);
        const bool isLong = setting.kind == SettingKind::Long;
        const int shown = look.look == Look::Channel ? 1 : 0;
        if (look.look == Look::Channel)
            spin->setRange(1, 16);
        else if (look.look == Look::Midi)
            spin->setRange(0, 127);
        else
            spin->setRange(isLong ? -1000000 : 0, isLong ? 1000000 : 32767);
        load = [=] {
            bool ok = false;
            spin->setValue((isLong ? settingLong(model_, key, ok) : settingShort(model_, key, ok)) +
                           shown);
        };
        connect(spin, qOverload<int>(&QSpinBox::valueChanged), this, [=](int value) {
            bool written = false;
            if (loading_)
                return;
            if (isLong)
                setSettingLong(model_, key, value - shown, written);
            else
                setSettingShort(model_, key, static_cast<int16_t>(value - shown), written);
        });
        widget = spin;
    }
    widget->setObjectName(QString::fromStdString(key));
    layout->addRow(label, widget);
    fields_.push_back({key, load});
}

void SettingsForm::reload()
{
    loading_ = true;
    for (const Field& field : fields_)
        field.load();
    loading_ = false;
}

void SettingsForm::settingChanged(const std::string& key)
{
    if (loading_)
        return;
    loading_ = true;
    for (const Field& field : fields_)
        if (field.key == key)
            field.load();
    loading_ = false;
}

} // namespace tg::shell
