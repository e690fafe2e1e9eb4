#include "ui/windows/TWResultsWindow.h"

#include "TWUITestSupport.h"
#include "ui/windows/TWResultsModel.h"

#include <QComboBox>
#include <QLineEdit>

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

    TWTemporaryFolder folder;
    TWFakeRunLoop runLoop;
    TWResultsWindowController controller{ runLoop };
};

TEST_F(TWResultsWindowTest, LinesSayTheirKindAndAreNeverMarkup)
{
    const TWResultsModel model(controller, resourceFolder() + "/icons", nullptr);
    const auto of = [&](int row, int role) { return model.index(row, 0).data(role); };
    EXPECT_EQ(of(2, Qt::ForegroundRole).value<QColor>(), QColor(Qt::black)) << "on its own background, in every theme";
    EXPECT_EQ(of(1, Qt::AccessibleTextRole), QString("Success: <b>\uFFFD\u240A"));
    EXPECT_EQ(of(1, Qt::ToolTipRole), QString("<p>&lt;b&gt;\uFFFD\u240A</p>"));
}

TEST_F(TWResultsWindowTest, FilterAndKindNarrowTheLinesAndWhatIsSaved)
{
    TWResultsWindow window(controller, resourceFolder() + "/icons");
    window.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    const auto saved = [&] {
        EXPECT_EQ(window.save(QString::fromStdString(folder.path("saved"))), "");
        return folder.read("saved");
    };
    EXPECT_EQ(saved(), "Cleaning up\n<b>\uFFFD\u240A\nUh oh\n");
    QTest::keyClicks(child<QLineEdit>(window, "filterLineEdit"), "UP");
    EXPECT_EQ(saved(), "Cleaning up\n");
    controller.addMessage("Up again", TWMessageType::Failure);
    controller.flush();
    EXPECT_EQ(saved(), "Cleaning up\nUp again\n");
    child<QComboBox>(window, "kindComboBox")->setCurrentIndex(1);
    EXPECT_EQ(saved(), "Up again\n");
    EXPECT_EQ(child<QLabel>(window, "countLabel")->text(), "1 of 4 lines");
    const auto problem = window.save(QString::fromStdString(folder.path("missing/file")));
    EXPECT_TRUE(problem.contains("missing/file")) << problem.toStdString();
}

}
