#include "support/TWLog.h"

#include <gtest/gtest.h>

namespace {

// A line in the log that no test announced is a fault of the test or of the code: it fails the test.
class UnexpectedLogLines final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override
    {
        TWLog::setSink([](std::string_view line) { ADD_FAILURE() << "unexpected log line: " << line; });
    }
};

}

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    testing::UnitTest::GetInstance()->listeners().Append(new UnexpectedLogLines);
    return RUN_ALL_TESTS();
}
