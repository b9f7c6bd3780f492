// The menu table and the menus built from it.
#include "shell/ActionTable.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace tg::shell {

namespace {

constexpr EntryKind A = EntryKind::Action;
constexpr EntryKind C = EntryKind::Checkable;
constexpr EntryKind S = EntryKind::Submenu;
constexpr EntryKind Sep = EntryKind::Separator;

} // namespace

const std::vector<MenuEntry>& menuEntries()
{
    using M = MenuId;
    static const std::vector<MenuEntry> entries = {
        {M::File, A, "openProjectFromDialog", "Open Project", "Ctrl+O", nullptr},
        {M::File, A, "saveSelectedProject", "Save selected Project", "Ctrl+S", nullptr},
        {M::File, A, "saveSelectedProjectAs", "Save selected Project as", "Ctrl+Shift+S", nullptr},
        {M::File, A, "saveAllProjects", "Save all Projects", "Ctrl+Alt+S", nullptr},
        {M::File, S, kRecentProjectsMenu, "Recent Projects", "", nullptr},
        {M::File, Sep, "", "", "", nullptr},
        {M::File, A, "openProjectWizard", "Project Wizard", "Ctrl+W", nullptr},
        {M::File, A, "openPresetManager", "Preset Manager", "Ctrl+P", nullptr},
        {M::File, A, "saveSelectedProjectAsPreset", "Save selected Project as Preset", "", nullptr},
        {M::File, A, "openInstrumentCopier", "Instrument Copier", "Ctrl+Shift+C", nullptr},
        {M::File, Sep, "", "", "", nullptr},
        {M::File, A, "quit", "Quit", "Ctrl+Q", nullptr},

        {M::Edit, A, "copyMultisampleSettings", "Copy selected Multi-Sample (except Key-Samples)",
         "", nullptr},
        {M::Edit, A, "copyMultisample", "Copy selected Multi-Sample", "", nullptr},
        {M::Edit, A, "pasteMultisample", "Paste from copied Multi-Sample", "", nullptr},
        {M::Edit, Sep, "", "", "", nullptr},
        {M::Edit, A, "openNormalizeDialog", "Normalize", "Ctrl+N", nullptr},
        {M::Edit, A, "openChangeGainDialog", "Change Gain", "Ctrl+G", nullptr},
        {M::Edit, A, "openAutoDialog", "Auto-Note/Auto-Loop for all", "Ctrl+A", nullptr},

        {M::ImportExport, A, "openImportAudioFileDialog", "Import Audio Files", "Ctrl+I", nullptr},
        {M::ImportExport, A, "importWavFiles", "Import WAV-Files", "", nullptr},
        {M::ImportExport, A, "importAiffFiles", "Import AIFF-Files", "", nullptr},
        {M::ImportExport, A, "openImportSoundLibraryDialog", "Import Single-Sample-Soundlibrary",
         "", nullptr},
        {M::ImportExport, Sep, "", "", "", nullptr},
        {M::ImportExport, S, kExportSelectedMenu, "Export selected Project as ...", "", nullptr},
        {M::ImportExport, S, kExportAllMenu, "Export all Projects as ..", "", nullptr},

        {M::Recording, A, "openEstimationDialog", "Estimate Time and Size", "Ctrl+E", nullptr},
        {M::Recording, Sep, "", "", "", nullptr},
        {M::Recording, A, "recordSelectedMultisample", "Record selected Multi-Sample", "Ctrl+R",
         nullptr},
        {M::Recording, A, "recordSelectedProject", "Record selected Project", "Alt+R", nullptr},
        {M::Recording, A, "recordAllProjects", "Record all Projects", "Ctrl+Alt+R", nullptr},
        {M::Recording, Sep, "", "", "", nullptr},
        {M::Recording, A, "semiAutoRecordSelectedMultisample",
         "Semi-automatic Record selected Multi-Sample", "Ctrl+Shift+R", nullptr},
        {M::Recording, A, "semiAutoRecordSelectedProject", "Semi-automatic Record selected Project",
         "Alt+Shift+R", nullptr},
        {M::Recording, A, "semiAutoRecordAllProjects", "Semi-automatic Record all Projects",
         "Ctrl+Alt+Shift+R", nullptr},

        {M::View, S, kMainWindowMenu, "Main Window", "", nullptr},
        {M::View, C, "showHeader", "Show Header", "", kMainWindowMenu},
        {M::View, S, kPanelsMenu, "Panels", "", nullptr},
        {M::View, Sep, "", "", "", nullptr},
        {M::View, C, "showToolTips", "Show Quick Info / Tool Tips", "", nullptr},

        {M::Extras, A, "openMidiMonitor", "MIDI Monitor", "Ctrl+M", nullptr},
        {M::Extras, A, "openVstHostConfig", "VST Host", "Ctrl+H", nullptr},
        {M::Extras, Sep, "", "", "", nullptr},
        {M::Extras, A, "openPreferencesDialog", "Open Preference Dialog", "Alt+P", nullptr},
        {M::Extras, A, "setCurrentSettingsAsDefault", "Set current Settings as Default", "",
         nullptr},
        {M::Extras, A, "savePreferencesToDisk", "Save Preferences to Disk", "", nullptr},

        {M::Help, A, "openKeyCommands", "Quick Help: Key Commands", "", nullptr},
        {M::Help, A, "openEditorHelp", "Quick Help: Note/Loop/Release Editor", "", nullptr},
        {M::Help, Sep, "", "", "", nullptr},
        {M::Help, A, "checkForUpdates", "Check for Updates", "", nullptr},
        {M::Help, Sep, "", "", "", nullptr},
        {M::Help, A, "openVersionHistory", "Version History", "", nullptr},
        {M::Help, A, "openManuals", "Manuals", "", nullptr},
        {M::Help, A, "openSupport", "Support", "", nullptr},
        {M::Help, A, "openPrivacyPolicy", "Privacy Policy", "", nullptr},
    };
    return entries;
}

QString menuTitle(MenuId menu)
{
    switch (menu) {
    case MenuId::File:
        return QStringLiteral("File");
    case MenuId::Edit:
        return QStringLiteral("Edit");
    case MenuId::ImportExport:
        return QStringLiteral("Import/Export");
    case MenuId::Recording:
        return QStringLiteral("Recording");
    case MenuId::View:
        return QStringLiteral("View");
    case MenuId::Extras:
        return QStringLiteral("Extras");
    case MenuId::Help:
        return QStringLiteral("Help");
    }
    return {};
}

MenuActions::MenuActions(QMenuBar* menuBar, QObject* parent) : QObject(parent)
{
    for (MenuId id : {MenuId::File, MenuId::Edit, MenuId::ImportExport, MenuId::Recording,
                      MenuId::View, MenuId::Extras, MenuId::Help}) {
        QMenu* menu = menuBar->addMenu(menuTitle(id));
        menu->setObjectName(menuTitle(id));
        menu->setToolTipsVisible(true);
        menus_[id] = menu;
    }
    for (const MenuEntry& entry : menuEntries()) {
        QMenu* holder = entry.parent ? submenus_.at(entry.parent) : menus_.at(entry.menu);
        const QString name = QString::fromLatin1(entry.name);
        switch (entry.kind) {
        case EntryKind::Separator:
            holder->addSeparator();
            break;
        case EntryKind::Submenu: {
            QMenu* submenu = holder->addMenu(QString::fromUtf8(entry.text));
            submenu->setObjectName(name);
            submenu->setToolTipsVisible(true);
            submenus_[name] = submenu;
            break;
        }
        case EntryKind::Action:
        case EntryKind::Checkable: {
            QAction* action = addPendingEntry(holder, name, QString::fromUtf8(entry.text));
            action->setShortcut(QKeySequence(QString::fromLatin1(entry.shortcut)));
            action->setCheckable(entry.kind == EntryKind::Checkable);
            break;
        }
        }
    }
}

QAction* MenuActions::action(const QString& name) const
{
    const auto found = actions_.find(name);
    return found == actions_.end() ? nullptr : found->second;
}

QMenu* MenuActions::submenu(const QString& name) const
{
    const auto found = submenus_.find(name);
    return found == submenus_.end() ? nullptr : found->second;
}

QMenu* MenuActions::menu(MenuId id) const
{
    return menus_.at(id);
}

QAction* MenuActions::addPendingEntry(QMenu* submenu, const QString& name, const QString& text)
{
    QAction* action = submenu->addAction(text);
    action->setObjectName(name);
    action->setEnabled(false);
    action->setToolTip(QString::fromLatin1(kNotAvailableYet));
    actions_[name] = action;
    return action;
}

QAction* MenuActions::enable(const QString& name)
{
    QAction* action = this->action(name);
    if (!action)
        qFatal("MenuActions: no menu entry named %s", qPrintable(name));
    action->setEnabled(true);
    action->setToolTip(action->text());
    return action;
}

void MenuActions::bind(const QString& name, std::function<void()> handler)
{
    QAction* action = enable(name);
    connect(action, &QAction::triggered, this, [handler = std::move(handler)] { handler(); });
}

void MenuActions::bindToggle(const QString& name, std::function<void(bool)> toggled)
{
    QAction* action = enable(name);
    connect(action, &QAction::toggled, this,
            [toggled = std::move(toggled)](bool on) { toggled(on); });
}

} // namespace tg::shell
