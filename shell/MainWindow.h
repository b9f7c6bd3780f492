// The application's one top-level window: creates the docks, the central area and the menus,
// and wires them. Every menu entry calls one slot that opens one dialog or calls one function
// below the shell.
#pragma once

#include "core/ListEditing.h"
#include "core/ModelListener.h"

#include <QMainWindow>
#include <QStringList>

#include <vector>

namespace tg {
class Model;
}

namespace tg::shell {

class CentralWidget;
class DockWidget;
class KeyboardWidget;
class KeyPlayback;
class SampleEditor;
class MenuActions;
class ProjectFileFlow;

constexpr const char* kMainWindowTitle = "Tonegrabber 6";

// The six docks: title and object name.
struct DockEntry {
    const char* title;
    const char* objectName;
};
const std::vector<DockEntry>& dockEntries();

class MainWindow : public QMainWindow, public TonegrabberModelListener {
    Q_OBJECT
  public:
    explicit MainWindow(Model& model, QWidget* parent = nullptr);
    ~MainWindow() override;

    Model& model() { return model_; }
    MenuActions& actions() { return *actions_; }
    CentralWidget* centralArea() const { return central_; }
    SampleEditor* editor() const { return editor_; }
    KeyboardWidget* keyboard() const { return keyboard_; }
    // Plays Key-Samples from the keyboard, its play buttons and MIDI input.
    KeyPlayback& keyPlayback() const { return *keyPlayback_; }
    ProjectFileFlow& projectFiles() { return *projectFiles_; }
    // The dock of `objectName` (one of dockEntries()), nullptr for an unknown name.
    DockWidget* dock(const QString& objectName) const;

    // Shown or hidden with "Show Header"; kept as "MainWindow/ShowHeader".
    bool headerShown() const;

    // Opens the record dialog for a record command (automatic or semi-automatic); returns
    // its QDialog::DialogCode.
    int openRecordDialog(int command, bool automatic, const QString& titleText = QString());

  protected:
    void closeEvent(QCloseEvent* event) override;
    // Installed on the application: swallows tool tips while they are switched off.
    bool eventFilter(QObject* watched, QEvent* event) override;

    // Edit menu: copy the current Multi-Sample (with or without its keys), paste it over the
    // current one.
    void copyMultisample(bool withKeys);
    void pasteMultisample();
    // Extras menu.
    void setCurrentSettingsAsDefault();
    void savePreferencesToDisk();
    void openPreferencesDialog();
    void openMidiMonitor();

  private:
    QWidget* createPanel(const QString& dockName, const QString& title);
    void createDocks();
    void createEditorAndKeyboard();
    void bindActions();
    void fillPanelsMenu();
    void readWindowState();
    void writeWindowState() const;

    Model& model_;
    MenuActions* actions_ = nullptr;
    ProjectFileFlow* projectFiles_ = nullptr;
    CentralWidget* central_ = nullptr;
    KeyPlayback* keyPlayback_ = nullptr;
    SampleEditor* editor_ = nullptr;
    KeyboardWidget* keyboard_ = nullptr;
    std::vector<DockWidget*> docks_;
    bool toolTipsShown_ = true;
    MultiSampleCopy copiedMultiSample_;
};

} // namespace tg::shell
