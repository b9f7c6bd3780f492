// The main window: docks, central area, menus, window state and the quit question.
#include "shell/MainWindow.h"

#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/Preferences.h"
#include "core/SettingsAccessor.h"
#include "export/ExportFormats.h"
#include "shell/ActionTable.h"
#include "shell/DockWidget.h"
#include "shell/ExportFlow.h"
#include "shell/ExtrasActions.h"
#include "shell/IniFile.h"
#include "shell/MessageBoxes.h"
#include "shell/ProjectFileFlow.h"
#include "shell/RecordActions.h"
#include "shell/dialogs/AutoDialog.h"
#include "shell/dialogs/ChangeGainDialog.h"
#include "shell/dialogs/MidiMonitorWidget.h"
#include "shell/dialogs/NormalizeDialog.h"
#include "shell/dialogs/PreferencesDialog.h"
#include "shell/dialogs/RecordDialog.h"
#include "shell/editor/SampleEditor.h"
#include "shell/panels/CentralWidget.h"
#include "shell/panels/InputOutputWidget.h"
#include "shell/panels/KeyboardWidget.h"
#include "shell/KeyPlayback.h"
#include "shell/panels/KeyboardPanel.h"
#include "shell/panels/MultisampleWidget.h"
#include "shell/panels/PeakLevelWidget.h"
#include "shell/panels/ProjectsWidget.h"
#include "shell/panels/SamplesWidget.h"
#include "shell/wizard/RecordingSetupActions.h"

#include "devices/MidiManager.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

namespace tg::shell {

const std::vector<DockEntry>& dockEntries()
{
    static const std::vector<DockEntry> specs = {
        {"Input/Output", "InputOutputDock"},  {"Projects", "ProjectsDock"},
        {"Multi-Samples", "MultisampleDock"}, {"Samples", "SamplesDock"},
        {"Peak Meter", "PeakLevelDock"},      {"Keyboard", "KeyboardDock"},
    };
    return specs;
}

MainWindow::MainWindow(Model& model, QWidget* parent) : QMainWindow(parent), model_(model)
{
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(QString::fromLatin1(kMainWindowTitle));
    setDockNestingEnabled(true);

    central_ = new CentralWidget(model_, this);
    setCentralWidget(central_);
    actions_ = new MenuActions(menuBar(), this);
    projectFiles_ = new ProjectFileFlow(model_, this, *actions_);
    new ExportFlow(model_, this, *actions_);
    createDocks();
    createEditorAndKeyboard();
    fillPanelsMenu();
    bindActions();
    readWindowState();
    model_.addListener(this);
}

MainWindow::~MainWindow()
{
    model_.removeListener(this);
}

DockWidget* MainWindow::dock(const QString& objectName) const
{
    for (DockWidget* dock : docks_)
        if (dock->objectName() == objectName)
            return dock;
    return nullptr;
}

QWidget* MainWindow::createPanel(const QString& dockName, const QString& title)
{
    if (dockName == QLatin1String("ProjectsDock"))
        return new ProjectsWidget(model_);
    if (dockName == QLatin1String("MultisampleDock"))
        return new MultisampleWidget(model_);
    if (dockName == QLatin1String("SamplesDock"))
        return new SamplesWidget(model_);
    if (dockName == QLatin1String("InputOutputDock"))
        return new InputOutputWidget(model_);
    if (dockName == QLatin1String("PeakLevelDock"))
        return new PeakLevelWidget;
    // The device panels and the keyboard plug in here (DockWidget::setPanel).
    auto* pending = new QLabel(tr("%1: not available yet in this version.").arg(title));
    pending->setAlignment(Qt::AlignCenter);
    pending->setWordWrap(true);
    pending->setEnabled(false);
    return pending;
}

void MainWindow::createDocks()
{
    for (const DockEntry& entry : dockEntries()) {
        auto* dock = new DockWidget(QString::fromUtf8(entry.title),
                                    QString::fromLatin1(entry.objectName), this);
        dock->setPanel(createPanel(dock->objectName(), dock->windowTitle()));
        docks_.push_back(dock);
    }
    // Lists on the left, devices on the right, keyboard along the bottom.
    addDockWidget(Qt::LeftDockWidgetArea, dock(QStringLiteral("ProjectsDock")));
    addDockWidget(Qt::LeftDockWidgetArea, dock(QStringLiteral("MultisampleDock")));
    addDockWidget(Qt::LeftDockWidgetArea, dock(QStringLiteral("SamplesDock")));
    addDockWidget(Qt::RightDockWidgetArea, dock(QStringLiteral("InputOutputDock")));
    addDockWidget(Qt::RightDockWidgetArea, dock(QStringLiteral("PeakLevelDock")));
    addDockWidget(Qt::BottomDockWidgetArea, dock(QStringLiteral("KeyboardDock")));
    // The key table needs room for its columns; the device panels less.
    resizeDocks({dock(QStringLiteral("SamplesDock")), dock(QStringLiteral("InputOutputDock"))},
                {400, 240}, Qt::Horizontal);
}

void MainWindow::createEditorAndKeyboard()
{
    editor_ = new SampleEditor(model_, central_);
    central_->setEditor(editor_);
    keyboard_ = new KeyboardWidget(model_);
    keyPlayback_ = new KeyPlayback(model_, this);
    dock(QStringLiteral("KeyboardDock"))->setPanel(new KeyboardPanel(*keyboard_, *keyPlayback_));
    if (auto* devices = findChild<InputOutputWidget*>())
        connect(devices, &InputOutputWidget::globalDevicesChanged, keyPlayback_,
                &KeyPlayback::applyDevicePreferences);
    connect(keyboard_, &KeyboardWidget::keySelected, editor_, &SampleEditor::onKeySelected);
}

void MainWindow::fillPanelsMenu()
{
    QMenu* panels = actions_->submenu(QString::fromLatin1(kPanelsMenu));
    for (DockWidget* dock : docks_)
        panels->addAction(dock->toggleViewAction());
}

bool MainWindow::headerShown() const
{
    return central_->header()->isVisibleTo(central_);
}

void MainWindow::bindActions()
{
    actions_->bind(QStringLiteral("copyMultisampleSettings"), [this] { copyMultisample(false); });
    actions_->bind(QStringLiteral("copyMultisample"), [this] { copyMultisample(true); });
    actions_->bind(QStringLiteral("pasteMultisample"), [this] { pasteMultisample(); });
    actions_->bind(QStringLiteral("setCurrentSettingsAsDefault"),
                   [this] { setCurrentSettingsAsDefault(); });
    actions_->bind(QStringLiteral("savePreferencesToDisk"), [this] { savePreferencesToDisk(); });
    actions_->bind(QStringLiteral("openPreferencesDialog"), [this] { openPreferencesDialog(); });
    actions_->bind(QStringLiteral("quit"), [this] { close(); });
    actions_->bind(QStringLiteral("openNormalizeDialog"),
                   [this] { NormalizeDialog(model_, this).exec(); });
    actions_->bind(QStringLiteral("openChangeGainDialog"),
                   [this] { ChangeGainDialog(model_, this).exec(); });
    actions_->bind(QStringLiteral("openAutoDialog"), [this] { AutoDialog(model_, this).exec(); });
    bindExtrasActions(*actions_, model_, this);
    bindRecordActions(*actions_, model_, this);
    actions_->bind(QStringLiteral("openMidiMonitor"), [this] { openMidiMonitor(); });
    bindRecordingSetupActions(
        *actions_, model_, this,
        {[this](int command, bool automatic) {
             return openRecordDialog(command, automatic,
                                     QStringLiteral("Record all Multi-Samples in selected Project"));
         },
         [this] { return projectFiles_->saveSelected(); }});

    QAction* header = actions_->action(QStringLiteral("showHeader"));
    header->setChecked(true);
    actions_->bindToggle(QStringLiteral("showHeader"),
                         [this](bool on) { central_->header()->setVisible(on); });

    QAction* tips = actions_->action(QStringLiteral("showToolTips"));
    tips->setChecked(true);
    actions_->bindToggle(QStringLiteral("showToolTips"), [this](bool on) { toolTipsShown_ = on; });
}

void MainWindow::copyMultisample(bool withKeys)
{
    const Project* project = model_.currentProject();
    if (!project || !model_.currentMultiSample()) {
        showMessage(this, tr("Error"), tr("There is no Multi-Sample selected."));
        return;
    }
    tg::copyMultiSample(*project, project->currentMsl, withKeys, copiedMultiSample_);
}

void MainWindow::pasteMultisample()
{
    showResult(this, tg::pasteMultiSample(model_, copiedMultiSample_, overwriteQuestion(this)));
}

void MainWindow::setCurrentSettingsAsDefault()
{
    if (!tg::setCurrentSettingsAsDefault(model_))
        showMessage(this, tr("Error"), tr("There is no Multi-Sample selected."));
}

void MainWindow::openPreferencesDialog()
{
    PreferencesDialog dialog(model_, this);
    dialog.exec();
}

void MainWindow::openMidiMonitor()
{
    // One monitor, kept when closed so its rows survive; it listens to the MIDI manager the
    // program runs (parented to the application) when there is one.
    auto* monitor = findChild<MidiMonitorWidget*>();
    if (monitor == nullptr) {
        monitor = new MidiMonitorWidget(this);
        if (auto* manager = qApp->findChild<MidiManager*>())
            monitor->listenTo(*manager);
    }
    monitor->show();
    monitor->raise();
}

void MainWindow::savePreferencesToDisk()
{
    // Like loading, saving the preferences does not report a file it cannot write.
    savePreferences(model_.preferences());
}

void MainWindow::readWindowState()
{
    const auto ini = openIniFile();
    const QVariant geometry = ini->value(ini::kMainWindowGeometry);
    if (geometry.isValid())
        restoreGeometry(geometry.toByteArray());
    else
        resize(1280, 800);
    const QVariant state = ini->value(ini::kMainWindowState);
    if (state.isValid())
        restoreState(state.toByteArray());
    for (DockWidget* dock : docks_)
        dock->readState(*ini);
    const bool showHeader = ini->value(ini::kMainWindowShowHeader, true).toBool();
    actions_->action(QStringLiteral("showHeader"))->setChecked(showHeader);
    central_->header()->setVisible(showHeader);
}

void MainWindow::writeWindowState() const
{
    const auto ini = openIniFile();
    ini->setValue(ini::kMainWindowGeometry, saveGeometry());
    ini->setValue(ini::kMainWindowState, saveState());
    ini->setValue(ini::kMainWindowShowHeader, headerShown());
    for (DockWidget* dock : docks_)
        dock->writeState(*ini);
    ini->sync();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    const bool ask =
        openIniFile()->value(ini::kShowWarningOnQuit, ini::kShowWarningOnQuitDefault).toBool();
    if (ask && QMessageBox::question(this, tr("Quit"), tr("Do you really want to quit?"),
                                     QMessageBox::Yes | QMessageBox::No) != QMessageBox::Yes) {
        event->ignore();
        return;
    }
    writeWindowState();
    event->accept();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (!toolTipsShown_ && event->type() == QEvent::ToolTip)
        return true;
    return QMainWindow::eventFilter(watched, event);
}

int MainWindow::openRecordDialog(int command, bool automatic, const QString& titleText)
{
    // Every finished take is on disk when the dialog closes, however the run ended, so the
    // caller goes on (and saves) as after an accepted run.
    RecordDialog dialog(model_, command, automatic, this, titleText);
    dialog.exec();
    return QDialog::Accepted;
}

} // namespace tg::shell
