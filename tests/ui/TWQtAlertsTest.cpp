#include "ui/windows/TWQtAlerts.h"

#include "TWUITestSupport.h"

#include <QMessageBox>
#include <QPushButton>

using namespace TWUITest;

namespace {

class TWQtAlertsTest : public testing::Test {
protected:
    TWQtAlertsTest()
    {
        alerts.setWindow(window.get());
        window->show();
    }
    QMessageBox& show(const char* alternate)
    {
        alerts.show({ "Wait & see", "<b>bold</b>", "Go & do", alternate },
            [this](TWAnswer answer) { answers.push_back(answer); });
        auto* box = child<QMessageBox>(*window, "alertMessageBox");
        EXPECT_TRUE(QTest::qWaitForWindowExposed(box));
        return *box;
    }
    bool closed()
    {
        return QTest::qWaitFor([&] { return !window->findChild<QMessageBox*>(); });
    }

    TWQtAlerts alerts;
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    std::vector<TWAnswer> answers;
};

TEST_F(TWQtAlertsTest, TextsArePlainAndEveryWayToCloseAnswersOnce)
{
    using enum TWAnswer;
    auto& box = show("Cancel");
    EXPECT_EQ(box.windowModality(), Qt::WindowModal);
    for (const auto* label : box.findChildren<QLabel*>())
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_EQ(child<QPushButton>(box, "defaultButton")->text(), "Go && do");
    QTest::mouseClick(child<QPushButton>(box, "alternateButton"), Qt::LeftButton);
    ASSERT_TRUE(closed());
    QTest::keyClick(&show("Cancel"), Qt::Key_Return);
    ASSERT_TRUE(closed());
    QTest::keyClick(&show("Cancel"), Qt::Key_Escape);
    ASSERT_TRUE(closed());
    show("Cancel").close();
    ASSERT_TRUE(closed());
    QTest::keyClick(&show(""), Qt::Key_Escape);
    ASSERT_TRUE(closed());
    show("Cancel");
    window.reset(); // and nobody has answered
    EXPECT_EQ(answers, (std::vector{ Alternate, Default, Alternate, Alternate, Default }));
}

}
