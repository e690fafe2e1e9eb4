#include "ui/windows/TWQtAlerts.h"

#include "TWUITestSupport.h"
#include "contracts/TWAlertsContract.h"

#include <QDialog>
#include <QPushButton>

using namespace TWUITest;

namespace {

class TWQtAlertsTest : public testing::Test {
protected:
    void SetUp() override { window->show(); }

    void ask(const char* alternate, TWConfirming confirming)
    {
        alerts.show({ "Wait & see", "<b>bold</b>", "Go & do", alternate, confirming },
            [this](TWAnswer answer) { answers.push_back(answer); });
    }
    QDialog& show(const char* alternate, TWConfirming confirming = TWConfirming::IsHarmless)
    {
        alerts.setWindow(window.get());
        ask(alternate, confirming);
        auto* sheet = child<QDialog>(*window, "alertSheet");
        EXPECT_TRUE(QTest::qWaitForWindowActive(sheet));
        return *sheet;
    }
    bool closed()
    {
        return QTest::qWaitFor([&] { return !window->findChild<QDialog*>(); });
    }

    TWQtAlerts alerts;
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    std::vector<TWAnswer> answers;
};

TEST_F(TWQtAlertsTest, TextsArePlainAndEveryWayToCloseAnswersOnce)
{
    using enum TWAnswer;
    ask("", TWConfirming::IsHarmless);
    EXPECT_FALSE(window->findChild<QDialog*>()) << "there is no window on screen yet";
    alerts.setWindow(window.get());
    QTest::keyClick(child<QDialog>(*window, "alertSheet"), Qt::Key_Escape);
    ASSERT_TRUE(closed());

    auto& sheet = show("Cancel");
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
    EXPECT_EQ(child<QLabel>(sheet, "textLabel")->textFormat(), Qt::PlainText);
    sheet.close();
    ASSERT_TRUE(closed());
    show("Cancel");
    window.reset(); // and nobody has answered
    EXPECT_EQ(answers, (std::vector{ Default, Alternate }));
}

TEST_F(TWQtAlertsTest, ReturnAndEscapeNeverLoseAnything)
{
    for (const auto confirming : { TWConfirming::IsHarmless, TWConfirming::LosesSomething }) {
        for (const auto key : { Qt::Key_Return, Qt::Key_Escape }) {
            QTest::keyClick(show("No", confirming).windowHandle(), key);
            ASSERT_TRUE(closed());
        }
        for (const auto* button : { "defaultButton", "alternateButton" }) {
            child<QPushButton>(show("No", confirming), button)->click();
            ASSERT_TRUE(closed());
        }
    }
    using enum TWAnswer;
    EXPECT_EQ(
        answers, (std::vector{ Default, Alternate, Default, Alternate, Alternate, Alternate, Default, Alternate }));
}

TEST_F(TWQtAlertsTest, AnAlertAboutASheetStandsOnThatSheet)
{
    QDialog sheet(window.get());
    sheet.setWindowModality(Qt::WindowModal);
    sheet.open();
    EXPECT_EQ(show("Cancel").parentWidget(), &sheet);
    ask("", TWConfirming::IsHarmless);
    const auto onSheet = sheet.findChildren<QDialog*>("alertSheet", Qt::FindDirectChildrenOnly);
    EXPECT_EQ(onSheet.size(), 2) << "the second one must not be deleted with the first";
}

struct Body {
    Body()
    {
        qt.setWindow(&window);
        window.show();
    }
    TWAlerts& alerts() { return qt; }
    void press(TWAnswer answer)
    {
        static constexpr const char* Buttons[] = { "defaultButton", "alternateButton", "otherButton" };
        child<QPushButton>(*child<QDialog>(window, "alertSheet"), Buttons[static_cast<int>(answer)])->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    TWQtAlerts qt;
    QWidget window;
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, TWAlertsContract, Body);
