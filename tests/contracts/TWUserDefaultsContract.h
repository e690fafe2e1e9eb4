#pragma once

#include "platform/TWUserDefaults.h"

#include <gtest/gtest.h>

// What all user defaults promise. Body has a defaults() without any value.
template <typename Body>
class TWUserDefaultsContract : public testing::Test {
protected:
    Body body_;
    TWUserDefaults& defaults_ = body_.defaults();
};

TYPED_TEST_SUITE_P(TWUserDefaultsContract);

TYPED_TEST_P(TWUserDefaultsContract, AChangeHoldsAtOnceAndStays)
{
    auto& defaults = this->defaults_;
    EXPECT_FALSE(defaults.file().empty());
    EXPECT_FALSE(defaults.value("a"));
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
    EXPECT_EQ(defaults.synchronize(), "");
    EXPECT_FALSE(defaults.value("a"));
    EXPECT_EQ(defaults.value("b"), TWValue(1));
    EXPECT_EQ(defaults.problem(), "");
}

REGISTER_TYPED_TEST_SUITE_P(TWUserDefaultsContract, AChangeHoldsAtOnceAndStays);
