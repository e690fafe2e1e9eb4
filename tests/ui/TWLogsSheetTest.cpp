#include "ui/sheets/TWLogsSheet.h"

#include "TWUITestSupport.h"
#include "editors/TWKeepWindowController.h"
#include "ui/parts/ImageAndTextCell.h"

#include <QAction>
#include <QLineEdit>
#include <QScrollBar>

#include <filesystem>

using namespace TWUITest;

namespace {

class TWLogsSheetTest : public testing::Test {
protected:
    enum Column { Item, Size, Modified };

    TWLogsSheetTest()
    {
        world.logSources.sources = { { "Editor", world.places.home + "/.config/editor/logs", true } };
        world.root.write("home/.config/editor/logs/main.log", "a log");
        for (const auto* name : { "alpha.log", "old/one.log", "old/two.log", "old/deep/three.log", "zeta.log" })
            world.root.write(std::string("var/log/") + name, name);
    }
    void open()
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&sheet));
        waitForTree();
    }
    void waitForTree()
    {
        ASSERT_TRUE(QTest::qWaitFor([&] { return controller.isRead() && !controller.isReading(); }));
    }
    void reload()
    {
        controller.reloadLogs();
        waitForTree();
    }
    static std::string system(const std::string& name) { return "/var/log/" + name; }
    std::string pathOf(const std::string& name) const { return world.places.abbreviate(world.root.path(name)); }

    // The row of that item, wherever it is in the tree; the folders above are loaded but not expanded.
    QModelIndex row(const QString& item) const
    {
        const auto found
            = model->match(model->index(0, 0), Qt::DisplayRole, item, 1, Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? QModelIndex() : found.first();
    }
    std::string accessible(const QString& item) const
    {
        return row(item).data(Qt::AccessibleTextRole).toString().toStdString();
    }
    void go(const QString& item)
    {
        tree->scrollTo(row(item));
        tree->setCurrentIndex(row(item));
        tree->setFocus();
    }
    QPoint box(const QString& item)
    {
        tree->scrollTo(row(item));
        return { tree->visualRect(row(item)).left() + 8, tree->visualRect(row(item)).center().y() };
    }
    void click(const QString& item) { QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, box(item)); }
    std::string current() const { return tree->currentIndex().data().toString().toStdString(); }
    std::string message() { return child<QLabel>(sheet, "messageBarLabel")->text().toStdString(); }
    std::string line() { return child<QLabel>(sheet, "checkedLabel")->text().toStdString(); }
    std::string emptyText() { return child<QLabel>(sheet, "emptyLabel")->text().toStdString(); }

    Editors world;
    TWLogsWindowController& controller = world.editors.get<TWLogsWindowController>();
    TWKeepWindowController& keepList = world.editors.get<TWKeepWindowController>();
    TWLogsSheet sheet{ controller, keepList, nullptr };
    QTreeView* tree = child<QTreeView>(sheet, "logsOutlineView");
    QAbstractItemModel* model = tree->model();
    QLineEdit* filter = child<QLineEdit>(sheet, "filterLineEdit");
};

TEST_F(TWLogsSheetTest, ClicksCheckAndWhatIsBelowACheckedFolderIsGrey)
{
    EXPECT_FALSE(controller.isReading());
    open();
    EXPECT_EQ(line(), "Nothing is checked.");
    EXPECT_TRUE(tree->isExpanded(row("System Logs")) && !tree->isExpanded(row("old")));
    EXPECT_EQ(accessible("old"), "old, not checked");
    click("one.log");
    EXPECT_EQ(accessible("one.log"), "one.log, checked");
    EXPECT_EQ(accessible("old"), "old, partly checked");
    EXPECT_EQ(row("System Logs").data(Qt::CheckStateRole), Qt::PartiallyChecked);
    EXPECT_TRUE(line().starts_with("1 checked, 4.1 kB")) << line();
    click("old");
    EXPECT_EQ(row("old").data(Qt::CheckStateRole), Qt::Checked);
    EXPECT_EQ(accessible("one.log"), "one.log, in a checked folder");
    EXPECT_TRUE(row("one.log").data(ImageAndTextCell::GreyedRole).toBool());
    click("one.log");
    go("one.log");
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_EQ(row("one.log").data(Qt::CheckStateRole), Qt::Unchecked);
    EXPECT_EQ(message(), "\"one.log\" belongs to a checked folder. Uncheck that folder first.");
    go("old");
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_EQ(message(), "");
    EXPECT_TRUE(sheet.isVisible() && controller.settings()->empty());
    EXPECT_EQ(child<QAction>(sheet, "toggleAction")->text(), "&Check");
}

TEST_F(TWLogsSheetTest, AReloadKeepsTheSelectionWhatIsExpandedAndThePlaceOnTheScreen)
{
    for (int number = 100; number < 300; ++number)
        world.root.write("var/log/m" + std::to_string(number) + ".log", "");
    open();
    tree->expand(row("old"));
    go("m250.log");
    tree->scrollTo(tree->currentIndex(), QAbstractItemView::PositionAtCenter);
    const auto place = tree->visualRect(tree->currentIndex());
    world.root.write("var/log/b.log", "");
    world.root.write("var/log/n.log", "");
    reload();
    EXPECT_EQ(current(), "m250.log");
    EXPECT_EQ(tree->visualRect(tree->currentIndex()), place);
    EXPECT_TRUE(tree->isExpanded(row("old")) && row("b.log").isValid());

    // A command checks one log and a folder whose log is checked here; both show at once, in the tree as it is.
    const auto log = [&](const std::string& name) {
        return TWLogsRecord{ name, pathOf("var/log/" + name), TWLogChecked, std::nullopt };
    };
    click("m249.log");
    controller.list().changeSaved([&](auto& records) {
        records = { { "System Logs", std::string(TWAllSystemLogs), TWLogMixed,
            std::vector<TWLogsRecord>{ log("n.log"), log("gone.log") } } };
        return true;
    });
    const auto box = [&](const char* name) { return row(name).data(Qt::CheckStateRole).toInt(); };
    EXPECT_EQ(current(), "m250.log");
    EXPECT_TRUE(row("gone.log").isValid() && tree->isExpanded(row("old")));
    EXPECT_TRUE(box("n.log") == Qt::Checked && box("m249.log") == Qt::Unchecked);
    waitForTree();
    EXPECT_TRUE(current() == "m250.log" && tree->isExpanded(row("old")));
    EXPECT_TRUE(box("n.log") == Qt::Checked && box("m249.log") == Qt::Unchecked);

    go("m250.log");
    std::filesystem::remove(world.root.path("var/log/m250.log"));
    reload();
    EXPECT_EQ(current(), "m251.log");
    sheet.close();
    EXPECT_FALSE(row("m251.log").isValid());
    open();
    EXPECT_TRUE(tree->isExpanded(row("old")));
}

TEST_F(TWLogsSheetTest, TheFilterShowsMatchesAndEscapeBringsTheTreeBackThenCloses)
{
    open();
    QTest::keyClick(&sheet, Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(sheet.focusWidget(), filter);
    QTest::keyClicks(filter, "THREE");
    ASSERT_TRUE(QTest::qWaitFor([&] { return controller.isFiltered() && !controller.isFiltering(); }));
    EXPECT_FALSE(row("alpha.log").isValid() || row("User Logs").isValid());
    EXPECT_TRUE(tree->isExpanded(row("deep")));
    QTest::keyClick(filter, Qt::Key_Down);
    go("three.log");
    reload();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !controller.isFiltering(); }));
    EXPECT_EQ(current(), "three.log");
    filter->setFocus();
    QTest::keyClicks(filter, "x");
    ASSERT_TRUE(QTest::qWaitFor([&] { return model->rowCount() == 0; }));
    EXPECT_EQ(emptyText(), "No log's name contains \"THREEx\".");
    QTest::keyClick(filter, Qt::Key_Escape);
    EXPECT_TRUE(sheet.isVisible() && filter->text().isEmpty() && emptyText().empty());
    EXPECT_TRUE(row("alpha.log").isValid() && !tree->isExpanded(row("old")) && tree->isExpanded(row("System Logs")));
    QTest::keyClick(filter, Qt::Key_Escape);
    EXPECT_FALSE(sheet.isVisible());
}

TEST_F(TWLogsSheetTest, WhatHasVanishedOrLiesOutsideSaysSoAndCanBeUnchecked)
{
    controller.list().changeSaved([&](auto& records) {
        records = { { "Outside", "/etc/passwd", TWLogChecked, std::nullopt },
            { "System Logs", std::string(TWAllSystemLogs), TWLogMixed,
                std::vector<TWLogsRecord>{ { "gone.log", pathOf("var/log/gone.log"), TWLogChecked, std::nullopt } } } };
        return true;
    });
    open();
    EXPECT_TRUE(accessible("Outside").find("never deleted") != std::string::npos) << accessible("Outside");
    EXPECT_TRUE(accessible("gone.log").find("no longer there") != std::string::npos) << accessible("gone.log");
    const auto picture = row("gone.log").data(Qt::DecorationRole).value<QIcon>().pixmap(16, 16).toImage();
    EXPECT_EQ(picture, QImage(resourceFolder() + "/deleted.png").convertToFormat(picture.format()));
    EXPECT_EQ(row("gone.log").siblingAtColumn(Modified).data(), QVariant());
    click("Outside");
    click("gone.log");
    EXPECT_TRUE(controller.settings()->empty());
    reload();
    EXPECT_FALSE(row("Outside").isValid() || row("gone.log").isValid());
    for (const auto* folder : { "var/log", "home/.config/editor/logs" }) {
        for (const auto& entry : std::filesystem::directory_iterator(world.root.path(folder)))
            std::filesystem::remove_all(entry);
    }
    world.logSources.sources.clear();
    reload();
    EXPECT_EQ(emptyText(), "No logs were found.");
}

TEST_F(TWLogsSheetTest, SpaceLooksInsideAndThePreviewFollowsTheArrowKeys)
{
    open();
    go("alpha.log");
    QTest::keyClick(tree, Qt::Key_Space);
    auto* preview = child<QWidget>(sheet, "quickLookWindow");
    const auto shows = [&](const QString& name) {
        return QTest::qWaitFor([&] { return preview->isVisible() && preview->windowTitle().contains(name); });
    };
    EXPECT_TRUE(shows("alpha.log"));
    QTest::keyClick(tree, Qt::Key_Down);
    EXPECT_TRUE(shows(QString::fromStdString(current())) && current() != "alpha.log");
    EXPECT_TRUE(controller.settings()->empty());
    QTest::keyClick(tree, Qt::Key_Space);
    EXPECT_FALSE(preview->isVisible());
    QTest::keyClick(tree, Qt::Key_Space);
    EXPECT_TRUE(preview->isVisible());
    QTest::keyClick(tree, Qt::Key_Escape);
    EXPECT_TRUE(!preview->isVisible() && sheet.isVisible());
}

TEST_F(TWLogsSheetTest, ALogIsOpenedShownAndKeptByItsBytesAndOneWithoutAValidNameStaysUnchecked)
{
    world.root.write("var/log/b\xff.log", "");
    Lines asked;
    QObject::connect(&sheet, &TWSheet::openRequested, [&](const std::string& path, const auto& said) {
        asked.push_back("open " + path);
        said("Not opened.");
    });
    QObject::connect(&sheet, &TWSheet::fileRequested,
        [&](const std::string& path, const auto&) { asked.push_back("show " + path); });
    open();
    const auto odd = model->index(1, 0, row("System Logs"));
    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(odd).center());
    EXPECT_EQ(message(), "Not opened.");
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_TRUE(message().find("not valid UTF-8") != std::string::npos) << message();
    go("System Logs");
    child<QAction>(sheet, "showAction")->trigger();
    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, box("zeta.log")); // opens nothing
    EXPECT_EQ(asked, (Lines{ "open " + world.root.path("var/log/b\xff.log"), "show " + world.root.path("var/log") }));
    go("zeta.log");
    QTest::keyClick(tree, Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(keepList.entries().back().entry().text, pathOf("var/log/zeta.log"));
}

}
