#include "ui/sheets/TWFilesSheet.h"

#include "TWUITestSupport.h"
#include "editors/TWKeepWindowController.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QTableView>

using namespace TWUITest;

namespace {

class TWFilesSheetTest : public testing::Test {
protected:
    enum Column { Active, Name, Path, WhatToDelete, Note };

    TWFilesSheetTest() { world.settings.set(TWKey::ManualFilesRuleCreation, true); }

    void open()
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    }

    void press(const char* button) { child<QAbstractButton>(sheet, button)->click(); }

    void select(int row, int column) { table->setCurrentIndex(table->model()->index(row, column)); }
    QPoint center(int row, int column) { return table->visualRect(table->model()->index(row, column)).center(); }
    QString cell(int row, int column) { return table->model()->index(row, column).data().toString(); }

    void edit(int row, int column, const char* editor, const QString& text)
    {
        select(row, column);
        QTest::keyClick(table, Qt::Key_F2);
        auto* field = child<QLineEdit>(sheet, editor);
        field->selectAll();
        QTest::keyClicks(field, text); // without any, the editor is left as it opened
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !sheet.findChild<QLineEdit*>(editor); })) << editor;
    }

    // Without a choice the pop-up is left as it opened.
    void pick(int row, std::optional<int> choice)
    {
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, center(row, WhatToDelete));
        auto* popUp = child<QComboBox>(sheet, "whatToDeleteEditor");
        if (choice) {
            popUp->setCurrentIndex(*choice);
            emit popUp->activated(*choice);
        }
        table->setFocus();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !sheet.findChild<QComboBox*>(); }));
    }

    void drop(const QList<QUrl>& urls)
    {
        const Qt::DropActions actions = Qt::MoveAction | Qt::CopyAction;
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(5, 5), actions, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(table->viewport(), &enter);
        QDropEvent event(QPointF(5, 5), actions, &data, Qt::LeftButton, Qt::ShiftModifier);
        QCoreApplication::sendEvent(table->viewport(), &event);
        EXPECT_EQ(event.dropAction(), Qt::CopyAction);
    }

    Editors world;
    TWFilesSheet sheet{ world.files, world.editors.get<TWKeepWindowController>(), nullptr };
    QTableView* table = child<QTableView>(sheet, "filesTableView");
};

TEST_F(TWFilesSheetTest, EditsEveryColumnOfTheLiveListInPlace)
{
    const auto live = world.files.settings();
    world.files.addRule({ true, "Old", "~/old", TWItemItself });
    open();
    select(0, Active);
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_FALSE(world.files.rules()[0].active);
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, { 10, center(0, Active).y() });
    EXPECT_TRUE(world.files.rules()[0].active);
    edit(0, Name, "nameEditor", "New name");
    edit(0, Path, "pathEditor", "~/new, with blanks");
    pick(0, TWItemsWithKeywordsDeep);
    const TWFilesRule expected{ true, "New name", "~/new, with blanks", TWItemsWithKeywordsDeep };
    EXPECT_EQ(*live, std::vector{ expected });
}

TEST_F(TWFilesSheetTest, KeepsWhatAnEditorCannotShow)
{
    const TWFilesRule odd{ false, "Odd", "/tmp/\xFF\nname", std::int64_t(1) << 40 };
    world.files.addRule(odd);
    open();
    EXPECT_EQ(cell(0, WhatToDelete), "Nothing (kind 1099511627776)");
    pick(0, std::nullopt);
    edit(0, Path, "pathEditor", "");
    EXPECT_EQ(world.files.rules(), std::vector{ odd });
    pick(0, TWFolderContents);
    EXPECT_EQ(world.files.rules()[0].whatToDelete, TWFolderContents);
}

TEST_F(TWFilesSheetTest, ChoosesALinkAndNotItsTargetAndNothingWhileTheFieldIsEmpty)
{
    world.settings.set(TWKey::ManualFilesRuleCreation, false);
    world.root.folder("home/target");
    world.root.link("home/link", "target");
    open();
    press("addToolButton");
    child<QMenu>(sheet, "chooserMenu")->close();
    EXPECT_TRUE(world.files.rules().empty());
    press("addToolButton");
    auto* menu = child<QMenu>(sheet, "chooserMenu");
    menu->setActiveAction(menu->actions().last());
    QTest::keyClick(menu, Qt::Key_Return);
    auto* chooser = child<QFileDialog>(sheet, "chooserFileDialog");
    auto* field = child<QLineEdit>(*chooser, "fileNameEdit");
    field->clear();
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(chooser->isVisible() && world.files.rules().empty());
    field->setText("link");
    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([&] { return world.files.rules().size() == 1; }));
    const TWFilesRule expected{ true, "link", "~/link", TWItemItself };
    EXPECT_EQ(world.files.rules()[0], expected);
}

TEST_F(TWFilesSheetTest, ReturnIsOKAndRestoringDefaultsWhichSearchForNoWordsHasToBeConfirmed)
{
    open();
    QTest::keyClick(sheet.windowHandle(), Qt::Key_Return);
    EXPECT_FALSE(sheet.isVisible());
    open();
    child<QAbstractButton>(sheet, "restoreDefaultsPushButton")->setFocus();
    QTest::keyClick(sheet.windowHandle(), Qt::Key_Return);
    ASSERT_EQ(world.alerts.alerts.size(), 1U);
    EXPECT_EQ(world.alerts.alerts[0].confirming, TWConfirming::LosesSomething);
    EXPECT_GE(table->model()->rowCount(), 15);
    std::set<std::string> paths;
    for (const auto& rule : world.files.rules()) {
        EXPECT_TRUE(!rule.filePath.empty() && paths.insert(rule.filePath).second) << rule.filePath;
        EXPECT_TRUE(!rule.active || rule.whatToDelete == TWItemItself) << rule.filePath;
        // It would make every run with an empty dictionary ask, even if it is switched off.
        EXPECT_FALSE(rule.needsKeywords()) << rule.filePath;
    }
}

TEST_F(TWFilesSheetTest, RemovedRulesComeBackInTheirPlaces)
{
    for (const auto* name : { "0", "1", "2" })
        world.files.addRule({ true, name, std::string("~/") + name, TWItemItself });
    const auto before = world.files.rules();
    open();
    table->selectRow(1);
    press("removeToolButton");
    EXPECT_EQ(cell(table->currentIndex().row(), Name), "2");
    QTest::keyClick(table, Qt::Key_Delete);
    press("undoBarButton");
    table->setFocus();
    QTest::keyClick(sheet.windowHandle(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(world.files.rules(), before);
    EXPECT_EQ(table->currentIndex().row(), 1);
    QTest::keyClick(sheet.windowHandle(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(world.files.rules(), before) << "there is nothing left to undo";
}

TEST_F(TWFilesSheetTest, ARuleCanBeKeptAndEditsThatAreNotSavedAreMarked)
{
    world.root.write("home/kept/file", "1");
    world.files.addRule({ true, "", "~/kept", TWFolderContents });
    ASSERT_EQ(world.files.write(), "");
    open();
    auto* unsaved = child<QLabel>(sheet, "unsavedLabel");
    EXPECT_FALSE(unsaved->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, Note).startsWith("1 item, "); }));
    select(0, Path);
    table->setFocus();
    QTest::keyClick(table, Qt::Key_K, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, Note).startsWith("Everything in it is kept or refused"); }));
    EXPECT_NE(world.root.read("home/.local/share/Tidewell/KeepList.plist").find("~/kept"), std::string::npos);
    EXPECT_EQ(child<QLabel>(sheet, "noticeBarLabel")->text(), "\"~/kept\" is on the keep list now.");
    select(0, Active);
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_TRUE(unsaved->isVisible());
}

TEST_F(TWFilesSheetTest, OKShowsANewWarningOnceBeforeItSaves)
{
    const TWFilesRule everything{ true, "Everything", "~", TWFolderContents };
    world.files.addRule(everything);
    ASSERT_EQ(world.files.write(), "");
    world.files.addRule({ true, "Harmless", "~/harmless", TWItemItself });
    open();
    press("okPushButton");
    EXPECT_TRUE(sheet.isVisible()) << "not known, because the list was edited before";
    press("okPushButton");
    open();
    select(1, Path);
    edit(1, Path, "pathEditor", "~/other");
    press("okPushButton");
    EXPECT_FALSE(sheet.isVisible()) << "the warning about the first rule is known";
    open();
    pick(1, TWFolderContents);
    edit(1, Path, "pathEditor", "~");
    select(0, Path);
    press("okPushButton");
    EXPECT_TRUE(sheet.isVisible() && table->currentIndex().row() == 1);
    const auto bar = child<QLabel>(sheet, "messageBarLabel")->text();
    EXPECT_TRUE(bar.contains("everything in your home folder")) << bar.toStdString();
    EXPECT_TRUE(world.files.hasUnsavedEdits());
    press("okPushButton");
    EXPECT_TRUE(!sheet.isVisible() && !world.files.hasUnsavedEdits());
}

TEST_F(TWFilesSheetTest, TakesDroppedFilesWithExactNamesOnly)
{
    open();
    const auto home = QString::fromStdString(world.places.home);
    drop({ QUrl::fromLocalFile(home + "/by hand") });
    world.settings.set(TWKey::ManualFilesRuleCreation, false);
    drop({ QUrl::fromLocalFile(home + "/a b/"), QUrl("https://example.org/c") });
    ASSERT_EQ(world.files.rules().size(), 2U);
    EXPECT_EQ(world.files.rules()[0].filePath, "~/by hand");
    EXPECT_EQ(world.files.rules()[1].filePath, "~/a b");
    drop({ QUrl::fromEncoded("file:///tmp/bad%FFname"), QUrl::fromLocalFile(home + "/good") });
    EXPECT_EQ(world.files.rules().size(), 3U);
    EXPECT_TRUE(child<QLabel>(sheet, "messageBarLabel")->text().contains("not valid UTF-8"));
}

TEST_F(TWFilesSheetTest, SavesWithOKOnlyAndCountsWhileOpen)
{
    const auto saved = [this] { return world.root.read("home/.local/share/Tidewell/FilesRules.plist"); };
    const auto before = saved();
    world.root.write("home/three/bytes", "123");
    world.files.addRule({ true, "There", "~/three", TWFolderContents });
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, Note).startsWith("1 item, "); }));
    select(0, Name);
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClicks(child<QLineEdit>(sheet, "nameEditor"), "Typed");
    QTest::keyClick(&sheet, Qt::Key_Escape);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_EQ(saved(), before);
    open();
    press("okPushButton");
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_NE(saved().find("~/three"), std::string::npos);
}

}
