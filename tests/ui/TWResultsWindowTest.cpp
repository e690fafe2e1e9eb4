#include "ui/windows/TWResultsWindow.h"

#include "TWUITestSupport.h"
#include "ui/windows/TWResultsModel.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

using namespace TWUITest;

namespace {

class TWResultsWindowTest : public testing::Test {
protected:
    TWResultsWindowTest()
    {
        controller.addMessage("Cleaning up", TWMessageType::Information);
        controller.addMessage("<b>\xFF\n", TWMessageType::Success);
        controller.addMessage("Uh oh", TWMessageType::Failure);
        controller.flush();
    }

    TWTemporaryFolder folder;
    TWFakeRunLoop runLoop;
    TWResultsWindowController controller{ runLoop };
    TWResultsWindow window{ controller, resourceFolder() + "/icons", "/" };
    QComboBox* kinds = child<QComboBox>(window, "kindComboBox");
};

TEST_F(TWResultsWindowTest, LinesSayTheirKindAndAreNeverMarkup)
{
    const TWResultsModel model(controller, resourceFolder() + "/icons", nullptr);
    const auto of = [&](int row, int role) { return model.index(row, 0).data(role); };
    EXPECT_EQ(of(1, Qt::AccessibleTextRole), QString("Success: <b>\uFFFD\u240A"));
    EXPECT_EQ(of(1, Qt::ToolTipRole), QString("<p>&lt;b&gt;\uFFFD\u240A</p>"));
}

TEST_F(TWResultsWindowTest, FilterAndKindNarrowTheLinesAndWhatIsSaved)
{
    window.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    const auto expectSaved = [&](const char* expected) {
        EXPECT_EQ(window.save(QString::fromStdString(folder.path("saved"))), "");
        EXPECT_EQ(folder.read("saved"), expected);
    };
    expectSaved("Cleaning up\n<b>\uFFFD\u240A\nUh oh\n");
    QTest::keyClicks(child<QLineEdit>(window, "filterLineEdit"), "UP");
    controller.addMessage("Up again", TWMessageType::Failure);
    controller.flush();
    expectSaved("Cleaning up\nUp again\n");
    kinds->setCurrentIndex(1);
    expectSaved("Up again\n");
    const auto problem = window.save(QString::fromStdString(folder.path("missing/file")));
    EXPECT_TRUE(problem.contains("missing/file")) << problem.toStdString();
    controller.removeAllMessages();
    EXPECT_FALSE(child<QPushButton>(window, "saveButton")->isEnabled());
    QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

}
