#include "ui/windows/TWResultsWindow.h"

#include "TWUITestSupport.h"
#include "ui/windows/TWResultsModel.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

using namespace TWUITest;

namespace {

class TWResultsWindowTest : public testing::Test, protected Machine {
protected:
    TWResultsWindowTest()
    {
        add("Cleaning up", TWMessageType::Information);
        add("<b>\xFF\n", TWMessageType::Success);
        add("Uh oh", TWMessageType::Failure);
    }

    void add(const std::string& text, TWMessageType type, int cleaner = TWNoCleaner)
    {
        controller.addMessage({ text, type, false, static_cast<std::int16_t>(cleaner) });
        controller.flush();
    }
    // A line about that path, like those that explain failures.
    void addLine(const std::string& path, int cleaner)
    {
        auto line = TWReportLine::about("%@Could not delete %@", { TWProgressMark, path }, 1);
        controller.addMessage(
            { std::move(line.text), TWMessageType::Information, false, static_cast<std::int16_t>(cleaner), line.path });
        controller.flush();
    }
    void show()
    {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }
    std::string selected() const { return table->currentIndex().data().toString().toStdString(); }

    TWResultsWindowController controller{ runLoop };
    TWFakeFileManager fileManager{ runLoop };
    Lines kept;
    TWResultsWindow window{ controller,
        { runLoop, fileSystem, places, fileManager,
            [this](const std::string& path) {
                kept.push_back(path);
                return "";
            } },
        resourceFolder() + "/icons", "/" };
    QComboBox* kinds = child<QComboBox>(window, "kindComboBox");
    QComboBox* cleaners = child<QComboBox>(window, "cleanerComboBox");
    QTableView* table = child<QTableView>(window, "resultsTableView");
};

TEST_F(TWResultsWindowTest, LinesSayTheirKindAndAreNeverMarkup)
{
    const TWResultsModel model(controller, resourceFolder() + "/icons", nullptr);
    const auto of = [&](int row, int role) { return model.index(row, TWResultsModel::LineColumn).data(role); };
    EXPECT_EQ(of(1, Qt::AccessibleTextRole), QString("Success: <b>\uFFFD\u240A"));
    EXPECT_EQ(of(1, Qt::ToolTipRole), QString("<p>&lt;b&gt;\uFFFD\u240A</p>"));
    show();
    const auto leftToRight = table->grab().toImage();
    window.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(table->grab().toImage(), leftToRight) << "paths keep their slashes where they are";
}

TEST_F(TWResultsWindowTest, FilterAndKindNarrowTheLinesAndWhatIsSaved)
{
    show();
    const auto expectSaved = [&](const char* expected) {
        EXPECT_EQ(window.save(QString::fromStdString(root.path("saved"))), "");
        EXPECT_EQ(root.read("saved"), expected);
    };
    expectSaved("Cleaning up\n<b>\uFFFD\u240A\nUh oh\n");
    QTest::keyClicks(child<QLineEdit>(window, "filterLineEdit"), "UP");
    add("Up again", TWMessageType::Failure, 5);
    expectSaved("Cleaning up\nUp again\n");
    kinds->setCurrentIndex(1);
    expectSaved("Up again\n");
    add("Upwards", TWMessageType::Failure, 2);
    EXPECT_EQ(cleaners->itemText(1), "Trash (1, failed)");
    cleaners->setCurrentIndex(1);
    expectSaved("Upwards\n");
    const auto problem = window.save(QString::fromStdString(root.path("missing/file")));
    EXPECT_TRUE(problem.contains("missing/file")) << problem.toStdString();
    controller.removeAllMessages();
    EXPECT_FALSE(child<QPushButton>(window, "saveButton")->isEnabled());
    EXPECT_EQ(cleaners->count(), 2) << "the chosen one stays";
    cleaners->showPopup();
    QTest::keyClick(cleaners->view(), Qt::Key_Escape);
    EXPECT_TRUE(window.isVisible()) << "only the open list is closed";
    press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(TWResultsWindowTest, AKeyGoesFromFailureToFailureWithWhatExplainsIt)
{
    show();
    for (const auto* path : { "/first", "/second", "/third" })
        addLine(path, 2);
    add("Trash failed", TWMessageType::Failure, 2);
    for (int line = 0; line < 100; ++line)
        add("Something else", TWMessageType::Information);
    EXPECT_EQ(child<QPushButton>(window, "failuresButton")->text(), "2 failures");
    press(Qt::Key_F4, Qt::ShiftModifier);
    EXPECT_EQ(selected(), "Trash failed") << "the last one";
    EXPECT_TRUE(table->viewport()->rect().contains(table->visualRect(table->model()->index(3, 1)))) << "/first";
    press(Qt::Key_F4);
    EXPECT_EQ(selected(), "Uh oh") << "from the last to the first";
    press(Qt::Key_F4);
    EXPECT_EQ(selected(), "Trash failed");
    press(Qt::Key_F4, Qt::ShiftModifier);
    EXPECT_EQ(selected(), "Uh oh");
    cleaners->setCurrentIndex(1);
    QTest::keyClicks(child<QLineEdit>(window, "filterLineEdit"), "Could");
    press(Qt::Key_F4);
    EXPECT_EQ(selected(), "Uh oh") << "with no failure in sight, shows everything again";
}

TEST_F(TWResultsWindowTest, OnlyASelectedPathCanBeShownAndOnlyAnExistingOneKept)
{
    show();
    auto* showButton = child<QPushButton>(window, "showButton");
    auto* keepButton = child<QPushButton>(window, "keepButton");
    addLine(root.path("gone"), 5);
    const auto file = root.write("a \xFF file", "x");
    addLine(file, 5);
    runLoop.runUntilIdle();
    EXPECT_FALSE(showButton->isEnabled() || keepButton->isEnabled()) << "nothing is selected";
    table->selectRow(3);
    runLoop.runUntilIdle();
    EXPECT_TRUE(showButton->isEnabled() && !keepButton->isEnabled());
    QTest::keyClicks(child<QLineEdit>(window, "filterLineEdit"), "file");
    table->selectRow(0);
    runLoop.runUntilIdle();
    keepButton->click();
    table->setFocus();
    press(Qt::Key_O, Qt::ControlModifier);
    runLoop.runUntilIdle();
    EXPECT_EQ(kept, Lines{ file });
    EXPECT_EQ(fileManager.shown, Lines{ "item " + file });
}

}
