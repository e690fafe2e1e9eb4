#include "ui/TWResultsWindow.h"

#include "TWUITestSupport.h"
#include "ui/TWResultsModel.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTableView>

using namespace TWUITest;

namespace {

class TWResultsWindowTest : public testing::Test {
protected:
    TWResultsWindowTest()
    {
        controller.addMessage("Cleaning up", TWMessageType::Information);
        controller.addMessage("<b>\xFF\n", TWMessageType::Success);
        controller.addMessage("Uh oh", TWMessageType::Failure);
    }
    void show()
    {
        window = std::make_unique<TWResultsWindow>(controller, resourceFolder() + "/icons");
        table = child<QTableView>(*window, "resultsTableView");
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    std::string saved()
    {
        EXPECT_EQ(window->save(QString::fromStdString(folder.path("saved"))), "");
        return folder.read("saved");
    }

    TWTemporaryFolder folder;
    TWFakeRunLoop runLoop;
    TWResultsWindowController controller {runLoop};
    std::unique_ptr<TWResultsWindow> window;
    QTableView* table = nullptr;
};

TEST_F(TWResultsWindowTest, LinesAreBlackOnTheColourOfTheirKindInEveryTheme)
{
    const TWResultsModel model(controller, resourceFolder() + "/icons", nullptr);
    const auto of = [&](int row, int role) { return model.index(row, 0).data(role); };
    EXPECT_EQ(of(0, Qt::BackgroundRole).value<QColor>(), QColor(255, 255, 255));
    EXPECT_EQ(of(1, Qt::BackgroundRole).value<QColor>().rgb(), qRgb(182, 255, 0));
    EXPECT_EQ(of(2, Qt::BackgroundRole).value<QColor>().rgb(), qRgb(255, 78, 66));
    EXPECT_EQ(of(2, Qt::ForegroundRole).value<QColor>(), QColor(Qt::black));
    EXPECT_EQ(of(0, Qt::AccessibleTextRole), "Cleaning up");
    EXPECT_EQ(of(1, Qt::AccessibleTextRole), QString("Success: <b>\uFFFD\u240A"));
    EXPECT_EQ(of(1, Qt::ToolTipRole), QString("<p>&lt;b&gt;\uFFFD\u240A</p>"));
    EXPECT_EQ(of(2, Qt::AccessibleTextRole), "Failure: Uh oh");
}

TEST_F(TWResultsWindowTest, ManyLinesInOneTurnAreFewInsertionsAndTheLastIsVisible)
{
    show();
    const QAbstractItemModelTester tester(table->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy insertions(table->model(), &QAbstractItemModel::rowsInserted);
    for (int line = 0; line < 20'000; ++line)
        controller.addMessage(std::to_string(line), TWMessageType::Information);
    runLoop.advance(std::chrono::milliseconds(100));
    EXPECT_EQ(table->model()->rowCount(), 20'003);
    EXPECT_LE(insertions.count(), 3);
    EXPECT_TRUE(table->viewport()->rect().contains(table->visualRect(table->model()->index(20'002, 0))));

    controller.removeAllMessages();
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_EQ(child<QLabel>(*window, "emptyLabel")->text(), "Nothing has been cleaned yet.");
    EXPECT_TRUE(child<QLabel>(*window, "emptyLabel")->isVisible());
}

TEST_F(TWResultsWindowTest, SelectedLinesAreCopiedInTheirOrder)
{
    show();
    table->selectRow(2);
    table->selectionModel()->select(table->model()->index(0, 0), QItemSelectionModel::Select);
    QTest::keySequence(table, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), "Cleaning up\nUh oh");
    QTest::keySequence(table, QKeySequence::SelectAll);
    QTest::keySequence(table, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), QString("Cleaning up\n<b>\uFFFD\u240A\nUh oh"));
}

TEST_F(TWResultsWindowTest, FilterAndKindNarrowTheLinesAndWhatIsSaved)
{
    show();
    EXPECT_EQ(saved(), "Cleaning up\n<b>\uFFFD\u240A\nUh oh\n");
    QTest::keyClicks(child<QLineEdit>(*window, "filterLineEdit"), "UP");
    EXPECT_EQ(saved(), "Cleaning up\n");
    controller.addMessage("Up again", TWMessageType::Failure);
    controller.flush();
    EXPECT_EQ(saved(), "Cleaning up\nUp again\n");
    child<QComboBox>(*window, "kindComboBox")->setCurrentIndex(1);
    EXPECT_EQ(saved(), "Up again\n");
    EXPECT_EQ(child<QLabel>(*window, "countLabel")->text(), "1 of 4 lines");
    controller.removeAllMessages();
    child<QComboBox>(*window, "kindComboBox")->setCurrentIndex(0);
    child<QLineEdit>(*window, "filterLineEdit")->clear();
    EXPECT_EQ(saved(), "");

    const auto problem = window->save(QString::fromStdString(folder.path("missing/file")));
    EXPECT_TRUE(problem.contains("missing/file")) << problem.toStdString();
}

}
