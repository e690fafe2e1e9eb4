#include "ui/TWFilesSheet.h"

#include "TWSheetTestSupport.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QTableView>
#include <QTest>
#include <QToolButton>

namespace {

enum Column { Active, Name, Path, WhatToDelete, Note };

class TWFilesSheetTest : public testing::Test {
protected:
    void SetUp() override
    {
        world.dataFolder.make();
        world.settings.set(TWKey::ManualFilesRuleCreation, true);
    }

    void open()
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    }

    template <typename Widget>
    Widget* find(const char* name)
    {
        auto* widget = sheet.findChild<Widget*>(name);
        EXPECT_TRUE(widget) << name;
        return widget;
    }

    void press(const char* button) { find<QAbstractButton>(button)->click(); }

    QString cell(int row, int column) { return table->model()->index(row, column).data().toString(); }
    QPoint place(int row, int column) { return table->visualRect(table->model()->index(row, column)).center(); }

    void edit(int row, int column, const char* editor, const QString& text)
    {
        table->setCurrentIndex(table->model()->index(row, column));
        QTest::keyClick(table, Qt::Key_F2);
        auto* field = find<QLineEdit>(editor);
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !sheet.findChild<QLineEdit*>(editor); })) << editor;
    }

    // Without a choice the pop-up is left as it opened.
    void pick(int row, std::optional<int> choice)
    {
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, place(row, WhatToDelete));
        auto* popUp = find<QComboBox>("whatToDeleteComboBox");
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

    TWSheetTestWorld world;
    TWFilesSheet sheet{ world.files, world.help, nullptr };
    QTableView* table = find<QTableView>("filesTableView");
};

TEST_F(TWFilesSheetTest, EditsEveryColumnOfTheLiveListInPlace)
{
    const auto live = world.files.settings();
    world.files.addRule({ true, "Old", "~/old", TWItemItself });
    open();
    table->setCurrentIndex(table->model()->index(0, Path));
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_FALSE(world.files.rules()[0].active);
    const auto checkBox = table->visualRect(table->model()->index(0, Active));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, checkBox.topLeft() + QPoint(10, checkBox.height() / 2));
    EXPECT_TRUE(world.files.rules()[0].active);
    edit(0, Name, "nameLineEdit", "New name");
    edit(0, Path, "pathLineEdit", "~/new, with blanks");
    pick(0, TWItemsWithKeywordsDeep);
    const TWFilesRule expected{ true, "New name", "~/new, with blanks", TWItemsWithKeywordsDeep };
    EXPECT_EQ(*live, std::vector{ expected });
}

TEST_F(TWFilesSheetTest, KeepsWhatAnEditorCannotShow)
{
    const TWFilesRule odd{ false, "Odd", "/tmp/\xFF\nname", 7 };
    world.files.addRule(odd);
    open();
    EXPECT_EQ(cell(0, WhatToDelete), "Nothing (kind 7)");
    pick(0, std::nullopt);
    table->setCurrentIndex(table->model()->index(0, Path));
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClick(find<QLineEdit>("pathLineEdit"), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sheet.findChild<QLineEdit*>(); }));
    EXPECT_EQ(world.files.rules(), std::vector{ odd });
    pick(0, TWFolderContents);
    EXPECT_EQ(world.files.rules()[0].whatToDelete, TWFolderContents);
}

TEST_F(TWFilesSheetTest, AddsAtTheEndInSightAndRemovesTheSelectedRule)
{
    open();
    auto* remove = find<QToolButton>("removeToolButton");
    EXPECT_FALSE(remove->isEnabled());
    for (int row = 0; row < 60; ++row) {
        press("addToolButton");
        world.files.setDescription(row, std::to_string(row));
    }
    EXPECT_EQ(table->currentIndex().row(), 59);
    EXPECT_TRUE(table->viewport()->rect().contains(place(59, Name)));
    EXPECT_TRUE(remove->isEnabled());
    table->selectRow(10);
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(world.files.rules()[10].description, "11");
    EXPECT_EQ(table->currentIndex().row(), 10);
    while (remove->isEnabled())
        press("removeToolButton");
    EXPECT_TRUE(world.files.rules().empty());
}

TEST_F(TWFilesSheetTest, ChoosesALinkAndNotItsTarget)
{
    world.settings.set(TWKey::ManualFilesRuleCreation, false);
    world.home.write("target", "");
    world.home.link("link", "target");
    open();
    press("addToolButton");
    find<QMenu>("addMenu")->close();
    EXPECT_TRUE(world.files.rules().empty());
    press("addToolButton");
    auto* menu = find<QMenu>("addMenu");
    menu->setActiveAction(menu->actions().first());
    QTest::keyClick(menu, Qt::Key_Return);
    auto* chooser = find<QFileDialog>("chooserFileDialog");
    chooser->setDirectory(QString::fromStdString(world.places.home));
    chooser->findChild<QLineEdit*>("fileNameEdit")->setText("link");
    QMetaObject::invokeMethod(chooser, "accept");
    ASSERT_TRUE(QTest::qWaitFor([&] { return world.files.rules().size() == 1; }));
    const TWFilesRule expected{ true, "link", "~/link", TWItemItself };
    EXPECT_EQ(world.files.rules()[0], expected);
}

TEST_F(TWFilesSheetTest, TakesDroppedFilesWithExactNamesOnly)
{
    open();
    const auto home = QString::fromStdString(world.places.home);
    drop({ QUrl::fromLocalFile(home + "/by hand") });
    world.settings.set(TWKey::ManualFilesRuleCreation, false);
    drop({ QUrl::fromLocalFile(home + "/a b/"), QUrl("https://example.org/c") });
    ASSERT_EQ(world.files.rules().size(), 2U);
    EXPECT_EQ(world.files.rules()[0].filePath, world.places.home + "/by hand");
    EXPECT_EQ(world.files.rules()[1].filePath, "~/a b");
    drop({ QUrl::fromEncoded("file:///tmp/bad%FFname"), QUrl::fromLocalFile(home + "/good") });
    EXPECT_EQ(world.files.rules().size(), 3U);
    EXPECT_TRUE(find<QLabel>("messageLabel")->text().contains("not valid UTF-8"));
}

TEST_F(TWFilesSheetTest, AsksBeforeItRestoresTheDefaults)
{
    world.files.addRule({ true, "Mine", "~/mine", TWItemItself });
    open();
    world.alerts.script = { TWAnswer::Alternate, TWAnswer::Default };
    press("restoreDefaultsPushButton");
    EXPECT_EQ(world.files.rules().size(), 1U);
    press("restoreDefaultsPushButton");
    EXPECT_EQ(world.alerts.alerts.size(), 2U);
    EXPECT_GE(table->model()->rowCount(), 15);
    std::set<std::string> paths;
    for (const auto& rule : world.files.rules()) {
        EXPECT_TRUE(!rule.filePath.empty() && paths.insert(rule.filePath).second) << rule.filePath;
        EXPECT_TRUE(!rule.active || rule.whatToDelete == TWItemItself) << rule.filePath;
    }
}

TEST_F(TWFilesSheetTest, SavesWithOKOnlyAndCountsWhileOpen)
{
    const auto saved = world.dataFolder.file("FilesRules.plist");
    world.home.write("three/bytes", "123");
    world.files.addRule({ true, "There", "~/three", TWFolderContents });
    world.files.addRule({ true, "Missing", "~/none", TWFolderContents });
    world.files.addRule({ true, "Refused", "/", TWItemItself });
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(1, Note).contains("would stop here"); }));
    EXPECT_TRUE(cell(0, Note).startsWith("1 item, "));
    EXPECT_EQ(cell(2, Note), "Will be refused: it is the whole file system.");
    press("helpPushButton");
    EXPECT_TRUE(world.help.isVisible());
    table->setCurrentIndex(table->model()->index(0, Name));
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClicks(find<QLineEdit>("nameLineEdit"), "Typed");
    QTest::keyClick(&sheet, Qt::Key_Escape);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_EQ(cell(0, Note), "");
    EXPECT_FALSE(world.fileSystem.exists(saved));
    open();
    press("okPushButton");
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_NE(world.fileSystem.read(saved, 10'000).bytes.find("~/three"), std::string::npos);
}

TEST_F(TWFilesSheetTest, LooksAtTheRowsInSightOnlyHoweverLongTheListIs)
{
    auto& rules = *world.files.settings();
    for (int row = 0; row < 5000; ++row)
        rules.push_back({ true, "Rule", "~/item" + std::to_string(row), TWItemItself });
    world.files.reloadTable();
    open();
    sheet.grab();
    const int inSight = table->viewport()->height() / table->rowHeight(0) + 1;
    EXPECT_GT(world.mountTable.asked, 0);
    EXPECT_LE(world.mountTable.asked, inSight + 1) << "once for each rule, however often it is painted";
    EXPECT_LE(table->findChildren<QWidget*>().size(), 20);
}

}
