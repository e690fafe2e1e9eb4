#pragma once

#include "platform/TWAlerts.h"

#include <gtest/gtest.h>

// What all alerts promise. Body has alerts(), and press(), with which a user presses a button of an open alert.
template <typename Body>
class TWAlertsContract : public testing::Test {
protected:
    Body body_;
};

TYPED_TEST_SUITE_P(TWAlertsContract);

TYPED_TEST_P(TWAlertsContract, EachAlertIsAnsweredOnceAlsoOneFromInsideAnAnswer)
{
    using enum TWAnswer;
    std::vector<TWAnswer> answers;
    auto& alerts = this->body_.alerts();
    alerts.show({ "First", "text", "Go", "No" }, [&](TWAnswer first) {
        answers.push_back(first);
        alerts.show({ "Second", "text", "Save", "Cancel", TWConfirming::IsHarmless, "Drop" },
            [&](TWAnswer second) { answers.push_back(second); });
    });
    this->body_.press(Alternate);
    EXPECT_EQ(answers, (std::vector{ Alternate }));
    this->body_.press(Other);
    EXPECT_EQ(answers, (std::vector{ Alternate, Other }));
}

REGISTER_TYPED_TEST_SUITE_P(TWAlertsContract, EachAlertIsAnsweredOnceAlsoOneFromInsideAnAnswer);
