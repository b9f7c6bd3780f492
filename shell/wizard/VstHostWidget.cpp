#include "shell/wizard/VstHostWidget.h"

#include "core/IniKeys.h"
#include "core/Message.h"
#include "core/NoteNames.h"
#include "core/Records.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "devices/HostedInstrument.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QStackedWidget>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

constexpr int kFirstKey = 48; // C3
constexpr int kPlayKeys = 25; // two octaves and the top C
constexpr int kVelocity = 100;

QTableWidget* table(const QStringList& headers, const char* name)
{
    auto* t = new QTableWidget(0, headers.size());
    t->setObjectName(QString::fromLatin1(name));
    t->setHorizontalHeaderLabels(headers);
    t->horizontalHeader()->setStretchLastSection(true);
    t->verticalHeader()->hide();
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->setSelectionMode(QAbstractItemView::SingleSelection);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    return t;
}

} // namespace

VstHostWidget::VstHostWidget(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(QString::fromLatin1(kVstHostTitle));
    setObjectName(QStringLiteral("VstHostWidget"));
    auto* layout = new QVBoxLayout(this);

    auto* kinds = new QHBoxLayout;
    soundFont_ = new QRadioButton(tr("SoundFont"));
    soundFont_->setObjectName(QStringLiteral("soundFontKind"));
    lv2_ = new QRadioButton(tr("LV2 Instrument"));
    lv2_->setObjectName(QStringLiteral("lv2Kind"));
    kinds->addWidget(soundFont_);
    kinds->addWidget(lv2_);
    kinds->addStretch();
    layout->addLayout(kinds);

    pages_ = new QStackedWidget;
    auto* soundFontPage = new QWidget;
    auto* lv2Page = new QWidget;
    buildSoundFontPage(soundFontPage);
    buildLv2Page(lv2Page);
    pages_->addWidget(soundFontPage);
    pages_->addWidget(lv2Page);
    layout->addWidget(pages_, 1);
    connect(soundFont_, &QRadioButton::toggled, this,
            [this](bool on) { pages_->setCurrentIndex(on ? 0 : 1); });

    layout->addWidget(new QLabel(tr("Play:")));
    layout->addWidget(buildKeys());

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &VstHostWidget::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    InstrumentSpec stored;
    std::string message;
    if (!parseInstrumentSpec(storedInstrumentSpec(), stored, message))
        stored = InstrumentSpec{};
    showChoice(stored);
    resize(640, 560);
}

VstHostWidget::~VstHostWidget()
{
    stopPlaying();
}

void VstHostWidget::buildSoundFontPage(QWidget* page)
{
    auto* layout = new QVBoxLayout(page);
    auto* fileRow = new QHBoxLayout;
    path_ = new QLineEdit;
    path_->setObjectName(QStringLiteral("soundFontPath"));
    path_->setReadOnly(true);
    auto* browse = new QPushButton(tr("Browse"));
    connect(browse, &QPushButton::clicked, this, [this] {
        const QString file = QFileDialog::getOpenFileName(
            this, tr("Select SoundFont"), path_->text(), tr("SoundFont Files (*.sf2 *.SF2)"));
        if (!file.isEmpty())
            loadSoundFont(file);
    });
    fileRow->addWidget(new QLabel(tr("SoundFont File:")));
    fileRow->addWidget(path_, 1);
    fileRow->addWidget(browse);
    layout->addLayout(fileRow);
    presets_ = table({tr("Bank"), tr("Program"), tr("Name")}, "presets");
    layout->addWidget(presets_, 1);
    auto* form = new QFormLayout;
    gain_ = new QDoubleSpinBox;
    gain_->setObjectName(QStringLiteral("gain"));
    gain_->setRange(0.0, 10.0);
    gain_->setSingleStep(0.1);
    form->addRow(tr("Gain:"), gain_);
    layout->addLayout(form);
}

void VstHostWidget::buildLv2Page(QWidget* page)
{
    auto* layout = new QVBoxLayout(page);
    instruments_ = new QListWidget;
    instruments_->setObjectName(QStringLiteral("lv2Instruments"));
    for (const Lv2InstrumentEntry& entry : listLv2Instruments()) {
        auto* item = new QListWidgetItem(QString::fromStdString(entry.name));
        item->setData(Qt::UserRole, QString::fromStdString(entry.uri));
        item->setToolTip(QString::fromStdString(entry.uri));
        instruments_->addItem(item);
    }
    connect(instruments_, &QListWidget::currentRowChanged, this, &VstHostWidget::showLv2Controls);
    controls_ = table({tr("Parameter"), tr("Value")}, "parameters");
    layout->addWidget(new QLabel(tr("Installed LV2 instruments:")));
    layout->addWidget(instruments_, 1);
    layout->addWidget(new QLabel(tr("Parameters:")));
    layout->addWidget(controls_, 1);
}

QWidget* VstHostWidget::buildKeys()
{
    auto* keys = new QWidget;
    keys->setObjectName(QStringLiteral("keys"));
    auto* row = new QHBoxLayout(keys);
    row->setSpacing(1);
    for (int note = kFirstKey; note < kFirstKey + kPlayKeys; ++note) {
        // Only the Cs are labelled, as on a keyboard; every key names its note in its tip.
        const QString label = QString::fromStdString(noteName(note));
        auto* key = new QPushButton(note % 12 == 0 ? label : QString());
        key->setToolTip(label);
        key->setObjectName(QStringLiteral("key%1").arg(note));
        const int pitch = note % 12;
        const bool black = pitch == 1 || pitch == 3 || pitch == 6 || pitch == 8 || pitch == 10;
        key->setStyleSheet(black ? QStringLiteral("background: #202020; color: white;")
                                 : QStringLiteral("background: white; color: black;"));
        key->setMinimumSize(20, 56);
        connect(key, &QPushButton::pressed, this, [this, note] { playNote(note, true); });
        connect(key, &QPushButton::released, this, [this, note] { playNote(note, false); });
        row->addWidget(key);
    }
    return keys;
}

void VstHostWidget::showChoice(const InstrumentSpec& choice)
{
    const bool lv2 = choice.kind == InstrumentSpec::Kind::Lv2;
    (lv2 ? lv2_ : soundFont_)->setChecked(true);
    pages_->setCurrentIndex(lv2 ? 1 : 0);
    gain_->setValue(choice.gain);
    if (!lv2 && !choice.path.empty()) {
        loadSoundFont(QString::fromStdString(choice.path));
        for (size_t i = 0; i < presetList_.size(); ++i)
            if (presetList_[i].bank == choice.bank && presetList_[i].program == choice.preset)
                presets_->selectRow(int(i));
    }
    if (lv2)
        for (int row = 0; row < instruments_->count(); ++row)
            if (instruments_->item(row)->data(Qt::UserRole).toString().toStdString() ==
                choice.uri) {
                instruments_->setCurrentRow(row);
                for (const auto& [symbol, value] : choice.controls)
                    for (size_t i = 0; i < controlList_.size(); ++i)
                        if (controlList_[i].symbol == symbol)
                            static_cast<QDoubleSpinBox*>(controls_->cellWidget(int(i), 1))
                                ->setValue(value);
            }
}

void VstHostWidget::loadSoundFont(const QString& path)
{
    std::vector<SoundFontPreset> presets;
    std::string message;
    if (!listSoundFontPresets(path.toStdString(), presets, message)) {
        QMessageBox::warning(this, tr("Error"), QString::fromStdString(message));
        return;
    }
    path_->setText(path);
    presetList_ = std::move(presets);
    presets_->setRowCount(int(presetList_.size()));
    for (size_t i = 0; i < presetList_.size(); ++i) {
        const SoundFontPreset& p = presetList_[i];
        presets_->setItem(int(i), 0, new QTableWidgetItem(QString::number(p.bank)));
        presets_->setItem(int(i), 1, new QTableWidgetItem(QString::number(p.program)));
        presets_->setItem(int(i), 2, new QTableWidgetItem(QString::fromStdString(p.name)));
    }
    presets_->resizeColumnsToContents();
    if (!presetList_.empty())
        presets_->selectRow(0);
}

void VstHostWidget::showLv2Controls()
{
    controls_->setRowCount(0);
    controlList_.clear();
    QListWidgetItem* item = instruments_->currentItem();
    if (item == nullptr)
        return;
    std::string message;
    if (!listLv2Controls(item->data(Qt::UserRole).toString().toStdString(), controlList_,
                         message)) {
        QMessageBox::warning(this, tr("Error"), QString::fromStdString(message));
        return;
    }
    controls_->setRowCount(int(controlList_.size()));
    for (size_t i = 0; i < controlList_.size(); ++i) {
        const Lv2Control& c = controlList_[i];
        auto* name = new QTableWidgetItem(QString::fromStdString(c.name));
        name->setToolTip(QString::fromStdString(c.symbol));
        controls_->setItem(int(i), 0, name);
        auto* value = new QDoubleSpinBox;
        value->setObjectName(QString::fromStdString(c.symbol));
        value->setDecimals(3);
        value->setRange(c.minimum, c.maximum);
        value->setSingleStep((c.maximum - c.minimum) / 100.0);
        value->setValue(c.defaultValue);
        controls_->setCellWidget(int(i), 1, value);
    }
    controls_->resizeColumnToContents(0);
}

InstrumentSpec VstHostWidget::choice() const
{
    InstrumentSpec choice;
    if (soundFont_->isChecked()) {
        choice.kind = InstrumentSpec::Kind::SoundFont;
        choice.path = path_->text().toStdString();
        const int row = presets_->currentRow();
        if (row >= 0 && size_t(row) < presetList_.size()) {
            choice.bank = presetList_[size_t(row)].bank;
            choice.preset = presetList_[size_t(row)].program;
        }
        choice.gain = gain_->value();
        return choice;
    }
    choice.kind = InstrumentSpec::Kind::Lv2;
    if (QListWidgetItem* item = instruments_->currentItem())
        choice.uri = item->data(Qt::UserRole).toString().toStdString();
    for (size_t i = 0; i < controlList_.size(); ++i) {
        const auto* value = static_cast<QDoubleSpinBox*>(controls_->cellWidget(int(i), 1));
        // Values left at their defaults are not written: the plug-in keeps its own.
        if (float(value->value()) != controlList_[i].defaultValue)
            choice.controls.emplace_back(controlList_[i].symbol, float(value->value()));
    }
    return choice;
}

void VstHostWidget::accept()
{
    const InstrumentSpec chosen = choice();
    if (chosen.kind == InstrumentSpec::Kind::SoundFont ? chosen.path.empty() : chosen.uri.empty()) {
        QMessageBox::warning(this, tr("Error"), tr("Please choose an instrument first."));
        return;
    }
    std::string message;
    if (!storeInstrumentSpec(instrumentSpecText(chosen), message)) {
        QMessageBox::warning(this, tr("Error"), QString::fromStdString(message));
        return;
    }
    QDialog::accept();
}

bool VstHostWidget::playNote(int note, bool on)
{
    const InstrumentSpec chosen = choice();
    const std::string text = instrumentSpecText(chosen);
    if (!on) {
        if (host_.running())
            host_.sendMidi(0x80, uint8_t(note), 0);
        return host_.running();
    }
    if (!host_.running() || text != playingSpec_) {
        stopPlaying();
        // The instrument is heard on the user's audio output, the streams opened as for a
        // recording from it.
        if (!audio_)
            audio_ = std::make_unique<AudioManager>();
        const QSettings ini(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
        audio_->setOutputDeviceName(
            ini.value(ini::kOutputAudioDeviceName).toString().toStdString());
        TGmsl source;
        copyText(source.AudioInDevice, kVstPluginEntry);
        copyText(source.AudioInFormat, "44.1KHz, Stereo, 16bit");
        std::string message;
        std::unique_ptr<HostedInstrument> instrument;
        if (audio_->apply(source, message) && !audio::outputOpen())
            message = "Please select a valid audio out device to hear your plugin.";
        else if (message.empty())
            instrument =
                openHostedInstrument(chosen, audio::currentOutputConfig().sampleRate, message);
        if (instrument == nullptr ||
            !host_.start(std::move(instrument), audio::currentOutputConfig(), audio::player(),
                         message)) {
            QMessageBox::warning(this, tr("Error"), QString::fromStdString(message));
            return false;
        }
        playingSpec_ = text;
    }
    return host_.sendMidi(0x90, uint8_t(note), kVelocity);
}

void VstHostWidget::stopPlaying()
{
    if (host_.running()) {
        host_.resetNotes();
        host_.stop();
    }
    playingSpec_.clear();
}

} // namespace tg::shell
