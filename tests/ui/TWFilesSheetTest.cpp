#include "ui/TWFilesSheet.h"

#include "TWUITestSupport.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QTableView>

#include <set>

using namespace TWUITest;

namespace {

enum Column { Active, Name, Path, WhatToDelete, Note };

class TWFilesSheetTest : public testing::Test {
protected:
    TWFilesSheetTest() { world.settings.set(TWKey::ManualFilesRuleCreation, true); }

    void open()
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    }

    void press(const char* button) { child<QAbstractButton>(sheet, button)->click(); }

    QString cell(int row, int column) { return table->model()->index(row, column).data().toString(); }

    void edit(int row, int column, const char* editor, const QString& text)
    {
        table->setCurrentIndex(table->model()->index(row, column));
        QTest::keyClick(table, Qt::Key_F2);
        auto* field = child<QLineEdit>(sheet, editor);
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !sheet.findChild<QLineEdit*>(editor); })) << editor;
    }

    // Without a choice the pop-up is left as it opened.
    void pick(int row, std::optional<int> choice)
    {
        const auto place = table->visualRect(table->model()->index(row, WhatToDelete)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, place);
        auto* popUp = child<QComboBox>(sheet, "whatToDeleteComboBox");
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
    TWFilesSheet sheet{ world.files, world.help, nullptr };
    QTableView* table = child<QTableView>(sheet, "filesTableView");
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
    const TWFilesRule odd{ false, "Odd", "/tmp/\xFF\nname", std::int64_t(1) << 40 };
    world.files.addRule(odd);
    open();
    EXPECT_EQ(cell(0, WhatToDelete), "Nothing (kind 1099511627776)");
    pick(0, std::nullopt);
    table->setCurrentIndex(table->model()->index(0, Path));
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClick(child<QLineEdit>(sheet, "pathLineEdit"), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !sheet.findChild<QLineEdit*>(); }));
    EXPECT_EQ(world.files.rules(), std::vector{ odd });
    pick(0, TWFolderContents);
    EXPECT_EQ(world.files.rules()[0].whatToDelete, TWFolderContents);
}

TEST_F(TWFilesSheetTest, ChoosesALinkAndNotItsTarget)
{
    world.settings.set(TWKey::ManualFilesRuleCreation, false);
    world.root.write("home/target", "");
    world.root.link("home/link", "target");
    open();
    press("addToolButton");
    child<QMenu>(sheet, "addMenu")->close();
    EXPECT_TRUE(world.files.rules().empty());
    press("addToolButton");
    auto* menu = child<QMenu>(sheet, "addMenu");
    menu->setActiveAction(menu->actions().first());
    QTest::keyClick(menu, Qt::Key_Return);
    auto* chooser = child<QFileDialog>(sheet, "chooserFileDialog");
    chooser->setDirectory(QString::fromStdString(world.places.home));
    chooser->findChild<QLineEdit*>("fileNameEdit")->setText("link");
    QMetaObject::invokeMethod(chooser, "accept");
    ASSERT_TRUE(QTest::qWaitFor([&] { return world.files.rules().size() == 1; }));
    const TWFilesRule expected{ true, "link", "~/link", TWItemItself };
    EXPECT_EQ(world.files.rules()[0], expected);
}

TEST_F(TWFilesSheetTest, TakesDroppedFilesWithExactNamesOnlyAndRemovesTheSelectedOne)
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
    EXPECT_TRUE(child<QLabel>(sheet, "messageLabel")->text().contains("not valid UTF-8"));
    table->selectRow(0);
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(world.files.rules()[0].filePath, "~/a b");
}

TEST_F(TWFilesSheetTest, RestoresDefaultsWhichSearchForNoWords)
{
    open();
    press("restoreDefaultsPushButton");
    EXPECT_EQ(world.alerts.alerts.size(), 1U);
    EXPECT_GE(table->model()->rowCount(), 15);
    std::set<std::string> paths;
    for (const auto& rule : world.files.rules()) {
        EXPECT_TRUE(!rule.filePath.empty() && paths.insert(rule.filePath).second) << rule.filePath;
        EXPECT_TRUE(!rule.active || rule.whatToDelete == TWItemItself) << rule.filePath;
        // It would make every run with an empty dictionary ask, even if it is switched off.
        EXPECT_FALSE(rule.needsKeywords()) << rule.filePath;
    }
}

TEST_F(TWFilesSheetTest, SavesWithOKOnlyAndCountsWhileOpen)
{
    const auto saved = [this] { return world.root.read("home/.local/share/Tidewell/FilesRules.plist"); };
    const auto before = saved();
    world.root.write("home/three/bytes", "123");
    world.files.addRule({ true, "There", "~/three", TWFolderContents });
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, Note).startsWith("1 item, "); }));
    table->setCurrentIndex(table->model()->index(0, Name));
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClicks(child<QLineEdit>(sheet, "nameLineEdit"), "Typed");
    QTest::keyClick(&sheet, Qt::Key_Escape);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_EQ(cell(0, Note), "");
    EXPECT_EQ(saved(), before);
    open();
    press("okPushButton");
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_NE(saved().find("~/three"), std::string::npos);
}

}
