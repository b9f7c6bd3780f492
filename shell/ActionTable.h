// The main window's menus and actions, declared in one table: every menu entry with its text,
// shortcut and object name. The window's parts enable an entry by binding a handler to it;
// an entry nobody has bound stays disabled and says so in its tool tip.
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <vector>

class QAction;
class QMenu;
class QMenuBar;

namespace tg::shell {

enum class MenuId { File, Edit, ImportExport, Recording, View, Extras, Help };

enum class EntryKind {
    Action,    // a plain action
    Checkable, // an on/off action
    Submenu,   // a submenu filled by whoever owns it (recent files, export formats, panels)
    Separator,
};

struct MenuEntry {
    MenuId menu;
    EntryKind kind;
    const char* name;     // object name; the slot name where the window has one
    const char* text;     // the menu text as the user sees it
    const char* shortcut; // portable key sequence text, "" for none
    const char* parent;   // name of the submenu that holds it, nullptr for the menu itself
};

// Every entry in menu order.
const std::vector<MenuEntry>& menuEntries();
// "File", "Edit", "Import/Export", "Recording", "View", "Extras", "Help".
QString menuTitle(MenuId menu);

// Tool tip of an entry that has no handler yet.
constexpr const char* kNotAvailableYet = "Not available yet in this version.";

// Submenus filled at run time.
constexpr const char* kRecentProjectsMenu = "recentProjects";
constexpr const char* kExportSelectedMenu = "exportSelectedProjectAs";
constexpr const char* kExportAllMenu = "exportAllProjectsAs";
constexpr const char* kMainWindowMenu = "viewMainWindow";
constexpr const char* kPanelsMenu = "viewPanels";

// The QActions and QMenus built from the table for one menu bar.
class MenuActions : public QObject {
    Q_OBJECT
  public:
    MenuActions(QMenuBar* menuBar, QObject* parent);

    // The action or submenu of `name`; nullptr when the table has none.
    QAction* action(const QString& name) const;
    QMenu* submenu(const QString& name) const;
    QMenu* menu(MenuId menu) const;

    // Enables the entry and runs `handler` when it is triggered (a checkable entry passes its
    // new state through `toggled`).
    void bind(const QString& name, std::function<void()> handler);
    void bindToggle(const QString& name, std::function<void(bool)> toggled);

    // Adds a disabled, explained entry to a run-time submenu; `bind` enables it later.
    QAction* addPendingEntry(QMenu* submenu, const QString& name, const QString& text);

  private:
    QAction* enable(const QString& name);

    std::map<QString, QAction*> actions_;
    std::map<QString, QMenu*> submenus_;
    std::map<MenuId, QMenu*> menus_;
};

} // namespace tg::shell
