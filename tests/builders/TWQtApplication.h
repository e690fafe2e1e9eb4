#pragma once

#include <QByteArray>
#include <gtest/gtest.h>

#include <memory>

// One application for all tests of a program, without a screen and in the style that is the same on every machine.
template <typename Application>
class TWQtApplication final : public testing::Environment {
public:
    void SetUp() override
    {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_STYLE_OVERRIDE", "Fusion");
        application_ = std::make_unique<Application>(argumentCount_, arguments_);
    }
    void TearDown() override { application_.reset(); }

private:
    char name_[6] = "tests";
    char* arguments_[2] = { name_, nullptr };
    int argumentCount_ = 1;
    std::unique_ptr<Application> application_;
};
