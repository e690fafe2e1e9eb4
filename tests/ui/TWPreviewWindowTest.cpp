#include "ui/windows/TWPreviewWindow.h"

#include "TWUITestSupport.h"
#include "editors/TWKeepWindowController.h"
#include "editors/TWVolumesWindowController.h"
#include "ui/parts/TWCellStyle.h"
#include "ui/windows/TWQtAlerts.h"
#include "ui/windows/TWWindowSession.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTreeWidget>

using namespace TWUITest;

namespace {

class TWPreviewWindowTest : public testing::Test {
protected:
    enum Column { Path, Size, Age, Why };

    TWPreviewWindowTest()
    {
        for (const auto* name : { "a", "b", "secret" })
            machine.root.write(std::string("home/folder/") + name, "x");
        machine.root.write("home/.local/share/Trash/files/trashed", "x");
        machine.root.write("home/.local/share/Trash/info/trashed.trashinfo", "x");
        delegate.editors().dictionary().setWordDictionary({ "SECRET" });
        auto& files = delegate.editors().get<TWFilesWindowController>();
        files.addRule({ true, "", "~/folder", TWItemsWithKeywordsDeep });
        files.addRule({ true, "", "~/folder", TWItemItself });
        files.addRule({ true, "", "~", TWItemItself });
        delegate.applicationDidFinishLaunching();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&session.mainWindow()));
        machine.launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
    }
    // Opens the preview of the cleaners and waits until it is complete.
    void open(std::initializer_list<TWKey> cleaners)
    {
        begin(cleaners);
        ASSERT_TRUE(machine.waitFor([&] { return !child<QPushButton>(*window, "stopButton")->isVisible(); }));
        machine.runLoop.advance(1s);
    }
    void begin(std::initializer_list<TWKey> cleaners)
    {
        for (const auto key : cleaners)
            delegate.settings().set(key, true);
        QTest::keyClick(&session.mainWindow(), Qt::Key_P, Qt::ControlModifier);
        const auto windows = QApplication::topLevelWidgets();
        const auto found = std::ranges::find(windows, "previewWindow", &QObject::objectName);
        ASSERT_NE(found, windows.end());
        window = *found;
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
        table = child<QTableView>(*window, "itemsTableView");
        tree = child<QTreeWidget>(*window, "cleanersTreeWidget");
    }
    QVariant cell(int row, int column, int role = Qt::DisplayRole)
    {
        return table->model()->index(row, column).data(role);
    }
    std::string text(int row, int column) { return cell(row, column).toString().toStdString(); }
    Lines paths()
    {
        Lines paths;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            paths.push_back(text(row, Path));
        return paths;
    }
    std::string label(const char* name) { return child<QLabel>(*window, name)->text().toStdString(); }
    void press(const char* button)
    {
        child<QPushButton>(*window, button)->click();
        machine.runLoop.advance(1s);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        table->setFocus();
        QTest::keyClick(table, key, modifiers);
        machine.runLoop.advance(1s);
    }

    Machine machine;
    TWTidewellAppDelegate delegate{ machine.platform, TWLaunchKind::Window };
    TWQtAlerts alerts;
    TWFakeFileManager fileManager{ machine.runLoop };
    TWWindowSession session{ delegate, alerts, fileManager };
    QWidget* window = nullptr;
    QTableView* table = nullptr;
    QTreeWidget* tree = nullptr;
};

TEST_F(TWPreviewWindowTest, KeysOpenFilterUntickKeepAndCleanExactlyWhatIsTicked)
{
    open({ TWKey::TrashCleaner, TWKey::FilesCleaner });
    EXPECT_EQ(paths(), (Lines{ "Trash/trashed", "~/folder/secret", "~/folder", "~" }));
    EXPECT_EQ(text(1, Why), "names with a word in and below ~/folder, the word \"SECRET\"");
    EXPECT_TRUE(cell(1, Path, Qt::AccessibleTextRole).toString().startsWith("Would be deleted: ~/folder/secret, "));
    EXPECT_TRUE(text(3, Why).starts_with("Refused: ") && text(3, Size).empty());
    EXPECT_TRUE(cell(3, Path, Qt::AccessibleTextRole).toString().startsWith("Refused: ~, "));

    key(Qt::Key_Down);
    key(Qt::Key_Space);
    EXPECT_EQ(cell(1, Path, Qt::CheckStateRole), Qt::PartiallyChecked) << "the folder around it is still ticked";
    EXPECT_EQ(text(1, Why), "Still deleted with ~/folder (rule \"~/folder\")");
    key(Qt::Key_Down, Qt::ShiftModifier);
    key(Qt::Key_Space);
    EXPECT_EQ(cell(1, Path, Qt::CheckStateRole), Qt::Unchecked) << "the current row decides for both";
    EXPECT_EQ(cell(2, Path, Qt::CheckStateRole), Qt::Unchecked);
    key(Qt::Key_Space);
    EXPECT_EQ(cell(1, Path, Qt::CheckStateRole), Qt::Checked);

    QTest::keyClick(window, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(child<QLineEdit>(*window, "filterLineEdit"), "SECR");
    machine.runLoop.advance(1s);
    EXPECT_EQ(paths(), Lines{ "~/folder/secret" });
    key(Qt::Key_K, Qt::ControlModifier);
    child<QLineEdit>(*window, "filterLineEdit")->clear();
    machine.runLoop.advance(1s);
    EXPECT_EQ(text(1, Why), "Kept from now on");
    EXPECT_EQ(text(2, Why), "Stays, because something in it is kept from now on");
    EXPECT_EQ(cell(2, Path, Qt::CheckStateRole), Qt::Unchecked);
    EXPECT_EQ(tree->topLevelItem(0)->child(1)->checkState(0), Qt::Unchecked);
    EXPECT_EQ(delegate.editors().get<TWKeepWindowController>().entries().back().entry().text, "~/folder/secret");
    EXPECT_TRUE(label("messageBarLabel").starts_with("Kept from now on: 1 item.")) << label("messageBarLabel");
    press("exportButton");
    auto* dialog = child<QFileDialog>(*window, "exportFileDialog");
    emit dialog->fileSelected(QString::fromStdString(machine.root.path("export.csv")));
    dialog->close();
    machine.runLoop.advance(1s);
    EXPECT_NE(machine.root.read("export.csv").find("\"kept\","), std::string::npos);

    press("cleanButton");
    EXPECT_TRUE(machine.root.exists("home/folder/secret") && machine.root.exists("home/folder/a"));
    EXPECT_FALSE(machine.root.exists("home/.local/share/Trash/files/trashed"));
    EXPECT_NE(label("noticeBarLabel").find("Clean was started from it since"), std::string::npos);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&session.mainWindow()));
    QTest::keyClick(&session.mainWindow(), Qt::Key_P, Qt::ControlModifier);
    machine.runLoop.advance(1s);
    EXPECT_EQ(paths().size(), 3U) << "of a new preview";
    EXPECT_TRUE(text(0, Why).starts_with("Refused: ")) << "by the keep list";
}

TEST_F(TWPreviewWindowTest, ALineOfTheTreeLimitsTheRowsAndTicksThem)
{
    open({ TWKey::TrashCleaner, TWKey::FilesCleaner });
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Down);
    machine.runLoop.advance(1s);
    EXPECT_EQ(paths(), Lines{ "Trash/trashed" });
    QTest::keyClick(tree, Qt::Key_Space);
    machine.runLoop.advance(1s);
    EXPECT_EQ(cell(0, Path, Qt::CheckStateRole), Qt::Unchecked);
    EXPECT_EQ(tree->topLevelItem(0)->checkState(0), Qt::PartiallyChecked);
    auto* rule = tree->topLevelItem(0)->child(1)->child(1);
    tree->setCurrentItem(rule);
    machine.runLoop.advance(1s);
    EXPECT_EQ(paths(), Lines{ "~/folder" });
    const auto* refused = tree->topLevelItem(0)->child(1)->child(2);
    EXPECT_TRUE(refused->checkState(0) == Qt::Unchecked && !(refused->flags() & Qt::ItemIsUserCheckable));
    EXPECT_EQ(refused->text(1), "0");
    EXPECT_TRUE(label("sentenceLabel").ends_with("The table shows 1 of 4."));
    EXPECT_EQ(child<QPushButton>(*window, "cleanButton")->text(), "&Clean 1 Item");
    QTest::mouseClick(
        table->viewport(), Qt::LeftButton, {}, { 12, table->visualRect(table->model()->index(0, 0)).center().y() });
    machine.runLoop.advance(1s);
    EXPECT_EQ(rule->checkState(0), Qt::Unchecked);
    EXPECT_TRUE(label("sentenceLabel").starts_with("1 item, ")) << "the file in the unticked folder";
}

TEST_F(TWPreviewWindowTest, KeysLeadThroughTheContentsOfAFolderAndBack)
{
    machine.root.write("home/folder/sub/inner", "x");
    open({ TWKey::FilesCleaner });
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    auto* dialog = child<QDialog>(*window, "contentsDialog");
    auto* contents = child<QTreeWidget>(*dialog, "contentsTreeWidget");
    const auto press = [&](Qt::Key key) {
        QTest::keyClick(dialog->windowHandle(), key);
        machine.runLoop.advance(1s);
    };
    dialog->activateWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == dialog; }));
    EXPECT_EQ(contents->topLevelItemCount(), 4);
    const auto sub = contents->findItems("sub", Qt::MatchExactly);
    ASSERT_EQ(sub.size(), 1);
    contents->setCurrentItem(sub.front());
    press(Qt::Key_Return);
    EXPECT_EQ(contents->topLevelItem(0)->text(0), "inner");
    press(Qt::Key_Backspace);
    press(Qt::Key_Backspace);
    EXPECT_EQ(contents->topLevelItemCount(), 4) << "not out of the first folder";
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_FALSE(window->findChild<QDialog*>("contentsDialog")) << "by the button Close";
}

// In a narrow column the middle of the name would be elided.
TEST_F(TWPreviewWindowTest, TheWordStaysVisibleInANameThatIsTooLong)
{
    const std::string filling(60, 'i');
    machine.root.write("home/folder/" + filling + "secret" + filling, "x");
    open({ TWKey::FilesCleaner });
    key(Qt::Key_End); // because the underline has another colour in a selected row
    const auto picture = table->viewport()->grab(table->visualRect(table->model()->index(0, Path))).toImage();
    const auto underline = TWCellStyle::warningColor(table->palette()).rgb();
    int marked = 0;
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < picture.height(); ++y)
            marked += picture.pixel(x, y) == underline ? 1 : 0;
    }
    EXPECT_GE(marked, table->fontMetrics().horizontalAdvance("secret"));
}

TEST_F(TWPreviewWindowTest, AVolumeIsShownWithItsPlaceAndWithoutASize)
{
    machine.volumes.mount("/media/stick");
    machine.volumes.uses["/media/stick"].holders = { "player (12)" };
    auto& volumes = delegate.editors().get<TWVolumesWindowController>();
    volumes.updateVolumesList();
    EXPECT_TRUE(volumes.setActive(0, true));
    open({ TWKey::VolumesCleaner });
    EXPECT_EQ(text(0, Path), "stick (/media/stick)");
    EXPECT_EQ(text(0, Size), "");
    EXPECT_TRUE(text(0, Why).starts_with("in use by player (12), /dev/sdb1; ")) << text(0, Why);
    EXPECT_EQ(label("sentenceLabel"), "1 volume would be unmounted.");
}

TEST_F(TWPreviewWindowTest, EscapeLeavesListThenFilterThenAsksAboutTicks)
{
    open({ TWKey::TrashCleaner, TWKey::FilesCleaner });
    auto* shown = child<QComboBox>(*window, "shownComboBox");
    shown->showPopup();
    ASSERT_TRUE(QApplication::activePopupWidget());
    QTest::keyClick(shown->view(), Qt::Key_Escape);
    EXPECT_FALSE(QApplication::activePopupWidget());
    EXPECT_TRUE(window->isVisible());
    auto* filter = child<QLineEdit>(*window, "filterLineEdit");
    filter->setText("secret");
    EXPECT_FALSE(child<QPushButton>(*window, "keepButton")->isEnabled()) << "the row is in the Trash";
    QTest::keyClick(filter, Qt::Key_Escape);
    EXPECT_TRUE(filter->text().isEmpty() && window->isVisible());
    machine.runLoop.advance(1s);
    key(Qt::Key_End);
    EXPECT_EQ(table->currentIndex().row(), 3);
    key(Qt::Key_Home);
    EXPECT_EQ(table->currentIndex().row(), 0);
    for (const auto lossy : { Qt::Key_F5, Qt::Key_Escape }) {
        key(Qt::Key_Space);
        for (const bool agree : { false, true }) {
            EXPECT_TRUE(window->isVisible());
            EXPECT_EQ(cell(0, Path, Qt::CheckStateRole), Qt::Unchecked);
            QTest::keyClick(window, lossy);
            auto* box = child<QMessageBox>(*window, "ticksMessageBox");
            EXPECT_EQ(box->defaultButton(), box->button(QMessageBox::Cancel));
            (agree ? child<QPushButton>(*box, "loseTicksButton") : box->defaultButton())->click();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            machine.runLoop.advance(1s);
        }
        EXPECT_EQ(window->isVisible(), lossy == Qt::Key_F5);
        EXPECT_NE(cell(0, Path, Qt::CheckStateRole), Qt::Unchecked);
    }
}

TEST_F(TWPreviewWindowTest, ShowsAThousandRulesWithoutMeasuringEach)
{
    auto& files = delegate.editors().get<TWFilesWindowController>();
    for (int rule = 0; rule < 1000; ++rule)
        files.addRule({ true, "", "~/folder/" + std::string(rule % 2 == 0 ? "a" : "b"), TWItemItself });
    open({ TWKey::FilesCleaner });
    for (int column = 0; column < tree->columnCount(); ++column)
        EXPECT_NE(tree->header()->sectionResizeMode(column), QHeaderView::ResizeToContents) << "takes minutes";
    EXPECT_EQ(tree->topLevelItem(0)->child(0)->childCount(), 1003);
}

TEST_F(TWPreviewWindowTest, SaysWhyItIsEmpty)
{
    open({});
    EXPECT_TRUE(label("emptyLabel").starts_with("No cleaner is switched on."));
    EXPECT_FALSE(child<QPushButton>(*window, "cleanButton")->isEnabled());
    std::filesystem::remove_all(machine.places.trash);
    delegate.settings().set(TWKey::TrashCleaner, true);
    QTest::keyClick(window, Qt::Key_F5);
    machine.runLoop.advance(1s);
    EXPECT_EQ(label("emptyLabel"), "Trash: The Trash is empty");
    delegate.settings().set(TWKey::FilesCleaner, true);
    QTest::keyClick(window, Qt::Key_F5);
    QTest::keyClicks(child<QLineEdit>(*window, "filterLineEdit"), "nowhere");
    machine.runLoop.advance(1s);
    EXPECT_EQ(label("emptyLabel"), "No item matches the filter.");
}

TEST_F(TWPreviewWindowTest, MayBeStoppedOrClosedWhileItFills)
{
    begin({ TWKey::TrashCleaner });
    EXPECT_FALSE(child<QPushButton>(*window, "cleanButton")->isEnabled());
    child<QPushButton>(*window, "stopButton")->click();
    machine.runLoop.advance(1s);
    EXPECT_EQ(label("sentenceLabel"), "Stopped before anything was found.");
    for (int turns = 0; turns < 12; ++turns) {
        QTest::keyClick(window, Qt::Key_F5);
        for (int turn = 0; turn < turns; ++turn)
            machine.runLoop.turn(0ms);
        QTest::keyClick(window, Qt::Key_Escape);
        EXPECT_FALSE(window->isVisible());
        machine.runLoop.advance(1s);
        EXPECT_EQ(table->model()->rowCount(), 0);
        QTest::keyClick(&session.mainWindow(), Qt::Key_P, Qt::ControlModifier);
    }
}

}
