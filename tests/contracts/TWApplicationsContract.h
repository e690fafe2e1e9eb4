#pragma once

#include "platform/TWApplications.h"

#include <gtest/gtest.h>

// What all bodies promise. A body has applications(), with two or more installed ones.
template <typename Body>
class TWApplicationsContract : public testing::Test {
protected:
    Body body;
};
TYPED_TEST_SUITE_P(TWApplicationsContract);

TYPED_TEST_P(TWApplicationsContract, OpensWhatItListsAndSaysWhyItCannot)
{
    const auto& applications = this->body.applications();
    const auto installed = applications.installed();
    ASSERT_GE(installed.size(), 2U);
    EXPECT_LT(installed[0].displayName, installed[1].displayName);
    std::string problem;
    for (const auto& application : installed) {
        EXPECT_EQ(applications.open(application.path, problem), application) << problem;
        EXPECT_TRUE(applications.sharedFileList(application).ends_with(application.identifier + "/recently-used.xbel"));
    }
    EXPECT_EQ(problem, "");
    EXPECT_FALSE(applications.open("/missing.desktop", problem));
    EXPECT_NE(problem, "");
    EXPECT_FALSE(applications.running().runs(""));
}

REGISTER_TYPED_TEST_SUITE_P(TWApplicationsContract, OpensWhatItListsAndSaysWhyItCannot);
