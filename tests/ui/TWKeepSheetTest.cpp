#include "ui/sheets/TWKeepSheet.h"

#include "TWUITestSupport.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDropEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QTableView>

using namespace TWUITest;

namespace {

using Records = std::vector<TWKeepRecord>;

constexpr auto Saved = "home/.local/share/Tidewell/KeepList.plist";

class TWKeepSheetTest : public testing::Test {
protected:
    using enum TWKeepEntry::Kind;

    enum Column { What, How, Note };

    void open()
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    }
    void press(const char* button) { child<QAbstractButton>(sheet, button)->click(); }
    QString cell(int row, int column) { return table->model()->index(row, column).data().toString(); }

    // In the editor of the cell that is being edited.
    void type(const QString& text)
    {
        auto* field = child<QLineEdit>(sheet, "whatEditor");
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !sheet.findChild<QLineEdit*>("whatEditor"); }));
    }
    std::string message() { return child<QLabel>(sheet, "messageBarLabel")->text().toStdString(); }

    Editors world;
    TWKeepWindowController& keep = world.editors.get<TWKeepWindowController>();
    TWKeepSheet sheet{ keep, nullptr };
    QTableView* table = child<QTableView>(sheet, "keepTableView");
};

TEST_F(TWKeepSheetTest, EditsInPlaceWhatIsKeptAtOnce)
{
    const auto path = world.root.write("home/there", "");
    keep.edit([](Records& records) { records = { TWKeepRecord({ Path, "~/gone" }) }; });
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, Note) == "Does not exist now"; }));
    table->setCurrentIndex(table->model()->index(0, What));
    QTest::keyClick(table, Qt::Key_F2);
    type("~/there");
    EXPECT_NE(world.objectionTo(path, world.guard), "");
    EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, Note).isEmpty(); }));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(table->model()->index(0, How)).center());
    auto* popUp = child<QComboBox>(sheet, "howEditor");
    popUp->setCurrentIndex(popUp->findText("Everything with such a name"));
    emit popUp->activated(popUp->currentIndex());
    EXPECT_EQ(keep.entries()[0], TWKeepRecord({ Names, "~/there" }));
    EXPECT_EQ(cell(0, Note), "Keeps nothing: the entry has a name with a \"/\".");
    keep.addPath(path);
    press("okPushButton");
    EXPECT_TRUE(sheet.isVisible()) << "a list with a mistake is not saved";
    ASSERT_EQ(world.alerts.alerts.size(), 1U);
    EXPECT_EQ(table->currentIndex().row(), 0) << "the mistake is selected";
    press("removeToolButton");
    keep.addEntry({ FolderWithContents, "~/.." });
    press("okPushButton");
    EXPECT_EQ(message(),
        "The selected row has a warning. Press OK again to save all the same. Warning: Keeps everything in your home "
        "folder, except for the Trash.");
    press("okPushButton");
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_NE(world.root.read(Saved).find("~/there"), std::string::npos);
}

TEST_F(TWKeepSheetTest, AddsNamesAndDroppedFilesAndBringsRemovedEntriesBack)
{
    keep.edit([](Records& records) { records.clear(); });
    open();
    press("addToolButton");
    auto* menu = child<QMenu>(sheet, "chooserMenu");
    menu->setActiveAction(menu->actions().last());
    QTest::keyClick(menu, Qt::Key_Return);
    type("*.kdbx");
    QMimeData data;
    data.setUrls({ QUrl::fromLocalFile(QString::fromStdString(world.root.folder("home/a b") + "/")),
        QUrl::fromLocalFile(QString::fromStdString(world.root.write("home/file", ""))),
        QUrl::fromEncoded("file:///tmp/bad%FFname") });
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table->viewport(), &enter);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(table->viewport(), &drop);
    const Records expected{ TWKeepRecord({ Names, "*.kdbx" }), TWKeepRecord({ FolderWithContents, "~/a b" }),
        TWKeepRecord({ Path, "~/file" }) };
    EXPECT_EQ(keep.entries(), expected);
    EXPECT_NE(message().find("not valid UTF-8"), std::string::npos);
    table->selectRow(0);
    press("removeToolButton");
    EXPECT_EQ(keep.entries().size(), 2U);
    press("undoBarButton");
    EXPECT_EQ(keep.entries(), expected);
    press("restoreDefaultsPushButton");
    EXPECT_EQ(world.alerts.alerts.at(0).confirming, TWConfirming::LosesSomething);
    EXPECT_EQ(cell(0, What), "~/.ssh");
}

TEST_F(TWKeepSheetTest, SaysThatADamagedListStopsEverythingUntilItIsReplaced)
{
    world.root.write(Saved, "<plist><array><dict/></array></plist>");
    world.editors.awakeFromNib(TWLaunchKind::Command);
    open();
    EXPECT_NE(message().find("your own are not shown."), std::string::npos);
    press("okPushButton");
    EXPECT_EQ(keep.problem(), "");
    EXPECT_NE(world.root.read(Saved).find("~/.ssh"), std::string::npos);
}

}
