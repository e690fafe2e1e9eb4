#pragma once

#include "platform/TWUserDefaults.h"

#include <gtest/gtest.h>

// What all user defaults promise. Body has a defaults() without any value.
template <typename Body>
class TWUserDefaultsContract : public testing::Test {
protected:
    Body body_;
};

TYPED_TEST_SUITE_P(TWUserDefaultsContract);

TYPED_TEST_P(TWUserDefaultsContract, AChangeHoldsAtOnceAndStays)
{
    TWUserDefaults& defaults = this->body_.defaults();
    EXPECT_TRUE(!defaults.file().empty() && !defaults.value("a"));
    const TWValue values[] = { true, 7, "text", TWValue::Array{ 1, "two" } };
    for (const auto& value : values) {
        defaults.setValue("a", value);
        EXPECT_EQ(defaults.value("a"), value);
        EXPECT_EQ(defaults.synchronize(), "");
        EXPECT_EQ(defaults.value("a"), value) << "with its type";
    }
    defaults.setValue("b", 1);
    defaults.removeValue("a");
    EXPECT_FALSE(defaults.value("a"));
    EXPECT_EQ(defaults.synchronize() + defaults.problem(), "");
    EXPECT_TRUE(!defaults.value("a") && defaults.value("b") == TWValue(1));
}

REGISTER_TYPED_TEST_SUITE_P(TWUserDefaultsContract, AChangeHoldsAtOnceAndStays);
