#include <gtest/gtest.h>

#include <QApplication>

#include <memory>

namespace {

// One application for all tests of the windows, in the style that is the same on every machine.
class Application final : public testing::Environment {
public:
    void SetUp() override
    {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        QApplication::setStyle("Fusion");
        application_ = std::make_unique<QApplication>(argumentCount_, arguments_);
    }
    void TearDown() override { application_.reset(); }

private:
    char name_[9] = "tests_ui";
    char* arguments_[2] = { name_, nullptr };
    int argumentCount_ = 1;
    std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] const auto* const Registered = testing::AddGlobalTestEnvironment(new Application);

}
