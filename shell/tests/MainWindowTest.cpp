// The main window as the user meets it: menus, docks, the quit question and the window state
// kept in Tonegrabber.ini.
#include "shell/MainWindow.h"
#include "core/IniKeys.h"
#include "core/Model.h"
#include "shell/ActionTable.h"
#include "shell/DockWidget.h"
#include "shell/IniFile.h"
#include "shell/tests/WidgetTestSupport.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

#include <memory>

namespace tg::shell {
namespace {

// Every action of `menu` and its submenus.
QList<QAction*> actionsBelow(QMenu* menu)
{
    QList<QAction*> found;
    for (QAction* action : menu->actions()) {
        found << action;
        if (action->menu())
            found << actionsBelow(action->menu());
    }
    return found;
}

class MainWindowTest : public ::testing::Test {
  protected:
    void SetUp() override { window = std::make_unique<MainWindow>(model); }

    QAction* find(const QString& menuTitle, const QString& text) const
    {
        for (QAction* top : window->menuBar()->actions())
            if (top->text() == menuTitle)
                for (QAction* action : actionsBelow(top->menu()))
                    if (action->text() == text)
                        return action;
        return nullptr;
    }

    void showAndActivate()
    {
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }

    Model model;
    std::unique_ptr<MainWindow> window;
};

TEST_F(MainWindowTest, SevenMenusHoldEveryEntryWithItsShortcut)
{
    QStringList titles;
    for (QAction* top : window->menuBar()->actions())
        titles << top->text();
    EXPECT_EQ(titles, QStringList({"File", "Edit", "Import/Export", "Recording", "View", "Extras",
                                   "Help"}));
    // Every entry of the action table sits in its menu with its shortcut (the quick help
    // shows them from the same table, see ExtrasDialogs).
    for (const MenuEntry& e : menuEntries()) {
        if (e.kind == EntryKind::Separator)
            continue;
        QAction* action = find(menuTitle(e.menu), QString::fromUtf8(e.text));
        ASSERT_NE(action, nullptr) << e.text;
        EXPECT_EQ(action->shortcut(), QKeySequence(QString::fromLatin1(e.shortcut))) << e.text;
    }
}

TEST_F(MainWindowTest, EntriesWithoutAHandlerAreDisabledAndSaySo)
{
    QAction* history = find("Help", "Version History");
    EXPECT_FALSE(history->isEnabled());
    EXPECT_EQ(history->toolTip(), QString::fromLatin1(kNotAvailableYet));

    bool ran = false;
    window->actions().bind(QStringLiteral("openVersionHistory"), [&] { ran = true; });
    EXPECT_TRUE(history->isEnabled());
    history->trigger();
    EXPECT_TRUE(ran);
}

TEST_F(MainWindowTest, SixDocksWithTheirTitlesAndOwnTitleBars)
{
    showAndActivate();
    ASSERT_EQ(dockEntries().size(), 6u);
    for (const DockEntry& entry : dockEntries()) {
        DockWidget* dock = window->dock(QString::fromLatin1(entry.objectName));
        ASSERT_NE(dock, nullptr) << entry.objectName;
        EXPECT_EQ(dock->windowTitle(), QString::fromUtf8(entry.title));
        EXPECT_TRUE(dock->isVisible()) << entry.objectName;
    }

    DockWidget* samples = window->dock(QStringLiteral("SamplesDock"));
    EXPECT_FALSE(samples->dockBackButton()->isEnabled()) << "a docked dock has nowhere to go";
    samples->setFloating(true);
    ASSERT_TRUE(samples->dockBackButton()->isEnabled());
    samples->dockBackButton()->click();
    EXPECT_FALSE(samples->isFloating());
    samples->closeButton()->click();
    EXPECT_FALSE(samples->isVisible());
}

// That every window state key is written is also seen on the real desktop (desktop-e2e.sh,
// which answers the question's window by its title); here: the values and the way back.
TEST_F(MainWindowTest, NoToTheQuitQuestionKeepsTheWindowAndQuittingKeepsItsState)
{
    showAndActivate();
    window->actions().action(QStringLiteral("showHeader"))->setChecked(false);
    window->dock(QStringLiteral("KeyboardDock"))->setFloating(true);
    {
        test::MessageBoxAnswerer answerer(QMessageBox::No);
        QTest::keyClick(window.get(), Qt::Key_Q, Qt::ControlModifier);
        EXPECT_EQ(answerer.texts(), QStringList{"Do you really want to quit?"});
        EXPECT_TRUE(window->isVisible());
        EXPECT_FALSE(openIniFile()->contains(ini::kMainWindowGeometry));
    }

    // Told not to ask, the window goes at once.
    openIniFile()->setValue(ini::kShowWarningOnQuit, false);
    showAndActivate();
    test::MessageBoxAnswerer answerer(QMessageBox::No);
    QTest::keyClick(window.get(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(answerer.seen().empty());
    const auto ini = openIniFile();
    EXPECT_EQ(ini->value(ini::kMainWindowShowHeader), QVariant(false));
    for (const DockEntry& dock : dockEntries()) {
        const QString name = QString::fromLatin1(dock.objectName);
        EXPECT_EQ(ini->value(name + "/IsFloating").toBool(), name == "KeyboardDock")
            << dock.objectName;
    }

    // The next window comes back as this one was left.
    MainWindow next(model);
    EXPECT_FALSE(next.headerShown());
    EXPECT_TRUE(next.dock(QStringLiteral("KeyboardDock"))->isFloating());
    EXPECT_FALSE(next.actions().action(QStringLiteral("showHeader"))->isChecked());
}

} // namespace
} // namespace tg::shell
