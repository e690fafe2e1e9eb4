#include "ui/sheets/TWRecentItemsSheet.h"

#include "TWUITestSupport.h"
#include "editors/TWKeepWindowController.h"

#include <QAbstractButton>
#include <QDialog>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTableView>

using namespace TWUITest;

namespace {

class TWRecentItemsSheetTest : public testing::Test {
protected:
    enum Column { Active, Source, FilePath, DeleteFile, Keys, Note };

    TWRecentItemsSheetTest()
    {
        const auto make = [](const char* identifier, const char* name, const char* executable) {
            return TWApplication{ identifier, name, executable, name, "/no/such/icon", std::string("/") + identifier,
                "" };
        };
        world.applications.applications = { make("org.editor", "Editor", "gnuedit"),
            make("com.editor", "Editor", "other"), make("viewer", "Viewer", "see") };
        world.applications.preferences["org.editor"] = { world.places.home + "/editor.json" };
        world.root.write(
            "home/editor.json", R"({"Recent": ["<b>one</b>", "two\nlines"], "OpenHistory": {"a": 1}, "size": 3})");
    }
    void open()
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
        child<QAbstractButton>(sheet, "addToolButton")->click();
        ASSERT_TRUE(QTest::qWaitFor([&] { return rows().count() == 3; }));
    }
    QStringList rows()
    {
        QStringList titles;
        const auto* model = child<QListView>(sheet, "applicationListView")->model();
        for (int row = 0; row < model->rowCount(); ++row)
            titles.append(model->index(row, 0).data().toString());
        return titles;
    }
    template <typename Widget>
    Widget* dialogChild(const char* name)
    {
        return child<Widget>(sheet, name);
    }
    bool isGone(const char* dialog)
    {
        return QTest::qWaitFor([&] { return !sheet.findChild<QDialog*>(dialog); });
    }
    QVariant cell(int row, int column, int role = Qt::DisplayRole)
    {
        return table->model()->index(row, column).data(role);
    }

    Editors world;
    TWRecentItemsWindowController& controller = world.editors.get<TWRecentItemsWindowController>();
    TWRecentItemsSheet sheet{ controller, world.editors.get<TWKeepWindowController>(), nullptr };
    QTableView* table = child<QTableView>(sheet, "recentItemsTableView");
};

TEST_F(TWRecentItemsSheetTest, AnApplicationIsSearchedForWithTheKeyboardAndItsFoundKeysBecomeARule)
{
    open();
    EXPECT_EQ(rows(), (QStringList{ "Editor (org.editor)", "Editor (com.editor)", "Viewer" }));
    auto* choose = child<QAbstractButton>(sheet, "chooseButton");
    EXPECT_FALSE(choose->isEnabled());
    auto* field = child<QLineEdit>(sheet, "searchField");
    EXPECT_EQ(field->window()->focusWidget(), field);
    QTest::keyClicks(field, "nothing");
    EXPECT_TRUE(rows().isEmpty() && !choose->isEnabled());
    field->clear();
    QTest::keyClicks(field, "EDIT");
    EXPECT_EQ(rows().size(), 2);
    QTest::keyClick(field, Qt::Key_Down);
    QTest::keyClick(field, Qt::Key_Up);
    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_TRUE(isGone("applicationChooser"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.findChild<QDialog*>("foundKeysWindow"); }));
    EXPECT_EQ(child<QDialog>(sheet, "foundKeysWindow")->windowTitle(), "Found keys for Editor");
    auto* keys = child<QListWidget>(sheet, "foundKeysTableView");
    EXPECT_EQ(child<QPlainTextEdit>(sheet, "foundKeysTextView")->toPlainText().count('\n'), 1);
    EXPECT_TRUE(child<QPlainTextEdit>(sheet, "foundKeysTextView")->toPlainText().contains("<b>one</b>"));
    QTest::keyClick(keys, Qt::Key_Down, Qt::ShiftModifier);
    child<QAbstractButton>(sheet, "createButton")->click();
    ASSERT_TRUE(isGone("foundKeysWindow"));
    EXPECT_EQ(controller.rules().back(),
        (TWRecentItemsRule{ true, "Editor", "~/editor.json", false, "Recent, OpenHistory" }));
    EXPECT_EQ(table->currentIndex().row(), 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, Note).toString().startsWith("2 entries"); }))
        << cell(0, Note).toString().toStdString();
}

TEST_F(TWRecentItemsSheetTest, WhatIsFoundCanBeLeftAndTheFileShown)
{
    std::string shown;
    QObject::connect(&sheet, &TWSheet::fileRequested, [&](const std::string& path, const auto& said) {
        shown = path;
        said("No file manager.");
    });
    open();
    child<QListView>(sheet, "applicationListView")
        ->setCurrentIndex(child<QListView>(sheet, "applicationListView")->model()->index(0, 0));
    child<QAbstractButton>(sheet, "chooseButton")->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.findChild<QDialog*>("foundKeysWindow"); }));
    child<QAbstractButton>(sheet, "showPreferencesFileButton")->click();
    EXPECT_EQ(shown, world.places.home + "/editor.json");
    auto* window = child<QDialog>(sheet, "foundKeysWindow");
    EXPECT_EQ(child<QLabel>(*window, "messageBarLabel")->text(), "No file manager.");
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(isGone("foundKeysWindow"));
    EXPECT_EQ(controller.recordCount(), 0);
}

TEST_F(TWRecentItemsSheetTest, UnusedKeysAreGreyButCanBeEdited)
{
    controller.addRule({ true, "Prog", "~/file", false, "Recent" });
    sheet.open();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    EXPECT_EQ(cell(0, Keys, Qt::AccessibleTextRole), "Recent");
    table->setCurrentIndex(table->model()->index(0, DeleteFile));
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_TRUE(controller.rules()[0].deleteFile);
    EXPECT_EQ(cell(0, Keys, Qt::AccessibleTextRole), "Recent, not used");
    EXPECT_TRUE(table->model()->setData(table->model()->index(0, Keys), "Other", Qt::EditRole));
    EXPECT_EQ(controller.rules()[0].keys, "Other");
}

TEST_F(TWRecentItemsSheetTest, AFileThatIsKeptSaysSo)
{
    controller.addRule({ true, "Many", "~/*/file", false, "Recent" });
    controller.addRule({ true, "Editor", "~/editor.json", false, "Recent" });
    sheet.open();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(1, Note).toString().startsWith("1 entry"); }));
    for (const int row : { 1, 0 }) {
        table->selectRow(row);
        table->setFocus();
        QTest::keyClick(table, Qt::Key_K, Qt::ControlModifier);
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(1, Note).toString().startsWith("Kept or refused: "); }));
    EXPECT_TRUE(child<QLabel>(sheet, "messageBarLabel")->text().startsWith("The keep list cannot hold"));
}

}
