// The list panels and the panels that follow their selection, driven through their widgets.
#include "core/Model.h"
#include "core/Names.h"
#include "shell/ActionTable.h"
#include "shell/MainWindow.h"
#include "shell/ProjectFileFlow.h"
#include "shell/panels/CentralWidget.h"
#include "shell/panels/InfoSettingsWidget.h"
#include "shell/panels/MultisampleWidget.h"
#include "shell/panels/SamplesWidget.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/PlainProject.h"
#include "tests/support/TempDir.h"

#include <QAction>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <gtest/gtest.h>

#include <filesystem>

namespace tg::shell {
namespace {

class PanelsTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        window = std::make_unique<MainWindow>(model);
        const std::string path = test::writeProjectFile(dir.file("p"), "Piano", {"Soft", "Loud"});
        window->projectFiles().openFiles({QString::fromStdString(path)});
        ASSERT_EQ(model.projectCount(), 1);
        multisamples = window->findChild<MultisampleWidget*>();
        samples = window->findChild<SamplesWidget*>();
    }

    QAction* action(const char* name) { return window->actions().action(name); }

    test::TempDir dir;
    Model model;
    std::unique_ptr<MainWindow> window;
    MultisampleWidget* multisamples = nullptr;
    SamplesWidget* samples = nullptr;
};

TEST_F(PanelsTest, RenamingAMultiSampleInItsPanelRenamesItAndItsKeySamples)
{
    multisamples->list()->setCurrentRow(1);
    EXPECT_EQ(model.currentProject()->currentMsl, 1);
    EXPECT_EQ(samples->heading(), "Keys of \"Loud\"");

    // A recorded key of "Loud" follows the new name on disk.
    const Project& project = *model.currentProject();
    const std::string take = keySampleFileName(project, project.msl[1], 60);
    ASSERT_TRUE(test::writeFileBytes(take, "RIFF"));
    multisamples->list()->item(1)->setText("Forte"); // what typing into the row does
    EXPECT_STREQ(model.currentProject()->msl[1].name, "Forte");
    EXPECT_EQ(samples->heading(), "Keys of \"Forte\"");
    EXPECT_FALSE(std::filesystem::exists(take));
    EXPECT_TRUE(std::filesystem::exists(keySampleFileName(project, project.msl[1], 60)));
    EXPECT_EQ(samples->table()->item(60, SamplesWidget::AudioColumn)->text(), "yes");

    // A name a sibling has is refused with the model's message, and the row shows the old one.
    test::MessageBoxAnswerer answerer;
    multisamples->renameRow(1, "Soft");
    ASSERT_EQ(answerer.texts(), QStringList({"A multisample with that name already exists!"}));
    EXPECT_EQ(multisamples->list()->item(1)->text(), "Forte");
}

TEST_F(PanelsTest, DuplicateDeleteAndMoveWorkThroughTheButtons)
{
    multisamples->button("duplicate")->click();
    ASSERT_EQ(multisamples->list()->count(), 3);
    EXPECT_EQ(multisamples->list()->item(2)->text(), "Loud-1");
    EXPECT_EQ(multisamples->list()->currentRow(), 2);

    multisamples->button("moveUp")->click();
    EXPECT_STREQ(model.currentProject()->msl[1].name, "Loud-1");
    EXPECT_EQ(multisamples->list()->currentRow(), 1);

    model.preferences().promptWhenDeleting = 1;
    {
        test::MessageBoxAnswerer no(QMessageBox::No);
        multisamples->button("delete")->click();
        EXPECT_EQ(no.texts(),
                  QStringList({"Do you really want to delete the multisample \"Loud-1\"?"}));
        EXPECT_EQ(model.currentProject()->mslCount, 3);
    }
    test::MessageBoxAnswerer yes(QMessageBox::Yes);
    multisamples->button("delete")->click();
    EXPECT_EQ(model.currentProject()->mslCount, 2);
    EXPECT_EQ(multisamples->list()->count(), 2);
}

TEST_F(PanelsTest, KeySwitchesAndSelectionReachTheModelAndTheOtherPanels)
{
    QTableWidget* keys = samples->table();
    keys->item(72, SamplesWidget::LockedColumn)->setCheckState(Qt::Checked);
    keys->item(72, SamplesWidget::SelectedColumn)->setCheckState(Qt::Checked);
    keys->item(60, SamplesWidget::SelectedColumn)->setCheckState(Qt::Unchecked);
    const TGmsl& msl = *model.currentMultiSample();
    EXPECT_EQ(msl.keys[72].locked, 1);
    EXPECT_EQ(msl.keys[72].keyState, 1);
    EXPECT_EQ(msl.keys[60].keyState, 0);
    EXPECT_EQ(model.currentProject()->modified, 1);

    keys->setCurrentCell(61, SamplesWidget::KeyColumn);
    EXPECT_EQ(model.currentKey(), 61);
    auto* info = window->findChild<InfoSettingsWidget*>();
    EXPECT_EQ(info->title(), "Sample Info and Settings");
    EXPECT_TRUE(window->centralArea()->selectionText().contains("61 (C#4)"));

    multisamples->list()->setCurrentRow(0);
    EXPECT_EQ(info->title(), "Multi-Sample Info and Settings");
}

TEST_F(PanelsTest, PasteFromACopyWithoutKeysReplacesTheSettingsAndKeepsTheKeys)
{
    model.selectMultiSample(0);
    model.currentMultiSample()->recordsettings.notelength1 = 7.5;
    action("copyMultisampleSettings")->trigger();

    model.selectMultiSample(1);
    TGmsl& target = *model.currentMultiSample();
    target.keys[40].keyState = 1;
    action("pasteMultisample")->trigger();
    EXPECT_EQ(target.recordsettings.notelength1, 7.5);
    EXPECT_EQ(target.keys[40].keyState, 1) << "the target's keys stay";
    EXPECT_STREQ(target.name, "Loud") << "the target keeps its name";

    // With its keys, the keys come along too.
    model.selectMultiSample(0);
    action("copyMultisample")->trigger();
    model.selectMultiSample(1);
    action("pasteMultisample")->trigger();
    EXPECT_EQ(target.keys[40].keyState, 0);
    EXPECT_EQ(samples->table()->item(40, SamplesWidget::SelectedColumn)->checkState(),
              Qt::Unchecked);
}

} // namespace
} // namespace tg::shell
